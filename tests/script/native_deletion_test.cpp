#include "tests/script/class_fixture.h"

#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/init.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <thread>

namespace
{

/// A class that counts its objects, each of which takes 10,000 bytes as far as the collector knows.
class Piece : public wxObject
{
public:
    Piece()
    {
        ms_mostAlive = std::max(ms_mostAlive, ++ms_alive);
        m_link.Link(this, &ms_JSClass);
    }
    ~Piece() override
    {
        --ms_alive;
        if (ms_tellsItsEnd)
            std::fputs("a piece is gone\n", stderr);
    }

    void Announce() { m_link.AnnounceMemory(10000); }
    CJScriptLink* GetJSLink() { return &m_link; }

    CJScriptLink m_link;

    static inline int ms_alive = 0;
    static inline int ms_mostAlive = 0;
    static inline bool ms_tellsItsEnd = false;
    static inline JSMapEntry m_JSMapEntries[] = {JSConstructor<Piece>(), JSMethod<&Piece::Announce>("Announce"),
                                                 JSMapEntry()};
    static inline const JSMap m_JSMap{"Piece", &CJScriptLink::ms_JSClass, m_JSMapEntries};
    static inline CJScriptLinkClass ms_JSClass{&m_JSMap};
};

/// While it lives, the application dispatches events.
class Running
{
public:
    Running() : m_activator(&m_loop) {}
    /// What the application does between events.
    static void BeIdle() { wxTheApp->ProcessIdle(); }

private:
    wxEventLoop m_loop;
    wxEventLoopActivator m_activator;
};

class NativeDeletionTest : public testing::Test
{
protected:
    NativeDeletionTest()
    {
        Piece::ms_mostAlive = 0;
        CJScriptLinkClass::RegisterJSClass(&Piece::ms_JSClass);
        script.emplace(nullptr);
        EXPECT_TRUE(script->SetGlobal(global.GetJSLink(), wxString()));
    }
    ~NativeDeletionTest() override
    {
        script.reset();
        Running::BeIdle();
        CJScriptLinkClass::UnregisterJSClass(&Piece::ms_JSClass);
        EXPECT_EQ(Piece::ms_alive, 0);
    }

    wxString Show(const wxString& text)
    {
        wxString value;
        return script->Evaluate(text, nullptr, value) ? value : wxString("(failed)");
    }
    void Collect() { JS_GC(script->GetContext()); }
    /// A native object whose script object is dead.
    Piece* DeadPiece()
    {
        auto* const piece = new Piece;
        EXPECT_TRUE(script->CreateChildDynamic(piece->GetJSLink()));
        Collect();
        return piece;
    }

    NoHostObjectsLeft check;
    LogCapture log;
    qxjsMinimal global;
    std::optional<CJScript> script;
};

TEST_F(NativeDeletionTest, WithoutAnEventLoopAnObjectGoesWithTheCollection)
{
    DeadPiece();
    EXPECT_EQ(Piece::ms_alive, 0);
}

TEST_F(NativeDeletionTest, WithAnEventLoopAnObjectGoesWhenTheApplicationIsIdle)
{
    const Running application;
    Piece* const piece = DeadPiece();
    EXPECT_EQ(Piece::ms_alive, 1);
    EXPECT_FALSE(piece->GetJSLink()->IsCreated());
    EXPECT_EQ(piece->GetJSLink()->GetContext(), nullptr);
    EXPECT_EQ(Show("1"), "1");
    EXPECT_EQ(Piece::ms_alive, 1);
    Running::BeIdle();
    EXPECT_EQ(Piece::ms_alive, 0);
}

TEST_F(NativeDeletionTest, AllObjectsThatWaitAreOneForTheApplication)
{
    const Running application;
    Show("for (var i = 0; i < 1000; ++i) new Piece()");
    Collect();
    EXPECT_EQ(Piece::ms_alive, 1000);
    EXPECT_EQ(wxPendingDelete.GetCount(), 1u);
    Running::BeIdle();
    EXPECT_EQ(Piece::ms_alive, 0);
    EXPECT_EQ(wxPendingDelete.GetCount(), 0u);
}

TEST_F(NativeDeletionTest, ObjectsThatDieLaterWaitForTheNextTime)
{
    const Running application;
    for (int round = 0; round < 3; ++round) {
        DeadPiece();
        EXPECT_EQ(Piece::ms_alive, 1);
        Running::BeIdle();
        EXPECT_EQ(Piece::ms_alive, 0);
    }
}

TEST_F(NativeDeletionTest, AnObjectThatWaitsMayBeDeletedBefore)
{
    const Running application;
    DeadPiece();
    Piece* const second = DeadPiece();
    DeadPiece();
    delete second;
    EXPECT_EQ(Piece::ms_alive, 2);
    Running::BeIdle();
    EXPECT_EQ(Piece::ms_alive, 0);
}

TEST_F(NativeDeletionTest, OnDestroyFunctionsAreCalledWhenTheApplicationIsIdleAndMayDropOthers)
{
    const Running application;
    Show("var ended = [], other = new Piece(); (function () {"
         " new Piece().CallOnDestroy(function () { ended.push('first'); other.CallOnDestroy(function () {"
         " ended.push('second'); }); other = null; }); })()");
    Collect();
    EXPECT_EQ(Show("ended.join()"), "");
    Running::BeIdle();
    EXPECT_EQ(Show("ended.join()"), "first");
    Collect();
    Running::BeIdle();
    EXPECT_EQ(Show("ended.join()"), "first,second");
}

TEST_F(NativeDeletionTest, AContextMayEndBeforeTheApplicationIsIdle)
{
    const Running application;
    Show("var kept = new Piece(); new Piece(); 0");
    Collect();
    script.reset();
    EXPECT_EQ(Piece::ms_alive, 2);
    Running::BeIdle();
    EXPECT_EQ(Piece::ms_alive, 0);
}

TEST_F(NativeDeletionTest, AScriptThatNeverLetsTheApplicationBeIdleKeepsNoMoreThanSixteenMegabytesWaiting)
{
    const Running application;
    EXPECT_EQ(Show("for (var i = 0; i < 20000; ++i) new Piece().Announce(); i"), "20000");
    Collect();
    EXPECT_GT(Piece::ms_alive, 1000);
    EXPECT_LT(Piece::ms_alive, 1700);
    EXPECT_LT(Piece::ms_mostAlive, 10000);
    Running::BeIdle();
    EXPECT_EQ(Piece::ms_alive, 0);
}

TEST_F(NativeDeletionTest, TheNewestObjectWaitsHoweverLargeItIs)
{
    const Running application;
    auto* const large = new Piece;
    ASSERT_TRUE(script->CreateChildDynamic(large->GetJSLink()));
    large->GetJSLink()->AnnounceMemory(100'000'000);
    Collect();
    EXPECT_EQ(Piece::ms_alive, 1);
    DeadPiece();
    EXPECT_EQ(Piece::ms_alive, 1);
    Running::BeIdle();
    EXPECT_EQ(Piece::ms_alive, 0);
}

TEST_F(NativeDeletionTest, ObjectsOfAnotherThreadDoNotWaitForTheApplication)
{
    const Running application;
    std::thread([] {
        qxjsMinimal threadGlobal;
        CJScript threadScript(nullptr);
        EXPECT_TRUE(threadScript.SetGlobal(threadGlobal.GetJSLink(), wxString()));
        EXPECT_TRUE(threadScript.CreateChildDynamic((new Piece)->GetJSLink()));
        JS_GC(threadScript.GetContext());
        EXPECT_EQ(Piece::ms_alive, 0);
    }).join();
}

/// Ends the process by `end` with an object waiting for an application that will not be idle any more.
template <typename End> void EndWithAnObjectWaiting(End end)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    const Running application;
    script.SetGlobal(global.GetJSLink(), wxString());
    script.CreateChildDynamic((new Piece)->GetJSLink());
    JS_GC(script.GetContext());
    Piece::ms_tellsItsEnd = true;
    std::fprintf(stderr, "waiting: %d\n", Piece::ms_alive);
    end();
}

TEST(NativeDeletionDeathTest, WhatWaitsGoesAtTheEndOfWxWidgets)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto end = [] {
        EndWithAnObjectWaiting([] {
            wxUninitialize();
            std::fputs("wxWidgets is gone\n", stderr);
            std::_Exit(0);
        });
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "waiting: 1\na piece is gone\nwxWidgets is gone");
}

TEST(NativeDeletionDeathTest, WhatWaitsGoesAtTheEndOfAProgramThatExitsFromInsideItsApplication)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto end = [] { EndWithAnObjectWaiting([] { std::exit(0); }); };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "waiting: 1\na piece is gone");
}

} // namespace
