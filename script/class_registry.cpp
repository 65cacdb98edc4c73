#include "script/script.h"
#include "script/script_class.h"
#include "script/script_link.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace
{

// The lists are reached through functions and never destroyed: static objects use them before and after this file's
// statics would live. All but the registered classes are guarded by the engine lock.

/// The descriptors that have a record for some context.
CArrayJSClassInfo& DeclaredClasses()
{
    static auto* const classes = new CArrayJSClassInfo;
    return *classes;
}

/// Guards the registered classes; a static object that registers one may live before the engine lock does.
std::mutex& RegistrationLock()
{
    static auto* const lock = new std::mutex;
    return *lock;
}

/// The classes that modules have registered.
CArrayJSClassInfo& RegisteredClasses()
{
    static auto* const classes = new CArrayJSClassInfo;
    return *classes;
}

/// A link waiting for its object's deletion, which is up to the thread that queued it.
struct Queued
{
    CJScriptLink* link;
    std::thread::id thread;
};

std::vector<Queued>& ScopeList()
{
    static auto* const links = new std::vector<Queued>;
    return *links;
}

/// Whether any link is queued. Asked behind every evaluation, without the lock: what this thread has queued it sees.
std::atomic<bool> g_isAnyQueued{false};

void EraseFromScopeList(std::vector<Queued>::iterator queued)
{
    ScopeList().erase(queued);
    g_isAnyQueued = !ScopeList().empty();
}

/// Whether the object can go when no script runs: it is this thread's, and nothing of the host holds it.
bool IsDue(const Queued& queued)
{
    const CJScriptLink& link = *queued.link;
    return queued.thread == std::this_thread::get_id() &&
           (!link.GetJSObject() || JS_IsAboutToBeFinalized(link.GetContext(), link.GetJSObject()));
}

void Remove(CArrayJSClassInfo& classes, CJScriptLinkClass* cls)
{
    classes.erase(std::remove(classes.begin(), classes.end(), cls), classes.end());
}

} // namespace

CJScriptLinkClass::~CJScriptLinkClass()
{
    for (const auto& record : m_contexts) {
        if (record->prototype)
            JS_RemoveRoot(record->context, &record->prototype);
    }
    Remove(DeclaredClasses(), this);
    UnregisterJSClass(this);
}

bool CJScriptLinkClass::IsKindOf(const CJScriptLinkClass* other) const
{
    for (const CJScriptLinkClass* cls = this; cls; cls = cls->GetParent()) {
        if (cls == other)
            return true;
    }
    return false;
}

CJSLinkClassContext* CJScriptLinkClass::GetClassContext(JSContext* cx)
{
    for (const auto& record : m_contexts) {
        if (record->context == cx)
            return record.get();
    }
    if (m_contexts.empty())
        DeclaredClasses().push_back(this);
    auto record = std::make_unique<CJSLinkClassContext>();
    record->context = cx;
    record->jsClass =
        JSClass{m_map->name,     EngineFlags(),    JS_PropertyStub, JS_PropertyStub, JS_PropertyStub,
                JS_PropertyStub, JS_EnumerateStub, JS_ResolveStub,  JS_ConvertStub,  &CJScriptLinkClass::Finalize};
    m_contexts.push_back(std::move(record));
    return m_contexts.back().get();
}

std::uint32_t CJScriptLinkClass::EngineFlags() const
{
    return m_engineFlags | (GetParent() ? GetParent()->EngineFlags() : JSCLASS_HAS_PRIVATE);
}

const JSClass* CJScriptLinkClass::EngineClass(JSContext* cx)
{
    return &GetClassContext(cx)->jsClass;
}

JSObject* CJScriptLinkClass::CreateObject(JSContext* cx, CJScriptLink* link, CJScriptLink* parent, wxString name)
{
    JSObject* const prototype = CreateProto(cx, false);
    if (!prototype)
        return nullptr;
    JSObject* const object = JS_NewObject(cx, EngineClass(cx), prototype, parent->GetJSObject());
    const bool defined =
        object &&
        (name.empty() ? JS_AddLateChild(cx, parent->GetJSObject(), object, link->GetRootObject(), &link->m_late)
                      : JS_DefineWideProperty(cx, parent->GetJSObject(), name.wx_str(), name.length(),
                                              OBJECT_TO_JSVAL(object), nullptr, nullptr, JSPROP_ENUMERATE));
    if (!defined)
        return nullptr;
    JS_SetPrivate(cx, object, link);
    return object;
}

JSObject* CJScriptLinkClass::CreateGlobalObject(JSContext* cx, CJScriptLink* link)
{
    JSObject* const object = JS_NewGlobal(cx, EngineClass(cx));
    if (!object)
        return nullptr;
    JS_SetPrivate(cx, object, link);
    JS_SetGlobalObject(cx, object);
    if (AddPropFuncToObject(cx, object))
        return object;
    JS_SetGlobalObject(cx, nullptr);
    JS_SetPrivate(cx, object, nullptr);
    return nullptr;
}

/// A script object of the class that nothing refers to yet. Null on failure.
JSObject* CJScriptLinkClass::CreateFreeObject(JSContext* cx)
{
    JSObject* const prototype = CreateProto(cx, false);
    return prototype ? JS_NewObject(cx, EngineClass(cx), prototype, nullptr) : nullptr;
}

void CJScriptLinkClass::DeclareError(JSContext* cx, wxString message)
{
    JS_ReportErrorWide(cx, message.wx_str(), message.length());
}

void CJScriptLinkClass::Finalize(JSContext* cx, JSObject* object)
{
    auto* const link = static_cast<CJScriptLink*>(JS_GetPrivate(cx, object));
    if (!link)
        return;
    const bool keepPrivate = link->GetClass() && link->GetClass()->m_keepPrivate;
    if (!keepPrivate)
        JS_SetPrivate(cx, object, nullptr);
    link->ObjectFinalized(cx, object);
}

void CJScriptLinkClass::CutFromEndedContext(JSContext* cx, JSObject* object)
{
    if (JS_GetClass(cx, object)->finalize != &CJScriptLinkClass::Finalize)
        return;
    auto* const link = static_cast<CJScriptLink*>(JS_GetPrivate(cx, object));
    if (!link || link->GetContext() != cx)
        return;
    // Also where the class keeps the link: nobody would take it away any more.
    JS_SetPrivate(cx, object, nullptr);
    link->ObjectFinalized(cx, object);
}

bool CJScriptLinkClass::DeleteObject(CJScriptLink* link)
{
    if (!link->GetJSObject())
        return false;
    link->RemoveFromParent();
    JS_RemoveRoot(link->GetContext(), link->GetJSObjectAddress());
    if (!m_keepPrivate)
        link->ForgetJSObject();
    return true;
}

void CJScriptLinkClass::DestroyContext(JSContext* cx)
{
    auto& declared = DeclaredClasses();
    for (CJScriptLinkClass* cls : declared) {
        auto& records = cls->m_contexts;
        records.erase(
            std::remove_if(records.begin(), records.end(), [&](const auto& record) { return record->context == cx; }),
            records.end());
    }
    declared.erase(std::remove_if(declared.begin(), declared.end(),
                                  [](const CJScriptLinkClass* cls) { return cls->m_contexts.empty(); }),
                   declared.end());
}

void CJScriptLinkClass::DestroyContextProto(JSContext* cx)
{
    for (CJScriptLinkClass* cls : DeclaredClasses()) {
        for (const auto& record : cls->m_contexts) {
            if (record->context != cx || !record->prototype)
                continue;
            JS_RemoveRoot(cx, &record->prototype);
            record->prototype = nullptr;
        }
    }
}

bool CJScriptLinkClass::RegisterJSClass(CJScriptLinkClass* cls)
{
    const std::lock_guard<std::mutex> lock(RegistrationLock());
    auto& registered = RegisteredClasses();
    if (std::find(registered.begin(), registered.end(), cls) == registered.end())
        registered.push_back(cls);
    return true;
}

void CJScriptLinkClass::UnregisterJSClass(CJScriptLinkClass* cls)
{
    const std::lock_guard<std::mutex> lock(RegistrationLock());
    Remove(RegisteredClasses(), cls);
}

CArrayJSClassInfo CJScriptLinkClass::GetRegisteredClasses()
{
    const std::lock_guard<std::mutex> lock(RegistrationLock());
    return RegisteredClasses();
}

bool CJScriptLinkClass::DeclareJSClass(JSContext* cx, CJScriptLinkClass* cls)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    const bool declareOnly = !JS_GetGlobalObject(cx);
    return cls->CreateProto(cx, declareOnly) || declareOnly;
}

bool CJScriptLinkClass::DeclareGlobal(CJScriptLink* global)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    bool declared = true;
    for (CJScriptLinkClass* cls : GetRegisteredClasses())
        declared = DeclareJSClass(global->GetContext(), cls) && declared;
    return declared;
}

void CJScriptLinkClass::AddToScopeList(CJScriptLink* link)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    if (link->m_scopeDelete)
        return;
    link->m_scopeDelete = true;
    ScopeList().push_back({link, std::this_thread::get_id()});
    g_isAnyQueued = true;
}

void CJScriptLinkClass::RemoveFromScopeList(CJScriptLink* link)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    link->m_scopeDelete = false;
    auto& links = ScopeList();
    const auto queued =
        std::find_if(links.begin(), links.end(), [&](const Queued& other) { return other.link == link; });
    if (queued != links.end())
        EraseFromScopeList(queued);
}

void CJScriptLinkClass::GCScopeList()
{
    if (!g_isAnyQueued)
        return;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    auto& links = ScopeList();
    // Contexts of a thread share objects, and a native below any running script may be using one that has no script
    // object (any more).
    if (CJScript::IsRunning())
        return;
    // Deleting an owner may run code that changes the list, so each round looks at it afresh.
    for (auto due = std::find_if(links.begin(), links.end(), IsDue); due != links.end();
         due = std::find_if(links.begin(), links.end(), IsDue)) {
        wxObject* const owner = due->link->GetRootObject();
        EraseFromScopeList(due);
        delete owner;
    }
}
