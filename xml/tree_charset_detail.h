#pragma once

#include <expat.h>

namespace xml_detail
{

/// Tells the parser how to read an encoding that it does not know itself, as wxCSConv reads it. Bytes that it leaves
/// undefined are errors.
int XMLCALL DescribeCharset(void*, const XML_Char* name, XML_Encoding* description);

} // namespace xml_detail
