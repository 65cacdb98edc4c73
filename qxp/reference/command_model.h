#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// What the value of an option is, for a shell that completes it.
enum class ValueKind
{
    None, ///< The option takes no value.
    Text, ///< Nothing that could be completed.
    File,
    Directory,
    Choice, ///< One of OptionModel::choices.
};

struct OptionModel
{
    std::vector<std::string> names; ///< With their dashes, short ones first: "-o", "--output".
    ValueKind value = ValueKind::None;
    std::string valueName; ///< As the help shows it: "FILE".
    std::vector<std::string> choices;
    std::string help;
};

struct CommandModel
{
    std::string name;
    std::string help;
    std::vector<std::string> arguments; ///< The names of the arguments, such as "FILE...".
    std::vector<OptionModel> options;
    std::string footer; ///< More about the arguments, and an example.
};

/// qxp itself; its commands are in `commands`.
struct ProgramModel
{
    CommandModel program;
    std::vector<CommandModel> commands;
};

/// Reads commands and options out of the tables that the program parses its command line with.
ProgramModel MakeModel(CLI::App& app);
