#include "script/text_lines_detail.h"

#include "base/file_bytes_detail.h"
#include "base/patience_detail.h"
#include "base/text_encoding.h"

#include <wx/log.h>

#include <algorithm>
#include <string>

bool CTextLines::OnOpen(const wxString& path, wxTextBufferOpenMode mode)
{
    const std::string name = ToSystemName(path);
    const bool reads = mode == ReadAccess;
    m_fd = reads ? vcq::detail::OpenToRead(name) : vcq::detail::OpenEmpty(name);
    if (!m_fd.IsOpen())
        wxLogSysError(reads ? wxS("can't open file '%s'") : wxS("can't create file '%s'"), path);
    return m_fd.IsOpen();
}

bool CTextLines::OnClose()
{
    return m_fd.Close();
}

bool CTextLines::OnRead(const wxMBConv& conv)
{
    Clear();
    std::string bytes;
    if (!vcq::detail::ReadToEnd(m_fd.Get(), bytes)) {
        wxLogSysError(wxS("can't read from file '%s'"), GetName());
        return false;
    }
    if (!vcq::detail::MayGoOn(bytes.size() * sizeof(wchar_t)))
        return false;
    const wxString text(bytes.data(), conv, bytes.size());
    // What is not longer than a byte order mark may be empty.
    constexpr size_t longestMark = 4;
    if (text.empty() && bytes.size() > longestMark) {
        wxLogError(wxS("Failed to convert file \"%s\" to Unicode."), GetName());
        return false;
    }
    return Split(text);
}

/// Cuts a text into the lines that wxTextFile gives: each of "\r\n", "\n" and "\r" ends one. Without
/// any when it must not go on: a part of the lines would be taken for all of them.
bool CTextLines::Split(const wxString& text)
{
    const auto isLineEnd = [](wchar_t character) { return character == L'\n' || character == L'\r'; };
    const wchar_t* line = text.wx_str();
    const wchar_t* const end = line + text.length();
    while (line != end) {
        const wchar_t* const lineEnd = std::find_if(line, end, isLineEnd);
        const bool isPair = end - lineEnd > 1 && lineEnd[0] == L'\r' && lineEnd[1] == L'\n';
        const wxTextFileType type = lineEnd == end      ? wxTextFileType_None
                                    : isPair            ? wxTextFileType_Dos
                                    : *lineEnd == L'\r' ? wxTextFileType_Mac
                                                        : wxTextFileType_Unix;
        AddLine(wxString(line, lineEnd - line), type);
        line = lineEnd == end ? end : lineEnd + (isPair ? 2 : 1);
        if (!vcq::detail::MayGoOn()) {
            Clear();
            return false;
        }
    }
    return true;
}
