#include "tests/xml/config_fixture.h"

namespace
{

const std::string OneSection = R"(<?xml version="1.0"?><Config><win x="5"/></Config>)";
const std::string OlderSection = R"(<Config><win x="4"/></Config>)";

class ConfigLoadTest : public ConfigTest
{
protected:
    ~ConfigLoadTest() override { CDir::SetRoot(wxS("SERVERCFG"), wxString()); }

    /// What the object "win" is told when the file is loaded.
    wxString LoadWin()
    {
        config->ObjectRegisterNamedNoLoad(Recorder(wxS("win")), wxS("win"), wxString());
        config->LoadFile();
        return Calls();
    }

    void UseServer() { ASSERT_TRUE(CDir::SetRoot(wxS("SERVERCFG"), FromSystemName(place.Path("server")))); }
};

} // namespace

TEST_F(ConfigLoadTest, BeforeItIsLoadedThereIsNoTree)
{
    EXPECT_EQ(RootName(), wxS("(none)"));
    EXPECT_FALSE(config->IsLoaded());
}

TEST_F(ConfigLoadTest, AFileIsLoadedAndThenEveryObject)
{
    Put(OneSection);
    EXPECT_EQ(LoadWin(), wxS("load win x=\"5\""));
    EXPECT_TRUE(config->IsLoaded());
}

TEST_F(ConfigLoadTest, ObjectsAreLoadedInTheOrderOfTheirRegistration)
{
    Put("<Config/>");
    for (const wchar_t* const name : {wxS("z"), wxS("a"), wxS("m"), wxS("b")})
        config->ObjectRegisterNamedNoLoad(Recorder(name), name, wxString());
    config->ObjectRegisterNamedNoLoad(objects[wxS("a")]->GetJSLink(), wxS("a"), wxString());
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("default z; default m; default b; default a")) << "registering again is registering anew";
}

TEST_F(ConfigLoadTest, WithoutAnyFileTheConfigurationIsEmptyAndNoHookIsCalled)
{
    EXPECT_EQ(LoadWin(), wxS(""));
    EXPECT_EQ(RootName(), wxS("Config"));
    EXPECT_EQ(config->GetRawRoot()->GetChildrenCount(), 0);
    EXPECT_FALSE(config->IsLoaded());
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ConfigLoadTest, AMissingFileFallsBackToTheBackup)
{
    Put(OlderSection, "cfg.xml.old");
    EXPECT_EQ(LoadWin(), wxS("load win x=\"4\""));
}

TEST_F(ConfigLoadTest, TheFileComesBeforeTheBackup)
{
    Put(OneSection);
    Put(OlderSection, "cfg.xml.old");
    EXPECT_EQ(LoadWin(), wxS("load win x=\"5\""));
}

TEST_F(ConfigLoadTest, ADamagedFileDoesNotFallBack)
{
    Put("<Config><win x='5'></Config>");
    Put(OlderSection, "cfg.xml.old");
    EXPECT_EQ(LoadWin(), wxS(""));
    EXPECT_EQ(RootName(), wxS("Config"));
    EXPECT_EQ(config->GetRawRoot()->GetChildrenCount(), 0);
    EXPECT_FALSE(config->IsLoaded());
    EXPECT_FALSE(log.Errors().empty());
}

TEST_F(ConfigLoadTest, AnEmptyFileIsADamagedOne)
{
    Put("");
    Put(OlderSection, "cfg.xml.old");
    EXPECT_EQ(LoadWin(), wxS(""));
    EXPECT_FALSE(config->IsLoaded());
}

TEST_F(ConfigLoadTest, ElementsNestedTooDeepDamageAFile)
{
    std::string deep;
    for (int i = 0; i < 1001; ++i)
        deep = "<e>" + deep + "</e>";
    Put(deep);
    config->SetMaxDepth(1000);
    config->LoadFile();
    EXPECT_EQ(RootName(), wxS("Config"));
    EXPECT_FALSE(config->IsLoaded());
}

TEST_F(ConfigLoadTest, TheServersFileComesBehindTheOwnBackup)
{
    Put(OneSection, "server/cfg.xml");
    UseServer();
    Put(OlderSection, "cfg.xml.old");
    EXPECT_EQ(LoadWin(), wxS("load win x=\"4\""));
}

TEST_F(ConfigLoadTest, WithoutOwnFilesTheServersIsLoaded)
{
    Put(OneSection, "server/cfg.xml");
    Put(OlderSection, "server/cfg.xml.old");
    UseServer();
    EXPECT_EQ(LoadWin(), wxS("load win x=\"5\""));
}

TEST_F(ConfigLoadTest, TheServersBackupIsTheLastResort)
{
    Put(OlderSection, "server/cfg.xml.old");
    UseServer();
    EXPECT_EQ(LoadWin(), wxS("load win x=\"4\""));
}

TEST_F(ConfigLoadTest, ADirectoryInThePlaceOfTheFileIsPassedOver)
{
    Put("x", "cfg.xml/x");
    Put(OlderSection, "cfg.xml.old");
    EXPECT_EQ(LoadWin(), wxS("load win x=\"4\""));
}

TEST_F(ConfigLoadTest, LoadingAgainReplacesTheTree)
{
    Put(OneSection);
    config->LoadFile();
    config->GetSectionNode(wxS("other/one"), true);
    Put(OlderSection);
    config->LoadFile();
    EXPECT_EQ(config->GetSectionNode(wxS("win"), false)->GetPropW(wxS("x"), wxString()), wxS("4"));
    EXPECT_FALSE(config->GetSectionNode(wxS("other"), false)->Ok());
}

TEST_F(ConfigLoadTest, AnOpenFileIsLoadedAndStaysOpen)
{
    Put(OneSection, "elsewhere.xml");
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("win")), wxS("win"), wxString());
    const CFile file = place.Dir().OpenFile(wxS("elsewhere.xml"), wxFile::read);
    config->LoadFile(file);
    EXPECT_EQ(Calls(), wxS("load win x=\"5\""));
    EXPECT_TRUE(file.IsOpened());
    EXPECT_TRUE(config->IsLoaded());
}

TEST_F(ConfigLoadTest, AnOpenFileThatIsDamagedYieldsTheEmptyConfiguration)
{
    Put("<a><b></a>", "elsewhere.xml");
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("win")), wxS("win"), wxString());
    const CFile file = place.Dir().OpenFile(wxS("elsewhere.xml"), wxFile::read);
    config->LoadFile(file);
    EXPECT_EQ(RootName(), wxS("Config"));
    EXPECT_EQ(Calls(), wxS(""));
    EXPECT_TRUE(file.IsOpened());
}

TEST_F(ConfigLoadTest, AFileThatIsNotOpenYieldsTheEmptyConfiguration)
{
    Put(OneSection);
    config->LoadFile();
    config->LoadFile(CFile());
    EXPECT_EQ(RootName(), wxS("Config"));
    EXPECT_EQ(config->GetRawRoot()->GetChildrenCount(), 0);
}

TEST_F(ConfigLoadTest, AnEmptyConfigurationCanBeMadeAtAnyTime)
{
    Put(OneSection);
    config->LoadFile();
    config->CreateEmtyConfig();
    EXPECT_EQ(RootName(), wxS("Config"));
    EXPECT_EQ(config->GetRawRoot()->GetChildrenCount(), 0);
    EXPECT_EQ(config->GetRawRoot()->GetAllProps(), wxS(""));
}

TEST_F(ConfigLoadTest, CleaningLeavesNoTree)
{
    Put(OneSection);
    config->LoadFile();
    config->CleanConfig();
    EXPECT_EQ(RootName(), wxS("(none)"));
}

TEST_F(ConfigLoadTest, WithoutScriptFilesAreLoadedAndNoHookIsCalled)
{
    Put(OneSection);
    CXmlConfig plain(nullptr, wxS("cfg.xml"), nullptr, place.Dir(), false);
    plain.ObjectRegisterNamed(Recorder(wxS("win")), wxS("win"), wxString());
    plain.LoadFile();
    EXPECT_TRUE(plain.GetSectionNode(wxS("win"), false)->Ok());
    EXPECT_EQ(Calls(), wxS(""));
    EXPECT_TRUE(plain.ObjectStore(wxS("win")));
    EXPECT_EQ(plain.GetSectionNode(wxS("win"), false)->GetAllProps(), wxS(" x=\"5\"")) << "nothing happens";
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ConfigLoadTest, TheNameIsTheFilesAndTheScriptObjects)
{
    Put(OneSection, "settings");
    CXmlConfig named(&script, wxS("settings"), Global(), place.Dir(), false);
    EXPECT_EQ(Show(wxS("settings.LoadFile() + settings.GetRoot().GetFirst().GetName()")), wxS("truewin"));
}

TEST_F(ConfigLoadTest, ADirectoryThatIsMissingIsNotedAndMayBeMadeLater)
{
    const CDir later(FromSystemName(place.Path("later")));
    CXmlConfig early(&script, wxS("early"), Global(), later, true);
    EXPECT_EQ(log.Texts(NoticeLevel), Texts{wxS("CXmlConfig directory '") + later.GetFullPath() + wxS("' not found")});
    Put("x", "later/x");
    early.CreateEmtyConfig();
    EXPECT_TRUE(early.SaveFile(true));
    EXPECT_EQ(Bytes("later/early"), Saved(""));
}

TEST_F(ConfigLoadTest, AbsoluteNamesAreNamesToo)
{
    Put(OneSection);
    Open(FromSystemName(place.Path("cfg.xml")));
    EXPECT_EQ(LoadWin(), wxS("load win x=\"5\""));
}
