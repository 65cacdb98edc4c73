#include "base/library_path_detail.h"

#include "base/text_encoding.h"

#include <dlfcn.h>

#include <string>

namespace vcq::detail
{

wxString LibraryDirectory()
{
    static const char here = 0;
    Dl_info library{};
    if (!dladdr(&here, &library) || !library.dli_fname)
        return wxString();
    const std::string path = library.dli_fname;
    return FromSystemName(path.substr(0, path.find_last_of('/') + 1));
}

} // namespace vcq::detail
