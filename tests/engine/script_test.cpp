#include "engine_fixture.h"

namespace
{

using EngineScript = EngineTest;

TEST_F(EngineScript, ATextEvaluatesToItsLastValue)
{
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(Run("var a = 40; a + 2", &v));
    EXPECT_EQ(v, INT_TO_JSVAL(42));
    EXPECT_EQ(Show("'a' + 1.5"), "a1.5");
    EXPECT_EQ(Show(""), "undefined");
    EXPECT_TRUE(Run("1", nullptr));
}

TEST_F(EngineScript, WideAndSixteenBitTextsAreTheSameScript)
{
    const std::wstring text = L"'\U0001F600'.length + '\x20AC'";
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(JS_EvaluateWide(cx, nullptr, text.data(), text.size(), "local", 0, &v));
    EXPECT_EQ(ShowWord(v), "2\xE2\x82\xAC");
    const std::wstring lengthy = L"'" + std::wstring(5000, L'\U0001F600') + L"'.length";
    ASSERT_TRUE(JS_EvaluateWide(cx, nullptr, lengthy.data(), lengthy.size(), "local", 0, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(10000));
}

TEST_F(EngineScript, DeclarationsStayOnTheGlobal)
{
    ASSERT_TRUE(Run("var a = 1; function f() { return a + 1 } const k = 5; implicit = 7"));
    EXPECT_EQ(Show("f() + k + implicit"), "14");
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(JS_GetProperty(cx, JS_GetGlobalObject(cx), "a", &v));
    EXPECT_EQ(v, INT_TO_JSVAL(1));
    EXPECT_EQ(Show("this === globalThis"), "true");
}

TEST_F(EngineScript, TheGlobalGivenAsObjectIsTheGlobalScope)
{
    ASSERT_TRUE(Run("const seen = 3", nullptr, JS_GetGlobalObject(cx)));
    EXPECT_EQ(Show("seen"), "3");
    EXPECT_EQ(Show("seen", JS_GetGlobalObject(cx)), "3");
}

TEST_F(EngineScript, OnAnObjectNamesAreLookedUpOnItThenOnItsParents)
{
    constexpr JSClass kClass = {"Scope", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    JSObject* global = JS_GetGlobalObject(cx);
    JSObject* outer = JS_DefineObject(cx, global, "outer", &kClass, nullptr, 0);
    JSObject* inner = JS_DefineObject(cx, outer, "inner", &kClass, nullptr, 0);
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(JS_GetParent(cx, inner), outer);
    EXPECT_EQ(JS_GetParent(cx, outer), global);
    EXPECT_EQ(JS_GetParent(cx, global), nullptr);
    ASSERT_TRUE(Run("var g = 'g', o = 'g', i = 'g'; outer.o = 'o'; outer.i = 'o'; outer.inner.i = 'i'"));
    EXPECT_EQ(Show("g + o + i", inner), "goi");
    EXPECT_EQ(Show("g + o + i", outer), "goo");
    EXPECT_EQ(Show("var made = 1; function f() { return i } loose = 2; this === outer.inner", inner), "true");
    EXPECT_EQ(Show("outer.inner.made + outer.inner.f() + loose + typeof made"), "1i2undefined");
}

TEST_F(EngineScript, ARingOfParentsIsAnErrorAndNoHang)
{
    constexpr JSClass kClass = {"Scope", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    JSObject* a = JS_DefineObject(cx, JS_GetGlobalObject(cx), "a", &kClass, nullptr, 0);
    JSObject* b = JS_DefineObject(cx, a, "b", &kClass, nullptr, 0);
    ASSERT_TRUE(JS_SetParent(cx, a, b));
    EXPECT_EQ(Show("1", b), "!Error: too many parent objects");
}

TEST_F(EngineScript, WithoutAGlobalNothingIsEvaluated)
{
    JSObject* global = JS_GetGlobalObject(cx);
    JS_SetGlobalObject(cx, nullptr);
    EXPECT_EQ(JS_GetGlobalObject(cx), nullptr);
    EXPECT_EQ(Show("1"), "!Error: the context has no global object");
    EXPECT_EQ(ShowWord(INT_TO_JSVAL(5)), "5");
    JS_SetGlobalObject(cx, global);
    EXPECT_EQ(Show("1"), "1");
}

TEST_F(EngineScript, OnlyGlobalsCanBeSetAsGlobal)
{
    JSObject* global = JS_GetGlobalObject(cx);
    JS_SetGlobalObject(cx, JS_NewObject(cx, nullptr, nullptr, nullptr));
    EXPECT_EQ(JS_GetGlobalObject(cx), global);
    EXPECT_EQ(TakeMisuse().size(), 1u);
}

TEST_F(EngineScript, ACompiledScriptRunsAgainAndAgain)
{
    const std::u16string text = u"n = (typeof n == 'undefined' ? 0 : n) + 1";
    JSScript* script = JS_CompileUCScript(cx, nullptr, text.data(), text.size(), "file.js", 7);
    ASSERT_NE(script, nullptr);
    EXPECT_STREQ(JS_GetScriptFilename(cx, script), "file.js");
    EXPECT_EQ(JS_PCToLineNumber(cx, script, nullptr), 7u);
    jsval v = JSVAL_VOID;
    for (int i = 1; i <= 3; ++i) {
        JS_GC(cx);
        ASSERT_TRUE(JS_ExecuteScript(cx, nullptr, script, &v));
        EXPECT_EQ(v, INT_TO_JSVAL(i));
    }
    JS_DestroyScript(cx, script);
}

TEST_F(EngineScript, AScriptCompiledForAnObjectRunsOnOthersToo)
{
    JSObject* a = JS_DefineObject(cx, JS_GetGlobalObject(cx), "a", nullptr, nullptr, 0);
    JSObject* b = JS_DefineObject(cx, JS_GetGlobalObject(cx), "b", nullptr, nullptr, 0);
    ASSERT_TRUE(Run("a.x = 1; b.x = 2"));
    JSScript* script = JS_CompileWide(cx, a, L"x * 10", 6, "local", 0);
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(JS_ExecuteScript(cx, a, script, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(10));
    ASSERT_TRUE(JS_ExecuteScript(cx, b, script, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(20));
}

TEST_F(EngineScript, FunctionsAreCalledWithArgumentsAndThis)
{
    ASSERT_TRUE(Run("function f(a, b) { return this.base + a + b } var o = {base: 100}, base = 1000"));
    jsval f = JSVAL_VOID;
    jsval o = JSVAL_VOID;
    ASSERT_TRUE(JS_GetProperty(cx, JS_GetGlobalObject(cx), "f", &f));
    ASSERT_TRUE(JS_GetProperty(cx, JS_GetGlobalObject(cx), "o", &o));
    JSFunction* fun = JS_ValueToFunction(cx, f);
    ASSERT_NE(fun, nullptr);
    EXPECT_TRUE(JS_ObjectIsFunction(cx, JS_GetFunctionObject(fun)));
    EXPECT_FALSE(JS_ObjectIsFunction(cx, JSVAL_TO_OBJECT(o)));
    EXPECT_STREQ(JS_GetFunctionName(fun), "f");
    jsval argv[] = {INT_TO_JSVAL(1), INT_TO_JSVAL(2)};
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(JS_CallFunction(cx, JSVAL_TO_OBJECT(o), fun, 2, argv, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(103));
    ASSERT_TRUE(JS_CallFunction(cx, nullptr, fun, 2, argv, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(1003));
    ASSERT_TRUE(JS_CallFunctionName(cx, nullptr, "f", 2, argv, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(1003));
}

TEST_F(EngineScript, AFunctionWithoutANameIsAnonymous)
{
    jsval f = JSVAL_VOID;
    ASSERT_TRUE(Run("(function () {})", &f));
    EXPECT_STREQ(JS_GetFunctionName(JS_ValueToFunction(cx, f)), "anonymous");
    const std::wstring text = L"(function \xE9"
                              L"less() {})";
    ASSERT_TRUE(JS_EvaluateWide(cx, nullptr, text.data(), text.size(), "local", 0, &f));
    EXPECT_STREQ(JS_GetFunctionName(JS_ValueToFunction(cx, f)), "\xC3\xA9less");
}

TEST_F(EngineScript, WhatIsNoFunctionIsATypeError)
{
    EXPECT_EQ(JS_ValueToFunction(cx, INT_TO_JSVAL(3)), nullptr);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message.substr(0, 10), "TypeError:");
    EXPECT_FALSE(JS_CallFunctionName(cx, nullptr, "missing", 0, nullptr, nullptr));
    EXPECT_EQ(reports.size(), 2u);
}

TEST_F(EngineScript, PromiseJobsRunWhenTheOutermostCallEnds)
{
    ASSERT_TRUE(Run("var log = ''; Promise.resolve().then(() => log += 'job '); log += 'script '"));
    EXPECT_EQ(Show("log"), "script job ");
    ASSERT_TRUE(Run("async function g() { await 0; log += 'async' } g(); undefined"));
    EXPECT_EQ(Show("log"), "script job async");
}

JSBool RecordFrames(JSContext* cx, JSObject*, uintN, jsval*, jsval* rval)
{
    std::string text;
    JSStackFrame* frame = nullptr;
    while (JS_FrameIterator(cx, &frame)) {
        JSScript* script = JS_GetFrameScript(cx, frame);
        text += JS_GetScriptFilename(cx, script);
        text += ":" + std::to_string(JS_PCToLineNumber(cx, script, JS_GetFramePC(cx, frame))) + " ";
    }
    *rval = STRING_TO_JSVAL(JS_NewStringCopyZ(cx, text.c_str()));
    return JS_TRUE;
}

TEST_F(EngineScript, TheStackIsWalkedFromTheInnermostFrameWithTheGivenLines)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "frames", RecordFrames, 0, 0);
    EXPECT_EQ(Show("function f() {\n  return frames();\n}\nf()"), "local:1 local:3 ");
    JSStackFrame* frame = nullptr;
    EXPECT_EQ(JS_FrameIterator(cx, &frame), nullptr);
}

JSBool EvaluateNested(JSContext* cx, JSObject*, uintN, jsval* argv, jsval* rval)
{
    JSString* text = JS_ValueToString(cx, argv[0]);
    return JS_EvaluateUCScript(cx, nullptr, JS_GetStringChars(text), static_cast<uintN>(JS_GetStringLength(text)),
                               "nested", 100, rval);
}

TEST_F(EngineScript, ANativeEvaluatesInTheMiddleOfAScript)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "run", EvaluateNested, 1, 0);
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "frames", RecordFrames, 0, 0);
    EXPECT_EQ(Show("run('1 + 1') + 1"), "3");
    EXPECT_EQ(Show("\nrun('frames()')"), "nested:100 local:1 ");
    EXPECT_EQ(Show("try { run('nothing') } catch (e) { 'caught ' + e.message }"), "caught nothing is not defined");
    EXPECT_TRUE(reports.empty());
}

TEST_F(EngineScript, OverDeepRecursionIsAnOrdinaryError)
{
    EXPECT_EQ(Show("function f() { return f() + 1 } f()"), "!InternalError: too much recursion");
    EXPECT_EQ(Show("try { f() } catch (e) { 'caught' }"), "caught");
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "run", EvaluateNested, 1, 0);
    EXPECT_EQ(Show("function g() { run('g()') } try { g() } catch (e) { String(e) }"),
              "InternalError: too much recursion");
    const std::string deep = std::string(200000, '(') + "1" + std::string(200000, ')');
    EXPECT_EQ(Show(deep.c_str()).substr(0, 1), "!");
    EXPECT_EQ(Show("1"), "1");
}

} // namespace
