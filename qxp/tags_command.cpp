#include "qxp/tags_command.h"

#include "qxp/command_line.h"
#include "qxp/command_preprocessor.h"
#include "qxp/diagnostics.h"
#include "qxp/output.h"
#include "qxp/parser_options.h"
#include "vc_qxparser.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

struct TagsOptions
{
    CommonOptions common;
    ParserOptions parser;
    std::string file;
    std::string output;
    std::string depsFile;
    std::string begin = "<";
    std::string end = ">";
    bool preprocess = false;
    bool options = false;
    bool content = false;
};

/// A parser that is never destroyed: to take a large tree apart takes a fifth of a run, and the process ends anyway.
CTagParser& NewParser(CPreprocessor& preprocessor, const TagsOptions& options)
{
    const wxString begin = FromSystemName(options.begin);
    const wxString end = FromSystemName(options.end);
    static auto* const parser = new CTagParser(&preprocessor, begin.wc_str(), end.wc_str());
    return *parser;
}

class TagsRun
{
public:
    TagsRun(const TagsOptions& options, Diagnostics& diagnostics)
        : m_options(options), m_diagnostics(diagnostics), m_pp(options.parser.dir, diagnostics)
    {}

    int Run();

private:
    bool Read();
    bool WriteResult(wxOutputStream& stream);
    bool WriteBlock(const CTagBlock& block, size_t level, wxOutputStream& stream);
    void AppendOptions(const CTagBlock& block, size_t level);
    bool WriteContent(const CTagBlock& block, size_t level, wxOutputStream& stream);
    void MarkLines(size_t start, size_t begin);

    const TagsOptions& m_options;
    Diagnostics& m_diagnostics;
    CommandPreprocessor m_pp;
    CTagParser& m_parser = NewParser(m_pp, m_options);
    std::string m_text; ///< What has not been written yet.
};

bool TagsRun::Read()
{
    CUtf8Text text;
    if (!SetUpParser(m_options.parser, m_parser, m_diagnostics))
        return false;
    if (!m_options.preprocess)
        m_pp.Desactivate();
    CDir dir = m_pp.GetDir();
    if (!ReadInput(m_options.file, dir, text, m_diagnostics))
        return false;
    if (m_options.file != "-")
        m_pp.NoteRead(InputName(m_options.file));
    if (m_parser.Parse(std::move(text), InputName(m_options.file), nullptr, false) == 0 &&
        m_parser.ParseBlock(m_parser.GetLastBlock(0)) == 0)
        return true;
    m_diagnostics.ReportFailure(m_parser);
    return false;
}

/// The block's line of CTagBlock::GetHierarchy, what was asked for about it, and the same for its sub-blocks.
bool TagsRun::WriteBlock(const CTagBlock& block, size_t level, wxOutputStream& stream)
{
    m_text.append(level, '\t').append(ToUtf8(block.GetType())).append(1, '=').append(ToUtf8(block.GetName()));
    m_text += '\n';
    if (m_options.options)
        AppendOptions(block, level + 1);
    if (m_options.content && !WriteContent(block, level + 1, stream))
        return false;
    for (size_t i = 0; i < block.GetSubBlockCount(); ++i) {
        if (!WriteBlock(*block.GetSubBlock(i), level + 1, stream))
            return false;
    }
    return WritePiece(stream, m_text);
}

void TagsRun::AppendOptions(const CTagBlock& block, size_t level)
{
    std::map<std::string, std::string> sorted;
    CHashStringToString::const_iterator option;
    for (bool more = block.GetOption().First(option); more; more = block.GetOption().Next(option))
        sorted.emplace(ToUtf8(option->first), ToUtf8(option->second));
    for (const auto& [name, value] : sorted)
        m_text.append(level, '\t').append(1, '@').append(name).append(1, '=').append(value).append(1, '\n');
}

bool TagsRun::WriteContent(const CTagBlock& block, size_t level, wxOutputStream& stream)
{
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        const size_t start = m_text.size();
        m_text.append(level, '\t').append(1, '|');
        const size_t begin = m_text.size();
        if (!block.AppendText(slot, m_text)) {
            m_text.resize(start);
            continue;
        }
        m_text += '\n';
        if (m_text.find('\n', begin) + 1 != m_text.size())
            MarkLines(start, begin);
        if (!WritePiece(stream, m_text))
            return false;
    }
    return true;
}

/// Inline script may have made several lines of one: puts what stands from `start` to `begin` before each of them.
void TagsRun::MarkLines(size_t start, size_t begin)
{
    const std::string mark = m_text.substr(start, begin - start);
    const std::string text = m_text.substr(begin);
    m_text.resize(start);
    for (size_t at = 0; at != text.size();) {
        const size_t next = text.find('\n', at) + 1;
        m_text.append(mark).append(text, at, next - at);
        at = next;
    }
}

bool TagsRun::WriteResult(wxOutputStream& stream)
{
    const auto& text = dynamic_cast<const CTagBlock&>(*m_parser.GetLastBlock(0));
    if (!m_options.content && !m_options.options)
        return text.WriteHierarchies(stream);
    if (m_options.content && !WriteContent(text, 0, stream))
        return false;
    for (size_t i = 0; i < text.GetSubBlockCount(); ++i) {
        if (!WriteBlock(*text.GetSubBlock(i), 0, stream))
            return false;
    }
    return stream.WriteAll(m_text.data(), m_text.size());
}

int TagsRun::Run()
{
    if (!Read())
        return StatusFailure;
    std::vector<Output> outputs;
    if (!m_options.depsFile.empty())
        outputs.push_back({m_options.depsFile, TextWriter([this] {
                               return m_pp.GetDependencies().MakeRule(m_options.output, m_options.file);
                           })});
    outputs.push_back({m_options.output, [this](wxOutputStream& stream) { return WriteResult(stream); }});
    if (!WriteOutputs(outputs, m_diagnostics))
        return StatusFailure;
    m_diagnostics.Flush();
    return StatusSuccess;
}

} // namespace

void AddTagsCommand(CLI::App& app, std::function<int()>& run)
{
    CLI::App* const command = app.add_subcommand("tags", "Read the tag blocks of a text and write their hierarchy");
    const auto options = std::make_shared<TagsOptions>();
    command->group("Commands");
    command->footer("Example:\n  qxp tags --options --content page.txt");
    command->add_option("FILE", options->file, "The text; - is standard input")->option_text(" ")->required();
    AddTagOptions(*command, options->begin, options->end);
    command->add_flag("--preprocess", options->preprocess, "Preprocess the text first; -D and -U count only then");
    AddParserOptions(*command, options->parser);
    command->add_flag("--options", options->options, "Write the options of every block, as @NAME=VALUE");
    command->add_flag("--content", options->content, "Write the content of every block, each line behind |");
    AddOutputOption(*command, options->output);
    AddDepsFileOption(*command, options->depsFile);
    AddCommonOptions(*command, options->common);
    command->callback([options, &run] { run = RunOf<TagsRun>(options); });
}
