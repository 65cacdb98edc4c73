#include "script/script_link.h"

#include "script/script.h"
#include "script/script_class.h"
#include "script/value_conversion.h"

#include <wx/weakref.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>

const JSMap CJScriptLink::m_JSMap{"CJScriptLink", nullptr, m_JSMapEntries};
CJScriptLinkClass CJScriptLink::ms_JSClass(&CJScriptLink::m_JSMap);

namespace
{

/// "P%p" of the owner's address.
wxString MadeUpName(const wxObject* owner)
{
    const std::string name = JS_AddressName(owner);
    return wxString::FromAscii(name.data(), name.size());
}

} // namespace

CJScriptLink::~CJScriptLink()
{
    // Whoever deletes the native object: a collection from here on must not do it too.
    m_dynamic = false;
    CancelDeletion();
    if (m_scopeDelete)
        CJScriptLinkClass::RemoveFromScopeList(this);
    InitEvtHandler(false);
    CallJS_OnDestroy();
    if (!m_jsObject && !m_functions)
        return;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    ForgetFunctions();
    CJScript::ForgetGlobal(this);
    DeleteObject();
    // Also where the class keeps the link: there is none any more.
    ForgetJSObject();
}

void CJScriptLink::Link(wxObject* owner, CJScriptLinkClass* cls)
{
    m_owner = owner;
    m_jsClass = cls;
    InitEvtHandler(true);
}

CJScript* CJScriptLink::GetScript() const
{
    return CJScript::FromContext(m_context);
}

const JSMap* CJScriptLink::GetJSMap() const
{
    return m_jsClass->GetMap();
}

CJScriptLink* CJScriptLink::GetParent() const
{
    // The parent's native object may be gone while its script object lives, so the way leads through that.
    JSObject* const parent = m_isChild && m_jsObject ? JS_GetParent(m_context, m_jsObject) : nullptr;
    return parent ? static_cast<CJScriptLink*>(JS_GetPrivate(m_context, parent)) : nullptr;
}

wxString CJScriptLink::GetName() const
{
    if (m_name)
        return *m_name;
    return m_isChild ? MadeUpName(m_owner) : wxString();
}

void CJScriptLink::SetName(const wxString& name)
{
    m_name = name.empty() ? nullptr : std::make_unique<wxString>(name);
}

wxString CJScriptLink::GetCompleteName() const
{
    const CJScriptLink* const parent = GetParent();
    const wxString path = parent ? parent->GetCompleteName() : wxString();
    return path.empty() ? GetName() : wxString::Format(wxS("%s.%s"), path, GetName());
}

bool CJScriptLink::CreateGlobalObject(JSContext* cx, wxString name)
{
    if (m_jsObject)
        return false;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    JSObject* const object = m_jsClass->CreateGlobalObject(cx, this);
    if (!object)
        return false;
    SetJSObject(cx, object);
    SetName(name);
    m_isChild = false;
    m_dynamic = false;
    CJScriptLinkClass::DeclareGlobal(this);
    return true;
}

bool CJScriptLink::CreateObject(JSContext* cx, CJScriptLink* parent, wxString name, bool WXUNUSED(first), bool dynamic)
{
    if (!parent || !parent->GetJSObject())
        return false;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    if (m_jsObject) {
        const wxString property = name.empty() ? MadeUpName(m_owner) : name;
        const bool bound =
            m_context == cx && JS_DefineWideProperty(cx, parent->GetJSObject(), property.wx_str(), property.length(),
                                                     OBJECT_TO_JSVAL(m_jsObject), nullptr, nullptr, JSPROP_ENUMERATE);
        if (!bound || !m_isUnnamed)
            return bound;
        JS_SetParent(cx, m_jsObject, parent->GetJSObject());
    } else {
        JSObject* const object = m_jsClass->CreateObject(cx, this, parent, name);
        if (!object)
            return false;
        SetJSObject(cx, object);
    }
    m_isUnnamed = false;
    SetName(name);
    m_isChild = true;
    m_dynamic = dynamic;
    return true;
}

bool CJScriptLink::CreateObjectDynamic(JSContext* cx)
{
    if (m_jsObject)
        return false;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    JSObject* const object = m_jsClass->CreateFreeObject(cx);
    return object && AttachObjectDynamic(cx, object);
}

bool CJScriptLink::AttachObjectDynamic(JSContext* cx, JSObject* object)
{
    if (!Attach(cx, object))
        return false;
    m_dynamic = true;
    if (!m_jsClass->CreatePropertiesObject(cx, this))
        return false;
    m_jsClass->SetKeepPrivate(false);
    return true;
}

void CJScriptLink::SetJSObject(JSContext* cx, JSObject* object)
{
    m_jsObject = object;
    m_context = cx;
    m_announcedBytes = 0;
}

bool CJScriptLink::Attach(JSContext* cx, JSObject* object)
{
    if (m_jsObject || !JS_SetPrivate(cx, object, this))
        return false;
    SetJSObject(cx, object);
    m_isChild = m_isUnnamed = m_dynamic = false;
    return true;
}

bool CJScriptLink::CreateObjectOf(JSContext* cx, CJScriptLink* holder, std::uint32_t index)
{
    if (m_jsObject)
        return true;
    if (!m_jsClass || !holder->m_jsObject)
        return false;
    JSObject* const object = m_jsClass->CreateFreeObject(cx);
    if (!object || !JS_HoldObject(cx, holder->m_jsObject, static_cast<jsint>(index), object) || !Attach(cx, object))
        return false;
    m_isUnnamed = true;
    return m_jsClass->CreatePropertiesObject(cx, this);
}

void CJScriptLink::ClearScope()
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    if (m_jsObject)
        JS_ClearScope(m_context, m_jsObject);
}

CJScriptLink* CJScriptLink::GetChild(const wxString& name)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    jsval value = JSVAL_VOID;
    CJScriptLink* child = nullptr;
    if (m_jsObject && JS_GetWideProperty(m_context, m_jsObject, name.wx_str(), name.length(), &value))
        jsval_to_pCJScriptLink(m_context, value, child);
    return child;
}

bool CJScriptLink::DeleteObject()
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    return m_jsClass && m_jsClass->DeleteObject(this);
}

void CJScriptLink::RemoveFromParent()
{
    if (m_late.IsWaiting()) {
        JS_DropLateChild(&m_late);
        return;
    }
    JSObject* const parent = m_isChild ? JS_GetParent(m_context, m_jsObject) : nullptr;
    if (!parent)
        return;
    const wxString name = GetName();
    jsval removed = JSVAL_VOID;
    JS_DeleteWideProperty2(m_context, parent, name.wx_str(), name.length(), &removed);
}

void CJScriptLink::SetScopeDelete()
{
    CJScriptLinkClass::AddToScopeList(this);
}

void CJScriptLink::AnnounceMemory(std::size_t bytes)
{
    if (!m_jsObject)
        return;
    JS_AddNativeMemory(m_context, m_jsObject, bytes);
    m_announcedBytes += bytes;
}

void CJScriptLink::ForgetJSObject()
{
    if (m_jsObject) {
        JS_SetPrivate(m_context, m_jsObject, nullptr);
        if (m_announcedBytes)
            JS_RemoveNativeMemory(m_context, m_jsObject, m_announcedBytes);
    }
    m_announcedBytes = 0;
    m_jsObject = nullptr;
    m_context = nullptr;
}

void CJScriptLink::ObjectFinalized(JSContext* cx, JSObject* object)
{
    if (object != m_jsObject)
        return;
    JS_DropLateChild(&m_late);
    if (m_announcedBytes)
        JS_RemoveNativeMemory(cx, object, m_announcedBytes);
    m_jsObject = nullptr;
    m_context = nullptr;
    if (!m_dynamic || m_scopeDelete) {
        m_announcedBytes = 0;
        return;
    }
    m_dynamic = false;
    DeleteOwnerLater(cx);
}

bool CJScriptLink::ProcessEvent(wxEvent& event)
{
    // The script function may destroy the native object, and this link with it.
    const wxWeakRef<CJScriptLink> self(this);
    if (m_jsObject && m_jsClass->ProcessEvent(this, event))
        return true;
    return self && wxEvtHandler::ProcessEvent(event);
}

wxString CJScriptLink::GetInitScript() const
{
    return m_jsClass->GetInitScript(this);
}

bool CJScriptLink::GetInitScript_Inplace(wchar_t*& buffer, int& room) const
{
    return m_jsClass->GetInitScript_Inplace(this, buffer, room);
}
