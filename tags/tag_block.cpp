#include "tags/tag_block.h"

#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tags/tag_parser.h"
#include "tags/tag_text_detail.h"

#include <utility>

using tag_text_detail::ToWide;
using text_detail::Span;

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
      m_parent(nullptr), m_type(other.m_type), m_name(other.m_name),
      m_option(other.m_option ? std::make_unique<COption>(*other.m_option) : nullptr),
      m_unreadOptions(other.m_unreadOptions), m_doubleTag(other.m_doubleTag)
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
    m_option = std::move(copy.m_option);
    m_unreadOptions = std::move(copy.m_unreadOptions);
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
    Options().ExtractOption(text);
    return 0;
}

COption& CTagBlock::Options() const
{
    if (!m_option)
        m_option = std::make_unique<COption>();
    if (!m_unreadOptions.empty()) {
        m_option->ExtractOption(ToWide(m_unreadOptions));
        m_unreadOptions.clear();
    }
    return *m_option;
}

/// SaveOption for UTF-8.
void CTagBlock::NoteOptions(std::string_view text)
{
    const Span endTag(GetCurrentEndTag());
    while (!text.empty() && endTag.Holds(text.back()))
        text.remove_suffix(1);
    // Each line is read for itself: a quote that is not closed ends with it.
    if (m_option || !m_unreadOptions.empty())
        Options().ExtractOption(ToWide(text));
    else
        m_unreadOptions = text;
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
