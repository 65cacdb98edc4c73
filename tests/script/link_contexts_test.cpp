#include "tests/script/class_fixture.h"
#include "tests/support/lamp.h"

#include <wx/stopwatch.h>

#include <memory>

namespace
{

/// Two contexts of one thread that hold objects of each other. Every test runs without and with a collection at every
/// engine call.
class LinkContextsTest : public ::testing::TestWithParam<bool>
{
protected:
    LinkContextsTest()
    {
        CJScriptLinkClass::RegisterJSClass(&Lamp::ms_JSClass);
        first = NewContext(globals[0], "Global");
        second = NewContext(globals[1], "Other");
        m_before = JS_SetStress(GetParam());
    }
    ~LinkContextsTest() override
    {
        first.reset();
        second.reset();
        JS_SetStress(m_before);
        EXPECT_EQ(Lamp::ms_alive, 0);
    }

    static std::unique_ptr<CJScript> NewContext(qxjsMinimal& global, const wxString& name)
    {
        auto script = std::make_unique<CJScript>(nullptr);
        EXPECT_TRUE(script->SetGlobal(global.GetJSLink(), name));
        return script;
    }
    static std::unique_ptr<Lamp> Child(CJScript& script, const wxString& name)
    {
        auto lamp = std::make_unique<Lamp>(7);
        EXPECT_TRUE(script.CreateChild(lamp->GetJSLink(), script.GetGlobal(), name, false, false));
        return lamp;
    }
    /// Has `to` know what a text evaluates to in `from`.
    static void Share(CJScript& from, CJScript& to, const wxString& text, const char* name)
    {
        jsval value = JSVAL_VOID;
        ASSERT_TRUE(from.EvaluateValue(text, nullptr, value));
        ASSERT_TRUE(JS_DefineProperty(to.GetContext(), to.GetGlobal()->GetJSObject(), name, value, nullptr, nullptr,
                                      JSPROP_ENUMERATE));
    }

    NoHostObjectsLeft check;
    LogCapture log;
    qxjsMinimal globals[2];
    std::unique_ptr<CJScript> first;
    std::unique_ptr<CJScript> second;

private:
    bool m_before = false;
};

INSTANTIATE_TEST_SUITE_P(WithoutAndWithStress, LinkContextsTest, ::testing::Bool(),
                         ::testing::PrintToStringParamName());

TEST_P(LinkContextsTest, AHostsObjectHeldByAnotherContextIsCutWhenItsOwnEnds)
{
    auto lamp = Child(*first, "lamp");
    Share(*first, *second, "lamp.mark = 5; lamp", "held");
    EXPECT_EQ(Show(*second, "held.level"), "7");
    first.reset();
    EXPECT_FALSE(lamp->GetJSLink()->IsCreated());
    EXPECT_EQ(lamp->GetJSLink()->GetContext(), nullptr);
    EXPECT_EQ(lamp->GetJSLink()->GetScript(), nullptr);
    EXPECT_EQ(Show(*second, "held.mark"), "5");
    EXPECT_EQ(Show(*second, "held.level"), "(failed)");
    EXPECT_EQ(Show(*second, "held.Brighten(1)"), "(failed)");
    ASSERT_TRUE(second->CreateChild(lamp->GetJSLink(), second->GetGlobal(), "lamp", false, false));
    EXPECT_EQ(Show(*second, "lamp.level + '|' + (lamp === held)"), "7|false");
}

TEST_P(LinkContextsTest, AHostsObjectMayEndBetweenItsContextAndItsHolder)
{
    auto lamp = Child(*first, "lamp");
    Share(*first, *second, "lamp", "held");
    first.reset();
    lamp.reset();
    JS_GC(second->GetContext());
    EXPECT_EQ(Show(*second, "typeof held"), "object");
}

TEST_P(LinkContextsTest, AHostsObjectMayEndBeforeItsContextAndItsHolder)
{
    auto lamp = Child(*first, "lamp");
    Share(*first, *second, "lamp", "held");
    lamp.reset();
    first.reset();
    EXPECT_EQ(Show(*second, "typeof held"), "object");
    EXPECT_EQ(Show(*second, "held.level"), "(failed)");
}

TEST_P(LinkContextsTest, TheHolderMayEndFirst)
{
    auto lamp = Child(*first, "lamp");
    Share(*first, *second, "lamp", "held");
    second.reset();
    EXPECT_EQ(Show(*first, "lamp.level"), "7");
}

TEST_P(LinkContextsTest, AnObjectOfScriptEndsWithItsContextAndLeavesAShell)
{
    Share(*first, *second, "new Lamp(5)", "held");
    EXPECT_EQ(Show(*second, "held.level"), "5");
    EXPECT_EQ(Lamp::ms_alive, 1);
    first.reset();
    EXPECT_EQ(Lamp::ms_alive, 0);
    EXPECT_EQ(Show(*second, "typeof held"), "object");
    EXPECT_EQ(Show(*second, "held.level"), "(failed)");
}

TEST_P(LinkContextsTest, AnObjectThatAnotherContextMadeOfTheClassIsItsOwn)
{
    Share(*first, *second, "Lamp", "Theirs");
    EXPECT_EQ(Show(*second, "var made = new Theirs(3); made.level"), "3");
    first.reset();
    EXPECT_EQ(Show(*second, "made.Brighten(1)"), "4");
    EXPECT_EQ(Show(*second, "new Theirs(8).level"), "8");
    EXPECT_EQ(Show(*second, "(made instanceof Theirs) + '|' + (made instanceof Lamp)"), "true|false");
}

TEST_P(LinkContextsTest, AnObjectOfAClassThatKeepsItsLinkIsCutToo)
{
    auto lamp = Child(*first, "lamp");
    Share(*first, *second, "lamp", "held");
    Lamp::ms_JSClass.SetKeepPrivate(true);
    first.reset();
    Lamp::ms_JSClass.SetKeepPrivate(false);
    lamp.reset();
    EXPECT_EQ(Show(*second, "held.level"), "(failed)");
}

TEST_P(LinkContextsTest, TheGlobalObjectHeldByAnotherContextIsCut)
{
    Share(*first, *second, "var x = 5; this", "theirs");
    first.reset();
    EXPECT_FALSE(globals[0].GetJSLink()->IsCreated());
    EXPECT_EQ(Show(*second, "theirs.StrToUpper('a')"), "(failed)");
    first = NewContext(globals[0], "Global");
    EXPECT_EQ(Show(*first, "typeof x"), "undefined");
}

TEST_P(LinkContextsTest, AChildOfAnotherContextsObjectIsTheContextsThatMadeIt)
{
    auto parent = Child(*first, "parent");
    auto child = std::make_unique<Lamp>(9);
    ASSERT_TRUE(second->CreateChild(child->GetJSLink(), parent->GetJSLink(), "child", false, false));
    EXPECT_EQ(Show(*first, "parent.child.level"), "9");
    second.reset();
    EXPECT_FALSE(child->GetJSLink()->IsCreated());
    EXPECT_EQ(Show(*first, "parent.child.level"), "(failed)");
    child.reset();
    EXPECT_EQ(Show(*first, "typeof parent.child"), "object");
}

TEST_P(LinkContextsTest, AContextThatItsHostDestroysCutsItsObjectsToo)
{
    JSRuntime* const runtime = JS_Init(16777216);
    JSContext* const context = JS_NewContext(runtime, 8192);
    qxjsMinimal global;
    auto lamp = std::make_unique<Lamp>(7);
    {
        CJScript adopting(context);
        ASSERT_TRUE(adopting.SetGlobal(global.GetJSLink(), ""));
        ASSERT_TRUE(adopting.CreateChild(lamp->GetJSLink(), global.GetJSLink(), "lamp", false, false));
        Share(adopting, *second, "lamp", "held");
        Share(adopting, *second, "new Lamp(1)", "made");
    }
    EXPECT_EQ(Show(*second, "held.level + made.level"), "8");
    JS_DestroyContext(context);
    JS_Finish(runtime);
    EXPECT_FALSE(lamp->GetJSLink()->IsCreated());
    EXPECT_EQ(Lamp::ms_alive, 1);
}

// On-destroy functions at the end of a context.

TEST_P(LinkContextsTest, ObjectsOfScriptCallTheirOnDestroyFunctionsBeforeTheContextEnds)
{
    Show(*first, "var made = new Lamp(5); made.CallOnDestroy(function () { perror('gone', this.level); }); 0");
    first.reset();
    EXPECT_EQ(log.Errors(), Texts{"gone 5"});
    EXPECT_EQ(Lamp::ms_alive, 0);
}

TEST_P(LinkContextsTest, ObjectsOfTheHostDoNot)
{
    auto lamp = Child(*first, "lamp");
    Show(*first, "lamp.CallOnDestroy(function () { perror('gone'); }); 0");
    first.reset();
    lamp.reset();
    EXPECT_TRUE(log.Records().empty());
}

TEST_P(LinkContextsTest, AnOnDestroyFunctionMayMakeObjectsWhileTheContextEnds)
{
    Show(*first, "var all = [];"
                 "function make() { var made = new Lamp(1); all.push(made); made.CallOnDestroy(again); }"
                 "function again() { perror('again'); make(); } make();");
    first.reset();
    EXPECT_EQ(log.Errors(), Texts{"again"});
    EXPECT_EQ(Lamp::ms_alive, 0);
}

TEST_P(LinkContextsTest, OnDestroyFunctionsThatNeverEndTakeTheTimeLimitTwiceAtMost)
{
    Show(*first, "function forever() { for (;;); }"
                 "for (var i = 0; i < 20; ++i) { var made = new Lamp(i); made.CallOnDestroy(forever);"
                 "made.CallOnDestroy(forever); Global['made' + i] = made; } 0");
    first->SetTimeLimit(50);
    const wxStopWatch watch;
    first.reset();
    EXPECT_LT(watch.Time(), 500);
    EXPECT_EQ(Lamp::ms_alive, 0);
}

TEST_P(LinkContextsTest, AnOnDestroyFunctionMayEndTheContext)
{
    DefineNative(first->GetContext(), nullptr, "clean", [script = first.get()](JSContext*, uintN, jsval*, jsval*) {
        script->CleanAll();
        return JS_TRUE;
    });
    Show(*first, "new Lamp(1).CallOnDestroy(clean); new Lamp(2).CallOnDestroy(clean); 0");
    first.reset();
    ForgetNatives();
    EXPECT_EQ(Show(*second, "1 + 1"), "2");
    EXPECT_EQ(Lamp::ms_alive, 0);
}

TEST_P(LinkContextsTest, FunctionsKeptThroughAnotherHandleEndWithTheContext)
{
    auto lamp = Child(*first, "lamp");
    CJScript adopting(first->GetContext());
    Show(*first, "lamp.CallOnDestroy(function () {}); 0");
    first.reset();
    adopting.CleanAll();
    lamp.reset();
    EXPECT_TRUE(log.Records().empty());
}

// Scope lists.

TEST_P(LinkContextsTest, AQueuedObjectWithoutScriptObjectLivesAsLongAsAnyScriptOfTheThreadRuns)
{
    auto* const lamp = new Lamp(3);
    int alive = -1;
    DefineNative(first->GetContext(), nullptr, "queue", [&](JSContext*, uintN, jsval*, jsval*) {
        lamp->GetJSLink()->SetScopeDelete();
        second->Evaluate("1", nullptr);
        alive = Lamp::ms_alive;
        return JS_TRUE;
    });
    Show(*first, "queue()");
    ForgetNatives();
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(Lamp::ms_alive, 0);
}

TEST_P(LinkContextsTest, AQueuedObjectLivesAsLongAsAnotherContextsScriptMayUseIt)
{
    Child(*first, "lamp").release();
    Share(*first, *second, "lamp", "held");
    int alive = -1;
    DefineNative(second->GetContext(), nullptr, "drop", [&](JSContext*, uintN, jsval*, jsval*) {
        first->GetChild(first->GetGlobal(), "lamp")->SetScopeDelete();
        first->Evaluate("1", nullptr);
        alive = Lamp::ms_alive;
        return JS_TRUE;
    });
    EXPECT_EQ(Show(*second, "drop(); held.level"), "7");
    ForgetNatives();
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(Lamp::ms_alive, 0);
}

} // namespace
