#include "qxp/reference/command_model.h"

#include <map>

namespace
{

std::vector<std::string> WithDashes(const CLI::Option& option)
{
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

/// The words of "{a,b,c}".
std::vector<std::string> ChoicesOf(const std::string& list)
{
    std::vector<std::string> choices;
    for (const std::string& choice : CLI::detail::split(list.substr(1, list.size() - 2), ','))
        choices.push_back(choice);
    return choices;
}

/// What a type name such as "FILE" or "WHEN:{auto,always,never}" says.
void ReadValue(const std::string& type, OptionModel& model)
{
    static const std::map<std::string, ValueKind> kinds = {
        {"FILE", ValueKind::File}, {"DEPFILE", ValueKind::File}, {"DIR", ValueKind::Directory}};
    const std::size_t colon = type.find(':');
    model.valueName = type.substr(0, colon);
    if (colon != std::string::npos && type[colon + 1] == '{') {
        model.value = ValueKind::Choice;
        model.choices = ChoicesOf(type.substr(colon + 1));
        return;
    }
    const auto kind = kinds.find(model.valueName);
    model.value = kind == kinds.end() ? ValueKind::Text : kind->second;
}

OptionModel MakeOption(const CLI::Option& option)
{
    OptionModel model;
    model.names = WithDashes(option);
    model.help = option.get_description();
    if (option.get_items_expected_max() > 0)
        ReadValue(option.get_type_name(), model);
    if (!option.get_option_text().empty())
        model.valueName = option.get_option_text();
    return model;
}

std::string ArgumentName(const CLI::Option& option)
{
    const std::string name = option.get_name() + (option.get_option_text() == "..." ? "..." : "");
    return option.get_required() ? name : "[" + name + "]";
}

CommandModel MakeCommand(CLI::App& app)
{
    CommandModel model;
    model.name = app.get_name();
    model.help = app.get_description();
    model.footer = app.get_footer();
    for (const CLI::Option* option : app.get_options()) {
        if (option->nonpositional())
            model.options.push_back(MakeOption(*option));
        else
            model.arguments.push_back(ArgumentName(*option));
    }
    return model;
}

} // namespace

ProgramModel MakeModel(CLI::App& app)
{
    ProgramModel model;
    model.program = MakeCommand(app);
    for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        model.commands.push_back(MakeCommand(*command));
    return model;
}
