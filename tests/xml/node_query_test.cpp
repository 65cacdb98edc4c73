#include "tests/xml/xml_fixture.h"

#include <wx/xml/xml.h>

namespace
{

using XmlNodeQueryTest = XmlTest;

TEST_F(XmlNodeQueryTest, children_are_nodes_of_every_type)
{
    CXmlNode* const root = Root("<r>text<!--note--><a/></r>");
    CXmlNode* const text = root->GetRawChildren();
    EXPECT_EQ(text->GetXmlNode()->GetType(), wxXML_TEXT_NODE);
    EXPECT_EQ(text->GetRawNext()->GetXmlNode()->GetType(), wxXML_COMMENT_NODE);
    EXPECT_EQ(text->GetRawNext()->GetRawNext()->GetName(), wxS("a"));
    EXPECT_EQ(text->GetRawNext()->GetRawNext()->GetRawNext(), Empty());
    EXPECT_EQ(root->GetChildrenCount(), 3);
}

TEST_F(XmlNodeQueryTest, navigation_from_the_empty_node_gives_the_empty_node)
{
    Root("<r><a/></r>");
    EXPECT_EQ(Empty()->GetRawChildren(), Empty());
    EXPECT_EQ(Empty()->GetRawNext(), Empty());
    EXPECT_EQ(Empty()->GetRawPrevious(), Empty());
    EXPECT_EQ(Empty()->GetRawParent(), Empty());
    EXPECT_EQ(Empty()->GetRawNode(wxS("a")), Empty());
    EXPECT_EQ(Empty()->GetRawNextByName(wxS("a")), Empty());
    EXPECT_EQ(Empty()->GetRawPreviousByName(wxS("a")), Empty());
    EXPECT_EQ(Empty()->GetRawItem(0), Empty());
}

TEST_F(XmlNodeQueryTest, queries_of_the_empty_node_give_neutral_values)
{
    EXPECT_FALSE(Empty()->Ok());
    EXPECT_EQ(Empty()->GetName(), wxS(""));
    EXPECT_EQ(Empty()->GetNodeContent(), wxS(""));
    EXPECT_FALSE(Empty()->HasProp(wxS("a")));
    EXPECT_EQ(Empty()->GetPropW(wxS("a"), wxS("none")), wxS("none"));
    EXPECT_EQ(Empty()->GetPropLong(wxS("a"), 7), 7);
    EXPECT_EQ(Empty()->GetChildrenCount(), 0);
    EXPECT_EQ(Empty()->GetChildrenCountOf(wxS("a")), 0);
    EXPECT_EQ(Empty()->GetAllProps(), wxS(""));
    EXPECT_EQ(Empty()->GetAllPropsAfter(wxS("a")), wxS(""));
    EXPECT_EQ(Empty()->GetAllPropsBefore(wxS("a")), wxS(""));
    EXPECT_TRUE(Empty()->IsFirst());
    EXPECT_TRUE(Empty()->IsLast());
    EXPECT_TRUE(Empty()->IsAlone());
    EXPECT_FALSE(Empty()->IsMiddle());
    EXPECT_EQ(Empty()->GetChildrenDepth(), 0);
    EXPECT_EQ(Empty()->GetIndex(), -1);
    EXPECT_EQ(Empty()->GetNodeString(), wxS(""));
    EXPECT_FALSE(Empty()->HasNode(wxS("a")));
}

TEST_F(XmlNodeQueryTest, asking_twice_for_a_node_gives_the_same_handle)
{
    CXmlNode* const root = Root("<r><a/><b/></r>");
    CXmlNode* const a = root->GetRawChildren();
    EXPECT_EQ(root->GetRawChildren(), a);
    EXPECT_EQ(root->GetRawItem(0), a);
    EXPECT_EQ(a->GetRawNext()->GetRawPrevious(), a);
    EXPECT_EQ(a->GetRawParent(), root);
    EXPECT_EQ(document.GetAttachNode(a->GetXmlNode()), a);
}

TEST_F(XmlNodeQueryTest, the_root_element_has_neither_parent_nor_siblings)
{
    CXmlNode* const root = Root("<!--before--><r/><!--behind-->");
    EXPECT_EQ(root->GetRawParent(), Empty());
    EXPECT_EQ(root->GetRawNext(), Empty());
    EXPECT_EQ(root->GetRawPrevious(), Empty());
    EXPECT_EQ(root->GetRawNextByName(wxS("")), Empty());
    EXPECT_EQ(root->GetRawPreviousByName(wxS("")), Empty());
    EXPECT_FALSE(root->IsFirst());
    EXPECT_TRUE(root->IsLast());
    EXPECT_FALSE(root->IsAlone());
    EXPECT_FALSE(root->IsMiddle());
    EXPECT_EQ(root->GetIndex(), -1);
}

TEST_F(XmlNodeQueryTest, a_node_that_has_been_taken_out_has_no_place)
{
    CXmlNode* const root = Root("<r><a/><b/></r>");
    CXmlNode* const a = root->GetRawChildren();
    root->RemoveChild(a);
    EXPECT_FALSE(a->IsFirst());
    EXPECT_TRUE(a->IsLast());
    EXPECT_FALSE(a->IsAlone());
    EXPECT_FALSE(a->IsMiddle());
    EXPECT_EQ(a->GetIndex(), -1);
    EXPECT_EQ(a->GetNodeString(), wxS(""));
    document.DeleteNode(a->GetXmlNode());
}

TEST_F(XmlNodeQueryTest, previous_of_the_first_child_is_the_empty_node)
{
    EXPECT_EQ(Root("<r><a/><b/></r>")->GetRawChildren()->GetRawPrevious(), Empty());
}

TEST_F(XmlNodeQueryTest, a_child_is_found_by_its_exact_name)
{
    CXmlNode* const root = Root("<r><A i='1'/><a i='2'/><a i='3'/></r>");
    EXPECT_EQ(root->GetRawNode(wxS("a"))->GetPropLong(wxS("i"), 0), 2);
    EXPECT_EQ(root->GetRawNode(wxS("b")), Empty());
    EXPECT_TRUE(root->HasNode(wxS("a")));
    EXPECT_FALSE(root->HasNode(wxS("b")));
    EXPECT_EQ(root->GetChildrenCountOf(wxS("a")), 2);
    EXPECT_EQ(root->GetChildrenCountOf(wxS("b")), 0);
}

TEST_F(XmlNodeQueryTest, any_number_of_children_are_found_by_name_while_more_are_added)
{
    CXmlNode* const root = Root("<r/>");
    const auto name = [](int i) { return wxString::Format(wxS("child%d"), i % 300); };
    for (int i = 0; i < 600; ++i) {
        EXPECT_EQ(root->HasNode(name(i)), i >= 300) << i;
        root->AddRawNode(name(i))->AddProp(wxS("i"), long(i));
        EXPECT_EQ(root->GetRawNode(name(i))->GetPropLong(wxS("i"), -1), i % 300) << "the first of its name";
    }
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(root->GetRawNode(name(i))->GetPropLong(wxS("i"), -1), i);
    EXPECT_EQ(root->GetRawNode(wxS("child300")), Empty());
}

TEST_F(XmlNodeQueryTest, next_by_name_starts_with_the_next_sibling)
{
    CXmlNode* const first = Root("<r><a i='1'/><b/><a i='2'/></r>")->GetRawChildren();
    EXPECT_EQ(first->GetRawNextByName(wxS("a"))->GetPropLong(wxS("i"), 0), 2);
    EXPECT_EQ(first->GetRawNextByName(wxS("a"))->GetRawNextByName(wxS("a")), Empty());
    EXPECT_EQ(first->GetRawNextByName(wxS("A")), Empty());
}

TEST_F(XmlNodeQueryTest, previous_by_name_never_gives_the_sibling_right_before)
{
    CXmlNode* const root = Root("<r><a i='1'/><b/><a i='2'/><d/></r>");
    EXPECT_EQ(root->GetRawNode(wxS("d"))->GetRawPreviousByName(wxS("a"))->GetPropLong(wxS("i"), 0), 1);
    EXPECT_EQ(Root("<r><a/><d/></r>")->GetRawNode(wxS("d"))->GetRawPreviousByName(wxS("a")), Empty());
}

TEST_F(XmlNodeQueryTest, previous_by_name_of_a_first_child_gives_the_last_that_follows)
{
    CXmlNode* const first = Root("<r><x/><a i='1'/><b/><a i='2'/></r>")->GetRawChildren();
    EXPECT_EQ(first->GetRawPreviousByName(wxS("a"))->GetPropLong(wxS("i"), 0), 2);
    EXPECT_EQ(first->GetRawPreviousByName(wxS("x")), Empty());
}

TEST_F(XmlNodeQueryTest, an_item_is_counted_from_0_among_all_children)
{
    CXmlNode* const root = Root("<r>t<a/><!--c--></r>");
    EXPECT_EQ(root->GetRawItem(1)->GetName(), wxS("a"));
    EXPECT_EQ(root->GetRawItem(2)->GetXmlNode()->GetType(), wxXML_COMMENT_NODE);
    EXPECT_EQ(root->GetRawItem(3), Empty());
    EXPECT_EQ(root->GetRawItem(1)->GetName(), wxS("a"));
    EXPECT_EQ(root->GetRawItem(0)->GetXmlNode()->GetType(), wxXML_TEXT_NODE);
    EXPECT_EQ(root->GetRawItem(-1), Empty());
    EXPECT_EQ(root->GetRawItem(0x7fffffff), Empty());
}

TEST_F(XmlNodeQueryTest, content_is_that_of_the_first_text)
{
    EXPECT_EQ(Root("<r><a/>one<b/>two</r>")->GetNodeContent(), wxS("one"));
    EXPECT_EQ(Root("<r><![CDATA[<raw>]]></r>")->GetNodeContent(), wxS("<raw>"));
    EXPECT_EQ(Root("<r><a>inner</a></r>")->GetNodeContent(), wxS(""));
}

TEST_F(XmlNodeQueryTest, properties_are_read_by_their_exact_name)
{
    CXmlNode* const root = Root("<r a='1' A='2' e=''/>");
    EXPECT_TRUE(root->HasProp(wxS("a")));
    EXPECT_TRUE(root->HasProp(wxS("e")));
    EXPECT_FALSE(root->HasProp(wxS("b")));
    EXPECT_EQ(root->GetPropW(wxS("A"), wxS("none")), wxS("2"));
    EXPECT_EQ(root->GetPropW(wxS("e"), wxS("none")), wxS(""));
    EXPECT_EQ(root->GetPropW(wxS("b"), wxS("none")), wxS("none"));
}

TEST_F(XmlNodeQueryTest, a_number_is_a_whole_decimal_text)
{
    CXmlNode* const root = Root("<r n='12' x='12x' h='0x10' m='-5' e='' f='1.5' b='99999999999999999999'/>");
    EXPECT_EQ(root->GetPropLong(wxS("n"), 7), 12);
    EXPECT_EQ(root->GetPropLong(wxS("x"), 7), 7);
    EXPECT_EQ(root->GetPropLong(wxS("h"), 7), 7);
    EXPECT_EQ(root->GetPropLong(wxS("m"), 7), -5);
    EXPECT_EQ(root->GetPropLong(wxS("e"), 7), 7);
    EXPECT_EQ(root->GetPropLong(wxS("f"), 7), 7);
    EXPECT_EQ(root->GetPropLong(wxS("b"), 7), 7);
    EXPECT_EQ(root->GetPropLong(wxS("absent"), 7), 7);
}

TEST_F(XmlNodeQueryTest, properties_as_text_are_not_escaped)
{
    EXPECT_EQ(Root("<r a='1' b='&lt;&quot;&amp;'/>")->GetAllProps(), wxS(" a=\"1\" b=\"<\"&\""));
    EXPECT_EQ(Root("<r/>")->GetAllProps(), wxS(""));
}

TEST_F(XmlNodeQueryTest, properties_after_and_before_one_named_in_any_case)
{
    CXmlNode* const root = Root("<r a='1' b='2' e='3'/>");
    EXPECT_EQ(root->GetAllPropsAfter(wxS("B")), wxS(" e=\"3\""));
    EXPECT_EQ(root->GetAllPropsBefore(wxS("b")), wxS(" a=\"1\""));
    EXPECT_EQ(root->GetAllPropsAfter(wxS("x")), wxS(""));
    EXPECT_EQ(root->GetAllPropsBefore(wxS("x")), wxS(" a=\"1\" b=\"2\" e=\"3\""));
    EXPECT_EQ(root->GetAllPropsAfter(wxS("e")), wxS(""));
    EXPECT_EQ(root->GetAllPropsBefore(wxS("a")), wxS(""));
}

TEST_F(XmlNodeQueryTest, place_among_siblings)
{
    CXmlNode* const root = Root("<r><a/><b/><c/></r>");
    CXmlNode* const a = root->GetRawItem(0);
    CXmlNode* const b = root->GetRawItem(1);
    CXmlNode* const c = root->GetRawItem(2);
    EXPECT_TRUE(a->IsFirst() && !a->IsLast() && !a->IsAlone() && !a->IsMiddle());
    EXPECT_TRUE(!b->IsFirst() && !b->IsLast() && !b->IsAlone() && b->IsMiddle());
    EXPECT_TRUE(!c->IsFirst() && c->IsLast() && !c->IsAlone() && !c->IsMiddle());
    CXmlNode* const only = Root("<r><a/></r>")->GetRawChildren();
    EXPECT_TRUE(only->IsFirst() && only->IsLast() && only->IsAlone() && !only->IsMiddle());
}

TEST_F(XmlNodeQueryTest, depth_counts_levels_of_all_nodes_below)
{
    EXPECT_EQ(Root("<r/>")->GetChildrenDepth(), 0);
    EXPECT_EQ(Root("<r><a/><b/></r>")->GetChildrenDepth(), 1);
    EXPECT_EQ(Root("<r>text</r>")->GetChildrenDepth(), 1);
    EXPECT_EQ(Root("<r><a/><b>text</b><c/></r>")->GetChildrenDepth(), 2);
    EXPECT_EQ(Root("<r><a><b><c/></b></a><d/></r>")->GetChildrenDepth(), 3);
}

TEST_F(XmlNodeQueryTest, index_and_path_count_every_node_type)
{
    CXmlNode* const root = Root("<r>t<!--c--><a>x<b/></a></r>");
    CXmlNode* const a = root->GetRawNode(wxS("a"));
    EXPECT_EQ(root->GetNodeString(), wxS(""));
    EXPECT_EQ(a->GetIndex(), 2);
    EXPECT_EQ(a->GetNodeString(), wxS("Item(2)"));
    EXPECT_EQ(a->GetRawNode(wxS("b"))->GetNodeString(), wxS("Item(2).Item(1)"));
}

/// Each step would walk from the first child otherwise, which takes minutes.
TEST_F(XmlNodeQueryTest, many_children_are_gone_through_in_any_order_without_a_walk_each)
{
    constexpr int count = 200'000;
    CXmlNode* const root = Root("<r/>");
    for (int i = 0; i < count; ++i)
        root->AddRawNode(wxS("a"));
    for (int i = count - 1; i >= 0; --i)
        ASSERT_EQ(root->GetRawItem(i)->GetIndex(), i);
    for (int i = 0, at = 0; i < count; ++i, at = (at + 7919) % count)
        ASSERT_EQ(root->GetRawItem(at)->GetIndex(), at);
    int back = count - 1;
    for (CXmlNode* node = root->GetRawItem(back); node->GetXmlNode(); node = node->GetRawPrevious(), --back)
        ASSERT_EQ(node->GetNodeString(), wxString::Format(wxS("Item(%d)"), back));
    EXPECT_EQ(back, -1);
    int forth = 0;
    for (CXmlNode* node = root->GetRawChildren(); node->GetXmlNode(); node = node->GetRawNext(), ++forth)
        ASSERT_EQ(node->GetIndex(), forth);
    EXPECT_EQ(forth, count);
}

TEST_F(XmlNodeQueryTest, positions_are_those_after_a_change_among_the_siblings)
{
    CXmlNode* const root = Root("<r><a/><b/><c/><d/></r>");
    CXmlNode* const d = root->GetRawItem(3);
    EXPECT_EQ(d->GetIndex(), 3);
    root->RemoveRawNode(wxS("a"));
    EXPECT_EQ(d->GetIndex(), 2);
    EXPECT_EQ(d->GetRawPrevious()->GetName(), wxS("c"));
    CXmlNode* const b = root->GetRawItem(0);
    root->RemoveChild(b);
    EXPECT_EQ(b->GetIndex(), -1);
    EXPECT_EQ(d->GetIndex(), 1);
    root->InsertChildAt(b, d, false);
    EXPECT_EQ(d->GetIndex(), 2);
    EXPECT_EQ(b->GetIndex(), 1);
    EXPECT_EQ(b->GetRawPrevious()->GetName(), wxS("c"));
    EXPECT_EQ(root->GetRawItem(3), Empty());
}

} // namespace
