#include "xml/merge_order_detail.h"

namespace xml_detail
{

namespace
{

/// Labels are below 2^LabelBits.
constexpr int LabelBits = 62;

/// What must be free on the average between neighbours that get new labels.
constexpr std::uint64_t MinRoom = 4;

/// How many times the places a range of twice the labels may hold before a wider one gets new labels.
constexpr double CapacityGrowth = 1.5;

} // namespace

ChildOrder::ChildOrder(const wxXmlNode& parent)
{
    for (wxXmlNode* node = parent.GetChildren(); node; node = node->GetNext())
        m_places.emplace_back().node = node;
    const Label room = (Label(1) << LabelBits) / (m_places.size() + 1);
    Label label = 0;
    Place* last = nullptr;
    for (Place& place : m_places) {
        place.label = label += room;
        place.previous = last;
        (last ? last->next : m_first) = &place;
        last = &place;
    }
}

ChildOrder::Place& ChildOrder::Of(const wxXmlNode& child)
{
    for (Place* const place : {m_expected, m_expected ? m_expected->previous : nullptr, m_first}) {
        if (IsOf(place, child))
            return *place;
    }
    if (m_byNode.IsEmpty())
        FillByNode();
    return **m_byNode.Find(KeyOf(child));
}

void ChildOrder::FillByNode()
{
    m_byNode.Reserve(Count());
    for (Place* place = m_first; place; place = place->next)
        m_byNode[KeyOf(*place->node)] = place;
}

ChildOrder::Place& ChildOrder::Add(wxXmlNode& child, const wxXmlNode* previous)
{
    Place& place = m_added.emplace_back();
    place.node = &child;
    place.previous = previous ? &Of(*previous) : nullptr;
    place.next = place.previous ? place.previous->next : m_first;
    Number(place);
    (place.previous ? place.previous->next : m_first) = &place;
    if (place.next)
        place.next->previous = &place;
    if (!m_byNode.IsEmpty())
        m_byNode[KeyOf(child)] = &place;
    return place;
}

void ChildOrder::Remove(Place& place)
{
    (place.previous ? place.previous->next : m_first) = place.next;
    if (place.next)
        place.next->previous = place.previous;
    if (m_expected == &place)
        m_expected = nullptr;
}

/// Gives a place a label between those of its neighbours, which do not know it yet.
void ChildOrder::Number(Place& place)
{
    const auto low = [&] { return place.previous ? place.previous->label : 0; };
    const auto high = [&] { return place.next ? place.next->label : Label(1) << LabelBits; };
    while (high() - low() < 2)
        MakeRoomAround(place.previous ? *place.previous : *place.next);
    place.label = low() + (high() - low()) / 2;
}

/// Gives the places around one new labels, over the smallest range that is not crowded.
void ChildOrder::MakeRoomAround(Place& place)
{
    Place* first = &place;
    Place* last = &place;
    std::size_t count = 1;
    double capacity = 1;
    for (int bits = 1; bits <= LabelBits; ++bits) {
        const Label size = Label(1) << bits;
        const Label low = place.label & ~(size - 1);
        const auto isInside = [&](const Place* other) { return other && other->label - low < size; };
        for (; isInside(first->previous); ++count)
            first = first->previous;
        for (; isInside(last->next); ++count)
            last = last->next;
        capacity *= CapacityGrowth;
        const Label room = size / count;
        if (static_cast<double>(count) > capacity || room < MinRoom)
            continue;
        Label label = low + room / 2;
        for (Place* other = first; other != last->next; other = other->next, label += room)
            other->label = label;
        return;
    }
}

} // namespace xml_detail
