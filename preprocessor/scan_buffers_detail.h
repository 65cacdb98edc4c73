#pragma once

#include "base/utf8_detail.h"

#include <wx/string.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What is kept of a line, piece by piece: a part of the line as long as the pieces follow one another.
class CKeptText
{
public:
    void Clear() { m_part = std::string_view(); }

    void Add(const char* from, const char* to)
    {
        const auto length = static_cast<size_t>(to - from);
        if (m_part.empty())
            m_part = std::string_view(from, length);
        else if (!IsJoined() && m_part.data() + m_part.size() == from)
            m_part = std::string_view(m_part.data(), m_part.size() + length);
        else {
            if (!IsJoined())
                m_joined.assign(m_part);
            m_part = m_joined.append(from, length);
        }
    }

    std::string_view Text() const { return m_part; }

    /// Whether the text is no part of the line, but made of several.
    bool IsJoined() const { return m_part.data() == m_joined.data(); }

private:
    std::string_view m_part;
    std::string m_joined;
};

/// A line as wide text, with a NUL behind it.
class CWideLine
{
public:
    void Assign(std::string_view utf8)
    {
        Reserve(utf8.size());
        m_length = vcq::detail::DecodeUtf8(utf8.data(), utf8.size(), m_text.get()).written;
        m_text[m_length] = L'\0';
    }

    void Assign(const wxString& text)
    {
        Reserve(text.length());
        m_length = text.length();
        std::copy_n(text.wx_str(), m_length, m_text.get());
        m_text[m_length] = L'\0';
    }

    const wchar_t* Begin() const { return m_text.get(); }
    const wchar_t* End() const { return m_text.get() + m_length; }
    size_t Length() const { return m_length; }
    size_t Capacity() const { return m_capacity; }

private:
    void Reserve(size_t length)
    {
        if (length < m_capacity)
            return;
        m_capacity = length + length / 2 + 64;
        m_text.reset(new wchar_t[m_capacity]);
    }

    std::unique_ptr<wchar_t[]> m_text;
    size_t m_capacity = 0;
    size_t m_length = 0;
};

/// What the scan of a block writes to, line by line. A loop scans a short block for each pass, so these are used again.
class CScanBuffers
{
public:
    CKeptText kept;
    CWideLine source;
    wxString output;
    std::string bytes;
};

/// The buffers of one scan for as long as it lives.
class CScanBuffersUse
{
public:
    using Free = std::vector<std::unique_ptr<CScanBuffers>>;

    explicit CScanBuffersUse(Free& free) : m_free(free)
    {
        if (free.empty())
            m_buffers = std::make_unique<CScanBuffers>();
        else {
            m_buffers = std::move(free.back());
            free.pop_back();
        }
    }
    ~CScanBuffersUse()
    {
        // What an enormous line has needed is not kept for ever.
        constexpr size_t largest = 64 * 1024;
        if (m_buffers->source.Capacity() <= largest && m_buffers->output.capacity() <= largest)
            m_free.push_back(std::move(m_buffers));
    }
    CScanBuffersUse(const CScanBuffersUse&) = delete;
    CScanBuffersUse& operator=(const CScanBuffersUse&) = delete;

    CScanBuffers* operator->() const { return m_buffers.get(); }

private:
    Free& m_free;
    std::unique_ptr<CScanBuffers> m_buffers;
};
