#pragma once

#include "preprocessor/preprocessor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

inline constexpr wchar_t Grin = 0x1F600; // beyond the first plane
inline constexpr wchar_t HighSurrogate = 0xD83D;
inline constexpr wchar_t LowSurrogate = 0xDE00;

/// Comparable and printable; NULs included.
inline std::wstring Wide(const wxString& text)
{
    return text.ToStdWstring();
}

using Pieces = std::vector<std::wstring>;

/// The same for a list of texts.
template <typename Texts> Pieces WideAll(const Texts& texts)
{
    Pieces pieces(texts.size());
    std::transform(texts.begin(), texts.end(), pieces.begin(), [](const wxString& text) { return Wide(text); });
    return pieces;
}

inline std::wstring Repeated(const std::wstring& text, size_t count)
{
    std::wstring out;
    for (size_t done = 0; done < count; ++done)
        out += text;
    return out;
}

/// A text for a failure message, cut when it is long.
inline std::string Shown(const std::wstring& text)
{
    return wxString(text.substr(0, 100)).utf8_string();
}

struct Conversion
{
    std::wstring text;
    std::wstring expected;
};

using Convert = wxString (*)(const wxString&);

inline void ExpectConversions(Convert convert, const std::vector<Conversion>& conversions)
{
    for (const Conversion& conversion : conversions)
        EXPECT_EQ(Wide(convert(conversion.text)), conversion.expected) << "from: " << Shown(conversion.text);
}

inline wxString ToJS(const wxString& text)
{
    return CPreprocessor::StringToJS(text, false);
}
