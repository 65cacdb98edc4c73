#include "base/utf8_text.h"
#include "base/wide_number_detail.h"
#include "parser/block_lines_detail.h"
#include "parser/parser.h"
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
#include <utility>
#include <vector>

/// What stands behind "for": a name, a blank, and three expressions separated by ";".
struct CLoopHeader
{
    explicit CLoopHeader(wxString arguments)
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

/// Whether a line begins with the directive `word`.
template <typename Char> bool IsDirective(const Char* begin, const Char* end, std::string_view word)
{
    const Char* const at = text_detail::SkipBlanks(begin, end);
    if (at == end || *at != '#')
        return false;
    const Char* const wordEnd = text_detail::SkipWord(at + 1, end);
    return std::equal(at + 1, wordEnd, word.begin(), word.end());
}

bool IsDirective(const CUnitSlot& slot, std::string_view word)
{
    if (slot.IsLine())
        return IsDirective(slot.bytes, slot.bytes + slot.length, word);
    if (slot.IsHole())
        return false;
    const wxString& text = slot.unit->m_text;
    return IsDirective(text.wx_str(), text.wx_str() + text.length(), word);
}

/// The slot of the "#endfor" that ends the loop whose body begins at `slot`, or -1.
int FindLoopEnd(const CArrayParserUnit& units, int slot)
{
    size_t nesting = 0;
    const int count = static_cast<int>(units.GetCount());
    for (; slot < count; ++slot) {
        if (IsDirective(units.Peek(slot), "for"))
            ++nesting;
        else if (IsDirective(units.Peek(slot), "endfor") && nesting-- == 0)
            return slot;
    }
    return -1;
}

struct LoopBody
{
    CUtf8Text text;
    CTextOrigin origin; ///< The lines that the text was made of.
};

/// Takes the body out of the block, up to the slot of its "#endfor", which becomes the current one.
LoopBody TakeBody(_BlockPosition& position, int loopEnd)
{
    CArrayParserUnit& units = CBlockLines(*position.m_block).Units();
    std::string body;
    const auto sources = std::make_shared<std::vector<CSourceLine>>();
    while (position.m_index < loopEnd) {
        const CUnitSlot& slot = units.Peek(position.m_index);
        if (slot.IsHole()) {
            ++position.m_index;
            continue;
        }
        sources->push_back(position.m_block->GetOrigin(position.m_index).GetSource());
        if (slot.IsLine()) {
            body.append(slot.Line()).append(1, '\n');
            units.DropLine(position.m_index++);
        } else {
            body.append(CUtf8Text(slot.unit->m_text).Bytes()).append(1, '\n');
            position.m_block->RemoveElement(slot.unit, &position.m_index, 1);
        }
    }
    position.m_unit = CCurrentUnit(position.m_block, loopEnd);
    return {*CUtf8Text::FromBytes(std::move(body)), {wxString(), sources}};
}

/// The name of the file that a loop's lines are taken for.
wxString LabelOf(const CParserUnit& directive)
{
    wxString label = directive.GetFileName() + wxS(" (LOOP l.");
    vcq::detail::AppendNumber(label, static_cast<int>(directive.m_line));
    label.append(1, wxUniChar(L')'));
    return label;
}

} // namespace

long CPreprocessor::DirectiveFor(CDirectiveLine& line)
{
    line.position.m_unit.Get(); // while it is in its slot: what is inserted moves it
    const long result = ApplyFor(line.Rest(), line.position);
    if (result != 1 || !m_partial)
        return result;
    line.output.append(1, wxUniChar(DirectiveChar)).append(wxS("endfor"));
    return 0;
}

/// @return 0; 1 when partial mode cannot know the bound yet; -1 after a recorded error.
long CPreprocessor::EvaluateBound(const wxString& bound, const wchar_t* messageStart, const _BlockPosition& position,
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

long CPreprocessor::EvaluateBounds(const CLoopHeader& header, const _BlockPosition& position, CLoopBounds& bounds)
{
    // The start is reported with the word "if"; users' tools know the text.
    const struct
    {
        const wxString& text;
        const wchar_t* messageStart;
        int& value;
    } parts[] = {
        {header.start, wxS("#if : Can not evaluate start: "), bounds.start},
        {header.end, wxS("for : Can not evaluate end: "), bounds.end},
        {header.step, wxS("for : Can not evaluate step: "), bounds.step},
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

long CPreprocessor::CheckBounds(const CLoopBounds& bounds, const CLoopHeader& header, const CParserUnit* unit)
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
    const CLoopHeader header(arguments);
    CLoopBounds bounds;
    const long evaluated = EvaluateBounds(header, position, bounds);
    if (evaluated < 0 || (evaluated == 0 && CheckBounds(bounds, header, directive) != 0))
        return -1;
    const int loopEnd = FindLoopEnd(CBlockLines(*position.m_block).Units(), position.m_index + 1);
    if (loopEnd < 0)
        return Fail(wxString::Format(wxS("Missing %c%s for %c%s started %s!"), DirectiveChar, wxS("endfor"),
                                     DirectiveChar, wxS("for"), directive->GetContext()),
                    directive);

    const wxString label = LabelOf(*directive);
    if (evaluated == 1) {
        ++position.m_index;
        LoopBody body = TakeBody(position, loopEnd);
        m_wasPartial = true;
        // The loop's own name is not known before the pass that runs the loop.
        RemoveDefine(header.name);
        const CNestedText nested(m_sections.size(), m_sectionBase, m_loopNesting);
        const long result =
            nested.Insert(*m_parser, std::move(body.text), label, directive, false, body.origin, position);
        return result == 0 ? 1 : result;
    }
    // The passes' files copy the directive's unit, so it outlives its place in the block.
    const std::unique_ptr<CParserUnit> owner(directive);
    int slot = position.m_index;
    position.m_block->RemoveElement(directive, &slot, 0);
    LoopBody body = TakeBody(position, loopEnd);
    if (body.text.Bytes().empty()) {
        RemoveDefine(header.name);
        return 0;
    }
    const std::unique_ptr<CParserBlock> lines = m_parser->CutLines(std::move(body.text), label, directive, body.origin);
    return RunLoop(header.name, bounds, *lines, directive, position);
}

long CPreprocessor::RunLoop(const wxString& name, const CLoopBounds& bounds, const CParserBlock& lines,
                            const CParserUnit* directive, _BlockPosition& position)
{
    const CNestedText nested(m_sections.size(), m_sectionBase, m_loopNesting);
    long result = 0;
    const _DefineInfo initial{wxArrayString(), wxString(), directive->GetContext()};
    _DefineInfo variable = initial;
    for (long long value = bounds.start; value <= bounds.end && result == 0; value += bounds.step) {
        // It is what the variable was two passes before, if the body has not made something else of it.
        if (!variable.params.empty() || variable.origin != initial.origin)
            variable = initial;
        variable.value.clear();
        vcq::detail::AppendNumber(variable.value, value);
        m_defines.Set(name, variable);
        result = nested.InsertLines(*m_parser, lines, position);
    }
    RemoveDefine(name);
    return result;
}
