#include "tags/tag_header_block.h"

#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tags/tag_block.h"
#include "tags/tag_title_detail.h"

#include <utility>

using namespace text_detail;

wxIMPLEMENT_CLASS(CTagHeaderBlock, CParserBlock);

namespace
{

/// The options on the first line of an opening tag; false for a closing tag, which has none.
bool TakeFirstLine(const CTagBlock& block, Span& text)
{
    const TagTitle title = ReadTagTitle({SkipBlanks(text.begin, text.end), text.end}, block.GetCurrentBeginTag());
    if (title.closes)
        return false;
    text.begin = title.behind;
    if (title.isNamed)
        text = WithoutLeft(text, L"\"' \t");
    return true;
}

/// Takes the end of the tag away from its last line. A double tag shares that line with whatever follows it there.
void DropTagEnd(const CTagBlock& block, Span& text)
{
    const wxString& endTag = block.GetCurrentEndTag();
    const long end = block.IsDoubleTag() ? CPreprocessor::FindCharEx(Copy(text.begin, text.end), endTag) : -1;
    if (end != -1)
        text.end = text.begin + end;
    const Span tagCharacters(endTag);
    while (text.begin != text.end && (text.end[-1] == L'/' || tagCharacters.Holds(text.end[-1])))
        --text.end;
}

} // namespace

CTagHeaderBlock::CTagHeaderBlock(CParser* parser, CTagBlock* parent) : CParserBlock(parser), m_parent(parent) {}

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
    const CParserUnit* first = nullptr;
    const CParserUnit* last = nullptr;
    for (unsigned int slot = 0; slot < GetCount(); ++slot) {
        if (!m_units[slot])
            continue;
        first = first ? first : m_units[slot];
        last = m_units[slot];
    }
    for (unsigned int slot = 0; slot < GetCount(); ++slot) {
        CParserUnit* const unit = m_units[slot];
        if (!unit)
            continue;
        Span text(unit->m_text);
        if (unit == first && !TakeFirstLine(*m_parent, text))
            return 0;
        if (unit == last)
            DropTagEnd(*m_parent, text);
        m_parent->SaveOption(Copy(text.begin, text.end), unit);
    }
    return 0;
}
