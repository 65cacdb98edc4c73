#pragma once

#include "base/api.h"
#include "script/script_class.h"
#include "script/script_link.h"

#include <wx/object.h>
#include <wx/string.h>

#include <memory>
#include <vector>

class CXmlDocument;
class WXDLLIMPEXP_FWD_XML wxXmlNode;

namespace xml_detail
{
class NameIndex;
struct NumberArgument;
struct TextArgument;
} // namespace xml_detail

/// The handle on one node of a document's tree: the script class "CXmlNode". It belongs to its document, which makes it
/// on first demand and keeps it; asking for the same node again gives the same handle.
///
/// Navigation never gives null: where there is nothing, it gives the document's empty node, on which every operation
/// does nothing or gives a neutral value. So calls are chained without testing, and the last result is tested with
/// Ok(). Children, siblings and positions count nodes of every type, texts and comments included. The root element has
/// neither a parent nor siblings.
///
/// A handle whose node has been moved into another document goes on, as one of that document; it is empty when the node
/// is gone. It ends when its own document's tree does.
///
/// A handle ends when its node is removed through the document or its parent's handle, and with the document's tree
/// (CXmlDocument::Clear). A handle on a deeper node of a removed subtree stays until then, as an empty one; it may come
/// to stand for a node made later. Documents and their nodes are used by one thread at a time.
///
/// Script's functions that are to be called when a handle ends (CallOnDestroy) are called first, while the node and
/// what ends with it are still there. They may do anything, so behind a removal in a document that script knows, ask
/// anew for what was known before.
class VC_QXPARSER_API CXmlNode : public wxObject
{
public:
    ~CXmlNode() override;

    CXmlNode(const CXmlNode&) = delete;
    CXmlNode& operator=(const CXmlNode&) = delete;

    /// Whether this is a real node.
    bool Ok() const { return m_node != nullptr; }
    /// The document whose handle this is; after a move by InsertChild, the one that it was moved into.
    CXmlDocument* GetDocument() const { return m_document; }
    /// The node itself, for reading and for the operations of the document that take one; null for the empty node. The
    /// tree is changed through handles and the document only.
    wxXmlNode* GetXmlNode() const { return m_node; }

    ///@{
    /// The first child, the sibling behind, the sibling before, and the parent.
    CXmlNode* GetRawChildren();
    CXmlNode* GetRawNext();
    CXmlNode* GetRawPrevious();
    CXmlNode* GetRawParent();
    ///@}

    /// The first child of this name.
    CXmlNode* GetRawNode(const wxString& name);
    /// The first of the siblings that follow with this name.
    CXmlNode* GetRawNextByName(const wxString& name);
    /// The last sibling of this name that stands before the sibling right before this node: that one is never given,
    /// whatever its name. For a first child, the last of all its following siblings with this name.
    CXmlNode* GetRawPreviousByName(const wxString& name);
    /// The child at a position counted from 0.
    CXmlNode* GetRawItem(int index);

    ///@{
    /// The same for script: the link of the node that was found.
    CJScriptLink* GetChildren() { return LinkOf(GetRawChildren()); }
    CJScriptLink* GetNext() { return LinkOf(GetRawNext()); }
    CJScriptLink* GetPrevious() { return LinkOf(GetRawPrevious()); }
    CJScriptLink* GetParent() { return LinkOf(GetRawParent()); }
    CJScriptLink* GetNode(const wxString& name) { return LinkOf(GetRawNode(name)); }
    CJScriptLink* GetNextByName(const wxString& name) { return LinkOf(GetRawNextByName(name)); }
    CJScriptLink* GetPreviousByName(const wxString& name) { return LinkOf(GetRawPreviousByName(name)); }
    CJScriptLink* Item(int index) { return LinkOf(GetRawItem(index)); }
    CJScriptLink* AddNode(const wxString& name) { return LinkOf(AddRawNode(name)); }
    ///@}

    /// Appends a new, empty element.
    /// @return its handle; the empty node on the empty node, and, with an error in the log, where it would stand deeper
    /// than the document allows.
    CXmlNode* AddRawNode(const wxString& name);
    /// Deletes the first child of this name.
    /// @return false when there is none.
    bool RemoveRawNode(const wxString& name);
    /// Deletes any node, of this document or another one. False for null, and on the empty node.
    bool RemoveRawNode(CXmlNode* child);
    /// As RemoveRawNode, for script.
    bool RemoveNode(const wxString& name) { return RemoveRawNode(name); }
    /// Takes away properties and children.
    void Clear();
    /// Takes away the properties, the attributes of the element.
    void ClearProps();
    /// Deletes the children, and all that is below them.
    void RemoveChildren();
    /// Unlinks a child, which is nobody's until it is inserted again or deleted through the document.
    void RemoveChild(CXmlNode* child);
    /// Appends a node that has been unlinked before; `walk` makes no difference. Nothing happens for null, for an empty
    /// node, for this node or one above it, nor, with an error in the log, beyond the document's depth.
    void InsertChild(CXmlNode* child, bool walk);
    /// Inserts a node that has been unlinked before, in front of or right behind the child `at`. When `at` is no child
    /// of this node, it lands in front of the last child or at the end.
    void InsertChildAt(CXmlNode* child, CXmlNode* at, bool after);

    /// The name of an element; "text", "comment" and the like for other nodes, empty for the empty node.
    wxString GetName() const;
    /// Gives the node another name; nothing is checked, and nothing happens on the empty node.
    void SetName(const wxString& name);
    /// The content of the first text or CDATA child.
    wxString GetNodeContent() const;
    /// Sets the content of the first text child, which is appended when there is none. Elements stay.
    void SetNodeContent(const wxString& text);

    /// Whether there is a property of this name. Names of properties are compared with case.
    bool HasProp(const wxString& name) const;
    /// The first property of this name; `def` when there is none.
    wxString GetPropW(const wxString& name, const wxString& def) const;
    /// `def` also when the property is not a whole decimal number.
    long GetPropLong(const wxString& name, long def) const;

    ///@{
    /// Appends a property, also when there is one of this name.
    void AddProp(const wxString& name, const wxString& value);
    void AddProp(const wxString& name, long value);
    ///@}

    ///@{
    /// Sets the first property of this name, in its place, or appends it.
    void AddOrChangeProp(const wxString& name, const wxString& value);
    void AddOrChangeProp(const wxString& name, long value);
    ///@}

    /// Takes the first property of this name away; false when there is none.
    bool DelProp(const wxString& name);
    /// Every property as ` NAME="VALUE"`, in order, with nothing escaped.
    wxString GetAllProps() const;
    /// Those behind the first property of this name in any case, without it; empty when there is none.
    wxString GetAllPropsAfter(const wxString& name) const;
    /// Those before the first property of this name in any case, without it; all when there is none.
    wxString GetAllPropsBefore(const wxString& name) const;

    /// Whether there is a child of this name.
    bool HasNode(const wxString& name);
    /// The number of children.
    int GetChildrenCount();
    /// The number of children of this name.
    int GetChildrenCountOf(const wxString& name) const;
    /// How many levels of nodes are below this one.
    int GetChildrenDepth() const;
    /// The position among the parent's children, counted from 0; -1 without a parent.
    int GetIndex() const;
    /// The way from the root element, such as "Item(2).Item(0)"; empty for the root element.
    wxString GetNodeString() const;

    ///@{
    /// The place among the siblings: without one before it, without one behind it, both, neither. The empty node is
    /// first, last and alone. The root element is last only.
    bool IsFirst() const;
    bool IsLast() const;
    bool IsAlone() const;
    bool IsMiddle() const;
    ///@}

    /// What every scriptable class has: see CJScriptLink.
    virtual const CJScriptLink* GetJSLink() const { return &m_link; }
    /// In a document with script, also makes the script object if there is none yet.
    virtual CJScriptLink* GetJSLink();

    ///@{
    /// What every scriptable class has: see CJScriptLink.
    virtual const JSMap* GetJSMap() const { return &m_JSMap; }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;
    ///@}

private:
    friend class CXmlDocument;

    /// What is known of the children, so that appending, counting and going through them by position or name cost no
    /// walk from the first each time. The nodes in it are children of this node now.
    struct KnownChildren
    {
        wxXmlNode* last = nullptr;                    ///< The last one, or one before it.
        std::vector<wxXmlNode*> first;                ///< As many of the first ones as have been gone through.
        int count = -1;                               ///< -1: unknown.
        std::unique_ptr<xml_detail::NameIndex> names; ///< Of all children; null: unknown.
    };

    CXmlNode(CXmlDocument* document, wxXmlNode* node);

    static CJScriptLink* LinkOf(CXmlNode* node) { return node->GetJSLink(); }
    CXmlNode* Attach(wxXmlNode* node) const;
    void SetXmlNode(wxXmlNode* node);
    /// Whether the node has gone over into another document, which may have handles of its own on it.
    bool IsGuest() const { return m_document != m_owner; }
    KnownChildren& Known();
    void NoteChildrenChanged();
    wxXmlNode* LastChild();
    wxXmlNode* ChildAt(int index);
    CXmlNode* HandleThatKnows(wxXmlNode* node) const;
    int FindPlace() const;
    int PlaceAmongSiblings() const;
    CXmlNode* AttachAt(wxXmlNode* node, int place) const;
    wxXmlNode* FindChild(const wxString& name);
    void LinkBehind(wxXmlNode* child, wxXmlNode* before);
    bool TakeChild(CXmlNode* child);
    wxString GetPropOrNothing(const wxString& name) const;
    bool AddPropIfOk(const wxString& name, const xml_detail::TextArgument& value);
    CJScriptLink* ItemAt(const xml_detail::NumberArgument& index);

    CXmlDocument* const m_owner; ///< Who deletes this handle.
    CXmlDocument* m_document;
    wxXmlNode* m_node;
    std::unique_ptr<KnownChildren> m_known; ///< Null: nothing. Most nodes have no children.
    mutable int m_place = 0;                ///< Among the siblings when that was last known; it may have changed.
    CJScriptLink m_link;

    wxDECLARE_CLASS(CXmlNode);
};
