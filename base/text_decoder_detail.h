#pragma once

#include "base/encoding_detail.h"

#include <memory>
#include <string>
#include <wx/string.h>

namespace vcq::detail
{

/// Turns the bytes of one text into a wxString, piece by piece as they are read, without a copy of the whole in
/// between. The byte order mark is not its concern; `detect` is UTF-8, or Latin-1 from the first byte on when anything
/// in it is not UTF-8: what was converted by then is UTF-8, so its bytes can be had back from it, from a pipe as well.
class TextDecoder
{
public:
    /// Appends to `text`, which must be empty and stay untouched until Finish.
    TextDecoder(const Encoding& encoding, wxString& text);

    /// False when the bytes are no text in the encoding. The text is then of no use.
    bool Feed(const char* bytes, size_t size);

    /// To be called after the last piece: false when the text ends inside a character.
    bool Finish();

    /// The encoding found: as given, except that `detect` becomes `latin1` or, after Finish, `utf8`.
    const Encoding& Found() const { return m_encoding; }

private:
    void FeedPiece(const char* bytes, size_t size);
    void ConvertPiece(const char* bytes, size_t size);
    void ConvertLatin1(const char* bytes, size_t size);
    void ConvertUtf8(const char* bytes, size_t size);
    void ConvertUtf16(const char* bytes, size_t size);
    void ConvertUtf32(const char* bytes, size_t size);
    void FallBackToLatin1();
    bool ConvertWhole();

    Encoding m_encoding;
    wxString& m_text;
    std::string m_rest; ///< bytes of a character that is not whole yet; the whole text for a named encoding
    std::unique_ptr<wchar_t[]> m_piece;
    bool m_failed = false;
};

/// One line of a text, converted by itself. False when it is not in the encoding; then `line` is read as Latin-1.
bool DecodeLine(const Encoding& encoding, const char* bytes, size_t size, wxString& line);

} // namespace vcq::detail
