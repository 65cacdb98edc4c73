#include "script/callback_registry.h"

#include "script/script.h"

#include <wx/listimpl.cpp>

#include <memory>

WX_DEFINE_LIST(listJSCallBack);

namespace
{

template <typename Value> void HandOut(Value* out, const Value& value)
{
    if (out)
        *out = value;
}

void HandOut(const JSCallBackRecord& record, CJScriptLink** link, wxString* name, void** userData)
{
    HandOut(link, record.link);
    HandOut(name, record.name);
    HandOut(userData, record.userData);
}

int CompareIds(const JSCallBackRecord** left, const JSCallBackRecord** right)
{
    const int leftId = (*left)->id;
    const int rightId = (*right)->id;
    return leftId < rightId ? -1 : leftId > rightId;
}

} // namespace

CJSCallBack::~CJSCallBack()
{
    DeleteAllCallBacks();
}

wxlistJSCallBackNode* CJSCallBack::FindNode(int id, CJScriptLink* link, const wxString& name, bool persistent)
{
    for (wxlistJSCallBackNode* node = List(persistent).GetFirst(); node; node = node->GetNext()) {
        const JSCallBackRecord& record = *node->GetData();
        if (record.id == id && record.link == link && (name.empty() || record.name == name))
            return node;
    }
    return nullptr;
}

wxlistJSCallBackNode* CJSCallBack::NextWithId(wxlistJSCallBackNode* node, int id)
{
    while (node && node->GetData()->id != id)
        node = node->GetNext();
    return node;
}

bool CJSCallBack::Keep(JSCallBackRecord* record)
{
    return m_script && record->link &&
           m_script->Execute(wxString::Format(wxS("Global.P%p=this;"), static_cast<void*>(record)), record->link,
                             nullptr);
}

void CJSCallBack::Release(JSCallBackRecord* record)
{
    if (m_script)
        m_script->Execute(wxString::Format(wxS("Global.P%p=null;"), static_cast<void*>(record)), m_ownLink, nullptr);
}

void CJSCallBack::RegisterCallBack(int id, CJScriptLink* link, const wxString& name, bool persistent, void* userData)
{
    if (FindCallBack(id, link, name, persistent))
        return;
    auto record = std::make_unique<JSCallBackRecord>(JSCallBackRecord{id, link, name, persistent, userData});
    if (!Keep(record.get()))
        return;
    List(persistent).Append(record.release());
    // Users rely on the one-shot records being in order once a persistent one has come.
    if (persistent)
        m_oneShot.Sort(&CompareIds);
}

bool CJSCallBack::FindCallBack(int id, CJScriptLink* link, const wxString& name, bool persistent)
{
    return FindNode(id, link, name, persistent) != nullptr;
}

bool CJSCallBack::GetCallBack(int id, CJScriptLink** link, wxString* name, void** userData)
{
    wxlistJSCallBackNode* const node = NextWithId(m_oneShot.GetFirst(), id);
    if (!node)
        return false;
    const std::unique_ptr<JSCallBackRecord> record(node->GetData());
    m_oneShot.Erase(node);
    HandOut(*record, link, name, userData);
    Release(record.get());
    return true;
}

bool CJSCallBack::UnregisterCallBack(int id, CJScriptLink* link, const wxString& name, void** userData)
{
    wxlistJSCallBackNode* const node = FindNode(id, link, name, true);
    if (!node)
        return true;
    const std::unique_ptr<JSCallBackRecord> record(node->GetData());
    m_persisted.Erase(node);
    Release(record.get());
    HandOut(userData, record->userData);
    return true;
}

bool CJSCallBack::GetUserData(int id, CJScriptLink* link, const wxString& name, bool persistent, void** userData)
{
    const wxlistJSCallBackNode* const node = userData ? FindNode(id, link, wxString(), persistent) : nullptr;
    if (!node)
        return false;
    if (name.empty() || node->GetData()->name == name)
        *userData = node->GetData()->userData;
    return true;
}

bool CJSCallBack::GetFirst(int id, wxlistJSCallBackNode*& node, CJScriptLink** link, wxString* name, void** userData)
{
    if (m_persisted.IsEmpty())
        HandOut(JSCallBackRecord{0, nullptr, wxString(), true, nullptr}, link, name, userData);
    node = NextWithId(m_persisted.GetFirst(), id);
    if (node)
        HandOut(*node->GetData(), link, name, userData);
    return node != nullptr;
}

bool CJSCallBack::GetNext(int id, wxlistJSCallBackNode*& node, CJScriptLink** link, wxString* name, void** userData)
{
    if (!node) {
        HandOut(userData, static_cast<void*>(nullptr));
        return false;
    }
    node = NextWithId(node->GetNext(), id);
    if (node)
        HandOut(*node->GetData(), link, name, userData);
    return node != nullptr;
}

int CJSCallBack::GetCallBackCount(int id)
{
    int count = 0;
    for (wxlistJSCallBackNode* node = m_persisted.GetFirst(); (node = NextWithId(node, id)); node = node->GetNext())
        ++count;
    return count;
}

void CJSCallBack::DeleteAll(listJSCallBack& list)
{
    // Releasing runs script, which may register or fetch others: take the first as long as there is one.
    while (wxlistJSCallBackNode* const node = list.GetFirst()) {
        const std::unique_ptr<JSCallBackRecord> record(node->GetData());
        list.Erase(node);
        Release(record.get());
    }
}

void CJSCallBack::DeleteAllCallBacks()
{
    DeleteAll(m_oneShot);
    DeleteAll(m_persisted);
}
