#pragma once

#include <functional>

namespace CLI
{
class App;
}

/// Adds `qxp expand`. When it is the command given, `run` becomes what executes it and returns the exit status.
void AddExpandCommand(CLI::App& app, std::function<int()>& run);
