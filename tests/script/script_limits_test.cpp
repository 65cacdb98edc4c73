#include "script/script_class.h"
#include "script/value_conversion.h"
#include "tests/script/script_fixture.h"

#include <chrono>
#include <new>
#include <ostream>
#include <string>

namespace
{

constexpr size_t Megabyte = 1024 * 1024;
const char* const GrowingText = "var kept = []; for (;;) kept.push(new Array(1000).fill(1));";

class ScriptLimitsTest : public ScriptTest
{
protected:
    static double SecondsOf(const std::function<void()>& work)
    {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

    wxString report;
};

TEST_F(ScriptLimitsTest, AnEndlessLoopIsStoppedAndReported)
{
    script.SetTimeLimit(100);
    const double seconds = SecondsOf([&] { EXPECT_FALSE(script.Execute("for (;;) ;", nullptr, &report)); });
    EXPECT_GE(seconds, 0.09);
    EXPECT_LT(seconds, 5);
    EXPECT_TRUE(report.EndsWith("==> script time limit of 100 ms exceeded\n")) << report;
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, "script time limit of 100 ms exceeded");
    EXPECT_EQ(Reports(), Texts(2, "CJScript " + report));
}

TEST_F(ScriptLimitsTest, AScriptCannotCatchItsTimeLimit)
{
    script.SetTimeLimit(50);
    EXPECT_FALSE(script.Evaluate(
        "var seen = ''; try { for (;;) ; } catch (e) { seen = 'caught'; } finally { seen += 'finally'; }", nullptr));
    EXPECT_EQ(Show("'seen ' + seen"), "seen ");
}

TEST_F(ScriptLimitsTest, TheContextIsUsableAfterATimeLimit)
{
    script.SetTimeLimit(50);
    EXPECT_EQ(Show("var x = 1; x"), "1");
    EXPECT_FALSE(script.Evaluate("x = 2; for (;;) ;", nullptr));
    EXPECT_EQ(Show("x + 1"), "3");
    EXPECT_EQ(script.GetErrorCount(), 0);
}

TEST_F(ScriptLimitsTest, TheTimeLimitStartsAnewWithEachText)
{
    script.SetTimeLimit(200);
    for (int count = 0; count < 4; ++count)
        EXPECT_TRUE(script.Evaluate("var until = Date.now() + 80; while (Date.now() < until) ;", nullptr));
}

TEST_F(ScriptLimitsTest, CallsAreStoppedToo)
{
    ASSERT_TRUE(script.Evaluate("function f() { for (;;) ; }", nullptr));
    script.SetTimeLimit(50);
    EXPECT_FALSE(script.Call("f", Global()));
    EXPECT_EQ(Reports(), Texts{"CJScript ==> script time limit of 50 ms exceeded\n"});
}

TEST_F(ScriptLimitsTest, AnEndlessLoopInsideANativeStopsTheOuterScriptToo)
{
    bool innerSucceeded = true;
    Define("inner", [&](JSContext*, uintN, jsval*, jsval*) {
        innerSucceeded = script.Evaluate("for (;;) ;", nullptr);
        return JS_TRUE;
    });
    script.SetTimeLimit(50);
    const double seconds = SecondsOf([&] { EXPECT_FALSE(script.Evaluate("var x = 1; inner(); for (;;) ;", nullptr)); });
    EXPECT_FALSE(innerSucceeded);
    EXPECT_LT(seconds, 5);
    EXPECT_EQ(Show("x"), "1");
}

// Natives that make light of what went wrong below them.

struct Swallowing
{
    const char* name;
    const char* text;
};

class ScriptStopTest : public ScriptLimitsTest, public ::testing::WithParamInterface<Swallowing>
{};

TEST_P(ScriptStopTest, ReachesTheOutermostRun)
{
    Define("evaluate", [&](JSContext*, uintN, jsval*, jsval*) {
        script.Evaluate("for (;;);", nullptr);
        return JS_TRUE;
    });
    Define("call", [&](JSContext*, uintN, jsval*, jsval*) {
        script.Call("endless", Global());
        return JS_TRUE;
    });
    Define("find", [&](JSContext*, uintN, jsval*, jsval*) {
        script.HasFunction("property", Global());
        return JS_TRUE;
    });
    Define("declare", [&](JSContext* cx, uintN, jsval* argv, jsval*) {
        wxString text;
        jsval_to_wxString(cx, argv[0], text);
        CJScriptLinkClass::DeclareError(cx, "declared");
        return JS_FALSE;
    });
    Define("raise", [&](JSContext* cx, uintN, jsval* argv, jsval*) -> JSBool {
        wxString text;
        jsval_to_wxString(cx, argv[0], text);
        throw std::bad_alloc();
    });
    Define("end", [&](JSContext* cx, uintN, jsval*, jsval*) {
        qxjsMinimal native;
        native.GetJSLink()->CreateObjectDynamic(cx);
        native.GetJSLink()->JS_RegisterCallOnDestroy(Global()->GetJSFunction("endless"));
        return JS_TRUE;
    });
    ASSERT_TRUE(script.Evaluate("var n = 0; var o = {toString: endless, valueOf: endless};"
                                "function endless() { for (;;); }"
                                "Object.defineProperty(this, 'property', {get: endless});",
                                nullptr));
    script.SetTimeLimit(100);
    EXPECT_FALSE(script.Evaluate(GetParam().text, nullptr));
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, "script time limit of 100 ms exceeded");
    EXPECT_EQ(Show("n"), "0");
}

INSTANTIATE_TEST_SUITE_P(
    Of, ScriptStopTest,
    ::testing::Values(Swallowing{"Texts", "for (;;) StrToUpper(o)"}, Swallowing{"OneText", "StrToUpper(o); n = 1"},
                      Swallowing{"Arguments", "for (;;) { try { new size_t(o) } catch (e) {} }"},
                      Swallowing{"OneArgument", "try { new size_t(o) } catch (e) { n = 1 } n = 2"},
                      Swallowing{"ElementsOfArrays", "for (;;) { try { FormatStringA('', [o]) } catch (e) {} }"},
                      Swallowing{"ManyTexts", "FormatString.apply(null, Array(100000).fill(o)); n = 1"},
                      Swallowing{"NestedTexts", "StrToUpper({toString: function () { StrToUpper(o); n = 1 }})"},
                      Swallowing{"Evaluations", "for (;;) evaluate()"}, Swallowing{"Calls", "for (;;) call()"},
                      Swallowing{"Questions", "for (;;) find()"},
                      Swallowing{"Declarations", "for (;;) { try { declare(o) } catch (e) { n = 1 } }"},
                      Swallowing{"Exceptions", "for (;;) { try { raise(o) } catch (e) { n = 1 } }"},
                      Swallowing{"OnDestroyFunctions", "for (;;) end()"}, Swallowing{"ThrownObjects", "throw o"},
                      Swallowing{"PromiseJobs", "Promise.resolve().then(function () { for (;;) StrToUpper(o) })"},
                      Swallowing{"Rejections", "Promise.reject(o)"},
                      Swallowing{"RejectionsOfStoppedScripts", "Promise.reject(o); for (;;);"}),
    NameOfRow<Swallowing>);

TEST_F(ScriptLimitsTest, OnDestroyFunctionsOfDroppedObjectsHaveTheTimeLimitOnceTogether)
{
    script.SetTimeLimit(50);
    for (int round = 1; round <= 2; ++round) {
        EXPECT_TRUE(script.Evaluate("(function () { for (var i = 0; i < 500; ++i)"
                                    " new size_t(1).CallOnDestroy(function () { for (;;); }); })()",
                                    nullptr));
        JS_GC(Context());
        EXPECT_EQ(Reports(), Texts(round, "CJScript ==> script time limit of 50 ms exceeded\n"));
    }
}

TEST_F(ScriptLimitsTest, OnDestroyFunctionsThatMakeOthersEndWithTheTimeLimit)
{
    script.SetTimeLimit(50);
    EXPECT_TRUE(script.Evaluate("function more() { for (var i = 0; i < 200; ++i) new size_t(1).CallOnDestroy(more);"
                                " for (i = 0; i < 200; ++i) new Array(100000).fill(0.5); }"
                                "(function () { new size_t(1).CallOnDestroy(more); })()",
                                nullptr));
    JS_GC(Context());
    EXPECT_EQ(Show("'usable'"), "usable");
}

TEST_F(ScriptLimitsTest, ATimeLimitOfZeroIsNone)
{
    script.SetTimeLimit(20);
    script.SetTimeLimit(0);
    EXPECT_TRUE(script.Evaluate("var until = Date.now() + 100; while (Date.now() < until) ;", nullptr));
}

TEST_F(ScriptLimitsTest, TheTimeLimitOfOneContextIsNotThatOfAnother)
{
    qxjsMinimal otherGlobal;
    CJScript other(nullptr);
    ASSERT_TRUE(other.SetGlobal(otherGlobal.GetJSLink(), ""));
    other.SetTimeLimit(20);
    EXPECT_TRUE(script.Evaluate("var until = Date.now() + 100; while (Date.now() < until) ;", nullptr));
    EXPECT_FALSE(other.Evaluate("for (;;) ;", nullptr));
}

TEST_F(ScriptLimitsTest, AGrowingArrayIsStoppedAndReported)
{
    script.SetMemoryLimit(32 * Megabyte);
    script.SetTimeLimit(20000);
    EXPECT_FALSE(script.Execute(GrowingText, nullptr, &report));
    const wxString message = wxString::Format("script memory limit of %lu bytes exceeded", 32 * Megabyte);
    EXPECT_TRUE(report.EndsWith("==> " + message + "\n")) << report;
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, message);
}

TEST_F(ScriptLimitsTest, AScriptCannotCatchItsMemoryLimit)
{
    script.SetMemoryLimit(32 * Megabyte);
    script.SetTimeLimit(20000);
    EXPECT_FALSE(script.Evaluate(wxString("var seen = ''; try { ") + GrowingText + " } catch (e) { seen = 'caught'; }",
                                 nullptr));
    EXPECT_EQ(Show("kept = null; 'seen ' + seen"), "seen ");
}

TEST_F(ScriptLimitsTest, AScriptCannotHideItsMemoryLimitInAConversion)
{
    script.SetMemoryLimit(32 * Megabyte);
    script.SetTimeLimit(20000);
    EXPECT_FALSE(script.Evaluate(wxString("var n = 0; for (;;) { StrToUpper({toString: function () { ") + GrowingText +
                                     " }}); n = 1; }",
                                 nullptr));
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, wxString::Format("script memory limit of %lu bytes exceeded", 32 * Megabyte));
    EXPECT_EQ(Show("n"), "0");
}

TEST_F(ScriptLimitsTest, TheContextIsUsableAfterAMemoryLimit)
{
    script.SetMemoryLimit(32 * Megabyte);
    script.SetTimeLimit(20000);
    EXPECT_FALSE(script.Evaluate(GrowingText, nullptr));
    EXPECT_EQ(Show("typeof kept"), "object");
    EXPECT_EQ(Show("kept = null; 1 + 1"), "2");
    EXPECT_EQ(script.GetErrorCount(), 0);
}

// Natives that take long or much.

struct GreedyCase
{
    const char* name;
    const char* text;
};

std::ostream& operator<<(std::ostream& out, const GreedyCase& c)
{
    return out << c.name;
}

class GreedyNativeTest : public ScriptLimitsTest, public testing::WithParamInterface<GreedyCase>
{};

TEST_P(GreedyNativeTest, IsStoppedAtTheTimeLimit)
{
    script.SetTimeLimit(100);
    const double seconds = SecondsOf([&] { EXPECT_FALSE(script.Evaluate(GetParam().text, nullptr)); });
    EXPECT_LT(seconds, 5);
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, "script time limit of 100 ms exceeded");
    EXPECT_EQ(Show("1 + 1"), "2");
}

TEST_P(GreedyNativeTest, IsStoppedAtTheMemoryLimit)
{
    script.SetMemoryLimit(32 * Megabyte);
    script.SetTimeLimit(20000);
    EXPECT_FALSE(script.Evaluate(GetParam().text, nullptr));
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, wxString::Format("script memory limit of %lu bytes exceeded", 32 * Megabyte));
    EXPECT_EQ(Show("1 + 1"), "2");
}

constexpr GreedyCase GreedyCases[] = {
    {"FormatString", "FormatString('%1'.repeat(1000000), 'x'.repeat(1000))"},
    {"FindReplaceStr", "FindReplaceStr('a'.repeat(1000000), 'a', 'x'.repeat(1000))"},
    {"FormatStringA", "FormatStringA('', new Array(9000000))"},
    {"TextFile", "new TextFile().Open('/dev/zero')"},
    {"URLFile_ReadAll", "var f = new URLFile(); f.Open('/dev', 'zero', '', ''); f.ReadAll()"},
    {"URLFile_ReadLn", "var f = new URLFile(); f.Open('/dev', 'zero', '', ''); f.ReadLn()"},
};

INSTANTIATE_TEST_SUITE_P(Script, GreedyNativeTest, testing::ValuesIn(GreedyCases), NameOfRow<GreedyCase>);

TEST_F(ScriptLimitsTest, ALongTextIsNotCopiedBeyondTheMemoryLimit)
{
    script.SetMemoryLimit(64 * Megabyte);
    EXPECT_EQ(Show("StrToLower('a'.repeat(1000000)).length"), "1000000");
    EXPECT_FALSE(script.Evaluate("var text = 'a'.repeat(50000000); StrToLower(text); text = ''", nullptr));
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, wxString::Format("script memory limit of %lu bytes exceeded", 64 * Megabyte));
    EXPECT_EQ(Show("text.length"), "50000000");
}

// Recursion.

TEST_F(ScriptLimitsTest, DeepRecursionIsAnError)
{
    EXPECT_FALSE(script.Execute("function f() {\n  return f() + 1;\n}\nf();", nullptr, &report));
    EXPECT_TRUE(report.EndsWith("==> InternalError: too much recursion\n")) << report;
    EXPECT_EQ(Show("1 + 1"), "2");
}

TEST_F(ScriptLimitsTest, DeepRecursionCanBeCaught)
{
    EXPECT_EQ(Show("function f() { return f() + 1; } try { f(); } catch (e) { e.message }"), "too much recursion");
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptLimitsTest, DeepNestingOfATextIsAnError)
{
    const wxString text = wxString('(', 200000) + "1" + wxString(')', 200000);
    EXPECT_FALSE(script.Evaluate(text, nullptr));
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_TRUE(script.GetError(0)->msg.Contains("too much recursion")) << script.GetError(0)->msg;
    EXPECT_EQ(Show("1 + 1"), "2");
}

TEST_F(ScriptLimitsTest, EvaluationsThatNestWithoutEndAreAnError)
{
    int depth = 0;
    int failures = 0;
    Define("again", [&](JSContext*, uintN, jsval*, jsval*) {
        ++depth;
        if (!script.Evaluate("again()", nullptr))
            ++failures;
        return JS_TRUE;
    });
    EXPECT_EQ(Show("again(); 'went on'"), "went on");
    EXPECT_GT(depth, 10);
    EXPECT_EQ(failures, 1);
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_TRUE(Reports().front().EndsWith("==> too much recursion\n")) << Reports().front();
}

} // namespace
