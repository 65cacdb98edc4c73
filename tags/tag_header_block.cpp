#include "tags/tag_header_block.h"

#include "parser/parser_unit.h"
#include "tags/tag_block.h"
#include "tags/tag_title_detail.h"

#include <utility>

using namespace tag_text_detail;
using namespace text_detail;

wxIMPLEMENT_CLASS(CTagHeaderBlock, CParserBlock);

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
        if (!AddOptions(slot, {isFirst, slot + 1 == last}))
            return 0;
        isFirst = false;
    }
    return 0;
}

/// Reads the options in a slot into those of the parent. False when there are none from here on.
bool CTagHeaderBlock::AddOptions(unsigned int slot, TagLine place)
{
    const TagMarks marks = m_parent->Marks();
    const bool isDouble = m_parent->IsDoubleTag();
    const CUnitSlot& found = m_units.Peek(slot);
    if (m_parent->ReadsBytes(found)) {
        Text<char> text = found.Line();
        if (!TakeOptions(text, marks, isDouble, place))
            return false;
        m_parent->NoteOptions(text);
        return true;
    }
    CParserUnit* const unit = m_units[slot];
    Text<wchar_t> text = TextOf(unit->m_text);
    if (!TakeOptions(text, marks, isDouble, place))
        return false;
    m_parent->SaveOption(ToWide(text), unit);
    return true;
}
