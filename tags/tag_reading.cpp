// How a block's units become a tree of tag blocks.

#include "parser/line_text_detail.h"
#include "parser/parser_unit.h"
#include "preprocessor/outside_strings_detail.h"
#include "preprocessor/preprocessor.h"
#include "tags/tag_block.h"
#include "tags/tag_parser.h"
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

/// A quote is the boundary of a string, wherever it stands, so what begins with one is never found.
bool CanBeFound(const Span& tag)
{
    return tag.Length() != 0 && !IsQuote(*tag.begin);
}

/// Whether `what` stands at `at`, which is not behind the end of the line.
bool HasAt(const wxString& line, size_t at, const wxString& what)
{
    return StartsWith(TextOf(line).substr(at), Span(what));
}

/// The place of a tag in a line that starts with it, blanks aside; npos when the line does not. The same as the first
/// occurrence outside of strings, accepted only behind blanks, but without a look at the rest of the line.
template <typename Char> size_t StartOfTag(Text<Char> line, const Span& tag)
{
    const Char* const end = line.data() + line.length();
    const Char* const behindBlanks = SkipBlanks(line.data(), end);
    for (const Char* at = IsBlank(*tag.begin) ? line.data() : behindBlanks; at <= behindBlanks; ++at) {
        if (at != end && *at == *tag.begin && StartsWith(TextOf(at, end), tag))
            return static_cast<size_t>(at - line.data());
    }
    return wxString::npos;
}

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

/// A tag in the units of a block.
struct CTagBlock::Tag
{
    int first;     ///< The slot where it begins,
    int last = -1; ///< and where it ends.
    size_t at = 0; ///< Its place in its first line.
    wchar_t afterBegin = 0;
    wchar_t beforeEnd = 0;
    bool isSingle = false;

    bool Closes() const { return afterBegin == L'/'; }
};

/// Where a tag stands, for messages: in a slot, of which a unit is only made for them, or in a unit.
struct CTagBlock::Place
{
    const CTagBlock* source;
    int slot;
    const CParserUnit* unit = nullptr;

    const CParserUnit* Unit() const { return source ? source->m_units[slot] : unit; }
};

/// Slots, both included.
struct CTagBlock::Range
{
    int from;
    int to;
};

/// What follows a tag on its line becomes one unit, or is also cut behind every further tag of an unbroken row of tags.
/// One cut at a time would copy the rest of the line for every tag in it.
enum class CTagBlock::Split
{
    Once,
    WholeRow
};

long CTagBlock::Fail(long code, const wxString& message, const CParserUnit* unit)
{
    if (m_parser)
        m_parser->SetError(message, unit);
    return code;
}

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
    const std::string_view line = m_units.Peek(tag.first).Line();
    const std::string_view text = line.substr(tag.at);
    const bool isDouble = m_doubleTag || StartsWith(text, Span(GetDoubleBeginTag()));
    const Span endTag(isDouble ? GetDoubleEndTag() : GetEndTag());
    const size_t beginLength = isDouble ? GetDoubleBeginTag().length() : GetBeginTag().length();
    const char afterBegin = beginLength < text.length() ? text[beginLength] : '\0';
    if (afterBegin == '?' || afterBegin == '!' || !CanBeFound(endTag))
        return false;
    // Where both tags are the same text, the begin tag must not end its own tag.
    const size_t from = StartsWith(text, endTag) ? beginLength : 0;
    const long found = FindOutsideStrings(text.data() + from, text.data() + text.length(), endTag);
    if (found == -1)
        return false;
    m_doubleTag = isDouble;
    const size_t end = tag.at + from + static_cast<size_t>(found);
    tag.last = tag.first;
    tag.afterBegin = static_cast<unsigned char>(afterBegin);
    tag.beforeEnd = end > 0 ? static_cast<unsigned char>(line[end - 1]) : 0;
    const size_t behind = end + endTag.Length();
    const size_t next = SkipAroundTag(line, behind);
    if (next == line.length())
        m_units.SetLine(tag.first, line.substr(0, behind));
    else if (!isDouble)
        CLineText::Split(m_units, tag.first, behind, next);
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

long CTagBlock::CreateSubBlocks()
{
    int unit = 0;
    while (m_tagParser && unit >= 0 && unit < static_cast<int>(GetCount())) {
        std::unique_ptr<CTagBlock> block(m_tagParser->CreateBlock(false));
        m_tagParser->RemoveBlock(block.get());
        block->m_parent = this;
        const long result = block->CreateSubBlocks(this, unit);
        if (unit < 0)
            return 0;
        AddSubBlock(std::move(block));
        if (result != 0)
            return result;
    }
    return 0;
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
    const wxString& beginTag = GetCurrentBeginTag();
    const long result = source.ReadsBytes(found)
                            ? TakeTitle(ReadTagTitle(Trimmed(found.Line()), beginTag), place)
                            : TakeTitle(ReadTagTitle(Trimmed(TextOf(place.Unit()->m_text)), beginTag), place);
    return result == tagNotFound ? Fail(tagIncomplete, wxS("Missing tag type !"), place.Unit()) : result;
}

long CTagBlock::GetTypeAndName(const wxString& tag, const CParserUnit* unit)
{
    return TakeTitle(ReadTagTitle(TextOf(tag), GetCurrentBeginTag()), {nullptr, 0, unit});
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
    std::unique_ptr<CTagBlock> created(m_tagParser->CreateBlock(false));
    m_tagParser->RemoveBlock(created.get());
    CTagBlock* const block = AddSubBlock(std::move(created));
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
