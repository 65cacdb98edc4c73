#pragma once

#include <string>

/// The address of a file by its name, as the system knows it: "file:///..." for an absolute name, else relative to the
/// current directory. Every byte that does not certainly stand for itself in an address is written as %XX.
std::string UriOfFile(const std::string& name);

/// The same for a relative name, as people write such addresses: with %XX only for what would be taken for something
/// else, control characters, and bytes that are not UTF-8.
std::string UriReferenceOf(const std::string& name);
