#pragma once

#include "xml/merge_map_detail.h"

#include <wx/xml/xml.h>

#include <cstdint>
#include <deque>

namespace xml_detail
{

/// The order of the children of a node: which of two comes first and what stands before a child are known without a
/// walk. It is told of every change.
///
/// Places have labels that grow from child to child, with room for more in between. Where the room is used up, the
/// places around get new ones, over a range that is the wider the more crowded it is, so that an insertion costs the
/// square of the logarithm of the number of children on the average, whatever the order of insertions.
class ChildOrder
{
public:
    struct Place
    {
        wxXmlNode* node = nullptr;
        Place* previous = nullptr;
        Place* next = nullptr;
        std::uint64_t label = 0;
    };

    explicit ChildOrder(const wxXmlNode& parent);
    ChildOrder(const ChildOrder&) = delete;
    ChildOrder& operator=(const ChildOrder&) = delete;

    Place* First() const { return m_first; }
    /// The place of a child.
    Place& Of(const wxXmlNode& child) const { return **m_byNode.Find(KeyOf(child)); }

    /// Adds a child behind another (null: as the first).
    Place& Add(wxXmlNode& child, const wxXmlNode* previous);
    void Remove(Place& place);

private:
    using Label = std::uint64_t;

    static std::uint64_t KeyOf(const wxXmlNode& node) { return reinterpret_cast<std::uintptr_t>(&node); }
    static void Number(Place& place);
    static void MakeRoomAround(Place& place);

    std::deque<Place> m_places; ///< Those of removed children as well.
    PointerMap<Place> m_byNode;
    Place* m_first = nullptr;
};

} // namespace xml_detail
