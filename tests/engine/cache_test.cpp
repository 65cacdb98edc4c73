
#include "engine_fixture.h"

// Texts that come again are compiled once; nothing but time may show it.
namespace
{

using EngineCache = EngineTest;

TEST_F(EngineCache, RepeatedTextsGiveFreshResults)
{
    ASSERT_TRUE(Run("var n = 0, all = []"));
    for (int i = 1; i <= 5; ++i) {
        EXPECT_EQ(Show("++n"), std::to_string(i));
        ASSERT_TRUE(Run("all.push({}, [], function () {}, /x/g, class {})"));
    }
    EXPECT_EQ(Show("new Set(all).size"), "25");
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(Show("var o = {count: 0}; o.count += 1; o.list = [1]; o.list.push(2); o.count + o.list.length"), "3");
}

TEST_F(EngineCache, RepeatedErrorsAreTheSame)
{
    for (int i = 0; i < 5; ++i) {
        reports.clear();
        EXPECT_FALSE(Run("\n\nmissing", nullptr, nullptr, 10));
        EXPECT_FALSE(Run("\nfor (", nullptr, nullptr, 10));
        ASSERT_EQ(reports.size(), 2u);
        EXPECT_EQ(reports[0].line, 12u);
        EXPECT_EQ(reports[0].message, "ReferenceError: missing is not defined");
        EXPECT_EQ(reports[1].line, 11u);
        EXPECT_EQ(reports[1].flags, JSREPORT_ERROR);
    }
}

TEST_F(EngineCache, TheSameTextWithAnotherLineOrFileIsAnotherScript)
{
    for (int i = 0; i < 4; ++i) {
        reports.clear();
        for (unsigned line : {0u, 5u, 0u, 7u})
            EXPECT_FALSE(Run("missing", nullptr, nullptr, line));
        EXPECT_FALSE(JS_EvaluateUCScript(cx, nullptr, u"missing", 7, "elsewhere", 0, nullptr));
        ASSERT_EQ(reports.size(), 5u);
        EXPECT_EQ(reports[1].line, 5u);
        EXPECT_EQ(reports[2].line, 0u);
        EXPECT_EQ(reports[3].line, 7u);
        EXPECT_EQ(reports[4].file, "elsewhere");
    }
}

TEST_F(EngineCache, TheSameTextRunsOnTheObjectItIsGiven)
{
    JSObject* a = JS_DefineObject(cx, JS_GetGlobalObject(cx), "a", nullptr, nullptr, 0);
    JSObject* b = JS_DefineObject(cx, JS_GetGlobalObject(cx), "b", nullptr, nullptr, 0);
    ASSERT_TRUE(Run("var x = 'global'; a.x = 'a'; b.x = 'b'"));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Show("x"), "global");
        EXPECT_EQ(Show("x", a), "a");
        EXPECT_EQ(Show("x", b), "b");
    }
}

TEST_F(EngineCache, EachGlobalHasItsOwnScripts)
{
    JSContext* other = NewContext();
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Show("typeof mark"), i == 0 ? "undefined" : "number");
        ASSERT_TRUE(Run("var mark = 1"));
        jsval v = JSVAL_VOID;
        ASSERT_TRUE(JS_EvaluateUCScript(other, nullptr, u"typeof mark", 11, "local", 0, &v));
        EXPECT_EQ(ShowWord(v), "undefined");
    }
    JS_DestroyContext(other);
}

TEST_F(EngineCache, ARedeclarationFailsTheSecondTimeAsItWouldFresh)
{
    EXPECT_TRUE(Run("const once = 1"));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(Show("const once = 1"), "!SyntaxError: redeclaration of const once");
}

TEST_F(EngineCache, ATaggedTemplatesStringsAreNewInEachEvaluation)
{
    ASSERT_TRUE(Run("var seen = new Set; function tag(strings) { seen.add(strings) }"));
    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(Run("tag`x`"));
    EXPECT_EQ(Show("seen.size"), "5");
}

TEST_F(EngineCache, MoreTextsThanTheCacheHoldsStillRunRight)
{
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 1500; ++i) {
            const std::string text =
                "'" + std::string(static_cast<std::size_t>(i), 'x') + "'.length + " + std::to_string(i);
            jsval v = JSVAL_VOID;
            ASSERT_TRUE(Run(text.c_str(), &v));
            ASSERT_EQ(v, INT_TO_JSVAL(2 * i));
        }
        JS_GC(cx);
    }
}

TEST_F(EngineCache, AWideTextThatComesAgainGivesFreshResults)
{
    ASSERT_TRUE(Run("var n = 0"));
    const std::wstring text = L"'\x1F600\xE9'.length + ++n";
    for (int i = 1; i <= 5; ++i) {
        jsval v = JSVAL_VOID;
        ASSERT_TRUE(JS_EvaluateWide(cx, nullptr, text.data(), text.size(), "local", 0, &v));
        EXPECT_EQ(v, INT_TO_JSVAL(3 + i));
        ASSERT_TRUE(JS_EvaluateWide(cx, nullptr, L"n", 1, "local", 0, &v));
        EXPECT_EQ(v, INT_TO_JSVAL(i));
    }
}

TEST_F(EngineCache, ACachedScriptDoesNotKeepItsGlobalAlive)
{
    static int finalized;
    finalized = 0;
    constexpr JSClass kGlobal = {"G",     0,       nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, [](JSContext*, JSObject*) { ++finalized; }};
    for (int i = 0; i < 3; ++i) {
        JSContext* other = JS_NewContext(rt, 8192);
        JS_SetGlobalObject(other, JS_NewGlobal(other, &kGlobal));
        for (int n = 0; n < 4; ++n)
            ASSERT_TRUE(JS_EvaluateUCScript(other, nullptr, u"var f = () => 1", 15, "local", 0, nullptr));
        JS_DestroyContext(other);
        EXPECT_EQ(finalized, i + 1);
    }
}

TEST_F(EngineCache, AScriptThatEvaluatesItselfAndOthersIsNotDisturbed)
{
    JS_DefineFunction(
        cx, JS_GetGlobalObject(cx), "again",
        [](JSContext* c, JSObject*, uintN, jsval* argv, jsval* rval) {
            const jsint n = JSVAL_TO_INT(argv[0]);
            if (n == 0)
                return JS_TRUE;
            for (int i = 0; i < 300; ++i) {
                const std::u16string filler = std::u16string(static_cast<std::size_t>(i), u' ') + u"1";
                for (int twice = 0; twice < 2; ++twice)
                    JS_EvaluateUCScript(c, nullptr, filler.data(), static_cast<uintN>(filler.size()), "f", 0, rval);
            }
            JS_GC(c);
            return JS_EvaluateUCScript(c, nullptr, u"depth--; again(depth); 'done' + depth", 37, "local", 0, rval);
        },
        1, 0);
    ASSERT_TRUE(Run("var depth = 5"));
    EXPECT_EQ(Show("depth--; again(depth); 'done' + depth"), "done0");
}

} // namespace
