#pragma once

#include "base/file.h"
#include "base/file_state_detail.h"

#include <wx/string.h>

namespace vcq::detail
{

/// How a caller wants a text read.
struct TextRequest
{
    Encoding encoding;
    bool byDefault; ///< as the file says; what the first such text turns out to be holds for the rest
};

TextRequest RequestFor(const FileState& file, CFile::eConvType conv);

/// Reads the whole rest. False when reading or converting failed; `text` is of no use then.
bool ReadText(FileState& file, TextRequest request, wxString& text);
bool ReadText(FileState& file, const TextRequest& request, CUtf8Text& text);

/// Reads the next line into `line`; nothing at the end.
void ReadTextLine(FileState& file, TextRequest request, wxString& line);

} // namespace vcq::detail
