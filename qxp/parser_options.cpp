#include "qxp/parser_options.h"

#include "qxp/command_line.h"
#include "qxp/diagnostics.h"
#include "vc_qxparser.h"

namespace
{

std::string NonEmptyName(const std::string& text)
{
    return text.empty() || text[0] == '=' ? "a NAME is missing" : "";
}

void AddDefine(const wxString& argument, CParser& parser, Diagnostics& diagnostics)
{
    wxString value;
    const wxString name = argument.BeforeFirst(wxS('='), &value);
    const bool hasValue = argument.find(wxS('=')) != wxString::npos;
    parser.GetPP()->AddDefine(name, hasValue ? value : wxString(wxS("1")), wxArrayString());
    wxString message;
    parser.GetLastErrorStr(&message);
    if (!message.empty())
        diagnostics.Warning(message);
    parser.ClearError();
}

template <typename Text> bool ReadWhole(const std::string& file, CDir& dir, Text& text, Diagnostics& diagnostics)
{
    CFile source;
    if (!OpenInput(file, dir, source, diagnostics))
        return false;
    if (source.Read(text, CFile::convDefault))
        return true;
    ReportUnreadable(file, diagnostics);
    return false;
}

} // namespace

void AddParserOptions(CLI::App& command, ParserOptions& options)
{
    const CLI::Option* const define =
        command.add_option("-D,--define", "Add a define before the first file; 1 without VALUE")
            ->type_name("NAME[=VALUE]")
            ->allow_extra_args(false)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->check(NonEmptyName);
    const CLI::Option* const undef = command.add_option("-U,--undef", "Remove a define, in order with -D")
                                         ->type_name("NAME")
                                         ->allow_extra_args(false)
                                         ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                                         ->check(NonEmptyName);
    command.add_option("-C,--dir", options.dir, "Search directory of files and includes")
        ->type_name("DIR")
        ->check(NonEmptyFile);
    command.parse_complete_callback(
        [&command, &options, define, undef] { options.defines = InOrderGiven(command, define, undef); });
}

bool SetUpParser(const ParserOptions& options, CParser& parser, Diagnostics& diagnostics)
{
    CPreprocessor& preprocessor = *parser.GetPP();
    preprocessor.SetParser(&parser);
    CDir dir = options.dir.empty() ? CDir() : CDir(FromSystemName(options.dir));
    if (!dir.Ok()) {
        diagnostics.Error(wxString::Format(wxS("Directory not found '%s'"), FromSystemName(options.dir)));
        return false;
    }
    parser.SetDir(dir);
    diagnostics.SetSearchDirectory(options.dir);
    for (const auto& [isDefine, text] : options.defines) {
        if (isDefine)
            AddDefine(FromSystemName(text), parser, diagnostics);
        else
            preprocessor.RemoveDefine(FromSystemName(text));
    }
    return true;
}

wxString NameFrom(const std::string& directory, const wxString& file)
{
    if (directory.empty() || file == StandardInputName || file.StartsWith(wxS("/")))
        return file;
    const wxString prefix = FromSystemName(directory);
    return prefix.EndsWith(wxS("/")) ? prefix + file : prefix + wxS("/") + file;
}

wxString InputName(const std::string& file)
{
    return file == "-" ? wxString(StandardInputName) : FromSystemName(file);
}

bool OpenInput(const std::string& file, CDir& dir, CFile& source, Diagnostics& diagnostics)
{
    const bool isStandardInput = file == "-";
    source = isStandardInput ? CFile::StandardInput() : dir.OpenFile(InputName(file), wxFile::read);
    if (source.IsOpened())
        return true;
    if (isStandardInput)
        ReportUnreadable(file, diagnostics);
    else
        diagnostics.Error(wxString::Format(wxS("File not found '%s' from '%s'"), InputName(file), dir.GetFullPath()));
    return false;
}

void ReportUnreadable(const std::string& file, Diagnostics& diagnostics)
{
    diagnostics.Error(wxString::Format(wxS("File not readable '%s'"), InputName(file)));
}

bool ReadInput(const std::string& file, CDir& dir, wxString& text, Diagnostics& diagnostics)
{
    return ReadWhole(file, dir, text, diagnostics);
}

bool ReadInput(const std::string& file, CDir& dir, CUtf8Text& text, Diagnostics& diagnostics)
{
    return ReadWhole(file, dir, text, diagnostics);
}
