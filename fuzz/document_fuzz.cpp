#include "fuzz/fuzz_support.h"
#include "script/script.h"
#include "script/script_minimal.h"
#include "xml/xml_document.h"

#include <wx/mstream.h>
#include <wx/xml/xml.h>

#include <algorithm>
#include <iterator>

namespace
{

// An input is a line of steps, three bytes each, and the document behind it. A step is a statement, the two of the
// four nodes that script holds which it is about, and a name.
constexpr std::size_t StepSize = 3;
constexpr std::size_t MaxSteps = 60;
constexpr std::size_t NodeCount = 4;

constexpr const wchar_t* Names[] = {L"'a'", L"'b'", L"'r'", L"'x'"};

/// A and B are nodes, N is a name.
constexpr const wchar_t* Statements[] = {
    L"A = B.GetFirst()",
    L"A = B.GetNext()",
    L"A = B.GetPrevious()",
    L"A = B.GetParent()",
    L"A = B.GetNode(N)",
    L"A = B.GetNextByName(N)",
    L"A = B.GetPreviousByName(N)",
    L"A = B.Item(B.GetCount() - 1)",
    L"A = B.Item(1)",
    L"A = B.AddNode(N)",
    L"A = B.AddNode(N).AddNode(N)",
    L"A.RemoveNode(N)",
    L"A.Clear()",
    L"A.ClearProps()",
    L"A.RemoveChildren()",
    L"A.SetName(N)",
    L"A.DelProp(N), A.AddProp(N, A.GetNodeString() + B.GetContent())",
    L"A.DelProp(N)",
    L"A = document.GetRoot()",
    L"[A.GetAllProps(), A.GetAllPropsBefore(N), A.GetAllPropsAfter(N), A.GetProp(N), A.HasProp(N)]",
    L"[A.IsFirst(), A.IsLast(), A.IsAlone(), A.IsMiddle(), A.GetIndex(), A.GetChildrenDepth(), A.GetCountOf(N)]",
    L"A.CallOnDestroy(function() { B.AddNode(N); })",
    L"A.CallOnDestroy(function() { document.GetRoot().RemoveNode(N); })",
    L"A.CallOnDestroy(function() { document.SetContent('<r><a/></r>'); })",
    L"A.SetName({toString() { B.RemoveChildren(); return N; }})",
    L"A = null",
    L"collect()",
};

wxString Statement(const std::uint8_t* step)
{
    wxString text = Statements[step[0] % std::size(Statements)];
    text.Replace(wxS("A"), wxString::Format(wxS("n[%d]"), step[1] % static_cast<int>(NodeCount)));
    text.Replace(wxS("B"), wxString::Format(wxS("n[%d]"), step[1] / 16 % static_cast<int>(NodeCount)));
    text.Replace(wxS("N"), Names[step[2] % std::size(Names)]);
    return text;
}

void CheckTree(const wxXmlNode& node)
{
    for (const wxXmlNode* child = node.GetChildren(); child; child = child->GetNext()) {
        Require(child->GetParent() == &node, "a child knows its parent");
        CheckTree(*child);
    }
}

/// A text without what indentation adds to it.
std::string Blackened(const wxString& text)
{
    std::string bytes = text.utf8_string();
    bytes.erase(std::remove_if(bytes.begin(), bytes.end(), [](char c) { return c == ' ' || c == '\n'; }), bytes.end());
    return bytes;
}

std::string Shape(const wxXmlNode& node)
{
    std::string shape = Blackened(node.GetContent());
    if (node.GetType() == wxXML_TEXT_NODE)
        return shape;
    shape += "(" + std::to_string(node.GetType()) + node.GetName().utf8_string();
    for (const wxXmlAttribute* attribute = node.GetAttributes(); attribute; attribute = attribute->GetNext())
        shape += " " + attribute->GetName().utf8_string() + "=" + Blackened(attribute->GetValue());
    for (const wxXmlNode* child = node.GetChildren(); child; child = child->GetNext())
        shape += Shape(*child);
    return shape + ")";
}

void CheckSaved(CXmlDocument& document)
{
    wxMemoryOutputStream stream;
    Require(document.Save(stream), "a document can be saved");
    CXmlDocument loaded;
    wxMemoryInputStream saved(stream);
    Require(loaded.Load(saved, wxS("UTF-8"), wxXMLDOC_NONE), "what was saved can be loaded");
    Require(Shape(*loaded.GetRawRoot()->GetXmlNode()) == Shape(*document.GetRawRoot()->GetXmlNode()),
            "what was saved is what is loaded");
}

void CheckHandles(CXmlNode* node)
{
    int count = 0;
    for (CXmlNode* child = node->GetRawChildren(); child->Ok(); child = child->GetRawNext(), ++count) {
        Require(child->GetRawParent() == node, "a child's handle leads back");
        Require(node->GetRawItem(count) == child, "a position leads to the child");
        CheckHandles(child);
    }
    Require(node->GetChildrenCount() == count, "the count is that of the children");
}

void Run(const std::uint8_t* data, std::size_t steps, const std::uint8_t* xml, std::size_t xmlSize)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    script.SetGlobal(global.GetJSLink(), wxS("Global"));
    CXmlDocument document(&script, wxS("document"), global.GetJSLink());
    wxMemoryInputStream stream(xml, xmlSize);
    if (!document.Load(stream, wxS("UTF-8"), wxXMLDOC_NONE))
        return;
    script.Evaluate(wxS("var r = document.GetRoot(); var n = [r, r, r.GetFirst(), r];"
                        "function collect() { for (let i = 0; i < 1000; ++i) ({}); }"),
                    nullptr);
    for (std::size_t i = 0; i < steps; ++i)
        script.Evaluate(Statement(data + i * StepSize), nullptr);
    if (CXmlNode* const root = document.GetRawRoot()) {
        CheckTree(*root->GetXmlNode());
        CheckHandles(root);
        CheckSaved(document);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    const std::uint8_t* const end = data + size;
    const std::uint8_t* const lineEnd = std::find(data, end, '\n');
    if (lineEnd == end)
        return 0;
    const std::size_t scriptObjects = JS_CountHostObjects();
    const auto steps = static_cast<std::size_t>(lineEnd - data) / StepSize;
    Run(data, std::min(steps, MaxSteps), lineEnd + 1, static_cast<std::size_t>(end - lineEnd - 1));
    Require(JS_CountHostObjects() == scriptObjects, "no script object outlives its context");
    return 0;
}
