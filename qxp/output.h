#pragma once

#include <wx/stream.h>

#include <functional>
#include <string>

class Diagnostics;

/// Writes a result to a stream. False when it could not; what is not the stream's fault has been logged then.
using ResultWriter = std::function<bool(wxOutputStream&)>;

/// Writes a command's result to a file (empty name: standard output). A file is replaced only by the complete result.
/// @return false after an error that has been reported.
bool WriteOutput(const std::string& fileName, const ResultWriter& write, Diagnostics& diagnostics);

/// The same for a result that is a text.
bool WriteOutput(const std::string& fileName, const std::string& text, Diagnostics& diagnostics);
