#include "script/script_minimal.h"

wxIMPLEMENT_CLASS(qxjsMinimal, wxObject);

const JSMap qxjsMinimal::m_JSMap{"qxMinimalObject", nullptr};
CJScriptLinkClass qxjsMinimal::ms_JSClass(&qxjsMinimal::m_JSMap);

qxjsMinimal::qxjsMinimal()
{
    m_link.Link(this, &ms_JSClass);
}
