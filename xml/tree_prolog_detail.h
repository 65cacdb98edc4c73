#pragma once

#include "xml/entity_table_detail.h"

#include <wx/string.h>
#include <wx/xml/xml.h>

#include <expat.h>

#include <string>
#include <string_view>

namespace xml_detail
{

/// What a document says before its root element: the declaration, and the document type with its entities.
class TreeProlog
{
public:
    void StartDoctype(const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId);
    void EndDoctype() { m_inDoctype = false; }
    bool HasDoctype() const { return m_hasDoctype; }
    bool InDoctype() const { return m_inDoctype; }

    /// Whether some declarations stand where they are not read. The parser then leaves references that it does not know
    /// out of values, where it otherwise reports them.
    bool LacksDeclarations() const { return m_declarationsMissing; }
    void MissDeclarations() { m_declarationsMissing = true; }

    /// False when entities are now nested too deeply.
    bool DeclareEntity(std::string_view name, std::string_view text) { return m_entities.Declare(name, text); }

    /// The first entity without declaration that expanding `text` would need; empty when there is none.
    std::string FindUndeclared(std::string_view text) { return m_entities.FindUndeclared(text); }

    /// Counts the values that an element got by default; they come with every element of a name. False when all of them
    /// are too much for a document of which `read` bytes are read.
    bool CountDefaults(const XML_Char** defaults, unsigned long long read);

    /// Reads a part of the document type that has no event of its own. Gives the first entity without declaration that
    /// a default value needs; empty when there is none.
    std::string ReadDoctypePart(std::string_view part);

    /// Looks for version and encoding in the same simple way as wxXmlDocument: written with a blank around "=", or in a
    /// declaration that begins with a tab, they are not seen.
    void ReadDeclaration(std::string_view declaration);

    void CopyTo(wxXmlDocument& document) const;

private:
    wxString m_version;
    wxString m_encoding = wxS("UTF-8");
    wxXmlDoctype m_doctype;
    bool m_hasDoctype = false;
    bool m_inDoctype = false;
    bool m_declarationsMissing = false;
    EntityTable m_entities;
    unsigned long long m_defaultsSize = 0;
};

} // namespace xml_detail
