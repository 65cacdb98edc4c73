#pragma once

#include "base/api.h"
#include "parser/parser.h"
#include "tags/tag_block.h"

#include <wx/string.h>

/// A parser that reads its texts as trees of tag blocks.
///
/// Parse() cuts a text into the units of a CTagBlock, as for any parser; ParseBlock() then reads the tags in it. A tag
/// stands between the begin tag and the end tag, and only where a line starts with it, blanks aside:
///
///     <type='name' option=1>
///     content
///     <single/>
///     </type>
///
/// The begin and end tags written twice open and close blocks in which single tags are just content.
class VC_QXPARSER_API CTagParser : public CParser
{
public:
    /// How deep tag blocks may stand in each other unless a host says otherwise.
    static constexpr unsigned int DefaultNestingLimit = 1000;

    /// @param begin what starts a tag; it should not start with a blank. @param end what ends it. Neither should be
    ///        empty or start with a quote: a quote is the boundary of a string wherever it stands.
    explicit CTagParser(const wchar_t* begin = L"<", const wchar_t* end = L">");

    /// A parser that uses `pp` (not owned); see CParser.
    explicit CTagParser(CPreprocessor* pp, const wchar_t* begin = L"<", const wchar_t* end = L">");

    /// A new empty tag block without a parent. Detached: the caller owns it and it has no parser. A parser of exactly
    /// this class makes the blocks of plain tags when somebody asks for them; a derived one makes all blocks of a text
    /// with this operation, while it reads them.
    CTagBlock* CreateBlock(bool detached) override;

    /// Reads the tags of a block of this parser: CTagBlock::CreateSubBlocks().
    /// @return its code; CTagBlock::tagNotFound for what is no tag block.
    long ParseBlock(CParserBlock* block) override;

    ///@{
    /// The tags: those given to the constructor, and each of them written twice.
    const wxString& GetBeginTag() const { return m_beginTag; }
    const wxString& GetEndTag() const { return m_endTag; }
    const wxString& GetDoubleBeginTag() const { return m_doubleBeginTag; }
    const wxString& GetDoubleEndTag() const { return m_doubleEndTag; }
    ///@}

    /// The hierarchy of a block (see CTagBlock::GetHierarchy); for null those of all blocks of this parser, with
    /// nothing between them.
    wxString GetHierarchy(CTagBlock* block) const;

    ///@{
    /// How many blocks may be open at a time. Reading, copying and deleting a block take stack for each level of it
    /// (about 1 KiB).
    void SetNestingLimit(unsigned int limit) { m_nestingLimit = limit; }
    unsigned int GetNestingLimit() const { return m_nestingLimit; }
    ///@}

private:
    friend class CTagBlock;
    friend class TagOutline;

    wxString m_beginTag;
    wxString m_endTag;
    wxString m_doubleBeginTag;
    wxString m_doubleEndTag;
    bool m_tagsAreAscii; ///< So they can be looked for in UTF-8 as in wide text.
    unsigned int m_nestingLimit = DefaultNestingLimit;
    unsigned int m_openBlocks = 0;

    wxDECLARE_CLASS(CTagParser);
};
