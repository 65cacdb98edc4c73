#pragma once

#include "base/api.h"
#include "script/script_class.h"
#include "script/script_link.h"
#include "xml/xml_node.h"

#include <wx/hashmap.h>
#include <wx/object.h>
#include <wx/stream.h>
#include <wx/string.h>

#include <memory>
#include <unordered_map>
#include <vector>

class CJScript;
class CXmlNodeRef;
class WXDLLIMPEXP_FWD_XML wxXmlDocument;

namespace xml_detail
{

/// Deletes a tree of any depth.
struct TreeDeleter
{
    VC_QXPARSER_API void operator()(wxXmlDocument* tree) const;
};

} // namespace xml_detail

WX_DECLARE_HASH_MAP(wxXmlNode*, CXmlNode*, wxPointerHash, wxPointerEqual, CHashPXmlNode);

/// An XML tree, and the handles on its nodes: the script class "XmlDocument".
///
/// With a script context, every handle has a script object, a child of the document's own, made when something asks for
/// it: only a list of the properties of the document's object tells which are. Failures are false or null, with a
/// message in the log; nothing is thrown. A document is used by one thread at a time.
class VC_QXPARSER_API CXmlDocument : public wxObject
{
public:
    /// Why a text was not loaded.
    struct LoadError
    {
        wxString message; ///< The reason alone; empty when there is none.
        long line = 0;    ///< Counted from 1, as is the column.
        long column = 0;  ///< Counted from 1, in characters.
    };

    /// How deep elements may be nested when nothing else is said; the root element counts as 1.
    static constexpr unsigned int DefaultMaxDepth = 1000;

    /// A document without script, until Load finds that it has a script object.
    CXmlDocument();
    /// A document whose script object is the child `name` of `parent`; without a parent it has none, and the log says
    /// "No parent".
    /// @param script not owned, may be null; it must live as long as the document's script object.
    CXmlDocument(CJScript* script, const wxString& name, CJScriptLink* parent);
    ~CXmlDocument() override;

    CXmlDocument(const CXmlDocument&) = delete;
    CXmlDocument& operator=(const CXmlDocument&) = delete;

    /// Deletes the tree and every handle on it. The empty node stays.
    void Clear();
    /// Replaces the tree by what the stream holds. The handles on the old one end in any case.
    /// @param encoding how text is kept in memory where that is not Unicode: "UTF-8".
    /// @param flags wxXMLDOC_KEEP_WHITESPACE_NODES or wxXMLDOC_NONE.
    /// @return false, with an error in the log and a tree without root, when it is not well-formed XML or is nested too
    /// deep.
    bool Load(wxInputStream& stream, const wxString& encoding, int flags);
    /// What was wrong when the last Load failed; no message after one that did not.
    const LoadError& GetLoadError() const { return m_loadError; }
    /// Loads a text.
    bool SetContent(const wxString& text);
    /// Writes the tree, indented by one blank a level. False without a tree, when writing fails, and for a tree that is
    /// nested too deep, of which nothing is written.
    bool Save(wxOutputStream& stream);

    /// Deletes every comment below the root element. Handles on them are empty afterwards.
    void RemoveComments();

    /// The link of the root element's handle; null without a root.
    CJScriptLink* GetRoot();
    /// The root element's handle; null, not the empty node, without a root.
    CXmlNode* GetRawRoot();
    /// The handle of a node of the tree, made on first request; the empty node for null.
    CXmlNode* GetAttachNode(wxXmlNode* node);
    /// Deletes a node with all below it, and its handle. The root element leaves a tree without root.
    void DeleteNode(wxXmlNode* node);
    /// Sets the encoding that Save writes. Loading sets it to that of the text; it is "UTF-8" for a document that was
    /// not loaded. Nothing happens without a tree.
    void SetEncoding(const wxString& encoding);
    /// The version in the XML declaration; empty without a tree.
    wxString GetVersion() const;
    /// Replaces the tree by one whose only element is an empty root of this name.
    void SetRoot(const wxString& name);

    /// Overlays this document with another one, which is written in the merge vocabulary: see docs/merge.md. What is
    /// merged leaves the overlay; it can be cleared or destroyed afterwards, but what is left in it says nothing.
    /// @return false, with nothing changed, when a document has no root, when the names of the roots differ, when both
    /// are the same document, and, with an error in the log, when the overlay is nested deeper than this document
    /// allows.
    bool MergeWith(CXmlDocument* overlay);
    /// Copies another document into this one: what has the same name, in any case, is the same element and gets the
    /// attributes of the other, and so on below it; what is not there is added with its attributes, but without its
    /// children. The other document stays as it is.
    /// @param keepExisting whether attributes that are there keep their values.
    /// @return false, with nothing changed, when a document has no root, when the names of the roots differ, and, with
    /// an error in the log, when something would be added deeper than this document allows.
    bool MergeXML(CXmlDocument* other, bool keepExisting);
    /// The same for what is below `src` and `dest`, whose own names and attributes do not matter. False as well when
    /// there is a node missing, and when one of them is below the other.
    bool MergeXML(CXmlNode* dest, CXmlNode* src, bool keepExisting);

    /// The node that stands for nothing; it lives as long as the document.
    CXmlNode* GetEmptyNode() { return &m_emptyNode; }
    /// The context of the document's script object, not owned; null for a document without script.
    CJScript* GetScript() const { return m_script; }
    /// Gives a document that was made without script its context: from now on it is as if the constructor had been
    /// called with these parameters.
    /// @return false when it has a context already, or its script object cannot be made.
    bool SetScript(CJScript* script, const wxString& name, CJScriptLink* parent);

    ///@{
    /// Bounds the depth of elements for what comes: loading, saving, adding, inserting and merging.
    void SetMaxDepth(unsigned int depth) { m_maxDepth = depth; }
    unsigned int GetMaxDepth() const { return m_maxDepth; }
    ///@}

    ///@{
    /// What every scriptable class has: see CJScriptLink.
    virtual const CJScriptLink* GetJSLink() const { return &m_link; }
    virtual CJScriptLink* GetJSLink() { return &m_link; }
    virtual const JSMap* GetJSMap() const { return &m_JSMap; }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;
    ///@}

protected:
    /// For a scriptable class derived from this one.
    CXmlDocument(CJScript* script, const wxString& name, CJScriptLink* parent, CJScriptLinkClass* cls);

    ///@{
    /// For the destructor of a scriptable class derived from this one, first thing: script hears of the end of the
    /// nodes and of the document, while both are whole, and cannot reach the document from then on.
    void CallOnDestroyFunctions();
    void CutFromScript();
    ///@}

    /// The tree itself, for what concerns it as a whole; null without one.
    wxXmlDocument* GetTree() const { return m_tree.get(); }

private:
    friend class CXmlNode;
    friend class CXmlNodeRef;

    using Tree = std::unique_ptr<wxXmlDocument, xml_detail::TreeDeleter>;
    /// Handles that are to end. They do so last in an operation: script may have asked meanwhile to hear of it, and may
    /// do anything.
    using EndedHandles = std::vector<std::unique_ptr<CXmlNode>>;

    void NoticeMissingParent() const;
    void MakeScriptObject(CXmlNode& handle);
    EndedHandles ReplaceTree(Tree tree);
    bool TellEndOf(wxXmlNode* node);
    bool TellEndOfChildren(wxXmlNode* parent);
    std::vector<CJScriptLink*> LinksToTell() const;
    bool TellEndOfTree();
    void Unlink(wxXmlNode* node);
    void EndRefs(const wxXmlNode* top);
    void DeleteUnlinked(wxXmlNode* node);
    void DeleteChildren(wxXmlNode* parent);
    std::unique_ptr<CXmlNode> TakeHandle(wxXmlNode* node);
    bool AllowsDepth(unsigned int depth) const;
    bool AllowsCopy(wxXmlNode& dest, wxXmlNode& src) const;

    bool MergeWith(CXmlNode* base, CXmlNode* overlay, CXmlNode* anchor, bool after);
    static CXmlNode* SearchNode(const wxString& name, CXmlNode* src, CXmlNode* parent, bool nameOnly);
    static CXmlNode* SearchNode(const wxString& nodeName, const wxString& propName, const wxString& propValue,
                                CXmlNode* parent);
    void ForgetChildren(wxXmlNode* node);

    void TakeOver(wxXmlNode* top, CXmlDocument& from);
    void TakeOverRefs(const wxXmlNode* top, CXmlDocument& from);
    std::vector<CXmlNode*> HandlesOf(wxXmlNode* node);
    void EmptyHandles(wxXmlNode* node);
    void SendGuestsHome();
    static void CallHome(CXmlNode& handle);

    Tree m_tree;
    CXmlNode m_emptyNode;
    CHashPXmlNode m_nodes{100};
    std::vector<CXmlNodeRef*> m_refs;
    /// The handles of other documents on nodes of this tree, which were moved here.
    std::unordered_multimap<const wxXmlNode*, CXmlNode*> m_guests;
    CJScript* m_script;
    bool m_constructionFlag;
    unsigned int m_maxDepth = DefaultMaxDepth;
    LoadError m_loadError;
    CJScriptLink m_link;

    wxDECLARE_CLASS(CXmlDocument);
};
