#include <chrono>
#include <thread>

#include <sys/resource.h>

#include "engine_fixture.h"

namespace
{

using EngineLimit = EngineTest;

long Milliseconds(const std::chrono::steady_clock::time_point& since)
{
    using namespace std::chrono;
    return static_cast<long>(duration_cast<milliseconds>(steady_clock::now() - since).count());
}

TEST_F(EngineLimit, AnEndlessScriptStopsAtItsTimeLimitUncatchably)
{
    JS_SetTimeLimit(cx, 50);
    for (const char* text : {"for (;;);", "\ntry { for (;;); } catch (e) {} finally { for (;;); }",
                             "/(a+)+$/.test('a'.repeat(40) + 'b')", "for (;;) { try { for (;;); } catch (e) {} }"}) {
        reports.clear();
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(Run(text)) << text;
        EXPECT_GE(Milliseconds(start), 45) << text;
        EXPECT_LT(Milliseconds(start), 2000) << text;
        ASSERT_EQ(reports.size(), 1u) << text;
        EXPECT_EQ(reports[0].message, "script time limit of 50 ms exceeded");
        EXPECT_EQ(reports[0].file, "local");
        EXPECT_EQ(reports[0].flags, JSREPORT_ERROR);
    }
    EXPECT_EQ(Show("'usable'"), "usable");
}

TEST_F(EngineLimit, EachOutermostCallHasTheWholeTime)
{
    JS_SetTimeLimit(cx, 80);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(Run("var end = Date.now() + 30; while (Date.now() < end);"));
    EXPECT_TRUE(reports.empty());
}

TEST_F(EngineLimit, ALimitThatWasLiftedNoLongerApplies)
{
    JS_SetTimeLimit(cx, 20);
    JS_SetTimeLimit(cx, 0);
    EXPECT_TRUE(Run("var end = Date.now() + 60; while (Date.now() < end);"));
}

TEST_F(EngineLimit, AnEndlessChainOfPromiseJobsStopsAndLeavesNothingForLater)
{
    JS_SetTimeLimit(cx, 40);
    EXPECT_TRUE(Run("var n = 0; function f() { n++; return Promise.resolve().then(f) } f(); 1"));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "script time limit of 40 ms exceeded");
    const std::string count = Show("n");
    EXPECT_EQ(Show("n"), count);
    reports.clear();
    EXPECT_TRUE(Run("(async function () { for (;;) await 0 })(); 1"));
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_EQ(Show("'on'"), "on");
    EXPECT_EQ(reports.size(), 1u);
}

JSContext* g_inner = nullptr;

JSBool RunInner(JSContext*, JSObject*, uintN, jsval*, jsval* rval)
{
    *rval = BOOLEAN_TO_JSVAL(JS_EvaluateUCScript(g_inner, nullptr, u"for (;;);", 9, "inner", 0, nullptr));
    return JS_TRUE;
}

TEST_F(EngineLimit, ALimitOfANestedContextStopsThatContextOnly)
{
    g_inner = NewContext();
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "inner", RunInner, 0, 0);
    JS_SetTimeLimit(g_inner, 30);
    EXPECT_EQ(Show("inner()"), "false");
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "script time limit of 30 ms exceeded");
    EXPECT_EQ(reports[0].file, "inner");
    // And the other way: the outer limit reaches into the nested call.
    reports.clear();
    JS_SetTimeLimit(g_inner, 0);
    JS_SetTimeLimit(cx, 30);
    EXPECT_FALSE(Run("inner(); for (;;);"));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "script time limit of 30 ms exceeded");
    JS_DestroyContext(g_inner);
}

TEST_F(EngineLimit, AScriptThatGrowsTooMuchStopsAtItsMemoryLimit)
{
    JS_SetMemoryLimit(cx, 64 << 20);
    for (const char* text :
         {"var a = []; for (;;) a.push(new Array(1000).fill(1.5))", "var a = []; for (;;) a.push({x: 1})",
          "var s = []; for (var i = 0;; i++) s.push(('x' + i).repeat(5000))"}) {
        reports.clear();
        EXPECT_FALSE(Run(text)) << text;
        ASSERT_EQ(reports.size(), 1u) << text;
        EXPECT_EQ(reports[0].message, "script memory limit of 67108864 bytes exceeded") << text;
        ASSERT_TRUE(Run("a = s = null"));
        JS_GC(cx);
    }
}

TEST_F(EngineLimit, GarbageIsNoGrowth)
{
#ifdef __SANITIZE_ADDRESS__
    const std::size_t limit = 400 << 20; // freed memory stays in the sanitizer's quarantine of 256 MiB
#else
    const std::size_t limit = 96 << 20;
#endif
    JS_SetMemoryLimit(cx, limit);
    EXPECT_TRUE(Run("for (var i = 0; i < 3000000; i++) ({x: i})"));
    EXPECT_TRUE(Run("for (var i = 0; i < 6000; i++) new Array(20000).fill(0.5)")); // 960 MB
    EXPECT_TRUE(reports.empty());
}

TEST_F(EngineLimit, AnyThreadCanInterruptTheRunningScript)
{
    std::thread other([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        JS_RequestInterrupt(cx);
    });
    EXPECT_FALSE(Run("for (;;);"));
    other.join();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "script interrupted");
    JS_RequestInterrupt(cx);
    EXPECT_TRUE(Run("for (var i = 0; i < 100000; i++);")) << "an interrupt with nothing running has no effect";
}

void ReportThenEvaluate(JSContext* cx, const char* message, JSErrorReport* report)
{
    EngineTest::Note(cx, message, report);
    EXPECT_TRUE(JS_EvaluateUCScript(cx, nullptr, u"for (var i = 0; i < 1000000; i++);", 34, "reporter", 0, nullptr));
}

TEST_F(EngineLimit, TheReporterOfAStopCanEvaluate)
{
    JS_SetErrorReporter(cx, ReportThenEvaluate);
    JS_SetTimeLimit(cx, 20);
    EXPECT_FALSE(Run("for (;;);"));
    EXPECT_EQ(reports.size(), 1u);
}

TEST_F(EngineLimit, ALargerStackQuotaAllowsDeeperRecursion)
{
    const char* text = "var depth = 0; (function f() { depth++; f() })()";
    JS_SetStackQuota(cx, 128 * 1024);
    EXPECT_FALSE(Run(text));
    const int shallow = std::stoi(Show("depth"));
    JS_SetStackQuota(cx, 1024 * 1024);
    EXPECT_FALSE(Run(text));
    const int deep = std::stoi(Show("depth"));
    EXPECT_GT(shallow, 100);
    EXPECT_GT(deep, 3 * shallow);
    JS_SetStackQuota(cx, 512 * 1024);
}

// Uses up stack, then runs script.
__attribute__((noinline)) bool RunBelow(std::size_t bytes, const std::function<bool()>& body)
{
    volatile char block[4096];
    block[0] = 0;
    block[sizeof block - 1] = 0;
    if (bytes < sizeof block)
        return body();
    const bool result = RunBelow(bytes - sizeof block, body);
    return result && block[0] == 0;
}

TEST_F(EngineLimit, TheQuotaCountsFromWhereTheHostCalls)
{
    EXPECT_TRUE(RunBelow(2 << 20, [this] { return Run("(function f(n) { return n ? f(n - 1) : 0 })(500)"); }));
}

} // namespace
