#include "qxp/script_prompt.h"

#include "qxp/script_log.h"
#include "vc_qxparser.h"

#include <editline/readline.h>
#include <unistd.h>
#include <wx/filename.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

namespace
{

constexpr const char* Prompt = "> ";
constexpr const char* ContinuationPrompt = "... ";
constexpr int HistoryLines = 1000;

/// Lines typed on a terminal, remembered from session to session.
class TerminalLines
{
public:
    TerminalLines() : m_file(HistoryFile())
    {
        rl_readline_name = const_cast<char*>("qxp");
        using_history();
        stifle_history(HistoryLines);
        read_history(m_file.c_str());
    }
    ~TerminalLines() { write_history(m_file.c_str()); }
    TerminalLines(const TerminalLines&) = delete;
    TerminalLines& operator=(const TerminalLines&) = delete;

    static bool Read(const char* prompt, std::string& line)
    {
        char* const typed = readline(prompt);
        if (!typed)
            return false;
        line = typed;
        std::free(typed);
        if (!line.empty())
            add_history(line.c_str());
        return true;
    }

private:
    static std::string HistoryFile()
    {
        const char* const state = std::getenv("XDG_STATE_HOME");
        const wxString folder =
            (state && *state ? FromSystemName(state) : wxFileName::GetHomeDir() + wxS("/.local/state")) + wxS("/qxp");
        wxFileName::Mkdir(folder, wxS_DIR_DEFAULT, wxPATH_MKDIR_FULL);
        return ToSystemName(folder + wxS("/history"));
    }

    std::string m_file;
};

bool ReadPlainLine(const char*, std::string& line)
{
    return static_cast<bool>(std::getline(std::cin, line));
}

/// Whether the text fails for nothing but its end.
bool IsIncomplete(CJScript& script)
{
    if (script.GetErrorCount() != 1)
        return false;
    const wxString& message = script.GetError(0)->msg;
    return message.EndsWith(wxS("got end of script")) || message.StartsWith(wxS("unterminated comment")) ||
           message == wxS("missing } in compound statement") ||
           message.EndsWith(wxS("not terminated before end of script")) || message.Contains(wxS("missing } after "));
}

void EvaluateAndPrint(CJScript& script, ScriptLog& log, wxString& pending)
{
    jsval value = JSVAL_VOID;
    log.HoldReports();
    const bool evaluated = script.EvaluateValue(pending, nullptr, value);
    const bool incomplete = !evaluated && IsIncomplete(script);
    const std::vector<wxString> reports = log.TakeReports();
    if (incomplete)
        return;
    for (const wxString& report : reports)
        log.WriteReport(report);
    if (evaluated && !JSVAL_IS_VOID(value))
        ScriptLog::WriteLine(stdout, script.JSValToString(value));
    std::fflush(stdout);
    pending.clear();
}

template <typename Read> void ReadAndEvaluate(CJScript& script, ScriptLog& log, Read read)
{
    wxString pending;
    std::string line;
    while (read(pending.empty() ? Prompt : ContinuationPrompt, line)) {
        // An empty line ends a text that is still incomplete.
        const bool giveUp = line.empty() && !pending.empty();
        pending += FromSystemName(line) + wxS("\n");
        if (line.empty() && !giveUp)
            pending.clear();
        if (pending.empty())
            continue;
        EvaluateAndPrint(script, log, pending);
        if (giveUp && !pending.empty()) {
            script.Evaluate(pending, nullptr);
            pending.clear();
        }
    }
    if (!pending.empty())
        script.Evaluate(pending, nullptr);
}

} // namespace

void RunPrompt(CJScript& script, ScriptLog& log)
{
    if (!isatty(STDIN_FILENO)) {
        ReadAndEvaluate(script, log, &ReadPlainLine);
        return;
    }
    const TerminalLines lines;
    ReadAndEvaluate(script, log, &TerminalLines::Read);
    std::puts("");
}
