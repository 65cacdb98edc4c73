#pragma once

#include "base/api.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

class CLineText;
class CParserBlock;
class CParserUnit;

/// One slot of a block: a hole, a unit, or a line of a text of which no unit has been made yet.
struct CUnitSlot
{
    CLineText* text; ///< The text that a line belongs to; null for units and holes. Each line has a share in it.
    /// @cond
    union
    {
        CParserUnit* unit; ///< Null for a hole.
        const char* bytes; ///< The line, `length` bytes of UTF-8.
    };
    /// @endcond
    uint32_t length; ///< The bytes of a line.
    uint32_t line;   ///< The line's number in its file.

    bool IsLine() const { return text != nullptr; } ///< Whether no unit was made of the line yet.
    bool IsHole() const { return !text && !unit; }  ///< Whether nothing is there.
    /// The bytes of a line.
    std::string_view Line() const { return std::string_view(bytes, length); }
};

/// The slots of a block: an ordered array of unit pointers, null entries included, with the operations of a pointer
/// array.
///
/// A slot may also hold a line of a file's text, 24 bytes in place of a unit and its copy of the line. It becomes a
/// unit the moment anybody asks for it, so whoever works with units never meets a line; those that pass over whole
/// texts (the preprocessor's scan, moves from block to block, writing) look at the slots and leave the lines what they
/// are.
///
/// The array keeps its free room as one gap that stays where the last insertion was. A walk that inserts as it goes
/// forward (includes, loops) therefore moves each slot behind it once in all, not once per insertion.
class VC_QXPARSER_API CArrayParserUnit
{
public:
    /// @param owner the block that units made of lines belong to; without one they are free.
    explicit CArrayParserUnit(CParserBlock* owner = nullptr) : m_owner(owner) {}

    ///@{
    /// A copy lists the same units, which it does not own either: the other array makes units of all its lines first.
    /// The owner is not copied.
    CArrayParserUnit(const CArrayParserUnit& other) { *this = other; }
    CArrayParserUnit& operator=(const CArrayParserUnit& other);
    ///@}

    /// Gives up the lines. Units are the block's.
    ~CArrayParserUnit() { Empty(); }

    /// The number of slots, empty ones included.
    size_t GetCount() const { return m_capacity - (m_gapEnd - m_gapStart); }
    bool IsEmpty() const { return GetCount() == 0; } ///< Whether there is no slot at all.

    ///@{
    /// The slot at `index`, counted from 0; there must be one.
    CParserUnit*& Item(size_t index) { return Unit(Slot(index)); }
    CParserUnit* Item(size_t index) const { return Unit(Slot(index)); }
    CParserUnit*& operator[](size_t index) { return Item(index); }
    CParserUnit* operator[](size_t index) const { return Item(index); }
    ///@}

    /// The last slot; there must be one.
    CParserUnit* Last() const { return Item(GetCount() - 1); }

    /// Appends a slot with this unit.
    void Add(CParserUnit* unit) { Insert(unit, GetCount()); }
    /// Inserts a slot with this unit at `index`, at most GetCount().
    void Insert(CParserUnit* unit, size_t index);

    /// The first slot that holds `unit`, or wxNOT_FOUND. Looks at every slot before it.
    int Index(const CParserUnit* unit) const;

    /// Takes slots away; their units stay whose they are.
    void RemoveAt(size_t index, size_t count = 1);
    /// Takes all slots away.
    void Empty();

    /// A slot as it is. It moves when slots are inserted or removed.
    const CUnitSlot& Peek(size_t index) const { return Slot(index); }

    /// Makes room for as many slots more, so that adding them moves nothing.
    void Reserve(size_t count);

    ///@{
    /// Appends a line of `text`, which is to keep the bytes, or inserts one at `index`. The caller adds the share that
    /// the line has in it.
    void AddLine(CLineText& text, std::string_view bytes, uint32_t line) { InsertLine(GetCount(), text, bytes, line); }
    void InsertLine(size_t index, CLineText& text, std::string_view bytes, uint32_t line);
    ///@}

    /// Gives a line other bytes, which its text keeps.
    void SetLine(size_t index, std::string_view bytes);

    /// Makes a hole of a line.
    void DropLine(size_t index);

    /// Moves the slots from `begin` to before `end` that are not holes, in their order, into another array at `index`.
    /// Holes stay in their places. The units' block pointers are not touched.
    /// @return how many were moved.
    size_t MoveTo(CArrayParserUnit& other, size_t index, size_t begin, size_t end);

    /// Takes all slots of another array, which is left with as many holes; they take no memory before they are written
    /// to. This array must never have had slots.
    void TakeAll(CArrayParserUnit& other);

    /// Gives slots that TakeAll has taken back to where they were; holes stay here.
    void PutBack(CArrayParserUnit& other, size_t begin, size_t end);

private:
    struct Free
    {
        void operator()(CUnitSlot* slots) const { std::free(slots); }
    };
    using Slots = std::unique_ptr<CUnitSlot[], Free>;

    static Slots Owned(void* memory);

    CUnitSlot& Slot(size_t index) const
    {
        return m_slots[index < m_gapStart ? index : index + (m_gapEnd - m_gapStart)];
    }
    CParserUnit*& Unit(CUnitSlot& slot) const
    {
        if (slot.IsLine())
            MakeUnit(slot);
        return slot.unit;
    }

    void MakeUnit(CUnitSlot& slot) const;
    CUnitSlot* MakeRoom(size_t index, size_t count);
    void MoveGap(size_t index);
    void Grow(size_t count);

    CParserBlock* m_owner = nullptr;
    Slots m_slots;
    size_t m_capacity = 0;
    size_t m_gapStart = 0;
    size_t m_gapEnd = 0;
};
