#include "qxp/reference/reference.h"

#include <sstream>

namespace
{

constexpr const char* MadeBy = "# Completion of qxp, made of the program's own option tables.\n";

std::string Join(const std::vector<std::string>& words, const char* between)
{
    std::string joined;
    for (const std::string& word : words)
        joined += (joined.empty() ? "" : between) + word;
    return joined;
}

std::vector<std::string> CommandNames(const ProgramModel& model)
{
    std::vector<std::string> names;
    for (const CommandModel& command : model.commands)
        names.push_back(command.name);
    return names;
}

std::vector<std::string> OptionNames(const CommandModel& command)
{
    std::vector<std::string> names;
    for (const OptionModel& option : command.options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return names;
}

/// A word in single quotes of a shell.
std::string Quoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

/// How bash completes the value of an option.
std::string BashAction(const OptionModel& option)
{
    switch (option.value) {
    case ValueKind::File:
        return "compgen -f -- \"$2\"";
    case ValueKind::Directory:
        return "compgen -d -- \"$2\"";
    case ValueKind::Choice:
        return "compgen -W " + Quoted(Join(option.choices, " ")) + " -- \"$2\"";
    default:
        return ":";
    }
}

void WriteBashCommand(std::ostream& out, const CommandModel& command)
{
    out << "    " << command.name << ")\n        options=" << Quoted(Join(OptionNames(command), " "))
        << "\n        case $1 in\n";
    for (const OptionModel& option : command.options) {
        if (option.value != ValueKind::None)
            out << "        " << Join(option.names, " | ") << ") " << BashAction(option) << "; return ;;\n";
    }
    out << "        esac\n        ;;\n";
}

/// An option as _arguments takes it, once for each of its names: NAME[HELP]:VALUE:ACTION.
void WriteZshOption(std::ostream& out, const OptionModel& option)
{
    std::string help;
    for (const char c : option.help)
        help += c == '[' || c == ']' || c == ':' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    std::string value;
    if (option.value == ValueKind::File)
        value = ":" + option.valueName + ":_files";
    else if (option.value == ValueKind::Directory)
        value = ":" + option.valueName + ":_files -/";
    else if (option.value == ValueKind::Choice)
        value = ":" + option.valueName + ":(" + Join(option.choices, " ") + ")";
    else if (option.value == ValueKind::Text)
        value = ":" + option.valueName + ": ";
    for (const std::string& name : option.names) {
        const char* const form = option.value == ValueKind::None ? "" : name[1] == '-' ? "=" : "+";
        out << "            " << Quoted("*" + name + form + "[" + help + "]" + value) << " \\\n";
    }
}

std::string FishNames(const OptionModel& option)
{
    std::string names;
    for (const std::string& name : option.names)
        names += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
    return names;
}

std::string FishValue(const OptionModel& option)
{
    switch (option.value) {
    case ValueKind::None:
        return "";
    case ValueKind::File:
        return " -rF";
    case ValueKind::Directory:
        return " -xa '(__fish_complete_directories)'";
    case ValueKind::Choice:
        return " -xa " + Quoted(Join(option.choices, " "));
    case ValueKind::Text:
        break;
    }
    return " -x";
}

void WriteFishOptions(std::ostream& out, const std::string& condition, const CommandModel& command)
{
    for (const OptionModel& option : command.options)
        out << "complete -c qxp -n " << Quoted(condition) << FishNames(option) << FishValue(option) << " -d "
            << Quoted(option.help) << "\n";
}

} // namespace

std::string MakeBashCompletion(const ProgramModel& model)
{
    std::ostringstream out;
    out << MadeBy << R"(
# _qxp_words PREVIOUS CURRENT COMMAND: what CURRENT may become, a line each.
_qxp_words() {
    local options
    case $3 in
)";
    for (const CommandModel& command : model.commands)
        WriteBashCommand(out, command);
    out << "    *)\n        compgen -W "
        << Quoted(Join(CommandNames(model), " ") + " " + Join(OptionNames(model.program), " ")) << R"( -- "$2"
        return
        ;;
    esac
    if [[ $2 == -* ]]; then
        compgen -W "$options" -- "$2"
    else
        compgen -f -- "$2"
    fi
}

_qxp() {
    local command=
    [ "$COMP_CWORD" -eq 1 ] || command=${COMP_WORDS[1]}
    mapfile -t COMPREPLY < <(_qxp_words "$3" "$2" "$command")
}

complete -o filenames -F _qxp qxp
)";
    return out.str();
}

std::string MakeZshCompletion(const ProgramModel& model)
{
    std::ostringstream out;
    out << "#compdef qxp\n" << MadeBy << "\n_qxp() {\n    local -a commands\n    commands=(\n";
    for (const CommandModel& command : model.commands)
        out << "        " << Quoted(command.name + ":" + command.help) << "\n";
    out << R"(    )
    if (( CURRENT == 2 )); then
        _describe -t commands command commands
        _arguments \
)";
    for (const OptionModel& option : model.program.options)
        WriteZshOption(out, option);
    out << "            && return\n        return\n    fi\n    local command=$words[2]\n    shift words\n"
           "    (( CURRENT-- ))\n    case $command in\n";
    for (const CommandModel& command : model.commands) {
        out << "    " << command.name << ")\n        _arguments \\\n";
        for (const OptionModel& option : command.options)
            WriteZshOption(out, option);
        out << "            '*:file:_files'\n        ;;\n";
    }
    out << "    esac\n}\n\n_qxp \"$@\"\n";
    return out.str();
}

std::string MakeFishCompletion(const ProgramModel& model)
{
    std::ostringstream out;
    out << MadeBy << "\ncomplete -c qxp -n __fish_use_subcommand -f\n";
    for (const CommandModel& command : model.commands)
        out << "complete -c qxp -n __fish_use_subcommand -a " << command.name << " -d " << Quoted(command.help) << "\n";
    WriteFishOptions(out, "__fish_use_subcommand", model.program);
    for (const CommandModel& command : model.commands)
        WriteFishOptions(out, "__fish_seen_subcommand_from " + command.name, command);
    return out.str();
}
