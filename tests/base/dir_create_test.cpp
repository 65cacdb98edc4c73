#include "base/atomic_file_detail.h"
#include "tests/base/base_test_support.h"

#include <sys/mount.h>
#include <sys/resource.h>

using vcq::detail::AtomicFile;
using vcq::detail::WriteAll;

namespace
{

using Set = std::set<std::string>;

class DirCreateTest : public TempDirTest
{
protected:
    static bool Save(CDir dir, const wxString& name, const std::string& bytes, bool replace = true)
    {
        CFile file = dir.CreateFileW(name, replace);
        return file.IsOpened() && Write(file, bytes) && file.Close();
    }

    /// The name of the draft that a writer of the target has where drafts need names.
    std::string DraftOf(const std::string& target) const
    {
        const Set before = Names();
        const auto file = AtomicFile::Create(Path(target), true, AtomicFile::Draft::named);
        for (const std::string& name : Names())
            if (before.count(name) == 0)
                return name;
        return "(none)";
    }
};

/// Restores the umask.
class ScopedUmask
{
public:
    explicit ScopedUmask(mode_t mask) : m_old(::umask(mask)) {}
    ~ScopedUmask() { ::umask(m_old); }
    ScopedUmask(const ScopedUmask&) = delete;
    ScopedUmask& operator=(const ScopedUmask&) = delete;

private:
    mode_t m_old;
};

} // namespace

TEST_F(DirCreateTest, AFileAppearsWhenItIsClosedAndNotBefore)
{
    CFile file = Dir().CreateFileW("new", false);
    ASSERT_TRUE(file.IsOpened());
    ASSERT_TRUE(Write(file, "content"));
    EXPECT_EQ(std::nullopt, Bytes("new"));
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.IsOpened());
    EXPECT_EQ("content", Bytes("new"));
    EXPECT_EQ(Set{"new"}, Names());
}

TEST_F(DirCreateTest, AnExistingFileIsReplacedWhenTheNewOneIsClosedAndNotBefore)
{
    Put("f", "old");
    CFile file = Dir().CreateFileW("f", true);
    ASSERT_TRUE(Write(file, "new"));
    EXPECT_EQ("old", Bytes("f"));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ("new", Bytes("f"));
    EXPECT_EQ(Set{"f"}, Names());
}

TEST_F(DirCreateTest, AnEmptyFileIsAFile)
{
    EXPECT_TRUE(Save(Dir(), "f", ""));
    EXPECT_EQ("", Bytes("f"));
}

TEST_F(DirCreateTest, AnExistingFileIsNotOpenedWithoutReplace)
{
    Put("f", "old");
    EXPECT_FALSE(Dir().CreateFileW("f", false).IsOpened());
    EXPECT_EQ("old", Bytes("f"));
}

TEST_F(DirCreateTest, AFileThatCameInBetweenIsNotReplacedWithoutReplace)
{
    CFile file = Dir().CreateFileW("f", false);
    ASSERT_TRUE(Write(file, "mine"));
    Put("f", "theirs");
    EXPECT_FALSE(file.Close());
    EXPECT_EQ("theirs", Bytes("f"));
    EXPECT_EQ(Set{"f"}, Names());
}

TEST_F(DirCreateTest, AFileThatCameInBetweenIsReplacedWithReplace)
{
    CFile file = Dir().CreateFileW("f", true);
    ASSERT_TRUE(Write(file, "mine"));
    Put("f", "theirs");
    EXPECT_TRUE(file.Close());
    EXPECT_EQ("mine", Bytes("f"));
}

TEST_F(DirCreateTest, AnUnclosedFileLeavesNothingBehind)
{
    Put("old", "old");
    {
        const CFile replaced = Dir().CreateFileW("old", true);
        const CFile created = Dir().CreateFileW("new", true);
        ASSERT_TRUE(Write(replaced, std::string(100000, 'x')));
        ASSERT_TRUE(Write(created, "x"));
    }
    EXPECT_EQ("old", Bytes("old"));
    EXPECT_EQ(Set{"old"}, Names());
}

TEST_F(DirCreateTest, AFileClosedTwiceIsPublishedOnce)
{
    CFile file = Dir().CreateFileW("f", true);
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.Close());
    EXPECT_EQ("", Bytes("f"));
}

TEST_F(DirCreateTest, LargeAndManySmallWritesArriveInOrder)
{
    CFile file = Dir().CreateFileW("f", true);
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const std::string piece = std::to_string(i) + std::string(i % 700 == 0 ? 100000 : i % 50, 'x');
        ASSERT_TRUE(Write(file, piece));
        expected += piece;
    }
    ASSERT_TRUE(file.Close());
    EXPECT_EQ(expected, Bytes("f"));
}

TEST_F(DirCreateTest, WhatWasWrittenCanBeSynchronisedAndIsStillUnpublished)
{
    CFile file = Dir().CreateFileW("f", true);
    ASSERT_TRUE(Write(file, "x"));
    file.GetOutputStream()->Sync();
    EXPECT_TRUE(file.GetOutputStream()->IsOk());
    EXPECT_EQ(Set{}, Names());
}

TEST_F(DirCreateTest, ANewFileHasThePermissionsThatTheUmaskAllows)
{
    const ScopedUmask umask(027);
    ASSERT_TRUE(Save(Dir(), "f", "x"));
    EXPECT_EQ(mode_t(0640), ModeOf(Path("f")));
}

TEST_F(DirCreateTest, AReplacedFileKeepsItsMode)
{
    const ScopedUmask umask(077);
    for (const mode_t mode : {0600, 0644, 0755, 0666, 04755}) {
        Put("f", "old");
        ASSERT_EQ(0, ::chmod(Path("f").c_str(), mode));
        ASSERT_TRUE(Save(Dir(), "f", "new"));
        EXPECT_EQ(mode, ModeOf(Path("f")));
        EXPECT_EQ("new", Bytes("f"));
    }
}

TEST_F(DirCreateTest, AReplacedFileKeepsItsOwner)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can write the files of others";
    Put("f", "old");
    ASSERT_EQ(0, ::chown(Path("f").c_str(), 1234, 4321));
    ASSERT_TRUE(Save(Dir(), "f", "new"));
    struct stat info = {};
    ASSERT_EQ(0, ::stat(Path("f").c_str(), &info));
    EXPECT_EQ(1234u, info.st_uid);
    EXPECT_EQ(4321u, info.st_gid);
}

TEST_F(DirCreateTest, AFileProtectedAgainstWritingIsNotReplaced)
{
    Put("f", "old");
    ASSERT_EQ(0, ::chmod(Path("f").c_str(), 0444));
    ASSERT_EQ(0, ::chmod(Path().c_str(), 0777));
    Child child([&] {
        if (::geteuid() == 0 && ::seteuid(65534) != 0)
            return 2;
        return Dir().CreateFileW("f", true).IsOpened() ? 1 : 0;
    });
    EXPECT_EQ(0, child.Wait());
    EXPECT_EQ("old", Bytes("f"));
}

TEST_F(DirCreateTest, ALinkAsTargetStaysAndWhatItLeadsToIsReplaced)
{
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    Put("d/target", "old");
    ASSERT_EQ(0, ::symlink("d/second", Path("first").c_str()));
    ASSERT_EQ(0, ::symlink("target", Path("d/second").c_str()));
    ASSERT_TRUE(Save(Dir(), "first", "new"));
    EXPECT_EQ("new", Bytes("d/target"));
    struct stat info = {};
    ASSERT_EQ(0, ::lstat(Path("first").c_str(), &info));
    EXPECT_TRUE(S_ISLNK(info.st_mode));
    EXPECT_EQ((Set{"d", "d/second", "d/target", "first"}), Names());
}

TEST_F(DirCreateTest, ALinkToNothingIsFollowedToo)
{
    ASSERT_EQ(0, ::symlink(Path("target").c_str(), Path("link").c_str()));
    ASSERT_TRUE(Save(Dir(), "link", "new", false));
    EXPECT_EQ("new", Bytes("target"));
    EXPECT_EQ((Set{"link", "target"}), Names());
}

TEST_F(DirCreateTest, LinksInACircleAreNotOpened)
{
    ASSERT_EQ(0, ::symlink("b", Path("a").c_str()));
    ASSERT_EQ(0, ::symlink("a", Path("b").c_str()));
    EXPECT_FALSE(Dir().CreateFileW("a", true).IsOpened());
}

TEST_F(DirCreateTest, WhatCannotBeCreatedIsNotOpen)
{
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    Put("f", "old");
    for (const wxString& name : {wxString(), wxString("d"), wxString("d/"), wxString("missing/f"), wxString("f/x"),
                                 wxString("new/"), wxString(L"n\0ul", 4), wxString('x', 300)})
        EXPECT_FALSE(Dir().CreateFileW(name, true).IsOpened()) << name;
    EXPECT_EQ((Set{"d", "f"}), Names());
}

TEST_F(DirCreateTest, AnAbsoluteNameIsUsedAsItIs)
{
    ASSERT_TRUE(Save(CDir("/"), Name("f"), "x"));
    EXPECT_EQ("x", Bytes("f"));
}

TEST_F(DirCreateTest, ANameAsLongAsTheFileSystemTakesIsWritten)
{
    const std::string name(255, 'n');
    ASSERT_TRUE(Save(Dir(), name, "x"));
    ASSERT_TRUE(Save(Dir(), name, "y"));
    EXPECT_EQ("y", Bytes(name));
}

TEST_F(DirCreateTest, ADeviceIsWrittenToDirectly)
{
    struct stat before = {};
    ASSERT_EQ(0, ::stat("/dev/null", &before));
    EXPECT_TRUE(Save(CDir(), "/dev/null", "x"));
    EXPECT_FALSE(CDir().CreateFileW("/dev/null", false).IsOpened());
    struct stat after = {};
    ASSERT_EQ(0, ::stat("/dev/null", &after));
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_TRUE(S_ISCHR(after.st_mode));
}

TEST_F(DirCreateTest, APipeIsWrittenToDirectly)
{
    ASSERT_EQ(0, ::mkfifo(Path("pipe").c_str(), 0600));
    const int reader = ::open(Path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_TRUE(Save(Dir(), "pipe", "x"));
    char bytes[2] = {};
    EXPECT_EQ(1, ::read(reader, bytes, 2));
    EXPECT_STREQ("x", bytes);
    ::close(reader);
}

TEST_F(DirCreateTest, AnOpenDescriptorIsWrittenToDirectly)
{
    const int fd = ::open(Path("f").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    EXPECT_TRUE(Save(CDir(), "/dev/fd/" + std::to_string(fd), "x"));
    struct stat opened = {};
    ASSERT_EQ(0, ::fstat(fd, &opened));
    EXPECT_EQ(1, opened.st_size);
    ::close(fd);
}

TEST_F(DirCreateTest, AFullDeviceFailsTheClose)
{
    CFile small = CDir().CreateFileW("/dev/full", true);
    ASSERT_TRUE(Write(small, "x"));
    EXPECT_FALSE(small.Close());
    CFile large = CDir().CreateFileW("/dev/full", true);
    EXPECT_FALSE(Write(large, std::string(200000, 'x')));
    EXPECT_TRUE(large.Error());
    EXPECT_FALSE(Write(large, "x"));
    EXPECT_FALSE(large.Close());
}

TEST_F(DirCreateTest, AFileThatIsNotFullyWrittenIsNotPublished)
{
    Put("old", "old");
    Child child([&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {1000, 1000};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return 9;
        int published = 0;
        for (const char* name : {"old", "new"}) {
            for (const size_t size : {size_t(1001), size_t(500000)}) {
                CFile file = Dir().CreateFileW(name, true);
                Write(file, std::string(size, 'x'));
                published += file.Close() ? 1 : 0;
            }
        }
        return published;
    });
    EXPECT_EQ(0, child.Wait());
    EXPECT_EQ("old", Bytes("old"));
    EXPECT_EQ(Set{"old"}, Names());
}

TEST_F(DirCreateTest, AFullDiskKeepsTheOldFileWhole)
{
    ASSERT_EQ(0, ::mkdir(Path("disk").c_str(), 0755));
    if (::mount("none", Path("disk").c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "not allowed to mount a small disk";
    Put("disk/f", "old");
    CFile file = Dir().CreateFileW("disk/f", true);
    EXPECT_TRUE(file.IsOpened());
    EXPECT_FALSE(Write(file, std::string(200000, 'x')));
    EXPECT_FALSE(file.Close());
    file = CFile();
    EXPECT_EQ("old", Bytes("disk/f"));
    EXPECT_EQ((Set{"disk", "disk/f"}), Names());
    EXPECT_TRUE(Save(Dir(), "disk/f", "new"));
    EXPECT_EQ(0, ::umount(Path("disk").c_str()));
}

TEST_F(DirCreateTest, ADirectoryRemovedMeanwhileFailsTheClose)
{
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    CFile file = Dir().CreateFileW("d/f", true);
    ASSERT_TRUE(Write(file, "x"));
    ASSERT_EQ(0, ::rmdir(Path("d").c_str()));
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(Set{}, Names());
}

TEST_F(DirCreateTest, ATargetThatBecameADirectoryFailsTheClose)
{
    CFile file = Dir().CreateFileW("f", true);
    ASSERT_EQ(0, ::mkdir(Path("f").c_str(), 0755));
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(Set{"f"}, Names());
}

TEST_F(DirCreateTest, AKilledWriterLeavesTheOldFileAndNoNewName)
{
    Put("old", "old");
    Signal half;
    Child writer([&] {
        const CFile replaced = Dir().CreateFileW("old", true);
        const CFile created = Dir().CreateFileW("new", true);
        if (Write(replaced, std::string(300000, 'x')) && Write(created, std::string(300000, 'x')))
            half.Raise();
        ::pause();
        return 0;
    });
    ASSERT_TRUE(half.Await());
    writer.Kill();
    EXPECT_EQ("old", Bytes("old"));
    EXPECT_EQ(Set{"old"}, Names());
}

TEST_F(DirCreateTest, AReaderAlwaysSeesACompleteFile)
{
    const auto state = [](int i) {
        return std::to_string(i) + std::string(20000 + i * 100, static_cast<char>('a' + i % 26));
    };
    Put("f", state(0));
    Child writer([&] {
        for (int i = 1; i <= 200; ++i) {
            if (!Save(Dir(), "f", state(i)))
                return 1;
        }
        return 0;
    });
    int reads = 0;
    for (; writer.IsRunning(); ++reads) {
        const std::optional<std::string> seen = Bytes("f");
        ASSERT_TRUE(seen);
        ASSERT_EQ(state(std::stoi(*seen)), *seen);
    }
    EXPECT_GT(reads, 0);
    EXPECT_EQ(state(200), Bytes("f"));
    EXPECT_EQ(Set{"f"}, Names());
}

TEST_F(DirCreateTest, WhereFilesNeedANameTheDraftIsHiddenAndGoesWithTheWriter)
{
    Put("old", "old");
    for (const char* name : {"old", "new"}) {
        const auto file = AtomicFile::Create(Path(name), true, AtomicFile::Draft::named);
        ASSERT_TRUE(file);
        ASSERT_TRUE(WriteAll(file->Descriptor(), "x", 1));
        Set drafts = Names();
        drafts.erase("old");
        ASSERT_EQ(1u, drafts.size());
        EXPECT_EQ(0u, drafts.begin()->find(".vcq-"));
    }
    EXPECT_EQ(Set{"old"}, Names());
    EXPECT_EQ("old", Bytes("old"));
}

TEST_F(DirCreateTest, WhereFilesNeedANameTheyArePublishedTheSame)
{
    Put("old", "old");
    ASSERT_EQ(0, ::chmod(Path("old").c_str(), 0600));
    for (const char* name : {"old", "new"}) {
        const auto file = AtomicFile::Create(Path(name), true, AtomicFile::Draft::named);
        ASSERT_TRUE(WriteAll(file->Descriptor(), name, 3));
        EXPECT_TRUE(file->Commit());
        EXPECT_FALSE(file->Commit());
        EXPECT_EQ(name, Bytes(name));
    }
    EXPECT_EQ(mode_t(0600), ModeOf(Path("old")));
    const auto exclusive = AtomicFile::Create(Path("third"), false, AtomicFile::Draft::named);
    ASSERT_TRUE(exclusive);
    Put("third", "theirs");
    EXPECT_FALSE(exclusive->Commit());
    EXPECT_EQ("theirs", Bytes("third"));
}

TEST_F(DirCreateTest, TheDraftOfAKilledWriterGoesWithTheNextOneOfTheTarget)
{
    for (const char* const target : {"old", "new"}) {
        Put("old", "old");
        Signal open;
        Child writer([&] {
            const auto file = AtomicFile::Create(Path(target), true, AtomicFile::Draft::named);
            open.Raise();
            ::pause();
            return file ? 0 : 1;
        });
        ASSERT_TRUE(open.Await());
        EXPECT_EQ(2u, Names().size());
        EXPECT_TRUE(Save(Dir(), "another", "x"));
        ASSERT_EQ(0, ::unlink(Path("another").c_str()));
        writer.Kill();
        EXPECT_EQ(2u, Names().size()) << "it is nobody else's business";
        EXPECT_TRUE(Save(Dir(), target, "x"));
        EXPECT_EQ((Set{"old", target}), Names());
        ASSERT_EQ(0, ::unlink(Path(target).c_str()));
    }
}

TEST_F(DirCreateTest, TheDraftOfALivingWriterStays)
{
    const auto first = AtomicFile::Create(Path("f"), true, AtomicFile::Draft::named);
    ASSERT_TRUE(WriteAll(first->Descriptor(), "first", 5));
    const auto second = AtomicFile::Create(Path("f"), true, AtomicFile::Draft::named);
    ASSERT_TRUE(WriteAll(second->Descriptor(), "second", 6));
    EXPECT_EQ(2u, Names().size());
    EXPECT_TRUE(Save(Dir(), "f", "third"));
    EXPECT_EQ(3u, Names().size());
    EXPECT_TRUE(first->Commit());
    EXPECT_EQ("first", Bytes("f"));
    EXPECT_TRUE(second->Commit());
    EXPECT_EQ("second", Bytes("f"));
    EXPECT_EQ(Set{"f"}, Names());
}

TEST_F(DirCreateTest, AnyNumberOfWritersOfOneTargetHaveTheirDrafts)
{
    std::vector<std::unique_ptr<AtomicFile>> files;
    for (int i = 0; i < 20; ++i) {
        files.push_back(AtomicFile::Create(Path("f"), true, AtomicFile::Draft::named));
        ASSERT_TRUE(files.back());
    }
    EXPECT_EQ(20u, Names().size());
    for (const auto& file : files)
        EXPECT_TRUE(file->Commit());
    EXPECT_EQ(Set{"f"}, Names());
}

TEST_F(DirCreateTest, WhatOnlyHasTheNameOfADraftStays)
{
    const std::string draft = DraftOf("f");
    ASSERT_EQ(0u, draft.find(".vcq-"));
    const Set others = {draft.substr(0, draft.size() - 1), draft + "x", "x" + draft, ".vcq-.tmp"};
    for (const std::string& name : others)
        Put(name, "x");
    Put("elsewhere", "x");
    const std::vector<std::function<int(const char*)>> kinds = {
        [](const char* path) { return ::mkdir(path, 0700); },
        [](const char* path) { return ::mkfifo(path, 0600); },
        [](const char* path) { return ::symlink("elsewhere", path); },
    };
    for (const auto& make : kinds) {
        ASSERT_EQ(0, make(Path(draft).c_str()));
        EXPECT_TRUE(Save(Dir(), "f", "x"));
        const auto named = AtomicFile::Create(Path("f"), true, AtomicFile::Draft::named);
        ASSERT_TRUE(named) << "there are other names for drafts";
        EXPECT_TRUE(named->Commit());
        Set expected = others;
        expected.insert({"elsewhere", "f", draft});
        EXPECT_EQ(expected, Names());
        std::filesystem::remove(Path(draft));
    }
}

TEST_F(DirCreateTest, ADraftIsNeverOpenToMorePeopleThanTheFileItReplaces)
{
    Put("secret", "old");
    ASSERT_EQ(0, ::chmod(Path("secret").c_str(), 0600));
    const auto file = AtomicFile::Create(Path("secret"), true, AtomicFile::Draft::named);
    struct stat info = {};
    ASSERT_EQ(0, ::fstat(file->Descriptor(), &info));
    EXPECT_EQ(mode_t(0600), info.st_mode & 07777);
}
