#include "preprocessor/preprocessor_scripts_detail.h"

CJScript& CPreprocessorScript::Context()
{
    if (!m_context) {
        m_global = std::make_unique<qxjsMinimal>();
        m_context = std::make_unique<CJScript>(nullptr);
        m_context->SetGlobal(m_global->GetJSLink(), wxString());
    }
    return *m_context;
}
