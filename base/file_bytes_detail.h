#pragma once

#include "base/posix_detail.h"

#include <string>

/// Whole files by plain calls of the system, for readers with rules of their own.
namespace vcq::detail
{

/// Opens a file; not open on failure, errno says why.
UniqueFd OpenToRead(const std::string& path);

/// Opens an empty file, which is made when there is none, for nothing but writing.
UniqueFd OpenEmpty(const std::string& path);

/// Appends all that is left to read. False on failure, errno says why.
bool ReadToEnd(int fd, std::string& bytes);

} // namespace vcq::detail
