#include "tags/tag_parser.h"

wxIMPLEMENT_CLASS(CTagParser, CParser);

CTagParser::CTagParser(const wchar_t* begin, const wchar_t* end)
    : m_beginTag(begin), m_endTag(end), m_doubleBeginTag(m_beginTag + m_beginTag), m_doubleEndTag(m_endTag + m_endTag),
      m_tagsAreAscii(m_beginTag.IsAscii() && m_endTag.IsAscii())
{
    CParser::Clean();
}

CTagParser::CTagParser(CPreprocessor* pp, const wchar_t* begin, const wchar_t* end)
    : CParser(pp), m_beginTag(begin), m_endTag(end), m_doubleBeginTag(m_beginTag + m_beginTag),
      m_doubleEndTag(m_endTag + m_endTag), m_tagsAreAscii(m_beginTag.IsAscii() && m_endTag.IsAscii())
{
    CParser::Clean();
}

CTagBlock* CTagParser::CreateBlock(bool detached)
{
    auto* const block = new CTagBlock(detached ? nullptr : this, nullptr);
    if (!detached)
        m_blocks.Add(block);
    return block;
}

long CTagParser::ParseBlock(CParserBlock* block)
{
    auto* const tagBlock = dynamic_cast<CTagBlock*>(block);
    return tagBlock ? tagBlock->CreateSubBlocks() : CTagBlock::tagNotFound;
}

wxString CTagParser::GetHierarchy(CTagBlock* block) const
{
    if (block)
        return block->GetHierarchy(0);
    wxString hierarchies;
    for (const CParserBlock* listed : m_blocks) {
        if (const auto* const tagBlock = dynamic_cast<const CTagBlock*>(listed))
            hierarchies += tagBlock->GetHierarchy(0);
    }
    return hierarchies;
}
