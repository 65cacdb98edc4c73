#pragma once

#include <wx/string.h>

#include <string>
#include <utility>
#include <vector>

class CDir;
class CFile;
class CParser;
class CUtf8Text;
class Diagnostics;

namespace CLI
{
class App;
}

/// What -D, -U and -C say about the parser of a command.
struct ParserOptions
{
    std::vector<std::pair<bool, std::string>>
        defines; ///< true with NAME[=VALUE] to define, false with a NAME to forget
    std::string dir;
};

/// Adds -D, -U and -C. Takes the command's parse-complete callback; `options` must live as long as the command.
void AddParserOptions(CLI::App& command, ParserOptions& options);

/// Gives a parser with a preprocessor of its host the search directory and the defines.
/// @return false after an error that has been reported.
bool SetUpParser(const ParserOptions& options, CParser& parser, Diagnostics& diagnostics);

/// What standard input is called in diagnostics and for tools.
constexpr const char* StandardInputName = "<stdin>";

/// The name from the current directory of a file that is named from `directory` ("" for the current one).
wxString NameFrom(const std::string& directory, const wxString& file);

/// What an input is called in diagnostics: as typed, "<stdin>" for "-".
wxString InputName(const std::string& file);

/// Opens a file, named from `dir`, or standard input for "-".
/// @return false after an error that has been reported.
bool OpenInput(const std::string& file, CDir& dir, CFile& source, Diagnostics& diagnostics);

/// Reports that an input which is open cannot be read.
void ReportUnreadable(const std::string& file, Diagnostics& diagnostics);

/// Reads a text file, named from `dir`, or standard input for "-".
/// @return false after an error that has been reported.
bool ReadInput(const std::string& file, CDir& dir, wxString& text, Diagnostics& diagnostics);
bool ReadInput(const std::string& file, CDir& dir, CUtf8Text& text, Diagnostics& diagnostics);
