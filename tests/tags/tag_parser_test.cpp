#include "tests/tags/tag_test_support.h"

#include <memory>

namespace
{

using TagParserTest = TagTest;

TEST(TagParserAloneTest, TheTagsAreAngleBracketsUnlessGiven)
{
    const CTagParser parser;
    EXPECT_EQ("<", parser.GetBeginTag());
    EXPECT_EQ(">", parser.GetEndTag());
    EXPECT_EQ("<<", parser.GetDoubleBeginTag());
    EXPECT_EQ(">>", parser.GetDoubleEndTag());
    EXPECT_EQ(nullptr, parser.GetPP());
}

TEST(TagParserAloneTest, TheTagsCanBeGiven)
{
    CPreprocessor preprocessor(nullptr, true);
    const CTagParser parser(&preprocessor, L"<%", L"%>");
    EXPECT_EQ("<%", parser.GetBeginTag());
    EXPECT_EQ("%>", parser.GetEndTag());
    EXPECT_EQ("<%<%", parser.GetDoubleBeginTag());
    EXPECT_EQ("%>%>", parser.GetDoubleEndTag());
    EXPECT_EQ(&preprocessor, parser.GetPP());
    EXPECT_EQ("[", CTagParser(L"[", L"]").GetBeginTag());
}

TEST_F(TagParserTest, ABlockIsListedByTheParserUnlessDetached)
{
    CTagBlock* const listed = parser.CreateBlock(false);
    EXPECT_EQ(&parser, listed->GetParser());
    EXPECT_EQ(nullptr, listed->GetParent());
    EXPECT_EQ(listed, parser.GetLastBlock(0));
    const std::unique_ptr<CTagBlock> detached(parser.CreateBlock(true));
    EXPECT_EQ(nullptr, detached->GetParser());
    EXPECT_EQ(0, parser.RemoveBlock(detached.get()));
}

TEST_F(TagParserTest, ParsingMakesATagBlockAndReadsNoTagsYet)
{
    EXPECT_EQ("1:<a/>|", LinesOf(&Load("<a/>")));
    EXPECT_EQ(0u, Text().GetSubBlockCount());
}

TEST_F(TagParserTest, ParseBlockReadsTheTagsOfABlock)
{
    EXPECT_EQ(0, parser.ParseBlock(&Load("<a/>")));
    EXPECT_EQ("=\n\ta=", Text().GetHierarchy(0));
    EXPECT_EQ(-3, parser.ParseBlock(&Load("</a>")));
}

TEST_F(TagParserTest, ParseBlockFindsNothingInWhatIsNoTagBlock)
{
    CParserBlock plain(&parser);
    EXPECT_EQ(1, parser.ParseBlock(&plain));
}

TEST_F(TagParserTest, TheHierarchyOfAllBlocksIsJoinedWithoutAnythingBetween)
{
    Read("<a/>");
    Read("<b='x'/>");
    EXPECT_EQ("=\n\ta==\n\tb=x", parser.GetHierarchy(nullptr));
    EXPECT_EQ("b=x", parser.GetHierarchy(&Outermost()));
}

TEST_F(TagParserTest, TheHierarchyOfNoBlocksIsEmpty)
{
    EXPECT_EQ("", parser.GetHierarchy(nullptr));
}

TEST(TagParserAloneTest, ATextIsPreprocessedFirst)
{
    CTagParser parser;
    ASSERT_EQ(0, parser.Parse("#define n 2\n#for i 1;#n;1\n<item='#i' k=#n/>\n#endfor\n", "main.txt", nullptr, false));
    ASSERT_EQ(0, parser.ParseBlock(parser.GetLastBlock(0)));
    EXPECT_EQ("=\n\titem=#i\n\titem=#i", parser.GetHierarchy(nullptr));
}

TEST_F(TagParserTest, CleaningForgetsTheBlocks)
{
    Read("<a>\n<b/>\n</a>");
    parser.Init();
    EXPECT_EQ("", parser.GetHierarchy(nullptr));
}

TEST_F(TagParserTest, HasRunTimeClassInformation)
{
    EXPECT_STREQ(wxS("CTagParser"), parser.GetClassInfo()->GetClassName());
    EXPECT_TRUE(parser.IsKindOf(&CParser::ms_classInfo));
}

} // namespace
