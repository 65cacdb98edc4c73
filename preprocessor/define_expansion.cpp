#include "parser/parser.h"
#include "parser/parser_unit.h"
#include "preprocessor/directive_line_detail.h"
#include "preprocessor/line_scan_detail.h"
#include "preprocessor/name_list_detail.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/preprocessor_scripts_detail.h"
#include "preprocessor/text_span_detail.h"

#include <string_view>
#include <utility>
#include <vector>

using text_detail::FindClosingQuote;
using text_detail::IsBlank;
using text_detail::IsQuote;
using text_detail::Joined;
using text_detail::SkipWord;
using text_detail::View;

namespace
{

const CParserUnit* UnitOf(const _BlockPosition* position)
{
    return position ? position->m_unit : nullptr;
}

void AppendTexts(wxArrayString& array, const std::vector<std::wstring_view>& texts)
{
    const size_t count = array.size();
    array.Alloc(count + texts.size());
    array.Add(wxString(), texts.size());
    for (size_t i = 0; i < texts.size(); ++i)
        array[count + i].assign(texts[i].data(), texts[i].size());
}

/// A "#" in a text, and what stands behind it.
struct Reference
{
    bool isQuoted; ///< a second one asks for quotes
    const wchar_t* word;
    const wchar_t* end; ///< of the word, which may be empty
};

Reference ReadReference(const wchar_t* at, const wchar_t* end)
{
    const bool isQuoted = at + 1 != end && at[1] == DirectiveChar;
    const wchar_t* const word = at + (isQuoted ? 2 : 1);
    return {isQuoted, word, SkipWord(word, end)};
}

/// Gives a variable another value for as long as it lives.
template <typename Value> class ScopedValue
{
public:
    ScopedValue(Value& variable, Value value) : m_variable(variable), m_saved(variable) { m_variable = value; }
    ~ScopedValue() { m_variable = m_saved; }
    ScopedValue(const ScopedValue&) = delete;
    ScopedValue& operator=(const ScopedValue&) = delete;

private:
    Value& m_variable;
    Value m_saved;
};

} // namespace

long CPreprocessor::ApplyDefine(const wxString& name, wxString& result)
{
    result.clear();
    const std::wstring_view word = View(name);
    const _DefineInfo* const define = m_defines.Find(word);
    if (!define) {
        Fail(NotDefined(word), nullptr);
        return 1;
    }
    const wchar_t* const nothing = L"";
    const wchar_t* at = nothing;
    return ExpandUse(word, *define, at, nothing, nullptr, false, result);
}

/// Reads the arguments of a define at `at` and appends its expansion.
/// @return 0; 1 when partial mode could not resolve an argument or what a conditional text asks for (nothing is
/// appended); -1 after a recorded error.
long CPreprocessor::ExpandUse(std::wstring_view word, const _DefineInfo& define, const wchar_t*& at, const wchar_t* end,
                              const _BlockPosition* position, bool quote, wxString& result)
{
    const bool hasArguments = at != end && *at == L'(';
    if (!hasArguments && !quote && define.params.empty() && define.value.find(DirectiveChar) == wxString::npos) {
        if (result.length() + define.value.length() > m_limits.expandedLength)
            return FailExpansion(word, position);
        result += define.value;
        return 0;
    }
    const wxString name(word.data(), word.size());
    wxArrayString arguments;
    if (const long status = GetParams(name, at, end, arguments, m_parser, position))
        return status;
    if (arguments.size() != define.params.size())
        return Fail(wxString::Format(wxS("\"%s\" requires %lu parameters, but only %lu given !"), name,
                                     static_cast<unsigned long>(define.params.size()),
                                     static_cast<unsigned long>(arguments.size())),
                    UnitOf(position));
    const size_t before = result.length();
    if (quote)
        result.append(1, wxUniChar(L'"'));
    const long status = ReplaceParams(name, result, define, arguments, m_parser, position);
    if (status == 1)
        result.Truncate(before);
    else if (quote)
        result.append(1, wxUniChar(L'"'));
    return status;
}

long CPreprocessor::FailExpansion(std::wstring_view word, const _BlockPosition* position)
{
    return Fail(wxString::Format(wxS("\"%s\" : More than %lu characters after replacing defines !"),
                                 wxString(word.data(), word.size()),
                                 static_cast<unsigned long>(m_limits.expandedLength)),
                UnitOf(position));
}

long CPreprocessor::DirectiveReplaceDefines(const wxString& text, wxString& result, const _BlockPosition& position,
                                            const wxArrayString& params)
{
    const wchar_t* const begin = text.wx_str();
    return ReplaceDefines(begin, begin + text.length(), result, position, CNameList(params));
}

long CPreprocessor::ReplaceDefines(const wchar_t* at, const wchar_t* end, wxString& result,
                                   const _BlockPosition& position, const CNameList& leftAlone)
{
    // The arguments of the defines used in the text leave the same names alone.
    const ScopedValue inArguments(m_leftAlone, &leftAlone);
    result.clear();
    const wchar_t* copied = at;
    long status = 0;
    while (at != end) {
        if (IsQuote(*at)) {
            at = FindClosingQuote(at, end);
            if (at == end)
                return Fail(wxS("String not terminated !"), position.m_unit);
        }
        if (*at != DirectiveChar) {
            ++at;
            continue;
        }
        const auto [isQuoted, word, after] = ReadReference(at, end);
        const bool isText = word == end || *word == ScriptOpen || *word == L'(' || IsBlank(*word);
        const std::wstring_view name(word, after - word);
        if (isText || leftAlone.Find(name) != wxNOT_FOUND) {
            at = after;
            continue;
        }
        result.append(copied, at - copied);
        copied = std::exchange(at, after);
        const _DefineInfo* const define = m_defines.Find(name);
        if (!define) {
            if (!m_partial) {
                Fail(NotDefined(name), position.m_unit);
                return 1;
            }
            status = 1;
            continue;
        }
        const long expanded = ExpandUse(name, *define, at, end, &position, isQuoted, result);
        if (expanded < 0 || (expanded == 1 && !m_partial))
            return -1;
        if (expanded == 0)
            copied = at;
        status |= expanded;
    }
    result.append(copied, end - copied);
    return status;
}

/// Cuts a parenthesised list into its trimmed arguments; nothing when `at` is not at a "(".
long CPreprocessor::SplitArguments(const wxString& name, const wchar_t*& at, const wchar_t* end,
                                   wxArrayString& arguments, const _BlockPosition* position)
{
    if (at == end || *at != L'(')
        return 0;
    const wchar_t* const open = at;
    const wchar_t* start = open + 1;
    // An array that grows as they come would copy them all again and again.
    std::vector<std::wstring_view>& places = m_argumentPlaces;
    places.clear();
    const auto add = [&](const wchar_t* stop, bool keepEmpty) {
        const wchar_t* argumentEnd = stop;
        line_scan_detail::Trim(start, argumentEnd);
        if (keepEmpty || start != argumentEnd)
            places.emplace_back(start, argumentEnd - start);
        start = stop + 1;
    };
    bool nested = false;
    for (const wchar_t* p = start; p != end; ++p) {
        if (IsQuote(*p)) {
            p = FindClosingQuote(p, end);
            if (p == end)
                break;
        } else if (*p == L'(' && nested)
            return Fail(wxS("CPreprocessor::GetParams multiple nested parenthesis not supported"), UnitOf(position));
        else if (*p == L'(')
            nested = true;
        else if (*p == L')' && nested)
            nested = false;
        else if (*p == L')') {
            add(p, !arguments.empty() || !places.empty());
            at = start;
            AppendTexts(arguments, places);
            return 0;
        } else if (*p == L',' && !nested)
            add(p, true);
    }
    const std::wstring_view rest(open, end - open);
    return Fail(Joined({L"\"", View(name), L"\" did not find end of parameters in ", rest, L" !"}), UnitOf(position));
}

long CPreprocessor::GetParams(wxString name, const wchar_t*& at, const wchar_t* end, wxArrayString& params,
                              CParser* parser, const _BlockPosition* position)
{
    if (SplitArguments(name, at, end, params, position) != 0)
        return -1;
    if (!position || params.empty())
        return 0;
    if (m_argumentNesting >= m_limits.argumentNesting)
        return Fail(
            wxString::Format(wxS("\"%s\" : More than %u defines inside parameters !"), name, m_limits.argumentNesting),
            position->m_unit);
    const ScopedValue level(m_argumentNesting, m_argumentNesting + 1);
    long status = 0;
    const wxArrayString noNames;
    const CNameList none(noNames);
    const CNameList& leftAlone = m_leftAlone ? *m_leftAlone : none;
    for (wxString& argument : params) {
        const wchar_t* const begin = argument.wx_str();
        const wchar_t* const argumentEnd = begin + argument.length();
        // Strings in it are closed, so there is nothing to do or to report.
        if (text_detail::FindChar(begin, argumentEnd, DirectiveChar) == argumentEnd)
            continue;
        wxString replaced;
        const long result = ReplaceDefines(begin, argumentEnd, replaced, *position, leftAlone);
        if (result < 0 || (result == 1 && !m_partial)) {
            wxString reason;
            if (parser)
                parser->GetLastErrorStr(&reason);
            return Fail(wxString::Format(wxS("\"%s\" error parsing parameters '%s'->'%s' : %s !"), name, argument,
                                         replaced, reason),
                        position->m_unit);
        }
        status |= result;
        argument.swap(replaced);
    }
    return status;
}

/// Puts the arguments of one use into one define's value.
class CParamSubstitution
{
public:
    CParamSubstitution(CPreprocessor& pp, const wxString& name, const wxArrayString& params,
                       const wxArrayString& arguments, const _BlockPosition* position)
        : m_pp(pp), m_name(name), m_params(params), m_arguments(arguments), m_position(position)
    {}

    long Substitute(const wchar_t* at, const wchar_t* end, wxString& result);

private:
    long SubstituteConditional(const wchar_t*& at, const wchar_t* end, wxString& result);
    long Choose(const wchar_t* condition, const wchar_t* question, bool& value);
    long FailConditional(const wchar_t* what);
    long FailExpansion();
    bool Append(wxString& result, const wchar_t* from, size_t length) const;

    static const wchar_t* FindAtThisLevel(const wchar_t* at, const wchar_t* end, wchar_t what);

    CPreprocessor& m_pp;
    const wxString& m_name;
    CNameList m_params;
    const wxArrayString& m_arguments;
    const _BlockPosition* m_position;
};

long CParamSubstitution::Substitute(const wchar_t* at, const wchar_t* end, wxString& result)
{
    const wchar_t* copied = at;
    while (at != end) {
        if (IsQuote(*at)) {
            const wchar_t* const close = FindClosingQuote(at, end);
            at = close == end ? end : close + 1;
            continue;
        }
        if (*at != DirectiveChar) {
            ++at;
            continue;
        }
        auto [isQuoted, word, after] = ReadReference(at, end);
        const bool conditional = word != end && *word == L'(';
        const int param = after == word ? wxNOT_FOUND : m_params.Find(std::wstring_view(word, after - word));
        if (param == wxNOT_FOUND && !conditional) {
            at = after;
            continue;
        }
        if (!Append(result, copied, at - copied))
            return FailExpansion();
        if (isQuoted)
            result.append(1, wxUniChar(L'"'));
        if (conditional) {
            if (const long status = SubstituteConditional(after, end, result))
                return status;
        } else if (!Append(result, m_arguments[param].wx_str(), m_arguments[param].length()))
            return FailExpansion();
        if (isQuoted)
            result.append(1, wxUniChar(L'"'));
        copied = at = after;
    }
    return Append(result, copied, end - copied) ? 0 : FailExpansion();
}

bool CParamSubstitution::Append(wxString& result, const wchar_t* from, size_t length) const
{
    if (result.length() + length > m_pp.m_limits.expandedLength)
        return false;
    result.append(from, length);
    return true;
}

long CParamSubstitution::FailExpansion()
{
    return m_pp.FailExpansion(View(m_name), m_position);
}

/// `at` is at the "(" and moves behind the ")".
long CParamSubstitution::SubstituteConditional(const wchar_t*& at, const wchar_t* end, wxString& result)
{
    if (m_pp.m_argumentNesting >= m_pp.m_limits.argumentNesting)
        return m_pp.Fail(wxString::Format(wxS("%c%s : More than %u conditional texts inside each other !"),
                                          DirectiveChar, m_name, m_pp.m_limits.argumentNesting),
                         UnitOf(m_position));
    const ScopedValue level(m_pp.m_argumentNesting, m_pp.m_argumentNesting + 1);
    const wchar_t* const condition = at + 1;
    const wchar_t* const question = FindAtThisLevel(condition, end, L'?');
    if (question == end)
        return FailConditional(wxS("question"));
    const wchar_t* const colon = FindAtThisLevel(question + 1, end, L':');
    if (colon == end)
        return FailConditional(wxS("colon"));
    const wchar_t* const close = FindAtThisLevel(colon + 1, end, L')');
    if (close == end)
        return FailConditional(wxS("close parenthesis"));
    bool value = false;
    if (const long status = Choose(condition, question, value))
        return status;
    at = close + 1;
    return value ? Substitute(question + 1, colon, result) : Substitute(colon + 1, close, result);
}

long CParamSubstitution::Choose(const wchar_t* condition, const wchar_t* question, bool& value)
{
    wxString text;
    if (const long status = Substitute(condition, question, text))
        return status;
    wxString expression = text;
    if (m_pp.PreprocessCondition(expression) == 1)
        return 1;
    if (m_pp.Scripts().condition.Evaluate(expression, value))
        return 0;
    return m_pp.Fail(
        wxString::Format(wxS("%c%s : Can not evaluate question condition: %s"), DirectiveChar, m_name, text),
        UnitOf(m_position));
}

long CParamSubstitution::FailConditional(const wchar_t* what)
{
    return m_pp.Fail(wxString::Format(wxS("%c(param?true:false) : Can not find %s"), DirectiveChar, what),
                     UnitOf(m_position));
}

/// The next `what` outside strings and parentheses, before the parenthesis that closes this level; else `end`.
const wchar_t* CParamSubstitution::FindAtThisLevel(const wchar_t* at, const wchar_t* end, wchar_t what)
{
    size_t depth = 0;
    for (; at != end; ++at) {
        if (depth == 0 && *at == what)
            return at;
        if (IsQuote(*at)) {
            at = FindClosingQuote(at, end);
            if (at == end)
                return end;
        } else if (*at == L'(')
            ++depth;
        else if (*at == L')' && depth-- == 0)
            return end;
    }
    return end;
}

long CPreprocessor::ReplaceParams(const wxString& name, wxString& result, const _DefineInfo& define,
                                  const wxArrayString& arguments, CParser* WXUNUSED(parser),
                                  const _BlockPosition* position)
{
    const wchar_t* const value = define.value.wx_str();
    return CParamSubstitution(*this, name, define.params, arguments, position)
        .Substitute(value, value + define.value.length(), result);
}
