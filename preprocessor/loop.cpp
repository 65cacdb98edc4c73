#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "preprocessor/directive_line_detail.h"
#include "preprocessor/nested_text_detail.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/preprocessor_scripts_detail.h"
#include "preprocessor/text_detail.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What stands behind "for": a name, a blank, and three expressions separated by ";".
struct _LoopHeader
{
    explicit _LoopHeader(wxString arguments)
    {
        CPreprocessor::TrimLeft(arguments, L" ");
        CPreprocessor::TrimRight(arguments, L" ");
        wxString bounds;
        wxString endAndStep;
        name = arguments.BeforeFirst(wxS(' '), &bounds);
        start = bounds.BeforeFirst(wxS(';'), &endAndStep);
        end = endAndStep.BeforeFirst(wxS(';'), &step);
    }

    wxString name;
    wxString start;
    wxString end;
    wxString step;
};

namespace
{

/// The directive word that a unit's text begins with, empty for any other text.
std::wstring_view DirectiveWord(const CParserUnit& unit)
{
    const wchar_t* const begin = unit.m_text.wx_str();
    const wchar_t* const end = begin + unit.m_text.length();
    const wchar_t* const at = text_detail::SkipBlanks(begin, end);
    if (at == end || *at != DirectiveChar)
        return {};
    return std::wstring_view(at + 1, text_detail::SkipWord(at + 1, end) - (at + 1));
}

/// The slot of the "#endfor" that ends the loop whose body begins at `slot`, or -1.
int FindLoopEnd(const CParserBlock& block, int slot)
{
    size_t nesting = 0;
    const int count = static_cast<int>(block.GetCount());
    for (; slot < count; ++slot) {
        const CParserUnit* const unit = block.GetUnit(slot);
        const std::wstring_view word = unit ? DirectiveWord(*unit) : std::wstring_view();
        if (word == L"for")
            ++nesting;
        else if (word == L"endfor" && nesting-- == 0)
            return slot;
    }
    return -1;
}

struct LoopBody
{
    wxString text;
    CTextOrigin origin; ///< The lines that the text was made of.
};

/// Takes the body out of the block, up to the slot of its "#endfor", which becomes the current one.
LoopBody TakeBody(_BlockPosition& position, int loopEnd)
{
    LoopBody body;
    const auto lines = std::make_shared<std::vector<CSourceLine>>();
    while (position.m_index < loopEnd) {
        CParserUnit* const unit = position.m_block->GetUnit(position.m_index);
        if (!unit) {
            ++position.m_index;
            continue;
        }
        body.text.append(unit->m_text).append(1, wxUniChar(L'\n'));
        lines->push_back(unit->GetSource());
        position.m_block->RemoveElement(unit, &position.m_index, 1);
    }
    position.m_unit = position.m_block->GetUnit(loopEnd);
    body.origin.loopLines = lines;
    return body;
}

} // namespace

long CPreprocessor::DirectiveFor(_DirectiveLine& line)
{
    const long result = ApplyFor(line.Rest(), line.position);
    if (result != 1 || !m_partial)
        return result;
    line.output.append(1, wxUniChar(DirectiveChar)).append(wxS("endfor"));
    return 0;
}

/// @return 0; 1 when partial mode cannot know the bound yet; -1 after a recorded error.
long CPreprocessor::EvaluateBound(const wxString& bound, const wxString& messageStart, const _BlockPosition& position,
                                  int& value)
{
    wxString replaced;
    const long result = DirectiveReplaceDefines(bound, replaced, position, wxArrayString());
    if (result == 1 && m_partial)
        return 1;
    if (result != 0)
        return -1;
    wxString expression = replaced;
    if (PreprocessCondition(expression) == 1)
        return 1;
    if (!Scripts().loop.EvaluateNumber(expression, value))
        return Fail(messageStart + replaced, position.m_unit);
    return 0;
}

long CPreprocessor::EvaluateBounds(const _LoopHeader& header, const _BlockPosition& position, _LoopBounds& bounds)
{
    // The start is reported with the word "if"; users' tools know the text.
    const struct
    {
        const wxString& text;
        wxString messageStart;
        int& value;
    } parts[] = {
        {header.start, wxString::Format(wxS("%c%s : Can not evaluate start: "), DirectiveChar, wxS("if")),
         bounds.start},
        {header.end, wxString::Format(wxS("%s : Can not evaluate end: "), wxS("for")), bounds.end},
        {header.step, wxString::Format(wxS("%s : Can not evaluate step: "), wxS("for")), bounds.step},
    };
    long status = 0;
    for (const auto& part : parts) {
        const long result = EvaluateBound(part.text, part.messageStart, position, part.value);
        if (result < 0)
            return result;
        status |= result;
    }
    return status;
}

long CPreprocessor::CheckBounds(const _LoopBounds& bounds, const _LoopHeader& header, const CParserUnit* unit)
{
    if (bounds.start > bounds.end)
        return 0;
    if (bounds.step <= 0)
        return Fail(wxString::Format(wxS("%s : Step is not above 0: %s"), wxS("for"), header.step), unit);
    const long long passes = (static_cast<long long>(bounds.end) - bounds.start) / bounds.step + 1;
    if (m_limits.loopPasses && static_cast<unsigned long long>(passes) > m_limits.loopPasses)
        return Fail(wxString::Format(wxS("%s : More than %lu passes: %lld"), wxS("for"), m_limits.loopPasses, passes),
                    unit);
    return 0;
}

long CPreprocessor::ApplyFor(const wxString& arguments, _BlockPosition& position)
{
    CParserUnit* const directive = position.m_unit;
    if (m_loopNesting >= m_limits.loopNesting)
        return Fail(wxString::Format(wxS("%s : Loops nested deeper than %u"), wxS("for"), m_limits.loopNesting),
                    directive);
    const _LoopHeader header(arguments);
    _LoopBounds bounds;
    const long evaluated = EvaluateBounds(header, position, bounds);
    if (evaluated < 0 || (evaluated == 0 && CheckBounds(bounds, header, directive) != 0))
        return -1;
    const int loopEnd = FindLoopEnd(*position.m_block, position.m_index + 1);
    if (loopEnd < 0)
        return Fail(wxString::Format(wxS("Missing %c%s for %c%s started %s!"), DirectiveChar, wxS("endfor"),
                                     DirectiveChar, wxS("for"), directive->GetContext()),
                    directive);

    const wxString label =
        wxString::Format(wxS("%s (LOOP l.%d)"), directive->GetFileName(), static_cast<int>(directive->m_line));
    if (evaluated == 1) {
        ++position.m_index;
        const LoopBody body = TakeBody(position, loopEnd);
        m_wasPartial = true;
        // The loop's own name is not known before the pass that runs the loop.
        m_defines.erase(header.name);
        const CNestedText nested(m_sections.size(), m_sectionBase, m_loopNesting);
        const long result = nested.Insert(*m_parser, body.text, label, directive, false, body.origin, position);
        return result == 0 ? 1 : result;
    }
    // The passes' files copy the directive's unit, so it outlives its place in the block.
    const std::unique_ptr<CParserUnit> owner(directive);
    int slot = position.m_index;
    position.m_block->RemoveElement(directive, &slot, 0);
    const LoopBody body = TakeBody(position, loopEnd);
    if (!body.text.empty())
        return RunLoop(header.name, bounds, body.text, body.origin, label, directive, position);
    m_defines.erase(header.name);
    return 0;
}

long CPreprocessor::RunLoop(const wxString& name, const _LoopBounds& bounds, const wxString& body,
                            const CTextOrigin& origin, const wxString& label, const CParserUnit* directive,
                            _BlockPosition& position)
{
    const CNestedText nested(m_sections.size(), m_sectionBase, m_loopNesting);
    long result = 0;
    _DefineInfo variable;
    variable.origin = directive->GetContext();
    for (long long value = bounds.start; value <= bounds.end && result == 0; value += bounds.step) {
        variable.value = std::to_wstring(value);
        m_defines[name] = variable;
        result = nested.Insert(*m_parser, body, label, directive, false, origin, position);
    }
    m_defines.erase(name);
    return result;
}
