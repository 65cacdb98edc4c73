#include "qxp/command_preprocessor.h"

#include "qxp/diagnostics.h"
#include "qxp/parser_options.h"

CommandPreprocessor::CommandPreprocessor(const std::string& directory, Diagnostics& diagnostics)
    : CPreprocessor(nullptr, true), m_directory(directory), m_diagnostics(diagnostics)
{}

void CommandPreprocessor::NoteRead(const wxString& path)
{
    const wxString name = NameFrom(m_directory, path);
    m_dependencies.Add(name);
    m_diagnostics.Progress(wxS("reading ") + name);
}

void CommandPreprocessor::IncludeRead(const wxString& path)
{
    NoteRead(path);
}

void CommandPreprocessor::WarningGiven(const wxString& text, const CParserUnit& unit)
{
    m_diagnostics.WarningAt(unit, wxString(text).Trim(false));
}
