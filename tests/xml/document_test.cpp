#include "tests/xml/xml_fixture.h"

#include "script/script.h"
#include "script/script_minimal.h"

#include <wx/mstream.h>
#include <wx/weakref.h>
#include <wx/xml/xml.h>

#include <utility>

namespace
{

constexpr wxLogLevel NoticeLevel = 102;

class XmlDocumentTest : public XmlTest
{
protected:
    bool Load(const std::string& bytes, int flags = wxXMLDOC_NONE)
    {
        wxMemoryInputStream stream(bytes.data(), bytes.size());
        return document.Load(stream, wxS("UTF-8"), flags);
    }
};

/// A document in a script context, and what is logged.
class XmlScriptedDocumentTest : public ::testing::Test
{
protected:
    XmlScriptedDocumentTest() { EXPECT_TRUE(script.SetGlobal(global.GetJSLink(), wxS("Global"))); }

    LogCapture log;
    qxjsMinimal global;
    CJScript script{nullptr};
};

TEST_F(XmlDocumentTest, a_new_document_has_no_root_but_an_empty_node)
{
    EXPECT_EQ(document.GetRawRoot(), nullptr);
    EXPECT_EQ(document.GetRoot(), nullptr);
    ASSERT_NE(Empty(), nullptr);
    EXPECT_EQ(Empty()->GetXmlNode(), nullptr);
    EXPECT_EQ(document.GetScript(), nullptr);
    EXPECT_EQ(document.GetVersion(), wxS(""));
}

TEST_F(XmlDocumentTest, has_run_time_class_information)
{
    EXPECT_STREQ(document.GetClassInfo()->GetClassName(), wxS("CXmlDocument"));
    EXPECT_EQ(document.GetClassInfo()->GetBaseClass1(), wxCLASSINFO(wxObject));
    EXPECT_STREQ(Empty()->GetClassInfo()->GetClassName(), wxS("CXmlNode"));
    EXPECT_EQ(Empty()->GetClassInfo()->GetBaseClass1(), wxCLASSINFO(wxObject));
}

TEST_F(XmlDocumentTest, without_a_tree_nothing_is_saved)
{
    wxMemoryOutputStream stream;
    EXPECT_FALSE(document.Save(stream));
    EXPECT_EQ(stream.GetSize(), 0u);
    document.RemoveComments();
    document.Clear();
    EXPECT_EQ(document.GetRawRoot(), nullptr);
}

TEST_F(XmlDocumentTest, text_that_is_not_xml_leaves_no_root)
{
    Root("<r/>");
    EXPECT_FALSE(document.SetContent(wxS("no xml")));
    EXPECT_EQ(document.GetRawRoot(), nullptr);
    EXPECT_EQ(document.GetRoot(), nullptr);
    EXPECT_EQ(log.Errors().size(), 1u);
    EXPECT_FALSE(document.SetContent(wxString()));
    EXPECT_FALSE(document.SetContent(wxS("<r><a></r>")));
    EXPECT_FALSE(document.SetContent(wxS("<r/><r/>")));
}

TEST_F(XmlDocumentTest, a_text_does_not_end_at_a_nul)
{
    EXPECT_FALSE(document.SetContent(wxString(wxS("<r/>\0"), 5)));
    EXPECT_FALSE(document.SetContent(wxString(wxS("<r/>\0<q/>"), 9)));
    EXPECT_FALSE(document.SetContent(wxString(wxS("<r>\0</r>"), 8)));
    const std::vector<wxString> refused(3, wxS("XML parsing error: 'not well-formed (invalid token)' at line 1"));
    EXPECT_EQ(log.Errors(), refused);
}

TEST_F(XmlDocumentTest, after_a_failed_load_the_tree_is_there_without_a_root)
{
    EXPECT_FALSE(document.SetContent(wxS("<r")));
    document.RemoveComments();
    EXPECT_EQ(document.GetVersion(), wxXmlDocument().GetVersion());
    EXPECT_EQ(document.GetRawRoot(), nullptr);
}

TEST_F(XmlDocumentTest, every_load_starts_with_new_handles)
{
    wxXmlNode* const first = Root("<r><a/></r>")->GetRawChildren()->GetXmlNode();
    EXPECT_EQ(document.GetAttachNode(first), document.GetAttachNode(first));
    Root("<n/>");
    EXPECT_EQ(Show(document), "<n/>");
}

TEST_F(XmlDocumentTest, the_empty_node_outlives_trees)
{
    CXmlNode* const empty = Empty();
    Root("<r/>");
    EXPECT_EQ(Empty(), empty);
    document.Clear();
    EXPECT_EQ(Empty(), empty);
    EXPECT_EQ(document.GetAttachNode(nullptr), empty);
}

TEST_F(XmlDocumentTest, clear_leaves_no_tree)
{
    Root("<r/>");
    document.Clear();
    EXPECT_EQ(document.GetRawRoot(), nullptr);
    wxMemoryOutputStream stream;
    EXPECT_FALSE(document.Save(stream));
}

TEST_F(XmlDocumentTest, a_set_root_is_saved_as_an_empty_element)
{
    Root("<r><a/></r>");
    document.SetRoot(wxS("a"));
    EXPECT_EQ(Show(document), "<a/>");
    EXPECT_EQ(Saved(document), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>\n");
}

TEST_F(XmlDocumentTest, saving_indents_by_one_blank_a_level)
{
    Root("<r><a k='1'><b/></a><c>text</c></r>");
    EXPECT_EQ(Saved(document), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                               "<r>\n <a k=\"1\">\n  <b/>\n </a>\n <c>text</c>\n</r>\n");
}

TEST_F(XmlDocumentTest, whitespace_between_elements_is_kept_on_request)
{
    ASSERT_TRUE(Load("<r> <a/> </r>"));
    EXPECT_EQ(Show(document), "<r><a/></r>");
    ASSERT_TRUE(Load("<r> <a/> </r>", wxXMLDOC_KEEP_WHITESPACE_NODES));
    EXPECT_EQ(Show(document), "<r> <a/> </r>");
}

TEST_F(XmlDocumentTest, the_version_is_that_of_the_declaration)
{
    Root("<?xml version='1.0'?><r/>");
    EXPECT_EQ(document.GetVersion(), wxS("1.0"));
}

TEST_F(XmlDocumentTest, text_is_read_whole)
{
    CXmlNode* const root = Root("<r k='\u00fc\u20ac'>\u00e4\U0001f600</r>");
    EXPECT_EQ(root->GetNodeContent(), wxString::FromUTF8("\u00e4\U0001f600"));
    EXPECT_EQ(root->GetPropW(wxS("k"), wxString()), wxString::FromUTF8("\u00fc\u20ac"));
}

TEST_F(XmlDocumentTest, a_deleted_root_leaves_a_tree_without_one)
{
    document.DeleteNode(Root("<!--x--><r><a/></r>")->GetXmlNode());
    EXPECT_EQ(document.GetRawRoot(), nullptr);
    document.RemoveComments();
    document.DeleteNode(nullptr);
    document.SetRoot(wxS("n"));
    EXPECT_EQ(Show(document), "<n/>");
}

TEST_F(XmlDocumentTest, a_deleted_node_takes_its_subtree_and_its_handle)
{
    CXmlNode* const root = Root("<r><a><b/></a><c/></r>");
    CXmlNode* const b = root->GetRawChildren()->GetRawChildren();
    document.DeleteNode(root->GetRawChildren()->GetXmlNode());
    EXPECT_EQ(Show(document), "<r><c/></r>");
    EXPECT_FALSE(b->Ok());
}

TEST_F(XmlDocumentTest, a_deleted_free_node_leaves_the_tree_alone)
{
    CXmlNode* const root = Root("<r><a/><b/></r>");
    CXmlNode* const a = root->GetRawChildren();
    root->RemoveChild(a);
    document.DeleteNode(a->GetXmlNode());
    EXPECT_EQ(Show(document), "<r><b/></r>");
}

TEST_F(XmlDocumentTest, comments_are_removed_at_every_depth)
{
    Root("<!--top--><r><!--1-->a<b><!--2--><c><!--3--></c></b><!--4--><!--5--></r>");
    CXmlNode* const comment = document.GetRawRoot()->GetRawChildren();
    document.RemoveComments();
    EXPECT_EQ(Show(document), "<r>a<b><c/></b></r>");
    EXPECT_FALSE(comment->Ok());
    EXPECT_EQ(document.GetRawRoot()->GetChildrenCount(), 2);
}

TEST_F(XmlDocumentTest, limit_of_depth_when_loading)
{
    const auto nested = [](unsigned int depth) {
        std::string text;
        for (unsigned int i = 0; i < depth; ++i)
            text += "<a>";
        for (unsigned int i = 0; i < depth; ++i)
            text += "</a>";
        return text;
    };
    EXPECT_TRUE(Load(nested(999)));
    EXPECT_TRUE(Load(nested(1000)));
    EXPECT_TRUE(log.Errors().empty());
    EXPECT_FALSE(Load(nested(1001)));
    EXPECT_EQ(log.Errors().size(), 1u);
    EXPECT_EQ(document.GetRawRoot(), nullptr);
    document.SetMaxDepth(3);
    EXPECT_TRUE(Load(nested(3)));
    EXPECT_FALSE(Load(nested(4)));
    EXPECT_FALSE(Load(nested(1000000)));
}

TEST_F(XmlDocumentTest, limit_of_depth_when_saving)
{
    Root("<r><a><b/></a></r>");
    document.SetMaxDepth(3);
    wxMemoryOutputStream stream;
    EXPECT_TRUE(document.Save(stream));
    document.SetMaxDepth(2);
    wxMemoryOutputStream refused;
    log.Clear();
    EXPECT_FALSE(document.Save(refused));
    EXPECT_EQ(refused.GetSize(), 0u);
    EXPECT_EQ(log.Errors().size(), 1u);
}

TEST_F(XmlDocumentTest, a_tree_of_any_depth_goes_without_overflow)
{
    document.SetMaxDepth(300000);
    document.SetRoot(wxS("r"));
    // Built bottom up, since each insertion looks at the way to the root.
    auto* top = new wxXmlNode(wxXML_ELEMENT_NODE, wxS("a"));
    for (int i = 0; i < 250000; ++i) {
        auto* const above = new wxXmlNode(wxXML_ELEMENT_NODE, wxS("a"));
        above->AddChild(top);
        top = above;
    }
    document.GetRawRoot()->InsertChild(document.GetAttachNode(top), false);
    EXPECT_EQ(document.GetRawRoot()->GetChildrenDepth(), 250001);
    document.RemoveComments();
    document.Clear();
    EXPECT_EQ(document.GetRawRoot(), nullptr);
}

TEST_F(XmlScriptedDocumentTest, a_document_is_a_child_of_its_parent)
{
    CXmlDocument document(&script, wxS("Doc"), global.GetJSLink());
    EXPECT_EQ(document.GetScript(), &script);
    EXPECT_EQ(script.GetChild(global.GetJSLink(), wxS("Doc")), document.GetJSLink());
    EXPECT_TRUE(document.GetEmptyNode()->GetJSLink()->IsCreated());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(XmlScriptedDocumentTest, handles_get_script_objects_when_asked_for_them)
{
    CXmlDocument document(&script, wxS("Doc"), global.GetJSLink());
    ASSERT_TRUE(document.SetContent(wxS("<r><a/></r>")));
    CXmlNode* const a = document.GetRawRoot()->GetRawChildren();
    EXPECT_FALSE(std::as_const(*a).GetJSLink()->IsCreated());
    EXPECT_TRUE(a->GetJSLink()->IsCreated());
    EXPECT_EQ(a->GetJSLink()->GetParent(), document.GetJSLink());
    EXPECT_EQ(document.GetRoot(), document.GetRawRoot()->GetJSLink());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(XmlScriptedDocumentTest, a_set_root_ends_the_handles_on_the_tree_before)
{
    CXmlDocument document(&script, wxS("Doc"), global.GetJSLink());
    ASSERT_TRUE(document.SetContent(wxS("<r><a/></r>")));
    const wxWeakRef<CJScriptLink> root(document.GetRoot());
    const wxWeakRef<CJScriptLink> a(document.GetRawRoot()->GetRawChildren()->GetJSLink());
    ASSERT_TRUE(a);
    document.SetRoot(wxS("n"));
    EXPECT_FALSE(root);
    EXPECT_FALSE(a);
    EXPECT_EQ(Show(document), "<n/>");
}

TEST_F(XmlScriptedDocumentTest, without_a_parent_there_are_no_script_objects)
{
    CXmlDocument document(&script, wxS("Doc"), nullptr);
    EXPECT_EQ(log.Texts(NoticeLevel), (std::vector<wxString>{wxS("No parent"), wxS("No parent")}));
    EXPECT_FALSE(document.GetEmptyNode()->GetJSLink()->IsCreated());
    log.Clear();
    ASSERT_TRUE(document.SetContent(wxS("<r/>")));
    EXPECT_EQ(log.Texts(NoticeLevel), std::vector<wxString>{wxS("No parent")});
    log.Clear();
    EXPECT_FALSE(document.GetRawRoot()->GetJSLink()->IsCreated());
    EXPECT_EQ(log.Texts(NoticeLevel), std::vector<wxString>{wxS("No parent")});
    EXPECT_EQ(document.GetRawRoot()->GetName(), wxS("r"));
}

TEST_F(XmlScriptedDocumentTest, without_script_there_are_no_script_objects_and_no_notice)
{
    CXmlDocument document(nullptr, wxS("Doc"), global.GetJSLink());
    ASSERT_TRUE(document.SetContent(wxS("<r/>")));
    EXPECT_FALSE(document.GetRawRoot()->GetJSLink()->IsCreated());
    EXPECT_FALSE(document.GetJSLink()->IsCreated());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(XmlScriptedDocumentTest, loading_finds_the_script_of_the_documents_script_object)
{
    CXmlDocument document;
    ASSERT_TRUE(script.CreateChild(document.GetJSLink(), global.GetJSLink(), wxS("Doc"), true, false));
    EXPECT_EQ(document.GetScript(), nullptr);
    EXPECT_FALSE(document.GetEmptyNode()->GetJSLink()->IsCreated());
    ASSERT_TRUE(document.SetContent(wxS("<r/>")));
    EXPECT_EQ(document.GetScript(), &script);
    EXPECT_TRUE(document.GetEmptyNode()->GetJSLink()->IsCreated());
    EXPECT_TRUE(document.GetRawRoot()->GetJSLink()->IsCreated());
}

TEST_F(XmlScriptedDocumentTest, script_objects_become_shells_with_their_handles)
{
    CXmlDocument document(&script, wxS("Doc"), global.GetJSLink());
    ASSERT_TRUE(document.SetContent(wxS("<r><a/></r>")));
    ASSERT_TRUE(script.Evaluate(wxS("root = Doc.GetRoot(); a = root.GetFirst(); empty = a.GetFirst();"), nullptr));
    document.Clear();
    bool isAlive = true;
    EXPECT_FALSE(script.Evaluate(wxS("root.Ok()"), nullptr, isAlive));
    EXPECT_FALSE(script.Evaluate(wxS("a.Ok()"), nullptr, isAlive));
    EXPECT_TRUE(script.Evaluate(wxS("empty.Ok()"), nullptr, isAlive));
    EXPECT_FALSE(isAlive);
}

TEST_F(XmlScriptedDocumentTest, a_document_may_outlive_its_context)
{
    CXmlDocument document;
    {
        qxjsMinimal otherGlobal;
        CJScript other(nullptr);
        ASSERT_TRUE(other.SetGlobal(otherGlobal.GetJSLink(), wxString()));
        ASSERT_TRUE(other.CreateChild(document.GetJSLink(), otherGlobal.GetJSLink(), wxS("Doc"), true, false));
        ASSERT_TRUE(document.SetContent(wxS("<r><a/></r>")));
        EXPECT_TRUE(document.GetRawRoot()->GetJSLink()->IsCreated());
    }
    EXPECT_EQ(document.GetRawRoot()->GetRawChildren()->GetName(), wxS("a"));
    EXPECT_TRUE(document.SetContent(wxS("<n/>")));
    EXPECT_EQ(Show(document), "<n/>");
}

TEST_F(XmlScriptedDocumentTest, documents_end_before_and_after_the_context)
{
    for (const bool documentFirst : {false, true}) {
        auto other = std::make_unique<CJScript>(nullptr);
        qxjsMinimal otherGlobal;
        ASSERT_TRUE(other->SetGlobal(otherGlobal.GetJSLink(), wxString()));
        auto document = std::make_unique<CXmlDocument>(other.get(), wxS("Doc"), otherGlobal.GetJSLink());
        ASSERT_TRUE(document->SetContent(wxS("<r><a/></r>")));
        ASSERT_TRUE(other->Evaluate(wxS("a = Doc.GetRoot().GetFirst(); a.GetNext();"), nullptr));
        if (documentFirst)
            document.reset();
        other.reset();
        document.reset();
    }
}

} // namespace
