#include "qxp/diagnostic_printer.h"

#include "qxp/command_line.h"

namespace
{

struct Format
{
    const char* name;
    std::unique_ptr<DiagnosticPrinter> (*make)(const CommonOptions& options);
};

constexpr Format Formats[] = {
    {"text", &MakeTextPrinter},
    {"json", &MakeJsonPrinter},
    {"sarif", &MakeSarifPrinter},
};

} // namespace

const char* NameOf(Diagnostic::Kind kind)
{
    constexpr const char* names[] = {"error", "warning", "note", "log"};
    return names[static_cast<size_t>(kind)];
}

void DiagnosticPrinter::Finish(int) {}

std::unique_ptr<DiagnosticPrinter> MakeDiagnosticPrinter(const CommonOptions& options)
{
    for (const Format& format : Formats) {
        if (options.diagnostics == format.name)
            return format.make(options);
    }
    return MakeTextPrinter(options);
}

std::vector<std::string> DiagnosticFormats()
{
    std::vector<std::string> names;
    for (const Format& format : Formats)
        names.emplace_back(format.name);
    return names;
}
