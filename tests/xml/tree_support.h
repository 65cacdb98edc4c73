#pragma once

#include "tests/support/log_capture.h"
#include "xml/tree_links_detail.h"
#include "xml/tree_reader_detail.h"
#include "xml/tree_writer_detail.h"

#include <wx/mstream.h>
#include <wx/xml/xml.h>

#include <memory>
#include <sstream>
#include <string>

constexpr unsigned int TestMaxDepth = 1000;

/// Deletes the tree of a document without recursion, then the document.
struct DocumentDeleter
{
    void operator()(wxXmlDocument* document) const
    {
        xml_detail::DeleteTree(document->DetachDocumentNode(), [](const wxXmlNode*) {});
        delete document;
    }
};
using DocumentPointer = std::unique_ptr<wxXmlDocument, DocumentDeleter>;

/// A text as ASCII: what is not is shown as its number.
inline std::string Visible(const wxString& text)
{
    std::ostringstream out;
    for (const wchar_t c : text.ToStdWstring()) {
        if (c >= 0x20 && c < 0x7f && c != '\\')
            out << static_cast<char>(c);
        else
            out << '\\' << std::hex << static_cast<unsigned int>(c) << std::dec << ';';
    }
    return out.str();
}

/// One line for each node, with all that it holds.
inline std::string DescribeTree(wxXmlNode* top)
{
    std::ostringstream out;
    unsigned int depth = 0;
    for (wxXmlNode* node = top; node; node = xml_detail::NextInTree(node, top, depth)) {
        out << std::string(depth, ' ') << node->GetType() << ' ' << Visible(node->GetName()) << " '"
            << Visible(node->GetContent()) << "' line " << node->GetLineNumber()
            << (node->GetNoConversion() ? " raw" : "");
        for (const wxXmlAttribute* attribute = node->GetAttributes(); attribute; attribute = attribute->GetNext())
            out << ' ' << Visible(attribute->GetName()) << "='" << Visible(attribute->GetValue()) << '\'';
        const bool hasParent = node == top ? !node->GetParent() : node->GetParent() != nullptr;
        out << (hasParent ? "" : " wrong parent") << '\n';
    }
    return out.str();
}

/// All that a document holds.
inline std::string Describe(const wxXmlDocument& document)
{
    std::ostringstream out;
    out << "version " << Visible(document.GetVersion()) << " encoding " << Visible(document.GetFileEncoding())
        << " doctype " << Visible(document.GetDoctype().GetRootName()) << '|'
        << Visible(document.GetDoctype().GetSystemId()) << '|' << Visible(document.GetDoctype().GetPublicId())
        << " lines end with " << Visible(document.GetEOL()) << '\n'
        << DescribeTree(document.GetDocumentNode());
    return out.str();
}

/// What came of reading.
struct ReadResult
{
    DocumentPointer document{new wxXmlDocument};
    bool done = false;
    CXmlDocument::LoadError error;
    std::vector<wxString> errors;
};

inline ReadResult ReadOurs(wxInputStream& stream, int flags = wxXMLDOC_NONE, unsigned int maxDepth = TestMaxDepth)
{
    const LogCapture log;
    ReadResult result;
    result.done = xml_detail::ReadTree(stream, *result.document, wxS("UTF-8"), flags, maxDepth, result.error);
    result.errors = log.Errors();
    return result;
}

inline ReadResult ReadOurs(const std::string& text, int flags = wxXMLDOC_NONE, unsigned int maxDepth = TestMaxDepth)
{
    wxMemoryInputStream stream(text.data(), text.size());
    return ReadOurs(stream, flags, maxDepth);
}

inline ReadResult ReadPlain(const std::string& text, int flags = wxXMLDOC_NONE)
{
    const LogCapture log;
    ReadResult result;
    wxMemoryInputStream stream(text.data(), text.size());
    result.done = result.document->Load(stream, wxS("UTF-8"), flags);
    result.errors = log.Errors();
    return result;
}

/// What came of writing.
struct WriteResult
{
    bool done = false;
    std::string bytes;
    std::vector<wxString> errors;
};

template <typename Write> WriteResult WriteWith(Write write)
{
    const LogCapture log;
    WriteResult result;
    wxMemoryOutputStream stream;
    result.done = write(stream);
    result.bytes.resize(stream.GetSize());
    stream.CopyTo(result.bytes.data(), result.bytes.size());
    result.errors = log.Errors();
    return result;
}

inline WriteResult WriteOurs(const wxXmlDocument& document, int indentation = 1, unsigned int maxDepth = TestMaxDepth)
{
    return WriteWith(
        [&](wxOutputStream& stream) { return xml_detail::WriteTree(document, stream, indentation, maxDepth); });
}

inline WriteResult WritePlain(const wxXmlDocument& document, int indentation = 1)
{
    return WriteWith([&](wxOutputStream& stream) { return document.Save(stream, indentation); });
}
