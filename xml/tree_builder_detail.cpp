#include "xml/tree_builder_detail.h"

#include <cstring>
#include <string_view>

namespace xml_detail
{

namespace
{

bool IsBlank(const char* text, size_t size)
{
    return std::string_view(text, size).find_first_not_of(" \t\n\r") == std::string_view::npos;
}

} // namespace

TreeBuilder::TreeBuilder(XML_Parser parser, bool keepBlanks)
    : m_parser(parser), m_keepBlanks(keepBlanks), m_tree(new wxXmlNode(wxXML_DOCUMENT_NODE, wxString())),
      m_node(m_tree.get())
{}

void TreeBuilder::StartElement(const XML_Char* name, const XML_Char** attributes)
{
    FinishText();
    auto* const element = new wxXmlNode(wxXML_ELEMENT_NODE, Decode(name, m_first), wxString(), Line());
    Append(element);
    m_node = element;
    m_last = nullptr;
    ++m_depth;
    AddAttributes(*element, attributes);
}

/// wxXmlNode::AddAttribute walks to the end of the list each time.
void TreeBuilder::AddAttributes(wxXmlNode& element, const XML_Char** attributes)
{
    wxXmlAttribute* last = nullptr;
    for (; *attributes; attributes += 2) {
        auto* const attribute = new wxXmlAttribute(Decode(attributes[0], m_first), Decode(attributes[1], m_second));
        if (last)
            last->SetNext(attribute);
        else
            element.SetAttributes(attribute);
        last = attribute;
    }
}

void TreeBuilder::EndElement()
{
    FinishText();
    --m_depth;
    m_last = m_node;
    m_node = m_node->GetParent();
}

void TreeBuilder::AddText(const XML_Char* text, size_t size)
{
    if (m_textType == wxXML_DOCUMENT_NODE) {
        if (!m_keepBlanks && IsBlank(text, size))
            return;
        StartText(wxXML_TEXT_NODE);
    }
    m_text.AppendUtf8(text, size);
}

void TreeBuilder::StartText(wxXmlNodeType type)
{
    m_textType = type;
    m_textLine = Line();
}

/// The parser gives a text in many parts; joining them in the node would copy its beginning again and again.
void TreeBuilder::FinishText()
{
    static const wxString textName = wxS("text");
    static const wxString cdataName = wxS("cdata");
    if (m_textType == wxXML_DOCUMENT_NODE)
        return;
    m_first.assign(m_text.Data(), m_text.Size());
    Append(new wxXmlNode(m_textType, m_textType == wxXML_TEXT_NODE ? textName : cdataName, m_first, m_textLine));
    m_textType = wxXML_DOCUMENT_NODE;
    m_text.Clear();
}

void TreeBuilder::StartCdata()
{
    FinishText();
    StartText(wxXML_CDATA_SECTION_NODE);
}

void TreeBuilder::EndCdata()
{
    FinishText();
}

void TreeBuilder::AddComment(const XML_Char* text)
{
    static const wxString commentName = wxS("comment");
    FinishText();
    Append(new wxXmlNode(wxXML_COMMENT_NODE, commentName, Decode(text, m_first), Line()));
}

void TreeBuilder::AddInstruction(const XML_Char* target, const XML_Char* data)
{
    FinishText();
    Append(new wxXmlNode(wxXML_PI_NODE, Decode(target, m_first), Decode(data, m_second), Line()));
}

void TreeBuilder::Append(wxXmlNode* node)
{
    node->SetParent(m_node);
    if (m_last)
        m_last->SetNext(node);
    else
        m_node->SetChildren(node);
    m_last = node;
}

const wxString& TreeBuilder::Decode(const XML_Char* text, wxString& into)
{
    m_wide.Clear();
    m_wide.AppendUtf8(text, std::strlen(text));
    return into.assign(m_wide.Data(), m_wide.Size());
}

void TreeBuilder::MoveTo(wxXmlDocument& document)
{
    DeleteNodes()(document.DetachDocumentNode());
    document.SetDocumentNode(m_tree.release());
}

} // namespace xml_detail
