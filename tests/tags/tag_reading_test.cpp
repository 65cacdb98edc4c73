#include "tests/tags/tag_test_support.h"

namespace
{

using TagReadingTest = TagTest;

// --- Where tags are ---

TEST_F(TagReadingTest, ATextWithoutTagsHasNoSubBlocks)
{
    EXPECT_EQ("", Read("one\ntwo\n"));
    EXPECT_EQ(0u, Text().GetSubBlockCount());
    EXPECT_EQ("1:one|2:two|", LinesOf(&Text()));
}

TEST_F(TagReadingTest, AnEmptyTextHasNoSubBlocks)
{
    EXPECT_EQ("", Read(""));
}

TEST_F(TagReadingTest, ATextWithoutTagsLeavesNoError)
{
    Read("one\n");
    EXPECT_EQ("0, no unit: ", LastFailure(parser, 0));
}

TEST_F(TagReadingTest, ATagIsOnlyRecognisedAtTheStartOfALine)
{
    EXPECT_EQ("", Read("text <a>"));
    EXPECT_EQ("a=", Read("<a/>"));
}

TEST_F(TagReadingTest, BlanksAndTabsMayStandBeforeATag)
{
    EXPECT_EQ("a=", Read("  <a>\n\t </a>"));
    EXPECT_EQ("1:  <a>|", LinesOf(Outermost().GetBeginHeader()));
    EXPECT_EQ("2:\t </a>|", LinesOf(Outermost().GetEndHeader()));
}

TEST_F(TagReadingTest, ASingleTagHasNeitherContentNorClosingTag)
{
    EXPECT_EQ("a=x", Read("<a name='x'/>\ntext\n"));
    EXPECT_EQ("", LinesOf(&Outermost()));
    EXPECT_EQ("none", LinesOf(Outermost().GetEndHeader()));
    EXPECT_EQ("2:text|", LinesOf(&Text()));
}

TEST_F(TagReadingTest, AClosingTagOfAnotherTypeIsAMismatch)
{
    EXPECT_EQ(Failure("Close tag mismatch (Tag mismatch (b instead of a)! ) open tag at file \"main.txt\" line 1 !", 2,
                      "main.txt", -4),
              Read("<a>\n</b>\n"));
}

TEST_F(TagReadingTest, SingleTagsAreContentInADoubleTag)
{
    EXPECT_EQ("a=", Read("<<a>>\n<b>\n<</a>>\n"));
    EXPECT_EQ("2:<b>|", LinesOf(&Outermost()));
    EXPECT_TRUE(Outermost().IsDoubleTag());
}

TEST_F(TagReadingTest, BlocksNest)
{
    EXPECT_EQ("a=1\n\tb=2\n\t\tc=3\n\td=\ne=", Read("<a='1'>\n<b='2'>\n<c='3'/>\n</b>\n<d>\n</d>\n</a>\n<e/>\n"));
}

} // namespace
