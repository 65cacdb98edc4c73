#pragma once

#include "base/posix_detail.h"

#include <memory>
#include <wx/stream.h>

namespace vcq::detail
{

/// Where the bytes of an open file come from: a descriptor, a member of an archive, a host's network handler.
class ByteSource
{
public:
    virtual ~ByteSource() = default;

    /// More than 0 bytes, 0 at the end, -1 on failure.
    virtual ssize_t Read(void* to, size_t size) = 0;

    /// Positions, in bytes from the beginning; wxInvalidOffset where there are none (a pipe).
    virtual wxFileOffset Seek(wxFileOffset offset, int whence) = 0;

    /// Reads at a position without moving; -1 where there are no positions.
    virtual ssize_t ReadAt(void* to, size_t size, wxFileOffset position) = 0;
};

/// Reads a descriptor that somebody else owns.
class DescriptorSource final : public ByteSource
{
public:
    explicit DescriptorSource(int fd) : m_fd(fd) {}
    ssize_t Read(void* to, size_t size) override;
    wxFileOffset Seek(wxFileOffset offset, int whence) override;
    ssize_t ReadAt(void* to, size_t size, wxFileOffset position) override;

private:
    int m_fd;
};

/// Reads a stream, and keeps alive what the stream needs.
class StreamSource final : public ByteSource
{
public:
    StreamSource(wxInputStream* stream, std::shared_ptr<void> owner) : m_stream(stream), m_owner(std::move(owner)) {}
    ssize_t Read(void* to, size_t size) override;
    wxFileOffset Seek(wxFileOffset, int) override { return wxInvalidOffset; }
    ssize_t ReadAt(void*, size_t, wxFileOffset) override { return -1; }

private:
    wxInputStream* m_stream;
    std::shared_ptr<void> m_owner;
};

} // namespace vcq::detail
