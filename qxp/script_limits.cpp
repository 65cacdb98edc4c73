#include "qxp/script_limits.h"

#include "qxp/command_line.h"
#include "vc_qxparser.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace
{

constexpr double MillisecondsPerSecond = 1000;
constexpr double BytesPerMib = 1024.0 * 1024.0;
constexpr double HighestLimit = 1e9; ///< Three decades, or a million GiB; higher ones are taken for this.

/// Reads a limit, whatever the locale; a text for CLI11 when it is none.
std::string ReadLimit(const std::string& text, double& limit)
{
    double number = 0;
    if (!FromSystemName(text).ToCDouble(&number) || !(number > 0))
        return "A number above 0 expected: " + text;
    limit = std::min(number, HighestLimit);
    return "";
}

// Rounded up: 0 would be no limit.
long Milliseconds(const ScriptLimits& limits)
{
    return static_cast<long>(std::ceil(limits.seconds * MillisecondsPerSecond));
}

size_t Bytes(const ScriptLimits& limits)
{
    return static_cast<size_t>(std::ceil(limits.mib * BytesPerMib));
}

void AddLimit(CLI::App& command, const char* name, const char* unit, double& limit, const char* description)
{
    command.add_option(name)->description(description)->type_name(unit)->check([&limit](const std::string& text) {
        return ReadLimit(text, limit);
    });
}

} // namespace

void AddLimitOptions(CLI::App& command, ScriptLimits& limits)
{
    AddLimit(command, "--time-limit", "SECONDS", limits.seconds, "Stop a script that runs longer");
    AddLimit(command, "--memory-limit", "MIB", limits.mib, "Stop a script that makes the process grow by more");
}

void SetLimits(const ScriptLimits& limits, CJScript& script)
{
    script.SetTimeLimit(Milliseconds(limits));
    script.SetMemoryLimit(Bytes(limits));
}

void SetLimits(const ScriptLimits& limits, CPreprocessor& preprocessor)
{
    CPreprocessorLimits all = preprocessor.GetLimits();
    all.scriptMilliseconds = Milliseconds(limits);
    all.scriptBytes = Bytes(limits);
    preprocessor.SetLimits(all);
}
