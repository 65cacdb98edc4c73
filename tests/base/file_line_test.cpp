#include "base/file.h"
#include "tests/base/base_test_support.h"

#include <rapidcheck.h>

#include <vector>

namespace
{

using LinesOf = std::vector<wxString>;

class FileLineTest : public TempDirTest
{
protected:
    CFile Open(const std::string& bytes) const
    {
        Put("f", bytes);
        return Dir().OpenFile("f", wxFile::read);
    }

    static std::vector<wxString> Lines(CFile file)
    {
        std::vector<wxString> lines;
        while (!file.Eof())
            lines.push_back(file.ReadLine());
        return lines;
    }

    /// The same bytes through a pipe, all at once or one by one.
    static std::vector<wxString> LinesThroughPipe(const std::string& bytes, bool oneByOne)
    {
        int ends[2];
        EXPECT_EQ(0, ::pipe2(ends, O_CLOEXEC));
        Child writer([&] {
            for (size_t i = 0; i < bytes.size(); i += oneByOne ? 1 : bytes.size()) {
                if (::write(ends[1], bytes.data() + i, oneByOne ? 1 : bytes.size()) < 0)
                    return 1;
            }
            return 0;
        });
        ::close(ends[1]);
        const auto lines = Lines(CDir("/dev/fd").OpenFile(std::to_string(ends[0]), wxFile::read));
        ::close(ends[0]);
        return lines;
    }
};

} // namespace

TEST_F(FileLineTest, ReadLineKnowsEveryLineEnd)
{
    EXPECT_EQ((LinesOf{"a", "b", "c", "", "", "d"}), Lines(Open("a\nb\r\nc\r\r\n\nd")));
    EXPECT_EQ((LinesOf{"a"}), Lines(Open("a\n")));
    EXPECT_EQ((LinesOf{"a", ""}), Lines(Open("a\r\r")));
    EXPECT_EQ((LinesOf{""}), Lines(Open("\r\n")));
    EXPECT_EQ((LinesOf{}), Lines(Open("")));
    EXPECT_EQ((LinesOf{wxString(L"a\0b", 3), "c"}), Lines(Open(std::string("a\0b\nc", 5))));
}

TEST_F(FileLineTest, ReadLineKnowsThemInWideEncodingsToo)
{
    const std::u32string text = U"\ufeff\u0a0d\n\u0d0a\r\n\u0a00\rb";
    for (const int unit : {2, 4}) {
        for (const bool bigEndian : {false, true})
            EXPECT_EQ((LinesOf{L"\x0a0d", L"\x0d0a", L"\x0a00", "b"}), Lines(Open(Encoded(text, unit, bigEndian))));
    }
}

TEST_F(FileLineTest, ReadLineSkipsTheByteOrderMark)
{
    EXPECT_EQ((LinesOf{L"\xe9", "b"}), Lines(Open("\xef\xbb\xbf\xc3\xa9\nb")));
}

TEST_F(FileLineTest, ReadLineAndReadAgreeOnTheEncodingOfAFile)
{
    CFile file = Open("\xc3\xa9\n\xff");
    EXPECT_EQ(wxString(L"\xc3\xa9"), file.ReadLine());
    EXPECT_EQ(wxString(L"\xff"), file.ReadLine());
    EXPECT_FALSE(file.Error());
}

TEST_F(FileLineTest, ReadLineFromAPipeIsLatin1FromTheFirstLineThatIsNotUtf8)
{
    for (const bool oneByOne : {false, true})
        EXPECT_EQ((LinesOf{L"\xe9", L"\xff", L"\xc3\xa9"}), LinesThroughPipe("\xc3\xa9\n\xff\r\n\xc3\xa9", oneByOne));
}

TEST_F(FileLineTest, ReadAfterLinesFromAPipeGoesOnInTheirEncoding)
{
    int ends[2];
    ASSERT_EQ(0, ::pipe2(ends, O_CLOEXEC));
    ASSERT_EQ(9, ::write(ends[1], "a\n\xc3\xa9\n\xff\n\xc3\xa9", 9));
    ::close(ends[1]);
    CFile file = CDir("/dev/fd").OpenFile(std::to_string(ends[0]), wxFile::read);
    ::close(ends[0]);
    EXPECT_EQ("a", file.ReadLine());
    EXPECT_EQ(wxString(wxUniChar(0xe9)), file.ReadLine());
    wxString rest;
    EXPECT_TRUE(file.Read(rest));
    EXPECT_EQ(wxString(L"\xff\n\xc3\xa9"), rest);
}

TEST_F(FileLineTest, ReadLineReadsLongLines)
{
    const std::string longLine(300000, 'x');
    EXPECT_EQ((LinesOf{longLine, "y", longLine}), Lines(Open(longLine + "\r\ny\n" + longLine)));
    EXPECT_EQ((LinesOf{longLine, "y"}), LinesThroughPipe(longLine + "\r\ny\n", false));
}

TEST_F(FileLineTest, ReadLineThatDoesNotFitTheEncodingAskedForIsLatin1AndAnError)
{
    CFile file = Open("a\n\xff\n");
    EXPECT_EQ("a", file.ReadLine(CFile::convUtf8));
    EXPECT_FALSE(file.Error());
    EXPECT_EQ(wxString(wxUniChar(0xff)), file.ReadLine(CFile::convUtf8));
    EXPECT_TRUE(file.Error());
}

TEST_F(FileLineTest, ReadLineRemembersTheByteOrderForAnEncodingAskedFor)
{
    CFile file = Open(Encoded(U"\ufeff"
                              U"a\nb\n",
                              2, true));
    EXPECT_EQ("a", file.ReadLine(CFile::convUtf16));
    EXPECT_EQ("b", file.ReadLine(CFile::convUtf16));
}

TEST_F(FileLineTest, LinesJoinedByLineFeedsAreTheText)
{
    EXPECT_TRUE(rc::check([this] {
        const auto bytes =
            *rc::gen::container<std::string>(rc::gen::element<char>('a', '\n', '\r', '\xc3', '\xa9', ' '));
        wxString joined;
        for (const wxString& line : Lines(Open(bytes)))
            joined += line + "\n";
        wxString text = *Text(Dir(), "f");
        text.Replace("\r\n", "\n");
        text.Replace("\r", "\n");
        if (!text.empty() && !text.EndsWith("\n"))
            text += "\n";
        RC_ASSERT(joined == text);
    }));
}
