#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

/// The commands and options of qxp: what it reads its command line with, and what its manual page and completions are
/// made of.
struct Application
{
    Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    CLI::App app;
    /// What to do for the command line that `app` has parsed, until a status.
    std::function<int()> run;
    /// What stands behind the script's own options: set it before parsing, see SplitAtFirstArgument.
    std::vector<std::string> scriptArguments;
    const CLI::App* script = nullptr;
};
