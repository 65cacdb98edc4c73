#include "script/script_class.h"
#include "tests/script/script_fixture.h"

#include <string>

namespace
{

using Deaths = std::vector<std::string>;

/// Objects that are to be deleted as soon as no script runs.
class ScriptScopeTest : public ScriptTest
{
protected:
    /// A child of the global object, which only its scope list deletes.
    Mortal* NewChild(const char* name)
    {
        auto* child = new Mortal(deaths, name);
        EXPECT_TRUE(script.CreateChild(child->Link(), Global(), name, false, false));
        return child;
    }

    /// Makes `drop(name)` a function that queues the child of that name.
    void DefineDrop()
    {
        Define("drop", [this](JSContext*, uintN, jsval* argv, jsval*) {
            script.GetChild(Global(), script.JSValToString(argv[0]))->SetScopeDelete();
            deathsWhileDropping = deaths.size();
            return JS_TRUE;
        });
    }

    Deaths deaths;
    size_t deathsWhileDropping = 99;
};

TEST_F(ScriptScopeTest, AQueuedObjectIsDeletedWhenTheOutermostLevelEnds)
{
    Mortal* child = NewChild("child");
    script.IncScopeLevel();
    script.IncScopeLevel();
    child->Link()->SetScopeDelete();
    script.DecScopeLevel();
    EXPECT_TRUE(deaths.empty());
    script.DecScopeLevel();
    EXPECT_EQ(deaths, Deaths{"child"});
    EXPECT_EQ(Show("typeof child"), "undefined");
}

TEST_F(ScriptScopeTest, QueuedObjectsGoInTheOrderTheyWereQueued)
{
    Mortal* children[] = {NewChild("a"), NewChild("b"), NewChild("c"), NewChild("d")};
    script.IncScopeLevel();
    for (const int index : {2, 0, 3, 1})
        children[index]->Link()->SetScopeDelete();
    script.DecScopeLevel();
    EXPECT_EQ(deaths, (Deaths{"c", "a", "d", "b"}));
}

TEST_F(ScriptScopeTest, QueuingTwiceDeletesOnce)
{
    Mortal* child = NewChild("child");
    script.IncScopeLevel();
    child->Link()->SetScopeDelete();
    child->Link()->SetScopeDelete();
    script.DecScopeLevel();
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, AScriptCanDropAnObjectItIsUsing)
{
    NewChild("child");
    DefineDrop();
    EXPECT_EQ(Show("child.x = 1; var mine = child; drop('child'); mine.x"), "1");
    EXPECT_EQ(deathsWhileDropping, 0u);
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, AFailingScriptEndsItsLevelToo)
{
    NewChild("child");
    DefineDrop();
    EXPECT_FALSE(script.Evaluate("drop('child'); missing", nullptr));
    EXPECT_EQ(deathsWhileDropping, 0u);
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, CallsAreLevelsToo)
{
    NewChild("child");
    NewChild("second");
    DefineDrop();
    ASSERT_TRUE(
        script.Evaluate("function f(name) { drop(name); }  function g() { drop('second'); missing; }", nullptr));
    EXPECT_TRUE(script.Call("f", Global(), wxString("child")));
    EXPECT_EQ(deathsWhileDropping, 0u);
    EXPECT_EQ(deaths, Deaths{"child"});
    EXPECT_FALSE(script.Call("g", Global()));
    EXPECT_EQ(deathsWhileDropping, 1u);
    EXPECT_EQ(deaths, (Deaths{"child", "second"}));
}

TEST_F(ScriptScopeTest, AnEvaluationInsideAScriptDeletesNothing)
{
    NewChild("child");
    DefineDrop();
    size_t deathsInside = 99;
    Define("inner", [&](JSContext*, uintN, jsval*, jsval*) {
        script.Evaluate("drop('child')", nullptr);
        script.Evaluate("missing", nullptr);
        script.Call("drop", Global(), wxString("child"));
        deathsInside = deaths.size();
        return JS_TRUE;
    });
    EXPECT_TRUE(script.Evaluate("inner(); child.x = 1;", nullptr));
    EXPECT_EQ(deathsInside, 0u);
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, AnEvaluationInAnotherContextDeletesNothingOfARunningScript)
{
    qxjsMinimal otherGlobal;
    CJScript other(nullptr);
    ASSERT_TRUE(other.SetGlobal(otherGlobal.GetJSLink(), ""));
    NewChild("child");
    DefineDrop();
    size_t deathsInside = 99;
    Define("inner", [&](JSContext*, uintN, jsval*, jsval*) {
        other.Evaluate("1", nullptr);
        deathsInside = deaths.size();
        return JS_TRUE;
    });
    EXPECT_TRUE(script.Evaluate("drop('child'); inner(); child.x = 1;", nullptr));
    EXPECT_EQ(deathsInside, 0u);
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, AnEvaluationThroughAnotherHandleDeletesNothingOfARunningScript)
{
    NewChild("child");
    DefineDrop();
    size_t deathsInside = 99;
    Define("inner", [&](JSContext*, uintN, jsval*, jsval*) {
        CJScript copy(script);
        copy.Evaluate("1", nullptr);
        CJScript adopted(Context());
        adopted.Evaluate("1", nullptr);
        deathsInside = deaths.size();
        return JS_TRUE;
    });
    EXPECT_TRUE(script.Evaluate("drop('child'); inner(); child.x = 1;", nullptr));
    EXPECT_EQ(deathsInside, 0u);
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, AnObjectThatTheHostHoldsStaysUntilItIsLetGo)
{
    Mortal* child = NewChild("child");
    ASSERT_TRUE(JS_AddRoot(Context(), child->Link()->GetJSObjectAddress()));
    child->Link()->SetScopeDelete();
    EXPECT_TRUE(script.Evaluate("1", nullptr));
    EXPECT_TRUE(deaths.empty());
    ASSERT_TRUE(JS_RemoveRoot(Context(), child->Link()->GetJSObjectAddress()));
    EXPECT_TRUE(script.Evaluate("1", nullptr));
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, AnObjectThatTheHostDeletesLeavesTheQueue)
{
    Mortal* child = NewChild("child");
    script.IncScopeLevel();
    child->Link()->SetScopeDelete();
    delete child;
    script.DecScopeLevel();
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, AnObjectTakenOffTheQueueStays)
{
    Mortal* child = NewChild("child");
    script.IncScopeLevel();
    child->Link()->SetScopeDelete();
    CJScriptLinkClass::RemoveFromScopeList(child->Link());
    script.DecScopeLevel();
    EXPECT_TRUE(deaths.empty());
    delete child;
}

TEST_F(ScriptScopeTest, AnObjectTakenOffTheQueueCanBeQueuedAgain)
{
    Mortal* child = NewChild("child");
    child->Link()->SetScopeDelete();
    CJScriptLinkClass::RemoveFromScopeList(child->Link());
    child->Link()->SetScopeDelete();
    EXPECT_TRUE(script.Evaluate("1", nullptr));
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, AnObjectPutOnTheListTwiceIsDeletedOnce)
{
    Mortal* child = NewChild("child");
    CJScriptLinkClass::AddToScopeList(child->Link());
    CJScriptLinkClass::AddToScopeList(child->Link());
    EXPECT_TRUE(script.Evaluate("1", nullptr));
    EXPECT_EQ(deaths, Deaths{"child"});
}

TEST_F(ScriptScopeTest, AQueuedObjectGoesWithItsContext)
{
    NewChild("child")->Link()->SetScopeDelete();
    script.CleanAll();
    EXPECT_EQ(deaths, Deaths{"child"});
}

/// Queues a further object when it goes.
class Chained : public Mortal
{
public:
    Chained(std::vector<std::string>& deaths, Mortal* next) : Mortal(deaths, "chained"), m_next(next) {}
    ~Chained() override { m_next->Link()->SetScopeDelete(); }

private:
    Mortal* m_next;
};

TEST_F(ScriptScopeTest, AnObjectQueuedByADeletionGoesToo)
{
    Mortal* last = NewChild("last");
    auto* first = new Chained(deaths, last);
    ASSERT_TRUE(script.CreateChild(first->Link(), Global(), "first", false, false));
    script.IncScopeLevel();
    first->Link()->SetScopeDelete();
    script.DecScopeLevel();
    EXPECT_TRUE(script.Evaluate("1", nullptr));
    EXPECT_EQ(deaths, (Deaths{"chained", "last"}));
}

/// Deletes a further object when it goes.
class Owner : public Mortal
{
public:
    Owner(std::vector<std::string>& deaths, Mortal* owned) : Mortal(deaths, "owner"), m_owned(owned) {}
    ~Owner() override { delete m_owned; }

private:
    Mortal* m_owned;
};

TEST_F(ScriptScopeTest, AnObjectDeletedByTheDeletionOfAnotherIsDeletedOnce)
{
    Mortal* owned = NewChild("owned");
    auto* owner = new Owner(deaths, owned);
    ASSERT_TRUE(script.CreateChild(owner->Link(), Global(), "owner", false, false));
    script.IncScopeLevel();
    owner->Link()->SetScopeDelete();
    owned->Link()->SetScopeDelete();
    script.DecScopeLevel();
    EXPECT_EQ(deaths, (Deaths{"owned", "owner"}));
}

} // namespace
