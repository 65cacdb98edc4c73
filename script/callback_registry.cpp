#include "script/callback_registry.h"

#include "script/script.h"
#include "script/script_link.h"

#include <wx/listimpl.cpp>

#include <memory>
#include <vector>

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

CJSCallBack::CJSCallBack(const CJSCallBack& other)
    : wxObject(other), m_script(other.m_script), m_ownLink(other.m_ownLink)
{
    CopyRecords(other);
}

CJSCallBack& CJSCallBack::operator=(const CJSCallBack& other)
{
    if (this == &other)
        return *this;
    wxObject::operator=(other);
    DeleteAllCallBacks();
    m_script = other.m_script;
    m_ownLink = other.m_ownLink;
    CopyRecords(other);
    return *this;
}

CJSCallBack::~CJSCallBack()
{
    m_ending = true;
    DeleteAllCallBacks();
}

void CJSCallBack::CopyRecords(const CJSCallBack& other)
{
    for (const listJSCallBack* const list : {&other.m_oneShot, &other.m_persisted}) {
        for (const wxlistJSCallBackNode* node = list->GetFirst(); node; node = node->GetNext())
            Add(*node->GetData());
    }
}

void CJSCallBack::Add(const JSCallBackRecord& model)
{
    auto record = std::make_unique<JSCallBackRecord>(model);
    if (Keep(record.get()))
        List(model.persistent).Append(record.release());
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
    // A link without an object would have the global object kept in its place.
    return m_script && !m_ending && (!record->link || record->link->GetJSObject()) &&
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
    Add(JSCallBackRecord{id, link, name, persistent, userData});
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

void CJSCallBack::DeleteAllCallBacks()
{
    // Releasing runs script, which may fetch records or register others: the lists are empty before the first release,
    // and what comes meanwhile stays.
    std::vector<std::unique_ptr<JSCallBackRecord>> records;
    for (listJSCallBack* const list : {&m_oneShot, &m_persisted}) {
        for (const wxlistJSCallBackNode* node = list->GetFirst(); node; node = node->GetNext())
            records.emplace_back(node->GetData());
        list->Clear();
    }
    for (const auto& record : records)
        Release(record.get());
}
