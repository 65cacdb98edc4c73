#include "tests/script/script_fixture.h"

#include <memory>

namespace
{

/// A context that has no global object yet.
class ScriptGlobalTest : public ::testing::Test
{
protected:
    CJScriptLink* Global() { return global.GetJSLink(); }
    wxString Show(const wxString& text)
    {
        wxString value;
        return script.Evaluate(text, nullptr, value) ? value : wxString("(failed)");
    }

    NoHostObjectsLeft check;
    LogCapture log;
    qxjsMinimal global;
    qxjsMinimal other;
    CJScript script{nullptr};
};

TEST_F(ScriptGlobalTest, ANewContextHasNone)
{
    EXPECT_FALSE(script.HasGlobal());
    EXPECT_EQ(script.GetGlobal(), nullptr);
    EXPECT_NE(script.GetContext(), nullptr);
    EXPECT_EQ(script.GetErrorCount(), 0);
}

TEST_F(ScriptGlobalTest, ALinkBecomesTheGlobalObject)
{
    EXPECT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_TRUE(script.HasGlobal());
    EXPECT_EQ(script.GetGlobal(), Global());
    EXPECT_TRUE(Global()->IsCreated());
    EXPECT_EQ(Global()->GetContext(), script.GetContext());
    EXPECT_EQ(Global()->GetScript(), &script);
    EXPECT_EQ(JS_GetGlobalObject(script.GetContext()), Global()->GetJSObject());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, ANullLinkIsRefused)
{
    EXPECT_FALSE(script.SetGlobal(nullptr, "name"));
    EXPECT_FALSE(script.HasGlobal());
}

TEST_F(ScriptGlobalTest, ASecondOneIsRefusedAndChangesNothing)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_FALSE(script.SetGlobal(other.GetJSLink(), "second"));
    EXPECT_EQ(script.GetGlobal(), Global());
    EXPECT_FALSE(other.GetJSLink()->IsCreated());
    EXPECT_EQ(Show("typeof second"), "undefined");
    EXPECT_FALSE(script.SetGlobal(Global(), ""));
    EXPECT_FALSE(script.SetGlobal(nullptr, ""));
    EXPECT_TRUE(script.HasGlobal());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, OneThatIsInUseIsRefused)
{
    CJScript second(nullptr);
    ASSERT_TRUE(second.SetGlobal(Global(), "first"));
    EXPECT_FALSE(script.SetGlobal(Global(), "second"));
    EXPECT_FALSE(script.HasGlobal());
    EXPECT_EQ(JS_GetGlobalObject(script.GetContext()), nullptr);
    EXPECT_EQ(Global()->GetScript(), &second);
    EXPECT_EQ(Global()->GetName(), "first");
    EXPECT_TRUE(script.SetGlobal(other.GetJSLink(), "second"));
}

TEST_F(ScriptGlobalTest, TheStandardNamesAreThere)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_EQ(Show("Math.max(1, 2) + parseInt('3') + [4].length + JSON.stringify({})"), "6{}");
}

TEST_F(ScriptGlobalTest, ItsNameIsUsableAsAConstant)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "host"));
    EXPECT_TRUE(log.Records().empty());
    EXPECT_EQ(Global()->GetName(), "host");
    EXPECT_EQ(Show("host === this"), "true");
    EXPECT_EQ(Show("var x = 5; host.x"), "5");
    script.Evaluate("host = 1", nullptr);
    EXPECT_EQ(Show("host === this"), "true");
}

TEST_F(ScriptGlobalTest, ItsNameIsUsableInFunctionsAndOnOtherObjects)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "host"));
    ASSERT_TRUE(script.CreateChild(other.GetJSLink(), Global(), "child", false, false));
    EXPECT_EQ(Show("(function() { return host === this; })()"), "true");
    wxString out;
    EXPECT_TRUE(script.Evaluate("host.child === this", other.GetJSLink(), out));
    EXPECT_EQ(out, "true");
}

TEST_F(ScriptGlobalTest, ANameOutsideAsciiIsUsable)
{
    ASSERT_TRUE(script.SetGlobal(Global(), L"h\u00f4te\u0416"));
    EXPECT_EQ(Show(L"h\u00f4te\u0416 === this"), "true");
}

TEST_F(ScriptGlobalTest, WithoutNameNothingIsBound)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_EQ(Show("Object.keys(this).join()"), "");
}

TEST_F(ScriptGlobalTest, ItSurvivesCollections)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_EQ(Show("var kept = { deep: [1, 2] }; 1"), "1");
    JS_GC(script.GetContext());
    EXPECT_EQ(Show("kept.deep.join()"), "1,2");
}

// Giving it up.

TEST_F(ScriptGlobalTest, RemovingItLeavesNone)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "host"));
    script.RemoveGlobal();
    EXPECT_FALSE(script.HasGlobal());
    EXPECT_EQ(script.GetGlobal(), nullptr);
    EXPECT_EQ(JS_GetGlobalObject(script.GetContext()), nullptr);
    EXPECT_FALSE(script.Execute("1", nullptr, nullptr));
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, RemovingItCollectsTheOldObject)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_EQ(JS_CountHostObjects(), FreshObjects());
    script.RemoveGlobal();
    EXPECT_EQ(JS_CountHostObjects(), 0u);
    EXPECT_FALSE(Global()->IsCreated());
}

TEST_F(ScriptGlobalTest, RemovingItTwiceIsHarmless)
{
    script.RemoveGlobal();
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    script.RemoveGlobal();
    script.RemoveGlobal();
    EXPECT_FALSE(script.HasGlobal());
}

TEST_F(ScriptGlobalTest, AnotherOneCanFollow)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "first"));
    EXPECT_EQ(Show("var x = 1; x"), "1");
    script.RemoveGlobal();
    ASSERT_TRUE(script.SetGlobal(other.GetJSLink(), "second"));
    EXPECT_EQ(Show("typeof x + typeof first + (second === this)"), "undefinedundefinedtrue");
}

TEST_F(ScriptGlobalTest, TheSameLinkCanFollowItself)
{
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(script.SetGlobal(Global(), "host"));
        EXPECT_EQ(Show("typeof x; var x = 1; host === this"), "true");
        script.RemoveGlobal();
    }
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, TheSameLinkCanMoveToAnotherContext)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "host"));
    script.RemoveGlobal();
    CJScript second(nullptr);
    ASSERT_TRUE(second.SetGlobal(Global(), "host"));
    bool out = false;
    EXPECT_TRUE(second.Evaluate("host === this", nullptr, out));
    EXPECT_TRUE(out);
    EXPECT_EQ(Global()->GetScript(), &second);
}

// Clearing scopes.

TEST_F(ScriptGlobalTest, ClearingTheGlobalScopeGivesAFreshObjectForTheSameLink)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_EQ(Show("var x = 1; const c = 2; let l = 3; function f() {} this.y = 4; x + c + l"), "6");
    script.ClearScope(Global());
    EXPECT_EQ(script.GetGlobal(), Global());
    EXPECT_TRUE(Global()->IsCreated());
    EXPECT_EQ(JS_GetGlobalObject(script.GetContext()), Global()->GetJSObject());
    EXPECT_EQ(Show("[typeof x, typeof c, typeof l, typeof f, typeof y, typeof Math].join()"),
              "undefined,undefined,undefined,undefined,undefined,object");
    EXPECT_EQ(Show("const c = 5; c"), "5");
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, ClearingTheGlobalScopeUnbindsItsName)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "host"));
    script.ClearScope(Global());
    EXPECT_EQ(Show("typeof host"), "undefined");
    EXPECT_EQ(Global()->GetName(), "");
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, ClearingANamedGlobalScopeEndsHidingAsAnExecuteDoes)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "host"));
    script.HideError();
    script.ClearScope(Global());
    EXPECT_FALSE(script.Evaluate("missing", nullptr));
    EXPECT_EQ(script.GetErrorCount(), 1);
    script.HideError();
    script.ClearScope(Global());
    EXPECT_FALSE(script.Evaluate("missing", nullptr));
    EXPECT_EQ(script.GetErrorCount(), 0) << "there was no name to bind";
}

TEST_F(ScriptGlobalTest, ClearingTheGlobalScopeTwiceIsHarmless)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "host"));
    script.ClearScope(Global());
    script.ClearScope(Global());
    EXPECT_EQ(Show("1 + 1"), "2");
    EXPECT_EQ(JS_CountHostObjects(), FreshObjects());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, ClearingAnotherScopeRemovesItsPropertiesOnly)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "host"));
    ASSERT_TRUE(script.CreateChild(other.GetJSLink(), Global(), "child", false, false));
    EXPECT_EQ(Show("var x = 1; child.y = 2; child.y"), "2");
    script.ClearScope(other.GetJSLink());
    EXPECT_EQ(Show("x + typeof child.y + (host.child === child)"), "1undefinedtrue");
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, ClearingNothingIsHarmless)
{
    ASSERT_TRUE(script.SetGlobal(Global(), "host"));
    EXPECT_EQ(Show("var x = 1; x"), "1");
    script.ClearScope(nullptr);
    script.ClearScope(other.GetJSLink());
    EXPECT_FALSE(other.GetJSLink()->IsCreated());
    EXPECT_EQ(Show("x + typeof host"), "1object");
}

// Objects below the global.

TEST_F(ScriptGlobalTest, AChildWithoutParentIsRefusedAndNoted)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_FALSE(script.CreateChild(other.GetJSLink(), nullptr, "child", false, false));
    EXPECT_EQ(log.Texts(NoticeLevel), Texts{"No parent"});
    EXPECT_EQ(log.Records().size(), 1u);
    EXPECT_FALSE(other.GetJSLink()->IsCreated());
}

TEST_F(ScriptGlobalTest, AChildIsAPropertyOfItsParent)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_TRUE(script.CreateChild(other.GetJSLink(), Global(), L"child\u0416", false, false));
    EXPECT_EQ(Show(L"typeof child\u0416"), "object");
    EXPECT_EQ(other.GetJSLink()->GetScript(), &script);
    CJScriptLink* out = nullptr;
    EXPECT_TRUE(script.Evaluate(L"child\u0416", nullptr, out));
    EXPECT_EQ(out, other.GetJSLink());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, ChildrenNest)
{
    qxjsMinimal inner;
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    ASSERT_TRUE(script.CreateChild(other.GetJSLink(), Global(), "outer", false, false));
    ASSERT_TRUE(script.CreateChild(inner.GetJSLink(), other.GetJSLink(), "inner", false, false));
    EXPECT_EQ(Show("typeof outer.inner + typeof inner"), "objectundefined");
    EXPECT_EQ(script.GetChild(other.GetJSLink(), "inner"), inner.GetJSLink());
}

TEST_F(ScriptGlobalTest, AChildIsFoundByItsName)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    ASSERT_TRUE(script.CreateChild(other.GetJSLink(), Global(), "child", false, false));
    EXPECT_EQ(script.GetChild(Global(), "child"), other.GetJSLink());
}

TEST_F(ScriptGlobalTest, WhatIsNoChildIsNotFound)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    EXPECT_EQ(Show("var number = 1, object = {}; 1"), "1");
    for (const char* name : {"number", "object", "Math", "missing", ""})
        EXPECT_EQ(script.GetChild(Global(), name), nullptr) << name;
    EXPECT_EQ(script.GetChild(nullptr, "child"), nullptr);
    EXPECT_EQ(script.GetChild(other.GetJSLink(), "child"), nullptr);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ScriptGlobalTest, ADynamicChildDiesWithItsScriptObject)
{
    const std::size_t fresh = FreshObjects();
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    std::vector<std::string> deaths;
    auto* child = new Mortal(deaths, "child");
    ASSERT_TRUE(script.CreateChildDynamic(child->Link()));
    EXPECT_TRUE(child->Link()->IsCreated());
    EXPECT_EQ(JS_CountHostObjects(), fresh + 1);
    EXPECT_TRUE(deaths.empty());
    JS_GC(script.GetContext());
    EXPECT_EQ(deaths, std::vector<std::string>{"child"});
    EXPECT_EQ(JS_CountHostObjects(), fresh);
}

TEST_F(ScriptGlobalTest, ADynamicChildThatScriptHoldsLives)
{
    ASSERT_TRUE(script.SetGlobal(Global(), ""));
    std::vector<std::string> deaths;
    auto* child = new Mortal(deaths, "child");
    ASSERT_TRUE(script.CreateChildDynamic(child->Link()));
    ASSERT_TRUE(script.Evaluate("var held; function hold(object) { held = object; }", nullptr));
    ASSERT_TRUE(script.Call("hold", Global(), child->Link()));
    JS_GC(script.GetContext());
    EXPECT_TRUE(deaths.empty());
    ASSERT_TRUE(script.Evaluate("held = null", nullptr));
    JS_GC(script.GetContext());
    EXPECT_EQ(deaths, std::vector<std::string>{"child"});
}

} // namespace
