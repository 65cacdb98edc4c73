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
    void AppendBlock(const CTagBlock& block, size_t level);
    void AppendOptions(const CTagBlock& block, const std::string& indent);
    void AppendContent(const CTagBlock& block, const std::string& indent);

    const TagsOptions& m_options;
    Diagnostics& m_diagnostics;
    CommandPreprocessor m_pp;
    CTagParser& m_parser = NewParser(m_pp, m_options);
    std::string m_text;
};

bool TagsRun::Read()
{
    wxString text;
    if (!SetUpParser(m_options.parser, m_parser, m_diagnostics))
        return false;
    if (!m_options.preprocess)
        m_pp.Desactivate();
    CDir dir = m_pp.GetDir();
    if (!ReadInput(m_options.file, dir, text, m_diagnostics))
        return false;
    if (m_options.file != "-")
        m_pp.NoteRead(InputName(m_options.file));
    if (m_parser.Parse(text, InputName(m_options.file), nullptr, false) == 0 &&
        m_parser.ParseBlock(m_parser.GetLastBlock(0)) == 0)
        return true;
    m_diagnostics.ReportFailure(m_parser);
    return false;
}

/// The block's line of CTagBlock::GetHierarchy, what was asked for about it, and the same for its sub-blocks.
void TagsRun::AppendBlock(const CTagBlock& block, size_t level)
{
    const std::string indent(level, '\t');
    m_text += indent + ToUtf8(block.GetType()) + "=" + ToUtf8(block.GetName()) + "\n";
    if (m_options.options)
        AppendOptions(block, indent + "\t");
    if (m_options.content)
        AppendContent(block, indent + "\t");
    for (size_t i = 0; i < block.GetSubBlockCount(); ++i)
        AppendBlock(*block.GetSubBlock(i), level + 1);
}

void TagsRun::AppendOptions(const CTagBlock& block, const std::string& indent)
{
    std::map<std::string, std::string> sorted;
    CHashStringToString::const_iterator option;
    for (bool more = block.GetOption().First(option); more; more = block.GetOption().Next(option))
        sorted.emplace(ToUtf8(option->first), ToUtf8(option->second));
    for (const auto& [name, value] : sorted)
        m_text.append(indent).append("@").append(name).append("=").append(value).append("\n");
}

void TagsRun::AppendContent(const CTagBlock& block, const std::string& indent)
{
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        const CParserUnit* const unit = block.GetUnit(slot);
        if (!unit)
            continue;
        // Inline script may have made several lines of one.
        const std::string text = ToUtf8(unit->m_text) + "\n";
        for (size_t start = 0; start != text.size();) {
            const size_t next = text.find('\n', start) + 1;
            m_text.append(indent).append("|").append(text, start, next - start);
            start = next;
        }
    }
}

int TagsRun::Run()
{
    if (!Read())
        return StatusFailure;
    const auto& text = dynamic_cast<const CTagBlock&>(*m_parser.GetLastBlock(0));
    if (m_options.content)
        AppendContent(text, std::string());
    for (size_t i = 0; i < text.GetSubBlockCount(); ++i)
        AppendBlock(*text.GetSubBlock(i), 0);
    std::vector<Output> outputs;
    if (!m_options.depsFile.empty())
        outputs.push_back({m_options.depsFile, TextWriter([this] {
                               return m_pp.GetDependencies().MakeRule(m_options.output, m_options.file);
                           })});
    outputs.push_back({m_options.output, TextWriter([this] { return m_text; })});
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
