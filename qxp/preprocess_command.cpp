#include "qxp/preprocess_command.h"

#include "qxp/command_line.h"
#include "qxp/command_preprocessor.h"
#include "qxp/diagnostics.h"
#include "qxp/output.h"
#include "qxp/parser_options.h"
#include "qxp/source_map.h"
#include "vc_qxparser.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace
{

struct PreprocessOptions
{
    CommonOptions common;
    ParserOptions parser;
    std::vector<std::string> files;
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
    std::string sourceMap;
};

class PreprocessRun
{
public:
    PreprocessRun(const PreprocessOptions& options, Diagnostics& diagnostics)
        : m_options(options), m_diagnostics(diagnostics), m_pp(options.parser.dir, diagnostics), m_parser(&m_pp)
    {
        if (!options.sourceMap.empty())
            m_map.emplace(options.parser.dir);
    }

    int Run();

private:
    bool SetUp();
    bool Preprocess(const std::string& file);
    bool WriteResults();
    std::string Result();
    void AppendBlock(const CParserBlock& block);
    void AppendUnit(const CParserUnit& unit);
    void AppendOrigin(const CParserUnit& unit);
    std::string SortedDefines() const;
    std::string Rule() { return m_pp.GetDependencies().MakeRule(m_options.output, m_options.files[0]); }

    const PreprocessOptions& m_options;
    Diagnostics& m_diagnostics;
    CommandPreprocessor m_pp;
    CParser m_parser;
    std::vector<wxString> m_removeNames;
    std::vector<const wchar_t*> m_removeList;
    std::vector<const CParserBlock*> m_blocks;
    std::optional<SourceMap> m_map;

    std::string m_text;
    const CParserFile* m_lastFile = nullptr;
    unsigned long m_lastLine = 0;
};

bool PreprocessRun::SetUp()
{
    if (!SetUpParser(m_options.parser, m_parser, m_diagnostics))
        return false;
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
    return true;
}

bool PreprocessRun::Preprocess(const std::string& file)
{
    wxString text;
    CDir dir = m_pp.GetDir();
    if (!ReadInput(file, dir, text, m_diagnostics))
        return false;
    const wxString name = InputName(file);
    if (file != "-")
        m_pp.NoteRead(name);
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
    const bool needsMarker =
        m_options.lineMarkers && (unit.m_file.get() != m_lastFile || unit.m_line != m_lastLine + 1);
    if (m_map) {
        const CSourceLine source = unit.GetSource();
        if (needsMarker)
            m_map->AddLine(source);
        m_map->AddLine(source);
    }
    if (m_options.origins)
        m_text += ToSystemName(unit.GetFileName()) + ":" + std::to_string(unit.m_line) + ":\t";
    if (needsMarker)
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

std::string PreprocessRun::Result()
{
    if (m_options.deps)
        return Rule();
    if (m_options.listDefines)
        return SortedDefines();
    for (const CParserBlock* block : m_blocks)
        AppendBlock(*block);
    return std::move(m_text);
}

bool PreprocessRun::WriteResults()
{
    std::vector<Output> outputs;
    if (!m_options.depsFile.empty())
        outputs.push_back({m_options.depsFile, TextWriter([this] { return Rule(); })});
    // With --deps, -o names the rule's target and the rule itself goes to standard output.
    outputs.push_back({m_options.deps ? std::string() : m_options.output, TextWriter([this] { return Result(); })});
    // The map is complete when the text has been written.
    if (m_map)
        outputs.push_back(
            {m_options.sourceMap, TextWriter([this] { return m_map->Text(m_options.output, m_options.sourceMap); })});
    return WriteOutputs(outputs, m_diagnostics);
}

int PreprocessRun::Run()
{
    if (!SetUp())
        return StatusFailure;
    for (const std::string& file : m_options.files) {
        if (!Preprocess(file))
            return StatusFailure;
    }
    if (!WriteResults())
        return StatusFailure;
    m_diagnostics.Flush();
    if (m_pp.WasPartial())
        m_diagnostics.Note(wxS("unresolved directives were kept"));
    return StatusSuccess;
}

/// What CLI11 cannot say about the options.
void CheckOptions(const PreprocessOptions& options)
{
    if (!options.sourceMap.empty() && (options.sourceMap == options.output || options.sourceMap == options.depsFile))
        throw CLI::ValidationError("--source-map", "another output goes to " + options.sourceMap);
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
    AddParserOptions(*command, options->parser);
    AddOutputOption(*command, options->output);
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
    AddDepsFileOption(*command, options->depsFile);
    command->add_option("--source-map", options->sourceMap, "Write there where each line comes from, for tools")
        ->type_name("FILE")
        ->check(NonEmptyFile)
        ->excludes(list)
        ->excludes(deps);
    AddCommonOptions(*command, options->common);
    command->callback([options, &run] {
        CheckOptions(*options);
        run = [options] {
            return RunWithDiagnostics(
                options->common, [&](Diagnostics& diagnostics) { return PreprocessRun(*options, diagnostics).Run(); });
        };
    });
}
