#include "tests/tags/tag_test_support.h"

#include <iterator>

namespace
{

using TagReadingTest = TagTest;

std::string CloseMismatch(const std::string& reason, unsigned long openLine)
{
    return "Close tag mismatch (" + reason + " ) open tag at file \"main.txt\" line " + std::to_string(openLine) + " !";
}

std::string NotClosed(unsigned long openLine)
{
    return "Tag not opened at file \"main.txt\" line " + std::to_string(openLine) + " but not closed";
}

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

TEST_F(TagReadingTest, ReadingToTheEndLeavesNoError)
{
    Read("<a/>\none\n");
    EXPECT_EQ("0, no unit: ", LastFailure(parser, 0));
}

TEST_F(TagReadingTest, ATagIsRecognisedAtTheStartOfALineOnly)
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

TEST_F(TagReadingTest, ABeginTagFurtherIntoALineIsContent)
{
    EXPECT_EQ("a=", Read("<a>\nx <b> y\n\"<b>\"\n</a>\n"));
    EXPECT_EQ("2:x <b> y|3:\"<b>\"|", LinesOf(&Outermost()));
}

TEST_F(TagReadingTest, ATagMayRunOverSeveralLines)
{
    EXPECT_EQ("a=x", Read("<a='x'\nk=1\n>\ntext\n</a\n>\n"));
    EXPECT_EQ("1:<a='x'|2:k=1|3:>|", LinesOf(Outermost().GetBeginHeader()));
    EXPECT_EQ("4:text|", LinesOf(&Outermost()));
    EXPECT_EQ("5:</a|6:>|", LinesOf(Outermost().GetEndHeader()));
}

TEST_F(TagReadingTest, TheFirstEndTagOutsideOfQuotesEndsATag)
{
    EXPECT_EQ("a=", Read("<a k=\"x>y\" l='>'>\n</a>"));
    EXPECT_EQ("k=x>y; l=>", OptionsOf(Outermost()));
}

TEST_F(TagReadingTest, AnEndTagMustFollowItsBeginTag)
{
    TagBench bench(L"@", L"@");
    EXPECT_EQ("a=x\nb=", bench.Read("@a='x'@\n@/a@\n@b/@"));
}

TEST_F(TagReadingTest, ABeginAndEndTagMayBeLonger)
{
    TagBench bench(L"<%", L"%>");
    EXPECT_EQ("a=\n\tb=x", bench.Read("<%a%>\n<b>\n<%b='x' k=1/%>\n<%/a%>"));
    EXPECT_EQ("2:<b>|", LinesOf(&bench.Outermost()));
    EXPECT_EQ("k=1", OptionsOf(*bench.Outermost().GetSubBlock(0)));
}

TEST_F(TagReadingTest, TagsThatAreEmptyOrBeginWithAQuoteAreNeverFound)
{
    EXPECT_EQ("", TagBench(L"\"", L">").Read("\"a/>\n"));
    EXPECT_EQ("", TagBench(L"", L">").Read("a/>\n"));
    const std::string notEnded = Failure("Tag not ended (started in file \"main.txt\" line 1 !)", 1, "main.txt", -2);
    EXPECT_EQ(notEnded, TagBench(L"<", L"'").Read("<a/'"));
    EXPECT_EQ(notEnded, TagBench(L"<", L"").Read("<a/"));
}

TEST_F(TagReadingTest, WhatFollowsATagIsALineOfItsOwn)
{
    EXPECT_EQ("a=", Read("<a>  text </a>\n</a> behind\n"));
    EXPECT_EQ("1:<a>|", LinesOf(Outermost().GetBeginHeader()));
    EXPECT_EQ("1:text </a>|", LinesOf(&Outermost()));
    EXPECT_EQ("2:</a>|", LinesOf(Outermost().GetEndHeader()));
    EXPECT_EQ("2:behind|", LinesOf(&Text()));
}

TEST_F(TagReadingTest, TagsMayFollowEachOtherOnALine)
{
    EXPECT_EQ("a=\nb=x\nc=\nd=\n\te=\n\tf=", Read("<a/><b='x'/> <c></c><d><e></e><f/></d>"));
    EXPECT_EQ("1:<b='x'/>|", LinesOf(Outermost(1).GetBeginHeader()));
}

TEST_F(TagReadingTest, MereBlanksBehindATagAreNoContent)
{
    EXPECT_EQ("a=\n\tb=", Read("<a> \n<b/>\t\n</a>  "));
    EXPECT_EQ("", LinesOf(&Outermost()));
    EXPECT_EQ("", LinesOf(&Text()));
    EXPECT_EQ("3:</a>|", LinesOf(Outermost().GetEndHeader()));
}

TEST_F(TagReadingTest, ARowOfTagsMayEndInATagThatGoesOn)
{
    EXPECT_EQ("a=\nb=\nc=", Read("<a/><b/><c\nk=1/>"));
    EXPECT_EQ("k=1", OptionsOf(Outermost(2)));
}

TEST_F(TagReadingTest, ARowOfTagsMayEndInADoubleTag)
{
    EXPECT_EQ("a=\nb=", Read("<a/><<b>>\n<c>\n<</b>>"));
    EXPECT_EQ("2:<c>|", LinesOf(&Outermost(1)));
}

TEST_F(TagReadingTest, ATypeIsAWordOfLettersDigitsAndUnderscores)
{
    EXPECT_EQ("a_1B=\nns=\nx=\n9=", Read("<a_1B/>\n<ns:item>\n</ns:item>\n<x-y='n'/>\n<9/>"));
}

TEST_F(TagReadingTest, ANameStandsInQuotesBehindTheType)
{
    EXPECT_EQ("a=x\na=y\na=z w", Read("<a='x'/>\n<a=\"y\"/>\n<a \t=\"z w\"/>"));
}

TEST_F(TagReadingTest, TheFirstSameQuoteEndsAName)
{
    EXPECT_EQ("a=it\\\na=\"", Read("<a='it\\'s'/>\n<a='\"'/>"));
}

TEST_F(TagReadingTest, ANameMayBeWrittenAsTheOptionName)
{
    EXPECT_EQ("a=x\na=y\na=z", Read("<a name='x'/>\n<a\tname=\"y\" k=1/>\n<a name = 'z'>\n</a name='z'>"));
    EXPECT_EQ("", OptionsOf(Outermost(0)));
    EXPECT_EQ("k=1", OptionsOf(Outermost(1)));
}

TEST_F(TagReadingTest, OnlyAQuotedOptionNameDirectlyBehindTheTypeIsAName)
{
    EXPECT_EQ("a=\na=\na=\na=\na=", Read("<a name=x/>\n<a name=''/>\n<a k=1 name='x'/>\n<a names='x'/>\n<a name/>"));
    EXPECT_EQ("name=x", OptionsOf(Outermost(0)));
    EXPECT_EQ("name=", OptionsOf(Outermost(1)));
    EXPECT_EQ("k=1; name=x", OptionsOf(Outermost(2)));
    EXPECT_EQ("names=x", OptionsOf(Outermost(3)));
    EXPECT_EQ("name=", OptionsOf(Outermost(4)));
}

TEST_F(TagReadingTest, ASecondNameIsAnOption)
{
    EXPECT_EQ("a=x", Read("<a='x' name='y'/>"));
    EXPECT_EQ("name=y", OptionsOf(Outermost()));
}

TEST_F(TagReadingTest, ATypeMustNotBeMissing)
{
    EXPECT_EQ(Failure("Missing tag type !", 2, "main.txt", -2), Read("<a/>\n<>\n"));
    EXPECT_EQ(Failure("Missing tag type !", 1, "main.txt", -2), Read("< a/>\n"));
    EXPECT_EQ(Failure("Missing tag type !", 1, "main.txt", -2), Read("<\na/>\n"));
    EXPECT_EQ(Failure("Missing tag type !", 2, "main.txt", -2), Read("<a>\n</>\n"));
}

TEST_F(TagReadingTest, TheTypeMayFollowABeginTagOfBlanks)
{
    TagBench bench(L"\t\t", L";");
    EXPECT_EQ("a=", bench.Read("\t\t\na/;"));
    EXPECT_EQ(Failure("Missing tag type !", 2, "main.txt", -2), bench.Read("\t\t\n ;"));
}

TEST_F(TagReadingTest, ANameMustBeQuotedAndNotEmpty)
{
    const std::string expected = Failure("Bad tag name format !", 1, "main.txt", -5);
    for (const char* tag : {"<a=x/>", "<a=''/>", "<a=\"\"/>", "<a= 'x'/>", "<a=>"})
        EXPECT_EQ(expected, Read(tag)) << tag;
    EXPECT_EQ(Failure("Tag not ended (started in file \"main.txt\" line 1 !)", 1, "main.txt", -2), Read("<a='x/>"));
    EXPECT_EQ(Failure("Bad tag name format !", 2, "main.txt", -5), Read("<a>\n</a=x>"));
}

TEST_F(TagReadingTest, TheRestOfATagIsOptions)
{
    Read("<a zeta=1 alpha=two mid=\"a b\"/>\n<b='n' q='single \"quoted\"'>\n</b x=9>\n<c/>");
    EXPECT_EQ("zeta=1; alpha=two; mid=a b", OptionsOf(Outermost(0)));
    EXPECT_EQ("q=single \"quoted\"", OptionsOf(Outermost(1)));
    EXPECT_EQ("", OptionsOf(Outermost(2)));
}

TEST_F(TagReadingTest, EveryLineOfATagAddsItsOptions)
{
    Read("<a='x' one=1\ntwo='2'\n\n  three=3\n/>");
    EXPECT_EQ("one=1; two=2; three=3", OptionsOf(Outermost()));
}

TEST_F(TagReadingTest, BlocksNest)
{
    EXPECT_EQ("a=1\n\tb=2\n\t\tc=3\n\td=\ne=", Read("<a='1'>\n<b='2'>\n<c='3'/>\n</b>\n<d>\n</d>\n</a>\n<e/>\n"));
}

TEST_F(TagReadingTest, ASubBlockKnowsItsParentAndItsParser)
{
    Read("<a>\n<b/>\n</a>");
    EXPECT_EQ(&Text(), Outermost().GetParent());
    EXPECT_EQ(&Outermost(), Outermost().GetSubBlock(0)->GetParent());
    EXPECT_EQ(&parser, Outermost().GetSubBlock(0)->GetParser());
}

TEST_F(TagReadingTest, SubBlocksAreNotListedByTheParser)
{
    Read("<a>\n<b/>\n</a>");
    EXPECT_EQ(0, parser.RemoveBlock(&Outermost()));
    EXPECT_EQ(0, parser.RemoveBlock(Outermost().GetSubBlock(0)));
}

TEST_F(TagReadingTest, ContentIsWhatStandsBetweenTheTagsButNotInSubBlocks)
{
    Read("before\n<a>\none\n<b>\ntwo\n</b>\nthree\n<c/>\n<d/>four\n</a>\nbehind\n");
    EXPECT_EQ("3:one|7:three|9:four|", LinesOf(&Outermost()));
    EXPECT_EQ("5:two|", LinesOf(Outermost().GetSubBlock(0)));
    EXPECT_EQ("1:before|11:behind|", LinesOf(&Text()));
}

TEST_F(TagReadingTest, AUnitKnowsTheBlockItWasMovedTo)
{
    Read("<a>\none\n</a>");
    CTagBlock& block = Outermost();
    EXPECT_EQ(&block, block.GetUnit(0)->m_block);
    EXPECT_EQ(block.GetBeginHeader(), block.GetBeginHeader()->GetUnit(0)->m_block);
    EXPECT_EQ(block.GetEndHeader(), block.GetEndHeader()->GetUnit(0)->m_block);
    EXPECT_EQ(&block, block.GetEndHeader()->GetParent());
}

TEST_F(TagReadingTest, AClosingTagMayStandDirectlyBehindASubBlock)
{
    EXPECT_EQ("a=\n\tb=", Read("<a>\n<b/>\n</a>"));
    EXPECT_EQ("a=\n\tb=", Read("<a>\n<b>\n</b>\n</a>"));
}

TEST_F(TagReadingTest, ASingleTagHasNeitherContentNorClosingTag)
{
    EXPECT_EQ("a=x", Read("<a name='x'/>\ntext\n"));
    EXPECT_EQ("", LinesOf(&Outermost()));
    EXPECT_EQ("none", LinesOf(Outermost().GetEndHeader()));
    EXPECT_EQ("2:text|", LinesOf(&Text()));
}

TEST_F(TagReadingTest, OnlyASlashDirectlyBeforeTheEndTagMakesASingleTag)
{
    EXPECT_EQ("a=\nb=", Read("<a / >\n</a>\n<b\n/\n>\n</b>"));
}

TEST_F(TagReadingTest, AClosingTagNeedNotNameTheBlock)
{
    EXPECT_EQ("a=x\na=y", Read("<a='x'>\n</a>\n<a='y'>\n</a='y'>"));
}

TEST_F(TagReadingTest, AClosingTagMayGiveTheBlockItsName)
{
    EXPECT_EQ("a=x", Read("<a>\n</a='x'>"));
}

TEST_F(TagReadingTest, AClosingTagOfAnotherTypeIsAMismatch)
{
    EXPECT_EQ(Failure(CloseMismatch("Tag mismatch (b instead of a)!", 1), 2, "main.txt", -4), Read("<a>\n</b>\n"));
}

TEST_F(TagReadingTest, TypesAndNamesAreComparedWithCase)
{
    EXPECT_EQ(Failure(CloseMismatch("Tag mismatch (A instead of a)!", 1), 2, "main.txt", -4), Read("<a>\n</A>\n"));
    EXPECT_EQ(Failure(CloseMismatch("Tag name mismatch (X instead of x for type a)!", 2), 3, "main.txt", -4),
              Read("\n<a='x'>\n</a='X'>\n"));
}

TEST_F(TagReadingTest, TheInnermostBlockMustBeClosedFirst)
{
    EXPECT_EQ(Failure(CloseMismatch("Tag mismatch (a instead of b)!", 2), 3, "main.txt", -4),
              Read("<a>\n<b>\n</a>\n</b>\n"));
}

TEST_F(TagReadingTest, AClosingTagWithoutAnOpeningOneIsAnError)
{
    EXPECT_EQ(Failure("Tag closed but not opened", 3, "main.txt", -3), Read("<a>\n</a>\n</a>\n"));
}

TEST_F(TagReadingTest, ABlockMustBeClosed)
{
    EXPECT_EQ(Failure(NotClosed(2), 2, "main.txt", -2), Read("<b/>\n<a>\ntext\n"));
    EXPECT_EQ(Failure(NotClosed(1), 1, "main.txt", -2), Read("<a>"));
    EXPECT_EQ(Failure(NotClosed(1), 1, "main.txt", -2), Read("<a>\n<b/>"));
    EXPECT_EQ(Failure(NotClosed(2), 2, "main.txt", -2), Read("<a>\n<b>\none\ntwo\n"));
}

TEST_F(TagReadingTest, ATagMustEnd)
{
    const std::string message = "Tag not ended (started in file \"main.txt\" line 2 !)";
    EXPECT_EQ(Failure(message, 4, "main.txt", -2), Read("<a/>\n<b k=1\nmore\nlast line\n"));
    EXPECT_EQ(Failure(message, 3, "main.txt", -2), Read("<a>\n</a\ntext\n"));
    EXPECT_EQ(Failure(message, 2, "main.txt", -2), Read("<a/>\n<b k='>"));
}

TEST_F(TagReadingTest, AfterAFailureTheTextKeepsWhatCouldNotBeRead)
{
    Read("<a/>\n<b>\ntext\n");
    EXPECT_EQ(2u, Text().GetSubBlockCount());
    EXPECT_EQ("b", Outermost(1).GetType());
    EXPECT_EQ("2:<b>|3:text|", LinesOf(&Text()));
}

TEST_F(TagReadingTest, ReadingAgainFindsNothingMore)
{
    Read("<a>\n</a>\n");
    EXPECT_EQ(0, parser.ParseBlock(&Text()));
    EXPECT_EQ(1u, Text().GetSubBlockCount());
}

TEST_F(TagReadingTest, SingleTagsAreContentInADoubleTag)
{
    EXPECT_EQ("a=", Read("<<a>>\n<b>\n</a>\n<</a>>\n"));
    EXPECT_EQ("2:<b>|3:</a>|", LinesOf(&Outermost()));
    EXPECT_TRUE(Outermost().IsDoubleTag());
}

TEST_F(TagReadingTest, DoubleTagsNestAndMayBeSingle)
{
    EXPECT_EQ("a=\n\tb=1\n\tc=2\n\td=3",
              Read("<<a>>\n<x/>\n<<b='1'>>\n<y>\n<</b>>\n<<c='2' k=1/>>\n<<d='3'>>\n<</d='3'>>\n<</a>>\n"));
    EXPECT_EQ("k=1", OptionsOf(*Outermost().GetSubBlock(1)));
    EXPECT_TRUE(Outermost().GetSubBlock(2)->IsDoubleTag());
}

TEST_F(TagReadingTest, SingleTagsAreTagsAgainBehindADoubleTag)
{
    EXPECT_EQ("a=\n\tb=\n\tc=\nd=", Read("<a>\n<<b>>\n<x>\n<</b>>\n<c/>\n</a>\n<d/>\n"));
    EXPECT_FALSE(Outermost().IsDoubleTag());
    EXPECT_FALSE(Text().IsDoubleTag());
}

TEST_F(TagReadingTest, SingleTagsAreTagsAgainBehindADoubleTagThatCouldNotBeRead)
{
    Read("<<a>>\n");
    EXPECT_FALSE(Text().IsDoubleTag());
}

TEST_F(TagReadingTest, ADoubleTagEndsWithTheDoubleEndTag)
{
    EXPECT_EQ("a=", Read("<<a k=x>y\n l=1>>\n<</a>>"));
    EXPECT_EQ("k=x>y; l=1", OptionsOf(Outermost()));
}

TEST_F(TagReadingTest, WhatFollowsADoubleTagStaysOnItsLine)
{
    EXPECT_EQ("a=", Read("<<a k=1>> l=2 <<b>>\ntext\n<</a>> more"));
    EXPECT_EQ("1:<<a k=1>> l=2 <<b>>|", LinesOf(Outermost().GetBeginHeader()));
    EXPECT_EQ("k=1", OptionsOf(Outermost()));
    EXPECT_EQ("3:<</a>> more|", LinesOf(Outermost().GetEndHeader()));
    EXPECT_EQ("", LinesOf(&Text()));
}

TEST_F(TagReadingTest, ADoubleTagCannotCloseASingleOne)
{
    EXPECT_EQ(Failure("Missing tag type !", 2, "main.txt", -2), Read("<a>\n<</a>>\n"));
}

TEST_F(TagReadingTest, ATextMayBeReadForDoubleTagsOnly)
{
    Load("<a>\n<<b/>>\n").SetDoubleTag(true);
    EXPECT_EQ(0, parser.ParseBlock(&Text()));
    EXPECT_EQ("=\n\tb=", Text().GetHierarchy(0).utf8_string());
}

TEST_F(TagReadingTest, AnInstructionBecomesASingleTagOfTypeIgnore)
{
    EXPECT_EQ("IGNORE=\na=", Read("<?xml version='1.0'?>\n<a/>"));
    EXPECT_EQ("1:<IGNORE xml version='1.0'>|", LinesOf(Outermost().GetBeginHeader()));
    EXPECT_EQ("xml=; version=1.0", OptionsOf(Outermost()));
    EXPECT_EQ("none", LinesOf(Outermost().GetEndHeader()));
}

TEST_F(TagReadingTest, TheClosingMarkOfAnInstructionIsRemovedFromItsLastLine)
{
    Read("  <?xml\nversion='1.0'?>");
    EXPECT_EQ("1:<IGNORE xml|2:version='1.0'>|", LinesOf(Outermost().GetBeginHeader()));
}

TEST_F(TagReadingTest, AnInstructionNeedNotHaveAClosingMark)
{
    EXPECT_EQ("IGNORE=\nIGNORE=\nIGNORE=", Read("<?a>\n<?>\n<?\?>"));
    EXPECT_EQ("1:<IGNORE a>|", LinesOf(Outermost(0).GetBeginHeader()));
    EXPECT_EQ("2:<IGNORE >|", LinesOf(Outermost(1).GetBeginHeader()));
    EXPECT_EQ("3:<IGNORE >|", LinesOf(Outermost(2).GetBeginHeader()));
}

TEST_F(TagReadingTest, ADeclarationBecomesASingleTagOfTypeIgnoreWithItsText)
{
    EXPECT_EQ("IGNORE=\nb=\nIGNORE=\nc=1", Read("<!-- a --><b/> <!X><c='1'/>"));
    EXPECT_EQ("1:<IGNORE data=\"-- a --\">|", LinesOf(Outermost(0).GetBeginHeader()));
    EXPECT_EQ("data=-- a --", OptionsOf(Outermost(0)));
    EXPECT_EQ("data=X", OptionsOf(Outermost(2)));
}

TEST_F(TagReadingTest, TheTextOfADeclarationIsQuotedWithAQuoteThatItDoesNotHold)
{
    Read("<!a 'b'>\n<!a \"b\">\n<!a \"b\" 'c'>\n  <!>");
    EXPECT_EQ("1:<IGNORE data=\"a 'b'\">|", LinesOf(Outermost(0).GetBeginHeader()));
    EXPECT_EQ("2:<IGNORE data='a \"b\"'>|", LinesOf(Outermost(1).GetBeginHeader()));
    EXPECT_EQ("3:<IGNORE data=a \"b\" 'c'>|", LinesOf(Outermost(2).GetBeginHeader()));
    EXPECT_EQ("4:<IGNORE data=\"\">|", LinesOf(Outermost(3).GetBeginHeader()));
}

TEST_F(TagReadingTest, ADeclarationOverSeveralLinesKeepsItsFurtherLines)
{
    EXPECT_EQ("IGNORE=\na=", Read("<!DOCTYPE x\ny z>\n<a/>"));
    EXPECT_EQ("1:<IGNORE data=\"DOCTYPE \">|2:y z>|", LinesOf(Outermost().GetBeginHeader()));
}

TEST_F(TagReadingTest, TheRestOfALongerBeginTagStaysInDeclarations)
{
    TagBench bench(L"<%", L"%>");
    EXPECT_EQ("IGNORE=\nIGNORE=", bench.Read("<%?x?%>\n<%!y%>"));
    EXPECT_EQ("1:<%IGNORE ?x%>|", LinesOf(bench.Outermost(0).GetBeginHeader()));
    EXPECT_EQ("2:<%IGNORE data=\"!y%\"%>|", LinesOf(bench.Outermost(1).GetBeginHeader()));
}

TEST_F(TagReadingTest, DeclarationsMayStandInDoubleTags)
{
    EXPECT_EQ("a=\n\tIGNORE=", Read("<<a>>\n<?b?>\n<<?c?>>\n<</a>>"));
    EXPECT_EQ("2:<?b?>|", LinesOf(&Outermost()));
    EXPECT_EQ("3:<<IGNORE ?c>>|", LinesOf(Outermost().GetSubBlock(0)->GetBeginHeader()));
}

wxString Nested(unsigned int depth)
{
    wxString text;
    for (unsigned int i = 0; i < depth; ++i)
        text += "<a>\n";
    for (unsigned int i = 0; i < depth; ++i)
        text += "</a>\n";
    return text;
}

TEST_F(TagReadingTest, BlocksNestUpToALimit)
{
    parser.SetNestingLimit(3);
    EXPECT_EQ("a=\n\ta=", Read(Nested(2)));
    EXPECT_EQ("a=\n\ta=\n\t\ta=", Read(Nested(3)));
    EXPECT_EQ(Failure("Tags nested deeper than 3", 4, "main.txt", -6), Read(Nested(4)));
    EXPECT_EQ("a=\n\ta=\n\t\ta=", Read(Nested(3)));
}

TEST_F(TagReadingTest, TheLimitOfNestingIsAThousand)
{
    EXPECT_EQ(1000u, parser.GetNestingLimit());
    EXPECT_NE(std::string::npos, Read(Nested(1000)).find("\n" + std::string(999, '\t') + "a="));
    EXPECT_EQ(Failure("Tags nested deeper than 1000", 1001, "main.txt", -6), Read(Nested(1001)));
}

TEST_F(TagReadingTest, ADeepTreeIsCopiedAndDeleted)
{
    Read(Nested(1000));
    const CTagBlock copy(Text());
    EXPECT_EQ(Text().GetHierarchy(0), copy.GetHierarchy(0));
}

TEST_F(TagReadingTest, HolesInATextArePassedOver)
{
    CPreprocessor preprocessor(nullptr, true);
    CTagParser tags(&preprocessor);
    tags.Parse("// one\n<a // two\n// three\nk=1>\n/* four */\nx\n// five\n</a>\n", "main.txt", nullptr, false);
    CParserBlock* const text = tags.GetLastBlock(0);
    ASSERT_EQ(0, tags.ParseBlock(text));
    const CTagBlock& block = *dynamic_cast<CTagBlock*>(text)->GetSubBlock(0);
    EXPECT_EQ("2:<a|4:k=1>|", LinesOf(block.GetBeginHeader()));
    EXPECT_EQ("k=1", OptionsOf(block));
    EXPECT_EQ("6:x|", LinesOf(&block));
}

TEST_F(TagReadingTest, TagsOfAnIncludedFileKeepTheirOrigin)
{
    Load("<a>\n");
    parser.Parse("<b/>\n</a>\n", "other.txt", nullptr, false);
    CParserBlock* const other = parser.GetLastBlock(1);
    Load("<a>\n").InsertBlock(other, nullptr);
    delete other;
    ASSERT_EQ(0, parser.ParseBlock(&Text()));
    EXPECT_EQ("other.txt", Outermost().GetSubBlock(0)->GetBeginHeader()->GetUnit(0)->GetFileName());
}

} // namespace
