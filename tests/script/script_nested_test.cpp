#include "script/script_class.h"
#include "tests/script/script_fixture.h"

namespace
{

/// Natives that use the script handle while a script runs.
class ScriptNestedTest : public ScriptTest
{
protected:
    /// Makes `inner()` a function that evaluates `text` and notes how that went.
    void DefineInner(const wxString& text)
    {
        Define("inner", [this, text](JSContext*, uintN, jsval*, jsval*) {
            innerSucceeded = script.Evaluate(text, nullptr, innerValue);
            return JS_TRUE;
        });
    }

    bool innerSucceeded = false;
    wxString innerValue{"before"};
    wxString report{"before"};
};

TEST_F(ScriptNestedTest, AnEvaluationInsideAScriptGivesItsValue)
{
    DefineInner("x + 1");
    int out = 0;
    EXPECT_TRUE(script.Evaluate("var x = 41; inner(); x", nullptr, out));
    EXPECT_TRUE(innerSucceeded);
    EXPECT_EQ(innerValue, "42");
    EXPECT_EQ(out, 41);
}

TEST_F(ScriptNestedTest, AFailureInsideIsReportedOnceAndTheOuterScriptGoesOn)
{
    DefineInner("\nmissing");
    EXPECT_EQ(Show("inner(); 'went on'"), "went on");
    EXPECT_FALSE(innerSucceeded);
    EXPECT_EQ(innerValue, "");
    ASSERT_EQ(log.Records().size(), 1u);
    EXPECT_EQ(Reports(), Texts{"CJScript missing\n==> missing is not defined\n"});
}

TEST_F(ScriptNestedTest, AFailureInsideCannotBeCaughtOutside)
{
    DefineInner("missing");
    EXPECT_EQ(Show("var caught = 'nothing'; try { inner(); } catch (e) { caught = e; } caught"), "nothing");
}

TEST_F(ScriptNestedTest, ASyntaxErrorInsideShowsItsLineAndCaret)
{
    DefineInner("var a;\n1 + ;");
    EXPECT_EQ(Show("inner(); 'went on'"), "went on");
    EXPECT_EQ(Reports(), Texts{"CJScript 1 + ;\n     ^\n==> expected expression, got ';'\n"});
}

TEST_F(ScriptNestedTest, AFailureInsideCanBeReadInside)
{
    int count = 0;
    wxString message;
    Define("inner", [&](JSContext*, uintN, jsval*, jsval*) {
        script.Evaluate("\n\n\nmissing", nullptr);
        count = script.GetErrorCount();
        message = count ? script.GetError(0)->msg + wxString::Format(" at %d", script.GetError(0)->line) : wxString();
        return JS_TRUE;
    });
    EXPECT_EQ(Show("inner()"), "undefined");
    EXPECT_EQ(count, 1);
    EXPECT_EQ(message, "missing is not defined at 3");
}

TEST_F(ScriptNestedTest, AFailureOutsideAfterOneInsideIsReportedToo)
{
    DefineInner("missing");
    EXPECT_FALSE(script.Evaluate("inner();\nabsent;", nullptr));
    EXPECT_EQ(Reports().size(), 2u);
    EXPECT_TRUE(Reports().back().EndsWith("==> ReferenceError: absent is not defined\n")) << Reports().back();
}

TEST_F(ScriptNestedTest, AnExecuteInsideLogsItsFailureTwiceAndHandsItOut)
{
    Define("inner", [this](JSContext*, uintN, jsval*, jsval*) {
        innerSucceeded = script.Execute("missing;", nullptr, &report);
        return JS_TRUE;
    });
    EXPECT_EQ(Show("inner(); 'went on'"), "went on");
    EXPECT_FALSE(innerSucceeded);
    EXPECT_EQ(report, "missing;\n==> missing is not defined\n");
    EXPECT_EQ(Reports(), Texts(2, "CJScript missing;\n==> missing is not defined\n"));
}

TEST_F(ScriptNestedTest, ACallInsideThatFailsIsReportedOnceAndConsumed)
{
    Define("inner", [this](JSContext*, uintN, jsval*, jsval*) {
        innerSucceeded = script.Call("f", Global());
        return JS_TRUE;
    });
    EXPECT_EQ(Show("function f() { missing; } inner(); 'went on'"), "went on");
    EXPECT_FALSE(innerSucceeded);
    EXPECT_EQ(Reports(), Texts{"CJScript ==> missing is not defined\n"});
}

TEST_F(ScriptNestedTest, AThrownTextInsideIsReportedWhereTheScriptStands)
{
    DefineInner("throw 'sadly'");
    EXPECT_EQ(Show("\n\ninner(); 'went on'"), "went on");
    EXPECT_EQ(Reports(), Texts{"CJScript local (2): \n"});
}

TEST_F(ScriptNestedTest, ASilentFailureInsideIsReportedWhereTheScriptStands)
{
    Define("stop", [](JSContext*, uintN, jsval*, jsval*) { return JS_FALSE; });
    DefineInner("stop()");
    EXPECT_EQ(Show("\ninner(); 'went on'"), "went on");
    EXPECT_FALSE(innerSucceeded);
    EXPECT_EQ(Reports(), Texts{"CJScript local (1): \n"});
}

TEST_F(ScriptNestedTest, ANativeMayFailAfterAReportedFailure)
{
    Define("inner", [this](JSContext* cx, uintN, jsval*, jsval*) {
        script.Evaluate("missing", nullptr);
        CJScriptLinkClass::DeclareError(cx, "inner failed");
        return JS_FALSE;
    });
    EXPECT_EQ(Show("try { inner(); } catch (e) { e.message }"), "inner failed");
    EXPECT_EQ(Reports(), Texts{"CJScript missing\n==> missing is not defined\n"});
}

TEST_F(ScriptNestedTest, AnErrorDeclaredBeforeAnEvaluationStaysThrown)
{
    Define("inner", [this](JSContext* cx, uintN, jsval*, jsval*) {
        CJScriptLinkClass::DeclareError(cx, "declared");
        innerSucceeded = script.Evaluate("1 + 1", nullptr, innerValue);
        return JS_FALSE;
    });
    EXPECT_EQ(Show("try { inner(); } catch (e) { e.message }"), "declared");
}

TEST_F(ScriptNestedTest, EvaluationsNestSeveralLevelsDeep)
{
    int level = 0;
    Define("inner", [&](JSContext*, uintN, jsval*, jsval*) {
        if (++level < 20)
            script.Evaluate("inner(); missing" + std::to_string(level), nullptr);
        return JS_TRUE;
    });
    EXPECT_EQ(Show("inner(); 'went on'"), "went on");
    EXPECT_EQ(Reports().size(), 19u);
    EXPECT_EQ(Reports().front(), "CJScript inner(); missing19\n==> missing19 is not defined\n");
}

TEST_F(ScriptNestedTest, HidingInsideHidesTheFailureOfTheOuterExecute)
{
    Define("hide", [this](JSContext*, uintN, jsval*, jsval*) {
        script.HideError();
        return JS_TRUE;
    });
    DefineInner("hide(); missing");
    EXPECT_TRUE(script.Execute("inner(); absent", nullptr, &report));
    EXPECT_EQ(report, "before");
    EXPECT_EQ(script.GetErrorCount(), 0);
}

TEST_F(ScriptNestedTest, AnExecuteInsideEndsTheHidingOfTheOuterOne)
{
    Define("inner", [this](JSContext*, uintN, jsval*, jsval*) {
        script.HideError();
        script.Execute("1", nullptr, nullptr);
        return JS_TRUE;
    });
    EXPECT_FALSE(script.Execute("inner(); missing", nullptr, &report));
    EXPECT_EQ(report, "inner(); missing\n==> ReferenceError: missing is not defined\n");
}

TEST_F(ScriptNestedTest, AnotherContextFailsInsideByItself)
{
    qxjsMinimal otherGlobal;
    CJScript other(nullptr);
    ASSERT_TRUE(other.SetGlobal(otherGlobal.GetJSLink(), ""));
    Define("inner", [&](JSContext*, uintN, jsval*, jsval*) {
        innerSucceeded = other.Evaluate("missing", nullptr);
        return JS_TRUE;
    });
    EXPECT_EQ(Show("inner(); 'went on'"), "went on");
    EXPECT_FALSE(innerSucceeded);
    EXPECT_EQ(Reports(), Texts{"CJScript missing\n==> ReferenceError: missing is not defined\n"});
    EXPECT_EQ(other.GetErrorCount(), 1);
    EXPECT_EQ(script.GetErrorCount(), 0);
}

// Where script stands.

TEST_F(ScriptNestedTest, OutsideScriptThereIsNoCurrentLine)
{
    int line = 4711;
    wxString file("before");
    EXPECT_FALSE(script.GetCurrentLineInfo(&line, &file));
    EXPECT_EQ(line, 4711);
    EXPECT_EQ(file, "before");
}

TEST_F(ScriptNestedTest, TheCurrentLineIsThatOfTheInnermostFrame)
{
    int line = 4711;
    wxString file;
    Define("where", [&](JSContext*, uintN, jsval*, jsval*) {
        EXPECT_TRUE(script.GetCurrentLineInfo(&line, &file));
        return JS_TRUE;
    });
    EXPECT_TRUE(script.Evaluate("function f() {\n  where();\n}\n\nf();", nullptr));
    EXPECT_EQ(line, 1);
    EXPECT_EQ(file, "local");
    EXPECT_TRUE(script.Evaluate("\n\n\nwhere();", nullptr));
    EXPECT_EQ(line, 3);
}

} // namespace
