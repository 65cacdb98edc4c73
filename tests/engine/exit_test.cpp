#include <string>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

extern char** environ;

namespace
{

// The exit status of the probe, or -signal.
int Probe(const std::string& way, const char* plugin = nullptr)
{
    std::string program = QXP_EXIT_PROBE;
    std::string argument = way;
    char* argv[] = {program.data(), argument.data(), const_cast<char*>(plugin), nullptr};
    pid_t child = 0;
    if (::posix_spawn(&child, program.c_str(), nullptr, nullptr, argv, environ) != 0)
        return 127;
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

class EngineExit : public ::testing::TestWithParam<const char*>
{};

TEST_P(EngineExit, EndsWithoutACrash)
{
    EXPECT_EQ(Probe(GetParam()), 0);
}

INSTANTIATE_TEST_SUITE_P(Ways, EngineExit,
                         ::testing::Values("nothing", "destroyed", "leaked", "static_destroys",
                                           "static_makes_the_first", "worker_destroyed", "worker_leaked",
                                           "worker_still_running", "exit_from_worker", "exit_from_worker_with_context",
                                           "exit_inside_a_native", "quick_exit", "underscore_exit", "with_watchdog",
                                           "many_cycles", "forked_child_exits", "context_bound_to_thread"),
                         [](const auto& way) { return std::string(way.param); });

TEST(EngineExitOfPlugin, ALibraryThatIsUnloadedAfterUseLeavesTheProcessInOrder)
{
    EXPECT_EQ(Probe("plugin", QXP_EXIT_PLUGIN), 0);
    EXPECT_EQ(Probe("plugin_in_thread", QXP_EXIT_PLUGIN), 0);
}

} // namespace
