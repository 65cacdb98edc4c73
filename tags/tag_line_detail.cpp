#include "tags/tag_line_detail.h"

#include "parser/line_text_detail.h"
#include "parser/unit_array.h"
#include "preprocessor/outside_strings_detail.h"

using namespace tag_text_detail;
using namespace text_detail;

std::optional<LineTag> FindTagOnLine(std::string_view line, size_t at, const TagMarks& marks, bool inDouble)
{
    const std::string_view text = line.substr(at);
    const bool isDouble = inDouble || StartsWith(text, marks.doubleBegin);
    const Span& endTag = marks.End(isDouble);
    const size_t beginLength = marks.Begin(isDouble).Length();
    const char afterBegin = beginLength < text.length() ? text[beginLength] : '\0';
    if (afterBegin == '?' || afterBegin == '!' || !CanBeFound(endTag))
        return std::nullopt;
    // Where both tags are the same text, the begin tag must not end its own tag.
    const size_t from = StartsWith(text, endTag) ? beginLength : 0;
    const long found = FindOutsideStrings(text.data() + from, text.data() + text.length(), endTag);
    if (found == -1)
        return std::nullopt;
    const size_t end = at + from + static_cast<size_t>(found);
    const size_t behind = end + endTag.Length();
    const wchar_t beforeEnd = end > 0 ? static_cast<unsigned char>(line[end - 1]) : 0;
    return LineTag{behind, SkipAroundTag(line, behind), static_cast<unsigned char>(afterBegin), beforeEnd, isDouble};
}

void CutBehindTag(CArrayParserUnit& units, size_t slot, const LineTag& tag)
{
    const std::string_view line = units.Peek(slot).Line();
    if (tag.next == line.length())
        units.SetLine(slot, line.substr(0, tag.behind));
    else if (!tag.isDouble)
        CLineText::Split(units, slot, tag.behind, tag.next);
}
