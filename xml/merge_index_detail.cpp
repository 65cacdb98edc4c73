#include "xml/merge_index_detail.h"

namespace xml_detail
{

namespace
{

/// Labels are below 2^LabelBits.
constexpr int LabelBits = 62;

/// What must be free on the average between neighbours that were numbered anew.
constexpr std::uint64_t MinRoom = 4;

/// A range of twice the labels may hold that many times the children, before a wider one is numbered anew.
constexpr double CapacityGrowth = 1.5;

/// How far the children are walked for an attribute before a table is made for it, which costs many walks over few
/// children and is never used again by most merges.
constexpr std::size_t StepsBeforeTable = 1000;

/// One text for all that differs in case only. A name's length stands before it, so that no name and value look like
/// another name and value.
std::wstring KeyOf(const wxString& name, const wxXmlAttribute* attribute)
{
    std::wstring key(1, static_cast<wchar_t>(name.length()));
    key += name.Lower().ToStdWstring();
    if (attribute)
        key += attribute->GetValue().Lower().ToStdWstring();
    return key;
}

} // namespace

const wxXmlAttribute* FindAttribute(const wxXmlNode& node, const wxString& name)
{
    const wxXmlAttribute* attribute = node.GetAttributes();
    while (attribute && attribute->GetName() != name)
        attribute = attribute->GetNext();
    return attribute;
}

bool ChildQuery::Fits(const wxXmlNode& node) const
{
    if (!IsSameNoCase(node.GetName(), name))
        return false;
    if (!attribute)
        return true;
    const wxXmlAttribute* const own = FindAttribute(node, attribute->GetName());
    return own && IsSameNoCase(own->GetValue(), attribute->GetValue());
}

ChildIndex::ChildIndex(const wxXmlNode& parent)
{
    Place* last = nullptr;
    for (wxXmlNode* node = parent.GetChildren(); node; node = node->GetNext()) {
        Place& place = m_places[node];
        place.node = node;
        place.previous = last;
        (last ? last->next : m_first) = &place;
        last = &place;
    }
    const Label room = (Label(1) << LabelBits) / (m_places.size() + 1);
    Label label = 0;
    for (Place* place = m_first; place; place = place->next)
        place->label = label += room;
}

/// Gives a place a label between those of its neighbours, which are not linked to it yet.
void ChildIndex::Number(Place& place)
{
    const auto low = [&] { return place.previous ? place.previous->label : 0; };
    const auto high = [&] { return place.next ? place.next->label : Label(1) << LabelBits; };
    while (high() - low() < 2)
        MakeRoomAround(place.previous ? *place.previous : *place.next);
    place.label = low() + (high() - low()) / 2;
}

/// Numbers the places around one anew, over the smallest range of labels that is not crowded.
void ChildIndex::MakeRoomAround(Place& place)
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

wxXmlNode* ChildIndex::FirstFrom(wxXmlNode& from, const ChildQuery& query)
{
    Table& table = TableFor(query);
    if (!table.isMade) {
        wxXmlNode* node = &from;
        for (; node && !query.Fits(*node); ++table.walked)
            node = node->GetNext();
        return node;
    }
    const auto entry = table.places.find(KeyOf(query.name, query.attribute));
    if (entry == table.places.end())
        return nullptr;
    const auto place = entry->second.lower_bound(&m_places.at(&from));
    return place == entry->second.end() ? nullptr : (*place)->node;
}

wxXmlNode* ChildIndex::Previous(const wxXmlNode& child) const
{
    const Place* const previous = m_places.at(&child).previous;
    return previous ? previous->node : nullptr;
}

ChildIndex::Table& ChildIndex::TableFor(const ChildQuery& query)
{
    Table& table = query.attribute ? m_byAttribute[query.attribute->GetName()] : m_byName;
    if (!table.isMade && table.walked >= StepsBeforeTable)
        Fill(table, query.attribute ? &query.attribute->GetName() : nullptr);
    return table;
}

void ChildIndex::Fill(Table& table, const wxString* attributeName)
{
    table.isMade = true;
    for (Place* place = m_first; place; place = place->next) {
        const wxXmlAttribute* const attribute = attributeName ? FindAttribute(*place->node, *attributeName) : nullptr;
        if (attributeName && !attribute)
            continue;
        Places& places = table.places[KeyOf(place->node->GetName(), attribute)];
        places.insert(places.end(), place);
    }
}

/// Calls `change` for each set of places where the child stands, or should stand.
template <typename Change> void ChildIndex::ChangeTables(const wxXmlNode& child, Change change)
{
    if (m_byName.isMade)
        change(m_byName.places[KeyOf(child.GetName(), nullptr)]);
    if (m_byAttribute.empty())
        return;
    for (const wxXmlAttribute* attribute = child.GetAttributes(); attribute; attribute = attribute->GetNext()) {
        const auto table = m_byAttribute.find(attribute->GetName());
        if (table != m_byAttribute.end() && table->second.isMade &&
            FindAttribute(child, attribute->GetName()) == attribute)
            change(table->second.places[KeyOf(child.GetName(), attribute)]);
    }
}

void ChildIndex::Add(wxXmlNode& child, const wxXmlNode* previous)
{
    Place& place = m_places[&child];
    place.node = &child;
    place.previous = previous ? &m_places.at(previous) : nullptr;
    place.next = place.previous ? place.previous->next : m_first;
    Number(place);
    (place.previous ? place.previous->next : m_first) = &place;
    if (place.next)
        place.next->previous = &place;
    ChangeTables(child, [&](Places& places) { places.insert(&place); });
}

void ChildIndex::Remove(const wxXmlNode& child)
{
    const auto entry = m_places.find(&child);
    Place& place = entry->second;
    ChangeTables(child, [&](Places& places) { places.erase(&place); });
    (place.previous ? place.previous->next : m_first) = place.next;
    if (place.next)
        place.next->previous = place.previous;
    m_places.erase(entry);
}

} // namespace xml_detail
