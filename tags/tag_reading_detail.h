#pragma once

#include "tags/tag_block.h"

#include <cstddef>

// How the parts of the reading of tags speak of places in a block's units.

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
