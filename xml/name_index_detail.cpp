#include "xml/name_index_detail.h"

#include <wx/hashmap.h>
#include <wx/xml/xml.h>

#include <utility>

namespace xml_detail
{

namespace
{

constexpr std::size_t FewestSlots = 64;

} // namespace

NameIndex::NameIndex(wxXmlNode* first)
{
    std::size_t count = 0;
    for (const wxXmlNode* node = first; node; node = node->GetNext())
        ++count;
    std::size_t slots = FewestSlots;
    while (slots < 2 * count + 2)
        slots *= 2;
    m_slots.resize(slots);
    for (wxXmlNode* node = first; node; node = node->GetNext())
        Add(node);
}

/// Where the name is, or where it belongs.
std::size_t NameIndex::PositionOf(unsigned long hash, const wxString& name) const
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t position = hash & mask;
    while (m_slots[position].node && (m_slots[position].hash != hash || m_slots[position].node->GetName() != name))
        position = (position + 1) & mask;
    return position;
}

void NameIndex::Grow()
{
    const std::vector<Slot> before = std::exchange(m_slots, std::vector<Slot>(2 * m_slots.size()));
    for (const Slot& slot : before)
        if (slot.node)
            m_slots[PositionOf(slot.hash, slot.node->GetName())] = slot;
}

void NameIndex::Add(wxXmlNode* node)
{
    if (2 * (m_used + 1) > m_slots.size())
        Grow();
    const unsigned long hash = wxStringHash()(node->GetName());
    Slot& slot = m_slots[PositionOf(hash, node->GetName())];
    if (slot.node)
        return;
    slot = {hash, node};
    ++m_used;
}

wxXmlNode* NameIndex::Find(const wxString& name) const
{
    return m_slots[PositionOf(wxStringHash()(name), name)].node;
}

} // namespace xml_detail
