#include "parser/parser_file.h"

#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_unit.h"

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
    const wxSharedPtr<CParserFile> reference = m_parser->GetFileRef(this);
    const wchar_t* at = text.wx_str();
    const wchar_t* const end = at + text.length();
    for (unsigned long line = 1; at != end; ++line) {
        const wchar_t* const lineEnd = FindLineEnd(at, end);
        if (lineEnd != at || keepEmptyLines)
            block->CreateUnit(reference, wxString(at, lineEnd - at), line);
        at = lineEnd == end ? end : SkipLineEnd(lineEnd, end);
    }
    return 0;
}
