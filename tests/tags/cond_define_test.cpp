#include "tests/tags/cond_test_support.h"

#include <memory>

namespace
{

using List = CCondTagParser::CDefineList;

std::string Value(const List& list, const wxString& name)
{
    bool found = false;
    const wxString value = list.Get(name, "none", &found);
    EXPECT_EQ(found, value != "none");
    return value.utf8_string();
}

TEST(CondDefineListTest, AnEntryIsFoundByItsName)
{
    List list(nullptr);
    EXPECT_EQ("none", Value(list, "a"));
    list.Add("a", "1");
    EXPECT_EQ("1", Value(list, "a"));
    EXPECT_EQ("none", Value(list, "A"));
    EXPECT_EQ("1", list.Get("a", "x", nullptr));
}

TEST(CondDefineListTest, AddPutsANewEntryFirst)
{
    List list(nullptr);
    list.Add("a", "1");
    list.Add("a", "2");
    EXPECT_EQ("2", Value(list, "a"));
    list.Remove("a");
    EXPECT_EQ("1", Value(list, "a"));
    list.Remove("a");
    list.Remove("a");
    EXPECT_EQ("none", Value(list, "a"));
}

TEST(CondDefineListTest, AddOrReplaceLeavesOneEntry)
{
    List list(nullptr);
    list.AddOrReplace("a", "1");
    list.Add("b", "1");
    list.AddOrReplace("a", "2");
    EXPECT_EQ("2", Value(list, "a"));
    list.Remove("a");
    EXPECT_EQ("none", Value(list, "a"));
    EXPECT_EQ("1", Value(list, "b"));
}

TEST(CondDefineListTest, AListGoesOnWithItsParents)
{
    List outer(nullptr);
    outer.Add("a", "outer");
    outer.Add("b", "outer");
    List inner(&outer);
    inner.Add("a", "inner");
    const List innermost(&inner);
    EXPECT_EQ("inner", Value(innermost, "a"));
    EXPECT_EQ("outer", Value(innermost, "b"));
    EXPECT_EQ("outer", Value(outer, "a"));
    EXPECT_EQ(&outer, inner.GetParent());
}

TEST(CondDefineListTest, AListChangesOnlyItsOwnEntries)
{
    List outer(nullptr);
    outer.Add("a", "outer");
    List inner(&outer);
    inner.Remove("a");
    EXPECT_EQ("outer", Value(inner, "a"));
    inner.AddOrReplace("a", "inner");
    EXPECT_EQ("inner", Value(inner, "a"));
    EXPECT_EQ("outer", Value(outer, "a"));
    inner.Remove("a");
    EXPECT_EQ("outer", Value(inner, "a"));
}

TEST(CondDefineListTest, AListKeepsWhatItsParentHadWhenItWasMade)
{
    auto outer = std::make_unique<List>(nullptr);
    outer->Add("a", "1");
    outer->Add("b", "1");
    const List inner(outer.get());
    outer->Add("c", "1");
    outer->Remove("b");
    EXPECT_EQ("none", Value(inner, "c"));
    EXPECT_EQ("1", Value(inner, "b"));
    outer.reset();
    EXPECT_EQ("1", Value(inner, "a"));
}

TEST(CondDefineListTest, ACopyHasTheSameEntries)
{
    List list(nullptr);
    list.Add("a", "1");
    List copy(list);
    list.Add("b", "1");
    EXPECT_EQ("1", Value(copy, "a"));
    EXPECT_EQ("none", Value(copy, "b"));
    copy = list;
    EXPECT_EQ("1", Value(copy, "b"));
}

TEST(CondDefineListTest, ALongListIsFreedWithoutDeepRecursion)
{
    List list(nullptr);
    for (int i = 0; i < 1'000'000; ++i)
        list.Add("a", "");
    const List shared(&list);
    EXPECT_EQ("none", Value(shared, "b"));
}

using CondDefineTest = CondTest;

TEST_F(CondDefineTest, DefineMakesTheValuesOfAScript)
{
    EXPECT_EQ("1 x true||", Expand("<%keep DEFINE=\"a=1; b='x'; c=a==1\"%>\n[%#a%] [%#b%] [%#c%]\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, DefineIsSubstituted)
{
    EXPECT_EQ("14||", Expand("<%keep DEFINE='a=[%n%] * 2'%>\n[%#a%]\n<%/keep%>\n", "<r n='7'/>"));
}

TEST_F(CondDefineTest, DefineIsSubstitutedBeforeTheNodeMoves)
{
    EXPECT_EQ("1||", Expand("<%keep node='a' DEFINE='x=[%n%]'%>\n[%#x%]\n<%/keep%>\n", "<r n='1'><a n='2'/></r>"));
}

TEST_F(CondDefineTest, DefinesAreThereForThePath)
{
    EXPECT_EQ("2||", Expand("<%keep node='[%#p%]' DEFINE=\"p='a'\"%>\n[%n%]\n<%/keep%>\n", "<r n='1'><a n='2'/></r>"));
}

TEST_F(CondDefineTest, ADefineThatIsMissingHasItsDefault)
{
    EXPECT_EQ("none", Line("[%#a|none%]"));
    EXPECT_EQ("b|c||", Expand("<%keep%>\n[%#a|b|c%]\n<%/keep%>\n"));
    EXPECT_EQ("<>", Line("<[%#a%]>"));
}

TEST_F(CondDefineTest, AnEmptyDefineIsThere)
{
    EXPECT_EQ("<>||", Expand("<%keep DEFINE=\"a=''\"%>\n<[%#a|none%]>\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, DefinesHoldForNestedBlocks)
{
    EXPECT_EQ("3||0 3||1 3||", Expand("<%keep DEFINE='a=3'%>\n[%#a%]\n<%repeat count='2'%>\n[%++%] [%#a%]\n"
                                      "<%/repeat%>\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, DefinesDoNotLeakOut)
{
    EXPECT_EQ("none||", Expand("<%keep DEFINE='a=3'/%>\n<%keep%>\n[%#a|none%]\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, DefinesShadowThoseAround)
{
    EXPECT_EQ("inner 3||outer 3||",
              Expand("<%keep DEFINE=\"a='outer'; c=3\"%>\n<%keep DEFINE=\"a='inner'\"%>\n"
                     "[%#a%] [%#c%]\n<%/keep%>\n<%keep%>\n[%#a%] [%#c%]\n<%/keep%>\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, DefinesAreMadeAnewInEachPass)
{
    EXPECT_EQ("0||2||4||", Expand("<%repeat count='3'%>\n<%keep DEFINE='a=[%++%] * 2'%>\n[%#a%]\n<%/keep%>\n"
                                  "<%/repeat%>\n"));
}

TEST_F(CondDefineTest, EachDefineScriptHasAContextOfItsOwn)
{
    EXPECT_TRUE(script.Evaluate("var outside = 1", nullptr));
    EXPECT_EQ("5 undefined undefined||",
              Expand("<%keep DEFINE='a=5'%>\n<%keep DEFINE='b=typeof a; c=typeof outside'%>\n[%#a%] [%#b%] [%#c%]\n"
                     "<%/keep%>\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, OnlyEnumerablePlainValuesBecomeDefines)
{
    EXPECT_EQ("1 2 - - - - - null undefined||",
              Expand("<%keep DEFINE=\"var a=1; b=2; function f() {}; o={}; let l=1; const k=1; "
                     "Object.defineProperty(this, 'h', {value: 1}); n=null; u=undefined\"%>\n"
                     "[%#a%] [%#b%] [%#f|-%] [%#o|-%] [%#l|-%] [%#k|-%] [%#h|-%] [%#n%] [%#u%]\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, TheGlobalObjectIsKnownAsGlobalAndIsNoDefine)
{
    EXPECT_EQ("7 none||", Expand("<%keep DEFINE='Global.a=7'%>\n[%#a%] [%#Global|none%]\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, ADefineThatFailsIsLoggedAndDefinesNothing)
{
    EXPECT_EQ("none||", Expand("<%keep DEFINE='a=1; b=nix'%>\n[%#a|none%]\n<%/keep%>\n"));
    EXPECT_EQ("** Add define 'a=1; b=nix' FAILED parse JS", Errors());
}

TEST_F(CondDefineTest, APropertyThatCannotBeReadIsNoDefine)
{
    EXPECT_EQ("none 2||", Expand("<%keep DEFINE=\"Object.defineProperty(this, 'a', {enumerable: true, "
                                 "get() { throw 1; }}); b=2\"%>\n[%#a|none%] [%#b%]\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, DefineScriptsHaveTheLimitsOfTheContext)
{
    script.SetTimeLimit(50);
    EXPECT_EQ("", Expand("<%keep DEFINE='while (true);'/%>\n"));
    EXPECT_EQ("** Add define 'while (true);' FAILED parse JS", Errors());
}

TEST_F(CondDefineTest, DefinesAreMadeForSkippedBlocksToo)
{
    EXPECT_EQ("1||", Expand("<%keep node='nix' GLOBAL_DEFINE='a=1'/%>\n<%keep%>\n[%#a%]\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, GlobalDefinesHoldEverywhereFromThenOn)
{
    EXPECT_EQ("none||1||", Expand("<%keep%>\n[%#g|none%]\n<%/keep%>\n<%keep%>\n<%keep GLOBAL_DEFINE='g=1'/%>\n"
                                  "<%/keep%>\n<%keep%>\n[%#g%]\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, GlobalDefinesReplaceThoseOfTheirName)
{
    EXPECT_EQ("2||none||", Expand("<%keep GLOBAL_DEFINE='g=1'/%>\n<%keep GLOBAL_DEFINE='g=2'/%>\n"
                                  "<%keep%>\n[%#g%]\n<%/keep%>\n<%keep GLOBAL_UNDEF='g'%>\n[%#g|none%]\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, DefinesComeBeforeGlobalOnes)
{
    EXPECT_EQ("local||", Expand("<%keep GLOBAL_DEFINE=\"a='global'\" DEFINE=\"a='local'\"%>\n[%#a%]\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, GlobalUndefRemovesTheDefineItNames)
{
    EXPECT_EQ("none 2||", Expand("<%keep GLOBAL_DEFINE=\"g=1; h=2; n='g'\"/%>\n<%keep GLOBAL_UNDEF='[%#n%]'%>\n"
                                 "[%#g|none%] [%#h%]\n<%/keep%>\n<%keep GLOBAL_UNDEF='nix'/%>\n"));
}

TEST_F(CondDefineTest, GlobalUndefLeavesOtherDefinesAlone)
{
    EXPECT_EQ("1||", Expand("<%keep DEFINE='a=1'%>\n<%keep GLOBAL_UNDEF='a'%>\n[%#a%]\n<%/keep%>\n<%/keep%>\n"));
}

TEST_F(CondDefineTest, GlobalDefinesOutliveARun)
{
    Expand("<%keep GLOBAL_DEFINE='g=1'/%>\n");
    EXPECT_EQ("1", Line("[%#g%]"));
    EXPECT_EQ("1", parser.GetGlobalDefines().Get("g", "none", nullptr));
}

TEST_F(CondDefineTest, ACopyOfTheParserHasTheGlobalDefines)
{
    parser.GetGlobalDefines().Add("g", "1");
    CCondTagParser other(&pp);
    other = parser;
    EXPECT_EQ("1", other.GetGlobalDefines().Get("g", "none", nullptr));
}

TEST_F(CondDefineTest, OptionNamesAreComparedWithCase)
{
    EXPECT_EQ("none||", Expand("<%keep define='a=1' Global_Define='a=2'%>\n[%#a|none%]\n<%/keep%>\n"));
}

} // namespace
