#include "fuzz/fuzz_support.h"
#include "preprocessor/preprocessor.h"
#include "script/script.h"
#include "script/script_minimal.h"

#include <wx/arrstr.h>

#include <algorithm>

namespace
{

wxString EvaluateLiteral(const wxString& literal)
{
    static auto* const global = new qxjsMinimal;
    static auto* const script = [] {
        auto* const context = new CJScript(nullptr);
        context->SetGlobal(global->GetJSLink(), wxString());
        return context;
    }();
    wxString value;
    Require(script->Evaluate(literal, nullptr, value), "the literal is a script");
    return value;
}

bool HasSurrogate(const wxString& text)
{
    return std::any_of(text.begin(), text.end(),
                       [](wxUniChar c) { return c.GetValue() >= 0xD800 && c.GetValue() <= 0xDFFF; });
}

/// What was written as a literal is read back.
void CheckLiterals(const wxString& text)
{
    wxString lines = text;
    lines.Replace(wxS("\r"), wxString());
    Require(CPreprocessor::StringFromC(CPreprocessor::StringToC(lines)) == lines, "a C literal reads back");
    // A lone surrogate is no character that a text of ours could get back.
    if (!HasSurrogate(text))
        Require(EvaluateLiteral(CPreprocessor::StringToJS(text, true)) == text, "a script literal reads back");
}

void CheckEscaping(const wxString& text)
{
    const wxString escaped = CPreprocessor::EscapeChar(text, L',', L'^');
    Require(CPreprocessor::UnescapeChar(escaped, L',', L'^') == text, "what was escaped reads back");
    wxString joined;
    for (const wxString& piece : CPreprocessor::SplitEscapeChar(text, L',', false, L'^'))
        joined += piece + wxS(",");
    Require(joined == text + wxS(","), "the pieces joined are the text");
}

void CheckQuotes(const wxString& text)
{
    const wxString once = CPreprocessor::ConcatQuotes(text);
    Require(once.length() <= text.length(), "joining adds nothing");
    Require(CPreprocessor::ConcatQuotes(once) == once, "nothing is left to join");
    const long at = CPreprocessor::FindCharEx(text, wxS("="));
    Require(at == -1 || text[static_cast<size_t>(at)] == wxS('='), "what is found is there");
    wxString rest = text;
    const wxString contents = CPreprocessor::ExtractString(rest, false);
    Require(contents.length() + rest.length() <= text.length(), "a string is taken out of the text");
    Require(text.EndsWith(rest), "what is behind the string stays");
}

void CheckLines(const wxString& text)
{
    const wxString indented = CPreprocessor::IndentLines(text, wxS("  "), 1);
    Require(CPreprocessor::IndentLines(indented, wxS("  "), 0) == indented, "no indentation changes nothing");
    const wxString keyword = CPreprocessor::ToKeyword(text);
    Require(CPreprocessor::ToKeyword(keyword) == keyword, "a keyword stays one");
    Require(CPreprocessor::AnsiString(CPreprocessor::AnsiString(text)) == CPreprocessor::AnsiString(text),
            "a plain text stays one");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    const wxString text = InputText(data, size);
    CheckLiterals(text);
    CheckEscaping(text);
    CheckQuotes(text);
    CheckLines(text);
    return 0;
}
