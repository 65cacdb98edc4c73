#include "tests/support/preprocess_bench.h"
#include "tests/support/temp_directory.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

namespace
{

std::string TextFrom(const std::string& alphabet)
{
    return *rc::gen::container<std::string>(rc::gen::elementOf(alphabet));
}

bool Chance(int percent)
{
    return *rc::gen::inRange(0, 100) < percent;
}

std::string Number(int below)
{
    return std::to_string(*rc::gen::inRange(0, below));
}

RC_GTEST_PROP(PreprocessProperties, PlainTextIsTrimmedLineByLine, ())
{
    const std::string text = TextFrom("ab *+({ \t\r\n\n");
    PreprocessBench<> bench;
    std::string expected;
    wxString rest = text;
    rest.Replace("\r\n", "\n");
    rest.Replace("\r", "\n");
    while (!rest.empty()) {
        wxString line = rest.BeforeFirst('\n');
        rest = rest.AfterFirst('\n');
        if (!line.Trim(true).Trim(false).empty())
            expected += line.utf8_string() + "\n";
    }
    RC_ASSERT(bench.Run(text) == expected);
}

RC_GTEST_PROP(PreprocessProperties, PreprocessingPlainTextAgainChangesNothing, (bool trim))
{
    PreprocessBench<> bench;
    bench.pp.SetTrim(trim);
    const std::string once = bench.Run(TextFrom("ab{(\\+ \t\r\n\n"));
    RC_ASSERT(bench.Run(once) == once);
}

/// The output of a text of comments only, from the rules; "!" when one is closed that is not open or left open.
std::string WithoutComments(const std::string& text)
{
    std::string output;
    int depth = 0;
    bool lineComment = false;
    for (size_t at = 0; at < text.size(); ++at) {
        const std::string two = text.substr(at, 2);
        if (text[at] == '\n') {
            lineComment = false;
            output += '\n';
        } else if (lineComment)
            continue;
        else if (two == "*/") {
            if (--depth < 0)
                return "!";
            ++at;
        } else if (two == "/*" && (depth == 0 || text[at - 1] != '/')) {
            ++depth;
            ++at;
        } else if (depth == 0 && two == "//")
            lineComment = true;
        else if (depth == 0)
            output += text[at];
    }
    return depth == 0 ? output : "!";
}

RC_GTEST_PROP(PreprocessProperties, CommentsAreTakenOutAsTheRulesSay, ())
{
    const std::string text = TextFrom("/*/*/*a\n") + "\n";
    PreprocessBench<> bench;
    bench.pp.SetTrim(false);
    bench.parser.KeepEmptyLines();
    const std::string output = bench.Run(text);
    RC_ASSERT((output.substr(0, 2) == "-1" ? "!" : output) == WithoutComments(text));
}

/// Whether every string of a line is closed.
bool StringsAreClosed(const std::string& line)
{
    char quote = 0;
    int backslashes = 0;
    for (const char character : line) {
        if (!quote && (character == '"' || character == '\''))
            quote = character;
        else if (quote == character && backslashes % 2 == 0)
            quote = 0;
        backslashes = character == '\\' ? backslashes + 1 : 0;
    }
    return !quote;
}

RC_GTEST_PROP(PreprocessProperties, StringsAreCopiedOrNotTerminated, ())
{
    PreprocessBench<> bench;
    bench.pp.SetTrim(false);
    const std::string quoted = "\"\" " + TextFrom("\"'\\ab\"'") + "$";
    const std::string output = bench.Run(quoted);
    if (StringsAreClosed(quoted))
        RC_ASSERT(output == CPreprocessor::ConcatQuotes(quoted).utf8_string() + "\n");
    else
        RC_ASSERT(output == Failure("String not terminated !", 1));
}

/// A tree of sections over constant conditions: its text, and what is kept of it.
struct Sections
{
    std::string text;
    std::string kept;

    explicit Sections(int depth)
    {
        const int parts = *rc::gen::inRange(0, 4);
        for (int part = 0; part < parts; ++part)
            if (depth > 0 && Chance(50))
                AddSection(depth - 1);
            else
                AddLine();
    }

private:
    void AddLine()
    {
        const std::string line = "t" + Number(10) + "\n";
        text += line;
        kept += line;
    }

    void AddSection(int depth)
    {
        bool taken = false;
        const int branches = *rc::gen::inRange(1, 5);
        for (int branch = 0; branch < branches; ++branch) {
            const bool truth = *rc::gen::arbitrary<bool>();
            text += Opening(branch == 0, truth);
            AddBranch(depth, truth && !taken);
            taken = taken || truth;
        }
        if (Chance(50)) {
            text += "#else\n";
            AddBranch(depth, !taken);
        }
        text += "#endif\n";
    }

    static std::string Opening(bool first, bool truth)
    {
        if (first)
            return *rc::gen::element<std::string>(truth ? "#ifdef K\n" : "#ifdef N\n",
                                                  truth ? "#ifndef N\n" : "#ifndef K\n",
                                                  truth ? "#if #K == 1\n" : "#if #K == 2\n");
        return *rc::gen::element<std::string>(truth ? "#elseifdef K\n" : "#elseifdef N\n",
                                              truth ? "#elif defined(K)\n" : "#elif defined(N)\n",
                                              truth ? "#elseif 1 < 2\n" : "#elseif 2 < 1\n");
    }

    void AddBranch(int depth, bool isKept)
    {
        const Sections branch(depth);
        text += branch.text;
        if (isKept)
            kept += branch.kept;
    }
};

RC_GTEST_PROP(PreprocessProperties, SectionsKeepTheirFirstTrueBranch, ())
{
    const Sections sections(3);
    PreprocessBench<> bench;
    RC_ASSERT(bench.RunWith({"K=1"}, sections.text) == sections.kept);
}

/// A program that a partial pass may cut anywhere: K and L are known to both passes, U and V from the second on, N
/// never. What the first pass decides does not depend on what it does not know.
class StagedProgram
{
public:
    std::string Body(int depth)
    {
        std::string text;
        const int parts = *rc::gen::inRange(0, 4);
        for (int part = 0; part < parts; ++part) {
            const int kind = depth > 0 ? *rc::gen::inRange(0, 4) : 0;
            text += kind < 2 ? Line() : kind == 2 ? Section(depth - 1) : Loop(depth - 1);
        }
        return text;
    }

private:
    std::string Line()
    {
        std::string line;
        const int words = *rc::gen::inRange(1, 4);
        for (int word = 0; word < words; ++word)
            line += Word() + " ";
        return line + *rc::gen::element<std::string>("", "// c", "/* #U c */") + "\n";
    }

    std::string Word()
    {
        if (!m_variables.empty() && Chance(30))
            return "#" + *rc::gen::elementOf(m_variables);
        return *rc::gen::element<std::string>("t", "#K", "##L", "#U", "##V", "'#U'", "\"#K\"", "#F(#K)", "#F(#U)",
                                              "##F(#V)");
    }

    std::string Section(int depth)
    {
        const bool isOpen = *rc::gen::arbitrary<bool>();
        std::string text;
        if (isOpen)
            text = *rc::gen::element<std::string>("#ifdef U\n", "#ifndef V\n", "#ifdef N\n", "#ifndef N\n",
                                                  "#if #U == 1\n", "#if #K < #V // c\n", "#if defined(U) && #K\n",
                                                  "#if !defined(N)\n");
        else
            text = *rc::gen::element<std::string>("#ifdef K\n", "#ifndef L\n", "#if #K == 1\n", "#if !defined(K)\n",
                                                  "#if 0\n");
        text += Body(depth);
        const int branches = *rc::gen::inRange(0, 3);
        for (int branch = 0; branch < branches; ++branch) {
            if (isOpen)
                text += *rc::gen::element<std::string>("#elif #U == 2\n", "#elseif #K == 1\n", "#elseifdef N\n",
                                                       "#elseifdef K\n", "#elif defined(V)\n", "#elseifdef V\n");
            else
                text += *rc::gen::element<std::string>("#elif #K == 2\n", "#elseif defined(L)\n", "#elseifdef L\n");
            text += Body(depth);
        }
        if (Chance(50))
            text += "#else\n" + Body(depth);
        return text + "#endif\n";
    }

    std::string Loop(int depth)
    {
        const std::string variable = "i" + std::to_string(m_variables.size());
        std::string bound = *rc::gen::element<std::string>("2", "#K", "#U", "defined(V)?2:1");
        if (!m_variables.empty() && Chance(30))
            bound = "#" + m_variables.back();
        m_variables.push_back(variable);
        const std::string body = Body(depth);
        m_variables.pop_back();
        return "#for " + variable + " 1;" + bound + ";1\n" + body + "#endfor\n";
    }

    std::vector<std::string> m_variables;
};

RC_GTEST_PROP(PreprocessProperties, APartialPassBeforeACompleteOneMakesNoDifference, ())
{
    const std::string program = StagedProgram().Body(3);
    const std::string function = "#define F(a) <#a>\n";
    PreprocessBench<> complete;
    const std::string expected = complete.RunWith({"K=1", "L=2", "U=1", "V=2"}, function + program);
    RC_ASSERT(expected.substr(0, 2) != "-1");

    PreprocessBench<> staged;
    staged.pp.SetPartialMode(true);
    const std::string kept = staged.RunWith({"K=1", "L=2"}, function + program);
    RC_CLASSIFY(staged.pp.WasPartial(), "something was kept");
    staged.pp.SetPartialMode(false);
    RC_ASSERT(staged.RunWith({"U=1", "V=2"}, kept) == expected);
}

class OpenParser : public CParser
{
public:
    using CParser::CParser;

    /// Whether all listed blocks hold only units that know them, and the last error's unit is one of those.
    bool IsConsistent() const
    {
        const CParserUnit* errorUnit = nullptr;
        GetLastError(nullptr, &errorUnit);
        bool isAlive = !errorUnit;
        for (size_t index = 0; index < m_blocks.GetCount(); ++index) {
            const CParserBlock& block = *m_blocks[index];
            for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
                const CParserUnit* const unit = block.GetUnit(slot);
                if (unit && (unit->m_block != &block || !unit->m_file))
                    return false;
                isAlive = isAlive || unit == errorUnit;
            }
        }
        return isAlive;
    }
};

std::string RandomProgram()
{
    static const std::vector<std::string> lines = {"a",
                                                   "  b // c",
                                                   "/* c",
                                                   "*/",
                                                   "x /* y */ z",
                                                   "'s' \"t\"",
                                                   "it's",
                                                   "#if 1",
                                                   "#if 0",
                                                   "#if #A",
                                                   "#if nosuch",
                                                   "#ifdef A",
                                                   "#ifndef A",
                                                   "#elif 1",
                                                   "#elseif #B",
                                                   "#elseifdef A",
                                                   "#else",
                                                   "#endif",
                                                   "#endif",
                                                   "#endif",
                                                   "#define A 1",
                                                   "#define A 2",
                                                   "#define B(x) <#x>",
                                                   "#define C #A",
                                                   "#redefine A #A#A",
                                                   "#undef A",
                                                   "#A",
                                                   "x #A",
                                                   "#B(#A)",
                                                   "##B(1)",
                                                   "#B(",
                                                   "#B((()))",
                                                   "#{ 1 }",
                                                   "##{ 2 }",
                                                   "#{",
                                                   "#{ nosuch }",
                                                   "#error e",
                                                   "#warning w",
                                                   "#include \"i.txt\"",
                                                   "#include \"self.txt\"",
                                                   "#include \"open.txt\"",
                                                   "#include \"no.txt\"",
                                                   "#for i 1;2;1",
                                                   "#for j 1;#A;1",
                                                   "#for k 1;9;1",
                                                   "#for i 1;2;0",
                                                   "#endfor",
                                                   "#endfor",
                                                   "#i #j",
                                                   "#",
                                                   "##",
                                                   "x # y",
                                                   "#define",
                                                   ""};
    std::string text;
    const int count = *rc::gen::inRange(0, 12);
    for (int line = 0; line < count; ++line)
        text += *rc::gen::elementOf(lines) + "\n";
    return text;
}

RC_GTEST_PROP(PreprocessProperties, RandomProgramsLeaveConsistentBlocks, (bool trim, bool partial))
{
    static const TempDirectory place;
    place.Put("i.txt", "i\n#A\n#define D 1\n");
    place.Put("self.txt", "s\n#include \"self.txt\"\n");
    place.Put("open.txt", "o\n#if 1\n");
    CPreprocessorLimits limits;
    limits.includeDepth = limits.loopNesting = 4;
    limits.loopPasses = 5;
    CDir dir = place.Dir();
    const LogCapture log;
    CPreprocessor pp(nullptr, trim);
    OpenParser parser(&pp);
    pp.SetLimits(limits);
    pp.SetPartialMode(partial);
    parser.SetDir(dir);
    for (int text = 0; text < 2; ++text) {
        parser.ClearError();
        const long result = parser.Parse(RandomProgram(), "main.txt", nullptr, false);
        wxString message;
        parser.GetLastErrorStr(&message);
        RC_ASSERT(result == 0 || result == -1);
        RC_ASSERT((result == 0) == message.empty());
        RC_ASSERT(parser.IsConsistent());
    }
}

} // namespace
