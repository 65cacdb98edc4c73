#include "tags/tag_block.h"

#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tags/tag_parser.h"

#include <utility>

wxIMPLEMENT_CLASS(CTagBlock, CParserBlock);

namespace
{

const wxString NoTag;

void Adopt(std::optional<CTagHeaderBlock>& header, CTagBlock* parent)
{
    if (header)
        header->SetParent(parent);
}

} // namespace

CTagBlock::CTagBlock(CParser* parser, CTagBlock* parent)
    : CParserBlock(parser, typeid(CTagBlock)), m_tagParser(dynamic_cast<CTagParser*>(parser)), m_parent(parent)
{}

CTagBlock::CTagBlock(const CTagBlock& other)
    : CParserBlock(other), m_tagParser(nullptr), m_beginHeader(other.m_beginHeader), m_endHeader(other.m_endHeader),
      m_parent(nullptr), m_type(other.m_type), m_name(other.m_name), m_option(other.m_option),
      m_doubleTag(other.m_doubleTag)
{
    Adopt(m_beginHeader, this);
    Adopt(m_endHeader, this);
    m_subBlocks.reserve(other.m_subBlocks.size());
    for (const auto& block : other.m_subBlocks)
        AddSubBlock(std::unique_ptr<CTagBlock>(block->Clone()));
}

CTagBlock& CTagBlock::operator=(const CTagBlock& other)
{
    if (this == &other)
        return *this;
    CTagBlock copy(other);
    std::swap(m_units, copy.m_units);
    for (unsigned int slot = 0; slot < GetCount(); ++slot)
        m_units[slot]->m_block = this;
    std::swap(m_subBlocks, copy.m_subBlocks);
    for (const auto& block : m_subBlocks)
        block->m_parent = this;
    m_beginHeader = other.m_beginHeader;
    m_endHeader = other.m_endHeader;
    Adopt(m_beginHeader, this);
    Adopt(m_endHeader, this);
    m_type = other.m_type;
    m_name = other.m_name;
    m_option = other.m_option;
    m_doubleTag = other.m_doubleTag;
    return *this;
}

CTagBlock::~CTagBlock() = default;

CTagBlock* CTagBlock::Clone() const
{
    return new CTagBlock(*this);
}

void CTagBlock::InsertBlock(CParserBlock* other, int* pos)
{
    if (other == this)
        return;
    CParserBlock::InsertBlock(other, pos);
    auto* const tagBlock = dynamic_cast<CTagBlock*>(other);
    if (!tagBlock)
        return;
    for (auto& block : std::exchange(tagBlock->m_subBlocks, {}))
        AddSubBlock(std::move(block));
}

CTagBlock* CTagBlock::AddSubBlock(std::unique_ptr<CTagBlock> block)
{
    block->m_parent = this;
    m_subBlocks.push_back(std::move(block));
    return m_subBlocks.back().get();
}

long CTagBlock::SaveOption(wxString text, CParserUnit* WXUNUSED(unit))
{
    if (text.empty())
        return 0;
    CPreprocessor::TrimRight(text, GetCurrentEndTag().wc_str());
    m_option.ExtractOption(text);
    return 0;
}

wxString CTagBlock::GetHierarchy(int level) const
{
    wxString hierarchy;
    AppendHierarchy(hierarchy, level);
    return hierarchy;
}

void CTagBlock::AppendHierarchy(wxString& out, int level) const
{
    out.append(static_cast<size_t>(level), wxUniChar(L'\t')).append(m_type).append(wxS("=")).append(m_name);
    for (const auto& block : m_subBlocks) {
        out.append(wxS("\n"));
        block->AppendHierarchy(out, level + 1);
    }
}

const wxString& CTagBlock::GetBeginTag() const
{
    return m_tagParser ? m_tagParser->GetBeginTag() : NoTag;
}

const wxString& CTagBlock::GetEndTag() const
{
    return m_tagParser ? m_tagParser->GetEndTag() : NoTag;
}

const wxString& CTagBlock::GetDoubleBeginTag() const
{
    return m_tagParser ? m_tagParser->GetDoubleBeginTag() : NoTag;
}

const wxString& CTagBlock::GetDoubleEndTag() const
{
    return m_tagParser ? m_tagParser->GetDoubleEndTag() : NoTag;
}

const wxString& CTagBlock::GetCurrentBeginTag() const
{
    return m_doubleTag ? GetDoubleBeginTag() : GetBeginTag();
}

const wxString& CTagBlock::GetCurrentEndTag() const
{
    return m_doubleTag ? GetDoubleEndTag() : GetEndTag();
}
