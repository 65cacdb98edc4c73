#include "preprocessor/nested_text_detail.h"

#include "parser/parser.h"
#include "parser/parser_block.h"
#include "preprocessor/preprocessor.h"

#include <memory>
#include <utility>

namespace
{

void InsertLastBlock(CParser& parser, _BlockPosition& position)
{
    const std::unique_ptr<CParserBlock> block(parser.GetLastBlock(1));
    position.m_block->InsertBlock(block.get(), &position.m_index);
    // What was inserted has moved the current unit's slot.
    if (!position.m_unit.IsMade())
        position.m_unit = CCurrentUnit(position.m_block, position.m_index);
}

} // namespace

long CNestedText::Insert(CParser& parser, CUtf8Text text, const wxString& name, const CParserUnit* from,
                         bool removeDefines, const CTextOrigin& origin, _BlockPosition& position) const
{
    if (const long result = parser.Parse(std::move(text), name, from, removeDefines, origin))
        return result;
    InsertLastBlock(parser, position);
    return 0;
}

long CNestedText::InsertLines(CParser& parser, const CParserBlock& lines, _BlockPosition& position) const
{
    if (const long result = parser.ParseLines(lines))
        return result;
    InsertLastBlock(parser, position);
    return 0;
}
