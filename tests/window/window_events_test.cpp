#include "script/script.h"
#include "script/script_minimal.h"
#include "script/window_events.h"
#include "tests/support/log_capture.h"
#include "tests/window/scriptable_frame.h"

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/dynlib.h>
#include <wx/evtloop.h>
#include <wx/weakref.h>

#include <memory>

namespace
{

const wxString Desynchronised = wxS("CJScriptLink PopEventHandler de-synchronisation !!!");

/// A scriptable object that is no window.
class Counted : public qxjsMinimal
{
public:
    Counted() { ++ms_alive; }
    ~Counted() override { --ms_alive; }

    static inline int ms_alive = 0;
};

class WindowEventsTest : public testing::Test
{
protected:
    WindowEventsTest()
    {
        ScriptableFrame::NameEvents();
        wxSetAssertHandler(
            [](const wxString& file, int line, const wxString&, const wxString& condition, const wxString& message) {
                ADD_FAILURE() << file << ":" << line << ": " << condition << " " << message;
            });
        EXPECT_TRUE(script->SetGlobal(global.GetJSLink(), wxS("Global")));
        EXPECT_TRUE(script->CreateChild(frame->GetJSLink(), global.GetJSLink(), wxS("frame"), false, false));
    }
    ~WindowEventsTest() override { wxSetDefaultAssertHandler(); }

    wxString Text(const wxString& text)
    {
        wxString value;
        EXPECT_TRUE(script->Evaluate(text, nullptr, value)) << text;
        return value;
    }

    wxCommandEvent Press() const
    {
        wxCommandEvent event(wxEVT_BUTTON, frame->m_button->GetId());
        event.SetEventObject(frame->m_button);
        return event;
    }

    LogCapture log;
    qxjsMinimal global;
    std::unique_ptr<CJScript> script = std::make_unique<CJScript>(nullptr);
    std::unique_ptr<ScriptableFrame> frame = std::make_unique<ScriptableFrame>();
};

} // namespace

TEST(WindowLibraryTest, ALinkedLibraryIsThereBeforeTheFirstWindow)
{
    wxString names;
    const wxDynamicLibraryDetailsArray libraries = wxDynamicLibrary::ListLoaded();
    for (std::size_t i = 0; i < libraries.size(); ++i)
        names << libraries[i].GetName() << wxS(" ");
    EXPECT_NE(names.Find(wxS("libvc_qxparser_window.so")), wxNOT_FOUND) << names;
}

TEST_F(WindowEventsTest, TheLinkOfAWindowIsItsFirstEventHandler)
{
    EXPECT_EQ(frame->GetEventHandler(), frame->GetJSLink());
    EXPECT_EQ(frame->GetJSLink()->GetNextHandler(), frame.get());
}

TEST_F(WindowEventsTest, AButtonCallsTheFunctionThatTheTableNames)
{
    Text(wxS("frame.OnPress = function () { ++this.presses; }"));
    wxCommandEvent event = Press();
    EXPECT_TRUE(frame->m_button->ProcessWindowEvent(event));
    EXPECT_EQ(frame->m_presses, 1);
}

TEST_F(WindowEventsTest, APostedEventArrivesInTheLoop)
{
    Text(wxS("frame.OnPress = function () { ++this.presses; }"));
    wxEventLoop loop;
    const wxEventLoopActivator activate(&loop);
    wxPostEvent(frame->m_button, Press());
    wxPostEvent(frame->GetEventHandler(), Press());
    EXPECT_EQ(frame->m_presses, 0);
    wxTheApp->ProcessPendingEvents();
    EXPECT_EQ(frame->m_presses, 2);
}

TEST_F(WindowEventsTest, WhatScriptDeclinesGoesToTheWindow)
{
    int native = 0;
    frame->Bind(wxEVT_BUTTON, [&](wxCommandEvent&) { ++native; });
    wxCommandEvent event = Press();
    EXPECT_TRUE(frame->m_button->ProcessWindowEvent(event));
    EXPECT_EQ(native, 1) << "no such function";
    Text(wxS("var asked = 0; frame.OnPress = function () { ++asked; return asked == 1; }"));
    EXPECT_TRUE(frame->m_button->ProcessWindowEvent(event));
    EXPECT_EQ(native, 1) << "script took it";
    EXPECT_TRUE(frame->m_button->ProcessWindowEvent(event));
    EXPECT_EQ(native, 2) << "script returned false";
    EXPECT_EQ(Text(wxS("asked")), wxS("2"));
}

TEST_F(WindowEventsTest, EventsUnknownToTheTableGoToTheWindow)
{
    int sizes = 0;
    frame->Bind(wxEVT_SIZE, [&](wxSizeEvent&) { ++sizes; });
    wxSizeEvent size;
    EXPECT_TRUE(frame->ProcessWindowEvent(size));
    EXPECT_EQ(sizes, 1);
    wxCommandEvent menu(wxEVT_MENU);
    EXPECT_FALSE(frame->ProcessWindowEvent(menu));
}

TEST_F(WindowEventsTest, AFailingFunctionIsReportedAndTheEventGoesOn)
{
    int native = 0;
    frame->Bind(wxEVT_BUTTON, [&](wxCommandEvent&) { ++native; });
    Text(wxS("frame.OnPress = function () { throw new Error('broken'); }"));
    wxCommandEvent event = Press();
    EXPECT_TRUE(frame->m_button->ProcessWindowEvent(event));
    EXPECT_EQ(native, 1);
    ASSERT_EQ(log.Texts(103).size(), 1U);
    EXPECT_NE(log.Texts(103)[0].Find(wxS("broken")), wxNOT_FOUND);
}

TEST_F(WindowEventsTest, TheFunctionMayCloseTheWindow)
{
    Text(wxS("frame.OnShut = function () { ++this.presses; return false; }"));
    ScriptableFrame* const closed = frame.release();
    closed->Bind(wxEVT_CLOSE_WINDOW, [closed](wxCloseEvent&) { closed->Destroy(); });
    EXPECT_TRUE(closed->Close());
    EXPECT_EQ(closed->m_presses, 1);
    wxTheApp->ProcessIdle();
    EXPECT_EQ(Text(wxS("'frame' in Global")), wxS("false"));
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(WindowEventsTest, AWindowOfScriptGoesWhenTheApplicationIsIdle)
{
    auto* const owned = new ScriptableFrame;
    const wxWeakRef<wxFrame> alive(owned);
    ASSERT_TRUE(script->CreateChildDynamic(owned->GetJSLink()));
    wxEventLoop loop;
    const wxEventLoopActivator activate(&loop);
    JS_GC(script->GetContext());
    EXPECT_FALSE(owned->GetJSLink()->IsCreated());
    EXPECT_TRUE(wxTheApp->IsScheduledForDestruction(owned));
    ASSERT_TRUE(alive);
    wxTheApp->ProcessIdle();
    EXPECT_FALSE(alive);
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(WindowEventsTest, AWindowOfScriptMayGoBeforeTheApplicationIsIdle)
{
    auto* const owned = new ScriptableFrame;
    ASSERT_TRUE(script->CreateChildDynamic(owned->GetJSLink()));
    wxEventLoop loop;
    const wxEventLoopActivator activate(&loop);
    JS_GC(script->GetContext());
    delete owned;
    EXPECT_FALSE(wxTheApp->IsScheduledForDestruction(owned));
    wxTheApp->ProcessIdle();
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(WindowEventsTest, AnObjectOfScriptGoesWhenTheApplicationIsIdle)
{
    ASSERT_TRUE(script->CreateChildDynamic((new Counted)->GetJSLink()));
    EXPECT_EQ(Counted::ms_alive, 1);
    JS_GC(script->GetContext());
    EXPECT_EQ(Counted::ms_alive, 1);
    wxTheApp->ProcessIdle();
    EXPECT_EQ(Counted::ms_alive, 0);
}

TEST_F(WindowEventsTest, TheWindowMayGoFirst)
{
    Text(wxS("var gone = 0; var kept = frame; frame.CallOnDestroy(function () { ++gone; })"));
    frame.reset();
    EXPECT_EQ(Text(wxS("gone + '|' + ('frame' in Global) + '|' + typeof kept")), wxS("1|false|object"));
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(WindowEventsTest, TheContextMayGoFirst)
{
    Text(wxS("frame.OnPress = function () { ++this.presses; }"));
    int native = 0;
    frame->Bind(wxEVT_BUTTON, [&](wxCommandEvent&) { ++native; });
    script.reset();
    wxCommandEvent event = Press();
    EXPECT_TRUE(frame->m_button->ProcessWindowEvent(event));
    EXPECT_EQ(native, 1);
    EXPECT_EQ(frame->m_presses, 0);
    frame.reset();
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(WindowEventsTest, EventsWaitingForAWindowGoWithIt)
{
    Text(wxS("var calls = 0; frame.OnPress = function () { ++calls; }"));
    wxPostEvent(frame->GetEventHandler(), Press());
    frame.reset();
    wxTheApp->ProcessPendingEvents();
    EXPECT_EQ(Text(wxS("calls")), wxS("0"));
}

TEST_F(WindowEventsTest, AnotherHandlerInTheWayIsReportedAndStays)
{
    wxEvtHandler other;
    ScriptableFrame second;
    second.PushEventHandler(&other);
    second.GetJSLink()->InitEvtHandler(false);
    EXPECT_EQ(log.Errors(), std::vector<wxString>{Desynchronised});
    EXPECT_EQ(second.GetEventHandler(), &other);
    EXPECT_EQ(other.GetNextHandler(), &second);
    EXPECT_EQ(second.PopEventHandler(), &other);
}

TEST_F(WindowEventsTest, ALinkThatIsGoneFromTheHandlersIsReported)
{
    ScriptableFrame second;
    EXPECT_EQ(second.PopEventHandler(), second.GetJSLink());
    second.GetJSLink()->InitEvtHandler(false);
    EXPECT_EQ(log.Errors(), std::vector<wxString>{Desynchronised});
    EXPECT_EQ(second.GetEventHandler(), &second);
}

TEST_F(WindowEventsTest, TheLinkCanBeTakenOffAndPutBack)
{
    frame->GetJSLink()->InitEvtHandler(false);
    frame->GetJSLink()->InitEvtHandler(false);
    EXPECT_EQ(frame->GetEventHandler(), frame.get());
    frame->GetJSLink()->InitEvtHandler(true);
    frame->GetJSLink()->InitEvtHandler(true);
    EXPECT_EQ(frame->GetEventHandler(), frame->GetJSLink());
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(WindowEventsTest, ChildWindowsAndTheirFrameGoTogether)
{
    class ScriptableButton : public wxButton
    {
    public:
        explicit ScriptableButton(wxWindow* parent) : wxButton(parent, wxID_ANY, wxS("Child"))
        {
            m_link.Link(this, &ScriptableFrame::ms_JSClass);
        }
        CJScriptLink m_link;
    };
    auto* const child = new ScriptableButton(frame.get());
    EXPECT_EQ(child->GetEventHandler(), &child->m_link);
    frame.reset();
    EXPECT_TRUE(log.Errors().empty());
}
