#include "xml/xml_node_ref.h"

#include "xml/xml_document.h"

#include <algorithm>

CXmlNodeRef::CXmlNodeRef(CXmlDocument* document, wxXmlNode* node)
    : m_document(document), m_node(document ? node : nullptr)
{
    if (m_document)
        m_document->m_refs.push_back(this);
}

CXmlNodeRef::~CXmlNodeRef()
{
    if (!m_document)
        return;
    // Most end in the reverse order of their making.
    auto& refs = m_document->m_refs;
    refs.erase(std::prev(std::find(refs.rbegin(), refs.rend(), this).base()));
}

CXmlNode* CXmlNodeRef::GetHandle() const
{
    return m_document ? m_document->GetAttachNode(m_node) : nullptr;
}
