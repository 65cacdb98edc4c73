#include "tests/script/script_fixture.h"

#include <memory>

namespace
{

/// Several handles on one context: copies, and those that adopt it.
using ScriptHandlesTest = ScriptContextsTest;

// Copies.

TEST_F(ScriptHandlesTest, ACopyIsAHandleOnTheSameContext)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    EXPECT_FALSE(script.Evaluate("missing", nullptr));
    CJScript copy(script);
    EXPECT_EQ(copy.GetContext(), script.GetContext());
    EXPECT_EQ(copy.GetGlobal(), global.GetJSLink());
    ASSERT_EQ(copy.GetErrorCount(), 1);
    EXPECT_EQ(copy.GetError(0)->msg, "ReferenceError: missing is not defined");
    EXPECT_EQ(Show(script, "var x = 5; x"), "5");
    EXPECT_EQ(Show(copy, "x + 1"), "6");
}

TEST_F(ScriptHandlesTest, CopiesAndAssignedHandlesHaveEveryField)
{
    qxjsMinimal globals[2];
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(globals[0].GetJSLink(), ""));
    EXPECT_FALSE(script.Evaluate("missing", nullptr));
    script.HideError();
    script.SetCallStack("f() at 1\n");
    CJScript copy(script);
    CJScript assigned(nullptr);
    ASSERT_TRUE(assigned.SetGlobal(globals[1].GetJSLink(), ""));
    assigned = script;
    for (CJScript* handle : {&copy, &assigned}) {
        EXPECT_EQ(handle->GetContext(), script.GetContext());
        EXPECT_EQ(handle->GetGlobal(), globals[0].GetJSLink());
        ASSERT_EQ(handle->GetErrorCount(), 1);
        EXPECT_EQ(handle->GetError(0)->msg, "ReferenceError: missing is not defined");
        wxString report;
        handle->CommonReportError(nullptr, wxString(), nullptr, &report);
        EXPECT_EQ(report, "==> ReferenceError: missing is not defined\n Call stack is:\nf() at 1\n");
        EXPECT_FALSE(handle->Evaluate("absent", nullptr));
        EXPECT_EQ(handle->GetErrorCount(), 0) << "errors are hidden";
    }
    EXPECT_FALSE(globals[1].GetJSLink()->IsCreated());
}

TEST_F(ScriptHandlesTest, AHandleGetsTheErrorsOfItsOwnOperations)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    CJScript copy(script);
    wxString report;
    EXPECT_FALSE(copy.Execute("1;\nmissing;", nullptr, &report));
    EXPECT_EQ(report, "missing;\n==> ReferenceError: missing is not defined\n");
    EXPECT_EQ(copy.GetErrorCount(), 1);
    EXPECT_EQ(script.GetErrorCount(), 0);
    CJScript adopting(script.GetContext());
    EXPECT_FALSE(script.Execute("1;\nabsent;", nullptr, &report));
    EXPECT_EQ(report, "absent;\n==> ReferenceError: absent is not defined\n");
    EXPECT_EQ(adopting.GetErrorCount(), 0);
}

TEST_F(ScriptHandlesTest, DestroyingACopyFirstLeavesTheContextAsItWas)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), "host"));
    EXPECT_EQ(Show(script, "var x = 5; x"), "5");
    {
        CJScript copy(script);
        EXPECT_EQ(Show(copy, "x"), "5");
    }
    EXPECT_TRUE(script.HasGlobal());
    EXPECT_EQ(Show(script, "x + (host === this)"), "6");
    EXPECT_EQ(CJScript::FromContext(script.GetContext()), &script);
}

TEST_F(ScriptHandlesTest, ACopyMayBeDestroyedLast)
{
    qxjsMinimal global;
    std::unique_ptr<CJScript> copy;
    {
        CJScript script(nullptr);
        ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
        copy = std::make_unique<CJScript>(script);
    }
    EXPECT_FALSE(global.GetJSLink()->IsCreated());
    copy.reset();
    CJScript next(nullptr);
    ASSERT_TRUE(next.SetGlobal(global.GetJSLink(), ""));
    EXPECT_EQ(Show(next, "1 + 1"), "2");
}

TEST_F(ScriptHandlesTest, ACopyIsInertAfterTheEndOfTheContext)
{
    qxjsMinimal global;
    auto script = std::make_unique<CJScript>(nullptr);
    ASSERT_TRUE(script->SetGlobal(global.GetJSLink(), ""));
    CJScript copy(*script);
    script.reset();
    EXPECT_EQ(copy.GetContext(), nullptr);
    EXPECT_FALSE(copy.HasGlobal());
    EXPECT_FALSE(copy.Evaluate("1", nullptr));
}

TEST_F(ScriptHandlesTest, ACopyHasNoGlobalAfterTheEndOfThat)
{
    auto global = std::make_unique<qxjsMinimal>();
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global->GetJSLink(), ""));
    CJScript copy(script);
    global.reset();
    EXPECT_FALSE(script.HasGlobal());
    EXPECT_FALSE(copy.HasGlobal());
    EXPECT_FALSE(copy.Evaluate("1", nullptr));
}

TEST_F(ScriptHandlesTest, TheGlobalObjectOfACopyMayEndAfterTheCopy)
{
    CJScript script(nullptr);
    {
        qxjsMinimal global;
        {
            CJScript copy(script);
            ASSERT_TRUE(copy.SetGlobal(global.GetJSLink(), "host"));
            EXPECT_EQ(Show(copy, "host === this"), "true");
        }
        JS_GC(script.GetContext());
    }
    JS_GC(script.GetContext());
    EXPECT_EQ(JS_CountHostObjects(), 0u);
}

TEST_F(ScriptHandlesTest, AssigningACopyBackKeepsTheContext)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    EXPECT_EQ(Show(script, "var x = 1; x"), "1");
    const CJScript copy(script);
    script = copy;
    EXPECT_EQ(script.GetContext(), copy.GetContext());
    EXPECT_EQ(Show(script, "x"), "1");
}

TEST_F(ScriptHandlesTest, AnAssignedHandleGivesUpItsOwnContext)
{
    qxjsMinimal globals[2];
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(globals[0].GetJSLink(), ""));
    EXPECT_EQ(Show(script, "var x = 1; x"), "1");
    {
        CJScript assigned(nullptr);
        ASSERT_TRUE(assigned.SetGlobal(globals[1].GetJSLink(), ""));
        assigned = script;
        EXPECT_EQ(assigned.GetContext(), script.GetContext());
        EXPECT_EQ(Show(assigned, "x"), "1");
        EXPECT_FALSE(globals[1].GetJSLink()->IsCreated());
    }
    EXPECT_EQ(Show(script, "x"), "1");
}

TEST_F(ScriptHandlesTest, AssigningAHandleToItselfChangesNothing)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    EXPECT_EQ(Show(script, "var x = 1; x"), "1");
    const CJScript& self = script;
    script = self;
    EXPECT_EQ(Show(script, "x"), "1");
}

// Adopted contexts.

TEST_F(ScriptHandlesTest, AnAdoptedContextIsNotDestroyed)
{
    JSRuntime* runtime = JS_Init(16777216);
    JSContext* context = JS_NewContext(runtime, 8192);
    {
        qxjsMinimal global;
        CJScript script(context);
        EXPECT_EQ(script.GetContext(), context);
        EXPECT_EQ(CJScript::FromContext(context), &script);
        ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
        EXPECT_EQ(Show(script, "1 + 1"), "2");
        EXPECT_FALSE(script.Evaluate("missing", nullptr));
        EXPECT_EQ(script.GetErrorCount(), 1);
    }
    EXPECT_EQ(CJScript::FromContext(context), nullptr);
    EXPECT_EQ(JS_GetGlobalObject(context), nullptr);
    JS_GC(context);
    JS_DestroyContext(context);
    JS_Finish(runtime);
}

TEST_F(ScriptHandlesTest, AnAdoptedContextHasTheNewHandleUntilThatEnds)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), ""));
    {
        CJScript adopted(script.GetContext());
        EXPECT_EQ(CJScript::FromContext(script.GetContext()), &adopted);
        EXPECT_FALSE(adopted.HasGlobal());
    }
    EXPECT_EQ(CJScript::FromContext(script.GetContext()), &script);
    EXPECT_FALSE(script.Evaluate("missing", nullptr));
    EXPECT_EQ(script.GetErrorCount(), 1);
}

TEST_F(ScriptHandlesTest, AnAdoptingHandleLeavesTheGlobalOfTheOtherAlone)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), "host"));
    EXPECT_EQ(Show(script, "var x = 1; x"), "1");
    {
        CJScript adopted(script.GetContext());
        adopted.CleanAll();
    }
    EXPECT_TRUE(script.HasGlobal());
    EXPECT_EQ(Show(script, "x + (host === this)"), "2");
}

TEST_F(ScriptHandlesTest, TheGlobalObjectEndsWhileItsContextHasAnotherHandle)
{
    auto global = std::make_unique<qxjsMinimal>();
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global->GetJSLink(), ""));
    CJScript adopted(script.GetContext());
    global.reset();
    EXPECT_FALSE(script.HasGlobal());
    EXPECT_FALSE(script.Execute("1", nullptr, nullptr));
    EXPECT_EQ(JS_CountHostObjects(), 0u);
}

TEST_F(ScriptHandlesTest, HandlesOfOneContextMayEndInAnyOrder)
{
    auto owner = std::make_unique<CJScript>(nullptr);
    JSContext* context = owner->GetContext();
    auto second = std::make_unique<CJScript>(context);
    auto third = std::make_unique<CJScript>(context);
    EXPECT_EQ(CJScript::FromContext(context), third.get());
    second.reset();
    EXPECT_EQ(CJScript::FromContext(context), third.get());
    third.reset();
    EXPECT_EQ(CJScript::FromContext(context), owner.get());
}

} // namespace
