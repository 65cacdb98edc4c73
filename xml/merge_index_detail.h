#pragma once

#include "xml/merge_order_detail.h"

#include <wx/string.h>
#include <wx/xml/xml.h>

#include <cstdint>
#include <set>
#include <unordered_map>

namespace xml_detail
{

/// The attribute of this name that counts: the first. Null when there is none.
const wxXmlAttribute* FindAttribute(const wxXmlNode& node, const wxString& name);

/// What a child is looked for by: its name and, unless null, an attribute that it must have with the same value. Case
/// counts in the attribute's name only.
struct ChildQuery
{
    const wxString& name;
    const wxXmlAttribute* attribute;

    bool Fits(const wxXmlNode& node) const;
};

/// The children of a node, to be asked without a walk: which is the first, from a child on, that fits a query, and
/// which stands before a child. It is told of every change.
class ChildIndex
{
public:
    /// @param patience how far the children are walked for an attribute before a table is made for it.
    ChildIndex(const wxXmlNode& parent, std::size_t patience) : m_order(parent), m_patience(patience) {}

    /// `from` itself, if it fits, or the first behind it; null when there is none.
    wxXmlNode* FirstFrom(wxXmlNode& from, const ChildQuery& query);
    /// Null for the first child.
    wxXmlNode* Previous(const wxXmlNode& child);

    /// After a child has been linked in behind `previous` (null: as the first).
    void Add(wxXmlNode& child, const wxXmlNode* previous);
    /// Before a child is unlinked.
    void Remove(const wxXmlNode& child);

private:
    using Place = ChildOrder::Place;

    struct InOrder
    {
        bool operator()(const Place* a, const Place* b) const { return a->label < b->label; }
    };
    using Places = std::set<Place*, InOrder>;

    /// Who fits which query, by the hash of the query; made when it pays.
    struct Table
    {
        std::size_t asked = 0;
        std::size_t walked = 0;
        bool isMade = false;
        PointerMap<Place> single;
        std::unordered_map<std::uint64_t, Places> several; ///< For a hash that has a null in `single`.

        void Add(std::uint64_t hash, Place& place);
        void Remove(std::uint64_t hash, Place& place);
        Place* Walk(Place& from, const ChildQuery& query);
        Place* FirstFrom(Place& from, std::uint64_t hash, const ChildQuery& query) const;
    };

    Table& TableFor(const ChildQuery& query);
    void Fill(Table& table, const wxString* attributeName);
    template <typename Change> void ChangeTables(const wxXmlNode& child, Change change);

    ChildOrder m_order;
    const std::size_t m_patience;
    Table m_byName;
    std::unordered_map<wxString, Table> m_byAttribute;
};

} // namespace xml_detail
