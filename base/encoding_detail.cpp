#include "base/encoding_detail.h"

#include <cstring>
#include <wx/log.h>
#include <wx/strconv.h>

namespace vcq::detail
{

namespace
{

struct NamedKind
{
    const char* name;
    Encoding::Kind kind;
};

// The Unicode encodings have converters of their own here, since a byte order mark and lines are theirs to know.
constexpr NamedKind ownEncodings[] = {
    {"", Encoding::detect},          {"utf-8", Encoding::utf8},       {"utf8", Encoding::utf8},
    {"utf-16", Encoding::utf16},     {"utf16", Encoding::utf16},      {"utf-16le", Encoding::utf16le},
    {"utf-16be", Encoding::utf16be}, {"utf-32", Encoding::utf32},     {"utf32", Encoding::utf32},
    {"utf-32le", Encoding::utf32le}, {"utf-32be", Encoding::utf32be}, {"iso-8859-1", Encoding::latin1},
    {"latin1", Encoding::latin1},    {"latin-1", Encoding::latin1},   {"locale", Encoding::locale},
};

struct Mark
{
    const char* bytes;
    ByteOrderMark mark;
};

// The marks of UTF-32 come first: that of its little-endian form begins with that of UTF-16.
constexpr Mark marks[] = {
    {"\xff\xfe\0\0", {4, Encoding::utf32le}}, {"\0\0\xfe\xff", {4, Encoding::utf32be}},
    {"\xef\xbb\xbf", {3, Encoding::utf8}},    {"\xff\xfe", {2, Encoding::utf16le}},
    {"\xfe\xff", {2, Encoding::utf16be}},
};

bool Admits(Encoding::Kind kind, Encoding::Kind announced)
{
    switch (kind) {
    case Encoding::detect:
        return true;
    case Encoding::utf16:
        return announced == Encoding::utf16le || announced == Encoding::utf16be;
    case Encoding::utf32:
        return announced == Encoding::utf32le || announced == Encoding::utf32be;
    default:
        return kind == announced;
    }
}

} // namespace

bool FindEncoding(const wxString& name, Encoding& encoding)
{
    for (const NamedKind& own : ownEncodings) {
        if (name.IsSameAs(own.name, false)) {
            encoding = {own.kind, wxString()};
            return true;
        }
    }
    const wxLogNull silence;
    if (!wxCSConv(name).IsOk())
        return false;
    encoding = {Encoding::named, name};
    return true;
}

size_t UnitSize(Encoding::Kind kind)
{
    switch (kind) {
    case Encoding::utf16:
    case Encoding::utf16le:
    case Encoding::utf16be:
        return 2;
    case Encoding::utf32:
    case Encoding::utf32le:
    case Encoding::utf32be:
        return 4;
    default:
        return 1;
    }
}

bool IsBigEndian(Encoding::Kind kind)
{
    return kind == Encoding::utf16be || kind == Encoding::utf32be;
}

ByteOrderMark FindMark(const char* bytes, size_t size)
{
    for (const Mark& known : marks) {
        if (size >= known.mark.size && std::memcmp(bytes, known.bytes, known.mark.size) == 0)
            return known.mark;
    }
    return {0, Encoding::detect};
}

Encoding::Kind Settle(Encoding::Kind kind, const ByteOrderMark& mark, size_t& skip)
{
    skip = 0;
    if (mark.size > 0 && Admits(kind, mark.kind)) {
        skip = mark.size;
        return mark.kind;
    }
    if (kind == Encoding::utf16)
        return Encoding::utf16le;
    return kind == Encoding::utf32 ? Encoding::utf32le : kind;
}

} // namespace vcq::detail
