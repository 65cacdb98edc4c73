#include "script/script_values.h"

#include "script/class_module.h"
#include "script/native_function.h"

wxIMPLEMENT_CLASS(qxjsPointer, wxObject);
wxIMPLEMENT_CLASS(qxjsSize_t, wxObject);

JSMapEntry qxjsPointer::m_JSMapEntries[] = {JSConstructor<qxjsPointer>(), JSMapEntry()};
const JSMap qxjsPointer::m_JSMap{"wxObjectPtr", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass qxjsPointer::ms_JSClass(&qxjsPointer::m_JSMap);

JSMapEntry qxjsSize_t::m_JSMapEntries[] = {JSConstructor<qxjsSize_t, int>(), JSMapEntry()};
const JSMap qxjsSize_t::m_JSMap{"size_t", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass qxjsSize_t::ms_JSClass(&qxjsSize_t::m_JSMap);

JS_REGISTER_CLASS_MODULE(qxjsPointer);
JS_REGISTER_CLASS_MODULE(qxjsSize_t);

qxjsPointer::qxjsPointer(void* value) : m_value(value)
{
    m_link.Link(this, &ms_JSClass);
}

qxjsSize_t::qxjsSize_t(std::uint32_t value) : m_value(value)
{
    m_link.Link(this, &ms_JSClass);
}
