#include "xml/tree_prolog_detail.h"

#include "xml/wide_buffer_detail.h"

#include <algorithm>
#include <cstring>

namespace xml_detail
{

namespace
{

/// What default values of attributes may add to a document: as much as entities may.
constexpr unsigned long long defaultsAllowed = 8 << 20;
constexpr unsigned long long defaultsPerByte = 100;

} // namespace

void TreeProlog::StartDoctype(const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId)
{
    m_hasDoctype = true;
    m_inDoctype = true;
    m_declarationsMissing = systemId != nullptr;
    m_doctype =
        wxXmlDoctype(ToText(name), systemId ? ToText(systemId) : wxString(), publicId ? ToText(publicId) : wxString());
}

bool TreeProlog::CountDefaults(const XML_Char** defaults, unsigned long long read)
{
    for (; *defaults; ++defaults)
        m_defaultsSize += std::strlen(*defaults) + 2;
    return m_defaultsSize <= std::max(defaultsAllowed, read * defaultsPerByte);
}

std::string TreeProlog::ReadDoctypePart(std::string_view part)
{
    m_declarationsMissing |= part.front() == '%';
    const bool isValue = part.front() == '"' || part.front() == '\'';
    return m_declarationsMissing && isValue ? FindUndeclared(part) : std::string();
}

void TreeProlog::ReadDeclaration(std::string_view declaration)
{
    constexpr std::string_view opening = "<?xml ";
    if (declaration.size() <= opening.size() || declaration.substr(0, opening.size()) != opening)
        return;
    const auto read = [&](std::string_view name, wxString& value) {
        const size_t at = declaration.find(name);
        if (at == declaration.npos)
            return;
        const size_t quote = at + name.size();
        const size_t end = declaration.find(declaration[quote], quote + 1);
        value = ToText(declaration.substr(quote + 1, std::min(end, declaration.size()) - quote - 1));
    };
    read("encoding=", m_encoding);
    read("version=", m_version);
}

void TreeProlog::CopyTo(wxXmlDocument& document) const
{
    if (!m_version.empty())
        document.SetVersion(m_version);
    if (!m_encoding.empty())
        document.SetFileEncoding(m_encoding);
    if (m_hasDoctype)
        document.SetDoctype(m_doctype);
}

} // namespace xml_detail
