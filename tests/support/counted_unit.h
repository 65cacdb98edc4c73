#pragma once

#include "parser/parser_unit.h"

/// A unit that counts how many of its kind are alive.
class CountedUnit : public CParserUnit
{
public:
    explicit CountedUnit(int& alive, const wxString& text = "x")
        : CParserUnit(wxSharedPtr<CParserFile>(), nullptr, text, 1), m_alive(alive)
    {
        ++m_alive;
    }
    ~CountedUnit() override { --m_alive; }

private:
    int& m_alive;
};
