#pragma once

#include "tests/support/log_capture.h"
#include "xml/xml_document.h"
#include "xml/xml_node.h"

#include <gtest/gtest.h>
#include <wx/string.h>

#include <ostream>
#include <string>

/// A node with all below it as XML text on one line, as far as its names, properties and contents go.
std::string Show(CXmlNode* node);
/// The tree of a document likewise; "(none)" without a root.
std::string Show(CXmlDocument& document);

/// What Save writes.
std::string Saved(CXmlDocument& document);

/// A document without script, and what is logged.
class XmlTest : public ::testing::Test
{
protected:
    /// The root of the document with this content, which must be XML.
    CXmlNode* Root(const char* xml);
    CXmlNode* Empty() { return document.GetEmptyNode(); }

    LogCapture log;
    CXmlDocument document;
};

inline void PrintTo(const wxString& text, std::ostream* out)
{
    *out << '"' << text.utf8_str().data() << '"';
}
