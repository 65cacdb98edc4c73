// How a block's units become a tree of tag blocks.

#include "parser/parser_unit.h"
#include "tags/tag_block.h"
#include "tags/tag_outline_detail.h"
#include "tags/tag_parser.h"
#include "tags/tag_reading_detail.h"
#include "tags/tag_title_detail.h"

#include <algorithm>
#include <utility>

using namespace tag_text_detail;
using namespace text_detail;

namespace
{

constexpr const wchar_t* IgnoredType = L"IGNORE ";

/// Puts a value back when a scope is left.
template <typename Value> class Restore
{
public:
    explicit Restore(Value& value) : m_value(value), m_before(value) {}
    ~Restore() { m_value = m_before; }
    Restore(const Restore&) = delete;
    Restore& operator=(const Restore&) = delete;

private:
    Value& m_value;
    const Value m_before;
};
template <typename Char> Text<Char> Trimmed(Text<Char> text)
{
    text.remove_prefix(SkipAroundTag(text, 0));
    while (!text.empty() && IsAroundTag(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Makes the single tag of "<?type options?>". The first two characters are taken for begin tag and "?", so the rest of
/// a longer begin tag stays.
void RewriteInstruction(CParserUnit& first, size_t at, CParserUnit& last, const wxString& begin, const wxString& end)
{
    first.m_text = begin + IgnoredType + first.m_text.Mid(at + 2);
    wxString text;
    if (last.m_text.EndsWith(wxS("?") + end, &text))
        last.m_text = text + end;
}

/// Makes the single tag of "<!data>". The first two characters are taken for begin tag and "!", the last for the end
/// tag.
void RewriteDeclaration(CParserUnit& unit, size_t at, const wxString& begin, const wxString& end)
{
    const wxString text = unit.m_text.Mid(at);
    const wxString data = text.length() > 3 ? text.Mid(2, text.length() - 3) : wxString();
    const bool holdsDouble = data.find(wxS('"')) != wxString::npos;
    const bool holdsSingle = data.find(wxS('\'')) != wxString::npos;
    const wxString quote = !holdsDouble ? wxS("\"") : !holdsSingle ? wxS("'") : wxS("");
    unit.m_text = begin + IgnoredType + wxS("data=") + quote + data + quote + end;
}

} // namespace

long CTagBlock::Fail(long code, const wxString& message, const CParserUnit* unit)
{
    if (m_parser)
        m_parser->SetError(message, unit);
    return code;
}
long CTagBlock::CreateSubBlocks()
{
    if (!m_tagParser)
        return 0;
    MakeSubBlocks();
    std::shared_ptr<TagOutline> outline;
    if (CanReadOutline())
        outline = std::make_shared<TagOutline>(*m_tagParser);
    const long result = ReadSubBlocks(outline.get());
    if (outline && outline->Count() != 0) {
        outline->TakeLines(m_units);
        m_unmade = {outline, 0, outline->Count()};
    }
    return result;
}

/// Whether nobody could tell blocks that are made when they are asked for from those that are made at once: derived
/// parsers make blocks of their own.
bool CTagBlock::CanReadOutline() const
{
    return typeid(*this) == typeid(CTagBlock) && typeid(*m_tagParser) == typeid(CTagParser) && !m_doubleTag &&
           TagOutline::CanRead(*m_tagParser);
}

/// @param outline takes the blocks that can be read so, and all behind the first of them; may be null.
long CTagBlock::ReadSubBlocks(TagOutline* outline)
{
    for (int unit = 0; unit < static_cast<int>(GetCount());) {
        const TagOutline::Found found = outline ? outline->ReadBlock(m_units, unit) : TagOutline::Found::other;
        if (found == TagOutline::Found::block)
            continue;
        if (found == TagOutline::Found::end) {
            m_tagParser->ClearError();
            return 0;
        }
        std::unique_ptr<CTagBlock> block = NewSubBlock();
        const long result = block->CreateSubBlocks(this, unit);
        if (unit < 0)
            return 0;
        if (outline && outline->Count() != 0)
            outline->AddBlock(std::move(block));
        else
            AddSubBlock(std::move(block));
        if (result != 0)
            return result;
    }
    return 0;
}

/// A block that its parser has made, as all are, but does not list.
std::unique_ptr<CTagBlock> CTagBlock::NewSubBlock()
{
    std::unique_ptr<CTagBlock> block(m_tagParser->CreateBlock(false));
    m_tagParser->RemoveBlock(block.get());
    block->m_parent = this;
    return block;
}

long CTagBlock::CreateSubBlocks(CTagBlock* source, int& unit)
{
    if (!m_tagParser) {
        unit = -1;
        return 0;
    }
    Tag opening{unit};
    // The source looks for double tags only for as long as a double block is being read.
    const Restore<bool> sourceTags(source->m_doubleTag);
    const long found = ReadOpeningTag(*source, opening);
    if (found == tagNotFound) {
        m_tagParser->ClearError();
        unit = -1;
        return 0;
    }
    if (found != 0)
        return found;
    Tag closing{opening.last + 1};
    std::vector<Range> content;
    const long read = opening.isSingle ? 0 : ReadContent(*source, opening, closing, content);
    if (read != 0)
        return read;

    TakeHeader(m_beginHeader, *source, opening);
    unit = opening.last + 1;
    const long processed = m_beginHeader->Process();
    if (processed != 0 || opening.isSingle)
        return processed;
    for (const Range& range : content)
        source->ExtractBlock(this, range.from, range.to);
    TakeHeader(m_endHeader, *source, closing);
    unit = closing.last + 1;
    return 0;
}

long CTagBlock::ReadOpeningTag(CTagBlock& source, Tag& tag)
{
    const long found = source.SearchTag(tag, Split::WholeRow);
    if (found != 0)
        return found;
    if (tag.Closes())
        return Fail(tagNotOpened, wxS("Tag closed but not opened"), source.m_units[tag.first]);
    m_doubleTag = source.m_doubleTag;
    if (tag.afterBegin == L'?')
        RewriteInstruction(*source.m_units[tag.first], tag.at, *source.m_units[tag.last], GetCurrentBeginTag(),
                           GetCurrentEndTag());
    else if (tag.afterBegin == L'!')
        RewriteDeclaration(*source.m_units[tag.first], tag.at, GetCurrentBeginTag(), GetCurrentEndTag());
    tag.isSingle = tag.afterBegin == L'?' || tag.afterBegin == L'!' || tag.beforeEnd == L'/';
    return ReadType(source, tag);
}

/// Reads type and name from the first line of a tag that is not empty.
long CTagBlock::ReadType(const CTagBlock& source, const Tag& tag)
{
    const auto isBlank = [&](int slot) {
        const CUnitSlot& found = source.m_units.Peek(slot);
        return found.IsHole() || (source.ReadsBytes(found) ? Trimmed(found.Line()).empty()
                                                           : Trimmed(TextOf(source.m_units[slot]->m_text)).empty());
    };
    Place place{&source, tag.first};
    while (place.slot < tag.last && isBlank(place.slot))
        ++place.slot;
    const CUnitSlot& found = source.m_units.Peek(place.slot);
    const Span beginTag(GetCurrentBeginTag());
    const long result = source.ReadsBytes(found)
                            ? TakeTitle(ReadTagTitle(Trimmed(found.Line()), beginTag), place)
                            : TakeTitle(ReadTagTitle(Trimmed(TextOf(place.Unit()->m_text)), beginTag), place);
    return result == tagNotFound ? Fail(tagIncomplete, wxS("Missing tag type !"), place.Unit()) : result;
}

long CTagBlock::GetTypeAndName(const wxString& tag, const CParserUnit* unit)
{
    return TakeTitle(ReadTagTitle(TextOf(tag), Span(GetCurrentBeginTag())), {nullptr, 0, unit});
}

template <typename Char> long CTagBlock::TakeTitle(const TagTitle<Char>& title, const Place& place)
{
    if (title.type.empty())
        return Fail(tagNotFound, wxS("No type found for tag !"), place.Unit());
    const Text<wchar_t> type = TextOf(m_type);
    if (type.empty())
        m_type = ToWide(title.type);
    else if (!std::equal(title.type.begin(), title.type.end(), type.begin(), type.end())) {
        const wxString found = ToWide(title.type);
        return Fail(tagMismatch, wxString::Format(wxS("Tag mismatch (%s instead of %s)!"), found, m_type),
                    place.Unit());
    }
    if (!title.isNamed)
        return 0;
    if (title.name.empty())
        return Fail(tagBadName, wxS("Bad tag name format !"), place.Unit());
    const wxString name = ToWide(title.name);
    if (m_name.empty())
        m_name = name;
    else if (name != m_name) {
        const wxString message =
            wxString::Format(wxS("Tag name mismatch (%s instead of %s for type %s)!"), name, m_name, m_type);
        return Fail(tagMismatch, message, place.Unit());
    }
    return 0;
}

/// Reads what is behind an opening tag, up to the closing one: the sub-blocks, and where content stands between them.
long CTagBlock::ReadContent(CTagBlock& source, const Tag& opening, Tag& closing, std::vector<Range>& content)
{
    const Restore<unsigned int> openBlocks(m_tagParser->m_openBlocks);
    if (++m_tagParser->m_openBlocks > m_tagParser->m_nestingLimit) {
        const wxString message = wxString::Format(wxS("Tags nested deeper than %u"), m_tagParser->m_nestingLimit);
        return Fail(tagTooDeep, message, source.m_units[opening.first]);
    }
    int unit = opening.last + 1;
    while (true) {
        Tag next{unit};
        source.m_doubleTag = m_doubleTag;
        const long found = source.SearchTag(next, Split::WholeRow);
        if (found == tagNotFound) {
            const CParserUnit* const unclosed = source.m_units[opening.first];
            const wxString place = unclosed->GetContext();
            return Fail(tagIncomplete, wxString::Format(wxS("Tag not opened at %s but not closed"), place), unclosed);
        }
        if (found != 0)
            return found;
        if (unit < next.first)
            content.push_back({unit, next.first - 1});
        if (next.Closes()) {
            closing = next;
            return CheckClosingTag(source, opening, closing);
        }
        unit = next.first;
        const long read = ReadSubBlock(source, unit);
        if (read != 0)
            return read;
    }
}

long CTagBlock::ReadSubBlock(CTagBlock& source, int& unit)
{
    CTagBlock* const block = AddSubBlock(NewSubBlock());
    const long result = block->CreateSubBlocks(&source, unit);
    if (result != tagNotOpened)
        return result;
    m_tagParser->ClearError();
    return 0;
}

long CTagBlock::CheckClosingTag(const CTagBlock& source, const Tag& opening, const Tag& closing)
{
    const long result = ReadType(source, closing);
    if (result != tagMismatch)
        return result;
    wxString reason;
    m_tagParser->GetLastErrorStr(&reason);
    const wxString place = source.m_units[opening.first]->GetContext();
    const wxString message = wxString::Format(wxS("Close tag mismatch (%s ) open tag at %s !"), reason, place);
    return Fail(tagMismatch, message, source.m_units[closing.first]);
}

void CTagBlock::TakeHeader(std::optional<CTagHeaderBlock>& header, CTagBlock& source, const Tag& tag)
{
    header.emplace(m_parser, this);
    source.ExtractBlock(&*header, tag.first, tag.last);
}
