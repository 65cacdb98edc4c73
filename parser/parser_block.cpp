#include "parser/parser_block.h"

#include "parser/parser_unit.h"

#include <utility>

wxIMPLEMENT_CLASS(CParserBlock, wxObject);

CParserBlock::CParserBlock(CParser* parser) : m_parser(parser) {}

CParserBlock::CParserBlock(const CParserBlock& other) : wxObject(other), m_parser(nullptr)
{
    for (unsigned int i = 0; i < other.GetCount(); ++i) {
        CParserUnit* const unit = other.m_units[i];
        if (!unit)
            continue;
        CParserUnit* const clone = unit->Clone();
        // A derived unit may list its clone somewhere; Append takes it out of there.
        Append(clone);
    }
}

CParserBlock& CParserBlock::operator=(const CParserBlock& other)
{
    if (this == &other)
        return *this;
    wxObject::operator=(other);
    m_units = other.m_units;
    m_parser = other.m_parser;
    return *this;
}

CParserBlock::~CParserBlock()
{
    for (unsigned int i = 0; i < GetCount(); ++i)
        delete m_units[i];
}

long CParserBlock::CreateUnit(wxSharedPtr<CParserFile> file, const wxString& text, unsigned long line)
{
    m_units.Add(new CParserUnit(std::move(file), this, text, line));
    return 0;
}

int CParserBlock::Append(CParserUnit* unit, int* pos)
{
    if (unit->m_block)
        unit->m_block->RemoveElement(unit, pos, 0);
    unit->m_block = this;
    m_units.Add(unit);
    return static_cast<int>(GetCount()) - 1;
}

long CParserBlock::RemoveElement(CParserUnit* unit, int* pos, int deleteIt)
{
    const int slot = pos ? *pos : IndexOf(unit);
    if (slot < 0 || slot >= static_cast<int>(GetCount()) || m_units[slot] != unit)
        return 1;
    if (deleteIt)
        delete unit;
    else if (unit)
        unit->m_block = nullptr;
    m_units[slot] = nullptr;
    if (pos)
        ++*pos;
    return 0;
}

void CParserBlock::GetBuffer(wxString& out, bool WXUNUSED(flag)) const
{
    size_t length = 0;
    for (unsigned int i = 0; i < GetCount(); ++i) {
        if (m_units[i])
            length += m_units[i]->m_text.length() + 1;
    }
    out.clear();
    out.reserve(length);
    for (unsigned int i = 0; i < GetCount(); ++i) {
        if (m_units[i])
            out.append(m_units[i]->m_text).append(1, wxUniChar(L'\n'));
    }
}

void CParserBlock::InsertBlock(CParserBlock* source, int* pos)
{
    size_t moved = 0;
    for (unsigned int i = 0; i < source->GetCount(); ++i)
        moved += source->m_units[i] != nullptr;
    const size_t at = pos ? static_cast<size_t>(*pos) : m_units.GetCount();
    CParserUnit** slot = m_units.MakeRoom(at, moved);
    for (int i = 0; i < static_cast<int>(source->GetCount());) {
        CParserUnit* const unit = source->m_units[i];
        if (!unit) {
            ++i;
            continue;
        }
        source->RemoveElement(unit, &i, 0);
        unit->m_block = this;
        *slot++ = unit;
    }
    if (pos)
        *pos += static_cast<int>(moved);
}

CParserBlock* CParserBlock::Clone() const
{
    return new CParserBlock(*this);
}

int CParserBlock::ExtractBlock(CParserBlock* destination, int from, int to)
{
    const int last = to < 0 ? static_cast<int>(GetCount()) - 1 : to;
    int slot = from;
    while (slot <= last) {
        if (CParserUnit* const unit = m_units[slot])
            destination->Append(unit, &slot);
        else
            ++slot;
    }
    return slot;
}

unsigned int CParserBlock::InsertBehind(CParserUnit* unit, int index)
{
    if (index < 0 || index + 1 >= static_cast<int>(GetCount()))
        return Append(unit);
    m_units.Insert(unit, index + 1);
    unit->m_block = this;
    return index + 1;
}
