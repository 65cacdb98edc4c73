#include "tests/xml/xml_fixture.h"

#include <wx/mstream.h>
#include <wx/sstream.h>
#include <wx/xml/xml.h>

namespace
{

std::string ShowTree(const wxXmlNode& node)
{
    switch (node.GetType()) {
    case wxXML_TEXT_NODE:
        return node.GetContent().utf8_string();
    case wxXML_COMMENT_NODE:
        return "<!--" + node.GetContent().utf8_string() + "-->";
    case wxXML_CDATA_SECTION_NODE:
        return "<![CDATA[" + node.GetContent().utf8_string() + "]]>";
    default:
        break;
    }
    std::string text = "<" + node.GetName().utf8_string();
    for (const wxXmlAttribute* prop = node.GetAttributes(); prop; prop = prop->GetNext())
        text += " " + prop->GetName().utf8_string() + "='" + prop->GetValue().utf8_string() + "'";
    if (!node.GetChildren())
        return text + "/>";
    text += ">";
    for (const wxXmlNode* child = node.GetChildren(); child; child = child->GetNext()) {
        EXPECT_EQ(child->GetParent(), &node) << "in " << text;
        text += ShowTree(*child);
    }
    return text + "</" + node.GetName().utf8_string() + ">";
}

} // namespace

std::string Show(CXmlNode* node)
{
    return node->Ok() ? ShowTree(*node->GetXmlNode()) : "(empty)";
}

std::string Show(CXmlDocument& document)
{
    CXmlNode* const root = document.GetRawRoot();
    return root ? Show(root) : "(none)";
}

std::string Saved(CXmlDocument& document)
{
    wxMemoryOutputStream stream;
    if (!document.Save(stream))
        return "(failed)";
    std::string text(stream.GetSize(), '\0');
    stream.CopyTo(text.data(), text.size());
    return text;
}

CXmlNode* XmlTest::Root(const char* xml)
{
    EXPECT_TRUE(document.SetContent(wxString::FromUTF8(xml))) << xml;
    CXmlNode* const root = document.GetRawRoot();
    return root ? root : Empty();
}
