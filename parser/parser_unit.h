#pragma once

#include "base/api.h"
#include "parser/parser_file.h"

#include <wx/object.h>
#include <wx/sharedptr.h>
#include <wx/string.h>

class CParserBlock;

/// One piece of text, normally one source line, that remembers its file and line. Owned by the block that lists it.
class VC_QXPARSER_API CParserUnit : public wxObject
{
public:
    /// @param file the file the text came from; may be null.
    /// @param block the block that lists the unit, or null for a free unit; not owned.
    /// @param line the 1-based line number within `file`.
    CParserUnit(wxSharedPtr<CParserFile> file, CParserBlock* block, const wxString& text, unsigned long line);

    CParserUnit(const CParserUnit&) = delete;
    CParserUnit& operator=(const CParserUnit&) = delete;

    /// A new free unit with a copy of the text only: no file, no block, line 0. The caller owns it.
    virtual CParserUnit* Clone();

    /// The file's name, or an empty text when the unit has no file.
    wxString GetFileName() const;

    /// Where the unit comes from, as every error message tells it: `file "NAME" line N`.
    wxString GetContext() const;

    /// The line that was read for this unit: its file and line, but for a unit of a loop the line of the loop's body,
    /// however deep loops are nested.
    CSourceLine GetSource() const;

    /// Cuts the unit in two at character `pos` (0-based): this unit keeps what stands before, a new unit just behind it
    /// in the same block takes the rest without its leading blanks, tabs and line ends, with the same file and line.
    /// @param index this unit's slot in its block, which it must have, or a negative value to have it searched.
    /// @return the slot of the new unit.
    unsigned int SplitAt(size_t pos, int index);

    wxSharedPtr<CParserFile> m_file; ///< the file the text came from; may be null
    CParserBlock* m_block;           ///< the block that lists the unit, not owned; null for a free unit
    unsigned long m_line;            ///< the line in `m_file`, counted from 1
    wxString m_text;                 ///< the text, without its line end

    wxDECLARE_CLASS(CParserUnit);
};

/// The origin text of a place: `file "NAME" line N`.
VC_QXPARSER_API wxString FormatContext(const CParserFile* file, unsigned long line);

/// A place in a file.
struct VC_QXPARSER_API CParserOrigin
{
    wxSharedPtr<CParserFile> file; ///< May be null.
    unsigned long line = 0;        ///< Counted from 1.

    /// As every error message tells it: `file "NAME" line N`.
    wxString GetContext() const;

    /// See CParserUnit::GetSource.
    CSourceLine GetSource() const;
};
