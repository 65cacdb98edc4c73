#include "qxp/application.h"
#include "qxp/command_line.h"
#include "qxp/diagnostics.h"

#include <CLI/CLI.hpp>
#include <wx/init.h>

#include <clocale>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

namespace
{

int FailUsage(const std::string& message, const std::vector<std::string>& words)
{
    return RunWithDiagnostics(ReadCommonOptions(words), [&](Diagnostics& diagnostics) {
        diagnostics.UsageError(message);
        return StatusUsage;
    });
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
    const bool isScript = first == application.script->get_name();
    const int own =
        isScript ? SplitAtFirstArgument(*application.script, argc, argv, application.scriptArguments) : argc;
    const std::vector<std::string> words(argv + 1, argv + own);
    if (first.substr(0, 1) != "-" && app.get_subcommands(isFirst).empty())
        return FailUsage("There is no command " + first, words);
    try {
        app.parse(own, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return Answer(app, error);
        return FailUsage(app.get_subcommands().empty() ? "A command must come before " + first : error.what(), words);
    }
    return application.run();
}
