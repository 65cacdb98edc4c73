#include "tests/xml/tree_support.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <random>
#include <string>

namespace
{

/// Chooses from small numbers; RapidCheck's and a seeded one are used alike.
template <typename Choose> class Generator
{
public:
    explicit Generator(Choose choose) : m_choose(choose) {}

    DocumentPointer Document()
    {
        DocumentPointer document(new wxXmlDocument);
        if (m_choose(3) == 0)
            document->AppendToProlog(Comment());
        if (m_choose(4) == 0)
            document->SetDoctype(
                wxXmlDoctype(Name(), m_choose(2) ? wxS("sys") : wxS(""), m_choose(2) ? wxS("pub") : wxS("")));
        wxXmlNode* const root = new wxXmlNode(wxXML_ELEMENT_NODE, Name());
        document->SetRoot(root);
        Fill(*root, 4);
        if (m_choose(3) == 0)
            document->GetDocumentNode()->AddChild(Comment());
        return document;
    }

    /// A document in markup, broken now and then.
    std::string Markup()
    {
        std::string text;
        static const char* const heads[] = {"", "<?xml version='1.0'?>\n", "<!-- c -->",
                                            "<!DOCTYPE r [<!ENTITY e 'x y'><!ATTLIST r d CDATA 'v'>]>", "\xef\xbb\xbf"};
        text += Pick(heads);
        text += "<r>";
        for (int i = m_choose(60); i > 0; --i)
            text += Part(3);
        text += "</r>";
        if (m_choose(8) == 0)
            text.erase(static_cast<size_t>(m_choose(static_cast<int>(text.size()))), 1);
        return text;
    }

private:
    template <size_t count> const char* Pick(const char* const (&parts)[count])
    {
        return parts[m_choose(static_cast<int>(count))];
    }

    std::string Part(int depth)
    {
        static const char* const parts[] = {" ",
                                            "   ",
                                            "\n",
                                            "\t",
                                            "\r\n",
                                            "\r",
                                            "x",
                                            "word ",
                                            "long text without end ",
                                            "]",
                                            "]]",
                                            "&amp;",
                                            "&lt;",
                                            "&#32;",
                                            "&#10;",
                                            "&#xE9;",
                                            "é",
                                            "日",
                                            "😀",
                                            "<!-- c -->",
                                            "<!---->",
                                            "<?p?>",
                                            "<?p d ?>",
                                            "<![CDATA[]]>",
                                            "<![CDATA[ x ]]>",
                                            "<![CDATA[\n]]>",
                                            "<b/>",
                                            "<b c='1' d=\" 2\n\"/>",
                                            "<b a='&#9;&quot;'></b>"};
        const int choice = m_choose(30);
        if (choice >= 4 || depth == 0)
            return Pick(parts);
        if (choice == 3)
            return std::string(static_cast<size_t>(m_choose(1500)), m_choose(2) ? ' ' : 'y');
        std::string text = "<e>";
        for (int i = m_choose(5); i > 0; --i)
            text += Part(depth - 1);
        return text + "</e>";
    }

    wxString Name()
    {
        static const wxChar* const names[] = {wxS("a"), wxS("name"), wxS("n-1"), wxS("größe"), wxS("p:q")};
        return names[m_choose(5)];
    }

    wxString Value()
    {
        static const wxChar parts[] = wxS("ab <>&\"'\t\n\r]é€日\U0001f600\U0010ffff\u007f\u0085");
        wxString value;
        for (int i = m_choose(6); i > 0; --i)
            value += parts[m_choose(static_cast<int>(std::size(parts)) - 1)];
        return value;
    }

    wxXmlNode* Comment() { return new wxXmlNode(wxXML_COMMENT_NODE, wxS("comment"), Value()); }

    wxXmlNode* Child(int depth)
    {
        static constexpr wxXmlNodeType leaves[] = {wxXML_TEXT_NODE, wxXML_TEXT_NODE, wxXML_CDATA_SECTION_NODE,
                                                   wxXML_COMMENT_NODE, wxXML_PI_NODE};
        const int choice = m_choose(8);
        if (choice < 5)
            return new wxXmlNode(leaves[choice], Name(), Value());
        wxXmlNode* const element = new wxXmlNode(wxXML_ELEMENT_NODE, Name());
        if (depth > 0)
            Fill(*element, depth - 1);
        return element;
    }

    void Fill(wxXmlNode& element, int depth)
    {
        for (int i = m_choose(4); i > 0; --i)
            element.AddAttribute(Name(), Value());
        for (int i = m_choose(5); i > 0; --i)
            element.AddChild(Child(depth));
    }

    Choose m_choose;
};

auto FromRapidCheck()
{
    return Generator([](int end) { return *rc::gen::inRange(0, end); });
}

void ExpectReadAlike(const std::string& text)
{
    for (const int flags : {wxXMLDOC_NONE, wxXMLDOC_KEEP_WHITESPACE_NODES}) {
        const ReadResult plain = ReadPlain(text, flags);
        const ReadResult ours = ReadOurs(text, flags);
        ASSERT_EQ(ours.done, plain.done) << text;
        ASSERT_EQ(ours.errors, plain.errors) << text;
        if (plain.done) {
            ASSERT_EQ(Describe(*ours.document), Describe(*plain.document)) << text;
        }
    }
}

TEST(tree_properties, two_thousand_generated_documents_are_read_alike)
{
    std::mt19937 random(1);
    Generator generator([&](int end) { return static_cast<int>(random() % static_cast<unsigned int>(end)); });
    for (int i = 0; i < 2000 && !testing::Test::HasFatalFailure(); ++i)
        ExpectReadAlike(generator.Markup());
}

RC_GTEST_PROP(tree_properties, any_tree_is_written_as_by_wxXmlDocument, ())
{
    const DocumentPointer document = FromRapidCheck().Document();
    static const wxString encodings[] = {wxS("UTF-8"), wxS("utf8"), wxS("UTF-16BE")};
    document->SetFileEncoding(encodings[*rc::gen::inRange(0, 3)]);
    const int indentation = *rc::gen::inRange(-1, 4);
    const WriteResult plain = WritePlain(*document, indentation);
    const WriteResult ours = WriteOurs(*document, indentation);
    RC_ASSERT(plain.done);
    RC_ASSERT(ours.done);
    RC_ASSERT(ours.bytes == plain.bytes);
}

RC_GTEST_PROP(tree_properties, what_was_written_is_read_alike, ())
{
    const std::string text = WriteOurs(*FromRapidCheck().Document()).bytes;
    const ReadResult plain = ReadPlain(text);
    const ReadResult ours = ReadOurs(text);
    RC_ASSERT(ours.done == plain.done);
    RC_ASSERT(ours.errors == plain.errors);
    RC_ASSERT(!plain.done || Describe(*ours.document) == Describe(*plain.document));
}

RC_GTEST_PROP(tree_properties, writing_and_reading_without_indentation_changes_nothing, ())
{
    const ReadResult first = ReadOurs(FromRapidCheck().Markup(), wxXMLDOC_KEEP_WHITESPACE_NODES);
    RC_PRE(first.done);
    const WriteResult written = WriteOurs(*first.document, wxXML_NO_INDENTATION);
    RC_ASSERT(written.done);
    const ReadResult second = ReadOurs(written.bytes, wxXMLDOC_KEEP_WHITESPACE_NODES);
    RC_ASSERT(second.done);
    RC_ASSERT(WriteOurs(*second.document, wxXML_NO_INDENTATION).bytes == written.bytes);
}

} // namespace
