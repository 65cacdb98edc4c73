#include "tests/xml/tree_support.h"

#include <gtest/gtest.h>

#include <utility>

namespace
{

DocumentPointer DocumentOf(wxXmlNode* root)
{
    DocumentPointer document(new wxXmlDocument);
    document->SetRoot(root);
    return document;
}

wxXmlNode* Element(const wxString& name)
{
    return new wxXmlNode(wxXML_ELEMENT_NODE, name);
}

wxXmlNode* Text(const wxString& text)
{
    return new wxXmlNode(wxXML_TEXT_NODE, wxS("text"), text);
}

DocumentPointer DocumentWithText(const wxString& text, const wxString& encoding = wxS("UTF-8"))
{
    DocumentPointer document = DocumentOf(Element(wxS("a")));
    document->SetFileEncoding(encoding);
    document->GetRoot()->AddChild(Text(text));
    return document;
}

DocumentPointer Nested(unsigned int depth)
{
    wxXmlNode* inner = nullptr;
    for (unsigned int i = 0; i < depth; ++i) {
        auto* const outer = Element(wxS("a"));
        outer->SetChildren(inner);
        if (inner)
            inner->SetParent(outer);
        inner = outer;
    }
    return DocumentOf(inner);
}

void ExpectProblem(const WriteResult& result, const wxString& problem)
{
    EXPECT_FALSE(result.done);
    EXPECT_EQ(result.bytes, "");
    EXPECT_EQ(result.errors, std::vector<wxString>{wxS("XML writing error: '") + problem + wxS("'")});
}

void ExpectSame(const wxXmlDocument& document)
{
    for (const int indentation : {wxXML_NO_INDENTATION, 0, 1, 2, 7}) {
        const WriteResult plain = WritePlain(document, indentation);
        const WriteResult ours = WriteOurs(document, indentation);
        EXPECT_TRUE(plain.done);
        EXPECT_TRUE(ours.done);
        EXPECT_EQ(ours.bytes, plain.bytes);
        EXPECT_TRUE(ours.errors.empty());
    }
}

/// Takes so many bytes, and then no more.
class FullStream : public wxOutputStream
{
public:
    FullStream(size_t room, bool tells) : m_room(room), m_tells(tells) {}
    int Calls() const { return m_calls; }

protected:
    size_t OnSysWrite(const void*, size_t size) override
    {
        ++m_calls;
        const size_t count = std::min(size, m_room);
        m_room -= count;
        if (m_tells && count < size)
            m_lasterror = wxSTREAM_WRITE_ERROR;
        return count;
    }

private:
    size_t m_room;
    const bool m_tells;
    int m_calls = 0;
};

TEST(tree_writer, escapes_as_wxXmlDocument)
{
    wxString all;
    for (wchar_t c = 1; c < 0x300; ++c)
        all += c;
    all += wxS("\u20ac\uffff\U00010000\U0010ffff");
    const DocumentPointer document = DocumentWithText(all);
    wxXmlNode* const root = document->GetRoot();
    root->AddAttribute(wxS("b"), all);
    root->AddAttribute(all, wxS(""));
    root->AddChild(new wxXmlNode(wxXML_CDATA_SECTION_NODE, wxS("cdata"), all));
    root->AddChild(new wxXmlNode(wxXML_COMMENT_NODE, wxS("comment"), all));
    root->AddChild(new wxXmlNode(wxXML_PI_NODE, wxS("p"), all));
    root->AddChild(Element(all));
    ExpectSame(*document);
}

TEST(tree_writer, writes_empty_names_and_texts_as_wxXmlDocument)
{
    const DocumentPointer document = DocumentOf(Element(wxString()));
    wxXmlNode* const root = document->GetRoot();
    root->AddAttribute(wxString(), wxString());
    for (const wxXmlNodeType type : {wxXML_TEXT_NODE, wxXML_CDATA_SECTION_NODE, wxXML_COMMENT_NODE, wxXML_PI_NODE})
        root->AddChild(new wxXmlNode(type, wxString()));
    document->SetVersion(wxString());
    ExpectSame(*document);
}

TEST(tree_writer, writes_a_nul_as_wxXmlDocument)
{
    ExpectSame(*DocumentWithText(wxString(L"x\0y", 3)));
}

TEST(tree_writer, uses_the_line_ends_of_the_document)
{
    for (const wxTextFileType type : {wxTextFileType_Dos, wxTextFileType_Mac, wxTextFileType_None}) {
        const DocumentPointer document = DocumentWithText(wxS("x\ny"));
        document->GetRoot()->AddChild(Element(wxS("b")));
        document->SetDoctype(wxXmlDoctype(wxS("a"), wxS("s\"s"), wxS("p")));
        document->AppendToProlog(new wxXmlNode(wxXML_COMMENT_NODE, wxS("comment"), wxS("c")));
        document->SetFileType(type);
        ExpectSame(*document);
    }
}

TEST(tree_writer, leaves_out_a_doctype_that_is_not_valid)
{
    const DocumentPointer document = DocumentWithText(wxS("x"));
    document->SetDoctype(wxXmlDoctype(wxS("a"), wxS("'\"")));
    ExpectSame(*document);
}

TEST(tree_writer, writes_texts_longer_than_its_buffers)
{
    for (const size_t length : {4095, 4096, 4097, 100'000}) {
        ExpectSame(*DocumentWithText(wxString(wxS('&'), length)));
        ExpectSame(*DocumentWithText(wxString(wxS('\u20ac'), length)));
        ExpectSame(*DocumentWithText(wxString(wxS('x'), length), wxS("KOI8-R")));
    }
}

TEST(tree_writer, writes_in_the_encodings_that_wxXmlDocument_writes)
{
    for (const wxChar* const encoding :
         {wxS("UTF-8"), wxS("utf-8"), wxS("utf8"), wxS("ISO-8859-1"), wxS("latin1"), wxS("windows-1252"),
          wxS("UTF-16LE"), wxS("UTF-16BE"), wxS("IBM037"), wxS("US-ASCII"), wxS("no such charset"), wxS("")}) {
        const DocumentPointer document = DocumentWithText(wxS("plain <text>"), encoding);
        document->GetRoot()->AddAttribute(wxS("b"), wxS("\"value\""));
        ExpectSame(*document);
    }
    for (const wxChar* const encoding : {wxS("ISO-8859-1"), wxS("windows-1252"), wxS("UTF-16LE"), wxS("IBM037")})
        ExpectSame(*DocumentWithText(wxS("d\u00e9j\u00e0 <vu>"), encoding));
    ExpectSame(*DocumentWithText(wxS("\u041f\u0440\u0438\u0432\u0435\u0442"), wxS("KOI8-R")));
    ExpectSame(*DocumentWithText(wxS("\U0001f600"), wxS("UTF-16BE")));
}

TEST(tree_writer, writes_utf_16_with_a_mark_and_reads_it_back)
{
    const DocumentPointer document = DocumentWithText(wxS("x \u65e5 \U0001f600"), wxS("UTF-16"));
    const WriteResult written = WriteOurs(*document, wxXML_NO_INDENTATION);
    EXPECT_TRUE(written.done);
    EXPECT_EQ(written.bytes.substr(0, 4), std::string("\xff\xfe<\0", 4));
    const ReadResult read = ReadOurs(written.bytes);
    EXPECT_TRUE(read.done) << read.error.message;
    EXPECT_EQ(read.document->GetRoot()->GetNodeContent(), wxS("x \u65e5 \U0001f600"));
    EXPECT_EQ(read.document->GetFileEncoding(), "UTF-16");
}

TEST(tree_writer, refuses_a_character_that_the_encoding_does_not_have)
{
    const wxString euro = wxS("x\u20acy");
    ExpectProblem(WriteOurs(*DocumentWithText(euro, wxS("ISO-8859-1"))),
                  wxS("U+20AC cannot be written in the encoding of the document, ISO-8859-1"));
    ExpectProblem(WriteOurs(*DocumentWithText(euro, wxS("KOI8-R"))),
                  wxS("U+20AC cannot be written in the encoding of the document, KOI8-R"));
    ExpectProblem(WriteOurs(*DocumentWithText(wxS("\u00e9"), wxS("US-ASCII"))),
                  wxS("U+00E9 cannot be written in the encoding of the document, US-ASCII"));
}

TEST(tree_writer, refuses_such_a_character_wherever_it_stands)
{
    const wxString euro = wxS("\u20ac");
    const wxString problem = wxS("U+20AC cannot be written in the encoding of the document, ISO-8859-1");
    const auto expectRefusal = [&](wxXmlNode* child, const wxString& name, const wxString& value) {
        const DocumentPointer document = DocumentOf(Element(wxS("a")));
        document->SetFileEncoding(wxS("ISO-8859-1"));
        document->GetRoot()->AddChild(child);
        if (!name.empty())
            document->GetRoot()->AddAttribute(name, value);
        ExpectProblem(WriteOurs(*document), problem);
    };
    expectRefusal(Element(wxS("b")), euro, wxS("v"));
    expectRefusal(Element(wxS("b")), wxS("n"), euro);
    expectRefusal(Element(euro), wxString(), wxString());
    expectRefusal(new wxXmlNode(wxXML_CDATA_SECTION_NODE, wxS("cdata"), euro), wxString(), wxString());
    expectRefusal(new wxXmlNode(wxXML_COMMENT_NODE, wxS("comment"), euro), wxString(), wxString());
    expectRefusal(new wxXmlNode(wxXML_PI_NODE, euro, wxString()), wxString(), wxString());
    expectRefusal(new wxXmlNode(wxXML_PI_NODE, wxS("p"), euro), wxString(), wxString());
}

TEST(tree_writer, refuses_what_is_no_character)
{
    ExpectProblem(WriteOurs(*DocumentWithText(wxString(wxUniChar(0xd800)))),
                  wxS("U+D800 cannot be written in the encoding of the document, UTF-8"));
    ExpectProblem(WriteOurs(*DocumentWithText(wxString(wxUniChar(0xdfff)))),
                  wxS("U+DFFF cannot be written in the encoding of the document, UTF-8"));
    ExpectProblem(WriteOurs(*DocumentWithText(wxString(wxUniChar(0x110000)))),
                  wxS("U+110000 cannot be written in the encoding of the document, UTF-8"));
}

TEST(tree_writer, refuses_encodings_whose_pieces_depend_on_what_stands_before)
{
    for (const wxChar* const encoding : {wxS("UTF-32"), wxS("UTF-7"), wxS("ISO-2022-JP"), wxS("ISO-2022-KR")})
        ExpectProblem(WriteOurs(*DocumentWithText(wxS("x"), encoding)),
                      wxS("documents cannot be written in the encoding ") + wxString(encoding));
}

TEST(tree_writer, writes_a_text_without_conversion_as_it_is)
{
    const DocumentPointer document = DocumentWithText(wxS("<b c=\"1\"/>&amp;"));
    document->GetRoot()->GetChildren()->SetNoConversion(true);
    ExpectSame(*document);
    document->GetRoot()->GetChildren()->SetContent(wxS("<b>\u00e9</b>"));
    EXPECT_EQ(WriteOurs(*document).bytes, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a><b>\xc3\xa9</b></a>\n");
}

TEST(tree_writer, refuses_a_node_that_has_no_form_in_a_file)
{
    const DocumentPointer document = DocumentOf(Element(wxS("a")));
    document->GetRoot()->AddChild(new wxXmlNode(wxXML_ENTITY_REF_NODE, wxS("e")));
    ExpectProblem(WriteOurs(*document), wxS("a node of type 5 cannot be written"));
}

TEST(tree_writer, refuses_a_document_without_root_without_a_word)
{
    const DocumentPointer document(new wxXmlDocument);
    const WriteResult result = WriteOurs(*document);
    EXPECT_FALSE(result.done);
    EXPECT_EQ(result.bytes, "");
    EXPECT_TRUE(result.errors.empty());
    document->AppendToProlog(new wxXmlNode(wxXML_COMMENT_NODE, wxS("comment"), wxS("c")));
    EXPECT_FALSE(WriteOurs(*document).done);
}

TEST(tree_writer, limits_how_deep_elements_are_nested)
{
    for (const unsigned int depth : {999, 1000}) {
        const DocumentPointer document = Nested(depth);
        EXPECT_EQ(WriteOurs(*document).bytes, WritePlain(*document).bytes);
    }
    ExpectProblem(WriteOurs(*Nested(1001)), wxS("elements are nested deeper than 1000"));
    ExpectProblem(WriteOurs(*Nested(1'000'000)), wxS("elements are nested deeper than 1000"));
}

TEST(tree_writer, writes_a_deep_tree_where_that_is_allowed)
{
    const WriteResult result = WriteOurs(*Nested(300'000), wxXML_NO_INDENTATION, 300'000);
    EXPECT_TRUE(result.done);
    EXPECT_GT(result.bytes.size(), 6u * 300'000);
}

TEST(tree_writer, largest_documents_are_read_back_as_they_were_written)
{
    std::string attributes = "<a";
    for (int i = 0; i < 100'000; ++i)
        attributes += " n" + std::to_string(i) + "='" + std::to_string(i) + "'";
    std::string nested;
    for (unsigned int i = 0; i < TestMaxDepth; ++i)
        nested = "<a>" + nested + "</a>";
    for (const std::string& root : {attributes + "/>", nested}) {
        const ReadResult first = ReadOurs("<?xml version='1.0' encoding='UTF-8'?>\n" + root);
        ASSERT_TRUE(first.done);
        const ReadResult second = ReadOurs(WriteOurs(*first.document, wxXML_NO_INDENTATION).bytes);
        ASSERT_TRUE(second.done);
        EXPECT_TRUE(Describe(*second.document) == Describe(*first.document));
        EXPECT_TRUE(WriteOurs(*second.document).bytes == WriteOurs(*first.document).bytes);
    }
}

TEST(tree_writer, fails_when_the_stream_does_not_take_all)
{
    const DocumentPointer document = DocumentWithText(wxString(wxS('x'), 3'000'000));
    const size_t size = WriteOurs(*document).bytes.size();
    for (const bool tells : {false, true}) {
        for (const size_t room : {size_t(0), size_t(1), size / 2, size - 1}) {
            const LogCapture log;
            FullStream stream(room, tells);
            EXPECT_FALSE(xml_detail::WriteTree(*document, stream, 1, TestMaxDepth));
            EXPECT_EQ(log.Errors(), std::vector<wxString>{wxS("XML writing error: 'the output cannot be written'")});
        }
        FullStream stream(size, tells);
        EXPECT_TRUE(xml_detail::WriteTree(*document, stream, 1, TestMaxDepth));
        EXPECT_LE(stream.Calls(), 4);
    }
}

/// A document of more than is held back before anything is written.
DocumentPointer LargeDocument(const wxString& lastText)
{
    DocumentPointer document = DocumentOf(Element(wxS("a")));
    wxXmlNode* last = nullptr;
    for (const wxString& text : {wxString(wxS('x'), 17 << 20), wxString(wxS('y'), 17 << 20), lastText}) {
        auto* const element = Element(wxS("b"));
        document->GetRoot()->InsertChildAfter(element, last);
        element->AddChild(Text(text));
        last = element;
    }
    return document;
}

TEST(tree_writer, writes_a_large_document_in_parts)
{
    const WriteResult result = WriteOurs(*LargeDocument(wxS("z")));
    EXPECT_TRUE(result.done);
    EXPECT_TRUE(result.bytes == "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\n <b>" + std::string(17 << 20, 'x') +
                                    "</b>\n <b>" + std::string(17 << 20, 'y') + "</b>\n <b>z</b>\n</a>\n");
}

TEST(tree_writer, writes_many_small_nodes_behind_the_first_part)
{
    const DocumentPointer document = LargeDocument(wxS("z"));
    std::string expected = WriteOurs(*document).bytes;
    expected.resize(expected.size() - std::string("</a>\n").size());
    wxXmlNode* last = document->GetRoot()->GetChildren()->GetNext()->GetNext();
    for (int i = 0; i < 20000; ++i) {
        auto* const element = Element(wxString::Format(wxS("c%d"), i));
        document->GetRoot()->InsertChildAfter(element, last);
        expected += " <c" + std::to_string(i) + "/>\n";
        last = element;
    }
    const WriteResult result = WriteOurs(*document);
    EXPECT_TRUE(result.done);
    EXPECT_TRUE(result.bytes == expected + "</a>\n");
}

TEST(tree_writer, fails_when_the_stream_is_full_after_the_first_part)
{
    const LogCapture log;
    FullStream stream(20 << 20, true);
    EXPECT_FALSE(xml_detail::WriteTree(*LargeDocument(wxS("z")), stream, 1, TestMaxDepth));
    EXPECT_EQ(log.Errors(), std::vector<wxString>{wxS("XML writing error: 'the output cannot be written'")});
}

TEST(tree_writer, writes_nothing_of_a_large_document_that_cannot_be_written)
{
    ExpectProblem(WriteOurs(*LargeDocument(wxString(wxUniChar(0xd800)))),
                  wxS("U+D800 cannot be written in the encoding of the document, UTF-8"));
}

} // namespace
