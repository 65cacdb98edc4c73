#include "parser/parser.h"
#include "parser/parser_unit.h"
#include "preprocessor/directive_line_detail.h"
#include "preprocessor/line_scan_detail.h"
#include "preprocessor/name_list_detail.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/preprocessor_scripts_detail.h"
#include "preprocessor/text_detail.h"

#include <wx/log.h>

#include <optional>
#include <string_view>

namespace
{

std::wstring_view NameBehind(const CDirectiveLine& line)
{
    const wchar_t* const name = text_detail::SkipBlanks(line.rest, line.end);
    return std::wstring_view(name, text_detail::SkipWord(name, line.end) - name);
}

} // namespace

_IfDefStateInfo* CPreprocessor::InnermostSection()
{
    return m_sections.size() > m_sectionBase ? &m_sections.back() : nullptr;
}

long CPreprocessor::FailWithout(const CDirectiveLine& line, const wchar_t* opening)
{
    return Fail(wxString::Format(wxS("%c%s without %c%s"), DirectiveChar, line.Word(), DirectiveChar, opening),
                line.position.m_unit);
}

long CPreprocessor::FailCondition(const CDirectiveLine& line, const wxString& condition)
{
    return Fail(wxString::Format(wxS("%c%s : Can not evaluate condition: %s"), DirectiveChar, line.Word(), condition),
                line.position.m_unit);
}

/// Opens a section. One inside a skipped section counts as decided with its branch behind it, so that nothing in it is
/// evaluated, kept or switched on.
long CPreprocessor::OpenSection(CDirectiveLine& line, std::optional<bool> taken)
{
    if (m_sections.size() >= m_limits.openSections)
        return Fail(wxString::Format(wxS("%c%s : More than %u open sections !"), DirectiveChar, line.Word(),
                                     m_limits.openSections),
                    line.position.m_unit);
    const bool isUnresolved = !m_skipping && !taken;
    const int state = taken.value_or(true) ? _IfDefStateInfo::BranchTaken : _IfDefStateInfo::NoBranchYet;
    const _IfDefStateInfo* const around = InnermostSection();
    const bool inUnresolved = isUnresolved || (around && around->m_inUnresolved);
    m_sections.push_back({state, m_skipping, line.position.GetOrigin(), isUnresolved, inUnresolved});
    if (isUnresolved)
        KeepForLaterPass(line);
    if (state == _IfDefStateInfo::NoBranchYet)
        m_skipping = true;
    return 0;
}

long CPreprocessor::OpenDefinedSection(CDirectiveLine& line, bool wanted)
{
    if (m_skipping)
        return OpenSection(line, true);
    const bool found = m_defines.Find(NameBehind(line)) != nullptr;
    if (m_partial && !found)
        return OpenSection(line, std::nullopt);
    return OpenSection(line, found == wanted);
}

long CPreprocessor::DirectiveIfdef(CDirectiveLine& line)
{
    return OpenDefinedSection(line, true);
}

long CPreprocessor::DirectiveIfndef(CDirectiveLine& line)
{
    return OpenDefinedSection(line, false);
}

/// Replaces the defines of a condition. In partial mode nothing that goes wrong here is an error yet: the condition is
/// undecided (1), and a later pass will say so.
long CPreprocessor::ReplaceCondition(const CDirectiveLine& line, wxString& condition)
{
    const wxArrayString noNames;
    const auto replace = [&] {
        return ReplaceDefines(line.rest, line.end, condition, line.position, CNameList(noNames));
    };
    if (!m_partial)
        return replace() == 0 ? 0 : -1;
    wxString message;
    const CParserUnit* unit = nullptr;
    if (m_parser)
        m_parser->GetLastError(&message, &unit);
    const long result = replace();
    if (result < 0) {
        Fail(message, unit);
        condition = line.Rest();
    }
    return result == 0 ? 0 : 1;
}

bool CPreprocessor::EvaluateCondition(const wxString& condition, bool& value)
{
    wxString rewritten;
    const bool hasDefined = condition.find(DefinedWord) != wxString::npos;
    if (hasDefined)
        RewriteDefined(condition, rewritten);
    // What partial mode cannot evaluate is kept, not reported.
    std::optional<wxLogNull> quiet;
    if (m_partial)
        quiet.emplace();
    return Scripts().condition.Evaluate(hasDefined ? rewritten : condition, value);
}

long CPreprocessor::DirectiveIf(CDirectiveLine& line)
{
    if (m_skipping)
        return OpenSection(line, true);
    wxString condition;
    const long replaced = ReplaceCondition(line, condition);
    if (replaced < 0)
        return -1;
    bool value = false;
    if (replaced == 0 && EvaluateCondition(condition, value))
        return OpenSection(line, value);
    if (m_partial)
        return OpenSection(line, std::nullopt);
    line.Keep();
    return FailCondition(line, condition);
}

long CPreprocessor::DirectiveElse(CDirectiveLine& line)
{
    _IfDefStateInfo* const section = InnermostSection();
    if (!section)
        return FailWithout(line, L"ifdef");
    const bool skipElse = section->m_state == _IfDefStateInfo::BranchTaken && !section->m_unresolved;
    section->m_state = skipElse ? _IfDefStateInfo::ElseSkipped : _IfDefStateInfo::ElseActive;
    if (!section->m_savedSkipping)
        m_skipping = skipElse;
    if (section->m_unresolved)
        line.Keep();
    return 0;
}

long CPreprocessor::DirectiveElif(CDirectiveLine& line)
{
    _IfDefStateInfo* const section = InnermostSection();
    if (!section)
        return FailWithout(line, L"if");
    if (!section->m_unresolved && section->m_state == _IfDefStateInfo::NoBranchYet)
        return DecideBranch(line, *section);
    section->m_state = _IfDefStateInfo::BranchTaken;
    m_skipping = !section->m_unresolved;
    if (!section->m_unresolved)
        return 0;
    wxString condition;
    ReplaceCondition(line, condition);
    line.output.append(line.at, line.rest - line.at).append(condition);
    return 0;
}

long CPreprocessor::DecideBranch(CDirectiveLine& line, _IfDefStateInfo& section)
{
    wxString condition;
    const wxArrayString noNames;
    const long replaced = ReplaceDefines(line.rest, line.end, condition, line.position, CNameList(noNames));
    if (replaced < 0 || (replaced == 1 && !m_partial))
        return -1;
    bool value = false;
    if (replaced != 0 || !EvaluateCondition(condition, value))
        return FailCondition(line, condition);
    section.m_state = value ? _IfDefStateInfo::BranchTaken : _IfDefStateInfo::NoBranchYet;
    if (!section.m_savedSkipping)
        m_skipping = !value;
    return 0;
}

long CPreprocessor::DirectiveElseifdef(CDirectiveLine& line)
{
    _IfDefStateInfo* const section = InnermostSection();
    if (!section)
        return FailWithout(line, L"ifdef");
    const bool found = m_defines.Find(NameBehind(line)) != nullptr;
    if (section->m_unresolved) {
        if (!found) {
            line.Keep();
            return 0;
        }
        // A later pass must take this branch without knowing the name.
        line.output += wxString::Format(wxS("%c%s (1==1)"), DirectiveChar, wxS("elif"));
        section->m_state = _IfDefStateInfo::BranchTaken;
        m_skipping = false;
        return 0;
    }
    const bool takes = section->m_state == _IfDefStateInfo::NoBranchYet && found;
    if (section->m_state != _IfDefStateInfo::NoBranchYet || found)
        section->m_state = _IfDefStateInfo::BranchTaken;
    if (!section->m_savedSkipping)
        m_skipping = !takes;
    return 0;
}

long CPreprocessor::DirectiveEndif(CDirectiveLine& line)
{
    const _IfDefStateInfo* const section = InnermostSection();
    if (!section)
        return FailWithout(line, L"ifdef");
    if (section->m_unresolved)
        line.Keep();
    m_skipping = section->m_savedSkipping;
    m_sections.pop_back();
    return 0;
}

long CPreprocessor::DirectiveEndCheck(const _BlockPosition& WXUNUSED(position))
{
    const _IfDefStateInfo* const section = InnermostSection();
    if (!section)
        return 0;
    Fail(wxString::Format(wxS("Missing %c%s for %c%s started %s!"), DirectiveChar, wxS("endif"), DirectiveChar,
                          wxS("ifdef"), section->m_origin.GetContext()),
         nullptr);
    m_sections.clear();
    return -1;
}

long CPreprocessor::PreprocessCondition(wxString& condition)
{
    if (condition.find(DefinedWord) == wxString::npos)
        return 0;
    wxString result;
    const long kept = RewriteDefined(condition, result);
    condition.swap(result);
    return kept;
}

long CPreprocessor::RewriteDefined(const wxString& condition, wxString& result) const
{
    const std::wstring_view text = text_detail::View(condition);
    const std::wstring_view word(DefinedWord);
    const wchar_t* const begin = text.data();
    const wchar_t* const end = begin + text.size();
    const wchar_t* copied = begin;
    result.reserve(text.size());
    long kept = 0;
    for (size_t found = text.find(word); found != std::wstring_view::npos; found = text.find(word, found)) {
        const wchar_t* const at = begin + found;
        found += word.size();
        const wchar_t* const open = text_detail::SkipBlanks(at + word.size(), end);
        if ((at != begin && text_detail::IsWordChar(at[-1])) || open == end || *open != L'(')
            continue;
        const wchar_t* const close = std::find(open, end, L')');
        if (close == end)
            break;
        const wchar_t* name = open + 1;
        const wchar_t* nameEnd = close;
        line_scan_detail::Trim(name, nameEnd);
        const bool isDefined = m_defines.Find(std::wstring_view(name, nameEnd - name)) != nullptr;
        result.append(copied, at - copied);
        if (isDefined || !m_partial)
            result += isDefined ? wxS("true") : wxS("false");
        else
            result.append(wxS("defined(")).append(name, nameEnd - name).append(wxS(")"));
        kept |= !isDefined && m_partial;
        copied = close + 1;
        found = copied - begin;
    }
    result.append(copied, end - copied);
    return kept;
}
