#pragma once

#include "base/api.h"
#include "base/dir.h"
#include "parser/parser_unit.h"
#include "preprocessor/define_table.h"

#include <wx/arrstr.h>
#include <wx/object.h>
#include <wx/string.h>

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

class CParser;
class CParserBlock;
class CParserUnit;
class CNameList;
class CPreprocessorScripts;
class CScanBuffers;
struct CDirectiveLine;
struct CLoopHeader;

/// One open conditional section.
struct _IfDefStateInfo
{
    /// What the branches of a section have come to so far.
    enum State
    {
        BranchTaken = 1, ///< A branch was taken: the current one, or one before it.
        NoBranchYet = 2, ///< None was taken yet; text is left out.
        ElseActive = 3,  ///< The "else" branch is kept.
        ElseSkipped = 4  ///< The "else" branch is left out, because a branch was taken before.
    };

    int m_state;            ///< One of State.
    bool m_savedSkipping;   ///< Whether text was already left out where the section opened.
    CParserOrigin m_origin; ///< Where the section opened.
    bool m_unresolved;      ///< Partial mode could not decide it: its directives are kept.
    bool m_inUnresolved;    ///< It is such a section, or stands in one of the same text.
};

/// The unit that a walk over a block stands at, to be used like a pointer. Of a line that is no unit yet (see
/// CParserBlock) it is made when it is first looked at.
class VC_QXPARSER_API CCurrentUnit
{
public:
    /// A unit that is there.
    CCurrentUnit(CParserUnit* unit) : m_unit(unit) {}
    /// What a slot of a block holds.
    CCurrentUnit(CParserBlock* block, int slot) : m_block(block), m_slot(slot) {}

    ///@{
    /// The unit, made now if it was not yet.
    CParserUnit* Get() const { return m_block ? Make() : m_unit; }
    operator CParserUnit*() const { return Get(); }
    CParserUnit* operator->() const { return Get(); }
    ///@}

    /// Whether it was looked at, or given as a unit.
    bool IsMade() const { return !m_block; }

private:
    CParserUnit* Make() const;

    mutable CParserUnit* m_unit = nullptr;
    mutable CParserBlock* m_block = nullptr;
    int m_slot = 0;
};

/// How far a walk over a block has come. Directives that insert or remove units move it.
struct VC_QXPARSER_API _BlockPosition
{
    CParserBlock* m_block; ///< The block that is walked over.
    int m_index;           ///< The slot of the current unit.
    CCurrentUnit m_unit;   ///< The current unit.
    bool m_lineStarted;    ///< Something that is neither blank nor comment stands before this place on the line.

    /// Where the current unit comes from; makes none.
    CParserOrigin GetOrigin() const;
};

/// What an input may ask of a preprocessor before it is refused. Going past a limit is an error with a message of its
/// own at the directive that did it.
struct CPreprocessorLimits
{
    unsigned int includeDepth = 200;    ///< Files that include each other, the outermost text not counted.
    unsigned int loopNesting = 200;     ///< Loops inside loops.
    unsigned int openSections = 10000;  ///< Conditional sections open at once, those of the including texts included.
    unsigned int argumentNesting = 200; ///< Defines inside arguments of defines; conditional texts inside each other.
    unsigned long loopPasses = 0;       ///< Passes of one loop; 0: no limit.
    size_t expandedLength = 256 * 1024 * 1024; ///< Characters of a line, value or condition with its defines replaced.
    size_t definesLength = 512 * 1024 * 1024;  ///< Characters of the values of all defines together.
    /// Memory that directives may add to a text: for the lines of loops and includes their bytes in UTF-8 and LineBytes
    /// each, for lines that defines and scripts have made longer the difference.
    size_t addedBytes = size_t{4} * 1024 * 1024 * 1024;
    static constexpr size_t LineBytes = 24; ///< What a line takes beside its text.
    long scriptMilliseconds = 0;            ///< Time for each script, see CJScript::SetTimeLimit; 0: no limit.
    size_t scriptBytes = 0;                 ///< Memory for each script, see CJScript::SetMemoryLimit; 0: no limit.
};

/// Rewrites the units of a block in place: drops comments, keeps string literals, applies the directives introduced by
/// "#", runs inline script, replaces defines, and keeps or drops lines by conditional sections.
///
/// Operations that return a `long` give 0 on success and -1 after they have recorded an error in the parser
/// (CParser::GetLastError). The define table lives until Clean, from block to block.
class VC_QXPARSER_API CPreprocessor : public wxObject
{
public:
    /// @param parser receives this preprocessor's errors; CParser::Parse sets it to the parser that is parsing.
    /// @param trim whether each line is trimmed on both ends and dropped when nothing is left of it.
    CPreprocessor(CParser* parser, bool trim);
    ~CPreprocessor() override;

    CPreprocessor(const CPreprocessor&) = delete;
    CPreprocessor& operator=(const CPreprocessor&) = delete;

    /// Rewrites a block. After an error the units before the failing one already hold their results.
    /// @return 0, -1 after a recorded error, or whatever other value an overridden directive hook has returned.
    virtual long PreprocessBlock(CParserBlock* block);

    /// Called at the start of every block.
    virtual void DirectiveStartBlock();

    /// Applies the directive or inline construct whose "#" stands at `at`, up to the line end `end`. Appends what comes
    /// of it to `output` and sets `*next` to where the scan resumes.
    /// @return 0 when done, 1 when the word behind "#" is nothing known, -1 after a recorded error.
    virtual long DirectiveApply(wxString& output, const wchar_t* at, const wchar_t* end, const wchar_t** next,
                                _BlockPosition& position);

    /// Called when a block has been scanned; reports sections left open.
    virtual long DirectiveEndCheck(const _BlockPosition& position);

    /// Inserts the preprocessed units of a file before the current unit. `argument` is the rest of the directive's
    /// line.
    /// @return 0, 1 after a recorded error about the file itself, or the result of parsing it.
    virtual long Include(const wxString& argument, _BlockPosition& position);

    /// Replaces a loop's lines by the preprocessed units of all its passes; the line of the matching "#endfor" becomes
    /// the current unit. `arguments` is the rest of the directive's line.
    /// @return 0; 1 for a loop kept for a later pass (partial mode); -1 after a recorded error.
    virtual long ApplyFor(const wxString& arguments, _BlockPosition& position);

    /// Called for every file that an include has read, with its path as opened in the search directory. Does nothing
    /// here; for hosts that keep track of what a result depends on.
    virtual void IncludeRead(const wxString& path);

    /// Called for every warning directive, with the rest of its line and its unit. Logs it here: as "WARNING: TEXT",
    /// a line feed, and "in 'FILE' (LINE)".
    virtual void WarningGiven(const wxString& text, const CParserUnit& unit);

    ///@{
    /// The parser that receives the errors; not owned.
    void SetParser(CParser* parser) { m_parser = parser; }
    CParser* GetParser() const { return m_parser; }
    ///@}

    /// Whether each line is trimmed on both ends and dropped when nothing is left of it.
    void SetTrim(bool trim) { m_trim = trim; }

    /// In partial mode what cannot be decided yet (unknown names, conditions that use them) is kept as text for a later
    /// pass instead of being an error.
    void SetPartialMode(bool partial) { m_partial = partial; }
    /// Whether partial mode has kept anything since the last ResetPartial.
    bool WasPartial() const { return m_wasPartial; }
    /// Makes WasPartial false.
    void ResetPartial() { m_wasPartial = false; }

    /// Turns this preprocessor into a pass-through that leaves blocks untouched. There is no way back.
    void Desactivate() { m_deactivated = true; }

    ///@{
    /// The directory in which includes are searched.
    void SetDir(CDir& dir) { m_dir = dir; }
    CDir GetDir() { return m_dir; }
    ///@}

    ///@{
    /// The limits; a change holds from the next directive on, one of the limits of scripts only when no script has run.
    void SetLimits(const CPreprocessorLimits& limits) { m_limits = limits; }
    const CPreprocessorLimits& GetLimits() const { return m_limits; }
    ///@}

    /// Forgets all defines and open sections and ends the scripts.
    void Clean();

    /// Adds a define without origin. A name that is already defined keeps its value; when that differs, a message
    /// (without unit) is recorded in the parser.
    void AddDefine(const wxString& name, const wxString& value, wxArrayString params);
    /// Removes a define; nothing happens when there is none of this name.
    void RemoveDefine(const wxString& name);
    /// Whether there is a define of this name, compared with case.
    bool HasDefine(const wxString& name) const;

    /// Expands one define without arguments into `result`.
    /// @return 0; 1 when there is no such define, -1 when it needs arguments or a condition in it fails (both recorded
    ///         without unit). Also 1, with nothing recorded, when partial mode cannot decide a conditional text in it.
    long ApplyDefine(const wxString& name, wxString& result);

    /// Adds every define of this table to the other one, as AddDefine does.
    void CopyDefineTo(CPreprocessor* other);

    /// Lists the table into `out`, one "#define NAME VALUE" or "#define NAME(A,B) VALUE" line each, in the order
    /// in which they came; but one may stand in the place of another that was removed before.
    void GetDefines(wxString& out) const;

    /// Empties every "#define" and "#redefine" line of `text` that defines one of the names (a list ended by a null
    /// pointer). Line ends stay, so the line numbers do too.
    static void BufferInPlaceRemoveDefines(wxString& text, const wchar_t** names);

    /// Replaces the defines in a text ("#NAME", and "##NAME" for the value as a quoted string), except in quoted
    /// strings and except the names in `params`.
    /// @return 0; 1 when a name is not defined: recorded as an error, but in partial mode kept as written instead; -1
    ///         after any other recorded error.
    long DirectiveReplaceDefines(const wxString& text, wxString& result, const _BlockPosition& position,
                                 const wxArrayString& params);

    /// Reads a parenthesised list of arguments, or nothing when `at` is not at a "(". Arguments are split at commas
    /// outside quotes and parentheses and trimmed; one may hold one level of parentheses. `at` moves behind the list.
    /// @param name the define, for messages.
    /// @param position where the defines in the arguments are to be replaced; null: they stay as they are.
    /// @return 0; 1 when partial mode left something unresolved; -1 after a recorded error.
    long GetParams(wxString name, const wchar_t*& at, const wchar_t* end, wxArrayString& params, CParser* parser,
                   const _BlockPosition* position);

    /// Appends the value of a define to `result`, its parameters replaced by the arguments (as many as it declares) and
    /// its conditional texts "#(CONDITION?TRUE:FALSE)" decided by script.
    /// @return 0; 1 when partial mode cannot decide one of these; -1 after a recorded error. What has been appended then
    ///         is a part of the value.
    long ReplaceParams(const wxString& name, wxString& result, const _DefineInfo& define,
                       const wxArrayString& arguments, CParser* parser, const _BlockPosition* position);

    /// Rewrites every "defined(NAME)" of a condition to "true" or "false". Partial mode keeps those it cannot decide
    /// yet.
    /// @return 0, or 1 when one was kept.
    long PreprocessCondition(wxString& condition);

    /// Whether the character at `p` stands behind an odd number of backslashes, looking back no further than `start`.
    /// False for a null `p`.
    static bool IsEscapedChar(const wchar_t* p, const wchar_t* start);

    /// The word (ASCII letters, digits and "_") at character `pos` of a NUL-terminated text, possibly empty.
    /// @param end receives the place behind the word; may be null. @param length receives its length; may be null.
    static wxString ExtractWord(const wchar_t* text, unsigned int pos, const wchar_t** end, unsigned int* length);

    /// The 0-based index of the first `what` outside quoted strings, or -1. `what` should not begin with a quote: it
    /// would be taken for the boundary of a string, and the length of `text` may then be returned.
    static long FindCharEx(const wxString& text, const wxString& what);

    /// Searches the units of a block from slot `unit`, character `pos` on, outside quoted strings. On a hit `unit` is
    /// the slot and `pos` the index, counted from where the search began in that unit; on a miss `unit` is behind the
    /// last slot and `pos` 0.
    static bool Find(const CParserBlock* block, int& unit, int& pos, const wxString& what);

    /// The contents of the quoted string that begins at `begin`; empty when none does or it is not closed. The first
    /// same quote closes it, whether or not a backslash stands before.
    /// @param after receives the place behind the closing quote, or `begin`; may be null.
    /// @param unescape whether "\t" and "\n" in it become a tab and a line feed.
    static wxString ExtractString(const wchar_t* begin, const wchar_t* end, const wchar_t** after, bool unescape);
    /// As above, from the start of `text`, which loses the string and its quotes.
    static wxString ExtractString(wxString& text, bool unescape);

    ///@{
    /// Removes the characters of `set` from the start or the end of `text`.
    static void TrimLeft(wxString& text, const wchar_t* set);
    static void TrimRight(wxString& text, const wchar_t* set);
    ///@}

    /// Joins double-quoted strings that stand next to each other with nothing but blanks and tabs between.
    static wxString ConcatQuotes(const wxString& text);

    /// `message`, unchanged: a place for hosts' tools that decorate messages.
    static wxString AddContext(const wxString& message, const wxString& file, unsigned long line);
    /// 0, nothing extracted: the counterpart of AddContext.
    static int ExtractContext(const wxString& message, wxString& text, wxString& file, int& line);

    /// The body of a JavaScript string literal for `text`; with `quote`, between double quotes.
    static wxString StringToJS(const wxString& text, bool quote);
    /// StringToJS on a NUL-terminated buffer of `capacity` characters.
    /// @return the new length, or -1 when the result and its NUL do not fit (logged, the buffer is untouched).
    static int StringToJS_Inplace(wchar_t* buffer, unsigned int capacity, bool quote);

    /// A C string literal for `text`, one quoted literal per line of it.
    static wxString StringToC(const wxString& text);
    /// The text of a literal made by StringToC. Carriage returns ("\r") are dropped; a "\x" without two hexadecimal
    /// digits is logged and left out.
    static wxString StringFromC(const wxString& literal);

    /// Puts the escape character (0: the back-quote) before every `ch`. The escape character itself is not doubled.
    static wxString EscapeChar(const wxString& text, wchar_t ch, wchar_t escape);
    /// Takes the escape character (0: the back-quote) away from before every `ch`.
    static wxString UnescapeChar(const wxString& text, wchar_t ch, wchar_t escape);
    /// Cuts a text at every separator without the escape character (0: the back-quote) before it. With `unescape` the
    /// escape characters before the other separators are taken away.
    static wxArrayString SplitEscapeChar(const wxString& text, wchar_t separator, bool unescape, wchar_t escape);

    /// Puts `count` times `indent` before every line, empty ones included; all line ends become "\n".
    static wxString IndentLines(const wxString& text, const wxString& indent, int count);

    /// `text` with every character that is not an ASCII letter, digit or "_" replaced by "_".
    static wxString ToKeyword(const wxString& text);

    /// The printable ASCII characters of `text` (32 to 126), all others dropped.
    static wxString AnsiString(const wxString& text);

private:
    friend class CBlockScan;
    friend class CParamSubstitution;
    friend struct CDirectiveTable;

    struct CLoopBounds
    {
        int start = 0;
        int end = 0;
        int step = 0;
    };

    long Fail(const wxString& message, const CParserUnit* unit);
    CPreprocessorScripts& Scripts();

    long ApplyUse(CDirectiveLine& line);
    long ApplyInlineScript(CDirectiveLine& line);
    long DirectiveError(CDirectiveLine& line);
    long DirectiveWarning(CDirectiveLine& line);
    bool KeepInUndecidedSection(CDirectiveLine& line);
    void KeepForLaterPass(CDirectiveLine& line);

    long DirectiveDefine(CDirectiveLine& line);
    long DirectiveRedefine(CDirectiveLine& line);
    long DirectiveUndef(CDirectiveLine& line);
    long ReadDefine(CDirectiveLine& line, wxString& name, _DefineInfo& define);
    void KeepDefine(CDirectiveLine& line, const wxString& name, const _DefineInfo& define);
    long FailNotDefined(CDirectiveLine& line, const wxString& name);
    bool HasRoomFor(const wxString& name, const wxString& value) const;
    long StoreDefine(CDirectiveLine& line, const wxString& name, _DefineInfo& define);
    long SplitArguments(const wxString& name, const wchar_t*& at, const wchar_t* end, wxArrayString& arguments,
                        const _BlockPosition* position);
    long ReplaceDefines(const wchar_t* at, const wchar_t* end, wxString& result, const _BlockPosition& position,
                        const CNameList& leftAlone);
    long FailExpansion(std::wstring_view word, const _BlockPosition* position);
    long ExpandUse(std::wstring_view word, const _DefineInfo& define, const wchar_t*& at, const wchar_t* end,
                   const _BlockPosition* position, bool quote, wxString& result);

    _IfDefStateInfo* InnermostSection();
    long OpenSection(CDirectiveLine& line, std::optional<bool> taken);
    long OpenDefinedSection(CDirectiveLine& line, bool wanted);
    long ReplaceCondition(const CDirectiveLine& line, wxString& condition);
    bool EvaluateCondition(const wxString& condition, bool& value);
    long RewriteDefined(const wxString& condition, wxString& result) const;
    long DecideBranch(CDirectiveLine& line, _IfDefStateInfo& section);
    long FailWithout(const CDirectiveLine& line, const wchar_t* opening);
    long FailCondition(const CDirectiveLine& line, const wxString& condition);
    long DirectiveIfdef(CDirectiveLine& line);
    long DirectiveIfndef(CDirectiveLine& line);
    long DirectiveIf(CDirectiveLine& line);
    long DirectiveElse(CDirectiveLine& line);
    long DirectiveElif(CDirectiveLine& line);
    long DirectiveElseifdef(CDirectiveLine& line);
    long DirectiveEndif(CDirectiveLine& line);

    long DirectiveInclude(CDirectiveLine& line);
    long DirectiveFor(CDirectiveLine& line);
    long EvaluateBound(const wxString& bound, const wchar_t* messageStart, const _BlockPosition& position, int& value);
    long EvaluateBounds(const CLoopHeader& header, const _BlockPosition& position, CLoopBounds& bounds);
    long CheckBounds(const CLoopBounds& bounds, const CLoopHeader& header, const CParserUnit* unit);
    long RunLoop(const wxString& name, const CLoopBounds& bounds, const CParserBlock& lines,
                 const CParserUnit* directive, _BlockPosition& position);

    CParser* m_parser;
    CMapStringToDefineInfo m_defines;
    std::vector<_IfDefStateInfo> m_sections;
    size_t m_sectionBase = 0;
    bool m_skipping = false;
    bool m_trim;
    bool m_partial = false;
    bool m_wasPartial = false;
    CDir m_dir;
    std::unique_ptr<CPreprocessorScripts> m_scripts;
    bool m_deactivated = false;
    CPreprocessorLimits m_limits;
    unsigned int m_includeDepth = 0;
    unsigned int m_loopNesting = 0;
    unsigned int m_argumentNesting = 0;
    unsigned int m_openScans = 0; ///< The scan of a text, and those of the texts that its directives have parsed.
    size_t m_addedBytes = 0;      ///< In the outermost of them, see CPreprocessorLimits.
    std::vector<std::unique_ptr<CScanBuffers>> m_freeBuffers; ///< Those that no scan uses.
    std::vector<std::wstring_view> m_argumentPlaces;          ///< What SplitArguments finds, kept for its memory.
    const CNameList* m_leftAlone = nullptr; ///< The names that the replacement in progress leaves alone.

    wxDECLARE_CLASS(CPreprocessor);
};
