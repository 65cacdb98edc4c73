#include "tests/script/class_fixture.h"

#include <cmath>
#include <limits>

namespace
{

constexpr int AboveEvent = 5001;
constexpr int BelowEvent = 5002;
constexpr int NamedEvent = 5003;

/// Sends a link's events on to the test.
class Counter : public wxEvtHandler
{
public:
    bool ProcessEvent(wxEvent&) override
    {
        ++events;
        return true;
    }
    int events = 0;
};

class LinkEventTest : public ClassTest
{
protected:
    // Tables look names up when they are first used.
    static void SetUpTestSuite() { CJScriptLinkClass::NameEvent("named", NamedEvent); }

    Table& above = Make("Above", &CJScriptLink::ms_JSClass,
                        {JSMapEntry(AboveEvent, "OnAbove"), JSMapEntry(L"named", "OnNamed"),
                         JSMapEntry(L"unknown", "OnUnknown"), JSMapEntry(BelowEvent, "OnHidden")});
    Table& below = Make("Below", &above.cls, {JSMapEntry(BelowEvent, "OnBelow")});
    Part& part = Child("part", below.cls);

    bool Send(int type)
    {
        wxThreadEvent event(type);
        return part.GetJSLink()->ProcessEvent(event);
    }
};

TEST_F(LinkEventTest, AnEventCallsTheFunctionThatTheTablesNameForIt)
{
    Show("var seen = []; ['OnAbove', 'OnBelow', 'OnNamed', 'OnHidden', 'OnUnknown'].forEach(function (name) {"
         "part[name] = function () { seen.push(name, this === part, arguments.length); }; })");
    EXPECT_TRUE(Send(AboveEvent));
    EXPECT_TRUE(Send(BelowEvent));
    EXPECT_TRUE(Send(NamedEvent));
    EXPECT_FALSE(Send(5999));
    EXPECT_EQ(Show("seen.join()"), "OnAbove,true,0,OnBelow,true,0,OnNamed,true,0");
}

TEST_F(LinkEventTest, AnEventThatNoFunctionHandlesGoesOn)
{
    Counter next;
    part.GetJSLink()->SetNextHandler(&next);
    EXPECT_TRUE(Send(AboveEvent));
    EXPECT_EQ(next.events, 1);
    Show("part.OnAbove = function () { return false; }");
    EXPECT_TRUE(Send(AboveEvent));
    EXPECT_EQ(next.events, 2);
    Show("part.OnAbove = function () { return true; }");
    EXPECT_TRUE(Send(AboveEvent));
    EXPECT_EQ(next.events, 2);
    part.GetJSLink()->SetNextHandler(nullptr);
}

TEST_F(LinkEventTest, AFunctionThatFailsIsReportedAndDoesNotHandleTheEvent)
{
    Show("part.OnAbove = function () { throw new Error('no'); }");
    EXPECT_FALSE(Send(AboveEvent));
    EXPECT_EQ(Reports().size(), 1u);
    Show("part.OnAbove = 'no function'");
    EXPECT_FALSE(Send(AboveEvent));
}

TEST_F(LinkEventTest, AnObjectWithoutAScriptObjectHandlesNoEvent)
{
    Part loose(below.cls);
    wxThreadEvent event(AboveEvent);
    EXPECT_FALSE(loose.GetJSLink()->ProcessEvent(event));
}

// Init scripts.

class LinkInitScriptTest : public ClassTest
{
protected:
    static std::vector<JSMapEntry> Rows()
    {
        wxString anyText;
        double anyDouble = 0;
        bool anyFlag = false;
        wxArrayInt anyNumbers;
        wxArrayString anyTexts;
        wxObject* anyPointer = nullptr;
        return {JSMapEntry("real", PositionIn(&Part::m_double), anyDouble),
                JSMapEntry("raw", PositionIn(&Part::m_raw), anyPointer),
                JSMapEntry("text", PositionIn(&Part::m_text), anyText),
                JSMapEntry("flag", PositionIn(&Part::m_flag), anyFlag),
                JSMapEntry("MAX", 5),
                JSMapEntry("numbers", PositionIn(&Part::m_numbers), anyNumbers),
                JSMapEntry("texts", PositionIn(&Part::m_texts), anyTexts)};
    }

    Table& above = Make("Above", &CJScriptLink::ms_JSClass, NumberRows(1));
    Table& below = Make("Below", &above.cls, Rows());
    Part& part = Child("part", below.cls);
};

TEST_F(LinkInitScriptTest, TheParentClasssFieldsComeFirstAndOnlyWritableOnesAreThere)
{
    EXPECT_EQ(part.GetJSLink()->GetInitScript(), "this.p1=3;\nthis.real=1.5;\nthis.text=\"text\";\nthis.flag=false;\n"
                                                 "this.numbers=[];\nthis.texts=[];\n");
}

TEST_F(LinkInitScriptTest, EveryStateComesBack)
{
    const wxString texts[] = {wxString(), wxString(L"a\0\"\\\n\r\u2028\u2029\x7f\u00e9\U0001F600", 11)};
    const double reals[] = {0.1,
                            -0.0,
                            1e300,
                            5e-324,
                            std::numeric_limits<double>::infinity(),
                            -std::numeric_limits<double>::infinity(),
                            std::numeric_limits<double>::quiet_NaN()};
    Part& other = Child("other", below.cls);
    for (const double real : reals)
        for (const wxString& text : texts) {
            part.m_double = real;
            part.m_text = text;
            part.m_flag = true;
            part.m_number = std::numeric_limits<int>::min();
            part.m_numbers.Add(-1);
            part.m_texts.Add(text);
            ASSERT_TRUE(script.Evaluate(part.GetJSLink()->GetInitScript(), other.GetJSLink()));
            EXPECT_EQ(other.m_text, text);
            EXPECT_EQ(std::isnan(other.m_double), std::isnan(real));
            if (!std::isnan(real)) {
                EXPECT_EQ(other.m_double, real);
                EXPECT_EQ(std::signbit(other.m_double), std::signbit(real));
            }
            EXPECT_TRUE(other.m_flag);
            EXPECT_EQ(other.m_number, part.m_number);
            EXPECT_EQ(other.m_numbers.size(), part.m_numbers.size());
            EXPECT_EQ(other.m_texts, part.m_texts);
        }
}

TEST_F(LinkInitScriptTest, TheScriptIsWrittenToABufferWhenItFits)
{
    const wxString expected = part.GetJSLink()->GetInitScript();
    const int needed = static_cast<int>(expected.length()) + 1;
    std::vector<wchar_t> buffer(static_cast<std::size_t>(2 * needed), L'?');
    wchar_t* at = buffer.data();
    int room = needed - 1;
    EXPECT_FALSE(part.GetJSLink()->GetInitScript_Inplace(at, room));
    EXPECT_EQ(at, buffer.data());
    EXPECT_EQ(room, needed - 1);
    EXPECT_EQ(buffer[0], L'?');
    room = needed;
    EXPECT_TRUE(part.GetJSLink()->GetInitScript_Inplace(at, room));
    EXPECT_EQ(at, buffer.data() + needed);
    EXPECT_EQ(room, 0);
    EXPECT_EQ(wxString(buffer.data()), expected);
    EXPECT_EQ(*at, L'?');
}

// Names.

TEST_F(LinkInitScriptTest, AnUnnamedGlobalDoesNotCountInTheDottedName)
{
    EXPECT_EQ(part.GetJSLink()->GetCompleteName(), "part");
    EXPECT_EQ(Global()->GetCompleteName(), "");
}

TEST_F(LinkInitScriptTest, AnObjectWithoutANameIsNamedByItsAddress)
{
    Part loose(below.cls);
    ASSERT_TRUE(script.CreateChild(loose.GetJSLink(), part.GetJSLink(), "", false, false));
    const wxString name = wxString::Format("P%p", static_cast<void*>(&loose));
    EXPECT_EQ(loose.GetJSLink()->GetName(), name);
    EXPECT_EQ(loose.GetJSLink()->GetCompleteName(), "part." + name);
    EXPECT_EQ(script.GetChild(part.GetJSLink(), name), loose.GetJSLink());
    EXPECT_EQ(loose.GetJSLink()->GetParent(), part.GetJSLink());
}

TEST_F(LinkInitScriptTest, WithoutAParentNothingIsCreated)
{
    Part loose(below.cls);
    EXPECT_FALSE(loose.GetJSLink()->CreateObject(Context(), nullptr, "loose", false, false));
    EXPECT_FALSE(loose.GetJSLink()->IsCreated());
    Part parent(below.cls);
    EXPECT_FALSE(loose.GetJSLink()->CreateObject(Context(), parent.GetJSLink(), "loose", false, false));
    EXPECT_EQ(loose.GetJSLink()->GetContext(), nullptr);
}

TEST_F(LinkInitScriptTest, AFurtherNameShowsTheSameObject)
{
    ASSERT_TRUE(script.CreateChild(part.GetJSLink(), Global(), "second", false, false));
    EXPECT_EQ(Show("second === part"), "true");
    EXPECT_EQ(part.GetJSLink()->GetName(), "part");
    qxjsMinimal world;
    CJScript other(nullptr);
    ASSERT_TRUE(other.SetGlobal(world.GetJSLink(), ""));
    EXPECT_FALSE(other.CreateChild(part.GetJSLink(), world.GetJSLink(), "part", false, false));
}

} // namespace
