#include "base/dir.h"
#include "tests/base/base_test_support.h"
#include "tests/support/log_capture.h"

namespace
{

class DirTest : public TempDirTest
{};

/// Changes the current directory for its lifetime.
class ScopedCurrent
{
public:
    explicit ScopedCurrent(const std::string& path) : m_old(::open(".", O_PATH | O_CLOEXEC))
    {
        EXPECT_EQ(0, ::chdir(path.c_str()));
    }
    ~ScopedCurrent()
    {
        EXPECT_EQ(0, ::fchdir(m_old));
        ::close(m_old);
    }
    ScopedCurrent(const ScopedCurrent&) = delete;
    ScopedCurrent& operator=(const ScopedCurrent&) = delete;

private:
    int m_old;
};

} // namespace

TEST_F(DirTest, TheDefaultIsTheDirectoryThatIsCurrentNow)
{
    CDir dir;
    {
        const ScopedCurrent current(Path());
        const CDir inside;
        EXPECT_EQ(Name(), inside.GetFullPath());
        EXPECT_TRUE(inside.Ok());
        dir = inside;
    }
    EXPECT_EQ(Name(), dir.GetFullPath());
    EXPECT_EQ(CDir().GetFullPath(), CDir(wxString()).GetFullPath());
}

TEST_F(DirTest, ADeletedCurrentDirectoryIsNotOk)
{
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    Put("f", "x");
    const ScopedCurrent current(Path("d"));
    ASSERT_EQ(0, ::rmdir(Path("d").c_str()));
    CDir dir;
    EXPECT_FALSE(dir.Ok());
    EXPECT_EQ("", dir.GetFullPath());
    EXPECT_FALSE(dir.OpenFile("f", wxFile::read).IsOpened());
    EXPECT_TRUE(dir.OpenFile(Name("f"), wxFile::read).IsOpened());
}

TEST_F(DirTest, TheFullPathIsAbsoluteAndNormal)
{
    EXPECT_EQ("/", CDir("/").GetFullPath());
    EXPECT_EQ("/a/b", CDir("/a//./b/").GetFullPath());
    EXPECT_EQ("/b", CDir("/a/../b").GetFullPath());
    EXPECT_EQ("/", CDir("/../..").GetFullPath());
    const ScopedCurrent current(Path());
    EXPECT_EQ(Name("x"), CDir("x").GetFullPath());
    EXPECT_EQ(Name("x"), CDir("./y/../x/").GetFullPath());
}

TEST_F(DirTest, IsOkWhileItIsADirectory)
{
    Put("f", "x");
    const CDir dir(Name("d"));
    EXPECT_FALSE(dir.Ok());
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    EXPECT_TRUE(dir.Ok());
    EXPECT_FALSE(CDir(Name("f")).Ok());
    EXPECT_FALSE(CDir(wxString(L"a\0b", 3)).Ok());
}

TEST_F(DirTest, CopiesAreEqualAndIndependent)
{
    Put("f", "\xc3\xa9");
    CDir dir = Dir();
    dir.SetAutoFileCode(CDir::codeUtf8);
    CDir copy(dir);
    CDir assigned;
    assigned = dir;
    EXPECT_EQ(dir.GetFullPath(), copy.GetFullPath());
    EXPECT_EQ(dir.GetFullPath(), assigned.GetFullPath());
    Put("bad", "\xff");
    EXPECT_EQ(std::nullopt, Text(copy, "bad"));
    copy.SetAutoFileCode(CDir::codeDetect);
    EXPECT_EQ(wxString(wxUniChar(0xff)), Text(copy, "bad"));
    EXPECT_EQ(std::nullopt, Text(dir, "bad"));
    EXPECT_EQ(std::nullopt, Text(assigned, "bad"));
}

TEST_F(DirTest, HasRunTimeClassInformation)
{
    EXPECT_STREQ(wxT("CDir"), CDir().GetClassInfo()->GetClassName());
    EXPECT_STREQ(wxT("CFile"), CFile().GetClassInfo()->GetClassName());
}

TEST_F(DirTest, OpenFileIsRelativeToTheDirectory)
{
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    Put("d/f", "inner");
    Put("f", "outer");
    EXPECT_EQ("inner", Text(CDir(Name("d")), "f"));
    EXPECT_EQ("outer", Text(CDir(Name("d")), "../f"));
    EXPECT_EQ("inner", Text(Dir(), "d/f"));
}

TEST_F(DirTest, OpenFileUsesAnAbsoluteNameAsItIs)
{
    Put("f", "x");
    EXPECT_EQ("x", Text(CDir("/nonexistent"), Name("f")));
}

TEST_F(DirTest, OpenFileOfAnythingThatCannotBeReadIsNotOpenAndLogsNothing)
{
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    ASSERT_EQ(0, ::symlink("loop", Path("loop").c_str()));
    Put("f", "x");
    const LogCapture log;
    for (const wxString& name :
         {wxString(), wxString("missing"), wxString("d"), wxString("d/"), wxString("."), wxString("f/"),
          wxString("f/x"), wxString("loop"), wxString(L"f\0", 2), wxString('x', 5000)})
        EXPECT_FALSE(Dir().OpenFile(name, wxFile::read).IsOpened()) << name;
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(DirTest, OpenFileWithoutPermissionIsNotOpen)
{
    Put("f", "x");
    ASSERT_EQ(0, ::chmod(Path("f").c_str(), 0));
    Child child([&] {
        if (::geteuid() == 0 && ::seteuid(65534) != 0)
            return 2;
        return Dir().OpenFile("f", wxFile::read).IsOpened() ? 1 : 0;
    });
    EXPECT_EQ(0, child.Wait());
}

TEST_F(DirTest, NamesAreUtf8AndOtherBytesSurvive)
{
    Put("\xc3\xa9", "accent");
    Put("\xff\xfe", "bytes");
    EXPECT_EQ("accent", Text(Dir(), wxString(wxUniChar(0xe9))));
    EXPECT_EQ("bytes", Text(Dir(), FromSystemName("\xff\xfe")));
}

TEST_F(DirTest, OpenFileReadsPipes)
{
    ASSERT_EQ(0, ::mkfifo(Path("pipe").c_str(), 0600));
    Child writer([&] {
        const int pipe = ::open(Path("pipe").c_str(), O_WRONLY);
        for (const char* piece : {"one\n", "tw", "o\n", "\xc3", "\xa9"}) {
            if (::write(pipe, piece, std::char_traits<char>::length(piece)) < 0)
                return 1;
            ::usleep(2000);
        }
        return 0;
    });
    EXPECT_EQ("one\ntwo\n" + wxString(wxUniChar(0xe9)), Text(Dir(), "pipe"));
    EXPECT_EQ(0, writer.Wait());
}

TEST_F(DirTest, OpenFileReadsDevices)
{
    EXPECT_EQ("", Text(CDir("/dev"), "null"));
}

TEST_F(DirTest, OpenFileReadsFilesThatHaveNoSizeBeforehand)
{
    const std::optional<wxString> text = Text(CDir("/proc"), "version");
    ASSERT_TRUE(text);
    EXPECT_TRUE(text->Contains("Linux"));
}

TEST_F(DirTest, TheOtherOpenModesActInPlace)
{
    CFile file = Dir().OpenFile("f", wxFile::write);
    ASSERT_TRUE(Write(file, "one"));
    EXPECT_EQ(nullptr, file.GetInputStream());
    EXPECT_TRUE(file.Close());
    file = Dir().OpenFile("f", wxFile::write_append);
    ASSERT_TRUE(Write(file, "+two"));
    file = CFile();
    EXPECT_EQ("one+two", Bytes("f"));
    EXPECT_FALSE(Dir().OpenFile("f", wxFile::write_excl).IsOpened());
    EXPECT_FALSE(Dir().OpenFile("missing", wxFile::read_write).IsOpened());
    file = Dir().OpenFile("f", wxFile::read_write);
    char bytes[4] = {};
    file.GetInputStream()->Read(bytes, 3);
    EXPECT_STREQ("one", bytes);
    ASSERT_TRUE(Write(file, "-"));
    wxString rest;
    EXPECT_TRUE(file.Read(rest));
    EXPECT_EQ("two", rest);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ("one-two", Bytes("f"));
}

TEST_F(DirTest, DeleteFileDeletesFilesAndLinksOnly)
{
    Put("f", "x");
    ASSERT_EQ(0, ::symlink("f", Path("link").c_str()));
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    CDir dir = Dir();
    EXPECT_TRUE(dir.DeleteFileW("link"));
    EXPECT_EQ("x", Bytes("f"));
    EXPECT_TRUE(dir.DeleteFileW("f"));
    EXPECT_FALSE(dir.DeleteFileW("f"));
    EXPECT_FALSE(dir.DeleteFileW("d"));
    EXPECT_FALSE(dir.DeleteFileW(""));
    EXPECT_EQ((std::set<std::string>{"d"}), Names());
}

TEST_F(DirTest, RenameFileReplacesAFileOfTheName)
{
    Put("a", "new");
    Put("b", "old");
    CDir dir = Dir();
    EXPECT_TRUE(dir.RenameFile("a", "b"));
    EXPECT_EQ("new", Bytes("b"));
    EXPECT_FALSE(dir.RenameFile("a", "c"));
    EXPECT_FALSE(dir.RenameFile("b", ""));
    EXPECT_FALSE(dir.RenameFile("", "b"));
    EXPECT_EQ((std::set<std::string>{"b"}), Names());
}
