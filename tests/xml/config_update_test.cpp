#include "tests/xml/config_fixture.h"

namespace
{

class ConfigUpdateTest : public ConfigTest
{
protected:
    /// Adds to a number in the file.
    static bool Add(CXmlConfig& changed, long by)
    {
        CXmlNode* const node = changed.GetSectionNode(wxS("counter"), true);
        node->AddOrChangeProp(wxS("n"), node->GetPropLong(wxS("n"), 0) + by);
        return true;
    }
    static bool AddOne(CXmlConfig& changed) { return Add(changed, 1); }
};

} // namespace

TEST_F(ConfigUpdateTest, AChangeIsMadeToWhatIsInTheFileAndSaved)
{
    Put("<Config><counter n='41'/></Config>");
    EXPECT_TRUE(config->UpdateFile(AddOne));
    EXPECT_EQ(Bytes(), Saved(" <counter n=\"42\"/>\n"));
    EXPECT_EQ(Bytes("cfg.xml.old"), "<Config><counter n='41'/></Config>");
}

TEST_F(ConfigUpdateTest, TheFirstChangeMakesTheFile)
{
    EXPECT_TRUE(config->UpdateFile(AddOne));
    EXPECT_EQ(Bytes(), Saved(" <counter n=\"1\"/>\n"));
}

TEST_F(ConfigUpdateTest, ChangesOfTwoStoresAddUp)
{
    CXmlConfig other(nullptr, wxS("cfg.xml"), nullptr, place.Dir(), true);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(config->UpdateFile(AddOne));
        EXPECT_TRUE(other.UpdateFile(AddOne));
    }
    EXPECT_EQ(Bytes(), Saved(" <counter n=\"10\"/>\n"));
}

TEST_F(ConfigUpdateTest, ObjectsAreLoadedBeforeAndStoredAfterTheChange)
{
    Put("<Config><o x='1'/></Config>");
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("o")), wxS("o"), wxString());
    EXPECT_TRUE(config->UpdateFile([&](CXmlConfig&) {
        Show(wxS("call('change')"));
        return true;
    }));
    EXPECT_EQ(Calls(), wxS("load o x=\"1\"; change; store o"));
    EXPECT_EQ(Bytes(), Saved(" <o v=\"o\"/>\n"));
}

TEST_F(ConfigUpdateTest, AChangeThatReturnsFalseSavesNothing)
{
    Put("<Config/>");
    EXPECT_FALSE(config->UpdateFile([](CXmlConfig& changed) { return !AddOne(changed); }));
    EXPECT_EQ(Bytes(), "<Config/>");
    EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml"});
}

TEST_F(ConfigUpdateTest, AFailingStoreSavesNothing)
{
    Put("<Config/>");
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("o")), wxS("o"), wxString());
    Show(wxS("o.StoreXmlConfig = function () { return false; }"));
    EXPECT_FALSE(config->UpdateFile(AddOne));
    EXPECT_EQ(Bytes(), "<Config/>");
}

TEST_F(ConfigUpdateTest, NothingIsBuiltOnAFileThatIsDamaged)
{
    Put("<Config><counter n='41'></Config>");
    Put("<Config><counter n='40'/></Config>", "cfg.xml.old");
    bool called = false;
    EXPECT_FALSE(config->UpdateFile([&](CXmlConfig&) { return called = true; }));
    EXPECT_FALSE(called);
    EXPECT_EQ(Bytes(), "<Config><counter n='41'></Config>");
    EXPECT_EQ(Bytes("cfg.xml.old"), "<Config><counter n='40'/></Config>");
}

TEST_F(ConfigUpdateTest, NothingIsBuiltOnAFileThatCannotBeOpened)
{
    Put("x", "cfg.xml/x");
    Put("<Config><counter n='40'/></Config>", "cfg.xml.old");
    bool called = false;
    EXPECT_FALSE(config->UpdateFile([&](CXmlConfig&) { return called = true; }));
    EXPECT_FALSE(called);
}

TEST_F(ConfigUpdateTest, TheBackupIsGoodEnoughWhereThereIsNoFile)
{
    Put("<Config><counter n='40'/></Config>", "cfg.xml.old");
    EXPECT_TRUE(config->UpdateFile(AddOne));
    EXPECT_EQ(Bytes(), Saved(" <counter n=\"41\"/>\n"));
}

TEST_F(ConfigUpdateTest, ItIsRefusedInHooks)
{
    Put("<Config><a/></Config>");
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("a")), wxS("a"), wxString());
    Define("update", [&](JSContext*, uintN, jsval*, jsval* rval) {
        *rval = BOOLEAN_TO_JSVAL(config->UpdateFile(AddOne));
        return JS_TRUE;
    });
    Show(wxS("a.LoadXmlConfig = function () { call('' + update()); };"
             "a.StoreXmlConfig = function () { call('' + update()); return true; }"));
    config->LoadFile();
    EXPECT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Calls(), wxS("false; false"));
    EXPECT_EQ(log.Errors(), (Texts{wxS("CXmlConfig::UpdateFile() called by a hook while 'cfg.xml' is loaded"),
                                   wxS("CXmlConfig::UpdateFile() called by a hook while 'cfg.xml' is stored")}));
}

TEST_F(ConfigUpdateTest, TheChangeMayLoadAndSaveOnItsOwn)
{
    Put("<Config><counter n='1'/></Config>");
    EXPECT_TRUE(config->UpdateFile([](CXmlConfig& changed) {
        const bool saved = AddOne(changed) && changed.SaveFile(true);
        changed.LoadFile();
        return saved && AddOne(changed);
    }));
    EXPECT_EQ(Bytes(), Saved(" <counter n=\"3\"/>\n"));
}
