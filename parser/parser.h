#pragma once

#include "base/api.h"
#include "base/dir.h"
#include "base/utf8_text.h"
#include "parser/parser_block.h"
#include "parser/parser_file.h"

#include <wx/object.h>
#include <wx/sharedptr.h>
#include <wx/string.h>

#include <memory>

class CParserUnit;
class CPreprocessor;

/// Turns texts into blocks of preprocessed units and keeps what belongs to them: the table of source files, the blocks,
/// the preprocessor and the last error.
///
/// Failures are recorded, never thrown: a failing operation returns a non-zero `long` and GetLastError() then tells the
/// message and the unit it concerns. A parser, its blocks and units are used by one thread at a time.
class VC_QXPARSER_API CParser : public wxObject
{
public:
    /// A parser that makes its own preprocessor at the first Parse. Also reads the system option
    /// "tavoli.pp.debugcontext" for UseDebugContext().
    CParser();

    /// A parser that uses `pp` (not owned, may be null) and starts with a copy of its directory.
    explicit CParser(CPreprocessor* pp);

    ///@{
    /// Copies every member. Blocks and preprocessor are then shared, not duplicated: only one of the parsers may be
    /// cleaned.
    CParser(const CParser& other);
    CParser& operator=(const CParser& other);
    ///@}

    ~CParser() override;

    /// A new empty block. Detached: the caller owns it and it has no parser. Otherwise this parser lists and deletes
    /// it.
    virtual CParserBlock* CreateBlock(bool detached);

    /// Takes a block out of the list without deleting it: the caller then owns it.
    /// @return 1 when it was listed, else 0.
    virtual int RemoveBlock(CParserBlock* block);

    /// Parses a preprocessed block; for derived parsers. Parse() does not call it.
    /// @return 1 here: nothing found.
    virtual long ParseBlock(CParserBlock* block);

    /// Calls Clean().
    virtual void Init();

    /// Deletes all blocks and an own preprocessor, forgets all files and the remove list. Keeps the last error's
    /// message (its unit has gone with its block), the directory and the empty-line setting.
    virtual void Clean();

    /// Cuts a text into units, one a line, and preprocesses them. The new block is the last of this parser
    /// (GetLastBlock).
    /// @param fileName the text's key in the file table; a text of the same name before it is forgotten (its units keep
    ///        it alive). Empty: a unique name is made up.
    /// @param from the unit on whose behalf the text is read, copied; null at top level.
    /// @param removeDefines whether the definitions named by SetRemoveDefines are first taken out of the text.
    /// @return the preprocessor's result: 0, or a negative value after an error was recorded.
    long Parse(const wxString& text, const wxString& fileName, const CParserUnit* from, bool removeDefines);

    /// As above, for a text that a directive has found.
    long Parse(const wxString& text, const wxString& fileName, const CParserUnit* from, bool removeDefines,
               const CTextOrigin& origin);

    /// The same for a text as CFile::Read gives it, which is then kept as it is, without a copy.
    long Parse(CUtf8Text text, const wxString& fileName, const CParserUnit* from, bool removeDefines,
               const CTextOrigin& origin = {});

    /// Begins a text that is to be parsed several times: enters it into the file table and cuts it, but does not
    /// preprocess it. The block is detached; see ParseLines. Arguments as of Parse.
    std::unique_ptr<CParserBlock> CutLines(CUtf8Text text, const wxString& fileName, const CParserUnit* from,
                                           const CTextOrigin& origin = {});

    /// Preprocesses a copy of the lines that CutLines has given, as Parse does with those of a text.
    long ParseLines(const CParserBlock& lines);

    /// The directory against which includes are searched, also for the preprocessor in use.
    void SetDir(CDir& dir);

    /// The last block. There must be one.
    /// @param remove not 0: the block is also taken out of the list, and the caller owns it.
    CParserBlock* GetLastBlock(int remove);

    /// Records an error; `unit` (not owned, may be null) is where it happened.
    void SetError(const wxString& message, const CParserUnit* unit);
    /// Copies the last message and its unit to those arguments that are not null.
    void GetLastError(wxString* message, const CParserUnit** unit) const;
    /// Copies the last message, which is empty when there is none; `message` must not be null.
    void GetLastErrorStr(wxString* message) const;
    /// Forgets the last message and its unit.
    void ClearError();

    /// The table's reference to the file of this file's name, null when there is none.
    wxSharedPtr<CParserFile> GetFileRef(CParserFile* file);

    /// The file of this name; made when the table has none (`from` as in Parse).
    wxSharedPtr<CParserFile> GetFile(const wxString& name, CParserUnit* from);

    /// The preprocessor in use; null before the first Parse when none was given.
    CPreprocessor* GetPP() const { return m_pp; }

    /// From now on an empty line makes a unit too. There is no way back.
    void KeepEmptyLines() { m_keepEmptyLines = true; }

    /// The names whose definitions Parse takes out of texts on request: a list ended by a null pointer, or null. Not
    /// owned; it must stay valid until the next Clean().
    void SetRemoveDefines(const wchar_t** names) { m_removeDefines = names; }

    /// What the system option "tavoli.pp.debugcontext" was, as a truth value, when the last parser was made without a
    /// preprocessor.
    static bool UseDebugContext() { return ms_bUseDebugContext; }

    /// Does nothing; a place for hosts that ask before they delete.
    void AskDeleteElement() {}

protected:
    CHashParserFile m_files{100};              ///< the files by their names
    CArrayParserBlock m_blocks;                ///< the listed blocks, owned
    CPreprocessor* m_pp = nullptr;             ///< the preprocessor in use; null: none yet
    bool m_ppExternal = false;                 ///< whether it was given, and is not owned
    wxString m_lastError;                      ///< see GetLastError
    const CParserUnit* m_errorUnit = nullptr;  ///< see GetLastError; not owned
    CDir m_dir;                                ///< see SetDir
    const wchar_t** m_removeDefines = nullptr; ///< see SetRemoveDefines; not owned
    bool m_keepEmptyLines = false;             ///< see KeepEmptyLines

    static bool ms_bUseDebugContext; ///< see UseDebugContext

private:
    void PreparePreprocessor();
    wxSharedPtr<CParserFile> AddFile(const wxString& name, const CParserUnit* from, wxString& key,
                                     const CTextOrigin& origin);
    template <typename Text>
    long ParseText(Text text, const wxString& fileName, const CParserUnit* from, const CTextOrigin& origin);

    wxDECLARE_CLASS(CParser);
};
