#pragma once

#include "base/api.h"
#include "base/option.h"
#include "parser/parser_block.h"
#include "tags/tag_header_block.h"

#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CTagParser;
class wxOutputStream;
///@{
/// For the reading of tags alone: what stands at the start of a tag, what tags begin and end with, and the tags of a
/// text of which no blocks are made yet.
template <typename Char> struct TagTitle;
struct TagMarks;
class TagOutline;
///@}

/// A piece of text between an opening tag and its closing tag. Its units are its content; what stands in blocks nested
/// in it is in its sub-blocks, and the lines of the two tags are in its headers.
///
/// The block that a parser makes of a whole text is a tag block too, without tags of its own: without type, name and
/// headers.
///
/// Operations that return a `long` give 0 on success, a positive value when nothing was found and a negative one (see
/// eTagResult) after they have recorded a message and its unit in the parser. A block needs a CTagParser to know its
/// tags: one without finds none.
class VC_QXPARSER_API CTagBlock : public CParserBlock
{
public:
    /// What operations return when they do not give 0.
    enum eTagResult : long
    {
        tagNotFound = 1,    ///< No tag, or no type in a tag.
        tagIncomplete = -2, ///< A tag without end, type or closing tag.
        tagNotOpened = -3,  ///< A closing tag where no block is open.
        tagMismatch = -4,   ///< A closing tag of another type or name.
        tagBadName = -5,    ///< A "=" behind the type without a quoted name.
        tagTooDeep = -6     ///< More open blocks than CTagParser::SetNestingLimit allows.
    };

    /// @param parent the block in which this one stands; not owned, may be null.
    CTagBlock(CParser* parser, CTagBlock* parent);

    /// A deep copy without parser and parent. Its units are clones, without file and line.
    CTagBlock(const CTagBlock& other);

    /// Replaces everything but the parser and the parent by deep copies.
    CTagBlock& operator=(const CTagBlock& other);

    ~CTagBlock() override;

    /// Moves the units of `other` into this block (see CParserBlock), and when it is a tag block its sub-blocks behind
    /// those of this one. Inserting a block into itself does nothing.
    void InsertBlock(CParserBlock* other, int* pos) override;

    /// A deep copy, as the copy constructor makes it. The caller owns it.
    CTagBlock* Clone() const override;

    /// Reads the tag block that opens at the first tag from slot `unit` of `source` on into this new block: its type,
    /// name, options, sub-blocks and headers, and its content, which leaves holes in `source`. When it fails, `source`
    /// keeps the units of what could not be read.
    /// @param unit receives the slot behind the closing tag, or -1 (and the result is 0) when there was no tag.
    virtual long CreateSubBlocks(CTagBlock* source, int& unit);

    /// Reads all tag blocks in the units of this block as its sub-blocks. The units that are left stand outside of all
    /// tags. After a failure the last sub-block is the one that could not be read.
    virtual long CreateSubBlocks();

    /// Searches the first tag from slot `unit` on: a line that starts with the begin tag, blanks aside, up to the end
    /// tag on the same or a later line. What follows the end tag of a single (not double) tag becomes a unit of its
    /// own; mere blanks behind it are dropped. The block becomes a double-tag block at a double begin tag.
    /// @param unit receives the slot with the begin tag; the number of slots when there is none.
    /// @param endUnit receives the slot with the end tag.
    /// @param afterBegin receives the character behind the begin tag, 0 at the end of the line; may be null.
    /// @param beforeEnd receives the character before the end tag, and stays as it is when a line starts with that; may
    ///        be null.
    /// @return 0, tagNotFound or tagIncomplete.
    long FindTag(int& unit, int& endUnit, wchar_t* afterBegin, wchar_t* beforeEnd);

    /// Reads the type of a tag and its name, given by `TYPE='NAME'` or `TYPE name='NAME'`. A block that has a type and
    /// a name already compares them, with case.
    /// @param tag the first line of an opening or closing tag. @param unit where it stands, for messages.
    /// @return 0, tagNotFound, tagMismatch or tagBadName.
    long GetTypeAndName(const wxString& tag, const CParserUnit* unit);

    /// Adds the options in a text (see COption), which may still end with the end tag. `unit` is where it stands.
    /// @return 0, always.
    long SaveOption(wxString text, CParserUnit* unit);

    /// "TYPE=NAME" behind `level` tabs, and below it the same of every sub-block, one level deeper. Without a line feed
    /// at the end.
    wxString GetHierarchy(int level) const;

    /// Writes what GetHierarchy(0) gives for each sub-block, each with a line feed at the end, as ToUtf8 gives it. For
    /// large texts: it makes no blocks of their tags, and writes in pieces.
    /// @return false when the stream has failed.
    bool WriteHierarchies(wxOutputStream& stream) const;

    ///@{
    /// The type, empty until the opening tag is read, and the name.
    wxString GetType() const { return m_type; }
    wxString GetName() const { return m_name; }
    ///@}

    /// Gives the block another name.
    void SetName(wxString name) { m_name = name; }

    ///@{
    /// The options of the opening tag.
    COption& GetOption() { return Options(); }
    const COption& GetOption() const { return Options(); }
    ///@}

    ///@{
    /// The block in which this one stands; not owned, null at the top.
    CTagBlock* GetParent() const { return m_parent; }
    void SetParent(CTagBlock* parent) { m_parent = parent; }
    ///@}

    ///@{
    /// Whether this block's tags are the double ones.
    bool IsDoubleTag() const { return m_doubleTag; }
    void SetDoubleTag(bool doubleTag) { m_doubleTag = doubleTag; }
    ///@}

    ///@{
    /// The tags of the parser; empty texts without one.
    const wxString& GetBeginTag() const;
    const wxString& GetEndTag() const;
    const wxString& GetDoubleBeginTag() const;
    const wxString& GetDoubleEndTag() const;
    ///@}

    ///@{
    /// The double tags for a double-tag block, else the single ones.
    const wxString& GetCurrentBeginTag() const;
    const wxString& GetCurrentEndTag() const;
    ///@}

    ///@{
    /// The blocks nested in this one, in the order of the text; owned by this block. Those of a large text are made
    /// when somebody asks for them.
    std::size_t GetSubBlockCount() const { return SubBlocks().size(); }
    CTagBlock* GetSubBlock(std::size_t index) const { return SubBlocks()[index].get(); }
    ///@}

    ///@{
    /// The lines of the opening tag, null for a block without tags.
    const CTagHeaderBlock* GetBeginHeader() const { return m_beginHeader ? &*m_beginHeader : nullptr; }
    CTagHeaderBlock* GetBeginHeader() { return m_beginHeader ? &*m_beginHeader : nullptr; }
    ///@}

    ///@{
    /// The lines of the closing tag, null for a single tag.
    const CTagHeaderBlock* GetEndHeader() const { return m_endHeader ? &*m_endHeader : nullptr; }
    CTagHeaderBlock* GetEndHeader() { return m_endHeader ? &*m_endHeader : nullptr; }
    ///@}

private:
    friend class CTagHeaderBlock;

    struct Tag;
    struct Range;
    struct Place;
    enum class Split;
    using Blocks = std::vector<std::unique_ptr<CTagBlock>>;

    /// Sub-blocks of which there is only the outline: its entries from `begin` to before `end`, and what is nested in
    /// them.
    struct UnmadeBlocks
    {
        std::shared_ptr<TagOutline> outline; ///< Null: all are made.
        std::uint32_t begin = 0;
        std::uint32_t end = 0;
    };

    CTagBlock(CTagBlock& parent, const std::shared_ptr<TagOutline>& outline, std::uint32_t index);

    long Fail(long code, const wxString& message, const CParserUnit* unit);
    const CParserUnit* LastUnit() const;
    bool ReadsBytes(const CUnitSlot& slot) const;
    TagMarks Marks() const;

    bool FindBeginTag(int& unit, std::size_t& at) const;
    bool FindEndTag(int& unit, std::size_t& at) const;
    long SearchTag(Tag& tag, Split split);
    bool SearchOnLine(Tag& tag);
    void SplitBehindTag(int slot, std::size_t behind, Split split);
    std::vector<std::size_t> CutsOfRow(int slot, std::size_t behind) const;

    bool CanReadOutline() const;
    long ReadSubBlocks(TagOutline* outline);
    std::unique_ptr<CTagBlock> NewSubBlock();
    long ReadOpeningTag(CTagBlock& source, Tag& tag);
    long ReadType(const CTagBlock& source, const Tag& tag);
    template <typename Char> long TakeTitle(const TagTitle<Char>& title, const Place& place);
    long ReadContent(CTagBlock& source, const Tag& opening, Tag& closing, std::vector<Range>& content);
    long ReadSubBlock(CTagBlock& source, int& unit);
    long CheckClosingTag(const CTagBlock& source, const Tag& opening, const Tag& closing);
    void TakeHeader(std::optional<CTagHeaderBlock>& header, CTagBlock& source, const Tag& tag);

    COption& Options() const;
    void NoteOptions(std::string_view text);

    template <typename Out> void AppendHierarchy(Out& out, std::size_t level) const;
    template <typename Out> void AppendSubHierarchies(Out& out, std::size_t level) const;

    const Blocks& SubBlocks() const
    {
        if (m_unmade.outline)
            const_cast<CTagBlock*>(this)->MakeSubBlocks();
        return m_subBlocks;
    }
    void MakeSubBlocks();
    CTagBlock* AddSubBlock(std::unique_ptr<CTagBlock> block);

    CTagParser* m_tagParser; ///< The parser, when it is one for tags.
    Blocks m_subBlocks;      ///< Those that are made;
    UnmadeBlocks m_unmade;   ///< behind them stand those that are not.
    std::optional<CTagHeaderBlock> m_beginHeader;
    std::optional<CTagHeaderBlock> m_endHeader;
    CTagBlock* m_parent;
    wxString m_type;
    wxString m_name;
    // Most blocks of a large text are never asked for their options.
    mutable std::unique_ptr<COption> m_option; ///< Null: nobody has asked for it yet.
    mutable std::string m_unreadOptions;       ///< The text of those that are to be read then.
    bool m_doubleTag = false;

    wxDECLARE_CLASS(CTagBlock);
};
