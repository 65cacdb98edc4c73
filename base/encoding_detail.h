#pragma once

#include <wx/string.h>

namespace vcq::detail
{

/// How the bytes of a text are to be read. A small value: an encoding without a class of its own is known by its name.
struct Encoding
{
    enum Kind
    {
        detect, ///< by the byte order mark; without one UTF-8 if all of it is, else Latin-1
        locale, ///< that of the process' locale
        latin1,
        utf8,
        utf16, ///< by its byte order mark, little-endian without
        utf16le,
        utf16be,
        utf32, ///< by its byte order mark, little-endian without
        utf32le,
        utf32be,
        named ///< one that wxCSConv knows
    };

    Kind kind = detect;
    wxString name; ///< for `named` only
};

/// The encoding called `name`, case ignored; an empty name is `detect`. False for a name that nobody knows.
bool FindEncoding(const wxString& name, Encoding& encoding);

/// The size of the smallest piece of a text in this encoding: 1, 2 or 4 bytes.
size_t UnitSize(Encoding::Kind kind);

/// True when the first byte of a unit is its highest.
bool IsBigEndian(Encoding::Kind kind);

/// A byte order mark at the beginning of a text.
struct ByteOrderMark
{
    size_t size;         ///< 0 when there is none
    Encoding::Kind kind; ///< what it announces; meaningless when there is none
};

/// The longest mark there is: what must be seen of a text (or all of it) before FindMark is asked.
constexpr size_t longestMark = 4;
ByteOrderMark FindMark(const char* bytes, size_t size);

/// The byte order that `kind` leaves open, settled by the mark if there is one for it: `skip` bytes of mark are no part
/// of the text. An encoding is taken at its word: another one's mark is read as text (and fails, as it should).
/// `detect` without a mark stays `detect`.
Encoding::Kind Settle(Encoding::Kind kind, const ByteOrderMark& mark, size_t& skip);

} // namespace vcq::detail
