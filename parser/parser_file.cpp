#include "parser/parser_file.h"

#include "base/utf8_detail.h"
#include "base/utf8_text.h"
#include "parser/block_lines_detail.h"
#include "parser/line_text_detail.h"
#include "parser/parser.h"
#include "parser/parser_unit.h"

using vcq::detail::AppendExactUtf8;

wxIMPLEMENT_CLASS(CParserFile, wxObject);

namespace
{

const wchar_t* FindLineEnd(const wchar_t* at, const wchar_t* end)
{
    while (at != end && *at != L'\n' && *at != L'\r')
        ++at;
    return at;
}

const wchar_t* SkipLineEnd(const wchar_t* at, const wchar_t* end)
{
    const bool pair = *at == L'\r' && at + 1 != end && at[1] == L'\n';
    return at + (pair ? 2 : 1);
}

} // namespace

CParserFile::CParserFile(CParser* parser, const CParserUnit* from) : m_parser(parser)
{
    if (from)
        m_includedFrom = std::make_unique<CParserUnit>(from->m_file, nullptr, from->m_text, from->m_line);
}

CParserFile::~CParserFile() = default;

long CParserFile::Load(const wxString& text, const wxString& name, CParserBlock* block, bool keepEmptyLines)
{
    m_name = name;
    std::string bytes;
    if (block && block->TakesLines() && AppendExactUtf8(bytes, text.wx_str(), text.length()))
        LoadLines(std::move(bytes), *block, keepEmptyLines);
    else
        LoadUnits(text, block, keepEmptyLines);
    return 0;
}

long CParserFile::Load(CUtf8Text text, const wxString& name, CParserBlock* block, bool keepEmptyLines)
{
    m_name = name;
    if (block && block->TakesLines() && !text.HasSurrogates())
        LoadLines(text.TakeBytes(), *block, keepEmptyLines);
    else
        LoadUnits(text.ToWide(), block, keepEmptyLines);
    return 0;
}

void CParserFile::LoadLines(std::string bytes, CParserBlock& block, bool keepEmptyLines)
{
    if (bytes.size() <= CLineText::LargestText)
        CLineText::Cut(std::move(bytes), m_parser->GetFileRef(this), keepEmptyLines, CBlockLines(block).Units());
    else
        LoadUnits(CUtf8Text::FromBytes(std::move(bytes))->ToWide(), &block, keepEmptyLines);
}

void CParserFile::LoadUnits(const wxString& text, CParserBlock* block, bool keepEmptyLines)
{
    const wxSharedPtr<CParserFile> reference = m_parser->GetFileRef(this);
    const wchar_t* at = text.wx_str();
    const wchar_t* const end = at + text.length();
    for (unsigned long line = 1; at != end; ++line) {
        const wchar_t* const lineEnd = FindLineEnd(at, end);
        if (lineEnd != at || keepEmptyLines)
            block->CreateUnit(reference, wxString(at, lineEnd - at), line);
        at = lineEnd == end ? end : SkipLineEnd(lineEnd, end);
    }
}
