#include "base/case_folding_detail.h"
#include "xml/merge_detail.h"
#include "xml/name_index_detail.h"
#include "xml/tree_links_detail.h"
#include "xml/xml_document.h"

#include <wx/xml/xml.h>

#include <memory>
#include <vector>

using vcq::detail::IsSameNoCase;
using xml_detail::CopyMerge;
using xml_detail::DepthOf;
using xml_detail::HeightOf;
using xml_detail::IsWithin;
using xml_detail::MergeChildren;
using xml_detail::OverlayMerge;

bool CXmlDocument::MergeWith(CXmlDocument* overlay)
{
    CXmlNode* const base = GetRawRoot();
    CXmlNode* const other = overlay && overlay != this ? overlay->GetRawRoot() : nullptr;
    // Elements go over to the depth that they have in the overlay, the level below it.
    return base && other && base->GetName() == other->GetName() &&
           AllowsDepth(1 + xml_detail::ElementHeightOf(*other->m_node)) && MergeWith(base, other, nullptr, true);
}

bool CXmlDocument::MergeWith(CXmlNode* base, CXmlNode* overlay, CXmlNode* anchor, bool after)
{
    OverlayMerge merge;
    merge.Run(*base->m_node, *overlay->m_node, anchor ? anchor->m_node : nullptr, after);
    merge.GetTarget().ForEach([this](wxXmlNode* node) { ForgetChildren(node); });
    for (wxXmlNode* const node : merge.GetSources())
        overlay->m_document->ForgetChildren(node);
    const std::vector<wxXmlNode*> removed = merge.TakeRemoved();
    // The handle of the overlay's root does not move; mostly it is the only one.
    CXmlDocument& other = *overlay->m_document;
    if (other.m_nodes.size() + other.m_guests.size() > 1 || !other.m_refs.empty()) {
        for (wxXmlNode* const node : merge.GetMoved())
            TakeOver(node, other);
        // What came over inside of one of them and was removed again is not there any more.
        for (wxXmlNode* const node : removed)
            TakeOver(node, other);
    }
    EndedHandles ended;
    for (wxXmlNode* const node : removed) {
        ended.push_back(TakeHandle(node));
        DeleteUnlinked(node);
    }
    return true;
}

bool CXmlDocument::MergeXML(CXmlDocument* other, bool keepExisting)
{
    CXmlNode* const dest = GetRawRoot();
    CXmlNode* const src = other ? other->GetRawRoot() : nullptr;
    return dest && src && dest->GetName() == src->GetName() && MergeXML(dest, src, keepExisting);
}

bool CXmlDocument::MergeXML(CXmlNode* dest, CXmlNode* src, bool keepExisting)
{
    if (!dest || !src || !dest->m_node || !src->m_node)
        return false;
    wxXmlNode& into = *dest->m_node;
    wxXmlNode& from = *src->m_node;
    const bool isOverlapping = &into != &from && (IsWithin(&into, &from) || IsWithin(&from, &into));
    CXmlDocument& document = *dest->m_document;
    if (isOverlapping || !document.AllowsCopy(into, from))
        return false;
    CopyMerge merge(keepExisting);
    merge.Run(into, from);
    merge.GetTarget().ForEach([&](wxXmlNode* node) { document.ForgetChildren(node); });
    return true;
}

/// Whether what a copy adds may stand so deep; when not, the log says so.
bool CXmlDocument::AllowsCopy(wxXmlNode& dest, wxXmlNode& src) const
{
    const unsigned int depth = DepthOf(dest);
    // Nearly always there is no need to know what would be added.
    if (depth + HeightOf(src, [](const wxXmlNode&) { return true; }) <= m_maxDepth)
        return true;
    const unsigned int added = CopyMerge::DepthOfAdded(dest, src);
    return added == 0 || AllowsDepth(depth + added);
}

CXmlNode* CXmlDocument::SearchNode(const wxString& name, CXmlNode* src, CXmlNode* parent, bool nameOnly)
{
    if (!src || !parent || !src->m_node || !parent->m_node)
        return nullptr;
    MergeChildren children(*parent->m_node);
    wxXmlNode* const found = nameOnly ? children.FindByName(name) : children.FindCounterpart(name, *src->m_node);
    return found ? parent->m_document->GetAttachNode(found) : nullptr;
}

CXmlNode* CXmlDocument::SearchNode(const wxString& nodeName, const wxString& propName, const wxString& propValue,
                                   CXmlNode* parent)
{
    wxXmlNode* node = parent && parent->m_node ? parent->m_node->GetChildren() : nullptr;
    while (node && !(IsSameNoCase(node->GetName(), nodeName) && IsSameNoCase(node->GetAttribute(propName), propValue)))
        node = node->GetNext();
    return node ? parent->m_document->GetAttachNode(node) : nullptr;
}

/// After the children of a node have been changed without its handle.
void CXmlDocument::ForgetChildren(wxXmlNode* node)
{
    const auto entry = m_nodes.find(node);
    if (entry != m_nodes.end())
        entry->second->m_known.reset();
}
