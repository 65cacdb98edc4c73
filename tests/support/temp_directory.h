#pragma once

#include "base/dir.h"
#include "base/text_encoding.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <unistd.h>

/// Where directories are made by tests that write so often that a disk would keep them waiting.
inline std::string PlaceInMemory()
{
    return ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
}

/// An empty directory of its own, removed with all it holds.
class TempDirectory
{
public:
    explicit TempDirectory(const std::string& parent = "/tmp")
    {
        std::string name = parent + "/vcq-test-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary directory");
        m_path = std::filesystem::canonical(name);
    }
    ~TempDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;

    /// Writes a file; the directories on its way are made.
    void Put(const std::string& name, const std::string& bytes) const
    {
        std::filesystem::create_directories((m_path / name).parent_path());
        std::ofstream file(m_path / name, std::ios::binary);
        file << bytes;
        if (!file.flush())
            throw std::runtime_error("cannot write " + name);
    }

    std::string Path(const std::string& name = "") const { return name.empty() ? m_path : m_path / name; }
    CDir Dir() const { return CDir(FromSystemName(m_path)); }

private:
    std::filesystem::path m_path;
};
