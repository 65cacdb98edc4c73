#pragma once

#include <string>

class CXmlDocument;
class Diagnostics;

/// Loads a document from a file, named from `directory` ("" for the current one), or from standard input for "-".
/// @return false after an error that has been reported.
bool ReadDocument(const std::string& file, const std::string& directory, CXmlDocument& document,
                  Diagnostics& diagnostics);
