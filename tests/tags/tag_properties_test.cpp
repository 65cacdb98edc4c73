#include "tests/tags/tag_test_support.h"

#include <rapidcheck/gtest.h>

#include <memory>
#include <utility>

namespace
{

/// A tree of tags that a text is written from.
struct Node
{
    std::string type;
    std::string name;
    std::vector<std::string> options; ///< "NAME=VALUE"
    bool isDouble = false;
    bool isSingle = false;
    std::vector<std::string> content;
    std::vector<Node> children; ///< Each stands before the content line of the same index, or at the end.
};

std::string Pick(const std::vector<std::string>& texts)
{
    return *rc::gen::elementOf(texts);
}

Node MakeNode(bool isDouble, int depth)
{
    Node node;
    node.type = Pick({"a", "item", "B_2", "name", "IGNORE"});
    node.name = Pick({"", "x", "two words", "a>b", "\\n"});
    for (int i = *rc::gen::inRange(0, 3); i > 0; --i)
        node.options.push_back("k" + std::to_string(i) + "=" + Pick({"", "1", "a b", "<x>", "/"}));
    node.isDouble = isDouble || *rc::gen::inRange(0, 4) == 0;
    node.isSingle = depth == 0 || *rc::gen::inRange(0, 3) == 0;
    if (node.isSingle)
        return node;
    for (int i = *rc::gen::inRange(0, 3); i > 0; --i)
        node.content.push_back(node.isDouble ? Pick({"<b>", "</a>", "text", "don't"})
                                             : Pick({"text", "x <b>", "a > b", "\"<<b>>\"", "don't"}));
    for (int i = *rc::gen::inRange(0, 4); i > 0; --i)
        node.children.push_back(MakeNode(node.isDouble, depth - 1));
    return node;
}

class Writer
{
public:
    std::string Text() { return m_text; }

    void Write(const Node& node)
    {
        const std::string begin = node.isDouble ? "<<" : "<";
        const std::string end = node.isDouble ? ">>" : ">";
        m_text += Pick({"", "  ", "\t"}) + begin + node.type;
        if (!node.name.empty())
            m_text += Pick({"=", " =", " name="}) + "'" + node.name + "'";
        for (const std::string& option : node.options) {
            const size_t equals = option.find('=');
            m_text += Pick({" ", "\n", "\n  "}) + option.substr(0, equals) + "=\"" + option.substr(equals + 1) + "\"";
        }
        m_text += (node.isSingle ? Pick({"", " "}) + "/" : "") + end;
        EndTag(node);
        if (node.isSingle)
            return;
        for (size_t i = 0; i < std::max(node.content.size(), node.children.size()); ++i) {
            if (i < node.children.size())
                Write(node.children[i]);
            if (i < node.content.size())
                m_text += node.content[i] + "\n";
        }
        m_text += begin + "/" + node.type + (node.name.empty() ? "" : Pick({"", "='" + node.name + "'"})) + end;
        EndTag(node);
    }

private:
    /// Behind a single (not double) tag the line may go on.
    void EndTag(const Node& node) { m_text += node.isDouble ? "\n" : Pick({"\n", "", " ", " \n\n"}); }

    std::string m_text;
};

std::string Dump(const Node& node)
{
    std::string text = node.type + "=" + node.name + (node.isDouble ? " double" : "") + " {";
    for (size_t i = 0; i < node.options.size(); ++i)
        text += (i == 0 ? "" : "; ") + node.options[i];
    text += "} ";
    for (const std::string& line : node.content)
        text += line + "|";
    for (const Node& child : node.children)
        text += "(" + Dump(child) + ")";
    return text;
}

std::string Dump(const CTagBlock& block)
{
    std::string text = TitleOf(block) + (block.IsDoubleTag() ? " double" : "") + " {" + OptionsOf(block) + "} ";
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot)
        text += block.GetUnit(slot)->m_text.utf8_string() + "|";
    for (size_t i = 0; i < block.GetSubBlockCount(); ++i)
        text += "(" + Dump(*block.GetSubBlock(i)) + ")";
    return text;
}

std::vector<Node> MakeTree()
{
    std::vector<Node> tree;
    for (int i = *rc::gen::inRange(1, 4); i > 0; --i)
        tree.push_back(MakeNode(false, 3));
    return tree;
}

RC_GTEST_PROP(TagPropertiesTest, ATreeThatIsWrittenAsTextIsReadBack, ())
{
    const std::vector<Node> tree = MakeTree();
    Writer writer;
    std::string expected;
    for (const Node& node : tree) {
        writer.Write(node);
        expected += Dump(node) + "\n";
    }
    RC_LOG() << writer.Text();
    TagBench bench;
    bench.Read(wxString::FromUTF8(writer.Text()));
    std::string read;
    for (size_t i = 0; i < bench.Text().GetSubBlockCount(); ++i)
        read += Dump(bench.Outermost(i)) + "\n";
    RC_ASSERT(read == expected);
}

RC_GTEST_PROP(TagPropertiesTest, ACopyReadsLikeItsOriginal, ())
{
    Writer writer;
    for (const Node& node : MakeTree())
        writer.Write(node);
    TagBench bench;
    bench.Read(wxString::FromUTF8(writer.Text()));
    for (size_t i = 0; i < bench.Text().GetSubBlockCount(); ++i) {
        const std::unique_ptr<CTagBlock> copy(bench.Outermost(i).Clone());
        CTagBlock assigned(nullptr, nullptr);
        assigned = *copy;
        RC_ASSERT(Dump(*copy) == Dump(bench.Outermost(i)));
        RC_ASSERT(Dump(assigned) == Dump(bench.Outermost(i)));
        RC_ASSERT(copy->GetHierarchy(3) == bench.Outermost(i).GetHierarchy(3));
    }
}

/// What is left of a text, however it has been cut.
std::string RestOf(const CTagBlock& block)
{
    std::string rest;
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        for (const char character : block.GetUnit(slot) ? block.GetUnit(slot)->m_text.utf8_string() : std::string())
            rest += character == ' ' || character == '\t' ? "" : std::string(1, character);
    }
    return rest;
}

std::string ReadWith(TagBench& bench, const wxString& text, bool asUnits)
{
    CTagBlock& block = bench.Load(text);
    for (unsigned int slot = 0; asUnits && slot < block.GetCount(); ++slot)
        EXPECT_NE(block.GetUnit(slot), nullptr);
    const long result = bench.parser.ParseBlock(&block);
    std::string read = (result == 0 ? "" : LastFailure(bench.parser, result)) + "\n" + RestOf(block);
    for (size_t i = 0; i < block.GetSubBlockCount(); ++i)
        read += "\n" + FullDump(*block.GetSubBlock(i));
    return read;
}

RC_GTEST_PROP(TagPropertiesTest, AHierarchyIsTheSameBeforeAndAfterItsBlocksAreMade, ())
{
    Writer writer;
    for (const Node& node : MakeTree())
        writer.Write(node);
    RC_LOG() << writer.Text();
    TagBench bench;
    bench.Read(wxString::FromUTF8(writer.Text()));
    const CTagBlock& text = bench.Text();
    const wxString before = text.GetHierarchy(1);
    const std::string bytes = HierarchiesOf(text);
    std::string expected;
    for (size_t i = 0; i < text.GetSubBlockCount(); ++i)
        expected += text.GetSubBlock(i)->GetHierarchy(0).utf8_string() + "\n";
    RC_ASSERT(bytes == expected);
    FullDump(text);
    RC_ASSERT(text.GetHierarchy(1) == before);
    RC_ASSERT(HierarchiesOf(text) == expected);
}

RC_GTEST_PROP(TagPropertiesTest, LinesOfATextAreReadLikeUnits, ())
{
    const std::vector<std::string> pieces = {"<",        ">",
                                             "<<",       ">>",
                                             "<a>",      "</a>",
                                             "<b/>",     "<<a>>",
                                             "<</a>>",   "<?xml v='1'?>",
                                             "<!x>",     "<a='x'",
                                             "<a \n",    "k=1 ",
                                             "name='b'", "='y' ",
                                             "\"",       "'",
                                             "\\",       "/",
                                             "=",        " ",
                                             "\t",       "\n",
                                             "\n",       "\r\n",
                                             "text",     "a",
                                             "b",        "\u00e9",
                                             "\u4e2d",   "\U0001f600",
                                             "</a>\n",   "<a>\n",
                                             "<b/>\n",   "</b>",
                                             "</a='x'>", "<c \u00e9=\"\u00e9>\" />"};
    std::string text;
    for (const std::string& piece : *rc::gen::container<std::vector<std::string>>(rc::gen::elementOf(pieces)))
        text += piece;
    if (*rc::gen::inRange(0, 2) == 0) {
        Writer writer;
        for (const Node& node : MakeTree())
            writer.Write(node);
        text += writer.Text();
    }
    RC_LOG() << text;
    using Tags = std::pair<const wchar_t*, const wchar_t*>;
    const std::vector<Tags> pairs = {{L"<", L">"}, {L"<", L">"}, {L"<a", L"/a>"}, {L"\u00e9", L">"}, {L"a", L"a"}};
    const Tags tags = *rc::gen::elementOf(pairs);
    TagBench lines(tags.first, tags.second);
    TagBench units(tags.first, tags.second);
    const wxString wide = wxString::FromUTF8(text);
    RC_ASSERT(ReadWith(lines, wide, false) == ReadWith(units, wide, true));
}

} // namespace
