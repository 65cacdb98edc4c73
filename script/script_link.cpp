#include "script/script_link.h"

#include "script/script.h"
#include "script/script_class.h"
#include "script/value_conversion.h"

CJScriptLink::~CJScriptLink()
{
    if (m_scopeDelete)
        CJScriptLinkClass::RemoveFromScopeList(this);
    if (!m_jsObject)
        return;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    CJScript::ForgetGlobal(this);
    if (!m_jsObject)
        return;
    // The parent's native object may be gone, its script object is not.
    JSObject* const parent = m_isChild ? JS_GetParent(m_context, m_jsObject) : nullptr;
    if (parent) {
        jsval removed = JSVAL_VOID;
        JS_DeleteWideProperty2(m_context, parent, m_name.wx_str(), m_name.length(), &removed);
    }
    JS_RemoveRoot(m_context, &m_jsObject);
    ForgetJSObject();
}

void CJScriptLink::Link(wxObject* owner, CJScriptLinkClass* cls)
{
    m_owner = owner;
    m_jsClass = cls;
}

CJScript* CJScriptLink::GetScript() const
{
    return CJScript::FromContext(m_context);
}

const JSMap* CJScriptLink::GetJSMap() const
{
    return m_jsClass->GetMap();
}

bool CJScriptLink::CreateGlobalObject(JSContext* cx, wxString name)
{
    if (m_jsObject)
        return false;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    m_jsObject = m_jsClass->CreateGlobalObject(cx, this);
    if (!m_jsObject)
        return false;
    m_context = cx;
    m_name = name;
    m_isChild = false;
    m_dynamic = false;
    return true;
}

bool CJScriptLink::CreateObject(JSContext* cx, CJScriptLink* parent, wxString name, bool WXUNUSED(first), bool dynamic)
{
    if (!parent || !parent->GetJSObject())
        return false;
    if (name.empty())
        name = wxString::Format(wxS("P%p"), static_cast<void*>(m_owner));
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    if (m_jsObject)
        return m_context == cx &&
               JS_DefineWideProperty(cx, parent->GetJSObject(), name.wx_str(), name.length(),
                                     OBJECT_TO_JSVAL(m_jsObject), nullptr, nullptr, JSPROP_ENUMERATE);
    m_jsObject = m_jsClass->CreateObject(cx, this, parent, name);
    if (!m_jsObject)
        return false;
    m_context = cx;
    m_name = name;
    m_isChild = true;
    m_dynamic = dynamic;
    return true;
}

bool CJScriptLink::CreateObjectDynamic(JSContext* cx)
{
    if (m_jsObject)
        return false;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    m_jsObject = m_jsClass->CreateFreeObject(cx, this);
    if (!m_jsObject)
        return false;
    m_context = cx;
    m_isChild = false;
    m_dynamic = true;
    return true;
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

void CJScriptLink::SetScopeDelete()
{
    CJScriptLinkClass::AddToScopeList(this);
}

void CJScriptLink::ForgetJSObject()
{
    if (m_jsObject)
        JS_SetPrivate(m_context, m_jsObject, nullptr);
    m_jsObject = nullptr;
    m_context = nullptr;
}

void CJScriptLink::ObjectFinalized(JSContext* cx, JSObject* object)
{
    if (object != m_jsObject)
        return;
    m_jsObject = nullptr;
    m_context = nullptr;
    if (m_dynamic && !m_scopeDelete)
        JS_CallAtSafePoint(
            cx, [](void* owner) { delete static_cast<wxObject*>(owner); }, m_owner);
}
