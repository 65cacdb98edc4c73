#include "tests/script/class_fixture.h"

#include <algorithm>

namespace
{

/// A class whose objects destroy themselves and others when script asks for it.
class Mine : public wxObject
{
public:
    explicit Mine(int number = 0) : m_number(number)
    {
        ++ms_alive;
        m_link.Link(this, &ms_JSClass);
    }
    ~Mine() override
    {
        --ms_alive;
        delete m_owned;
    }

    int Destroy()
    {
        const int number = m_number;
        delete this;
        return number;
    }
    void Queue() { m_link.SetScopeDelete(); }
    bool Cut() { return m_link.DeleteObject(); }
    void Own(int number) { m_owned = new Mine(number); }
    int GetNumber() const { return m_number; }

    CJScriptLink* GetJSLink() { return &m_link; }

    int m_number;
    Mine* m_owned = nullptr;
    CJScriptLink m_link;

    static int ms_alive;
    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;
};

int Mine::ms_alive = 0;

JSMapEntry Mine::m_JSMapEntries[] = {
    JSConstructor<Mine, int>(),
    JSField<Mine>("number", &Mine::m_number),
    JSObjectField<Mine>("owned", &Mine::m_owned, &Mine::m_link),
    JSMethod<&Mine::Destroy>("Destroy"),
    JSMethod<&Mine::Queue>("Queue"),
    JSMethod<&Mine::Cut>("Cut"),
    JSMethod<&Mine::Own>("Own"),
    JSMethod<&Mine::GetNumber>("GetNumber"),
    JSMapEntry(4711, "OnEvent"),
    JSMapEntry(),
};
const JSMap Mine::m_JSMap{"Mine", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass Mine::ms_JSClass(&Mine::m_JSMap);

/// Every test runs without and with a collection at every engine call; between the steps there always is one.
class LinkLifetimeTest : public ::testing::TestWithParam<bool>
{
protected:
    LinkLifetimeTest()
    {
        CJScriptLinkClass::RegisterJSClass(&Mine::ms_JSClass);
        script = std::make_unique<CJScript>(nullptr);
        EXPECT_TRUE(script->SetGlobal(global.GetJSLink(), wxS("Global")));
        m_before = JS_SetStress(GetParam());
    }
    ~LinkLifetimeTest() override
    {
        script.reset();
        JS_SetStress(m_before);
        CJScriptLinkClass::UnregisterJSClass(&Mine::ms_JSClass);
        EXPECT_EQ(Mine::ms_alive, 0);
    }

    wxString Show(const wxString& text)
    {
        wxString value;
        const bool shown = script->Evaluate(text, nullptr, value);
        Collect();
        return shown ? value : wxString("(failed)");
    }
    void Collect() { JS_GC(script->GetContext()); }

    std::unique_ptr<Mine> Child(const wxString& name, CJScriptLink* parent = nullptr)
    {
        auto child = std::make_unique<Mine>(7);
        EXPECT_TRUE(script->CreateChild(child->GetJSLink(), parent ? parent : global.GetJSLink(), name, false, false));
        Collect();
        return child;
    }
    /// One that ends by other means than the test's.
    Mine* Free(const wxString& name) { return Child(name).release(); }

    NoHostObjectsLeft check;
    LogCapture log;
    qxjsMinimal global;
    std::unique_ptr<CJScript> script;

private:
    bool m_before = false;
};

INSTANTIATE_TEST_SUITE_P(WithoutAndWithStress, LinkLifetimeTest, ::testing::Bool(),
                         ::testing::PrintToStringParamName());

TEST_P(LinkLifetimeTest, TheNativeObjectEndsFirst)
{
    auto child = Child("child");
    Show("var kept = child");
    child.reset();
    Collect();
    EXPECT_EQ(Show("typeof kept + typeof child"), "objectundefined");
    EXPECT_EQ(Show("kept.number"), "(failed)");
    EXPECT_EQ(Show("kept.number = 1"), "(failed)");
    EXPECT_EQ(Show("kept.GetNumber()"), "(failed)");
    EXPECT_EQ(Show("kept.StrToUpper('a')"), "(failed)");
    Show("kept = null");
}

TEST_P(LinkLifetimeTest, TheScriptObjectEndsFirst)
{
    auto child = Child("child");
    EXPECT_EQ(Show("delete Global.child"), "true");
    EXPECT_FALSE(child->GetJSLink()->IsCreated());
    EXPECT_EQ(Mine::ms_alive, 1);
    ASSERT_TRUE(script->CreateChild(child->GetJSLink(), global.GetJSLink(), "again", false, false));
    EXPECT_EQ(Show("again.number"), "7");
}

TEST_P(LinkLifetimeTest, AParentAndItsChildEndInEitherOrder)
{
    for (const bool parentFirst : {true, false}) {
        auto parent = Child("parent");
        auto child = Child("child", parent->GetJSLink());
        Show("var kept = parent, held = parent.child");
        (parentFirst ? parent : child).reset();
        Collect();
        EXPECT_EQ(Show("typeof kept.child"), parentFirst ? "object" : "undefined");
        if (parentFirst) {
            EXPECT_EQ(child->GetJSLink()->GetParent(), nullptr);
            EXPECT_EQ(child->GetJSLink()->GetCompleteName(), "child");
        }
        (parentFirst ? child : parent).reset();
        EXPECT_EQ(Show("typeof kept.child + typeof held"), "undefinedobject");
        EXPECT_EQ(Mine::ms_alive, 0);
    }
}

TEST_P(LinkLifetimeTest, AnObjectMadeByScriptDiesWithItsScriptObject)
{
    EXPECT_EQ(Show("var made = new Mine(5); made.number"), "5");
    EXPECT_EQ(Mine::ms_alive, 1);
    Show("var stored = {deep: [made]}; made = null");
    EXPECT_EQ(Mine::ms_alive, 1);
    EXPECT_EQ(Show("stored.deep[0].GetNumber()"), "5");
    Show("stored = null");
    EXPECT_EQ(Mine::ms_alive, 0);
}

TEST_P(LinkLifetimeTest, AnObjectMadeByScriptTakesWhatItOwnsAlong)
{
    EXPECT_EQ(Show("var made = new Mine(5); made.Own(6); made.GetNumber()"), "5");
    EXPECT_EQ(Mine::ms_alive, 2);
    Show("made = null");
    EXPECT_EQ(Mine::ms_alive, 0);
}

TEST_P(LinkLifetimeTest, ADynamicChildDiesWhenItsParentDropsIt)
{
    auto* const child = new Mine(3);
    ASSERT_TRUE(script->CreateChild(child->GetJSLink(), global.GetJSLink(), "child", false, true));
    Collect();
    EXPECT_EQ(Show("child.number"), "3");
    Show("delete Global.child");
    EXPECT_EQ(Mine::ms_alive, 0);
}

TEST_P(LinkLifetimeTest, ObjectsMadeByScriptDieWithTheirContext)
{
    Show("var made = new Mine(1), array = [new Mine(2)]; made.Own(3); made.self = made");
    EXPECT_EQ(Mine::ms_alive, 3);
    script.reset();
    EXPECT_EQ(Mine::ms_alive, 0);
}

TEST_P(LinkLifetimeTest, AHostsObjectOutlivesItsContextAndMovesToAnother)
{
    auto child = Child("child");
    script.reset();
    EXPECT_FALSE(child->GetJSLink()->IsCreated());
    EXPECT_EQ(child->GetJSLink()->GetContext(), nullptr);
    script = std::make_unique<CJScript>(nullptr);
    ASSERT_TRUE(script->SetGlobal(global.GetJSLink(), "Global"));
    ASSERT_TRUE(script->CreateChild(child->GetJSLink(), global.GetJSLink(), "child", false, false));
    EXPECT_EQ(Show("child.number"), "7");
}

TEST_P(LinkLifetimeTest, AMethodMayDeleteItsOwnObject)
{
    Free("child");
    EXPECT_EQ(Show("var kept = child; child.Destroy() + '|' + typeof child + '|' + typeof kept"), "7|undefined|object");
    EXPECT_EQ(Show("kept.Destroy()"), "(failed)");
    EXPECT_EQ(Show("var made = new Mine(5); made.Destroy()"), "5");
    Show("kept = made = null");
    EXPECT_EQ(Mine::ms_alive, 0);
}

TEST_P(LinkLifetimeTest, ConvertingAnArgumentMayDeleteTheObject)
{
    Free("child");
    EXPECT_EQ(Show("child.Own({valueOf: function () { child.Destroy(); return 1; }})"), "(failed)");
    EXPECT_EQ(Mine::ms_alive, 0);
}

TEST_P(LinkLifetimeTest, ConvertingAWrittenValueMayDeleteTheObject)
{
    Free("child");
    EXPECT_EQ(Show("child.number = {valueOf: function () { child.Destroy(); return 1; }}"), "(failed)");
    EXPECT_EQ(Mine::ms_alive, 0);
    EXPECT_TRUE(log.Errors().empty());
}

TEST_P(LinkLifetimeTest, AnEventsFunctionMayDeleteTheObject)
{
    for (const wxString result : {"true", "false"}) {
        Mine* const child = Free("child");
        Show("child.OnEvent = function () { this.Destroy(); return " + result + "; }");
        wxThreadEvent event(4711);
        EXPECT_EQ(child->GetJSLink()->ProcessEvent(event), result == "true");
        EXPECT_EQ(Mine::ms_alive, 0);
    }
}

TEST_P(LinkLifetimeTest, AnEventsFunctionMayQueueTheObject)
{
    for (const wxString result : {"true", "false"}) {
        Mine* const child = Free("child");
        Show("child.OnEvent = function () { this.Queue(); delete Global.child; return " + result + "; }");
        wxThreadEvent event(4711);
        EXPECT_EQ(child->GetJSLink()->ProcessEvent(event), result == "true");
        Show("1");
        EXPECT_EQ(Mine::ms_alive, 0);
    }
}

TEST_P(LinkLifetimeTest, AQueuedObjectLivesAsLongAsScriptRuns)
{
    Free("child");
    EXPECT_EQ(Show("var kept = child; child.Queue(); delete Global.child; kept.GetNumber()"), "7");
    EXPECT_EQ(Mine::ms_alive, 0);
    EXPECT_EQ(Show("kept.GetNumber()"), "(failed)");
}

TEST_P(LinkLifetimeTest, AnOnDestroyFunctionMayDeleteAnotherObject)
{
    auto child = Child("child");
    Free("second");
    Show("var seen = []; child.CallOnDestroy(function () { seen.push(second.Destroy()); })");
    child.reset();
    EXPECT_EQ(Show("seen.join() + typeof second"), "7undefined");
}

TEST_P(LinkLifetimeTest, OnDestroyFunctionsOfTwoObjectsMayDeleteEachOther)
{
    Free("first");
    Free("second");
    Show("first.CallOnDestroy(function () { if (Global.second) second.Destroy(); });"
         "second.CallOnDestroy(function () { seen = 'second gone'; })");
    EXPECT_EQ(Show("var seen = ''; first.Destroy(); seen"), "second gone");
    EXPECT_EQ(Mine::ms_alive, 0);
}

TEST_P(LinkLifetimeTest, AnOnDestroyFunctionThatRegistersItselfIsCalledOnce)
{
    auto child = Child("child");
    Show("var calls = 0; function again() { ++calls; this.CallOnDestroy(again); } child.CallOnDestroy(again)");
    child.reset();
    EXPECT_EQ(Show("calls"), "1");
}

TEST_P(LinkLifetimeTest, AFailingOnDestroyFunctionDoesNotStopTheOthers)
{
    auto child = Child("child");
    Show("var calls = 0; child.CallOnDestroy(function () { throw 'no'; }); child.CallOnDestroy(function () { ++calls; "
         "})");
    child.reset();
    EXPECT_EQ(Show("calls"), "1");
    EXPECT_EQ(log.Texts(ScriptErrorLevel).size(), 1u);
}

TEST_P(LinkLifetimeTest, AnObjectOfScriptThatTheHostDeletesMayLoseItsScriptObjectMeanwhile)
{
    auto* const made = new Mine(5);
    ASSERT_TRUE(script->CreateChild(made->GetJSLink(), global.GetJSLink(), "made", false, true));
    Show("var calls = []; made.CallOnDestroy(function () { calls.push(1); delete Global.made; });"
         "made.CallOnDestroy(function () { calls.push(2); for (var i = 0; i < 10; ++i) new Mine(i); })");
    delete made;
    EXPECT_EQ(Show("calls.join() + typeof made"), "1,2undefined");
    EXPECT_EQ(Mine::ms_alive, 0);
}

TEST_P(LinkLifetimeTest, AnObjectThatWaitsForItsDeletionMayBeDeletedBefore)
{
    auto* const made = new Mine(5);
    ASSERT_TRUE(script->CreateChild(made->GetJSLink(), global.GetJSLink(), "made", false, true));
    Collect();
    DefineNative(script->GetContext(), nullptr, "collect", [made](JSContext* cx, uintN, jsval*, jsval*) {
        JS_GC(cx);
        EXPECT_FALSE(made->GetJSLink()->IsCreated());
        EXPECT_EQ(Mine::ms_alive, 1) << "not while script runs";
        delete made;
        return JS_TRUE;
    });
    EXPECT_EQ(Show("delete Global.made; collect()"), "undefined");
    EXPECT_EQ(Mine::ms_alive, 0);
    ForgetNatives();
}

TEST_P(LinkLifetimeTest, AnObjectCutOffIsTheHostsAgain)
{
    auto child = Child("child");
    EXPECT_EQ(Show("var kept = child; child.Cut() + '|' + typeof child"), "true|undefined");
    EXPECT_EQ(Show("kept.number"), "(failed)");
    EXPECT_FALSE(child->GetJSLink()->DeleteObject());
    EXPECT_EQ(Mine::ms_alive, 1);
    ASSERT_TRUE(script->CreateChild(child->GetJSLink(), global.GetJSLink(), "second", false, false));
    EXPECT_EQ(Show("second.number + '|' + (second === kept)"), "7|false");
}

TEST_P(LinkLifetimeTest, AnObjectOfAClassThatKeepsItsLinkStaysUsableWhenCutOff)
{
    Mine::ms_JSClass.SetKeepPrivate(true);
    auto child = Child("child");
    EXPECT_EQ(Show("var kept = child; child.Cut() + '|' + typeof child + '|' + kept.number"), "true|undefined|7");
    child.reset();
    EXPECT_EQ(Show("kept.number"), "(failed)");
    EXPECT_EQ(Show("kept = null"), "null");
    child = Child("second");
    Show("delete Global.second");
    EXPECT_FALSE(child->GetJSLink()->IsCreated());
    Mine::ms_JSClass.SetKeepPrivate(false);
}

// A function lives as long as the native object that hangs on it.

TEST_P(LinkLifetimeTest, KeptFunctionsOutliveCollectionsUntilTheyAreRemoved)
{
    auto child = Child("child");
    CJScriptLink* const link = child->GetJSLink();
    Show("child.handler = function () { return false; }; child.handler.mark = new Mine(1); 0");
    JSFunction* const handler = link->GetJSFunction("handler");
    ASSERT_NE(handler, nullptr);
    link->AddFunction(handler);
    link->AddFunction(handler);
    Show("delete child.handler");
    EXPECT_EQ(Mine::ms_alive, 2);
    bool result = true;
    EXPECT_TRUE(link->CallFunction(handler, result));
    EXPECT_FALSE(result);
    link->RemoveFunction(handler);
    Collect();
    EXPECT_EQ(Mine::ms_alive, 2) << "added twice";
    link->RemoveFunction(handler);
    link->RemoveFunction(handler);
    Collect();
    EXPECT_EQ(Mine::ms_alive, 1);
}

TEST_P(LinkLifetimeTest, AFunctionThatIsNoLongerKeptIsNotCalledInTheEnd)
{
    auto child = Child("child");
    CJScriptLink* const link = child->GetJSLink();
    Show("var seen = []; child.first = function () { seen.push(1); }; child.second = function () { seen.push(2); };"
         "child.CallOnDestroy(child.first); child.CallOnDestroy(child.second)");
    link->RemoveFunction(link->GetJSFunction("first"));
    child.reset();
    EXPECT_EQ(Show("seen"), "2");
}

TEST_P(LinkLifetimeTest, KeptFunctionsGoWithTheirLink)
{
    auto child = Child("child");
    Show("child.handler = function () {}; child.handler.mark = new Mine(1); 0");
    child->GetJSLink()->AddFunction(child->GetJSLink()->GetJSFunction("handler"));
    Show("delete child.handler");
    EXPECT_EQ(Mine::ms_alive, 2);
    child.reset();
    Collect();
    EXPECT_EQ(Mine::ms_alive, 0);
}

TEST_P(LinkLifetimeTest, KeptFunctionsGoWithTheirContext)
{
    auto child = Child("child");
    Show("child.handler = function () {}; child.handler.mark = new Mine(1); child.CallOnDestroy(child.handler)");
    child->GetJSLink()->AddFunction(child->GetJSLink()->GetJSFunction("handler"));
    script.reset();
    EXPECT_EQ(Mine::ms_alive, 1);
}

} // namespace
