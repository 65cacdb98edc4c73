#include "xml/tree_reader_detail.h"

#include "base/patience_detail.h"
#include "xml/entity_table_detail.h"
#include "xml/parser_feed_detail.h"
#include "xml/tree_charset_detail.h"
#include "xml/tree_links_detail.h"
#include "xml/wide_buffer_detail.h"

#include <wx/log.h>

#include <expat.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace xml_detail
{

namespace
{

using LoadError = CXmlDocument::LoadError;

/// What default values of attributes may add to a document: as much as entities may.
constexpr unsigned long long defaultsAllowed = 8 << 20;
constexpr unsigned long long defaultsPerByte = 100;

bool IsBlank(const char* text, size_t size)
{
    return std::string_view(text, size).find_first_not_of(" \t\n\r") == std::string_view::npos;
}

/// Reads until the block is full or nothing more comes.
size_t ReadBlock(wxInputStream& stream, char* block)
{
    size_t size = 0;
    for (size_t read = 1; read > 0 && size < ParserFeed::blockSize; size += read)
        read = stream.Read(block + size, ParserFeed::blockSize - size).LastRead();
    return size;
}

/// Builds a tree from the parser's events.
class TreeReader
{
public:
    TreeReader(int flags, unsigned int maxDepth);

    bool Read(wxInputStream& stream);
    void MoveTo(wxXmlDocument& document);
    const LoadError& Error() const { return m_error; }

private:
    struct FreeParser
    {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };
    struct DeleteNodes
    {
        void operator()(wxXmlNode* node) const
        {
            DeleteTree(node, [](const wxXmlNode*) {});
        }
    };

    void ListenTo(XML_Parser parser);

    void StartElement(const XML_Char* name, const XML_Char** attributes);
    void EndElement(const XML_Char* name);
    void Text(const XML_Char* text, int size);
    void StartCdata();
    void EndCdata();
    void Comment(const XML_Char* text);
    void Instruction(const XML_Char* target, const XML_Char* data);
    void StartDoctype(const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId, int hasSubset);
    void EndDoctype();
    void EntityDeclared(const XML_Char* name, int isParameter, const XML_Char* text, int size, const XML_Char* base,
                        const XML_Char* systemId, const XML_Char* publicId, const XML_Char* notation);
    void EntitySkipped(const XML_Char* name, int isParameter);
    void ExternalUsed(const XML_Char* systemId);
    void AnythingElse(const XML_Char* text, int size);

    void AddAttributes(wxXmlNode& element, const XML_Char** attributes);
    void CheckReferences();
    void CheckDefault(std::string_view value);
    void CountDefaults(const XML_Char** defaults);
    wxString UndefinedEntity(const XML_Char* name);
    void ReadDeclaration(const XML_Char* text, size_t size);
    void StartText(wxXmlNodeType type);
    void FinishText();
    void Append(wxXmlNode* node);
    int Line() const { return static_cast<int>(XML_GetCurrentLineNumber(m_parser.get())); }
    const wxString& Decode(const XML_Char* text, size_t size, wxString& into);
    const wxString& Decode(const XML_Char* text, wxString& into) { return Decode(text, std::strlen(text), into); }

    bool HasFailed() const { return m_outOfMemory || !m_error.message.empty(); }
    LoadError ErrorHere(const wxString& message) const;
    void Fail(const LoadError& error);
    void Fail(const wxString& message) { Fail(ErrorHere(message)); }

    /// Passes an event on to a function of the reader. Some events still come after a failure.
    template <auto Function> struct Handler;
    template <typename... Arguments, void (TreeReader::*Function)(Arguments...)> struct Handler<Function>
    {
        static void XMLCALL Call(void* self, Arguments... arguments)
        {
            auto& reader = *static_cast<TreeReader*>(self);
            if (reader.HasFailed())
                return;
            try {
                (reader.*Function)(arguments...);
            } catch (const std::bad_alloc&) {
                reader.m_outOfMemory = true;
                XML_StopParser(reader.m_parser.get(), XML_FALSE);
            }
        }
    };
    static int XMLCALL RefuseExternal(XML_Parser self, const XML_Char*, const XML_Char*, const XML_Char*,
                                      const XML_Char*);

    const bool m_keepBlanks;
    const unsigned int m_maxDepth;
    LoadError m_error;
    bool m_outOfMemory = false;

    std::unique_ptr<wxXmlNode, DeleteNodes> m_tree;
    std::unique_ptr<XML_ParserStruct, FreeParser> m_parser;
    wxXmlNode* m_node;           ///< whose children are being read
    wxXmlNode* m_last = nullptr; ///< the last of them so far
    unsigned int m_depth = 0;

    wxXmlNodeType m_textType = wxXML_DOCUMENT_NODE; ///< that of the text being read; that of a document for none
    int m_textLine = 0;
    WideBuffer m_text;

    wxString m_version;
    wxString m_encoding = wxS("UTF-8");
    wxXmlDoctype m_doctype;
    bool m_hasDoctype = false;
    bool m_inDoctype = false;
    bool m_declarationsMissing = false; ///< some declarations stand where they are not read
    EntityTable m_entities;
    unsigned long long m_defaultsSize = 0;
    std::string* m_rawTag = nullptr;

    WideBuffer m_wide;
    wxString m_first;
    wxString m_second;
};

TreeReader::TreeReader(int flags, unsigned int maxDepth)
    : m_keepBlanks((flags & wxXMLDOC_KEEP_WHITESPACE_NODES) != 0), m_maxDepth(maxDepth),
      m_tree(new wxXmlNode(wxXML_DOCUMENT_NODE, wxString())), m_parser(XML_ParserCreate(nullptr)), m_node(m_tree.get())
{
    if (!m_parser)
        throw std::bad_alloc();
    ListenTo(m_parser.get());
}

void TreeReader::ListenTo(XML_Parser parser)
{
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, Handler<&TreeReader::StartElement>::Call, Handler<&TreeReader::EndElement>::Call);
    XML_SetCharacterDataHandler(parser, Handler<&TreeReader::Text>::Call);
    XML_SetCdataSectionHandler(parser, Handler<&TreeReader::StartCdata>::Call, Handler<&TreeReader::EndCdata>::Call);
    XML_SetCommentHandler(parser, Handler<&TreeReader::Comment>::Call);
    XML_SetProcessingInstructionHandler(parser, Handler<&TreeReader::Instruction>::Call);
    XML_SetDoctypeDeclHandler(parser, Handler<&TreeReader::StartDoctype>::Call, Handler<&TreeReader::EndDoctype>::Call);
    XML_SetEntityDeclHandler(parser, Handler<&TreeReader::EntityDeclared>::Call);
    XML_SetSkippedEntityHandler(parser, Handler<&TreeReader::EntitySkipped>::Call);
    XML_SetDefaultHandlerExpand(parser, Handler<&TreeReader::AnythingElse>::Call);
    XML_SetExternalEntityRefHandlerArg(parser, this);
    XML_SetExternalEntityRefHandler(parser, RefuseExternal);
    XML_SetUnknownEncodingHandler(parser, DescribeCharset, nullptr);
}

bool TreeReader::Read(wxInputStream& stream)
{
    ParserFeed feed(m_parser.get());
    const std::unique_ptr<char[]> block(new char[ParserFeed::blockSize]);
    for (bool last = false; !last && !HasFailed();) {
        const size_t size = ReadBlock(stream, block.get());
        last = size < ParserFeed::blockSize;
        if (stream.GetLastError() == wxSTREAM_READ_ERROR)
            Fail(wxS("the input cannot be read"));
        else if (!vcq::detail::MayGoOn())
            Fail(wxS("interrupted"));
        else if (!feed.Feed(block.get(), size, last) && !HasFailed())
            Fail(wxString::FromAscii(XML_ErrorString(XML_GetErrorCode(m_parser.get()))));
    }
    if (m_outOfMemory)
        throw std::bad_alloc();
    return !HasFailed();
}

LoadError TreeReader::ErrorHere(const wxString& message) const
{
    XML_Parser parser = m_parser.get();
    return {message, static_cast<long>(XML_GetCurrentLineNumber(parser)),
            static_cast<long>(XML_GetCurrentColumnNumber(parser)) + 1};
}

void TreeReader::Fail(const LoadError& error)
{
    m_error = error;
    XML_StopParser(m_parser.get(), XML_FALSE);
}

void TreeReader::MoveTo(wxXmlDocument& document)
{
    if (!m_version.empty())
        document.SetVersion(m_version);
    if (!m_encoding.empty())
        document.SetFileEncoding(m_encoding);
    if (m_hasDoctype)
        document.SetDoctype(m_doctype);
    m_parser.reset();
    DeleteNodes()(document.DetachDocumentNode());
    document.SetDocumentNode(m_tree.release());
}

const wxString& TreeReader::Decode(const XML_Char* text, size_t size, wxString& into)
{
    m_wide.Clear();
    m_wide.AppendUtf8(text, size);
    return into.assign(m_wide.Data(), m_wide.Size());
}

void TreeReader::Append(wxXmlNode* node)
{
    node->SetParent(m_node);
    if (m_last)
        m_last->SetNext(node);
    else
        m_node->SetChildren(node);
    m_last = node;
}

void TreeReader::StartElement(const XML_Char* name, const XML_Char** attributes)
{
    FinishText();
    if (m_depth >= m_maxDepth)
        return Fail(wxString::Format(wxS("elements are nested deeper than %u"), m_maxDepth));
    auto* const element = new wxXmlNode(wxXML_ELEMENT_NODE, Decode(name, m_first), wxString(), Line());
    Append(element);
    m_node = element;
    m_last = nullptr;
    ++m_depth;
    AddAttributes(*element, attributes);
    if (m_declarationsMissing && *attributes)
        CheckReferences();
    if (m_hasDoctype)
        CountDefaults(attributes + XML_GetSpecifiedAttributeCount(m_parser.get()));
}

/// wxXmlNode::AddAttribute walks to the end of the list each time.
void TreeReader::AddAttributes(wxXmlNode& element, const XML_Char** attributes)
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

/// Looks at the tag as it stands in the document, as the parser leaves references that it does not know out of the
/// values. Where it converts the tag for that, it is at its end afterwards.
void TreeReader::CheckReferences()
{
    const LoadError here = ErrorHere(wxString());
    std::string tag;
    m_rawTag = &tag;
    XML_DefaultCurrent(m_parser.get());
    m_rawTag = nullptr;
    const std::string missing = m_entities.FindUndeclared(tag);
    if (!missing.empty())
        Fail(LoadError{UndefinedEntity(missing.c_str()), here.line, here.column});
}

/// Default values come with every element of a name.
void TreeReader::CountDefaults(const XML_Char** defaults)
{
    for (; *defaults; ++defaults)
        m_defaultsSize += std::strlen(*defaults) + 2;
    const auto read = static_cast<unsigned long long>(XML_GetCurrentByteIndex(m_parser.get()));
    if (m_defaultsSize > std::max(defaultsAllowed, read * defaultsPerByte) && !HasFailed())
        Fail(wxS("default values of attributes make the document too large"));
}

void TreeReader::EndElement(const XML_Char*)
{
    FinishText();
    --m_depth;
    m_last = m_node;
    m_node = m_node->GetParent();
}

void TreeReader::Text(const XML_Char* text, int size)
{
    const auto length = static_cast<size_t>(size);
    if (m_textType == wxXML_DOCUMENT_NODE) {
        if (!m_keepBlanks && IsBlank(text, length))
            return;
        StartText(wxXML_TEXT_NODE);
    }
    m_text.AppendUtf8(text, length);
}

void TreeReader::StartText(wxXmlNodeType type)
{
    m_textType = type;
    m_textLine = Line();
}

/// The parser gives a text in many parts; joining them in the node would copy its beginning again and again.
void TreeReader::FinishText()
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

void TreeReader::StartCdata()
{
    FinishText();
    StartText(wxXML_CDATA_SECTION_NODE);
}

void TreeReader::EndCdata()
{
    FinishText();
}

void TreeReader::Comment(const XML_Char* text)
{
    static const wxString commentName = wxS("comment");
    FinishText();
    Append(new wxXmlNode(wxXML_COMMENT_NODE, commentName, Decode(text, m_first), Line()));
}

void TreeReader::Instruction(const XML_Char* target, const XML_Char* data)
{
    FinishText();
    Append(new wxXmlNode(wxXML_PI_NODE, Decode(target, m_first), Decode(data, m_second), Line()));
}

void TreeReader::StartDoctype(const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId, int)
{
    m_hasDoctype = true;
    m_inDoctype = true;
    m_declarationsMissing = systemId != nullptr;
    m_doctype = wxXmlDoctype(Decode(name, m_first), systemId ? Decode(systemId, m_second) : wxString(),
                             publicId ? wxString::FromUTF8(publicId) : wxString());
}

void TreeReader::EndDoctype()
{
    m_inDoctype = false;
}

void TreeReader::EntityDeclared(const XML_Char* name, int isParameter, const XML_Char* text, int size, const XML_Char*,
                                const XML_Char*, const XML_Char*, const XML_Char*)
{
    if (isParameter)
        return;
    const std::string_view value = text ? std::string_view(text, static_cast<size_t>(size)) : std::string_view();
    if (!m_entities.Declare(name, value))
        Fail(wxString::Format(wxS("entities are nested deeper than %u"), EntityTable::maxNesting));
}

void TreeReader::EntitySkipped(const XML_Char* name, int isParameter)
{
    if (isParameter)
        m_declarationsMissing = true;
    else
        Fail(UndefinedEntity(name));
}

wxString TreeReader::UndefinedEntity(const XML_Char* name)
{
    return wxString::Format(wxS("undefined entity '%s'"), Decode(name, m_first));
}

void TreeReader::ExternalUsed(const XML_Char* systemId)
{
    Fail(wxString::Format(wxS("external entity '%s' is not read"), Decode(systemId ? systemId : "", m_first)));
}

/// The declaration of the document, and parts of the document type that have no event of their own.
void TreeReader::AnythingElse(const XML_Char* text, int size)
{
    const std::string_view part(text, static_cast<size_t>(size));
    if (m_rawTag) {
        m_rawTag->append(part);
    } else if (m_inDoctype) {
        m_declarationsMissing |= part.front() == '%';
        if (m_declarationsMissing && (part.front() == '"' || part.front() == '\''))
            CheckDefault(part);
    } else {
        ReadDeclaration(text, part.size());
    }
}

/// As in a tag, references that are not known are left out of a default value.
void TreeReader::CheckDefault(std::string_view value)
{
    const std::string missing = m_entities.FindUndeclared(value);
    if (!missing.empty())
        Fail(UndefinedEntity(missing.c_str()));
}

/// Looks for version and encoding in the same simple way as wxXmlDocument: written with a blank around "=", or in a
/// declaration that begins with a tab, they are not seen.
void TreeReader::ReadDeclaration(const XML_Char* text, size_t size)
{
    const std::string_view declaration(text, size);
    constexpr std::string_view opening = "<?xml ";
    if (size <= opening.size() || declaration.substr(0, opening.size()) != opening)
        return;
    const auto read = [&](std::string_view name, wxString& value) {
        const size_t at = declaration.find(name);
        if (at == declaration.npos)
            return;
        const size_t quote = at + name.size();
        const size_t end = declaration.find(declaration[quote], quote + 1);
        Decode(text + quote + 1, std::min(end, size) - quote - 1, value);
    };
    read("encoding=", m_encoding);
    read("version=", m_version);
}

int XMLCALL TreeReader::RefuseExternal(XML_Parser self, const XML_Char*, const XML_Char*, const XML_Char* systemId,
                                       const XML_Char*)
{
    Handler<&TreeReader::ExternalUsed>::Call(static_cast<void*>(self), systemId);
    return XML_STATUS_ERROR;
}

} // namespace

bool ReadTree(wxInputStream& stream, wxXmlDocument& document, const wxString&, int flags, unsigned int maxDepth,
              CXmlDocument::LoadError& error)
{
    try {
        TreeReader reader(flags, maxDepth);
        if (reader.Read(stream)) {
            reader.MoveTo(document);
            return true;
        }
        error = reader.Error();
    } catch (const std::bad_alloc&) {
        error = {wxS("out of memory"), 0, 0};
    }
    wxLogError(wxS("XML parsing error: '%s' at line %ld"), error.message, error.line);
    return false;
}

} // namespace xml_detail
