#include "script/script_class.h"
#include "tests/script/script_fixture.h"

namespace
{

class ScriptExecuteTest : public ScriptTest
{
protected:
    /// Makes `hide()` a function that hides the errors of the running script.
    void DefineHide()
    {
        Define("hide", [this](JSContext*, uintN, jsval*, jsval*) {
            script.HideError();
            return JS_TRUE;
        });
    }

    wxString report{"before"};
};

TEST_F(ScriptExecuteTest, ATextThatRunsIsTrueAndLeavesTheReportAlone)
{
    EXPECT_TRUE(script.Execute("var x = 6 * 7;", nullptr, &report));
    EXPECT_EQ(report, "before");
    EXPECT_TRUE(log.Records().empty());
    EXPECT_EQ(Show("x"), "42");
}

TEST_F(ScriptExecuteTest, AnEmptyTextIsTrue)
{
    EXPECT_TRUE(script.Execute("", nullptr, &report));
    EXPECT_EQ(report, "before");
}

TEST_F(ScriptExecuteTest, WithoutGlobalItFailsUnreported)
{
    CJScript bare(nullptr);
    EXPECT_FALSE(bare.Execute("1", nullptr, &report));
    EXPECT_FALSE(bare.Execute("", nullptr, &report));
    EXPECT_EQ(report, "before");
    EXPECT_EQ(bare.GetErrorCount(), 0);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptExecuteTest, AFailureIsLoggedTwiceAndHandedOut)
{
    EXPECT_FALSE(script.Execute("missing;", nullptr, &report));
    EXPECT_EQ(report, "missing;\n==> ReferenceError: missing is not defined\n");
    EXPECT_EQ(Reports(), Texts(2, "CJScript missing;\n==> ReferenceError: missing is not defined\n"));
    EXPECT_EQ(log.Records().size(), 2u);
    EXPECT_EQ(script.GetErrorCount(), 1);
}

TEST_F(ScriptExecuteTest, AFailureNeedsNoPlaceForItsReport)
{
    EXPECT_FALSE(script.Execute("missing;", nullptr, nullptr));
    EXPECT_EQ(Reports().size(), 2u);
}

TEST_F(ScriptExecuteTest, ItRunsOnTheObjectOfItsLink)
{
    qxjsMinimal child;
    ASSERT_TRUE(script.CreateChild(child.GetJSLink(), Global(), "child", false, false));
    EXPECT_TRUE(script.Execute("var own = 1;", child.GetJSLink(), nullptr));
    EXPECT_EQ(Show("typeof own + ' ' + child.own"), "undefined 1");
}

TEST_F(ScriptExecuteTest, AFailureAfterHideErrorIsTrueAndLeavesTheReportAlone)
{
    DefineHide();
    EXPECT_TRUE(script.Execute("hide();\nmissing;", nullptr, &report));
    EXPECT_EQ(report, "before");
    EXPECT_EQ(script.GetErrorCount(), 0);
}

TEST_F(ScriptExecuteTest, AFailureAfterHideErrorIsLoggedOnceWithoutItsMessage)
{
    DefineHide();
    EXPECT_TRUE(script.Execute("hide();\nmissing;", nullptr, &report));
    EXPECT_EQ(Reports(), Texts{"CJScript hide();\n"});
}

TEST_F(ScriptExecuteTest, TheNextExecuteEndsTheHiding)
{
    script.HideError();
    EXPECT_FALSE(script.Execute("missing;", nullptr, &report));
    EXPECT_EQ(report, "missing;\n==> ReferenceError: missing is not defined\n");
}

TEST_F(ScriptExecuteTest, AnEmptyTextDoesNotEndTheHiding)
{
    script.HideError();
    EXPECT_TRUE(script.Execute("", nullptr, &report));
    EXPECT_FALSE(script.Evaluate("missing;", nullptr));
    EXPECT_EQ(script.GetErrorCount(), 0);
}

TEST_F(ScriptExecuteTest, HidingLastsThroughEvaluations)
{
    script.HideError();
    EXPECT_FALSE(script.Evaluate("missing;", nullptr));
    EXPECT_FALSE(script.Evaluate("absent;", nullptr));
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_EQ(Reports(), (Texts{"CJScript missing;\n", "CJScript absent;\n"}));
}

TEST_F(ScriptExecuteTest, HidingASuccessChangesNothing)
{
    DefineHide();
    EXPECT_TRUE(script.Execute("hide(); var x = 1;", nullptr, &report));
    EXPECT_EQ(report, "before");
    EXPECT_TRUE(log.Records().empty());
}

// Errors that natives throw.

class ScriptDeclareErrorTest : public ScriptExecuteTest
{
protected:
    void DefineFail(const wxString& message)
    {
        Define("fail", [message](JSContext* cx, uintN, jsval*, jsval*) {
            CJScriptLinkClass::DeclareError(cx, message);
            return JS_FALSE;
        });
    }
};

TEST_F(ScriptDeclareErrorTest, AnUncaughtOneIsReportedAtTheCall)
{
    DefineFail("No such thing");
    EXPECT_FALSE(script.Execute("var x = 1;\n  fail();\nx = 2;", nullptr, &report));
    EXPECT_EQ(report, "  fail();\n==> Error: No such thing\n");
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->line, 1);
    EXPECT_EQ(Show("x"), "1");
}

TEST_F(ScriptDeclareErrorTest, ACaughtOneIsAnErrorObjectAndReportsNothing)
{
    DefineFail("No such thing");
    EXPECT_EQ(Show("try { fail(); } catch (e) { (e instanceof Error) + ', ' + e.name + ', ' + e.message; }"),
              "true, Error, No such thing");
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptDeclareErrorTest, TheMessageIsTakenAsItIs)
{
    for (const wxString& message :
         {wxString("100 %s of %d%n"), wxString(L"\u0416\u4e2d \U0001F600"), wxString("a\nb")}) {
        ForgetNatives();
        DefineFail(message);
        EXPECT_EQ(Show("try { fail(); } catch (e) { e.message; }"), message);
        EXPECT_FALSE(script.Execute("fail();", nullptr, &report));
        EXPECT_EQ(report, "fail();\n==> Error: " + message + "\n");
    }
}

TEST_F(ScriptDeclareErrorTest, ANativeThatFailsSilentlyEndsTheScript)
{
    Define("stop", [](JSContext*, uintN, jsval*, jsval*) { return JS_FALSE; });
    EXPECT_FALSE(
        script.Execute("var after = 0;\ntry { stop(); } catch (e) { after = 1; }\nafter = 2;", nullptr, &report));
    EXPECT_EQ(report, "var after = 0;\n");
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_EQ(Show("after"), "0");
}

// Promises.

TEST_F(ScriptExecuteTest, ARejectionThatNothingHandlesIsLogged)
{
    EXPECT_TRUE(script.Execute("Promise.reject(new TypeError('no'));"
                               "async function f() { throw 5; } f();"
                               "Promise.reject(1).catch(function () {});"
                               "var late = Promise.reject(2); Promise.resolve().then(function () {"
                               "late.catch(function () {}); });",
                               nullptr, &report));
    EXPECT_EQ(log.Errors(), (Texts{"Unhandled promise rejection: TypeError: no",
                                   "Unhandled promise rejection: uncaught exception: 5"}));
    EXPECT_TRUE(Reports().empty());
    log.Clear();
    EXPECT_TRUE(script.Execute("1", nullptr, &report));
    EXPECT_TRUE(log.Records().empty());
}

// What is thrown.

struct ThrownRow
{
    const char* name;
    std::wstring text;
    std::wstring message;
    int type;
};

class ScriptThrownTest : public ScriptTest, public ::testing::WithParamInterface<ThrownRow>
{};

TEST_P(ScriptThrownTest, IsReportedWithItsText)
{
    EXPECT_FALSE(script.Evaluate(wxString(GetParam().text), nullptr));
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, wxString(GetParam().message));
    EXPECT_EQ(script.GetError(0)->type, GetParam().type);
    EXPECT_EQ(Reports(),
              Texts{"CJScript " + wxString(GetParam().text) + "\n==> " + wxString(GetParam().message) + "\n"});
}

INSTANTIATE_TEST_SUITE_P(
    Value, ScriptThrownTest,
    ::testing::Values(ThrownRow{"Error", L"throw new Error('no')", L"Error: no", 2},
                      ThrownRow{"RangeError", L"[].length = -1", L"RangeError: invalid array length", 2},
                      ThrownRow{"TypeError", L"null.x", L"TypeError: null has no properties", 2},
                      ThrownRow{"MessageWithAPercent", L"throw new Error('100 %s %d')", L"Error: 100 %s %d", 2},
                      ThrownRow{"NonAsciiMessage", L"throw new Error('\u00e9\u0416\U0001F600')",
                                L"Error: \u00e9\u0416\U0001F600", 2},
                      ThrownRow{"NonAsciiName", L"\u00e9\u0416", L"ReferenceError: \u00e9\u0416 is not defined", 2}),
    NameOfRow<ThrownRow>);

TEST_F(ScriptExecuteTest, ASyntaxErrorFoundWhileRunningIsAnException)
{
    EXPECT_FALSE(script.Execute("eval('1 +')", nullptr, &report));
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, "SyntaxError: expected expression, got end of script");
    EXPECT_EQ(script.GetError(0)->type, 2);
}

TEST_F(ScriptExecuteTest, AThrownTextIsReportedAsAnUncaughtException)
{
    EXPECT_FALSE(script.Execute("throw 'sadly'", nullptr, &report));
    EXPECT_EQ(report, "throw 'sadly'\n==> uncaught exception: sadly\n");
}

TEST_F(ScriptExecuteTest, AThrownNumberIsReportedAsAnUncaughtException)
{
    EXPECT_FALSE(script.Execute("throw 5", nullptr, &report));
    EXPECT_EQ(report, "throw 5\n==> uncaught exception: 5\n");
}

TEST_F(ScriptExecuteTest, AThrownObjectThatRefusesToBecomeATextIsReportedAllTheSame)
{
    EXPECT_FALSE(script.Execute("throw { toString: function() { throw 1; } }", nullptr, &report));
    EXPECT_EQ(report, "throw { toString: function() { throw 1; } }\n"
                      "==> uncaught exception: unknown (can't convert to string)\n");
}

} // namespace
