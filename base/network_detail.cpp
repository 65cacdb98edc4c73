#include "base/network_detail.h"

#include "base/roots_detail.h"
#include "base/text_encoding.h"

#include <cstring>
#include <mutex>
#include <wx/filesys.h>
#include <wx/log.h>

namespace vcq::detail
{

namespace
{

/// The handlers are one list for the whole process, without a lock of their own.
std::mutex& HandlerLock()
{
    static auto* const lock = new std::mutex;
    return *lock;
}

bool IsPlainInAddress(char c)
{
    const bool alphanumeric = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return alphanumeric || (c != '\0' && std::strchr("-._~/!$&'()*+,;=@", c) != nullptr);
}

wxString Escape(const wxString& member)
{
    wxString escaped;
    for (const char c : ToUtf8(member)) {
        if (IsPlainInAddress(c))
            escaped += c;
        else
            escaped += wxString::Format("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    return escaped;
}

} // namespace

wxString LocationBase(const wxString& location)
{
    wxString base = location;
    while (base.EndsWith("/"))
        base.RemoveLast();
    return base;
}

bool CanOpenLocation(const wxString& base)
{
    const std::lock_guard<std::mutex> lock(HandlerLock());
    return NetworkLocationsAllowed() && wxFileSystem::HasHandlerForPath(base + "/");
}

std::unique_ptr<ByteSource> OpenLocation(const wxString& base, const wxString& member)
{
    if (!CanOpenLocation(base))
        return nullptr;
    const std::lock_guard<std::mutex> lock(HandlerLock());
    const wxLogNull silence;
    wxFileSystem files;
    std::shared_ptr<wxFSFile> file(files.OpenFile(base + "/" + Escape(member)));
    if (!file || file->GetStream() == nullptr)
        return nullptr;
    wxInputStream* const stream = file->GetStream();
    return std::make_unique<StreamSource>(stream, std::move(file));
}

} // namespace vcq::detail
