#pragma once

#include "base/api.h"
#include "engine/jsapi.h"
#include "script/class_map.h"

#include <wx/arrstr.h>
#include <wx/event.h>
#include <wx/object.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <vector>

class CJScript;
class CJScriptLinkClass;

/// Ties one native object to its script object. Every scriptable class embeds one and links it to itself in its
/// constructor. It is also the base of all script classes: its table holds the functions that every script object has.
///
/// A native object made by the host is the host's: when it goes, its script object stays as an empty shell. One made by
/// script belongs to its script object, which ends at the latest with the context in which it was made, whoever holds
/// it then. After the collection that found the script object dead, the running application deletes the native one when
/// it is idle (wxAppConsole::ScheduleForDestruction). It goes right then when there is no application with an event
/// loop, when the context is another thread's than the main one, and when newer ones that wait take 16 MB.
///
/// Declare the link behind all fields that script can read: its destructor calls the on-destroy functions, which see
/// the object as it is then. A class that cannot have it there, or whose own destructor changes the object, calls
/// CallJS_OnDestroy first thing in its destructor.
class VC_QXPARSER_API CJScriptLink : public wxEvtHandler
{
public:
    CJScriptLink() = default;
    ~CJScriptLink() override;

    CJScriptLink(const CJScriptLink&) = delete;
    CJScriptLink& operator=(const CJScriptLink&) = delete;

    /// Names the native object that embeds this link, and its class. The link of a window becomes one of its event
    /// handlers.
    void Link(wxObject* owner, CJScriptLinkClass* cls);

    /// Whether there is a script object.
    bool IsCreated() const { return m_jsObject != nullptr; }
    /// Whether the script object owns the native object.
    bool IsDynamic() const { return m_dynamic && m_jsObject; }
    /// The handle on the context in which the script object lives; null without one.
    CJScript* GetScript() const;
    /// The name of the property that the script object is, or of the global object; empty without one.
    wxString GetName() const;
    /// The script object; null without one.
    JSObject* GetJSObject() const { return m_jsObject; }
    /// The native object that embeds this link; null before Link.
    wxObject* GetRootObject() const { return m_owner; }
    /// The engine context in which the script object lives; null without one.
    JSContext* GetContext() const { return m_context; }

    ///@{
    /// The class given to Link, null before it, and its table.
    CJScriptLinkClass* GetClass() const { return m_jsClass; }
    const JSMap* GetJSMap() const;
    ///@}

    /// The link of the object that this one's is a named property of; null for global and dynamic objects, and when the
    /// parent's native object is gone.
    CJScriptLink* GetParent() const;
    /// The dotted path of names from the global object, which counts when it has a name.
    wxString GetCompleteName() const;

    /// Makes the script object as the global object of a context.
    bool CreateGlobalObject(JSContext* cx, wxString name);
    /// Makes the script object as the property `name` (empty: a made-up one) of `parent`'s object. A link that has a
    /// script object in this context is bound to the further name.
    /// @param first ignored; kept for hosts that pass it.
    /// @param dynamic whether the script object owns the native object.
    /// @return false without a parent that has a script object, or on failure.
    bool CreateObject(JSContext* cx, CJScriptLink* parent, wxString name, bool first, bool dynamic);
    /// Makes a script object that owns the native object and that nothing refers to yet.
    bool CreateObjectDynamic(JSContext* cx);
    /// Takes an object of the class that script has just made, which then owns the native object.
    bool AttachObjectDynamic(JSContext* cx, JSObject* object);
    /// Makes the script object, when there is none, that is the property `index` (JSMapEntry) of `holder`'s, which
    /// keeps it alive. The native object stays whose it is.
    bool CreateObjectOf(JSContext* cx, CJScriptLink* holder, std::uint32_t index);
    /// Removes the properties of the script object.
    void ClearScope();
    /// The link of the object that is the property `name`; null when there is none.
    CJScriptLink* GetChild(const wxString& name);
    /// Cuts the tie to the script object, which disappears from its parent's and becomes an empty shell.
    /// @return false when there is none.
    bool DeleteObject();

    /// Has the native object deleted as soon as no script runs and no root of the host holds its script object.
    /// What scripts still hold is an empty shell then.
    void SetScopeDelete();

    /// Tells the collector that the native object takes so many bytes, so that script objects are collected in time.
    void AnnounceMemory(std::size_t bytes);

    /// Events. A link takes part in the dispatch when it stands among the event handlers of its object; `push` puts it
    /// there, false takes it away. Objects that are no windows have no such list: nothing happens.
    void InitEvtHandler(bool push);
    /// Calls the script function that the class's table names for the event.
    /// @return true when there was one and it did not return false; else what the next handlers say.
    bool ProcessEvent(wxEvent& event) override;

    ///@{
    /// Statements that bring another object of the class to this one's state; see CJScriptLinkClass::GetInitScript.
    wxString GetInitScript() const;
    bool GetInitScript_Inplace(wchar_t*& buffer, int& room) const;
    ///@}

    /// The function that is the property `name` of the script object; null when there is none.
    JSFunction* GetJSFunction(const wxString& name) const;

    ///@{
    /// Calls a function with the script object as `this`; `result` becomes the truth value of what it returns, true for
    /// nothing. False after a failure, which is reported.
    bool CallFunction(JSFunction* function, bool& result);
    bool CallFunction(JSFunction* function, bool& result, const wxString& argument);
    ///@}

    /// A null `argument` passes the null object.
    bool CallFunction(JSFunction* function, bool& result, CJScriptLink* argument);

    ///@{
    /// Keeps a function value alive as long as this link, or until it is removed as often as it was added.
    void AddFunction(JSFunction* function);
    void RemoveFunction(JSFunction* function);
    ///@}

    /// Has a function called, with the script object as `this` where there still is one, when the native object goes:
    /// for script's own objects at the latest when their context ends, right before. A host's object that goes after
    /// the context of its functions calls nothing any more.
    void JS_RegisterCallOnDestroy(JSFunction* function);
    /// Calls them, each once. What they register comes too late.
    void CallJS_OnDestroy();
    /// Whether there are any to call.
    bool HasOnDestroyFunctions() const { return m_functions && !m_functions->onDestroy.empty(); }

    ///@{
    /// What wxPlatformInfo says of the system and the toolkit.
    static wxString GetOperatingSystemFamilyName();
    static wxString GetOperatingSystemIdName();
    static int GetOSMajorVersion();
    static int GetOSMinorVersion();
    static wxString GetPortIdName();
    static wxString GetPortIdShortName();
    ///@}

    /// `format` with its first "%s" replaced; nothing else in it means anything.
    static wxString FormatStrStr(const wxString& format, const wxString& text);
    /// The 0-based place of `what`, -1 when it is absent.
    static int FindStr(const wxString& text, const wxString& what, bool matchCase);

    ///@{
    /// The text with all letters in one case.
    static wxString StrToUpper(const wxString& text);
    static wxString StrToLower(const wxString& text);
    ///@}

    /// `format` with "%1", "%2", ... replaced by the arguments, counted from 1. Others, and inserted text, stay as they
    /// are.
    static wxString FormatString(const wxString& format, const wxArrayString& arguments);
    /// `text` with every `what` replaced; what has been inserted is not looked at again. An empty `what` changes
    /// nothing.
    static wxString FindReplaceStr(const wxString& text, const wxString& what, const wxString& by);
    /// FormatString, for script.
    wxString JS_FormatStringA(const wxString& format, const wxArrayString& arguments);
    /// Logs "pause", verbosely.
    void JS_Pause();
    /// What follows `prefix` in `text`; empty when it does not start so.
    wxString JS_StartsWithStr(const wxString& text, const wxString& prefix);

    ///@{
    /// In debug builds, log an error when the condition does not hold.
    static void ASSERT(bool condition);
    static void ASSERT_MSG(bool condition, const wxString& message);
    ///@}

    /// The word that roots are registered with.
    void* GetJSObjectAddress() { return &m_jsObject; }
    /// Makes the script object an empty shell.
    void ForgetJSObject();
    /// Removes the script object from its parent's.
    void RemoveFromParent();
    /// Called when the collector has found the script object dead.
    void ObjectFinalized(JSContext* cx, JSObject* object);
    /// Called when the context of the functions kept here ends.
    void ForgetFunctions();

    ///@{
    /// What every scriptable class has: its table, the rows of that, and its descriptor. A host's class has them too,
    /// and the virtual functions GetJSLink and GetJSMap: see docs/scripting.md.
    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;
    ///@}

private:
    friend class CJScriptLinkClass;

    /// Functions of script that are kept alive.
    struct Functions
    {
        CJScript* script;                   ///< Where they are rooted.
        std::list<JSFunction*> kept;        ///< Each node's word is a root.
        std::vector<JSFunction*> onDestroy; ///< To be called; all are in `kept` too.
    };

    /// How far the deletion of the native object has come.
    enum class Deletion : std::uint8_t
    {
        None,
        AtSafePoint, ///< The engine has been asked for a call when nothing uses the object.
        Waiting,     ///< Among those that the application deletes when it is idle.
        Scheduled    ///< A window, in the application's own list.
    };

    void DeleteOwnerLater(JSContext* cx);
    void DeleteOwner();
    void CancelDeletion();
    void SetJSObject(JSContext* cx, JSObject* object);
    bool Attach(JSContext* cx, JSObject* object);
    void SetName(const wxString& name);
    bool CallWith(JSFunction* function, bool& result, int argc, jsval* argv);

    // Documents have a link for each node that script has seen, so what few links have is made on demand.
    wxObject* m_owner = nullptr;
    CJScriptLinkClass* m_jsClass = nullptr;
    JSObject* m_jsObject = nullptr;
    JSContext* m_context = nullptr;
    std::unique_ptr<wxString> m_name; ///< Null for a child: the made-up one.
    std::unique_ptr<Functions> m_functions;
    JSLateChild m_late;                ///< The property of the made-up name, as long as nobody has looked for it.
    JSCallTicket m_deletionTicket = 0; ///< By which the coming deletion is taken back.
    std::size_t m_announcedBytes = 0;
    bool m_isChild = false;   ///< A property of another link's object.
    bool m_isUnnamed = false; ///< Made because it is a property of another class: the first name given becomes its own.
    bool m_dynamic = false;
    bool m_scopeDelete = false;
    bool m_isEventHandler = false;
    Deletion m_deletion = Deletion::None;
};
