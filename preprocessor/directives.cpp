#include "parser/parser_unit.h"
#include "preprocessor/directive_line_detail.h"
#include "preprocessor/name_list_detail.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/preprocessor_scripts_detail.h"
#include "preprocessor/text_detail.h"

#include <wx/log.h>

#include <algorithm>
#include <string_view>

/// The directive words. One row and one handler make a directive.
struct CDirectiveTable
{
    struct Entry
    {
        std::wstring_view word;
        long (CPreprocessor::*apply)(CDirectiveLine&);
        bool actsWhileSkipping;
    };

    static const Entry* Find(std::wstring_view word)
    {
        static constexpr Entry entries[] = {
            {L"ifdef", &CPreprocessor::DirectiveIfdef, true},
            {L"ifndef", &CPreprocessor::DirectiveIfndef, true},
            {L"if", &CPreprocessor::DirectiveIf, true},
            {L"else", &CPreprocessor::DirectiveElse, true},
            {L"elseifdef", &CPreprocessor::DirectiveElseifdef, true},
            {L"elif", &CPreprocessor::DirectiveElif, true},
            {L"elseif", &CPreprocessor::DirectiveElif, true},
            {L"endif", &CPreprocessor::DirectiveEndif, true},
            {L"include", &CPreprocessor::DirectiveInclude, false},
            {L"for", &CPreprocessor::DirectiveFor, false},
            {L"error", &CPreprocessor::DirectiveError, false},
            {L"warning", &CPreprocessor::DirectiveWarning, false},
            {L"define", &CPreprocessor::DirectiveDefine, false},
            {L"redefine", &CPreprocessor::DirectiveRedefine, false},
            {L"undef", &CPreprocessor::DirectiveUndef, false},
        };
        if (word.empty())
            return nullptr;
        const auto isWord = [&](const Entry& entry) { return entry.word[0] == word[0] && entry.word == word; };
        const auto* const found = std::find_if(std::begin(entries), std::end(entries), isWord);
        return found == std::end(entries) ? nullptr : found;
    }
};

long CPreprocessor::DirectiveApply(wxString& output, const wchar_t* at, const wchar_t* end, const wchar_t** next,
                                   _BlockPosition& position)
{
    const wchar_t* const word = at + (at + 1 != end && at[1] == DirectiveChar ? 2 : 1);
    CDirectiveLine line{output, at, word, text_detail::SkipWord(word, end), end, next, position};
    if (!position.m_lineStarted && !line.IsQuoting()) {
        const std::wstring_view name(word, line.rest - word);
        if (const CDirectiveTable::Entry* const directive = CDirectiveTable::Find(name)) {
            *next = end;
            return m_skipping && !directive->actsWhileSkipping ? 0 : (this->*directive->apply)(line);
        }
    }
    *next = line.rest;
    if (m_skipping)
        return 0;
    if (line.rest != word)
        return ApplyUse(line);
    if (word != end && *word == ScriptOpen)
        return ApplyInlineScript(line);
    // A lone "#" joins what stands on its two sides.
    TrimRight(output, L" \t");
    *next = text_detail::SkipBlanks(word, end);
    return 0;
}

long CPreprocessor::ApplyUse(CDirectiveLine& line)
{
    const std::wstring_view name(line.word, line.rest - line.word);
    const _DefineInfo* const define = m_defines.Find(name);
    const wchar_t* after = line.rest;
    if (define) {
        const long result = ExpandUse(name, *define, after, line.end, &line.position, line.IsQuoting(), line.output);
        *line.next = after;
        if (result != 1)
            return result;
    } else if (!m_partial)
        return Fail(NotDefined(name), line.position.m_unit);
    line.output.append(line.at, after - line.at);
    m_wasPartial = true;
    return 0;
}

long CPreprocessor::ApplyInlineScript(CDirectiveLine& line)
{
    const CCurrentUnit& unit = line.position.m_unit;
    const wchar_t* const begin = line.word + 1;
    const wchar_t* const stop =
        std::find_if(begin, line.end, [](wchar_t ch) { return ch == ScriptOpen || ch == ScriptClose; });
    if (stop == line.end)
        return Fail(wxString::Format(wxS("%c%c needs a %c on same line !"), DirectiveChar, ScriptOpen, ScriptClose),
                    unit);
    if (*stop == ScriptOpen)
        return Fail(wxString::Format(wxS("%c%c can not be nested !"), DirectiveChar, ScriptOpen), unit);

    wxString script;
    const wxArrayString noNames;
    const long replaced = ReplaceDefines(begin, stop, script, line.position, CNameList(noNames));
    if (replaced != 0 && !(replaced == 1 && m_partial))
        return -1;
    *line.next = stop + 1;
    wxString rewritten;
    const bool hasDefined = script.find(DefinedWord) != wxString::npos;
    if (replaced == 1 || (hasDefined && RewriteDefined(script, rewritten) == 1)) {
        line.output.append(line.at, stop + 1 - line.at);
        m_wasPartial = true;
        return 0;
    }
    wxString text;
    if (!Scripts().inlineText.Evaluate(hasDefined ? rewritten : script, text))
        return Fail(wxString::Format(wxS("%c%c : Can not evaluate script: %s"), DirectiveChar, ScriptOpen, script),
                    unit);
    if (!line.IsQuoting()) {
        line.output += text;
        return 0;
    }
    TrimRight(line.output, TrimSet);
    line.output.append(1, wxUniChar(L'"')).append(text).append(1, wxUniChar(L'"'));
    return 0;
}

/// In partial mode, what stands inside a section that is not decided yet is not decided either.
bool CPreprocessor::KeepInUndecidedSection(CDirectiveLine& line)
{
    const _IfDefStateInfo* const section = InnermostSection();
    const bool undecided = m_partial && section && section->m_inUnresolved;
    if (undecided)
        KeepForLaterPass(line);
    return undecided;
}

void CPreprocessor::KeepForLaterPass(CDirectiveLine& line)
{
    line.Keep();
    m_wasPartial = true;
}

long CPreprocessor::DirectiveError(CDirectiveLine& line)
{
    if (KeepInUndecidedSection(line))
        return 0;
    const CParserUnit* const unit = line.position.m_unit;
    const wxString message = wxString::Format(wxS("ERROR : %s"), line.Rest());
    wxLogError(wxS("%s\nin '%s' (%d)"), message, unit->GetFileName(), static_cast<int>(unit->m_line));
    return Fail(message, unit);
}

long CPreprocessor::DirectiveWarning(CDirectiveLine& line)
{
    if (KeepInUndecidedSection(line))
        return 0;
    WarningGiven(line.Rest(), *line.position.m_unit);
    return 0;
}

void CPreprocessor::WarningGiven(const wxString& text, const CParserUnit& unit)
{
    wxLogWarning(wxS("WARNING: %s\nin '%s' (%d)"), text, unit.GetFileName(), static_cast<int>(unit.m_line));
}
