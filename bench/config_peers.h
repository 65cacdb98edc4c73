#pragma once

#include <cstddef>
#include <string>

/// Other ways to keep named values in a file. All write the same data and read all of it again.
struct ConfigPeer
{
    const char* name;
    void (*write)(const std::string& path, int groups);
    /// The characters of all values, so that none is left unread.
    std::size_t (*read)(const std::string& path, int groups);
};

constexpr int ConfigValues = 10;

inline std::string ConfigGroup(int group)
{
    return "object" + std::to_string(group);
}
inline std::string ConfigKey(int value)
{
    return "value" + std::to_string(value);
}
inline std::string ConfigText(int value)
{
    return "the value " + std::to_string(value);
}

void WriteFileConfig(const std::string& path, int groups);
std::size_t ReadFileConfig(const std::string& path, int groups);
void WriteKeyFile(const std::string& path, int groups);
std::size_t ReadKeyFile(const std::string& path, int groups);
void WriteXmlTree(const std::string& path, int groups);
std::size_t ReadXmlTree(const std::string& path, int groups);
