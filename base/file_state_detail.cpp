#include "base/file_state_detail.h"

#include "base/patience_detail.h"

#include <algorithm>
#include <cstring>
#include <unistd.h>

namespace vcq::detail
{

namespace
{

/// Bytes asked of the system at once, and held back until there are so many: beyond this the calls no longer show.
constexpr size_t bufferSize = 64 * 1024;

int Whence(wxSeekMode mode)
{
    switch (mode) {
    case wxFromStart:
        return SEEK_SET;
    case wxFromEnd:
        return SEEK_END;
    default:
        return SEEK_CUR;
    }
}

} // namespace

FileState::FileState(UniqueFd fd, bool readable, bool writable) : m_fd(std::move(fd)), m_writable(writable)
{
    if (readable)
        m_source = std::make_unique<DescriptorSource>(m_fd.Get());
}

FileState::FileState(std::unique_ptr<AtomicFile> file) : m_atomic(std::move(file)), m_writable(true) {}

FileState::FileState(std::unique_ptr<ByteSource> source) : m_source(std::move(source)) {}

FileState::~FileState()
{
    // A file that is published when it is complete is not complete before somebody has closed it.
    if (m_open && !m_atomic)
        Flush();
}

bool FileState::Close()
{
    if (!m_open)
        return false;
    const bool flushed = Flush();
    const bool complete = !IsWritable() || (flushed && !m_failed);
    const bool published = complete && (!m_atomic || m_atomic->Commit());
    m_open = false;
    m_atomic.reset();
    m_source.reset();
    ForgetWindow();
    const bool closed = m_fd.Close();
    return published && closed;
}

void FileState::ForgetWindow()
{
    m_begin = 0;
    m_end = 0;
}

bool FileState::Fill()
{
    if (!IsReadable() || !Flush())
        return false;
    if (m_begin > 0) {
        std::memmove(m_window.data(), m_window.data() + m_begin, WindowSize());
        m_end -= m_begin;
        m_begin = 0;
    }
    const bool isFull = m_window.size() - m_end < bufferSize;
    const size_t size = isFull ? std::max(m_end + bufferSize, m_end * 2) : m_window.size();
    if (!MayGoOn(isFull ? size : 0)) {
        Fail();
        return false;
    }
    m_window.resize(size);
    const ssize_t count = m_source->Read(m_window.data() + m_end, m_window.size() - m_end);
    if (count < 0)
        Fail();
    if (count <= 0)
        return false;
    m_end += static_cast<size_t>(count);
    return true;
}

void FileState::Consume(size_t size)
{
    m_begin += size;
    m_atBeginning = m_atBeginning && size == 0;
}

size_t FileState::ReadBytes(void* to, size_t size)
{
    if (WindowSize() == 0 && size > 0 && !Fill())
        return 0;
    const size_t count = std::min(size, WindowSize());
    std::memcpy(to, Window(), count);
    Consume(count);
    return count;
}

ssize_t FileState::ReadAt(void* to, size_t size, wxFileOffset position)
{
    return IsReadable() ? m_source->ReadAt(to, size, position) : -1;
}

wxFileOffset FileState::Tell() const
{
    if (!IsReadable())
        return wxInvalidOffset;
    const wxFileOffset position = m_source->Seek(0, SEEK_CUR);
    return position == wxInvalidOffset ? position : position - static_cast<wxFileOffset>(WindowSize());
}

wxFileOffset FileState::Seek(wxFileOffset offset, wxSeekMode mode)
{
    if (!IsReadable() || Tell() == wxInvalidOffset || !Flush())
        return wxInvalidOffset;
    const wxFileOffset ahead = mode == wxFromCurrent ? static_cast<wxFileOffset>(WindowSize()) : 0;
    const wxFileOffset position = m_source->Seek(offset - ahead, Whence(mode));
    if (position == wxInvalidOffset)
        return position;
    ForgetWindow();
    m_atBeginning = position == 0;
    return position;
}

wxFileOffset FileState::Length() const
{
    const wxFileOffset position = IsReadable() ? m_source->Seek(0, SEEK_CUR) : wxInvalidOffset;
    if (position == wxInvalidOffset)
        return position;
    const wxFileOffset length = m_source->Seek(0, SEEK_END);
    m_source->Seek(position, SEEK_SET);
    return length;
}

bool FileState::Flush()
{
    if (!IsWritable() || m_pending.empty())
        return true;
    if (!WriteAll(Descriptor(), m_pending.data(), m_pending.size()))
        Fail();
    m_pending.clear();
    return !m_failed;
}

bool FileState::WriteBytes(const void* from, size_t size)
{
    if (!IsWritable() || m_failed)
        return false;
    if (WindowSize() > 0) {
        // What was read ahead is unread, so that the bytes go where the reader stands.
        m_source->Seek(-static_cast<wxFileOffset>(WindowSize()), SEEK_CUR);
        ForgetWindow();
    }
    if (size >= bufferSize)
        return Flush() && (WriteAll(Descriptor(), from, size) || (Fail(), false));
    m_pending.append(static_cast<const char*>(from), size);
    return m_pending.size() < bufferSize || Flush();
}

size_t FileInputStream::OnSysRead(void* to, size_t size)
{
    const size_t count = m_state.ReadBytes(to, size);
    if (count == 0 && size > 0)
        m_lasterror = m_state.HasFailed() ? wxSTREAM_READ_ERROR : wxSTREAM_EOF;
    return count;
}

wxFileOffset FileInputStream::OnSysSeek(wxFileOffset offset, wxSeekMode mode)
{
    return m_state.Seek(offset, mode);
}

wxFileOffset FileInputStream::OnSysTell() const
{
    return m_state.Tell();
}

wxFileOffset FileInputStream::GetLength() const
{
    return m_state.Length();
}

bool FileInputStream::IsSeekable() const
{
    return m_state.Tell() != wxInvalidOffset;
}

size_t FileOutputStream::OnSysWrite(const void* from, size_t size)
{
    if (m_state.WriteBytes(from, size))
        return size;
    m_lasterror = wxSTREAM_WRITE_ERROR;
    return 0;
}

void FileOutputStream::Sync()
{
    if (!m_state.Flush())
        m_lasterror = wxSTREAM_WRITE_ERROR;
}

} // namespace vcq::detail
