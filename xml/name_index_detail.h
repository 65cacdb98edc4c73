#pragma once

#include <wx/string.h>

#include <cstddef>
#include <vector>

class wxXmlNode;

namespace xml_detail
{

/// The first of siblings of each name. Refers to the nodes, so none may go or be renamed while it is in use; it copies
/// no names, since the index of a large file would cost more than finding something in it.
class NameIndex
{
public:
    /// @param first with its next siblings.
    explicit NameIndex(wxXmlNode* first);

    /// Adds a node that stands behind all others.
    void Add(wxXmlNode* node);
    /// Null when there is none.
    wxXmlNode* Find(const wxString& name) const;

private:
    struct Slot
    {
        unsigned long hash = 0;
        wxXmlNode* node = nullptr;
    };

    std::size_t PositionOf(unsigned long hash, const wxString& name) const;
    void Grow();

    std::vector<Slot> m_slots; ///< As many as a power of two, never more than half of them used.
    std::size_t m_used = 0;
};

} // namespace xml_detail
