#pragma once

#include <string>

class CXmlDocument;
class Diagnostics;

/// Loads a document from a file, or from standard input for "-".
/// @return false after an error that has been reported.
bool ReadDocument(const std::string& file, CXmlDocument& document, Diagnostics& diagnostics);
