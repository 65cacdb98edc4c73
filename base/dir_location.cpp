#include "base/dir.h"
#include "base/encoding_detail.h"
#include "base/network_detail.h"
#include "base/path_detail.h"
#include "base/roots_detail.h"
#include "base/text_encoding.h"

#include <algorithm>
#include <iterator>

using namespace vcq::detail;

namespace
{

constexpr const char* schemes[] = {"file", "zip", "http", "https"};

bool IsScheme(const std::string& name)
{
    return std::find(std::begin(schemes), std::end(schemes), name) != std::end(schemes);
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Resolves the %XX of an address; a percent sign with anything else behind it stands for itself.
std::string Unescape(const std::string& text)
{
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '%' && i + 2 < text.size();
        const int high = escape ? HexDigit(text[i + 1]) : -1;
        const int low = escape ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            plain += text[i];
            continue;
        }
        plain += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return plain;
}

/// The path of a file address, behind its scheme. Empty when it is on another machine.
std::string FileAddressPath(std::string rest)
{
    if (rest.compare(0, 2, "//") == 0) {
        const size_t slash = std::min(rest.find('/', 2), rest.size());
        const std::string host = rest.substr(2, slash - 2);
        if (!host.empty() && host != "localhost")
            return std::string();
        rest.erase(0, slash);
    }
    return Unescape(rest);
}

std::string WithoutSlashes(const std::string& path)
{
    return path.substr(std::min(path.find_first_not_of('/'), path.size()));
}

} // namespace

CDir CDir::GetRoot(const wxString& path)
{
    std::string root;
    if (FindRoot(ToSystemName(path), root))
        return CDir(FromSystemName(root));
    return CDir(path);
}

bool CDir::SetRoot(const wxString& name, const wxString& directory)
{
    std::string root;
    if (!ToPath(name, root) || root.find_first_of(":/") != std::string::npos || IsScheme(root))
        return false;
    std::string path;
    if (!directory.empty()) {
        if (!ToPath(directory, path) || !ExpandHome(path))
            return false;
        path = NormalPath(path);
        if (path.empty())
            return false;
    }
    BindRoot(root, path);
    return true;
}

bool CDir::ResolvePath(wxString& path)
{
    std::string bytes;
    if (!ToPath(path, bytes))
        return false;
    std::string root;
    std::string rest;
    if (SplitRoot(bytes, root, rest)) {
        std::string directory;
        if (!FindRoot(root, directory))
            return false;
        bytes = JoinPath(directory, WithoutSlashes(rest));
    } else if (!ExpandHome(bytes)) {
        return false;
    }
    bytes = NormalPath(bytes);
    if (bytes.empty())
        return false;
    path = FromSystemName(bytes);
    return true;
}

CDir CDir::LocateDirectory(const std::string& path, const wxString& member)
{
    if (path.empty() || path.find('\0') != std::string::npos)
        return CDir(kindNone, wxString(), wxString());
    return CDir(FromSystemName(JoinPath(path, ToSystemName(member))));
}

CDir CDir::Locate(const wxString& location, const wxString& member)
{
    const CDir nowhere(kindNone, wxString(), wxString());
    const std::string text = ToSystemName(location);
    std::string path;
    if (FindRoot(text, path))
        return LocateDirectory(path, member);
    std::string scheme;
    std::string rest;
    SplitRoot(text, scheme, rest);
    if (scheme == "file")
        return LocateDirectory(FileAddressPath(rest), member);
    if (scheme == "http" || scheme == "https")
        return NetworkLocationsAllowed() ? CDir(kindNetwork, LocationBase(location), member) : nowhere;
    wxString resolved = scheme == "zip" ? FromSystemName(rest) : location;
    if (resolved.empty() && scheme.empty())
        return LocateDirectory(".", member);
    if (!ResolvePath(resolved))
        return nowhere;
    return scheme == "zip" ? CDir(kindArchive, resolved, member) : LocateDirectory(ToSystemName(resolved), member);
}

CDir CDir::ExtractDir(const wxString& location, const wxString& path, const wxString& encoding)
{
    CDir directory(kindNone, wxString(), wxString());
    Encoding known;
    std::string member;
    const std::string bytes = ToSystemName(path);
    if (!FindEncoding(encoding, known) || bytes.find('\0') != std::string::npos || !NormalMember(bytes, member))
        return directory;
    directory = Locate(location, FromSystemName(member));
    directory.m_encoding = encoding;
    return directory;
}

void CDir::AllowNetwork(bool allow)
{
    AllowNetworkLocations(allow);
}
