#include "tests/xml/config_fixture.h"

namespace
{

class ConfigMergeTest : public ConfigTest
{
protected:
    ConfigMergeTest()
    {
        Put("<Config><a x='1' y='2'/></Config>");
        config->LoadFile();
    }
};

} // namespace

TEST_F(ConfigMergeTest, ASideFileAddsWhatTheFileDoesNotHave)
{
    const std::string side = "<Config><a x='10' z='3'><c w='4'/></a><b v='5'><d/></b></Config>";
    Put(side, "cfg.xml_tmp");
    EXPECT_TRUE(config->MergeSaveFile(false, true, true));
    EXPECT_EQ(Bytes(), Saved(" <a x=\"1\" y=\"2\" z=\"3\">\n  <c w=\"4\"/>\n </a>\n <b v=\"5\"/>\n"));
    EXPECT_EQ(Bytes("cfg.xml.old"), "<Config><a x='1' y='2'/></Config>");
    EXPECT_EQ(Bytes("cfg.xml_tmp"), side) << "it is neither written nor deleted";
}

TEST_F(ConfigMergeTest, ASideFileMayOverwriteValues)
{
    Put("<Config><a x='10' z='3'/></Config>", "cfg.xml_tmp");
    EXPECT_TRUE(config->MergeSaveFile(false, false, true));
    EXPECT_EQ(Bytes(), Saved(" <a x=\"10\" y=\"2\" z=\"3\"/>\n"));
}

TEST_F(ConfigMergeTest, TheSideFilesBackupAndTheServersServeToo)
{
    Put("<Config><b/></Config>", "cfg.xml_tmp.old");
    EXPECT_TRUE(config->MergeSaveFile(false, true, true));
    EXPECT_EQ(Bytes(), Saved(" <a x=\"1\" y=\"2\"/>\n <b/>\n"));
    std::filesystem::remove(place.Path("cfg.xml_tmp.old"));
    Put("<Config><c/></Config>", "server/cfg.xml_tmp");
    ASSERT_TRUE(CDir::SetRoot(wxS("SERVERCFG"), FromSystemName(place.Path("server"))));
    EXPECT_TRUE(config->MergeSaveFile(false, true, true));
    CDir::SetRoot(wxS("SERVERCFG"), wxString());
    EXPECT_EQ(Bytes(), Saved(" <a x=\"1\" y=\"2\"/>\n <b/>\n <c/>\n"));
}

TEST_F(ConfigMergeTest, WithoutASideFileTheFileIsSavedAsItIs)
{
    EXPECT_TRUE(config->MergeSaveFile(false, true, true));
    EXPECT_EQ(Bytes(), Saved(" <a x=\"1\" y=\"2\"/>\n"));
    EXPECT_EQ(Names(), (std::set<std::string>{"cfg.xml", "cfg.xml.old"}));
}

TEST_F(ConfigMergeTest, ADamagedSideFileAddsNothing)
{
    Put("<Config><b></Config>", "cfg.xml_tmp");
    EXPECT_TRUE(config->MergeSaveFile(false, true, true));
    EXPECT_EQ(Bytes(), Saved(" <a x=\"1\" y=\"2\"/>\n"));
}

TEST_F(ConfigMergeTest, RootsOfDifferentNamesPreventTheSave)
{
    Put("<Other><b/></Other>", "cfg.xml_tmp");
    EXPECT_FALSE(config->MergeSaveFile(false, true, true));
    EXPECT_EQ(Bytes(), "<Config><a x='1' y='2'/></Config>");
    EXPECT_EQ(Names(), (std::set<std::string>{"cfg.xml", "cfg.xml_tmp"}));
}

TEST_F(ConfigMergeTest, WithoutATreeNothingIsSaved)
{
    config->CleanConfig();
    EXPECT_FALSE(config->MergeSaveFile(true, true, true));
    EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml"});
}

TEST_F(ConfigMergeTest, ObjectsAreStoredOnRequest)
{
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("o")), wxS("o"), wxString());
    EXPECT_TRUE(config->MergeSaveFile(false, true, true));
    EXPECT_EQ(Calls(), wxS(""));
    EXPECT_TRUE(config->MergeSaveFile(true, true, true));
    EXPECT_EQ(Calls(), wxS("store o"));
    EXPECT_EQ(Bytes(), Saved(" <a x=\"1\" y=\"2\"/>\n <o v=\"o\"/>\n"));
}

TEST_F(ConfigMergeTest, AFailingStorePreventsTheSave)
{
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("o")), wxS("o"), wxString());
    Show(wxS("o.StoreXmlConfig = function () { return false; }"));
    EXPECT_FALSE(config->MergeSaveFile(true, true, true));
    EXPECT_EQ(log.Texts(SaveFailureLevel), Texts{wxS("CXmlConfig::SaveFile() Failed!")});
    EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml"});
    EXPECT_TRUE(config->MergeSaveFile(false, true, true));
}

TEST_F(ConfigMergeTest, WithoutTheFlagAFileThatCannotBeBackedUpStays)
{
    Put("x", "cfg.xml.old/x");
    EXPECT_FALSE(config->MergeSaveFile(false, true, false));
    EXPECT_EQ(Bytes(), "<Config><a x='1' y='2'/></Config>");
}

TEST_F(ConfigMergeTest, ItIsRefusedWhileTheFileIsStored)
{
    config->ObjectRegisterNamedNoLoad(Recorder(wxS("o")), wxS("o"), wxString());
    Define("merge", [&](JSContext*, uintN, jsval*, jsval* rval) {
        *rval = BOOLEAN_TO_JSVAL(config->MergeSaveFile(false, true, true));
        return JS_TRUE;
    });
    Show(wxS("o.StoreXmlConfig = function () { call('' + merge()); return true; }"));
    EXPECT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Calls(), wxS("false"));
    EXPECT_EQ(log.Errors(), Texts{wxS("CXmlConfig::MergeSaveFile() called by a hook while 'cfg.xml' is stored")});
}
