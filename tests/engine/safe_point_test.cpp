#include <algorithm>

#include "engine_fixture.h"

// Calls put off by finalizers that may come while script runs.
namespace
{

JSContext* g_cx = nullptr;
std::vector<std::string> g_early;

void DestroyEarly(void* data)
{
    g_early.push_back("destroyed");
    delete static_cast<int*>(data);
    EXPECT_TRUE(!g_cx || JS_NewUCStringCopyZ(g_cx, u"x"));
}

void FinalizeEarly(JSContext* cx, JSObject* obj)
{
    if (auto* data = static_cast<int*>(JS_GetPrivate(cx, obj)))
        JS_CallAfterNative(cx, DestroyEarly, data);
}
constexpr JSClass kEarly = {"Early", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, FinalizeEarly};

JSBool ConstructEarly(JSContext* cx, JSObject* obj, uintN argc, jsval* argv, jsval*)
{
    JS_SetPrivate(cx, obj, new int(1));
    if (argc > 0 && JSVAL_IS_BOOLEAN(argv[0]))
        JS_GC(cx);
    jsval v = JSVAL_VOID;
    const bool calls = argc > 0 && JSVAL_IS_OBJECT(argv[0]);
    const JSBool done = !calls || JS_CallFunctionValue(cx, nullptr, argv[0], 0, nullptr, &v);
    g_early.push_back("constructed");
    return done;
}

class EngineEarly : public EngineTest
{
protected:
    EngineEarly()
    {
        g_cx = cx;
        g_early.clear();
        JS_InitClass(cx, JS_GetGlobalObject(cx), nullptr, &kEarly, ConstructEarly, 1, nullptr, nullptr, nullptr,
                     nullptr);
        JS_DefineFunction(
            cx, JS_GetGlobalObject(cx), "note",
            [](JSContext*, JSObject*, uintN, jsval*, jsval*) {
                g_early.push_back("script");
                return JS_TRUE;
            },
            0, 0);
    }
    ~EngineEarly() override { g_cx = nullptr; }
};

TEST_F(EngineEarly, WhatDiesInAConstructorIsDestroyedWhenThatHasReturned)
{
    ASSERT_TRUE(Run("new Early(); 0; new Early(true); note()"));
    EXPECT_EQ(g_early, (std::vector<std::string>{"constructed", "constructed", "destroyed", "script"}));
}

TEST_F(EngineEarly, NothingIsDestroyedBelowAnotherNative)
{
    ASSERT_TRUE(Run("new Early(); 0; new Early(function () { new Early(true); note() }); note()"));
    EXPECT_EQ(g_early,
              (std::vector<std::string>{"constructed", "constructed", "script", "constructed", "destroyed", "script"}));
}

TEST_F(EngineEarly, NothingIsDestroyedWhileTheNewObjectIsBeingMade)
{
    // The prototype is read with the constructor on the stack, by code that calls another one.
    ASSERT_TRUE(Run("new Early(); var target = function () {}.bind();"
                    "Object.defineProperty(target, 'prototype', {get() { new Early(true); note(); return null }});"
                    "Reflect.construct(Early, [], target); note()"));
    EXPECT_EQ(g_early,
              (std::vector<std::string>{"constructed", "constructed", "script", "constructed", "destroyed", "script"}));
}

TEST_F(EngineEarly, AnErrorInSuchACallIsReportedAndScriptGoesOn)
{
    JS_DefineFunction(
        cx, JS_GetGlobalObject(cx), "later",
        [](JSContext* c, JSObject*, uintN, jsval*, jsval*) {
            JS_CallAfterNative(
                c, [](void*) { EXPECT_FALSE(JS_EvaluateUCScript(g_cx, nullptr, u"nope", 4, "f", 0, nullptr)); },
                nullptr);
            return JS_TRUE;
        },
        0, 0);
    EXPECT_EQ(Show("var caught = 0; try { later() } catch (e) { caught = 1 } 'on' + caught"), "on0");
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "ReferenceError: nope is not defined");
}

TEST_F(EngineEarly, CallsKeepTheirOrderWithThoseThatMustWait)
{
    JS_DefineFunction(
        cx, JS_GetGlobalObject(cx), "later",
        [](JSContext* c, JSObject*, uintN, jsval*, jsval*) {
            JS_CallAfterNative(
                c, [](void*) { g_early.push_back("early"); }, nullptr);
            JS_CallAtSafePoint(
                c, [](void*) { g_early.push_back("end"); }, nullptr);
            JS_CallAfterNative(
                c, [](void*) { g_early.push_back("last"); }, nullptr);
            return JS_TRUE;
        },
        0, 0);
    ASSERT_TRUE(Run("later(); note()"));
    EXPECT_EQ(g_early, (std::vector<std::string>{"early", "script", "end", "last"}));
}

TEST_F(EngineEarly, ACancelledCallDoesNotCome)
{
    JS_DefineFunction(
        cx, JS_GetGlobalObject(cx), "later",
        [](JSContext* c, JSObject*, uintN, jsval*, jsval*) {
            static int first;
            static int second;
            JSCallTicket tickets[2] = {};
            JS_CallAfterNative(
                c, [](void*) { g_early.push_back("first"); }, &first, &tickets[0]);
            JS_CallAfterNative(
                c, [](void*) { g_early.push_back("second"); }, &second, &tickets[1]);
            JS_CancelCall(tickets[0], &first);
            JS_CancelCall(tickets[1], &first);      // not its data
            JS_CancelCall(tickets[1] + 1, &second); // nobody's ticket
            return JS_TRUE;
        },
        0, 0);
    ASSERT_TRUE(Run("later(); note()"));
    EXPECT_EQ(g_early, (std::vector<std::string>{"second", "script"}));
}

TEST_F(EngineEarly, ACallThatCancelsTheNextOneIsTheLast)
{
    static JSCallTicket next;
    JS_DefineFunction(
        cx, JS_GetGlobalObject(cx), "later",
        [](JSContext* c, JSObject*, uintN, jsval*, jsval*) {
            JS_CallAfterNative(
                c, [](void*) { JS_CancelCall(next, nullptr); }, nullptr);
            JS_CallAfterNative(
                c, [](void*) { g_early.push_back("next"); }, nullptr, &next);
            return JS_TRUE;
        },
        0, 0);
    ASSERT_TRUE(Run("later(); note()"));
    EXPECT_EQ(g_early, (std::vector<std::string>{"script"}));
    JS_CancelCall(next, nullptr); // has come, and nothing waits
}

TEST_F(EngineEarly, ALoopThatMakesAndDropsObjectsKeepsFewOfThem)
{
    static int live;
    static int most;
    live = most = 0;
    constexpr JSClass kCounted = {
        "Counted", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, [](JSContext* c, JSObject* obj) {
            if (!JS_GetPrivate(c, obj))
                return;
            JS_RemoveNativeMemory(c, obj, 100000);
            JS_CallAfterNative(
                c, [](void*) { --live; }, nullptr);
        }};
    const auto construct = [](JSContext* c, JSObject* obj, uintN, jsval*, jsval*) -> JSBool {
        JS_SetPrivate(c, obj, &live);
        JS_AddNativeMemory(c, obj, 100000);
        most = std::max(most, ++live);
        return JS_TRUE;
    };
    JS_InitClass(cx, JS_GetGlobalObject(cx), nullptr, &kCounted, construct, 0, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(Run("for (var i = 0; i < 20000; i++) new Counted()"));
    EXPECT_LT(most, 5000);
}

} // namespace
