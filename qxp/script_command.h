#pragma once

#include <functional>

namespace CLI
{
class App;
}

/// Adds `qxp script`. When it is the command given, `run` becomes what executes it and returns the exit status.
void AddScriptCommand(CLI::App& app, std::function<int()>& run);
