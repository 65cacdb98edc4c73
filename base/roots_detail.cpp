#include "base/roots_detail.h"

#include "base/path_detail.h"

#include <atomic>
#include <cstdlib>
#include <map>
#include <mutex>

namespace vcq::detail
{

namespace
{

struct Roots
{
    std::mutex lock;
    std::map<std::string, std::string> directories;
};

/// Never destroyed: a host's threads and static objects may ask for a root while the process ends.
Roots& BoundRoots()
{
    static auto* const roots = new Roots;
    return *roots;
}

std::atomic<bool> networkAllowed{false};

bool FindBound(const std::string& name, std::string& directory)
{
    Roots& roots = BoundRoots();
    const std::lock_guard<std::mutex> lock(roots.lock);
    const auto found = roots.directories.find(name);
    if (found == roots.directories.end())
        return false;
    directory = found->second;
    return true;
}

} // namespace

void BindRoot(const std::string& name, const std::string& directory)
{
    Roots& roots = BoundRoots();
    const std::lock_guard<std::mutex> lock(roots.lock);
    if (directory.empty())
        roots.directories.erase(name);
    else
        roots.directories[name] = directory;
}

bool FindRoot(const std::string& name, std::string& directory)
{
    if (name.empty())
        return false;
    if (FindBound(name, directory))
        return true;
    const char* const variable = std::getenv(("QX_ROOT_" + name).c_str());
    if (variable == nullptr || *variable == '\0')
        return false;
    directory = variable;
    if (!ExpandHome(directory))
        return false;
    directory = NormalPath(directory);
    return !directory.empty();
}

bool SplitRoot(const std::string& path, std::string& name, std::string& rest)
{
    const size_t end = path.find_first_of(":/");
    if (end == std::string::npos || path[end] != ':')
        return false;
    name = path.substr(0, end);
    rest = path.substr(end + 1);
    return true;
}

void AllowNetworkLocations(bool allow)
{
    networkAllowed = allow;
}

bool NetworkLocationsAllowed()
{
    return networkAllowed;
}

} // namespace vcq::detail
