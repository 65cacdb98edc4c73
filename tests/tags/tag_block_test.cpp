#include "tests/tags/tag_test_support.h"

#include <memory>

namespace
{

using TagBlockTest = TagTest;

const char* const Sample = "<a='x' k=1>\none\n<b='y'>\ntwo\n</b>\n<<c>>\n<</c>>\n</a>\n";

/// All that a copy has to have: of each block its title, options, kind, lines of headers and content.
std::string Dump(const CTagBlock& block)
{
    std::string text = TitleOf(block) + "{" + OptionsOf(block) + "}" + (block.IsDoubleTag() ? "double" : "");
    for (const CParserBlock* part :
         std::vector<const CParserBlock*>{block.GetBeginHeader(), &block, block.GetEndHeader()}) {
        wxString lines = "none";
        if (part)
            part->GetBuffer(lines, false);
        text += "[" + lines.utf8_string() + "]";
    }
    for (size_t i = 0; i < block.GetSubBlockCount(); ++i)
        text += "(" + Dump(*block.GetSubBlock(i)) + ")";
    return text;
}

TEST_F(TagBlockTest, ANewBlockIsEmpty)
{
    const CTagBlock parent(&parser, nullptr);
    const CTagBlock block(&parser, const_cast<CTagBlock*>(&parent));
    EXPECT_EQ("={}[none][][none]", Dump(block));
    EXPECT_EQ(&parent, block.GetParent());
    EXPECT_EQ(&parser, block.GetParser());
}

TEST_F(TagBlockTest, NameParentAndKindCanBeSet)
{
    CTagBlock parent(&parser, nullptr);
    CTagBlock block(&parser, nullptr);
    block.SetName("x");
    block.SetParent(&parent);
    block.SetDoubleTag(true);
    EXPECT_EQ("x", block.GetName());
    EXPECT_EQ(&parent, block.GetParent());
    EXPECT_TRUE(block.IsDoubleTag());
    block.SetDoubleTag(false);
    EXPECT_FALSE(block.IsDoubleTag());
}

TEST_F(TagBlockTest, OptionsCanBeChanged)
{
    CTagBlock block(&parser, nullptr);
    block.GetOption().ExtractOption("k=1");
    EXPECT_EQ("k=1", OptionsOf(block));
}

TEST_F(TagBlockTest, TheTagsAreThoseOfTheParser)
{
    TagBench bench(L"[", L"%]");
    CTagBlock block(&bench.parser, nullptr);
    EXPECT_EQ("[", block.GetBeginTag());
    EXPECT_EQ("%]", block.GetEndTag());
    EXPECT_EQ("[[", block.GetDoubleBeginTag());
    EXPECT_EQ("%]%]", block.GetDoubleEndTag());
}

TEST_F(TagBlockTest, TheCurrentTagsAreTheDoubleOnesInADoubleBlock)
{
    CTagBlock block(&parser, nullptr);
    EXPECT_EQ("<", block.GetCurrentBeginTag());
    EXPECT_EQ(">", block.GetCurrentEndTag());
    block.SetDoubleTag(true);
    EXPECT_EQ("<<", block.GetCurrentBeginTag());
    EXPECT_EQ(">>", block.GetCurrentEndTag());
}

TEST_F(TagBlockTest, WithoutAParserTheTagsAreEmpty)
{
    const CTagBlock block(nullptr, nullptr);
    EXPECT_EQ("", block.GetBeginTag() + block.GetEndTag() + block.GetDoubleBeginTag() + block.GetDoubleEndTag());
}

TEST_F(TagBlockTest, AHierarchyHasALineForEachBlockIndentedByItsLevel)
{
    Read("<a='x'>\n<b>\n<c='y'/>\n</b>\n<d/>\n</a>\n");
    EXPECT_EQ("a=x\n\tb=\n\t\tc=y\n\td=", Outermost().GetHierarchy(0));
    EXPECT_EQ("\t\ta=x\n\t\t\tb=\n\t\t\t\tc=y\n\t\t\td=", Outermost().GetHierarchy(2));
}

TEST_F(TagBlockTest, TheHierarchyOfATextBeginsWithANamelessLine)
{
    Read("<a/>\n<b/>\n");
    EXPECT_EQ("=\n\ta=\n\tb=", Text().GetHierarchy(0));
}

TEST_F(TagBlockTest, ACopyHasEverythingButParserAndParent)
{
    Read(Sample);
    const CTagBlock copy(Outermost());
    EXPECT_EQ(Dump(Outermost()), Dump(copy));
    EXPECT_EQ(nullptr, copy.GetParent());
    EXPECT_EQ(nullptr, copy.GetParser());
}

TEST_F(TagBlockTest, ThePartsOfACopyAreItsOwn)
{
    Read(Sample);
    const CTagBlock copy(Outermost());
    EXPECT_EQ(&copy, copy.GetBeginHeader()->GetParent());
    EXPECT_EQ(&copy, copy.GetEndHeader()->GetParent());
    ASSERT_EQ(2u, copy.GetSubBlockCount());
    EXPECT_EQ(&copy, copy.GetSubBlock(0)->GetParent());
    EXPECT_EQ(copy.GetSubBlock(0), copy.GetSubBlock(0)->GetBeginHeader()->GetParent());
    EXPECT_EQ(&copy, copy.GetUnit(0)->m_block);
    EXPECT_NE(Outermost().GetUnit(0), copy.GetUnit(0));
}

TEST_F(TagBlockTest, ACopyOutlivesItsOriginal)
{
    std::unique_ptr<CTagBlock> copy;
    std::string expected;
    {
        TagBench bench;
        bench.Read(Sample);
        copy.reset(bench.Outermost().Clone());
        expected = Dump(bench.Outermost());
    }
    EXPECT_EQ(expected, Dump(*copy));
}

TEST_F(TagBlockTest, AnAssignmentReplacesEverythingButParserAndParent)
{
    Read(Sample);
    TagBench other;
    other.Read("<z k=2>\n<y/>\ntext\n</z>\n");
    CTagBlock& block = other.Outermost();
    block = Outermost();
    EXPECT_EQ(Dump(Outermost()), Dump(block));
    EXPECT_EQ(&other.Text(), block.GetParent());
    EXPECT_EQ(&other.parser, block.GetParser());
    EXPECT_EQ(&block, block.GetUnit(0)->m_block);
    EXPECT_EQ(&block, block.GetSubBlock(0)->GetParent());
    EXPECT_EQ(&block, block.GetBeginHeader()->GetParent());
    EXPECT_EQ(&block, block.GetEndHeader()->GetParent());
}

TEST_F(TagBlockTest, AnAssignmentTakesHeadersAway)
{
    Read(Sample);
    Outermost() = CTagBlock(nullptr, nullptr);
    EXPECT_EQ("={}[none][][none]", Dump(Outermost()));
}

TEST_F(TagBlockTest, ABlockMayBeAssignedToItself)
{
    Read(Sample);
    const std::string before = Dump(Outermost());
    CTagBlock& same = Outermost();
    Outermost() = same;
    EXPECT_EQ(before, Dump(Outermost()));
}

TEST_F(TagBlockTest, ABlockMayBeReplacedByOneOfItsSubBlocks)
{
    Read(Sample);
    const std::string expected = Dump(*Outermost().GetSubBlock(0));
    Outermost() = *Outermost().GetSubBlock(0);
    EXPECT_EQ(expected, Dump(Outermost()));
}

TEST_F(TagBlockTest, InsertingABlockMovesItsUnitsAndSubBlocks)
{
    Read("<a>\none\n<b/>\n</a>\n<c>\ntwo\n<d/>\n<e/>\n</c>\n");
    CTagBlock& target = Outermost(0);
    CTagBlock& source = Outermost(1);
    int at = 0;
    target.InsertBlock(&source, &at);
    EXPECT_EQ(1, at);
    EXPECT_EQ("6:two|2:one|", LinesOf(&target));
    EXPECT_EQ("a=\n\tb=\n\td=\n\te=", target.GetHierarchy(0));
    EXPECT_EQ(&target, target.GetSubBlock(2)->GetParent());
    EXPECT_EQ("c=", source.GetHierarchy(0));
    EXPECT_EQ("", LinesOf(&source));
}

TEST_F(TagBlockTest, ABlockWithoutTagsCanBeInserted)
{
    CParserBlock plain(nullptr);
    plain.CreateUnit(wxSharedPtr<CParserFile>(), "plain", 1);
    Read(Sample);
    const size_t before = Outermost().GetSubBlockCount();
    Outermost().InsertBlock(&plain, nullptr);
    EXPECT_EQ("2:one|1:plain|", LinesOf(&Outermost()));
    EXPECT_EQ(before, Outermost().GetSubBlockCount());
}

TEST_F(TagBlockTest, InsertingABlockIntoItselfDoesNothing)
{
    Read(Sample);
    const std::string before = Dump(Outermost());
    Outermost().InsertBlock(&Outermost(), nullptr);
    EXPECT_EQ(before, Dump(Outermost()));
}

TEST_F(TagBlockTest, HasRunTimeClassInformation)
{
    const CTagBlock block(nullptr, nullptr);
    EXPECT_STREQ(wxS("CTagBlock"), block.GetClassInfo()->GetClassName());
    EXPECT_TRUE(block.IsKindOf(&CParserBlock::ms_classInfo));
}

} // namespace
