#pragma once

#include "base/api.h"
#include "engine/jsapi.h"

#include <wx/event.h>
#include <wx/object.h>
#include <wx/string.h>

class CJScript;
class CJScriptLinkClass;
struct JSMap;

/// Ties one native object to its script object. Every scriptable class embeds one and links it to itself in its
/// constructor.
///
/// A native object made by the host is the host's: when it goes, its script object stays as an empty shell. One made by
/// script belongs to its script object and is deleted after the collection that found that dead.
class VC_QXPARSER_API CJScriptLink : public wxEvtHandler
{
public:
    CJScriptLink() = default;
    ~CJScriptLink() override;

    CJScriptLink(const CJScriptLink&) = delete;
    CJScriptLink& operator=(const CJScriptLink&) = delete;

    /// Names the native object that embeds this link, and its class.
    void Link(wxObject* owner, CJScriptLinkClass* cls);

    bool IsCreated() const { return m_jsObject != nullptr; }
    /// The handle on the context in which the script object lives; null without one.
    CJScript* GetScript() const;
    const wxString& GetName() const { return m_name; }
    JSObject* GetJSObject() const { return m_jsObject; }
    wxObject* GetRootObject() const { return m_owner; }
    JSContext* GetContext() const { return m_context; }
    const JSMap* GetJSMap() const;

    /// Makes the script object as the global object of a context.
    bool CreateGlobalObject(JSContext* cx, wxString name);
    /// Makes the script object as the property `name` (empty: a made-up one) of `parent`'s object. A link that has a
    /// script object in this context is bound to the further name.
    /// @param dynamic whether the script object owns the native object.
    /// @return false without a parent that has a script object, or on failure.
    bool CreateObject(JSContext* cx, CJScriptLink* parent, wxString name, bool first, bool dynamic);
    /// Makes a script object that owns the native object and that nothing refers to yet.
    bool CreateObjectDynamic(JSContext* cx);
    /// Removes the properties of the script object.
    void ClearScope();
    /// The link of the object that is the property `name`; null when there is none.
    CJScriptLink* GetChild(const wxString& name);

    /// Has the native object deleted as soon as no script runs and none can reach its script object.
    void SetScopeDelete();

    /// The word that roots are registered with.
    void* GetJSObjectAddress() { return &m_jsObject; }
    /// Cuts the tie to the script object, which becomes an empty shell.
    void ForgetJSObject();
    /// Called when the collector has found the script object dead.
    void ObjectFinalized(JSContext* cx, JSObject* object);

private:
    friend class CJScriptLinkClass;

    wxObject* m_owner = nullptr;
    JSObject* m_jsObject = nullptr;
    wxString m_name;
    bool m_isChild = false; // a property of another link's object
    CJScriptLinkClass* m_jsClass = nullptr;
    bool m_dynamic = false;
    bool m_scopeDelete = false;
    JSContext* m_context = nullptr;
};
