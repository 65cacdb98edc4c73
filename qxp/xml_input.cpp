#include "qxp/xml_input.h"

#include "qxp/diagnostics.h"
#include "qxp/parser_options.h"
#include "vc_qxparser.h"

#include <wx/mstream.h>
#include <wx/sstream.h>
#include <wx/strconv.h>
#include <wx/xml/xml.h>

#include <string>
#include <string_view>

namespace
{

using namespace std::string_view_literals;

constexpr size_t MarkSize = 4;
constexpr std::string_view Utf32LittleEndian = "\xFF\xFE\0\0"sv;
constexpr std::string_view Utf32BigEndian = "\0\0\xFE\xFF"sv;

std::string ReadBytes(wxInputStream& stream, size_t limit)
{
    std::string bytes;
    char block[4096];
    while (bytes.size() < limit) {
        const size_t read = stream.Read(block, std::min(sizeof block, limit - bytes.size())).LastRead();
        if (read == 0)
            break;
        bytes.append(block, read);
    }
    return bytes;
}

/// What the declaration says about the encoding is not true of a text that has been converted.
void DropDeclaredEncoding(wxString& text)
{
    const size_t end = text.StartsWith(wxS("<?xml ")) ? text.find(wxS("?>")) : wxString::npos;
    const size_t start = end == wxString::npos ? end : text.find(wxS("encoding"));
    if (start >= end)
        return;
    const size_t quote = text.find_first_of(wxS("\"'"), start);
    const size_t close = quote < end ? text.find(text[quote], quote + 1) : wxString::npos;
    if (close < end)
        text.erase(start, close + 1 - start);
}

/// Loads a text in UTF-32, which XML parsers need not know. What is no such text is left to the parser to refuse.
bool LoadUtf32(const std::string& bytes, bool isBigEndian, CXmlDocument& document)
{
    const wxMBConvUTF32BE bigEndian;
    const wxMBConvUTF32LE littleEndian;
    const wxMBConv& conversion = isBigEndian ? static_cast<const wxMBConv&>(bigEndian) : littleEndian;
    wxString text(bytes.data(), conversion, bytes.size());
    DropDeclaredEncoding(text);
    return document.SetContent(text);
}

bool Load(CFile& source, CXmlDocument& document)
{
    wxInputStream& stream = *source.GetInputStream();
    const std::string mark = ReadBytes(stream, MarkSize);
    if (mark == Utf32BigEndian || mark == Utf32LittleEndian)
        return LoadUtf32(ReadBytes(stream, std::string::npos), mark == Utf32BigEndian, document);
    stream.Ungetch(mark.data(), mark.size());
    return document.Load(stream, wxS("UTF-8"), wxXMLDOC_NONE);
}

} // namespace

bool ReadDocument(const std::string& file, const std::string& directory, CXmlDocument& document,
                  Diagnostics& diagnostics)
{
    CFile source;
    CDir dir(FromSystemName(directory));
    if (!OpenInput(file, dir, source, diagnostics))
        return false;
    diagnostics.Progress(wxS("reading ") + InputName(file));
    if (Load(source, document) && !source.Error())
        return true;
    // The log says the same in other words.
    diagnostics.DropErrors();
    const CXmlDocument::LoadError& error = document.GetLoadError();
    const wxString name = InputName(file);
    const auto line = static_cast<unsigned long>(error.line);
    if (source.Error())
        ReportUnreadable(file, diagnostics);
    else
        diagnostics.ErrorAt({name, line, NameFrom(directory, name), line, static_cast<unsigned long>(error.column)},
                            error.message);
    return false;
}
