#include "qxp/command_line.h"

void AddCommonOptions(CLI::App& command, CommonOptions& options)
{
    command.add_option("--color", options.color, "Colour diagnostics: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN");
    command.add_flag("--quiet", options.quiet, "Show no progress");
    command.add_flag("--verbose", options.verbose, "Show the library's verbose output");
}

std::vector<std::pair<bool, std::string>> InOrderGiven(const CLI::App& command, const CLI::Option* first,
                                                       const CLI::Option* second)
{
    std::vector<std::pair<bool, std::string>> values;
    size_t firstSeen = 0;
    size_t secondSeen = 0;
    for (const CLI::Option* option : command.parse_order()) {
        if (option == first)
            values.emplace_back(true, first->results()[firstSeen++]);
        else if (option == second)
            values.emplace_back(false, second->results()[secondSeen++]);
    }
    return values;
}
