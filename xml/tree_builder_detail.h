#pragma once

#include "xml/tree_links_detail.h"
#include "xml/wide_buffer_detail.h"

#include <wx/xml/xml.h>

#include <expat.h>

#include <memory>

namespace xml_detail
{

/// Puts the nodes of a document together in the order in which a parser tells of them.
class TreeBuilder
{
public:
    /// `parser` is asked for the lines of the nodes, and must live as long as there are any to add. Texts of nothing
    /// but white space become nodes only when `keepBlanks` says so.
    TreeBuilder(XML_Parser parser, bool keepBlanks);

    /// How many elements are open.
    unsigned int Depth() const { return m_depth; }

    /// `attributes` are names and values in turn, with a null at the end.
    void StartElement(const XML_Char* name, const XML_Char** attributes);
    void EndElement();

    /// A text may come in many parts.
    void AddText(const XML_Char* text, size_t size);
    void StartCdata();
    void EndCdata();
    void AddComment(const XML_Char* text);
    void AddInstruction(const XML_Char* target, const XML_Char* data);

    /// Gives the whole tree to `document` in the place of the one that it has.
    void MoveTo(wxXmlDocument& document);

private:
    struct DeleteNodes
    {
        void operator()(wxXmlNode* node) const
        {
            DeleteTree(node, [](const wxXmlNode*) {});
        }
    };

    void AddAttributes(wxXmlNode& element, const XML_Char** attributes);
    void StartText(wxXmlNodeType type);
    void FinishText();
    void Append(wxXmlNode* node);
    int Line() const { return static_cast<int>(XML_GetCurrentLineNumber(m_parser)); }
    const wxString& Decode(const XML_Char* text, wxString& into);

    const XML_Parser m_parser;
    const bool m_keepBlanks;
    std::unique_ptr<wxXmlNode, DeleteNodes> m_tree;
    wxXmlNode* m_node;           ///< whose children are being read
    wxXmlNode* m_last = nullptr; ///< the last of them so far
    unsigned int m_depth = 0;

    wxXmlNodeType m_textType = wxXML_DOCUMENT_NODE; ///< that of the text being read; that of a document for none
    int m_textLine = 0;
    WideBuffer m_text;

    WideBuffer m_wide;
    wxString m_first;
    wxString m_second;
};

} // namespace xml_detail
