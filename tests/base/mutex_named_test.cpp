#include "base/mutex_named.h"

#include "base/lock_file_detail.h"
#include "tests/base/base_test_support.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace
{

/// Runs with a runtime directory of its own, so that no test meets another user of the names.
class MutexNamedTest : public TempDirTest
{
protected:
    void SetUp() override
    {
        TempDirTest::SetUp();
        m_runtime.emplace("XDG_RUNTIME_DIR", Path());
    }
    void TearDown() override
    {
        m_runtime.reset();
        TempDirTest::TearDown();
    }

    static bool OtherProcessGets(const wxString& name)
    {
        Child child([&] { return CMutexNamed(name).TryLock() ? 1 : 0; });
        return child.Wait() == 1;
    }

    static bool OtherThreadGets(CMutexNamed& mutex)
    {
        bool locked = false;
        std::thread([&] { locked = mutex.TryLock() && mutex.Unlock(); }).join();
        return locked;
    }

    std::string LockFile(const std::string& mutex) const
    {
        return Path("vc_qxparser/" + vcq::detail::LockFileName(mutex));
    }

private:
    std::optional<ScopedVariable> m_runtime;
};

} // namespace

TEST_F(MutexNamedTest, ExcludesOtherProcessesWhileTheLockerLives)
{
    CMutexNamed mutex("m");
    {
        const CMutexNamedLocker locker(mutex);
        EXPECT_TRUE(locker.IsLocked());
        EXPECT_FALSE(OtherProcessGets("m"));
        EXPECT_TRUE(OtherProcessGets("another"));
    }
    EXPECT_TRUE(OtherProcessGets("m"));
}

TEST_F(MutexNamedTest, AProcessWaitsUntilTheMutexIsFree)
{
    CMutexNamed mutex("m");
    Signal has;
    ASSERT_TRUE(mutex.Lock());
    Child child([&] {
        CMutexNamed mine("m");
        const bool locked = mine.Lock();
        has.Raise();
        return locked ? 0 : 1;
    });
    EXPECT_FALSE(has.Await(50));
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(has.Await());
    EXPECT_EQ(0, child.Wait());
}

TEST_F(MutexNamedTest, IsFreeAtOnceWhenTheHolderIsKilled)
{
    Signal has;
    Child holder([&] {
        CMutexNamed mine("m");
        if (mine.Lock())
            has.Raise();
        ::pause();
        return 0;
    });
    ASSERT_TRUE(has.Await());
    CMutexNamed mutex("m");
    EXPECT_FALSE(mutex.TryLock());
    holder.Kill();
    EXPECT_TRUE(mutex.TryLock());
}

TEST_F(MutexNamedTest, AProgramStartedByTheHolderDoesNotKeepIt)
{
    Signal has;
    std::string pidFile = Path("pid");
    Child holder([&] {
        CMutexNamed mine("m");
        if (!mine.Lock())
            return 1;
        const pid_t program = ::fork();
        if (program == 0) {
            ::execl("/bin/sh", "sh", "-c",
                    ("echo $$ >" + pidFile + ".new; mv " + pidFile + ".new " + pidFile + "; exec sleep 5").c_str(),
                    static_cast<char*>(nullptr));
            ::_exit(127);
        }
        while (::access(pidFile.c_str(), F_OK) != 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        has.Raise();
        ::pause();
        return 0;
    });
    ASSERT_TRUE(has.Await());
    holder.Kill();
    EXPECT_TRUE(CMutexNamed("m").TryLock());
    ::kill(std::stoi(*Bytes("pid")), SIGKILL);
}

TEST_F(MutexNamedTest, AForkedChildDoesNotTakeItsParentsLockForItsOwn)
{
    CMutexNamed mutex("m");
    ASSERT_TRUE(mutex.Lock());
    Child child([&] {
        if (mutex.TryLock() || mutex.Unlock())
            return 1;
        return 0;
    });
    EXPECT_EQ(0, child.Wait());
    EXPECT_FALSE(OtherProcessGets("m"));
    EXPECT_TRUE(mutex.Unlock());
}

TEST_F(MutexNamedTest, UnlockingFreesItAlsoWhileAForkedChildLives)
{
    CMutexNamed mutex("m");
    ASSERT_TRUE(mutex.Lock());
    Child child([] { return ::pause(); });
    ASSERT_TRUE(mutex.Unlock());
    EXPECT_TRUE(OtherProcessGets("m"));
    EXPECT_TRUE(child.IsRunning());
}

TEST_F(MutexNamedTest, ExcludesOtherThreads)
{
    CMutexNamed mutex("m");
    CMutexNamed sameName("m");
    ASSERT_TRUE(mutex.Lock());
    EXPECT_FALSE(OtherThreadGets(mutex));
    EXPECT_FALSE(OtherThreadGets(sameName));
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(OtherThreadGets(mutex));
    EXPECT_TRUE(OtherThreadGets(sameName));
}

TEST_F(MutexNamedTest, AThreadWaitsUntilTheMutexIsFree)
{
    CMutexNamed mutex("m");
    std::atomic<bool> has{false};
    ASSERT_TRUE(mutex.Lock());
    std::thread other([&] {
        const CMutexNamedLocker locker(mutex);
        has = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(has);
    mutex.Unlock();
    other.join();
    EXPECT_TRUE(has);
}

TEST_F(MutexNamedTest, SerialisesThreadsAndProcesses)
{
    Put("count", "0");
    const auto work = [this] {
        CMutexNamed mutex("m");
        for (int i = 0; i < 100; ++i) {
            const CMutexNamedLocker locker(mutex);
            const int count = std::stoi(*Bytes("count"));
            Put("count", std::to_string(count + 1));
        }
        return 0;
    };
    Child first(work);
    Child second(work);
    std::thread third(work);
    work();
    third.join();
    EXPECT_EQ(0, first.Wait());
    EXPECT_EQ(0, second.Wait());
    EXPECT_EQ("400", Bytes("count"));
}

TEST_F(MutexNamedTest, ItsThreadMayLockItAgain)
{
    CMutexNamed mutex("m");
    ASSERT_TRUE(mutex.Lock());
    EXPECT_TRUE(mutex.Lock());
    EXPECT_TRUE(mutex.TryLock());
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(OtherProcessGets("m"));
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(OtherProcessGets("m"));
}

TEST_F(MutexNamedTest, ItsThreadMayLockItAgainThroughAnotherObjectOfTheName)
{
    CMutexNamed mutex("m");
    CMutexNamed sameName("m");
    ASSERT_TRUE(mutex.Lock());
    EXPECT_TRUE(sameName.Lock());
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(OtherProcessGets("m"));
    EXPECT_TRUE(sameName.Unlock());
    EXPECT_TRUE(OtherProcessGets("m"));
}

TEST_F(MutexNamedTest, OnlyTheHoldingThreadUnlocks)
{
    CMutexNamed mutex("m");
    EXPECT_FALSE(mutex.Unlock());
    ASSERT_TRUE(mutex.Lock());
    bool unlocked = true;
    std::thread([&] { unlocked = mutex.Unlock(); }).join();
    EXPECT_FALSE(unlocked);
    EXPECT_FALSE(OtherProcessGets("m"));
}

TEST_F(MutexNamedTest, TheDestructorUnlocksWhatItsObjectHas)
{
    CMutexNamed outer("m");
    ASSERT_TRUE(outer.Lock());
    {
        CMutexNamed inner("m");
        ASSERT_TRUE(inner.Lock());
        ASSERT_TRUE(inner.Lock());
    }
    EXPECT_FALSE(OtherProcessGets("m"));
    EXPECT_TRUE(outer.Unlock());
    EXPECT_FALSE(outer.Unlock());
    EXPECT_TRUE(OtherProcessGets("m"));
}

TEST_F(MutexNamedTest, AnyTextIsAName)
{
    const wxString names[] = {"",
                              "/etc/x y.xml",
                              "../m",
                              ".",
                              "%",
                              "%25",
                              "a/b",
                              "a%2Fb",
                              wxString(wxUniChar(0xe9)),
                              wxString('x', 300),
                              wxString('x', 301),
                              wxString(L"a\0b", 3)};
    for (const wxString& name : names) {
        CMutexNamed mutex(name);
        ASSERT_TRUE(mutex.Lock()) << name;
        Child other([&] {
            int wrong = 0;
            for (const wxString& tried : names)
                wrong += CMutexNamed(tried).TryLock() == (tried == name) ? 1 : 0;
            return wrong;
        });
        EXPECT_EQ(0, other.Wait()) << name;
    }
    for (const std::string& name : Names())
        EXPECT_EQ(0u, name.find("vc_qxparser")) << name;
}

TEST_F(MutexNamedTest, LinksAreNotFollowed)
{
    ASSERT_EQ(0, ::mkdir(Path("vc_qxparser").c_str(), 0700));
    ASSERT_EQ(0, ::symlink(Path("elsewhere").c_str(), LockFile("m").c_str()));
    CMutexNamed mutex("m");
    EXPECT_FALSE(mutex.Lock());
    EXPECT_FALSE(mutex.TryLock());
    EXPECT_FALSE(CMutexNamedLocker(mutex).IsLocked());
    EXPECT_EQ(0u, Names().count("elsewhere"));
}

TEST_F(MutexNamedTest, ADirectoryThatIsALinkIsRefused)
{
    ASSERT_EQ(0, ::mkdir(Path("other").c_str(), 0700));
    ASSERT_EQ(0, ::symlink(Path("other").c_str(), Path("vc_qxparser").c_str()));
    EXPECT_FALSE(CMutexNamed("m").Lock());
    EXPECT_EQ((std::set<std::string>{"other", "vc_qxparser"}), Names());
}

TEST_F(MutexNamedTest, ADirectoryOpenToOthersIsRefused)
{
    ASSERT_EQ(0, ::mkdir(Path("vc_qxparser").c_str(), 0700));
    ASSERT_EQ(0, ::chmod(Path("vc_qxparser").c_str(), 0755));
    EXPECT_FALSE(CMutexNamed("m").Lock());
}

TEST_F(MutexNamedTest, ADirectoryOfAnotherUserIsRefused)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can give a directory away";
    ASSERT_EQ(0, ::mkdir(Path("vc_qxparser").c_str(), 0700));
    ASSERT_EQ(0, ::chown(Path("vc_qxparser").c_str(), 65534, 65534));
    EXPECT_FALSE(CMutexNamed("m").Lock());
}

TEST_F(MutexNamedTest, ItsDirectoryIsPrivate)
{
    CMutexNamed mutex("m");
    ASSERT_TRUE(mutex.Lock());
    EXPECT_EQ(mode_t(0700), ModeOf(Path("vc_qxparser")));
    EXPECT_EQ(mode_t(0600), ModeOf(LockFile("m")));
}

TEST_F(MutexNamedTest, ALockFileThatWasRemovedIsMadeAgain)
{
    CMutexNamed mutex("m");
    ASSERT_TRUE(mutex.Lock());
    ASSERT_TRUE(mutex.Unlock());
    ASSERT_EQ(0, ::unlink(LockFile("m").c_str()));
    ASSERT_TRUE(mutex.Lock());
    EXPECT_FALSE(OtherProcessGets("m"));
}

TEST_F(MutexNamedTest, ALockFileRemovedWhileSomebodyWaitsForItIsNotLocked)
{
    Signal has;
    CMutexNamed mutex("m");
    ASSERT_TRUE(mutex.Lock());
    Child waiting([&] {
        CMutexNamed mine("m");
        if (!mine.Lock())
            return 1;
        has.Raise();
        ::pause();
        return 0;
    });
    EXPECT_FALSE(has.Await(30));
    ASSERT_EQ(0, ::unlink(LockFile("m").c_str()));
    mutex.Unlock();
    ASSERT_TRUE(has.Await());
    EXPECT_FALSE(OtherProcessGets("m"));
}

namespace
{

/// Where a directory below one that everybody may write is to be.
class PublicDirectoryTest : public TempDirTest
{
protected:
    std::string Found() const
    {
        const vcq::detail::UniqueFd directory = vcq::detail::PrivateDirectoryInPublic(Path("locks"));
        if (!directory.IsOpen())
            return "(none)";
        const std::string path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(directory.Get()));
        EXPECT_EQ(mode_t(0700), ModeOf(path));
        return path.substr(Path().size() + 1);
    }

    /// Somebody else takes a name.
    void Take(const std::string& name)
    {
        ASSERT_EQ(0, ::mkdir(Path(name).c_str(), 0777));
        ASSERT_EQ(0, ::chmod(Path(name).c_str(), 0777));
    }
};

} // namespace

TEST_F(PublicDirectoryTest, ItIsMadeOnce)
{
    EXPECT_EQ("locks", Found());
    EXPECT_EQ("locks", Found());
    EXPECT_EQ(std::set<std::string>{"locks"}, Names());
}

TEST_F(PublicDirectoryTest, WhereSomebodyTookTheNameItHasAnother)
{
    Take("locks");
    ASSERT_EQ(0, ::symlink("elsewhere", Path("locks-1").c_str()));
    Put("locks-2", "a file");
    EXPECT_EQ("locks-3", Found());
    EXPECT_EQ((std::set<std::string>{"locks", "locks-1", "locks-2", "locks-3"}), Names());
}

TEST_F(PublicDirectoryTest, ADirectoryOfAnotherUserIsNotTaken)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser can give a directory away";
    ASSERT_EQ(0, ::mkdir(Path("locks").c_str(), 0700));
    ASSERT_EQ(0, ::chown(Path("locks").c_str(), 65534, 65534));
    EXPECT_EQ("locks-1", Found());
}

TEST_F(PublicDirectoryTest, ItStaysTheSameWhenTheNameIsGivenBack)
{
    Take("locks");
    EXPECT_EQ("locks-1", Found());
    ASSERT_EQ(0, ::rmdir(Path("locks").c_str()));
    EXPECT_EQ("locks-1", Found());
}

TEST_F(PublicDirectoryTest, WhereAllNamesAreTakenThereIsNone)
{
    Take("locks");
    for (int i = 1; i < 8; ++i)
        Take("locks-" + std::to_string(i));
    EXPECT_EQ("(none)", Found());
    EXPECT_EQ(8u, Names().size());
}

TEST_F(MutexNamedTest, WithoutARuntimeDirectoryThereIsAPrivateOneInTmp)
{
    const std::string fallback = "/tmp/vc_qxparser-" + std::to_string(::geteuid());
    const bool wasThere = ::access(fallback.c_str(), F_OK) == 0;
    for (const char* runtime : {"", "relative", "/nonexistent/runtime"}) {
        const ScopedVariable variable("XDG_RUNTIME_DIR", runtime);
        const std::string name = "base-test-" + std::to_string(::getpid());
        CMutexNamed mutex(name);
        ASSERT_TRUE(mutex.Lock()) << runtime;
        EXPECT_FALSE(OtherProcessGets(name));
        EXPECT_EQ(mode_t(0700), ModeOf(fallback));
        EXPECT_EQ(0, ::unlink((fallback + "/" + name + ".lock").c_str()));
    }
    if (!wasThere) {
        EXPECT_EQ(0, ::rmdir(fallback.c_str()));
    }
}
