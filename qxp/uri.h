#pragma once

#include <string>

/// The address of a file by its name, as the system knows it: "file:///..." for an absolute name, else relative to the
/// current directory. Every byte that does not certainly stand for itself in an address is written as %XX.
std::string UriOfFile(const std::string& name);
