#include "xml/tree_links_detail.h"
#include "xml/xml_document.h"
#include "xml/xml_node_ref.h"

#include <wx/xml/xml.h>

#include <algorithm>
#include <utility>

/// The handles on a node of this tree: this document's own, and guests, which are no longer known here afterwards.
std::vector<CXmlNode*> CXmlDocument::HandlesOf(wxXmlNode* node)
{
    std::vector<CXmlNode*> handles;
    const auto own = m_nodes.empty() ? m_nodes.end() : m_nodes.find(node);
    if (own != m_nodes.end())
        handles.push_back(own->second);
    if (m_guests.empty())
        return handles;
    const auto [first, end] = m_guests.equal_range(node);
    for (auto guest = first; guest != end; ++guest)
        handles.push_back(guest->second);
    m_guests.erase(first, end);
    return handles;
}

/// Makes the references to a node, and to what is below it, this document's.
void CXmlDocument::TakeOverRefs(const wxXmlNode* top, CXmlDocument& from)
{
    const auto stays = [&](const CXmlNodeRef* ref) { return !xml_detail::IsWithin(ref->m_node, top); };
    const auto moved = std::stable_partition(from.m_refs.begin(), from.m_refs.end(), stays);
    for (auto ref = moved; ref != from.m_refs.end(); ++ref) {
        (*ref)->m_document = this;
        m_refs.push_back(*ref);
    }
    from.m_refs.erase(moved, from.m_refs.end());
}

/// Makes the handles on a node, and on what is below it, handles on nodes of this tree, as well as the references to
/// them: it has been, or will be, moved here from another document. That one goes on to own its handles.
void CXmlDocument::TakeOver(wxXmlNode* top, CXmlDocument& from)
{
    if (&from == this)
        return;
    TakeOverRefs(top, from);
    unsigned int depth = 0;
    for (wxXmlNode* node = top; node; node = xml_detail::NextInTree(node, top, depth)) {
        for (CXmlNode* const handle : from.HandlesOf(node)) {
            // One that was moved into another one that was moved comes twice.
            const bool isHere = std::exchange(handle->m_document, this) == this;
            if (handle->IsGuest() && !isHere)
                m_guests.emplace(node, handle);
        }
    }
}

/// Before a node is deleted.
void CXmlDocument::EmptyHandles(wxXmlNode* node)
{
    for (CXmlNode* const handle : HandlesOf(node)) {
        handle->m_document = handle->m_owner;
        handle->SetXmlNode(nullptr);
    }
}

/// Before the whole tree is deleted.
void CXmlDocument::SendGuestsHome()
{
    for (const auto& [node, handle] : std::exchange(m_guests, {})) {
        handle->m_document = handle->m_owner;
        handle->SetXmlNode(nullptr);
    }
}

/// Before a handle ends, or is to stand for a node of its own document: the document that it is a guest of, if any,
/// forgets it.
void CXmlDocument::CallHome(CXmlNode& handle)
{
    if (!handle.IsGuest())
        return;
    auto& guests = handle.m_document->m_guests;
    auto [guest, end] = guests.equal_range(handle.m_node);
    while (guest != end && guest->second != &handle)
        ++guest;
    if (guest != end)
        guests.erase(guest);
    handle.m_document = handle.m_owner;
}
