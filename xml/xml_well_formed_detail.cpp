#include "xml/xml_well_formed_detail.h"

#include "xml/tree_links_detail.h"

#include <expat.h>
#include <wx/xml/xml.h>

#include <algorithm>
#include <new>

namespace xml_detail
{

namespace
{

/// Elements with more attributes are left to the parser, which has a better way to find equal names.
constexpr int MostAttributes = 32;

bool IsAsciiNameStart(wchar_t c)
{
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || c == L'_';
}

bool IsAsciiName(const wxString& name)
{
    const wchar_t* const text = name.wx_str();
    const auto isPart = [](wchar_t c) { return IsAsciiNameStart(c) || (c >= L'0' && c <= L'9') || c == L'-'; };
    return IsAsciiNameStart(text[0]) && std::all_of(text + 1, text + name.length(), isPart);
}

/// No control characters, and no others that documents must not have.
bool IsPlainText(const wxString& text)
{
    const wchar_t* const from = text.wx_str();
    return std::all_of(from, from + text.length(), [](wchar_t c) {
        return (c >= 0x20 && c < 0xd800) || c == L'\t' || c == L'\n' || c == L'\r' || (c >= 0xe000 && c < 0xfffe) ||
               (c >= 0x10000 && c < 0x110000);
    });
}

bool HasPlainAttributes(const wxXmlNode& element)
{
    int count = 0;
    for (const wxXmlAttribute* one = element.GetAttributes(); one; one = one->GetNext()) {
        if (++count > MostAttributes || !IsAsciiName(one->GetName()) || !IsPlainText(one->GetValue()))
            return false;
        for (const wxXmlAttribute* other = element.GetAttributes(); other != one; other = other->GetNext())
            if (other->GetName() == one->GetName())
                return false;
    }
    return true;
}

bool IsPlain(const wxXmlNode& node)
{
    if (node.GetType() == wxXML_ELEMENT_NODE)
        return IsAsciiName(node.GetName()) && HasPlainAttributes(node);
    return node.GetType() == wxXML_TEXT_NODE && !node.GetNoConversion() && IsPlainText(node.GetContent());
}

/// Bytes given to the parser at once; it takes their number as an int.
constexpr std::size_t LargestPiece = 1 << 20;

/// What the bytes beyond ASCII mean is not asked, so any one-byte encoding does.
int TakeAnyEncoding(void*, const XML_Char*, XML_Encoding* encoding)
{
    for (int byte = 0; byte < 256; ++byte)
        encoding->map[byte] = byte;
    encoding->data = nullptr;
    encoding->convert = nullptr;
    encoding->release = nullptr;
    return XML_STATUS_OK;
}

/// A loader does not get to see what it stands for.
int RefuseExternalEntity(XML_Parser, const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*)
{
    return XML_STATUS_ERROR;
}

} // namespace

bool IsSurelyWellFormed(const wxXmlDocument& document)
{
    wxXmlNode* const root = document.GetRoot();
    if (!root || document.GetDocumentNode()->GetChildren() != root || root->GetNext() ||
        !document.GetDoctype().GetRootName().empty() || document.GetVersion() != wxS("1.0"))
        return false;
    unsigned int depth = 0;
    for (wxXmlNode* node = root; node; node = NextInTree(node, root, depth))
        if (!IsPlain(*node))
            return false;
    return true;
}

void WellFormedCheck::ParserDeleter::operator()(XML_ParserStruct* parser) const
{
    XML_ParserFree(parser);
}

WellFormedCheck::WellFormedCheck(unsigned int maxDepth)
    : m_parser(XML_ParserCreate(nullptr)), m_depth{m_parser.get(), 0, maxDepth}, m_ok(true)
{
    if (!m_parser)
        throw std::bad_alloc();
    XML_SetUserData(m_parser.get(), &m_depth);
    XML_SetElementHandler(m_parser.get(), &OnStart, &OnEnd);
    XML_SetSkippedEntityHandler(m_parser.get(), &OnSkippedEntity);
    XML_SetExternalEntityRefHandler(m_parser.get(), &RefuseExternalEntity);
    XML_SetUnknownEncodingHandler(m_parser.get(), &TakeAnyEncoding, nullptr);
}

void WellFormedCheck::OnStart(void* depth, const char*, const char**)
{
    auto& at = *static_cast<Depth*>(depth);
    if (++at.now > at.most)
        XML_StopParser(at.parser, XML_FALSE);
}

void WellFormedCheck::OnSkippedEntity(void* depth, const char*, int)
{
    XML_StopParser(static_cast<Depth*>(depth)->parser, XML_FALSE);
}

void WellFormedCheck::OnEnd(void* depth, const char*)
{
    --static_cast<Depth*>(depth)->now;
}

void WellFormedCheck::Add(const char* bytes, std::size_t size)
{
    while (m_ok && size > 0) {
        const std::size_t piece = std::min(size, LargestPiece);
        m_ok = XML_Parse(m_parser.get(), bytes, static_cast<int>(piece), 0) == XML_STATUS_OK;
        bytes += piece;
        size -= piece;
    }
}

bool WellFormedCheck::Finish()
{
    m_ok = m_ok && XML_Parse(m_parser.get(), nullptr, 0, 1) == XML_STATUS_OK;
    return m_ok;
}

wxString WellFormedCheck::Message() const
{
    return wxString::Format(wxS("%s at line %lu"),
                            wxString::FromAscii(XML_ErrorString(XML_GetErrorCode(m_parser.get()))),
                            static_cast<unsigned long>(XML_GetCurrentLineNumber(m_parser.get())));
}

} // namespace xml_detail
