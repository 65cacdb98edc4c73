#pragma once

#include <string>
#include <wx/string.h>

/// Paths, as bytes in the system's form (ToSystemName), except where a function says otherwise.
namespace vcq::detail
{

/// The bytes of a name for the system. False when the system cannot have it: an empty one, or one with a NUL.
bool ToPath(const wxString& name, std::string& path);

/// The current directory; empty when there is none (it was deleted).
std::string CurrentDirectory();

/// `name` below `directory`; `name` itself when it is absolute.
std::string JoinPath(const std::string& directory, const std::string& name);

/// Absolute, without ".", "..", doubled and closing slashes. A ".." behind a symbolic link stays: what is above the
/// link's target is not what is above the link. Empty when a relative path meets no current directory.
std::string NormalPath(const std::string& path);

/// As NormalPath for a name inside an archive or a location, where there are no links: relative, empty for the top.
/// False when it leads out of it.
bool NormalMember(const std::string& name, std::string& member);

/// Replaces a leading "~" (alone or before a slash) by the user's home directory. False when there is none.
bool ExpandHome(std::string& path);

} // namespace vcq::detail
