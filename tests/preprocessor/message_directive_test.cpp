#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using ErrorDirectiveTest = PreprocessTest<>;
using WarningDirectiveTest = PreprocessTest<>;
using Logged = std::vector<wxString>;

TEST_F(ErrorDirectiveTest, TheRestOfTheLineBecomesTheMessageAsWritten)
{
    const struct
    {
        const char* line;
        const char* message;
    } cases[] = {
        {"#error text", "ERROR :  text"},
        {"#error", "ERROR : "},
        {"  #error\ttext  ", "ERROR : \ttext  "},
        {"#error:x", "ERROR : :x"},
        {"#error don't", "ERROR :  don't"},
        {"#error a // b /* c", "ERROR :  a // b /* c"},
        {"#error #A %s %d 100%", "ERROR :  #A %s %d 100%"},
    };
    for (const auto& [line, message] : cases)
        EXPECT_EQ(Failure(message, 2), RunWith({"A=1"}, wxString("a\n") + line + "\nb")) << line;
}

TEST_F(ErrorDirectiveTest, TheMessageIsLoggedWithFileAndLine)
{
    Run("a\n#error text");
    EXPECT_EQ(Logged{"ERROR :  text\nin 'main.txt' (2)"}, log.Errors());
}

TEST_F(ErrorDirectiveTest, ItIsIgnoredInASkippedSection)
{
    EXPECT_EQ("", Run("#if 0\n#error text\n#endif"));
    EXPECT_EQ(Logged{}, log.Errors());
}

TEST_F(ErrorDirectiveTest, PartialModeKeepsItInAnUnresolvedSection)
{
    EXPECT_EQ("#ifdef U\n#error text // c\n#endif\n", RunPartial("#ifdef U\n#error text // c\n#endif"));
    EXPECT_TRUE(pp.WasPartial());
    EXPECT_EQ(Logged{}, log.Errors());
}

TEST_F(ErrorDirectiveTest, KeepingItMarksThePassAsPartial)
{
    class Watching : public CPreprocessor
    {
    public:
        using CPreprocessor::CPreprocessor;
        long DirectiveApply(wxString& output, const wchar_t* at, const wchar_t* end, const wchar_t** next,
                            _BlockPosition& position) override
        {
            ResetPartial();
            const long result = CPreprocessor::DirectiveApply(output, at, end, next, position);
            marked.push_back(WasPartial());
            return result;
        }
        std::vector<bool> marked;
    };
    PreprocessBench<Watching> bench;
    bench.RunPartial("#ifdef U\n#error text\n#warning text\n#endif");
    ASSERT_EQ(4u, bench.pp.marked.size());
    EXPECT_TRUE(bench.pp.marked[1]);
    EXPECT_TRUE(bench.pp.marked[2]);
}

TEST_F(ErrorDirectiveTest, PartialModeKeepsItInAResolvedSectionInsideAnUnresolvedOne)
{
    EXPECT_EQ("#ifdef U\n#error text\n#endif\n", RunPartial("#ifdef U\n#if 1\n#error text\n#endif\n#endif"));
}

TEST_F(ErrorDirectiveTest, PartialModeStopsAtItOutsideUnresolvedSections)
{
    EXPECT_EQ(Failure("ERROR :  text", 1), RunPartial("#error text"));
    pp.Clean();
    EXPECT_EQ(Failure("ERROR :  text", 2), RunPartial("#if 1\n#error text\n#endif"));
    pp.Clean();
    EXPECT_EQ(Failure("ERROR :  text", 3), RunPartial("#ifdef U\n#endif\n#error text"));
}

TEST_F(WarningDirectiveTest, TheRestOfTheLineIsLoggedAndTheScanGoesOn)
{
    EXPECT_EQ("a\nb\n", Run("a\n  #warning look, don't // c\nb"));
    EXPECT_EQ(Logged{"WARNING:  look, don't // c\nin 'main.txt' (2)"}, log.Texts(wxLOG_Warning));
}

TEST_F(WarningDirectiveTest, ItRecordsNoError)
{
    Run("#warning x");
    EXPECT_EQ("0, no unit: ", LastFailure(parser, 0));
}

TEST_F(WarningDirectiveTest, PercentSignsAreText)
{
    Run("#warning 100%s %d");
    EXPECT_EQ(Logged{"WARNING:  100%s %d\nin 'main.txt' (1)"}, log.Texts(wxLOG_Warning));
}

TEST_F(WarningDirectiveTest, ItIsIgnoredInASkippedSection)
{
    EXPECT_EQ("", Run("#if 0\n#warning text\n#endif"));
    EXPECT_EQ(Logged{}, log.Texts(wxLOG_Warning));
}

TEST_F(WarningDirectiveTest, PartialModeKeepsItInAnUnresolvedSection)
{
    EXPECT_EQ("#ifdef U\n#warning text\n#endif\n", RunPartial("#ifdef U\n#warning text\n#endif"));
    EXPECT_EQ(Logged{}, log.Texts(wxLOG_Warning));
}

TEST_F(WarningDirectiveTest, PartialModeLogsItOutsideUnresolvedSections)
{
    EXPECT_EQ("", RunPartial("#warning text"));
    EXPECT_EQ(Logged{"WARNING:  text\nin 'main.txt' (1)"}, log.Texts(wxLOG_Warning));
}

} // namespace
