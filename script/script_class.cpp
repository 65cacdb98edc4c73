#include "script/script_class.h"

#include "script/script.h"
#include "script/script_link.h"

#include <algorithm>
#include <thread>

namespace
{

// The lists are never destroyed: static objects that end after this file's still leave them.

/// The descriptors that have made objects in some context. Guarded by the engine lock.
std::vector<CJScriptLinkClass*>& DeclaredClasses()
{
    static auto& classes = *new std::vector<CJScriptLinkClass*>;
    return classes;
}

/// A link waiting for its object's deletion, which is up to the thread that queued it.
struct Queued
{
    CJScriptLink* link;
    std::thread::id thread;
};

/// Whether the object can go: no script that may use it runs, and none can reach it.
bool IsDue(const Queued& queued)
{
    const CJScriptLink& link = *queued.link;
    return queued.thread == std::this_thread::get_id() &&
           (!link.GetJSObject() || (!CJScript::IsRunning(link.GetContext()) &&
                                    JS_IsAboutToBeFinalized(link.GetContext(), link.GetJSObject())));
}

/// Guarded by the engine lock.
std::vector<Queued>& ScopeList()
{
    static auto& links = *new std::vector<Queued>;
    return links;
}

} // namespace

CJScriptLinkClass::~CJScriptLinkClass()
{
    auto& declared = DeclaredClasses();
    declared.erase(std::remove(declared.begin(), declared.end(), this), declared.end());
}

const JSClass* CJScriptLinkClass::EngineClass(JSContext* cx)
{
    for (const auto& record : m_contexts) {
        if (record->context == cx)
            return &record->jsClass;
    }
    if (m_contexts.empty())
        DeclaredClasses().push_back(this);
    auto record = std::make_unique<ClassContext>();
    record->context = cx;
    record->jsClass =
        JSClass{m_map->name,     JSCLASS_HAS_PRIVATE, JS_PropertyStub, JS_PropertyStub, JS_PropertyStub,
                JS_PropertyStub, JS_EnumerateStub,    JS_ResolveStub,  JS_ConvertStub,  &CJScriptLinkClass::Finalize};
    m_contexts.push_back(std::move(record));
    return &m_contexts.back()->jsClass;
}

JSObject* CJScriptLinkClass::CreateObject(JSContext* cx, CJScriptLink* link, CJScriptLink* parent, const wxString& name)
{
    JSObject* const object = JS_NewObject(cx, EngineClass(cx), nullptr, parent->GetJSObject());
    if (!object || !JS_DefineWideProperty(cx, parent->GetJSObject(), name.wx_str(), name.length(),
                                          OBJECT_TO_JSVAL(object), nullptr, nullptr, JSPROP_ENUMERATE))
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
    return object;
}

JSObject* CJScriptLinkClass::CreateFreeObject(JSContext* cx, CJScriptLink* link)
{
    JSObject* const object = JS_NewObject(cx, EngineClass(cx), nullptr, nullptr);
    if (object)
        JS_SetPrivate(cx, object, link);
    return object;
}

void CJScriptLinkClass::DeclareError(JSContext* cx, wxString message)
{
    JS_ReportErrorWide(cx, message.wx_str(), message.length());
}

void CJScriptLinkClass::DestroyContext(JSContext* cx)
{
    for (CJScriptLinkClass* descriptor : DeclaredClasses()) {
        auto& records = descriptor->m_contexts;
        records.erase(
            std::remove_if(records.begin(), records.end(), [&](const auto& record) { return record->context == cx; }),
            records.end());
    }
    auto& declared = DeclaredClasses();
    declared.erase(std::remove_if(declared.begin(), declared.end(),
                                  [](const CJScriptLinkClass* descriptor) { return descriptor->m_contexts.empty(); }),
                   declared.end());
}

void CJScriptLinkClass::DestroyContextProto(JSContext* cx)
{
    // A class record of a context holds nothing that belongs to one global object.
    DestroyContext(cx);
}

void CJScriptLinkClass::AddToScopeList(CJScriptLink* link)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    if (link->m_scopeDelete)
        return;
    link->m_scopeDelete = true;
    ScopeList().push_back({link, std::this_thread::get_id()});
}

void CJScriptLinkClass::RemoveFromScopeList(CJScriptLink* link)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    link->m_scopeDelete = false;
    auto& links = ScopeList();
    links.erase(std::remove_if(links.begin(), links.end(), [&](const Queued& queued) { return queued.link == link; }),
                links.end());
}

void CJScriptLinkClass::GCScopeList()
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    // Deleting an owner may run code that changes the list, so each round looks at it afresh.
    auto& links = ScopeList();
    for (auto due = std::find_if(links.begin(), links.end(), IsDue); due != links.end();
         due = std::find_if(links.begin(), links.end(), IsDue)) {
        wxObject* const owner = due->link->GetRootObject();
        links.erase(due);
        delete owner;
    }
}

void CJScriptLinkClass::Finalize(JSContext* cx, JSObject* obj)
{
    auto* const link = static_cast<CJScriptLink*>(JS_GetPrivate(cx, obj));
    if (!link)
        return;
    JS_SetPrivate(cx, obj, nullptr);
    link->ObjectFinalized(cx, obj);
}
