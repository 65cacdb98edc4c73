#include "qxp/merge_command.h"

#include "qxp/command_line.h"
#include "qxp/diagnostics.h"
#include "qxp/output.h"
#include "qxp/xml_input.h"
#include "vc_qxparser.h"

#include <memory>
#include <string>
#include <vector>

namespace
{

struct MergeOptions
{
    CommonOptions common;
    std::string base;
    std::string overlay;
    std::string output;
    bool copy = false;
    bool overwrite = false;
    bool inPlace = false;
};

bool Merge(CXmlDocument& base, CXmlDocument& overlay, const MergeOptions& options, Diagnostics& diagnostics)
{
    const wxString baseName = base.GetRawRoot()->GetName();
    const wxString overlayName = overlay.GetRawRoot()->GetName();
    if (baseName != overlayName) {
        diagnostics.Error(wxString::Format(wxS("root elements differ: %s and %s"), baseName, overlayName));
        return false;
    }
    const bool isMerged = options.copy ? base.MergeXML(&overlay, !options.overwrite) : base.MergeWith(&overlay);
    // Whatever else stops a merge has been logged.
    if (!isMerged)
        diagnostics.Flush();
    return isMerged;
}

/// A document that is never destroyed: to take a large tree apart takes a tenth of a run, and the process ends anyway.
CXmlDocument& NewDocument()
{
    static std::vector<std::unique_ptr<CXmlDocument>>& documents = *new std::vector<std::unique_ptr<CXmlDocument>>;
    return *documents.emplace_back(std::make_unique<CXmlDocument>());
}

int Run(const MergeOptions& options, Diagnostics& diagnostics)
{
    CXmlDocument& base = NewDocument();
    CXmlDocument& overlay = NewDocument();
    if (!ReadDocument(options.base, "", base, diagnostics) ||
        !ReadDocument(options.overlay, "", overlay, diagnostics) || !Merge(base, overlay, options, diagnostics))
        return StatusFailure;
    base.SetEncoding(wxS("UTF-8"));
    const auto save = [&](wxOutputStream& stream) { return base.Save(stream); };
    if (!WriteOutput(options.inPlace ? options.base : options.output, save, diagnostics))
        return StatusFailure;
    diagnostics.Flush();
    return StatusSuccess;
}

/// What CLI11 cannot say about the arguments.
void CheckArguments(const MergeOptions& options)
{
    if (options.base != "-")
        return;
    if (options.inPlace)
        throw CLI::ValidationError("--in-place", "standard input cannot be written to");
    if (options.overlay == "-")
        throw CLI::ValidationError("OVERLAY", "standard input is BASE already");
}

} // namespace

void AddMergeCommand(CLI::App& app, std::function<int()>& run)
{
    CLI::App* const command = app.add_subcommand("merge", "Merge an XML document into another one");
    const auto options = std::make_shared<MergeOptions>();
    command->group("Commands");
    command->footer("Example:\n  qxp merge -o settings.xml defaults.xml site.xml");
    command->add_option("BASE", options->base, "The document to merge into; - is standard input")
        ->option_text(" ")
        ->required();
    command->add_option("OVERLAY", options->overlay, "The document that says what to change; - is standard input")
        ->option_text(" ")
        ->required();
    CLI::Option* const copy = command->add_flag("--copy", options->copy,
                                                "Copy what BASE does not have, instead of following OVERLAY's marks");
    command->add_flag("--overwrite", options->overwrite, "Let OVERLAY's attribute values count, not those of BASE")
        ->needs(copy);
    AddOutputOption(*command, options->output);
    command->add_flag("--in-place", options->inPlace, "Write the result to BASE")
        ->excludes(command->get_option("--output"));
    AddCommonOptions(*command, options->common);
    command->callback([options, &run] {
        CheckArguments(*options);
        run = [options] {
            return RunWithDiagnostics(options->common,
                                      [&](Diagnostics& diagnostics) { return Run(*options, diagnostics); });
        };
    });
}
