#include "qxp/script_command.h"

#include "qxp/command_line.h"
#include "qxp/diagnostics.h"
#include "qxp/parser_options.h"
#include "qxp/script_limits.h"
#include "qxp/script_log.h"
#include "qxp/script_prompt.h"
#include "vc_qxparser.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace
{

struct ScriptOptions
{
    CommonOptions common;
    std::vector<std::string> texts; ///< Given with -e.
    std::vector<std::string> roots;
    std::string config; ///< The file of a configuration store; empty for none.
    bool interactive = false;
    ScriptLimits limits;
    bool hasFile = false;
    std::string file;
    std::vector<std::string> arguments;
};

/// The name that all texts have for the engine.
constexpr const char* EvaluatedText = "local";

/// The context of a run. It knows of its first error whether that stands in a text as it was given: what a script has
/// made a text of and evaluated counts lines of its own.
class RunScript : public CJScript
{
public:
    RunScript() : CJScript(nullptr) {}

    bool IsFirstErrorInText() const { return GetErrorCount() > 0 && m_isFirstErrorInText; }

protected:
    void ReportError(const wxString& message, JSErrorReport* report) override
    {
        if (GetErrorCount() == 0)
            m_isFirstErrorInText = report->filename && std::strcmp(report->filename, EvaluatedText) == 0;
        CJScript::ReportError(message, report);
    }

private:
    bool m_isFirstErrorInText = false;
};

class ScriptRun
{
public:
    ScriptRun(const ScriptOptions& options, Diagnostics& diagnostics)
        : m_options(options), m_diagnostics(diagnostics), m_log(diagnostics)
    {
        m_log.SetPlaceOf([this](const wxString& report) { return PlaceOf(report); });
    }

    int Run();

private:
    bool SetUp();
    void DefineArguments();
    void LoadConfig();
    bool RunTexts();
    bool RunFile();
    bool ReadText(wxString& text);
    std::optional<DiagnosticPlace> PlaceOf(const wxString& report);
    bool FlushOutput();

    const ScriptOptions& m_options;
    Diagnostics& m_diagnostics;
    ScriptLog m_log;
    qxjsMinimal m_global;
    RunScript m_script;
    wxString m_text; ///< Of the file.
    std::unique_ptr<CXmlConfig> m_config;
};

bool ScriptRun::SetUp()
{
    SetLimits(m_options.limits, m_script);
    if (!m_script.SetGlobal(m_global.GetJSLink(), wxS("Global"))) {
        wxLogError(wxS("qxp: error: The script engine can not be started"));
        return false;
    }
    DefineArguments();
    if (!m_options.config.empty())
        LoadConfig();
    return true;
}

void ScriptRun::LoadConfig()
{
    const wxString path = FromSystemName(m_options.config);
    const wxString directory = path.Contains(wxS('/')) ? path.BeforeLast(wxS('/')) + wxS('/') : wxString();
    m_config = std::make_unique<CXmlConfig>(&m_script, wxS("Config"), m_global.GetJSLink(), CDir(directory),
                                            path.AfterLast(wxS('/')), true);
    m_config->LoadFile();
}

void ScriptRun::DefineArguments()
{
    wxArrayString arguments;
    for (const std::string& argument : m_options.arguments)
        arguments.Add(FromSystemName(argument));
    JSContext* const cx = m_script.GetContext();
    JS_DefineWideProperty(cx, m_global.GetJSLink()->GetJSObject(), L"arguments", 9,
                          wxArrayString_to_jsval(cx, arguments), nullptr, nullptr, JSPROP_ENUMERATE);
}

bool ScriptRun::RunTexts()
{
    jsval value = JSVAL_VOID;
    for (const std::string& text : m_options.texts) {
        if (!m_script.EvaluateValue(FromSystemName(text), nullptr, value))
            return false;
    }
    if (!JSVAL_IS_VOID(value))
        ScriptLog::WriteLine(stdout, m_script.JSValToString(value));
    return true;
}

bool ScriptRun::ReadText(wxString& text)
{
    const wxString name = FromSystemName(m_options.file);
    CFile file = m_options.file == "-" ? CFile::StandardInput() : CDir().OpenFile(name, wxFile::read);
    if (file.IsOpened() && file.Read(text, CFile::convDefault))
        return true;
    m_diagnostics.Error(
        wxString::Format(wxS("%s '%s'"), file.IsOpened() ? wxS("File not readable") : wxS("File not found"), name));
    return false;
}

bool ScriptRun::RunFile()
{
    if (!ReadText(m_text))
        return false;
    // An interpreter line is a comment.
    if (m_text.StartsWith(wxS("#!")))
        m_text.replace(0, 2, wxS("//"));
    return m_script.Evaluate(m_text, nullptr);
}

/// The place in the file of what a report is about. A report that shows another line than the file has there is about a
/// text of the prompt; one that shows none is about a function, which is the file's.
std::optional<DiagnosticPlace> ScriptRun::PlaceOf(const wxString& report)
{
    if (!m_script.IsFirstErrorInText())
        return std::nullopt;
    const CJScript::CJScriptError& error = *m_script.GetError(0);
    const wxArrayString lines = wxSplit(m_text, wxS('\n'), wxS('\0'));
    const auto index = static_cast<size_t>(error.line);
    if (error.line < 0 || index >= lines.GetCount())
        return std::nullopt;
    const std::optional<wxString> shown = ShownLine(report);
    if (shown && *shown != lines[index].BeforeFirst(wxS('\r')))
        return std::nullopt;
    const wxString name = InputName(m_options.file);
    const auto column = static_cast<unsigned long>(error.column > 0 ? error.column + 1 : 0);
    return DiagnosticPlace{name, index + 1, name, index + 1, column};
}

/// Whether all that was printed has arrived; reports it when not.
bool ScriptRun::FlushOutput()
{
    const bool flushed = std::fflush(stdout) == 0;
    if (flushed && !std::ferror(stdout))
        return true;
    const wxString reason = flushed ? wxString() : wxS(": ") + wxString::FromUTF8(std::strerror(errno));
    m_diagnostics.Error(wxS("Standard output not writable") + reason);
    return false;
}

int ScriptRun::Run()
{
    if (!SetUp())
        return StatusFailure;
    bool done = m_options.texts.empty() || RunTexts();
    if (done && m_options.hasFile)
        done = RunFile();
    if (done && m_options.interactive)
        RunPrompt(m_script, m_log);
    return FlushOutput() && done ? StatusSuccess : StatusFailure;
}

/// Binds NAME=DIR; a text for CLI11 when that cannot be.
std::string BindRoot(const std::string& text)
{
    wxString directory;
    const wxString name = FromSystemName(text).BeforeFirst(wxS('='), &directory);
    return !directory.empty() && CDir::SetRoot(name, directory) ? "" : "NAME=DIR expected: " + text;
}

/// A text for CLI11 when it is no name of a file.
std::string CheckFileName(const std::string& text)
{
    return text.empty() || text.back() == '/' ? "FILE expected: " + text : "";
}

/// What is no option begins with the file; behind that, options are the script's own.
void TakeFileAndArguments(ScriptOptions& options, std::vector<std::string> rest)
{
    const bool onlyTexts = !options.texts.empty();
    if (!rest.empty() && !onlyTexts) {
        options.hasFile = true;
        options.file = rest.front();
        rest.erase(rest.begin());
    }
    options.arguments = std::move(rest);
    if (options.hasFile || onlyTexts || options.interactive)
        return;
    options.interactive = isatty(STDIN_FILENO);
    options.hasFile = !options.interactive;
    options.file = "-";
}

} // namespace

const CLI::App& AddScriptCommand(CLI::App& app, std::function<int()>& run, const std::vector<std::string>& arguments)
{
    CLI::App* const command = app.add_subcommand("script", "Run a script");
    const auto options = std::make_shared<ScriptOptions>();
    command->group("Commands");
    // Shown only: what they are is taken out of the command line before it is parsed, for behind FILE options are ARGs.
    command->add_option("FILE", "The script; - is standard input, which is also the default");
    command->add_option("ARG", "What the script sees as the array `arguments`")->option_text("...");
    command->footer("Example:\n  qxp script -e 'FormatString(\"%1 %2\", \"Hello\", StrToUpper(\"world\"))'");
    command
        ->add_option("-e,--eval", options->texts, "Run TEXT instead of a file (repeatable) and write the last result")
        ->type_name("TEXT")
        ->allow_extra_args(false);
    command->add_flag("-i,--interactive", options->interactive, "Read, evaluate, print; the default on a terminal");
    command->add_option("--config", options->config, "Load a configuration store, the object Config")
        ->type_name("FILE")
        ->check(CheckFileName);
    command->add_option("--root", options->roots, "Bind a named root directory (repeatable)")
        ->type_name("NAME=DIR")
        ->allow_extra_args(false)
        ->check(BindRoot);
    AddLimitOptions(*command, options->limits);
    AddCommonOptions(*command, options->common);
    command->callback([options, &run, &arguments] {
        TakeFileAndArguments(*options, arguments);
        run = RunOf<ScriptRun>(options);
    });
    return *command;
}
