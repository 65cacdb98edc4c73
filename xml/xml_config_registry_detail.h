#pragma once

#include "xml/xml_config.h"

#include <wx/hashmap.h>

#include <cstddef>
#include <memory>
#include <set>
#include <unordered_map>
#include <vector>

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
    /// None that is registered has a higher number.
    Id Last() const { return m_slots.empty() ? 0 : m_slots.back().id; }

private:
    class Registered;

    struct Slot
    {
        Id id;
        std::unique_ptr<Entry> entry; ///< Null when the registration has ended.
    };

    std::size_t PositionOf(Id id) const;
    void RemoveEndedSlots();
    void ForgetLink(const CJScriptLink* link);
    void KeepAlive(const CJScriptLink& link, bool keep) const;

    const CJScriptLink& m_keeper;
    Id m_lastId = 0;
    std::vector<Slot> m_slots; ///< By rising numbers.
    std::size_t m_ended = 0;   ///< So many slots are of registrations that have ended.
    std::unordered_map<wxString, Id, wxStringHash, wxStringEqual> m_byName;
    std::unordered_map<const CJScriptLink*, std::unique_ptr<Registered>> m_byLink;
};
