#pragma once

#include <wx/string.h>

class CParser;
class CParserBlock;
class CParserUnit;
class CUtf8Text;
struct CTextOrigin;
struct _BlockPosition;

/// A text that a directive has parsed and inserted: while this lives, the text has its own conditional sections (it
/// must close those it opens and cannot close the ones around it) and counts as one level of nesting.
class CNestedText
{
public:
    CNestedText(size_t openSections, size_t& sectionBase, unsigned int& depth)
        : m_sectionBase(sectionBase), m_savedBase(sectionBase), m_depth(depth)
    {
        m_sectionBase = openSections;
        ++m_depth;
    }
    ~CNestedText()
    {
        m_sectionBase = m_savedBase;
        --m_depth;
    }
    CNestedText(const CNestedText&) = delete;
    CNestedText& operator=(const CNestedText&) = delete;

    /// Parses the text and moves its units to the current slot, which then stands behind them.
    /// @return the result of CParser::Parse.
    long Insert(CParser& parser, CUtf8Text text, const wxString& name, const CParserUnit* from, bool removeDefines,
                const CTextOrigin& origin, _BlockPosition& position) const;

    /// The same for lines of CParser::CutLines.
    long InsertLines(CParser& parser, const CParserBlock& lines, _BlockPosition& position) const;

private:
    size_t& m_sectionBase;
    size_t m_savedBase;
    unsigned int& m_depth;
};
