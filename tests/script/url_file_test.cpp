#include "script/url_file.h"
#include "script/value_conversion.h"
#include "tests/script/script_fixture.h"
#include "tests/support/temp_directory.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <wx/filesys.h>
#include <wx/mstream.h>
#include <wx/wfstream.h>
#include <wx/zipstrm.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>

namespace
{

class UrlFileTest : public ScriptTest
{
protected:
    UrlFileTest()
    {
        jsval path = wxString_to_jsval(Context(), Folder());
        JS_DefineWideProperty(Context(), Global()->GetJSObject(), L"dir", 3, path, nullptr, nullptr, 0);
        EXPECT_TRUE(script.Evaluate("var u = new URLFile()", nullptr));
    }

    wxString Folder() const { return FromSystemName(temp.Path()); }

    void PutArchive(const std::string& name, const wxString& member, const std::string& bytes) const
    {
        wxFFileOutputStream stream(FromSystemName(temp.Path(name)));
        wxZipOutputStream zip(stream, -1, wxConvUTF8);
        ASSERT_TRUE(zip.PutNextEntry(member));
        ASSERT_TRUE(zip.WriteAll(bytes.data(), bytes.size()));
        ASSERT_TRUE(zip.Close());
    }

    TempDirectory temp;
    CJSURLFile file;
};

TEST_F(UrlFileTest, ScriptIsToldOfWrongCalls)
{
    const auto thrown = [&](const wxString& call) {
        return Show("try { u." + call + "; 'nothing' } catch (e) { e.message }");
    };
    for (const char* name : {"IsOpened", "Close", "ReadLn", "ReadAll"})
        EXPECT_EQ(thrown(wxString(name) + "(1)"),
                  wxString::Format("Bad argument count for function '%s' (1 instead of 0)", name));
    EXPECT_EQ(thrown("Open(dir, 'a.txt', '')"), "Bad argument count for function 'Open' (3 instead of 4)");
    EXPECT_EQ(thrown("Open(dir, 'a.txt', '', '', '')"), "Bad argument count for function 'Open' (5 instead of 4)");
}

TEST_F(UrlFileTest, AClosedFileHasNothing)
{
    file.Close();
    EXPECT_FALSE(file.IsOpened());
    EXPECT_EQ(file.ReadLn() + file.ReadAll(), "");
    temp.Put("a.txt", "one\n");
    ASSERT_TRUE(file.Open(Folder(), "a.txt", "", ""));
    file.Close();
    EXPECT_FALSE(file.IsOpened());
    EXPECT_EQ(file.ReadLn() + file.ReadAll(), "");
}

TEST_F(UrlFileTest, ReadAllGivesTheRest)
{
    temp.Put("a.txt", "one\r\ntwo\nthree");
    ASSERT_TRUE(file.Open(Folder(), "a.txt", "", ""));
    EXPECT_EQ(file.ReadLn(), "one");
    EXPECT_EQ(file.ReadAll(), "two\nthree");
    EXPECT_EQ(file.ReadAll() + file.ReadLn(), "");
    EXPECT_TRUE(file.IsOpened());
}

TEST_F(UrlFileTest, TheThirdArgumentIsAPathBelowTheLocation)
{
    temp.Put("sub/deep/a.txt", "below\n");
    EXPECT_TRUE(file.Open(Folder(), "a.txt", "sub/deep", ""));
    EXPECT_EQ(file.ReadLn(), "below");
    EXPECT_TRUE(file.Open(Folder(), "deep/a.txt", "sub", ""));
    EXPECT_FALSE(file.Open(Folder() + "/sub", "a.txt", "../sub/deep", ""));
    EXPECT_FALSE(file.IsOpened());
}

TEST_F(UrlFileTest, WhatIsMissingIsNotOpened)
{
    temp.Put("a.txt", "one\n");
    ASSERT_TRUE(file.Open(Folder(), "a.txt", "", ""));
    EXPECT_FALSE(file.Open(Folder(), "missing", "", ""));
    EXPECT_FALSE(file.IsOpened());
    EXPECT_EQ(file.ReadLn(), "");
    EXPECT_FALSE(file.Open(Folder() + "/missing", "a.txt", "", ""));
    EXPECT_FALSE(file.Open("NOSUCHROOT:x", "a.txt", "", ""));
    EXPECT_FALSE(file.Open(Folder(), "", "", ""));
    EXPECT_FALSE(file.Open(Folder(), wxString(L"a\0.txt", 6), "", ""));
    temp.Put("folder/x", "");
    EXPECT_FALSE(file.Open(Folder(), "folder", "", ""));
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(UrlFileTest, TheLocationMayBeANamedRoot)
{
    temp.Put("sub/a.txt", "rooted\n");
    ASSERT_TRUE(CDir::SetRoot("URLFILETEST", Folder()));
    EXPECT_TRUE(file.Open("URLFILETEST", "a.txt", "sub", ""));
    EXPECT_EQ(file.ReadLn(), "rooted");
    EXPECT_TRUE(file.Open("URLFILETEST:sub", "a.txt", "", ""));
    ASSERT_TRUE(CDir::SetRoot("URLFILETEST", ""));
    EXPECT_FALSE(file.Open("URLFILETEST", "a.txt", "sub", ""));
}

TEST_F(UrlFileTest, TheLocationMayBeAnAddressOfAFile)
{
    temp.Put("with blank/a.txt", "one\n");
    EXPECT_TRUE(file.Open("file:" + Folder(), "a.txt", "with blank", ""));
    EXPECT_TRUE(file.Open("file://" + Folder() + "/with%20blank", "a.txt", "", ""));
    EXPECT_EQ(file.ReadLn(), "one");
}

TEST_F(UrlFileTest, TheLocationMayBeAnArchive)
{
    PutArchive("a.zip", L"sub/gr\u00fcn.txt", "one\ntwo\n");
    EXPECT_TRUE(file.Open("zip:" + Folder() + "/a.zip", wxString(L"gr\u00fcn.txt"), "sub", ""));
    EXPECT_EQ(file.ReadLn(), "one");
    EXPECT_EQ(file.ReadAll(), "two\n");
    EXPECT_FALSE(file.Open("zip:" + Folder() + "/a.zip", "missing.txt", "sub", ""));
    EXPECT_FALSE(file.Open("zip:" + Folder() + "/missing.zip", "a.txt", "", ""));
}

TEST_F(UrlFileTest, TheFourthArgumentIsTheEncoding)
{
    temp.Put("a.txt", "gr\xc3\xbcn\n");
    ASSERT_TRUE(file.Open(Folder(), "a.txt", "", ""));
    EXPECT_EQ(file.ReadLn(), L"gr\u00fcn");
    ASSERT_TRUE(file.Open(Folder(), "a.txt", "", "iso-8859-1"));
    EXPECT_EQ(file.ReadLn(), L"gr\u00c3\u00bcn");
    ASSERT_TRUE(file.Open(Folder(), "a.txt", "", "UTF-8"));
    EXPECT_EQ(file.ReadAll(), L"gr\u00fcn\n");
    EXPECT_FALSE(file.Open(Folder(), "a.txt", "", "no such encoding"));
}

TEST_F(UrlFileTest, ScriptUsesItLikeTheHost)
{
    temp.Put("sub/a.txt", "one\ntwo\nthree\n");
    EXPECT_EQ(Show("[u.IsOpened(), u.ReadLn(), u.Open(dir, 'a.txt', 'sub', ''), u.IsOpened(), u.ReadLn(), u.ReadAll(),"
                   " u.Close(), u.IsOpened(), u.ReadAll(), u.Open(dir, 'b.txt', '', '')].join('|')"),
              "false||true|true|one|two\nthree\n||false||false");
    EXPECT_EQ(Show("u.StrToUpper('built in') + (u instanceof URLFile)"), "BUILT INtrue");
    EXPECT_EQ(Show("try { u.Open('a') } catch (e) { e.message }"),
              "Bad argument count for function 'Open' (1 instead of 4)");
    EXPECT_EQ(Show("try { u.ReadLn(1) } catch (e) { e.message }"),
              "Bad argument count for function 'ReadLn' (1 instead of 0)");
    EXPECT_EQ(Show("try { u.ReadLn.call(new TextFile()) } catch (e) { e.message }"),
              "Object is not of class 'URLFile'");
}

// The network.

constexpr int PatienceInMilliseconds = 10000;

sockaddr_in Loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

/// What a socket sends, until it holds `end` or the other side is done.
std::string Receive(int socket, const std::string& end)
{
    std::string received;
    char buffer[1024];
    pollfd ready{socket, POLLIN, 0};
    while ((end.empty() || received.find(end) == std::string::npos) && ::poll(&ready, 1, PatienceInMilliseconds) > 0) {
        const ssize_t count = ::recv(socket, buffer, sizeof(buffer), 0);
        if (count <= 0)
            break;
        received.append(buffer, static_cast<std::size_t>(count));
    }
    return received;
}

void Send(int socket, const std::string& bytes)
{
    ASSERT_EQ(::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
}

/// Answers so many HTTP requests on the loopback, and ends; at the latest when nobody asks for a while.
class TinyServer
{
public:
    explicit TinyServer(int requests) : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address = Loopback(0);
        socklen_t size = sizeof(address);
        auto* const raw = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(m_socket, raw, size), 0);
        EXPECT_EQ(::listen(m_socket, requests), 0);
        EXPECT_EQ(::getsockname(m_socket, raw, &size), 0);
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this, requests] {
            for (int i = 0; i < requests && Answer(); ++i) {
            }
        });
    }
    ~TinyServer()
    {
        m_thread.join();
        ::close(m_socket);
    }
    TinyServer(const TinyServer&) = delete;
    TinyServer& operator=(const TinyServer&) = delete;

    std::uint16_t Port() const { return m_port; }

private:
    bool Answer() const
    {
        pollfd ready{m_socket, POLLIN, 0};
        if (::poll(&ready, 1, PatienceInMilliseconds) <= 0)
            return false;
        const int client = ::accept(m_socket, nullptr, nullptr);
        const std::string request = Receive(client, "\r\n\r\n");
        if (request.compare(0, 19, "GET /base/sub/a.txt") == 0)
            Send(client, "HTTP/1.0 200 OK\r\n\r\nover\nthe wire gr\xc3\xbcn\n");
        else
            Send(client, "HTTP/1.0 404 Not Found\r\n\r\nnothing\n");
        ::close(client);
        return true;
    }

    int m_socket;
    std::uint16_t m_port = 0;
    std::thread m_thread;
};

/// A host's transport: fetches http://127.0.0.1:PORT/PATH.
class HttpHandler : public wxFileSystemHandler
{
public:
    bool CanOpen(const wxString& location) override { return location.StartsWith("http:"); }

    wxFSFile* OpenFile(wxFileSystem&, const wxString& location) override
    {
        ++requests;
        wxString path;
        long port = 0;
        location.Mid(wxString("http://127.0.0.1:").length()).BeforeFirst('/', &path).ToLong(&port);
        const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
        const sockaddr_in address = Loopback(static_cast<std::uint16_t>(port));
        std::string response;
        if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
            Send(socket, "GET /" + path.utf8_string() + " HTTP/1.0\r\n\r\n");
            response = Receive(socket, "");
        }
        ::close(socket);
        const std::size_t body = response.find("\r\n\r\n");
        if (response.find(" 200 ") == std::string::npos || body == std::string::npos)
            return nullptr;
        auto content = std::make_unique<wxMemoryOutputStream>();
        content->WriteAll(response.data() + body + 4, response.size() - body - 4);
        return new wxFSFile(new wxMemoryInputStream(*content), location, "", "", wxDateTime());
    }

    int requests = 0;
};

class UrlFileNetworkTest : public UrlFileTest
{
protected:
    UrlFileNetworkTest() { wxFileSystem::AddHandler(handler); }
    ~UrlFileNetworkTest() override
    {
        CDir::AllowNetwork(false);
        delete wxFileSystem::RemoveHandler(handler);
    }

    HttpHandler* const handler = new HttpHandler;
};

TEST_F(UrlFileNetworkTest, NothingIsSentUnlessTheHostAllowsIt)
{
    EXPECT_FALSE(file.Open("http://127.0.0.1:9/base", "a.txt", "sub", ""));
    EXPECT_EQ(Show("u.Open('http://127.0.0.1:9/base', 'a.txt', 'sub', '')"), "false");
    EXPECT_EQ(handler->requests, 0);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(UrlFileNetworkTest, ALocationOnTheNetworkIsReadThroughTheHostsHandler)
{
    CDir::AllowNetwork();
    const TinyServer server(3);
    const wxString location = wxString::Format("http://127.0.0.1:%d/base", server.Port());
    EXPECT_TRUE(file.Open(location, "a.txt", "sub", ""));
    EXPECT_EQ(file.ReadLn(), "over");
    EXPECT_EQ(file.ReadAll(), L"the wire gr\u00fcn\n");
    EXPECT_FALSE(file.Open(location, "missing.txt", "sub", ""));
    EXPECT_FALSE(file.IsOpened());
    EXPECT_EQ(Show("u.Open('" + location + "', 'a.txt', 'sub', '') + u.ReadLn()"), "trueover");
    EXPECT_EQ(handler->requests, 3);
}

} // namespace
