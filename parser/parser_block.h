#pragma once

#include "base/api.h"
#include "parser/parser_file.h"
#include "parser/parser_unit.h"
#include "parser/unit_array.h"

#include <wx/dynarray.h>
#include <wx/object.h>
#include <wx/sharedptr.h>
#include <wx/string.h>

#include <string>
#include <typeinfo>

class CBlockLines;
class CParser;
class CParserUnit;

/// An ordered list of units, which it owns. Taking a unit out leaves a null hole in its slot, so that slots held by a
/// caller during a walk stay valid; every walk over a block skips the holes. Slots are numbered from 0.
///
/// A block of exactly this class, or of a derived one that says so, makes the units of a file's lines when somebody
/// asks for them (see CArrayParserUnit). Whoever only wants their texts does better without: GetBuffer, AppendText,
/// GetOrigin.
class VC_QXPARSER_API CParserBlock : public wxObject
{
public:
    /// @param parser the parser that lists this block, or null for a detached block.
    explicit CParserBlock(CParser* parser);
    ~CParserBlock() override;

    /// Shares the unit pointers and takes the parser of the other block. Both blocks then list the same units: one of
    /// them must give them away before it is destroyed.
    CParserBlock& operator=(const CParserBlock& other);

    /// Appends a new unit with this text and origin.
    /// @return 0, always.
    virtual long CreateUnit(wxSharedPtr<CParserFile> file, const wxString& text, unsigned long line);

    /// Appends a unit, taking it out of the block that lists it (whose caller's slot `*pos`, when given, must be the
    /// unit's and is advanced; without `pos` the unit is searched).
    /// @return the unit's slot in this block.
    virtual int Append(CParserUnit* unit, int* pos = nullptr);

    /// Takes `unit` out of its slot, which becomes a hole; deletes it when `deleteIt` is not 0, else it is free and the
    /// caller's.
    /// @param pos the unit's slot, advanced by one on success; null to have the unit searched.
    /// @return 0, or 1 when the slot does not hold `unit` or no slot does; nothing changes then.
    virtual long RemoveElement(CParserUnit* unit, int* pos, int deleteIt);

    /// Sets `out` to the text of all units, each followed by "\n". `flag` is for derived blocks.
    virtual void GetBuffer(wxString& out, bool flag) const;

    /// Moves all units of `source` into this block, in their order, at slot `*pos`, which then stands behind them; at
    /// the end when `pos` is null. `source` keeps holes only and stays the caller's.
    virtual void InsertBlock(CParserBlock* source, int* pos);

    /// A detached block with clones of all units (see CParserUnit::Clone). The caller owns it.
    virtual CParserBlock* Clone() const;

    /// Moves the units of slots `from` to `to`, both included (`to` negative: to the last one), to the end of
    /// `destination`.
    /// @return the slot behind the last one visited.
    int ExtractBlock(CParserBlock* destination, int from, int to);

    /// The number of slots, holes included.
    unsigned int GetCount() const { return static_cast<unsigned int>(m_units.GetCount()); }

    /// The unit of a slot below GetCount(), null for a hole.
    CParserUnit* GetUnit(unsigned int slot) const { return m_units.Item(slot); }

    /// Appends the text of a slot to `bytes`, as ToUtf8 gives it, and nothing for a hole.
    /// @return false for a hole.
    bool AppendText(unsigned int slot, std::string& bytes) const;

    /// Where the text of a slot comes from, as the unit's m_file and m_line tell it. Not for holes.
    CParserOrigin GetOrigin(unsigned int slot) const;

    /// The parser that lists this block, null for a detached one.
    CParser* GetParser() const { return m_parser; }

    /// The slot of a unit, or -1. Looks at every slot before it.
    int IndexOf(const CParserUnit* unit) const { return m_units.Index(unit); }

    /// Lists a free unit right behind slot `index`, at the end when that is the last slot or past it.
    /// @return its slot.
    unsigned int InsertBehind(CParserUnit* unit, int index);

protected:
    /// For a derived class whose blocks take lines too.
    /// @param linesClass what typeid gives for a block of exactly that class.
    CParserBlock(CParser* parser, const std::type_info& linesClass);

    /// For Clone: a detached block with clones of the units (see CParserUnit::Clone), without holes.
    CParserBlock(const CParserBlock& other);

    CArrayParserUnit m_units{this}; ///< the slots; the units in them are owned
    CParser* m_parser;              ///< the parser that lists this block, not owned; null for a detached one

private:
    friend class CBlockLines;
    friend class CParser;
    friend class CParserFile;

    /// Whether lines may stay lines here: a derived block may do something of its own with each unit.
    bool TakesLines() const;

    const std::type_info* m_linesClass; ///< The class whose blocks take lines; others derived from it do not.

    /// Appends what Load has made of a text to another block, once more.
    void AddCopies(const CParserBlock& lines);

    size_t MoveSlots(CParserBlock& source, size_t from, size_t to, size_t at);
    size_t MoveUnits(CParserBlock& source, size_t at);

    wxDECLARE_CLASS(CParserBlock);
};

WX_DEFINE_ARRAY_PTR(CParserBlock*, CArrayParserBlock);
