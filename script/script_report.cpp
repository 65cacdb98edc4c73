#include "script/log_detail.h"
#include "script/script.h"

namespace
{

constexpr wxLogLevel ScriptErrorLevel = 103;
constexpr int MostFramesShown = 10;

/// Names of the error types, by the flags of a report.
constexpr const wchar_t* TypeNames[] = {L"Error",       L"Internal Error",  L"Evaluation Error",
                                        L"Range Error", L"Reference Error", L"Syntax Error",
                                        L"Type Error",  L"URI Error",       L"Limit Error"};

/// Line `index`, counted from 0, of a text, without its line end; empty when the text has fewer lines.
wxString LineOf(const wxString& text, int index)
{
    if (index < 0)
        return wxString();
    size_t start = 0;
    for (; index > 0; --index) {
        const size_t lineEnd = text.find_first_of(L"\r\n", start);
        if (lineEnd == wxString::npos)
            return wxString();
        start = lineEnd + (text.compare(lineEnd, 2, wxS("\r\n")) == 0 ? 2 : 1);
    }
    const size_t lineEnd = text.find_first_of(L"\r\n", start);
    return text.substr(start, lineEnd == wxString::npos ? wxString::npos : lineEnd - start);
}

/// The source line an error stands on, with a mark under its column when that is inside the line.
wxString FormatSourceLine(const wxString& source, const CJScript::CJScriptError& error)
{
    const wxString line = LineOf(source, error.line);
    if (line.empty())
        return wxString();
    wxString text = line + wxS("\n");
    if (0 < error.column && error.column < static_cast<int>(line.length()))
        text << wxS(" ") << wxString(wxS(' '), error.column) << wxS("^\n");
    return text;
}

wxString FormatPlace(JSContext* cx, JSScript* code, jsbytecode* pc)
{
    const wxString file(JS_GetScriptFilename(cx, code), wxConvLibc);
    return wxString::Format(wxS("%s (%d)"), file, static_cast<int>(JS_PCToLineNumber(cx, code, pc)));
}

} // namespace

wxString CJScript::CJScriptError::FullMsg() const
{
    const bool isKnown = type >= 0 && static_cast<size_t>(type) < WXSIZEOF(TypeNames);
    return wxString::Format(wxS("%s: %s"), TypeNames[isKnown ? type : 0], msg);
}

void CJScript::MyJSErrorReporter(JSContext* cx, const char* message, JSErrorReport* report)
{
    CJScript* const script = FromContext(cx);
    if (!script)
        return;
    const wxCriticalSectionLocker reports(m_CriticalSection);
    script->m_reported = true;
    // A copy, or a handle that has adopted the context, gets the errors of its own operations.
    CJScript* const runner = script->m_runner ? script->m_runner : script;
    runner->ReportError(report->widemessage ? wxString(report->widemessage) : wxString::FromAscii(message), report);
}

void CJScript::NoteRejection(JSContext* cx, const wchar_t* message)
{
    if (CJScript* const script = FromContext(cx))
        script->m_rejections.push_back(message);
}

JSTrapStatus CJScript::MyJSTrapHandler(JSContext* cx, JSScript*, jsbytecode*, jsval*, void*)
{
    CJScript* const script = FromContext(cx);
    return script ? script->TrapHandler() : JSTRAP_CONTINUE;
}

JSTrapStatus CJScript::TrapHandler()
{
    // Waits for a report in progress on another thread; exceptions travel on unchanged.
    const wxCriticalSectionLocker reports(m_CriticalSection);
    return JSTRAP_CONTINUE;
}

void CJScript::ReportError(const wxString& message, JSErrorReport* report)
{
    if (m_hideError)
        return;
    CJScriptError error;
    error.line = static_cast<int>(report->lineno);
    error.column = static_cast<int>(report->widelinebuf ? report->widetokenoffset
                                                        : static_cast<size_t>(report->tokenptr - report->linebuf));
    error.type = static_cast<int>(report->flags);
    error.msg = message;
    if (error.msg.empty() && report->ucmessage) {
        const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
        if (JSString* const text = JS_InternUCString(m_context, report->ucmessage))
            JS_StringToWide(m_context, text, error.msg);
    }
    if (error.msg.empty())
        error.msg = wxS("Unknown error");
    m_errors.push_back(error);
}

/// An error inside a running script waits as its exception. Reporting it here takes it from that script.
void CJScript::RecordPendingException()
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    jsval exception = JSVAL_VOID;
    if (!m_context || !JS_GetPendingException(m_context, &exception))
        return;
    if (JSErrorReport* const report = JS_ErrorFromException(m_context, exception))
        ReportError(wxString(), report);
    JS_ClearPendingException(m_context);
}

void CJScript::CommonReportError(CJScriptLink* WXUNUSED(link), const wxString& source, JSFunction* fn, wxString* out)
{
    if (m_errors.empty())
        RecordPendingException();
    wxString report;
    int line = 0;
    wxString file;
    if (m_errors.empty() && GetCurrentLineInfo(&line, &file))
        report << wxString::Format(wxS("%s (%d): \n"), file, line);
    else if (m_errors.empty())
        report << source.BeforeFirst(wxS('\n')) << wxS("\n");
    for (const CJScriptError& error : m_errors) {
        if (!fn)
            report << FormatSourceLine(source, error);
        report << wxS("==> ") << error.msg << wxS("\n");
    }
    if (m_callStack.empty() && m_errors.empty())
        m_callStack = m_silentFailure;
    m_silentFailure.clear();
    if (!m_callStack.empty()) {
        report << wxS(" Call stack is:\n") << m_callStack;
        m_callStack.clear();
    }
    if (out)
        *out = report;
    LogWhole(ScriptErrorLevel, wxS("CJScript ") + report);
}

void CJScript::NoteSilentFailure(JSContext* cx, const wxString& what)
{
    CJScript* const attached = FromContext(cx);
    CJScript* const script = attached && attached->m_runner ? attached->m_runner : attached;
    if (!script || !script->m_silentFailure.empty())
        return;
    wxString places;
    JSStackFrame* frame = nullptr;
    for (int shown = 0; shown < MostFramesShown && JS_FrameIterator(cx, &frame); ++shown) {
        JSScript* const code = JS_GetFrameScript(cx, frame);
        if (jsbytecode* const pc = code ? JS_GetFramePC(cx, frame) : nullptr)
            places << FormatPlace(cx, code, pc) << wxS("\n");
    }
    if (!places.empty())
        script->m_silentFailure = what + wxS("\n") + places;
}

bool CJScript::GetCurrentLineInfo(int* line, wxString* file)
{
    if (!m_context)
        return false;
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    JSStackFrame* frame = nullptr;
    while (JS_FrameIterator(m_context, &frame)) {
        JSScript* const script = JS_GetFrameScript(m_context, frame);
        jsbytecode* const pc = script ? JS_GetFramePC(m_context, frame) : nullptr;
        if (!pc)
            continue;
        *file = wxString(JS_GetScriptFilename(m_context, script), wxConvLibc);
        *line = static_cast<int>(JS_PCToLineNumber(m_context, script, pc));
        return true;
    }
    return false;
}
