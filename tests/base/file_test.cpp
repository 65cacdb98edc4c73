#include "base/file.h"
#include "tests/base/base_test_support.h"

#include <rapidcheck.h>

#include <sys/resource.h>
#include <vector>

namespace
{

class FileTest : public TempDirTest
{
protected:
    CFile Open(const std::string& bytes) const
    {
        Put("f", bytes);
        return Dir().OpenFile("f", wxFile::read);
    }

    std::optional<wxString> TextOf(const std::string& bytes, CFile::eConvType conv = CFile::convDefault) const
    {
        Put("f", bytes);
        return Text(Dir(), "f", conv);
    }
};

wxString Wide(const std::u32string& text)
{
    wxString wide;
    for (const char32_t c : text)
        wide.append(1, static_cast<wchar_t>(c));
    return wide;
}

rc::Gen<std::u32string> AnyCharacters()
{
    return rc::gen::container<std::u32string>(
        rc::gen::oneOf(rc::gen::inRange<char32_t>(0, 0x80), rc::gen::inRange<char32_t>(0x80, 0xd800),
                       rc::gen::inRange<char32_t>(0xe000, 0xfeff), rc::gen::inRange<char32_t>(0x10000, 0x110000)));
}

} // namespace

TEST_F(FileTest, AFileThatIsNotOpenRefusesEverything)
{
    CFile file;
    wxString text = "before";
    EXPECT_FALSE(file.IsOpened());
    EXPECT_FALSE(file.Ok());
    EXPECT_FALSE(file.Read(text, CFile::convDefault));
    EXPECT_EQ("", text);
    EXPECT_EQ("", file.ReadLine(CFile::convDefault));
    EXPECT_TRUE(file.Eof());
    EXPECT_FALSE(file.Error());
    EXPECT_EQ(nullptr, file.GetInputStream());
    EXPECT_EQ(nullptr, file.GetOutputStream());
    EXPECT_FALSE(file.Close());
}

TEST_F(FileTest, ReadKeepsLineEndsAndNuls)
{
    const std::string bytes("a\r\nb\rc\n\0d\n\r", 11);
    EXPECT_EQ(wxString(L"a\r\nb\rc\n\0d\n\r", 11), TextOf(bytes));
}

TEST_F(FileTest, ReadOfAnEmptyFileIsTheEmptyText)
{
    EXPECT_EQ("", TextOf(""));
}

TEST_F(FileTest, ReadAtTheEndIsTheEmptyText)
{
    CFile file = Open("x");
    wxString text;
    ASSERT_TRUE(file.Read(text));
    ASSERT_TRUE(file.Read(text));
    EXPECT_EQ("", text);
    EXPECT_TRUE(file.Eof());
}

TEST_F(FileTest, ReadHonoursEveryByteOrderMark)
{
    const std::u32string text = U"a\u00e9\u20ac\U0001f600\r\n";
    EXPECT_EQ(Wide(text), TextOf("\xef\xbb\xbf" + ToUtf8(Wide(text))));
    EXPECT_EQ(Wide(text), TextOf(Encoded(U"\ufeff" + text, 2, false)));
    EXPECT_EQ(Wide(text), TextOf(Encoded(U"\ufeff" + text, 2, true)));
    EXPECT_EQ(Wide(text), TextOf(Encoded(U"\ufeff" + text, 4, false)));
    EXPECT_EQ(Wide(text), TextOf(Encoded(U"\ufeff" + text, 4, true)));
    EXPECT_EQ("", TextOf("\xef\xbb\xbf"));
    EXPECT_EQ("", TextOf("\xff\xfe"));
    EXPECT_EQ("", TextOf(std::string("\0\0\xfe\xff", 4)));
}

TEST_F(FileTest, OnlyTheFirstMarkIsSkipped)
{
    EXPECT_EQ(wxString(L"\xfeff\xfeff"), TextOf("\xef\xbb\xbf\xef\xbb\xbf\xef\xbb\xbf"));
}

TEST_F(FileTest, WithoutAMarkATextIsUtf8)
{
    EXPECT_EQ(wxString(L"\xe9\x20ac\x1f600"), TextOf("\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"));
}

TEST_F(FileTest, WithoutAMarkATextThatIsNotUtf8IsLatin1AsAWhole)
{
    EXPECT_EQ(wxString(L"\xc3\xa9\xff"), TextOf("\xc3\xa9\xff"));
    EXPECT_EQ(wxString(L"\xe2\x82"), TextOf("\xe2\x82"));
    EXPECT_EQ(wxString(L"\xed\xa0\x80\xff"), TextOf("\xed\xa0\x80\xff"));
}

TEST_F(FileTest, Latin1IsFoundHoweverLateTheFirstSuchByte)
{
    for (const size_t size : {16383, 16384, 16385, 65535, 65536, 200000}) {
        const std::string start = "\xc3\xa9" + std::string(size, 'x');
        const wxString expected = wxString(L"\xc3\xa9") + wxString('x', size);
        EXPECT_EQ(expected + wxUniChar(0xff), TextOf(start + "\xff"));
        EXPECT_EQ(expected + wxUniChar(0xe2), TextOf(start + "\xe2"));
    }
}

TEST_F(FileTest, CharactersAcrossTheReadersPiecesAreWhole)
{
    for (int offset = 0; offset < 5; ++offset) {
        std::string bytes(static_cast<size_t>(offset), 'x');
        wxString text('x', static_cast<size_t>(offset));
        for (int i = 0; i < 40000; ++i) {
            bytes += "\xe2\x82\xac\xf0\x9f\x98\x80";
            text += L"\x20ac\x1f600";
        }
        EXPECT_EQ(text, TextOf(bytes));
    }
}

TEST_F(FileTest, Utf16CombinesPairsAndKeepsLoneSurrogates)
{
    const std::u32string units = {0xfeff, 'a', 0xd83d, 0xde00, 0xd83d, 'b', 0xde00, 0xd83d, 0xd83d, 0xde00, 0xd83d};
    const wchar_t text[] = {'a', 0x1f600, 0xd83d, 'b', 0xde00, 0xd83d, 0x1f600, 0xd83d};
    for (const bool bigEndian : {false, true}) {
        Put("f", Encoded(units, 2, bigEndian));
        EXPECT_EQ(wxString(text, 8), Text(Dir(), "f"));
    }
}

TEST_F(FileTest, ATextWithALoneSurrogateReadsBackTheSame)
{
    const wchar_t text[] = {'a', 0xdc00, 'b', 0xd800};
    EXPECT_EQ(wxString(text, 4), TextOf(ToUtf8(wxString(text, 4))));
}

TEST_F(FileTest, ATextThatIsNotWhatItsMarkSaysFailsToRead)
{
    EXPECT_EQ(std::nullopt, TextOf("\xef\xbb\xbf\xff"));
    EXPECT_EQ(std::nullopt, TextOf("\xef\xbb\xbf\xe2\x82"));
    EXPECT_EQ(std::nullopt, TextOf("\xff\xfe"
                                   "abc"));
    EXPECT_EQ(std::nullopt, TextOf(std::string("\xff\xfe\0\0abc", 7)));
    EXPECT_EQ(std::nullopt, TextOf(std::string("\xff\xfe\0\0\0\0\x11\0", 8)));
}

TEST_F(FileTest, AFailedReadGivesNoText)
{
    CFile file = Open("\xef\xbb\xbfgood\xff");
    wxString text = "before";
    EXPECT_FALSE(file.Read(text));
    EXPECT_EQ("", text);
    EXPECT_TRUE(file.Error());
}

TEST_F(FileTest, AFileThatTheSystemCannotReadFailsToRead)
{
    // The first page of a process' memory is not there: opening succeeds, reading fails with EIO.
    CFile file = CDir("/proc/self").OpenFile("mem", wxFile::read);
    ASSERT_TRUE(file.IsOpened());
    wxString text;
    EXPECT_FALSE(file.Read(text));
    EXPECT_TRUE(file.Error());
    EXPECT_EQ("", file.ReadLine());
    EXPECT_TRUE(file.Eof());
}

TEST_F(FileTest, AnEncodingAskedForIsTakenAtItsWord)
{
    EXPECT_EQ(wxString(wxUniChar(0xe9)), TextOf("\xc3\xa9", CFile::convUtf8));
    EXPECT_EQ(wxString(wxUniChar(0xe9)), TextOf("\xef\xbb\xbf\xc3\xa9", CFile::convUtf8));
    EXPECT_EQ(std::nullopt, TextOf("\xe9", CFile::convUtf8));
    EXPECT_EQ(std::nullopt, TextOf("\xff\xfe"
                                   "a",
                                   CFile::convUtf8));
    EXPECT_EQ("a", TextOf(std::string("a\0", 2), CFile::convUtf16));
    EXPECT_EQ("a", TextOf(std::string("\xfe\xff\0a", 4), CFile::convUtf16));
    EXPECT_EQ(std::nullopt, TextOf("abc", CFile::convUtf16));
    EXPECT_EQ("abc", TextOf("abc", CFile::convLocale));
}

TEST_F(FileTest, TheCodeOfTheDirectoryIsTheDefault)
{
    CDir dir = Dir();
    Put("f", "\xe9");
    dir.SetAutoFileCode(CDir::codeUtf8);
    EXPECT_EQ(std::nullopt, Text(dir, "f"));
    dir.SetAutoFileCode(CDir::codeDetect);
    EXPECT_EQ(wxString(wxUniChar(0xe9)), Text(dir, "f"));
    Put("f", std::string("a\0\n\0b\0", 6));
    dir.SetAutoFileCode(CDir::codeUtf16);
    EXPECT_EQ("a\nb", Text(dir, "f"));
    CFile lines = dir.OpenFile("f", wxFile::read);
    EXPECT_EQ("a", lines.ReadLine());
    EXPECT_EQ("b", lines.ReadLine());
    dir.SetAutoFileCode(CDir::codeLocale);
    Put("f", "abc");
    EXPECT_EQ("abc", Text(dir, "f"));
}

TEST_F(FileTest, EveryTextIsReadBackFromEveryEncodingWithItsMark)
{
    EXPECT_TRUE(rc::check([this] {
        const std::u32string text = *AnyCharacters();
        // A little-endian mark and a NUL in UTF-16 are the mark of UTF-32.
        RC_PRE(text.empty() || text.front() != 0);
        const bool bigEndian = *rc::gen::arbitrary<bool>();
        RC_ASSERT(TextOf(Encoded(U"\ufeff" + text, 2, bigEndian)) == Wide(text));
        RC_ASSERT(TextOf(Encoded(U"\ufeff" + text, 4, bigEndian)) == Wide(text));
        RC_ASSERT(TextOf("\xef\xbb\xbf" + ToUtf8(Wide(text))) == Wide(text));
        RC_ASSERT(TextOf(ToUtf8(Wide(text))) == Wide(text));
    }));
}

TEST_F(FileTest, TextsLinesAndStreamsGoOnWhereTheOneBeforeStopped)
{
    CFile file = Open("one\ntwo\r\nthree\nfour");
    char bytes[4] = {};
    EXPECT_EQ("one", file.ReadLine());
    wxInputStream* const stream = file.GetInputStream();
    ASSERT_NE(nullptr, stream);
    EXPECT_TRUE(stream->ReadAll(bytes, 3));
    EXPECT_STREQ("two", bytes);
    EXPECT_EQ(7, stream->TellI());
    EXPECT_EQ("", file.ReadLine());
    EXPECT_EQ("three", file.ReadLine());
    wxString rest;
    EXPECT_TRUE(file.Read(rest));
    EXPECT_EQ("four", rest);
}

TEST_F(FileTest, TheInputStreamGivesTheBytesAndCanSeek)
{
    CFile file = Open("\xef\xbb\xbf"
                      "abc");
    wxInputStream* const stream = file.GetInputStream();
    EXPECT_TRUE(stream->IsSeekable());
    EXPECT_EQ(6, stream->GetLength());
    char bytes[7] = {};
    EXPECT_TRUE(stream->ReadAll(bytes, 6));
    EXPECT_STREQ("\xef\xbb\xbf"
                 "abc",
                 bytes);
    EXPECT_EQ(0u, stream->Read(bytes, 1).LastRead());
    EXPECT_EQ(wxSTREAM_EOF, stream->GetLastError());
    EXPECT_EQ(4, stream->SeekI(-2, wxFromEnd));
    EXPECT_EQ('b', stream->GetC());
    EXPECT_EQ(3, stream->SeekI(-2, wxFromCurrent));
    EXPECT_EQ('a', stream->GetC());
    EXPECT_EQ(0, stream->SeekI(0));
    wxString text;
    EXPECT_TRUE(file.Read(text));
    EXPECT_EQ("abc", text);
    EXPECT_EQ(nullptr, file.GetOutputStream());
}

TEST_F(FileTest, CopiesShareTheOpenFileAndThePlaceInIt)
{
    CFile file = Open("one\ntwo\nthree");
    CFile copy(file);
    CFile assigned;
    assigned = copy;
    EXPECT_EQ("one", file.ReadLine());
    EXPECT_EQ("two", copy.ReadLine());
    EXPECT_EQ("three", assigned.ReadLine());
    EXPECT_TRUE(copy.Close());
    EXPECT_FALSE(file.IsOpened());
    EXPECT_FALSE(assigned.Close());
}

TEST_F(FileTest, TheLastCopyClosesTheFile)
{
    const auto descriptors = [] {
        const std::filesystem::directory_iterator open("/proc/self/fd");
        return std::distance(begin(open), end(open));
    };
    const size_t before = descriptors();
    {
        CFile file = Open("x");
        CFile copy = file;
        file = CFile();
        EXPECT_TRUE(copy.IsOpened());
        EXPECT_EQ(before + 1, descriptors());
    }
    EXPECT_EQ(before, descriptors());
}

TEST_F(FileTest, AStreamOutlivesTheClosingOfItsFileAndGivesNothing)
{
    CFile file = Open("x");
    wxInputStream* const stream = file.GetInputStream();
    EXPECT_TRUE(file.Close());
    char byte = 0;
    EXPECT_EQ(0u, stream->Read(&byte, 1).LastRead());
    EXPECT_EQ(nullptr, file.GetInputStream());
}

TEST_F(FileTest, StandardInputIsReadAndStaysOpen)
{
    Put("in", "one\ntwo");
    Child child([&] {
        if (::dup2(::open(Path("in").c_str(), O_RDONLY), 0) != 0)
            return 1;
        {
            CFile in = CFile::StandardInput();
            if (in.ReadLine() != "one" || !in.Close())
                return 2;
        }
        return ::lseek(0, 0, SEEK_SET) == 0 && CFile::StandardInput().ReadLine() == "one" ? 0 : 3;
    });
    EXPECT_EQ(0, child.Wait());
    Child closed([] {
        ::close(0);
        return CFile::StandardInput().IsOpened() ? 1 : 0;
    });
    EXPECT_EQ(0, closed.Wait());
}

TEST_F(FileTest, ATextLargerThanMemoryFailsToRead)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer needs the address space itself";
#endif
    Put("sparse", "");
    ASSERT_EQ(0, ::truncate(Path("sparse").c_str(), 2LL << 30));
    Child child([&] {
        const rlimit limit = {1 << 30, 1 << 30};
        wxString text;
        CFile file = Dir().OpenFile("sparse", wxFile::read);
        return ::setrlimit(RLIMIT_AS, &limit) == 0 && !file.Read(text) && text.empty() && file.Error() ? 0 : 1;
    });
    EXPECT_EQ(0, child.Wait());
}
