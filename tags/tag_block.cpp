#include "tags/tag_block.h"

#include "base/text_encoding.h"
#include "base/utf8_detail.h"
#include "parser/block_lines_detail.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tags/tag_outline_detail.h"
#include "tags/tag_parser.h"
#include "tags/tag_text_detail.h"

#include <wx/stream.h>

#include <utility>

using tag_text_detail::ToWide;
using text_detail::Span;

wxIMPLEMENT_CLASS(CTagBlock, CParserBlock);

namespace
{

const wxString NoTag;

/// UTF-8 on its way into a stream.
class Utf8Pieces
{
public:
    explicit Utf8Pieces(wxOutputStream& stream) : m_stream(stream) {}

    void Append(size_t count, char character) { m_text.append(count, character); }
    void Append(std::string_view text) { m_text.append(text); }
    void Append(const wxString& text) { m_text.append(ToUtf8(text)); }

    void EndLine()
    {
        m_text += '\n';
        if (m_text.length() >= PieceSize)
            Flush();
    }

    /// False when anything was not written, now or before.
    bool Flush()
    {
        m_isWritten = m_isWritten && m_stream.WriteAll(m_text.data(), m_text.length());
        m_text.clear();
        return m_isWritten;
    }

private:
    static constexpr size_t PieceSize = 64 * 1024;

    wxOutputStream& m_stream;
    std::string m_text;
    bool m_isWritten = true;
};

/// The same as one text.
class WideText
{
public:
    void Append(size_t count, char character) { m_text.append(count, wxUniChar(character)); }
    void Append(std::string_view text) { vcq::detail::AppendUtf8(m_text, text.data(), text.length()); }
    void Append(const wxString& text) { m_text.append(text); }
    void EndLine() { m_text.append(1, wxUniChar(L'\n')); }
    const wxString& WithoutLastEnd() { return m_text.RemoveLast(); }

private:
    wxString m_text;
};

template <typename Out, typename Text> void AppendTitle(Out& out, size_t level, const Text& type, const Text& name)
{
    out.Append(level, '\t');
    out.Append(type);
    out.Append(1, '=');
    out.Append(name);
    out.EndLine();
}

void Adopt(std::optional<CTagHeaderBlock>& header, CTagBlock* parent)
{
    if (header)
        header->SetParent(parent);
}

} // namespace

CTagBlock::CTagBlock(CParser* parser, CTagBlock* parent)
    : CParserBlock(parser, typeid(CTagBlock)), m_tagParser(dynamic_cast<CTagParser*>(parser)), m_parent(parent)
{}

/// Makes a block of what an outline tells.
CTagBlock::CTagBlock(CTagBlock& parent, const std::shared_ptr<TagOutline>& outline, std::uint32_t index)
    : CParserBlock(parent.m_parser, typeid(CTagBlock)), m_tagParser(parent.m_tagParser), m_parent(&parent)
{
    const TagTitle<char> title = outline->TitleAt(index);
    m_type = ToWide(title.type);
    m_name = ToWide(title.name);
    m_unreadOptions = outline->OptionsAt(index);
    m_beginHeader.emplace(m_parser, this);
    outline->MoveOpeningTag(index, CBlockLines(*m_beginHeader).Units());
    if (outline->IsSingle(index))
        return;
    outline->MoveContent(index, m_units);
    m_endHeader.emplace(m_parser, this);
    outline->MoveClosingTag(index, CBlockLines(*m_endHeader).Units());
    if (outline->Behind(index) != index + 1)
        m_unmade = {outline, index + 1, outline->Behind(index)};
}

CTagBlock::CTagBlock(const CTagBlock& other)
    : CParserBlock(other), m_tagParser(nullptr), m_beginHeader(other.m_beginHeader), m_endHeader(other.m_endHeader),
      m_parent(nullptr), m_type(other.m_type), m_name(other.m_name),
      m_option(other.m_option ? std::make_unique<COption>(*other.m_option) : nullptr),
      m_unreadOptions(other.m_unreadOptions), m_doubleTag(other.m_doubleTag)
{
    Adopt(m_beginHeader, this);
    Adopt(m_endHeader, this);
    m_subBlocks.reserve(other.GetSubBlockCount());
    for (const auto& block : other.SubBlocks())
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
    std::swap(m_unmade, copy.m_unmade);
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
    MakeSubBlocks();
    tagBlock->MakeSubBlocks();
    for (auto& block : std::exchange(tagBlock->m_subBlocks, {}))
        AddSubBlock(std::move(block));
}

/// Makes the blocks that there is only an outline of; those nested in them stay in it.
void CTagBlock::MakeSubBlocks()
{
    const UnmadeBlocks unmade = std::exchange(m_unmade, {});
    for (std::uint32_t index = unmade.begin; index != unmade.end; index = unmade.outline->Behind(index)) {
        if (std::unique_ptr<CTagBlock>* const block = unmade.outline->BlockAt(index))
            AddSubBlock(std::move(*block));
        else
            AddSubBlock(std::unique_ptr<CTagBlock>(new CTagBlock(*this, unmade.outline, index)));
    }
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
    WideText hierarchy;
    AppendHierarchy(hierarchy, static_cast<size_t>(level));
    return hierarchy.WithoutLastEnd();
}

bool CTagBlock::WriteHierarchies(wxOutputStream& stream) const
{
    Utf8Pieces pieces(stream);
    AppendSubHierarchies(pieces, 0);
    return pieces.Flush();
}

template <typename Out> void CTagBlock::AppendHierarchy(Out& out, size_t level) const
{
    AppendTitle(out, level, m_type, m_name);
    AppendSubHierarchies(out, level + 1);
}

template <typename Out> void CTagBlock::AppendSubHierarchies(Out& out, size_t level) const
{
    for (const auto& block : m_subBlocks)
        block->AppendHierarchy(out, level);
    std::vector<std::uint32_t> open;
    for (std::uint32_t index = m_unmade.begin; index != m_unmade.end; ++index) {
        while (!open.empty() && open.back() == index)
            open.pop_back();
        if (const std::unique_ptr<CTagBlock>* const block = m_unmade.outline->BlockAt(index)) {
            (*block)->AppendHierarchy(out, level);
            continue;
        }
        const TagTitle<char> title = m_unmade.outline->TitleAt(index);
        AppendTitle(out, level + open.size(), title.type, title.name);
        open.push_back(m_unmade.outline->Behind(index));
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
