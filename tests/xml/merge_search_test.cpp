#include "tests/xml/merge_fixture.h"

#include <string>

namespace
{

using Search = CXmlNode* (*)(const wxString&, CXmlNode*, CXmlNode*, bool);
using SearchByProp = CXmlNode* (*)(const wxString&, const wxString&, const wxString&, CXmlNode*);

Search SearchFunction();
SearchByProp SearchByPropFunction();

// Only in an explicit instantiation can private members be named from outside.
template <Search byName, SearchByProp byProp> struct Access
{
    friend Search SearchFunction() { return byName; }
    friend SearchByProp SearchByPropFunction() { return byProp; }
};
template struct Access<&CXmlDocument::SearchNode, &CXmlDocument::SearchNode>;

} // namespace

TEST(SearchNode, gives_the_counterpart)
{
    TestDocument document("<r><a k='1'/><b k='2'/><A k='2'/></r>");
    TestDocument other("<r><a k='2' Merge='Pos'/></r>");
    CXmlNode* const root = document.GetRawRoot();
    CXmlNode* const src = other.Child("a");
    EXPECT_EQ(SearchFunction()("a", src, root, false), root->GetRawItem(2));
    EXPECT_EQ(SearchFunction()("a", src, root, true), root->GetRawItem(0));
    EXPECT_EQ(SearchFunction()("b", src, root, false), root->GetRawItem(1));
}

TEST(SearchNode, gives_null_and_not_the_empty_node)
{
    TestDocument document("<r><a k='1'/></r>");
    TestDocument other("<r><a k='2'/></r>");
    CXmlNode* const root = document.GetRawRoot();
    CXmlNode* const src = other.Child("a");
    EXPECT_EQ(SearchFunction()("a", src, root, false), nullptr);
    EXPECT_EQ(SearchFunction()("q", src, root, true), nullptr);
    EXPECT_EQ(SearchFunction()("a", nullptr, root, true), nullptr);
    EXPECT_EQ(SearchFunction()("a", src, nullptr, true), nullptr);
    EXPECT_EQ(SearchFunction()("a", src, document.GetEmptyNode(), true), nullptr);
    EXPECT_EQ(SearchByPropFunction()("a", "k", "2", root), nullptr);
    EXPECT_EQ(SearchByPropFunction()("a", "k", "1", nullptr), nullptr);
}

TEST(SearchNode, finds_a_property_with_its_value)
{
    TestDocument document("<r><a K='x'/><b k='x'/><A k='X'/><a k='x'/></r>");
    CXmlNode* const root = document.GetRawRoot();
    EXPECT_EQ(SearchByPropFunction()("a", "k", "x", root), root->GetRawItem(2));
}

TEST(SearchNode, takes_a_missing_property_for_an_empty_one)
{
    TestDocument document("<r><a k='x'/><a/></r>");
    CXmlNode* const root = document.GetRawRoot();
    EXPECT_EQ(SearchByPropFunction()("a", "k", "", root), root->GetRawItem(1));
}

namespace
{

std::string Items(const char* mark, int first, int count, int step)
{
    std::string text = "<r>";
    for (int i = 0; i < count; ++i)
        text += "<i n='" + std::to_string(first + i * step) + "'" + mark + "/>";
    return text + "</r>";
}

} // namespace

// With a walk for each, these would take minutes, past the time that a test has.

TEST(MergeOfMany, elements_are_found_among_many)
{
    TestDocument base(Items("", 0, 100000, 1));
    TestDocument overlay(Items(" Merge='Remove'", 99999, 40000, -2));
    EXPECT_TRUE(base.MergeWith(&overlay));
    EXPECT_EQ(base.GetRawRoot()->GetChildrenCount(), 60000);
    EXPECT_EQ(base.GetRawRoot()->GetRawItem(59999)->GetPropLong("n", 0), 99998);
}

TEST(MergeOfMany, elements_are_inserted_among_many)
{
    TestDocument base(Items("", 0, 100000, 1));
    std::string text = Items("", 100000, 40000, 1).insert(3, "<i n='99998' Merge='PosBefore'/>");
    TestDocument overlay(text);
    EXPECT_TRUE(base.MergeWith(&overlay));
    EXPECT_EQ(base.GetRawRoot()->GetRawItem(99998)->GetPropLong("n", 0), 100000);
    EXPECT_EQ(base.GetRawRoot()->GetRawItem(139999)->GetPropLong("n", 0), 99999);
}

TEST(MergeOfMany, elements_of_many_names_are_copied)
{
    std::string text = "<r>";
    for (int i = 0; i < 30000; ++i)
        text += "<n" + std::to_string(i * 7919 % 30000) + " k='1'/>";
    text += "</r>";
    TestDocument base(text);
    TestDocument other(text);
    other.GetRawRoot()->AddRawNode("more");
    EXPECT_TRUE(base.MergeXML(&other, true));
    EXPECT_EQ(base.GetRawRoot()->GetChildrenCount(), 30001);
}
