#include "xml/tree_charset_detail.h"

#include <wx/strconv.h>
#include <wx/string.h>

namespace xml_detail
{

int XMLCALL DescribeCharset(void*, const XML_Char* name, XML_Encoding* description)
{
    const wxCSConv converter(wxString::FromUTF8(name));
    description->map[0] = 0;
    for (int byte = 1; byte < 256; ++byte) {
        const char text[] = {static_cast<char>(byte), '\0'};
        wchar_t characters[4];
        const size_t count = converter.MB2WC(characters, text, 2);
        description->map[byte] = count == 1 ? static_cast<int>(characters[0]) : -1;
    }
    description->data = nullptr;
    description->convert = nullptr;
    description->release = nullptr;
    return XML_STATUS_OK;
}

} // namespace xml_detail
