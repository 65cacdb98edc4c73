#include "base/atomic_file_detail.h"
#include "tests/base/base_test_support.h"

#include <sys/mount.h>

namespace
{

using Set = std::set<std::string>;

class DirBackupTest : public TempDirTest
{
protected:
    bool BackUp(const wxString& name = "f", const wxString& backup = "b") const
    {
        return Dir().BackUpFile(name, backup);
    }

    bool Save(const wxString& name, const std::string& bytes) const
    {
        CFile file = Dir().CreateFileW(name, true);
        return Write(file, bytes) && file.Close();
    }

    bool AreOne(const std::string& first, const std::string& second) const
    {
        return std::filesystem::equivalent(Path(first), Path(second));
    }
};

} // namespace

TEST_F(DirBackupTest, ABackupHoldsWhatTheFileHoldsAndTheFileStays)
{
    Put("f", "new");
    Put("b", "old");
    EXPECT_TRUE(BackUp());
    EXPECT_EQ("new", Bytes("f"));
    EXPECT_EQ("new", Bytes("b"));
    EXPECT_EQ((Set{"f", "b"}), Names());
}

TEST_F(DirBackupTest, ItStaysWhenTheFileGetsANewContent)
{
    Put("f", "old");
    ASSERT_TRUE(BackUp());
    ASSERT_TRUE(Save("f", "new"));
    EXPECT_EQ("new", Bytes("f"));
    EXPECT_EQ("old", Bytes("b"));
}

TEST_F(DirBackupTest, BackingUpTwiceLeavesNothingElseBehind)
{
    Put("f", "x");
    EXPECT_TRUE(BackUp());
    EXPECT_TRUE(AreOne("f", "b"));
    EXPECT_TRUE(BackUp());
    EXPECT_EQ((Set{"f", "b"}), Names());
}

TEST_F(DirBackupTest, WhatAKilledOneLeftGoesWithTheNext)
{
    Put("f", "one");
    // A second name of the file, and a copy of it.
    for (const bool linked : {true, false}) {
        std::string draft;
        {
            const auto writer = vcq::detail::AtomicFile::Create(Path("b"), true, vcq::detail::AtomicFile::Draft::named);
            Set names = Names();
            names.erase("f");
            names.erase("b");
            ASSERT_EQ(1u, names.size());
            draft = *names.begin();
        }
        if (linked)
            std::filesystem::create_hard_link(Path("f"), Path(draft));
        else
            Put(draft, "on");
        EXPECT_TRUE(Dir().BackUpFile("f", "b"));
        EXPECT_EQ((Set{"f", "b"}), Names());
        EXPECT_EQ("one", Bytes("b"));
    }
}

TEST_F(DirBackupTest, ItHasThePermissionsOfTheFile)
{
    for (const bool linked : {false, true}) {
        std::filesystem::remove(Path("b"));
        Put("d", "x");
        ASSERT_EQ(0, ::chmod(Path("d").c_str(), 0640));
        Put("b", "old");
        ASSERT_EQ(0, ::chmod(Path("b").c_str(), 0666));
        const bool ready = !linked || ::symlink("d", Path("f").c_str()) == 0;
        ASSERT_TRUE(ready);
        EXPECT_TRUE(BackUp(linked ? "f" : "d"));
        EXPECT_EQ(mode_t(0640), ModeOf(Path("b")));
    }
}

TEST_F(DirBackupTest, WhatALinkLeadsToIsCopied)
{
    Put("target", std::string(200000, 'x'));
    ASSERT_EQ(0, ::symlink("target", Path("f").c_str()));
    EXPECT_TRUE(BackUp());
    EXPECT_EQ(std::string(200000, 'x'), Bytes("b"));
    EXPECT_FALSE(AreOne("f", "b"));
    EXPECT_EQ((Set{"f", "b", "target"}), Names());
}

TEST_F(DirBackupTest, ABackupThatIsALinkStaysOne)
{
    Put("f", "new");
    Put("target", "old");
    ASSERT_EQ(0, ::symlink("target", Path("b").c_str()));
    EXPECT_TRUE(BackUp());
    EXPECT_TRUE(std::filesystem::is_symlink(Path("b")));
    EXPECT_EQ("new", Bytes("target"));
}

TEST_F(DirBackupTest, OnAnotherFileSystemItIsACopy)
{
    ASSERT_EQ(0, ::mkdir(Path("disk").c_str(), 0755));
    const bool mounted = ::mount("none", Path("disk").c_str(), "tmpfs", 0, "size=64k") == 0;
    Put("f", "x");
    EXPECT_TRUE(BackUp("f", "disk/b"));
    EXPECT_EQ("x", Bytes("disk/b"));
    EXPECT_EQ(AreOne("f", "disk/b"), !mounted);
    Put("f", std::string(200000, 'x'));
    if (mounted) {
        EXPECT_FALSE(BackUp("f", "disk/b"));
        EXPECT_EQ("x", Bytes("disk/b"));
        EXPECT_EQ((Set{"disk", "disk/b", "f"}), Names());
        EXPECT_EQ(0, ::umount(Path("disk").c_str()));
    }
}

TEST_F(DirBackupTest, WhatIsNoRegularFileHasNoBackup)
{
    Put("b", "old");
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    ASSERT_EQ(0, ::mkfifo(Path("pipe").c_str(), 0600));
    ASSERT_EQ(0, ::symlink("nowhere", Path("dangling").c_str()));
    for (const char* name : {"missing", "d", "pipe", "dangling", "/dev/null", ""})
        EXPECT_FALSE(BackUp(name)) << name;
    EXPECT_EQ("old", Bytes("b"));
    EXPECT_EQ((Set{"b", "d", "pipe", "dangling"}), Names());
}

TEST_F(DirBackupTest, WhereTheBackupCannotBeNothingChanges)
{
    Put("f", "x");
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    ASSERT_EQ(0, ::mkfifo(Path("pipe").c_str(), 0600));
    for (const char* name : {"d", "pipe", "missing/b", "", "f/b"})
        EXPECT_FALSE(BackUp("f", name)) << name;
    EXPECT_FALSE(BackUp("f", wxString('x', 300)));
    EXPECT_EQ((Set{"d", "f", "pipe"}), Names());
    EXPECT_EQ("x", Bytes("f"));
}

TEST_F(DirBackupTest, ArchivesHaveNoBackups)
{
    CDir archive = CDir::ExtractDir("zip:" + Name("a.zip"), "", "");
    EXPECT_FALSE(archive.BackUpFile("f", "b"));
    EXPECT_EQ(CDir::foundNothing, archive.FindFile("f"));
    EXPECT_EQ(wxString(), archive.GetRealPath("f"));
}

TEST_F(DirBackupTest, WhatIsUnderANameIsFound)
{
    Put("f", "x");
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    ASSERT_EQ(0, ::symlink("f", Path("link").c_str()));
    ASSERT_EQ(0, ::symlink("nowhere", Path("dangling").c_str()));
    ASSERT_EQ(0, ::symlink("circle", Path("circle").c_str()));
    EXPECT_EQ(CDir::foundFile, Dir().FindFile("f"));
    EXPECT_EQ(CDir::foundFile, Dir().FindFile("link"));
    EXPECT_EQ(CDir::foundFile, CDir("/").FindFile(Name("f")));
    EXPECT_EQ(CDir::foundOther, Dir().FindFile("d"));
    EXPECT_EQ(CDir::foundOther, Dir().FindFile("/dev/null"));
    EXPECT_EQ(CDir::foundOther, Dir().FindFile("circle")) << "the system does not say";
    EXPECT_EQ(CDir::foundNothing, Dir().FindFile("missing"));
    EXPECT_EQ(CDir::foundNothing, Dir().FindFile("f/missing"));
    EXPECT_EQ(CDir::foundNothing, Dir().FindFile("dangling"));
    EXPECT_EQ(CDir::foundNothing, Dir().FindFile(""));
}

TEST_F(DirBackupTest, AStampChangesWithTheFileAndItsContent)
{
    EXPECT_EQ("", Dir().GetFileStamp("f"));
    EXPECT_EQ("", Dir().GetFileStamp("."));
    ASSERT_TRUE(Save("f", "x"));
    const std::string first = Dir().GetFileStamp("f");
    EXPECT_NE("", first);
    EXPECT_EQ(first, Dir().GetFileStamp("f"));
    ASSERT_TRUE(Save("f", "y"));
    const std::string second = Dir().GetFileStamp("f");
    EXPECT_NE(first, second);
    Put("f", "longer");
    EXPECT_NE(second, Dir().GetFileStamp("f"));
}

TEST_F(DirBackupTest, OneFileHasOneRealPath)
{
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    ASSERT_EQ(0, ::symlink("d", Path("way").c_str()));
    ASSERT_EQ(0, ::symlink("d/f", Path("link").c_str()));
    for (const bool exists : {false, true}) {
        if (exists)
            Put("d/f", "x");
        for (const char* name : {"d/f", "way/f", "link", "way/../d/./f"})
            EXPECT_EQ(Name("d/f"), Dir().GetRealPath(name)) << name;
        EXPECT_EQ(Name("d/f"), CDir(Name("way")).GetRealPath("f"));
    }
    EXPECT_EQ(Name("missing/f"), Dir().GetRealPath("missing/f"));
    EXPECT_EQ(wxString(), Dir().GetRealPath(""));
}
