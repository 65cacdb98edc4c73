#pragma once

#include "base/byte_source_detail.h"

#include <memory>
#include <wx/string.h>

/// Network locations, by way of the wxFileSystem handlers that the host has registered. Refused while the network is
/// not allowed.
namespace vcq::detail
{

/// A network location in the form that the others take: no slash at its end.
wxString LocationBase(const wxString& location);

/// True when the network is allowed and a handler is there for the address. Nothing is sent.
bool CanOpenLocation(const wxString& base);

/// The file `member` below `base`. Null when it cannot be had.
std::unique_ptr<ByteSource> OpenLocation(const wxString& base, const wxString& member);

} // namespace vcq::detail
