#include "script/script.h"
#include "xml/tree_links_detail.h"
#include "xml/xml_document.h"
#include "xml/xml_node_ref.h"

#include <wx/weakref.h>
#include <wx/xml/xml.h>

#include <memory>
#include <utility>
#include <vector>

// Script that hears of the end of a node may do anything: remove the node itself or one above it, load another content,
// have the document deleted. So it is told first, while everything is there, and only what is still there afterwards is
// taken apart.

namespace
{

using WeakLink = wxWeakRef<CJScriptLink>;

} // namespace

/// Before a node is deleted: script hears of it.
/// @return false when the node is no more, or is not this document's any more, or the document is gone.
bool CXmlDocument::TellEndOf(wxXmlNode* node)
{
    const auto entry = m_nodes.find(node);
    if (entry == m_nodes.end() || !entry->second->m_link.HasOnDestroyFunctions())
        return true;
    const CXmlNodeRef ref(this, node);
    entry->second->m_link.CallJS_OnDestroy();
    return ref.GetXmlNode() && ref.GetDocument() == this;
}

/// Before the children of a node are deleted: the same for them.
/// @return false when the node itself is no more, or not this document's.
bool CXmlDocument::TellEndOfChildren(wxXmlNode* parent)
{
    std::vector<WeakLink> told;
    for (wxXmlNode* child = parent->GetChildren(); child; child = child->GetNext()) {
        const auto entry = m_nodes.find(child);
        if (entry != m_nodes.end() && entry->second->m_link.HasOnDestroyFunctions())
            told.emplace_back(&entry->second->m_link);
    }
    if (told.empty())
        return true;
    const CXmlNodeRef ref(this, parent);
    const auto isThere = [&] { return ref.GetXmlNode() && ref.GetDocument() == this; };
    for (const WeakLink& link : told) {
        if (!isThere())
            return false;
        const wxXmlNode* const child = link ? static_cast<const CXmlNode*>(link->GetRootObject())->m_node : nullptr;
        if (child && child->GetParent() == parent)
            link->CallJS_OnDestroy();
    }
    return isThere();
}

/// The links of the handles that script wants to hear of, those on nodes of the tree in the order of the document.
std::vector<CJScriptLink*> CXmlDocument::LinksToTell() const
{
    std::vector<CJScriptLink*> elsewhere;
    const wxXmlNode* const top = m_tree ? m_tree->GetDocumentNode() : nullptr;
    bool hasTold = false;
    for (const auto& [key, handle] : m_nodes) {
        if (!handle->m_link.HasOnDestroyFunctions())
            continue;
        if (top && xml_detail::IsWithin(handle->m_node, top))
            hasTold = true;
        else
            elsewhere.push_back(&handle->m_link);
    }
    std::vector<CJScriptLink*> links;
    unsigned int depth = 0;
    for (wxXmlNode* node = hasTold ? m_tree->GetDocumentNode() : nullptr; node;
         node = xml_detail::NextInTree(node, top, depth)) {
        const auto entry = m_nodes.find(node);
        if (entry != m_nodes.end() && entry->second->m_node == node && entry->second->m_link.HasOnDestroyFunctions())
            links.push_back(&entry->second->m_link);
    }
    links.insert(links.end(), elsewhere.begin(), elsewhere.end());
    return links;
}

/// Before the whole tree is deleted: script hears of it.
/// @return false when the document is gone.
bool CXmlDocument::TellEndOfTree()
{
    const std::vector<CJScriptLink*> links = LinksToTell();
    if (links.empty())
        return true;
    const WeakLink self(&m_link);
    const std::vector<WeakLink> told(links.begin(), links.end());
    for (const WeakLink& link : told) {
        if (link)
            link->CallJS_OnDestroy();
    }
    return self;
}

void CXmlDocument::CallOnDestroyFunctions()
{
    if (m_link.IsDynamic()) {
        // A collection that found the script object dead would delete the document once more.
        const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
        JS_AddRoot(m_link.GetContext(), m_link.GetJSObjectAddress());
    }
    if (TellEndOfTree())
        m_link.CallJS_OnDestroy();
}

void CXmlDocument::CutFromScript()
{
    if (!m_link.IsCreated())
        return;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    CJScript::ForgetGlobal(&m_link);
    m_link.DeleteObject();
    m_link.ForgetJSObject();
}

/// Takes a handle out of the map; it is empty then.
std::unique_ptr<CXmlNode> CXmlDocument::TakeHandle(wxXmlNode* node)
{
    const auto entry = m_nodes.find(node);
    if (entry == m_nodes.end())
        return nullptr;
    std::unique_ptr<CXmlNode> handle(entry->second);
    CallHome(*handle);
    handle->SetXmlNode(nullptr);
    m_nodes.erase(entry);
    return handle;
}

/// Puts another tree (null: none) in the place of this one, whose handles are handed out.
CXmlDocument::EndedHandles CXmlDocument::ReplaceTree(Tree tree)
{
    EndedHandles ended;
    ended.reserve(m_nodes.size());
    for (const auto& [node, handle] : m_nodes) {
        CallHome(*handle);
        handle->SetXmlNode(nullptr);
        ended.emplace_back(handle);
    }
    m_nodes.clear();
    for (CXmlNodeRef* const ref : m_refs)
        ref->m_node = nullptr;
    SendGuestsHome();
    m_tree = std::move(tree);
    return ended;
}

/// Empties the references to a node and to what is below it.
void CXmlDocument::EndRefs(const wxXmlNode* top)
{
    for (CXmlNodeRef* const ref : m_refs) {
        if (xml_detail::IsWithin(ref->m_node, top))
            ref->m_node = nullptr;
    }
}

/// Deletes a node that is in no tree; the handles on it and on what is below it are empty from then on.
void CXmlDocument::DeleteUnlinked(wxXmlNode* node)
{
    EndRefs(node);
    xml_detail::DeleteTree(node, [this](wxXmlNode* gone) { EmptyHandles(gone); });
}

void CXmlDocument::DeleteNode(wxXmlNode* node)
{
    if (!node || !TellEndOf(node))
        return;
    const std::unique_ptr<CXmlNode> ended = TakeHandle(node);
    Unlink(node);
    DeleteUnlinked(node);
}

void CXmlDocument::DeleteChildren(wxXmlNode* parent)
{
    if (!TellEndOfChildren(parent))
        return;
    ForgetChildren(parent);
    wxXmlNode* child = parent->GetChildren();
    parent->SetChildren(nullptr);
    EndedHandles ended;
    while (child) {
        wxXmlNode* const removed = child;
        child = child->GetNext();
        ended.push_back(TakeHandle(removed));
        DeleteUnlinked(removed);
    }
}
