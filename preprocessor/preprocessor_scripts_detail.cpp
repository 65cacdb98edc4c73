#include "preprocessor/preprocessor_scripts_detail.h"

#include "script/value_conversion.h"

CJScript& CPreprocessorScript::Context()
{
    if (!m_context) {
        m_global = std::make_unique<qxjsMinimal>();
        m_context = std::make_unique<CJScript>(nullptr);
        m_context->SetGlobal(m_global->GetJSLink(), wxString());
        m_context->SetTimeLimit(m_limits.scriptMilliseconds);
        m_context->SetMemoryLimit(m_limits.scriptBytes);
    }
    return *m_context;
}

bool CPreprocessorScript::EvaluateNumber(const wxString& text, int& result)
{
    const std::optional<PlainValue> plain = EvaluatePlain(text);
    if (plain)
        return ConvertPlain(*plain, result);
    jsval value = JSVAL_VOID;
    if (!Context().EvaluateValue(text, nullptr, value) || !JSVAL_IS_NUMBER(value))
        return false;
    result = JSVAL_IS_INT(value) ? JSVAL_TO_INT(value) : TruncateToInt(*JSVAL_TO_DOUBLE(value));
    return true;
}
