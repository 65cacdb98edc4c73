// Blocks that are made when somebody asks for them must not be told from blocks that are made at once.

#include "tests/tags/tag_test_support.h"

#include <memory>
#include <utility>

namespace
{

using TagOutlineTest = TagTest;

const char* const Plain =
    "before\n<a='x' k=1 j='2'>\none\n<b>\ntwo\n<c l/>\n</b>\nthree\n</a='x'>\nbetween\n<d/>\nbehind\n";

/// What is made of Plain, whenever it is made.
const char* const PlainDump = "= {} none 1:before|10:between|12:behind| none\n"
                              "(a=x {k=1; j=2} 2:<a='x' k=1 j='2'>| 3:one|8:three| 9:</a='x'>|\n"
                              "(b= {} 4:<b>| 5:two| 7:</b>|\n"
                              "(c= {l=} 6:<c l/>|  none)))\n"
                              "(d= {} 11:<d/>|  none)";

/// A parser that counts the blocks it makes.
class CountingParser : public CTagParser
{
public:
    using CTagParser::CTagParser;

    CTagBlock* CreateBlock(bool detached) override
    {
        ++made;
        return CTagParser::CreateBlock(detached);
    }

    int made = 0;
};

class FullStream : public wxOutputStream
{
protected:
    size_t OnSysWrite(const void*, size_t) override
    {
        m_lasterror = wxSTREAM_WRITE_ERROR;
        return 0;
    }
};

/// Which slots of a block hold something.
std::string SlotsOf(const CParserBlock& block)
{
    std::string slots;
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot)
        slots += block.GetUnit(slot) ? "x" : ".";
    return slots;
}

TEST_F(TagOutlineTest, BlocksHaveAllThatTheirTagsSay)
{
    Read(Plain);
    EXPECT_EQ(PlainDump, FullDump(Text()));
}

TEST_F(TagOutlineTest, TheTextHasHolesBeforeItsBlocksAreMade)
{
    Read(Plain);
    EXPECT_EQ("x........x.x", SlotsOf(Text()));
    EXPECT_EQ(PlainDump, FullDump(Text()));
    EXPECT_EQ("x........x.x", SlotsOf(Text()));
}

TEST_F(TagOutlineTest, AHierarchyNeedsNoBlocks)
{
    Read(Plain);
    EXPECT_EQ("=\n\ta=x\n\t\tb=\n\t\t\tc=\n\td=", Text().GetHierarchy(0));
    EXPECT_EQ("a=x\n\tb=\n\t\tc=\nd=\n", HierarchiesOf(Text()));
}

TEST_F(TagOutlineTest, TheHierarchiesOfABlockWithoutSubBlocksAreEmpty)
{
    EXPECT_EQ("", HierarchiesOf(Load("text")));
}

TEST_F(TagOutlineTest, HierarchiesOfALargeTextAreWrittenInPieces)
{
    wxString text;
    std::string expected;
    for (int i = 0; i < 20000; ++i) {
        text += wxString::Format("<a='%d'/>\n", i);
        expected += "a=" + std::to_string(i) + "\n";
    }
    Read(text);
    EXPECT_EQ(expected, HierarchiesOf(Text()));
}

TEST_F(TagOutlineTest, AStreamThatFailsIsReported)
{
    Read("<a/>\n");
    FullStream stream;
    EXPECT_FALSE(Text().WriteHierarchies(stream));
}

TEST_F(TagOutlineTest, AHierarchyTellsOfNamesInOtherScripts)
{
    Read(wxString::FromUTF8("<a='\u00e9\U0001f600'/>\n<b\n name='\u4e2d'/>\n"));
    EXPECT_EQ("a=\u00e9\U0001f600\nb=\n", HierarchiesOf(Text()));
    EXPECT_EQ(wxString::FromUTF8("=\n\ta=\u00e9\U0001f600\n\tb="), Text().GetHierarchy(0));
}

TEST_F(TagOutlineTest, AHierarchyTellsOfNewNames)
{
    Read(Plain);
    Outermost().GetSubBlock(0)->SetName(wxString::FromUTF8("\u00e9"));
    EXPECT_EQ("a=x\n\tb=\u00e9\n\t\tc=\nd=\n", HierarchiesOf(Text()));
}

TEST_F(TagOutlineTest, ABlockStaysTheSameOnceItIsMade)
{
    Read(Plain);
    CTagBlock* const first = Text().GetSubBlock(0);
    CTagBlock* const nested = first->GetSubBlock(0);
    EXPECT_EQ(2u, Text().GetSubBlockCount());
    EXPECT_EQ(first, Text().GetSubBlock(0));
    EXPECT_EQ(nested, first->GetSubBlock(0));
    EXPECT_EQ(&Text(), first->GetParent());
    EXPECT_EQ(first, nested->GetParent());
    EXPECT_EQ(&parser, nested->GetParser());
    EXPECT_EQ("<", nested->GetBeginTag());
}

TEST_F(TagOutlineTest, TagsOfAllFormsKeepTheirOrder)
{
    const char* const text =
        "<a/>\n<?xml v='1'?>\n<b>\n<c/>\n</b>\n<d\nk=1/>\n<<e>>\n<x>\n<</e>>\n<f/><g/>\n<h>\n<!i>\n"
        "</h>\n<j>\n</j>\n";
    EXPECT_EQ("a=\nIGNORE=\nb=\n\tc=\nd=\ne=\nf=\ng=\nh=\n\tIGNORE=\nj=", Read(text));
    Read(text);
    EXPECT_EQ("a=\nIGNORE=\nb=\n\tc=\nd=\ne=\nf=\ng=\nh=\n\tIGNORE=\nj=\n", HierarchiesOf(Text()));
    EXPECT_EQ("k=1", OptionsOf(Outermost(3)));
    EXPECT_EQ("9:<x>|", LinesOf(&Outermost(4)));
    EXPECT_EQ(&Text(), Outermost(8).GetParent());
}

TEST_F(TagOutlineTest, ACopyOfATextHasBlocksThatNobodyHasAskedFor)
{
    Read(Plain);
    const std::unique_ptr<CTagBlock> copy(Text().Clone());
    CTagBlock assigned(nullptr, nullptr);
    assigned = *copy;
    EXPECT_EQ(Text().GetHierarchy(0), copy->GetHierarchy(0));
    EXPECT_EQ("k=1; j=2", OptionsOf(*copy->GetSubBlock(0)));
    EXPECT_EQ("0:<a='x' k=1 j='2'>|", LinesOf(assigned.GetSubBlock(0)->GetBeginHeader()));
    EXPECT_EQ("0:two|", LinesOf(assigned.GetSubBlock(0)->GetSubBlock(0)));
    EXPECT_EQ(nullptr, copy->GetSubBlock(0)->GetParser());
    EXPECT_EQ(copy->GetSubBlock(0), copy->GetSubBlock(0)->GetSubBlock(0)->GetParent());
    EXPECT_EQ(PlainDump, FullDump(Text()));
}

TEST_F(TagOutlineTest, AnAssignmentReplacesBlocksThatNobodyHasAskedFor)
{
    Read(Plain);
    TagBench other;
    other.Read("<z>\n<y/>\n</z>\n");
    Text() = other.Outermost();
    EXPECT_EQ("z=\n\ty=", Text().GetHierarchy(0));
    EXPECT_EQ(1u, Text().GetSubBlockCount());
}

TEST_F(TagOutlineTest, ATextMayBeReplacedByOneOfItsBlocks)
{
    Read(Plain);
    Text() = *Text().GetSubBlock(0);
    EXPECT_EQ("a=x\n\tb=\n\t\tc=", Text().GetHierarchy(0));
    EXPECT_EQ("0:one|0:three|", LinesOf(&Text()));
}

TEST_F(TagOutlineTest, InsertingATextMovesBlocksThatNobodyHasAskedFor)
{
    Read("<z>\n<y/>\n</z>\nend\n");
    CTagBlock& target = Text();
    Read(Plain);
    target.InsertBlock(&Text(), nullptr);
    EXPECT_EQ("=\n\tz=\n\t\ty=\n\ta=x\n\t\tb=\n\t\t\tc=\n\td=", target.GetHierarchy(0));
    EXPECT_EQ("4:end|1:before|10:between|12:behind|", LinesOf(&target));
    EXPECT_EQ("=", Text().GetHierarchy(0));
    EXPECT_EQ("5:two|", LinesOf(target.GetSubBlock(1)->GetSubBlock(0)));
    EXPECT_EQ(&target, target.GetSubBlock(1)->GetParent());
}

TEST_F(TagOutlineTest, LinesOfABlockCanBeMovedBeforeItsSubBlocksAreMade)
{
    Read(Plain);
    CTagBlock& block = Outermost();
    CParserBlock lines(nullptr);
    block.ExtractBlock(&lines, 0, -1);
    EXPECT_EQ("3:one|8:three|", LinesOf(&lines));
    EXPECT_EQ("", LinesOf(&block));
    block.GetBeginHeader()->GetUnit(0)->m_text = "<changed>";
    EXPECT_EQ("k=1; j=2", OptionsOf(block));
    EXPECT_EQ("a=x\n\tb=\n\t\tc=", block.GetHierarchy(0));
    EXPECT_EQ("5:two|", LinesOf(block.GetSubBlock(0)));
}

TEST_F(TagOutlineTest, LinesMayGoFromATextBeforeItsBlocksAreMade)
{
    Read(Plain);
    CParserBlock lines(nullptr);
    EXPECT_EQ(12, Text().ExtractBlock(&lines, 0, -1));
    EXPECT_EQ("1:before|10:between|12:behind|", LinesOf(&lines));
    EXPECT_EQ("a=x {k=1; j=2} 2:<a='x' k=1 j='2'>| 3:one|8:three| 9:</a='x'>|",
              FullDump(Outermost()).substr(0, FullDump(Outermost()).find('\n')));
}

TEST_F(TagOutlineTest, AHoleOfATextTakesAUnitAgain)
{
    Read(Plain);
    auto* const unit = new CParserUnit(wxSharedPtr<CParserFile>(), nullptr, "new", 7);
    EXPECT_EQ(2u, Text().InsertBehind(unit, 1));
    EXPECT_EQ("1:before|7:new|10:between|12:behind|", LinesOf(&Text()));
    EXPECT_EQ("3:one|8:three|", LinesOf(&Outermost()));
}

TEST_F(TagOutlineTest, ABlockOutlivesTheParserBeforeItsSubBlocksAreMade)
{
    std::unique_ptr<CParserBlock> text;
    {
        TagBench bench;
        bench.Read(Plain);
        text.reset(bench.parser.GetLastBlock(1));
    }
    EXPECT_EQ(PlainDump, FullDump(dynamic_cast<const CTagBlock&>(*text)));
}

TEST_F(TagOutlineTest, ATextMayGoBeforeItsBlocksAreMade)
{
    Read(Plain);
    CTagBlock& block = Outermost();
    Load("<z>\nbehind\n</z>\n").InsertBlock(&block, nullptr);
    CTagBlock* const target = &Text();
    parser.RemoveBlock(target);
    parser.Clean();
    const std::unique_ptr<CTagBlock> owner(target);
    EXPECT_EQ("=\n\tb=\n\t\tc=", target->GetHierarchy(0));
    EXPECT_EQ("6:<c l/>|", LinesOf(target->GetSubBlock(0)->GetSubBlock(0)->GetBeginHeader()));
}

TEST_F(TagOutlineTest, AUnitThatIsThereBeforeItsBlockIsMovedIntoIt)
{
    CParserUnit* const unit = Load(Plain).GetUnit(4);
    ASSERT_EQ(0, parser.ParseBlock(&Text()));
    const CTagBlock& nested = *Outermost().GetSubBlock(0);
    EXPECT_EQ(unit, nested.GetUnit(0));
    EXPECT_EQ(&nested, unit->m_block);
    EXPECT_EQ(PlainDump, FullDump(Text()));
}

TEST_F(TagOutlineTest, AUnitThatIsThereBeforeStaysOutsideOfBlocks)
{
    CParserUnit* const unit = Load(Plain).GetUnit(9);
    ASSERT_EQ(0, parser.ParseBlock(&Text()));
    EXPECT_EQ(unit, Text().GetUnit(9));
    EXPECT_EQ(&Text(), unit->m_block);
    EXPECT_EQ(PlainDump, FullDump(Text()));
}

TEST_F(TagOutlineTest, ReadingAgainAddsToBlocksThatNobodyHasAskedFor)
{
    Read(Plain);
    Text().CreateUnit(wxSharedPtr<CParserFile>(), "<e/>", 1);
    EXPECT_EQ(0, parser.ParseBlock(&Text()));
    EXPECT_EQ("=\n\ta=x\n\t\tb=\n\t\t\tc=\n\td=\n\te=", Text().GetHierarchy(0));
    EXPECT_EQ("x........x.x.", SlotsOf(Text()));
}

TEST_F(TagOutlineTest, BlocksBeforeAFailureAreThere)
{
    EXPECT_EQ(Failure("Tag not opened at file \"main.txt\" line 4 but not closed", 4, "main.txt", -2),
              Read("<a>\none\n</a>\n<b>\ntwo\n<c/>\nthree"));
    ASSERT_EQ(2u, Text().GetSubBlockCount());
    EXPECT_EQ("a= {} 1:<a>| 2:one| 3:</a>|", FullDump(Outermost(0)));
    EXPECT_EQ("b", Outermost(1).GetType());
    EXPECT_EQ("4:<b>|5:two|7:three|", LinesOf(&Text()));
}

TEST_F(TagOutlineTest, ReadingToTheEndForgetsAnErrorUnlessATagIsLast)
{
    wxString message;
    for (const auto& [text, expected] :
         std::vector<std::pair<wxString, wxString>>{{"<a/>\nend", ""}, {"end", ""}, {"<a/>", "old"}}) {
        Load(text);
        parser.SetError("old", nullptr);
        EXPECT_EQ(0, parser.ParseBlock(&Text()));
        parser.GetLastErrorStr(&message);
        EXPECT_EQ(expected, message) << text;
    }
}

TEST_F(TagOutlineTest, AParserWithBlocksOfItsOwnMakesThemAll)
{
    CountingParser counting(&pp);
    counting.Parse(Plain, "main.txt", nullptr, false);
    auto* const text = dynamic_cast<CTagBlock*>(counting.GetLastBlock(0));
    EXPECT_EQ(0, counting.ParseBlock(text));
    EXPECT_EQ(6, counting.made);
    EXPECT_EQ(PlainDump, FullDump(*text));
}

TEST_F(TagOutlineTest, OptionsOfABlockCanBeChanged)
{
    Read(Plain);
    Outermost().GetOption().ExtractOption("j=3");
    EXPECT_EQ("k=1; j=3", OptionsOf(Outermost()));
}

} // namespace
