#pragma once

#include <wx/strconv.h>
#include <wx/stream.h>
#include <wx/string.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace xml_detail
{

/// Bytes that wait for being written. They are never copied together, so that they take the memory of their number.
class OutputBlocks
{
public:
    /// Room for `size` bytes; what of it was used is announced with Commit.
    char* Reserve(size_t size);
    void Commit(const char* end);

    void Append(std::string_view bytes);
    size_t Size() const { return m_size; }

    /// Writes what there is. False when not all of it could be; it is gone in any case.
    bool WriteTo(wxOutputStream& stream);
    void Clear();

private:
    struct Block
    {
        std::unique_ptr<char[]> bytes;
        size_t capacity;
        size_t size;
    };

    std::vector<Block> m_blocks;
    size_t m_size = 0;
};

/// What in a text is written otherwise than it is.
enum class Escapes
{
    none,
    text,
    attribute
};

/// Turns texts into the bytes of an encoding.
class OutputEncoder
{
public:
    /// The encoder of `encoding`; null when documents cannot be written in it.
    static std::unique_ptr<OutputEncoder> Create(const wxString& encoding);
    /// The same for a trial: what becomes of its bytes does not matter, only what it cannot encode.
    static std::unique_ptr<OutputEncoder> CreateForTrial(const wxString& encoding);

    virtual ~OutputEncoder() = default;

    /// False for a text with characters that the encoding does not have.
    virtual bool Put(const wchar_t* text, size_t size, Escapes escapes) = 0;
    bool Put(const wxString& text, Escapes escapes) { return Put(text.wx_str(), text.length(), escapes); }
    bool Put(std::wstring_view text) { return Put(text.data(), text.size(), Escapes::none); }

    OutputBlocks& Blocks() { return m_blocks; }

protected:
    OutputBlocks m_blocks;
};

} // namespace xml_detail
