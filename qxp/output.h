#pragma once

#include <wx/stream.h>

#include <functional>
#include <string>
#include <vector>

class Diagnostics;

/// Writes a result to a stream. False when it could not; what is not the stream's fault has been logged then.
using ResultWriter = std::function<bool(wxOutputStream&)>;

/// A result and the file that it goes to; standard output when the name is empty.
struct Output
{
    std::string fileName;
    ResultWriter write;
};

/// A writer of a text, which is made when it is to be written.
ResultWriter TextWriter(const std::function<std::string()>& make);

/// Writes a text that is being put together, and empties it, when there is enough of it to be worth a call.
bool WritePiece(wxOutputStream& stream, std::string& text);

/// Writes a command's results in their order. Files are replaced only by complete results, and only when all of them
/// are complete.
/// @return false after an error that has been reported.
bool WriteOutputs(const std::vector<Output>& outputs, Diagnostics& diagnostics);

/// Writes a command's only result.
bool WriteOutput(const std::string& fileName, const ResultWriter& write, Diagnostics& diagnostics);

/// The same for a result that is a text.
bool WriteOutput(const std::string& fileName, const std::string& text, Diagnostics& diagnostics);
