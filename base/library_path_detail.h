#pragma once

#include <wx/string.h>

namespace vcq::detail
{

/// The directory of the file that this library was loaded from; empty when the system cannot tell.
wxString LibraryDirectory();

} // namespace vcq::detail
