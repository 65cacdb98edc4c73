#include "xml/merge_index_detail.h"

#include "base/case_folding_detail.h"

#include <algorithm>
#include <utility>

using vcq::detail::FoldCase;
using vcq::detail::IsSameNoCase;

namespace xml_detail
{

namespace
{

/// As long as what is looked for is found so near on the average, a table would cost more than it saves: that of an
/// attribute which many share is the most costly of all.
constexpr std::size_t ShortWalk = 16;

void AddToHash(std::uint64_t& hash, std::uint64_t value)
{
    hash = (hash ^ value) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
}

void AddToHash(std::uint64_t& hash, const wxString& text)
{
    const wchar_t* const characters = text.wx_str();
    for (std::size_t i = 0; i < text.length(); ++i)
        AddToHash(hash, static_cast<std::uint64_t>(FoldCase(characters[i])));
    AddToHash(hash, text.length());
}

/// The same for all that differs in case only.
std::uint64_t HashOf(const wxString& name, const wxXmlAttribute* attribute)
{
    std::uint64_t hash = 0;
    AddToHash(hash, name);
    if (attribute)
        AddToHash(hash, attribute->GetValue());
    // No key of a map is 0.
    return hash ? hash : 1;
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

void ChildIndex::Table::Add(std::uint64_t hash, Place& place)
{
    const bool isNew = !single.Find(hash);
    Place*& only = single[hash];
    if (isNew) {
        only = &place;
        return;
    }
    Places& places = several[hash];
    if (only)
        places.insert(std::exchange(only, nullptr));
    // Most are added in order.
    places.insert(places.end(), &place);
}

void ChildIndex::Table::Remove(std::uint64_t hash, Place& place)
{
    Place*& only = single[hash];
    if (only)
        only = nullptr;
    else
        several[hash].erase(&place);
}

ChildIndex::Place* ChildIndex::Table::Walk(Place& from, const ChildQuery& query)
{
    ++asked;
    Place* place = &from;
    for (; place && !query.Fits(*place->node); ++walked)
        place = place->next;
    return place;
}

ChildIndex::Place* ChildIndex::Table::FirstFrom(Place& from, std::uint64_t hash, const ChildQuery& query) const
{
    // Those that do not fit have the same hash by chance.
    const auto fits = [&](const Place* place) { return query.Fits(*place->node); };
    Place* const* const only = single.Find(hash);
    if (!only)
        return nullptr;
    if (*only)
        return (*only)->label >= from.label && fits(*only) ? *only : nullptr;
    const auto places = several.find(hash);
    if (places == several.end())
        return nullptr;
    const auto end = places->second.end();
    const auto found = std::find_if(places->second.lower_bound(&from), end, fits);
    return found == end ? nullptr : *found;
}

wxXmlNode* ChildIndex::FirstFrom(wxXmlNode& from, const ChildQuery& query)
{
    Table& table = TableFor(query);
    Place* const found = table.isMade ? table.FirstFrom(m_order.Of(from), HashOf(query.name, query.attribute), query)
                                      : table.Walk(m_order.Of(from), query);
    if (!found)
        return nullptr;
    m_order.Expect(*found);
    return found->node;
}

wxXmlNode* ChildIndex::Previous(const wxXmlNode& child)
{
    Place& place = m_order.Of(child);
    m_order.Expect(place);
    return place.previous ? place.previous->node : nullptr;
}

ChildIndex::Table& ChildIndex::TableFor(const ChildQuery& query)
{
    Table& table = query.attribute ? m_byAttribute[query.attribute->GetName()] : m_byName;
    if (!table.isMade && table.walked >= m_patience && table.walked >= ShortWalk * table.asked)
        Fill(table, query.attribute ? &query.attribute->GetName() : nullptr);
    return table;
}

void ChildIndex::Fill(Table& table, const wxString* attributeName)
{
    table.isMade = true;
    table.single.Reserve(m_order.Count());
    for (Place* place = m_order.First(); place; place = place->next) {
        const wxXmlAttribute* const attribute = attributeName ? FindAttribute(*place->node, *attributeName) : nullptr;
        if (attribute || !attributeName)
            table.Add(HashOf(place->node->GetName(), attribute), *place);
    }
}

/// Calls `change` with each table that is made and what the child's hash is there.
template <typename Change> void ChildIndex::ChangeTables(const wxXmlNode& child, Change change)
{
    if (m_byName.isMade)
        change(m_byName, HashOf(child.GetName(), nullptr));
    if (m_byAttribute.empty())
        return;
    for (const wxXmlAttribute* attribute = child.GetAttributes(); attribute; attribute = attribute->GetNext()) {
        const auto table = m_byAttribute.find(attribute->GetName());
        if (table != m_byAttribute.end() && table->second.isMade &&
            FindAttribute(child, attribute->GetName()) == attribute)
            change(table->second, HashOf(child.GetName(), attribute));
    }
}

void ChildIndex::Add(wxXmlNode& child, const wxXmlNode* previous)
{
    Place& place = m_order.Add(child, previous);
    ChangeTables(child, [&](Table& table, std::uint64_t hash) { table.Add(hash, place); });
}

void ChildIndex::Remove(const wxXmlNode& child)
{
    Place& place = m_order.Of(child);
    ChangeTables(child, [&](Table& table, std::uint64_t hash) { table.Remove(hash, place); });
    m_order.Remove(place);
}

} // namespace xml_detail
