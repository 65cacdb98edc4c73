#pragma once

#include "tests/faults/faults.h"

#include <map>
#include <string>
#include <vector>

/// How a run of a program went.
struct CommandResult
{
    int status = -1; ///< The exit status; -1 when a signal ended it.
    std::string output;
    std::string errors;
    long calls = 0; ///< Calls of the system that were counted.
};

/// One fault that a run meets.
struct CommandFault
{
    Fault action = Fault::count;
    long call = 0;
    int error = 0;
};

/// Runs qxp in a directory; an argument "<FILE" is no argument, but what it has for its standard input. What it writes
/// is kept in files beside that directory.
CommandResult RunQxp(const std::string& directory, const std::vector<std::string>& arguments,
                     const CommandFault& fault = {});

/// The bytes of every file below a directory, by its path from there; what a link leads to for a link.
using Snapshot = std::map<std::string, std::string>;
Snapshot TakeSnapshot(const std::string& directory);
