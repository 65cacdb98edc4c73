#pragma once

#include "base/api.h"
#include "parser/parser_block.h"

class CTagBlock;
/// Which lines of a tag a line is; for the reading of tags alone.
struct TagLine;

/// The units of one opening or closing tag of a tag block.
class VC_QXPARSER_API CTagHeaderBlock : public CParserBlock
{
public:
    /// @param parent the block whose tag this is; not owned, may be null.
    CTagHeaderBlock(CParser* parser, CTagBlock* parent);

    /// Clones of the units, without parser and parent.
    CTagHeaderBlock(const CTagHeaderBlock& other);

    /// Replaces the units by clones of the other's and takes its parent. The parser stays.
    CTagHeaderBlock& operator=(const CTagHeaderBlock& other);

    /// A copy, as the copy constructor makes it. The caller owns it.
    CTagHeaderBlock* Clone() const override;

    /// Reads the options that stand in an opening tag into those of the parent: what is behind the type and the name
    /// on the first line, and every further line up to the end tag, each line for itself. A closing tag has none.
    /// @return 0, always.
    virtual long Process();

    ///@{
    /// The block whose tag this is; not owned, may be null.
    CTagBlock* GetParent() const { return m_parent; }
    void SetParent(CTagBlock* parent) { m_parent = parent; }
    ///@}

private:
    bool AddOptions(unsigned int slot, TagLine place);

    CTagBlock* m_parent;

    wxDECLARE_CLASS(CTagHeaderBlock);
};
