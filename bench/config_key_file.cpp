#include "bench/config_peers.h"

#include <glib.h>

#include <cstring>
#include <memory>

namespace
{

struct Free
{
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
    void operator()(char* text) const { g_free(text); }
};

using KeyFile = std::unique_ptr<GKeyFile, Free>;

} // namespace

void WriteKeyFile(const std::string& path, int groups)
{
    const KeyFile file(g_key_file_new());
    for (int group = 0; group < groups; ++group)
        for (int value = 0; value < ConfigValues; ++value)
            g_key_file_set_string(file.get(), ConfigGroup(group).c_str(), ConfigKey(value).c_str(),
                                  ConfigText(value).c_str());
    g_key_file_save_to_file(file.get(), path.c_str(), nullptr);
}

std::size_t ReadKeyFile(const std::string& path, int groups)
{
    const KeyFile file(g_key_file_new());
    std::size_t size = 0;
    if (!g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr))
        return size;
    for (int group = 0; group < groups; ++group) {
        for (int value = 0; value < ConfigValues; ++value) {
            const std::unique_ptr<char, Free> text(
                g_key_file_get_string(file.get(), ConfigGroup(group).c_str(), ConfigKey(value).c_str(), nullptr));
            size += text ? std::strlen(text.get()) : 0;
        }
    }
    return size;
}
