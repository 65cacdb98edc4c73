#include "tests/script/script_fixture.h"

#include <climits>
#include <string>

using namespace std::string_literals;

namespace
{

class ScriptCallTest : public ScriptTest
{
protected:
    /// Defines functions in the global object.
    void Run(const wxString& text) { ASSERT_TRUE(script.Evaluate(text, nullptr)); }
    JSFunction* Function(const wxString& text) { return JS_ValueToFunction(Context(), Value(text)); }
};

// Looking a function up.

TEST_F(ScriptCallTest, AFunctionOfTheObjectIsFound)
{
    Run("function f() {} var g = () => 1; class C {}");
    EXPECT_TRUE(script.HasFunction("f", Global()));
    EXPECT_TRUE(script.HasFunction("g", Global()));
    EXPECT_TRUE(script.HasFunction("parseInt", Global()));
}

TEST_F(ScriptCallTest, AFunctionOfAnotherNameIsNotFound)
{
    Run("function f() {}");
    EXPECT_FALSE(script.HasFunction("F", Global()));
    EXPECT_FALSE(script.HasFunction("", Global()));
    EXPECT_FALSE(script.HasFunction("f ", Global()));
}

TEST_F(ScriptCallTest, APropertyThatIsNoFunctionIsNone)
{
    Run("var n = 1, o = {}, s = 'f', a = [], z = null, u;");
    for (const char* name : {"n", "o", "s", "a", "z", "u"})
        EXPECT_FALSE(script.HasFunction(name, Global())) << name;
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptCallTest, AnInheritedFunctionIsFound)
{
    EXPECT_TRUE(script.HasFunction("toString", Global()));
}

TEST_F(ScriptCallTest, ANameOutsideAsciiIsFound)
{
    Run(L"function \u00e9\u0416\U00020000() {}");
    EXPECT_TRUE(script.HasFunction(L"\u00e9\u0416\U00020000", Global()));
    EXPECT_FALSE(script.HasFunction(L"\u00e9\u0416", Global()));
}

TEST_F(ScriptCallTest, ANullLinkHasNoFunctionsEvenOfTheGlobal)
{
    Run("function f() {}");
    EXPECT_FALSE(script.HasFunction("f", nullptr));
    EXPECT_FALSE(script.Call("f", nullptr));
    EXPECT_FALSE(script.Call("f", nullptr, wxString("x")));
    EXPECT_FALSE(script.Call("f", nullptr, Global()));
    EXPECT_FALSE(script.CallWithRet("f", nullptr, nullptr, 0, nullptr));
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptCallTest, ALinkWithoutObjectHasNoFunctions)
{
    qxjsMinimal unborn;
    EXPECT_FALSE(script.HasFunction("toString", unborn.GetJSLink()));
    EXPECT_FALSE(script.Call("toString", unborn.GetJSLink()));
}

TEST_F(ScriptCallTest, AMissingFunctionFailsUnreported)
{
    int integer = 0;
    jsval value = JSVAL_VOID;
    EXPECT_FALSE(script.Call("missing", Global()));
    EXPECT_FALSE(script.Call("missing", Global(), wxString("x")));
    EXPECT_FALSE(script.Call("missing", Global(), Global()));
    EXPECT_FALSE(script.CallWithRet("missing", Global(), integer));
    EXPECT_FALSE(script.CallWithRet("missing", Global(), &value, 0, nullptr));
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptCallTest, ANullFunctionFailsUnreported)
{
    jsval value = JSVAL_VOID;
    EXPECT_FALSE(script.CallWithRet(static_cast<JSFunction*>(nullptr), Global(), &value, 0, nullptr));
    EXPECT_TRUE(log.Records().empty());
}

// Arguments and `this`.

TEST_F(ScriptCallTest, ACallWithoutArgumentsPassesNone)
{
    Run("var seen; function f() { seen = arguments.length; }");
    EXPECT_TRUE(script.Call("f", Global()));
    EXPECT_EQ(Show("seen"), "0");
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptCallTest, ATextArrivesAsItIs)
{
    Run("var seen, count; function f(text) { seen = text; count = arguments.length; }");
    for (const std::wstring& text :
         {L""s, L"abc"s, L"\u00e9\u0416\U0001F600"s, L"a\0b"s, std::wstring(1, wchar_t(0xD83D)), L"100 %s"s}) {
        EXPECT_TRUE(script.Call("f", Global(), wxString(text)));
        EXPECT_EQ(Show("seen"), wxString(text));
        EXPECT_EQ(Show("typeof seen + count"), "string1");
    }
}

TEST_F(ScriptCallTest, ALinkArrivesAsItsObject)
{
    qxjsMinimal child;
    ASSERT_TRUE(script.CreateChild(child.GetJSLink(), Global(), "child", false, false));
    Run("var seen; function f(object) { seen = (object === child) + ' ' + arguments.length; }");
    EXPECT_TRUE(script.Call("f", Global(), child.GetJSLink()));
    EXPECT_EQ(Show("seen"), "true 1");
}

TEST_F(ScriptCallTest, ANullLinkArrivesAsTheNullObject)
{
    Run("var seen; function f(object) { seen = (object === null) + ' ' + arguments.length; }");
    EXPECT_TRUE(script.Call("f", Global(), static_cast<CJScriptLink*>(nullptr)));
    EXPECT_EQ(Show("seen"), "true 1");
}

TEST_F(ScriptCallTest, ValuesArriveInOrder)
{
    Run("function f() { return Array.prototype.join.call(arguments, '|'); }");
    jsval arguments[] = {INT_TO_JSVAL(7), JSVAL_TRUE, JSVAL_NULL, JSVAL_VOID, Value("'text'"), Value("0.5")};
    jsval result = JSVAL_VOID;
    EXPECT_TRUE(script.CallWithRet("f", Global(), &result, 6, arguments));
    EXPECT_EQ(script.JSValToString(result), "7|true|||text|0.5");
}

TEST_F(ScriptCallTest, TheObjectOfTheLinkIsThis)
{
    qxjsMinimal child;
    ASSERT_TRUE(script.CreateChild(child.GetJSLink(), Global(), "child", false, false));
    Run("child.f = function() { return this === child; };");
    jsval result = JSVAL_VOID;
    EXPECT_TRUE(script.CallWithRet("f", child.GetJSLink(), &result, 0, nullptr));
    EXPECT_EQ(result, JSVAL_TRUE);
    EXPECT_FALSE(script.Call("f", Global()));
}

TEST_F(ScriptCallTest, AFunctionItselfIsCalledOnTheObjectOfTheLink)
{
    qxjsMinimal child;
    ASSERT_TRUE(script.CreateChild(child.GetJSLink(), Global(), "child", false, false));
    JSFunction* function = Function("(function(n) { return this === child ? n : -1; })");
    ASSERT_NE(function, nullptr);
    jsval argument = INT_TO_JSVAL(5);
    jsval result = JSVAL_VOID;
    EXPECT_TRUE(script.CallWithRet(function, child.GetJSLink(), &result, 1, &argument));
    EXPECT_EQ(result, INT_TO_JSVAL(5));
}

TEST_F(ScriptCallTest, NoPlaceForTheResultIsNeeded)
{
    Run("var calls = 0; function f() { return ++calls; }");
    EXPECT_TRUE(script.CallWithRet("f", Global(), nullptr, 0, nullptr));
    EXPECT_TRUE(script.CallWithRet(Function("f"), Global(), nullptr, 0, nullptr));
    EXPECT_EQ(Show("calls"), "2");
}

// Results.

TEST_F(ScriptCallTest, AnIntegerResultIsTheWholeWordWhereAnEvaluationGivesItsPayload)
{
    Run("function f() { return 5; }");
    int called = 0;
    int evaluated = 0;
    EXPECT_TRUE(script.CallWithRet("f", Global(), called));
    EXPECT_TRUE(script.Evaluate("f()", nullptr, evaluated));
    EXPECT_EQ(called, INT_TO_JSVAL(5));
    EXPECT_EQ(called, 11);
    EXPECT_EQ(evaluated, 5);
}

struct WordRow
{
    const char* name;
    const char* value;
    int word;
};

class ScriptCallWordTest : public ScriptTest, public ::testing::WithParamInterface<WordRow>
{};

TEST_P(ScriptCallWordTest, OfTheResultIsTheOutput)
{
    ASSERT_TRUE(script.Evaluate(wxString("function f() { return ") + GetParam().value + "; }", nullptr));
    int out = 4711;
    EXPECT_TRUE(script.CallWithRet("f", Global(), out));
    EXPECT_EQ(out, GetParam().word);
}

INSTANTIATE_TEST_SUITE_P(Of, ScriptCallWordTest,
                         ::testing::Values(WordRow{"Zero", "0", 1}, WordRow{"One", "1", 3},
                                           WordRow{"MinusOne", "-1", -1}, WordRow{"True", "true", 14},
                                           WordRow{"False", "false", 6}, WordRow{"Null", "null", 0},
                                           WordRow{"LargestInteger", "1073741823", INT_MAX},
                                           WordRow{"SmallestInteger", "-1073741823", INT_MIN + 3},
                                           WordRow{"Undefined", "undefined", INT_MIN + 1},
                                           WordRow{"Nothing", "", INT_MIN + 1}),
                         NameOfRow<WordRow>);

TEST_F(ScriptCallTest, AResultWordCanBeReadAfterTheCall)
{
    Run("function text() { return 'te' + 'xt'; } function half() { return 0.5; } function self() { return this; }");
    jsval value = JSVAL_VOID;
    EXPECT_TRUE(script.CallWithRet("text", Global(), &value, 0, nullptr));
    EXPECT_TRUE(JSVAL_IS_STRING(value));
    EXPECT_EQ(script.JSValToString(value), "text");
    EXPECT_TRUE(script.CallWithRet("half", Global(), &value, 0, nullptr));
    ASSERT_TRUE(JSVAL_IS_DOUBLE(value));
    EXPECT_EQ(*JSVAL_TO_DOUBLE(value), 0.5);
    EXPECT_TRUE(script.CallWithRet("self", Global(), &value, 0, nullptr));
    EXPECT_EQ(value, OBJECT_TO_JSVAL(Global()->GetJSObject()));
}

// Failures.

TEST_F(ScriptCallTest, AFailingCallIsReportedOnceWithoutSource)
{
    Run("function f() {\n  missing;\n}");
    EXPECT_FALSE(script.Call("f", Global()));
    EXPECT_EQ(Reports(), Texts{"CJScript ==> ReferenceError: missing is not defined\n"});
    EXPECT_EQ(log.Records().size(), 1u);
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->line, 1);
}

TEST_F(ScriptCallTest, EveryOverloadReportsItsFailureOnce)
{
    Run("function f() { missing; }");
    int integer = 0;
    jsval value = JSVAL_VOID;
    EXPECT_FALSE(script.Call("f", Global(), wxString("x")));
    EXPECT_FALSE(script.Call("f", Global(), Global()));
    EXPECT_FALSE(script.CallWithRet("f", Global(), integer));
    EXPECT_FALSE(script.CallWithRet("f", Global(), &value, 0, nullptr));
    EXPECT_FALSE(script.CallWithRet(Function("f"), Global(), &value, 0, nullptr));
    EXPECT_EQ(Reports(), Texts(5, "CJScript ==> ReferenceError: missing is not defined\n"));
}

TEST_F(ScriptCallTest, TheResultOfAFailingCallIsVoid)
{
    Run("function f() { missing; }");
    jsval value = INT_TO_JSVAL(1);
    EXPECT_FALSE(script.CallWithRet("f", Global(), &value, 0, nullptr));
    EXPECT_EQ(value, JSVAL_VOID);
    value = INT_TO_JSVAL(1);
    EXPECT_FALSE(script.CallWithRet(Function("f"), Global(), &value, 0, nullptr));
    EXPECT_EQ(value, JSVAL_VOID);
}

TEST_F(ScriptCallTest, ASilentFailureIsReportedByTheNameCalled)
{
    Define("stop", [](JSContext*, uintN, jsval*, jsval*) { return JS_FALSE; });
    Run("function f() { stop(); }");
    EXPECT_FALSE(script.Call("f", Global()));
    EXPECT_EQ(Reports(), Texts{"CJScript f\n"});
}

TEST_F(ScriptCallTest, ASilentFailureOfAFunctionItselfIsReportedByItsName)
{
    Define("stop", [](JSContext*, uintN, jsval*, jsval*) { return JS_FALSE; });
    EXPECT_FALSE(script.CallWithRet(Function(L"(function na\u00efve() { stop(); })"), Global(), nullptr, 0, nullptr));
    EXPECT_FALSE(script.CallWithRet(Function("(function() { stop(); })"), Global(), nullptr, 0, nullptr));
    EXPECT_EQ(Reports(), (Texts{L"CJScript na\u00efve\n", "CJScript anonymous\n"}));
}

TEST_F(ScriptCallTest, TheNextCallForgetsTheErrorsOfTheLast)
{
    Run("function f() { missing; } function g() {}");
    EXPECT_FALSE(script.Call("f", Global()));
    EXPECT_TRUE(script.Call("g", Global()));
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_FALSE(script.Call("f", Global()));
    EXPECT_FALSE(script.Call("absent", Global()));
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_FALSE(script.Call("f", Global()));
    EXPECT_FALSE(script.CallWithRet(static_cast<JSFunction*>(nullptr), Global(), nullptr, 0, nullptr));
    EXPECT_EQ(script.GetErrorCount(), 0);
}

TEST_F(ScriptCallTest, APropertyThatThrowsWhenReadIsNoFunction)
{
    Run("Object.defineProperty(this, 'f', { get: function() { throw new Error('no'); } });");
    EXPECT_FALSE(script.HasFunction("f", Global()));
    EXPECT_FALSE(script.Call("f", Global()));
    EXPECT_TRUE(log.Records().empty());
    EXPECT_EQ(Show("1 + 1"), "2");
}

// Values.

TEST_F(ScriptCallTest, AValueBecomesTheTextScriptMakesOfIt)
{
    jsval value = Value("[1, 'x', null]");
    EXPECT_EQ(script.JSValToString(value), "1,x,");
    value = Value(L"'\u0416\U0001F600'");
    EXPECT_EQ(script.JSValToString(value), L"\u0416\U0001F600");
    value = JSVAL_VOID;
    EXPECT_EQ(script.JSValToString(value), "undefined");
    value = JSVAL_NULL;
    EXPECT_EQ(script.JSValToString(value), "null");
    value = INT_TO_JSVAL(-3);
    EXPECT_EQ(script.JSValToString(value), "-3");
}

TEST_F(ScriptCallTest, AValueThatRefusesToBecomeATextGivesNone)
{
    jsval value = Value("({ toString: function() { throw 1; } })");
    EXPECT_EQ(script.JSValToString(value), "");
}

} // namespace
