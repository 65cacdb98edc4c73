#pragma once

#include <string>

class CDir;
class CXmlDocument;
class Diagnostics;

/// Loads a document from a file, named from `dir`, or from standard input for "-".
/// @return false after an error that has been reported.
bool ReadDocument(const std::string& file, CDir& dir, CXmlDocument& document, Diagnostics& diagnostics);
