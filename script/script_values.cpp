#include "script/script_values.h"

wxIMPLEMENT_CLASS(qxjsPointer, wxObject);
wxIMPLEMENT_CLASS(qxjsSize_t, wxObject);

const JSMap qxjsPointer::m_JSMap{"wxObjectPtr", nullptr};
CJScriptLinkClass qxjsPointer::ms_JSClass(&qxjsPointer::m_JSMap);
const JSMap qxjsSize_t::m_JSMap{"size_t", nullptr};
CJScriptLinkClass qxjsSize_t::ms_JSClass(&qxjsSize_t::m_JSMap);

qxjsPointer::qxjsPointer(void* value) : m_value(value)
{
    m_link.Link(this, &ms_JSClass);
}

qxjsSize_t::qxjsSize_t(std::uint32_t value) : m_value(value)
{
    m_link.Link(this, &ms_JSClass);
}
