#include "tests/script/script_fixture.h"

#include <climits>
#include <string>

using namespace std::string_literals;

namespace
{

class ScriptReportTest : public ScriptTest
{
protected:
    /// The report of a text that must fail; log and output must agree on it.
    wxString ReportOf(const wxString& text)
    {
        log.Clear();
        wxString report;
        EXPECT_FALSE(script.Execute(text, nullptr, &report));
        EXPECT_EQ(Reports(), Texts(2, "CJScript " + report));
        return report;
    }

    /// Records an error the way the engine does.
    void Record(const char* message, unsigned line, unsigned column = 0, unsigned flags = 0)
    {
        static const char sourceLine[128] = {};
        static const wchar_t wideLine[128] = {};
        static const jschar ucLine[128] = {};
        JSErrorReport report{};
        report.lineno = line;
        report.flags = flags;
        report.linebuf = sourceLine;
        report.tokenptr = sourceLine + column;
        report.uclinebuf = ucLine;
        report.uctokenptr = ucLine + column;
        report.widelinebuf = wideLine;
        report.widetokenoffset = column;
        script.ReportError(message, &report);
    }

    /// The report of the errors recorded so far, which must be logged as it is.
    wxString Format(const wxString& source, JSFunction* function = nullptr)
    {
        log.Clear();
        wxString report("before");
        script.CommonReportError(Global(), source, function, &report);
        EXPECT_EQ(Reports(), Texts{"CJScript " + report});
        EXPECT_EQ(log.Records().size(), 1u);
        return report;
    }
};

// Syntax errors of texts.

TEST_F(ScriptReportTest, ASyntaxErrorShowsItsLineAndACaretBehindTheToken)
{
    EXPECT_EQ(ReportOf("var a = 1;\nvar b = 2;\n1 + ;\nvar c = 3;\n"),
              "1 + ;\n     ^\n==> expected expression, got ';'\n");
    EXPECT_EQ(script.GetError(0)->line, 2);
    EXPECT_EQ(script.GetError(0)->column, 4);
    EXPECT_EQ(script.GetError(0)->type, 0);
    EXPECT_EQ(script.GetError(0)->FullMsg(), "Error: expected expression, got ';'");
}

TEST_F(ScriptReportTest, ASyntaxErrorAtTheStartOfItsLineHasNoCaret)
{
    EXPECT_EQ(ReportOf("var a = 1;\n) + 2"), ")\x20+ 2\n==> expected expression, got ')'\n");
    EXPECT_EQ(script.GetError(0)->column, 0);
}

TEST_F(ScriptReportTest, AnErrorPastTheLastLineShowsNoLine)
{
    EXPECT_EQ(ReportOf("for (;;\n"), "==> expected expression, got end of script\n");
    EXPECT_EQ(script.GetError(0)->line, 1);
}

TEST_F(ScriptReportTest, AnErrorWhileRunningShowsItsLineWithoutCaret)
{
    EXPECT_EQ(ReportOf("var a = 1;\n\n  a.b.c;\n"), "  a.b.c;\n==> TypeError: a.b is undefined\n");
    EXPECT_EQ(script.GetError(0)->line, 2);
}

TEST_F(ScriptReportTest, TheLineOfAnErrorIsThatOfTheFunctionThatFailed)
{
    EXPECT_EQ(ReportOf("function f() {\n  missing;\n}\nf();\n"),
              "  missing;\n==> ReferenceError: missing is not defined\n");
}

TEST_F(ScriptReportTest, LineEndsOfCarriageReturnAndLineFeedAreNotShown)
{
    EXPECT_EQ(ReportOf("var a = 1;\r\nvar b = 2;\r\n1 + ;\r\nvar c = 3;\r\n"),
              "1 + ;\n     ^\n==> expected expression, got ';'\n");
}

TEST_F(ScriptReportTest, ACarriageReturnAloneEndsALine)
{
    EXPECT_EQ(ReportOf("var a = 1;\rmissing;\rvar b"), "missing;\n==> ReferenceError: missing is not defined\n");
}

TEST_F(ScriptReportTest, ABlankLineBeforeTheErrorCounts)
{
    EXPECT_EQ(ReportOf("\n\n\nmissing"), "missing\n==> ReferenceError: missing is not defined\n");
    EXPECT_EQ(ReportOf("\r\n\r\nmissing"), "missing\n==> ReferenceError: missing is not defined\n");
}

TEST_F(ScriptReportTest, LinesOutsideAsciiAreShownAsTheyAre)
{
    EXPECT_EQ(ReportOf(L"'\u00e9\u0416\u4e2d\U0001F600';\n'\u00e9\u0416' + missing"),
              L"'\u00e9\u0416' + missing\n==> ReferenceError: missing is not defined\n");
}

TEST_F(ScriptReportTest, TheCaretCountsCharactersOutsideAsciiOnce)
{
    EXPECT_EQ(ReportOf(L"'\u00e9\u0416' + ;"), L"'\u00e9\u0416' + ;\n        ^\n==> expected expression, got ';'\n");
    EXPECT_EQ(script.GetError(0)->column, 7);
    EXPECT_EQ(ReportOf(L"'\U0001F600' + ;"), L"'\U0001F600' + ;\n       ^\n==> expected expression, got ';'\n");
    EXPECT_EQ(script.GetError(0)->column, 6);
}

TEST_F(ScriptReportTest, ALoneSurrogateElsewhereDoesNotHideTheLine)
{
    EXPECT_EQ(ReportOf(L"'"s + wchar_t(0xD83D) + L"';\nmissing;"),
              "missing;\n==> ReferenceError: missing is not defined\n");
}

TEST_F(ScriptReportTest, ANulElsewhereDoesNotHideTheLine)
{
    EXPECT_EQ(ReportOf(L"'a\0b';\nmissing;"s), "missing;\n==> ReferenceError: missing is not defined\n");
}

TEST_F(ScriptReportTest, ATextOfManyLinesShowsTheOneThatFailed)
{
    wxString text;
    for (int line = 0; line < 5000; ++line)
        text += "var a" + std::to_string(line) + ";\n";
    EXPECT_EQ(ReportOf(text + "missing;\n" + text), "missing;\n==> ReferenceError: missing is not defined\n");
    EXPECT_EQ(script.GetError(0)->line, 5000);
}

// Formatting what is recorded.

TEST_F(ScriptReportTest, SeveralErrorsAreShownInOrder)
{
    Record("first", 2, 1);
    Record("second", 0, 3);
    EXPECT_EQ(Format("zero\none\ntwo\n"), "two\n  ^\n==> first\nzero\n    ^\n==> second\n");
    EXPECT_EQ(script.GetErrorCount(), 2);
}

TEST_F(ScriptReportTest, ACaretStandsOnlyInsideTheLine)
{
    Record("at the start", 0, 0);
    EXPECT_EQ(Format("abc"), "abc\n==> at the start\n");
    script.CleanError();
    Record("on the last character", 0, 2);
    EXPECT_EQ(Format("abc"), "abc\n   ^\n==> on the last character\n");
    script.CleanError();
    Record("at the end", 0, 3);
    EXPECT_EQ(Format("abc"), "abc\n==> at the end\n");
    script.CleanError();
    Record("past the end", 0, 90);
    EXPECT_EQ(Format("abc"), "abc\n==> past the end\n");
}

TEST_F(ScriptReportTest, AnEmptyLineIsNotShown)
{
    Record("here", 1);
    EXPECT_EQ(Format("abc\n\ndef"), "==> here\n");
}

TEST_F(ScriptReportTest, ALineThatIsNotThereIsNotShown)
{
    Record("one past", 2);
    Record("far past", 1000000);
    Record("as far as it goes", UINT_MAX);
    EXPECT_EQ(Format("abc\ndef"), "==> one past\n==> far past\n==> as far as it goes\n");
}

TEST_F(ScriptReportTest, TheLastLineNeedsNoLineEnd)
{
    Record("here", 1);
    EXPECT_EQ(Format("abc\ndef"), "def\n==> here\n");
}

TEST_F(ScriptReportTest, WithoutSourceOnlyMessagesAreShown)
{
    Record("here", 0, 1);
    EXPECT_EQ(Format(""), "==> here\n");
}

TEST_F(ScriptReportTest, OfAFunctionOnlyMessagesAreShown)
{
    Record("here", 0, 1);
    JSFunction* function = JS_ValueToFunction(Context(), Value("(function f() {})"));
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(Format("abc", function), "==> here\n");
}

TEST_F(ScriptReportTest, TheCallStackFollowsTheFirstReportOfExecuteOnly)
{
    script.SetCallStack("f() at 1\ng() at 2\n");
    wxString report;
    EXPECT_FALSE(script.Execute("1 +", nullptr, &report));
    const wxString plain = "1 +\n==> expected expression, got end of script\n";
    EXPECT_EQ(Reports(), (Texts{"CJScript " + plain + " Call stack is:\nf() at 1\ng() at 2\n", "CJScript " + plain}));
    EXPECT_EQ(report, plain);
}

TEST_F(ScriptReportTest, TheCallStackIsShownUnderItsHeading)
{
    Record("here", 0);
    script.SetCallStack("f() at 1\n100 %s\n");
    EXPECT_EQ(Format("abc"), "abc\n==> here\n Call stack is:\nf() at 1\n100 %s\n");
    EXPECT_EQ(Format("abc"), "abc\n==> here\n");
}

TEST_F(ScriptReportTest, WithNothingRecordedTheFirstLineOfTheSourceIsShown)
{
    EXPECT_EQ(Format("abc\ndef"), "abc\n");
    EXPECT_EQ(Format("abc"), "abc\n");
    EXPECT_EQ(Format(""), "\n");
}

TEST_F(ScriptReportTest, NoPlaceForTheReportIsNeeded)
{
    Record("here", 0);
    script.CommonReportError(nullptr, "abc", nullptr, nullptr);
    EXPECT_EQ(Reports(), Texts{"CJScript abc\n==> here\n"});
}

TEST_F(ScriptReportTest, AReportWithPercentSignsIsLoggedAsItIs)
{
    Record("100 %s of %d%n", 0);
    EXPECT_EQ(Format("%s %n"), "%s %n\n==> 100 %s of %d%n\n");
}

// Recording.

TEST_F(ScriptReportTest, ARecordedErrorHasLineColumnAndFlags)
{
    Record("here", 7, 5, 4);
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, "here");
    EXPECT_EQ(script.GetError(0)->line, 7);
    EXPECT_EQ(script.GetError(0)->column, 5);
    EXPECT_EQ(script.GetError(0)->type, 4);
}

TEST_F(ScriptReportTest, AnErrorWithoutAnyMessageIsUnknown)
{
    JSErrorReport report{};
    script.ReportError(wxString(), &report);
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, "Unknown error");
    EXPECT_EQ(script.GetError(0)->column, 0);
}

TEST_F(ScriptReportTest, AnErrorWithoutMessageHasThatOfItsReport)
{
    JSErrorReport report{};
    report.ucmessage = u"of the report \u0416";
    report.widemessage = L"of the report \u0416";
    script.ReportError(wxString(), &report);
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0)->msg, L"of the report \u0416");
}

TEST_F(ScriptReportTest, CleanErrorForgetsWhatIsRecorded)
{
    Record("first", 0);
    Record("second", 0);
    script.CleanError();
    EXPECT_EQ(script.GetErrorCount(), 0);
    script.CleanError();
    EXPECT_EQ(script.GetErrorCount(), 0);
}

TEST_F(ScriptReportTest, HiddenErrorsAreNotRecorded)
{
    script.HideError();
    Record("hidden", 0);
    EXPECT_EQ(script.GetErrorCount(), 0);
}

struct TypeRow
{
    int type;
    const char* text;
};

class ScriptErrorTypeTest : public ::testing::TestWithParam<TypeRow>
{};

TEST_P(ScriptErrorTypeTest, StandsInFrontOfTheMessage)
{
    CJScript::CJScriptError error;
    error.msg = L"\u0416 100 %s";
    error.type = GetParam().type;
    EXPECT_EQ(error.FullMsg(), GetParam().text + wxString(L": \u0416 100 %s"));
}

INSTANTIATE_TEST_SUITE_P(Index, ScriptErrorTypeTest,
                         ::testing::Values(TypeRow{0, "Error"}, TypeRow{1, "Internal Error"},
                                           TypeRow{2, "Evaluation Error"}, TypeRow{3, "Range Error"},
                                           TypeRow{4, "Reference Error"}, TypeRow{5, "Syntax Error"},
                                           TypeRow{6, "Type Error"}, TypeRow{7, "URI Error"},
                                           TypeRow{8, "Limit Error"}));

TEST(ScriptErrorTest, ATypeOutsideTheTableStillShowsTheMessage)
{
    for (const int type : {-1, 9, INT_MAX, INT_MIN}) {
        CJScript::CJScriptError error;
        error.msg = "here";
        error.type = type;
        EXPECT_TRUE(error.FullMsg().EndsWith(": here")) << type;
    }
}

TEST(ScriptErrorTest, ACopyHasEveryField)
{
    CJScript::CJScriptError error;
    error.msg = "here";
    error.line = 1;
    error.column = 2;
    error.type = 3;
    CJScript::CJScriptError copy;
    copy = error;
    EXPECT_EQ(copy.msg, "here");
    EXPECT_EQ(copy.line, 1);
    EXPECT_EQ(copy.column, 2);
    EXPECT_EQ(copy.type, 3);
}

// A host's own reporting.

class QuietScript : public CJScript
{
public:
    QuietScript() : CJScript(nullptr) {}
    void ReportError(const wxString& message, JSErrorReport* report) override
    {
        heard.push_back(wxString::Format("%u: %s", report->lineno, message));
        messages.push_back(wxString(report->widemessage));
    }
    Texts heard;
    Texts messages; ///< Those in the reports.
};

TEST(ScriptHostReportTest, EveryReportOfTheEngineReachesTheHost)
{
    const LogCapture log;
    qxjsMinimal global;
    QuietScript script;
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    EXPECT_FALSE(script.Evaluate("\nmissing", nullptr));
    EXPECT_FALSE(script.Evaluate("1 +", nullptr));
    EXPECT_EQ(script.heard,
              (Texts{"1: ReferenceError: missing is not defined", "0: expected expression, got end of script"}));
}

TEST(ScriptHostReportTest, AFailureInsideReachesTheHostAsItsReport)
{
    const LogCapture log;
    qxjsMinimal global;
    QuietScript script;
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    DefineNative(script.GetContext(), nullptr, "inner", [&](JSContext*, uintN, jsval*, jsval*) {
        EXPECT_FALSE(script.Evaluate("\nmissing", nullptr));
        return JS_TRUE;
    });
    EXPECT_TRUE(script.Evaluate("inner()", nullptr));
    ForgetNatives();
    EXPECT_EQ(script.heard, Texts{"1: "});
    EXPECT_EQ(script.messages, Texts{"ReferenceError: missing is not defined"});
    EXPECT_EQ(script.GetErrorCount(), 0);
}

TEST(ScriptHostReportTest, WhatTheHostDoesNotRecordIsReportedByTheFirstLineOfTheSource)
{
    const LogCapture log;
    qxjsMinimal global;
    QuietScript script;
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    EXPECT_FALSE(script.Evaluate("var first;\nmissing", nullptr));
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_EQ(log.Texts(ScriptErrorLevel), Texts{"CJScript var first;\n"});
}

} // namespace
