#include "tests/support/preprocess_bench.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Texts = std::vector<std::string>;

/// The units of a block as "PATH:LINE:TEXT", with the places that they were read from.
Texts SourcesOf(const CParserBlock& block)
{
    Texts sources;
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        if (const CParserUnit* const unit = block.GetUnit(slot)) {
            const CSourceLine source = unit->GetSource();
            sources.push_back(source.file->GetPath().utf8_string() + ":" + std::to_string(source.line) + ":" +
                              unit->m_text.utf8_string());
        }
    }
    return sources;
}

class SourceTest : public PreprocessTest<>
{
protected:
    SourceTest()
    {
        CDir dir = place.Dir();
        parser.SetDir(dir);
    }

    Texts Sources(const wxString& text, const wxString& name = "main.txt")
    {
        EXPECT_EQ(0, parser.Parse(text, name, nullptr, false)) << Message().utf8_string();
        return SourcesOf(*parser.GetLastBlock(0));
    }

    TempDirectory place;
};

TEST_F(SourceTest, APlainLineIsItsOwnSource)
{
    EXPECT_EQ((Texts{"main.txt:1:a", "main.txt:3:b"}), Sources("a\n\nb"));
}

TEST_F(SourceTest, ALineOfALoopIsTheLineOfItsBody)
{
    EXPECT_EQ((Texts{"main.txt:3:a1", "main.txt:6:b1", "main.txt:3:a2", "main.txt:6:b2", "main.txt:8:c"}),
              Sources("#for i 1;2;1\n\na#i\n// comment\n\nb#i\n#endfor\nc"));
}

TEST_F(SourceTest, EmptyLinesThatAreKeptDoNotShiftALoop)
{
    parser.KeepEmptyLines();
    pp.SetTrim(false);
    EXPECT_EQ((Texts{"main.txt:2:", "main.txt:3:a", "main.txt:4:"}), Sources("#for i 1;1;1\n\na\n#endfor"));
}

TEST_F(SourceTest, NestedLoopsAreSeenThrough)
{
    EXPECT_EQ(
        (Texts{"main.txt:3:1", "main.txt:6:1.1", "main.txt:6:1.2", "main.txt:3:2", "main.txt:6:2.1", "main.txt:6:2.2"}),
        Sources("#for i 1;2;1\n\n#i\n#for k 1;2;1\n\n#i.#k\n#endfor\n#endfor"));
}

TEST_F(SourceTest, AnIncludeIsKnownByThePathItWasOpenedAt)
{
    place.Put("dir/i.txt", "a\n#for i 1;1;1\nb\n#endfor");
    EXPECT_EQ((Texts{"dir/i.txt:1:a", "dir/i.txt:3:b"}), Sources("#include \"i.txt\"", "dir/main.txt"));
}

TEST_F(SourceTest, AnIncludeInsideALoopIsItsOwnSource)
{
    place.Put("i.txt", "a");
    EXPECT_EQ((Texts{"i.txt:1:a", "main.txt:3:b", "i.txt:1:a", "main.txt:3:b"}),
              Sources("#for i 1;2;1\n#include \"i.txt\"\nb\n#endfor"));
}

TEST_F(SourceTest, ALoopThatIsKeptForALaterPassIsSeenThrough)
{
    pp.SetPartialMode(true);
    EXPECT_EQ((Texts{"main.txt:1:#for i 1;#n;1", "main.txt:3:a #i", "main.txt:4:#endfor"}),
              Sources("#for i 1;#n;1\n\na #i\n#endfor"));
}

TEST_F(SourceTest, OnlyTheBodyOfALoopIsALoop)
{
    place.Put("i.txt", "#for i 1;1;1\na\n#endfor\nb");
    Sources("#include \"i.txt\"\nc");
    const CParserBlock& block = *parser.GetLastBlock(0);
    std::string kinds;
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        if (const CParserUnit* const unit = block.GetUnit(slot))
            kinds += unit->m_text.utf8_string() + (unit->m_file->IsLoop() ? " loop, " : " text, ");
    }
    EXPECT_EQ("a loop, b text, c text, ", kinds);
}

TEST_F(SourceTest, AUnitWithoutAFileHasASourceWithoutOne)
{
    const CParserUnit unit(wxSharedPtr<CParserFile>(), nullptr, "a", 3);
    EXPECT_FALSE(unit.GetSource().file);
    EXPECT_EQ(3U, unit.GetSource().line);
}

} // namespace
