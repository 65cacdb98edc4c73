#include "qxp/reference/reference.h"

#include <sstream>

namespace
{

/// Text as it is, at any place of a line.
std::string Escape(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else if (c == '\'')
            escaped += "\\(aq";
        else if (c == '`')
            escaped += "\\(ga";
        else if (c == '.' && (escaped.empty() || escaped.back() == '\n'))
            escaped += "\\&.";
        else
            escaped += c;
    }
    return escaped;
}

std::string Bold(const std::string& text)
{
    return "\\fB" + Escape(text) + "\\fR";
}

std::string Italic(const std::string& text)
{
    return "\\fI" + Escape(text) + "\\fR";
}

std::string OptionTerm(const OptionModel& option)
{
    std::string term;
    for (const std::string& name : option.names)
        term += (term.empty() ? "" : ", ") + Bold(name);
    return option.value == ValueKind::None ? term : term + " " + Italic(option.valueName);
}

void WriteOptions(std::ostream& out, const std::vector<OptionModel>& options)
{
    for (const OptionModel& option : options)
        out << ".TP\n" << OptionTerm(option) << "\n" << Escape(option.help) << ".\n";
}

/// The lines of a footer: those that are indented are examples.
void WriteFooter(std::ostream& out, const std::string& footer)
{
    std::istringstream lines(footer);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 2, "  ") == 0)
            out << ".PP\n.nf\n.RS\n" << Escape(line.substr(2)) << "\n.RE\n.fi\n.PP\n";
        else
            out << (line == "Example:" ? ".PP\n" : "") << Escape(line) << "\n";
    }
}

void WriteCommand(std::ostream& out, const CommandModel& command)
{
    out << ".SS " << Escape("qxp " + command.name) << "\n"
        << Bold("qxp " + command.name) << " [" << Italic("OPTION") << "]...";
    for (const std::string& argument : command.arguments)
        out << " " << Italic(argument);
    out << "\n.PP\n" << Escape(command.help) << ".\n";
    WriteOptions(out, command.options);
    out << ".PP\n";
    WriteFooter(out, command.footer);
}

constexpr const char* Synopsis = R"(.SH SYNOPSIS
.B qxp
.I COMMAND
.RI [ OPTION ]...
.RI [ ARG ]...
.br
.B qxp \-\-help
.br
.BI "qxp " COMMAND " \-\-help"
.SH DESCRIPTION
.B qxp
preprocesses texts whose every line still knows the file and the line that it came from, reads the tag blocks of texts,
expands templates over XML documents, merges XML documents, and runs scripts in JavaScript that work on documents and
configuration files.
.PP
Options stand behind the command, before or after its arguments;
.B \-\-
ends them. An input named
.B \-
is standard input. Inputs are read with their byte order mark honoured, as UTF\-8 otherwise; outputs are UTF\-8 with
line feeds. A result is written when everything has succeeded, and a file is replaced by a complete result only.
)";

constexpr const char* Rest = R"(.SH EXIT STATUS
.TP
.B 0
Success.
.TP
.B 1
An input could not be processed, or the output not be written.
.TP
.B 2
Wrong usage.
.SH DIAGNOSTICS
Errors and warnings go to standard error as
.RI \(lq FILE : LINE :
.BR error :
.IR MESSAGE \(rq,
or as \(lqqxp: error:
.IR MESSAGE \(rq
when they have no place in a text. The line in question follows, then one note for each file or loop around it.
.SH ENVIRONMENT
.TP
.B NO_COLOR
When it is set, diagnostics have colours with
.B \-\-color always
only.
.TP
.BI QX_ROOT_ NAME
The directory of the named root
.IR NAME ,
where
.B \-\-root
names no other.
)";

} // namespace

std::string MakeManPage(const ProgramModel& model, const std::string& version)
{
    std::ostringstream out;
    out << ".TH QXP 1 \"\" \"" << Escape("qxp " + version) << "\" \"User Commands\"\n"
        << ".SH NAME\nqxp \\- text pipeline: preprocessor, templates, XML documents and scripts\n"
        << Synopsis << ".SH OPTIONS\n";
    WriteOptions(out, model.program.options);
    out << ".SH COMMANDS\n";
    for (const CommandModel& command : model.commands)
        WriteCommand(out, command);
    out << Rest;
    return out.str();
}
