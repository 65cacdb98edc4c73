#include "script/script_minimal.h"

#include "script/class_module.h"

wxIMPLEMENT_CLASS(qxjsMinimal, wxObject);

const JSMap qxjsMinimal::m_JSMap{"qxMinimalObject", &CJScriptLink::ms_JSClass, nullptr};
CJScriptLinkClass qxjsMinimal::ms_JSClass(&qxjsMinimal::m_JSMap);

JS_REGISTER_CLASS_MODULE(qxjsMinimal);

qxjsMinimal::qxjsMinimal()
{
    m_link.Link(this, &ms_JSClass);
}
