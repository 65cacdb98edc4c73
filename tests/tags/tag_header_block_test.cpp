#include "tests/tags/tag_test_support.h"

#include <memory>

namespace
{

class TagHeaderBlockTest : public TagTest
{
protected:
    /// The options that a header of these lines gives its block.
    std::string Process(const std::vector<wxString>& lines, bool doubleTag = false)
    {
        CTagBlock block(&parser, nullptr);
        block.SetDoubleTag(doubleTag);
        CTagHeaderBlock header(&parser, &block);
        for (const wxString& line : lines)
            header.CreateUnit(wxSharedPtr<CParserFile>(), line, 1);
        EXPECT_EQ(0, header.Process());
        return OptionsOf(block);
    }
};

TEST_F(TagHeaderBlockTest, TheTypeTheNameAndTheEndAreNoOptions)
{
    EXPECT_EQ("size=3", Process({"<item name='x' size=3/>"}));
    EXPECT_EQ("size=3", Process({"<item='x' size=3/>"}));
    EXPECT_EQ("size=3", Process({"<item=\"x\"size=3>"}));
    EXPECT_EQ("size=3", Process({"  <item='x' size=3>"}));
    EXPECT_EQ("size=3", Process({"<item ='x' size=3>"}));
}

TEST_F(TagHeaderBlockTest, WithoutANameTheTextBehindTheTypeIsOptions)
{
    EXPECT_EQ("size=3", Process({"<item size=3>"}));
    EXPECT_EQ("-x=3", Process({"<item-x=3>"}));
    EXPECT_EQ("", Process({"<item>"}));
    EXPECT_EQ("", Process({"<item/>"}));
}

TEST_F(TagHeaderBlockTest, EachLineOfATagAddsItsOptions)
{
    EXPECT_EQ("one=1; two=2; three=3", Process({"<item='x' one=1", "two=2", "three=3/>"}));
    EXPECT_EQ("a=x y; b=z", Process({"<item a='x y", "b=z", "/>"}));
}

TEST_F(TagHeaderBlockTest, ALaterLineReplacesAnOption)
{
    EXPECT_EQ("k=2", Process({"<item k=1", "k=2>"}));
}

TEST_F(TagHeaderBlockTest, ALineLosesTheEndTagAtItsEnd)
{
    EXPECT_EQ("one=1; two=2", Process({"<item one=1>", "two=2>"}));
}

TEST_F(TagHeaderBlockTest, AClosingTagHasNoOptions)
{
    EXPECT_EQ("", Process({"</item size=3>"}));
    EXPECT_EQ("", Process({"</item", "size=3>"}));
    EXPECT_EQ("", Process({"\t</item size=3>"}));
}

TEST_F(TagHeaderBlockTest, HolesArePassedOver)
{
    CTagBlock block(&parser, nullptr);
    CTagHeaderBlock header(&parser, &block);
    for (const char* line : {"gone", "<item one=1", "gone", "two=2/>", "gone"})
        header.CreateUnit(wxSharedPtr<CParserFile>(), line, 1);
    for (int slot : {0, 2, 4}) {
        int at = slot;
        header.RemoveElement(header.GetUnit(static_cast<unsigned int>(slot)), &at, 1);
    }
    EXPECT_EQ(0, header.Process());
    EXPECT_EQ("one=1; two=2", OptionsOf(block));
}

TEST_F(TagHeaderBlockTest, AHeaderWithoutLinesHasNoOptions)
{
    EXPECT_EQ("", Process({}));
}

TEST_F(TagHeaderBlockTest, WhatFollowsADoubleTagIsNoOption)
{
    EXPECT_EQ("one=1", Process({"<<item one=1>> two=2"}, true));
    EXPECT_EQ("one=1; two=>>", Process({"<<item one=1", "two='>>'/>>x"}, true));
}

TEST_F(TagHeaderBlockTest, WithoutAParentNothingIsDone)
{
    CTagHeaderBlock header(&parser, nullptr);
    header.CreateUnit(wxSharedPtr<CParserFile>(), "<item one=1>", 1);
    EXPECT_EQ(0, header.Process());
    EXPECT_EQ("1:<item one=1>|", LinesOf(&header));
}

TEST_F(TagHeaderBlockTest, TheLinesThemselvesStay)
{
    Read("<item='x' one=1/>");
    EXPECT_EQ("1:<item='x' one=1/>|", LinesOf(Outermost().GetBeginHeader()));
}

TEST_F(TagHeaderBlockTest, ACloneHasTheUnitsAndNoParent)
{
    Read("<a k=1>\n</a>");
    const CTagHeaderBlock& header = *Outermost().GetBeginHeader();
    ASSERT_EQ(&Outermost(), header.GetParent());
    const std::unique_ptr<CTagHeaderBlock> clone(header.Clone());
    EXPECT_EQ("0:<a k=1>|", LinesOf(clone.get()));
    EXPECT_EQ(nullptr, clone->GetParent());
    EXPECT_EQ(nullptr, clone->GetParser());
    EXPECT_EQ("1:<a k=1>|", LinesOf(&header));
}

TEST_F(TagHeaderBlockTest, AnAssignmentCopiesTheUnitsAndTheParent)
{
    Read("<a k=1>\n</a>");
    CTagBlock block(&parser, nullptr);
    CTagHeaderBlock header(&parser, &block);
    header.CreateUnit(wxSharedPtr<CParserFile>(), "gone", 1);
    header = *Outermost().GetBeginHeader();
    EXPECT_EQ("0:<a k=1>|", LinesOf(&header));
    EXPECT_EQ(&header, header.GetUnit(0)->m_block);
    EXPECT_EQ(&Outermost(), header.GetParent());
    CTagHeaderBlock& same = header;
    header = same;
    EXPECT_EQ("0:<a k=1>|", LinesOf(&header));
}

TEST_F(TagHeaderBlockTest, AHeaderCanBeGivenAParent)
{
    CTagBlock block(&parser, nullptr);
    CTagHeaderBlock header(&parser, nullptr);
    header.SetParent(&block);
    EXPECT_EQ(&block, header.GetParent());
}

TEST_F(TagHeaderBlockTest, HasRunTimeClassInformation)
{
    CTagHeaderBlock header(nullptr, nullptr);
    EXPECT_STREQ(wxS("CTagHeaderBlock"), header.GetClassInfo()->GetClassName());
    EXPECT_TRUE(header.IsKindOf(&CParserBlock::ms_classInfo));
}

} // namespace
