#include "qxp/expand_command.h"

#include "qxp/command_line.h"
#include "qxp/command_preprocessor.h"
#include "qxp/diagnostics.h"
#include "qxp/output.h"
#include "qxp/parser_options.h"
#include "qxp/script_limits.h"
#include "qxp/xml_input.h"
#include "vc_qxparser.h"

#include <memory>
#include <string>
#include <vector>

namespace
{

struct ExpandOptions
{
    CommonOptions common;
    ParserOptions parser;
    ScriptLimits limits;
    std::string templateFile;
    std::string xmlFile;
    std::string output;
    std::string depsFile;
    std::string begin = "<%";
    std::string end = "%>";
    std::vector<std::string> texts; ///< Given with -e.
    bool preprocess = false;
    bool compact = false;
};

/// A run's document, with the script context that it gets when the first script needs one.
class ScriptedDocument
{
public:
    explicit ScriptedDocument(const ScriptLimits& limits) : m_limits(limits) {}

    CXmlDocument& Document() { return m_document; }
    CJScript* Start();

private:
    const ScriptLimits& m_limits;
    qxjsMinimal m_global;
    std::unique_ptr<CJScript> m_script;
    CXmlDocument m_document;
};

CJScript* ScriptedDocument::Start()
{
    if (!m_script) {
        m_script = std::make_unique<CJScript>(nullptr);
        SetLimits(m_limits, *m_script);
        m_script->SetGlobal(m_global.GetJSLink(), wxS("Global"));
        m_document.SetScript(m_script.get(), wxS("Document"), m_global.GetJSLink());
    }
    return m_script.get();
}

class Template : public CCondTagParser
{
public:
    Template(const ExpandOptions& options, CPreprocessor& pp, ScriptedDocument& document)
        : CCondTagParser(&pp, FromSystemName(options.begin).wc_str(), FromSystemName(options.end).wc_str()),
          m_document(document)
    {
        SetCompact(options.compact);
    }

protected:
    CJScript* ProvideScript() override { return m_document.Start(); }

private:
    ScriptedDocument& m_document;
};

/// The line in which a block opens; null when it has none.
const CParserUnit* OpeningLine(const CTagBlock* block)
{
    const CTagHeaderBlock* const header = block ? block->GetBeginHeader() : nullptr;
    return header && header->GetCount() > 0 ? header->GetUnit(0) : nullptr;
}

/// The directory of the document: the search directory or, when it is not there, the current one.
std::string DirectoryOf(const std::string& file, const std::string& searchDirectory)
{
    CDir dir(FromSystemName(searchDirectory));
    return dir.OpenFile(FromSystemName(file), wxFile::read).IsOpened() ? searchDirectory : std::string();
}

class ExpandRun
{
public:
    ExpandRun(const ExpandOptions& options, Diagnostics& diagnostics)
        : m_options(options), m_diagnostics(diagnostics), m_pp(options.parser.dir, diagnostics),
          m_document(options.limits), m_template(options, m_pp, m_document)
    {
        m_diagnostics.SetWhere([this] { return OpeningLine(m_template.GetCurrentBlock()); });
    }

    ~ExpandRun() { m_diagnostics.SetWhere(nullptr); }

    int Run();

private:
    bool ReadTemplate();
    bool ReadModel();
    bool RunTexts();
    bool Expand(wxString& text);
    bool WriteResults(const wxString& text);

    const ExpandOptions& m_options;
    Diagnostics& m_diagnostics;
    CommandPreprocessor m_pp;
    ScriptedDocument m_document;
    Template m_template;
};

bool ExpandRun::ReadTemplate()
{
    if (!SetUpParser(m_options.parser, m_template, m_diagnostics))
        return false;
    if (!m_options.preprocess)
        m_pp.Desactivate();
    wxString text;
    CDir dir = m_pp.GetDir();
    if (!ReadInput(m_options.templateFile, dir, text, m_diagnostics))
        return false;
    if (m_options.templateFile != "-")
        m_pp.NoteRead(InputName(m_options.templateFile));
    if (m_template.Parse(text, InputName(m_options.templateFile), nullptr, false) == 0 &&
        m_template.ParseBlock(m_template.GetLastBlock(0)) == 0)
        return true;
    m_diagnostics.ReportFailure(m_template);
    return false;
}

bool ExpandRun::ReadModel()
{
    const std::string directory = DirectoryOf(m_options.xmlFile, m_options.parser.dir);
    if (!ReadDocument(m_options.xmlFile, directory, m_document.Document(), m_diagnostics))
        return false;
    if (m_options.xmlFile != "-")
        m_pp.GetDependencies().Add(NameFrom(directory, InputName(m_options.xmlFile)));
    return true;
}

bool ExpandRun::RunTexts()
{
    for (const std::string& text : m_options.texts) {
        const wxString script = FromSystemName(text);
        if (m_document.Start()->Evaluate(script, nullptr))
            continue;
        m_template.SetError(wxString::Format(wxS("Can not evaluate script: %s"), script), nullptr);
        m_diagnostics.ReportFailure(m_template);
        return false;
    }
    return true;
}

bool ExpandRun::Expand(wxString& text)
{
    CXmlNode* const root = m_document.Document().GetRawRoot();
    // What -e has run may have changed what scripts find.
    CJScript* const script = m_options.texts.empty() ? nullptr : m_document.Start();
    if (m_template.Process(root ? root : m_document.Document().GetEmptyNode(), text, script))
        return true;
    m_diagnostics.ReportFailure(m_template);
    return false;
}

bool ExpandRun::WriteResults(const wxString& text)
{
    std::vector<Output> outputs;
    if (!m_options.depsFile.empty())
        outputs.push_back({m_options.depsFile, TextWriter([this] {
                               return m_pp.GetDependencies().MakeRule(m_options.output, m_options.templateFile);
                           })});
    outputs.push_back({m_options.output, TextWriter([&text] { return ToUtf8(text); })});
    return WriteOutputs(outputs, m_diagnostics);
}

int ExpandRun::Run()
{
    wxString text;
    if (!ReadTemplate() || !ReadModel() || !RunTexts() || !Expand(text) || !WriteResults(text))
        return StatusFailure;
    m_diagnostics.Flush();
    return StatusSuccess;
}

} // namespace

void AddExpandCommand(CLI::App& app, std::function<int()>& run)
{
    CLI::App* const command = app.add_subcommand("expand", "Expand a template against an XML document");
    const auto options = std::make_shared<ExpandOptions>();
    command->group("Commands");
    command->footer("Example:\n  qxp expand --compact enums.tpl model.xml -o enums.cpp");
    command->add_option("TEMPLATE", options->templateFile, "The template; - is standard input")
        ->option_text(" ")
        ->required();
    command->add_option("XML", options->xmlFile, "The document; - is standard input")->option_text(" ")->required();
    AddTagOptions(*command, options->begin, options->end);
    command->add_flag("--preprocess", options->preprocess, "Preprocess the template first; -D and -U count only then");
    AddParserOptions(*command, options->parser);
    command->add_flag("--compact", options->compact, "Leave out the empty line that ends each text");
    command->add_option("-e,--eval", options->texts, "Run a script before, in the global object (repeatable)")
        ->type_name("SCRIPT")
        ->allow_extra_args(false);
    AddLimitOptions(*command, options->limits);
    AddOutputOption(*command, options->output);
    AddDepsFileOption(*command, options->depsFile);
    AddCommonOptions(*command, options->common);
    command->callback([options, &run] { run = RunOf<ExpandRun>(options); });
}
