#pragma once

#include <string>

/// Directories that configurations and scripts call by a name instead of a path, and the other things a host allows
/// once for the whole process. Safe to use from all threads.
namespace vcq::detail
{

/// Binds `name` to a directory; an empty directory unbinds it.
void BindRoot(const std::string& name, const std::string& directory);

/// The directory bound to `name`, else the one that the environment variable QX_ROOT_<name> names, as a normal path.
/// False when there is neither.
bool FindRoot(const std::string& name, std::string& directory);

/// Splits "NAME:rest". False when the path does not begin with a name and a colon: a slash before the colon makes it a
/// path with a colon in it.
bool SplitRoot(const std::string& path, std::string& name, std::string& rest);

void AllowNetworkLocations(bool allow);
bool NetworkLocationsAllowed();

} // namespace vcq::detail
