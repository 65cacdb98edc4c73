#include "tests/tags/tag_test_support.h"

namespace
{

/// The operations beneath the reading of blocks.
class TagFindTest : public TagTest
{
protected:
    /// FindTag from a slot on: "RESULT FIRST-LAST AFTER BEFORE", with "-" for characters that were not given.
    std::string Find(int from = 0)
    {
        int last = -1;
        wchar_t after = L'-';
        wchar_t before = L'-';
        const long result = Text().FindTag(from, last, &after, &before);
        if (result != 0)
            return LastFailure(parser, result);
        return std::to_string(from) + "-" + std::to_string(last) + " " +
               std::string(after ? 1 : 0, static_cast<char>(after)) + " " + static_cast<char>(before);
    }

    /// GetTypeAndName of a new block: its title, or the failure.
    std::string Title(const wxString& tag)
    {
        Load("unit");
        CTagBlock block(&parser, nullptr);
        const long result = block.GetTypeAndName(tag, Text().GetUnit(0));
        return result == 0 ? TitleOf(block) : LastFailure(parser, result);
    }
};

TEST_F(TagFindTest, FindTagGivesTheSlotsOfATagAndTheCharactersInside)
{
    Load("text\n<a b\nc/>\n");
    EXPECT_EQ("1-2 a /", Find());
}

TEST_F(TagFindTest, FindTagStartsAtTheGivenSlot)
{
    Load("<a>\n</b>\n");
    EXPECT_EQ("0-0 a a", Find(0));
    EXPECT_EQ("1-1 / b", Find(1));
    EXPECT_EQ("0-0 a a", Find(-5));
}

TEST_F(TagFindTest, FindTagPassesOverLinesWithABeginTagFurtherIn)
{
    Load("x <a>\n\t <b>\n");
    EXPECT_EQ("1-1 b b", Find());
}

TEST_F(TagFindTest, FindTagPassesOverHoles)
{
    Load("one\n<a\nb\n>\n");
    int slot = 0;
    Text().RemoveElement(Text().GetUnit(0), &slot, 1);
    slot = 2;
    Text().RemoveElement(Text().GetUnit(2), &slot, 1);
    EXPECT_EQ("1-3 a -", Find());
}

TEST_F(TagFindTest, NothingIsBehindABeginTagAtTheEndOfItsLine)
{
    Load("<\na>");
    EXPECT_EQ("0-1  a", Find());
}

TEST_F(TagFindTest, NothingIsBeforeAnEndTagAtTheStartOfItsLine)
{
    Load("<a\n>");
    EXPECT_EQ("0-1 a -", Find());
}

TEST_F(TagFindTest, TheCharactersNeedNotBeAskedFor)
{
    Load("<a>");
    int slot = 0;
    int last = -1;
    EXPECT_EQ(0, Text().FindTag(slot, last, nullptr, nullptr));
}

TEST_F(TagFindTest, FindTagCutsOnceBehindTheTag)
{
    Load("<a/> <b/><c/>");
    EXPECT_EQ("0-0 a /", Find());
    EXPECT_EQ("1:<a/>|1:<b/><c/>|", LinesOf(&Text()));
    EXPECT_EQ("1-1 b /", Find(1));
    EXPECT_EQ("1:<a/>|1:<b/>|1:<c/>|", LinesOf(&Text()));
}

TEST_F(TagFindTest, FindTagDoesNotCutBehindADoubleTag)
{
    Load("<<a/>> <<b/>>");
    EXPECT_EQ("0-0 a /", Find());
    EXPECT_EQ("1:<<a/>> <<b/>>|", LinesOf(&Text()));
}

TEST_F(TagFindTest, ADoubleBeginTagMakesTheBlockOneForDoubleTags)
{
    Load("<<a>>\n<b>\n");
    Find();
    EXPECT_TRUE(Text().IsDoubleTag());
    EXPECT_EQ("<<", Text().GetCurrentBeginTag());
    EXPECT_EQ(FailureWithoutUnit("", 0), (parser.ClearError(), LastFailure(parser, 0)));
    EXPECT_EQ(Failure("No tag found !", 2, "main.txt", 1), Find(1));
}

TEST_F(TagFindTest, WithoutATagTheErrorIsAtTheLastUnit)
{
    Load("one\ntwo\n");
    EXPECT_EQ(Failure("No tag found !", 2, "main.txt", 1), Find());
    int slot = 0;
    int last = 7;
    EXPECT_EQ(1, Text().FindTag(slot, last, nullptr, nullptr));
    EXPECT_EQ(2, slot);
    EXPECT_EQ(7, last);
    Load("");
    EXPECT_EQ(FailureWithoutUnit("No tag found !", 1), Find());
}

TEST_F(TagFindTest, ATagThatDoesNotEndIsAnErrorAtTheLastUnit)
{
    Load("x\n<a\nb\n");
    EXPECT_EQ(Failure("Tag not ended (started in file \"main.txt\" line 2 !)", 3, "main.txt", -2), Find());
}

TEST_F(TagFindTest, ABlockWithoutAParserFindsNoTags)
{
    CTagBlock block(nullptr, nullptr);
    block.CreateUnit(wxSharedPtr<CParserFile>(), "<a/>", 1);
    int slot = 0;
    int last = -1;
    EXPECT_EQ(1, block.FindTag(slot, last, nullptr, nullptr));
    EXPECT_EQ(0, block.CreateSubBlocks());
    EXPECT_EQ(0u, block.GetSubBlockCount());
}

TEST_F(TagFindTest, ABlockOfAParserWithoutTagsFindsNone)
{
    CParser plain;
    CTagBlock block(&plain, nullptr);
    block.CreateUnit(wxSharedPtr<CParserFile>(), "<a/>", 1);
    EXPECT_EQ("", block.GetBeginTag());
    EXPECT_EQ(0, block.CreateSubBlocks());
    EXPECT_EQ(0u, block.GetSubBlockCount());
}

TEST_F(TagFindTest, ABlockIsReadOutOfASource)
{
    CTagBlock& source = Load("<a/>\ntext\n<b>\nin\n</b>\n<c/>\n");
    CTagBlock block(&parser, nullptr);
    int slot = 1;
    EXPECT_EQ(0, block.CreateSubBlocks(&source, slot));
    EXPECT_EQ(5, slot);
    EXPECT_EQ("b", block.GetType());
    EXPECT_EQ("4:in|", LinesOf(&block));
    EXPECT_EQ("1:<a/>|2:text|6:<c/>|", LinesOf(&source));
    EXPECT_EQ(nullptr, block.GetParent());
}

TEST_F(TagFindTest, ASourceWithoutFurtherTagsGivesTheSlotMinusOneAndNoError)
{
    CTagBlock& source = Load("<a/>\ntext\n");
    CTagBlock block(&parser, nullptr);
    int slot = 1;
    EXPECT_EQ(0, block.CreateSubBlocks(&source, slot));
    EXPECT_EQ(-1, slot);
    EXPECT_EQ(FailureWithoutUnit("", 0), LastFailure(parser, 0));
}

TEST_F(TagFindTest, ABlockWithoutAParserReadsNothingOutOfASource)
{
    CTagBlock& source = Load("<a/>\n");
    CTagBlock block(nullptr, nullptr);
    int slot = 0;
    EXPECT_EQ(0, block.CreateSubBlocks(&source, slot));
    EXPECT_EQ(-1, slot);
}

/// A block whose sub-blocks meet a closing tag where it should be theirs.
class MeetsClosingTag : public CTagBlock
{
public:
    using CTagBlock::CreateSubBlocks;
    using CTagBlock::CTagBlock;
    long CreateSubBlocks(CTagBlock* source, int& unit) override
    {
        if (source->GetUnit(static_cast<unsigned int>(unit))->m_text != "<stray>")
            return CTagBlock::CreateSubBlocks(source, unit);
        ++unit;
        GetParser()->SetError("stray", nullptr);
        return tagNotOpened;
    }
};

class ParserOfMeetsClosingTag : public CTagParser
{
public:
    CTagBlock* CreateBlock(bool detached) override
    {
        auto* const block = new MeetsClosingTag(detached ? nullptr : this, nullptr);
        if (!detached)
            m_blocks.Add(block);
        return block;
    }
};

TEST_F(TagFindTest, ASearchGoesOnBehindASubBlockThatMetAClosingTag)
{
    ParserOfMeetsClosingTag tags;
    tags.Parse("<a>\n<stray>\n</a>\n", "main.txt", nullptr, false);
    EXPECT_EQ(0, tags.ParseBlock(tags.GetLastBlock(0)));
    EXPECT_EQ("=\n\ta=\n\t\t=", tags.GetHierarchy(nullptr).utf8_string());
    EXPECT_EQ(FailureWithoutUnit("", 0), LastFailure(tags, 0));
}

TEST_F(TagFindTest, TheTypeIsReadBehindTheBeginTagAndASlash)
{
    EXPECT_EQ("a=", Title("<a>"));
    EXPECT_EQ("a=", Title("</a>"));
    EXPECT_EQ("a=", Title("a"));
    EXPECT_EQ("a=x", Title("</a \t='x'>"));
    EXPECT_EQ("a=x", Title("<a name=\"x\">"));
}

TEST_F(TagFindTest, ATagWithoutATypeIsAnError)
{
    const std::string expected = Failure("No type found for tag !", 1, "main.txt", 1);
    EXPECT_EQ(expected, Title("<>"));
    EXPECT_EQ(expected, Title("<='x'>"));
    EXPECT_EQ(expected, Title(""));
}

TEST_F(TagFindTest, ABadNameIsAnErrorButTheTypeIsTaken)
{
    EXPECT_EQ(Failure("Bad tag name format !", 1, "main.txt", -5), Title("<a=x>"));
    CTagBlock block(&parser, nullptr);
    block.GetTypeAndName("<a=x>", nullptr);
    EXPECT_EQ("a", block.GetType());
}

TEST_F(TagFindTest, AnotherTypeOrNameThanTheBlocksIsAMismatch)
{
    CTagBlock block(&parser, nullptr);
    ASSERT_EQ(0, block.GetTypeAndName("<a='x'>", nullptr));
    EXPECT_EQ(0, block.GetTypeAndName("</a='x'>", nullptr));
    EXPECT_EQ(FailureWithoutUnit("Tag mismatch (b instead of a)!", -4),
              LastFailure(parser, block.GetTypeAndName("</b>", nullptr)));
    EXPECT_EQ(FailureWithoutUnit("Tag name mismatch (y instead of x for type a)!", -4),
              LastFailure(parser, block.GetTypeAndName("</a='y'>", nullptr)));
    EXPECT_EQ("a=x", TitleOf(block));
}

TEST_F(TagFindTest, TheTagOfADoubleBlockIsTheDoubleOne)
{
    CTagBlock block(&parser, nullptr);
    block.SetDoubleTag(true);
    EXPECT_EQ(0, block.GetTypeAndName("<</a='x'>>", nullptr));
    EXPECT_EQ("a=x", TitleOf(block));
}

TEST_F(TagFindTest, SaveOptionAddsToTheOptions)
{
    CTagBlock block(&parser, nullptr);
    EXPECT_EQ(0, block.SaveOption("k=1", nullptr));
    EXPECT_EQ(0, block.SaveOption("l=2>>", nullptr));
    EXPECT_EQ(0, block.SaveOption("", nullptr));
    EXPECT_EQ("k=1; l=2", OptionsOf(block));
}

TEST_F(TagFindTest, SaveOptionTrimsEveryCharacterOfTheEndTag)
{
    TagBench bench(L"<%", L"%>");
    CTagBlock block(&bench.parser, nullptr);
    block.SaveOption("k=1>%", nullptr);
    EXPECT_EQ("k=1", OptionsOf(block));
}

} // namespace
