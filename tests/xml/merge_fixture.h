#pragma once

#include "base/text_encoding.h"
#include "tests/support/log_capture.h"
#include "xml/xml_document.h"
#include "xml/xml_node.h"

#include <gtest/gtest.h>
#include <wx/xml/xml.h>

#include <string>

/// A node and all below it as XML on one line.
inline std::string DumpNode(const wxXmlNode& node)
{
    switch (node.GetType()) {
    case wxXML_TEXT_NODE:
        return ToUtf8(node.GetContent());
    case wxXML_COMMENT_NODE:
        return "<!--" + ToUtf8(node.GetContent()) + "-->";
    case wxXML_CDATA_SECTION_NODE:
        return "<![CDATA[" + ToUtf8(node.GetContent()) + "]]>";
    case wxXML_PI_NODE:
        return "<?" + ToUtf8(node.GetName()) + " " + ToUtf8(node.GetContent()) + "?>";
    default:
        break;
    }
    std::string text = "<" + ToUtf8(node.GetName());
    for (const wxXmlAttribute* attribute = node.GetAttributes(); attribute; attribute = attribute->GetNext())
        text += " " + ToUtf8(attribute->GetName()) + "='" + ToUtf8(attribute->GetValue()) + "'";
    if (!node.GetChildren())
        return text + "/>";
    text += ">";
    for (const wxXmlNode* child = node.GetChildren(); child; child = child->GetNext()) {
        EXPECT_EQ(child->GetParent(), &node) << "a child knows its parent";
        text += DumpNode(*child);
    }
    return text + "</" + ToUtf8(node.GetName()) + ">";
}

/// A document made of a text.
class TestDocument : public CXmlDocument
{
public:
    explicit TestDocument(const std::string& text) { EXPECT_TRUE(SetContent(wxString::FromUTF8(text))) << text; }

    std::string Dump() { return DumpNode(*GetRawRoot()->GetXmlNode()); }
    CXmlNode* Child(const wxString& name) { return GetRawRoot()->GetRawNode(name); }
};

/// What `base` is after `overlay` has been merged into it.
inline std::string Merged(const std::string& base, const std::string& overlay)
{
    TestDocument document(base);
    TestDocument other(overlay);
    EXPECT_TRUE(document.MergeWith(&other));
    return document.Dump();
}

/// What is left of `overlay` then.
inline std::string LeftOver(const std::string& base, const std::string& overlay)
{
    TestDocument document(base);
    TestDocument other(overlay);
    EXPECT_TRUE(document.MergeWith(&other));
    return other.Dump();
}

/// What `base` is after `other` has been copied into it.
inline std::string Copied(const std::string& base, const std::string& other, bool keepExisting)
{
    TestDocument document(base);
    TestDocument source(other);
    EXPECT_TRUE(document.MergeXML(&source, keepExisting));
    EXPECT_EQ(source.Dump(), TestDocument(other).Dump()) << "the source is left unchanged";
    return document.Dump();
}
