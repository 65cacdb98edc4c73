#include "xml/merge_detail.h"

#include <algorithm>

namespace xml_detail
{

namespace
{

/// How far the attributes of an element are walked in search of names before the names get a table.
constexpr std::size_t StepsBeforeTable = 1000;

/// The attributes of an element, to be found and appended without a walk over many each time.
class AttributeList
{
public:
    explicit AttributeList(wxXmlNode& node) : m_node(node), m_last(node.GetAttributes())
    {
        while (m_last && m_last->GetNext())
            m_last = m_last->GetNext();
    }

    /// The first of this name; null without one.
    wxXmlAttribute* Find(const wxString& name)
    {
        if (m_walked >= StepsBeforeTable)
            return FindInTable(name);
        wxXmlAttribute* attribute = m_node.GetAttributes();
        for (; attribute && attribute->GetName() != name; ++m_walked)
            attribute = attribute->GetNext();
        return attribute;
    }

    void Append(const wxXmlAttribute& attribute)
    {
        auto* const added = new wxXmlAttribute(attribute.GetName(), attribute.GetValue());
        if (m_last)
            m_last->SetNext(added);
        else
            m_node.SetAttributes(added);
        m_last = added;
        if (!m_byName.empty())
            m_byName.try_emplace(added->GetName(), added);
    }

private:
    wxXmlAttribute* FindInTable(const wxString& name)
    {
        if (m_byName.empty()) {
            for (wxXmlAttribute* attribute = m_node.GetAttributes(); attribute; attribute = attribute->GetNext())
                m_byName.try_emplace(attribute->GetName(), attribute);
        }
        const auto entry = m_byName.find(name);
        return entry == m_byName.end() ? nullptr : entry->second;
    }

    wxXmlNode& m_node;
    wxXmlAttribute* m_last;
    std::size_t m_walked = 0;
    std::unordered_map<wxString, wxXmlAttribute*> m_byName;
};

void CopyAllAttributes(wxXmlNode& dest, const wxXmlNode& src)
{
    AttributeList attributes(dest);
    for (const wxXmlAttribute* attribute = src.GetAttributes(); attribute; attribute = attribute->GetNext())
        attributes.Append(*attribute);
}

void MergeAttributes(wxXmlNode& dest, const wxXmlNode& src, bool keepExisting)
{
    if (!src.GetAttributes())
        return;
    AttributeList attributes(dest);
    for (const wxXmlAttribute* attribute = src.GetAttributes(); attribute; attribute = attribute->GetNext()) {
        wxXmlAttribute* const existing = attributes.Find(attribute->GetName());
        if (!existing)
            attributes.Append(*attribute);
        else if (!keepExisting)
            existing->SetValue(attribute->GetValue());
    }
}

} // namespace

void CopyMerge::Run(wxXmlNode& dest, const wxXmlNode& src)
{
    m_levels.push_back({m_target.ChildrenOf(dest), src.GetChildren()});
    while (!m_levels.empty()) {
        if (m_levels.back().next)
            MergeNext();
        else
            m_levels.pop_back();
    }
}

void CopyMerge::MergeNext()
{
    Level& level = m_levels.back();
    const wxXmlNode& child = *level.next;
    level.next = child.GetNext();
    wxXmlNode* const counterpart = level.dest.FindByName(child.GetName());
    if (!counterpart) {
        wxXmlNode* const added = Add(child.GetName());
        if (!m_isTrial)
            CopyAllAttributes(*added, child);
        return;
    }
    if (!m_isTrial)
        MergeAttributes(*counterpart, child, m_keepExisting);
    if (child.GetChildren())
        m_levels.push_back({m_target.ChildrenOf(*counterpart), child.GetChildren()});
}

wxXmlNode* CopyMerge::Add(const wxString& name)
{
    auto* const added = new wxXmlNode(wxXML_ELEMENT_NODE, name);
    m_levels.back().dest.Append(*added);
    if (m_isTrial) {
        m_added.push_back(added);
        m_depthOfAdded = std::max(m_depthOfAdded, m_levels.size());
    }
    return added;
}

unsigned int CopyMerge::DepthOfAdded(wxXmlNode& dest, const wxXmlNode& src)
{
    // What has been added is the counterpart of what follows, so only the merge itself knows what it adds.
    CopyMerge merge(true);
    merge.m_isTrial = true;
    merge.Run(dest, src);
    merge.TakeAddedOut();
    return static_cast<unsigned int>(merge.m_depthOfAdded);
}

void CopyMerge::TakeAddedOut()
{
    for (auto added = m_added.rbegin(); added != m_added.rend(); ++added) {
        m_target.ChildrenOf(*(*added)->GetParent()).Remove(**added);
        delete *added;
    }
    m_added.clear();
}

} // namespace xml_detail
