#pragma once

#include "parser/parser_block.h"

#include <string_view>

/// A block's slots for what works on lines without making units of them.
class CBlockLines
{
public:
    explicit CBlockLines(CParserBlock& block) : m_units(block.m_units) {}

    CArrayParserUnit& Units() const { return m_units; }

private:
    CArrayParserUnit& m_units;
};
