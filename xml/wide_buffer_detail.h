#pragma once

#include "base/utf8_detail.h"

#include <wx/string.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace xml_detail
{

/// Code points in a buffer that is kept from text to text.
class WideBuffer
{
public:
    const wchar_t* Data() const { return m_data.get(); }
    size_t Size() const { return m_size; }
    void Clear() { m_size = 0; }

    void AppendUtf8(const char* bytes, size_t size)
    {
        if (m_capacity - m_size < size)
            Grow(size);
        m_size += vcq::detail::DecodeUtf8(bytes, size, m_data.get() + m_size).written;
    }

private:
    void Grow(size_t more)
    {
        const size_t capacity = std::max(m_size + more, m_capacity * 2);
        std::unique_ptr<wchar_t[]> data(new wchar_t[capacity]);
        std::copy_n(m_data.get(), m_size, data.get());
        m_data = std::move(data);
        m_capacity = capacity;
    }

    std::unique_ptr<wchar_t[]> m_data;
    size_t m_size = 0;
    size_t m_capacity = 0;
};

/// A text of its own, for those that are read once in a document.
inline wxString ToText(std::string_view utf8)
{
    wxString text;
    vcq::detail::AppendUtf8(text, utf8.data(), utf8.size());
    return text;
}

} // namespace xml_detail
