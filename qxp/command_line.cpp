#include "qxp/command_line.h"

#include "qxp/diagnostic_printer.h"

#include <algorithm>
#include <string_view>

namespace
{

constexpr int FirstWordOfCommand = 2;

bool TakesValue(const CLI::App& command, const std::string& name)
{
    const CLI::Option* const option = command.get_option_no_throw(name);
    return option && option->get_items_expected_min() > 0;
}

/// Whether the value of an option is the word behind `word`.
bool ValueFollows(const CLI::App& command, const std::string& word)
{
    if (word.compare(0, 2, "--") == 0)
        return TakesValue(command, word);
    // Letters may stand together; what is behind one that takes a value is its value.
    for (std::size_t i = 1; i < word.size(); ++i) {
        if (TakesValue(command, std::string("-") + word[i]))
            return i + 1 == word.size();
    }
    return false;
}

// Blanks before tags are passed over in the search for them, and so are strings: these would never be found.

std::string CanEndTag(const std::string& text)
{
    return text.find_first_of("\"'") == 0 || text.empty() ? "a tag cannot be empty or begin with a quote" : "";
}

std::string CanBeginTag(const std::string& text)
{
    return text.find_first_of(" \t") == 0 ? "a tag cannot begin with a blank" : CanEndTag(text);
}

} // namespace

void AddCommonOptions(CLI::App& command, CommonOptions& options)
{
    command.add_option("--color", options.color, "Colour diagnostics: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN");
    command.add_option("--diagnostics", options.diagnostics, "Form of diagnostics: text, json or sarif")
        ->check(CLI::IsMember(DiagnosticFormats()))
        ->type_name("FORMAT");
    command.add_flag("--quiet", options.quiet, "Show no progress");
    command.add_flag("--verbose", options.verbose, "Show the library's verbose output");
}

CommonOptions ReadCommonOptions(const std::vector<std::string>& words)
{
    const std::string option = "--diagnostics";
    const std::vector<std::string> formats = DiagnosticFormats();
    CommonOptions options;
    for (size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        std::string value;
        if (words[i] == option && i + 1 < words.size())
            value = words[++i];
        else if (words[i].compare(0, option.size() + 1, option + "=") == 0)
            value = words[i].substr(option.size() + 1);
        if (std::find(formats.begin(), formats.end(), value) != formats.end())
            options.diagnostics = value;
    }
    return options;
}

void AddOutputOption(CLI::App& command, std::string& file)
{
    command.add_option("-o,--output", file, "Write the result there")->type_name("FILE")->check(NonEmptyFile);
}

void AddDepsFileOption(CLI::App& command, std::string& file)
{
    command.add_option("--deps-file", file, "Write a make rule there, beside the normal output")
        ->type_name("DEPFILE")
        ->check(NonEmptyFile);
}

void AddTagOptions(CLI::App& command, std::string& begin, std::string& end)
{
    command.add_option("--begin", begin, "What tags begin with instead of " + begin)
        ->type_name("TEXT")
        ->check(CanBeginTag);
    command.add_option("--end", end, "What tags end with instead of " + end)->type_name("TEXT")->check(CanEndTag);
}

std::string NonEmptyFile(const std::string& text)
{
    return text.empty() ? "a file name is missing" : "";
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

int SplitAtFirstArgument(const CLI::App& command, int argc, char** argv, std::vector<std::string>& rest)
{
    int own = FirstWordOfCommand;
    for (; own < argc; ++own) {
        const std::string word = argv[own];
        if (word == "--" || word == "-" || word.compare(0, 1, "-") != 0)
            break;
        if (ValueFollows(command, word))
            ++own;
    }
    if (own >= argc)
        return argc;
    const bool isMark = std::string_view(argv[own]) == "--";
    rest.assign(argv + own + (isMark ? 1 : 0), argv + argc);
    return own;
}
