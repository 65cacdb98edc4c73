#include "tests/tags/tag_test_support.h"

namespace
{

class TagTitleTest : public TagTest
{
protected:
    /// The options that a header of these lines gives its block.
    std::string Process(const std::vector<wxString>& lines)
    {
        CTagBlock block(&parser, nullptr);
        CTagHeaderBlock header(&parser, &block);
        for (const wxString& line : lines)
            header.CreateUnit(wxSharedPtr<CParserFile>(), line, 1);
        EXPECT_EQ(0, header.Process());
        return OptionsOf(block);
    }
};

TEST_F(TagTitleTest, ATypeHasNoLettersBeyondAscii)
{
    EXPECT_EQ(Failure("Missing tag type !", 1, "main.txt", -2), Read(L"<\u00e9/>"));
    EXPECT_EQ("a=", Read(L"<a\u00e9/>"));
    EXPECT_EQ("\u00e9=", OptionsOf(Outermost()));
}

TEST_F(TagTitleTest, OnlyTheLastLineOfATagLosesASlash)
{
    EXPECT_EQ("one=x/; two=2", Process({"<item one=x/", "two=2/>"}));
}

TEST_F(TagTitleTest, TheLastLineLosesAllSlashesAtItsEnd)
{
    EXPECT_EQ("k=http://x", Process({"<item k=http://x//>"}));
}

TEST_F(TagTitleTest, QuotesBehindANameAreNoOptions)
{
    EXPECT_EQ("k=1", Process({"<item='x'' \"k=1>"}));
}

} // namespace
