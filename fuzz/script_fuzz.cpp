#include "fuzz/fuzz_support.h"
#include "script/class_module.h"
#include "script/native_function.h"
#include "script/script.h"
#include "script/script_minimal.h"

#include <wx/event.h>

namespace
{

constexpr long TimeLimit = 300; // ms
constexpr std::size_t MemoryLimit = 256 << 20;
constexpr int EventType = 4242;

/// A native class with all that tables can describe.
class FuzzObject : public wxObject
{
public:
    FuzzObject() { Init(); }
    explicit FuzzObject(int level) : m_level(level) { Init(); }
    ~FuzzObject() override { --ms_alive; }

    int Add(int by) { return m_level = static_cast<int>(static_cast<unsigned int>(m_level) + by); }
    wxString Join(const wxString& text, const wxArrayString& texts) const { return text + wxJoin(texts, wxS(',')); }
    FuzzObject* GetNext() { return m_next; }
    /// Keeps no pointer, since script may own the object.
    bool IsSame(FuzzObject* other) { return other == this; }
    void Keep(JSFunction* function) { m_link.AddFunction(function); }
    void Drop(JSFunction* function) { m_link.RemoveFunction(function); }
    bool Fire()
    {
        wxThreadEvent event(EventType);
        return m_link.ProcessEvent(event);
    }
    wxString State() { return m_link.GetInitScript(); }
    wxArrayInt Twice(wxArrayInt numbers)
    {
        const wxArrayInt copy = numbers;
        for (const int number : copy)
            numbers.Add(number);
        return numbers;
    }

    CJScriptLink* GetJSLink() { return &m_link; }
    const JSMap* GetJSMap() const { return &m_JSMap; }

    int m_level = 1;
    double m_ratio = 1.5;
    wxString m_name = wxS("name");
    bool m_on = false;
    wxArrayInt m_steps;
    wxArrayString m_labels;
    FuzzObject* m_next = nullptr;
    qxjsMinimal m_inner;
    CJScriptLink m_link;

    static int ms_alive;
    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;

private:
    void Init()
    {
        ++ms_alive;
        m_link.Link(this, &ms_JSClass);
    }
};

int FuzzObject::ms_alive = 0;

JSMapEntry FuzzObject::m_JSMapEntries[] = {
    JSPrimaryConstructor<FuzzObject>(),
    JSConstructor<FuzzObject>(),
    JSConstructor<FuzzObject, int>(),
    JSField<FuzzObject>("level", &FuzzObject::m_level),
    JSField<FuzzObject>("ratio", &FuzzObject::m_ratio),
    JSField<FuzzObject>("name", &FuzzObject::m_name),
    JSField<FuzzObject>("on", &FuzzObject::m_on),
    JSField<FuzzObject>("steps", &FuzzObject::m_steps),
    JSField<FuzzObject>("labels", &FuzzObject::m_labels),
    JSObjectField<FuzzObject>("next", &FuzzObject::m_next, &FuzzObject::m_link),
    JSMapEntry("MAX", 100),
    JSMethod<&FuzzObject::Add>("Add"),
    JSMethod<&FuzzObject::Join>("Join"),
    JSMethod<&FuzzObject::GetNext>("GetNext"),
    JSMethod<&FuzzObject::IsSame>("IsSame"),
    JSMethod<&FuzzObject::Keep>("Keep"),
    JSMethod<&FuzzObject::Drop>("Drop"),
    JSMethod<&FuzzObject::Fire>("Fire"),
    JSMethod<&FuzzObject::State>("State"),
    JSMethod<&FuzzObject::Twice>("Twice"),
    JSMapEntry(EventType, "OnEvent"),
    JSMapEntry(),
};
const JSMap FuzzObject::m_JSMap{"FuzzObject", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass FuzzObject::ms_JSClass(&FuzzObject::m_JSMap);

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
    FuzzObject host;
    FuzzObject next(2);
    host.m_next = &next;
    CJScript script(nullptr);
    script.SetTimeLimit(TimeLimit);
    script.SetMemoryLimit(MemoryLimit);
    Require(script.SetGlobal(global.GetJSLink(), wxS("Global")), "a context gets its global object");
    Require(script.CreateChild(host.GetJSLink(), global.GetJSLink(), wxS("host"), false, false), "and a child");

    const int reports = log.reports;
    wxString result;
    const bool done = script.Evaluate(text, nullptr, result);
    Require(done || log.reports > reports, "a failure is reported");
    Require(done || result.empty(), "a failure has no result");
    CheckErrors(script);

    wxThreadEvent event(EventType);
    host.GetJSLink()->ProcessEvent(event);
    CheckErrors(script);
    JS_GC(script.GetContext());
}

/// The init script of an object in whatever state brings a new one to the same state.
void CheckInitScript(const FuzzObject& like)
{
    const wxString state = like.m_link.GetInitScript();
    qxjsMinimal global;
    FuzzObject fresh;
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
    CJScriptLinkClass::RegisterJSClass(&FuzzObject::ms_JSClass);
    const std::size_t scriptObjects = JS_CountHostObjects();
    const int alive = FuzzObject::ms_alive;
    const wxString text = InputText(data, size);
    Run(text, log);
    if (size % 8 == 0) {
        FuzzObject named;
        named.m_name = text;
        named.m_labels.Add(text);
        CheckInitScript(named);
    }
    Require(JS_CountHostObjects() == scriptObjects, "no script object outlives its context");
    Require(FuzzObject::ms_alive == alive, "no native object outlives its context");
    return 0;
}
