#include "parser/parser_unit.h"

#include "base/wide_number_detail.h"
#include "parser/parser_block.h"

wxIMPLEMENT_CLASS(CParserUnit, wxObject);

CParserUnit::CParserUnit(wxSharedPtr<CParserFile> file, CParserBlock* block, const wxString& text, unsigned long line)
    : m_file(file), m_block(block), m_line(line), m_text(text)
{}

CParserUnit* CParserUnit::Clone()
{
    return new CParserUnit(wxSharedPtr<CParserFile>(), nullptr, m_text, 0);
}

wxString CParserUnit::GetFileName() const
{
    return m_file ? m_file->GetName() : wxString();
}

wxString CParserUnit::GetContext() const
{
    return FormatContext(m_file.get(), m_line);
}

CSourceLine CParserUnit::GetSource() const
{
    return CParserOrigin{m_file, m_line}.GetSource();
}

unsigned int CParserUnit::SplitAt(size_t pos, int index)
{
    size_t tailStart = m_text.find_first_not_of(L" \t\n\r", pos);
    if (tailStart == wxString::npos)
        tailStart = m_text.length();
    auto* const tail = new CParserUnit(m_file, nullptr, m_text.Mid(tailStart), m_line);
    m_text.Truncate(pos);
    return m_block->InsertBehind(tail, index < 0 ? m_block->IndexOf(this) : index);
}

wxString FormatContext(const CParserFile* file, unsigned long line)
{
    // Every define keeps such a text, so it is put together without the cost of a format.
    constexpr size_t restLength = 24;
    wxString context;
    context.reserve(restLength + (file ? file->GetName().length() : 0));
    context.append(wxS("file \""));
    if (file)
        context.append(file->GetName());
    context.append(wxS("\" line "));
    vcq::detail::AppendNumber(context, static_cast<long long>(line));
    return context;
}

wxString CParserOrigin::GetContext() const
{
    return FormatContext(file.get(), line);
}

CSourceLine CParserOrigin::GetSource() const
{
    if (file && file->IsLoop() && line - 1 < file->m_loopLines->size())
        return (*file->m_loopLines)[line - 1];
    return {file, line};
}
