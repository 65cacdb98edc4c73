#pragma once

#include "xml/merge_map_detail.h"

#include <wx/xml/xml.h>

#include <cstdint>
#include <deque>
#include <vector>

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
    /// How many children there are, removed ones included.
    std::size_t Count() const { return m_places.size() + m_added.size(); }
    /// The place of a child.
    Place& Of(const wxXmlNode& child);
    /// Expects to be asked for this place, or for the one before it, soon.
    void Expect(Place& place) { m_expected = &place; }

    /// Adds a child behind another (null: as the first).
    Place& Add(wxXmlNode& child, const wxXmlNode* previous);
    void Remove(Place& place);

private:
    using Label = std::uint64_t;

    static std::uint64_t KeyOf(const wxXmlNode& node) { return reinterpret_cast<std::uintptr_t>(&node); }
    static bool IsOf(const Place* place, const wxXmlNode& child) { return place && place->node == &child; }
    void FillByNode();
    static void Number(Place& place);
    static void MakeRoomAround(Place& place);

    // Those of removed children as well.
    std::vector<Place> m_places; ///< Of the children that were there at first.
    std::deque<Place> m_added;
    PointerMap<Place> m_byNode; ///< Empty until it is needed: most ask for what they have just found.
    Place* m_first = nullptr;
    Place* m_expected = nullptr;
};

} // namespace xml_detail
