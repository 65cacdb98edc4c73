#pragma once

#include "base/api.h"

#include <string>
#include <wx/string.h>

/// @file
/// Texts and the bytes outside. Inside, a text is a wxString of one wchar_t for each code point; outside it is UTF-8
/// wherever the library chooses, whatever the locale of the process. Reading is CFile's (base/file.h).

/// The UTF-8 bytes of `text`, without a byte order mark; what a host writes to a stream. Never fails: a pair of
/// surrogates becomes its one character, a surrogate alone its three bytes (CFile reads them back as the same
/// surrogate), a value beyond U+10FFFF becomes U+FFFD. wxString's own conversion gives an empty result for such texts.
VC_QXPARSER_API std::string ToUtf8(const wxString& text);

/// The name that the system knows a file (or an environment variable, or a user) by: UTF-8. The surrogates U+DC80 to
/// U+DCFF, which FromSystemName makes of bytes that are not UTF-8, become those bytes again. A NUL in the text stays
/// one; check for it before a system call.
VC_QXPARSER_API std::string ToSystemName(const wxString& name);

/// A name or argument the system gave, as text. Bytes that are not UTF-8 become U+DC80 to U+DCFF, one for each, so that
/// every file name survives the way in and out. Use it for the arguments of a program too: a conversion by the locale
/// depends on the user's settings and loses such names.
VC_QXPARSER_API wxString FromSystemName(const std::string& name);
