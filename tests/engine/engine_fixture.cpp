#include "engine_fixture.h"

#include <cstring>
#include <mutex>

namespace
{

constexpr JSClass kGlobalClass = {"TestGlobal", 0,       nullptr, nullptr, nullptr,
                                  nullptr,      nullptr, nullptr, nullptr, nullptr};

std::mutex g_mutex;
std::vector<std::string> g_misuse;

void NoteMisuse(const char* text)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_misuse.emplace_back(text);
}

} // namespace

std::vector<std::string> TakeMisuse()
{
    std::lock_guard<std::mutex> lock(g_mutex);
    std::vector<std::string> taken;
    taken.swap(g_misuse);
    return taken;
}

void EngineTest::Note(JSContext* cx, const char* message, JSErrorReport* report)
{
    auto* test = static_cast<EngineTest*>(JS_GetContextPrivate(cx));
    Report note{};
    note.message = message;
    note.file = report->filename ? report->filename : "(none)";
    note.line = report->lineno;
    note.flags = report->flags;
    note.uc_message = report->ucmessage;
    note.wide_message = report->widemessage;
    note.source_line = report->linebuf ? report->linebuf : "(none)";
    note.column = report->tokenptr - report->linebuf;
    note.number = report->errorNumber;
    test->reports.push_back(note);
}

JSContext* EngineTest::NewContext()
{
    JSContext* made = JS_NewContext(rt, 8192);
    JS_SetContextPrivate(made, this);
    JS_SetErrorReporter(made, Note);
    JS_SetGlobalObject(made, JS_NewGlobal(made, &kGlobalClass));
    return made;
}

EngineTest::EngineTest() : rt(JS_Init(16777216)), cx(nullptr)
{
    JS_SetMisuseHook(NoteMisuse);
    TakeMisuse();
    cx = NewContext();
}

EngineTest::~EngineTest()
{
    JS_SetStress(false);
    JS_DestroyContext(cx);
    JS_Finish(rt);
    EXPECT_EQ(JS_CountHostObjects(), 0u) << "objects outlived their contexts";
    EXPECT_TRUE(TakeMisuse().empty());
    JS_SetMisuseHook(nullptr);
}

bool EngineTest::Run(const char* text, jsval* rval, JSObject* obj, unsigned line)
{
    const std::u16string units(text, text + std::strlen(text));
    return JS_EvaluateUCScript(cx, obj, units.data(), static_cast<uintN>(units.size()), "local", line, rval) == JS_TRUE;
}

std::string EngineTest::ShowWord(jsval v)
{
    JSString* str = JS_ValueToString(cx, v);
    return str ? JS_StringToUtf8(cx, str) : "!";
}

std::string EngineTest::Show(const char* text, JSObject* obj)
{
    jsval v = JSVAL_VOID;
    if (!Run(text, &v, obj))
        return "!" + (reports.empty() ? std::string() : reports.back().message);
    return ShowWord(v);
}
