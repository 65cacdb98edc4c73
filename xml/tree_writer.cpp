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

/// What is held back before anything is written, so that a document that cannot be written leaves nothing behind. The
/// rest of a larger one is tried beforehand instead, as holding it would take more memory than wxXmlDocument takes.
constexpr size_t mostHeld = 16 << 20;

/// What is written at once from then on. Less than the processor's cache, and no new memory.
constexpr size_t pieceSize = 128 << 10;

/// Writes a document step by step. A copy goes on from where it was made, into an output of its own.
class TreeWriter
{
public:
    TreeWriter(const wxXmlDocument& document, OutputEncoder& output, int indentation, unsigned int maxDepth)
        : m_document(document), m_output(output), m_indentation(indentation), m_maxDepth(maxDepth),
          m_next(document.GetDocumentNode()->GetChildren()), m_margin(document.GetEOL()),
          m_lineEndSize(m_margin.length())
    {}
    TreeWriter(const TreeWriter& other, OutputEncoder& output)
        : m_document(other.m_document), m_output(output), m_indentation(other.m_indentation),
          m_maxDepth(other.m_maxDepth), m_next(other.m_next), m_open(other.m_open), m_margin(other.m_margin),
          m_lineEndSize(other.m_lineEndSize)
    {}

    /// The steps return false, with the reason in Problem(), for what cannot be written.
    bool PutHead();
    bool PutNext();
    bool AtEnd() const { return m_open.empty() && !m_next; }
    const wxString& Problem() const { return m_problem; }

private:
    /// An element whose children are being written.
    struct Level
    {
        const wxXmlNode* element;
        const wxXmlNode* next;
        bool behindText;
    };

    bool PutTop();
    bool PutChild();
    bool PutNode(const wxXmlNode& node);
    bool PutElement(const wxXmlNode& element);
    bool PutAttributes(const wxXmlNode& element);
    bool PutEndTag();
    bool PutLineEnd(size_t blanks);
    bool PutMargin() { return m_indentation < 0 || PutLineEnd(m_open.size() * static_cast<size_t>(m_indentation)); }
    bool Put(const wxString& text, Escapes escapes = Escapes::none);
    template <size_t Size> bool PutMarkup(const wchar_t (&markup)[Size]) { return m_output.Put({markup, Size - 1}); }
    bool Fail(const wxString& problem);

    const wxXmlDocument& m_document;
    OutputEncoder& m_output;
    const int m_indentation;
    const unsigned int m_maxDepth;
    const wxXmlNode* m_next; ///< behind the root, or another node beside it, that is being written
    std::vector<Level> m_open;
    wxString m_margin; ///< a line end and as many blanks as were needed so far
    const size_t m_lineEndSize;
    wxString m_problem;
};

bool TreeWriter::PutHead()
{
    const wxString doctype = m_document.GetDoctype().GetFullString();
    return Put(wxS("<?xml version=\"") + m_document.GetVersion() + wxS("\" encoding=\"") +
               m_document.GetFileEncoding() + wxS("\"?>") + m_document.GetEOL()) &&
           (doctype.empty() || Put(wxS("<!DOCTYPE ") + doctype + wxS(">") + m_document.GetEOL()));
}

bool TreeWriter::PutNext()
{
    const bool done = m_open.empty() ? PutTop() : (m_open.back().next ? PutChild() : PutEndTag());
    return done && (!m_open.empty() || PutLineEnd(0));
}

bool TreeWriter::PutTop()
{
    const wxXmlNode& node = *m_next;
    m_next = node.GetNext();
    return PutNode(node);
}

bool TreeWriter::PutChild()
{
    Level& level = m_open.back();
    const wxXmlNode& child = *level.next;
    level.next = child.GetNext();
    level.behindText = child.GetType() == wxXML_TEXT_NODE;
    return (level.behindText || PutMargin()) && PutNode(child);
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
    return (level.behindText || PutMargin()) && PutMarkup(L"</") && Put(level.element->GetName()) && PutMarkup(L">");
}

bool TreeWriter::PutLineEnd(size_t blanks)
{
    const size_t size = m_lineEndSize + blanks;
    if (m_margin.length() < size)
        m_margin.append(size - m_margin.length(), wxS(' '));
    return m_output.Put(std::wstring_view(m_margin.wx_str(), size));
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

/// Why what `writer` has not written yet cannot be; empty when it can.
wxString ProblemAhead(const TreeWriter& writer, const wxString& encoding)
{
    const std::unique_ptr<OutputEncoder> nowhere = OutputEncoder::CreateForTrial(encoding);
    TreeWriter ahead(writer, *nowhere);
    for (bool done = true; done && !ahead.AtEnd(); nowhere->Blocks().Clear())
        done = ahead.PutNext();
    return ahead.Problem();
}

/// The reason why not all of the document was written; empty when it was.
wxString Write(const wxXmlDocument& document, wxOutputStream& stream, int indentation, unsigned int maxDepth)
{
    const wxString outputProblem = wxS("the output cannot be written");
    const wxString encoding = document.GetFileEncoding();
    const std::unique_ptr<OutputEncoder> output = OutputEncoder::Create(encoding);
    if (!output)
        return wxS("documents cannot be written in the encoding ") + encoding;
    TreeWriter writer(document, *output, indentation, maxDepth);
    bool isTried = false;
    for (bool done = writer.PutHead(); done && !writer.AtEnd();) {
        done = writer.PutNext();
        if (!done || output->Blocks().Size() < (isTried ? pieceSize : mostHeld))
            continue;
        const wxString problem = isTried ? wxString() : ProblemAhead(writer, encoding);
        isTried = true;
        if (!problem.empty())
            return problem;
        if (!output->Blocks().WriteTo(stream))
            return outputProblem;
    }
    if (!writer.Problem().empty())
        return writer.Problem();
    return output->Blocks().WriteTo(stream) ? wxString() : outputProblem;
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
