#include "tags/tag_outline_detail.h"

#include "base/posix_detail.h"
#include "tags/tag_block.h"
#include "tags/tag_parser.h"

#include <utility>

using namespace tag_text_detail;
using namespace text_detail;

bool TagOutline::CanRead(const CTagParser& parser)
{
    const Span begin(parser.GetBeginTag());
    const Span end(parser.GetEndTag());
    const auto isPlain = [](const Span& tag) {
        return CanBeFound(tag) && !IsAroundTag(*tag.begin) && !IsAroundTag(tag.end[-1]);
    };
    return parser.m_tagsAreAscii && isPlain(begin) && isPlain(end);
}

TagOutline::TagOutline(const CTagParser& parser)
    : m_beginTag(parser.GetBeginTag()), m_endTag(parser.GetEndTag()), m_doubleBeginTag(parser.GetDoubleBeginTag()),
      m_doubleEndTag(parser.GetDoubleEndTag()), m_marks{Span(m_beginTag), Span(m_endTag), Span(m_doubleBeginTag),
                                                        Span(m_doubleEndTag)},
      m_nestingLimit(parser.GetNestingLimit())
{}

TagOutline::~TagOutline() = default;

TagOutline::Found TagOutline::ReadBlock(CArrayParserUnit& units, int& unit)
{
    const size_t count = m_entries.size();
    auto slot = static_cast<size_t>(unit);
    size_t at = 0;
    const Found first = FindBeginTag(units, slot, at);
    unit = static_cast<int>(slot);
    if (first != Found::block)
        return first;
    // Costs no memory before it is written to, and growing would write everything several times.
    if (count == 0) {
        m_entries.reserve(units.GetCount() - slot);
        vcq::detail::PreferLargePages(m_entries.data(), m_entries.capacity() * sizeof(Entry));
    }
    m_openTags.clear();
    while (ReadTag(units, slot, at)) {
        ++slot;
        if (m_openTags.empty()) {
            unit = static_cast<int>(slot);
            return Found::block;
        }
        if (FindBeginTag(units, slot, at) != Found::block)
            break;
    }
    m_entries.resize(count);
    return Found::other;
}

TagOutline::Found TagOutline::FindBeginTag(const CArrayParserUnit& units, size_t& slot, size_t& at) const
{
    for (const size_t count = units.GetCount(); slot < count; ++slot) {
        const CUnitSlot& found = units.Peek(slot);
        if (found.IsHole())
            continue;
        if (!found.IsLine())
            return Found::other;
        at = StartOfTag(found.Line(), m_marks.begin);
        if (at != wxString::npos)
            return Found::block;
    }
    return Found::end;
}

/// False for a tag that is not plain.
bool TagOutline::ReadTag(CArrayParserUnit& units, size_t slot, size_t at)
{
    const std::string_view line = units.Peek(slot).Line();
    const std::optional<LineTag> tag = FindTagOnLine(line, at, m_marks, false);
    if (!tag || tag->isDouble)
        return false;
    const TagTitle<char> title = ReadTagTitle(line.substr(at, tag->behind - at), m_marks.begin);
    if (title.type.empty() || (title.isNamed && title.name.empty()))
        return false;
    if (!(title.closes ? Close(slot, title) : Open(slot, title, tag->beforeEnd == L'/')))
        return false;
    CutBehindTag(units, slot, *tag);
    return true;
}

bool TagOutline::Open(size_t slot, const TagTitle<char>& title, bool isSingle)
{
    const Index index = Count();
    if (!isSingle) {
        if (m_openTags.size() >= m_nestingLimit)
            return false;
        m_openTags.push_back({index, title.type, title.name});
    }
    m_entries.push_back({static_cast<uint32_t>(slot), static_cast<uint32_t>(slot), index + 1});
    return true;
}

/// False where the tag is not the one that has to be closed, and where it would name the block.
bool TagOutline::Close(size_t slot, const TagTitle<char>& title)
{
    if (m_openTags.empty())
        return false;
    const OpenTag& open = m_openTags.back();
    if (title.type != open.type || (title.isNamed && title.name != open.name))
        return false;
    m_entries[open.index].closing = static_cast<uint32_t>(slot);
    m_entries[open.index].behind = Count();
    m_openTags.pop_back();
    return true;
}

void TagOutline::AddBlock(std::unique_ptr<CTagBlock> block)
{
    m_entries.push_back({NoSlot, static_cast<uint32_t>(m_blocks.size()), Count() + 1});
    m_blocks.push_back(std::move(block));
}

void TagOutline::TakeLines(CArrayParserUnit& text)
{
    m_lines.TakeAll(text);
    size_t from = 0;
    for (Index index = 0; index != Count(); index = Behind(index)) {
        if (Opening(index) == NoSlot)
            continue;
        m_lines.PutBack(text, from, Opening(index));
        from = Closing(index) + size_t(1);
    }
    m_lines.PutBack(text, from, m_lines.GetCount());
}

std::unique_ptr<CTagBlock>* TagOutline::BlockAt(Index index)
{
    return Opening(index) == NoSlot ? &m_blocks[Closing(index)] : nullptr;
}

TagTitle<char> TagOutline::TitleAt(Index index) const
{
    const std::string_view line = m_lines.Peek(Opening(index)).Line();
    return ReadTagTitle(line.substr(SkipAroundTag(line, 0)), m_marks.begin);
}

std::string_view TagOutline::OptionsAt(Index index) const
{
    std::string_view text = m_lines.Peek(Opening(index)).Line();
    TakeOptions(text, m_marks, false, {true, true});
    return text;
}

void TagOutline::MoveContent(Index index, CArrayParserUnit& to)
{
    size_t from = Opening(index) + size_t(1);
    for (Index nested = index + 1; nested != Behind(index); nested = Behind(nested)) {
        MoveLines(from, Opening(nested), to);
        from = Closing(nested) + size_t(1);
    }
    if (!IsSingle(index))
        MoveLines(from, Closing(index), to);
}

void TagOutline::MoveLines(size_t from, size_t behind, CArrayParserUnit& to)
{
    m_lines.MoveTo(to, to.GetCount(), from, behind);
}
