#include "xml/merge_children_detail.h"

#include "base/case_folding_detail.h"

using vcq::detail::IsSameNoCase;

namespace xml_detail
{

wxXmlNode* MergeChildren::FindByName(const wxString& name)
{
    return Find({name, nullptr});
}

wxXmlNode* MergeChildren::Find(const ChildQuery& query)
{
    return FirstFrom(m_parent.GetChildren(), query);
}

wxXmlNode* MergeChildren::FindCounterpart(const wxString& name, const wxXmlNode& src)
{
    const auto selects = [](const wxXmlAttribute* attribute) {
        return attribute && !IsSameNoCase(attribute->GetName(), wxS("Merge"));
    };
    const wxXmlAttribute* attribute = src.GetAttributes();
    if (!selects(attribute))
        return FindByName(name);
    wxXmlNode* found = m_parent.GetChildren();
    for (; selects(attribute); attribute = attribute->GetNext())
        found = FirstFrom(found, {name, attribute});
    return found;
}

wxXmlNode* MergeChildren::FirstFrom(wxXmlNode* from, const ChildQuery& query)
{
    if (from && HasIndex())
        return m_index->FirstFrom(*from, query);
    wxXmlNode* node = from;
    for (; node && !query.Fits(*node); ++m_walked) {
        if (HasIndex())
            return m_index->FirstFrom(*from, query);
        node = node->GetNext();
    }
    return node;
}

bool MergeChildren::HasIndex()
{
    if (!m_index && m_walked >= m_patience)
        m_index = std::make_unique<ChildIndex>(m_parent, m_patience);
    return m_index != nullptr;
}

wxXmlNode* MergeChildren::Last()
{
    if (!m_last)
        m_last = m_parent.GetChildren();
    while (m_last && m_last->GetNext())
        m_last = m_last->GetNext();
    return m_last;
}

wxXmlNode* MergeChildren::Previous(const wxXmlNode& child)
{
    if (HasIndex())
        return m_index->Previous(child);
    wxXmlNode* previous = nullptr;
    for (wxXmlNode* node = m_parent.GetChildren(); node != &child; node = node->GetNext(), ++m_walked)
        previous = node;
    return previous;
}

/// Links a free node in behind a child (null: as the first).
void MergeChildren::LinkBehind(wxXmlNode& child, wxXmlNode* previous)
{
    child.SetParent(&m_parent);
    child.SetNext(previous ? previous->GetNext() : m_parent.GetChildren());
    if (previous)
        previous->SetNext(&child);
    else
        m_parent.SetChildren(&child);
    if (m_index)
        m_index->Add(child, previous);
}

void MergeChildren::InsertAt(wxXmlNode& child, wxXmlNode& at, bool after)
{
    wxXmlNode* const reached = at.GetParent() == &m_parent ? &at : Last();
    LinkBehind(child, after || !reached ? reached : Previous(*reached));
}

void MergeChildren::Remove(wxXmlNode& child)
{
    wxXmlNode* const previous = Previous(child);
    if (m_index)
        m_index->Remove(child);
    if (previous)
        previous->SetNext(child.GetNext());
    else
        m_parent.SetChildren(child.GetNext());
    if (m_last == &child)
        m_last = previous;
    child.SetParent(nullptr);
    child.SetNext(nullptr);
}

} // namespace xml_detail
