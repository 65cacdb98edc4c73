#pragma once

#include "base/api.h"
#include "base/file.h"

#include <wx/file.h>
#include <wx/object.h>
#include <wx/string.h>

#include <string>

/// A directory: where the names of files are looked up, and how their texts are read. A value: a copy is equal and goes
/// its own way. It may also be the inside of a zip archive or a place on the network (ExtractDir); there, files can be
/// read but not made.
///
/// Names are converted as ToSystemName (base/text_encoding.h) says, in UTF-8 whatever the locale. A name that is empty
/// or holds a NUL is the name of no file: what needs one fails. Nothing is logged; callers report.
class VC_QXPARSER_API CDir : public wxObject
{
    wxDECLARE_DYNAMIC_CLASS(CDir);

public:
    /// How texts are read that are read with CFile::convDefault.
    enum eCode
    {
        codeDetect = 0, ///< byte order mark, else UTF-8, else Latin-1: see CFile::convDefault
        codeLocale = 1, ///< as CFile::convLocale
        codeUtf16 = 2,  ///< as CFile::convUtf16
        codeUtf8 = 3    ///< as CFile::convUtf8
    };

    /// The directory that is current now; later changes of the current directory do not move it.
    CDir();

    /// The directory `path`, relative to the current one; the current one itself when `path` is empty. It need not
    /// exist: see Ok.
    explicit CDir(const wxString& path);

    ///@{
    /// A copy is equal and goes its own way.
    CDir(const CDir& other);
    CDir& operator=(const CDir& other);
    ///@}

    ~CDir() override;

    /// The absolute path, without "." and ".." (but see ResolvePath) and without a slash at its end. For the inside of
    /// an archive "zip:" and the paths of both joined by "#", for a network location its address. Empty when the
    /// directory was made from nothing valid.
    wxString GetFullPath() const;

    /// True when there is such a directory (or archive, readable) at this moment. For a network location: when the
    /// network is allowed and the host has a handler for it; nothing is sent.
    bool Ok() const;

    /// Opens the file `name`, relative to this directory; an absolute name is used as it is (not in archives and
    /// network locations, where names never lead out). Pipes and devices can be read like files. A file that is not
    /// open is returned for whatever cannot be opened, a directory included. wxFile::write, write_append, write_excl
    /// and read_write act on the file in place; CreateFileW is the safe way to write one.
    CFile OpenFile(const wxString& name, wxFile::OpenMode mode = wxFile::read);

    /// Makes the file `name` or, with `replace`, a new content for it. Under its name it appears, complete, when
    /// CFile::Close succeeds, and not before: see there. Dropping the file without Close discards what was written, and
    /// so does the death of the process. A new file has the permissions that the umask allows; a replaced one keeps its
    /// mode and, where the system permits, its owner. A symbolic link is followed: its target is replaced, the link
    /// stays. A device or a pipe is written to directly. Not open: when the file exists and `replace` is false, when it
    /// is a directory or protected against writing, when its directory does not exist or cannot be written to.
    CFile CreateFileW(const wxString& name, bool replace);

    /// Deletes the file `name` (a link itself, not its target); false when it is not deleted. Never a directory.
    bool DeleteFileW(const wxString& name);

    /// Gives the file `from` the name `to` in one step, replacing a file of that name. False when nothing has changed.
    bool RenameFile(const wxString& from, const wxString& to);

    /// Gives what the file `name` holds the name `backup` as well, in one step, replacing a file of that name; `name`
    /// is there all the time, whatever happens. Until `name` gets a new content by CreateFileW the two may be one file.
    /// The backup has the permissions of the file. False, with nothing changed, when `name` is no regular file, and
    /// when it fails.
    bool BackUpFile(const wxString& name, const wxString& backup);

    /// What there is under a name, links followed. Not for archives and network locations.
    enum eFound
    {
        foundNothing, ///< certainly nothing
        foundFile,    ///< a regular file
        foundOther    ///< a directory, a device, a pipe; and when the system does not say
    };
    /// What there is under `name`, at this moment.
    eFound FindFile(const wxString& name) const;

    /// A text that is another one as soon as there is another file under `name`, or its content has been changed
    /// (within the accuracy of the file system's clock). Empty when there is no regular file.
    std::string GetFileStamp(const wxString& name) const;

    /// The path that `name` has when all symbolic links are followed: the same by whatever way one gets to the file. It
    /// need not exist. Empty for what is no name of a file.
    wxString GetRealPath(const wxString& name) const;

    /// How the texts of the files that are opened from now on are read. Writing is in bytes and does not change.
    void SetAutoFileCode(eCode code);

    /// The named root directory `path`, if there is one of this name, else the directory `path` itself.
    static CDir GetRoot(const wxString& path);

    /// Gives a directory a name for GetRoot, ResolvePath and ExtractDir, in the whole process; an empty `directory`
    /// takes it away. Without one, the environment variable QX_ROOT_<name> is looked at. A leading "~" is expanded.
    /// False for a name that cannot be one: empty, with a colon, slash or NUL, or that of a scheme below.
    static bool SetRoot(const wxString& name, const wxString& directory);

    /// The directory `path` below `location`, whose texts are in the encoding called `encoding` (any name that iconv
    /// knows, or "locale"; empty: by themselves, as codeDetect). `location` is one of
    ///   NAME                  a named root
    ///   DIR, ~/DIR, NAME:DIR  what ResolvePath makes of it; empty: the current directory
    ///   file:PATH, file:///PATH   a directory as an address, with %XX for what an address cannot hold
    ///   zip:ARCHIVE           the inside of a zip archive; ARCHIVE is what ResolvePath takes
    ///   http:..., https:...   a network location; see AllowNetwork
    /// `path` may be empty and must not lead out of the location. What is none of these, and an unknown encoding, give
    /// a directory that is not Ok and opens nothing.
    static CDir ExtractDir(const wxString& location, const wxString& path, const wxString& encoding);

    /// Rewrites `path` into the absolute path that it means: "~" is the user's home directory, "NAME:rest" is below the
    /// named root NAME, anything else is relative to the current directory; "." and ".." are resolved (a ".." behind a
    /// symbolic link stays, since only the system knows what is above the link's target). A file name with a colon is
    /// written with a slash before it ("./a:b"). Nothing need exist. False, with `path` as it was, when it is empty,
    /// holds a NUL or names an unknown root.
    static bool ResolvePath(wxString& path);

    /// Lets ExtractDir use network locations, for the whole process; nothing touches the network before. The transport
    /// is the host's: it registers a wxFileSystem handler for the scheme (wxInternetFSHandler of the wxWidgets network
    /// library, or its own), so that this library links no network code.
    static void AllowNetwork(bool allow = true);

private:
    enum Kind
    {
        kindNone,
        kindDirectory,
        kindArchive,
        kindNetwork
    };

    CDir(Kind kind, const wxString& path, const wxString& member);
    bool PathOf(const wxString& name, std::string& path) const;
    bool MemberOf(const wxString& name, wxString& member) const;
    CFile OpenPlainFile(const wxString& name, wxFile::OpenMode mode) const;
    void ApplyEncoding(CFile& file) const;
    static CDir Locate(const wxString& location, const wxString& member);
    static CDir LocateDirectory(const std::string& path, const wxString& member);

    Kind m_kind;
    wxString m_path;   ///< the directory, the archive, or the address
    wxString m_member; ///< where inside the archive or below the address
    eCode m_code = codeDetect;
    wxString m_encoding; ///< an encoding by name, which goes before the code
};
