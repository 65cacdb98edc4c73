#include "qxp/command_line.h"
#include "qxp/preprocess_command.h"

#include <CLI/CLI.hpp>
#include <wx/init.h>

#include <clocale>
#include <cstdio>
#include <functional>
#include <iostream>

namespace
{

constexpr int StatusUsage = 2;

constexpr const char* Version = "qxp " QXP_VERSION;

} // namespace

int main(int argc, char** argv)
{
    std::setlocale(LC_ALL, "");
    const wxInitializer initializer;
    if (!initializer.IsOk())
        return StatusFailure;

    CLI::App app("Text pipeline: preprocesses texts that hold directives, defines and inline script.", "qxp");
    app.set_version_flag("--version", Version);
    app.require_subcommand(1);
    app.get_formatter()->column_width(34);

    std::function<int()> run;
    AddPreprocessCommand(app, run);

    if (argc < 2) {
        std::cerr << app.help();
        return StatusUsage;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? StatusSuccess : StatusUsage;
    }
    return run();
}
