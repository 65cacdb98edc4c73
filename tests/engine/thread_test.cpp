#include <thread>

#include <pthread.h>

#include "engine_fixture.h"

namespace
{

using EngineThread = EngineTest;

TEST_F(EngineThread, ACallFromAnotherThreadIsRefusedAndTouchesNothing)
{
    jsval word = JSVAL_NULL;
    JSObject* global = JS_GetGlobalObject(cx);
    JSString* str = JS_NewUCStringCopyZ(cx, u"x");
    std::thread([&] {
        jsval v = INT_TO_JSVAL(5);
        EXPECT_FALSE(JS_EvaluateUCScript(cx, nullptr, u"1", 1, "local", 0, &v));
        EXPECT_FALSE(JS_GetProperty(cx, global, "x", &v));
        EXPECT_EQ(JS_NewUCStringCopyZ(cx, u"y"), nullptr);
        EXPECT_EQ(JS_NewObject(cx, nullptr, nullptr, nullptr), nullptr);
        EXPECT_EQ(JS_NewDouble(cx, 1), nullptr);
        EXPECT_EQ(JS_ValueToString(cx, v), nullptr);
        EXPECT_FALSE(JS_AddRoot(cx, &word));
        EXPECT_EQ(JS_GetPrivate(cx, global), nullptr);
        EXPECT_EQ(JS_GetStringChars(str), nullptr);
        JS_GC(cx);
        EXPECT_EQ(v, INT_TO_JSVAL(5));
    }).join();
    const std::vector<std::string> misuse = TakeMisuse();
    EXPECT_EQ(misuse.size(), 9u);
    EXPECT_EQ(misuse[0], "JS_EvaluateUCScript called from another thread than the context's; refused");
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(Show("1 + 1"), "2");
}

TEST_F(EngineThread, RootsThatEndedWithTheirThreadMayBeRemoved)
{
    JSContext* context = nullptr;
    jsval word = JSVAL_NULL;
    std::thread([&] {
        context = JS_NewContext(nullptr, 8192);
        EXPECT_TRUE(JS_AddRoot(context, &word));
    }).join();
    EXPECT_TRUE(JS_RemoveRoot(context, &word));
    EXPECT_TRUE(TakeMisuse().empty());
    JS_DestroyContext(context);
}

TEST_F(EngineThread, ThreadsRunTheirOwnContextsAtTheSameTime)
{
    std::vector<std::thread> threads;
    std::atomic<int> good{0};
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&good] {
            JSRuntime* runtime = JS_Init(1);
            JSContext* context = JS_NewContext(runtime, 8192);
            constexpr JSClass kGlobal = {"G",     0,       nullptr, nullptr, nullptr,
                                         nullptr, nullptr, nullptr, nullptr, nullptr};
            JS_SetGlobalObject(context, JS_NewGlobal(context, &kGlobal));
            jsval v = JSVAL_VOID;
            const std::u16string text = u"var s = 0; for (var i = 0; i < 100000; i++) s += i % 7; s";
            if (JS_EvaluateUCScript(context, nullptr, text.data(), static_cast<uintN>(text.size()), "t", 0, &v) &&
                v == INT_TO_JSVAL(299995))
                ++good;
            JS_DestroyContext(context);
            JS_Finish(runtime);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, 3);
}

std::atomic<int> g_finalized{0};

constexpr JSClass kCounted = {"Counted", 0,       nullptr, nullptr, nullptr,
                              nullptr,   nullptr, nullptr, nullptr, [](JSContext*, JSObject*) { ++g_finalized; }};

TEST_F(EngineThread, DestructionOrderedByAnotherThreadHappensAtTheOwnersNextCall)
{
    g_finalized = 0;
    JSContext* other = NewContext();
    JS_DefineObject(other, JS_GetGlobalObject(other), "o", &kCounted, nullptr, 0);
    std::thread([other] { JS_DestroyContext(other); }).join();
    EXPECT_EQ(g_finalized, 0);
    EXPECT_TRUE(Run("1"));
    EXPECT_EQ(g_finalized, 1);
}

TEST_F(EngineThread, TheEndOfAThreadFinalizesItsObjectsAndItsContextRefusesCalls)
{
    g_finalized = 0;
    JSContext* left = nullptr;
    std::thread([&left] {
        left = JS_NewContext(nullptr, 8192);
        JS_SetGlobalObject(left, JS_NewGlobal(left, &kCounted));
        JS_DefineObject(left, JS_GetGlobalObject(left), "o", &kCounted, nullptr, 0);
    }).join();
    EXPECT_EQ(g_finalized, 2);
    EXPECT_FALSE(JS_EvaluateUCScript(left, nullptr, u"1", 1, "local", 0, nullptr));
    EXPECT_EQ(JS_GetGlobalObject(left), nullptr);
    const std::vector<std::string> misuse = TakeMisuse();
    ASSERT_EQ(misuse.size(), 1u);
    EXPECT_EQ(misuse[0], "JS_EvaluateUCScript called after the end of the context's thread; refused");
    JS_DestroyContext(left);
}

// Runs the body on a thread with so much stack, to its end.
void RunOnStack(std::size_t bytes, void (*body)(std::size_t& result), std::size_t& result)
{
    struct Task
    {
        void (*body)(std::size_t& result);
        std::size_t& result;
    } task{body, result};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, bytes);
    pthread_t thread;
    const auto start = [](void* data) -> void* {
        auto& todo = *static_cast<Task*>(data);
        todo.body(todo.result);
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &task), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

// What of a thread's stack is taken when its code starts: its thread-local data, of which sanitizers have much.
std::size_t TakenAtStart()
{
    std::size_t taken = 0;
    const auto measure = [](std::size_t& result) {
        pthread_attr_t attributes;
        void* lowest = nullptr;
        std::size_t size = 0;
        ASSERT_EQ(pthread_getattr_np(pthread_self(), &attributes), 0);
        ASSERT_EQ(pthread_attr_getstack(&attributes, &lowest, &size), 0);
        pthread_attr_destroy(&attributes);
        result = static_cast<std::size_t>(static_cast<char*>(lowest) + size -
                                          static_cast<char*>(__builtin_frame_address(0)));
    };
    RunOnStack(8 * 1024 * 1024, measure, taken);
    return taken;
}

// How deep script gets on a thread that has so much stack left; 0 when it does not end with the error for that.
std::size_t DepthOfRecursion(std::size_t stack_left)
{
    std::size_t depth = 0;
    const auto recurse = [](std::size_t& result) {
        JSContext* context = JS_NewContext(nullptr, 8192);
        constexpr JSClass kGlobal = {"G", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
        JS_SetGlobalObject(context, JS_NewGlobal(context, &kGlobal));
        jsval v = JSVAL_VOID;
        const std::u16string text = u"var n = 0, end = ''; function f() { n++; f() }"
                                    "try { f() } catch (e) { end = String(e) }"
                                    "end === 'InternalError: too much recursion' ? n : 0";
        JS_EvaluateUCScript(context, nullptr, text.data(), static_cast<uintN>(text.size()), "t", 0, &v);
        result = JSVAL_IS_INT(v) ? static_cast<std::size_t>(JSVAL_TO_INT(v)) : 0;
        JS_DestroyContext(context);
    };
    RunOnStack(TakenAtStart() + stack_left, recurse, depth);
    return depth;
}

TEST_F(EngineThread, OnASmallStackTooDeepARecursionIsStillAnError)
{
    // A quarter of a megabyte stays free for natives. A call takes some hundred bytes, and the frames that it ends
    // in take more where they are instrumented.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr std::size_t kMostBytesOfACall = 16 * 1024;
#else
    constexpr std::size_t kMostBytesOfACall = 2 * 1024;
#endif
    constexpr std::size_t kSmall = 512 * 1024;
    const std::size_t depth = DepthOfRecursion(kSmall);
    EXPECT_GE(depth, (kSmall - 256 * 1024) / kMostBytesOfACall);
    EXPECT_GT(DepthOfRecursion(kSmall + 192 * 1024), depth) << "it follows the stack";
}

TEST_F(EngineThread, FinishingARuntimeLeavesItsContextsUsable)
{
    JSRuntime* runtime = JS_Init(1);
    JSContext* context = JS_NewContext(runtime, 8192);
    EXPECT_EQ(JS_GetRuntime(context), runtime);
    JS_Finish(runtime);
    EXPECT_EQ(JS_GetRuntime(context), nullptr);
    EXPECT_NE(JS_NewUCStringCopyZ(context, u"x"), nullptr);
    JS_DestroyContext(context);
    JS_ShutDown();
    EXPECT_EQ(Show("1"), "1");
}

JSBool DestroySelf(JSContext* cx, JSObject*, uintN, jsval*, jsval*)
{
    JS_DestroyContext(cx);
    return JS_TRUE;
}

TEST_F(EngineThread, AContextDestroyedByItsOwnScriptGoesWhenThatHasEnded)
{
    g_finalized = 0;
    JSContext* other = NewContext();
    JS_DefineObject(other, JS_GetGlobalObject(other), "o", &kCounted, nullptr, 0);
    JS_DefineFunction(other, JS_GetGlobalObject(other), "destroy", DestroySelf, 0, 0);
    jsval v = JSVAL_VOID;
    EXPECT_TRUE(JS_EvaluateUCScript(other, nullptr, u"destroy(); destroy(); 5", 23, "local", 0, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(5));
    EXPECT_EQ(g_finalized, 1);
}

TEST_F(EngineThread, ManyContextsComeAndGo)
{
    for (int i = 0; i < 200; ++i) {
        JSContext* other = NewContext();
        EXPECT_TRUE(JS_EvaluateUCScript(other, nullptr, u"var x = {}", 10, "local", 0, nullptr));
        JS_DestroyContext(other);
    }
    EXPECT_EQ(JS_CountHostObjects(), 1u);
}

} // namespace
