#include "parser/parser_unit.h"
#include "preprocessor/directive_line_detail.h"
#include "preprocessor/line_scan_detail.h"
#include "preprocessor/name_list_detail.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/text_detail.h"
#include "preprocessor/text_span_detail.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>

using text_detail::View;

namespace
{

/// A define as the directive that makes it: "NAME VALUE" or "NAME(A,B) VALUE".
wxString FormatDefine(const wxString& name, const _DefineInfo& define)
{
    wxString text = name;
    if (!define.params.empty())
        text << wxS("(") << wxJoin(define.params, wxS(','), wxS('\0')) << wxS(")");
    return text << wxS(" ") << define.value;
}

std::wstring_view WordAt(const wchar_t* at, const wchar_t* end)
{
    return std::wstring_view(at, text_detail::SkipWord(at, end) - at);
}

/// The name that a line defines, empty when it defines none.
std::wstring_view DefinedName(const wchar_t* at, const wchar_t* end)
{
    at = text_detail::SkipBlanks(at, end);
    if (at == end || *at != DirectiveChar)
        return {};
    const std::wstring_view word = WordAt(at + 1, end);
    if (word != L"define" && word != L"redefine")
        return {};
    return WordAt(text_detail::SkipBlanks(at + 1 + word.size(), end), end);
}

} // namespace

void CPreprocessor::AddDefine(const wxString& name, const wxString& value, wxArrayString params)
{
    const _DefineInfo* const known = m_defines.Find(View(name));
    if (!known) {
        _DefineInfo define{params, value, wxString()};
        m_defines.Set(name, define);
    } else if (known->value != value)
        Fail(wxString::Format(wxS("\"%s\" already defined in %s (%s was %s)!"), name, known->origin, value,
                              known->value),
             nullptr);
}

void CPreprocessor::RemoveDefine(const wxString& name)
{
    m_defines.Erase(View(name));
}

bool CPreprocessor::HasDefine(const wxString& name) const
{
    return m_defines.Find(View(name)) != nullptr;
}

void CPreprocessor::CopyDefineTo(CPreprocessor* other)
{
    if (other == this)
        return;
    m_defines.ForEach([other](const CMapStringToDefineInfo::Entry& entry) {
        other->AddDefine(entry.name, entry.define.value, entry.define.params);
    });
}

void CPreprocessor::GetDefines(wxString& out) const
{
    out.clear();
    m_defines.ForEach([&out](const CMapStringToDefineInfo::Entry& entry) {
        out << wxS("#define ") << FormatDefine(entry.name, entry.define) << wxS("\n");
    });
}

void CPreprocessor::BufferInPlaceRemoveDefines(wxString& text, const wchar_t** names)
{
    std::unordered_set<std::wstring_view> listed;
    for (; *names; ++names)
        listed.insert(*names);
    if (listed.empty())
        return;
    const wchar_t* const begin = text.wx_str();
    const wchar_t* const end = begin + text.length();
    wxString result;
    const wchar_t* copied = begin;
    for (const wchar_t* line = begin; line != end;) {
        const wchar_t* const lineEnd = std::find_if(line, end, [](wchar_t ch) { return ch == L'\n' || ch == L'\r'; });
        const std::wstring_view name = DefinedName(line, lineEnd);
        if (!name.empty() && listed.count(name)) {
            result.append(copied, line - copied);
            copied = lineEnd;
        }
        line = lineEnd == end ? end : lineEnd + 1;
    }
    if (copied == begin)
        return;
    result.append(copied, end - copied);
    text.swap(result);
}

/// Reads what stands behind "define" or "redefine".
/// @return 0; 1 when partial mode could not resolve the value; -1 after a recorded error.
long CPreprocessor::ReadDefine(CDirectiveLine& line, wxString& name, _DefineInfo& define)
{
    const wchar_t* at = text_detail::SkipBlanks(line.rest, line.end);
    const wchar_t* const nameStart = at;
    at = text_detail::SkipWord(at, line.end);
    name.assign(nameStart, at - nameStart);
    if (name.empty()) {
        const CParserUnit* const unit = line.position.m_unit;
        return Fail(wxS("No Define name in line: ") + unit->m_text, unit);
    }
    if (SplitArguments(name, at, line.end, define.params, &line.position) != 0)
        return -1;
    const wchar_t* end = line.end;
    line_scan_detail::Trim(at, end);
    define.origin = line.position.GetOrigin().GetContext();
    const long result = ReplaceDefines(at, end, define.value, line.position, CNameList(define.params));
    return result == 1 && !m_partial ? -1 : result;
}

void CPreprocessor::KeepDefine(CDirectiveLine& line, const wxString& name, const _DefineInfo& define)
{
    line.output.append(line.at, line.rest - line.at).append(1, wxUniChar(L' ')).append(FormatDefine(name, define));
    m_wasPartial = true;
}

/// Whether the values of all defines stay within their limit when a name gets this one.
bool CPreprocessor::HasRoomFor(const wxString& name, const wxString& value) const
{
    const size_t length = m_defines.ValuesLength() + value.length();
    if (length <= m_limits.definesLength)
        return true;
    const _DefineInfo* const known = m_defines.Find(View(name));
    const size_t before = known ? known->value.length() : 0;
    return value.length() <= before || length - before <= m_limits.definesLength;
}

long CPreprocessor::StoreDefine(CDirectiveLine& line, const wxString& name, _DefineInfo& define)
{
    if (!HasRoomFor(name, define.value))
        return Fail(wxString::Format(wxS("\"%s\" : More than %lu characters in the values of all defines !"), name,
                                     static_cast<unsigned long>(m_limits.definesLength)),
                    line.position.m_unit);
    m_defines.Set(name, define);
    return 0;
}

long CPreprocessor::DirectiveDefine(CDirectiveLine& line)
{
    wxString name;
    _DefineInfo define;
    const long result = ReadDefine(line, name, define);
    if (result < 0)
        return result;
    if (result == 1) {
        KeepDefine(line, name, define);
        return 0;
    }
    const _DefineInfo* const known = m_defines.Find(View(name));
    if (!known)
        return StoreDefine(line, name, define);
    if (known->value != define.value)
        return Fail(wxString::Format(wxS("\"%s\" already defined in %s (%s was %s) !"), name, known->origin,
                                     define.value, known->value),
                    line.position.m_unit);
    return 0;
}

/// What changes a define needs one.
long CPreprocessor::FailNotDefined(CDirectiveLine& line, const wxString& name)
{
    if (!m_partial)
        return Fail(wxString::Format(wxS("\"%s\" not defined!"), name), line.position.m_unit);
    KeepForLaterPass(line);
    return 0;
}

long CPreprocessor::DirectiveRedefine(CDirectiveLine& line)
{
    wxString name;
    _DefineInfo define;
    const long result = ReadDefine(line, name, define);
    if (result < 0)
        return result;
    if (!m_defines.Find(View(name)))
        return FailNotDefined(line, name);
    if (result == 0)
        return StoreDefine(line, name, define);
    KeepDefine(line, name, define);
    return 0;
}

long CPreprocessor::DirectiveUndef(CDirectiveLine& line)
{
    const wchar_t* const at = text_detail::SkipBlanks(line.rest, line.end);
    const wxString name(at, text_detail::SkipWord(at, line.end) - at);
    return m_defines.Erase(View(name)) ? 0 : FailNotDefined(line, name);
}
