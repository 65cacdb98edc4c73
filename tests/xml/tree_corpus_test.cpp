#include "tests/xml/tree_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <vector>

namespace
{

std::vector<std::filesystem::path> Corpus(const char* folder)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(VCQ_XML_CORPUS) / folder))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string Content(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Name(const testing::TestParamInfo<std::filesystem::path>& info)
{
    return info.param.stem().string();
}

class ReadAlike : public testing::TestWithParam<std::filesystem::path>
{};

TEST_P(ReadAlike, gives_the_tree_and_the_bytes_of_wxXmlDocument)
{
    const std::string text = Content(GetParam());
    for (const int flags : {wxXMLDOC_NONE, wxXMLDOC_KEEP_WHITESPACE_NODES}) {
        const ReadResult plain = ReadPlain(text, flags);
        const ReadResult ours = ReadOurs(text, flags);
        ASSERT_TRUE(plain.done);
        ASSERT_TRUE(ours.done) << ours.error.message;
        EXPECT_TRUE(ours.errors.empty());
        ASSERT_EQ(Describe(*ours.document), Describe(*plain.document));
        for (const int indentation : {wxXML_NO_INDENTATION, 0, 1, 4}) {
            const WriteResult written = WriteOurs(*ours.document, indentation);
            EXPECT_TRUE(written.done);
            EXPECT_EQ(written.bytes, WritePlain(*plain.document, indentation).bytes);
        }
    }
}

/// The lines of a tree's description without the numbers of lines, which a document type that was shortened changes.
std::string WithoutLines(const wxXmlDocument& document)
{
    static const std::regex line(" line [0-9]+");
    return std::regex_replace(Describe(document), line, "");
}

TEST_P(ReadAlike, is_read_back_as_it_was_written)
{
    const ReadResult first = ReadOurs(Content(GetParam()), wxXMLDOC_KEEP_WHITESPACE_NODES);
    const WriteResult written = WriteOurs(*first.document, wxXML_NO_INDENTATION);
    ASSERT_TRUE(written.done);
    const ReadResult second = ReadOurs(written.bytes, wxXMLDOC_KEEP_WHITESPACE_NODES);
    ASSERT_TRUE(second.done) << second.error.message;
    EXPECT_EQ(WithoutLines(*second.document), WithoutLines(*first.document));
    EXPECT_EQ(WriteOurs(*second.document, wxXML_NO_INDENTATION).bytes, written.bytes);
}

INSTANTIATE_TEST_SUITE_P(corpus, ReadAlike, testing::ValuesIn(Corpus("same")), Name);

class RefusedAlike : public testing::TestWithParam<std::filesystem::path>
{};

TEST_P(RefusedAlike, is_refused_as_by_wxXmlDocument)
{
    const std::string text = Content(GetParam());
    const ReadResult plain = ReadPlain(text);
    const ReadResult ours = ReadOurs(text);
    EXPECT_FALSE(plain.done);
    EXPECT_FALSE(ours.done);
    EXPECT_EQ(ours.errors, plain.errors);
    EXPECT_FALSE(ours.document->IsOk());
    ASSERT_EQ(ours.errors.size(), 1u);
    EXPECT_EQ(ours.errors.front(),
              wxString::Format(wxS("XML parsing error: '%s' at line %ld"), ours.error.message, ours.error.line));
    EXPECT_GT(ours.error.column, 0);
}

INSTANTIATE_TEST_SUITE_P(corpus, RefusedAlike, testing::ValuesIn(Corpus("refused")), Name);

} // namespace
