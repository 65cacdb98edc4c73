#include "fuzz/fuzz_support.h"
#include "xml/merge_detail.h"
#include "xml/tree_links_detail.h"
#include "xml/xml_document.h"

#include <wx/mstream.h>
#include <wx/xml/xml.h>

#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace
{

// An input is two documents with a line "=overlay" between them.

constexpr std::string_view Mark = "\n=overlay\n";
constexpr std::size_t NeverMind = std::numeric_limits<std::size_t>::max();

bool Load(CXmlDocument& document, std::string_view xml)
{
    wxMemoryInputStream stream(xml.data(), xml.size());
    return document.Load(stream, wxS("UTF-8"), wxXMLDOC_NONE);
}

wxXmlNode& RootOf(CXmlDocument& document)
{
    return *document.GetRawRoot()->GetXmlNode();
}

std::size_t CheckTree(wxXmlNode& top)
{
    std::size_t count = 0;
    unsigned int depth = 0;
    for (wxXmlNode* node = &top; node; node = xml_detail::NextInTree(node, &top, depth), ++count) {
        for (const wxXmlNode* child = node->GetChildren(); child; child = child->GetNext())
            Require(child->GetParent() == node, "a child knows its parent");
    }
    return count;
}

std::size_t TakeAway(const std::vector<wxXmlNode*>& nodes)
{
    std::size_t count = 0;
    for (wxXmlNode* const node : nodes) {
        count += CheckTree(*node);
        xml_detail::DeleteTree(node, [](const wxXmlNode*) {});
    }
    return count;
}

/// What of a subtree lasts when it is saved, without white space: indentation adds some, and reading takes away what a
/// text starts with. Texts and the like may have got children and attributes, which do not last.
std::string Shape(wxXmlNode& top)
{
    constexpr auto Lasts = std::numeric_limits<unsigned int>::max();
    std::string shape;
    unsigned int depth = 0;
    unsigned int lost = Lasts; ///< How deep the node is whose children do not last.
    for (wxXmlNode* node = &top; node; node = xml_detail::NextInTree(node, &top, depth)) {
        if (depth > lost)
            continue;
        lost = node->GetType() == wxXML_ELEMENT_NODE ? Lasts : depth;
        if (node->GetType() != wxXML_TEXT_NODE)
            shape +=
                "\n" + std::to_string(depth) + " " + std::to_string(node->GetType()) + node->GetName().utf8_string();
        for (const char c : node->GetContent().utf8_string())
            shape += c == ' ' || c == '\n' || c == '\t' ? "" : std::string(1, c);
        if (lost != Lasts)
            continue;
        for (const wxXmlAttribute* attribute = node->GetAttributes(); attribute; attribute = attribute->GetNext())
            shape += " " + attribute->GetName().utf8_string() + "=" + attribute->GetValue().utf8_string();
    }
    return shape;
}

void CheckSaved(CXmlDocument& document)
{
    wxMemoryOutputStream stream;
    document.SetEncoding(wxS("UTF-8"));
    Require(document.Save(stream), "a merged document can be saved");
    CXmlDocument loaded;
    wxMemoryInputStream saved(stream);
    Require(loaded.Load(saved, wxS("UTF-8"), wxXMLDOC_NONE), "what was saved can be loaded");
    Require(Shape(RootOf(loaded)) == Shape(RootOf(document)), "what was saved is what is loaded");
}

/// Makes a handle on each node.
std::vector<CXmlNode*> HandlesOf(CXmlDocument& document)
{
    std::vector<CXmlNode*> handles = {document.GetRawRoot()};
    for (std::size_t at = 0; at < handles.size(); ++at) {
        for (int i = 0; i < handles[at]->GetChildrenCount(); ++i)
            handles.push_back(handles[at]->GetRawItem(i));
    }
    return handles;
}

void CheckHandles(CXmlDocument& document)
{
    for (CXmlNode* const handle : HandlesOf(document)) {
        Require(handle->GetDocument() == &document, "a handle is the document's");
        int count = 0;
        for (CXmlNode* child = handle->GetRawChildren(); child->Ok(); child = child->GetRawNext(), ++count)
            Require(handle->GetRawItem(count) == child && child->GetRawParent() == handle, "handles lead to and fro");
        Require(handle->GetChildrenCount() == count, "the count is that of the children");
    }
}

/// Merges the trees, with as much patience before children get an index.
std::string MergeTrees(std::string_view baseXml, std::string_view overlayXml, std::size_t patience)
{
    CXmlDocument base;
    CXmlDocument overlay;
    Load(base, baseXml);
    Load(overlay, overlayXml);
    const std::size_t before = CheckTree(RootOf(base)) + CheckTree(RootOf(overlay));
    xml_detail::OverlayMerge merge(patience);
    merge.Run(RootOf(base), RootOf(overlay), nullptr, true);
    const std::size_t after = CheckTree(RootOf(base)) + CheckTree(RootOf(overlay)) + TakeAway(merge.TakeRemoved());
    Require(before == after, "no node is lost");
    return Shape(RootOf(base)) + "\n=\n" + Shape(RootOf(overlay));
}

void CheckOverlay(std::string_view baseXml, std::string_view overlayXml)
{
    const std::string walked = MergeTrees(baseXml, overlayXml, NeverMind);
    Require(MergeTrees(baseXml, overlayXml, 0) == walked, "an index gives what a walk gives");
    CXmlDocument overlay;
    Load(overlay, overlayXml);
    const std::vector<CXmlNode*> handles = HandlesOf(overlay);
    {
        CXmlDocument base;
        Load(base, baseXml);
        HandlesOf(base);
        Require(base.MergeWith(&overlay), "documents with the same root can be merged");
        Require(Shape(RootOf(base)) + "\n=\n" + Shape(RootOf(overlay)) == walked, "documents are merged like trees");
        CheckHandles(base);
        CheckSaved(base);
        for (CXmlNode* const handle : handles)
            Require(handle->GetRawParent()->GetChildrenCount() > handle->GetIndex(), "handles of the overlay go on");
    }
    for (CXmlNode* const handle : handles)
        Require(handle->GetDocument() == &overlay && handle->GetName().length() < NeverMind, "and come home");
}

void CheckCopy(std::string_view baseXml, std::string_view otherXml, bool keepExisting)
{
    CXmlDocument base;
    CXmlDocument other;
    Load(base, baseXml);
    Load(other, otherXml);
    const std::string otherShape = Shape(RootOf(other));
    HandlesOf(base);
    if (!base.MergeXML(&other, keepExisting))
        return; // as deep as may be, with text at the bottom
    Require(Shape(RootOf(other)) == otherShape, "the source is left unchanged");
    CheckTree(RootOf(base));
    CheckHandles(base);
    CheckSaved(base);
    // Each further copy of the same brings at most the children of what the last one has brought.
    std::string shape;
    for (unsigned int i = xml_detail::HeightOf(RootOf(other), [](const wxXmlNode&) { return true; }); i > 0; --i)
        base.MergeXML(&other, true);
    shape = Shape(RootOf(base));
    base.MergeXML(&other, true);
    Require(Shape(RootOf(base)) == shape, "in the end there is nothing left to copy");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::size_t mark = bytes.find(Mark);
    if (mark == bytes.npos)
        return 0;
    const std::string_view baseXml = bytes.substr(0, mark);
    const std::string_view overlayXml = bytes.substr(mark + Mark.size());
    CXmlDocument base;
    CXmlDocument overlay;
    if (!Load(base, baseXml) || !Load(overlay, overlayXml) ||
        base.GetRawRoot()->GetName() != overlay.GetRawRoot()->GetName())
        return 0;
    CheckOverlay(baseXml, overlayXml);
    CheckCopy(baseXml, overlayXml, size % 2);
    return 0;
}
