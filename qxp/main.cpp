#include "qxp/command_line.h"
#include "qxp/expand_command.h"
#include "qxp/merge_command.h"
#include "qxp/preprocess_command.h"
#include "qxp/script_command.h"
#include "qxp/tags_command.h"

#include <CLI/CLI.hpp>
#include <wx/init.h>

#include <clocale>
#include <cstdio>
#include <functional>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

constexpr int StatusUsage = 2;

constexpr const char* Version = "qxp " QXP_VERSION;

int FailUsage(const std::string& message)
{
    std::cerr << "qxp: error: " << message << "\nRun with --help for more information.\n";
    return StatusUsage;
}

/// What a run has taken is free again when this reports that there was not enough.
int RunWithinMemory(const std::function<int()>& run)
{
    try {
        return run();
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    std::fputs("qxp: error: Out of memory\n", stderr);
    return StatusFailure;
}

/// Writes what --help or --version asked for.
int Answer(const CLI::App& app, const CLI::ParseError& request)
{
    app.exit(request);
    std::cout.flush();
    return std::cout ? StatusSuccess : StatusFailure;
}

} // namespace

int main(int argc, char** argv)
{
    std::setlocale(LC_ALL, "");
    const wxInitializer initializer;
    if (!initializer.IsOk())
        return StatusFailure;

    CLI::App app("Text pipeline: preprocesses texts that hold directives, defines and inline script, and runs scripts.",
                 "qxp");
    app.set_version_flag("--version", Version);
    app.require_subcommand(1);
    app.get_formatter()->column_width(34);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.footer("Example:\n  qxp preprocess -D PLATFORM=linux config.h.in");

    std::function<int()> run;
    AddPreprocessCommand(app, run);
    AddTagsCommand(app, run);
    AddExpandCommand(app, run);
    AddMergeCommand(app, run);
    std::vector<std::string> scriptArguments;
    const CLI::App& script = AddScriptCommand(app, run, scriptArguments);

    if (argc < 2) {
        std::cerr << app.help();
        return StatusUsage;
    }
    const std::string first = argv[1];
    const auto isFirst = [&](const CLI::App* command) { return command->get_name() == first; };
    if (first.substr(0, 1) != "-" && app.get_subcommands(isFirst).empty())
        return FailUsage("There is no command " + first);
    try {
        app.parse(first == script.get_name() ? SplitAtFirstArgument(script, argc, argv, scriptArguments) : argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return Answer(app, error);
        return FailUsage(app.get_subcommands().empty() ? "A command must come before " + first : error.what());
    }
    return RunWithinMemory(run);
}
