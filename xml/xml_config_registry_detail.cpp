#include "xml/xml_config_registry_detail.h"

#include "script/script.h"

#include <wx/tracker.h>

#include <utility>

/// A link that is registered, and the registrations it has. Hears of the link's end.
class CXmlConfig::CHashMapCfgObject::Registered : public wxTrackerNode
{
public:
    Registered(CHashMapCfgObject& objects, CJScriptLink& link) : m_objects(objects), m_link(&link)
    {
        link.AddNode(this);
        m_objects.KeepAlive(link, true);
    }
    ~Registered() override
    {
        if (!m_link)
            return;
        m_link->RemoveNode(this);
        m_objects.KeepAlive(*m_link, false);
    }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;

    void OnObjectDestroy() override { m_objects.ForgetLink(std::exchange(m_link, nullptr)); }

    std::set<Id> m_ids;

private:
    CHashMapCfgObject& m_objects;
    CJScriptLink* m_link;
};

CXmlConfig::CHashMapCfgObject::CHashMapCfgObject(const CJScriptLink& keeper) : m_keeper(keeper) {}

CXmlConfig::CHashMapCfgObject::~CHashMapCfgObject()
{
    Clear();
}

/// A script object is a hidden property of the keeper's as long as it is registered, so that the collector sees who
/// needs whom.
void CXmlConfig::CHashMapCfgObject::KeepAlive(const CJScriptLink& link, bool keep) const
{
    JSContext* const cx = m_keeper.GetContext();
    if (!cx || (keep && link.GetContext() != cx))
        return;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    const wxString name = wxString::Format(wxS("(registered %p)"), static_cast<const void*>(&link));
    jsval removed = JSVAL_VOID;
    if (keep)
        JS_DefineWideProperty(cx, m_keeper.GetJSObject(), name.wx_str(), name.length(),
                              OBJECT_TO_JSVAL(link.GetJSObject()), nullptr, nullptr, 0);
    else
        JS_DeleteWideProperty2(cx, m_keeper.GetJSObject(), name.wx_str(), name.length(), &removed);
}

CXmlConfig::CHashMapCfgObject::Id CXmlConfig::CHashMapCfgObject::Set(const wxString& name, const tCfgObject& object)
{
    std::unique_ptr<Registered>& registered = m_byLink[object.link];
    if (!registered)
        registered = std::make_unique<Registered>(*this, *object.link);
    const Id id = ++m_lastId;
    registered->m_ids.insert(id);
    m_entries.emplace(id, Entry{name, object});
    // Only now: the registration whose place this takes may be the link's only other one.
    Erase(std::exchange(m_byName[name], id));
    return id;
}

void CXmlConfig::CHashMapCfgObject::Erase(Id id)
{
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end())
        return;
    const auto byName = m_byName.find(entry->second.name);
    if (byName != m_byName.end() && byName->second == id)
        m_byName.erase(byName);
    const auto byLink = m_byLink.find(entry->second.object.link);
    m_entries.erase(entry);
    byLink->second->m_ids.erase(id);
    if (byLink->second->m_ids.empty())
        m_byLink.erase(byLink);
}

void CXmlConfig::CHashMapCfgObject::Clear()
{
    while (!m_entries.empty())
        Erase(m_entries.begin()->first);
}

void CXmlConfig::CHashMapCfgObject::ForgetLink(const CJScriptLink* link)
{
    KeepAlive(*link, false);
    while (const Id id = Find(link))
        Erase(id);
}

CXmlConfig::CHashMapCfgObject::Id CXmlConfig::CHashMapCfgObject::Find(const wxString& name) const
{
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? 0 : found->second;
}

CXmlConfig::CHashMapCfgObject::Id CXmlConfig::CHashMapCfgObject::Find(const CJScriptLink* link) const
{
    const auto found = m_byLink.find(link);
    return found == m_byLink.end() ? 0 : *found->second->m_ids.begin();
}

CXmlConfig::CHashMapCfgObject::Entry* CXmlConfig::CHashMapCfgObject::Get(Id id)
{
    const auto found = m_entries.find(id);
    return found == m_entries.end() ? nullptr : &found->second;
}

CXmlConfig::CHashMapCfgObject::Id CXmlConfig::CHashMapCfgObject::Next(Id id) const
{
    const auto next = m_entries.upper_bound(id);
    return next == m_entries.end() ? 0 : next->first;
}
