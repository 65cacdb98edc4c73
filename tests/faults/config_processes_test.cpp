#include "tests/faults/config_faults.h"

#include "script/script.h"
#include "script/script_minimal.h"

#include <sys/mount.h>
#include <sys/resource.h>

#include <chrono>
#include <random>
#include <thread>
#include <vector>

namespace
{

using std::chrono::microseconds;

void Sleep(long us)
{
    std::this_thread::sleep_for(microseconds(us));
}

/// What a process tells about its progress, also after its end.
class Progress
{
public:
    Progress()
    {
        if (::pipe2(m_ends, O_CLOEXEC | O_NONBLOCK) != 0)
            std::abort();
    }
    ~Progress()
    {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Tell(long number) { (void)!::write(m_ends[1], &number, sizeof(number)); }

    /// The last number told, and how many there have been so far.
    long Last()
    {
        long number = 0;
        while (::read(m_ends[0], &number, sizeof(number)) == sizeof(number)) {
            m_last = number;
            ++m_count;
        }
        return m_last;
    }
    int Count()
    {
        Last();
        return m_count;
    }

private:
    int m_ends[2];
    long m_last = 0;
    int m_count = 0;
};

class ConfigProcessesTest : public ConfigFaultsTest
{
protected:
    static long CounterOf(CXmlConfig& config) { return config.GetSectionNode("counter", true)->GetPropLong("n", 0); }

    static bool Increment(CXmlConfig& config)
    {
        return config.UpdateFile([](CXmlConfig& changed) {
            changed.GetSectionNode("counter", true)->AddOrChangeProp("n", CounterOf(changed) + 1);
            return true;
        });
    }

    std::minstd_rand m_random{20};
};

} // namespace

TEST_F(ConfigProcessesTest, AWriterKilledAtAnyMomentLeavesTheLastStateOrTheNext)
{
    constexpr long killedWithin = 40'000; // us: some ten saves
    ASSERT_TRUE(SaveState(0));
    for (int round = 0; round < Rounds(100); ++round) {
        const long before = LoadState();
        Progress progress;
        Child writer([&] {
            const auto config = Open();
            for (long number = before + 1;; ++number) {
                SetState(*config, number);
                if (!config->SaveFile(true))
                    return 1;
                progress.Tell(number);
            }
        });
        Sleep(static_cast<long>(m_random() % killedWithin));
        writer.Kill();
        const long confirmed = std::max(before, progress.Last());
        const long now = LoadState();
        ASSERT_TRUE(now == confirmed || now == confirmed + 1) << "round " << round << ": " << confirmed << ", " << now;
        const long backup = StateIn("cfg.xml.old").value_or(now);
        ASSERT_TRUE(backup == now || backup == now - 1) << "round " << round << ": " << backup << " behind " << now;
    }
}

TEST_F(ConfigProcessesTest, EightProcessesAlwaysLoadCompleteStates)
{
    constexpr int processes = 8;
    const int rounds = Rounds(25);
    ASSERT_TRUE(SaveState(0));
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < processes; ++i)
        children.push_back(std::make_unique<Child>([&] {
            const auto config = Open();
            for (int round = 0; round < rounds; ++round) {
                config->LoadFile();
                const long number = StateOf(*config);
                if (number < 0)
                    return 1;
                SetState(*config, number + 1);
                if (!config->SaveFile(true))
                    return 2;
            }
            return 0;
        }));
    for (int i = 0; i < 3; ++i) {
        Sleep(static_cast<long>(m_random() % 300'000));
        children[static_cast<std::size_t>(i)]->Kill();
        EXPECT_GE(LoadState(), 0);
    }
    for (int i = 3; i < processes; ++i)
        EXPECT_EQ(0, children[static_cast<std::size_t>(i)]->Wait());
    EXPECT_GE(LoadState(), rounds);
    EXPECT_GE(StateIn("cfg.xml.old").value_or(-1), 0);
}

TEST_F(ConfigProcessesTest, NoIncrementOfAnUpdateIsLost)
{
    constexpr int processes = 8;
    constexpr int killed = 3;
    const int rounds = Rounds(25);
    std::vector<Progress> progress(processes);
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < processes; ++i)
        children.push_back(std::make_unique<Child>([&, i] {
            const auto config = Open();
            for (int round = 0; round < rounds; ++round) {
                if (!Increment(*config))
                    return 1;
                progress[static_cast<std::size_t>(i)].Tell(CounterOf(*config));
            }
            return 0;
        }));
    for (std::size_t i = 0; i < killed; ++i) {
        Sleep(static_cast<long>(m_random() % 100'000));
        children[i]->Kill();
    }
    int told = 0;
    for (std::size_t i = 0; i < processes; ++i) {
        if (i >= killed) {
            EXPECT_EQ(0, children[i]->Wait());
            EXPECT_EQ(rounds, progress[i].Count());
        }
        told += progress[i].Count();
    }
    const auto config = Open();
    config->LoadFile();
    // One that was killed may have had no time to tell of its last.
    EXPECT_GE(CounterOf(*config), told);
    EXPECT_LE(CounterOf(*config), told + killed);
}

TEST_F(ConfigProcessesTest, StoresThatReachTheFileByDifferentWaysExcludeEachOther)
{
    constexpr int rounds = 20;
    std::filesystem::create_symlink("place", Path("way"));
    std::filesystem::create_symlink("cfg.xml", Path("place/link.xml"));
    const std::vector<std::pair<std::string, wxString>> ways = {
        {"place", "cfg.xml"}, {"way", "cfg.xml"}, {"place", "link.xml"}, {"way", "../place/cfg.xml"}};
    std::vector<std::unique_ptr<Child>> children;
    for (const auto& [directory, name] : ways)
        children.push_back(std::make_unique<Child>([&, place = Name(directory), file = name] {
            CXmlConfig config(nullptr, file, nullptr, CDir(place), true);
            int failed = 0;
            for (int round = 0; round < rounds; ++round)
                failed += Increment(config) ? 0 : 1;
            return failed;
        }));
    for (const auto& child : children)
        EXPECT_EQ(0, child->Wait());
    const auto config = Open();
    config->LoadFile();
    EXPECT_EQ(rounds * 4, CounterOf(*config));
}

TEST_F(ConfigProcessesTest, TwoThreadsWithTheirContextsLoseNothing)
{
    const int rounds = Rounds(50);
    // Each with hooks that are called through the engine, and half of the work asked for by script.
    const auto work = [&](const wxString& name) {
        int failed = 0;
        qxjsMinimal global;
        qxjsMinimal object;
        CJScript script(nullptr);
        script.SetGlobal(global.GetJSLink(), "Global");
        script.CreateChild(object.GetJSLink(), global.GetJSLink(), "o", false, false);
        CXmlConfig config(&script, "Config", global.GetJSLink(), Place(), "cfg.xml", true);
        script.Evaluate("var own = 0;"
                        "o.LoadXmlConfig = function (n) { own = Number(n.GetProp('n')); };"
                        "o.StoreXmlConfig = function (n) { return n.AddProp('n', own); }",
                        nullptr);
        config.ObjectRegisterNamed(object.GetJSLink(), name, wxString());
        for (int round = 0; round < rounds; ++round) {
            failed += config.UpdateFile([&](CXmlConfig& changed) {
                changed.GetSectionNode("counter", true)->AddOrChangeProp("n", CounterOf(changed) + 1);
                return script.Evaluate("++own", nullptr);
            })
                          ? 0
                          : 1;
            bool loaded = false;
            failed += script.Evaluate("Config.LoadFile()", nullptr, loaded) && loaded ? 0 : 1;
        }
        return failed;
    };
    int otherFailed = -1;
    std::thread other([&] { otherFailed = work("second"); });
    EXPECT_EQ(0, work("first"));
    other.join();
    EXPECT_EQ(0, otherFailed);
    const auto config = Open();
    config->LoadFile();
    EXPECT_EQ(2 * rounds, CounterOf(*config));
    for (const char* name : {"first", "second"})
        EXPECT_EQ(rounds, config->GetSectionNode(name, false)->GetPropLong("n", -1)) << name;
}

TEST_F(ConfigProcessesTest, AFullDiskKeepsACompleteState)
{
    // Where no disk can be mounted, a bound on the size of files stands in for it.
    const bool mounted = ::mount("none", Path("place").c_str(), "tmpfs", 0, "size=640k") == 0;
    ASSERT_TRUE(SaveState(1));
    Child child([&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {100'000, 100'000};
        if (!mounted && ::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return 100;
        // Until it is full, and beyond.
        int failed = 0;
        for (int i = 0; i < 5; ++i) {
            const auto config = Open();
            config->LoadFile();
            SetState(*config, 2 + i);
            const bool saved = config->SaveFile(true);
            failed += saved ? 0 : 1;
            const long now = LoadState();
            if (saved ? now != 2 + i : now < 1 || now > 2 + i)
                return 50 + i;
            std::ofstream(Path("place/filler" + std::to_string(i))) << std::string(100'000, 'x');
        }
        return failed;
    });
    const int failed = child.Wait();
    EXPECT_GT(failed, 0);
    EXPECT_LE(failed, 5) << "a state was lost";
    EXPECT_GE(LoadState(), 1);
    for (int i = 0; i < 5; ++i)
        std::filesystem::remove(Path("place/filler" + std::to_string(i)));
    EXPECT_TRUE(SaveState(9));
    EXPECT_EQ(9, LoadState());
    EXPECT_TRUE(!mounted || ::umount(Path("place").c_str()) == 0);
}
