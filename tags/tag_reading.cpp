// How a block's units become a tree of tag blocks.

#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/text_span_detail.h"
#include "tags/tag_block.h"
#include "tags/tag_parser.h"
#include "tags/tag_title_detail.h"

#include <algorithm>
#include <utility>

using namespace text_detail;

namespace
{

constexpr Span Blanks(L" \t\n\r");
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
    const Span text(line);
    return Span(text.begin + at, text.end).StartsWith(Span(what));
}

/// The place of a tag in a line that starts with it, blanks aside; npos when the line does not. The same as the first
/// occurrence outside of strings, accepted only behind blanks, but without a look at the rest of the line.
size_t StartOfTag(const wxString& line, const Span& tag)
{
    const Span text(line);
    const wchar_t* const behindBlanks = SkipBlanks(text.begin, text.end);
    for (const wchar_t* at = IsBlank(*tag.begin) ? text.begin : behindBlanks; at <= behindBlanks; ++at) {
        if (at != text.end && *at == *tag.begin && Span(at, text.end).StartsWith(tag))
            return static_cast<size_t>(at - text.begin);
    }
    return wxString::npos;
}

/// The first character from `at` on that is neither blank nor a line end.
size_t FirstNonBlank(const wxString& line, size_t at)
{
    const Span text(line);
    return static_cast<size_t>(WithoutLeft({text.begin + at, text.end}, Blanks).begin - text.begin);
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
        if (m_units[slot])
            return m_units[slot];
    }
    return nullptr;
}

bool CTagBlock::FindBeginTag(int& unit, size_t& at) const
{
    const Span tag(GetCurrentBeginTag());
    const int count = static_cast<int>(GetCount());
    if (!CanBeFound(tag))
        unit = count;
    for (unit = std::max(unit, 0); unit < count; ++unit) {
        const CParserUnit* const current = m_units[unit];
        at = current ? StartOfTag(current->m_text, tag) : wxString::npos;
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

/// Makes what follows a tag on its line a unit of its own, for single tags. Mere blanks are dropped.
void CTagBlock::SplitBehindTag(int slot, size_t behind, Split split)
{
    CParserUnit& unit = *m_units[slot];
    if (FirstNonBlank(unit.m_text, behind) == unit.m_text.length())
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
    size_t next = FirstNonBlank(text, behind);
    while (next < text.length()) {
        cuts.push_back(behind);
        if (!HasAt(text, next, GetBeginTag()) || HasAt(text, next, GetDoubleBeginTag()))
            break;
        int last = slot;
        size_t end = next;
        if (!FindEndTag(last, end) || last != slot)
            break;
        behind = end + GetEndTag().length();
        next = FirstNonBlank(text, behind);
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
    CParserUnit& first = *source.m_units[tag.first];
    if (tag.Closes())
        return Fail(tagNotOpened, wxS("Tag closed but not opened"), &first);
    m_doubleTag = source.m_doubleTag;
    if (tag.afterBegin == L'?')
        RewriteInstruction(first, tag.at, *source.m_units[tag.last], GetCurrentBeginTag(), GetCurrentEndTag());
    else if (tag.afterBegin == L'!')
        RewriteDeclaration(first, tag.at, GetCurrentBeginTag(), GetCurrentEndTag());
    tag.isSingle = tag.afterBegin == L'?' || tag.afterBegin == L'!' || tag.beforeEnd == L'/';
    return ReadType(source, tag);
}

/// Reads type and name from the first line of a tag that is not empty.
long CTagBlock::ReadType(const CTagBlock& source, const Tag& tag)
{
    const CParserUnit* unit = nullptr;
    Span text(L"");
    for (int slot = tag.first; text.Length() == 0 && slot <= tag.last; ++slot) {
        if (!source.m_units[slot])
            continue;
        unit = source.m_units[slot];
        text = WithoutRight(WithoutLeft(Span(unit->m_text), Blanks), Blanks);
    }
    const long result = TakeTitle(ReadTagTitle(text, GetCurrentBeginTag()), unit);
    return result == tagNotFound ? Fail(tagIncomplete, wxS("Missing tag type !"), unit) : result;
}

long CTagBlock::GetTypeAndName(const wxString& tag, const CParserUnit* unit)
{
    return TakeTitle(ReadTagTitle(Span(tag), GetCurrentBeginTag()), unit);
}

long CTagBlock::TakeTitle(const TagTitle& title, const CParserUnit* unit)
{
    if (title.type.Length() == 0)
        return Fail(tagNotFound, wxS("No type found for tag !"), unit);
    if (m_type.empty())
        m_type = Copy(title.type.begin, title.type.end);
    else if (title.type != Span(m_type)) {
        const wxString found = Copy(title.type.begin, title.type.end);
        return Fail(tagMismatch, wxString::Format(wxS("Tag mismatch (%s instead of %s)!"), found, m_type), unit);
    }
    if (!title.isNamed)
        return 0;
    if (title.name.Length() == 0)
        return Fail(tagBadName, wxS("Bad tag name format !"), unit);
    if (m_name.empty())
        m_name = Copy(title.name.begin, title.name.end);
    else if (title.name != Span(m_name)) {
        const wxString found = Copy(title.name.begin, title.name.end);
        const wxString message =
            wxString::Format(wxS("Tag name mismatch (%s instead of %s for type %s)!"), found, m_name, m_type);
        return Fail(tagMismatch, message, unit);
    }
    return 0;
}

/// Reads what is behind an opening tag, up to the closing one: the sub-blocks, and where content stands between them.
long CTagBlock::ReadContent(CTagBlock& source, const Tag& opening, Tag& closing, std::vector<Range>& content)
{
    const CParserUnit* const openingUnit = source.m_units[opening.first];
    const Restore<unsigned int> openBlocks(m_tagParser->m_openBlocks);
    if (++m_tagParser->m_openBlocks > m_tagParser->m_nestingLimit) {
        const wxString message = wxString::Format(wxS("Tags nested deeper than %u"), m_tagParser->m_nestingLimit);
        return Fail(tagTooDeep, message, openingUnit);
    }
    int unit = opening.last + 1;
    while (true) {
        Tag next{unit};
        source.m_doubleTag = m_doubleTag;
        const long found = source.SearchTag(next, Split::WholeRow);
        if (found == tagNotFound) {
            const wxString place = openingUnit->GetContext();
            return Fail(tagIncomplete, wxString::Format(wxS("Tag not opened at %s but not closed"), place),
                        openingUnit);
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
