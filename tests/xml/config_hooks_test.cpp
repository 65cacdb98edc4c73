#include "tests/xml/config_fixture.h"

namespace
{

/// What hooks there are and what they do, and what comes of it.
struct LoadRow
{
    std::string name;
    const wchar_t* hooks;
    const wchar_t* calls;
};

struct StoreRow
{
    std::string name;
    const wchar_t* hooks;
    bool stored;
    const wchar_t* calls;
    std::string section;
};

class ConfigHooksTest : public ConfigTest
{
protected:
    CJScriptLink* Hooked(const wxString& hooks)
    {
        CJScriptLink* const link = Object(wxS("o"));
        EXPECT_NE(Show(hooks), wxS("(failed)"));
        return link;
    }

    wxString Props(const wxString& path) { return config->GetSectionNode(path, false)->GetAllProps(); }
};

class ConfigLoadHooksTest : public ConfigHooksTest, public ::testing::WithParamInterface<LoadRow>
{};

class ConfigStoreHooksTest : public ConfigHooksTest, public ::testing::WithParamInterface<StoreRow>
{};

TEST_F(ConfigHooksTest, ASectionThatIsRemovedWhileItIsEmptiedIsMadeAgain)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("a"), wxString());
    ASSERT_TRUE(config->SaveFile(true));
    Show(wxS("Config.GetRoot().GetFirst().AddNode('x').CallOnDestroy(function () {"
             "  Config.GetRoot().RemoveNode('a'); })"));
    EXPECT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Bytes(), Saved(" <a v=\"a\"/>\n"));
}

} // namespace

TEST_P(ConfigLoadHooksTest, OfASectionThatIsThere)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><a><o x='5'/></a></r>")));
    config->ObjectRegisterNamed(Hooked(GetParam().hooks), wxS("o"), wxS("a"));
    EXPECT_EQ(Calls(), GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(
    ConfigLoadHooks, ConfigLoadHooksTest,
    ::testing::Values(
        LoadRow{"no_hooks", L"0", L""},
        LoadRow{"only_the_default", L"o._DefaultXmlConfig = function () { call('d' + arguments.length); }", L"d0"},
        LoadRow{"the_section_is_the_argument",
                L"o.LoadXmlConfig = function (n) {"
                L"  call(arguments.length + n.GetName() + n.GetAllProps() + (this === o)); }",
                L"1o x=\"5\"true"},
        LoadRow{"a_completed_first_hook_is_enough",
                L"o.LoadXmlConfig = function () { return call('l', false); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"l"},
        LoadRow{"a_first_hook_that_throws_is_not",
                L"o.LoadXmlConfig = function () { call('l'); throw new Error('broken'); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"l; d"},
        LoadRow{"a_second_hook_that_returns_true",
                L"o._LoadXmlConfig = function (n) { return call('_l' + n.GetName(), true); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"_lo"},
        LoadRow{"a_second_hook_that_returns_false",
                L"o._LoadXmlConfig = function () { return call('_l', false); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"_l; d"},
        LoadRow{"a_second_hook_that_returns_nothing",
                L"o._LoadXmlConfig = function () { call('_l'); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"_l; d"},
        LoadRow{"a_second_hook_that_returns_an_object",
                L"o._LoadXmlConfig = function () { return call('_l', {}); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"_l"},
        LoadRow{"a_second_hook_that_returns_an_empty_text",
                L"o._LoadXmlConfig = function () { return call('_l', ''); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"_l; d"},
        LoadRow{"a_second_hook_that_throws",
                L"o._LoadXmlConfig = function () { call('_l'); throw 1; };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"_l; d"},
        LoadRow{"the_second_decides_over_the_first",
                L"o.LoadXmlConfig = function () { call('l'); };"
                L"o._LoadXmlConfig = function () { return call('_l', false); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"l; _l; d"},
        LoadRow{"the_second_makes_up_for_the_first",
                L"o.LoadXmlConfig = function () { call('l'); throw 1; };"
                L"o._LoadXmlConfig = function () { return call('_l', 1); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"l; _l"},
        LoadRow{"what_is_no_function_is_no_hook",
                L"o.LoadXmlConfig = 1; o._LoadXmlConfig = {}; o._DefaultXmlConfig = function () { call('d'); }", L"d"},
        LoadRow{"a_default_that_throws", L"o._DefaultXmlConfig = function () { call('d'); throw 1; }", L"d"},
        LoadRow{"a_section_that_the_first_hook_removes",
                L"o.LoadXmlConfig = function (n) { call('l'); n.GetParent().RemoveNode('o'); };"
                L"o._LoadXmlConfig = function () { return call('_l', true); };"
                L"o._DefaultXmlConfig = function () { call('d'); }",
                L"l"},
        LoadRow{"a_section_that_the_first_hook_replaces",
                L"o.LoadXmlConfig = function (n) { var p = n.GetParent(); p.RemoveNode('o');"
                L"  p.AddNode('o').AddProp('x', 6); };"
                L"o._LoadXmlConfig = function (n) { return call('_l' + n.GetAllProps(), true); }",
                L"_l x=\"6\""}),
    NameOfRow<LoadRow>);

TEST_P(ConfigStoreHooksTest, OfASectionThatIsThere)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><a><o x='5'><c/>text</o></a></r>")));
    CJScriptLink* const link = Hooked(GetParam().hooks);
    config->ObjectRegisterNamedNoLoad(link, wxS("o"), wxS("a"));
    EXPECT_EQ(config->ObjectStore(link), GetParam().stored);
    EXPECT_EQ(Calls(), GetParam().calls);
    CXmlNode* const section = config->GetSectionNode(wxS("a/o"), false);
    EXPECT_EQ(ToUtf8(section->GetAllProps()) + " " + std::to_string(section->GetChildrenCount()), GetParam().section);
}

INSTANTIATE_TEST_SUITE_P(
    ConfigStoreHooks, ConfigStoreHooksTest,
    ::testing::Values(
        StoreRow{"no_hooks_leave_the_section", L"0", true, L"", " x=\"5\" 2"},
        StoreRow{
            "the_section_is_cleared_first",
            L"o.StoreXmlConfig = function (n) {"
            L"  return call(arguments.length + n.GetName() + n.GetCount() + n.GetAllProps() + (this === o), true); }",
            true, L"1o0true", " 0"},
        StoreRow{"what_it_writes_stays",
                 L"o.StoreXmlConfig = function (n) { n.AddNode('d'); return n.AddProp('y', 6); }", true, L"",
                 " y=\"6\" 1"},
        StoreRow{"false_fails", L"o.StoreXmlConfig = function (n) { n.AddProp('y', 6); return false; }", false, L"",
                 " y=\"6\" 0"},
        StoreRow{"no_value_fails", L"o.StoreXmlConfig = function (n) { n.AddProp('y', 6); }", false, L"", " y=\"6\" 0"},
        StoreRow{"a_number_is_true", L"o.StoreXmlConfig = function (n) { return n.AddProp('y', 6) && 1; }", true, L"",
                 " y=\"6\" 0"},
        StoreRow{"throwing_fails", L"o.StoreXmlConfig = function (n) { throw 1; }", false, L"", " 0"},
        StoreRow{"the_second_hook_alone_clears_too",
                 L"o._StoreXmlConfig = function (n) { call('' + n.GetCount()); return n.AddProp('y', 6); }", true, L"0",
                 " y=\"6\" 0"},
        StoreRow{"both_write_one_section",
                 L"o._StoreXmlConfig = function (n) { call('_s'); return n.AddProp('z', 7); };"
                 L"o.StoreXmlConfig = function (n) { call('s'); return n.AddProp('y', 6); }",
                 true, L"s; _s", " y=\"6\" z=\"7\" 0"},
        StoreRow{"the_second_is_not_asked_when_the_first_fails",
                 L"o._StoreXmlConfig = function (n) { return call('_s', true); };"
                 L"o.StoreXmlConfig = function (n) { return call('s', ''); }",
                 false, L"s", " 0"},
        StoreRow{"the_second_may_fail",
                 L"o._StoreXmlConfig = function (n) { return call('_s', null); };"
                 L"o.StoreXmlConfig = function (n) { return call('s', true); }",
                 false, L"s; _s", " 0"},
        StoreRow{"the_second_may_throw", L"o._StoreXmlConfig = function (n) { throw 1; }", false, L"", " 0"},
        StoreRow{"a_section_that_the_first_removes_is_made_again",
                 L"o.StoreXmlConfig = function (n) { return n.GetParent().RemoveNode('o'); };"
                 L"o._StoreXmlConfig = function (n) { return n.AddProp('z', 7); }",
                 true, L"", " z=\"7\" 0"},
        StoreRow{"a_section_that_the_only_one_removes_is_gone",
                 L"o.StoreXmlConfig = function (n) { return n.GetParent().RemoveNode('o'); }", true, L"", " 0"},
        StoreRow{"what_is_no_function_is_no_hook", L"o.StoreXmlConfig = 'x'; o._StoreXmlConfig = null", true, L"",
                 " x=\"5\" 2"}),
    NameOfRow<StoreRow>);

TEST_F(ConfigHooksTest, WithoutASectionOnlyTheDefaultIsCalled)
{
    ASSERT_TRUE(config->SetContent(wxS("<r/>")));
    config->ObjectRegisterNamed(Recorder(wxS("o")), wxS("o"), wxString());
    EXPECT_EQ(Calls(), wxS("default o"));
    EXPECT_EQ(config->GetRawRoot()->GetChildrenCount(), 0) << "the section is not made";
}

TEST_F(ConfigHooksTest, HooksOfThePrototypeAreHooks)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><o/></r>")));
    CJScriptLink* const link =
        Hooked(wxS("Object.getPrototypeOf(o).LoadXmlConfig = function () { call('inherited'); }"));
    config->ObjectRegisterNamed(link, wxS("o"), wxString());
    EXPECT_EQ(Calls(), wxS("inherited"));
}

TEST_F(ConfigHooksTest, AFailingHookIsReported)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><o/></r>")));
    config->ObjectRegisterNamed(Hooked(wxS("o.LoadXmlConfig = function () { throw new Error('broken load'); }")),
                                wxS("o"), wxString());
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_NE(Reports()[0].Find(wxS("broken load")), wxNOT_FOUND) << Reports()[0];
}

TEST_F(ConfigHooksTest, AMissingSectionIsMadeForAStore)
{
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("o")), wxS("o"), wxS("a"));
    EXPECT_TRUE(config->ObjectStore(wxS("o")));
    EXPECT_EQ(RootName(), wxS("Config"));
    EXPECT_EQ(Props(wxS("a/o")), wxS(" v=\"o\""));
}

TEST_F(ConfigHooksTest, ASectionOfAnyDepthCanBeHandedOver)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><a><b><c x='1'/></b></a></r>")));
    const tCfgObject object{Recorder(wxS("o")), wxS("a/b/c")};
    config->ObjectLoad(object);
    EXPECT_EQ(Calls(), wxS("load o x=\"1\""));
    EXPECT_TRUE(config->ObjectStore(object));
    EXPECT_EQ(Props(wxS("a/b/c")), wxS(" v=\"o\""));
}

TEST_F(ConfigHooksTest, StoringAllStopsAtTheFirstThatFails)
{
    for (const wchar_t* const name : {wxS("a"), wxS("b"), wxS("c")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    Show(wxS("b.StoreXmlConfig = function () { return call('store b', false); }"));
    EXPECT_FALSE(config->StoreAll());
    EXPECT_EQ(Calls(), wxS("store a; store b"));
    Show(wxS("b.StoreXmlConfig = null"));
    EXPECT_TRUE(config->StoreAll());
    EXPECT_EQ(Calls(), wxS("store a; store c"));
}

TEST_F(ConfigHooksTest, StoringNothingSucceeds)
{
    EXPECT_TRUE(config->StoreAll());
}

TEST_F(ConfigHooksTest, NamedObjectsAreStoredAndTheFailuresOfSomeDoNotKeepTheOthersFromIt)
{
    for (const wchar_t* const name : {wxS("a"), wxS("b"), wxS("c")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    wxArrayString names;
    for (const wchar_t* const name : {wxS("c"), wxS("missing"), wxS("a")})
        names.Add(name);
    config->StoreObjectsConfig(names);
    EXPECT_EQ(Calls(), wxS("store c; store a"));
    config->StoreObjectConfig(wxS("b"));
    EXPECT_EQ(Calls(), wxS("store b"));
    config->StoreObjectConfig(wxS("missing"));
    EXPECT_EQ(Calls(), wxS(""));
}

TEST_F(ConfigHooksTest, AHookMayUnregisterItsObject)
{
    Put("<Config><a/><b/></Config>");
    for (const wchar_t* const name : {wxS("a"), wxS("b")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    Define("unregister", [&](JSContext*, uintN, jsval*, jsval*) {
        config->ObjectUnregister(wxS("a"));
        return JS_TRUE;
    });
    Show(wxS("a.LoadXmlConfig = function (n) { unregister(); call('load a'); }"));
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("load a; load b"));
    EXPECT_FALSE(config->HasObject(wxS("a")));
    EXPECT_TRUE(config->StoreAll());
    EXPECT_EQ(Calls(), wxS("store b"));
}

TEST_F(ConfigHooksTest, AHookMayUnregisterEveryObject)
{
    Put("<Config><a/><b/><c/></Config>");
    for (const wchar_t* const name : {wxS("a"), wxS("b"), wxS("c")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    Define("clean", [&](JSContext*, uintN, jsval*, jsval*) {
        config->CleanObjects();
        return JS_TRUE;
    });
    Show(wxS("b.LoadXmlConfig = function (n) { clean(); call('load b'); }"));
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("load a; load b"));
    EXPECT_FALSE(config->HasObject(wxS("a")));
}

TEST_F(ConfigHooksTest, AHookMayUnregisterMostObjectsAndTheOthersFollowInOrder)
{
    constexpr int count = 20;
    config->CreateEmtyConfig();
    for (int i = 0; i < count; ++i) {
        const wxString name = wxString::Format(wxS("o%d"), i);
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    }
    Define("unregisterMost", [&](JSContext*, uintN, jsval*, jsval*) {
        for (int i = 0; i < count; ++i)
            if (i % 7)
                config->ObjectUnregister(wxString::Format(wxS("o%d"), i));
        return JS_TRUE;
    });
    Show(wxS("o2._DefaultXmlConfig = function () { call('default o2'); unregisterMost(); }"));
    config->LoadAll();
    EXPECT_EQ(Calls(), wxS("default o0; default o1; default o2; default o7; default o14"));
    config->ObjectRegisterNamedNoLoad(objects[wxS("o3")]->GetJSLink(), wxS("o3"), wxString());
    EXPECT_TRUE(config->StoreAll());
    EXPECT_EQ(Calls(), wxS("store o0; store o7; store o14; store o3"));
}

TEST_F(ConfigHooksTest, AHookMayRegisterOthersWhichAreLoadedOnce)
{
    Put("<Config><a/><b/><c/></Config>");
    for (const wchar_t* const name : {wxS("a"), wxS("b")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    Recorder(wxS("c"));
    Show(wxS("a.LoadXmlConfig = function (n) { call('load a'); Config.RegisterNamed(c, 'c'); }"));
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("load a; load c; load b"));
    EXPECT_TRUE(config->HasObject(wxS("c")));
}

TEST_F(ConfigHooksTest, AHookThatRegistersItsObjectAgainDoesNotGoOnForEver)
{
    Put("<Config><a/></Config>");
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("a")), wxS("a"), wxString());
    Show(wxS("var left = 3; a.LoadXmlConfig = function (n) {"
             "  call('load'); if (left-- > 0) Config.RegisterNamed(a, 'a'); };"
             "a.StoreXmlConfig = function (n) { Config.RegisterNamed(a, 'a'); return call('store', true); }"));
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("load; load; load; load"));
    EXPECT_TRUE(config->StoreAll());
    EXPECT_EQ(Calls(), wxS("load; store"));
}

TEST_F(ConfigHooksTest, ANativeObjectMayEndInAHook)
{
    Put("<Config><a/><b/></Config>");
    for (const wchar_t* const name : {wxS("a"), wxS("b")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    Define("endBoth", [&](JSContext*, uintN, jsval*, jsval*) {
        objects.clear();
        return JS_TRUE;
    });
    Show(wxS("a._LoadXmlConfig = function () { call('not called'); };"
             "a.LoadXmlConfig = function () { call('load a'); endBoth(); }"));
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("load a"));
    EXPECT_FALSE(config->HasObject(wxS("a")));
    EXPECT_FALSE(config->HasObject(wxS("b")));
}

TEST_F(ConfigHooksTest, SavingFromALoadKeepsTheSectionsThatAreStillToBeLoaded)
{
    Put("<Config><a x='1'/><b x='2'/><c x='3'/></Config>");
    for (const wchar_t* const name : {wxS("a"), wxS("b"), wxS("c")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    Show(wxS("b.LoadXmlConfig = function (n) { call('load b ' + Config.SaveFile() + n.GetAllProps()); }"));
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("load a x=\"1\"; store a; load b true x=\"2\"; load c x=\"3\""));
    EXPECT_EQ(Bytes(), Saved(" <a v=\"a\"/>\n <b x=\"2\"/>\n <c x=\"3\"/>\n"));
    EXPECT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Bytes(), Saved(" <a v=\"a\"/>\n <b v=\"b\"/>\n <c v=\"c\"/>\n"));
}

TEST_F(ConfigHooksTest, AnObjectMayBeStoredWhileItIsLoaded)
{
    Put("<Config><a x='1'/></Config>");
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("a")), wxS("a"), wxString());
    Show(wxS("a.LoadXmlConfig = function (n) { call('' + Config.ObjectStore(a) + n.GetAllProps()); }"));
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("store a; true v=\"a\""));
}

TEST_F(ConfigHooksTest, LoadingTheFileFromALoadIsRefused)
{
    Put("<Config><a x='1'/><b x='2'/></Config>");
    for (const wchar_t* const name : {wxS("a"), wxS("b")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    Show(wxS("a.LoadXmlConfig = function (n) { Config.LoadFile(); call('load a' + n.GetAllProps()); }"));
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("load a x=\"1\"; load b x=\"2\""));
    EXPECT_EQ(log.Errors(), Texts{wxS("CXmlConfig::LoadFile() called by a hook while 'cfg.xml' is loaded")});
}

TEST_F(ConfigHooksTest, LoadingTheFileAtARegistrationHappensOnce)
{
    Put("<Config><a x='1'/></Config>");
    config->LoadFile();
    Recorder(wxS("a"));
    Show(wxS("a.LoadXmlConfig = function (n) { call('load a'); Config.LoadFile(); }"));
    config->ObjectRegisterNamed(objects[wxS("a")]->GetJSLink(), wxS("a"), wxString());
    EXPECT_EQ(Calls(), wxS("load a; load a"));
    EXPECT_EQ(log.Errors(), Texts{wxS("CXmlConfig::LoadFile() called by a hook while 'cfg.xml' is loaded")});
}

TEST_F(ConfigHooksTest, LoadingAndSavingTheFileFromAStoreIsRefused)
{
    Put("<Config><a x='1'/></Config>");
    config->LoadFile();
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("a")), wxS("a"), wxString());
    Show(wxS("a.StoreXmlConfig = function (n) {"
             "  call('' + Config.SaveFile()); Config.LoadFile(); return n.AddProp('x', 2); }"));
    EXPECT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Calls(), wxS("false"));
    EXPECT_EQ(Bytes(), Saved(" <a x=\"2\"/>\n"));
    EXPECT_EQ(log.Errors(), (Texts{wxS("CXmlConfig::SaveFile() called by a hook while 'cfg.xml' is stored"),
                                   wxS("CXmlConfig::LoadFile() called by a hook while 'cfg.xml' is stored")}));
}

TEST_F(ConfigHooksTest, ObjectsThatLoadEachOtherEndInAScriptError)
{
    Put("<Config><a/></Config>");
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("a")), wxS("a"), wxString());
    Show(wxS("var depth = 0; a._DefaultXmlConfig = null;"
             "a.LoadXmlConfig = function (n) { ++depth; Config.ObjectLoad(a); }"));
    config->LoadFile();
    EXPECT_EQ(Show(wxS("depth > 1")), wxS("true"));
}

TEST_F(ConfigHooksTest, AScriptsTimeLimitBoundsAHook)
{
    Put("<Config><a/><b/></Config>");
    for (const wchar_t* const name : {wxS("a"), wxS("b")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    Show(wxS("a.LoadXmlConfig = function (n) { call('a'); for (;;); }"));
    script.SetTimeLimit(50);
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("a; default a; load b"));
}
