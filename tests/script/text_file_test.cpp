#include "base/text_encoding.h"
#include "script/text_file.h"
#include "script/value_conversion.h"
#include "tests/script/script_fixture.h"
#include "tests/support/temp_directory.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace
{

class TextFileTest : public ScriptTest
{
protected:
    TextFileTest()
    {
        jsval path = wxString_to_jsval(Context(), Name(""));
        JS_DefineWideProperty(Context(), Global()->GetJSObject(), L"dir", 3, path, nullptr, nullptr, 0);
        EXPECT_TRUE(script.Evaluate("var f = new TextFile()", nullptr));
    }

    wxString Name(const std::string& name) const { return FromSystemName(temp.Path() + "/" + name); }
    std::string Bytes(const std::string& name) const
    {
        std::ifstream stream(temp.Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    TempDirectory temp;
    CqxJSFile file;
};

TEST_F(TextFileTest, ALineIsReadAfterTheOther)
{
    temp.Put("a.txt", "one\ntwo\n\nfour");
    ASSERT_TRUE(file.Open(Name("a.txt")));
    EXPECT_TRUE(file.IsOpened());
    for (const char* const line : {"one", "two", "", "four"}) {
        EXPECT_FALSE(file.Eof());
        EXPECT_EQ(file.ReadLn(), line);
    }
    EXPECT_TRUE(file.Eof());
    EXPECT_EQ(file.ReadLn(), "");
    EXPECT_TRUE(file.Eof());
}

TEST_F(TextFileTest, ReadAllDoesNotMoveThePlace)
{
    temp.Put("a.txt", "A\r\nB");
    ASSERT_TRUE(file.Open(Name("a.txt")));
    EXPECT_EQ(file.ReadLn(), "A");
    EXPECT_EQ(file.ReadAll(), "A\nB\n");
    EXPECT_EQ(file.ReadLn(), "B");
    EXPECT_EQ(file.ReadAll(), "A\nB\n");
}

TEST_F(TextFileTest, OpenStartsOver)
{
    temp.Put("a.txt", "a1\na2\n");
    temp.Put("b.txt", "b1\n");
    ASSERT_TRUE(file.Open(Name("a.txt")));
    EXPECT_EQ(file.ReadLn(), "a1");
    ASSERT_TRUE(file.Open(Name("b.txt")));
    EXPECT_EQ(file.ReadAll(), "b1\n");
    EXPECT_EQ(file.ReadLn(), "b1");
    EXPECT_TRUE(file.Eof());
}

TEST_F(TextFileTest, WhatCannotBeOpenedClosesWhatWasOpen)
{
    temp.Put("a.txt", "a1\n");
    for (const wxString& path : {Name("missing"), Name("missing/a.txt")}) {
        ASSERT_TRUE(file.Open(Name("a.txt")));
        EXPECT_FALSE(file.Open(path)) << path;
        EXPECT_FALSE(file.IsOpened());
        EXPECT_TRUE(file.Eof());
        EXPECT_EQ(file.ReadAll(), "");
        EXPECT_FALSE(file.WriteLn("x"));
    }
    for (const wxString& path : {Name("missing/a.txt"), wxString(), wxString("NOSUCHROOT:a.txt")})
        EXPECT_FALSE(file.Create(path)) << path;
    EXPECT_EQ(Bytes("a.txt"), "a1\n");
}

TEST_F(TextFileTest, ATextThatIsNoPathLeavesTheFileOpenAtItsStart)
{
    temp.Put("a.txt", "a1\na2\n");
    ASSERT_TRUE(file.Open(Name("a.txt")));
    for (const wxString& path : {wxString(), wxString("NOSUCHROOT:a.txt"), wxString(L"a\0b", 3)}) {
        EXPECT_EQ(file.ReadLn(), "a1");
        EXPECT_FALSE(file.Open(path)) << path;
        EXPECT_TRUE(file.IsOpened());
        EXPECT_EQ(file.ReadLn(), "a1");
        EXPECT_FALSE(file.Create(path)) << path;
    }
    EXPECT_TRUE(file.WriteLn("a3"));
    EXPECT_EQ(Bytes("a.txt"), "a1\na2\na3\n");
}

TEST_F(TextFileTest, AClosedFileHasNothing)
{
    temp.Put("a.txt", "a1\n");
    file.Close();
    EXPECT_FALSE(file.IsOpened());
    EXPECT_TRUE(file.Eof());
    EXPECT_EQ(file.ReadLn() + file.ReadAll(), "");
    EXPECT_FALSE(file.Clear());
    EXPECT_FALSE(file.WriteLn("x"));
    ASSERT_TRUE(file.Open(Name("a.txt")));
    file.Close();
    EXPECT_FALSE(file.IsOpened());
    EXPECT_TRUE(file.Eof());
    EXPECT_EQ(file.ReadLn() + file.ReadAll(), "");
    EXPECT_FALSE(file.Clear());
    EXPECT_FALSE(file.WriteLn("x"));
    EXPECT_EQ(Bytes("a.txt"), "a1\n");
}

TEST_F(TextFileTest, EveryWriteLnWritesTheWholeFile)
{
    ASSERT_TRUE(file.Create(Name("new.txt")));
    EXPECT_EQ(Bytes("new.txt"), "");
    EXPECT_TRUE(file.WriteLn("one"));
    EXPECT_EQ(Bytes("new.txt"), "one\n");
    EXPECT_TRUE(file.WriteLn(L"zw\u00f6lf \u20ac \U0001f600"));
    EXPECT_EQ(Bytes("new.txt"), "one\nzw\xc3\xb6lf \xe2\x82\xac \xf0\x9f\x98\x80\n");
    EXPECT_EQ(file.ReadLn(), "one");
    EXPECT_TRUE(file.Clear());
    EXPECT_EQ(Bytes("new.txt"), "");
    EXPECT_TRUE(file.Eof());
    EXPECT_TRUE(file.WriteLn("again"));
    EXPECT_EQ(Bytes("new.txt"), "again\n");
}

TEST_F(TextFileTest, AFileThatWasMadeIsWrittenNoMoreWhenClosed)
{
    ASSERT_TRUE(file.Create(Name("new.txt")));
    EXPECT_FALSE(file.IsOpened());
    EXPECT_TRUE(file.WriteLn("one"));
    file.Close();
    EXPECT_TRUE(file.Eof());
    EXPECT_FALSE(file.WriteLn("two"));
    EXPECT_FALSE(file.Clear());
    EXPECT_EQ(Bytes("new.txt"), "one\n");
}

TEST_F(TextFileTest, CreateNeverReplacesAFile)
{
    temp.Put("a.txt", "kept\n");
    EXPECT_FALSE(file.Create(Name("a.txt")));
    EXPECT_FALSE(file.WriteLn("x"));
    EXPECT_EQ(Bytes("a.txt"), "kept\n");
    EXPECT_FALSE(file.Create(Name("no/such/folder")));
}

TEST_F(TextFileTest, LinesKeepTheirEndsAndNewOnesGetALineFeed)
{
    temp.Put("a.txt", "a\r\nb\nc\rd");
    ASSERT_TRUE(file.Open(Name("a.txt")));
    EXPECT_EQ(file.ReadAll(), "a\nb\nc\nd\n");
    EXPECT_TRUE(file.WriteLn("e"));
    EXPECT_EQ(Bytes("a.txt"), "a\r\nb\nc\rde\n");
    EXPECT_EQ(file.ReadAll(), "a\nb\nc\nd\ne\n");
}

struct Encoded
{
    const char* name;
    std::string bytes;
};

class TextFileEncodingTest : public TextFileTest, public ::testing::WithParamInterface<Encoded>
{};

TEST_P(TextFileEncodingTest, IsDetected)
{
    temp.Put("a.txt", GetParam().bytes);
    ASSERT_TRUE(file.Open(Name("a.txt")));
    EXPECT_EQ(file.ReadLn(), L"gr\u00fcn");
    EXPECT_EQ(file.ReadLn(), "2");
    EXPECT_TRUE(file.Eof());
    EXPECT_TRUE(file.WriteLn("3"));
    EXPECT_EQ(Bytes("a.txt"), "gr\xc3\xbcn\n2\n3\n");
}

INSTANTIATE_TEST_SUITE_P(
    Of, TextFileEncodingTest,
    ::testing::Values(Encoded{"Utf8", "gr\xc3\xbcn\n2\n"}, Encoded{"Utf8WithAMark", "\xef\xbb\xbfgr\xc3\xbcn\n2\n"},
                      Encoded{"Latin1", "gr\xfcn\n2\n"},
                      Encoded{"Utf16LittleEndian", std::string("\xff\xfeg\0r\0\xfc\0n\0\n\0002\0\n\0", 16)},
                      Encoded{"Utf16BigEndian", std::string("\xfe\xff\0g\0r\0\xfc\0n\0\n\0002\0\n", 16)},
                      Encoded{"Utf32LittleEndian",
                              std::string("\xff\xfe\0\0g\0\0\0r\0\0\0\xfc\0\0\0n\0\0\0\n\0\0\0002\0\0\0\n\0\0\0", 32)}),
    NameOfRow<Encoded>);

TEST_F(TextFileTest, AFileThatCannotBeWrittenFails)
{
    temp.Put("folder/a.txt", "one\n");
    ASSERT_TRUE(file.Open(Name("folder/a.txt")));
    std::filesystem::remove_all(temp.Path("folder"));
    EXPECT_FALSE(file.WriteLn("x"));
    EXPECT_FALSE(file.Clear());
    EXPECT_FALSE(std::filesystem::exists(temp.Path("folder")));
}

TEST_F(TextFileTest, TheLogSaysWhatCouldNotBeDone)
{
    const wxString path = Name("nowhere/a.txt");
    EXPECT_FALSE(file.Create(path));
    EXPECT_FALSE(file.Open(path));
    const std::vector<wxString> errors = log.Errors();
    ASSERT_EQ(errors.size(), 2U);
    EXPECT_TRUE(errors[0].StartsWith("can't create file '" + path + "'")) << errors[0];
    EXPECT_TRUE(errors[1].StartsWith("can't open file '" + path + "'")) << errors[1];
}

TEST_F(TextFileTest, AFolderIsNoFile)
{
    EXPECT_FALSE(file.Open(FromSystemName(temp.Path())));
    EXPECT_FALSE(file.Create(FromSystemName(temp.Path())));
}

TEST_F(TextFileTest, APathMayStartAtANamedRoot)
{
    temp.Put("a.txt", "one\n");
    ASSERT_TRUE(CDir::SetRoot("TEXTFILETEST", FromSystemName(temp.Path())));
    EXPECT_TRUE(file.Open("TEXTFILETEST:a.txt"));
    EXPECT_TRUE(file.Create("TEXTFILETEST:b.txt"));
    EXPECT_TRUE(std::filesystem::exists(temp.Path("b.txt")));
    ASSERT_TRUE(CDir::SetRoot("TEXTFILETEST", ""));
}

TEST_F(TextFileTest, NamesMayHoldAnyCharacters)
{
    const wxString name = Name("gr\xc3\xbcn \xe2\x82\xac.txt");
    EXPECT_TRUE(file.Create(name));
    EXPECT_TRUE(file.WriteLn("1"));
    EXPECT_EQ(Bytes("gr\xc3\xbcn \xe2\x82\xac.txt"), "1\n");
    EXPECT_TRUE(file.Open(name));
    EXPECT_EQ(file.ReadLn(), "1");
}

TEST_F(TextFileTest, ScriptUsesItLikeTheHost)
{
    temp.Put("a.txt", "one\ntwo\n");
    EXPECT_EQ(Show("[f.IsOpened(), f.Eof(), f.Open(dir + 'a.txt'), f.IsOpened(), f.ReadLn(), f.Eof(), f.ReadAll(),"
                   " f.WriteLn('three'), f.ReadLn(), f.ReadLn(), f.Eof(), f.Close(), f.ReadLn(), f.Eof()].join('|')"),
              "false|true|true|true|one|false|one\ntwo\n|true|two|three|true|||true");
    EXPECT_EQ(Bytes("a.txt"), "one\ntwo\nthree\n");
    EXPECT_EQ(Show("[f.Create(dir + 'b.txt'), f.WriteLn('x'), f.Clear(), f.WriteLn(5), f.Create(dir + 'b.txt')]"
                   ".join()"),
              "true,true,true,true,false");
    EXPECT_EQ(Bytes("b.txt"), "5\n");
    EXPECT_EQ(Show("f.StrToUpper('built in') + (f instanceof TextFile)"), "BUILT INtrue");
}

TEST_F(TextFileTest, ScriptIsToldOfWrongCalls)
{
    for (const char* const call : {"Open", "Create", "WriteLn"})
        EXPECT_EQ(Show(wxString::Format("try { f.%s() } catch (e) { e.message }", call)),
                  wxString::Format("Bad argument count for function '%s' (0 instead of 1)", call));
    for (const char* const call : {"IsOpened", "Close", "Eof", "ReadLn", "ReadAll", "Clear"})
        EXPECT_EQ(Show(wxString::Format("try { f.%s(1) } catch (e) { e.message }", call)),
                  wxString::Format("Bad argument count for function '%s' (1 instead of 0)", call));
    EXPECT_EQ(Show("try { new TextFile('a') } catch (e) { e.message }"),
              "Bad argument count for function 'TextFile' (1 instead of 0)");
}

TEST_F(TextFileTest, LinesAreCutAsWxTextFileCutsThem)
{
    // All texts of up to 5 characters that mix the line ends with each other and with what stands between.
    const std::string alphabet = "a\n\r";
    std::vector<std::string> texts = {"", "\xef\xbb\xbf",
                                      "\xef\xbb\xbf"
                                      "a",
                                      "\xff\xfe"
                                      "a",
                                      "\xc3\xa4\n\xff"};
    for (size_t first = 0, length = 1; length <= 5; ++length) {
        const size_t last = texts.size();
        for (size_t i = length == 1 ? 0 : first; i < (length == 1 ? 1 : last); ++i)
            for (const char letter : alphabet)
                texts.push_back(texts[i] + letter);
        first = last;
    }
    for (const std::string& text : texts) {
        temp.Put("a.txt", text);
        wxTextFile reference;
        ASSERT_TRUE(reference.Open(Name("a.txt"), wxConvAuto()));
        ASSERT_TRUE(file.Open(Name("a.txt")));
        wxString expected;
        for (size_t i = 0; i < reference.GetLineCount(); ++i)
            expected << reference.GetLine(i) << "\n";
        EXPECT_EQ(expected, file.ReadAll());
        std::string written;
        for (size_t i = 0; i < reference.GetLineCount(); ++i)
            written += ToUtf8(reference.GetLine(i) + wxTextFile::GetEOL(reference.GetLineType(i)));
        ASSERT_TRUE(file.WriteLn("z"));
        EXPECT_EQ(written + "z\n", Bytes("a.txt"));
    }
}

} // namespace
