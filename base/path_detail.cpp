#include "base/path_detail.h"

#include "base/text_encoding.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vcq::detail
{

namespace
{

bool IsLink(const std::string& path)
{
    struct stat info;
    return ::lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
}

/// The names between the slashes; "." and empty ones left out.
std::vector<std::string> Names(const std::string& path)
{
    std::vector<std::string> names;
    for (size_t begin = 0; begin < path.size();) {
        const size_t slash = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, slash - begin);
        if (!name.empty() && name != ".")
            names.push_back(name);
        begin = slash + 1;
    }
    return names;
}

void StepUp(std::string& path)
{
    path.erase(path.empty() ? 0 : path.rfind('/'));
}

bool EndsWithStepUp(const std::string& path)
{
    return path.size() >= 3 && path.compare(path.size() - 3, 3, "/..") == 0;
}

} // namespace

bool ToPath(const wxString& name, std::string& path)
{
    path = ToSystemName(name);
    return !path.empty() && path.find('\0') == std::string::npos;
}

std::string CurrentDirectory()
{
    std::vector<char> path(PATH_MAX);
    while (::getcwd(path.data(), path.size()) == nullptr) {
        if (errno != ERANGE)
            return std::string();
        path.resize(path.size() * 2);
    }
    // A directory outside the root directory of the process has a name that leads nowhere.
    return path[0] == '/' ? path.data() : std::string();
}

std::string JoinPath(const std::string& directory, const std::string& name)
{
    if (!name.empty() && name.front() == '/')
        return name;
    return directory + (!directory.empty() && directory.back() == '/' ? "" : "/") + name;
}

std::string NormalPath(const std::string& path)
{
    std::string absolute = path;
    if (absolute.empty() || absolute.front() != '/') {
        std::string current = CurrentDirectory();
        if (current.empty())
            return current;
        absolute = JoinPath(current, path);
    }
    std::string normal;
    for (const std::string& name : Names(absolute)) {
        if (name == ".." && !EndsWithStepUp(normal) && !IsLink(normal))
            StepUp(normal);
        else
            normal += "/" + name;
    }
    return normal.empty() ? "/" : normal;
}

bool NormalMember(const std::string& name, std::string& member)
{
    member.clear();
    for (const std::string& step : Names(name)) {
        if (step == "..") {
            if (member.empty())
                return false;
            StepUp(member);
            continue;
        }
        member += "/" + step;
    }
    member.erase(0, 1);
    return true;
}

bool ExpandHome(std::string& path)
{
    if (path.empty() || path.front() != '~' || (path.size() > 1 && path[1] != '/'))
        return true;
    std::string home;
    if (const char* const variable = std::getenv("HOME"))
        home = variable;
    if (home.empty()) {
        passwd entry;
        passwd* found = nullptr;
        std::vector<char> buffer(16 * 1024);
        if (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr)
            home = found->pw_dir;
    }
    if (home.empty())
        return false;
    path.replace(0, 1, home);
    return true;
}

} // namespace vcq::detail
