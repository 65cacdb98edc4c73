#pragma once

#include "base/api.h"

#include <wx/defs.h>

class CXmlDocument;
class CXmlNode;
class WXDLLIMPEXP_FWD_XML wxXmlNode;

/// A weak reference to a node of a document's tree: it refers to nothing once the node has been deleted, whoever did
/// it, or the document has. It goes along with a node that is moved into another document. For walks during which
/// script may change the tree; it costs no handle as long as none is asked for. A document tells its references of each
/// node deleted, so keep few of them.
class VC_QXPARSER_API CXmlNodeRef
{
public:
    /// @param document whose node it is, @param node the node; both may be null.
    CXmlNodeRef(CXmlDocument* document, wxXmlNode* node);
    /// A copy refers to the same node, by itself.
    CXmlNodeRef(const CXmlNodeRef& other) : CXmlNodeRef(other.m_document, other.m_node) {}
    ~CXmlNodeRef();
    CXmlNodeRef& operator=(const CXmlNodeRef&) = delete;

    /// The node, null when there is none (any more).
    wxXmlNode* GetXmlNode() const { return m_node; }
    /// Its handle; the document's empty node for none, null when the document has gone.
    CXmlNode* GetHandle() const;
    /// The document whose node it is now; null when that has gone.
    CXmlDocument* GetDocument() const { return m_document; }

    /// Refers to another node of the same document; null for none.
    void Set(wxXmlNode* node) { m_node = m_document ? node : nullptr; }

private:
    friend class CXmlDocument;

    CXmlDocument* m_document;
    wxXmlNode* m_node;
};
