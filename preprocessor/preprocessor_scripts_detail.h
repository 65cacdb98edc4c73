#pragma once

#include "preprocessor/plain_expression_detail.h"
#include "preprocessor/preprocessor.h"
#include "script/script.h"
#include "script/script_minimal.h"

#include <wx/string.h>

#include <memory>
#include <optional>

/// A script context of the preprocessor with an empty global object of its own, started at the first text that needs
/// it.
class CPreprocessorScript
{
public:
    explicit CPreprocessorScript(const CPreprocessorLimits& limits) : m_limits(limits) {}

    /// Evaluates a text; false after a failure, which the script context has reported.
    template <typename Result> bool Evaluate(const wxString& text, Result& result)
    {
        const std::optional<PlainValue> plain = EvaluatePlain(text);
        return (plain && ConvertPlain(*plain, result)) || Context().Evaluate(text, nullptr, result);
    }

    /// Evaluates a text to a number, truncated toward 0. False also, unreported, when the result is no number.
    bool EvaluateNumber(const wxString& text, int& result);

private:
    CJScript& Context();

    const CPreprocessorLimits& m_limits;
    std::unique_ptr<qxjsMinimal> m_global;
    std::unique_ptr<CJScript> m_context;
};

/// The three contexts of a preprocessor. What one text declares is seen by the later texts of the same context only.
class CPreprocessorScripts
{
public:
    explicit CPreprocessorScripts(const CPreprocessorLimits& limits)
        : condition(limits), inlineText(limits), loop(limits)
    {}

    CPreprocessorScript condition;
    CPreprocessorScript inlineText;
    CPreprocessorScript loop;
};
