#include "qxp/preprocess_command.h"

#include "qxp/command_line.h"
#include "qxp/command_preprocessor.h"
#include "qxp/diagnostics.h"
#include "qxp/output.h"
#include "qxp/parser_options.h"
#include "qxp/script_limits.h"
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
    ScriptLimits limits;
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

/// A text as a C string literal.
std::string Quoted(const std::string& text)
{
    std::string literal = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\')
            literal += '\\';
        literal += character;
    }
    return literal + '"';
}

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
    bool WriteResult(wxOutputStream& stream);
    bool WriteBlock(const CParserBlock& block, wxOutputStream& stream);
    void AppendSlot(const CParserBlock& block, unsigned int slot);
    void AppendOrigin(const CParserOrigin& origin);
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

    std::string m_text;                      ///< What has not been written yet.
    const CParserFile* m_lastFile = nullptr; ///< Of the last line that was written with its origin.
    std::string m_lastName;
    unsigned long m_lastLine = 0;
};

bool PreprocessRun::SetUp()
{
    if (!SetUpParser(m_options.parser, m_parser, m_diagnostics))
        return false;
    m_pp.SetTrim(!m_options.noTrim);
    m_pp.SetPartialMode(m_options.partial);
    SetLimits(m_options.limits, m_pp);
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
    CUtf8Text text;
    CDir dir = m_pp.GetDir();
    if (!ReadInput(file, dir, text, m_diagnostics))
        return false;
    const wxString name = InputName(file);
    if (file != "-")
        m_pp.NoteRead(name);
    if (m_parser.Parse(std::move(text), name, nullptr, true) != 0) {
        m_diagnostics.ReportFailure(m_parser);
        return false;
    }
    m_blocks.push_back(m_parser.GetLastBlock(0));
    return true;
}

/// Appends a slot's text, which inline script may have made several lines of.
void PreprocessRun::AppendSlot(const CParserBlock& block, unsigned int slot)
{
    const size_t begin = m_text.size();
    if (!block.AppendText(slot, m_text))
        return;
    m_text += '\n';
    if (!m_options.origins && !m_options.lineMarkers && !m_map)
        return;
    const CParserOrigin origin = block.GetOrigin(slot);
    const std::string text = m_text.substr(begin);
    m_text.resize(begin);
    for (size_t start = 0; start != text.size();) {
        const size_t next = text.find('\n', start) + 1;
        AppendOrigin(origin);
        m_text.append(text, start, next - start);
        start = next;
    }
}

void PreprocessRun::AppendOrigin(const CParserOrigin& origin)
{
    const CParserFile* const file = origin.file.get();
    const bool isOther = file != m_lastFile;
    if (isOther)
        m_lastName = file ? ToSystemName(file->GetName()) : std::string();
    const bool needsMarker = m_options.lineMarkers && (isOther || origin.line != m_lastLine + 1);
    if (m_map) {
        const CSourceLine source = origin.GetSource();
        if (needsMarker)
            m_map->AddLine(source);
        m_map->AddLine(source);
    }
    if (m_options.origins)
        m_text += m_lastName + ":" + std::to_string(origin.line) + ":\t";
    if (needsMarker)
        m_text += "#line " + std::to_string(origin.line) + " " + Quoted(m_lastName) + "\n";
    m_lastFile = file;
    m_lastLine = origin.line;
}

bool PreprocessRun::WriteBlock(const CParserBlock& block, wxOutputStream& stream)
{
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        AppendSlot(block, slot);
        if (!WritePiece(stream, m_text))
            return false;
    }
    return true;
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

bool PreprocessRun::WriteResult(wxOutputStream& stream)
{
    if (m_options.deps)
        m_text = Rule();
    else if (m_options.listDefines)
        m_text = SortedDefines();
    else if (!std::all_of(m_blocks.begin(), m_blocks.end(),
                          [&](const CParserBlock* block) { return WriteBlock(*block, stream); }))
        return false;
    return stream.WriteAll(m_text.data(), m_text.size());
}

bool PreprocessRun::WriteResults()
{
    std::vector<Output> outputs;
    if (!m_options.depsFile.empty())
        outputs.push_back({m_options.depsFile, TextWriter([this] { return Rule(); })});
    // With --deps, -o names the rule's target and the rule itself goes to standard output.
    outputs.push_back({m_options.deps ? std::string() : m_options.output,
                       [this](wxOutputStream& stream) { return WriteResult(stream); }});
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
    AddLimitOptions(*command, options->limits);
    AddCommonOptions(*command, options->common);
    command->callback([options, &run] {
        CheckOptions(*options);
        run = RunOf<PreprocessRun>(options);
    });
}
