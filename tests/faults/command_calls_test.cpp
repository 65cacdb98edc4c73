#include "tests/base/base_test_support.h"
#include "tests/faults/command_run.h"
#include "tests/support/row_name.h"
#include "tests/support/temp_directory.h"

#include <array>
#include <cerrno>
#include <cstring>

namespace
{

struct Command
{
    std::string name;
    std::vector<std::string> arguments;
    std::map<std::string, std::string> between = {}; ///< What a file may hold between two of the command's steps.
    std::string unpromised = {}; ///< A file that may be as it was when the command says that it is done.
};

void PrintTo(const Command& command, std::ostream* out)
{
    *out << command.name;
}

/// All of them find what Prepare makes.
const std::vector<Command> commands = {
    {"preprocess", {"preprocess", "-o", "out.txt", "--deps-file", "out.d", "in.txt"}},
    {"preprocess_a_new_file", {"preprocess", "-o", "new.txt", "in.txt"}},
    {"preprocess_to_standard_output", {"preprocess", "--deps", "in.txt"}},
    {"preprocess_standard_input", {"preprocess", "-o", "out.txt", "-", "<in.txt"}},
    {"tags", {"tags", "--content", "-o", "out.txt", "tags.txt"}},
    {"expand", {"expand", "-o", "link.txt", "template.txt", "base.xml"}},
    {"merge", {"merge", "--in-place", "base.xml", "overlay.xml"}},
    {"script_of_text_files", {"script", "files.js"}, {{"made.txt", ""}}},
    {"script_with_a_configuration", {"script", "--config", "cfg.xml", "config.js"}, {}, "cfg.xml.old"},
};

constexpr std::array<Failure, 9> failures = {{
    {Fault::fail, ENOSPC},
    {Fault::failFrom, EIO},
    {Fault::fail, EACCES},
    {Fault::shorten, 0},
    {Fault::fail, EMFILE},
    {Fault::failFrom, ENOSPC},
    {Fault::fail, EINTR},
    {Fault::fail, EIO},
    {Fault::failFrom, EMFILE},
}};

/// Each test runs the command with faults at each of its calls. The usual form does not meet every fault at every call,
/// but each call with one and each fault at many; QXP_FAULTS_FACTOR asks for all.
class CommandCallsTest : public TempDirTest, public ::testing::WithParamInterface<Command>
{
protected:
    std::string Base() const override { return PlaceInMemory(); }

    void SetUp() override
    {
        TempDirTest::SetUp();
        Prepare();
        m_before = TakeSnapshot(Path("place"));
        m_good = RunQxp(Path("place"), GetParam().arguments);
        m_after = TakeSnapshot(Path("place"));
        ASSERT_EQ(0, m_good.status) << m_good.errors;
        ASSERT_TRUE(m_before != m_after || !m_good.output.empty());
        ASSERT_GT(m_good.calls, 5);
    }

    void Prepare() const
    {
        std::filesystem::remove_all(Path("place"));
        std::filesystem::create_directory(Path("place"));
        const std::string many(20'000, 'x');
        const std::vector<std::pair<std::string, std::string>> files = {
            {"in.txt", "#define A 1\n#include <part.txt>\n#if (#A == 1)\nyes #A\n#endif\n"},
            {"part.txt", "a part\n" + many + "\n"},
            {"out.txt", "old output\n"},
            {"out.d", "old rule\n"},
            {"tags.txt", "<type='a'>\none\n</type>\n"},
            {"template.txt", "value [%GetProp('v')%]\n"},
            {"real.txt", "old output\n"},
            {"base.xml", "<r v='1'><a/>" + many + "</r>\n"},
            {"overlay.xml", "<r><b/></r>\n"},
            {"old.txt", "one line\n"},
            {"files.js", "function must(done) { if (!done) throw 'not done'; }\n"
                         "var f = new TextFile(); must(f.Open('old.txt')); must(f.ReadLn() == 'one line');\n"
                         "must(f.WriteLn('another')); f.Close();\n"
                         "must(f.Create('made.txt')); must(f.WriteLn('made'));\n"
                         "print('done');\n"},
            {"cfg.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Config>\n <a v=\"2\"/>\n</Config>\n"},
            {"cfg.xml.old", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Config>\n <a v=\"1\"/>\n</Config>\n"},
            {"config.js", "if (!Config.LoadFile()) throw 'not loaded';\n"
                          "var a = Config.GetRoot().GetNode('a');\n"
                          "a.DelProp('v'); a.AddProp('v', 3);\n"
                          "if (!Config.SaveFile()) throw 'not saved';\n"}};
        for (const auto& [name, bytes] : files)
            Put("place/" + name, bytes);
        std::filesystem::create_symlink("real.txt", Path("place/link.txt"));
    }

    static bool IsDraft(const std::string& name) { return name.rfind(".vcq-", 0) == 0; }

    /// Every file is what it was or what it is to be.
    void CheckFiles(int mostDrafts) const
    {
        const Snapshot now = TakeSnapshot(Path("place"));
        const auto find = [](const Snapshot& snapshot, const std::string& name) {
            const auto found = snapshot.find(name);
            return found == snapshot.end() ? std::optional<std::string>() : found->second;
        };
        std::set<std::string> names;
        int drafts = 0;
        for (const Snapshot* const snapshot : {&m_before, &m_after, &now})
            for (const auto& [name, bytes] : *snapshot)
                names.insert(name);
        for (const std::string& name : names) {
            drafts += IsDraft(name);
            const auto is = find(now, name);
            EXPECT_TRUE(IsDraft(name) || is == find(m_before, name) || is == find(m_after, name) ||
                        (is && is == find(GetParam().between, name)))
                << name << ": " << is.value_or("(none)").substr(0, 200);
        }
        EXPECT_LE(drafts, mostDrafts);
    }

    void CheckResult(const CommandResult& result) const
    {
        EXPECT_TRUE(result.status == 0 || result.status == 1) << "status " << result.status;
        EXPECT_EQ(0u, m_good.output.find(result.output)) << "output: " << result.output;
        if (result.status == 0) {
            EXPECT_EQ(m_good.output, result.output);
            Snapshot now = TakeSnapshot(Path("place"));
            for (auto file = now.begin(); file != now.end();)
                file = IsDraft(file->first) ? now.erase(file) : std::next(file);
            Snapshot expected = m_after;
            const std::string& unpromised = GetParam().unpromised;
            if (expected.count(unpromised) && now.count(unpromised))
                expected[unpromised] = now[unpromised];
            EXPECT_TRUE(expected == now) << "reported as done";
        } else {
            EXPECT_NE("", result.errors) << "failed without a word";
        }
    }

    CommandResult m_good;
    Snapshot m_before;
    Snapshot m_after;
};

bool IsLongForm()
{
    return std::getenv("QXP_FAULTS_FACTOR") != nullptr;
}

} // namespace

TEST_P(CommandCallsTest, EveryCallMayFail)
{
    int failed = 0;
    std::size_t kind = 0;
    const std::size_t kinds = IsLongForm() ? failures.size() : 1;
    for (long call = 1; call <= m_good.calls; ++call) {
        for (std::size_t i = 0; i < kinds; ++i) {
            const Failure& failure = failures[kind++ % failures.size()];
            SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(m_good.calls) + ", fault " +
                         std::to_string(static_cast<int>(failure.fault)) + ", " + ::strerror(failure.error));
            Prepare();
            const CommandResult result =
                RunQxp(Path("place"), GetParam().arguments, {failure.fault, call, failure.error});
            CheckResult(result);
            CheckFiles(1);
            EXPECT_TRUE(result.status == 0 || failure.fault != Fault::shorten) << result.errors;
            failed += result.status != 0;
            if (HasFailure())
                return;
        }
    }
    EXPECT_GT(failed, 3) << "faults hardly show";
}

TEST_P(CommandCallsTest, ItMayBeKilledAtEveryCall)
{
    for (long call = 1; call <= m_good.calls; ++call) {
        SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(m_good.calls));
        Prepare();
        const CommandResult result = RunQxp(Path("place"), GetParam().arguments, {Fault::kill, call, 0});
        ASSERT_EQ(-1, result.status) << "it was not killed";
        EXPECT_EQ(0u, m_good.output.find(result.output)) << "output: " << result.output;
        CheckFiles(1);
        if (HasFailure())
            return;
    }
}

TEST_P(CommandCallsTest, InputInPiecesAndInterruptedCallsChangeNothing)
{
    for (const Fault fault : {Fault::trickle, Fault::interrupt}) {
        SCOPED_TRACE("fault " + std::to_string(static_cast<int>(fault)));
        Prepare();
        const CommandResult result = RunQxp(Path("place"), GetParam().arguments, {fault, 1, 0});
        EXPECT_EQ(0, result.status) << result.errors;
        EXPECT_GT(result.calls, m_good.calls);
        CheckResult(result);
        CheckFiles(0);
    }
}

INSTANTIATE_TEST_SUITE_P(Commands, CommandCallsTest, ::testing::ValuesIn(commands), NameOfRow<Command>);
