#include "tests/faults/config_faults.h"
#include "tests/faults/faults.h"
#include "tests/support/log_capture.h"
#include "tests/support/row_name.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

constexpr long OldState = 1;
constexpr long State = 2;
constexpr long NewState = 3;

/// One thing that a store does, and from what on.
struct Scenario
{
    std::string name;
    void (*prepare)(const std::string& place);
    bool (*run)(CXmlConfig& config, CDir place);
    std::string target;       ///< the file that is written
    std::optional<long> from; ///< what it holds before, if it is there
};

void PrintTo(const Scenario& scenario, std::ostream* out)
{
    *out << scenario.name;
}

bool Save(CXmlConfig& config, CDir)
{
    return config.SaveFile(true);
}

bool SaveWithoutFlag(CXmlConfig& config, CDir)
{
    return config.SaveFile(false);
}

bool SaveElsewhere(CXmlConfig& config, CDir place)
{
    return config.SaveFile(place, "copy.xml", true);
}

bool MergeAndSave(CXmlConfig& config, CDir)
{
    return config.MergeSaveFile(true, true, true);
}

bool Update(CXmlConfig& config, CDir)
{
    return config.UpdateFile([](CXmlConfig& changed) {
        ConfigFaultsTest::SetState(changed, NewState);
        return true;
    });
}

void Nothing(const std::string&) {}

void NoFile(const std::string& place)
{
    std::filesystem::remove(place + "/cfg.xml");
    std::filesystem::remove(place + "/cfg.xml.old");
}

void OnlyTheBackup(const std::string& place)
{
    std::filesystem::remove(place + "/cfg.xml");
    std::filesystem::copy_file(place + "/other.xml", place + "/cfg.xml.old",
                               std::filesystem::copy_options::overwrite_existing);
}

void ALink(const std::string& place)
{
    std::filesystem::create_directory(place + "/shared");
    std::filesystem::rename(place + "/cfg.xml", place + "/shared/settings.xml");
    std::filesystem::create_symlink("shared/settings.xml", place + "/cfg.xml");
}

void ACopy(const std::string& place)
{
    std::filesystem::copy_file(place + "/cfg.xml", place + "/copy.xml");
}

void ASideFile(const std::string& place)
{
    std::ofstream(place + "/cfg.xml_tmp") << "<Config/>";
}

const std::vector<Scenario> scenarios = {
    {"save", Nothing, Save, "cfg.xml", State},
    {"save_without_flag", Nothing, SaveWithoutFlag, "cfg.xml", State},
    {"save_a_new_file", NoFile, Save, "cfg.xml", std::nullopt},
    {"save_where_only_the_backup_is", OnlyTheBackup, Save, "cfg.xml", std::nullopt},
    {"save_through_a_link", ALink, Save, "cfg.xml", State},
    {"save_elsewhere", Nothing, SaveElsewhere, "copy.xml", std::nullopt},
    {"save_over_another_file", ACopy, SaveElsewhere, "copy.xml", State},
    {"merge_and_save", ASideFile, MergeAndSave, "cfg.xml", State},
    {"update", Nothing, Update, "cfg.xml", State},
};

/// What the system may say to nearly every call. EINTR is for those that can be interrupted.
constexpr std::array<Failure, 8> failures = {{
    {Fault::fail, ENOSPC},
    {Fault::fail, EIO},
    {Fault::fail, EACCES},
    {Fault::fail, EMFILE},
    {Fault::fail, EINTR},
    {Fault::shorten, 0},
    {Fault::failFrom, EIO},
    {Fault::failFrom, ENOSPC},
}};

class ConfigCallsTest : public ConfigFaultsTest, public ::testing::WithParamInterface<Scenario>
{
protected:
    void SetUp() override
    {
        ConfigFaultsTest::SetUp();
        for (const auto& [name, state] : {std::pair<wxString, long>("other.xml", State), {"cfg.xml", OldState}})
            ASSERT_TRUE(SaveState(state, name));
        ASSERT_TRUE(SaveState(State));
        std::filesystem::copy(Path("place"), Path("original"), std::filesystem::copy_options::recursive);
    }

    /// Everything as it was, and a store whose tree is the new state.
    std::unique_ptr<CXmlConfig> Prepare() const
    {
        std::filesystem::remove_all(Path("place"));
        std::filesystem::copy(Path("original"), Path("place"), std::filesystem::copy_options::recursive);
        GetParam().prepare(Path("place"));
        auto config = Open();
        config->LoadFile();
        SetState(*config, NewState);
        return config;
    }

    /// How many calls it makes when all goes well.
    long CountCalls() const
    {
        const auto config = Prepare();
        vcq_fault_arm(Fault::count, 0, 0);
        const bool done = GetParam().run(*config, Place());
        const long calls = vcq_fault_disarm();
        EXPECT_TRUE(done);
        EXPECT_EQ(StateIn(GetParam().target), NewState);
        return calls;
    }

    /// What must hold whatever has happened.
    void CheckFiles(std::optional<bool> result) const
    {
        const std::optional<long> now = StateIn(GetParam().target);
        EXPECT_TRUE(now == GetParam().from || now == NewState) << "neither old nor new: " << now.value_or(-2);
        EXPECT_TRUE(now == NewState || !result.value_or(false)) << "reported as done";
        const std::optional<long> backup = StateIn("cfg.xml.old");
        EXPECT_TRUE(!backup || (*backup >= OldState && *backup <= NewState)) << "backup: " << backup.value_or(-2);
        const bool had = std::filesystem::exists(Path("original/cfg.xml")) && GetParam().prepare != NoFile;
        EXPECT_TRUE(!had || LoadState() >= OldState) << "no complete state can be loaded";
    }

    /// Drafts that are left behind, anywhere in the place.
    int CountDrafts() const
    {
        int drafts = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(Path("place")))
            drafts += entry.path().filename().string().rfind(".vcq-", 0) == 0;
        return drafts;
    }
};

} // namespace

TEST_P(ConfigCallsTest, EveryCallMayFail)
{
    const long calls = CountCalls();
    ASSERT_GT(calls, 10);
    int failed = 0;
    for (const Failure& failure : failures) {
        for (long call = 1; call <= calls; ++call) {
            SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(calls) + ", fault " +
                         std::to_string(static_cast<int>(failure.fault)) + ", " + ::strerror(failure.error));
            const auto config = Prepare();
            vcq_fault_arm(failure.fault, call, failure.error);
            const bool result = GetParam().run(*config, Place());
            vcq_fault_disarm();
            failed += result ? 0 : 1;
            CheckFiles(result);
            EXPECT_TRUE(result || failure.fault != Fault::shorten) << "short reads and writes are no failures";
            EXPECT_LE(CountDrafts(), 1);
            EXPECT_TRUE(GetParam().run(*config, Place())) << "the next time";
            EXPECT_EQ(StateIn(GetParam().target), NewState);
            EXPECT_EQ(CountDrafts(), 0) << "the next time";
            if (HasFailure())
                return;
        }
    }
    EXPECT_GT(failed, calls) << "faults hardly show";
}

TEST_P(ConfigCallsTest, TheProcessMayBeKilledAtEveryCall)
{
    const long calls = CountCalls();
    for (long call = 1; call <= calls; ++call) {
        SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(calls));
        const auto config = Prepare();
        Child child([&] {
            vcq_fault_arm(Fault::kill, call, 0);
            return GetParam().run(*config, Place()) ? 0 : 1;
        });
        ASSERT_EQ(-1, child.Wait()) << "it was not killed";
        CheckFiles(std::nullopt);
        EXPECT_LE(CountDrafts(), 1);
        EXPECT_TRUE(GetParam().run(*config, Place())) << "no lock is left behind";
        EXPECT_EQ(StateIn(GetParam().target), NewState);
        EXPECT_EQ(CountDrafts(), 0) << "no draft is left behind";
        if (HasFailure())
            return;
    }
}

INSTANTIATE_TEST_SUITE_P(Scenarios, ConfigCallsTest, ::testing::ValuesIn(scenarios), NameOfRow<Scenario>);

namespace
{

class ConfigLoadCallsTest : public ConfigFaultsTest
{};

} // namespace

TEST_F(ConfigLoadCallsTest, ALoadWithAFailingCallGivesACompleteStateOrNone)
{
    ASSERT_TRUE(SaveState(OldState));
    ASSERT_TRUE(SaveState(State));
    vcq_fault_arm(Fault::count, 0, 0);
    ASSERT_EQ(State, LoadState());
    const long calls = vcq_fault_disarm();
    for (const Failure& failure : failures) {
        for (long call = 1; call <= calls; ++call) {
            SCOPED_TRACE("call " + std::to_string(call) + ", " + ::strerror(failure.error));
            vcq_fault_arm(failure.fault, call, failure.error);
            const auto config = Open();
            config->LoadFile();
            vcq_fault_disarm();
            const long state = StateOf(*config);
            EXPECT_TRUE(config->IsLoaded() ? state == State || state == OldState : state == -1) << state;
            EXPECT_TRUE(state == State || failure.fault != Fault::shorten);
        }
    }
    EXPECT_EQ(State, LoadState());
}

TEST_F(ConfigLoadCallsTest, AFileThatIsThereAndCannotBeOpenedIsNotPassedOverInSilence)
{
    ASSERT_TRUE(SaveState(OldState));
    ASSERT_TRUE(SaveState(State));
    const wxString warning =
        wxString::Format("'cfg.xml' is there, but cannot be opened in '%s'", Place().GetFullPath());
    const bool wasQuiet = !wxLog::EnableLogging(true);
    int olderStates = 0;
    vcq_fault_arm(Fault::count, 0, 0);
    ASSERT_EQ(State, LoadState());
    const long calls = vcq_fault_disarm();
    for (long call = 1; call <= calls; ++call) {
        SCOPED_TRACE("call " + std::to_string(call));
        const LogCapture log;
        const auto config = Open();
        vcq_fault_arm(Fault::fail, call, EACCES);
        config->LoadFile();
        vcq_fault_disarm();
        const bool isOlder = StateOf(*config) == OldState;
        olderStates += isOlder;
        EXPECT_EQ(log.Texts(wxLOG_Warning), isOlder ? std::vector<wxString>{warning} : std::vector<wxString>());
    }
    wxLog::EnableLogging(!wasQuiet);
    EXPECT_GT(olderStates, 0);
}
