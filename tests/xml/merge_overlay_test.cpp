#include "tests/xml/merge_fixture.h"
#include "xml/xml_node_ref.h"

// Adding

TEST(MergeOverlay, element_without_attributes_is_added_at_the_end)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><e/></r>"), "<r><a/><b/><e/></r>");
    EXPECT_EQ(LeftOver("<r><a/><b/></r>", "<r><e/></r>"), "<r/>");
}

TEST(MergeOverlay, elements_are_added_in_their_order)
{
    EXPECT_EQ(Merged("<r><a/></r>", "<r><x/><y/><z/></r>"), "<r><a/><x/><y/><z/></r>");
}

TEST(MergeOverlay, element_is_added_to_an_empty_root)
{
    EXPECT_EQ(Merged("<r/>", "<r><x/></r>"), "<r><x/></r>");
}

TEST(MergeOverlay, added_element_brings_all_below_it)
{
    EXPECT_EQ(Merged("<r><a/></r>", "<r><x k='1'><y Merge='Remove'/>text</x></r>"),
              "<r><a/><x k='1'><y Merge='Remove'/>text</x></r>");
}

TEST(MergeOverlay, added_element_keeps_all_its_attributes)
{
    EXPECT_EQ(Merged("<r/>", "<r><x k='1' Merge='Add' m='2'/></r>"), "<r><x k='1' Merge='Add' m='2'/></r>");
}

TEST(MergeOverlay, element_in_add_mode_is_never_matched)
{
    EXPECT_EQ(Merged("<r><a><i/></a></r>", "<r><a><x/></a></r>"), "<r><a><i/></a><a><x/></a></r>");
}

TEST(MergeOverlay, add_and_no_and_unknown_and_empty_values_add)
{
    for (const std::string value : {"Add", "No", "Maybe", "", " Pos", "Remov"}) {
        const std::string element = "<a Merge='" + value + "'><x/></a>";
        EXPECT_EQ(Merged("<r><a/></r>", "<r>" + element + "</r>"), "<r><a/>" + element + "</r>");
    }
}

TEST(MergeOverlay, comments_and_texts_are_added_too)
{
    EXPECT_EQ(Merged("<r><a/></r>", "<r><!--c-->text<![CDATA[<d>]]></r>"), "<r><a/><!--c-->text<![CDATA[<d>]]></r>");
}

TEST(MergeOverlay, name_of_the_attribute_is_exact)
{
    EXPECT_EQ(Merged("<r><a/></r>", "<r><a merge='Remove'/><a MERGE='Pos'><x/></a></r>"),
              "<r><a/><a merge='Remove'/><a MERGE='Pos'><x/></a></r>");
}

// Matching and positions

TEST(MergeOverlay, pos_places_what_follows_after_the_counterpart)
{
    EXPECT_EQ(Merged("<r><a/><b/><d/></r>", "<r><b Merge='Pos'/><x/></r>"), "<r><a/><b/><x/><d/></r>");
}

TEST(MergeOverlay, pos_before_places_what_follows_before_the_counterpart)
{
    EXPECT_EQ(Merged("<r><a/><b/><d/></r>", "<r><b Merge='PosBefore'/><x/></r>"), "<r><a/><x/><b/><d/></r>");
}

TEST(MergeOverlay, pos_before_the_first_child_inserts_in_front)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><a Merge='PosBefore'/><x/></r>"), "<r><x/><a/><b/></r>");
}

TEST(MergeOverlay, pos_after_the_last_child_appends)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><b Merge='Pos'/><x/></r>"), "<r><a/><b/><x/></r>");
}

TEST(MergeOverlay, force_pos_pos_after_and_stop_are_the_same)
{
    for (const std::string value : {"Force", "Pos", "PosAfter", "Stop"}) {
        EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><a Merge='" + value + "'><i/></a><x/></r>"),
                  "<r><a><i/></a><x/><b/></r>")
            << value;
    }
}

TEST(MergeOverlay, values_are_compared_without_regard_to_case)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><b Merge='pOSbEFORE'/><x/><a Merge='REMOVE'/></r>"), "<r><x/><b/></r>");
}

TEST(MergeOverlay, adding_does_not_change_the_position)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><a Merge='Pos'/><x/><y/></r>"), "<r><a/><y/><x/><b/></r>");
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><b Merge='PosBefore'/><x/><y/></r>"), "<r><a/><x/><y/><b/></r>");
}

TEST(MergeOverlay, each_match_moves_the_position)
{
    EXPECT_EQ(Merged("<r><a/><b/><c/></r>", "<r><c Merge='PosBefore'/><x/><a Merge='Pos'/><y/></r>"),
              "<r><a/><y/><b/><x/><c/></r>");
}

TEST(MergeOverlay, element_that_was_added_can_be_matched)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><a Merge='Pos'/><x/><x Merge='PosBefore'/><y/></r>"),
              "<r><a/><y/><x/><b/></r>");
}

TEST(MergeOverlay, matched_element_gets_the_children)
{
    EXPECT_EQ(Merged("<r><a><i/></a><b/></r>", "<r><a Merge='Pos'><x/><y/></a></r>"), "<r><a><i/><x/><y/></a><b/></r>");
}

TEST(MergeOverlay, matched_element_stays_in_the_overlay_without_what_was_merged)
{
    EXPECT_EQ(LeftOver("<r><a/><b/></r>", "<r><a Merge='Pos'><x/></a><b Merge='PosBefore'/><y/></r>"),
              "<r><a Merge='Pos'/><b Merge='PosBefore'/></r>");
}

TEST(MergeOverlay, matched_element_gets_none_of_the_attributes)
{
    EXPECT_EQ(Merged("<r><a k='1'/></r>", "<r><a k='1' Merge='Pos' m='2'><x/></a></r>"), "<r><a k='1'><x/></a></r>");
}

TEST(MergeOverlay, matches_go_on_below_a_match)
{
    EXPECT_EQ(
        Merged("<r><a><b><c/></b></a></r>", "<r><a Merge='Pos'><b Merge='Pos'><c Merge='PosBefore'/><x/></b></a></r>"),
        "<r><a><b><x/><c/></b></a></r>");
}

TEST(MergeOverlay, match_of_the_same_element_twice_goes_on)
{
    EXPECT_EQ(Merged("<r><a/></r>", "<r><a Merge='Pos'><x/></a><a Merge='Pos'><y/></a></r>"), "<r><a><x/><y/></a></r>");
}

TEST(MergeOverlay, element_without_counterpart_is_added_with_its_children)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><q Merge='Pos' k='1'><x/></q></r>"),
              "<r><a/><b/><q Merge='Pos' k='1'><x/></q></r>");
}

TEST(MergeOverlay, element_without_counterpart_is_added_at_the_position)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><b Merge='PosBefore'/><q Merge='Pos'>text</q><x/></r>"),
              "<r><a/><q Merge='Pos'>text</q><x/><b/></r>");
}

TEST(MergeOverlay, marker_without_counterpart_does_nothing)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><a Merge='Pos'/><q Merge='PosBefore'/><x/></r>"), "<r><a/><x/><b/></r>");
    EXPECT_EQ(LeftOver("<r><a/><b/></r>", "<r><a Merge='Pos'/><q Merge='PosBefore'/><x/></r>"),
              "<r><a Merge='Pos'/><q Merge='PosBefore'/></r>");
}

TEST(MergeOverlay, anchor_of_the_outer_level_means_the_end_inside)
{
    EXPECT_EQ(Merged("<r><b/><a><y/><z/></a></r>", "<r><b Merge='Pos'/><a Merge='Pos'><x/><w/></a></r>"),
              "<r><b/><a><y/><z/><x/><w/></a></r>");
}

TEST(MergeOverlay, anchor_of_the_outer_level_means_before_the_last_with_direction_before)
{
    EXPECT_EQ(Merged("<r><b/><a><y/><z/></a></r>", "<r><b Merge='PosBefore'/><a Merge='Pos'><x/><w/></a></r>"),
              "<r><b/><a><y/><x/><w/><z/></a></r>");
}

TEST(MergeOverlay, anchor_of_the_outer_level_inserts_into_an_empty_counterpart)
{
    EXPECT_EQ(Merged("<r><b/><a/></r>", "<r><b Merge='PosBefore'/><a Merge='Pos'><x/><w/></a></r>"),
              "<r><b/><a><w/><x/></a></r>");
}

TEST(MergeOverlay, anchor_goes_down_more_than_one_level)
{
    EXPECT_EQ(Merged("<r><b/><a><c><y/><z/></c></a></r>",
                     "<r><b Merge='PosBefore'/><a Merge='Pos'><c Merge='Pos'><x/></c></a></r>"),
              "<r><b/><a><c><y/><x/><z/></c></a></r>");
}

TEST(MergeOverlay, own_direction_does_not_count_inside_a_match)
{
    EXPECT_EQ(Merged("<r><a><y/><z/></a></r>", "<r><a Merge='PosBefore'><x/></a></r>"), "<r><a><y/><z/><x/></a></r>");
}

TEST(MergeOverlay, position_of_the_inner_level_stays_inside)
{
    EXPECT_EQ(Merged("<r><a><y/><z/></a><c/></r>", "<r><a Merge='Pos'><y Merge='PosBefore'/><x/></a><n/></r>"),
              "<r><a><x/><y/><z/></a><n/><c/></r>");
}

// Removing

TEST(MergeOverlay, remove_deletes_the_counterpart)
{
    EXPECT_EQ(Merged("<r><a id='1'/><a id='2'/></r>", "<r><a id='2' Merge='Remove'/></r>"), "<r><a id='1'/></r>");
    EXPECT_EQ(LeftOver("<r><a id='1'/><a id='2'/></r>", "<r><a id='2' Merge='Remove'/></r>"),
              "<r><a id='2' Merge='Remove'/></r>");
}

TEST(MergeOverlay, remove_compares_values_without_regard_to_case)
{
    EXPECT_EQ(Merged("<r><a id='One'/><a id='Two'/></r>", "<r><a id='tWO' Merge='Remove'/></r>"),
              "<r><a id='One'/></r>");
}

TEST(MergeOverlay, remove_takes_all_below_the_counterpart)
{
    EXPECT_EQ(Merged("<r><a><b><c/></b></a><d/></r>", "<r><a Merge='Remove'/></r>"), "<r><d/></r>");
}

TEST(MergeOverlay, remove_without_counterpart_is_ignored)
{
    EXPECT_EQ(Merged("<r><a/></r>", "<r><q Merge='Remove'/><x/></r>"), "<r><a/><x/></r>");
}

TEST(MergeOverlay, remove_does_not_change_the_position)
{
    EXPECT_EQ(Merged("<r><a/><b/><c/></r>", "<r><a Merge='Pos'/><c Merge='Remove'/><x/></r>"), "<r><a/><x/><b/></r>");
}

TEST(MergeOverlay, remove_of_what_stands_beside_the_anchor_keeps_the_position)
{
    EXPECT_EQ(Merged("<r><a/><b/><c/></r>", "<r><b Merge='PosBefore'/><a Merge='Remove'/><x/></r>"),
              "<r><x/><b/><c/></r>");
    EXPECT_EQ(Merged("<r><a/><b/><c/></r>", "<r><b Merge='Pos'/><c Merge='Remove'/><x/></r>"), "<r><a/><b/><x/></r>");
}

TEST(MergeOverlay, remove_of_the_anchor_leaves_the_end_as_position)
{
    EXPECT_EQ(Merged("<r><a/><b/><c/></r>", "<r><a Merge='Pos'/><a Merge='Remove'/><x/></r>"), "<r><b/><c/><x/></r>");
    EXPECT_EQ(Merged("<r><a/><b/><c/></r>", "<r><a Merge='PosBefore'/><a Merge='Remove'/><x/></r>"),
              "<r><b/><x/><c/></r>");
}

TEST(MergeOverlay, remove_of_the_last_child_is_followed_by_additions)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><x/><x Merge='Remove'/><b Merge='Remove'/><y/></r>"), "<r><a/><y/></r>");
}

TEST(MergeOverlay, remove_works_on_the_level_being_merged)
{
    EXPECT_EQ(Merged("<r><a><y/><z/></a><y/></r>", "<r><a Merge='Pos'><y Merge='Remove'/></a></r>"),
              "<r><a><z/></a><y/></r>");
}

TEST(MergeOverlay, remove_can_empty_the_root)
{
    EXPECT_EQ(Merged("<r><a/></r>", "<r><a Merge='Remove'/></r>"), "<r/>");
}

// Placeholders

TEST(MergeOverlay, placeholder_gets_the_element_behind_it)
{
    EXPECT_EQ(Merged("<r><a/><PlaceHolder Name='p1'/><b/></r>", "<r><x k='1' PlaceHolder='p1' Merge='Add' m='2'/></r>"),
              "<r><a/><PlaceHolder Name='p1'/><x k='1' m='2'/><b/></r>");
}

TEST(MergeOverlay, placeholder_is_found_without_regard_to_case)
{
    EXPECT_EQ(Merged("<r><placeholder Name='P1'/><b/></r>", "<r><x PlaceHolder='p1'/></r>"),
              "<r><placeholder Name='P1'/><x/><b/></r>");
}

TEST(MergeOverlay, placeholder_is_named_by_the_exact_attribute)
{
    EXPECT_EQ(Merged("<r><PlaceHolder name='p1'/><b/></r>", "<r><x PlaceHolder='p1'/></r>"),
              "<r><PlaceHolder name='p1'/><b/><x/></r>");
}

TEST(MergeOverlay, placeholder_of_another_name_is_passed_by)
{
    EXPECT_EQ(Merged("<r><PlaceHolder/><PlaceHolder Name='p1'/><PlaceHolder Name='p2'/><b/></r>",
                     "<r><x PlaceHolder='p2'/></r>"),
              "<r><PlaceHolder/><PlaceHolder Name='p1'/><PlaceHolder Name='p2'/><x/><b/></r>");
}

TEST(MergeOverlay, first_placeholder_of_the_name_counts)
{
    EXPECT_EQ(Merged("<r><PlaceHolder Name='p'/><PlaceHolder Name='p'/></r>", "<r><x PlaceHolder='p'/></r>"),
              "<r><PlaceHolder Name='p'/><x/><PlaceHolder Name='p'/></r>");
}

TEST(MergeOverlay, missing_placeholder_means_the_end)
{
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><a Merge='Pos'/><x PlaceHolder='p9' Merge='No'/></r>"),
              "<r><a/><b/><x/></r>");
    EXPECT_EQ(Merged("<r><a/><b/></r>", "<r><a Merge='Pos'/><x PlaceHolder='p9' Merge='Pos'/><y/></r>"),
              "<r><a/><y/><b/><x/></r>");
}

TEST(MergeOverlay, empty_placeholder_is_none)
{
    EXPECT_EQ(Merged("<r><PlaceHolder Name=''/><b/></r>", "<r><x PlaceHolder=''/></r>"),
              "<r><PlaceHolder Name=''/><b/><x PlaceHolder=''/></r>");
}

TEST(MergeOverlay, placeholder_in_add_mode_has_the_inherited_direction)
{
    EXPECT_EQ(Merged("<r><a/><PlaceHolder Name='p'/><c/></r>",
                     "<r><c Merge='PosBefore'/><x PlaceHolder='p'/><y PlaceHolder='p'/></r>"),
              "<r><a/><x/><y/><PlaceHolder Name='p'/><c/></r>");
}

TEST(MergeOverlay, placeholder_in_add_mode_does_not_change_the_position)
{
    EXPECT_EQ(Merged("<r><PlaceHolder Name='p'/><a/></r>", "<r><a Merge='Pos'/><x PlaceHolder='p'/><y/></r>"),
              "<r><PlaceHolder Name='p'/><x/><a/><y/></r>");
}

TEST(MergeOverlay, placeholder_in_match_mode_has_the_own_direction)
{
    EXPECT_EQ(Merged("<r><a/><PlaceHolder Name='p'/><b/></r>", "<r><x PlaceHolder='p' Merge='PosBefore'/></r>"),
              "<r><a/><x/><PlaceHolder Name='p'/><b/></r>");
    EXPECT_EQ(
        Merged("<r><PlaceHolder Name='p'/><b/></r>", "<r><b Merge='PosBefore'/><x PlaceHolder='p' Merge='Force'/></r>"),
        "<r><PlaceHolder Name='p'/><x/><b/></r>");
}

TEST(MergeOverlay, placeholder_in_match_mode_becomes_the_anchor)
{
    EXPECT_EQ(Merged("<r><PlaceHolder Name='p'/><b/></r>", "<r><x PlaceHolder='p' Merge='Pos'/><y/></r>"),
              "<r><PlaceHolder Name='p'/><y/><x/><b/></r>");
}

TEST(MergeOverlay, placeholder_in_match_mode_leaves_the_direction)
{
    EXPECT_EQ(Merged("<r><PlaceHolder Name='p'/><b/><c/></r>",
                     "<r><c Merge='PosBefore'/><x PlaceHolder='p' Merge='Pos'/><y/></r>"),
              "<r><y/><PlaceHolder Name='p'/><x/><b/><c/></r>");
    EXPECT_EQ(Merged("<r><PlaceHolder Name='p'/><b/></r>", "<r><x PlaceHolder='p' Merge='PosBefore'/><y/></r>"),
              "<r><x/><PlaceHolder Name='p'/><y/><b/></r>");
}

TEST(MergeOverlay, placeholder_in_match_mode_is_not_matched)
{
    EXPECT_EQ(Merged("<r><x/><PlaceHolder Name='p'/></r>", "<r><x PlaceHolder='p' Merge='Pos'><i/></x></r>"),
              "<r><x/><PlaceHolder Name='p'/><x><i/></x></r>");
}

TEST(MergeOverlay, placeholder_of_an_element_to_remove_only_selects)
{
    EXPECT_EQ(
        Merged("<r><PlaceHolder Name='p'/><x/><x PlaceHolder='p'/></r>", "<r><x PlaceHolder='p' Merge='Remove'/></r>"),
        "<r><PlaceHolder Name='p'/><x/></r>");
}

TEST(MergeOverlay, placeholder_is_looked_for_on_the_level_being_merged)
{
    EXPECT_EQ(Merged("<r><a><PlaceHolder Name='p'/><q/></a><b/></r>",
                     "<r><x PlaceHolder='p'/><a Merge='Pos'><y PlaceHolder='p'/></a></r>"),
              "<r><a><PlaceHolder Name='p'/><y/><q/></a><b/><x/></r>");
}

TEST(MergeOverlay, placeholder_that_was_added_is_found)
{
    EXPECT_EQ(Merged("<r><a/></r>", "<r><PlaceHolder Name='p'/><z/><x PlaceHolder='p'/></r>"),
              "<r><a/><PlaceHolder Name='p'/><x/><z/></r>");
}

// Which element is the counterpart

TEST(MergeCounterpart, name_is_compared_without_regard_to_case)
{
    EXPECT_EQ(Merged("<r><Item/></r>", "<r><iTEM Merge='Pos'><x/></iTEM></r>"), "<r><Item><x/></Item></r>");
}

TEST(MergeCounterpart, without_attributes_it_is_the_first_of_the_name)
{
    EXPECT_EQ(Merged("<r><b/><a k='1'/><a/></r>", "<r><a Merge='Pos'><x/></a></r>"),
              "<r><b/><a k='1'><x/></a><a/></r>");
}

TEST(MergeCounterpart, attribute_selects)
{
    EXPECT_EQ(Merged("<r><a k='1'/><a k='2'/></r>", "<r><a k='2' Merge='Pos'><x/></a></r>"),
              "<r><a k='1'/><a k='2'><x/></a></r>");
}

TEST(MergeCounterpart, attribute_must_be_there)
{
    EXPECT_EQ(Merged("<r><a/><a k=''/></r>", "<r><a k='' Merge='Pos'><x/></a></r>"), "<r><a/><a k=''><x/></a></r>");
}

TEST(MergeCounterpart, name_of_an_attribute_is_exact)
{
    EXPECT_EQ(Merged("<r><a K='1'/><a k='1'/></r>", "<r><a k='1' Merge='Pos'><x/></a></r>"),
              "<r><a K='1'/><a k='1'><x/></a></r>");
}

TEST(MergeCounterpart, attributes_behind_merge_do_not_select)
{
    EXPECT_EQ(Merged("<r><a k='1'/><a k='2'/></r>", "<r><a Merge='Pos' k='2'><x/></a></r>"),
              "<r><a k='1'><x/></a><a k='2'/></r>");
}

TEST(MergeCounterpart, any_case_of_merge_ends_the_attributes_that_select)
{
    EXPECT_EQ(Merged("<r><a k='1'/><a k='2'/></r>", "<r><a MERGE='' k='2' Merge='Pos'><x/></a></r>"),
              "<r><a k='1'><x/></a><a k='2'/></r>");
}

TEST(MergeCounterpart, all_attributes_select_when_one_candidate_has_them)
{
    EXPECT_EQ(Merged("<r><a k='1' m='2'/></r>", "<r><a m='2' k='1' Merge='Pos'><x/></a></r>"),
              "<r><a k='1' m='2'><x/></a></r>");
}

TEST(MergeCounterpart, later_candidates_are_compared_from_the_attribute_that_failed)
{
    EXPECT_EQ(
        Merged("<r><a k='1' m='9'/><a k='5' m='2'/><a k='1' m='2'/></r>", "<r><a k='1' m='2' Merge='Pos'><x/></a></r>"),
        "<r><a k='1' m='9'/><a k='5' m='2'><x/></a><a k='1' m='2'/></r>");
}

TEST(MergeCounterpart, candidates_before_the_one_with_the_first_attribute_are_passed_by)
{
    EXPECT_EQ(Merged("<r><a m='2'/><a k='1'/><b m='2'/></r>", "<r><a k='1' m='2' Merge='Pos'>text</a></r>"),
              "<r><a m='2'/><a k='1'/><b m='2'/><a k='1' m='2' Merge='Pos'>text</a></r>");
}

TEST(MergeCounterpart, elements_of_other_names_do_not_move_the_cursor)
{
    EXPECT_EQ(Merged("<r><b k='1'/><a m='2'/></r>", "<r><a k='1' m='2' Merge='Pos'/><x/></r>"),
              "<r><b k='1'/><a m='2'/><x/></r>");
}

TEST(MergeCounterpart, nodes_of_every_type_are_candidates)
{
    EXPECT_EQ(Merged("<r>words<a/><!--note--></r>", "<r><text Merge='Remove'/><COMMENT Merge='Remove'/></r>"),
              "<r><a/></r>");
}

// Whole documents

TEST(MergeDocuments, roots_of_different_names_change_nothing)
{
    TestDocument base("<r><a/></r>");
    TestDocument overlay("<R><b/></R>");
    EXPECT_FALSE(base.MergeWith(&overlay));
    EXPECT_FALSE(base.MergeXML(&overlay, true));
    EXPECT_EQ(base.Dump(), "<r><a/></r>");
    EXPECT_EQ(overlay.Dump(), "<R><b/></R>");
}

TEST(MergeDocuments, document_without_root_is_refused)
{
    TestDocument base("<r><a/></r>");
    CXmlDocument empty;
    TestDocument rootless("<r/>");
    rootless.DeleteNode(rootless.GetRawRoot()->GetXmlNode());
    for (CXmlDocument* const other :
         {&empty, static_cast<CXmlDocument*>(&rootless), static_cast<CXmlDocument*>(nullptr)}) {
        EXPECT_FALSE(base.MergeWith(other));
        EXPECT_FALSE(base.MergeXML(other, false));
    }
    EXPECT_FALSE(empty.MergeWith(&base));
    EXPECT_FALSE(empty.MergeXML(&base, false));
    EXPECT_EQ(base.Dump(), "<r><a/></r>");
}

TEST(MergeDocuments, attributes_of_the_root_stay)
{
    EXPECT_EQ(Merged("<r k='1'/>", "<r k='2' Merge='Remove' m='3'/>"), "<r k='1'/>");
}

TEST(MergeDocuments, overlay_on_itself_is_refused)
{
    TestDocument document("<r><a/><b/></r>");
    EXPECT_FALSE(document.MergeWith(&document));
    EXPECT_EQ(document.Dump(), "<r><a/><b/></r>");
}

TEST(MergeDocuments, overlay_can_end_before_the_base)
{
    TestDocument base("<r><a/></r>");
    {
        TestDocument overlay("<r><x><y/></x></r>");
        overlay.Child("x")->GetRawChildren();
        EXPECT_TRUE(base.MergeWith(&overlay));
    }
    EXPECT_EQ(base.Child("x")->GetRawChildren()->GetName(), "y");
    EXPECT_EQ(base.Dump(), "<r><a/><x><y/></x></r>");
}

TEST(MergeDocuments, several_overlays_are_merged_in_turn)
{
    TestDocument base("<r><a/></r>");
    TestDocument first("<r><x/></r>");
    TestDocument second("<r><x Merge='PosBefore'/><y/></r>");
    EXPECT_TRUE(base.MergeWith(&first));
    EXPECT_TRUE(base.MergeWith(&second));
    EXPECT_EQ(base.Dump(), "<r><a/><y/><x/></r>");
}

// Depth

std::string Nested(unsigned int depth, const std::string& attributes)
{
    std::string text;
    for (unsigned int i = 1; i < depth; ++i)
        text += i == 1 ? "<r>" : "<e" + attributes + ">";
    text += "<e/>";
    for (unsigned int i = depth - 1; i > 0; --i)
        text += i == 1 ? "</r>" : "</e>";
    return text;
}

TEST(MergeDepth, overlay_as_deep_as_allowed_is_merged)
{
    for (const unsigned int depth : {4u, 5u}) {
        TestDocument base("<r/>");
        base.SetMaxDepth(5);
        TestDocument overlay(Nested(depth, ""));
        EXPECT_TRUE(base.MergeWith(&overlay));
        EXPECT_EQ(base.Dump(), Nested(depth, ""));
    }
}

TEST(MergeDepth, deeper_overlay_is_refused_before_anything_changes)
{
    const LogCapture log;
    TestDocument base("<r><a/></r>");
    base.SetMaxDepth(5);
    const std::string text = "<r><a Merge='Remove'/>" + Nested(6, "").substr(3);
    TestDocument overlay(text);
    EXPECT_FALSE(base.MergeWith(&overlay));
    EXPECT_EQ(base.Dump(), "<r><a/></r>");
    EXPECT_EQ(overlay.Dump(), TestDocument(text).Dump());
    EXPECT_EQ(log.Errors(), std::vector<wxString>{"XML elements are nested deeper than 5"});
}

TEST(MergeDepth, matches_go_as_deep_as_the_documents)
{
    const unsigned int depth = CXmlDocument::DefaultMaxDepth;
    TestDocument base(Nested(depth, ""));
    TestDocument overlay(Nested(depth - 1, " Merge='Pos'").insert(3, "<first/>"));
    EXPECT_TRUE(base.MergeWith(&overlay));
    EXPECT_EQ(base.GetRawRoot()->GetChildrenDepth(), static_cast<int>(depth - 1));
    EXPECT_EQ(base.GetRawRoot()->GetChildrenCount(), 2);
}

// Handles

TEST(MergeHandles, base_makes_its_own_for_what_was_moved)
{
    TestDocument base("<r><a/></r>");
    TestDocument overlay("<r><x/></r>");
    CXmlNode* const before = overlay.Child("x");
    EXPECT_TRUE(base.MergeWith(&overlay));
    CXmlNode* const after = base.Child("x");
    EXPECT_NE(before, after);
    EXPECT_EQ(after->GetDocument(), &base);
    EXPECT_EQ(before->GetDocument(), &base);
    EXPECT_EQ(before->GetXmlNode(), after->GetXmlNode());
    EXPECT_EQ(before->GetIndex(), 1);
    EXPECT_EQ(base.GetAttachNode(after->GetXmlNode()), after);
}

TEST(MergeHandles, base_keeps_those_that_it_has)
{
    TestDocument base("<r><a><i/></a><b/></r>");
    CXmlNode* const a = base.Child("a");
    CXmlNode* const i = a->GetRawChildren();
    TestDocument overlay("<r><a Merge='Pos'><x/></a></r>");
    EXPECT_TRUE(base.MergeWith(&overlay));
    EXPECT_EQ(base.Child("a"), a);
    EXPECT_EQ(a->GetRawChildren(), i);
    EXPECT_EQ(i->GetRawNext()->GetName(), "x");
}

TEST(MergeHandles, children_known_before_are_counted_anew)
{
    TestDocument base("<r><a/><b/><c/></r>");
    CXmlNode* const root = base.GetRawRoot();
    EXPECT_EQ(root->GetChildrenCount(), 3);
    EXPECT_EQ(root->GetRawItem(2)->GetName(), "c");
    TestDocument overlay("<r><a Merge='Remove'/><c Merge='Remove'/><b Merge='PosBefore'/><x/><y/></r>");
    CXmlNode* const left = overlay.GetRawRoot();
    EXPECT_EQ(left->GetChildrenCount(), 5);
    EXPECT_EQ(left->GetRawItem(4)->GetName(), "y");
    EXPECT_TRUE(base.MergeWith(&overlay));
    EXPECT_EQ(root->GetChildrenCount(), 3);
    EXPECT_EQ(root->GetRawItem(2)->GetName(), "b");
    root->AddRawNode("z");
    EXPECT_EQ(base.Dump(), "<r><x/><y/><b/><z/></r>");
    EXPECT_EQ(left->GetChildrenCount(), 3);
    EXPECT_FALSE(left->GetRawItem(4)->Ok());
    left->AddRawNode("z");
    EXPECT_EQ(overlay.Dump(), "<r><a Merge='Remove'/><c Merge='Remove'/><b Merge='PosBefore'/><z/></r>");
}

TEST(MergeHandles, overlay_has_those_that_it_had)
{
    TestDocument base("<r/>");
    TestDocument overlay("<r><x><y/></x></r>");
    CXmlNode* const x = overlay.Child("x");
    CXmlNode* const y = x->GetRawChildren();
    EXPECT_EQ(x->GetChildrenCount(), 1);
    EXPECT_TRUE(base.MergeWith(&overlay));
    base.Child("x")->AddRawNode("z");
    EXPECT_EQ(x->GetChildrenCount(), 2);
    EXPECT_EQ(y->GetDocument(), &base);
    EXPECT_EQ(y->GetRawNext(), base.Child("x")->GetRawNode("z"));
    EXPECT_EQ(base.Child("x")->GetRawItem(1)->GetName(), "z");
    x->RemoveChildren();
    EXPECT_FALSE(y->Ok());
    EXPECT_FALSE(base.Child("x")->GetRawItem(1)->Ok());
    EXPECT_EQ(base.Child("x")->GetChildrenCount(), 0);
}

TEST(MergeHandles, handles_of_the_overlay_are_empty_when_their_nodes_are_gone)
{
    TestDocument overlay("<r><x><y/></x><x Merge='Remove'/><z/></r>");
    CXmlNode* const x = overlay.Child("x");
    CXmlNode* const y = x->GetRawChildren();
    CXmlNode* const z = overlay.Child("z");
    {
        TestDocument base("<r/>");
        EXPECT_TRUE(base.MergeWith(&overlay));
        EXPECT_EQ(base.Dump(), "<r><z/></r>");
        EXPECT_FALSE(x->Ok());
        EXPECT_FALSE(y->Ok());
        EXPECT_EQ(z->GetDocument(), &base);
    }
    EXPECT_FALSE(z->Ok());
    EXPECT_EQ(z->GetDocument(), &overlay);
    EXPECT_EQ(z->GetRawNext(), overlay.GetEmptyNode());
}

TEST(MergeHandles, references_go_along_with_their_nodes)
{
    TestDocument overlay("<r><x><y/></x><z Merge='Pos'/></r>");
    const CXmlNodeRef x(&overlay, overlay.Child("x")->GetXmlNode());
    const CXmlNodeRef y(&overlay, x.GetXmlNode()->GetChildren());
    const CXmlNodeRef z(&overlay, overlay.Child("z")->GetXmlNode());
    {
        TestDocument base("<r/>");
        EXPECT_TRUE(base.MergeWith(&overlay));
        EXPECT_EQ(x.GetHandle(), base.Child("x"));
        EXPECT_EQ(z.GetHandle(), overlay.Child("z"));
        base.Child("x")->RemoveChildren();
        EXPECT_EQ(y.GetXmlNode(), nullptr);
    }
    EXPECT_EQ(x.GetHandle(), nullptr);
    EXPECT_EQ(z.GetDocument(), &overlay);
}

TEST(MergeHandles, references_go_along_with_inserted_nodes)
{
    TestDocument other("<r><x><y/></x><z/></r>");
    CXmlNode* const moved = other.Child("x");
    const CXmlNodeRef x(&other, moved->GetXmlNode());
    const CXmlNodeRef y(&other, x.GetXmlNode()->GetChildren());
    const CXmlNodeRef z(&other, other.Child("z")->GetXmlNode());
    TestDocument base("<r><a/></r>");
    other.GetRawRoot()->RemoveChild(moved);
    EXPECT_EQ(x.GetDocument(), &other);
    base.GetRawRoot()->InsertChildAt(moved, base.Child("a"), false);
    EXPECT_EQ(x.GetDocument(), &base);
    EXPECT_EQ(y.GetHandle(), base.Child("x")->GetRawChildren());
    other.Clear();
    EXPECT_EQ(z.GetXmlNode(), nullptr);
    EXPECT_NE(x.GetXmlNode(), nullptr);
    base.Clear();
    EXPECT_EQ(x.GetXmlNode(), nullptr);
    EXPECT_EQ(y.GetHandle(), base.GetEmptyNode());
}

TEST(MergeHandles, names_of_many_children_are_looked_up_anew)
{
    TestDocument base("<r/>");
    TestDocument overlay("<r><x/></r>");
    CXmlNode* const guest = overlay.Child("x");
    for (int i = 0; i < 100; ++i)
        guest->AddRawNode(wxString::Format("n%d", i));
    EXPECT_TRUE(guest->GetRawNode("n99")->Ok());
    EXPECT_TRUE(base.MergeWith(&overlay));
    EXPECT_TRUE(base.Child("x")->GetRawNode("n98")->Ok());
    EXPECT_TRUE(base.Child("x")->RemoveRawNode("n99"));
    EXPECT_FALSE(guest->GetRawNode("n99")->Ok());
    EXPECT_TRUE(guest->RemoveRawNode("n98"));
    EXPECT_FALSE(base.Child("x")->GetRawNode("n98")->Ok());
}

TEST(MergeHandles, node_that_is_moved_into_one_that_was_moved_is_let_go_once)
{
    TestDocument base("<r/>");
    CXmlNode* handle = nullptr;
    {
        TestDocument overlay("<r><x/><x Merge='Pos'><y/></x></r>");
        handle = overlay.GetRawRoot()->GetRawItem(1)->GetRawChildren();
        EXPECT_TRUE(base.MergeWith(&overlay));
        EXPECT_EQ(handle->GetIndex(), 0);
    }
    EXPECT_EQ(base.Dump(), "<r><x><y/></x></r>");
    base.Clear();
}

TEST(MergeHandles, node_that_came_inside_another_one_and_is_removed_again_leaves_its_handles_empty)
{
    TestDocument overlay("<r><x><y><z/></y></x><x Merge='Pos'><y Merge='Remove'/></x></r>");
    CXmlNode* const y = overlay.Child("x")->GetRawChildren();
    CXmlNode* const z = y->GetRawChildren();
    TestDocument base("<r/>");
    EXPECT_TRUE(base.MergeWith(&overlay));
    EXPECT_EQ(base.Dump(), "<r><x/></r>");
    EXPECT_FALSE(y->Ok());
    EXPECT_FALSE(z->Ok());
    EXPECT_EQ(y->GetDocument(), &overlay);
    overlay.GetRawRoot()->AddRawNode("n");
    EXPECT_TRUE(overlay.Child("n")->Ok());
}

TEST(MergeHandles, node_that_goes_through_several_documents_is_known_to_all)
{
    TestDocument last("<r/>");
    TestDocument first("<r><x/></r>");
    CXmlNode* const ofFirst = first.Child("x");
    {
        TestDocument second("<r/>");
        EXPECT_TRUE(second.MergeWith(&first));
        CXmlNode* const ofSecond = second.Child("x");
        EXPECT_TRUE(last.MergeWith(&second));
        EXPECT_EQ(ofSecond->GetDocument(), &last);
        EXPECT_EQ(ofFirst->GetDocument(), &last);
    }
    EXPECT_EQ(ofFirst->GetName(), "x");
    EXPECT_TRUE(first.MergeWith(&last));
    EXPECT_EQ(first.Child("x"), ofFirst);
    EXPECT_EQ(ofFirst->GetDocument(), &first);
    EXPECT_EQ(first.Dump(), "<r><x/></r>");
}

TEST(MergeHandles, handle_on_a_node_that_is_removed_ends)
{
    TestDocument base("<r><a><i/></a><b/></r>");
    CXmlNode* const inner = base.Child("a")->GetRawChildren();
    EXPECT_EQ(inner->GetName(), "i");
    TestDocument overlay("<r><a Merge='Remove'/></r>");
    EXPECT_TRUE(base.MergeWith(&overlay));
    EXPECT_FALSE(inner->Ok());
    EXPECT_EQ(base.Dump(), "<r><b/></r>");
}
