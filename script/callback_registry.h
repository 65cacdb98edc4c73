#pragma once

#include "base/api.h"

#include <wx/list.h>
#include <wx/object.h>
#include <wx/string.h>

class CJScript;
class CJScriptLink;

/// One remembered script function.
struct VC_QXPARSER_API JSCallBackRecord
{
    int id;             ///< An event or purpose, numbered by the host.
    CJScriptLink* link; ///< The object whose function is to be called.
    wxString name;      ///< The function's name.
    bool persistent;    ///< Which list the record lives in.
    void* userData;     ///< The host's, returned with the record and never touched.
};

WX_DECLARE_EXPORTED_LIST(JSCallBackRecord, listJSCallBack);

/// A place in the persistent list, for GetFirst and GetNext.
using wxlistJSCallBackNode = listJSCallBack::Node;

/// Remembers script functions that a host wants to call later, and keeps the objects they belong to alive meanwhile.
/// One-shot records are taken out when they are fetched; persistent ones stay until they are unregistered.
///
/// An object is kept alive by a property of the script object that is bound to the name `Global` (CJScript::SetGlobal),
/// so a registry that is to keep anything needs a context with a global of that name.
class VC_QXPARSER_API CJSCallBack : public wxObject
{
public:
    /// @param ownLink the link of the object that owns the registry; not owned.
    explicit CJSCallBack(CJScriptLink* ownLink) : m_ownLink(ownLink) {}

    ///@{
    /// A copy has records of its own, which keep the objects alive by themselves. Assigning deletes the records that
    /// were there.
    CJSCallBack(const CJSCallBack& other);
    CJSCallBack& operator=(const CJSCallBack& other);
    ///@}

    ~CJSCallBack() override;

    /// The context that keeps objects alive; not owned, may be null. Set null before it ends.
    void SetJScript(CJScript* script) { m_script = script; }

    /// Remembers a function, unless FindCallBack finds it already (the first user data stays) or its object cannot be
    /// kept alive. A null `link` is the global object's.
    void RegisterCallBack(int id, CJScriptLink* link, const wxString& name, bool persistent, void* userData);

    /// Whether there is a record of this id and link, and of this name (empty: any).
    bool FindCallBack(int id, CJScriptLink* link, const wxString& name, bool persistent);

    /// Takes the first one-shot record with this id out; its parts go to the arguments that are not null.
    bool GetCallBack(int id, CJScriptLink** link, wxString* name, void** userData);

    /// Forgets the first persistent record that FindCallBack would find; `userData` (may be null) receives its user
    /// data.
    /// @return true, also when there is none.
    bool UnregisterCallBack(int id, CJScriptLink* link, const wxString& name, void** userData);

    /// The user data of the first record with this id and link, when `name` is empty or its name; `userData` stays as
    /// it is when the name differs.
    /// @return false when there is no such record or `userData` is null.
    bool GetUserData(int id, CJScriptLink* link, const wxString& name, bool persistent, void** userData);

    ///@{
    /// The first and the next persistent record with this id, in the order of registration. False when there is none
    /// (more).
    bool GetFirst(int id, wxlistJSCallBackNode*& node, CJScriptLink** link, wxString* name, void** userData);
    bool GetNext(int id, wxlistJSCallBackNode*& node, CJScriptLink** link, wxString* name, void** userData);
    ///@}

    /// The number of persistent records with this id.
    int GetCallBackCount(int id);

    /// Deletes all records that there are; what script registers while they are released stays, but not in the end of
    /// the registry itself.
    void DeleteAllCallBacks();

private:
    listJSCallBack& List(bool persistent) { return persistent ? m_persisted : m_oneShot; }
    wxlistJSCallBackNode* FindNode(int id, CJScriptLink* link, const wxString& name, bool persistent);
    static wxlistJSCallBackNode* NextWithId(wxlistJSCallBackNode* node, int id);
    bool Keep(JSCallBackRecord* record);
    void Release(JSCallBackRecord* record);
    void Add(const JSCallBackRecord& model);
    void CopyRecords(const CJSCallBack& other);

    CJScript* m_script = nullptr;
    CJScriptLink* m_ownLink;
    listJSCallBack m_oneShot;
    listJSCallBack m_persisted;
    bool m_ending = false;
};
