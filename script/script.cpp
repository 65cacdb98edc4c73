#include "script/script.h"

#include "script/script_class.h"
#include "script/script_link.h"
#include "script/value_conversion.h"

#include <wx/log.h>

wxIMPLEMENT_CLASS(CJScript, wxObject);

int CJScript::ms_instances = 0;
wxThreadCriticalSection CJScript::m_ThreadCriticalSection;
wxCriticalSection CJScript::m_CriticalSection;

namespace
{

constexpr std::uint32_t BytesBeforeCollection = 16777216;
constexpr std::size_t StackChunkBytes = 8192;
constexpr wxLogLevel NoticeLevel = 102;

} // namespace

CJScript::CJScript(JSContext* cx) : m_context(cx), m_ownsContext(cx == nullptr)
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    ++ms_instances;
    if (m_ownsContext) {
        m_runtime = JS_Init(BytesBeforeCollection);
        m_context = JS_NewContext(m_runtime, StackChunkBytes);
    }
    if (m_context)
        Attach();
}

CJScript::CJScript(const CJScript& other)
    : wxObject(other), m_context(other.m_context), m_global(other.m_global), m_hideError(other.m_hideError),
      m_errors(other.m_errors), m_callStack(other.m_callStack), m_ownsContext(false), m_isCopy(true)
{
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    ++ms_instances;
}

CJScript& CJScript::operator=(const CJScript& other)
{
    if (this == &other)
        return *this;
    CleanAll();
    if (m_runtime)
        JS_Finish(m_runtime);
    wxObject::operator=(other);
    m_context = other.m_context;
    m_global = other.m_global;
    m_hideError = other.m_hideError;
    m_errors = other.m_errors;
    m_callStack = other.m_callStack;
    m_ownsContext = false;
    m_runtime = nullptr;
    m_isCopy = true;
    return *this;
}

CJScript::~CJScript()
{
    CleanAll();
    if (m_runtime)
        JS_Finish(m_runtime);
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    if (--ms_instances == 0)
        JS_ShutDown();
}

void CJScript::Attach()
{
    const wxCriticalSectionLocker reports(m_CriticalSection);
    m_previousPrivate = JS_GetContextPrivate(m_context);
    JS_SetContextPrivate(m_context, this);
    JS_SetErrorReporter(m_context, &CJScript::MyJSErrorReporter);
    JSRuntime* const runtime = m_runtime ? m_runtime : JS_GetRuntime(m_context);
    if (runtime)
        JS_SetThrowHook(runtime, &CJScript::MyJSTrapHandler, nullptr);
}

void CJScript::Detach()
{
    // An adopted context lives on and may have been another handle's before.
    if (JS_GetContextPrivate(m_context) == this)
        JS_SetContextPrivate(m_context, m_previousPrivate);
}

CJScript* CJScript::FromContext(JSContext* cx)
{
    return cx ? static_cast<CJScript*>(JS_GetContextPrivate(cx)) : nullptr;
}

bool CJScript::CleanAll()
{
    CleanError();
    if (!m_context || m_isCopy) {
        m_context = nullptr;
        m_global = nullptr;
        return true;
    }
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    if (m_script) {
        JS_DestroyScript(m_context, m_script);
        m_script = nullptr;
    }
    if (m_global && m_global->GetJSObject() && m_global->GetContext())
        JS_ClearScope(m_global->GetContext(), m_global->GetJSObject());
    RemoveGlobal();
    Detach();
    if (m_ownsContext) {
        JS_ClearNewbornRoots(m_context);
        JS_DestroyContext(m_context);
        CJScriptLinkClass::DestroyContext(m_context);
    }
    m_context = nullptr;
    return true;
}

bool CJScript::SetGlobal(CJScriptLink* link, const wxString& name)
{
    if (m_global || !link || !m_context || !link->CreateGlobalObject(m_context, name))
        return false;
    m_global = link;
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
    if (!m_context || m_isCopy)
        return;
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    JS_SetGlobalObject(m_context, nullptr);
    if (m_global && m_global->GetJSObject()) {
        JS_RemoveRoot(m_context, m_global->GetJSObjectAddress());
        JS_GC(m_context);
        // Something else may still hold the object; it is nobody's global any more.
        m_global->ForgetJSObject();
        CJScriptLinkClass::DestroyContextProto(m_context);
    }
    m_global = nullptr;
}

void CJScript::ClearScope(CJScriptLink* link)
{
    if (!link || !link->GetJSObject())
        return;
    if (link != m_global) {
        link->ClearScope();
        return;
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
    if (m_context)
        JS_SetTimeLimit(m_context, milliseconds);
}

void CJScript::SetMemoryLimit(size_t bytes)
{
    if (m_context)
        JS_SetMemoryLimit(m_context, bytes);
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
