#include "engine_fixture.h"

namespace
{

using EngineError = EngineTest;

TEST_F(EngineError, AnUncaughtExceptionReachesTheReporterOnceAtTheOutermostCall)
{
    EXPECT_FALSE(Run("\n\nfoo()"));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "ReferenceError: foo is not defined");
    EXPECT_EQ(reports[0].wide_message, L"ReferenceError: foo is not defined");
    EXPECT_EQ(reports[0].uc_message, u"foo is not defined");
    EXPECT_EQ(reports[0].file, "local");
    EXPECT_EQ(reports[0].line, 2u);
    EXPECT_EQ(reports[0].flags, JSREPORT_EXCEPTION);
    EXPECT_EQ(reports[0].column, 0);
    EXPECT_FALSE(JS_IsExceptionPending(cx));
}

TEST_F(EngineError, AParserErrorComesWithItsLineAndWithoutItsType)
{
    EXPECT_FALSE(Run("var ok;\n\n  var 5x = 1;\nok"));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "identifier starts immediately after numeric literal");
    EXPECT_EQ(reports[0].flags, JSREPORT_ERROR);
    EXPECT_EQ(reports[0].line, 2u);
    EXPECT_EQ(reports[0].source_line, "  var 5x = 1;");
    EXPECT_EQ(reports[0].column, 7);
}

TEST_F(EngineError, LinesCountFromTheGivenOne)
{
    EXPECT_FALSE(Run("\nfoo()", nullptr, nullptr, 40));
    EXPECT_FALSE(Run("\nfor (", nullptr, nullptr, 40));
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].line, 41u);
    EXPECT_EQ(reports[1].line, 41u);
}

TEST_F(EngineError, ASyntaxErrorOfEvalIsAnException)
{
    EXPECT_FALSE(Run("eval('for (;')"));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message.substr(0, 13), "SyntaxError: ");
    EXPECT_EQ(reports[0].flags, JSREPORT_EXCEPTION);
}

TEST_F(EngineError, AnythingCanBeThrown)
{
    EXPECT_EQ(Show("throw 'text'"), "!uncaught exception: text");
    EXPECT_EQ(Show("throw 5"), "!uncaught exception: 5");
    EXPECT_EQ(Show("throw null"), "!uncaught exception: null");
    EXPECT_EQ(Show("throw undefined"), "!uncaught exception: undefined");
    EXPECT_EQ(Show("throw {toString() { throw 1 }}"), "!uncaught exception: unknown (can't convert to string)");
    EXPECT_EQ(reports.size(), 5u);
}

TEST_F(EngineError, MessagesBeyondLatin1ArriveWholeInWideForm)
{
    const std::wstring text = L"throw new Error('\x20AC\xE9\U0001F600')";
    EXPECT_FALSE(JS_EvaluateWide(cx, nullptr, text.data(), text.size(), "local", 0, nullptr));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].wide_message, L"Error: \x20AC\xE9\U0001F600");
    EXPECT_EQ(reports[0].message, "Error: ?\xE9??");
}

JSBool Fail(JSContext* cx, JSObject*, uintN, jsval*, jsval*)
{
    JS_ReportError(cx, "bad %d of %s", 3, "n\xC3\xA9");
    return JS_FALSE;
}

JSBool FailSilently(JSContext*, JSObject*, uintN, jsval*, jsval*)
{
    return JS_FALSE;
}

// Evaluates a failing text, keeps what is pending, and returns whether the call failed.
JSBool Nested(JSContext* cx, JSObject*, uintN, jsval* argv, jsval* rval)
{
    const bool clear = JSVAL_IS_BOOLEAN(argv[0]) && JSVAL_TO_BOOLEAN(argv[0]);
    EXPECT_FALSE(JS_EvaluateUCScript(cx, nullptr, u"inner()", 7, "inner", 0, rval));
    EXPECT_TRUE(JS_IsExceptionPending(cx));
    jsval exception = JSVAL_VOID;
    EXPECT_TRUE(JS_GetPendingException(cx, &exception));
    JSErrorReport* report = JS_ErrorFromException(cx, exception);
    EXPECT_EQ(std::wstring(report ? report->widemessage : L"none"), L"ReferenceError: inner is not defined");
    if (!clear)
        return JS_FALSE;
    JS_ClearPendingException(cx);
    EXPECT_FALSE(JS_IsExceptionPending(cx));
    *rval = INT_TO_JSVAL(7);
    return JS_TRUE;
}

TEST_F(EngineError, ANativesErrorCanBeCaughtAndIsReportedWhenItIsNot)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "fail", Fail, 0, 0);
    EXPECT_EQ(Show("try { fail() } catch (e) { (e instanceof Error) + e.message }"), "truebad 3 of n\xC3\xA9");
    EXPECT_TRUE(reports.empty());
    EXPECT_FALSE(Run("\nfail()"));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "Error: bad 3 of n\xE9");
    EXPECT_EQ(reports[0].line, 1u);
}

TEST_F(EngineError, ANativeThatFailsWithoutAnExceptionEndsTheScriptUncatchably)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "die", FailSilently, 0, 0);
    EXPECT_FALSE(Run("var caught = false; try { die() } catch (e) { caught = true }"));
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(Show("caught"), "false");
}

TEST_F(EngineError, ANestedErrorIsPendingInsideAndReportedOutside)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "nested", Nested, 1, 0);
    EXPECT_EQ(Show("nested(true)"), "7");
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(Show("try { nested() } catch (e) { e.name }"), "ReferenceError");
    EXPECT_TRUE(reports.empty());
    EXPECT_FALSE(Run("nested()"));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "ReferenceError: inner is not defined");
}

JSContext* g_other = nullptr;

JSBool FailInOther(JSContext* cx, JSObject*, uintN, jsval* argv, jsval* rval)
{
    if (JSVAL_IS_INT(argv[0]))
        JS_SetPendingException(cx, argv[0]);
    EXPECT_FALSE(JS_EvaluateUCScript(g_other, nullptr, u"inner()", 7, "inner", 0, rval));
    EXPECT_FALSE(JS_IsExceptionPending(g_other) && JSVAL_IS_VOID(argv[0]));
    return JSVAL_IS_INT(argv[0]) ? JS_FALSE : JS_TRUE;
}

TEST_F(EngineError, AnotherContextsErrorIsItsOwnEvenInTheMiddleOfAScript)
{
    g_other = NewContext();
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "other", FailInOther, 1, 0);
    EXPECT_EQ(Show("other(); 'went on'"), "went on");
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "ReferenceError: inner is not defined");
    EXPECT_EQ(reports[0].file, "inner");
    // The exception on its way in this context is not touched by the other's.
    EXPECT_EQ(Show("try { other(5) } catch (e) { 'caught ' + e }"), "caught 5");
    EXPECT_EQ(reports.size(), 2u);
    JS_DestroyContext(g_other);
}

TEST_F(EngineError, WithNoScriptRunningAnErrorGoesToTheReporterAtOnce)
{
    JS_ReportError(cx, "from the host");
    JS_ReportErrorWide(cx, L"\x20AC", 1);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].message, "from the host");
    EXPECT_EQ(reports[0].flags, JSREPORT_ERROR);
    EXPECT_EQ(reports[1].wide_message, L"\x20AC");
    EXPECT_FALSE(JS_IsExceptionPending(cx));
}

TEST_F(EngineError, AnExceptionLeftPendingIsDroppedByTheNextEvaluation)
{
    JS_SetPendingException(cx, INT_TO_JSVAL(5));
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(JS_GetPendingException(cx, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(5));
    EXPECT_TRUE(Run("1"));
    EXPECT_FALSE(JS_IsExceptionPending(cx));
    EXPECT_FALSE(JS_GetPendingException(cx, &v));
    EXPECT_TRUE(reports.empty());
}

TEST_F(EngineError, OnlyErrorObjectsCarryAReport)
{
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(Run("\ntry { null.x } catch (e) { e }", &v));
    JSErrorReport* report = JS_ErrorFromException(cx, v);
    ASSERT_NE(report, nullptr);
    EXPECT_EQ(report->lineno, 1u);
    EXPECT_STREQ(report->filename, "local");
    EXPECT_EQ(report->flags, JSREPORT_EXCEPTION);
    EXPECT_EQ(JS_ErrorFromException(cx, INT_TO_JSVAL(1)), nullptr);
    EXPECT_EQ(JS_ErrorFromException(cx, JSVAL_NULL), nullptr);
    ASSERT_TRUE(Run("({message: 'x'})", &v));
    EXPECT_EQ(JS_ErrorFromException(cx, v), nullptr);
}

int g_hook_calls = 0;

JSTrapStatus CountThrow(JSContext* cx, JSScript*, jsbytecode*, jsval* rval, void* closure)
{
    ++g_hook_calls;
    EXPECT_EQ(closure, &g_hook_calls);
    EXPECT_EQ(*rval, INT_TO_JSVAL(9));
    EXPECT_TRUE(JS_IsExceptionPending(cx));
    return JSTRAP_RETURN;
}

TEST_F(EngineError, TheThrowHookSeesAnExceptionThatLeavesScriptAndChangesNothing)
{
    g_hook_calls = 0;
    ASSERT_TRUE(JS_SetThrowHook(JS_GetRuntime(cx), CountThrow, &g_hook_calls));
    EXPECT_FALSE(Run("throw 9"));
    EXPECT_EQ(g_hook_calls, 1);
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_TRUE(Run("try { throw 9 } catch (e) {}"));
    EXPECT_EQ(g_hook_calls, 1);
    JS_SetThrowHook(rt, nullptr, nullptr);
    EXPECT_FALSE(Run("throw 9"));
    EXPECT_EQ(g_hook_calls, 1);
}

void EvaluateInReporter(JSContext* cx, const char* message, JSErrorReport* report)
{
    EngineTest::Note(cx, message, report);
    jsval v = JSVAL_VOID;
    EXPECT_TRUE(JS_EvaluateUCScript(cx, nullptr, u"1 + 1", 5, "reporter", 0, &v));
    EXPECT_FALSE(JS_EvaluateUCScript(cx, nullptr, u"nothing", 7, "reporter", 0, &v));
}

TEST_F(EngineError, AReporterMayEvaluateAndItsOwnErrorsEndThere)
{
    JS_SetErrorReporter(cx, EvaluateInReporter);
    EXPECT_FALSE(Run("throw 1"));
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_FALSE(JS_IsExceptionPending(cx));
}

TEST_F(EngineError, WithoutAReporterErrorsAreDropped)
{
    EXPECT_EQ(JS_SetErrorReporter(cx, nullptr), &EngineTest::Note);
    EXPECT_FALSE(Run("throw 1"));
    EXPECT_FALSE(JS_IsExceptionPending(cx));
    EXPECT_TRUE(Run("1"));
}

JSBool ThrowCpp(JSContext*, JSObject*, uintN, jsval*, jsval*)
{
    throw std::runtime_error("from C++");
}

TEST_F(EngineError, ACppExceptionOfANativeBecomesAScriptError)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "boom", ThrowCpp, 0, 0);
    EXPECT_EQ(Show("try { boom() } catch (e) { e.message }"), "native function failed: from C++");
}

JSBool SucceedWithException(JSContext* cx, JSObject*, uintN, jsval*, jsval*)
{
    JS_SetPendingException(cx, INT_TO_JSVAL(1));
    return JS_TRUE;
}

TEST_F(EngineError, ANativeThatSucceedsThrowsNothing)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "fine", SucceedWithException, 0, 0);
    EXPECT_EQ(Show("fine(); 'on'"), "on");
    EXPECT_TRUE(reports.empty());
}

} // namespace
