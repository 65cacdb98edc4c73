#include "tests/xml/config_fixture.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace
{

const std::string FirstState = Saved(" <a x=\"1\"/>\n");
const std::string SecondState = Saved(" <a x=\"2\"/>\n");
const std::string ThirdState = Saved(" <a x=\"3\"/>\n");

class ConfigSaveTest : public ConfigTest
{
protected:
    void SetState(int x) { config->GetSectionNode(wxS("a"), true)->AddOrChangeProp(wxS("x"), static_cast<long>(x)); }

    bool SaveState(int x)
    {
        SetState(x);
        return config->SaveFile(true);
    }

    mode_t Mode(const std::string& name) const
    {
        struct stat info = {};
        return ::stat(place.Path(name).c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
    }

    bool IsLink(const std::string& name) const { return std::filesystem::is_symlink(place.Path(name)); }
};

/// Runs in a child process, without the rights of the superuser; its result.
int RunUnprivileged(const std::function<int()>& run)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(::geteuid() == 0 && ::seteuid(65534) != 0 ? 100 : run());
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 101;
}

} // namespace

TEST_F(ConfigSaveTest, ANewFileIsUtf8AndIndentedAndHasNoBackup)
{
    config->GetSectionNode(wxS("a/b"), true)->AddProp(wxS("title"), wxString::FromUTF8("gr\xC3\xBCn <1>"));
    EXPECT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Bytes(), Saved(" <a>\n  <b title=\"gr\xC3\xBCn &lt;1&gt;\"/>\n </a>\n"));
    EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml"});
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ConfigSaveTest, ObjectsAreStoredFirst)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("a"), wxString());
    EXPECT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Bytes(), Saved(" <a v=\"a\"/>\n"));
}

TEST_F(ConfigSaveTest, WhatIsSavedIsLoadedAgain)
{
    config->ObjectRegisterNamed(Recorder(wxS("a")), wxS("a"), wxS("part"));
    ASSERT_TRUE(config->SaveFile(true));
    Open();
    Calls();
    config->ObjectRegisterNamedNoLoad(objects[wxS("a")]->GetJSLink(), wxS("a"), wxS("part"));
    config->LoadFile();
    EXPECT_EQ(Calls(), wxS("load a v=\"a\""));
}

TEST_F(ConfigSaveTest, TheBackupIsThePreviousContentOneStepBack)
{
    ASSERT_TRUE(SaveState(1));
    ASSERT_TRUE(SaveState(2));
    EXPECT_EQ(Bytes(), SecondState);
    EXPECT_EQ(Bytes("cfg.xml.old"), FirstState);
    ASSERT_TRUE(SaveState(3));
    EXPECT_EQ(Bytes(), ThirdState);
    EXPECT_EQ(Bytes("cfg.xml.old"), SecondState);
    EXPECT_EQ(Names(), (std::set<std::string>{"cfg.xml", "cfg.xml.old"}));
}

TEST_F(ConfigSaveTest, WhereThereIsNoFileTheOldBackupGoesWithTheSave)
{
    Put(FirstState, "cfg.xml.old");
    ASSERT_TRUE(SaveState(2));
    EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml"});
}

TEST_F(ConfigSaveTest, ASaveThatFailsWhereThereIsNoFileKeepsTheOldBackup)
{
    Put(FirstState, "cfg.xml.old");
    config->GetSectionNode(wxS("not a name"), true);
    EXPECT_FALSE(config->SaveFile(true));
    EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml.old"});
}

TEST_F(ConfigSaveTest, AFailingStorePreventsTheSave)
{
    Put(SecondState);
    Put(FirstState, "cfg.xml.old");
    config->LoadFile();
    config->ObjectRegisterNamed(Recorder(wxS("o")), wxS("o"), wxString());
    Show(wxS("o.StoreXmlConfig = function () { return false; }"));
    EXPECT_FALSE(config->SaveFile(true));
    CDir elsewhere = place.Dir();
    EXPECT_FALSE(config->SaveFile(elsewhere, wxS("copy.xml"), true));
    EXPECT_EQ(log.Texts(SaveFailureLevel), Texts(2, wxS("CXmlConfig::SaveFile() Failed!")));
    EXPECT_EQ(Bytes(), SecondState);
    EXPECT_EQ(Bytes("cfg.xml.old"), FirstState);
    EXPECT_EQ(Names(), (std::set<std::string>{"cfg.xml", "cfg.xml.old"}));
}

TEST_F(ConfigSaveTest, WithoutATreeNothingIsSaved)
{
    Put(FirstState);
    EXPECT_FALSE(config->SaveFile(true));
    EXPECT_EQ(Bytes(), FirstState);
    EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml"});
}

TEST_F(ConfigSaveTest, TheRootOfAFileAndWhatNobodyOwnsAreKept)
{
    Put("<!-- settings --><Settings lang='de'><a x='1'/><other>text</other></Settings>");
    config->LoadFile();
    ASSERT_TRUE(SaveState(2));
    EXPECT_EQ(Bytes(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- settings -->\n"
                       "<Settings lang=\"de\">\n <a x=\"2\"/>\n <other>text</other>\n</Settings>\n");
}

TEST_F(ConfigSaveTest, AFileInAnotherEncodingBecomesUtf8)
{
    Put("<?xml version='1.0' encoding='ISO-8859-1'?><Config><a t='gr\xFCn'/></Config>");
    config->LoadFile();
    config->GetSectionNode(wxS("a"), false)->AddProp(wxS("u"), wxString::FromUTF8("\xE2\x82\xAC"));
    ASSERT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Bytes(), Saved(" <a t=\"gr\xC3\xBCn\" u=\"\xE2\x82\xAC\"/>\n"));
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ConfigSaveTest, WhatCouldNotBeLoadedAgainIsNotSaved)
{
    struct Bad
    {
        std::function<void(CXmlNode&)> spoil;
        std::string message;
    };
    const std::vector<Bad> all = {
        {[](CXmlNode& n) { n.AddRawNode(wxS("1st")); }, "not well-formed (invalid token) at line 4"},
        {[](CXmlNode& n) { n.AddRawNode(wxS("two words")); }, "not well-formed (invalid token) at line 4"},
        {[](CXmlNode& n) { n.AddProp(wxS("a b"), wxS("1")); }, "not well-formed (invalid token) at line 3"},
        {[](CXmlNode& n) { n.AddProp(wxS("x"), wxS("again")); }, "duplicate attribute at line 3"},
        {[](CXmlNode& n) { n.AddProp(wxS("c"), wxString(wxUniChar(1))); }, "not well-formed (invalid token) at line 3"},
    };
    Put(FirstState);
    for (const Bad& bad : all) {
        config->LoadFile();
        bad.spoil(*config->GetSectionNode(wxS("a"), false));
        log.Clear();
        EXPECT_FALSE(config->SaveFile(true)) << bad.message;
        EXPECT_EQ(log.Errors(),
                  Texts{FromSystemName("'cfg.xml' is not saved, it could not be loaded again: " + bad.message)});
        EXPECT_EQ(Bytes(), FirstState);
        EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml"});
    }
}

TEST_F(ConfigSaveTest, WhatIsUnusualAndCanBeLoadedIsSaved)
{
    Put("<!DOCTYPE Config><?go on?><Config><!-- c --><a><![CDATA[<raw>]]></a><p:b/></Config>");
    config->LoadFile();
    const wxString name = wxString::FromUTF8("gr\xC3\xB6\xC3\x9F") + wxS("e");
    CXmlNode* const node = config->GetSectionNode(name, true);
    for (int i = 0; i < 50; ++i)
        node->AddProp(wxString::Format(wxS("n%d"), i), wxString(wxUniChar(0x1F600)) + wxS("\t\n\"<&"));
    EXPECT_TRUE(config->SaveFile(true));
    config->LoadFile();
    EXPECT_TRUE(config->IsLoaded());
    EXPECT_EQ(config->GetSectionNode(name, false)->GetPropW(wxS("n49"), wxString()),
              wxString(wxUniChar(0x1F600)) + wxS("\t\n\"<&"));
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ConfigSaveTest, AFileThatIsDamagedBetweenLoadAndSaveDoesNotPushOutAGoodBackup)
{
    ASSERT_TRUE(SaveState(1));
    ASSERT_TRUE(SaveState(2));
    Put("<Config><a x='2'></Config>");
    ASSERT_TRUE(SaveState(3));
    EXPECT_EQ(Bytes("cfg.xml.old"), "<Config><a x='2'></Config>");
    EXPECT_EQ(Bytes("cfg.xml.kept"), FirstState);
}

TEST_F(ConfigSaveTest, ADamagedFileDoesNotPushOutAGoodBackup)
{
    Put("<Config><a x='2'></Config>");
    Put(FirstState, "cfg.xml.old");
    config->LoadFile();
    log.Clear();
    ASSERT_TRUE(SaveState(3));
    EXPECT_EQ(Bytes(), ThirdState);
    EXPECT_EQ(Bytes("cfg.xml.old"), "<Config><a x='2'></Config>") << "it may hold somebody's work";
    EXPECT_EQ(Bytes("cfg.xml.kept"), FirstState);
    EXPECT_EQ(log.Texts(wxLOG_Warning), Texts{wxS("'cfg.xml' is damaged; its good backup is kept as 'cfg.xml.kept'")});
    ASSERT_TRUE(SaveState(2));
    EXPECT_EQ(Bytes("cfg.xml.old"), ThirdState);
    EXPECT_EQ(Bytes("cfg.xml.kept"), FirstState);
}

TEST_F(ConfigSaveTest, ADamagedBackupOfADamagedFileIsNotKept)
{
    Put("<Config><a x='2'></Config>");
    Put("<Config><a x='1'></Config>", "cfg.xml.old");
    config->LoadFile();
    ASSERT_TRUE(SaveState(3));
    EXPECT_EQ(Bytes("cfg.xml.old"), "<Config><a x='2'></Config>");
    EXPECT_EQ(Names(), (std::set<std::string>{"cfg.xml", "cfg.xml.old"}));
}

TEST_F(ConfigSaveTest, ABackupThatCannotBeKeptStays)
{
    Put("<Config><a x='2'></Config>");
    Put(FirstState, "cfg.xml.old");
    Put("x", "cfg.xml.kept/x");
    config->LoadFile();
    SetState(3);
    EXPECT_FALSE(config->SaveFile(false));
    EXPECT_EQ(Bytes(), "<Config><a x='2'></Config>");
    EXPECT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Bytes(), ThirdState);
    EXPECT_EQ(Bytes("cfg.xml.old"), FirstState);
}

TEST_F(ConfigSaveTest, WithoutTheFlagAFileThatCannotBeBackedUpStays)
{
    Put(FirstState);
    Put("x", "cfg.xml.old/x");
    config->LoadFile();
    SetState(2);
    log.Clear();
    EXPECT_FALSE(config->SaveFile(false));
    EXPECT_EQ(Bytes(), FirstState);
    EXPECT_EQ(log.Errors(), Texts{wxS("'cfg.xml' cannot be written in '") + place.Dir().GetFullPath() + wxS("'")});
    EXPECT_TRUE(config->SaveFile(true));
    EXPECT_EQ(Bytes(), SecondState);
}

TEST_F(ConfigSaveTest, WithoutTheFlagAFileThatCanBeBackedUpIsReplaced)
{
    ASSERT_TRUE(SaveState(1));
    SetState(2);
    EXPECT_TRUE(config->SaveFile(false));
    EXPECT_EQ(Bytes(), SecondState);
    EXPECT_EQ(Bytes("cfg.xml.old"), FirstState);
}

TEST_F(ConfigSaveTest, AnotherPlaceGetsNoBackupAndIsNotReplacedWithoutTheFlag)
{
    ASSERT_TRUE(SaveState(1));
    Put("x", "elsewhere/x");
    CDir elsewhere(FromSystemName(place.Path("elsewhere")));
    EXPECT_TRUE(config->SaveFile(elsewhere, wxS("copy.xml"), false));
    EXPECT_EQ(Bytes("elsewhere/copy.xml"), FirstState);
    SetState(2);
    EXPECT_FALSE(config->SaveFile(elsewhere, wxS("copy.xml"), false));
    EXPECT_EQ(Bytes("elsewhere/copy.xml"), FirstState);
    EXPECT_TRUE(config->SaveFile(elsewhere, wxS("copy.xml"), true));
    EXPECT_EQ(Bytes("elsewhere/copy.xml"), SecondState);
    EXPECT_FALSE(Bytes("elsewhere/copy.xml.old"));
    EXPECT_EQ(Bytes(), FirstState) << "the file itself is as it was";
}

TEST_F(ConfigSaveTest, FilesKeepTheirPermissionsAndBackupsHaveThose)
{
    for (const mode_t mode : {0600, 0640, 0664, 0755}) {
        ASSERT_TRUE(SaveState(1));
        ASSERT_EQ(::chmod(place.Path("cfg.xml").c_str(), mode), 0);
        ASSERT_TRUE(SaveState(2));
        EXPECT_EQ(Mode("cfg.xml"), mode);
        EXPECT_EQ(Mode("cfg.xml.old"), mode);
    }
}

TEST_F(ConfigSaveTest, ANewFileHasThePermissionsThatTheUmaskAllows)
{
    const mode_t before = ::umask(027);
    EXPECT_TRUE(SaveState(1));
    ::umask(before);
    EXPECT_EQ(Mode("cfg.xml"), 0640u);
}

TEST_F(ConfigSaveTest, ALinkStaysAndWhatItLeadsToIsReplaced)
{
    Put(FirstState, "shared/settings.xml");
    ASSERT_EQ(::chmod(place.Path("shared/settings.xml").c_str(), 0600), 0);
    std::filesystem::create_symlink("shared/settings.xml", place.Path("cfg.xml"));
    config->LoadFile();
    ASSERT_TRUE(SaveState(2));
    EXPECT_TRUE(IsLink("cfg.xml"));
    EXPECT_EQ(Bytes("shared/settings.xml"), SecondState);
    EXPECT_EQ(Bytes("cfg.xml.old"), FirstState);
    EXPECT_FALSE(IsLink("cfg.xml.old"));
    EXPECT_EQ(Mode("cfg.xml.old"), 0600u);
    EXPECT_EQ(Names(), (std::set<std::string>{"cfg.xml", "cfg.xml.old", "shared"}));
}

TEST_F(ConfigSaveTest, ABackupThatIsALinkStaysOne)
{
    Put(FirstState, "archive/backup.xml");
    std::filesystem::create_symlink("archive/backup.xml", place.Path("cfg.xml.old"));
    Put(SecondState);
    ASSERT_TRUE(SaveState(3));
    EXPECT_TRUE(IsLink("cfg.xml.old"));
    EXPECT_EQ(Bytes("archive/backup.xml"), SecondState);
}

TEST_F(ConfigSaveTest, TheFileIsThereAllTheTime)
{
    ASSERT_TRUE(SaveState(1));
    const pid_t watcher = ::fork();
    if (watcher == 0) {
        for (;;) {
            const int file = ::open(place.Path("cfg.xml").c_str(), O_RDONLY);
            if (file < 0)
                ::_exit(1);
            ::close(file);
        }
    }
    for (int i = 0; i < 300; ++i)
        EXPECT_TRUE(SaveState(i));
    EXPECT_EQ(::waitpid(watcher, nullptr, WNOHANG), 0) << "a reader found no file";
    ::kill(watcher, SIGKILL);
    ::waitpid(watcher, nullptr, 0);
}

TEST_F(ConfigSaveTest, AReadOnlyDirectoryFailsTheSaveAndKeepsTheState)
{
    Put(SecondState);
    Put(FirstState, "cfg.xml.old");
    ASSERT_EQ(::chmod(place.Path().c_str(), 0555), 0);
    ASSERT_EQ(::chmod(place.Path("cfg.xml").c_str(), 0666), 0);
    EXPECT_EQ(RunUnprivileged([&] {
                  const CDir dir = place.Dir();
                  CXmlConfig mine(nullptr, wxS("cfg.xml"), nullptr, dir, true);
                  mine.LoadFile();
                  return mine.IsLoaded() && !mine.SaveFile(true) ? 0 : 1;
              }),
              0);
    ASSERT_EQ(::chmod(place.Path().c_str(), 0755), 0);
    EXPECT_EQ(Bytes(), SecondState);
    EXPECT_EQ(Bytes("cfg.xml.old"), FirstState);
}

TEST_F(ConfigSaveTest, AProtectedFileFailsTheSaveAndStays)
{
    Put(FirstState);
    ASSERT_EQ(::chmod(place.Path("cfg.xml").c_str(), 0444), 0);
    ASSERT_EQ(::chmod(place.Path().c_str(), 0777), 0);
    EXPECT_EQ(RunUnprivileged([&] {
                  CXmlConfig mine(nullptr, wxS("cfg.xml"), nullptr, place.Dir(), true);
                  mine.LoadFile();
                  return mine.SaveFile(true) ? 1 : 0;
              }),
              0);
    EXPECT_EQ(Bytes(), FirstState);
    EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml"});
}

TEST_F(ConfigSaveTest, AFileThatIsNotWhollyWrittenDoesNotAppear)
{
    Put(FirstState);
    EXPECT_EQ(RunUnprivileged([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit = {1000, 1000};
                  CXmlConfig mine(nullptr, wxS("cfg.xml"), nullptr, place.Dir(), true);
                  mine.LoadFile();
                  for (int i = 0; i < 200; ++i)
                      mine.GetSectionNode(wxString::Format(wxS("section%d"), i), true);
                  return ::setrlimit(RLIMIT_FSIZE, &limit) == 0 && !mine.SaveFile(true) ? 0 : 1;
              }),
              0);
    EXPECT_EQ(Bytes(), FirstState);
    EXPECT_EQ(Names(), std::set<std::string>{"cfg.xml"});
}

TEST_F(ConfigSaveTest, ADirectoryUnderTheNameFailsTheSave)
{
    Put("x", "cfg.xml/x");
    EXPECT_FALSE(SaveState(1));
    EXPECT_EQ(Bytes("cfg.xml/x"), "x");
}

TEST_F(ConfigSaveTest, ADeviceIsWrittenToAndHasNoBackup)
{
    CXmlConfig null(nullptr, wxS("/dev/null"), nullptr, CDir(), true);
    null.CreateEmtyConfig();
    EXPECT_TRUE(null.SaveFile(true));
    EXPECT_FALSE(std::filesystem::exists("/dev/null.old"));
    CXmlConfig full(nullptr, wxS("/dev/full"), nullptr, CDir(), true);
    full.CreateEmtyConfig();
    EXPECT_FALSE(full.SaveFile(true));
}
