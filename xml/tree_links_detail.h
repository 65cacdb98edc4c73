#pragma once

#include <wx/xml/xml.h>

namespace xml_detail
{

/// The parent of a node as hosts and scripts see it: the root element, whose parent is the document's own node, has
/// none.
inline wxXmlNode* ParentOf(const wxXmlNode& node)
{
    wxXmlNode* const parent = node.GetParent();
    return parent && parent->GetType() != wxXML_DOCUMENT_NODE ? parent : nullptr;
}

/// The next sibling; what stands beside the root element does not count.
inline wxXmlNode* NextOf(const wxXmlNode& node)
{
    return ParentOf(node) ? node.GetNext() : nullptr;
}

/// Whether `node` is `top` or below it.
inline bool IsWithin(const wxXmlNode* node, const wxXmlNode* top)
{
    while (node && node != top)
        node = node->GetParent();
    return node != nullptr;
}

/// The node behind `node` in document order that belongs to the subtree of `top`; null behind the last one. `depth` is
/// how far below `top` it is, and that of `node` before.
inline wxXmlNode* NextInTree(wxXmlNode* node, const wxXmlNode* top, unsigned int& depth)
{
    if (wxXmlNode* const child = node->GetChildren()) {
        ++depth;
        return child;
    }
    for (; node != top; node = node->GetParent(), --depth)
        if (wxXmlNode* const next = node->GetNext())
            return next;
    return nullptr;
}

/// How many levels of nodes are below `top`; of those that `counts` says.
template <typename Counts> unsigned int HeightOf(wxXmlNode& top, Counts counts)
{
    unsigned int height = 0;
    unsigned int depth = 0;
    for (wxXmlNode* node = &top; node; node = NextInTree(node, &top, depth))
        if (depth > height && counts(*node))
            height = depth;
    return height;
}

/// How many levels of elements are below `top`.
inline unsigned int ElementHeightOf(wxXmlNode& top)
{
    return HeightOf(top, [](const wxXmlNode& node) { return node.GetType() == wxXML_ELEMENT_NODE; });
}

/// How deep a node stands: 1 for the root element.
inline unsigned int DepthOf(const wxXmlNode& node)
{
    unsigned int depth = 1;
    for (const wxXmlNode* parent = ParentOf(node); parent; parent = ParentOf(*parent))
        ++depth;
    return depth;
}

/// Deletes a node, which nothing refers to, with all below it; `visit` sees each node before it goes. However deep the
/// tree is, the stack stays flat.
template <typename Visit> void DeleteTree(wxXmlNode* top, Visit&& visit)
{
    if (top)
        top->SetNext(nullptr);
    for (wxXmlNode* rest = top; rest;) {
        wxXmlNode* const node = rest;
        rest = node->GetNext();
        if (wxXmlNode* const children = node->GetChildren()) {
            wxXmlNode* last = children;
            while (last->GetNext())
                last = last->GetNext();
            last->SetNext(rest);
            rest = children;
            node->SetChildren(nullptr);
        }
        visit(node);
        delete node;
    }
}

} // namespace xml_detail
