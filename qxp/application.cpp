#include "qxp/application.h"

#include "qxp/expand_command.h"
#include "qxp/merge_command.h"
#include "qxp/preprocess_command.h"
#include "qxp/script_command.h"
#include "qxp/tags_command.h"

namespace
{

constexpr const char* Version = "qxp " QXP_VERSION;
constexpr std::size_t OptionColumnWidth = 34;

} // namespace

Application::Application()
    : app("Text pipeline: preprocesses texts, reads their tags, expands templates, merges documents, runs scripts.",
          "qxp")
{
    app.set_version_flag("--version", Version);
    app.require_subcommand(1);
    app.get_formatter()->column_width(OptionColumnWidth);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.footer("Example:\n  qxp preprocess -D PLATFORM=linux config.h.in");
    AddPreprocessCommand(app, run);
    AddTagsCommand(app, run);
    AddExpandCommand(app, run);
    AddMergeCommand(app, run);
    script = &AddScriptCommand(app, run, scriptArguments);
}
