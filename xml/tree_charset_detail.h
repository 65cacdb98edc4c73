#pragma once

#include <expat.h>

namespace xml_detail
{

/// Tells the parser how to read an encoding that it does not know itself: as wxCSConv does, which takes one that nobody
/// knows for Latin-1. Bytes that the encoding leaves undefined are errors. Characters may take two or three bytes, if
/// the first says how many.
int XMLCALL DescribeCharset(void*, const XML_Char* name, XML_Encoding* description);

} // namespace xml_detail
