#include "fuzz/fuzz_support.h"
#include "tests/xml/tree_support.h"

namespace
{

constexpr unsigned int MaxDepth = 50;

bool Holds(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

/// Where wxXmlDocument may accept what is refused here, or give another tree: entities, and encodings that neither the
/// parser nor wxXmlDocument knows well.
bool MayDiffer(const std::string& text)
{
    return Holds(text, "ENTITY") || Holds(text, "SYSTEM") || Holds(text, "PUBLIC") || Holds(text, "ATTLIST") ||
           Holds(text, "encoding") || text.find('\0') != std::string::npos;
}

/// Whether a document is refused for a reference that a parameter entity, which nobody reads, might have declared:
/// wxXmlDocument drops it and goes on.
bool HasUndecidedReference(const std::string& text, const ReadResult& result)
{
    return Holds(text, "%") && result.error.message.StartsWith(wxS("undefined entity"));
}

bool IsDeep(const ReadResult& result)
{
    return result.error.message.StartsWith(wxS("elements are nested deeper than"));
}

void CheckFailure(const ReadResult& result)
{
    Require(!result.done == !result.error.message.empty(), "a failure has a message, a success none");
    Require(result.errors.size() == (result.done ? 0u : 1u), "a failure is logged once");
    Require(result.done || (result.error.line >= 0 && result.error.column >= 0), "a failure has a place");
    Require(result.done == result.document->IsOk(), "a failure leaves no tree");
}

/// What was read is written, read again and written again to the same bytes.
void CheckRoundTrip(const wxXmlDocument& document)
{
    const WriteResult first = WriteOurs(document, wxXML_NO_INDENTATION, MaxDepth);
    Require(first.done == first.errors.empty(), "a failure to write is logged");
    Require(first.done || first.bytes.empty(), "and writes nothing");
    if (!first.done)
        return;
    const ReadResult again = ReadOurs(first.bytes, wxXMLDOC_KEEP_WHITESPACE_NODES, MaxDepth);
    if (!again.done)
        return; // a doctype or an encoding that is written so that nobody can read it
    Require(WriteOurs(*again.document, wxXML_NO_INDENTATION, MaxDepth).bytes == first.bytes, "writing is repeatable");
}

void Check(const std::string& text, int flags)
{
    const ReadResult ours = ReadOurs(text, flags, MaxDepth);
    CheckFailure(ours);
    if (ours.done)
        CheckRoundTrip(*ours.document);
    if (MayDiffer(text) || IsDeep(ours) || HasUndecidedReference(text, ours))
        return;
    const ReadResult plain = ReadPlain(text, flags);
    Require(plain.done == ours.done, "wxXmlDocument accepts the same documents");
    Require(plain.errors == ours.errors, "with the same errors");
    if (!plain.done)
        return;
    Require(Describe(*plain.document) == Describe(*ours.document), "and reads the same trees");
    Require(WritePlain(*plain.document).bytes == WriteOurs(*ours.document).bytes, "and writes the same bytes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    const std::string text(reinterpret_cast<const char*>(data), size);
    Check(text, wxXMLDOC_NONE);
    Check(text, wxXMLDOC_KEEP_WHITESPACE_NODES);
    return 0;
}
