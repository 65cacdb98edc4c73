#include "tests/support/preprocess_bench.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

using Texts = std::vector<std::string>;

class IncludeTest : public PreprocessTest<>
{
protected:
    IncludeTest()
    {
        CDir dir = place.Dir();
        parser.SetDir(dir);
    }

    std::string NotFound(const std::string& name, unsigned long line, const std::string& file = "main.txt") const
    {
        return Failure("Include file not found '" + name + "' from '" + place.Path() + "'", line, file);
    }

    TempDirectory place;
};

TEST_F(IncludeTest, TheUnitsOfTheFileTakeTheDirectivesPlace)
{
    place.Put("i.txt", "b // c\n\nc\n");
    EXPECT_EQ("a\nb\nc\nd\n", Run("a\n#include \"i.txt\"\nd"));
    EXPECT_EQ((Texts{"main.txt:1:a", "i.txt:1:b", "i.txt:3:c", "main.txt:3:d"}), Units());
}

TEST_F(IncludeTest, TheNameIsTrimmedOfBlanksAndItsDelimiters)
{
    place.Put("i.txt", "b");
    for (const char* const argument : {" \"i.txt\"", " <i.txt>", " i.txt", "   \"i.txt\"   ", "\"i.txt\"", "<i.txt>",
                                       " \"i.txt>", " < \"i.txt\" > "}) {
        EXPECT_EQ("b\n", Run(wxString("#include") + argument)) << argument;
        EXPECT_EQ(Texts{"i.txt:1:b"}, Units()) << argument;
    }
}

TEST_F(IncludeTest, TheRestOfTheLineBelongsToTheName)
{
    place.Put("i.txt", "b");
    EXPECT_EQ(NotFound("i.txt\" // c", 1), Run("#include \"i.txt\" // c"));
    EXPECT_EQ(NotFound("\t\"i.txt", 1), Run("#include\t\"i.txt\""));
}

TEST_F(IncludeTest, CommentsMayStandBeforeTheDirective)
{
    place.Put("i.txt", "b");
    EXPECT_EQ("b\n", Run("/* c */ #include \"i.txt\""));
}

TEST_F(IncludeTest, ANameIsRelativeToTheDirectoryOfTheUnitsFile)
{
    place.Put("i.txt", "top");
    place.Put("dir/i.txt", "dir");
    place.Put("dir/sub/i.txt", "sub");
    EXPECT_EQ("dir\nsub\n", Run("#include \"i.txt\"\n#include \"sub/i.txt\"", "dir/main.txt"));
    EXPECT_EQ((Texts{"i.txt:1:dir", "sub/i.txt:1:sub"}), Units());
    EXPECT_EQ("top\n", Run("#include \"i.txt\"", "main.txt"));
    EXPECT_EQ("top\n", Run("#include \"../i.txt\"", "dir/main.txt"));
}

TEST_F(IncludeTest, ANestedIncludeIsRelativeToTheNameOfTheIncludedFileAsWritten)
{
    place.Put("sub/a.txt", "#include \"b.txt\"");
    place.Put("sub/b.txt", "#include \"c.txt\"");
    place.Put("sub/c.txt", "not this");
    place.Put("c.txt", "c");
    EXPECT_EQ("c\n", Run("#include \"sub/a.txt\""));
}

TEST_F(IncludeTest, AnAbsoluteNameIsUsedAsItIs)
{
    place.Put("dir/i.txt", "b");
    EXPECT_EQ("b\n", Run("#include \"" + place.Path("dir/i.txt") + "\"", "elsewhere/main.txt"));
    EXPECT_EQ(Texts{place.Path("dir/i.txt") + ":1:b"}, Units());
}

TEST_F(IncludeTest, BothSlashesSeparateDirectories)
{
    place.Put("sub/deep/i.txt", "b");
    EXPECT_EQ("b\n", Run("#include \"sub\\deep/i.txt\""));
    EXPECT_EQ(Texts{"sub\\deep/i.txt:1:b"}, Units());
    EXPECT_EQ("b\n", Run("#include \"deep\\i.txt\"", "sub\\main.txt"));
    wxString absolute = place.Path("sub/deep/i.txt");
    absolute.Replace("/", "\\");
    EXPECT_EQ("b\n", Run("#include \"" + absolute + "\""));
}

TEST_F(IncludeTest, AUnitWithoutFileIncludesFromTheSearchDirectory)
{
    place.Put("i.txt", "b");
    CParserBlock block(nullptr);
    block.CreateUnit(wxSharedPtr<CParserFile>(), "#include \"i.txt\"", 1);
    EXPECT_EQ("b\n", Process(block));
}

TEST_F(IncludeTest, AMissingFileIsReportedWithTheSearchDirectory)
{
    EXPECT_EQ(NotFound("no.txt", 2), Run("a\n#include \"no.txt\""));
    EXPECT_EQ(NotFound("no.txt", 1, "dir/main.txt"), Run("#include <no.txt>", "dir/main.txt"));
    EXPECT_EQ(NotFound("", 1), Run("#include"));
}

TEST_F(IncludeTest, ADirectoryIsNoFile)
{
    place.Put("sub/i.txt", "b");
    EXPECT_EQ(NotFound("sub", 1), Run("#include \"sub\""));
}

TEST_F(IncludeTest, AFileThatIsNoTextIsNotReadable)
{
    place.Put("i.txt", "\xff\xfe\xfd");
    CDir dir = place.Dir();
    dir.SetAutoFileCode(CDir::codeUtf8);
    parser.SetDir(dir);
    EXPECT_EQ(Failure("Include file not readable 'i.txt'", 2), Run("a\n#include \"i.txt\""));
}

TEST_F(IncludeTest, AnEmptyFileInsertsNothing)
{
    place.Put("i.txt", "");
    EXPECT_EQ("a\nb\n", Run("a\n#include \"i.txt\"\nb"));
}

TEST_F(IncludeTest, AnInterpreterLineIsAComment)
{
    place.Put("i.txt", "#!/usr/bin/env tool\nbody\n");
    EXPECT_EQ("body\n", Run("#include \"i.txt\""));
    EXPECT_EQ(Texts{"i.txt:2:body"}, Units());
    place.Put("i.txt", "#!\n");
    EXPECT_EQ("", Run("#include \"i.txt\""));
}

TEST_F(IncludeTest, TwoCharactersAreNoInterpreterLine)
{
    place.Put("i.txt", "#!");
    EXPECT_EQ("!\n", Run("#include \"i.txt\""));
}

TEST_F(IncludeTest, OnlyTheFirstLineCanBeAnInterpreterLine)
{
    place.Put("i.txt", "a\n#!b\n");
    EXPECT_EQ("a\n!b\n", Run("#include \"i.txt\""));
}

TEST_F(IncludeTest, FilesKnowTheDirectiveThatIncludedThem)
{
    place.Put("i.txt", "#include \"j.txt\"");
    place.Put("j.txt", "b");
    Run("a\n  #include \"i.txt\"");
    const CParserUnit* unit = parser.GetLastBlock(0)->GetUnit(1);
    ASSERT_NE(nullptr, unit);
    const CParserUnit* from = unit->m_file->GetIncludedFrom();
    ASSERT_NE(nullptr, from);
    EXPECT_EQ("file \"i.txt\" line 1", from->GetContext());
    EXPECT_EQ("#include \"j.txt\"", from->m_text);
    from = from->m_file->GetIncludedFrom();
    ASSERT_NE(nullptr, from);
    EXPECT_EQ("file \"main.txt\" line 2", from->GetContext());
    EXPECT_EQ("  #include \"i.txt\"", from->m_text);
    EXPECT_EQ(nullptr, from->m_file->GetIncludedFrom());
}

TEST_F(IncludeTest, TheParserListsOnlyTheIncludingBlockAfterwards)
{
    place.Put("i.txt", "b");
    CParserBlock* const before = parser.CreateBlock(false);
    Run("#include \"i.txt\"\n#include \"i.txt\"");
    const std::unique_ptr<CParserBlock> result(parser.GetLastBlock(1));
    EXPECT_NE(before, result.get());
    EXPECT_EQ(before, parser.GetLastBlock(0));
}

TEST_F(IncludeTest, DefinesPassBothWays)
{
    place.Put("i.txt", "#A\n#define B 2\n#undef A");
    EXPECT_EQ("1\n2\n", Run("#define A 1\n#include \"i.txt\"\n#B"));
    EXPECT_FALSE(pp.HasDefine("A"));
}

TEST_F(IncludeTest, AFileMayBeIncludedOftenAndGuardItself)
{
    place.Put("g.txt", "#ifndef G\n#define G\nonce\n#endif\nalways");
    EXPECT_EQ("once\nalways\nalways\n", Run("#include \"g.txt\"\n#include \"g.txt\""));
}

TEST_F(IncludeTest, IncludedUnitsAreNotScannedAgain)
{
    place.Put("i.txt", "#Q\n#{'#NOPE'}");
    EXPECT_EQ("it's */ #X\n#NOPE\nb\n", RunWith({"Q=it's */ #X"}, "#include \"i.txt\"\nb"));
}

TEST_F(IncludeTest, TheRemoveListAppliesToIncludedFiles)
{
    static const wchar_t* names[] = {L"A", nullptr};
    place.Put("i.txt", "#define A 2\n#define B 3\nb");
    parser.SetRemoveDefines(names);
    EXPECT_EQ("b\n1 3\n", Run("#define A 1\n#include \"i.txt\"\n#A #B"));
}

TEST_F(IncludeTest, ASkippedIncludeReadsNothing)
{
    EXPECT_EQ("", Run("#if 0\n#include \"no.txt\"\n#endif"));
}

TEST_F(IncludeTest, TheOutputOfTheLineIsEmptied)
{
    place.Put("i.txt", "b");
    pp.SetTrim(false);
    EXPECT_EQ("b\n\nc\n", Run("  /* x */ #include \"i.txt\"\nc"));
    EXPECT_EQ((Texts{"i.txt:1:b", "main.txt:1:", "main.txt:2:c"}), Units());
}

TEST_F(IncludeTest, AnIncludedFileMustCloseItsSections)
{
    place.Put("i.txt", "a\n#if 1\nb");
    const std::string missing = FailureWithoutUnit("Missing #endif for #ifdef started file \"i.txt\" line 2!");
    EXPECT_EQ(missing, Run("#include \"i.txt\"\n#endif"));
    EXPECT_EQ(missing, Run("#if 1\n#include \"i.txt\"\n#endif\n#endif"));
    EXPECT_EQ("a\n", Run("a")) << "the stack is empty again";
}

TEST_F(IncludeTest, AnIncludedFileCannotTouchTheIncludersSections)
{
    for (const char* const line : {"#endif", "#else", "#elif 1", "#elseifdef A"}) {
        place.Put("i.txt", std::string("a\n") + line);
        const std::string word = wxString(line + 1).BeforeFirst(' ').utf8_string();
        EXPECT_EQ(Failure("#" + word + " without #" + (word == "elif" ? "if" : "ifdef"), 2, "i.txt"),
                  Run("#if 1\n#include \"i.txt\"\n#endif"));
        pp.Clean();
    }
}

TEST_F(IncludeTest, TheIncludersSectionsGoOnBehindAnInclude)
{
    place.Put("i.txt", "#if 1\nb\n#else\nx\n#endif");
    EXPECT_EQ("b\nd\n", Run("#if 1\n#include \"i.txt\"\n#else\n#include \"no.txt\"\n#endif\nd"));
}

TEST_F(IncludeTest, AnIncludedFileMustCloseItsComments)
{
    place.Put("i.txt", "a\nb /* c");
    EXPECT_EQ(Failure("Comment not closed (started in file \"i.txt\" line 2)!", 2, "i.txt"),
              Run("#include \"i.txt\"\n*/"));
}

TEST_F(IncludeTest, AnErrorInAnIncludedFileIsPassedUpWithItsPlace)
{
    place.Put("i.txt", "#include \"j.txt\"");
    place.Put("j.txt", "a\n#NOPE");
    EXPECT_EQ(Failure("\"NOPE\" is not defined !", 2, "j.txt"), Run("a\n#include \"i.txt\"\nb"));
}

TEST_F(IncludeTest, TheIncludersSectionsCanBeClosedAfterAFailure)
{
    place.Put("i.txt", "*/");
    for (const char* const name : {"i.txt", "no.txt"}) {
        EXPECT_NE("", Run(wxString("#if 1\n#include \"") + name + "\""));
        EXPECT_EQ("a\n", Run("#endif\na")) << name;
    }
}

TEST_F(IncludeTest, EveryKindOfLineEndIsRead)
{
    place.Put("i.txt", "a\r\n\r\nb\rc\nd");
    Run("#include \"i.txt\"");
    EXPECT_EQ((Texts{"i.txt:1:a", "i.txt:3:b", "i.txt:4:c", "i.txt:5:d"}), Units());
}

TEST_F(IncludeTest, AByteOrderMarkIsNoPartOfTheText)
{
    place.Put("i.txt", "\xef\xbb\xbf#define A \xc3\xa9\n#A");
    EXPECT_EQ("\xc3\xa9\n", Run("#include \"i.txt\""));
}

TEST_F(IncludeTest, PartialModeDoesNotExcuseAMissingFile)
{
    EXPECT_EQ(NotFound("no.txt", 2), RunPartial("#ifdef U\n#include \"no.txt\"\n#endif"));
}

TEST_F(IncludeTest, AnUnresolvedSectionOfTheIncluderDoesNotExcuseAnErrorDirective)
{
    place.Put("i.txt", "#error text");
    EXPECT_EQ(Failure("ERROR :  text", 1, "i.txt"), RunPartial("#ifdef U\n#include \"i.txt\"\n#endif"));
    place.Put("i.txt", "#ifdef V\n#error text\n#endif");
    pp.Clean();
    EXPECT_EQ("#ifdef V\n#error text\n#endif\n", RunPartial("#include \"i.txt\""));
}

} // namespace
