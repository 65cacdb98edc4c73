#pragma once

#include <functional>

namespace CLI
{
class App;
}

/// Adds `qxp tags`. When it is the command given, `run` becomes what executes it and returns the exit status.
void AddTagsCommand(CLI::App& app, std::function<int()>& run);
