#include "script/script.h"

#include "script/script_class.h"
#include "script/script_link.h"
#include "script/value_conversion.h"

#include <wx/log.h>
#include <wx/weakref.h>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

wxIMPLEMENT_CLASS(CJScript, wxObject);

wxThreadCriticalSection CJScript::m_ThreadCriticalSection;
wxCriticalSection CJScript::m_CriticalSection;

namespace
{

constexpr std::uint32_t BytesBeforeCollection = 16777216;
constexpr std::size_t StackChunkBytes = 8192;
constexpr wxLogLevel NoticeLevel = 102;

/// Every object there is, copies too. Guarded by the engine lock; never destroyed, since static objects may outlive it.
std::vector<CJScript*>& Handles()
{
    static auto& handles = *new std::vector<CJScript*>;
    return handles;
}

} // namespace

CJScript::CJScript(JSContext* cx) : m_context(cx), m_ownsContext(cx == nullptr)
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    Handles().push_back(this);
    if (m_ownsContext) {
        m_runtime = JS_Init(BytesBeforeCollection);
        m_context = JS_NewContext(m_runtime, StackChunkBytes);
    }
    if (m_context)
        Attach();
}

CJScript::CJScript(const CJScript& other)
    : wxObject(other), m_context(other.m_context), m_global(other.m_global), m_hideError(other.m_hideError),
      m_errors(other.m_errors), m_callStack(other.m_callStack), m_silentFailure(other.m_silentFailure),
      m_ownsContext(false), m_thread(other.m_thread)
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    Handles().push_back(this);
}

CJScript& CJScript::operator=(const CJScript& other)
{
    if (this == &other)
        return *this;
    wxObject::operator=(other);
    if (m_context != other.m_context) {
        CleanAll();
        if (m_runtime)
            JS_Finish(m_runtime);
        m_runtime = nullptr;
        m_ownsContext = false;
        m_context = other.m_context;
        m_thread = other.m_thread;
    }
    if (!m_ownsGlobal)
        m_global = other.m_global;
    m_hideError = other.m_hideError;
    m_errors = other.m_errors;
    m_callStack = other.m_callStack;
    m_silentFailure = other.m_silentFailure;
    return *this;
}

CJScript::~CJScript()
{
    CleanAll();
    if (m_runtime)
        JS_Finish(m_runtime);
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    Handles().erase(std::find(Handles().begin(), Handles().end(), this));
    if (Handles().empty())
        JS_ShutDown();
}

void CJScript::Attach()
{
    const wxCriticalSectionLocker reports(m_CriticalSection);
    m_previousPrivate = JS_GetContextPrivate(m_context);
    JS_SetContextPrivate(m_context, this);
    JS_SetErrorReporter(m_context, &CJScript::MyJSErrorReporter);
    JS_SetRejectionHook(m_context, &CJScript::NoteRejection);
    JS_SetSurvivorHook(m_context, &CJScriptLinkClass::CutFromEndedContext);
    JSRuntime* const runtime = m_runtime ? m_runtime : JS_GetRuntime(m_context);
    if (runtime)
        JS_SetThrowHook(runtime, &CJScript::MyJSTrapHandler, nullptr);
}

void CJScript::Detach()
{
    // An adopted context lives on and may have been another handle's before, or have become one's since.
    for (CJScript* handle : Handles()) {
        if (handle->m_context == m_context && handle->m_previousPrivate == this)
            handle->m_previousPrivate = m_previousPrivate;
    }
    if (JS_GetContextPrivate(m_context) == this)
        JS_SetContextPrivate(m_context, m_previousPrivate);
}

bool CJScript::CleanAll()
{
    CleanError();
    if (!m_context)
        return true;
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    if (m_ownsContext)
        CallOnDestroyFunctions();
    if (!m_context)
        return true; // one of them has done this already
    ForgetKeptFunctions();
    if (m_script) {
        JS_DestroyScript(m_context, m_script);
        m_script = nullptr;
    }
    if (m_ownsGlobal) {
        if (m_global->GetJSObject())
            JS_ClearScope(m_context, m_global->GetJSObject());
        RemoveGlobal();
    }
    m_global = nullptr;
    Detach();
    JSContext* const context = std::exchange(m_context, nullptr);
    if (!m_ownsContext)
        return true;
    for (CJScript* handle : Handles()) {
        if (handle->m_context != context)
            continue;
        handle->ForgetKeptFunctions();
        handle->m_context = nullptr;
        handle->m_global = nullptr;
        handle->m_ownsGlobal = false;
    }
    JS_ClearNewbornRoots(context);
    JS_DestroyContext(context);
    CJScriptLinkClass::DestroyContext(context);
    CJScriptLinkClass::GCScopeList();
    return true;
}

bool CJScript::SetGlobal(CJScriptLink* link, const wxString& name)
{
    if (m_global || !link || !m_context || !link->CreateGlobalObject(m_context, name))
        return false;
    m_global = link;
    m_ownsGlobal = true;
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    if (link->GetName().empty()) {
        JS_AddRoot(m_context, link->GetJSObjectAddress());
        return true;
    }
    JS_AddNamedRoot(m_context, link->GetJSObjectAddress(), link->GetName().mb_str());
    BindName(link, link->GetName());
    return true;
}

/// A property that can be neither changed nor removed: script sees a constant, and native code finds it like any other
/// property of the global object.
void CJScript::BindName(CJScriptLink* link, const wxString& name)
{
    JS_DefineWideProperty(m_context, link->GetJSObject(), name.wx_str(), name.length(),
                          OBJECT_TO_JSVAL(link->GetJSObject()), nullptr, nullptr, JSPROP_READONLY | JSPROP_PERMANENT);
}

void CJScript::RemoveGlobal()
{
    if (!m_context)
        return;
    CJScriptLink* const removed = m_global;
    if (!GiveUpGlobal(removed))
        return;
    const wxWeakRef<CJScriptLink> link(removed);
    // Without the lock: an engine is its thread's own, and other threads need not wait for what objects do at their
    // end.
    JS_GC(m_context);
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    // Something else may still hold the object; it is nobody's global any more.
    if (link)
        link->ForgetJSObject();
}

/// Takes from the context what holds its global object. False when there is none to collect.
bool CJScript::GiveUpGlobal(CJScriptLink* removed)
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    for (CJScript* handle : Handles()) {
        if (handle->m_context != m_context || !handle->m_global)
            continue;
        if (!removed)
            return false; // the global is another handle's
        if (handle->m_global == removed) {
            handle->m_global = nullptr;
            handle->m_ownsGlobal = false;
        }
    }
    JS_SetGlobalObject(m_context, nullptr);
    if (!removed || !removed->GetJSObject())
        return false;
    JS_RemoveRoot(m_context, removed->GetJSObjectAddress());
    // The prototypes go first: they would keep the global object alive through the collection.
    CJScriptLinkClass::DestroyContextProto(m_context);
    return true;
}

void CJScript::KeepsFunctions(CJScriptLink* link, bool keeps)
{
    if (keeps)
        m_functionKeepers.insert(link);
    else
        m_functionKeepers.erase(link);
}

/// Script's own objects end with the context, so what is to be called then is called while script still can be run.
void CJScript::CallOnDestroyFunctions()
{
    std::vector<CJScriptLink*> ending;
    std::copy_if(m_functionKeepers.begin(), m_functionKeepers.end(), std::back_inserter(ending),
                 [](const CJScriptLink* link) { return link->IsDynamic(); });
    m_onDestroyTime = {};
    for (CJScriptLink* link : ending) {
        // A function called before may have ended this one.
        if (m_functionKeepers.count(link) > 0)
            link->CallJS_OnDestroy();
    }
}

void CJScript::CallOnDestroy(JSFunction* function, CJScriptLink* link)
{
    const auto now = [] { return std::chrono::steady_clock::now().time_since_epoch(); };
    const bool isInner = m_callsOnDestroy;
    // While functions are called, the time is less the moment when they began: those that others cause count at once.
    if (!isInner)
        m_onDestroyTime -= now();
    if (m_timeLimit.count() == 0 || m_onDestroyTime + now() < m_timeLimit) {
        m_callsOnDestroy = true;
        CallWithRet(function, link, nullptr, 0, nullptr);
        m_callsOnDestroy = isInner;
    }
    if (!isInner)
        m_onDestroyTime += now();
}

void CJScript::ForgetKeptFunctions()
{
    while (!m_functionKeepers.empty())
        (*m_functionKeepers.begin())->ForgetFunctions();
}

void CJScript::ForgetGlobal(const CJScriptLink* link)
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    for (CJScript* handle : Handles()) {
        if (handle->m_global == link)
            handle->RemoveGlobal();
    }
}

bool CJScript::IsRunning()
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    return std::any_of(Handles().begin(), Handles().end(), [](const CJScript* handle) {
        return handle->m_scopeLevel > 0 && handle->m_thread == std::this_thread::get_id();
    });
}

void CJScript::ClearScope(CJScriptLink* link)
{
    if (!link || !link->GetJSObject())
        return;
    if (link != m_global) {
        link->ClearScope();
        return;
    }
    if (!link->GetName().empty()) {
        CleanError();
        m_hideError = false;
    }
    RemoveGlobal();
    SetGlobal(link, wxString());
}

bool CJScript::CreateChild(CJScriptLink* child, CJScriptLink* parent, const wxString& name, bool first, bool dynamic)
{
    if (!parent) {
        wxLogGeneric(NoticeLevel, wxS("No parent"));
        return false;
    }
    return child->CreateObject(m_context, parent, name, first, dynamic);
}

bool CJScript::CreateChildDynamic(CJScriptLink* child)
{
    return child->CreateObjectDynamic(m_context);
}

CJScriptLink* CJScript::GetChild(CJScriptLink* parent, const wxString& name)
{
    return parent ? parent->GetChild(name) : nullptr;
}

int CJScript::CreateNewMulti(CJScriptLinkClass* cls, JSContext* cx, JSObject* object, unsigned int argc, jsval* argv,
                             jsval* rval)
{
    return cls->CreateNewMulti(cx, object, argc, argv, rval);
}

void CJScript::IncScopeLevel()
{
    ++m_scopeLevel;
}

void CJScript::DecScopeLevel()
{
    if (--m_scopeLevel == 0)
        CJScriptLinkClass::GCScopeList();
}

void CJScript::SetTimeLimit(long milliseconds)
{
    m_timeLimit = std::chrono::milliseconds(milliseconds);
    if (m_context)
        JS_SetTimeLimit(m_context, milliseconds);
}

void CJScript::SetMemoryLimit(size_t bytes)
{
    if (m_context)
        JS_SetMemoryLimit(m_context, bytes);
}

void CJScript::SetLimitsLike(const CJScript* other)
{
    JSContext* const cx = other ? other->m_context : nullptr;
    SetTimeLimit(cx ? JS_GetTimeLimit(cx) : 0);
    SetMemoryLimit(cx ? JS_GetMemoryLimit(cx) : 0);
}

wxString CJScript::JSValToString(jsval& v)
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    wxString text;
    if (m_context)
        jsval_to_wxString(m_context, v, text);
    return text;
}

wxObject* CJScript::JSValToObject(jsval& v)
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    wxObject* object = nullptr;
    return m_context && jsval_to_pwxObject(m_context, v, object) ? object : nullptr;
}
