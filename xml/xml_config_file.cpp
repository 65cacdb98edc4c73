#include "script/script.h"
#include "xml/xml_config.h"
#include "xml/xml_config_detail.h"
#include "xml/xml_well_formed_detail.h"

#include <wx/log.h>
#include <wx/xml/xml.h>

#include <algorithm>
#include <array>

namespace
{

constexpr wxLogLevel SaveFailureLevel = wxLOG_User + 1;

constexpr const wchar_t* ServerRoot = L"SERVERCFG";
constexpr const wchar_t* BackupSuffix = L".old";
constexpr const wchar_t* SideSuffix = L"_tmp";
constexpr const wchar_t* KeptSuffix = L".kept";
constexpr const wchar_t* Encoding = L"UTF-8";

/// Collects what is written, in the pieces in which it comes: they are large.
class PiecesStream : public wxOutputStream
{
public:
    std::vector<std::string> pieces;

protected:
    size_t OnSysWrite(const void* from, size_t size) override
    {
        pieces.emplace_back(static_cast<const char*>(from), size);
        return size;
    }
};

bool WritePieces(const CFile& file, const std::vector<std::string>& pieces)
{
    wxOutputStream* const stream = file.GetOutputStream();
    return stream && std::all_of(pieces.begin(), pieces.end(), [&](const std::string& piece) {
               return stream->WriteAll(piece.data(), piece.size());
           });
}

/// False, with an error in the log.
bool ReportUnwritten(const CDir& dir, const wxString& name)
{
    wxLogError(wxS("'%s' cannot be written in '%s'"), name, dir.GetFullPath());
    return false;
}

/// Whether there is a file of this name that can be loaded.
bool IsXmlFile(CDir& dir, const wxString& name, unsigned int maxDepth)
{
    if (dir.FindFile(name) != CDir::foundFile)
        return false;
    const CFile file = dir.OpenFile(name, wxFile::read);
    wxInputStream* const stream = file.GetInputStream();
    xml_detail::WellFormedCheck check(maxDepth);
    std::array<char, 64 * 1024> buffer;
    while (stream && stream->Read(buffer.data(), buffer.size()).LastRead() > 0)
        check.Add(buffer.data(), stream->LastRead());
    return stream && stream->Eof() && check.Finish();
}

} // namespace

/// The locks of an operation on the file. IsLocked is false when that of the file cannot be had.
class CXmlConfig::FileLocks : private Locks
{
public:
    FileLocks(CXmlConfig& config, bool critical) : Locks(config, critical), m_file(config.m_mutex)
    {
        if (!m_file.IsLocked())
            wxLogError(wxS("'%s' cannot be locked"), config.m_fileName);
    }

    bool IsLocked() const { return m_file.IsLocked(); }

private:
    CMutexNamedLocker m_file;
};

CDir CXmlConfig::Directory() const
{
    CDir dir = m_directory;
    if (m_fileCode)
        dir.SetAutoFileCode(CDir::codeUtf8);
    return dir;
}

CFile CXmlConfig::OpenToLoad()
{
    std::array<CDir, 2> directories{Directory(), CDir::GetRoot(ServerRoot)};
    directories[1].SetAutoFileCode(CDir::codeUtf8);
    m_passedOver = false;
    for (CDir& dir : directories) {
        for (const wxString& name : {m_fileName, m_fileName + BackupSuffix}) {
            const CFile file = dir.OpenFile(name, wxFile::read);
            m_fromFile = file.IsOpened() && &dir == &directories[0] && name == m_fileName;
            if (file.IsOpened())
                return file;
            const CDir::eFound found = dir.FindFile(name);
            m_passedOver = m_passedOver || found != CDir::foundNothing;
            if (found == CDir::foundFile)
                wxLogWarning(wxS("'%s' is there, but cannot be opened in '%s'"), name, dir.GetFullPath());
        }
    }
    return CFile();
}

/// Makes the tree what the file holds, or an empty one.
void CXmlConfig::LoadTree(const CFile& file)
{
    Clear();
    wxInputStream* const stream = file.GetInputStream();
    m_loaded = stream && Load(*stream, Encoding, wxXMLDOC_NONE);
    if (!m_loaded)
        CreateEmtyConfig();
}

void CXmlConfig::LoadFile()
{
    if (Refuses(Activity::Loading, wxS("LoadFile")))
        return;
    // Also without the file's lock: files are replaced in one step, so what is read is complete.
    const FileLocks locks(*this, false);
    CFile file = OpenToLoad();
    LoadTree(file);
    m_passedOver = m_passedOver || (file.IsOpened() && !m_loaded);
    m_goodStamp = m_fromFile && m_loaded ? m_directory.GetFileStamp(m_fileName) : std::string();
    file.Close();
    if (m_loaded)
        LoadAll();
}

void CXmlConfig::LoadFile(const CFile& file)
{
    if (Refuses(Activity::Loading, wxS("LoadFile")))
        return;
    const FileLocks locks(*this, false);
    LoadTree(file);
    if (m_loaded)
        LoadAll();
}

bool CXmlConfig::StoreForSave()
{
    if (Refuses(Activity::Storing, wxS("SaveFile")))
        return false;
    if (StoreAll())
        return true;
    wxLogGeneric(SaveFailureLevel, wxS("CXmlConfig::SaveFile() Failed!"));
    return false;
}

/// The tree as a file holds it. False when it cannot be written, or when what is written could not be read.
bool CXmlConfig::Serialise(std::vector<std::string>& pieces)
{
    PiecesStream stream;
    // A file that was read in another encoding may not be able to hold what has been added.
    if (GetTree())
        GetTree()->SetFileEncoding(Encoding);
    if (!Save(stream))
        return false;
    pieces = std::move(stream.pieces);
    if (xml_detail::IsSurelyWellFormed(*GetTree()))
        return true;
    xml_detail::WellFormedCheck check(GetMaxDepth());
    for (const std::string& piece : pieces)
        check.Add(piece.data(), piece.size());
    if (check.Finish())
        return true;
    wxLogError(wxS("'%s' is not saved, it could not be loaded again: %s"), m_fileName, check.Message());
    return false;
}

/// Whether the file can be loaded. Not read again when it is what was loaded or saved here.
bool CXmlConfig::IsGood(CDir& dir) const
{
    const std::string stamp = dir.GetFileStamp(m_fileName);
    return (!stamp.empty() && stamp == m_goodStamp) || IsXmlFile(dir, m_fileName, GetMaxDepth());
}

/// Makes the file the backup. A file that is damaged may be so because somebody has edited it: it is worth keeping, but
/// not instead of a good backup.
bool CXmlConfig::ReplaceBackup(CDir& dir) const
{
    const wxString backup = m_fileName + BackupSuffix;
    const wxString kept = m_fileName + KeptSuffix;
    if (!IsGood(dir) && IsXmlFile(dir, backup, GetMaxDepth())) {
        if (!dir.BackUpFile(backup, kept))
            return false;
        wxLogWarning(wxS("'%s' is damaged; its good backup is kept as '%s'"), m_fileName, kept);
    }
    return dir.BackUpFile(m_fileName, backup);
}

/// Makes the tree the file's content, with the lock held.
bool CXmlConfig::ReplaceFile(bool createFlag)
{
    std::vector<std::string> pieces;
    if (!Serialise(pieces))
        return false;
    CDir dir = Directory();
    const bool exists = dir.FindFile(m_fileName) != CDir::foundNothing;
    // Written before the backup step, so that most of what can fail does so while nothing has changed yet.
    CFile file = dir.CreateFileW(m_fileName, exists || createFlag);
    const bool written = WritePieces(file, pieces);
    if (!written || (exists && !ReplaceBackup(dir) && !createFlag) || !file.Close())
        return ReportUnwritten(dir, m_fileName);
    m_goodStamp = dir.GetFileStamp(m_fileName);
    if (!exists)
        dir.DeleteFileW(m_fileName + BackupSuffix);
    return true;
}

bool CXmlConfig::SaveFile(bool createFlag)
{
    if (!StoreForSave())
        return false;
    const FileLocks locks(*this, true);
    return locks.IsLocked() && ReplaceFile(createFlag);
}

bool CXmlConfig::SaveFile(CDir& dir, const wxString& name, bool createFlag)
{
    if (!StoreForSave())
        return false;
    const FileLocks locks(*this, true);
    std::vector<std::string> pieces;
    if (!locks.IsLocked() || !Serialise(pieces))
        return false;
    CDir target = dir;
    if (m_fileCode)
        target.SetAutoFileCode(CDir::codeUtf8);
    CFile file = target.CreateFileW(name, createFlag);
    return (WritePieces(file, pieces) && file.Close()) || ReportUnwritten(target, name);
}

bool CXmlConfig::MergeSaveFile(bool storeFirst, bool keepExisting, bool createFlag)
{
    if (storeFirst ? !StoreForSave() : Refuses(Activity::Storing, wxS("MergeSaveFile")))
        return false;
    const FileLocks locks(*this, true);
    if (!locks.IsLocked())
        return false;
    {
        CXmlConfig side(nullptr, m_fileName + SideSuffix, nullptr, m_directory, m_fileCode);
        side.SetMaxDepth(GetMaxDepth());
        side.LoadFile();
        if (!MergeXML(&side, keepExisting))
            return false;
    }
    return ReplaceFile(createFlag);
}

bool CXmlConfig::UpdateFile(const std::function<bool(CXmlConfig& config)>& change)
{
    if (m_activity != Activity::None) {
        Refuses(m_activity, wxS("UpdateFile"));
        return false;
    }
    const FileLocks locks(*this, true);
    if (!locks.IsLocked())
        return false;
    LoadFile();
    return !m_passedOver && change(*this) && SaveFile(true);
}
