#pragma once

#include "xml/xml_document.h"

#include <wx/stream.h>
#include <wx/string.h>
#include <wx/xml/xml.h>

/// Reading a wxXmlDocument at several times the speed of wxXmlDocument::Load. The tree, its line numbers, the version,
/// the encoding and the document type come out the same, with these exceptions, where Load loses something or breaks:
///
/// - References to entities in element text are expanded; Load drops them.
/// - A reference to an entity that is external, or that is declared nowhere that is read, is an error; Load drops it.
/// - A byte that its encoding does not define is an error; Load takes it for a character before it.
/// - Characters of several bytes are read in encodings that have them; Load takes each byte for a character.
/// - An input that breaks off with a read error is an error; Load takes it for the end.
/// - Elements that are nested too deeply, entities that are, and attribute defaults that blow the document up are
/// errors.
namespace xml_detail
{

/// Replaces the tree of `document` by that of the text in `stream`. `encoding` is not used: the document itself says
/// what it is in, as for Load. `flags` are those of Load. `maxDepth` is how deep elements may be nested, 1 for the root
/// alone. On failure it returns false, fills `error`, logs one error and leaves `document` as it was.
bool ReadTree(wxInputStream& stream, wxXmlDocument& document, const wxString& encoding, int flags,
              unsigned int maxDepth, CXmlDocument::LoadError& error);

} // namespace xml_detail
