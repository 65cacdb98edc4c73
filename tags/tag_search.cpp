// Where tags are in a block's units.

#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tags/tag_block.h"
#include "tags/tag_line_detail.h"
#include "tags/tag_parser.h"
#include "tags/tag_reading_detail.h"

#include <algorithm>

using namespace tag_text_detail;
using namespace text_detail;

namespace
{

/// Whether `what` stands at `at`, which is not behind the end of the line.
bool HasAt(const wxString& line, size_t at, const wxString& what)
{
    return StartsWith(TextOf(line).substr(at), Span(what));
}

} // namespace

const CParserUnit* CTagBlock::LastUnit() const
{
    for (unsigned int slot = GetCount(); slot-- > 0;) {
        if (!m_units.Peek(slot).IsHole())
            return m_units[slot];
    }
    return nullptr;
}

/// Whether a slot is a line of which no unit needs to be made to find tags in it.
bool CTagBlock::ReadsBytes(const CUnitSlot& slot) const
{
    return slot.IsLine() && m_tagParser && m_tagParser->m_tagsAreAscii;
}

TagMarks CTagBlock::Marks() const
{
    return {Span(GetBeginTag()), Span(GetEndTag()), Span(GetDoubleBeginTag()), Span(GetDoubleEndTag())};
}

bool CTagBlock::FindBeginTag(int& unit, size_t& at) const
{
    const Span tag(GetCurrentBeginTag());
    const int count = static_cast<int>(GetCount());
    if (!CanBeFound(tag))
        unit = count;
    for (unit = std::max(unit, 0); unit < count; ++unit) {
        const CUnitSlot& slot = m_units.Peek(unit);
        if (slot.IsHole())
            continue;
        at = ReadsBytes(slot) ? StartOfTag(slot.Line(), tag) : StartOfTag(TextOf(m_units[unit]->m_text), tag);
        if (at != wxString::npos)
            return true;
    }
    return false;
}

long CTagBlock::FindTag(int& unit, int& endUnit, wchar_t* afterBegin, wchar_t* beforeEnd)
{
    Tag tag{unit};
    const long result = SearchTag(tag, Split::Once);
    unit = tag.first;
    if (afterBegin && result != tagNotFound)
        *afterBegin = tag.afterBegin;
    if (result != 0)
        return result;
    endUnit = tag.last;
    if (beforeEnd && tag.beforeEnd)
        *beforeEnd = tag.beforeEnd;
    return 0;
}

/// Searches the end of the tag at character `at` of slot `unit`. Moves both to where the end tag is.
bool CTagBlock::FindEndTag(int& unit, size_t& at) const
{
    const wxString& tag = GetCurrentEndTag();
    // Where both tags are the same text, the begin tag must not end its own tag.
    if (HasAt(m_units[unit]->m_text, at, tag))
        at += GetCurrentBeginTag().length();
    const int opening = unit;
    auto found = static_cast<int>(at);
    if (!CanBeFound(Span(tag)) || !CPreprocessor::Find(this, unit, found, tag))
        return false;
    at = static_cast<size_t>(found) + (unit == opening ? at : 0);
    return true;
}

long CTagBlock::SearchTag(Tag& tag, Split split)
{
    if (!m_tagParser)
        return tagNotFound;
    if (!FindBeginTag(tag.first, tag.at))
        return Fail(tagNotFound, wxS("No tag found !"), LastUnit());
    if (split == Split::WholeRow && ReadsBytes(m_units.Peek(tag.first)) && SearchOnLine(tag))
        return 0;
    const CParserUnit* const opening = m_units[tag.first];
    if (HasAt(opening->m_text, tag.at, GetDoubleBeginTag()))
        m_doubleTag = true;
    const size_t behindBegin = tag.at + GetCurrentBeginTag().length();
    tag.afterBegin = behindBegin < opening->m_text.length() ? opening->m_text.GetChar(behindBegin) : wxUniChar(0);

    tag.last = tag.first;
    size_t end = tag.at;
    if (!FindEndTag(tag.last, end)) {
        const wxString place = opening->GetContext();
        return Fail(tagIncomplete, wxString::Format(wxS("Tag not ended (started in %s !)"), place), LastUnit());
    }
    if (end > 0)
        tag.beforeEnd = m_units[tag.last]->m_text.GetChar(end - 1);
    SplitBehindTag(tag.last, end + GetCurrentEndTag().length(), split);
    return 0;
}

/// Reads a tag that begins and ends on one line of which no unit has been made, and cuts the line behind it. False,
/// with nothing changed, for a tag that does not, and for those that are rewritten.
bool CTagBlock::SearchOnLine(Tag& tag)
{
    const std::optional<LineTag> found = FindTagOnLine(m_units.Peek(tag.first).Line(), tag.at, Marks(), m_doubleTag);
    if (!found)
        return false;
    m_doubleTag = found->isDouble;
    tag.last = tag.first;
    tag.afterBegin = found->afterBegin;
    tag.beforeEnd = found->beforeEnd;
    CutBehindTag(m_units, tag.first, *found);
    return true;
}

/// Makes what follows a tag on its line a unit of its own, for single tags. Mere blanks are dropped.
void CTagBlock::SplitBehindTag(int slot, size_t behind, Split split)
{
    CParserUnit& unit = *m_units[slot];
    if (SkipAroundTag(TextOf(unit.m_text), behind) == unit.m_text.length())
        unit.m_text.Truncate(behind);
    else if (!m_doubleTag && split == Split::Once)
        unit.SplitAt(behind, slot);
    else if (!m_doubleTag) {
        const std::vector<size_t> cuts = CutsOfRow(slot, behind);
        // From the last to the first, so that each cut copies no more than one tag.
        std::for_each(cuts.rbegin(), cuts.rend(), [&](size_t cut) { unit.SplitAt(cut, slot); });
    }
}

/// Where a line is to be cut behind the tag that ends at `behind` and behind each single tag that follows directly.
std::vector<size_t> CTagBlock::CutsOfRow(int slot, size_t behind) const
{
    const wxString& text = m_units[slot]->m_text;
    std::vector<size_t> cuts;
    size_t next = SkipAroundTag(TextOf(text), behind);
    while (next < text.length()) {
        cuts.push_back(behind);
        if (!HasAt(text, next, GetBeginTag()) || HasAt(text, next, GetDoubleBeginTag()))
            break;
        int last = slot;
        size_t end = next;
        if (!FindEndTag(last, end) || last != slot)
            break;
        behind = end + GetEndTag().length();
        next = SkipAroundTag(TextOf(text), behind);
    }
    return cuts;
}
