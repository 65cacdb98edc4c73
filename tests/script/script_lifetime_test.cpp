#include "tests/script/script_fixture.h"

#include <memory>

namespace
{

/// Objects and contexts that end in one order or another.
using ScriptLifetimeTest = ScriptContextsTest;

TEST_F(ScriptLifetimeTest, TheContextEndsBeforeItsGlobalObject)
{
    qxjsMinimal global;
    {
        CJScript script(nullptr);
        ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), "host"));
        EXPECT_EQ(Show(script, "var x = 1; x"), "1");
    }
    EXPECT_FALSE(global.GetJSLink()->IsCreated());
    EXPECT_EQ(global.GetJSLink()->GetContext(), nullptr);
    EXPECT_EQ(global.GetJSLink()->GetScript(), nullptr);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptLifetimeTest, TheGlobalObjectEndsBeforeItsContext)
{
    CJScript script(nullptr);
    {
        qxjsMinimal global;
        ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), "host"));
        EXPECT_EQ(Show(script, "var x = 1; x"), "1");
    }
    EXPECT_FALSE(script.HasGlobal());
    EXPECT_FALSE(script.Execute("1", nullptr, nullptr));
    qxjsMinimal next;
    ASSERT_TRUE(script.SetGlobal(next.GetJSLink(), ""));
    EXPECT_EQ(Show(script, "typeof x"), "undefined");
}

TEST_F(ScriptLifetimeTest, AChildEndsBeforeItsContext)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    {
        qxjsMinimal child;
        ASSERT_TRUE(script.CreateChild(child.GetJSLink(), global.GetJSLink(), "child", false, false));
        EXPECT_EQ(Show(script, "var kept = child; kept.x = 1; typeof child"), "object");
    }
    EXPECT_EQ(Show(script, "typeof child + typeof kept + kept.x"), "undefinedobject1");
    CJScriptLink* out = global.GetJSLink();
    EXPECT_TRUE(script.Evaluate("kept", nullptr, out));
    EXPECT_EQ(out, nullptr);
}

TEST_F(ScriptLifetimeTest, TheContextEndsBeforeAChild)
{
    qxjsMinimal global;
    qxjsMinimal child;
    {
        CJScript script(nullptr);
        ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
        ASSERT_TRUE(script.CreateChild(child.GetJSLink(), global.GetJSLink(), "child", false, false));
    }
    EXPECT_FALSE(child.GetJSLink()->IsCreated());
    EXPECT_EQ(child.GetJSLink()->GetScript(), nullptr);
    CJScript next(nullptr);
    ASSERT_TRUE(next.SetGlobal(child.GetJSLink(), ""));
    EXPECT_EQ(Show(next, "1 + 1"), "2");
}

TEST_F(ScriptLifetimeTest, TheParentEndsBeforeItsChild)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    auto parent = std::make_unique<qxjsMinimal>();
    auto child = std::make_unique<qxjsMinimal>();
    ASSERT_TRUE(script.CreateChild(parent->GetJSLink(), global.GetJSLink(), "parent", false, false));
    ASSERT_TRUE(script.CreateChild(child->GetJSLink(), parent->GetJSLink(), "child", false, false));
    parent.reset();
    JS_GC(script.GetContext());
    child.reset();
    JS_GC(script.GetContext());
    EXPECT_EQ(Show(script, "typeof parent"), "undefined");
    EXPECT_EQ(JS_CountHostObjects(), FreshObjects());
}

TEST_F(ScriptLifetimeTest, TheParentEndsBeforeAChildThatScriptHolds)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    auto parent = std::make_unique<qxjsMinimal>();
    auto child = std::make_unique<qxjsMinimal>();
    ASSERT_TRUE(script.CreateChild(parent->GetJSLink(), global.GetJSLink(), "parent", false, false));
    ASSERT_TRUE(script.CreateChild(child->GetJSLink(), parent->GetJSLink(), "child", false, false));
    EXPECT_EQ(Show(script, "var above = parent, held = parent.child; typeof above.child"), "object");
    parent.reset();
    child.reset();
    EXPECT_EQ(Show(script, "typeof above.child + typeof held"), "undefinedobject");
}

TEST_F(ScriptLifetimeTest, DynamicObjectsEndWithTheirContext)
{
    std::vector<std::string> deaths;
    qxjsMinimal global;
    {
        CJScript script(nullptr);
        ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
        ASSERT_TRUE(script.CreateChildDynamic((new Mortal(deaths, "child"))->Link()));
        EXPECT_TRUE(deaths.empty());
    }
    EXPECT_EQ(deaths, std::vector<std::string>{"child"});
}

TEST_F(ScriptLifetimeTest, ADynamicObjectThatTheHostDeletesIsNotDeletedAgain)
{
    std::vector<std::string> deaths;
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    auto* child = new Mortal(deaths, "child");
    ASSERT_TRUE(script.CreateChildDynamic(child->Link()));
    delete child;
    JS_GC(script.GetContext());
    EXPECT_EQ(deaths, std::vector<std::string>{"child"});
}

// CleanAll.

TEST_F(ScriptLifetimeTest, CleanAllLeavesAnInertObject)
{
    qxjsMinimal global;
    qxjsMinimal child;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), "host"));
    EXPECT_EQ(Show(script, "missing"), "(failed)");
    EXPECT_TRUE(script.CleanAll());
    EXPECT_EQ(script.GetContext(), nullptr);
    EXPECT_FALSE(script.HasGlobal());
    EXPECT_EQ(script.GetErrorCount(), 0);
    EXPECT_FALSE(global.GetJSLink()->IsCreated());
    EXPECT_TRUE(script.CleanAll());
}

TEST_F(ScriptLifetimeTest, CleanAllOfAnAdoptedContextLeavesAnInertObjectToo)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), "host"));
    CJScript adopting(script.GetContext());
    EXPECT_TRUE(adopting.CleanAll());
    EXPECT_EQ(adopting.GetContext(), nullptr);
    EXPECT_FALSE(adopting.Evaluate("1", nullptr));
    EXPECT_NE(script.GetContext(), nullptr);
    EXPECT_EQ(Show(script, "typeof host"), "object");
}

TEST_F(ScriptLifetimeTest, CleanAllClearsTheGlobalScopeThatOthersHold)
{
    qxjsMinimal globals[2];
    CJScript first(nullptr);
    CJScript second(nullptr);
    ASSERT_TRUE(first.SetGlobal(globals[0].GetJSLink(), ""));
    ASSERT_TRUE(second.SetGlobal(globals[1].GetJSLink(), ""));
    ASSERT_TRUE(JS_DefineWideProperty(second.GetContext(), globals[1].GetJSLink()->GetJSObject(), L"held", 4,
                                      OBJECT_TO_JSVAL(globals[0].GetJSLink()->GetJSObject()), nullptr, nullptr, 0));
    EXPECT_EQ(Show(first, "this.x = 5; x"), "5");
    EXPECT_EQ(Show(second, "held.x"), "5");
    first.CleanAll();
    EXPECT_EQ(Show(second, "typeof held + typeof held.x"), "objectundefined");
}

TEST_F(ScriptLifetimeTest, AnInertObjectRefusesEverything)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    script.CleanAll();
    int integer = 0;
    wxString text("before");
    jsval value = INT_TO_JSVAL(5);
    EXPECT_FALSE(script.SetGlobal(global.GetJSLink(), "host"));
    EXPECT_FALSE(script.Evaluate("1", nullptr));
    EXPECT_FALSE(script.Evaluate("1", nullptr, integer));
    EXPECT_EQ(integer, -1);
    EXPECT_FALSE(script.Evaluate("1", nullptr, text));
    EXPECT_EQ(text, "");
    EXPECT_FALSE(script.Execute("1", nullptr, nullptr));
    EXPECT_FALSE(script.HasFunction("f", global.GetJSLink()));
    EXPECT_FALSE(script.Call("f", global.GetJSLink()));
    EXPECT_FALSE(script.CreateChildDynamic(global.GetJSLink()));
    EXPECT_EQ(script.JSValToString(value), "");
    EXPECT_EQ(script.JSValToObject(value), nullptr);
    EXPECT_FALSE(script.GetCurrentLineInfo(&integer, &text));
    script.ClearScope(global.GetJSLink());
    script.RemoveGlobal();
    script.SetTimeLimit(100);
    script.SetMemoryLimit(1);
    EXPECT_FALSE(script.HasGlobal());
}

// While a script runs.

TEST_F(ScriptLifetimeTest, ARunningScriptMayHaveItsContextCleaned)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    DefineNative(script.GetContext(), nullptr, "clean", [&](JSContext*, uintN, jsval*, jsval*) {
        script.CleanAll();
        return JS_TRUE;
    });
    script.Evaluate("var x = 1; clean(); x + 1", nullptr);
    ForgetNatives();
    EXPECT_EQ(script.GetContext(), nullptr);
    EXPECT_FALSE(script.Evaluate("1", nullptr));
}

TEST_F(ScriptLifetimeTest, ARunningScriptMayHaveItsScopeCleared)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), "host"));
    DefineNative(script.GetContext(), nullptr, "clear", [&](JSContext*, uintN, jsval*, jsval*) {
        script.ClearScope(global.GetJSLink());
        return JS_TRUE;
    });
    EXPECT_EQ(Show(script, "var x = 1; clear(); x + 1"), "2");
    ForgetNatives();
    EXPECT_EQ(Show(script, "typeof x"), "undefined");
}

// Several contexts.

TEST_F(ScriptLifetimeTest, ContextsOfOneThreadAreSeparate)
{
    qxjsMinimal globals[2];
    CJScript first(nullptr);
    CJScript second(nullptr);
    ASSERT_TRUE(first.SetGlobal(globals[0].GetJSLink(), "a"));
    ASSERT_TRUE(second.SetGlobal(globals[1].GetJSLink(), "b"));
    EXPECT_EQ(Show(first, "var x = 1; typeof b"), "undefined");
    EXPECT_EQ(Show(second, "typeof x + typeof a"), "undefinedundefined");
    EXPECT_FALSE(first.Evaluate("missing", nullptr));
    EXPECT_EQ(first.GetErrorCount(), 1);
    EXPECT_EQ(second.GetErrorCount(), 0);
}

TEST_F(ScriptLifetimeTest, DestroyingOneOfTwoKeepsTheEngineAliveForTheOther)
{
    qxjsMinimal globals[2];
    auto first = std::make_unique<CJScript>(nullptr);
    auto second = std::make_unique<CJScript>(nullptr);
    ASSERT_TRUE(first->SetGlobal(globals[0].GetJSLink(), ""));
    ASSERT_TRUE(second->SetGlobal(globals[1].GetJSLink(), ""));
    EXPECT_EQ(Show(*second, "var x = { y: 1 }; x.y"), "1");
    first.reset();
    EXPECT_EQ(Show(*second, "x.y + 1"), "2");
    JS_GC(second->GetContext());
    EXPECT_EQ(Show(*second, "x.y + 1"), "2");
}

TEST_F(ScriptLifetimeTest, AContextCanFollowTheLast)
{
    for (int round = 0; round < 20; ++round) {
        qxjsMinimal global;
        CJScript script(nullptr);
        ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), "host"));
        ASSERT_EQ(Show(script, "typeof x + typeof (x = 1)"), "undefinednumber");
    }
}

} // namespace
