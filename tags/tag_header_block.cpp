#include "tags/tag_header_block.h"

#include "parser/parser_unit.h"
#include "preprocessor/outside_strings_detail.h"
#include "tags/tag_block.h"
#include "tags/tag_title_detail.h"

#include <utility>

using namespace tag_text_detail;
using namespace text_detail;

wxIMPLEMENT_CLASS(CTagHeaderBlock, CParserBlock);

namespace
{

/// The options on the first line of an opening tag; false for a closing tag, which has none.
template <typename Char> bool TakeFirstLine(const CTagBlock& block, Text<Char>& text)
{
    const Char* const end = text.data() + text.length();
    const TagTitle<Char> title = ReadTagTitle(TextOf(SkipBlanks(text.data(), end), end), block.GetCurrentBeginTag());
    if (title.closes)
        return false;
    text = title.rest;
    while (title.isNamed && !text.empty() && (IsQuote(text.front()) || IsBlank(text.front())))
        text.remove_prefix(1);
    return true;
}

/// Takes the end of the tag away from its last line. A double tag shares that line with whatever follows it there.
template <typename Char> void DropTagEnd(const CTagBlock& block, Text<Char>& text)
{
    const Span endTag(block.GetCurrentEndTag());
    const Char* const end = text.data() + text.length();
    const long tagEnd = block.IsDoubleTag() ? FindOutsideStrings(text.data(), end, endTag) : -1;
    if (tagEnd != -1)
        text = text.substr(0, static_cast<size_t>(tagEnd));
    while (!text.empty() && (text.back() == '/' || endTag.Holds(text.back())))
        text.remove_suffix(1);
}

/// The options on one line of a tag. False when there are none from here on.
template <typename Char> bool TakeOptions(const CTagBlock& block, Text<Char>& text, bool isFirst, bool isLast)
{
    if (isFirst && !TakeFirstLine(block, text))
        return false;
    if (isLast)
        DropTagEnd(block, text);
    return true;
}

} // namespace

CTagHeaderBlock::CTagHeaderBlock(CParser* parser, CTagBlock* parent)
    : CParserBlock(parser, typeid(CTagHeaderBlock)), m_parent(parent)
{}

CTagHeaderBlock::CTagHeaderBlock(const CTagHeaderBlock& other) : CParserBlock(other), m_parent(nullptr) {}

CTagHeaderBlock& CTagHeaderBlock::operator=(const CTagHeaderBlock& other)
{
    if (this == &other)
        return *this;
    CTagHeaderBlock copy(other);
    std::swap(m_units, copy.m_units);
    for (unsigned int slot = 0; slot < GetCount(); ++slot)
        m_units[slot]->m_block = this;
    m_parent = other.m_parent;
    return *this;
}

CTagHeaderBlock* CTagHeaderBlock::Clone() const
{
    return new CTagHeaderBlock(*this);
}

long CTagHeaderBlock::Process()
{
    if (!m_parent)
        return 0;
    const auto isThere = [this](unsigned int slot) { return !m_units.Peek(slot).IsHole(); };
    unsigned int last = GetCount();
    while (last > 0 && !isThere(last - 1))
        --last;
    bool isFirst = true;
    for (unsigned int slot = 0; slot < last; ++slot) {
        if (!isThere(slot))
            continue;
        if (!AddOptions(slot, isFirst, slot + 1 == last))
            return 0;
        isFirst = false;
    }
    return 0;
}

/// Reads the options in a slot into those of the parent. False when there are none from here on.
bool CTagHeaderBlock::AddOptions(unsigned int slot, bool isFirst, bool isLast)
{
    const CUnitSlot& found = m_units.Peek(slot);
    if (m_parent->ReadsBytes(found)) {
        Text<char> text = found.Line();
        if (!TakeOptions(*m_parent, text, isFirst, isLast))
            return false;
        m_parent->NoteOptions(text);
        return true;
    }
    CParserUnit* const unit = m_units[slot];
    Text<wchar_t> text = TextOf(unit->m_text);
    if (!TakeOptions(*m_parent, text, isFirst, isLast))
        return false;
    m_parent->SaveOption(ToWide(text), unit);
    return true;
}
