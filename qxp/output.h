#pragma once

#include <string>

class Diagnostics;

/// Writes a command's result to a file (empty name: standard output). A file is replaced only by the complete result.
/// @return false after an error that has been reported.
bool WriteOutput(const std::string& fileName, const std::string& text, Diagnostics& diagnostics);
