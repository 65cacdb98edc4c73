#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

/// Adds `qxp script`. When it is the command given, `run` becomes what executes it and returns the exit status.
/// @param arguments FILE and what is behind it, filled before the options are parsed; must outlive that.
const CLI::App& AddScriptCommand(CLI::App& app, std::function<int()>& run, const std::vector<std::string>& arguments);
