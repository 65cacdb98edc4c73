// What a call across the border between script and native code costs.
//
//   bridge_driver MODE N     runs MODE N times and prints a sum that depends on every run
//
//   call_int    the native method o.add(integer), which returns its argument + 1
//   call_num    the same, the result returned as a double word
//   prop        the native property o.value, which is 3
//   prop_num    the native property o.number, a double word of 3
//   call_str    the native method o.len(string of 20), which takes a copy of the text
//   call_text   the native method o.text(), which returns a fresh string of 20
//   construct   new Peer(), dropped at once; native part of 24 bytes
//   kilo        the same with 1000 bytes that the collector is told of
//   deferred    as construct; the native part is deleted after the collection
//   eval        an evaluation of "x * 3 + <number>" from native code, every text different
//   eval_same   an evaluation of "x * 3 + 1" from native code
//   call_fun    a call of a script function from native code
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <wx/string.h>

#include "engine/jsapi.h"

using namespace qxjs;

namespace
{

struct Peer
{
    explicit Peer(std::size_t more) : bytes(new char[more]), size(more) {}
    ~Peer() { delete[] bytes; }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    int value = 3;
    char* bytes;
    std::size_t size;
};

std::size_t g_bytes = 0; // of the native part of an object, where it matters
bool g_deferred = false;

Peer* PeerOf(JSContext* cx, JSObject* obj)
{
    return static_cast<Peer*>(JS_GetPrivate(cx, obj));
}

bool ToNumber(JSContext* cx, jsval v, double& number)
{
    if (!JSVAL_IS_INT(v))
        return JS_ValueToNumber(cx, v, &number) != JS_FALSE;
    number = JSVAL_TO_INT(v);
    return true;
}

JSBool Add(JSContext* cx, JSObject* obj, uintN, jsval* argv, jsval* rval)
{
    double number = 0;
    if (!PeerOf(cx, obj) || !ToNumber(cx, argv[0], number))
        return JS_FALSE;
    *rval = INT_TO_JSVAL(static_cast<jsint>(number) + 1);
    return JS_TRUE;
}

JSBool AddNumber(JSContext* cx, JSObject* obj, uintN, jsval* argv, jsval* rval)
{
    double number = 0;
    return PeerOf(cx, obj) && ToNumber(cx, argv[0], number) && JS_NewDoubleValue(cx, number + 1, rval);
}

JSBool Length(JSContext* cx, JSObject* obj, uintN, jsval* argv, jsval* rval)
{
    wxString text;
    if (!PeerOf(cx, obj) || !JSVAL_IS_STRING(argv[0]) || !JS_StringToWide(cx, JSVAL_TO_STRING(argv[0]), text))
        return JS_FALSE;
    *rval = INT_TO_JSVAL(static_cast<jsint>(text.length()));
    return JS_TRUE;
}

JSBool Text(JSContext* cx, JSObject* obj, uintN, jsval*, jsval* rval)
{
    if (!PeerOf(cx, obj))
        return JS_FALSE;
    JSString* text = JS_NewStringFromWide(cx, L"abcdefghijklmnopqrst", 20);
    *rval = STRING_TO_JSVAL(text);
    return text != nullptr;
}

JSBool Value(JSContext* cx, JSObject* obj, jsval, jsval* vp)
{
    const Peer* peer = PeerOf(cx, obj);
    if (!peer)
        return JS_FALSE;
    *vp = INT_TO_JSVAL(peer->value);
    return JS_TRUE;
}

JSBool Number(JSContext* cx, JSObject* obj, jsval, jsval* vp)
{
    const Peer* peer = PeerOf(cx, obj);
    return peer && JS_NewDoubleValue(cx, peer->value, vp);
}

JSBool Construct(JSContext* cx, JSObject* obj, uintN, jsval*, jsval*)
{
    auto* peer = new Peer(g_bytes);
    if (g_bytes != 0)
        JS_AddNativeMemory(cx, obj, g_bytes);
    return JS_SetPrivate(cx, obj, peer);
}

void Finalize(JSContext* cx, JSObject* obj)
{
    auto* peer = static_cast<Peer*>(JS_GetPrivate(cx, obj));
    if (peer && g_bytes != 0)
        JS_RemoveNativeMemory(cx, obj, g_bytes);
    if (peer && g_deferred)
        JS_CallAfterNative(
            cx, [](void* data) { delete static_cast<Peer*>(data); }, peer);
    else
        delete peer;
}

constexpr JSClass kGlobal = {"Global", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
constexpr JSClass kPeer = {"Peer", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, Finalize};
constexpr JSFunctionSpec kFunctions[] = {{"add", Add, 1, 0, 0},
                                         {"addNumber", AddNumber, 1, 0, 0},
                                         {"len", Length, 1, 0, 0},
                                         {"text", Text, 0, 0, 0},
                                         {nullptr, nullptr, 0, 0, 0}};
constexpr JSPropertySpec kProperties[] = {{"value", 1, JSPROP_ENUMERATE, Value, nullptr},
                                          {"number", 2, JSPROP_ENUMERATE, Number, nullptr},
                                          {nullptr, 0, 0, nullptr, nullptr}};

double Evaluate(JSContext* cx, const std::wstring& text)
{
    jsval v = JSVAL_VOID;
    double number = 0;
    if (!JS_EvaluateWide(cx, nullptr, text.data(), text.size(), "expr", 1, &v) || !JS_ValueToNumber(cx, v, &number)) {
        std::fprintf(stderr, "script failed\n");
        std::exit(1);
    }
    return number;
}

// The loop in script that runs `body` for i = 0 to n - 1 and adds it up.
std::wstring Loop(const std::wstring& body, long n)
{
    return L"(function (n) { var s = 0, t = ['abcdefghijklmnopqrst', 'bcdefghijklmnopqrstu']; "
           L"for (var i = 0; i < n; i++) s += " +
           body + L"; return s; })(" + std::to_wstring(n) + L")";
}

double CallFunction(JSContext* cx, long n)
{
    jsval v = JSVAL_VOID;
    const std::wstring text = L"(function (a) { return a + 1 })";
    JS_EvaluateWide(cx, nullptr, text.data(), text.size(), "expr", 1, &v);
    JSFunction* fun = JS_ValueToFunction(cx, v);
    double sum = 0;
    JS_AddRoot(cx, &fun);
    for (long i = 0; i < n; ++i) {
        jsval argument = INT_TO_JSVAL(static_cast<jsint>(i & 0xFFFF));
        double number = 0;
        if (!JS_CallFunction(cx, nullptr, fun, 1, &argument, &v) || !JS_ValueToNumber(cx, v, &number))
            std::exit(1);
        sum += number;
    }
    JS_RemoveRoot(cx, &fun);
    return sum;
}

double EvaluateMany(JSContext* cx, long n, bool same)
{
    double sum = 0;
    std::wstring wide;
    for (long i = 0; i < n; ++i) {
        const std::string text = "x * 3 + " + std::to_string(same ? 1 : i);
        wide.resize(text.size());
        std::copy(text.begin(), text.end(), wide.begin());
        sum += Evaluate(cx, wide);
    }
    return sum;
}

bool Run(JSContext* cx, const std::string& mode, long n, double& sum)
{
    static const struct
    {
        const char* mode;
        const wchar_t* body;
    } kLoops[] = {
        {"call_int", L"o.add(i)"},          {"call_num", L"o.addNumber(i)"},  {"prop", L"o.value"},
        {"prop_num", L"o.number"},          {"call_str", L"o.len(t[i & 1])"}, {"call_text", L"o.text().length"},
        {"construct", L"new Peer().value"}, {"kilo", L"new Peer().value"},    {"deferred", L"new Peer().value"}};
    g_bytes = mode == "kilo" ? 1000 : 0;
    g_deferred = mode == "deferred" || mode == "kilo";
    for (const auto& loop : kLoops) {
        if (mode == loop.mode) {
            sum = Evaluate(cx, Loop(loop.body, n));
            return true;
        }
    }
    if (mode == "call_fun")
        sum = CallFunction(cx, n);
    else if (mode == "eval" || mode == "eval_same")
        sum = EvaluateMany(cx, n, mode == "eval_same");
    else
        return false;
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    JSRuntime* rt = JS_Init(1 << 24);
    JSContext* cx = JS_NewContext(rt, 8192);
    JSObject* global = JS_NewGlobal(cx, &kGlobal);
    JS_SetGlobalObject(cx, global);
    JS_InitClass(cx, global, nullptr, &kPeer, Construct, 0, kProperties, kFunctions, nullptr, nullptr);
    JSObject* peer = JS_DefineObject(cx, global, "o", &kPeer, nullptr, 0);
    JS_SetPrivate(cx, peer, new Peer(0));
    jsval five = INT_TO_JSVAL(5);
    JS_SetProperty(cx, global, "x", &five);
    double sum = 0;
    if (!Run(cx, argv[1], std::atol(argv[2]), sum))
        return 2;
    std::printf("%.0f\n", sum);
    std::fflush(stdout);
    std::_Exit(0); // what the end of the process takes apart is not measured
}
