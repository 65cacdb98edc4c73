#include "xml/xml_config_registry_detail.h"

#include "script/script.h"

#include <wx/tracker.h>

#include <algorithm>
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
    m_slots.push_back({id, std::make_unique<Entry>(Entry{name, object})});
    // Only now: the registration whose place this takes may be the link's only other one.
    Erase(std::exchange(m_byName[name], id));
    return id;
}

/// Where the slot of `id` is, or the first one behind it. While nothing ends, numbers are as far apart as slots.
std::size_t CXmlConfig::CHashMapCfgObject::PositionOf(Id id) const
{
    if (m_slots.empty() || id <= m_slots.front().id)
        return 0;
    const std::size_t guess = id - m_slots.front().id;
    if (guess < m_slots.size() && m_slots[guess].id == id)
        return guess;
    const auto found = std::lower_bound(m_slots.begin(), m_slots.end(), id,
                                        [](const Slot& slot, Id wanted) { return slot.id < wanted; });
    return static_cast<std::size_t>(found - m_slots.begin());
}

void CXmlConfig::CHashMapCfgObject::RemoveEndedSlots()
{
    const auto ended = [](const Slot& slot) { return !slot.entry; };
    m_slots.erase(std::remove_if(m_slots.begin(), m_slots.end(), ended), m_slots.end());
    m_ended = 0;
}

void CXmlConfig::CHashMapCfgObject::Erase(Id id)
{
    const Entry* const entry = Get(id);
    if (!entry)
        return;
    const auto byName = m_byName.find(entry->name);
    if (byName != m_byName.end() && byName->second == id)
        m_byName.erase(byName);
    const auto byLink = m_byLink.find(entry->object.link);
    m_slots[PositionOf(id)].entry.reset();
    if (++m_ended * 2 > m_slots.size())
        RemoveEndedSlots();
    byLink->second->m_ids.erase(id);
    if (byLink->second->m_ids.empty())
        m_byLink.erase(byLink);
}

void CXmlConfig::CHashMapCfgObject::Clear()
{
    for (Id id = Next(0); id; id = Next(id))
        Erase(id);
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
    const std::size_t position = PositionOf(id);
    return position < m_slots.size() && m_slots[position].id == id ? m_slots[position].entry.get() : nullptr;
}

CXmlConfig::CHashMapCfgObject::Id CXmlConfig::CHashMapCfgObject::Next(Id id) const
{
    std::size_t position = PositionOf(id + 1);
    while (position < m_slots.size() && !m_slots[position].entry)
        ++position;
    return position < m_slots.size() ? m_slots[position].id : 0;
}
