#include "engine/jsapi.h"
#include "tests/tags/cond_test_support.h"

#include <wx/sstream.h>

namespace
{

/// Templates whose scripts do what they should not.
using CondScriptTest = CondTest;

constexpr const char* Items = "<r><i n='1'/><i n='2'/><i n='3'/><i n='4'/></r>";

TEST_F(CondScriptTest, AScriptThatThrowsIsABadScript)
{
    EXPECT_EQ("<>", Line("<[%(throw new Error('no'))%]>"));
    EXPECT_EQ("Xml parse : bad script throw new Error('no')", Errors());
}

TEST_F(CondScriptTest, AConditionThatThrowsIsRefused)
{
    EXPECT_EQ(CondFailure("Xml parse : bad condition throw 1 in \nif="), Expand("<%if cond='throw 1'/%>\n"));
}

TEST_F(CondScriptTest, AResultThatCannotBeATextIsABadScript)
{
    EXPECT_EQ("<>", Line("<[%(({toString() { throw 1; }}))%]>"));
    EXPECT_EQ("Xml parse : bad script ({toString() { throw 1; }})", Errors());
}

TEST_F(CondScriptTest, EndlessScriptsEndAtTheTimeLimit)
{
    script.SetTimeLimit(50);
    EXPECT_EQ("<>", Line("<[%(while (true);)%]>"));
    EXPECT_EQ(CondFailure("Xml parse : bad condition while (true); in \nif="),
              Expand("<%if cond='while (true);'/%>\n"));
    EXPECT_EQ(CondFailure("Xml parse : can not evaluate for (;;); in \nrepeat="),
              Expand("<%repeat count='for (;;);'/%>\n"));
}

TEST_F(CondScriptTest, EndlessRecursionIsABadScript)
{
    EXPECT_EQ("<>", Line("<[%((function f() { return f(); })())%]>"));
}

TEST_F(CondScriptTest, ANodeThatIsRemovedWhileItIsCurrentIsTheEmptyNodeFromThenOn)
{
    EXPECT_EQ("1true-||-false-||-false-||-false-||",
              Expand("<%repeat%>\n[%n|-%][%(GetParent().RemoveNode('i'))%][%n|-%]\n<%/repeat%>\n", Items));
    EXPECT_EQ(3, document.GetRawRoot()->GetChildrenCount());
}

TEST_F(CondScriptTest, SiblingsThatAreRemovedAreNotVisitedButCounted)
{
    EXPECT_EQ("1true||3false||-false||", Expand("<%repeat%>\n[%n|-%][%(GetParent().RemoveNode('x'))%]\n<%/repeat%>\n",
                                                "<r><i n='1'/><x n='2'/><i n='3'/></r>"));
}

TEST_F(CondScriptTest, ARepetitionGoesOnOverEmptyNodesWhenAllChildrenAreRemoved)
{
    EXPECT_EQ("1-||--||--||--||",
              Expand("<%repeat%>\n[%n|-%][%(GetParent().RemoveChildren(), '')%][%n|-%]\n<%/repeat%>\n", Items));
}

TEST_F(CondScriptTest, SiblingsThatAreAddedAreNotCounted)
{
    EXPECT_EQ("1||2||3||4||", Expand("<%repeat%>\n[%n|-%][%(GetParent().AddNode('i'), '')%]\n<%/repeat%>\n", Items));
    EXPECT_EQ(8, document.GetRawRoot()->GetChildrenCount());
}

TEST_F(CondScriptTest, ADocumentThatIsReloadedLeavesEmptyNodes)
{
    EXPECT_EQ("1true-||-true-||-true-||-true-||",
              Expand("<%repeat%>\n[%n|-%][%(Document.SetContent('<new n=\"9\"/>'))%][%n|-%]\n<%/repeat%>\n", Items));
    EXPECT_EQ("true||||", Expand("<%keep node='i'%>\n[%(Document.SetContent('<r/>'))%]\n<%keep%>\n"
                                 "[%n%]\n<%/keep%>\n<%keep node='/'%>\nx\n<%/keep%>\n<%/keep%>\n",
                                 Items));
}

TEST_F(CondScriptTest, AConditionThatRemovesItsNodeIsStillACondition)
{
    EXPECT_EQ("-||", Expand("<%if node='i' cond=\"GetParent().RemoveNode('i')\"%>\n[%n|-%]\n<%/if%>\n", Items));
}

TEST_F(CondScriptTest, APathMayRemoveTheNodeItStartsFrom)
{
    EXPECT_EQ("", Expand("<%keep node='i'%>\n<%keep node=\"[%(GetParent().RemoveNode('i'), 'x')%]\"%>\nx\n<%/keep%>\n"
                         "<%/keep%>\n",
                         Items));
}

TEST_F(CondScriptTest, AScriptMayKeepNodesBeyondTheirPass)
{
    EXPECT_TRUE(script.Evaluate("kept = []", nullptr));
    EXPECT_EQ("0||1||2||3||", Expand("<%repeat%>\n[%(kept.push(this) - 1)%]\n<%/repeat%>\n", Items));
    wxString text;
    EXPECT_TRUE(script.Evaluate("kept.map(function(node) { return node.GetProp('n'); }).join('')", nullptr, text));
    EXPECT_EQ("1234", text);
}

TEST_F(CondScriptTest, ACollectionInAnExpressionIsNoMatter)
{
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ("1||2||3||4||", Expand("<%repeat%>\n[%(var junk = []; GetProp('n'))%]\n<%/repeat%>\n", Items));
        JS_GC(script.GetContext());
    }
}

TEST_F(CondScriptTest, VariablesOfANodeAreItsOwn)
{
    EXPECT_EQ(
        "1 undefined||2 undefined||",
        Expand("<%repeat%>\n[%(var before = typeof mine; var mine = 1; GetProp('n'))%] [%(before)%]\n<%/repeat%>\n",
               "<r><i n='1'/><i n='2'/></r>"));
}

/// A parser that starts its script when a template needs it.
class LateParser : public CCondTagParser
{
public:
    LateParser(CPreprocessor* pp, CXmlDocument& document) : CCondTagParser(pp), m_document(document) {}

    int m_starts = 0;

protected:
    CJScript* ProvideScript() override
    {
        ++m_starts;
        m_script.SetGlobal(m_global.GetJSLink(), "Global");
        m_document.SetScript(&m_script, "Document", m_global.GetJSLink());
        return &m_script;
    }

private:
    CXmlDocument& m_document;
    qxjsMinimal m_global;
    CJScript m_script{nullptr};
};

class CondLateScriptTest : public ::testing::Test
{
protected:
    std::string Expand(const wxString& text)
    {
        CXmlDocument document;
        document.SetContent("<r id='7'><i n='1'/><i n='2'/></r>");
        LateParser parser(&m_pp, document);
        parser.Parse(text, "main.tpl", nullptr, false);
        EXPECT_EQ(0, parser.ParseBlock(parser.GetLastBlock(0)));
        wxString out;
        EXPECT_TRUE(parser.Process(document.GetRawRoot(), out, nullptr));
        m_starts = parser.m_starts;
        out.Replace("\n", "|");
        document.Clear();
        return out.utf8_string();
    }

    void SetUp() override { m_pp.Desactivate(); }

    CPreprocessor m_pp{nullptr, true};
    int m_starts = 0;
};

TEST_F(CondLateScriptTest, WhatNeedsNoScriptStartsNone)
{
    EXPECT_EQ("1 0 3||2 1 3||", Expand("<%repeat filter='i'%>\n<%if cond='[%n%] > 0'%>\n[%n%] [%++%] [%(1 + 2)%]\n"
                                       "<%/if%>\n<%/repeat%>\n<%repeat count='[%id%] - 7'%>\n<%/repeat%>\n"));
    EXPECT_EQ(0, m_starts);
}

TEST_F(CondLateScriptTest, TheFirstScriptStartsOne)
{
    EXPECT_EQ("10||21||", Expand("<%repeat filter='i'%>\n[%n%][%(GetIndex())%]\n<%/repeat%>\n"));
    EXPECT_EQ(1, m_starts);
}

/// Expressions that only read the current node, and some that look like it.
constexpr const char* ReadingScripts[] = {
    "GetProp('name')",
    "GetProp(\"name\").toUpperCase()",
    "GetProp( 'name' ).toLowerCase() + '!'",
    "GetProp('name').length * 2",
    "+GetProp('price') * +GetProp('count')",
    "GetProp('price') * GetProp('count') + GetProp('count')",
    "GetProp('count') + '-' + (+GetProp('price') + 1)",
    "GetProp('count') > 3 && HasProp('name')",
    "GetProp('none') == ''",
    "+GetProp('none')",
    "HasProp('none') || GetName() + GetCount() + GetChildrenCount()",
    "!HasProp('name')",
    "GetProp('wide').toUpperCase()",
    "GetProp('far') + GetProp('far').length",
    "GetProp('far') < GetProp('wide')",
    "GetProp('name') * 2",
    "GetProp('name').lengthy",
    "GetProp('name').length()",
    "GetProp('name').trim()",
    "GetProp('name')[0]",
    "GetProp",
    "GetProp()",
    "GetProp('name', 'x')",
    "GetProp(name)",
    "GetProp('na' + 'me')",
    "GetProp('name')('x')",
    "GetName('x')",
    "GetNames()",
    "xGetName()",
    "this.GetName()",
    "GetCount().length",
    "GetName() GetName()",
    "GetProp('name'",
};

TEST_F(CondScriptTest, WhatIsDecidedWithoutTheEngineIsWhatTheEngineGives)
{
    const wxString xml = wxString::FromUTF8("<item name='Pen' price='2.5' count='4' wide='\u00e4\u00df' "
                                            "far='\U0001F58A'>text<a/><!--b--></item>");
    for (const char* expression : ReadingScripts) {
        const wxString text =
            wxString::Format("<%%keep%%>\n[%%(%s)%%]\n<%%/keep%%>\n<%%if cond=\"%s\"%%>\nyes\n<%%/if%%>\n", expression,
                             wxString(expression).Contains("\"") ? "0" : expression);
        const std::string judged = Expand(text, xml);
        CXmlDocument plain;
        plain.SetContent(xml);
        LateParser late(&pp, plain);
        late.Parse(text, "main.tpl", nullptr, false);
        ASSERT_EQ(0, late.ParseBlock(late.GetLastBlock(0)));
        wxString out;
        const bool done = late.Process(plain.GetRawRoot(), out, nullptr);
        out.Replace("\n", "|");
        EXPECT_EQ(judged.substr(0, 6) != "false,", done) << expression;
        EXPECT_TRUE(!done || judged == out.utf8_string()) << expression << ": " << out << " instead of " << judged;
        plain.Clear();
    }
}

TEST_F(CondLateScriptTest, ReadingTheCurrentNodeStartsNoScript)
{
    EXPECT_EQ("1 2 I i true||2 4 I i true||",
              Expand("<%repeat filter='i'%>\n[%(GetProp('n'))%] [%(GetProp('n') * 2)%] [%(GetName().toUpperCase())%] "
                     "[%(GetName())%] [%(HasProp('n'))%]\n<%/repeat%>\n"));
    EXPECT_EQ(0, m_starts);
}

TEST_F(CondLateScriptTest, AfterAScriptHasRunItsChangesCount)
{
    EXPECT_EQ("1 1 mine||", Expand("<%keep node='i'%>\n[%(GetProp('n'))%] [%(GetProp = function() { return 'mine'; }, "
                                   "GetIndex() + 1)%] [%(GetProp('n'))%]\n<%/keep%>\n"));
    EXPECT_EQ(1, m_starts);
}

wxString Nested(int depth)
{
    wxString text;
    for (int i = 0; i < depth; ++i)
        text += "<%keep%>\n";
    text += "x\n";
    for (int i = 0; i < depth; ++i)
        text += "<%/keep%>\n";
    return text;
}

TEST_F(CondScriptTest, BlocksMayBeNestedUpToTheLimit)
{
    EXPECT_EQ("x||", Expand(Nested(999)));
    EXPECT_EQ("x||", Expand(Nested(1000)));
    parser.Clean();
    parser.Parse(Nested(1001), "main.tpl", nullptr, false);
    EXPECT_EQ(CTagBlock::tagTooDeep, parser.ParseBlock(parser.GetLastBlock(0)));
    EXPECT_EQ(Failure("Tags nested deeper than 1000", 1001, "main.tpl", CTagBlock::tagTooDeep),
              LastFailure(parser, CTagBlock::tagTooDeep));
}

TEST_F(CondScriptTest, ScriptsRunAtTheDeepestLevel)
{
    wxString text = Nested(1000);
    text.Replace("x\n", "[%(GetName())%]\n");
    EXPECT_EQ("r||", Expand(text));
}

} // namespace
