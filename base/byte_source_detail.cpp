#include "base/byte_source_detail.h"

#include <unistd.h>
#include <wx/log.h>

namespace vcq::detail
{

ssize_t DescriptorSource::Read(void* to, size_t size)
{
    return ReadSome(m_fd, to, size);
}

wxFileOffset DescriptorSource::Seek(wxFileOffset offset, int whence)
{
    const off_t position = ::lseek(m_fd, offset, whence);
    return position < 0 ? wxInvalidOffset : position;
}

ssize_t DescriptorSource::ReadAt(void* to, size_t size, wxFileOffset position)
{
    return ReadSomeAt(m_fd, to, size, position);
}

ssize_t StreamSource::Read(void* to, size_t size)
{
    const wxLogNull silence;
    m_stream->Read(to, size);
    // Asked first: a check sum that is wrong shows with the last bytes, and never again.
    if (m_stream->GetLastError() == wxSTREAM_READ_ERROR)
        return -1;
    return static_cast<ssize_t>(m_stream->LastRead());
}

} // namespace vcq::detail
