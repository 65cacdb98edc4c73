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

TEST_F(XmlDocumentScriptTest, the_table_has_these_entries_in_this_order)
{
    std::vector<std::string> rows;
    const JSMapEntry* row = CXmlDocument::m_JSMapEntries;
    for (; row->name; ++row)
        rows.push_back(std::string(row->name) + "/" + std::to_string(row->extra));
    EXPECT_EQ(rows, (std::vector<std::string>{"ctor/0", "GetRoot/0", "SetContent/1", "GetVersion/0"}));
    EXPECT_EQ(CXmlDocument::m_JSMapEntries[0].kind, JSMapEntry::Constructor);
    EXPECT_EQ(row->kind, JSMapEntry::End);
}

TEST_F(XmlDocumentScriptTest, the_class_is_named_and_built_on_the_common_one)
{
    const CXmlDocument document;
    EXPECT_STREQ(CXmlDocument::m_JSMap.name, "XmlDocument");
    EXPECT_EQ(CXmlDocument::m_JSMap.parent, &CJScriptLink::ms_JSClass);
    EXPECT_EQ(CXmlDocument::m_JSMap.entries, CXmlDocument::m_JSMapEntries);
    EXPECT_EQ(document.GetJSMap(), &CXmlDocument::m_JSMap);
    EXPECT_EQ(document.GetJSLink()->GetClass(), &CXmlDocument::ms_JSClass);
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

TEST_F(XmlDocumentScriptTest, nodes_are_properties_of_their_document_in_the_order_in_which_they_were_met)
{
    EXPECT_EQ(
        Show(wxS("d = new XmlDocument(); d.SetContent('<r><a/><b/></r>'); b = d.GetRoot().GetNode('b'); d.own = 1;\n"
                 "a = b.GetPrevious(); Object.keys(d).map(n => n == 'own' ? n : d[n].GetName()).join()")),
        wxS(",r,b,own,a"));
    EXPECT_EQ(Show(wxS("names = []; for (let n in d) if (/^P0x[0-9a-f]+$/.test(n)) names.push(n); names.length")),
              wxS("4"));
    EXPECT_EQ(Show(wxS("a.GetNext() === d[names[2]] && names[3] in d && d.hasOwnProperty(names[3])")), wxS("true"));
    EXPECT_EQ(Show(wxS("d.GetRoot().RemoveNode('b'); [names[2] in d, Object.keys(d).length].join()")), wxS("false,4"));
    EXPECT_EQ(Show(wxS("[delete d[names[3]], Object.keys(d).length, a.GetName()].join()")), wxS("true,3,a"));
    EXPECT_EQ(Show(wxS("d.SetContent('<n/>'); Object.keys(d).length")), wxS("2"));
}

TEST_F(XmlDocumentScriptTest, nodes_have_the_name_of_their_address_below_their_document)
{
    CXmlDocument document(&script, wxS("d"), Global());
    ASSERT_TRUE(document.SetContent(wxS("<r><a/></r>")));
    CXmlNode* const root = document.GetRawRoot();
    CXmlNode* const first = root->GetRawChildren();
    const wxString name = wxString::Format(wxS("P%p"), static_cast<void*>(first));
    EXPECT_EQ(root->GetJSLink()->GetCompleteName(), wxString::Format(wxS("d.P%p"), static_cast<void*>(root)));
    EXPECT_EQ(first->GetJSLink()->GetName(), name);
    EXPECT_EQ(Show(first->GetJSLink()->GetCompleteName() + wxS(".GetName()")), wxS("a"));
    EXPECT_EQ(document.GetJSLink()->GetChild(name), first->GetJSLink());
    EXPECT_EQ(document.GetJSLink()->GetChild(name + wxS("0")), nullptr);
}

TEST_F(XmlDocumentScriptTest, a_node_that_is_bound_to_a_further_name_keeps_its_own)
{
    CXmlDocument document(&script, wxS("d"), Global());
    ASSERT_TRUE(document.SetContent(wxS("<r/>")));
    CJScriptLink* const root = document.GetRoot();
    ASSERT_TRUE(root->CreateObject(Context(), Global(), wxS("top"), true, false));
    EXPECT_EQ(Show(root->GetCompleteName() + wxS(" === top")), wxS("true"));
    document.Clear();
    EXPECT_EQ(Show(wxS("Object.keys(d).length + typeof top")), wxS("1object"));
}

TEST_F(XmlDocumentScriptTest, a_document_that_takes_no_properties_has_no_objects_for_further_nodes)
{
    EXPECT_EQ(
        Show(wxS("d = new XmlDocument(); d.SetContent('<r><a/></r>'); r = d.GetRoot(); Object.preventExtensions(d);\n"
                 "[Object.keys(d).length, d.GetRoot() === r].join()")),
        wxS("2,true"));
    EXPECT_EQ(Show(wxS("r.GetFirst()")), wxS("null"));
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

TEST_F(XmlDocumentScriptTest, a_content_is_not_read_beyond_the_limits_of_the_script)
{
    constexpr size_t megabyte = 1024 * 1024;
    script.SetMemoryLimit(48 * megabyte);
    EXPECT_FALSE(
        script.Evaluate(wxS("d = new XmlDocument(); d.SetContent('<r>' + '<a/>'.repeat(1000000) + '</r>')"), nullptr));
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg,
              wxString::Format(wxS("script memory limit of %zu bytes exceeded"), 48 * megabyte));
    EXPECT_EQ(Show(wxS("String(d.GetRoot())")), wxS("null"));
    EXPECT_EQ(log.Errors(), std::vector<wxString>{wxS("XML parsing error: 'interrupted' at line 1")});
}

} // namespace
