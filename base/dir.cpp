#include "base/dir.h"

#include "base/archive_detail.h"
#include "base/atomic_file_detail.h"
#include "base/backup_detail.h"
#include "base/encoding_detail.h"
#include "base/file_state_detail.h"
#include "base/network_detail.h"
#include "base/path_detail.h"
#include "base/text_encoding.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vcq::detail;

wxIMPLEMENT_DYNAMIC_CLASS(CDir, wxObject);

namespace
{

int OpenFlags(wxFile::OpenMode mode)
{
    switch (mode) {
    case wxFile::read:
        return O_RDONLY;
    case wxFile::write:
        return O_WRONLY | O_CREAT | O_TRUNC;
    case wxFile::read_write:
        return O_RDWR;
    case wxFile::write_append:
        return O_WRONLY | O_CREAT | O_APPEND;
    case wxFile::write_excl:
        return O_WRONLY | O_CREAT | O_EXCL;
    }
    return O_RDONLY;
}

std::shared_ptr<FileState> OpenState(const std::string& path, int flags)
{
    // A terminal that is opened by its name must not become the one that can interrupt the process.
    UniqueFd fd = OpenPath(path, flags | O_NOCTTY, 0666);
    struct stat info;
    if (!fd.IsOpen() || ::fstat(fd.Get(), &info) != 0 || S_ISDIR(info.st_mode))
        return nullptr;
    const int access = flags & O_ACCMODE;
    return std::make_shared<FileState>(std::move(fd), access != O_WRONLY, access != O_RDONLY);
}

std::shared_ptr<FileState> StateOver(std::unique_ptr<ByteSource> source)
{
    return source ? std::make_shared<FileState>(std::move(source)) : nullptr;
}

std::shared_ptr<FileState> CreateState(const std::string& path, bool replace)
{
    std::string target = path;
    if (FollowLinks(target) == TargetKind::special)
        return replace ? OpenState(path, O_WRONLY) : nullptr;
    std::unique_ptr<AtomicFile> file = AtomicFile::Create(path, replace);
    return file ? std::make_shared<FileState>(std::move(file)) : nullptr;
}

Encoding::Kind KindOf(CDir::eCode code)
{
    switch (code) {
    case CDir::codeLocale:
        return Encoding::locale;
    case CDir::codeUtf16:
        return Encoding::utf16;
    case CDir::codeUtf8:
        return Encoding::utf8;
    default:
        return Encoding::detect;
    }
}

} // namespace

CDir::CDir() : CDir(wxString()) {}

CDir::CDir(const wxString& path) : m_kind(kindNone)
{
    std::string bytes = ".";
    if (!path.empty() && !ToPath(path, bytes))
        return;
    m_path = FromSystemName(NormalPath(bytes));
    m_kind = m_path.empty() ? kindNone : kindDirectory;
}

CDir::CDir(Kind kind, const wxString& path, const wxString& member) : m_kind(kind), m_path(path), m_member(member) {}

CDir::CDir(const CDir& other) = default;
CDir& CDir::operator=(const CDir& other) = default;
CDir::~CDir() = default;

wxString CDir::GetFullPath() const
{
    const wxString separator = m_member.empty() ? "" : (m_kind == kindArchive ? "#" : "/");
    return (m_kind == kindArchive ? "zip:" : "") + m_path + separator + m_member;
}

bool CDir::Ok() const
{
    switch (m_kind) {
    case kindDirectory:
        return IsDirectory(ToSystemName(m_path));
    case kindArchive:
        return IsArchive(ToSystemName(m_path));
    case kindNetwork:
        return CanOpenLocation(m_path);
    default:
        return false;
    }
}

bool CDir::PathOf(const wxString& name, std::string& path) const
{
    const bool known = m_kind == kindDirectory || (m_kind == kindNone && name.StartsWith("/"));
    if (!known || !ToPath(name, path))
        return false;
    path = JoinPath(ToSystemName(m_path), path);
    return true;
}

bool CDir::MemberOf(const wxString& name, wxString& member) const
{
    std::string path;
    std::string normal;
    if (!ToPath(name, path) || !NormalMember(JoinPath(ToSystemName(m_member), path), normal) || normal.empty())
        return false;
    member = FromSystemName(normal);
    return true;
}

CFile CDir::OpenPlainFile(const wxString& name, wxFile::OpenMode mode) const
{
    std::string path;
    return PathOf(name, path) ? CFile(OpenState(path, OpenFlags(mode))) : CFile();
}

CFile CDir::OpenFile(const wxString& name, wxFile::OpenMode mode)
{
    CFile file;
    wxString member;
    if (m_kind == kindDirectory || m_kind == kindNone)
        file = OpenPlainFile(name, mode);
    else if (mode != wxFile::read || !MemberOf(name, member))
        return file;
    else if (m_kind == kindArchive)
        file = CFile(StateOver(OpenArchiveMember(ToSystemName(m_path), member)));
    else
        file = CFile(StateOver(OpenLocation(m_path, member)));
    ApplyEncoding(file);
    return file;
}

void CDir::ApplyEncoding(CFile& file) const
{
    if (!file.m_state)
        return;
    if (m_encoding.empty())
        file.m_state->TextEncoding().kind = KindOf(m_code);
    else
        FindEncoding(m_encoding, file.m_state->TextEncoding());
}

CFile CDir::CreateFileW(const wxString& name, bool replace)
{
    std::string path;
    return PathOf(name, path) ? CFile(CreateState(path, replace)) : CFile();
}

bool CDir::DeleteFileW(const wxString& name)
{
    std::string path;
    return PathOf(name, path) && ::unlink(path.c_str()) == 0;
}

bool CDir::RenameFile(const wxString& from, const wxString& to)
{
    std::string oldPath;
    std::string newPath;
    if (!PathOf(from, oldPath) || !PathOf(to, newPath))
        return false;
    return ::rename(oldPath.c_str(), newPath.c_str()) == 0;
}

bool CDir::BackUpFile(const wxString& name, const wxString& backup)
{
    std::string from;
    std::string to;
    return PathOf(name, from) && PathOf(backup, to) && BackUp(from, to);
}

CDir::eFound CDir::FindFile(const wxString& name) const
{
    std::string path;
    struct stat info;
    if (!PathOf(name, path))
        return foundNothing;
    if (::stat(path.c_str(), &info) == 0)
        return S_ISREG(info.st_mode) ? foundFile : foundOther;
    return errno == ENOENT || errno == ENOTDIR ? foundNothing : foundOther;
}

std::string CDir::GetFileStamp(const wxString& name) const
{
    std::string path;
    struct stat info;
    if (!PathOf(name, path) || ::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
        return std::string();
    std::string stamp;
    const timespec& changed = info.st_mtim;
    for (const auto number : {static_cast<long long>(info.st_dev), static_cast<long long>(info.st_ino),
                              static_cast<long long>(info.st_size), static_cast<long long>(changed.tv_sec),
                              static_cast<long long>(changed.tv_nsec)})
        stamp += std::to_string(number) + " ";
    return stamp;
}

wxString CDir::GetRealPath(const wxString& name) const
{
    std::string path;
    if (!PathOf(name, path))
        return wxString();
    FollowLinks(path);
    char real[PATH_MAX];
    if (::realpath(path.c_str(), real) != nullptr)
        return FromSystemName(real);
    const std::string directory = DirectoryOf(path);
    if (::realpath(directory.c_str(), real) != nullptr)
        return FromSystemName(JoinPath(real, NameOf(path)));
    return FromSystemName(NormalPath(path));
}

void CDir::SetAutoFileCode(eCode code)
{
    m_code = code;
    m_encoding.clear();
}
