#pragma once

#include <functional>

namespace CLI
{
class App;
}

/// Adds `qxp merge`. When it is the command given, `run` becomes what executes it and returns the exit status.
void AddMergeCommand(CLI::App& app, std::function<int()>& run);
