#pragma once

#include "engine/jsapi.h"
#include "script/script.h"
#include "script/script_link.h"
#include "script/script_minimal.h"
#include "tests/support/log_capture.h"
#include "tests/support/row_name.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

/// Levels of the log that the bridge uses beside those of wxWidgets.
constexpr wxLogLevel NoticeLevel = 102;
constexpr wxLogLevel ScriptErrorLevel = 103;

/// What a native function of a test does.
using Native = std::function<JSBool(JSContext* cx, uintN argc, jsval* argv, jsval* rval)>;

/// Makes a native function a property of `object` (null: of the context's global object). At most eight a test;
/// forgotten by ForgetNatives.
void DefineNative(JSContext* cx, JSObject* object, const char* name, Native native);
void ForgetNatives();

/// A scriptable object that notes its end.
class Mortal : public qxjsMinimal
{
public:
    Mortal(std::vector<std::string>& deaths, std::string name) : m_deaths(deaths), m_name(std::move(name)) {}
    ~Mortal() override { m_deaths.push_back(m_name); }

    CJScriptLink* Link() { return GetJSLink(); }

private:
    std::vector<std::string>& m_deaths;
    std::string m_name;
};

/// Fails the test when script objects of native ones are left at its end.
struct NoHostObjectsLeft
{
    ~NoHostObjectsLeft() { EXPECT_EQ(JS_CountHostObjects(), 0u) << "script objects outlived their contexts"; }
};

/// How many host objects a context with an empty global object has: that object, and the prototypes of the classes.
inline std::size_t FreshObjects()
{
    const std::size_t before = JS_CountHostObjects();
    qxjsMinimal global;
    CJScript script(nullptr);
    script.SetGlobal(global.GetJSLink(), wxString());
    return JS_CountHostObjects() - before;
}

/// The value of a text as text; "(failed)" when it does not evaluate.
wxString Show(CJScript& script, const wxString& text);

/// Contexts that a test makes itself, and what they log.
class ScriptContextsTest : public ::testing::Test
{
protected:
    NoHostObjectsLeft check;
    LogCapture log;
};

/// A script context with an empty global object, and what it logs.
class ScriptTest : public ::testing::Test
{
protected:
    ScriptTest() { EXPECT_TRUE(script.SetGlobal(Global(), wxString())); }
    ~ScriptTest() override { ForgetNatives(); }

    CJScriptLink* Global() { return global.GetJSLink(); }
    JSContext* Context() { return script.GetContext(); }
    void Define(const char* name, Native native) { DefineNative(Context(), nullptr, name, std::move(native)); }

    /// The value of a text that must evaluate.
    jsval Value(const wxString& text);
    wxString Show(const wxString& text) { return ::Show(script, text); }

    /// The script errors logged so far, in order.
    std::vector<wxString> Reports() const { return log.Texts(ScriptErrorLevel); }

    NoHostObjectsLeft check;
    LogCapture log;
    qxjsMinimal global;
    CJScript script{nullptr};
};

using Texts = std::vector<wxString>;

inline void PrintTo(const wxString& text, std::ostream* out)
{
    *out << '"';
    for (const wchar_t character : text.ToStdWstring())
        if (character >= L' ' && character < 0x7f)
            *out << static_cast<char>(character);
        else
            *out << "\\x{" << std::hex << static_cast<unsigned long>(character) << std::dec << '}';
    *out << '"';
}
