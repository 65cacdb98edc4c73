#include "tests/xml/xml_fixture.h"

#include <wx/xml/xml.h>

namespace
{

class XmlNodeEditTest : public XmlTest
{
protected:
    /// A chain of as many elements as are allowed, the innermost one.
    CXmlNode* Deepest()
    {
        document.SetRoot(wxS("r"));
        CXmlNode* node = document.GetRawRoot();
        for (unsigned int depth = 1; depth < document.GetMaxDepth(); ++depth)
            node = node->AddRawNode(wxS("a"));
        return node;
    }
};

TEST_F(XmlNodeEditTest, a_new_element_is_the_last_child)
{
    CXmlNode* const root = Root("<r>t<a/></r>");
    CXmlNode* const added = root->AddRawNode(wxS("n"));
    EXPECT_EQ(added->GetName(), wxS("n"));
    EXPECT_EQ(added->GetRawParent(), root);
    EXPECT_EQ(added->GetXmlNode()->GetType(), wxXML_ELEMENT_NODE);
    EXPECT_EQ(added->GetXmlNode()->GetContent(), wxS(""));
    EXPECT_EQ(Show(document), "<r>t<a/><n/></r>");
    root->GetRawNode(wxS("a"))->AddRawNode(wxS("x"));
    root->AddRawNode(wxS("m"));
    EXPECT_EQ(Show(document), "<r>t<a><x/></a><n/><m/></r>");
}

TEST_F(XmlNodeEditTest, nothing_is_added_to_the_empty_node)
{
    EXPECT_EQ(Empty()->AddRawNode(wxS("n")), Empty());
    EXPECT_EQ(Empty()->AddNode(wxS("n")), Empty()->GetJSLink());
}

TEST_F(XmlNodeEditTest, edits_of_the_empty_node_do_nothing)
{
    CXmlNode* const root = Root("<r><a/></r>");
    Empty()->SetName(wxS("n"));
    Empty()->SetNodeContent(wxS("n"));
    Empty()->AddProp(wxS("n"), wxS("1"));
    Empty()->AddProp(wxS("n"), 1L);
    Empty()->AddOrChangeProp(wxS("n"), wxS("1"));
    Empty()->AddOrChangeProp(wxS("n"), 1L);
    EXPECT_FALSE(Empty()->DelProp(wxS("n")));
    Empty()->Clear();
    Empty()->ClearProps();
    Empty()->RemoveChildren();
    Empty()->RemoveChild(root->GetRawChildren());
    Empty()->InsertChild(root->GetRawChildren(), false);
    Empty()->InsertChildAt(root->GetRawChildren(), root, true);
    EXPECT_FALSE(Empty()->RemoveRawNode(wxS("a")));
    EXPECT_FALSE(Empty()->RemoveRawNode(root));
    EXPECT_FALSE(Empty()->RemoveNode(wxS("a")));
    EXPECT_EQ(Show(document), "<r><a/></r>");
}

TEST_F(XmlNodeEditTest, the_first_child_of_a_name_is_removed)
{
    CXmlNode* const root = Root("<r><b/><a i='1'><x/></a><a i='2'/></r>");
    EXPECT_TRUE(root->RemoveRawNode(wxS("a")));
    EXPECT_EQ(Show(document), "<r><b/><a i='2'/></r>");
    EXPECT_TRUE(root->RemoveNode(wxS("a")));
    EXPECT_FALSE(root->RemoveNode(wxS("a")));
    EXPECT_FALSE(root->RemoveNode(wxS("B")));
    EXPECT_EQ(Show(document), "<r><b/></r>");
}

TEST_F(XmlNodeEditTest, a_node_is_removed_wherever_it_is)
{
    CXmlNode* const root = Root("<r><a><x/></a><b/></r>");
    EXPECT_TRUE(root->GetRawNode(wxS("b"))->RemoveRawNode(root->GetRawNode(wxS("a"))->GetRawNode(wxS("x"))));
    EXPECT_EQ(Show(document), "<r><a/><b/></r>");
    EXPECT_FALSE(root->RemoveRawNode(nullptr));
    EXPECT_TRUE(root->RemoveRawNode(root->GetRawNode(wxS("b"))));
    EXPECT_EQ(Show(document), "<r><a/></r>");
}

TEST_F(XmlNodeEditTest, a_node_of_another_document_is_removed_there)
{
    CXmlNode* const root = Root("<r><a/></r>");
    CXmlDocument other;
    ASSERT_TRUE(other.SetContent(wxS("<o><x><y/></x><z/></o>")));
    CXmlNode* const otherRoot = other.GetRawRoot();
    CXmlNode* const x = otherRoot->GetRawChildren();
    const CXmlNode* const y = x->GetRawChildren();
    ASSERT_EQ(otherRoot->GetChildrenCount(), 2);
    EXPECT_TRUE(root->RemoveRawNode(x));
    EXPECT_EQ(otherRoot->GetChildrenCount(), 1);
    EXPECT_FALSE(y->Ok());
    EXPECT_EQ(Show(other), "<o><z/></o>");
    EXPECT_EQ(Show(document), "<r><a/></r>");
    EXPECT_TRUE(root->RemoveRawNode(otherRoot));
    EXPECT_EQ(Show(other), "(none)");
}

TEST_F(XmlNodeEditTest, a_node_can_remove_itself_and_what_it_is_in)
{
    CXmlNode* const root = Root("<r><a><x/></a><b/></r>");
    CXmlNode* const x = root->GetRawNode(wxS("a"))->GetRawNode(wxS("x"));
    EXPECT_TRUE(x->RemoveRawNode(root->GetRawNode(wxS("a"))));
    EXPECT_EQ(Show(document), "<r><b/></r>");
    EXPECT_TRUE(root->RemoveRawNode(root));
    EXPECT_EQ(Show(document), "(none)");
}

TEST_F(XmlNodeEditTest, handles_deeper_in_a_removed_subtree_are_empty)
{
    CXmlNode* const root = Root("<r><a><x><y/></x></a></r>");
    CXmlNode* const x = root->GetRawNode(wxS("a"))->GetRawNode(wxS("x"));
    CXmlNode* const y = x->GetRawNode(wxS("y"));
    root->RemoveChildren();
    EXPECT_FALSE(x->Ok());
    EXPECT_FALSE(y->Ok());
    EXPECT_EQ(y->GetRawParent(), Empty());
    EXPECT_EQ(x->GetName(), wxS(""));
    for (int i = 0; i < 100; ++i)
        root->AddRawNode(wxS("n"))->AddRawNode(wxS("m"));
    EXPECT_EQ(root->GetChildrenCount(), 100);
}

TEST_F(XmlNodeEditTest, clear_takes_properties_and_children)
{
    CXmlNode* const root = Root("<r a='1' b='2'>t<x><y/></x><!--c--></r>");
    root->Clear();
    EXPECT_EQ(Show(document), "<r/>");
    EXPECT_EQ(root->GetRawChildren(), Empty());
}

TEST_F(XmlNodeEditTest, clear_props_takes_properties_only)
{
    CXmlNode* const root = Root("<r a='1' b='2'><x c='3'/></r>");
    root->ClearProps();
    root->ClearProps();
    EXPECT_EQ(Show(document), "<r><x c='3'/></r>");
}

TEST_F(XmlNodeEditTest, remove_children_takes_children_only)
{
    CXmlNode* const root = Root("<r a='1'>t<x/></r>");
    root->RemoveChildren();
    EXPECT_EQ(Show(document), "<r a='1'/>");
    EXPECT_EQ(root->GetChildrenCount(), 0);
    root->AddRawNode(wxS("n"));
    EXPECT_EQ(Show(document), "<r a='1'><n/></r>");
}

TEST_F(XmlNodeEditTest, a_name_is_set)
{
    Root("<r><a/></r>")->GetRawChildren()->SetName(wxS("n"));
    EXPECT_EQ(Show(document), "<r><n/></r>");
}

TEST_F(XmlNodeEditTest, content_goes_into_the_first_text)
{
    CXmlNode* const root = Root("<r><a/>one<b/>two</r>");
    root->SetNodeContent(wxS("new"));
    EXPECT_EQ(Show(document), "<r><a/>new<b/>two</r>");
}

TEST_F(XmlNodeEditTest, content_beside_elements_becomes_the_last_child)
{
    CXmlNode* const root = Root("<r><a/><b/></r>");
    root->SetNodeContent(wxS("new"));
    EXPECT_EQ(Show(document), "<r><a/><b/>new</r>");
    EXPECT_EQ(root->GetRawItem(2)->GetXmlNode()->GetName(), wxS(""));
    EXPECT_EQ(root->GetRawItem(2)->GetXmlNode()->GetType(), wxXML_TEXT_NODE);
}

TEST_F(XmlNodeEditTest, content_does_not_go_into_cdata)
{
    CXmlNode* const root = Root("<r><![CDATA[raw]]></r>");
    root->SetNodeContent(wxS("new"));
    EXPECT_EQ(Show(document), "<r><![CDATA[raw]]>new</r>");
}

TEST_F(XmlNodeEditTest, empty_content_makes_a_text_too)
{
    CXmlNode* const root = Root("<r/>");
    root->SetNodeContent(wxString());
    EXPECT_EQ(root->GetChildrenCount(), 1);
    EXPECT_EQ(root->GetRawChildren()->GetXmlNode()->GetType(), wxXML_TEXT_NODE);
    EXPECT_EQ(root->GetNodeContent(), wxS(""));
}

TEST_F(XmlNodeEditTest, a_property_is_added_beside_one_of_its_name)
{
    CXmlNode* const root = Root("<r/>");
    root->AddProp(wxS("a"), wxS("1"));
    root->AddProp(wxS("a"), wxS("2"));
    EXPECT_EQ(Show(document), "<r a='1' a='2'/>");
    root->AddOrChangeProp(wxS("a"), wxS("3"));
    EXPECT_EQ(Show(document), "<r a='3' a='2'/>");
}

TEST_F(XmlNodeEditTest, a_changed_property_keeps_its_place)
{
    CXmlNode* const root = Root("<r a='1' b='2'/>");
    root->AddOrChangeProp(wxS("a"), wxS("3"));
    root->AddOrChangeProp(wxS("A"), wxS("4"));
    EXPECT_EQ(Show(document), "<r a='3' b='2' A='4'/>");
}

TEST_F(XmlNodeEditTest, numbers_are_written_in_decimal)
{
    CXmlNode* const root = Root("<r/>");
    root->AddProp(wxS("a"), -12L);
    root->AddOrChangeProp(wxS("b"), 7L);
    root->AddOrChangeProp(wxS("a"), 0x7fffffffffffffffL);
    EXPECT_EQ(Show(document), "<r a='9223372036854775807' b='7'/>");
    EXPECT_EQ(root->GetPropLong(wxS("a"), 0), 0x7fffffffffffffffL);
}

TEST_F(XmlNodeEditTest, a_property_is_deleted_by_its_exact_name)
{
    CXmlNode* const root = Root("<r a='1' b='2'/>");
    EXPECT_FALSE(root->DelProp(wxS("B")));
    EXPECT_TRUE(root->DelProp(wxS("b")));
    EXPECT_FALSE(root->DelProp(wxS("b")));
    EXPECT_EQ(Show(document), "<r a='1'/>");
}

TEST_F(XmlNodeEditTest, a_removed_child_can_be_inserted_elsewhere)
{
    CXmlNode* const root = Root("<r><a><x/></a><b/></r>");
    CXmlNode* const a = root->GetRawNode(wxS("a"));
    CXmlNode* const x = a->GetRawNode(wxS("x"));
    a->RemoveChild(x);
    EXPECT_EQ(x->GetRawParent(), Empty());
    EXPECT_EQ(Show(document), "<r><a/><b/></r>");
    root->GetRawNode(wxS("b"))->InsertChild(x, false);
    EXPECT_EQ(Show(document), "<r><a/><b><x/></b></r>");
    EXPECT_EQ(root->GetRawNode(wxS("b"))->GetRawChildren(), x);
}

TEST_F(XmlNodeEditTest, removing_no_child_does_nothing)
{
    CXmlNode* const root = Root("<r><a><x/></a></r>");
    root->RemoveChild(nullptr);
    root->RemoveChild(Empty());
    root->RemoveChild(root->GetRawNode(wxS("a"))->GetRawNode(wxS("x")));
    EXPECT_EQ(Show(document), "<r><a><x/></a></r>");
}

TEST_F(XmlNodeEditTest, insert_child_appends)
{
    for (const bool walk : {false, true}) {
        CXmlNode* const root = Root("<r><x/><a/><b/></r>");
        CXmlNode* const x = root->GetRawChildren();
        root->RemoveChild(x);
        root->InsertChild(x, walk);
        EXPECT_EQ(Show(document), "<r><a/><b/><x/></r>");
        root->RemoveChild(x);
        root->GetRawNode(wxS("a"))->InsertChild(x, walk);
        EXPECT_EQ(Show(document), "<r><a><x/></a><b/></r>");
    }
}

TEST_F(XmlNodeEditTest, insert_child_at_goes_before_or_behind_a_child)
{
    for (const bool after : {false, true}) {
        for (int at = 0; at < 3; ++at) {
            CXmlNode* const root = Root("<r><a/><b/><c/><x/></r>");
            CXmlNode* const x = root->GetRawItem(3);
            root->RemoveChild(x);
            root->InsertChildAt(x, root->GetRawItem(at), after);
            const char* const expected[] = {"<r><x/><a/><b/><c/></r>", "<r><a/><x/><b/><c/></r>",
                                            "<r><a/><b/><x/><c/></r>", "<r><a/><b/><c/><x/></r>"};
            EXPECT_EQ(Show(document), expected[at + after]);
        }
    }
}

TEST_F(XmlNodeEditTest, a_missing_position_is_near_the_end)
{
    const auto insertAtMissing = [&](const char* xml, bool after) {
        CXmlNode* const root = Root(xml);
        CXmlNode* const x = root->GetRawNode(wxS("x"));
        root->RemoveChild(x);
        root->InsertChildAt(x, root, after);
        return Show(document);
    };
    EXPECT_EQ(insertAtMissing("<r><x/><a/><b/></r>", false), "<r><a/><x/><b/></r>");
    EXPECT_EQ(insertAtMissing("<r><x/><a/><b/></r>", true), "<r><a/><b/><x/></r>");
    EXPECT_EQ(insertAtMissing("<r><x/></r>", false), "<r><x/></r>");
    EXPECT_EQ(insertAtMissing("<r><x/></r>", true), "<r><x/></r>");
}

TEST_F(XmlNodeEditTest, insert_child_at_takes_null_as_a_missing_position)
{
    CXmlNode* const root = Root("<r><x/><a/><b/></r>");
    CXmlNode* const x = root->GetRawChildren();
    root->RemoveChild(x);
    root->InsertChildAt(x, nullptr, true);
    EXPECT_EQ(Show(document), "<r><a/><b/><x/></r>");
}

TEST_F(XmlNodeEditTest, inserting_null_or_the_empty_node_does_nothing)
{
    CXmlNode* const root = Root("<r><a/></r>");
    root->InsertChild(nullptr, false);
    root->InsertChild(Empty(), true);
    root->InsertChildAt(nullptr, root->GetRawChildren(), true);
    root->InsertChildAt(Empty(), root->GetRawChildren(), false);
    EXPECT_EQ(Show(document), "<r><a/></r>");
}

TEST_F(XmlNodeEditTest, a_node_is_not_inserted_into_itself)
{
    CXmlNode* const root = Root("<r><a><x/></a></r>");
    CXmlNode* const a = root->GetRawChildren();
    CXmlNode* const x = a->GetRawChildren();
    root->RemoveChild(a);
    x->InsertChild(a, false);
    a->InsertChildAt(a, x, true);
    EXPECT_EQ(Show(a), "<a><x/></a>");
    root->InsertChild(a, false);
    EXPECT_EQ(Show(document), "<r><a><x/></a></r>");
}

TEST_F(XmlNodeEditTest, a_node_moves_into_another_document)
{
    CXmlDocument other;
    ASSERT_TRUE(other.SetContent(wxS("<o><x a='1'><y/></x></o>")));
    CXmlNode* const x = other.GetRawRoot()->GetRawChildren();
    other.GetRawRoot()->RemoveChild(x);
    Root("<r/>")->InsertChild(x, false);
    EXPECT_EQ(x->GetDocument(), &document);
    EXPECT_EQ(Show(document), "<r><x a='1'><y/></x></r>");
    EXPECT_EQ(Show(other), "<o/>");
    other.Clear();
    EXPECT_EQ(Show(document), "<r><x a='1'><y/></x></r>");
}

TEST_F(XmlNodeEditTest, a_position_stays_right_through_edits)
{
    CXmlNode* const root = Root("<r><a/><b/><c/><d/></r>");
    EXPECT_EQ(root->GetRawItem(2)->GetName(), wxS("c"));
    root->RemoveNode(wxS("a"));
    EXPECT_EQ(root->GetRawItem(2)->GetName(), wxS("d"));
    CXmlNode* const d = root->GetRawItem(2);
    root->RemoveChild(d);
    root->InsertChildAt(d, root->GetRawItem(0), false);
    EXPECT_EQ(root->GetRawItem(2)->GetName(), wxS("c"));
    EXPECT_EQ(root->GetChildrenCount(), 3);
    root->AddRawNode(wxS("e"));
    EXPECT_EQ(root->GetRawItem(3)->GetName(), wxS("e"));
    EXPECT_EQ(root->GetChildrenCount(), 4);
    document.DeleteNode(root->GetRawItem(3)->GetXmlNode());
    EXPECT_EQ(root->GetRawItem(3), Empty());
    root->AddRawNode(wxS("f"));
    EXPECT_EQ(Show(document), "<r><d/><b/><c/><f/></r>");
}

TEST_F(XmlNodeEditTest, limit_of_depth_when_adding)
{
    document.SetMaxDepth(20);
    CXmlNode* const deepest = Deepest();
    EXPECT_TRUE(deepest->Ok());
    EXPECT_TRUE(log.Errors().empty());
    EXPECT_EQ(deepest->AddRawNode(wxS("a")), Empty());
    EXPECT_EQ(log.Errors(), std::vector<wxString>{wxS("XML elements are nested deeper than 20")});
    deepest->SetNodeContent(wxS("text"));
    EXPECT_EQ(deepest->GetNodeContent(), wxS("text"));
}

TEST_F(XmlNodeEditTest, limit_of_depth_when_inserting)
{
    document.SetMaxDepth(4);
    for (const bool at : {false, true}) {
        CXmlNode* const root = Root("<r><x><y>text</y></x><a><b/></a></r>");
        CXmlNode* const x = root->GetRawChildren();
        CXmlNode* const a = root->GetRawNode(wxS("a"));
        const auto insert = [&](CXmlNode* into) {
            if (at)
                into->InsertChildAt(x, nullptr, true);
            else
                into->InsertChild(x, false);
        };
        root->RemoveChild(x);
        log.Clear();
        insert(a->GetRawChildren());
        EXPECT_EQ(Show(document), "<r><a><b/></a></r>");
        EXPECT_EQ(log.Errors(), std::vector<wxString>{wxS("XML elements are nested deeper than 4")});
        insert(a);
        EXPECT_EQ(Show(document), "<r><a><b/><x><y>text</y></x></a></r>");
    }
}

TEST_F(XmlNodeEditTest, the_default_limit_of_depth_is_1000)
{
    EXPECT_EQ(document.GetMaxDepth(), 1000u);
    EXPECT_TRUE(Deepest()->Ok());
    EXPECT_EQ(Deepest()->AddRawNode(wxS("a")), Empty());
}

} // namespace
