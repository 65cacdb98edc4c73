#include <thread>

#include "engine_fixture.h"
#include "tests/support/row_name.h"

// Whichever way script comes to its first promise, the jobs run when the outermost call ends.
namespace
{

constexpr JSClass kGlobal = {"G", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};

bool Evaluate(JSContext* cx, const std::string& text, jsval* v)
{
    const std::wstring wide(text.begin(), text.end());
    return JS_EvaluateWide(cx, nullptr, wide.data(), wide.size(), "local", 0, v) == JS_TRUE;
}

// What `done` is after the text, on a thread whose engine has run nothing else.
std::string ShowDone(const std::string& text)
{
    std::string shown = "failed";
    std::thread thread([&] {
        JSRuntime* rt = JS_Init(1 << 24);
        JSContext* cx = JS_NewContext(rt, 8192);
        JS_SetGlobalObject(cx, JS_NewGlobal(cx, &kGlobal));
        jsval v = JSVAL_VOID;
        if (Evaluate(cx, "var done = 'no'", &v) && Evaluate(cx, text, &v) && Evaluate(cx, "done", &v))
            shown = JS_StringToUtf8(cx, JSVAL_TO_STRING(v));
        JS_DestroyContext(cx);
        JS_Finish(rt);
    });
    thread.join();
    return shown;
}

struct Way
{
    const char* name;
    const char* text;
};

class EngineJobs : public ::testing::TestWithParam<Way>
{};

TEST_P(EngineJobs, RunAtTheEndOfTheCall)
{
    EXPECT_EQ(ShowDone(GetParam().text), "yes");
}

constexpr Way kWays[] = {
    {"Promise", "Promise.resolve().then(() => done = 'yes'); 0"},
    {"PromiseByOtherName", "this['Pro' + 'mise'].resolve().then(() => done = 'yes'); 0"},
    {"PromiseAmongAllNames",
     "for (var name of Object.getOwnPropertyNames(this)) if (name.length == 7 && name[1] == 'r') "
     "this[name].resolve && this[name].resolve().then(() => done = 'yes'); 0"},
    {"AsyncFunction", "(async function () { await 0; done = 'yes' })(); 0"},
    {"AsyncMethod", "({async m() { await 0; done = 'yes' }}).m(); 0"},
    {"AsyncGenerator", "(async function* () { yield 1 })().next().then(() => done = 'yes'); 0"},
    {"Eval", "eval('(asy' + 'nc function () { await 0; done = \"yes\" })')(); 0"},
    {"IndirectEval", "(0, eval)('(asy' + 'nc function () { await 0; done = \"yes\" })')(); 0"},
    {"FunctionConstructor",
     "(function () {}).constructor('return (asy' + 'nc function () { await 0; done = \"yes\" })')"
     "()(); 0"},
    {"Import", "import('nothing').catch(() => done = 'yes'); 0"},
    {"WebAssembly", "WebAssembly.compile(new Uint8Array([0, 97, 115, 109, 1, 0, 0, 0])).then(() => done = 'yes'); 0"}};

INSTANTIATE_TEST_SUITE_P(Ways, EngineJobs, ::testing::ValuesIn(kWays), NameOfRow<Way>);

} // namespace
