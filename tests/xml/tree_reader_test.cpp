#include "tests/xml/tree_support.h"

#include "xml/entity_table_detail.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ctime>

namespace
{

wxString RootText(const ReadResult& result)
{
    return result.done ? result.document->GetRoot()->GetNodeContent() : wxS("not read: ") + result.error.message;
}

wxString RootAttribute(const ReadResult& result, const char* name)
{
    return result.done ? result.document->GetRoot()->GetAttribute(name) : wxS("not read: ") + result.error.message;
}

void ExpectProblem(const ReadResult& result, const char* message, long line, long column)
{
    EXPECT_FALSE(result.done);
    EXPECT_EQ(result.error.message, message);
    EXPECT_EQ(result.error.line, line);
    EXPECT_EQ(result.error.column, column);
    EXPECT_FALSE(result.document->IsOk());
    const std::vector<wxString> logged{
        wxString::Format(wxS("XML parsing error: '%s' at line %ld"), wxString(message), line)};
    EXPECT_EQ(result.errors, logged);
}

std::string Repeat(const std::string& text, size_t count)
{
    std::string all;
    all.reserve(text.size() * count);
    for (size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

/// Elements one inside the other.
std::string Nested(size_t depth)
{
    return Repeat("<a>", depth) + Repeat("</a>", depth);
}

/// Gives a text in parts of a size, and a read error at the end if asked to.
class PartStream : public wxInputStream
{
public:
    PartStream(std::string text, size_t part, bool breaks = false)
        : m_text(std::move(text)), m_part(part), m_breaks(breaks)
    {}

protected:
    size_t OnSysRead(void* buffer, size_t size) override
    {
        const size_t count = std::min({size, m_part, m_text.size() - m_at});
        std::memcpy(buffer, m_text.data() + m_at, count);
        m_at += count;
        if (count == 0)
            m_lasterror = m_breaks ? wxSTREAM_READ_ERROR : wxSTREAM_EOF;
        return count;
    }

private:
    const std::string m_text;
    const size_t m_part;
    const bool m_breaks;
    size_t m_at = 0;
};

/// Processor time: what else the machine does is not counted.
template <typename Function> double SecondsOf(Function function)
{
    const std::clock_t start = std::clock();
    function();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST(tree_reader, expands_entities_in_text)
{
    const ReadResult result = ReadOurs("<!DOCTYPE a [<!ENTITY e 'one &#38;amp; two'>]><a>[&e;]</a>");
    EXPECT_EQ(RootText(result), "[one & two]");
}

TEST(tree_reader, expands_entities_that_hold_elements)
{
    const ReadResult result = ReadOurs("<!DOCTYPE a [<!ENTITY e '<b c=\"1\">x</b>'>]>\n<a>&e;</a>");
    ASSERT_TRUE(result.done);
    EXPECT_EQ(DescribeTree(result.document->GetRoot()), "1 a '' line 2 wrong parent\n"
                                                        " 1 b '' line 2 c='1'\n"
                                                        "  3 text 'x' line 2\n");
}

TEST(tree_reader, refuses_an_entity_that_is_external)
{
    ExpectProblem(ReadOurs("<!DOCTYPE a [<!ENTITY e SYSTEM 'file.txt'>]>\n<a>\n&e;</a>"),
                  "external entity 'file.txt' is not read", 3, 1);
}

TEST(tree_reader, refuses_an_undeclared_entity_in_the_text_of_a_document_with_an_external_subset)
{
    ExpectProblem(ReadOurs("<!DOCTYPE a SYSTEM 'a.dtd'>\n<a>x&e;y</a>"), "undefined entity 'e'", 2, 5);
}

TEST(tree_reader, refuses_an_undeclared_entity_in_an_attribute_of_a_document_with_an_external_subset)
{
    ExpectProblem(ReadOurs("<!DOCTYPE a SYSTEM 'a.dtd'>\n<a b='&e;'/>"), "undefined entity 'e'", 2, 1);
}

TEST(tree_reader, refuses_an_undeclared_entity_inside_of_a_declared_one)
{
    const std::string declarations = "<!DOCTYPE a SYSTEM 'a.dtd' [<!ENTITY x '&y;'><!ENTITY y '[&z;]'>]>\n";
    ExpectProblem(ReadOurs(declarations + "<a b='&x;'/>"), "undefined entity 'z'", 2, 1);
    ExpectProblem(ReadOurs(declarations + "<a>&x;</a>"), "undefined entity 'z'", 2, 4);
}

TEST(tree_reader, refuses_an_undeclared_entity_in_a_default_value)
{
    ExpectProblem(ReadOurs("<!DOCTYPE a SYSTEM 'a.dtd' [\n<!ATTLIST a b CDATA 'x&e;'>]>\n<a/>"), "undefined entity 'e'",
                  2, 21);
}

TEST(tree_reader, refuses_an_undeclared_entity_behind_a_parameter_entity)
{
    ExpectProblem(ReadOurs("<!DOCTYPE a [<!ENTITY % p ''> %p; <!ENTITY e 'x'>]>\n<a b='&e;'/>"), "undefined entity 'e'",
                  2, 1);
}

TEST(tree_reader, finds_undeclared_entities_in_wide_encodings)
{
    std::string wide = "\xff\xfe";
    for (const char c : std::string("<!DOCTYPE a SYSTEM 'a.dtd'>\n<a b='&e;'/>"))
        wide += {c, '\0'};
    ExpectProblem(ReadOurs(wide), "undefined entity 'e'", 2, 1);
}

TEST(tree_reader, accepts_declared_entities_in_a_document_with_an_external_subset)
{
    const ReadResult result = ReadOurs("<!DOCTYPE a SYSTEM 'a.dtd' [<!ENTITY x '(&y;)'><!ENTITY y '&#38;lt;&#38;#65;'>"
                                       "<!ATTLIST a c CDATA '&x;'>]><a b='&x;&x;&amp;&#66;'>&x;</a>");
    EXPECT_EQ(RootAttribute(result, "b"), "(<A)(<A)&B");
    EXPECT_EQ(RootAttribute(result, "c"), "(<A)");
    EXPECT_EQ(RootText(result), "(<A)");
}

TEST(tree_reader, refuses_entities_that_expand_without_bounds)
{
    std::string declarations = "<!ENTITY e0 'ha ha ha ha ha ha ha ha ha ha'>";
    for (int i = 1; i < 12; ++i)
        declarations += "<!ENTITY e" + std::to_string(i) + " '" + Repeat("&e" + std::to_string(i - 1) + ";", 10) + "'>";
    const ReadResult result = ReadOurs("<!DOCTYPE a [" + declarations + "]>\n<a>&e11;</a>");
    ExpectProblem(result, "limit on input amplification factor (from DTD and entities) breached", 2, 4);
}

/// A document with entities one inside the other, the innermost declared last or first.
std::string NestedEntities(unsigned int depth, bool innermostLast)
{
    std::vector<std::string> declarations{"<!ENTITY e0 'x'>"};
    for (unsigned int i = 1; i < depth; ++i)
        declarations.push_back("<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>");
    if (innermostLast)
        std::reverse(declarations.begin(), declarations.end());
    std::string text = "<!DOCTYPE a [";
    for (const std::string& declaration : declarations)
        text += declaration;
    return text + "]><a b='&e" + std::to_string(depth - 1) + ";'/>";
}

TEST(tree_reader, limits_how_deep_entities_are_nested)
{
    constexpr unsigned int limit = xml_detail::EntityTable::maxNesting;
    for (const bool innermostLast : {false, true}) {
        EXPECT_EQ(RootAttribute(ReadOurs(NestedEntities(limit - 1, innermostLast)), "b"), "x");
        EXPECT_EQ(RootAttribute(ReadOurs(NestedEntities(limit, innermostLast)), "b"), "x");
        for (const unsigned int depth : {limit + 1, 100'000u}) {
            const ReadResult result = ReadOurs(NestedEntities(depth, innermostLast));
            EXPECT_EQ(RootAttribute(result, "b"), "not read: entities are nested deeper than 100");
        }
    }
}

TEST(tree_reader, refuses_entities_that_refer_to_each_other_in_a_circle)
{
    const ReadResult result = ReadOurs("<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a b='&e;'/>");
    ExpectProblem(result, "entities are nested deeper than 100", 1, 42);
}

TEST(tree_reader, refuses_default_values_that_make_the_document_too_large)
{
    const std::string declaration = "<!DOCTYPE a [<!ATTLIST a b CDATA '" + std::string(10'000, 'x') + "'>]>\n";
    const ReadResult few = ReadOurs(declaration + "<r>" + Repeat("<a/>", 800) + "</r>");
    EXPECT_TRUE(few.done);
    const ReadResult many = ReadOurs(declaration + "<r>" + Repeat("<a/>", 1000) + "</r>");
    EXPECT_EQ(RootText(many), "not read: default values of attributes make the document too large");
}

TEST(tree_reader, limits_how_deep_elements_are_nested)
{
    EXPECT_TRUE(ReadOurs(Nested(999)).done);
    EXPECT_TRUE(ReadOurs(Nested(1000)).done);
    ExpectProblem(ReadOurs("\n" + Nested(1001)), "elements are nested deeper than 1000", 2, 3001);
    EXPECT_TRUE(ReadOurs("<a/>", wxXMLDOC_NONE, 1).done);
    ExpectProblem(ReadOurs("<a><a/></a>", wxXMLDOC_NONE, 1), "elements are nested deeper than 1", 1, 4);
}

TEST(tree_reader, stops_at_a_million_nested_elements)
{
    ExpectProblem(ReadOurs(Repeat("<a>", 1'000'000)), "elements are nested deeper than 1000", 1, 3001);
}

TEST(tree_reader, reads_and_frees_a_deep_tree_where_that_is_allowed)
{
    const ReadResult result = ReadOurs(Nested(300'000), wxXMLDOC_NONE, 300'000);
    EXPECT_TRUE(result.done);
    const ReadResult broken = ReadOurs(Repeat("<a>", 300'000), wxXMLDOC_NONE, 300'000);
    ExpectProblem(broken, "no element found", 1, 900'001);
}

TEST(tree_reader, reads_a_stream_that_gives_few_bytes_at_a_time)
{
    std::string text = "<?xml version='1.0' encoding='UTF-8'?>\r\n<a b='ü'>";
    for (int i = 0; i < 500; ++i)
        text += "  <b>é 日 " + std::to_string(i) + "</b>\r\n";
    text += "</a>";
    const std::string expected = Describe(*ReadPlain(text).document);
    for (const size_t part : {1, 2, 3, 7, 1000, 1024, 1025, 65536}) {
        PartStream stream(text, part);
        const ReadResult result = ReadOurs(stream);
        EXPECT_TRUE(result.done);
        EXPECT_EQ(Describe(*result.document), expected);
    }
}

TEST(tree_reader, fails_when_the_stream_fails_even_behind_the_last_element)
{
    PartStream inside("<a>\n<b>", 5, true);
    ExpectProblem(ReadOurs(inside), "the input cannot be read", 1, 1);
    PartStream behind("<a/>", 5, true);
    ExpectProblem(ReadOurs(behind), "the input cannot be read", 1, 1);
}

TEST(tree_reader, keeps_the_document_as_it_was_when_it_fails)
{
    ReadResult result = ReadOurs("<!DOCTYPE a SYSTEM 's'><a>old</a>");
    const std::string before = Describe(*result.document);
    const LogCapture log;
    const std::string text = "<?xml version='1.1' encoding='KOI8-R'?><!DOCTYPE b SYSTEM 't'><b>";
    wxMemoryInputStream stream(text.data(), text.size());
    EXPECT_FALSE(xml_detail::ReadTree(stream, *result.document, wxString(), wxXMLDOC_NONE, TestMaxDepth, result.error));
    EXPECT_EQ(Describe(*result.document), before);
}

TEST(tree_reader, replaces_the_tree_that_the_document_had)
{
    ReadResult result = ReadOurs("<!-- c --><a><b/></a>");
    const std::string text = "<c/>";
    wxMemoryInputStream stream(text.data(), text.size());
    EXPECT_TRUE(xml_detail::ReadTree(stream, *result.document, wxString(), wxXMLDOC_NONE, TestMaxDepth, result.error));
    EXPECT_EQ(DescribeTree(result.document->GetDocumentNode()), "9  '' line -1\n"
                                                                " 1 c '' line 1\n");
}

TEST(tree_reader, refuses_bytes_that_the_encoding_does_not_define)
{
    ExpectProblem(ReadOurs("<?xml version='1.0' encoding='windows-1252'?>\n<a>\x80\x81</a>"),
                  "not well-formed (invalid token)", 2, 5);
}

struct CharsetCase
{
    const char* name;
    const char* bytes;
    const wchar_t* text;
};

TEST(tree_reader, reads_encodings_with_characters_of_several_bytes)
{
    const CharsetCase cases[] = {
        {"Shift_JIS", "\x93\xfa\x96\x7b \xb1 \x83\x5c", L"\u65e5\u672c \uff71 \u30bd"},
        {"EUC-JP", "\xc6\xfc\xcb\xdc \x8e\xb1 \x8f\xb0\xa1", L"\u65e5\u672c \uff71 \u4e02"},
        {"GBK", "\xd6\xd0\xce\xc4 \x81\x40", L"\u4e2d\u6587 \u4e02"},
        {"Big5", "\xa4\xa4\xa4\xe5", L"\u4e2d\u6587"},
        {"EUC-KR", "\xc7\xd1\xb1\xdb", L"\ud55c\uae00"},
    };
    for (const CharsetCase& c : cases) {
        const std::string head = std::string("<?xml version=\"1.0\" encoding=\"") + c.name + "\"?>\n";
        const std::string text = head + "<a b=\"" + c.bytes + "\">" + c.bytes + "</a>\n";
        const ReadResult result = ReadOurs(text);
        EXPECT_EQ(RootText(result), c.text) << c.name;
        EXPECT_EQ(RootAttribute(result, "b"), c.text) << c.name;
        EXPECT_EQ(WriteOurs(*result.document).bytes, text) << c.name;
    }
}

TEST(tree_reader, refuses_encodings_that_it_cannot_read)
{
    for (const char* name : {"UTF-32", "UTF-7", "IBM037"}) {
        const ReadResult result = ReadOurs(std::string("<?xml version='1.0' encoding='") + name + "'?><a/>");
        EXPECT_EQ(RootText(result), "not read: unknown encoding") << name;
    }
}

TEST(tree_reader, refuses_encodings_that_nobody_knows)
{
    for (const char* name : {"utf_8", "no-such-encoding", "x"}) {
        const std::string head = std::string("<?xml version='1.0' encoding='") + name + "'?>";
        ExpectProblem(ReadOurs(head + "<a/>"), "unknown encoding", 1, 31);
        ExpectProblem(ReadOurs(head + "<a b='\xc3\xbc'/>"), "unknown encoding", 1, 31);
    }
}

TEST(tree_reader, knows_the_names_of_latin_1)
{
    for (const char* name : {"ISO-8859-1", "iso8859-1", "ISO_8859-1", "latin1", "L1"}) {
        const ReadResult result = ReadOurs(std::string("<?xml version='1.0' encoding='") + name + "'?><a>\xfc</a>");
        EXPECT_EQ(RootText(result), L"\xfc") << name;
    }
}

TEST(tree_reader, gives_a_hundred_thousand_attributes_in_order)
{
    std::string text = "<a";
    for (int i = 0; i < 100'000; ++i)
        text += " n" + std::to_string(i) + "='" + std::to_string(i) + "'";
    const ReadResult result = ReadOurs(text + "/>");
    ASSERT_TRUE(result.done);
    int i = 0;
    for (const wxXmlAttribute* at = result.document->GetRoot()->GetAttributes(); at; at = at->GetNext(), ++i) {
        ASSERT_EQ(at->GetName(), wxString::Format(wxS("n%d"), i));
        ASSERT_EQ(at->GetValue(), wxString::Format(wxS("%d"), i));
    }
    EXPECT_EQ(i, 100'000);
}

/// Documents whose cost would be quadratic if the parser or the tree were used carelessly.
std::vector<std::string> LongOf(size_t size)
{
    return {
        "<a b='" + std::string(size, 'x') + "'/>",
        "<a b='" + Repeat("x>", size / 2) + "'/>",
        "<a><!--" + std::string(size, 'x') + "--></a>",
        "<a><!--" + Repeat(">\n", size / 2) + "--></a>",
        "<a><?p " + Repeat("> ", size / 2) + "?></a>",
        "<a>" + Repeat("line\n", size / 5) + "</a>",
        "<a><![CDATA[" + Repeat("line\n", size / 5) + "]]></a>",
        "<a>" + Repeat("<b/>", size / 4) + "</a>",
        "<a>" + Repeat("&lt;", size / 4) + "</a>",
        "<" + std::string(size, 'n') + "/>",
    };
}

TEST(tree_reader, takes_time_in_proportion_to_the_length)
{
    const std::vector<std::string> small = LongOf(1 << 20);
    const std::vector<std::string> large = LongOf(8 << 20);
    for (size_t i = 0; i < small.size(); ++i) {
        const auto read = [](const std::string& text) { EXPECT_TRUE(ReadOurs(text).done); };
        const double once = SecondsOf([&] { read(small[i]); });
        const double eightfold = SecondsOf([&] { read(large[i]); });
        EXPECT_LT(eightfold, 32 * once + 0.2) << small[i].substr(0, 20);
    }
}

TEST(tree_reader, drops_the_same_white_space_behind_long_tokens)
{
    for (size_t size = 500; size < 300'000; size += size / 5) {
        const std::string tokens[] = {
            "<a b='" + std::string(size, 'x') + "'>",
            "<a><!--" + std::string(size, 'x') + "-->",
            "<a><!--" + std::string(std::min<size_t>(size, 40'000), '>') + "-->",
        };
        for (const std::string& token : tokens) {
            const std::string text = token + std::string(6000, ' ') + "text</a>";
            EXPECT_EQ(Describe(*ReadOurs(text).document), Describe(*ReadPlain(text).document)) << size;
        }
    }
}

} // namespace
