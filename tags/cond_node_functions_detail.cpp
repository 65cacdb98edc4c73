#include "tags/cond_node_functions_detail.h"

#include <wx/xml/xml.h>

#include <algorithm>

namespace
{

const wxXmlAttribute* FindAttribute(const wxXmlNode* node, const wxString& name)
{
    const wxXmlAttribute* attribute = node ? node->GetAttributes() : nullptr;
    while (attribute && attribute->GetName() != name)
        attribute = attribute->GetNext();
    return attribute;
}

/// A text as script has it. Characters that are two there are left to the engine.
std::optional<PlainValue> PlainText(const wxString& text)
{
    const wchar_t* const chars = text.wx_str();
    if (!std::all_of(chars, chars + text.length(), [](wchar_t ch) { return ch < 0xD800; }))
        return std::nullopt;
    return text;
}

} // namespace

int ChildCount(const wxXmlNode* node)
{
    int count = 0;
    for (const wxXmlNode* child = node ? node->GetChildren() : nullptr; child; child = child->GetNext())
        ++count;
    return count;
}

const wxXmlAttribute* FindAttribute(const wxXmlNode* node, const std::vector<wxString>& names)
{
    for (const wxString& name : names) {
        if (const wxXmlAttribute* const attribute = FindAttribute(node, name))
            return attribute;
    }
    return nullptr;
}

std::optional<PlainValue> NodeFunctions::Call(std::wstring_view name, const wxString* argument) const
{
    if (argument && name == L"GetProp") {
        const wxXmlAttribute* const attribute = FindAttribute(m_node, *argument);
        return PlainText(attribute ? attribute->GetValue() : wxString());
    }
    if (argument && name == L"HasProp")
        return FindAttribute(m_node, *argument) != nullptr;
    if (!argument && name == L"GetName")
        return PlainText(m_node ? m_node->GetName() : wxString());
    if (!argument && (name == L"GetCount" || name == L"GetChildrenCount"))
        return static_cast<double>(ChildCount(m_node));
    return std::nullopt;
}
