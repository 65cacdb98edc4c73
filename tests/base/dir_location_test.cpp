#include "base/dir.h"
#include "tests/base/base_test_support.h"
#include "tests/support/log_capture.h"

#include <wx/filesys.h>
#include <wx/mstream.h>
#include <wx/wfstream.h>
#include <wx/zipstrm.h>

namespace
{

class DirLocationTest : public TempDirTest
{
protected:
    /// An archive with the given members.
    void PutArchive(const std::string& name, const std::vector<std::pair<wxString, std::string>>& members) const
    {
        wxFFileOutputStream file(Name(name));
        wxZipOutputStream zip(file, -1, wxConvUTF8);
        for (const auto& member : members) {
            ASSERT_TRUE(zip.PutNextEntry(member.first));
            ASSERT_TRUE(zip.WriteAll(member.second.data(), member.second.size()));
        }
        ASSERT_TRUE(zip.Close());
    }

    static wxString Resolved(wxString path) { return CDir::ResolvePath(path) ? path : "(refused " + path + ")"; }
};

/// Plays the network.
class CannedHandler : public wxFileSystemHandler
{
public:
    bool CanOpen(const wxString& location) override { return location.StartsWith("http:"); }
    wxFSFile* OpenFile(wxFileSystem&, const wxString& location) override
    {
        requests.push_back(location);
        if (location.EndsWith("missing"))
            return nullptr;
        static const char content[] = "over\nthe wire";
        return new wxFSFile(new wxMemoryInputStream(content, sizeof(content) - 1), location, "", "", wxDateTime());
    }

    std::vector<wxString> requests;
};

} // namespace

TEST_F(DirLocationTest, GetRootGivesTheNamedRootOrTheDirectoryItself)
{
    const ScopedVariable variable("QX_ROOT_BASETEST", std::nullopt);
    EXPECT_EQ(CDir("BASETEST").GetFullPath(), CDir::GetRoot("BASETEST").GetFullPath());
    ASSERT_TRUE(CDir::SetRoot("BASETEST", Name()));
    EXPECT_EQ(Name(), CDir::GetRoot("BASETEST").GetFullPath());
    EXPECT_EQ("/etc", CDir::GetRoot("/etc").GetFullPath());
    ASSERT_TRUE(CDir::SetRoot("BASETEST", ""));
    EXPECT_EQ(CDir("BASETEST").GetFullPath(), CDir::GetRoot("BASETEST").GetFullPath());
}

TEST_F(DirLocationTest, ARootOfTheEnvironmentHoldsUntilAHostSetsOne)
{
    const ScopedVariable variable("QX_ROOT_BASETEST", Path() + "/./x/");
    EXPECT_EQ(Name("x"), CDir::GetRoot("BASETEST").GetFullPath());
    ASSERT_TRUE(CDir::SetRoot("BASETEST", "/etc"));
    EXPECT_EQ("/etc", CDir::GetRoot("BASETEST").GetFullPath());
    ASSERT_TRUE(CDir::SetRoot("BASETEST", ""));
    EXPECT_EQ(Name("x"), CDir::GetRoot("BASETEST").GetFullPath());
    const ScopedVariable empty("QX_ROOT_BASETEST", "");
    EXPECT_EQ(CDir("BASETEST").GetFullPath(), CDir::GetRoot("BASETEST").GetFullPath());
}

TEST_F(DirLocationTest, SetRootRefusesWhatCannotBeAName)
{
    for (const wxString& name : {wxString(), wxString("a:b"), wxString("a/b"), wxString(L"a\0b", 3), wxString("file"),
                                 wxString("zip"), wxString("http"), wxString("https")})
        EXPECT_FALSE(CDir::SetRoot(name, "/etc")) << name;
    EXPECT_FALSE(CDir::SetRoot("BASETEST", wxString(L"a\0b", 3)));
}

TEST_F(DirLocationTest, ResolvePathGivesTheAbsolutePathMeant)
{
    const ScopedVariable home("HOME", Path("home"));
    const ScopedVariable root("QX_ROOT_BASETEST", Path("root"));
    const wxString current = CDir().GetFullPath();
    EXPECT_EQ(current + "/f", Resolved("f"));
    EXPECT_EQ(current + "/f", Resolved("./x/../f"));
    EXPECT_EQ("/f", Resolved("//f/"));
    EXPECT_EQ(Name("home"), Resolved("~"));
    EXPECT_EQ(Name("home/f"), Resolved("~/f"));
    EXPECT_EQ(current + "/~f", Resolved("~f"));
    EXPECT_EQ(Name("root"), Resolved("BASETEST:"));
    EXPECT_EQ(Name("root/f"), Resolved("BASETEST:f"));
    EXPECT_EQ(Name("root/f"), Resolved("BASETEST:/f"));
    EXPECT_EQ(Name("f"), Resolved("BASETEST:../f"));
    EXPECT_EQ(current + "/a:b", Resolved("./a:b"));
    EXPECT_EQ(current + "/BASETEST", Resolved("BASETEST"));
}

TEST_F(DirLocationTest, ResolvePathWithoutHomeAsksTheSystem)
{
    const ScopedVariable home("HOME", std::nullopt);
    const wxString resolved = Resolved("~/f");
    EXPECT_TRUE(resolved.StartsWith("/") && resolved.EndsWith("/f")) << resolved;
}

TEST_F(DirLocationTest, ResolvePathLeavesWhatItRefusesAsItWas)
{
    for (const wxString& refused :
         {wxString(), wxString(L"a\0b", 3), wxString("NOROOT:f"), wxString(":f"), wxString("http://host/f")}) {
        wxString path = refused;
        EXPECT_FALSE(CDir::ResolvePath(path)) << refused;
        EXPECT_EQ(refused, path);
    }
}

TEST_F(DirLocationTest, ResolvePathKeepsAStepUpBehindALink)
{
    ASSERT_EQ(0, ::mkdir(Path("d").c_str(), 0755));
    ASSERT_EQ(0, ::mkdir(Path("d/e").c_str(), 0755));
    ASSERT_EQ(0, ::symlink("d/e", Path("link").c_str()));
    Put("d/f", "behind the link");
    Put("f", "before the link");
    EXPECT_EQ(Name("link/../f"), Resolved(Name("link/../f")));
    EXPECT_EQ(Name("link/../../f"), Resolved(Name("link/../../f")));
    EXPECT_EQ(Name("link/../f"), Resolved(Name("link/../g/../f")));
    EXPECT_EQ(Name("f"), Resolved(Name("d/../f")));
    EXPECT_EQ("behind the link", Text(CDir(), Resolved(Name("link/../f"))));
}

TEST_F(DirLocationTest, ExtractDirTakesDirectoriesRootsAndAddresses)
{
    ASSERT_EQ(0, ::mkdir(Path("a b").c_str(), 0755));
    Put("a b/f", "x");
    const ScopedVariable root("QX_ROOT_BASETEST", Path());
    const ScopedVariable home("HOME", Path());
    const wxString address = "file://" + Name();
    for (const wxString& location : {Name(), wxString("BASETEST"), wxString("~"), wxString("BASETEST:"), address,
                                     "file:" + Name(), "file://localhost" + Name()}) {
        CDir dir = CDir::ExtractDir(location, "a b", "");
        EXPECT_TRUE(dir.Ok()) << location;
        EXPECT_EQ(Name("a b"), dir.GetFullPath()) << location;
        EXPECT_EQ("x", Text(dir, "f")) << location;
    }
    EXPECT_EQ(Name("a b"), CDir::ExtractDir(address + "/a%20b", "", "").GetFullPath());
    EXPECT_EQ(Name("a%zzb%"), CDir::ExtractDir(address + "/a%zzb%", "", "").GetFullPath());
    EXPECT_EQ(CDir().GetFullPath(), CDir::ExtractDir("", "", "").GetFullPath());
    EXPECT_EQ(Name("a b"), CDir::ExtractDir(Name(), "/a b/", "").GetFullPath());
}

TEST_F(DirLocationTest, ExtractDirOfNothingKnownIsNotOk)
{
    const LogCapture log;
    for (const wxString& location : {wxString("NOROOT:x"), wxString("ftp://host/"), wxString("file://host/etc"),
                                     wxString("file:"), wxString("zip:"), wxString("zip:NOROOT:x"),
                                     wxString("file:/etc%00"), wxString("http://host/"), wxString(L"a\0b", 3)}) {
        CDir dir = CDir::ExtractDir(location, "", "");
        EXPECT_FALSE(dir.Ok()) << location;
        EXPECT_FALSE(dir.OpenFile("passwd", wxFile::read).IsOpened()) << location;
        EXPECT_FALSE(dir.CreateFileW("new", true).IsOpened()) << location;
    }
    EXPECT_FALSE(CDir::ExtractDir("/etc", "../etc", "").Ok());
    EXPECT_FALSE(CDir::ExtractDir("/etc", "x/../../etc", "").Ok());
    EXPECT_FALSE(CDir::ExtractDir("/etc", wxString(L".\0", 2), "").Ok());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(DirLocationTest, ExtractDirReadsInTheNamedEncoding)
{
    Put("f", "\xe4\xa4");
    EXPECT_EQ(wxString(L"\xe4\xa4"), Text(CDir::ExtractDir(Name(), "", "ISO-8859-1"), "f"));
    EXPECT_EQ(wxString(L"\xe4\x20ac"), Text(CDir::ExtractDir(Name(), "", "ISO-8859-15"), "f"));
    EXPECT_EQ(wxString(L"\xa4e4"), Text(CDir::ExtractDir(Name(), "", "utf-16le"), "f"));
    EXPECT_EQ(wxString(L"\xe4a4"), Text(CDir::ExtractDir(Name(), "", "UTF-16BE"), "f"));
    EXPECT_EQ(std::nullopt, Text(CDir::ExtractDir(Name(), "", "UTF-8"), "f"));
    EXPECT_EQ(wxString(L"\xe4\xa4"), Text(CDir::ExtractDir(Name(), "", ""), "f"));
    Put("sjis", "\x83\x5c\n\x82\xa0");
    CFile lines = CDir::ExtractDir(Name(), "", "SHIFT_JIS").OpenFile("sjis", wxFile::read);
    EXPECT_EQ(wxString(L"\x30bd"), lines.ReadLine());
    EXPECT_EQ(wxString(L"\x3042"), lines.ReadLine());
    EXPECT_FALSE(lines.Error());
}

TEST_F(DirLocationTest, ExtractDirWithAnUnknownEncodingIsNotOk)
{
    const LogCapture log;
    EXPECT_FALSE(CDir::ExtractDir(Name(), "", "no-such-encoding").Ok());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(DirLocationTest, SetAutoFileCodeGoesBeforeANamedEncodingThatWasThere)
{
    Put("f", "\xc3\xa9");
    CDir dir = CDir::ExtractDir(Name(), "", "ISO-8859-1");
    dir.SetAutoFileCode(CDir::codeUtf8);
    EXPECT_EQ(wxString(wxUniChar(0xe9)), Text(dir, "f"));
}

TEST_F(DirLocationTest, ExtractDirReadsTheInsideOfAnArchive)
{
    PutArchive("a.zip", {{"top.txt", "top"}, {"d/inner.txt", "in\nner"}, {wxString(L"d/\xe9"), "\xc3\xa9"}});
    const LogCapture log;
    CDir dir = CDir::ExtractDir("zip:" + Name("a.zip"), "d", "");
    EXPECT_TRUE(dir.Ok());
    EXPECT_EQ("zip:" + Name("a.zip") + "#d", dir.GetFullPath());
    EXPECT_EQ("in\nner", Text(dir, "inner.txt"));
    EXPECT_EQ("in\nner", Text(dir, "./x/../inner.txt"));
    EXPECT_EQ("top", Text(dir, "../top.txt"));
    EXPECT_EQ(wxString(wxUniChar(0xe9)), Text(dir, wxString(wxUniChar(0xe9))));
    CFile lines = dir.OpenFile("inner.txt", wxFile::read);
    EXPECT_EQ("in", lines.ReadLine());
    EXPECT_EQ("ner", lines.ReadLine());
    EXPECT_TRUE(lines.Eof());
    EXPECT_TRUE(lines.Close());
    EXPECT_EQ("top", Text(CDir::ExtractDir("zip:" + Name("a.zip"), "", ""), "top.txt"));
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(DirLocationTest, AnArchiveLetsNothingOutAndNothingIn)
{
    PutArchive("a.zip", {{"f", "x"}});
    Put("outside", "x");
    CDir dir = CDir::ExtractDir("zip:" + Name("a.zip"), "", "");
    EXPECT_FALSE(dir.OpenFile("../outside", wxFile::read).IsOpened());
    EXPECT_FALSE(dir.OpenFile(Name("outside"), wxFile::read).IsOpened());
    EXPECT_FALSE(dir.OpenFile("missing", wxFile::read).IsOpened());
    EXPECT_FALSE(dir.OpenFile("", wxFile::read).IsOpened());
    EXPECT_FALSE(dir.OpenFile("f", wxFile::write).IsOpened());
    EXPECT_FALSE(dir.CreateFileW("f", true).IsOpened());
    EXPECT_FALSE(dir.DeleteFileW("f"));
    EXPECT_FALSE(dir.RenameFile("f", "g"));
    EXPECT_EQ("x", Text(dir, "/f"));
}

TEST_F(DirLocationTest, WhatIsNoArchiveIsNotOkAndLogsNothing)
{
    Put("text", "this is no archive");
    Put("empty", "");
    ASSERT_EQ(0, ::mkfifo(Path("pipe").c_str(), 0600));
    PutArchive("hollow.zip", {});
    const LogCapture log;
    for (const char* name : {"text", "empty", "missing", "pipe", "."}) {
        CDir dir = CDir::ExtractDir("zip:" + Name(name), "", "");
        EXPECT_FALSE(dir.Ok()) << name;
        EXPECT_FALSE(dir.OpenFile("f", wxFile::read).IsOpened()) << name;
    }
    EXPECT_TRUE(CDir::ExtractDir("zip:" + Name("hollow.zip"), "", "").Ok());
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(DirLocationTest, ADamagedMemberFailsToRead)
{
    std::string content;
    for (int i = 0; i < 50000; ++i)
        content += std::to_string(i * 7919 % 10007);
    PutArchive("a.zip", {{"f", content}});
    const std::string sound = *Bytes("a.zip");
    const LogCapture log;
    for (const size_t damaged : {size_t(100), sound.size() / 4, sound.size() / 2, sound.size() * 3 / 4}) {
        std::string bytes = sound;
        bytes[damaged] = static_cast<char>(bytes[damaged] ^ 0x55);
        Put("a.zip", bytes);
        CFile file = CDir::ExtractDir("zip:" + Name("a.zip"), "", "").OpenFile("f", wxFile::read);
        ASSERT_TRUE(file.IsOpened()) << damaged;
        wxString text = "before";
        EXPECT_FALSE(file.Read(text)) << damaged;
        EXPECT_TRUE(text.empty()) << damaged;
    }
    Put("a.zip", sound);
    EXPECT_EQ(content, Text(CDir::ExtractDir("zip:" + Name("a.zip"), "", ""), "f"));
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(DirLocationTest, TheNetworkIsUsedOnlyWhenAllowed)
{
    auto* const handler = new CannedHandler;
    wxFileSystem::AddHandler(handler);
    EXPECT_FALSE(CDir::ExtractDir("http://host/base", "", "").Ok());
    EXPECT_TRUE(handler->requests.empty());
    CDir::AllowNetwork();
    CDir dir = CDir::ExtractDir("http://host/base/", "d", "");
    EXPECT_TRUE(dir.Ok());
    EXPECT_EQ("http://host/base/d", dir.GetFullPath());
    EXPECT_TRUE(handler->requests.empty());
    CFile file = dir.OpenFile("a b#?.txt", wxFile::read);
    EXPECT_EQ("over", file.ReadLine());
    EXPECT_EQ("the wire", file.ReadLine());
    EXPECT_FALSE(dir.OpenFile("missing", wxFile::read).IsOpened());
    EXPECT_FALSE(dir.OpenFile("../../../x", wxFile::read).IsOpened());
    EXPECT_FALSE(dir.CreateFileW("x", true).IsOpened());
    EXPECT_FALSE(CDir::ExtractDir("https://host", "", "").Ok());
    CDir::AllowNetwork(false);
    EXPECT_FALSE(dir.Ok());
    EXPECT_FALSE(dir.OpenFile("x", wxFile::read).IsOpened());
    const std::vector<wxString> expected = {"http://host/base/d/a%20b%23%3F.txt", "http://host/base/d/missing"};
    EXPECT_EQ(expected, handler->requests);
    delete wxFileSystem::RemoveHandler(handler);
}
