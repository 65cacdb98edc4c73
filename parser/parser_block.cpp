#include "parser/parser_block.h"

#include "base/text_encoding.h"
#include "base/utf8_detail.h"
#include "parser/line_text_detail.h"
#include "parser/parser_unit.h"

using vcq::detail::AppendUtf8;

wxIMPLEMENT_CLASS(CParserBlock, wxObject);

namespace
{

wxString WideText(const CUnitSlot& line)
{
    wxString text;
    AppendUtf8(text, line.bytes, line.length);
    return text;
}

} // namespace

CParserBlock::CParserBlock(CParser* parser) : CParserBlock(parser, typeid(CParserBlock)) {}

CParserBlock::CParserBlock(CParser* parser, const std::type_info& linesClass)
    : m_parser(parser), m_linesClass(&linesClass)
{}

CParserBlock::CParserBlock(const CParserBlock& other)
    : wxObject(other), m_parser(nullptr), m_linesClass(other.m_linesClass)
{
    for (unsigned int i = 0; i < other.GetCount(); ++i) {
        const CUnitSlot& slot = other.m_units.Peek(i);
        // A derived unit may list its clone somewhere; Append takes it out of there.
        if (slot.IsLine())
            CParserBlock::Append(new CParserUnit(wxSharedPtr<CParserFile>(), nullptr, WideText(slot), 0));
        else if (slot.unit)
            CParserBlock::Append(slot.unit->Clone());
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
    for (unsigned int i = 0; i < GetCount(); ++i) {
        const CUnitSlot& slot = m_units.Peek(i);
        if (!slot.IsLine())
            delete slot.unit;
    }
}

bool CParserBlock::TakesLines() const
{
    return typeid(*this) == *m_linesClass;
}

long CParserBlock::CreateUnit(wxSharedPtr<CParserFile> file, const wxString& text, unsigned long line)
{
    m_units.Add(new CParserUnit(file, this, text, line));
    return 0;
}

void CParserBlock::AddCopies(const CParserBlock& lines)
{
    const unsigned int count = lines.GetCount();
    const bool takesLines = TakesLines();
    m_units.Reserve(count);
    for (unsigned int i = 0; i < count; ++i) {
        const CUnitSlot& slot = lines.m_units.Peek(i);
        if (takesLines && slot.IsLine()) {
            CLineText::Copy(slot, m_units);
            continue;
        }
        const CParserUnit& unit = *lines.GetUnit(i);
        CreateUnit(unit.m_file, unit.m_text, unit.m_line);
    }
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
    if (slot < 0 || slot >= static_cast<int>(GetCount()))
        return 1;
    const CUnitSlot& found = m_units.Peek(slot);
    if (found.IsLine() || found.unit != unit)
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
        const CUnitSlot& slot = m_units.Peek(i);
        if (!slot.IsHole())
            length += (slot.IsLine() ? slot.length : slot.unit->m_text.length()) + 1;
    }
    out.clear();
    out.reserve(length);
    for (unsigned int i = 0; i < GetCount(); ++i) {
        const CUnitSlot& slot = m_units.Peek(i);
        if (slot.IsHole())
            continue;
        if (slot.IsLine())
            AppendUtf8(out, slot.bytes, slot.length);
        else
            out.append(slot.unit->m_text);
        out.append(1, wxUniChar(L'\n'));
    }
}

bool CParserBlock::AppendText(unsigned int slot, std::string& bytes) const
{
    const CUnitSlot& found = m_units.Peek(slot);
    if (found.IsHole())
        return false;
    if (found.IsLine())
        bytes.append(found.Line());
    else
        bytes += ToUtf8(found.unit->m_text);
    return true;
}

CParserOrigin CParserBlock::GetOrigin(unsigned int slot) const
{
    const CUnitSlot& found = m_units.Peek(slot);
    if (found.IsLine())
        return {found.text->File(), found.line};
    return {found.unit->m_file, found.unit->m_line};
}

void CParserBlock::InsertBlock(CParserBlock* source, int* pos)
{
    size_t at = pos ? static_cast<size_t>(*pos) : m_units.GetCount();
    if (TakesLines() && source->TakesLines())
        at += MoveSlots(*source, 0, source->GetCount(), at);
    else
        at += MoveUnits(*source, at);
    if (pos)
        *pos = static_cast<int>(at);
}

/// Moves all units one by one, as derived blocks may want to know.
size_t CParserBlock::MoveUnits(CParserBlock& source, size_t at)
{
    size_t moved = 0;
    for (int i = 0; i < static_cast<int>(source.GetCount());) {
        CParserUnit* const unit = source.m_units[i];
        if (!unit) {
            ++i;
            continue;
        }
        source.RemoveElement(unit, &i, 0);
        unit->m_block = this;
        m_units.Insert(unit, at + moved++);
    }
    return moved;
}

size_t CParserBlock::MoveSlots(CParserBlock& source, size_t from, size_t to, size_t at)
{
    const size_t moved = source.m_units.MoveTo(m_units, at, from, to);
    for (size_t i = at; i < at + moved; ++i) {
        if (!m_units.Peek(i).IsLine())
            m_units[i]->m_block = this;
    }
    return moved;
}

CParserBlock* CParserBlock::Clone() const
{
    return new CParserBlock(*this);
}

int CParserBlock::ExtractBlock(CParserBlock* destination, int from, int to)
{
    const int last = to < 0 ? static_cast<int>(GetCount()) - 1 : to;
    int slot = from;
    if (destination != this && TakesLines() && destination->TakesLines() && from <= last) {
        destination->MoveSlots(*this, from, last + 1, destination->GetCount());
        return last + 1;
    }
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
