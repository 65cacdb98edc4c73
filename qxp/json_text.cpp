#include "qxp/json_text.h"

#include "base/text_encoding.h"

Json ToJson(const wxString& text)
{
    return ToSystemName(text);
}

std::string WriteJson(const Json& value, int indent)
{
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}
