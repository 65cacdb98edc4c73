#include "script/script.h"
#include "script/script_minimal.h"
#include "tests/support/lamp.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>
#include <wx/event.h>

#include <memory>

namespace
{

class ScriptClassTest : public testing::Test
{
protected:
    void SetUp() override
    {
        CJScriptLinkClass::RegisterJSClass(&Lamp::ms_JSClass);
        ASSERT_TRUE(m_script.SetGlobal(m_global.GetJSLink(), wxS("Global")));
    }

    wxString Text(const wxString& script)
    {
        wxString text;
        EXPECT_TRUE(m_script.Evaluate(script, nullptr, text)) << script.utf8_string();
        return text;
    }

    wxString Thrown(const wxString& script)
    {
        return Text(wxS("try { ") + script + wxS("; 'nothing' } catch (e) { e.message }"));
    }

    qxjsMinimal m_global;
    CJScript m_script{nullptr};
};

} // namespace

TEST_F(ScriptClassTest, PropertiesReadAndWriteTheFieldsOfAHostsObject)
{
    Lamp lamp;
    lamp.m_steps.Add(3);
    ASSERT_TRUE(m_script.CreateChild(lamp.GetJSLink(), m_global.GetJSLink(), wxS("lamp"), false, false));
    EXPECT_EQ(Text(wxS("[lamp.level, lamp.voltage, lamp.name, lamp.on, lamp.steps, lamp.next].join('|')")),
              wxS("1|1.5|lamp|false|3|"));
    EXPECT_EQ(Text(wxS("lamp.level = 7.9; lamp.voltage = '2.5'; lamp.name = 12; lamp.on = 'x';"
                       "lamp.steps = [1, 2.5]; lamp.labels = ['a', 5]; lamp.labels.length")),
              wxS("2"));
    EXPECT_EQ(lamp.m_level, 7);
    EXPECT_EQ(lamp.m_voltage, 2.5);
    EXPECT_EQ(lamp.m_name, wxS("12"));
    EXPECT_TRUE(lamp.m_on);
    ASSERT_EQ(lamp.m_steps.size(), 2U);
    EXPECT_EQ(lamp.m_steps[1], 2);
    EXPECT_EQ(lamp.m_labels[1], wxS("5"));
}

TEST_F(ScriptClassTest, ConstantsAndMethodsAndBuiltInsAreThere)
{
    Lamp lamp;
    ASSERT_TRUE(m_script.CreateChild(lamp.GetJSLink(), m_global.GetJSLink(), wxS("lamp"), false, false));
    EXPECT_EQ(Text(wxS("lamp.MAX + '|' + lamp.Brighten(4) + '|' + lamp.Describe('a ') + '|' + lamp.Twice(21) + '|' +"
                       "lamp.Off() + '|' + lamp.level + '|' + lamp.StrToUpper('up')")),
              wxS("100|5|a lamp|42|undefined|0|UP"));
    EXPECT_EQ(Text(wxS("FormatString('%2-%1-%3', 'a', 'b')")), wxS("b-a-%3"));
}

TEST_F(ScriptClassTest, ScriptMakesObjectsThatItOwns)
{
    EXPECT_EQ(Text(wxS("var made = new Lamp(9); made.level + '|' + new Lamp().level + '|' + (made instanceof Lamp)")),
              wxS("9|1|true"));
    EXPECT_EQ(Lamp::ms_alive, 2);
    Text(wxS("made = null"));
    JS_GC(m_script.GetContext());
    EXPECT_EQ(Lamp::ms_alive, 0);
}

TEST_F(ScriptClassTest, AMillionObjectsComeAndGo)
{
    Text(wxS("(function () { for (var i = 0; i < 1000000; ++i) new Lamp(i); })()"));
    JS_GC(m_script.GetContext());
    EXPECT_EQ(Lamp::ms_alive, 0);
}

TEST_F(ScriptClassTest, TheMessagesOfWrongCallsNameFunctionAndArgument)
{
    Text(wxS("var made = new Lamp()"));
    EXPECT_EQ(Thrown(wxS("made.Brighten()")), wxS("Bad argument count for function 'Brighten' (0 instead of 1)"));
    EXPECT_EQ(Thrown(wxS("made.Brighten(1, 2)")), wxS("Bad argument count for function 'Brighten' (2 instead of 1)"));
    EXPECT_EQ(Thrown(wxS("made.Brighten({valueOf: function () { throw 1; }})")),
              wxS("Argument 1: can not convert to int"));
    EXPECT_EQ(Thrown(wxS("made.SetNext(5)")), wxS("Argument 1: can not convert to pCJScriptLinkRoot"));
    EXPECT_EQ(Thrown(wxS("new Lamp(1, 2, 3)")), wxS("Bad argument count for constructor 'Lamp' (3)"));
    EXPECT_EQ(Thrown(wxS("made.Brighten.call(new TextFile(), 1)")), wxS("Object is not of class 'Lamp'"));
}

TEST_F(ScriptClassTest, ObjectsPointToEachOther)
{
    EXPECT_EQ(Text(wxS("var a = new Lamp(1), b = new Lamp(2); a.SetNext(b); a.next.level + '|' + (a.GetNext() === b) +"
                       "'|' + (b.next === null)")),
              wxS("2|true|true"));
}

TEST_F(ScriptClassTest, OnDestroyFunctionsRunWhenTheNativeObjectGoes)
{
    auto lamp = std::make_unique<Lamp>();
    ASSERT_TRUE(m_script.CreateChild(lamp->GetJSLink(), m_global.GetJSLink(), wxS("lamp"), false, false));
    Text(wxS("var log = []; var kept = lamp; lamp.CallOnDestroy(function () { log.push(this.level); })"));
    lamp.reset();
    EXPECT_EQ(Text(wxS("log.join() + '|' + ('lamp' in Global) + '|' + (typeof kept)")), wxS("1|false|object"));
}

TEST_F(ScriptClassTest, AnEventCallsTheFunctionThatTheTableNames)
{
    Lamp lamp;
    ASSERT_TRUE(m_script.CreateChild(lamp.GetJSLink(), m_global.GetJSLink(), wxS("lamp"), false, false));
    wxThreadEvent event(Lamp::EventType);
    EXPECT_FALSE(lamp.GetJSLink()->ProcessEvent(event));
    Text(wxS("var seen = 0; lamp.OnSwitch = function () { ++seen; return seen != 2; }"));
    EXPECT_TRUE(lamp.GetJSLink()->ProcessEvent(event));
    EXPECT_FALSE(lamp.GetJSLink()->ProcessEvent(event));
    EXPECT_EQ(Text(wxS("seen")), wxS("2"));
}

TEST_F(ScriptClassTest, TheInitScriptBringsAnotherObjectToTheSameState)
{
    Lamp lamp(5);
    lamp.m_name = wxS("a\"b\n");
    lamp.m_steps.Add(1);
    lamp.m_labels.Add(wxS("x"));
    ASSERT_TRUE(m_script.CreateChild(lamp.GetJSLink(), m_global.GetJSLink(), wxS("lamp"), false, false));
    EXPECT_EQ(lamp.GetJSLink()->GetInitScript(),
              wxS("this.level=5;\nthis.voltage=1.5;\nthis.name=\"a\\u0022b\\u000A\";\nthis.on=false;\n"
                  "this.steps=[1];\nthis.labels=[\"x\"];\n"));
    Lamp other;
    ASSERT_TRUE(m_script.CreateChild(other.GetJSLink(), m_global.GetJSLink(), wxS("other"), false, false));
    ASSERT_TRUE(m_script.Evaluate(lamp.GetJSLink()->GetInitScript(), other.GetJSLink()));
    EXPECT_EQ(other.m_name, lamp.m_name);
    EXPECT_EQ(other.m_level, 5);
}

TEST_F(ScriptClassTest, TheCompleteNameIsThePathFromTheGlobalObject)
{
    Lamp outer;
    Lamp inner;
    ASSERT_TRUE(m_script.CreateChild(outer.GetJSLink(), m_global.GetJSLink(), wxS("outer"), false, false));
    ASSERT_TRUE(m_script.CreateChild(inner.GetJSLink(), outer.GetJSLink(), wxS("inner"), false, false));
    EXPECT_EQ(inner.GetJSLink()->GetCompleteName(), wxS("Global.outer.inner"));
    EXPECT_EQ(m_script.GetChild(outer.GetJSLink(), wxS("inner")), inner.GetJSLink());
}
