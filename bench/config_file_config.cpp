#include "base/text_encoding.h"
#include "bench/config_peers.h"

#include <wx/fileconf.h>

namespace
{

wxString KeyPath(int group, int value)
{
    return wxString::FromUTF8("/" + ConfigGroup(group) + "/" + ConfigKey(value));
}

} // namespace

void WriteFileConfig(const std::string& path, int groups)
{
    wxFileConfig config(wxString(), wxString(), FromSystemName(path), wxString(), wxCONFIG_USE_LOCAL_FILE);
    for (int group = 0; group < groups; ++group)
        for (int value = 0; value < ConfigValues; ++value)
            config.Write(KeyPath(group, value), wxString::FromUTF8(ConfigText(value)));
}

std::size_t ReadFileConfig(const std::string& path, int groups)
{
    wxFileConfig config(wxString(), wxString(), FromSystemName(path), wxString(), wxCONFIG_USE_LOCAL_FILE);
    std::size_t size = 0;
    for (int group = 0; group < groups; ++group)
        for (int value = 0; value < ConfigValues; ++value)
            size += config.Read(KeyPath(group, value), wxString()).length();
    return size;
}
