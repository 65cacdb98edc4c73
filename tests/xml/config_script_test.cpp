#include "tests/xml/config_fixture.h"

namespace
{

class ConfigScriptTest : public ConfigTest
{
protected:
    ConfigScriptTest()
    {
        config->CreateEmtyConfig();
        Recorder(wxS("o"));
    }

    /// The message of the error that a call throws.
    wxString Thrown(const wxString& call)
    {
        return Show(wxS("try { ") + call + wxS("; 'nothing' } catch (e) { e.message }"));
    }
};

} // namespace

TEST_F(ConfigScriptTest, TheTableHasItsRowsInOrder)
{
    std::vector<std::string> rows;
    for (const JSMapEntry* row = CXmlConfig::m_JSMapEntries; row->name; ++row)
        rows.push_back(std::string(row->name) + "/" + std::to_string(row->extra));
    EXPECT_EQ(rows,
              (std::vector<std::string>{"Register/1", "RegisterNamed/2", "RegisterSection/2", "RegisterNamedSection/3",
                                        "SaveFile/0", "LoadFile/0", "ObjectStore/1", "ObjectLoad/1"}));
    EXPECT_STREQ(CXmlConfig::m_JSMap.name, "CXmlConfig");
    EXPECT_EQ(CXmlConfig::m_JSMap.parent, &CXmlDocument::ms_JSClass);
    EXPECT_EQ(config->GetJSMap(), &CXmlConfig::m_JSMap);
    EXPECT_EQ(config->GetClassInfo(), &CXmlDocument::ms_classInfo);
}

TEST_F(ConfigScriptTest, ItReportsItsOwnTableAndLinkAndADocumentsRunTimeClass)
{
    const CXmlDocument& document = *config;
    EXPECT_EQ(document.GetJSMap(), &CXmlConfig::m_JSMap);
    EXPECT_EQ(config->GetJSLink()->GetRootObject(), config.get());
    EXPECT_EQ(config->GetClassInfo(), wxCLASSINFO(CXmlDocument));
}

TEST_F(ConfigScriptTest, EveryMethodOfADocumentIsThere)
{
    EXPECT_EQ(Show(wxS("Config.SetContent('<r/>') + Config.GetRoot().GetName() + Config.GetVersion()")),
              wxS("truer1.0"));
}

TEST_F(ConfigScriptTest, ScriptCannotMakeOne)
{
    EXPECT_EQ(Show(wxS("try { new CXmlConfig(); 'made' } catch (e) { 'refused' }")), wxS("refused"));
}

TEST_F(ConfigScriptTest, NamedObjectsAreRegistered)
{
    EXPECT_EQ(Show(wxS("Config.RegisterNamed(o, 'one')")), wxS("undefined"));
    EXPECT_TRUE(config->HasObject(wxS("one")));
    EXPECT_EQ(Show(wxS("Config.RegisterNamedSection(o, 'two', 'part')")), wxS("undefined"));
    EXPECT_EQ(Calls(), wxS("default o; default o"));
    EXPECT_TRUE(config->StoreAll());
    EXPECT_TRUE(config->GetSectionNode(wxS("one"), false)->Ok());
    EXPECT_TRUE(config->GetSectionNode(wxS("part/two"), false)->Ok());
}

TEST_F(ConfigScriptTest, ObjectsThatAreNoWindowsAreIgnoredWithoutAName)
{
    EXPECT_EQ(Show(wxS("Config.Register(o)")), wxS("undefined"));
    EXPECT_EQ(Show(wxS("Config.RegisterSection(o, 'part')")), wxS("undefined"));
    EXPECT_FALSE(config->HasObject(objects[wxS("o")]->GetJSLink()));
}

TEST_F(ConfigScriptTest, NamesAreMadeTexts)
{
    Show(wxS("Config.RegisterNamedSection(o, 12.5, null)"));
    EXPECT_TRUE(config->HasObject(wxS("12_5")));
}

TEST_F(ConfigScriptTest, SavingAndLoadingTellWhetherTheyHaveSucceeded)
{
    EXPECT_EQ(Show(wxS("Config.LoadFile()")), wxS("false"));
    Show(wxS("Config.RegisterNamed(o, 'o')"));
    EXPECT_EQ(Show(wxS("Config.SaveFile() + '|' + Config.LoadFile()")), wxS("true|true"));
    EXPECT_EQ(Bytes(), Saved(" <o v=\"o\"/>\n"));
    Show(wxS("o.StoreXmlConfig = function () { return false; }"));
    EXPECT_EQ(Show(wxS("Config.SaveFile()")), wxS("false"));
    Put("<damaged");
    EXPECT_EQ(Show(wxS("Config.LoadFile()")), wxS("false"));
}

TEST_F(ConfigScriptTest, OneObjectIsStoredAndLoaded)
{
    Show(wxS("Config.RegisterNamed(o, 'o')"));
    Calls();
    EXPECT_EQ(Show(wxS("Config.ObjectStore(o) + '|' + Config.ObjectLoad(o)")), wxS("true|undefined"));
    EXPECT_EQ(Calls(), wxS("store o; load o v=\"o\""));
    EXPECT_EQ(Show(wxS("Config.ObjectStore(Config)")), wxS("false")) << "it is not registered";
}

TEST_F(ConfigScriptTest, AConfigurationCanBeRegisteredWithItself)
{
    Show(wxS("Config.RegisterNamed(Config, 'self')"));
    EXPECT_TRUE(config->HasObject(wxS("self")));
    EXPECT_TRUE(config->SaveFile(true));
}

TEST_F(ConfigScriptTest, WrongArgumentCountsAreReported)
{
    EXPECT_EQ(Thrown(wxS("Config.Register()")), wxS("Bad argument count for function 'Register' (0 instead of 1)"));
    EXPECT_EQ(Thrown(wxS("Config.RegisterNamed(o)")),
              wxS("Bad argument count for function 'RegisterNamed' (1 instead of 2)"));
    EXPECT_EQ(Thrown(wxS("Config.RegisterSection(o, 'a', 'b')")),
              wxS("Bad argument count for function 'RegisterSection' (3 instead of 2)"));
    EXPECT_EQ(Thrown(wxS("Config.RegisterNamedSection(o, 'a')")),
              wxS("Bad argument count for function 'RegisterNamedSection' (2 instead of 3)"));
    EXPECT_EQ(Thrown(wxS("Config.ObjectStore()")),
              wxS("Bad argument count for function 'ObjectStore' (0 instead of 1)"));
    EXPECT_EQ(Thrown(wxS("Config.ObjectLoad(o, o)")),
              wxS("Bad argument count for function 'ObjectLoad' (2 instead of 1)"));
}

TEST_F(ConfigScriptTest, SavingAndLoadingTakeNoArguments)
{
    EXPECT_EQ(Show(wxS("Config.SaveFile(1)")), wxS("(failed)"));
    EXPECT_EQ(Show(wxS("Config.LoadFile('other.xml')")), wxS("(failed)"));
    EXPECT_EQ(Names(), std::set<std::string>{});
}

TEST_F(ConfigScriptTest, WhatIsNoNativeObjectIsReported)
{
    for (const wchar_t* const value : {wxS("1"), wxS("'text'"), wxS("undefined"), wxS("null"), wxS("{}"), wxS("[]")})
        EXPECT_EQ(Thrown(wxString(wxS("Config.RegisterNamed(")) + value + wxS(", 'x')")),
                  wxS("Argument 1: can not convert to pCJScriptLink"))
            << value;
    EXPECT_EQ(Thrown(wxS("Config.ObjectStore({})")), wxS("Argument 1: can not convert to pCJScriptLink"));
    EXPECT_FALSE(config->HasObject(wxS("x")));
}

TEST_F(ConfigScriptTest, AnObjectIsNotRegisteredWhenTheTextOfItsNameOrSectionCannotBeMade)
{
    const wxString broken = wxS("{ toString: function () { throw 1; } }");
    EXPECT_EQ(Thrown(wxS("Config.RegisterNamed(o, ") + broken + wxS(")")),
              wxS("Argument 2: can not convert to wxString"));
    EXPECT_EQ(Thrown(wxS("Config.RegisterSection(o, ") + broken + wxS(")")),
              wxS("Argument 2: can not convert to wxString"));
    EXPECT_EQ(Thrown(wxS("Config.RegisterNamedSection(o, ") + broken + wxS(", 's')")),
              wxS("Argument 2: can not convert to wxString"));
    EXPECT_EQ(Thrown(wxS("Config.RegisterNamedSection(o, 'x', ") + broken + wxS(")")),
              wxS("Argument 3: can not convert to wxString"));
    EXPECT_FALSE(config->HasObject(wxS("x")));
}

TEST_F(ConfigScriptTest, AnObjectThatEndsWhileTheNameIsConvertedIsNotRegistered)
{
    Define("end", [&](JSContext*, uintN, jsval*, jsval*) {
        objects.clear();
        return JS_TRUE;
    });
    Show(wxS("Config.RegisterNamed(o, { toString: function () { end(); return 'x'; } })"));
    EXPECT_FALSE(config->HasObject(wxS("x")));
}

TEST_F(ConfigScriptTest, TheShellOfAnObjectThatIsGoneIsReported)
{
    Show(wxS("var shell = o"));
    objects.clear();
    EXPECT_EQ(Thrown(wxS("Config.RegisterNamed(shell, 'x')")), wxS("Argument 1: can not convert to pCJScriptLink"));
}
