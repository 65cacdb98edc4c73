#pragma once

#include "parser/unit_array.h"
#include "tags/tag_line_detail.h"
#include "tags/tag_title_detail.h"

#include <wx/string.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

class CTagBlock;
class CTagParser;

/// The tags of a text before blocks are made of them: twelve bytes a block. To make a block costs many times what it
/// costs to find its tags, and most blocks of a large text are never asked for.
///
/// Only plain tags are read so: single ones (not double), each on one line of which no unit has been made, with nothing
/// to rewrite and nothing to report. A block with others in it is made at once and keeps its place here.
///
/// An outline does not need the parser, which may be gone when a block is made.
class TagOutline
{
public:
    /// The number of an entry. Behind it come those of the blocks nested in it.
    using Index = uint32_t;

    enum class Found
    {
        block, ///< A block that was read.
        other, ///< A tag, or a unit, that is not for outlines.
        end    ///< No tag in the lines that were left.
    };

    /// Whether the tags of a parser are such that their blocks can be read so.
    static bool CanRead(const CTagParser& parser);

    explicit TagOutline(const CTagParser& parser);
    ~TagOutline();
    TagOutline(const TagOutline&) = delete;
    TagOutline& operator=(const TagOutline&) = delete;

    /// Reads the block that opens at the first tag from slot `unit` on, with all that is nested in it. The lines of its
    /// tags are cut behind them, as ever.
    /// @param unit receives the slot behind the block; else that of what was found, or the number of slots.
    Found ReadBlock(CArrayParserUnit& units, int& unit);

    /// Appends an outermost block that has been made.
    void AddBlock(std::unique_ptr<CTagBlock> block);

    /// Takes the lines of all blocks that were read out of the text they were read from. To be called once, at the end.
    void TakeLines(CArrayParserUnit& text);

    /// The number of entries.
    Index Count() const { return static_cast<Index>(m_entries.size()); }

    /// The entry behind a block and all that is nested in it.
    Index Behind(Index index) const { return m_entries[index].behind; }

    /// The block that was added as this entry; null where none is made yet.
    std::unique_ptr<CTagBlock>* BlockAt(Index index);

    ///@{
    /// Of an entry whose block is not made yet, while its lines are here: what its opening tag says, and its options.
    TagTitle<char> TitleAt(Index index) const;
    std::string_view OptionsAt(Index index) const;
    ///@}

    ///@{
    /// Moves the lines of a block that is being made to the end of an array. A single tag has no closing one.
    void MoveOpeningTag(Index index, CArrayParserUnit& to) { MoveLines(Opening(index), Opening(index) + 1, to); }
    void MoveClosingTag(Index index, CArrayParserUnit& to) { MoveLines(Closing(index), Closing(index) + 1, to); }
    void MoveContent(Index index, CArrayParserUnit& to);
    bool IsSingle(Index index) const { return Opening(index) == Closing(index); }
    ///@}

private:
    struct Entry
    {
        uint32_t opening; ///< The slot of the opening tag; NoSlot for a block that is made.
        uint32_t closing; ///< The slot of the closing tag, or of the single one; or a place in m_blocks.
        Index behind;
    };

    /// A tag that is not closed yet.
    struct OpenTag
    {
        Index index;
        std::string_view type;
        std::string_view name;
    };

    static constexpr uint32_t NoSlot = std::numeric_limits<uint32_t>::max();

    uint32_t Opening(Index index) const { return m_entries[index].opening; }
    uint32_t Closing(Index index) const { return m_entries[index].closing; }

    Found FindBeginTag(const CArrayParserUnit& units, size_t& slot, size_t& at) const;
    bool ReadTag(CArrayParserUnit& units, size_t slot, size_t at);
    bool Open(size_t slot, const TagTitle<char>& title, bool isSingle);
    bool Close(size_t slot, const TagTitle<char>& title);
    void MoveLines(size_t from, size_t behind, CArrayParserUnit& to);

    const wxString m_beginTag;
    const wxString m_endTag;
    const wxString m_doubleBeginTag;
    const wxString m_doubleEndTag;
    const TagMarks m_marks;
    const unsigned int m_nestingLimit;
    std::vector<Entry> m_entries;
    std::vector<OpenTag> m_openTags;
    std::vector<std::unique_ptr<CTagBlock>> m_blocks;
    CArrayParserUnit m_lines; ///< In the slots where the text had them.
};
