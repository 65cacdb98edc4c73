#include "tests/script/script_fixture.h"
#include "xml/xml_document.h"

namespace
{

using XmlDocumentScriptTest = ScriptTest;

TEST_F(XmlDocumentScriptTest, script_makes_documents)
{
    EXPECT_EQ(Show(wxS("d = new XmlDocument(); String(d.GetRoot())")), wxS("null"));
    EXPECT_EQ(Show(wxS("d.SetContent('<r/>') + ' ' + d.GetRoot().GetName() + ' ' + d.GetVersion()")),
              wxS("true r 1.0"));
    EXPECT_EQ(Show(wxS("d.SetContent('no xml') + ' ' + d.GetRoot()")), wxS("false null"));
}

TEST_F(XmlDocumentScriptTest, set_content_takes_any_value_as_text)
{
    EXPECT_EQ(Show(wxS("d = new XmlDocument(); d.SetContent({toString() { return '<r/>'; }}) + d.GetRoot().GetName()")),
              wxS("truer"));
    EXPECT_EQ(Show(wxS("d.SetContent(5)")), wxS("false"));
}

TEST_F(XmlDocumentScriptTest, set_content_counts_its_arguments)
{
    EXPECT_EQ(Show(wxS("d = new XmlDocument(); try { d.SetContent() } catch (e) { e.message }")),
              wxS("Bad argument count for function 'SetContent' (0 instead of 1)"));
    EXPECT_EQ(Show(wxS("try { d.SetContent('<r/>', 1) } catch (e) { e.message }")),
              wxS("Bad argument count for function 'SetContent' (2 instead of 1)"));
}

TEST_F(XmlDocumentScriptTest, methods_without_arguments_fail_without_a_message_when_given_some)
{
    for (const wxString method : {wxS("GetRoot"), wxS("GetVersion")}) {
        EXPECT_EQ(
            Show(wxS("d = new XmlDocument(); d.SetContent('<r/>'); try { d.") + method + wxS("(1) } catch (e) { 1 }")),
            wxS("(failed)"));
        EXPECT_EQ(script.GetErrorCount(), 0);
    }
}

TEST_F(XmlDocumentScriptTest, a_document_lives_as_long_as_script_holds_one_of_its_nodes)
{
    EXPECT_EQ(Show(wxS("function load(text) { var d = new XmlDocument(); d.SetContent(text); return d.GetRoot(); }\n"
                       "r = load('<r><a>text</a></r>'); 0")),
              wxS("0"));
    JS_GC(Context());
    EXPECT_EQ(Show(wxS("r.GetFirst().GetContent()")), wxS("text"));
}

TEST_F(XmlDocumentScriptTest, documents_are_collected_with_their_nodes)
{
    const std::size_t before = JS_CountHostObjects();
    EXPECT_EQ(
        Show(wxS("for (let i = 0; i < 100; ++i) {\n"
                 "  let d = new XmlDocument(); d.SetContent('<r><a/><b/></r>'); d.GetRoot().GetFirst().GetNext();\n"
                 "}\n0")),
        wxS("0"));
    JS_GC(Context());
    EXPECT_LE(JS_CountHostObjects(), before + 10);
}

TEST_F(XmlDocumentScriptTest, nodes_of_an_earlier_content_fail_silently)
{
    EXPECT_EQ(Show(wxS("d = new XmlDocument(); d.SetContent('<r><a/></r>'); a = d.GetRoot().GetFirst();\n"
                       "d.SetContent('<n/>'); try { a.GetName() } catch (e) { 1 }")),
              wxS("(failed)"));
    EXPECT_EQ(Show(wxS("d.GetRoot().GetName()")), wxS("n"));
}

/// Script that hears of the end of a node does something to the document, whatever the document is at.
struct ActionRow
{
    std::string name;
    const char* text;
};

void PrintTo(const ActionRow& row, std::ostream* out)
{
    *out << row.name;
}

class XmlOnDestroyTest : public ScriptTest, public ::testing::WithParamInterface<ActionRow>
{};

const ActionRow Actions[] = {
    {"loads", "d.SetContent('<n><m/></n>')"},
    {"removes_children", "d.GetRoot() && d.GetRoot().RemoveChildren()"},
    {"walks", "d.GetRoot() && d.GetRoot().GetFirst().GetNext().GetNodeString()"},
    {"adds", "d.GetRoot() && d.GetRoot().AddNode('x').AddNode('y')"},
    {"collects", "for (let i = 0; i < 50000; ++i) ({}); 0"},
};

TEST_P(XmlOnDestroyTest, in_every_operation_that_ends_nodes)
{
    const wxString action = wxString::FromUTF8(GetParam().text);
    for (const wxString operation :
         {wxS("d.SetContent('<k/>')"), wxS("d.SetContent('no xml')"), wxS("d.GetRoot().RemoveChildren()"),
          wxS("d.GetRoot().Clear()"), wxS("d.GetRoot().RemoveNode('a')")}) {
        const wxString text = wxS("heard = 0; d = new XmlDocument(); d.SetContent('<r><a><b/></a><c/><a/></r>');\n"
                                  "for (let n = d.GetRoot().GetFirst(); n.Ok(); n = n.GetNext())\n"
                                  "  n.CallOnDestroy(function () { ++heard; ") +
                              action + wxS("; });\n") + operation + wxS("; String(heard > 0)");
        EXPECT_EQ(Show(text), wxS("true")) << operation;
    }
    JS_GC(Context());
}

INSTANTIATE_TEST_SUITE_P(Xml, XmlOnDestroyTest, ::testing::ValuesIn(Actions), NameOfRow<ActionRow>);

} // namespace
