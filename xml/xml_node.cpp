#include "xml/xml_node.h"

#include "base/case_folding_detail.h"
#include "xml/name_index_detail.h"
#include "xml/tree_links_detail.h"
#include "xml/xml_document.h"

#include <wx/xml/xml.h>

#include <vector>

wxIMPLEMENT_CLASS(CXmlNode, wxObject);

using xml_detail::NextOf;
using xml_detail::ParentOf;

namespace
{

/// Behind so many children an index of their names is made. Looking a name up there costs as much as some ten of them.
constexpr int LongestWalk = 32;

wxXmlNode* FindByName(wxXmlNode* first, const wxString& name)
{
    while (first && first->GetName() != name)
        first = first->GetNext();
    return first;
}

/// The first property of this name in any case.
const wxXmlAttribute* FindProp(const wxXmlNode& node, const wxString& name)
{
    const wxXmlAttribute* prop = node.GetAttributes();
    while (prop && !vcq::detail::IsSameNoCase(prop->GetName(), name))
        prop = prop->GetNext();
    return prop;
}

/// The properties from `from` up to `end` (not included; null: up to the last) as text.
wxString FormatProps(const wxXmlAttribute* from, const wxXmlAttribute* end)
{
    wxString text;
    for (; from != end; from = from->GetNext())
        text << wxS(' ') << from->GetName() << wxS("=\"") << from->GetValue() << wxS('"');
    return text;
}

int IndexOf(const wxXmlNode& parent, const wxXmlNode& child)
{
    int index = 0;
    for (const wxXmlNode* node = parent.GetChildren(); node != &child; node = node->GetNext())
        ++index;
    return index;
}

} // namespace

CXmlNode::CXmlNode(CXmlDocument* document, wxXmlNode* node) : m_owner(document), m_document(document), m_node(node)
{
    m_link.Link(this, &ms_JSClass);
}

CXmlNode::~CXmlNode()
{
    // While there is still a node to ask: script may run here.
    m_link.CallJS_OnDestroy();
}

CJScriptLink* CXmlNode::GetJSLink()
{
    if (!m_link.IsCreated())
        m_document->MakeScriptObject(*this);
    return &m_link;
}

CXmlNode* CXmlNode::Attach(wxXmlNode* node) const
{
    return m_document->GetAttachNode(node);
}

void CXmlNode::SetXmlNode(wxXmlNode* node)
{
    m_node = node;
    m_known.reset();
}

/// What is known of the children. A guest knows nothing, since it does not hear of changes by other handles.
CXmlNode::KnownChildren& CXmlNode::Known()
{
    if (!m_known || IsGuest())
        m_known = std::make_unique<KnownChildren>();
    return *m_known;
}

/// After children have been taken away or put in between by this handle.
void CXmlNode::NoteChildrenChanged()
{
    m_known.reset();
    if (IsGuest())
        m_document->ForgetChildren(m_node);
}

/// The child at a position; null when there is none. Goes on from the last one that is known.
wxXmlNode* CXmlNode::ChildAt(int index)
{
    std::vector<wxXmlNode*>& first = Known().first;
    const auto wanted = static_cast<std::size_t>(index);
    wxXmlNode* node = first.empty() ? m_node->GetChildren() : first.back()->GetNext();
    for (; first.size() <= wanted && node; node = node->GetNext())
        first.push_back(node);
    return wanted < first.size() ? first[wanted] : nullptr;
}

/// The handle of a node, if there is one that keeps what it learns of the children; null otherwise.
CXmlNode* CXmlNode::HandleThatKnows(wxXmlNode* node) const
{
    const auto known = m_document->m_nodes.find(node);
    if (known == m_document->m_nodes.end() || known->second->m_node != node || known->second->IsGuest())
        return nullptr;
    return known->second;
}

/// The position among the siblings, of a node that has a parent.
int CXmlNode::FindPlace() const
{
    CXmlNode* const parent = HandleThatKnows(m_node->GetParent());
    if (!parent)
        return IndexOf(*m_node->GetParent(), *m_node);
    if (parent->ChildAt(m_place) == m_node)
        return m_place;
    int place = 0;
    for (const wxXmlNode* child = parent->ChildAt(0); child && child != m_node; child = parent->ChildAt(place))
        ++place;
    return place;
}

int CXmlNode::PlaceAmongSiblings() const
{
    return m_place = FindPlace();
}

/// The handle of a node of which it is known, or likely, where it stands.
CXmlNode* CXmlNode::AttachAt(wxXmlNode* node, int place) const
{
    CXmlNode* const handle = Attach(node);
    if (node)
        handle->m_place = place;
    return handle;
}

CXmlNode* CXmlNode::GetRawChildren()
{
    return AttachAt(m_node ? m_node->GetChildren() : nullptr, 0);
}

CXmlNode* CXmlNode::GetRawNext()
{
    return m_node ? AttachAt(NextOf(*m_node), m_place + 1) : Attach(nullptr);
}

CXmlNode* CXmlNode::GetRawPrevious()
{
    const int place = m_node && ParentOf(*m_node) ? PlaceAmongSiblings() : 0;
    if (place == 0)
        return Attach(nullptr);
    if (CXmlNode* const parent = HandleThatKnows(m_node->GetParent()))
        return AttachAt(parent->ChildAt(place - 1), place - 1);
    wxXmlNode* previous = m_node->GetParent()->GetChildren();
    while (previous->GetNext() != m_node)
        previous = previous->GetNext();
    return Attach(previous);
}

CXmlNode* CXmlNode::GetRawParent()
{
    return Attach(m_node ? ParentOf(*m_node) : nullptr);
}

CXmlNode* CXmlNode::GetRawNode(const wxString& name)
{
    return Attach(m_node ? FindChild(name) : nullptr);
}

/// The first child of this name, found by a walk as long as that is short.
wxXmlNode* CXmlNode::FindChild(const wxString& name)
{
    if (IsGuest())
        return FindByName(m_node->GetChildren(), name);
    if (m_known && m_known->names)
        return m_known->names->Find(name);
    wxXmlNode* child = m_node->GetChildren();
    for (int walked = 0; child && child->GetName() != name; child = child->GetNext()) {
        if (++walked < LongestWalk)
            continue;
        Known().names = std::make_unique<xml_detail::NameIndex>(m_node->GetChildren());
        return FindChild(name);
    }
    return child;
}

CXmlNode* CXmlNode::GetRawNextByName(const wxString& name)
{
    return Attach(m_node ? FindByName(NextOf(*m_node), name) : nullptr);
}

CXmlNode* CXmlNode::GetRawPreviousByName(const wxString& name)
{
    const wxXmlNode* const parent = m_node ? ParentOf(*m_node) : nullptr;
    wxXmlNode* found = nullptr;
    for (wxXmlNode* node = parent ? parent->GetChildren() : nullptr; node && node->GetNext() != m_node;
         node = node->GetNext()) {
        if (node != m_node && node->GetName() == name)
            found = node;
    }
    return Attach(found);
}

CXmlNode* CXmlNode::GetRawItem(int index)
{
    if (!m_node || index < 0)
        return Attach(nullptr);
    return AttachAt(ChildAt(index), index);
}

bool CXmlNode::HasNode(const wxString& name)
{
    return m_node && FindChild(name);
}

wxString CXmlNode::GetName() const
{
    return m_node ? m_node->GetName() : wxString();
}

void CXmlNode::SetName(const wxString& name)
{
    if (!m_node)
        return;
    m_node->SetName(name);
    const auto parent = m_document->m_nodes.find(m_node->GetParent());
    if (parent != m_document->m_nodes.end() && parent->second->m_known)
        parent->second->m_known->names.reset();
}

wxString CXmlNode::GetNodeContent() const
{
    return m_node ? m_node->GetNodeContent() : wxString();
}

bool CXmlNode::HasProp(const wxString& name) const
{
    return m_node && m_node->HasAttribute(name);
}

wxString CXmlNode::GetPropW(const wxString& name, const wxString& def) const
{
    return m_node ? m_node->GetAttribute(name, def) : def;
}

long CXmlNode::GetPropLong(const wxString& name, long def) const
{
    wxString text;
    long number = 0;
    return m_node && m_node->GetAttribute(name, &text) && text.ToLong(&number, 10) ? number : def;
}

void CXmlNode::AddProp(const wxString& name, const wxString& value)
{
    if (m_node)
        m_node->AddAttribute(name, value);
}

void CXmlNode::AddProp(const wxString& name, long value)
{
    AddProp(name, wxString::Format(wxS("%ld"), value));
}

void CXmlNode::AddOrChangeProp(const wxString& name, const wxString& value)
{
    wxXmlAttribute* prop = m_node ? m_node->GetAttributes() : nullptr;
    while (prop && prop->GetName() != name)
        prop = prop->GetNext();
    if (prop)
        prop->SetValue(value);
    else
        AddProp(name, value);
}

void CXmlNode::AddOrChangeProp(const wxString& name, long value)
{
    AddOrChangeProp(name, wxString::Format(wxS("%ld"), value));
}

bool CXmlNode::DelProp(const wxString& name)
{
    return m_node && m_node->DeleteAttribute(name);
}

void CXmlNode::ClearProps()
{
    wxXmlAttribute* prop = m_node ? m_node->GetAttributes() : nullptr;
    if (m_node)
        m_node->SetAttributes(nullptr);
    while (prop) {
        const wxXmlAttribute* const done = prop;
        prop = prop->GetNext();
        delete done;
    }
}

wxString CXmlNode::GetAllProps() const
{
    return m_node ? FormatProps(m_node->GetAttributes(), nullptr) : wxString();
}

wxString CXmlNode::GetAllPropsAfter(const wxString& name) const
{
    const wxXmlAttribute* const prop = m_node ? FindProp(*m_node, name) : nullptr;
    return prop ? FormatProps(prop->GetNext(), nullptr) : wxString();
}

wxString CXmlNode::GetAllPropsBefore(const wxString& name) const
{
    return m_node ? FormatProps(m_node->GetAttributes(), FindProp(*m_node, name)) : wxString();
}

int CXmlNode::GetChildrenCount()
{
    if (!m_node)
        return 0;
    KnownChildren& known = Known();
    if (known.count < 0) {
        known.count = 0;
        for (wxXmlNode* node = m_node->GetChildren(); node; node = node->GetNext(), ++known.count)
            known.last = node;
    }
    return known.count;
}

int CXmlNode::GetChildrenCountOf(const wxString& name) const
{
    int count = 0;
    for (const wxXmlNode* node = m_node ? m_node->GetChildren() : nullptr; node; node = node->GetNext())
        count += node->GetName() == name;
    return count;
}

int CXmlNode::GetChildrenDepth() const
{
    return m_node ? static_cast<int>(xml_detail::HeightOf(*m_node, [](const wxXmlNode&) { return true; })) : 0;
}

int CXmlNode::GetIndex() const
{
    const wxXmlNode* const parent = m_node ? ParentOf(*m_node) : nullptr;
    return parent ? PlaceAmongSiblings() : -1;
}

wxString CXmlNode::GetNodeString() const
{
    std::vector<int> path;
    const CXmlNode* handle = this;
    for (wxXmlNode* node = m_node; wxXmlNode* const parent = node ? ParentOf(*node) : nullptr; node = parent) {
        path.push_back(handle ? handle->PlaceAmongSiblings() : IndexOf(*parent, *node));
        handle = HandleThatKnows(parent);
    }
    wxString text;
    for (auto index = path.rbegin(); index != path.rend(); ++index)
        text << (text.empty() ? wxS("") : wxS(".")) << wxString::Format(wxS("Item(%d)"), *index);
    return text;
}

bool CXmlNode::IsFirst() const
{
    const wxXmlNode* const parent = m_node ? ParentOf(*m_node) : nullptr;
    return !m_node || (parent && parent->GetChildren() == m_node);
}

bool CXmlNode::IsLast() const
{
    return !m_node || !NextOf(*m_node);
}

bool CXmlNode::IsAlone() const
{
    return IsFirst() && IsLast();
}

bool CXmlNode::IsMiddle() const
{
    return !IsFirst() && !IsLast();
}
