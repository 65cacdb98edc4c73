#include "tests/script/script_fixture.h"

#include <atomic>
#include <optional>
#include <string>
#include <thread>

namespace
{

constexpr int Evaluations = 100000;
const char* const RefusalEnd = " called from another thread than the context's; refused";

using ScriptThreadsTest = ScriptTest;

/// Logs what other threads have logged meanwhile.
void FlushLog()
{
    wxLog::FlushActive();
}

/// How many of many evaluations give what they must, in a context made here.
int CountRightAnswers()
{
    qxjsMinimal global;
    CJScript script(nullptr);
    if (!script.SetGlobal(global.GetJSLink(), "host"))
        return -1;
    int right = 0;
    for (int index = 0; index < Evaluations; ++index) {
        wxString out;
        if (script.Evaluate("host.n = (host.n || 0) + 1; 'n' + n", nullptr, out) &&
            out == "n" + std::to_string(index + 1))
            ++right;
    }
    return right;
}

TEST_F(ScriptThreadsTest, TwoThreadsEvaluateAtOnceInContextsOfTheirOwn)
{
    int right[2] = {0, 0};
    std::thread first([&] { right[0] = CountRightAnswers(); });
    std::thread second([&] { right[1] = CountRightAnswers(); });
    first.join();
    second.join();
    EXPECT_EQ(right[0], Evaluations);
    EXPECT_EQ(right[1], Evaluations);
}

TEST_F(ScriptThreadsTest, AThreadReportsErrorsOfItsOwn)
{
    wxString report;
    int errors = 0;
    std::thread([&] {
        qxjsMinimal otherGlobal;
        CJScript other(nullptr);
        other.SetGlobal(otherGlobal.GetJSLink(), "");
        other.Execute("missing;", nullptr, &report);
        errors = other.GetErrorCount();
    }).join();
    FlushLog();
    EXPECT_EQ(report, "missing;\n==> ReferenceError: missing is not defined\n");
    EXPECT_EQ(errors, 1);
    EXPECT_EQ(Reports(), Texts(2, "CJScript missing;\n==> ReferenceError: missing is not defined\n"));
    EXPECT_EQ(script.GetErrorCount(), 0);
}

/// Notes whether another thread could have entered the engine at its end.
class EndProbe : public qxjsMinimal
{
public:
    explicit EndProbe(std::optional<bool>& entered) : m_entered(entered) {}
    ~EndProbe() override
    {
        std::thread([this] {
            m_entered = CJScript::EngineLock().TryEnter();
            if (*m_entered)
                CJScript::EngineLock().Leave();
        }).join();
    }

private:
    std::optional<bool>& m_entered;
};

TEST_F(ScriptThreadsTest, OtherThreadsMayEnterWhileWhatWasBelowARemovedGlobalEnds)
{
    std::optional<bool> entered;
    ASSERT_TRUE(script.CreateChildDynamic((new EndProbe(entered))->GetJSLink()));
    script.RemoveGlobal();
    EXPECT_EQ(entered, true);
}

TEST_F(ScriptThreadsTest, NoOtherThreadEntersBeforeQueuedObjectsAreDeleted)
{
    ASSERT_TRUE(script.Evaluate("function f() { drop() }", nullptr));
    CJScriptLink* child = nullptr;
    Define("drop", [&](JSContext*, uintN, jsval*, jsval*) {
        child->SetScopeDelete();
        return JS_TRUE;
    });
    for (const bool calls : {false, true}) {
        std::optional<bool> entered;
        child = (new EndProbe(entered))->GetJSLink();
        ASSERT_TRUE(script.CreateChild(child, Global(), "child", false, false));
        EXPECT_TRUE(calls ? script.Call("f", Global()) : script.Evaluate("drop()", nullptr));
        EXPECT_EQ(entered, false) << (calls ? "call" : "evaluation");
    }
}

struct ForeignCall
{
    const char* name;
    bool (*call)(CJScript& script, CJScriptLink* global);
};

class ScriptForeignThreadTest : public ScriptTest, public ::testing::WithParamInterface<ForeignCall>
{};

TEST_P(ScriptForeignThreadTest, IsRefusedWithALoggedError)
{
    ASSERT_TRUE(script.Evaluate("var calls = 0; function f() { ++calls; }", nullptr));
    std::atomic<bool> result{true};
    std::thread([&] { result = GetParam().call(script, Global()); }).join();
    FlushLog();
    EXPECT_FALSE(result);
    ASSERT_FALSE(log.Errors().empty());
    EXPECT_TRUE(log.Errors().front().EndsWith(RefusalEnd)) << log.Errors().front();
    EXPECT_EQ(Show("calls"), "0");
    EXPECT_TRUE(script.HasGlobal());
}

INSTANTIATE_TEST_SUITE_P(
    Of, ScriptForeignThreadTest,
    ::testing::Values(
        ForeignCall{"Evaluate", [](CJScript& script, CJScriptLink*) { return script.Evaluate("f()", nullptr); }},
        ForeignCall{"EvaluateToAnInteger",
                    [](CJScript& script, CJScriptLink*) {
                        int out = 0;
                        const bool succeeded = script.Evaluate("f()", nullptr, out);
                        return succeeded || out != -1;
                    }},
        ForeignCall{"Execute", [](CJScript& script, CJScriptLink*) { return script.Execute("f()", nullptr, nullptr); }},
        ForeignCall{"Call", [](CJScript& script, CJScriptLink* global) { return script.Call("f", global); }},
        ForeignCall{"CallWithAText",
                    [](CJScript& script, CJScriptLink* global) { return script.Call("f", global, wxString("x")); }},
        ForeignCall{"HasFunction",
                    [](CJScript& script, CJScriptLink* global) { return script.HasFunction("f", global); }},
        ForeignCall{"CreateChildDynamic",
                    [](CJScript& script, CJScriptLink*) {
                        qxjsMinimal child;
                        return script.CreateChildDynamic(child.GetJSLink());
                    }},
        ForeignCall{"CreateChild",
                    [](CJScript& script, CJScriptLink* global) {
                        qxjsMinimal child;
                        return script.CreateChild(child.GetJSLink(), global, "child", false, false);
                    }},
        ForeignCall{"JSValToString",
                    [](CJScript& script, CJScriptLink*) {
                        jsval value = INT_TO_JSVAL(5);
                        return !script.JSValToString(value).empty();
                    }}),
    NameOfRow<ForeignCall>);

TEST_F(ScriptThreadsTest, ARefusedCallLeavesTheErrorsOfTheHandle)
{
    ASSERT_FALSE(script.Evaluate("missing", nullptr));
    const CJScript::CJScriptError* const error = script.GetError(0);
    std::thread([&] {
        jsval value = JSVAL_VOID;
        JSFunction* function = nullptr;
        script.Evaluate("1", nullptr);
        script.Execute("missing", nullptr, nullptr);
        script.Call("f", Global());
        script.CallWithRet(function, Global(), &value, 0, nullptr);
    }).join();
    FlushLog();
    ASSERT_EQ(script.GetErrorCount(), 1);
    EXPECT_EQ(script.GetError(0), error);
    EXPECT_EQ(log.Errors(), Texts(4, "CJScript called from another thread than the context's; refused"));
    EXPECT_EQ(Reports().size(), 1u);
}

TEST_F(ScriptThreadsTest, APromiseJobThatALimitStopsFailsTheEvaluation)
{
    script.SetTimeLimit(50);
    jsval value = JSVAL_NULL;
    EXPECT_FALSE(script.EvaluateValue("function f() { Promise.resolve().then(f); } f(); 5", nullptr, value));
    EXPECT_TRUE(JSVAL_IS_VOID(value));
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_TRUE(Reports()[0].EndsWith("==> script time limit of 50 ms exceeded\n"));
    EXPECT_FALSE(script.Call("f", Global()));
    script.SetTimeLimit(0);
    EXPECT_TRUE(script.Evaluate("1", nullptr));
}

TEST_F(ScriptThreadsTest, AForeignThreadDoesNotDeleteWhatIsQueuedHere)
{
    std::vector<std::string> deaths;
    auto* child = new Mortal(deaths, "child");
    ASSERT_TRUE(script.CreateChild(child->Link(), Global(), "child", false, false));
    script.IncScopeLevel();
    child->Link()->SetScopeDelete();
    std::thread([] {
        qxjsMinimal otherGlobal;
        CJScript other(nullptr);
        other.SetGlobal(otherGlobal.GetJSLink(), "");
        other.Evaluate("1", nullptr);
    }).join();
    EXPECT_TRUE(deaths.empty());
    script.DecScopeLevel();
    EXPECT_EQ(deaths, std::vector<std::string>{"child"});
    FlushLog();
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptThreadsTest, TheEngineLockKeepsOtherThreadsOut)
{
    std::atomic<bool> entered{true};
    Define("other", [&](JSContext*, uintN, jsval*, jsval*) {
        std::thread([&] {
            entered = CJScript::EngineLock().TryEnter();
            if (entered)
                CJScript::EngineLock().Leave();
        }).join();
        return JS_TRUE;
    });
    EXPECT_TRUE(script.Evaluate("other()", nullptr));
    EXPECT_FALSE(entered);
}

TEST_F(ScriptThreadsTest, TheEngineLockIsFreeAfterEachOperation)
{
    EXPECT_FALSE(script.Execute("missing", nullptr, nullptr));
    EXPECT_TRUE(script.Evaluate("function f() { missing; }", nullptr));
    EXPECT_FALSE(script.Call("f", Global()));
    script.ClearScope(Global());
    bool entered = false;
    std::thread([&] {
        entered = CJScript::EngineLock().TryEnter();
        if (entered)
            CJScript::EngineLock().Leave();
    }).join();
    EXPECT_TRUE(entered);
}

/// A log target that finds out whether other threads may use the engine while something is logged.
class LockProbe : public wxLog
{
public:
    LockProbe() : m_previous(SetActiveTarget(this)) {}
    ~LockProbe() override { SetActiveTarget(m_previous); }

    int records = 0;
    int recordsUnderLock = 0;

protected:
    void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override
    {
        ++records;
        std::thread([this] {
            if (CJScript::EngineLock().TryEnter())
                CJScript::EngineLock().Leave();
            else
                ++recordsUnderLock;
        }).join();
    }

private:
    wxLog* m_previous;
};

TEST_F(ScriptThreadsTest, ReportsAreLoggedOutsideTheEngineLock)
{
    ASSERT_TRUE(script.Evaluate("function f() { missing; }", nullptr));
    LockProbe probe;
    EXPECT_FALSE(script.Execute("missing", nullptr, nullptr));
    EXPECT_FALSE(script.Call("f", Global()));
    EXPECT_FALSE(script.CreateChild(Global(), nullptr, "child", false, false));
    EXPECT_EQ(probe.records, 4);
    EXPECT_EQ(probe.recordsUnderLock, 0);
}

} // namespace
