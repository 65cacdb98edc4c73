#include "script/callback_registry.h"
#include "tests/script/script_fixture.h"

#include <memory>

namespace
{

/// Two objects and a registry, in a context whose global object has the name that registries need.
class CallBackRegistryTest : public ::testing::Test
{
protected:
    CallBackRegistryTest()
    {
        EXPECT_TRUE(script.SetGlobal(global.GetJSLink(), "Global"));
        EXPECT_TRUE(script.CreateChild(first.GetJSLink(), global.GetJSLink(), "first", false, false));
        EXPECT_TRUE(script.CreateChild(second.GetJSLink(), global.GetJSLink(), "second", false, false));
        registry.SetJScript(&script);
    }
    ~CallBackRegistryTest() override { ForgetNatives(); }

    CJScriptLink* First() { return first.GetJSLink(); }
    CJScriptLink* Second() { return second.GetJSLink(); }

    /// What the properties that keep objects alive refer to.
    wxString Kept()
    {
        wxString kept;
        EXPECT_TRUE(script.Evaluate("Object.getOwnPropertyNames(Global).filter(function (name) {"
                                    " return /^P0x/.test(name) && Global[name]; }).map(function (name) {"
                                    " return Global[name] === first ? 'first' : Global[name] === second ? 'second' :"
                                    " Global[name] === Global ? 'Global' : 'other'; }).sort().join()",
                                    nullptr, kept));
        return kept;
    }

    /// The names and user data of the persistent records with an id, in order.
    wxString Enumerated(CJSCallBack& of, int id)
    {
        wxString all;
        wxlistJSCallBackNode* node = nullptr;
        wxString name;
        void* data = nullptr;
        for (bool more = of.GetFirst(id, node, nullptr, &name, &data); more;
             more = of.GetNext(id, node, nullptr, &name, &data))
            all << name << (data ? "*" : "") << ' ';
        return all;
    }

    NoHostObjectsLeft check;
    LogCapture log;
    int data1 = 1;
    int data2 = 2;
    qxjsMinimal global;
    qxjsMinimal first;
    qxjsMinimal second;
    CJScript script{nullptr};
    CJSCallBack registry{global.GetJSLink()};
};

TEST_F(CallBackRegistryTest, ASecondRegistrationKeepsTheFirstUserData)
{
    for (const bool persistent : {false, true}) {
        registry.RegisterCallBack(1, First(), "f", persistent, &data1);
        registry.RegisterCallBack(1, First(), "f", persistent, &data2);
        void* data = nullptr;
        EXPECT_TRUE(registry.GetUserData(1, First(), "f", persistent, &data));
        EXPECT_EQ(data, &data1);
    }
    EXPECT_EQ(registry.GetCallBackCount(1), 1);
    EXPECT_EQ(Kept(), "first,first");
}

TEST_F(CallBackRegistryTest, AnEmptyNameIsTheSameAsAnyThatIsThere)
{
    registry.RegisterCallBack(1, First(), "f", true, &data1);
    registry.RegisterCallBack(1, First(), "", true, &data2);
    EXPECT_EQ(registry.GetCallBackCount(1), 1);
    registry.RegisterCallBack(2, First(), "", true, &data2);
    registry.RegisterCallBack(2, First(), "f", true, &data1);
    EXPECT_EQ(Enumerated(registry, 2), "* f* ");
}

TEST_F(CallBackRegistryTest, RecordsAreFoundByIdLinkNameAndList)
{
    registry.RegisterCallBack(1, First(), "f", true, nullptr);
    EXPECT_TRUE(registry.FindCallBack(1, First(), "f", true));
    EXPECT_TRUE(registry.FindCallBack(1, First(), "", true));
    EXPECT_FALSE(registry.FindCallBack(1, First(), "f", false));
    EXPECT_FALSE(registry.FindCallBack(2, First(), "f", true));
    EXPECT_FALSE(registry.FindCallBack(1, Second(), "f", true));
    EXPECT_FALSE(registry.FindCallBack(1, First(), "F", true));
}

TEST_F(CallBackRegistryTest, OneShotRecordsAreTakenOutById)
{
    registry.RegisterCallBack(7, First(), "seven", false, &data1);
    registry.RegisterCallBack(3, Second(), "three", false, &data2);
    registry.RegisterCallBack(-5, First(), "minus", false, nullptr);
    registry.RegisterCallBack(1, First(), "sorts", true, nullptr);
    CJScriptLink* link = nullptr;
    wxString name;
    void* data = nullptr;
    EXPECT_TRUE(registry.GetCallBack(3, &link, &name, &data));
    EXPECT_EQ(link, Second());
    EXPECT_EQ(name, "three");
    EXPECT_EQ(data, &data2);
    EXPECT_FALSE(registry.GetCallBack(3, &link, &name, &data));
    EXPECT_EQ(name, "three");
    EXPECT_TRUE(registry.GetCallBack(7, nullptr, nullptr, nullptr));
    EXPECT_TRUE(registry.GetCallBack(-5, &link, nullptr, &data));
    EXPECT_EQ(link, First());
    EXPECT_EQ(data, nullptr);
    EXPECT_FALSE(registry.GetCallBack(1, nullptr, nullptr, nullptr));
    EXPECT_EQ(Kept(), "first");
}

TEST_F(CallBackRegistryTest, OneShotRecordsOfOneIdAreAllFetched)
{
    registry.RegisterCallBack(1, First(), "a", false, nullptr);
    registry.RegisterCallBack(1, First(), "b", false, nullptr);
    wxString name;
    EXPECT_TRUE(registry.GetCallBack(1, nullptr, &name, nullptr));
    EXPECT_EQ(name, "a");
    EXPECT_TRUE(registry.GetCallBack(1, nullptr, &name, nullptr));
    EXPECT_EQ(name, "b");
    EXPECT_FALSE(registry.GetCallBack(1, nullptr, &name, nullptr));
}

TEST_F(CallBackRegistryTest, PersistentRecordsKeepTheOrderOfRegistration)
{
    registry.RegisterCallBack(5, First(), "a", true, &data1);
    registry.RegisterCallBack(2, First(), "b", true, nullptr);
    registry.RegisterCallBack(5, Second(), "c", true, nullptr);
    registry.RegisterCallBack(2, First(), "d", true, &data2);
    registry.RegisterCallBack(5, First(), "e", true, nullptr);
    EXPECT_EQ(Enumerated(registry, 5), "a* c e ");
    EXPECT_EQ(Enumerated(registry, 2), "b d* ");
    EXPECT_EQ(registry.GetCallBackCount(5), 3);
    EXPECT_EQ(registry.GetCallBackCount(9), 0);
}

TEST_F(CallBackRegistryTest, EnumeratingGivesTheLinks)
{
    registry.RegisterCallBack(2, First(), "other", true, nullptr);
    registry.RegisterCallBack(1, Second(), "f", true, nullptr);
    registry.RegisterCallBack(2, First(), "other", true, nullptr);
    registry.RegisterCallBack(1, First(), "f", true, nullptr);
    wxlistJSCallBackNode* node = nullptr;
    CJScriptLink* link = nullptr;
    EXPECT_TRUE(registry.GetFirst(1, node, &link, nullptr, nullptr));
    EXPECT_EQ(link, Second());
    EXPECT_TRUE(registry.GetNext(1, node, &link, nullptr, nullptr));
    EXPECT_EQ(link, First());
    link = nullptr;
    EXPECT_FALSE(registry.GetNext(1, node, &link, nullptr, nullptr));
    EXPECT_EQ(link, nullptr);
}

TEST_F(CallBackRegistryTest, GetFirstClearsItsResultsOnlyWhenThereAreNoRecords)
{
    auto* node = reinterpret_cast<wxlistJSCallBackNode*>(&data1);
    CJScriptLink* link = First();
    wxString name = "before";
    void* data = &data1;
    EXPECT_FALSE(registry.GetFirst(1, node, &link, &name, &data));
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(link, nullptr);
    EXPECT_EQ(name, "");
    EXPECT_EQ(data, nullptr);
    EXPECT_FALSE(registry.GetFirst(1, node, nullptr, nullptr, nullptr));

    registry.RegisterCallBack(2, First(), "f", true, nullptr);
    name = "before";
    data = &data1;
    EXPECT_FALSE(registry.GetFirst(1, node, &link, &name, &data));
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(name, "before");
    EXPECT_EQ(data, &data1);
}

TEST_F(CallBackRegistryTest, GetNextWithoutANodeClearsOnlyTheUserData)
{
    wxlistJSCallBackNode* node = nullptr;
    CJScriptLink* link = First();
    wxString name = "before";
    void* data = &data1;
    EXPECT_FALSE(registry.GetNext(1, node, &link, &name, &data));
    EXPECT_EQ(link, First());
    EXPECT_EQ(name, "before");
    EXPECT_EQ(data, nullptr);
    EXPECT_FALSE(registry.GetNext(1, node, nullptr, nullptr, nullptr));
}

TEST_F(CallBackRegistryTest, UnregisteringIsAlwaysTrue)
{
    void* data = &data2;
    EXPECT_TRUE(registry.UnregisterCallBack(1, First(), "f", &data));
    EXPECT_EQ(data, &data2);
    registry.RegisterCallBack(1, First(), "f", false, &data1);
    EXPECT_TRUE(registry.UnregisterCallBack(1, First(), "f", &data));
    EXPECT_TRUE(registry.FindCallBack(1, First(), "f", false));
    registry.RegisterCallBack(1, First(), "f", true, &data1);
    registry.RegisterCallBack(1, First(), "g", true, nullptr);
    EXPECT_TRUE(registry.UnregisterCallBack(1, First(), "", &data));
    EXPECT_EQ(data, &data1);
    EXPECT_EQ(Enumerated(registry, 1), "g ");
    EXPECT_TRUE(registry.UnregisterCallBack(1, First(), "g", nullptr));
    EXPECT_EQ(registry.GetCallBackCount(1), 0);
    EXPECT_EQ(Kept(), "first");
}

TEST_F(CallBackRegistryTest, TheFirstRecordOfIdAndLinkDecidesAboutTheUserData)
{
    registry.RegisterCallBack(1, First(), "f", true, &data1);
    registry.RegisterCallBack(1, First(), "g", true, &data2);
    void* data = nullptr;
    EXPECT_TRUE(registry.GetUserData(1, First(), "g", true, &data));
    EXPECT_EQ(data, nullptr);
    EXPECT_TRUE(registry.GetUserData(1, First(), "", true, &data));
    EXPECT_EQ(data, &data1);
    EXPECT_FALSE(registry.GetUserData(1, First(), "f", true, nullptr));
    EXPECT_FALSE(registry.GetUserData(1, First(), "f", false, &data));
    EXPECT_FALSE(registry.GetUserData(1, Second(), "f", true, &data));
    EXPECT_FALSE(registry.GetUserData(2, First(), "f", true, &data));
}

TEST_F(CallBackRegistryTest, ARecordKeepsItsObjectAliveUntilItEnds)
{
    std::vector<std::string> deaths;
    auto* const mortal = new Mortal(deaths, "mortal");
    ASSERT_TRUE(script.CreateChildDynamic(mortal->Link()));
    registry.RegisterCallBack(1, mortal->Link(), "f", true, nullptr);
    registry.RegisterCallBack(1, mortal->Link(), "f", false, nullptr);
    JS_ClearNewbornRoots(script.GetContext());
    JS_GC(script.GetContext());
    EXPECT_TRUE(deaths.empty());
    EXPECT_EQ(Kept(), "other,other");
    EXPECT_TRUE(registry.UnregisterCallBack(1, mortal->Link(), "f", nullptr));
    JS_GC(script.GetContext());
    EXPECT_TRUE(deaths.empty());
    EXPECT_TRUE(registry.GetCallBack(1, nullptr, nullptr, nullptr));
    EXPECT_EQ(Kept(), "");
    JS_GC(script.GetContext());
    EXPECT_EQ(deaths, std::vector<std::string>{"mortal"});
}

TEST_F(CallBackRegistryTest, TheEndOfTheRegistryReleasesEverything)
{
    {
        CJSCallBack other(Second());
        other.SetJScript(&script);
        other.RegisterCallBack(1, First(), "f", true, nullptr);
        other.RegisterCallBack(1, Second(), "f", false, nullptr);
        EXPECT_EQ(Kept(), "first,second");
    }
    EXPECT_EQ(Kept(), "");
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(CallBackRegistryTest, WithoutAContextNothingIsRegistered)
{
    registry.SetJScript(nullptr);
    registry.RegisterCallBack(1, First(), "f", true, nullptr);
    registry.RegisterCallBack(1, First(), "f", false, nullptr);
    EXPECT_EQ(registry.GetCallBackCount(1), 0);
    EXPECT_FALSE(registry.GetCallBack(1, nullptr, nullptr, nullptr));
}

TEST_F(CallBackRegistryTest, RecordsEndWithoutTheContextThatKeptThem)
{
    registry.RegisterCallBack(1, First(), "f", true, &data1);
    registry.RegisterCallBack(1, First(), "f", false, &data2);
    registry.RegisterCallBack(2, First(), "f", true, nullptr);
    registry.SetJScript(nullptr);
    void* data = nullptr;
    EXPECT_TRUE(registry.GetCallBack(1, nullptr, nullptr, &data));
    EXPECT_EQ(data, &data2);
    EXPECT_TRUE(registry.UnregisterCallBack(1, First(), "f", &data));
    EXPECT_EQ(data, &data1);
    EXPECT_EQ(Kept(), "first,first,first");
}

TEST_F(CallBackRegistryTest, AnObjectThatCannotBeKeptIsNotRegistered)
{
    qxjsMinimal otherGlobal;
    CJScript nameless(nullptr);
    ASSERT_TRUE(nameless.SetGlobal(otherGlobal.GetJSLink(), ""));
    CJSCallBack other(otherGlobal.GetJSLink());
    other.SetJScript(&nameless);
    other.RegisterCallBack(1, otherGlobal.GetJSLink(), "f", true, nullptr);
    EXPECT_EQ(other.GetCallBackCount(1), 0);
    EXPECT_FALSE(log.Texts(ScriptErrorLevel).empty());
}

TEST_F(CallBackRegistryTest, AnObjectThatScriptDoesNotKnowIsNotRegistered)
{
    qxjsMinimal unknown;
    registry.RegisterCallBack(1, unknown.GetJSLink(), "f", true, nullptr);
    EXPECT_EQ(registry.GetCallBackCount(1), 0);
    EXPECT_EQ(Kept(), "");
}

TEST_F(CallBackRegistryTest, ANullLinkIsTheGlobalObjects)
{
    registry.RegisterCallBack(1, nullptr, "f", true, nullptr);
    EXPECT_TRUE(registry.FindCallBack(1, nullptr, "f", true));
    EXPECT_EQ(Kept(), "Global");
}

TEST_F(CallBackRegistryTest, ACallBackMayUnregisterItself)
{
    DefineNative(script.GetContext(), nullptr, "unregister", [&](JSContext*, uintN, jsval*, jsval*) {
        registry.UnregisterCallBack(1, First(), "f", nullptr);
        return JS_TRUE;
    });
    ASSERT_TRUE(script.Evaluate("first.f = function () { unregister(); called = true; }; var called = false", nullptr));
    registry.RegisterCallBack(1, First(), "f", true, nullptr);
    EXPECT_TRUE(script.Call("f", First()));
    bool called = false;
    EXPECT_TRUE(script.Evaluate("called", nullptr, called));
    EXPECT_TRUE(called);
    EXPECT_EQ(registry.GetCallBackCount(1), 0);
    EXPECT_EQ(Kept(), "");
}

TEST_F(CallBackRegistryTest, RecordsAreReleasedInTheScopeOfTheRegistrysObject)
{
    CJSCallBack other(Second());
    other.SetJScript(&script);
    other.RegisterCallBack(1, First(), "f", false, nullptr);
    ASSERT_TRUE(script.Evaluate("second.Global = {}", nullptr));
    EXPECT_TRUE(other.GetCallBack(1, nullptr, nullptr, nullptr));
    EXPECT_EQ(Kept(), "first") << "the name was found on the registry's object";
    wxString released;
    EXPECT_TRUE(script.Evaluate("Object.keys(second.Global).map(function (name) {"
                                " return /^P0x/.test(name) + ' ' + second.Global[name] }).join()",
                                nullptr, released));
    EXPECT_EQ(released, "true null");
}

TEST_F(CallBackRegistryTest, OneShotRecordsAreReleasedBeforePersistentOnes)
{
    registry.RegisterCallBack(1, First(), "f", true, nullptr);
    registry.RegisterCallBack(2, Second(), "f", false, nullptr);
    registry.RegisterCallBack(3, First(), "f", true, nullptr);
    registry.RegisterCallBack(1, Second(), "f", false, nullptr);
    ASSERT_TRUE(script.Evaluate("var released = []; Object.getOwnPropertyNames(Global).forEach(function (name) {"
                                " if (!/^P0x/.test(name)) return;"
                                " var kept = Global[name] === first ? 'first' : 'second';"
                                " Object.defineProperty(Global, name, {set: function () { released.push(kept); }}); })",
                                nullptr));
    registry.DeleteAllCallBacks();
    wxString released;
    EXPECT_TRUE(script.Evaluate("released.join()", nullptr, released));
    EXPECT_EQ(released, "second,second,first,first");
}

/// Has a native called whenever a record is released.
void CallOnRelease(CJScript& script, Native native)
{
    DefineNative(script.GetContext(), nullptr, "released", std::move(native));
    ASSERT_TRUE(script.Evaluate("Object.getOwnPropertyNames(Global).forEach(function (name) { if (/^P0x/.test(name))"
                                " Object.defineProperty(Global, name, {set: function () { released(); }}); })",
                                nullptr));
}

TEST_F(CallBackRegistryTest, WhatIsRegisteredWhileAllAreDeletedStays)
{
    registry.RegisterCallBack(1, First(), "f", true, nullptr);
    registry.RegisterCallBack(1, First(), "f", false, nullptr);
    int releases = 0;
    CallOnRelease(script, [&](JSContext*, uintN, jsval*, jsval*) {
        ++releases;
        registry.RegisterCallBack(2, Second(), "late", true, nullptr);
        registry.UnregisterCallBack(1, First(), "f", nullptr);
        registry.GetCallBack(1, nullptr, nullptr, nullptr);
        return JS_TRUE;
    });
    registry.DeleteAllCallBacks();
    EXPECT_EQ(releases, 2);
    EXPECT_EQ(registry.GetCallBackCount(1), 0);
    EXPECT_EQ(registry.GetCallBackCount(2), 1);
}

TEST_F(CallBackRegistryTest, NothingIsRegisteredWhileTheRegistryEnds)
{
    auto ending = std::make_unique<CJSCallBack>(First());
    ending->SetJScript(&script);
    ending->RegisterCallBack(1, First(), "f", true, nullptr);
    CJSCallBack* const raw = ending.get();
    CallOnRelease(script, [&](JSContext*, uintN, jsval*, jsval*) {
        raw->RegisterCallBack(2, Second(), "late", true, nullptr);
        return JS_TRUE;
    });
    ending.reset();
    EXPECT_EQ(Kept(), "");
}

TEST_F(CallBackRegistryTest, CopiesHaveRecordsOfTheirOwn)
{
    registry.RegisterCallBack(1, First(), "f", true, &data1);
    registry.RegisterCallBack(2, Second(), "g", false, &data2);
    CJSCallBack copy(registry);
    EXPECT_EQ(Kept(), "first,first,second,second");
    EXPECT_TRUE(registry.UnregisterCallBack(1, First(), "f", nullptr));
    registry.DeleteAllCallBacks();
    EXPECT_EQ(Kept(), "first,second");
    EXPECT_EQ(Enumerated(copy, 1), "f* ");
    CJSCallBack assigned(Second());
    assigned.SetJScript(&script);
    assigned.RegisterCallBack(3, First(), "dropped", true, nullptr);
    assigned = copy;
    assigned = *&assigned;
    EXPECT_EQ(assigned.GetCallBackCount(3), 0);
    void* data = nullptr;
    EXPECT_TRUE(assigned.GetCallBack(2, nullptr, nullptr, &data));
    EXPECT_EQ(data, &data2);
    EXPECT_TRUE(copy.FindCallBack(2, Second(), "g", false));
}

TEST_F(CallBackRegistryTest, NamesMayHoldAnyCharacters)
{
    const wxString name(L"f\u00e4'\";\n%p%s");
    registry.RegisterCallBack(1, First(), name, true, nullptr);
    EXPECT_TRUE(registry.FindCallBack(1, First(), name, true));
    EXPECT_EQ(Kept(), "first");
}

} // namespace
