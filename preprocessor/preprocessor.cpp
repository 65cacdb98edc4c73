#include "preprocessor/preprocessor.h"

#include "parser/parser.h"
#include "preprocessor/preprocessor_scripts_detail.h"
#include "preprocessor/scan_buffers_detail.h"

wxIMPLEMENT_CLASS(CPreprocessor, wxObject);

CPreprocessor::CPreprocessor(CParser* parser, bool trim) : m_parser(parser), m_trim(trim) {}

CPreprocessor::~CPreprocessor()
{
    Clean();
}

void CPreprocessor::DirectiveStartBlock()
{
    m_skipping = false;
}

void CPreprocessor::Clean()
{
    m_scripts.reset();
    m_sections.clear();
    m_defines.Clear();
}

CPreprocessorScripts& CPreprocessor::Scripts()
{
    if (!m_scripts)
        m_scripts = std::make_unique<CPreprocessorScripts>(m_limits);
    return *m_scripts;
}

long CPreprocessor::Fail(const wxString& message, const CParserUnit* unit)
{
    if (m_parser)
        m_parser->SetError(message, unit);
    return -1;
}
