// The floor that bridge_class is measured against: the same operations as natives written by hand for the engine.
// Evaluations of one text re-run one compiled script.
#include "bench/bridge_script.h"

#include <js/CallAndConstruct.h>
#include <js/CharacterEncoding.h>
#include <js/CompilationAndEvaluation.h>
#include <js/Conversions.h>
#include <js/Initialization.h>
#include <js/Object.h>
#include <js/SourceText.h>
#include <jsapi.h>
#include <jsfriendapi.h>

#include <wx/event.h>
#include <wx/string.h>

#include <cstdlib>
#include <string>

namespace
{

/// As heavy as the native part of any class that takes part in events.
struct Peer
{
    int value = 3;
    wxEvtHandler events;
};

void Finalize(JS::GCContext*, JSObject* object)
{
    delete JS::GetMaybePtrFromReservedSlot<Peer>(object, 0);
}

constexpr JSClassOps kOps = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, Finalize, nullptr, nullptr, nullptr};
constexpr JSClass kClass = {
    "Peer", JSCLASS_HAS_RESERVED_SLOTS(1) | JSCLASS_FOREGROUND_FINALIZE, &kOps, nullptr, nullptr, nullptr};
constexpr JSClass kGlobal = {"global", JSCLASS_GLOBAL_FLAGS, &JS::DefaultGlobalClassOps, nullptr, nullptr, nullptr};

Peer* Self(const JS::CallArgs& args)
{
    if (!args.thisv().isObject() || JS::GetClass(&args.thisv().toObject()) != &kClass)
        return nullptr;
    return JS::GetMaybePtrFromReservedSlot<Peer>(&args.thisv().toObject(), 0);
}

bool Add(JSContext* cx, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    std::int32_t number = 0;
    if (!Self(args) || !args.requireAtLeast(cx, "add", 1) || !JS::ToInt32(cx, args[0], &number))
        return false;
    args.rval().setInt32(number + 1);
    return true;
}

bool Length(JSContext* cx, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    if (!Self(args) || !args.requireAtLeast(cx, "len", 1))
        return false;
    JS::RootedString string(cx, JS::ToString(cx, args[0]));
    JSLinearString* const linear = string ? JS_EnsureLinearString(cx, string) : nullptr;
    if (!linear)
        return false;
    const std::size_t length = JS::GetLinearStringLength(linear);
    wxString text;
    {
        const JS::AutoCheckCannotGC noCollection;
        wxStringBufferLength buffer(text, length);
        wxStringCharType* const to = buffer;
        for (std::size_t i = 0; i < length; ++i)
            to[i] = JS::LinearStringHasLatin1Chars(linear) ? JS::GetLatin1LinearStringChars(noCollection, linear)[i]
                                                           : JS::GetTwoByteLinearStringChars(noCollection, linear)[i];
        buffer.SetLength(length);
    }
    args.rval().setInt32(static_cast<int>(text.length()));
    return true;
}

bool GetValue(JSContext*, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    const Peer* const peer = Self(args);
    if (!peer)
        return false;
    args.rval().setInt32(peer->value);
    return true;
}

bool SetValue(JSContext* cx, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    Peer* const peer = Self(args);
    args.rval().setUndefined();
    return peer && JS::ToInt32(cx, args.get(0), &peer->value);
}

bool Construct(JSContext* cx, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    JSObject* const object = JS_NewObjectForConstructor(cx, &kClass, args);
    if (!object)
        return false;
    JS::SetReservedSlot(object, 0, JS::PrivateValue(new Peer));
    args.rval().setObject(*object);
    return true;
}

constexpr JSFunctionSpec kFunctions[] = {JS_FN("add", Add, 1, JSPROP_ENUMERATE),
                                         JS_FN("len", Length, 1, JSPROP_ENUMERATE), JS_FS_END};
constexpr JSPropertySpec kProperties[] = {JS_PSGS("value", GetValue, SetValue, JSPROP_ENUMERATE), JS_PS_END};

[[noreturn]] void Fail()
{
    std::fprintf(stderr, "script failed\n");
    std::exit(1);
}

JSScript* Compile(JSContext* cx, const std::string& text)
{
    JS::SourceText<mozilla::Utf8Unit> source;
    JS::CompileOptions options(cx);
    options.setFileAndLine("expr", 1);
    JSScript* const script = source.init(cx, text.data(), text.size(), JS::SourceOwnership::Borrowed)
                                 ? JS::Compile(cx, options, source)
                                 : nullptr;
    if (!script)
        Fail();
    return script;
}

} // namespace

int main(int argc, char** argv)
{
    JS_Init();
    JSContext* const cx = JS_NewContext(64L * 1024 * 1024);
    JS::InitSelfHostedCode(cx);
    JS::RealmOptions options;
    JS::RootedObject global(cx, JS_NewGlobalObject(cx, &kGlobal, nullptr, JS::FireOnNewGlobalHook, options));
    const JSAutoRealm realm(cx, global);
    JS::RootedObject prototype(
        cx, JS_InitClass(cx, global, nullptr, &kClass, Construct, 0, kProperties, kFunctions, nullptr, nullptr));
    JS::RootedObject object(cx, JS_NewObjectWithGivenProto(cx, &kClass, prototype));
    JS::SetReservedSlot(object, 0, JS::PrivateValue(new Peer));
    JS::RootedValue five(cx, JS::Int32Value(5));
    JS_DefineProperty(cx, global, "o", object, 0);
    JS_SetProperty(cx, global, "x", five);
    JS::RootedScript script(cx);
    const bool same = argc > 1 && std::string(argv[1]) == "eval_same";
    const int status = Drive(argc, argv, [&](const std::string& text) {
        JS::RootedValue result(cx);
        if (!script || !same)
            script = Compile(cx, text);
        if (!JS_ExecuteScript(cx, script, &result))
            Fail();
        return result.toNumber();
    });
    std::_Exit(status); // what the end of the process takes apart is not measured
}
