#pragma once

#include "base/api.h"

#include <optional>
#include <string>
#include <wx/string.h>

/// A text as its UTF-8 bytes, for texts that are read, cut and written but hardly looked at: a quarter of the memory of
/// a wxString. CFile::Read gives one and CParser::Parse takes one, with no conversion between. It may hold surrogates,
/// three bytes each, so every wxString of code points survives the way in and out.
class VC_QXPARSER_API CUtf8Text
{
public:
    /// An empty text.
    CUtf8Text() = default;

    /// The bytes of `text`; values beyond U+10FFFF become U+FFFD.
    explicit CUtf8Text(const wxString& text);

    /// Takes bytes that are UTF-8; nothing for any others.
    static std::optional<CUtf8Text> FromBytes(std::string bytes);

    /// The text.
    const std::string& Bytes() const { return m_bytes; }

    /// Gives the bytes away; this text is empty then.
    std::string TakeBytes();

    /// Whether any of the bytes are encoded surrogates, which well-formed UTF-8 has not.
    bool HasSurrogates() const { return m_hasSurrogates; }

    /// The text as characters, one of each code point or surrogate.
    wxString ToWide() const;

private:
    std::string m_bytes;
    bool m_hasSurrogates = false;
};
