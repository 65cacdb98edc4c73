#include "preprocessor/nested_text_detail.h"

#include "parser/parser.h"
#include "parser/parser_block.h"
#include "preprocessor/preprocessor.h"

#include <memory>

long CNestedText::Insert(CParser& parser, const wxString& text, const wxString& name, const CParserUnit* from,
                         bool removeDefines, const CTextOrigin& origin, _BlockPosition& position) const
{
    if (const long result = parser.Parse(text, name, from, removeDefines, origin))
        return result;
    const std::unique_ptr<CParserBlock> block(parser.GetLastBlock(1));
    position.m_block->InsertBlock(block.get(), &position.m_index);
    return 0;
}
