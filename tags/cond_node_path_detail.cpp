#include "tags/cond_node_path_detail.h"

#include "xml/tree_links_detail.h"
#include "xml/xml_node_ref.h"

#include <wx/xml/xml.h>

namespace
{

wxXmlNode* TopOf(wxXmlNode* node)
{
    while (wxXmlNode* const parent = node ? xml_detail::ParentOf(*node) : nullptr)
        node = parent;
    return node;
}

/// The child at a position; null past the last one and for a negative one.
wxXmlNode* ChildAt(const wxXmlNode& parent, long index)
{
    wxXmlNode* child = index < 0 ? nullptr : parent.GetChildren();
    for (; child && index > 0; --index)
        child = child->GetNext();
    return child;
}

bool HasAttribute(const wxXmlNode& node, const wxString& name, const wxString& value)
{
    wxString found;
    return node.GetAttribute(name, &found) && found == value;
}

/// One part of a path.
struct Step
{
    explicit Step(const wxString& part);

    wxXmlNode* From(const wxXmlNode& parent) const;

    bool isIndex = false;
    long index = 0;
    wxString name;
    bool hasAttribute = false;
    wxString attribute;
    wxString value;
};

Step::Step(const wxString& part) : name(part)
{
    wxString inside;
    wxString number;
    if (part.StartsWith(wxS("Item("), &inside) && inside.EndsWith(wxS(")"), &number) && number.ToLong(&index, 10)) {
        isIndex = true;
        return;
    }
    wxString condition;
    const wxString before = part.BeforeFirst(wxS('['), &inside);
    if (!inside.EndsWith(wxS("]"), &condition) || condition.find(wxS('=')) == wxString::npos)
        return;
    hasAttribute = true;
    name = before;
    attribute = condition.BeforeFirst(wxS('='), &value);
}

wxXmlNode* Step::From(const wxXmlNode& parent) const
{
    if (isIndex)
        return ChildAt(parent, index);
    for (wxXmlNode* child = parent.GetChildren(); child; child = child->GetNext()) {
        if (child->GetName() == name && (!hasAttribute || HasAttribute(*child, attribute, value)))
            return child;
    }
    return nullptr;
}

} // namespace

bool FollowNodePath(const wxString& path, CXmlNodeRef& node)
{
    wxXmlNode* reached = node.GetXmlNode();
    size_t start = 0;
    if (path.StartsWith(wxS("/"))) {
        reached = TopOf(reached);
        start = 1;
    }
    for (bool isMore = start < path.length(); reached && isMore;) {
        const size_t end = path.find(wxS('.'), start);
        isMore = end != wxString::npos;
        reached = Step(path.substr(start, isMore ? end - start : end)).From(*reached);
        start = end + 1;
    }
    if (reached)
        node.Set(reached);
    return reached != nullptr;
}
