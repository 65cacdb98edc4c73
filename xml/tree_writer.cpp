#include "xml/tree_writer_detail.h"

#include "xml/tree_output_detail.h"

#include <wx/log.h>

#include <memory>
#include <new>
#include <string_view>
#include <vector>

namespace xml_detail
{

namespace
{

class TreeWriter
{
public:
    TreeWriter(const wxXmlDocument& document, OutputEncoder& output, int indentation, unsigned int maxDepth)
        : m_document(document), m_output(output), m_indentation(indentation), m_maxDepth(maxDepth),
          m_lineEnd(document.GetEOL())
    {}

    /// False, with the reason in Problem(), when the document cannot be written.
    bool Run();
    const wxString& Problem() const { return m_problem; }

private:
    /// An element whose children are being written.
    struct Level
    {
        const wxXmlNode* element;
        const wxXmlNode* next;
        bool behindText;
    };

    bool PutHead();
    bool PutSubtree(const wxXmlNode& top);
    bool PutChild();
    bool PutNode(const wxXmlNode& node);
    bool PutElement(const wxXmlNode& element);
    bool PutAttributes(const wxXmlNode& element);
    bool PutEndTag();
    bool PutLineEnd();
    bool Put(const wxString& text, Escapes escapes = Escapes::none);
    bool PutMarkup(std::wstring_view markup) { return m_output.Put(markup); }
    bool Fail(const wxString& problem);

    const wxXmlDocument& m_document;
    OutputEncoder& m_output;
    const int m_indentation;
    const unsigned int m_maxDepth;
    const wxString m_lineEnd;
    std::vector<Level> m_open;
    wxString m_problem;
};

bool TreeWriter::Run()
{
    if (!PutHead())
        return false;
    for (const wxXmlNode* node = m_document.GetDocumentNode()->GetChildren(); node; node = node->GetNext())
        if (!PutSubtree(*node) || !Put(m_lineEnd))
            return false;
    return true;
}

bool TreeWriter::PutHead()
{
    const wxString doctype = m_document.GetDoctype().GetFullString();
    return Put(wxS("<?xml version=\"") + m_document.GetVersion() + wxS("\" encoding=\"") +
               m_document.GetFileEncoding() + wxS("\"?>") + m_lineEnd) &&
           (doctype.empty() || Put(wxS("<!DOCTYPE ") + doctype + wxS(">") + m_lineEnd));
}

bool TreeWriter::PutSubtree(const wxXmlNode& top)
{
    bool done = PutNode(top);
    while (done && !m_open.empty())
        done = m_open.back().next ? PutChild() : PutEndTag();
    return done;
}

bool TreeWriter::PutChild()
{
    Level& level = m_open.back();
    const wxXmlNode& child = *level.next;
    level.next = child.GetNext();
    level.behindText = child.GetType() == wxXML_TEXT_NODE;
    return (level.behindText || PutLineEnd()) && PutNode(child);
}

bool TreeWriter::PutNode(const wxXmlNode& node)
{
    switch (node.GetType()) {
    case wxXML_ELEMENT_NODE:
        return PutElement(node);
    case wxXML_TEXT_NODE:
        return Put(node.GetContent(), node.GetNoConversion() ? Escapes::none : Escapes::text);
    case wxXML_CDATA_SECTION_NODE:
        return PutMarkup(L"<![CDATA[") && Put(node.GetContent()) && PutMarkup(L"]]>");
    case wxXML_COMMENT_NODE:
        return PutMarkup(L"<!--") && Put(node.GetContent()) && PutMarkup(L"-->");
    case wxXML_PI_NODE:
        return PutMarkup(L"<?") && Put(node.GetName()) && PutMarkup(L" ") && Put(node.GetContent()) && PutMarkup(L"?>");
    default:
        return Fail(wxString::Format(wxS("a node of type %d cannot be written"), static_cast<int>(node.GetType())));
    }
}

bool TreeWriter::PutElement(const wxXmlNode& element)
{
    if (m_open.size() >= m_maxDepth)
        return Fail(wxString::Format(wxS("elements are nested deeper than %u"), m_maxDepth));
    if (!PutMarkup(L"<") || !Put(element.GetName()) || !PutAttributes(element))
        return false;
    if (!element.GetChildren())
        return PutMarkup(L"/>");
    m_open.push_back({&element, element.GetChildren(), false});
    return PutMarkup(L">");
}

bool TreeWriter::PutAttributes(const wxXmlNode& element)
{
    for (const wxXmlAttribute* attribute = element.GetAttributes(); attribute; attribute = attribute->GetNext())
        if (!PutMarkup(L" ") || !Put(attribute->GetName()) || !PutMarkup(L"=\"") ||
            !Put(attribute->GetValue(), Escapes::attribute) || !PutMarkup(L"\""))
            return false;
    return true;
}

bool TreeWriter::PutEndTag()
{
    const Level level = m_open.back();
    m_open.pop_back();
    return (level.behindText || PutLineEnd()) && PutMarkup(L"</") && Put(level.element->GetName()) && PutMarkup(L">");
}

bool TreeWriter::PutLineEnd()
{
    if (m_indentation < 0)
        return true;
    return Put(m_lineEnd) && Put(wxString(wxS(' '), m_open.size() * static_cast<size_t>(m_indentation)));
}

bool TreeWriter::Put(const wxString& text, Escapes escapes)
{
    if (m_output.Put(text, escapes))
        return true;
    for (const wchar_t c : text.ToStdWstring())
        if (!m_output.Put({&c, 1}))
            return Fail(wxString::Format(wxS("U+%04X cannot be written in the encoding of the document, %s"),
                                         static_cast<unsigned int>(c), m_document.GetFileEncoding()));
    return Fail(wxS("a text cannot be written in the encoding of the document, ") + m_document.GetFileEncoding());
}

bool TreeWriter::Fail(const wxString& problem)
{
    m_problem = problem;
    return false;
}

/// The reason why not all of the document was written; empty when it was.
wxString Write(const wxXmlDocument& document, wxOutputStream& stream, int indentation, unsigned int maxDepth)
{
    const std::unique_ptr<OutputEncoder> output = OutputEncoder::Create(document.GetFileEncoding());
    if (!output)
        return wxS("documents cannot be written in the encoding ") + document.GetFileEncoding();
    TreeWriter writer(document, *output, indentation, maxDepth);
    if (!writer.Run())
        return writer.Problem();
    return output->Blocks().WriteTo(stream) ? wxString() : wxString(wxS("the output cannot be written"));
}

} // namespace

bool WriteTree(const wxXmlDocument& document, wxOutputStream& stream, int indentation, unsigned int maxDepth)
{
    if (!document.IsOk())
        return false;
    wxString problem;
    try {
        problem = Write(document, stream, indentation, maxDepth);
    } catch (const std::bad_alloc&) {
        problem = wxS("out of memory");
    }
    if (!problem.empty())
        wxLogError(wxS("XML writing error: '%s'"), problem);
    return problem.empty();
}

} // namespace xml_detail
