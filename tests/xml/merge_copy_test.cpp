#include "tests/xml/merge_fixture.h"

TEST(MergeCopy, existing_values_are_kept)
{
    EXPECT_EQ(Copied("<r><a k='1'/></r>", "<r><a k='2' m='3'/></r>", true), "<r><a k='1' m='3'/></r>");
}

TEST(MergeCopy, empty_values_are_kept_too)
{
    EXPECT_EQ(Copied("<r><a k=''/></r>", "<r><a k='2'/></r>", true), "<r><a k=''/></r>");
}

TEST(MergeCopy, existing_values_are_overwritten_in_their_place)
{
    EXPECT_EQ(Copied("<r><a k='1' z='0'/></r>", "<r><a n='3' z='9' k='2'/></r>", false),
              "<r><a k='2' z='9' n='3'/></r>");
}

TEST(MergeCopy, names_of_attributes_are_exact)
{
    EXPECT_EQ(Copied("<r><a K='1'/></r>", "<r><a k='2'/></r>", true), "<r><a K='1' k='2'/></r>");
    EXPECT_EQ(Copied("<r><a K='1'/></r>", "<r><a k='2'/></r>", false), "<r><a K='1' k='2'/></r>");
}

TEST(MergeCopy, first_of_two_attributes_of_a_name_counts)
{
    TestDocument base("<r><a k='1'/></r>");
    base.Child("a")->AddProp("k", "2");
    TestDocument other("<r><a k='3'/></r>");
    EXPECT_TRUE(base.MergeXML(&other, true));
    EXPECT_EQ(base.Dump(), "<r><a k='1' k='2'/></r>");
    EXPECT_TRUE(base.MergeXML(&other, false));
    EXPECT_EQ(base.Dump(), "<r><a k='3' k='2'/></r>");
}

TEST(MergeCopy, elements_match_by_name_in_any_case)
{
    EXPECT_EQ(Copied("<r><Item k='1'/></r>", "<r><iTEM m='2'/></r>", true), "<r><Item k='1' m='2'/></r>");
}

TEST(MergeCopy, first_of_several_of_a_name_is_the_counterpart)
{
    EXPECT_EQ(Copied("<r><a k='1'/><a k='2'/></r>", "<r><a k='2' m='3'/></r>", true),
              "<r><a k='1' m='3'/><a k='2'/></r>");
}

TEST(MergeCopy, several_of_a_name_go_to_the_same_counterpart)
{
    EXPECT_EQ(Copied("<r><a/></r>", "<r><a k='1'/><a k='2' m='3'/></r>", true), "<r><a k='1' m='3'/></r>");
    EXPECT_EQ(Copied("<r><a/></r>", "<r><a k='1'/><a k='2' m='3'/></r>", false), "<r><a k='2' m='3'/></r>");
}

TEST(MergeCopy, new_element_comes_last_without_its_children)
{
    EXPECT_EQ(Copied("<r><b/></r>", "<r><a k='1' m='2'><x/>text</a></r>", true), "<r><b/><a k='1' m='2'/></r>");
}

TEST(MergeCopy, new_element_is_found_by_what_follows)
{
    EXPECT_EQ(Copied("<r/>", "<r><a k='1'><x/></a><A m='2'><y/></A></r>", true), "<r><a k='1' m='2'><y/></a></r>");
}

TEST(MergeCopy, merge_goes_on_below_counterparts)
{
    EXPECT_EQ(Copied("<r><a><b k='1'/></a></r>", "<r><a x='9'><b k='2' m='3'/><c n='4'><d/></c></a></r>", true),
              "<r><a x='9'><b k='1' m='3'/><c n='4'/></a></r>");
}

TEST(MergeCopy, roots_keep_their_attributes)
{
    EXPECT_EQ(Copied("<r k='1'/>", "<r k='2' m='3'/>", false), "<r k='1'/>");
}

TEST(MergeCopy, vocabulary_means_nothing)
{
    EXPECT_EQ(Copied("<r><a/></r>", "<r><a Merge='Remove' PlaceHolder='p'/></r>", true),
              "<r><a Merge='Remove' PlaceHolder='p'/></r>");
}

TEST(MergeCopy, text_and_comment_without_counterpart_become_elements)
{
    EXPECT_EQ(Copied("<r/>", "<r>words<!--note--><![CDATA[data]]></r>", true), "<r><text/><comment/><cdata/></r>");
}

TEST(MergeCopy, text_with_counterpart_stays)
{
    EXPECT_EQ(Copied("<r>mine<!--my note--></r>", "<r>yours<!--your note--></r>", false), "<r>mine<!--my note--></r>");
}

TEST(MergeCopy, nothing_is_copied_from_an_empty_root)
{
    EXPECT_EQ(Copied("<r><a k='1'/></r>", "<r/>", false), "<r><a k='1'/></r>");
}

TEST(MergeCopy, document_with_itself_changes_nothing)
{
    const std::string text = "<r><a k='1'><b/>text<c m='2'><!--note--></c></a><d/></r>";
    TestDocument document(text);
    for (const bool keepExisting : {true, false}) {
        EXPECT_TRUE(document.MergeXML(&document, keepExisting));
        EXPECT_EQ(document.Dump(), text);
    }
}

TEST(MergeCopy, document_with_itself_merges_elements_of_a_name_into_the_first)
{
    TestDocument document("<r><a k='1'/><a k='2' m='3'><b/></a></r>");
    EXPECT_TRUE(document.MergeXML(&document, true));
    EXPECT_EQ(document.Dump(), "<r><a k='1' m='3'><b/></a><a k='2' m='3'><b/></a></r>");
}

TEST(MergeCopy, nodes_of_any_names_can_be_merged)
{
    TestDocument base("<r><into><a/></into></r>");
    TestDocument other("<s><from k='1'><a m='2'/><b/></from></s>");
    EXPECT_TRUE(base.MergeXML(base.Child("into"), other.Child("from"), true));
    EXPECT_EQ(base.Dump(), "<r><into><a m='2'/><b/></into></r>");
}

TEST(MergeCopy, nodes_beside_each_other_can_be_merged)
{
    TestDocument document("<r><a><x/></a><b><x k='1'/><y/></b></r>");
    EXPECT_TRUE(document.MergeXML(document.Child("a"), document.Child("b"), true));
    EXPECT_EQ(document.Dump(), "<r><a><x k='1'/><y/></a><b><x k='1'/><y/></b></r>");
}

TEST(MergeCopy, node_below_the_other_is_refused)
{
    const std::string text = "<r><a><r><a/><b/></r></a></r>";
    TestDocument document(text);
    CXmlNode* const root = document.GetRawRoot();
    EXPECT_FALSE(document.MergeXML(root, document.Child("a"), true));
    EXPECT_FALSE(document.MergeXML(document.Child("a"), root, true));
    EXPECT_EQ(document.Dump(), text);
}

TEST(MergeCopy, missing_node_is_refused)
{
    TestDocument document("<r><a/></r>");
    CXmlNode* const root = document.GetRawRoot();
    for (CXmlNode* const none : {document.GetEmptyNode(), static_cast<CXmlNode*>(nullptr)}) {
        EXPECT_FALSE(document.MergeXML(none, root, true));
        EXPECT_FALSE(document.MergeXML(root, none, true));
    }
    EXPECT_EQ(document.Dump(), "<r><a/></r>");
}

TEST(MergeCopy, children_known_before_are_counted_anew)
{
    TestDocument base("<r><a/></r>");
    CXmlNode* const root = base.GetRawRoot();
    CXmlNode* const a = base.Child("a");
    EXPECT_EQ(root->GetChildrenCount(), 1);
    EXPECT_EQ(a->GetChildrenCount(), 0);
    TestDocument other("<r><a><x/></a><b/></r>");
    EXPECT_TRUE(base.MergeXML(&other, true));
    EXPECT_EQ(root->GetChildrenCount(), 2);
    EXPECT_EQ(a->GetChildrenCount(), 1);
    EXPECT_EQ(base.Child("a"), a);
}

TEST(MergeCopy, source_as_deep_as_allowed_is_merged)
{
    TestDocument base("<r><a><b/></a></r>");
    base.SetMaxDepth(4);
    TestDocument other("<r><a><b><c/></b></a></r>");
    EXPECT_TRUE(base.MergeXML(&other, true));
    EXPECT_EQ(base.Dump(), "<r><a><b><c/></b></a></r>");
}

TEST(MergeCopy, what_would_be_added_too_deep_is_refused_before_anything_changes)
{
    const LogCapture log;
    TestDocument base("<r><a><b/></a></r>");
    base.SetMaxDepth(3);
    TestDocument other("<r><new k='1'/><a l='2'><x/><b><c/></b></a></r>");
    EXPECT_FALSE(base.MergeXML(&other, true));
    EXPECT_FALSE(base.MergeXML(base.Child("a"), other.Child("a"), true));
    EXPECT_EQ(base.Dump(), "<r><a><b/></a></r>");
    EXPECT_EQ(base.GetRawRoot()->GetChildrenCount(), 1);
    EXPECT_EQ(log.Errors(), std::vector<wxString>(2, "XML elements are nested deeper than 3"));
}

TEST(MergeCopy, deeper_source_is_copied_where_nothing_is_added_too_deep)
{
    const LogCapture log;
    TestDocument base("<r><a><b/></a></r>");
    base.SetMaxDepth(3);
    TestDocument other("<r><new><c><d/></c></new><a l='2'><x><y/></x><b m='3'/></a></r>");
    EXPECT_TRUE(base.MergeXML(&other, true));
    EXPECT_EQ(base.Dump(), "<r><a l='2'><b m='3'/><x/></a><new/></r>");
    base.SetMaxDepth(2);
    EXPECT_TRUE(base.MergeXML(base.Child("a"), base.Child("a"), true)) << "nothing is added";
    EXPECT_TRUE(log.Errors().empty());
}

TEST(MergeCopy, children_of_an_element_added_before_count_as_deep_as_they_come)
{
    const LogCapture log;
    TestDocument base("<r/>");
    base.SetMaxDepth(3);
    TestDocument other("<r><n/><n><m/></n><n><m><o/></m></n></r>");
    EXPECT_FALSE(base.MergeXML(&other, true));
    EXPECT_EQ(base.Dump(), "<r/>");
    base.SetMaxDepth(4);
    EXPECT_TRUE(base.MergeXML(&other, true));
    EXPECT_EQ(base.Dump(), "<r><n><m><o/></m></n></r>");
    EXPECT_EQ(log.Errors(), std::vector<wxString>{"XML elements are nested deeper than 3"});
}

TEST(MergeCopy, text_at_the_depth_allowed_would_become_an_element_beyond_it)
{
    const LogCapture log;
    TestDocument base("<r><a/></r>");
    base.SetMaxDepth(2);
    TestDocument other("<r><a>text</a></r>");
    EXPECT_FALSE(base.MergeXML(&other, true));
    EXPECT_EQ(base.Dump(), "<r><a/></r>");
    EXPECT_EQ(log.Errors(), std::vector<wxString>{"XML elements are nested deeper than 2"});
}

TEST(MergeCopy, many_attributes_are_merged)
{
    TestDocument base("<r><a/></r>");
    TestDocument other("<r><a/></r>");
    CXmlNode* const dest = base.Child("a");
    CXmlNode* const src = other.Child("a");
    for (long i = 0; i < 3000; ++i) {
        dest->AddProp(wxString::Format("k%ld", i % 2 ? i : -i), i);
        src->AddProp(wxString::Format("k%ld", 3000 - i), "new");
    }
    EXPECT_TRUE(base.MergeXML(&other, true));
    EXPECT_EQ(dest->GetPropLong("k1", 0), 1);
    EXPECT_EQ(dest->GetPropW("k2", ""), "new");
    EXPECT_TRUE(base.MergeXML(&other, false));
    EXPECT_EQ(dest->GetPropW("k1", ""), "new");
    EXPECT_EQ(dest->GetPropLong("k-2", 0), 2);
}
