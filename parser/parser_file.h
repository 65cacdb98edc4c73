#pragma once

#include "base/api.h"

#include <wx/hashmap.h>
#include <wx/object.h>
#include <wx/sharedptr.h>
#include <wx/string.h>

#include <memory>
#include <string>
#include <vector>

class CParser;
class CParserBlock;
class CParserUnit;
class CUtf8Text;
struct CSourceLine;
struct CParserOrigin;

/// One source text known to a parser. Shared by the parser's file table and by every unit made from it, so that a unit
/// can always tell where it came from.
class VC_QXPARSER_API CParserFile : public wxObject
{
public:
    /// @param parser the parser whose file table holds this file; not owned.
    /// @param from the unit on whose behalf the text is read, or null for a top-level text. The file keeps a copy of
    /// its
    ///        text, file and line.
    CParserFile(CParser* parser, const CParserUnit* from);
    ~CParserFile() override;

    CParserFile(const CParserFile&) = delete;
    CParserFile& operator=(const CParserFile&) = delete;

    /// Names the file and cuts `text` into lines, one unit of `block` each. Line ends are "\r\n", "\r" and "\n", in any
    /// mix; lines are numbered from 1. Without `keepEmptyLines` an empty line makes no unit but still counts. A text
    /// that ends with a line end has no further, empty line.
    /// The lines are not made into units before somebody asks the block for them; but a block of a derived class gets
    /// each of them through its CreateUnit.
    /// @return 0, always.
    long Load(const wxString& text, const wxString& name, CParserBlock* block, bool keepEmptyLines);
    /// The same for a text in UTF-8, which its lines share.
    long Load(CUtf8Text text, const wxString& name, CParserBlock* block, bool keepEmptyLines);

    /// The key of this file in its parser's table; for a text without a file name a unique made-up one.
    const wxString& GetName() const { return m_name; }

    /// The copy of the unit that caused this file to be read, or null for a top-level text. Owned by the file.
    const CParserUnit* GetIncludedFrom() const { return m_includedFrom.get(); }

    /// Whether the text is the body of a loop, which GetIncludedFrom() then begins; an include or a text of its own
    /// otherwise.
    bool IsLoop() const { return m_loopLines != nullptr; }

    /// Where an include was opened, in the search directory; GetName() of any other text.
    const wxString& GetPath() const { return m_path.empty() ? m_name : m_path; }

private:
    friend class CParser;
    friend struct CParserOrigin;

    void LoadLines(std::string bytes, CParserBlock& block, bool keepEmptyLines);
    void LoadUnits(const wxString& text, CParserBlock* block, bool keepEmptyLines);

    CParser* m_parser;
    std::unique_ptr<CParserUnit> m_includedFrom;
    wxString m_name;
    wxString m_path;                                             ///< Empty when it is the name.
    std::shared_ptr<const std::vector<CSourceLine>> m_loopLines; ///< What the lines of a loop's body stand for.

    wxDECLARE_CLASS(CParserFile);
};

/// A line of a text that was read, as opposed to one that a loop repeats.
struct CSourceLine
{
    wxSharedPtr<CParserFile> file; ///< Null for a unit that has none.
    unsigned long line = 0;        ///< Counted from 1.
};

/// What a directive knows about a text that it has parsed.
struct CTextOrigin
{
    wxString path;                                             ///< Where an include was opened.
    std::shared_ptr<const std::vector<CSourceLine>> loopLines; ///< The lines that a loop's body was taken from.
};

/// From a file's name to the file.
WX_DECLARE_STRING_HASH_MAP_WITH_DECL(wxSharedPtr<CParserFile>, CHashParserFile, class VC_QXPARSER_API);
