#pragma once

#include <wx/string.h>
#include <wx/xml/xml.h>

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>

namespace xml_detail
{

/// Whether two texts are the same but for case.
inline bool IsSameNoCase(const wxString& a, const wxString& b)
{
    return a.length() == b.length() && (a == b || a.CmpNoCase(b) == 0);
}

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

/// The children of a node, in their order, to be asked without a walk: which is the first, from a child on, that fits a
/// query, and which stands before a child. It is told of every change.
///
/// The order is kept in numbers that leave room for children in between; where the room is used up, those around are
/// numbered anew, so that a change costs the logarithm of the number of children, whatever the order of changes.
class ChildIndex
{
public:
    explicit ChildIndex(const wxXmlNode& parent);
    ChildIndex(const ChildIndex&) = delete;
    ChildIndex& operator=(const ChildIndex&) = delete;

    /// `from` itself, if it fits, or the first behind it; null when there is none.
    wxXmlNode* FirstFrom(wxXmlNode& from, const ChildQuery& query);
    wxXmlNode* Previous(const wxXmlNode& child) const;

    /// After a child has been linked in behind `previous` (null: as the first).
    void Add(wxXmlNode& child, const wxXmlNode* previous);
    /// Before a child is unlinked.
    void Remove(const wxXmlNode& child);

private:
    using Label = std::uint64_t;

    struct Place
    {
        wxXmlNode* node = nullptr;
        Place* previous = nullptr;
        Place* next = nullptr;
        Label label = 0;
    };
    struct InOrder
    {
        bool operator()(const Place* a, const Place* b) const { return a->label < b->label; }
    };
    using Places = std::set<Place*, InOrder>;

    /// Who fits which query; made when it pays.
    struct Table
    {
        std::size_t walked = 0;
        bool isMade = false;
        std::unordered_map<std::wstring, Places> places;
    };

    void Number(Place& place);
    static void MakeRoomAround(Place& place);
    Table& TableFor(const ChildQuery& query);
    void Fill(Table& table, const wxString* attributeName);
    template <typename Change> void ChangeTables(const wxXmlNode& child, Change change);

    std::unordered_map<const wxXmlNode*, Place> m_places;
    Place* m_first = nullptr;
    Table m_byName;
    std::unordered_map<wxString, Table> m_byAttribute;
};

} // namespace xml_detail
