#include "qxp/application.h"
#include "qxp/command_line.h"

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

    Application application;
    CLI::App& app = application.app;
    if (argc < 2) {
        std::cerr << app.help();
        return StatusUsage;
    }
    const std::string first = argv[1];
    const auto isFirst = [&](const CLI::App* command) { return command->get_name() == first; };
    if (first.substr(0, 1) != "-" && app.get_subcommands(isFirst).empty())
        return FailUsage("There is no command " + first);
    const bool isScript = first == application.script->get_name();
    try {
        app.parse(isScript ? SplitAtFirstArgument(*application.script, argc, argv, application.scriptArguments) : argc,
                  argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return Answer(app, error);
        return FailUsage(app.get_subcommands().empty() ? "A command must come before " + first : error.what());
    }
    return RunWithinMemory(application.run);
}
