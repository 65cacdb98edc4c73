#include "xml/name_index_detail.h"
#include "xml/tree_links_detail.h"
#include "xml/xml_document.h"
#include "xml/xml_node.h"

#include <wx/xml/xml.h>

using xml_detail::DepthOf;
using xml_detail::ElementHeightOf;

wxXmlNode* CXmlNode::LastChild()
{
    KnownChildren& known = Known();
    wxXmlNode* last = known.last ? known.last : m_node->GetChildren();
    while (last && last->GetNext())
        last = last->GetNext();
    return known.last = last;
}

/// Links a free node into the children, right behind `before` (null: as the first).
void CXmlNode::LinkBehind(wxXmlNode* child, wxXmlNode* before)
{
    child->SetParent(m_node);
    child->SetNext(before ? before->GetNext() : m_node->GetChildren());
    if (before)
        before->SetNext(child);
    else
        m_node->SetChildren(child);
    if (IsGuest())
        NoteChildrenChanged();
    if (!m_known)
        return;
    if (child->GetNext()) {
        m_known->first.clear();
        m_known->names.reset();
    }
    if (m_known->names)
        m_known->names->Add(child);
    if (m_known->count >= 0)
        ++m_known->count;
}

CXmlNode* CXmlNode::AddRawNode(const wxString& name)
{
    if (!m_node || !m_document->AllowsDepth(DepthOf(*m_node) + 1))
        return Attach(nullptr);
    auto* const added = new wxXmlNode(wxXML_ELEMENT_NODE, name);
    LinkBehind(added, LastChild());
    return Attach(added);
}

bool CXmlNode::RemoveRawNode(const wxString& name)
{
    wxXmlNode* child = m_node ? m_node->GetChildren() : nullptr;
    while (child && child->GetName() != name)
        child = child->GetNext();
    if (child)
        m_document->DeleteNode(child);
    return child != nullptr;
}

bool CXmlNode::RemoveRawNode(CXmlNode* child)
{
    if (!m_node || !child)
        return false;
    child->m_document->DeleteNode(child->m_node);
    return true;
}

void CXmlNode::Clear()
{
    ClearProps();
    RemoveChildren();
}

void CXmlNode::RemoveChildren()
{
    if (m_node)
        m_document->DeleteChildren(m_node);
}

void CXmlNode::RemoveChild(CXmlNode* child)
{
    if (m_node && child && child->m_node && m_node->RemoveChild(child->m_node))
        NoteChildrenChanged();
}

/// Whether a node can become a child here; it is one of this document's from then on.
bool CXmlNode::TakeChild(CXmlNode* child)
{
    if (!m_node || !child || !child->m_node || xml_detail::IsWithin(m_node, child->m_node) ||
        !m_document->AllowsDepth(DepthOf(*m_node) + 1 + ElementHeightOf(*child->m_node)))
        return false;
    m_document->TakeOver(child->m_node, *child->m_document);
    return true;
}

void CXmlNode::InsertChild(CXmlNode* child, bool WXUNUSED(walk))
{
    if (TakeChild(child))
        LinkBehind(child->m_node, LastChild());
}

void CXmlNode::InsertChildAt(CXmlNode* child, CXmlNode* at, bool after)
{
    if (!TakeChild(child))
        return;
    wxXmlNode* before = nullptr;
    wxXmlNode* reached = m_node->GetChildren();
    while (reached && reached != (at ? at->m_node : nullptr) && reached->GetNext()) {
        before = reached;
        reached = reached->GetNext();
    }
    LinkBehind(child->m_node, after || !reached ? reached : before);
}

void CXmlNode::SetNodeContent(const wxString& text)
{
    if (!m_node)
        return;
    wxXmlNode* child = m_node->GetChildren();
    while (child && child->GetType() != wxXML_TEXT_NODE)
        child = child->GetNext();
    if (!child) {
        child = new wxXmlNode(wxXML_TEXT_NODE, wxString());
        LinkBehind(child, LastChild());
    }
    child->SetContent(text);
}
