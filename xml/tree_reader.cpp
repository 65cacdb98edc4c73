#include "xml/tree_reader_detail.h"

#include "base/patience_detail.h"
#include "xml/parser_feed_detail.h"
#include "xml/tree_builder_detail.h"
#include "xml/tree_charset_detail.h"
#include "xml/tree_prolog_detail.h"
#include "xml/wide_buffer_detail.h"

#include <wx/log.h>

#include <expat.h>

#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace xml_detail
{

namespace
{

using LoadError = CXmlDocument::LoadError;

/// Reads until the block is full or nothing more comes.
size_t ReadBlock(wxInputStream& stream, char* block)
{
    size_t size = 0;
    for (size_t read = 1; read > 0 && size < ParserFeed::blockSize; size += read)
        read = stream.Read(block + size, ParserFeed::blockSize - size).LastRead();
    return size;
}

wxString UndefinedEntity(std::string_view name)
{
    return wxString::Format(wxS("undefined entity '%s'"), ToText(name));
}

/// Listens to a parser, and says where it failed.
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

    void ListenTo(XML_Parser parser);

    void StartElement(const XML_Char* name, const XML_Char** attributes);
    void EndElement(const XML_Char*) { m_builder.EndElement(); }
    void Text(const XML_Char* text, int size) { m_builder.AddText(text, static_cast<size_t>(size)); }
    void StartCdata() { m_builder.StartCdata(); }
    void EndCdata() { m_builder.EndCdata(); }
    void Comment(const XML_Char* text) { m_builder.AddComment(text); }
    void Instruction(const XML_Char* target, const XML_Char* data) { m_builder.AddInstruction(target, data); }
    void StartDoctype(const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId, int);
    void EndDoctype() { m_prolog.EndDoctype(); }
    void EntityDeclared(const XML_Char* name, int isParameter, const XML_Char* text, int size, const XML_Char* base,
                        const XML_Char* systemId, const XML_Char* publicId, const XML_Char* notation);
    void EntitySkipped(const XML_Char* name, int isParameter);
    void ExternalUsed(const XML_Char* systemId);
    void AnythingElse(const XML_Char* text, int size);

    void CheckReferences();
    void CountDefaults(const XML_Char** defaults);

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

    const unsigned int m_maxDepth;
    LoadError m_error;
    bool m_outOfMemory = false;
    const std::unique_ptr<XML_ParserStruct, FreeParser> m_parser;
    TreeBuilder m_builder;
    TreeProlog m_prolog;
    std::string* m_rawTag = nullptr; ///< takes the tag that is looked at as it stands in the document
};

TreeReader::TreeReader(int flags, unsigned int maxDepth)
    : m_maxDepth(maxDepth), m_parser(XML_ParserCreate(nullptr)),
      m_builder(m_parser.get(), (flags & wxXMLDOC_KEEP_WHITESPACE_NODES) != 0)
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

void TreeReader::MoveTo(wxXmlDocument& document)
{
    m_prolog.CopyTo(document);
    m_builder.MoveTo(document);
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

void TreeReader::StartElement(const XML_Char* name, const XML_Char** attributes)
{
    if (m_builder.Depth() >= m_maxDepth)
        return Fail(wxString::Format(wxS("elements are nested deeper than %u"), m_maxDepth));
    m_builder.StartElement(name, attributes);
    if (m_prolog.LacksDeclarations() && *attributes)
        CheckReferences();
    if (m_prolog.HasDoctype())
        CountDefaults(attributes + XML_GetSpecifiedAttributeCount(m_parser.get()));
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
    const std::string missing = m_prolog.FindUndeclared(tag);
    if (!missing.empty())
        Fail(LoadError{UndefinedEntity(missing), here.line, here.column});
}

void TreeReader::CountDefaults(const XML_Char** defaults)
{
    const auto read = static_cast<unsigned long long>(XML_GetCurrentByteIndex(m_parser.get()));
    if (!m_prolog.CountDefaults(defaults, read) && !HasFailed())
        Fail(wxS("default values of attributes make the document too large"));
}

void TreeReader::StartDoctype(const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId, int)
{
    m_prolog.StartDoctype(name, systemId, publicId);
}

void TreeReader::EntityDeclared(const XML_Char* name, int isParameter, const XML_Char* text, int size, const XML_Char*,
                                const XML_Char*, const XML_Char*, const XML_Char*)
{
    if (isParameter)
        return;
    const std::string_view value = text ? std::string_view(text, static_cast<size_t>(size)) : std::string_view();
    if (!m_prolog.DeclareEntity(name, value))
        Fail(wxString::Format(wxS("entities are nested deeper than %u"), EntityTable::maxNesting));
}

void TreeReader::EntitySkipped(const XML_Char* name, int isParameter)
{
    if (isParameter)
        m_prolog.MissDeclarations();
    else
        Fail(UndefinedEntity(name));
}

void TreeReader::ExternalUsed(const XML_Char* systemId)
{
    Fail(wxString::Format(wxS("external entity '%s' is not read"), ToText(systemId ? systemId : "")));
}

/// The declaration of the document, and parts of the document type that have no event of their own.
void TreeReader::AnythingElse(const XML_Char* text, int size)
{
    const std::string_view part(text, static_cast<size_t>(size));
    if (m_rawTag) {
        m_rawTag->append(part);
    } else if (m_prolog.InDoctype()) {
        const std::string missing = m_prolog.ReadDoctypePart(part);
        if (!missing.empty())
            Fail(UndefinedEntity(missing));
    } else {
        m_prolog.ReadDeclaration(part);
    }
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
