#pragma once

#include "base/byte_source_detail.h"

#include <memory>
#include <string>
#include <wx/string.h>

/// Zip archives, by wxWidgets' reader.
namespace vcq::detail
{

/// True when `path` is an archive that can be read.
bool IsArchive(const std::string& path);

/// The file `member` of the archive, read from where it is packed: nothing is unpacked to disk. Null when there is no
/// such file. A damaged member fails while it is read.
std::unique_ptr<ByteSource> OpenArchiveMember(const std::string& path, const wxString& member);

} // namespace vcq::detail
