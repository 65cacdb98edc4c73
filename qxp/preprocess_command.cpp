#include "qxp/preprocess_command.h"

#include "qxp/command_line.h"
#include "qxp/dependencies.h"
#include "qxp/diagnostics.h"
#include "qxp/output.h"
#include "vc_qxparser.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr const wchar_t* StandardInputName = L"<stdin>";

struct PreprocessOptions
{
    CommonOptions common;
    std::vector<std::string> files;
    std::vector<std::pair<bool, std::string>>
        defines; ///< true with NAME[=VALUE] to define, false with a NAME to forget
    std::string dir;
    std::string output;
    std::vector<std::string> remove;
    bool keepEmptyLines = false;
    bool noTrim = false;
    bool partial = false;
    bool origins = false;
    bool lineMarkers = false;
    bool listDefines = false;
    bool deps = false;
    std::string depsFile;
};

/// A preprocessor that notes the files it reads.
class TrackingPreprocessor : public CPreprocessor
{
public:
    TrackingPreprocessor(std::function<void(const wxString&)> read)
        : CPreprocessor(nullptr, true), m_read(std::move(read))
    {}
    void IncludeRead(const wxString& path) override { m_read(path); }

private:
    std::function<void(const wxString&)> m_read;
};

class PreprocessRun
{
public:
    explicit PreprocessRun(const PreprocessOptions& options)
        : m_options(options), m_diagnostics(options.common), m_pp([this](const wxString& path) { NoteRead(path); }),
          m_parser(&m_pp)
    {}

    int Run();

private:
    bool SetUp();
    void AddDefines();
    bool Preprocess(const std::string& file);
    bool ReadText(const std::string& file, wxString& text);
    void NoteRead(const wxString& path);
    std::string Result();
    void AppendBlock(const CParserBlock& block);
    void AppendUnit(const CParserUnit& unit);
    void AppendOrigin(const CParserUnit& unit);
    std::string SortedDefines() const;
    wxString RuleTarget() const;

    const PreprocessOptions& m_options;
    Diagnostics m_diagnostics;
    TrackingPreprocessor m_pp;
    CParser m_parser;
    CDir m_dir;
    std::vector<wxString> m_removeNames;
    std::vector<const wchar_t*> m_removeList;
    Dependencies m_dependencies;
    std::vector<const CParserBlock*> m_blocks;

    std::string m_text;
    const CParserFile* m_lastFile = nullptr;
    unsigned long m_lastLine = 0;
};

bool PreprocessRun::SetUp()
{
    m_pp.SetParser(&m_parser);
    if (!m_options.dir.empty())
        m_dir = CDir(FromSystemName(m_options.dir));
    if (!m_dir.Ok()) {
        m_diagnostics.Error(wxString::Format(wxS("Directory not found '%s'"), FromSystemName(m_options.dir)));
        return false;
    }
    m_parser.SetDir(m_dir);
    m_pp.SetTrim(!m_options.noTrim);
    m_pp.SetPartialMode(m_options.partial);
    if (m_options.keepEmptyLines)
        m_parser.KeepEmptyLines();
    for (const std::string& name : m_options.remove)
        m_removeNames.push_back(FromSystemName(name));
    for (const wxString& name : m_removeNames)
        m_removeList.push_back(name.wc_str());
    m_removeList.push_back(nullptr);
    if (!m_removeNames.empty())
        m_parser.SetRemoveDefines(m_removeList.data());
    AddDefines();
    return true;
}

void PreprocessRun::AddDefines()
{
    for (const auto& [isDefine, text] : m_options.defines) {
        wxString value;
        const wxString argument = FromSystemName(text);
        const wxString name = isDefine ? argument.BeforeFirst(wxS('='), &value) : argument;
        if (!isDefine) {
            m_pp.RemoveDefine(name);
            continue;
        }
        m_pp.AddDefine(name, argument.find(wxS('=')) == wxString::npos ? wxString(wxS("1")) : value, wxArrayString());
        wxString message;
        m_parser.GetLastErrorStr(&message);
        if (!message.empty())
            m_diagnostics.Warning(message);
        m_parser.ClearError();
    }
}

bool PreprocessRun::ReadText(const std::string& file, wxString& text)
{
    const bool isStandardInput = file == "-";
    const wxString name = isStandardInput ? wxString(StandardInputName) : FromSystemName(file);
    CFile source = isStandardInput ? CFile::StandardInput() : m_dir.OpenFile(name, wxFile::read);
    if (!source.IsOpened() && !isStandardInput) {
        m_diagnostics.Error(wxString::Format(wxS("File not found '%s' from '%s'"), name, m_dir.GetFullPath()));
        return false;
    }
    if (!source.IsOpened() || !source.Read(text, CFile::convDefault)) {
        m_diagnostics.Error(wxString::Format(wxS("File not readable '%s'"), name));
        return false;
    }
    if (!isStandardInput)
        NoteRead(name);
    return true;
}

void PreprocessRun::NoteRead(const wxString& path)
{
    const bool isRelative = !path.StartsWith(wxS("/"));
    wxString prefix = isRelative ? FromSystemName(m_options.dir) : wxString();
    if (!prefix.empty() && !prefix.EndsWith(wxS("/")))
        prefix += wxS("/");
    m_dependencies.Add(prefix + path);
    m_diagnostics.Progress(wxS("reading ") + prefix + path);
}

bool PreprocessRun::Preprocess(const std::string& file)
{
    wxString text;
    if (!ReadText(file, text))
        return false;
    const wxString name = file == "-" ? wxString(StandardInputName) : FromSystemName(file);
    if (m_parser.Parse(text, name, nullptr, true) != 0) {
        m_diagnostics.ReportFailure(m_parser);
        return false;
    }
    m_blocks.push_back(m_parser.GetLastBlock(0));
    return true;
}

/// Appends a unit's text, which inline script may have made several lines of.
void PreprocessRun::AppendUnit(const CParserUnit& unit)
{
    const std::string text = ToUtf8(unit.m_text) + '\n';
    for (size_t start = 0; start != text.size();) {
        const size_t next = text.find('\n', start) + 1;
        AppendOrigin(unit);
        m_text.append(text, start, next - start);
        start = next;
    }
}

void PreprocessRun::AppendOrigin(const CParserUnit& unit)
{
    if (m_options.origins)
        m_text += ToSystemName(unit.GetFileName()) + ":" + std::to_string(unit.m_line) + ":\t";
    if (m_options.lineMarkers && (unit.m_file.get() != m_lastFile || unit.m_line != m_lastLine + 1))
        m_text += "#line " + std::to_string(unit.m_line) + " \"" + ToSystemName(unit.GetFileName()) + "\"\n";
    m_lastFile = unit.m_file.get();
    m_lastLine = unit.m_line;
}

void PreprocessRun::AppendBlock(const CParserBlock& block)
{
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        if (const CParserUnit* const unit = block.GetUnit(slot))
            AppendUnit(*unit);
    }
}

std::string PreprocessRun::SortedDefines() const
{
    wxString defines;
    m_pp.GetDefines(defines);
    wxArrayString lines = wxSplit(defines, wxS('\n'), wxS('\0'));
    std::sort(lines.begin(), lines.end());
    std::string text;
    for (const wxString& line : lines) {
        if (!line.empty())
            text += ToUtf8(line) + "\n";
    }
    return text;
}

wxString PreprocessRun::RuleTarget() const
{
    if (!m_options.output.empty())
        return FromSystemName(m_options.output);
    const wxString file = m_options.files[0] == "-" ? wxString(wxS("stdin")) : FromSystemName(m_options.files[0]);
    const size_t dot = file.rfind(wxS('.'));
    const size_t slash = file.rfind(wxS('/'));
    const size_t nameStart = slash == wxString::npos ? 0 : slash + 1;
    const bool hasExtension = dot != wxString::npos && dot > nameStart;
    return file.substr(0, hasExtension ? dot : wxString::npos) + wxS(".out");
}

std::string PreprocessRun::Result()
{
    if (m_options.deps)
        return m_dependencies.MakeRule(RuleTarget());
    if (m_options.listDefines)
        return SortedDefines();
    for (const CParserBlock* block : m_blocks)
        AppendBlock(*block);
    return std::move(m_text);
}

int PreprocessRun::Run()
{
    if (!SetUp())
        return StatusFailure;
    for (const std::string& file : m_options.files) {
        if (!Preprocess(file))
            return StatusFailure;
    }
    // With --deps, -o names the rule's target and the rule itself goes to standard output.
    if (!m_options.depsFile.empty() &&
        !WriteOutput(m_options.depsFile, m_dependencies.MakeRule(RuleTarget()), m_diagnostics))
        return StatusFailure;
    if (!WriteOutput(m_options.deps ? std::string() : m_options.output, Result(), m_diagnostics))
        return StatusFailure;
    m_diagnostics.Flush();
    if (m_pp.WasPartial())
        m_diagnostics.Note(wxS("unresolved directives were kept"));
    return StatusSuccess;
}

std::string NonEmptyName(const std::string& text)
{
    return text.empty() || text[0] == '=' ? "a NAME is missing" : "";
}

/// An unset variable of a makefile must not send the result somewhere else.
std::string NonEmptyFile(const std::string& text)
{
    return text.empty() ? "a file name is missing" : "";
}

} // namespace

void AddPreprocessCommand(CLI::App& app, std::function<int()>& run)
{
    CLI::App* const command = app.add_subcommand("preprocess", "Preprocess texts and write the lines that are left");
    const auto options = std::make_shared<PreprocessOptions>();
    command->group("Commands");
    command->footer("Example:\n  qxp preprocess -D PLATFORM=linux -C templates -o config.h config.h.in");
    command->add_option("FILE", options->files, "Texts, preprocessed in turn; - is standard input")
        ->option_text("...")
        ->required();
    const CLI::Option* const define =
        command->add_option("-D,--define", "Add a define before the first file; 1 without VALUE")
            ->type_name("NAME[=VALUE]")
            ->allow_extra_args(false)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->check(NonEmptyName);
    const CLI::Option* const undef = command->add_option("-U,--undef", "Remove a define, in order with -D")
                                         ->type_name("NAME")
                                         ->allow_extra_args(false)
                                         ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                                         ->check(NonEmptyName);
    command->add_option("-C,--dir", options->dir, "Search directory of files and includes")
        ->type_name("DIR")
        ->check(NonEmptyFile);
    command->add_option("-o,--output", options->output, "Write the result there")
        ->type_name("FILE")
        ->check(NonEmptyFile);
    command->add_flag("--keep-empty-lines", options->keepEmptyLines, "Keep empty lines");
    command->add_flag("--no-trim", options->noTrim, "Keep blanks at both ends of lines, and lines left empty");
    command->add_flag("--partial", options->partial, "Keep what cannot be decided yet");
    command->add_option("--remove", options->remove, "Take the definitions of this name out of every text")
        ->option_text("NAME")
        ->allow_extra_args(false);
    CLI::Option* const origins =
        command->add_flag("--origins", options->origins, "Put FILE:LINE: and a tab before every line");
    CLI::Option* const markers = command->add_flag("--line-markers", options->lineMarkers, "Write #line markers");
    CLI::Option* const list =
        command->add_flag("--list-defines", options->listDefines, "Write the defines instead of the text");
    CLI::Option* const deps = command->add_flag("--deps", options->deps, "Write a make rule instead of the text");
    origins->excludes(markers);
    list->excludes(deps);
    command->add_option("--deps-file", options->depsFile, "Write a make rule there, beside the normal output")
        ->type_name("DEPFILE")
        ->check(NonEmptyFile);
    AddCommonOptions(*command, options->common);
    command->callback([command, options, define, undef, &run] {
        options->defines = InOrderGiven(*command, define, undef);
        run = [options] { return PreprocessRun(*options).Run(); };
    });
}
