#pragma once

namespace CLI
{
class App;
}
class CJScript;
class CPreprocessor;

/// What --time-limit and --memory-limit say about the scripts of a command.
struct ScriptLimits
{
    double seconds = 0; ///< 0 for none.
    double mib = 0;     ///< 0 for none.
};

/// Adds --time-limit and --memory-limit; `limits` must live as long as the command.
void AddLimitOptions(CLI::App& command, ScriptLimits& limits);

/// Sets the limits of a context.
void SetLimits(const ScriptLimits& limits, CJScript& script);

/// Sets the limits of the scripts in texts that are preprocessed.
void SetLimits(const ScriptLimits& limits, CPreprocessor& preprocessor);
