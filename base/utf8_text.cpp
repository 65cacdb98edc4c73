#include "base/utf8_text.h"

#include "base/utf8_detail.h"

#include <utility>

using namespace vcq::detail;

CUtf8Text::CUtf8Text(const wxString& text)
{
    if (AppendExactUtf8(m_bytes, text.wx_str(), text.length()))
        return;
    m_bytes = EncodeUtf8(text.wx_str(), text.length(), SurrogatePairs::keep);
    m_hasSurrogates = CheckUtf8(m_bytes.data(), m_bytes.size()).hasSurrogates;
}

std::optional<CUtf8Text> CUtf8Text::FromBytes(std::string bytes)
{
    const Utf8Check check = CheckUtf8(bytes.data(), bytes.size());
    if (check.stop != Utf8Stop::end)
        return std::nullopt;
    CUtf8Text text;
    text.m_bytes = std::move(bytes);
    text.m_hasSurrogates = check.hasSurrogates;
    return text;
}

std::string CUtf8Text::TakeBytes()
{
    m_hasSurrogates = false;
    return std::exchange(m_bytes, std::string());
}

wxString CUtf8Text::ToWide() const
{
    wxString text;
    text.reserve(m_bytes.size());
    AppendUtf8(text, m_bytes.data(), m_bytes.size());
    return text;
}
