#pragma once

#include "base/atomic_file_detail.h"
#include "base/byte_source_detail.h"
#include "base/encoding_detail.h"

#include <memory>
#include <string>
#include <vector>
#include <wx/stream.h>

namespace vcq::detail
{

class FileState;

/// The input stream of an open file: reads on where its texts and lines have stopped.
class FileInputStream final : public wxInputStream
{
public:
    explicit FileInputStream(FileState& state) : m_state(state) {}
    wxFileOffset GetLength() const override;
    bool IsSeekable() const override;

private:
    size_t OnSysRead(void* to, size_t size) override;
    wxFileOffset OnSysSeek(wxFileOffset offset, wxSeekMode mode) override;
    wxFileOffset OnSysTell() const override;

    FileState& m_state;
};

/// The output stream of an open file.
class FileOutputStream final : public wxOutputStream
{
public:
    explicit FileOutputStream(FileState& state) : m_state(state) {}
    void Sync() override;
    bool IsSeekable() const override { return false; }

private:
    size_t OnSysWrite(const void* from, size_t size) override;

    FileState& m_state;
};

/// The open file that the copies of one CFile share. Bytes pass through one window on the way in and one buffer on the
/// way out, whichever of the ways to read or write a caller takes.
class FileState
{
public:
    /// Takes the descriptor.
    FileState(UniqueFd fd, bool readable, bool writable);
    /// What is written is published by Close.
    explicit FileState(std::unique_ptr<AtomicFile> file);
    explicit FileState(std::unique_ptr<ByteSource> source);

    FileState(const FileState&) = delete;
    FileState& operator=(const FileState&) = delete;
    ~FileState();

    bool IsOpen() const { return m_open; }
    bool IsReadable() const { return m_open && m_source; }
    bool IsWritable() const { return m_open && m_writable; }
    bool HasFailed() const { return m_failed; }
    void Fail() { m_failed = true; }
    bool Close();

    // Reading: the window holds bytes that have been read ahead.
    const char* Window() const { return m_window.data() + m_begin; }
    size_t WindowSize() const { return m_end - m_begin; }
    /// Reads more bytes behind those in the window. False at the end and on failure (then HasFailed).
    bool Fill();
    void Consume(size_t size);
    /// True before the first byte was consumed: the only place for a byte order mark.
    bool IsAtBeginning() const { return m_atBeginning; }
    size_t ReadBytes(void* to, size_t size);
    ssize_t ReadAt(void* to, size_t size, wxFileOffset position);
    wxFileOffset Seek(wxFileOffset offset, wxSeekMode mode);
    wxFileOffset Tell() const;
    wxFileOffset Length() const;

    // Writing.
    bool WriteBytes(const void* from, size_t size);
    bool Flush();

    wxInputStream* Input() { return IsReadable() ? &m_input : nullptr; }
    wxOutputStream* Output() { return IsWritable() ? &m_output : nullptr; }

    /// How the texts of this file are read; `detect` until the first of them has shown it.
    Encoding& TextEncoding() { return m_encoding; }
    const Encoding& TextEncoding() const { return m_encoding; }
    /// The byte order mark that the first text found.
    ByteOrderMark& Mark() { return m_mark; }
    /// True when the texts so far were UTF-8 but nothing says that the rest is: Latin-1 begins where it is not.
    bool IsTentative() const { return m_tentative; }
    void SetTentative(bool tentative) { m_tentative = tentative; }

private:
    int Descriptor() const { return m_atomic ? m_atomic->Descriptor() : m_fd.Get(); }
    void ForgetWindow();

    UniqueFd m_fd;
    std::unique_ptr<AtomicFile> m_atomic;
    std::unique_ptr<ByteSource> m_source;
    bool m_writable = false;
    bool m_open = true;
    bool m_failed = false;
    bool m_atBeginning = true;
    bool m_tentative = false;

    std::vector<char> m_window;
    size_t m_begin = 0;
    size_t m_end = 0;
    std::string m_pending; ///< written, not yet handed to the system
    Encoding m_encoding;
    ByteOrderMark m_mark{0, Encoding::detect};
    FileInputStream m_input{*this};
    FileOutputStream m_output{*this};
};

} // namespace vcq::detail
