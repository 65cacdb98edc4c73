#include "fuzz/fuzz_support.h"
#include "script/script.h"
#include "script/script_minimal.h"
#include "tests/support/lamp.h"

#include <wx/event.h>

namespace
{

constexpr long TimeLimit = 300; // ms
constexpr std::size_t MemoryLimit = 256 << 20;

void CheckErrors(CJScript& script)
{
    for (int i = 0; i < script.GetErrorCount(); ++i) {
        const CJScript::CJScriptError& error = *script.GetError(i);
        Require(!error.msg.empty(), "every error has a message");
        Require(error.line >= 0 && error.column >= 0, "every error has a place");
        Require(error.FullMsg().EndsWith(wxS(": ") + error.msg), "the full message ends with the message");
    }
}

void Run(const wxString& text, CountingLog& log)
{
    qxjsMinimal global;
    Lamp host;
    Lamp next(2);
    host.SetNext(&next);
    CJScript script(nullptr);
    script.SetTimeLimit(TimeLimit);
    script.SetMemoryLimit(MemoryLimit);
    Require(script.SetGlobal(global.GetJSLink(), wxS("Global")), "a context gets its global object");
    Require(script.CreateChild(host.GetJSLink(), global.GetJSLink(), wxS("host"), false, false), "and a child");

    const int reports = log.reports;
    wxString result;
    const bool done = script.Evaluate(text, nullptr, result);
    Require(done || log.reports > reports, "a failure is reported");
    Require(done || script.GetErrorCount() > 0 || log.lastReport.Contains(wxS("\n Call stack is:\n")),
            "a failure has an error, or a native that failed without one");
    Require(done || result.empty(), "a failure has no result");
    CheckErrors(script);

    wxThreadEvent event(Lamp::EventType);
    host.GetJSLink()->ProcessEvent(event);
    CheckErrors(script);
    JS_GC(script.GetContext());
}

/// The init script of an object in whatever state brings a new one to the same state.
void CheckInitScript(const Lamp& like)
{
    const wxString state = like.m_link.GetInitScript();
    qxjsMinimal global;
    Lamp fresh;
    CJScript script(nullptr);
    script.SetGlobal(global.GetJSLink(), wxS("Global"));
    script.CreateChild(fresh.GetJSLink(), global.GetJSLink(), wxS("fresh"), false, false);
    Require(script.Evaluate(state, fresh.GetJSLink()), "an init script can be evaluated");
    Require(fresh.GetJSLink()->GetInitScript() == state, "an init script brings the state along");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CountingLog& log = StartLibrary();
    const std::size_t scriptObjects = JS_CountHostObjects();
    const int alive = Lamp::ms_alive;
    const wxString text = InputText(data, size);
    Run(text, log);
    if (size % 8 == 0) {
        Lamp named;
        named.m_name = text;
        named.m_labels.Add(text);
        CheckInitScript(named);
    }
    Require(JS_CountHostObjects() == scriptObjects, "no script object outlives its context");
    Require(Lamp::ms_alive == alive, "no native object outlives its context");
    return 0;
}
