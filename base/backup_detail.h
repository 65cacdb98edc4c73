#pragma once

#include <string>

namespace vcq::detail
{

/// Gives what the regular file `from` holds the name `to` as well, in one step and with the permissions of `from`; a
/// file of that name is replaced, a symbolic link there is followed. A second name for the same file where the system
/// allows that, else (through a link, on another file system) a copy that is on the disk when this returns. False when
/// it fails; then nothing has changed.
bool BackUp(const std::string& from, const std::string& to);

} // namespace vcq::detail
