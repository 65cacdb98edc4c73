#pragma once

#include "preprocessor/preprocessor.h"
#include "qxp/dependencies.h"

#include <string>

class Diagnostics;

/// The preprocessor of a command: it notes the files that it reads, and its warnings are diagnostics.
class CommandPreprocessor : public CPreprocessor
{
public:
    /// @param directory the search directory, as it was given.
    CommandPreprocessor(const std::string& directory, Diagnostics& diagnostics);

    /// Notes a file that was read, by its name in the search directory.
    void NoteRead(const wxString& path);

    /// What was read by this and, where a command adds it, beside it.
    Dependencies& GetDependencies() { return m_dependencies; }

    void IncludeRead(const wxString& path) override;
    void WarningGiven(const wxString& text, const CParserUnit& unit) override;

private:
    const std::string& m_directory;
    Diagnostics& m_diagnostics;
    Dependencies m_dependencies;
};
