#pragma once

#include "xml/xml_config.h"

#include <wx/hashmap.h>

#include <map>
#include <memory>
#include <set>
#include <unordered_map>

/// The registrations of a configuration by name and by link, in the order in which they were made. Each has a number,
/// higher than those before; whoever goes through them goes from number to number, so that anything may be registered
/// and unregistered meanwhile.
class CXmlConfig::CHashMapCfgObject
{
public:
    using Id = unsigned long; ///< 0 is none.

    struct Entry
    {
        wxString name;
        tCfgObject object;
        bool pending = false; ///< It is to be loaded, or being loaded.
    };

    /// @param keeper the object that keeps registered script objects alive.
    explicit CHashMapCfgObject(const CJScriptLink& keeper);
    ~CHashMapCfgObject();

    CHashMapCfgObject(const CHashMapCfgObject&) = delete;
    CHashMapCfgObject& operator=(const CHashMapCfgObject&) = delete;

    /// Registers, in the place of a registration of this name.
    Id Set(const wxString& name, const tCfgObject& object);
    void Erase(Id id);
    void Clear();

    Id Find(const wxString& name) const;
    /// The first registration of the link.
    Id Find(const CJScriptLink* link) const;
    /// Null when the registration has ended.
    Entry* Get(Id id);
    /// The registration behind `id`; 0 behind the last one.
    Id Next(Id id) const;
    Id Last() const { return m_entries.empty() ? 0 : m_entries.rbegin()->first; }

private:
    class Registered;

    void ForgetLink(const CJScriptLink* link);
    void KeepAlive(const CJScriptLink& link, bool keep) const;

    const CJScriptLink& m_keeper;
    Id m_lastId = 0;
    std::map<Id, Entry> m_entries;
    std::unordered_map<wxString, Id, wxStringHash, wxStringEqual> m_byName;
    std::unordered_map<const CJScriptLink*, std::unique_ptr<Registered>> m_byLink;
};
