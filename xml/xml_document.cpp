#include "xml/xml_document.h"

#include "base/patience_detail.h"
#include "script/class_module.h"
#include "script/native_function.h"
#include "script/script.h"
#include "xml/tree_links_detail.h"
#include "xml/tree_reader_detail.h"
#include "xml/tree_writer_detail.h"
#include "xml/xml_node_ref.h"

#include <wx/log.h>
#include <wx/mstream.h>
#include <wx/xml/xml.h>

#include <utility>

wxIMPLEMENT_CLASS(CXmlDocument, wxObject);

JSMapEntry CXmlDocument::m_JSMapEntries[] = {
    JSConstructor<CXmlDocument>(),
    JSMethodWithoutArguments<&CXmlDocument::GetRoot>("GetRoot"),
    JSMethod<&CXmlDocument::SetContent>("SetContent"),
    JSMethodWithoutArguments<&CXmlDocument::GetVersion>("GetVersion"),
    JSMapEntry(),
};
const JSMap CXmlDocument::m_JSMap{"XmlDocument", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass CXmlDocument::ms_JSClass(&CXmlDocument::m_JSMap, JSCLASS_HAS_LATE_CHILDREN);

JS_REGISTER_CLASS_MODULE(CXmlDocument)

namespace
{

constexpr wxLogLevel NoticeLevel = wxLOG_User + 2;

constexpr int IndentationStep = 1;

/// What a tree takes in memory for each byte of its file, roughly: a node's own size and four bytes a character.
constexpr std::size_t MemoryPerByte = 10;

} // namespace

void xml_detail::TreeDeleter::operator()(wxXmlDocument* tree) const
{
    DeleteTree(tree->DetachDocumentNode(), [](const wxXmlNode*) {});
    delete tree;
}

CXmlDocument::CXmlDocument() : m_emptyNode(this, nullptr), m_script(nullptr), m_constructionFlag(true)
{
    m_link.Link(this, &ms_JSClass);
}

CXmlDocument::CXmlDocument(CJScript* script, const wxString& name, CJScriptLink* parent)
    : CXmlDocument(script, name, parent, &ms_JSClass)
{}

CXmlDocument::CXmlDocument(CJScript* script, const wxString& name, CJScriptLink* parent, CJScriptLinkClass* cls)
    : m_emptyNode(this, nullptr), m_script(script), m_constructionFlag(false)
{
    m_link.Link(this, cls);
    if (!m_script)
        return;
    m_script->CreateChild(&m_link, parent, name, true, false);
    NoticeMissingParent();
    MakeScriptObject(m_emptyNode);
}

CXmlDocument::~CXmlDocument()
{
    m_script = nullptr;
    CallOnDestroyFunctions();
    // What script registers while it hears of the end is called with the handles, and must not fill the document again.
    CutFromScript();
    ReplaceTree(nullptr);
    for (CXmlNodeRef* const ref : m_refs)
        ref->m_document = nullptr;
}

bool CXmlDocument::SetScript(CJScript* script, const wxString& name, CJScriptLink* parent)
{
    if (m_script || m_link.IsCreated() || !script->CreateChild(&m_link, parent, name, true, false))
        return false;
    m_script = script;
    MakeScriptObject(m_emptyNode);
    return true;
}

/// Says in the log that handles which should have script objects get none.
void CXmlDocument::NoticeMissingParent() const
{
    if (m_script && !m_link.IsCreated())
        wxLogGeneric(NoticeLevel, wxS("No parent"));
}

/// Gives a handle its script object, if it can have one.
void CXmlDocument::MakeScriptObject(CXmlNode& handle)
{
    if (m_script && m_link.IsCreated())
        handle.m_link.CreateObject(m_link.GetContext(), &m_link, wxString(), true, false);
}

void CXmlDocument::Clear()
{
    if (TellEndOfTree())
        ReplaceTree(nullptr);
}

bool CXmlDocument::Load(wxInputStream& stream, const wxString& encoding, int flags)
{
    if (!TellEndOfTree())
        return false;
    const EndedHandles ended = ReplaceTree(Tree(new wxXmlDocument));
    if (!m_script)
        m_script = m_link.GetScript();
    NoticeMissingParent();
    if (!m_emptyNode.m_link.IsCreated())
        MakeScriptObject(m_emptyNode);
    m_loadError = LoadError();
    const bool loaded = xml_detail::ReadTree(stream, *m_tree, encoding, flags, m_maxDepth, m_loadError);
    m_link.AnnounceMemory(static_cast<std::size_t>(stream.TellI()) * MemoryPerByte);
    return loaded;
}

bool CXmlDocument::SetContent(const wxString& text)
{
    // A string stream would end at the first NUL, as if nothing stood behind it.
    const wxScopedCharBuffer bytes = text.utf8_str();
    wxMemoryInputStream stream(bytes.data(), bytes.length());
    // A load from elsewhere is a host's: half of a file is of no use to it, whoever runs out of time.
    const vcq::detail::Patience patience(&JS_MayGoOn);
    return Load(stream, wxS("UTF-8"), wxXMLDOC_NONE);
}

bool CXmlDocument::Save(wxOutputStream& stream)
{
    return m_tree && xml_detail::WriteTree(*m_tree, stream, IndentationStep, m_maxDepth);
}

void CXmlDocument::RemoveComments()
{
    wxXmlNode* const root = m_tree ? m_tree->GetRoot() : nullptr;
    unsigned int depth = 0;
    for (wxXmlNode* node = root; node;) {
        wxXmlNode* const comment = node->GetType() == wxXML_COMMENT_NODE ? node : nullptr;
        node = xml_detail::NextInTree(node, root, depth);
        if (comment && comment != root) {
            Unlink(comment);
            DeleteUnlinked(comment);
        }
    }
}

CJScriptLink* CXmlDocument::GetRoot()
{
    CXmlNode* const root = GetRawRoot();
    return root ? root->GetJSLink() : nullptr;
}

CXmlNode* CXmlDocument::GetRawRoot()
{
    wxXmlNode* const root = m_tree ? m_tree->GetRoot() : nullptr;
    return root ? GetAttachNode(root) : nullptr;
}

CXmlNode* CXmlDocument::GetAttachNode(wxXmlNode* node)
{
    if (!node)
        return &m_emptyNode;
    CXmlNode*& entry = m_nodes[node];
    if (entry) {
        // The handle on a node that has gone is that of the one which took its place in memory.
        CallHome(*entry);
        entry->m_node = node;
        return entry;
    }
    CXmlNode* const handle = entry = new CXmlNode(this, node);
    NoticeMissingParent();
    return handle;
}

/// Takes a node out of the tree.
void CXmlDocument::Unlink(wxXmlNode* node)
{
    wxXmlNode* const parent = node->GetParent();
    if (!parent)
        return;
    if (m_tree && node == m_tree->GetRoot())
        m_tree->DetachRoot();
    else
        parent->RemoveChild(node);
    ForgetChildren(parent);
}

void CXmlDocument::SetEncoding(const wxString& encoding)
{
    if (m_tree)
        m_tree->SetFileEncoding(encoding);
}

wxString CXmlDocument::GetVersion() const
{
    return m_tree ? m_tree->GetVersion() : wxString();
}

void CXmlDocument::SetRoot(const wxString& name)
{
    if (!TellEndOfTree())
        return;
    Tree tree(new wxXmlDocument);
    tree->SetRoot(new wxXmlNode(wxXML_ELEMENT_NODE, name));
    ReplaceTree(std::move(tree));
}

/// Whether an element may stand so deep; when not, the log says so.
bool CXmlDocument::AllowsDepth(unsigned int depth) const
{
    if (depth <= m_maxDepth)
        return true;
    wxLogError(wxS("XML elements are nested deeper than %u"), m_maxDepth);
    return false;
}
