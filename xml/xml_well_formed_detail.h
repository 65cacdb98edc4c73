#pragma once

#include <wx/string.h>

#include <cstddef>
#include <memory>

struct XML_ParserStruct;
class WXDLLIMPEXP_FWD_XML wxXmlDocument;

namespace xml_detail
{

/// Whether a tree will surely be XML when it is written: plain elements, ASCII names, no odd characters. Most trees are
/// like that, and finding out costs a third of reading them again. False says nothing.
bool IsSurelyWellFormed(const wxXmlDocument& document);

/// Reads a text piece by piece and builds nothing: finds out whether it is XML that can be loaded.
class WellFormedCheck
{
public:
    /// @param maxDepth how deep elements may be nested.
    explicit WellFormedCheck(unsigned int maxDepth);

    void Add(const char* bytes, std::size_t size);
    /// Whether all that was added is a document.
    bool Finish();
    /// What is wrong and in which line; for a check that has failed.
    wxString Message() const;

private:
    struct ParserDeleter
    {
        void operator()(XML_ParserStruct* parser) const;
    };
    struct Depth
    {
        XML_ParserStruct* parser;
        unsigned int now;
        unsigned int most;
    };

    static void OnStart(void* depth, const char* name, const char** attributes);
    static void OnEnd(void* depth, const char* name);
    static void OnSkippedEntity(void* depth, const char* name, int isParameter);

    std::unique_ptr<XML_ParserStruct, ParserDeleter> m_parser;
    Depth m_depth;
    bool m_ok;
};

} // namespace xml_detail
