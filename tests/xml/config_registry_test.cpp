#include "tests/xml/config_fixture.h"

#include <deque>

namespace
{

class ConfigRegistryTest : public ConfigTest
{
protected:
    ConfigRegistryTest() { config->CreateEmtyConfig(); }

    /// The tree as the store writes it, without the header.
    std::string Tree()
    {
        EXPECT_TRUE(config->SaveFile(true));
        return Bytes().value_or("(none)");
    }
};

} // namespace

TEST_F(ConfigRegistryTest, ARegisteredObjectIsLoadedAtOnce)
{
    config->ObjectRegisterNamed(Recorder(wxS("o")), wxS("name"), wxString());
    EXPECT_EQ(Calls(), wxS("default o"));
}

TEST_F(ConfigRegistryTest, OneRegisteredWithoutLoadingIsNot)
{
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("o")), wxS("name"), wxString());
    EXPECT_EQ(Calls(), wxS(""));
    EXPECT_TRUE(config->HasObject(wxS("name")));
}

TEST_F(ConfigRegistryTest, TheSectionIsTheNameOrTheNameInTheSection)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("one"), wxString());
    config->ObjectRegisterNamed(Recorder(wxS("b")), wxS("two"), wxS("part"));
    config->ObjectRegisterNamedNoSect(Recorder(wxS("c")), wxS("three"));
    EXPECT_EQ(Tree(), Saved(" <one v=\"a\"/>\n <part>\n  <two v=\"b\"/>\n </part>\n <three v=\"c\"/>\n"));
}

TEST_F(ConfigRegistryTest, NamesBecomeKeywords)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("my-win.1"), wxS("main/part two"));
    EXPECT_EQ(Tree(), Saved(" <main_part_two>\n  <my_win_1 v=\"a\"/>\n </main_part_two>\n"));
    EXPECT_TRUE(config->HasObject(wxS("my_win_1")));
    EXPECT_TRUE(config->HasObject(wxS("my-win.1"))) << "the name as it was given";
}

TEST_F(ConfigRegistryTest, AnEmptyNameRegistersNothing)
{
    config->ObjectRegisterNamed(Recorder(wxS("o")), wxString(), wxS("section"));
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("p")), wxString(), wxString());
    EXPECT_EQ(Calls(), wxS(""));
    EXPECT_FALSE(config->HasObject(objects[wxS("o")]->GetJSLink()));
    EXPECT_FALSE(config->HasObject(wxString()));
    EXPECT_EQ(Tree(), Saved(""));
}

TEST_F(ConfigRegistryTest, NoObjectRegistersNothing)
{
    config->ObjectRegisterNamed(nullptr, wxS("name"), wxString());
    config->ObjectRegister(nullptr, wxString());
    EXPECT_FALSE(config->HasObject(wxS("name")));
}

TEST_F(ConfigRegistryTest, ANameIsRegisteredOnce)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("w"), wxString());
    config->ObjectRegisterNamed(Recorder(wxS("b")), wxS("w"), wxS("section"));
    EXPECT_FALSE(config->HasObject(objects[wxS("a")]->GetJSLink()));
    EXPECT_TRUE(config->HasObject(objects[wxS("b")]->GetJSLink()));
    EXPECT_EQ(Tree(), Saved(" <section>\n  <w v=\"b\"/>\n </section>\n"));
}

TEST_F(ConfigRegistryTest, ObjectsThatAreNoWindowsAreNotRegisteredWithoutAName)
{
    CJScriptLink* const link = Recorder(wxS("o"));
    config->ObjectRegister(link, wxS("section"));
    config->ObjectRegisterNoSect(link);
    EXPECT_FALSE(config->HasObject(link));
    EXPECT_EQ(Calls(), wxS(""));
}

TEST_F(ConfigRegistryTest, RegistrationsAreFoundByNameAndByLink)
{
    CJScriptLink* const link = Recorder(wxS("o"));
    config->ObjectRegisterNamed(link, wxS("name"), wxString());
    EXPECT_TRUE(config->HasObject(wxS("name")));
    EXPECT_TRUE(config->HasObject(link));
    EXPECT_FALSE(config->HasObject(wxS("other")));
    EXPECT_FALSE(config->HasObject(Recorder(wxS("p"))));
    Calls();
    config->ObjectLoad(wxS("name"));
    config->ObjectLoad(link);
    EXPECT_TRUE(config->ObjectStore(wxS("name")));
    EXPECT_TRUE(config->ObjectStore(link));
    EXPECT_EQ(Calls(), wxS("default o; default o; store o; store o"));
}

TEST_F(ConfigRegistryTest, WhatIsNotRegisteredIsNeitherLoadedNorStored)
{
    CJScriptLink* const link = Recorder(wxS("o"));
    config->ObjectLoad(wxS("o"));
    config->ObjectLoad(link);
    EXPECT_FALSE(config->ObjectStore(wxS("o")));
    EXPECT_FALSE(config->ObjectStore(link));
    EXPECT_EQ(Calls(), wxS(""));
}

TEST_F(ConfigRegistryTest, RegistrationsEndByNameAndByLink)
{
    CJScriptLink* const a = Recorder(wxS("a"));
    CJScriptLink* const b = Recorder(wxS("b"));
    config->ObjectRegisterNamed(a, wxS("a-"), wxString());
    config->ObjectRegisterNamed(b, wxS("b-"), wxString());
    config->ObjectUnregister(wxS("a-"));
    EXPECT_FALSE(config->HasObject(a));
    EXPECT_TRUE(config->HasObject(b));
    config->ObjectUnregister(b);
    EXPECT_FALSE(config->HasObject(wxS("b_")));
    config->ObjectUnregister(b);
    config->ObjectUnregister(wxS("a-"));
}

TEST_F(ConfigRegistryTest, ALinkMayHaveSeveralRegistrationsAndTheFirstCounts)
{
    CJScriptLink* const link = Recorder(wxS("o"));
    config->ObjectRegisterNamed(link, wxS("one"), wxString());
    config->ObjectRegisterNamed(link, wxS("two"), wxString());
    EXPECT_TRUE(config->ObjectStore(link));
    EXPECT_TRUE(config->GetSectionNode(wxS("one"), false)->Ok());
    EXPECT_FALSE(config->GetSectionNode(wxS("two"), false)->Ok());
    config->ObjectUnregister(link);
    EXPECT_FALSE(config->HasObject(wxS("one")));
    EXPECT_TRUE(config->HasObject(wxS("two")));
    config->ObjectUnregister(link);
    EXPECT_FALSE(config->HasObject(link));
}

TEST_F(ConfigRegistryTest, AnyNumberOfRegistrationsMayEndAndOthersBegin)
{
    std::deque<qxjsMinimal> natives(100);
    int next = 0;
    for (qxjsMinimal& native : natives)
        script.CreateChild(native.GetJSLink(), Global(), wxString::Format(wxS("n%d"), next++), false, false);
    const auto name = [](int i) { return wxString::Format(wxS("r%d"), i); };
    // Each round ends all registrations of the one before but its last, in a different order.
    for (int round = 0; round < 50; ++round) {
        for (int i = 0; i < 100; ++i)
            config->ObjectRegisterNamedNoLoad(natives[static_cast<std::size_t>(i)].GetJSLink(), name(round * 100 + i),
                                              wxString());
        for (int i = 0; i < 99; ++i)
            config->ObjectUnregister(name(round * 100 + i * 37 % 99));
    }
    for (int round = 0; round < 50; ++round) {
        EXPECT_TRUE(config->HasObject(name(round * 100 + 99)));
        EXPECT_FALSE(config->HasObject(name(round * 100 + 98)));
    }
    EXPECT_TRUE(config->HasObject(natives[99].GetJSLink()));
    EXPECT_FALSE(config->HasObject(natives[98].GetJSLink()));
    EXPECT_TRUE(config->StoreAll());
    EXPECT_EQ(config->GetRawRoot()->GetChildrenCount(), 50);
    config->CleanObjects();
    EXPECT_FALSE(config->HasObject(natives[99].GetJSLink()));
}

TEST_F(ConfigRegistryTest, CleaningTheObjectsEndsAllRegistrationsAndKeepsTheTree)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("a"), wxString());
    config->ObjectRegisterNamed(Recorder(wxS("b")), wxS("b"), wxString());
    ASSERT_TRUE(config->StoreAll());
    config->CleanObjects();
    EXPECT_FALSE(config->HasObject(wxS("a")));
    EXPECT_FALSE(config->HasObject(objects[wxS("b")]->GetJSLink()));
    EXPECT_EQ(Tree(), Saved(" <a v=\"a\"/>\n <b v=\"b\"/>\n"));
}

TEST_F(ConfigRegistryTest, ARegistrationEndsWithItsObject)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("a"), wxString());
    config->ObjectRegisterNamed(objects[wxS("a")]->GetJSLink(), wxS("again"), wxString());
    config->ObjectRegisterNamed(Recorder(wxS("b")), wxS("b"), wxString());
    const CJScriptLink* const gone = objects[wxS("a")]->GetJSLink();
    objects.erase(wxS("a"));
    EXPECT_FALSE(config->HasObject(wxS("a")));
    EXPECT_FALSE(config->HasObject(wxS("again")));
    EXPECT_FALSE(config->HasObject(gone));
    EXPECT_EQ(Tree(), Saved(" <b v=\"b\"/>\n"));
}

TEST_F(ConfigRegistryTest, AnObjectMayBeStoredForTheLastTimeWhenItGoes)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("a"), wxString());
    Show(wxS("a.CallOnDestroy(function () { call('' + Config.SaveFile()); })"));
    Calls();
    objects.erase(wxS("a"));
    EXPECT_EQ(Calls(), wxS("store a; true"));
    EXPECT_EQ(Bytes(), Saved(" <a v=\"a\"/>\n"));
}

TEST_F(ConfigRegistryTest, AnObjectOfScriptLivesWhileItIsRegistered)
{
    Show(wxS("(function () { var d = new XmlDocument();"
             "  d.StoreXmlConfig = function (n) { return n.AddProp('v', 'kept'); };"
             "  Config.RegisterNamed(d, 'kept'); })()"));
    JS_GC(Context());
    EXPECT_TRUE(config->HasObject(wxS("kept")));
    EXPECT_EQ(Tree(), Saved(" <kept v=\"kept\"/>\n"));
    EXPECT_EQ(
        Show(wxS("var seen = []; for (var p in Config) seen.push(p); seen.filter(p => /registered/.test(p)).length")),
        wxS("0"))
        << "what keeps it does not show";
}

TEST_F(ConfigRegistryTest, AnObjectOfScriptIsCollectedWhenItIsUnregistered)
{
    Show(wxS("new XmlDocument(); Config.GetRoot(); 0"));
    JS_GC(Context());
    const std::size_t before = JS_CountHostObjects();
    Show(wxS("(function () { Config.RegisterNamed(new XmlDocument(), 'x'); })()"));
    config->ObjectUnregister(wxS("x"));
    Show(wxS("(function () { Config.RegisterNamed(new XmlDocument(), 'y');"
             "  Config.RegisterNamed(Config, 'y'); })()"));
    config->CleanObjects();
    JS_GC(Context());
    JS_GC(Context());
    EXPECT_EQ(JS_CountHostObjects(), before);
}

TEST_F(ConfigRegistryTest, TheConfigurationMayGoBeforeItsObjects)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("a"), wxString());
    config.reset();
    objects.clear();
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ConfigRegistryTest, ObjectsAreToldThatTheConfigurationGoesWhileItIsWhole)
{
    Put("<Config><a x='1'/></Config>");
    config->LoadFile();
    Show(wxS("Config.CallOnDestroy(function () { call(this.GetRoot().GetFirst().GetAllProps()); })"));
    config.reset();
    EXPECT_EQ(Calls(), wxS(" x=\"1\""));
}

TEST_F(ConfigRegistryTest, NodesEndBeforeTheConfigurationWhileItIsWhole)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("a"), wxString());
    Show(wxS("Config.SaveFile(); Config.CallOnDestroy(function () { call('Config'); });"
             "Config.GetRoot().GetFirst().CallOnDestroy(function () { call(this.GetName() + Config.SaveFile()); })"));
    Calls();
    config.reset();
    EXPECT_EQ(Calls(), wxS("store a; atrue; Config"));
}

TEST_F(ConfigRegistryTest, WhatListensOnlyWhenTheConfigurationEndsDoesNotReachItAnyMore)
{
    Show(wxS(
        "Config.LoadFile(); var kept = Config; Config.CallOnDestroy(function () {"
        "  kept.GetRoot().CallOnDestroy(function () { call(typeof Config); kept.SaveFile(); call('saved'); }); })"));
    Calls();
    config.reset();
    EXPECT_EQ(Calls(), wxS("undefined"));
}

TEST_F(ConfigRegistryTest, TheContextMayEndBeforeTheConfiguration)
{
    qxjsMinimal otherGlobal;
    auto other = std::make_unique<CJScript>(nullptr);
    ASSERT_TRUE(other->SetGlobal(otherGlobal.GetJSLink(), wxString()));
    qxjsMinimal object;
    ASSERT_TRUE(other->CreateChild(object.GetJSLink(), otherGlobal.GetJSLink(), wxS("o"), false, false));
    CXmlConfig second(other.get(), wxS("Config"), otherGlobal.GetJSLink(), place.Dir(), wxS("second"), true);
    second.ObjectRegisterNamed(object.GetJSLink(), wxS("o"), wxString());
    ASSERT_TRUE(other->Evaluate(wxS("Config.RegisterNamed(new XmlDocument(), 'x')"), nullptr));
    other.reset();
    EXPECT_TRUE(second.HasObject(wxS("o")));
    EXPECT_FALSE(second.HasObject(wxS("x"))) << "it went with the context";
    second.CleanObjects();
}
