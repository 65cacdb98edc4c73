#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <utility>
#include <vector>

constexpr int StatusSuccess = 0;
constexpr int StatusFailure = 1;
constexpr int StatusUsage = 2;

/// The options that every command has.
struct CommonOptions
{
    std::string color = "auto";       ///< "auto", "always" or "never".
    std::string diagnostics = "text"; ///< The form of diagnostics: see MakeDiagnosticPrinter.
    bool quiet = false;
    bool verbose = false;
};

void AddCommonOptions(CLI::App& command, CommonOptions& options);

/// The options that matter to a complaint about the command line itself, as far as they can be read.
CommonOptions ReadCommonOptions(const std::vector<std::string>& words);

/// Adds -o, the file that the result goes to.
void AddOutputOption(CLI::App& command, std::string& file);

/// Adds --deps-file, the file that a make rule goes to.
void AddDepsFileOption(CLI::App& command, std::string& file);

/// Adds --begin and --end. The texts are the ones used without them.
void AddTagOptions(CLI::App& command, std::string& begin, std::string& end);

/// A check of option values. An unset variable of a makefile must not send the result somewhere else.
std::string NonEmptyFile(const std::string& text);

/// The values of two repeatable options in the order in which they were given: true with those of `first`.
std::vector<std::pair<bool, std::string>> InOrderGiven(const CLI::App& command, const CLI::Option* first,
                                                       const CLI::Option* second);

/// How many of the words belong to qxp when a command's arguments are not its own: those up to the first that is no
/// option of `command`, or up to `--`, which is dropped. What is behind them goes to `rest`.
int SplitAtFirstArgument(const CLI::App& command, int argc, char** argv, std::vector<std::string>& rest);
