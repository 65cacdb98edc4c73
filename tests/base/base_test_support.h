#pragma once

#include "base/dir.h"
#include "base/file.h"
#include "base/text_encoding.h"
#include "base/utf8_text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <poll.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

/// Shows texts in failure messages; GoogleTest finds it by its name.
inline void PrintTo(const wxString& text, std::ostream* out)
{
    *out << '"' << ToUtf8(text) << '"';
}

/// Sets an environment variable for its lifetime; without a value, unsets it.
class ScopedVariable
{
public:
    ScopedVariable(const char* name, const std::optional<std::string>& value) : m_name(name)
    {
        if (const char* const old = std::getenv(name))
            m_old = old;
        Set(value);
    }
    ~ScopedVariable() { Set(m_old); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void Set(const std::optional<std::string>& value)
    {
        if (value)
            ::setenv(m_name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(m_name.c_str());
    }

    std::string m_name;
    std::optional<std::string> m_old;
};

/// A child process that runs a function; killed, if it still runs, when this goes.
class Child
{
public:
    explicit Child(const std::function<int()>& run) : m_pid(::fork())
    {
        if (m_pid == 0)
            ::_exit(run());
    }
    ~Child() { Kill(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// The exit status; -1 when a signal ended it.
    int Wait()
    {
        int status = 0;
        while (m_pid > 0 && ::waitpid(m_pid, &status, 0) < 0 && errno == EINTR)
            continue;
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    void Kill()
    {
        if (m_pid <= 0)
            return;
        ::kill(m_pid, SIGKILL);
        Wait();
    }
    bool IsRunning() { return m_pid > 0 && ::waitpid(m_pid, nullptr, WNOHANG) == 0; }

private:
    pid_t m_pid;
};

/// Something one process tells another, once.
class Signal
{
public:
    Signal()
    {
        if (::pipe2(m_ends, O_CLOEXEC) != 0)
            std::abort();
    }
    ~Signal()
    {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    void Raise() { (void)!::write(m_ends[1], "!", 1); }

    /// False when nobody has raised it for so long.
    bool Await(int milliseconds = 5000)
    {
        pollfd end = {m_ends[0], POLLIN, 0};
        char byte = 0;
        return ::poll(&end, 1, milliseconds) == 1 && ::read(m_ends[0], &byte, 1) == 1;
    }

private:
    int m_ends[2];
};

/// Gives each test an empty directory and removes it afterwards.
class TempDirTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_path = Base() + "/vcq-base-test-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(m_path.data()));
    }
    void TearDown() override { std::filesystem::remove_all(m_path); }

    virtual std::string Base() const { return "/tmp"; }

    std::string Path(const std::string& name = "") const { return name.empty() ? m_path : m_path + "/" + name; }
    wxString Name(const std::string& name = "") const { return FromSystemName(Path(name)); }
    CDir Dir() const { return CDir(FromSystemName(m_path)); }

    void Put(const std::string& name, const std::string& bytes) const
    {
        std::ofstream file(Path(name), std::ios::binary);
        file << bytes;
        ASSERT_TRUE(file.flush().good());
    }

    /// The bytes of a file; nothing when it is not there.
    std::optional<std::string> Bytes(const std::string& name) const
    {
        std::ifstream file(Path(name), std::ios::binary);
        if (!file)
            return std::nullopt;
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    /// Every name in the directory, hidden ones too.
    std::set<std::string> Names() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path))
            names.insert(entry.path().string().substr(m_path.size() + 1));
        return names;
    }

    static mode_t ModeOf(const std::string& path)
    {
        struct stat info = {};
        return ::stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
    }

    /// The text of a file as `dir` reads it; nothing when that fails.
    static std::optional<wxString> Text(CDir dir, const wxString& name, CFile::eConvType conv = CFile::convDefault)
    {
        CFile file = dir.OpenFile(name, wxFile::read);
        wxString text;
        const bool isRead = file.IsOpened() && file.Read(text, conv);
        // Both ways to read a text must give the same. A pipe can only be read once.
        if (dir.FindFile(name) == CDir::foundFile) {
            CFile again = dir.OpenFile(name, wxFile::read);
            CUtf8Text bytes;
            EXPECT_EQ(isRead, again.IsOpened() && again.Read(bytes, conv));
            EXPECT_EQ(text, bytes.ToWide());
        }
        return isRead ? std::optional<wxString>(text) : std::nullopt;
    }

    static bool Write(const CFile& file, const std::string& bytes)
    {
        wxOutputStream* const out = file.GetOutputStream();
        return out != nullptr && out->WriteAll(bytes.data(), bytes.size());
    }

private:
    std::string m_path;
};

/// An encoder that shares no code with the library.
inline std::string Encoded(const std::u32string& text, int unit, bool bigEndian)
{
    std::string bytes;
    const auto put = [&](uint32_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes += static_cast<char>(value >> 8 * (bigEndian ? size - 1 - i : i));
    };
    for (const char32_t c : text) {
        if (unit == 2 && c >= 0x10000) {
            put(0xd800 + ((c - 0x10000) >> 10), 2);
            put(0xdc00 + ((c - 0x10000) & 0x3ff), 2);
        } else {
            put(c, unit);
        }
    }
    return bytes;
}
