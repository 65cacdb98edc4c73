#include "engine/native_call_detail.h"

#include <atomic>
#include <exception>
#include <functional>

#include "engine/class_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

constexpr std::size_t kRecordSlot = 0;
constexpr unsigned kFewArguments = 8; // as many have their words on the stack
// Where functions keep the reserved slot above: behind four of the engine's own.
constexpr std::size_t kRecordPlace = 4;
// False when the installed engine lays functions out in another way.
std::atomic<bool> g_record_in_place{true};

const NativeRecord* RecordInPlace(::JSObject& fun)
{
    return static_cast<const NativeRecord*>(
        reinterpret_cast<JS::shadow::Object&>(fun).fixedSlots()[kRecordPlace].toPrivate());
}

const NativeRecord* RecordByCall(::JSObject& fun)
{
    return static_cast<const NativeRecord*>(js::GetFunctionNativeReserved(&fun, kRecordSlot).toPrivate());
}

// The engine's own accessor is a call into its library and costs more than everything else here.
const NativeRecord& RecordOf(const JS::CallArgs& args)
{
    ::JSObject& fun = args.callee();
    return *(g_record_in_place.load(std::memory_order_relaxed) ? RecordInPlace(fun) : RecordByCall(fun));
}

// A native's stay: what the interface returns to it goes when it ends.
class NativeFrame
{
public:
    NativeFrame(ThreadState& t, bool constructing)
        : m_thread(t), m_locals(t.locals.Size()), m_scopes(t.local_scopes.size()), m_uses(t.uses),
          m_constructing(t.constructing)
    {
        t.constructing = constructing;
        ++t.natives;
        StressPoint(t);
    }
    ~NativeFrame()
    {
        --m_thread.natives;
        m_thread.constructing = m_constructing;
        if (m_thread.local_scopes.size() > m_scopes)
            m_thread.local_scopes.resize(m_scopes);
        m_thread.locals.Truncate(m_locals);
    }
    NativeFrame(const NativeFrame&) = delete;
    NativeFrame& operator=(const NativeFrame&) = delete;

    // What a native that returned has left: success with an exception pending counts as success.
    bool Conclude(JSBool success)
    {
        if (success && m_thread.uses != m_uses)
            ::JS_ClearPendingException(m_thread.engine);
        return success != JS_FALSE;
    }

private:
    ThreadState& m_thread;
    std::size_t m_locals;
    std::size_t m_scopes;
    std::size_t m_uses;
    bool m_constructing;
};

JSObject* ConvertThis(ThreadState& t, JSContext& cx, const JS::Value& self)
{
    if (self.isNullOrUndefined())
        return Outer(GlobalOf(t, cx));
    JS::RootedValue value(t.engine, self);
    ::JSObject* obj = JS::ToObject(t.engine, value);
    if (obj)
        t.Keep(OBJECT_TO_JSVAL(Outer(obj)));
    return Outer(obj);
}

// Script's `this` as an object: the global for none, as sloppy functions see it.
JSObject* ThisObject(ThreadState& t, JSContext& cx, const JS::CallArgs& args)
{
    const JS::Value& self = args.thisv().get();
    return self.isObject() ? Outer(&self.toObject()) : ConvertThis(t, cx, self);
}

// The engine's frames cannot be unwound by a C++ exception, so none gets past here.
template <typename Body> bool Guarded(::JSContext* engine, Body body)
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        ::JS_ReportOutOfMemory(engine);
    } catch (const std::exception& error) {
        ::JS_ReportErrorUTF8(engine, "native function failed: %s", error.what());
    } catch (...) {
        ::JS_ReportErrorUTF8(engine, "native function failed");
    }
    return false;
}

struct NativeCall
{
    const NativeRecord& record;
    JSContext* cx;
    JSObject* self;
    const JS::CallArgs& args;
};

// `words` has room for callee, this, and all arguments given or declared. Inlined, as are its callers: one call less
// between script and native is a tenth of the whole.
[[gnu::always_inline]] inline JSBool CallWith(jsval* words, const NativeCall& call, jsval* result)
{
    ThreadState& t = *call.record.thread;
    const unsigned given = call.args.length();
    words[0] = OBJECT_TO_JSVAL(Outer(&call.args.callee()));
    words[1] = OBJECT_TO_JSVAL(call.self);
    jsval* const argv = words + 2;
    for (unsigned i = 0; i < given; ++i)
        argv[i] = ToArgument(t, call.args[i]);
    for (unsigned i = given; i < call.record.nargs; ++i)
        argv[i] = JSVAL_VOID;
    return call.record.native(call.cx, call.self, given, argv, result);
}

[[gnu::noinline]] JSBool CallWithMany(unsigned count, const NativeCall& call, jsval* result)
{
    const auto words = std::make_unique<jsval[]>(count + 2);
    return CallWith(words.get(), call, result);
}

inline JSBool Call(const NativeCall& call, jsval* result)
{
    const unsigned count = std::max(call.args.length(), call.record.nargs);
    if (count > kFewArguments)
        return CallWithMany(count, call, result);
    jsval words[kFewArguments + 2];
    return CallWith(words, call, result);
}

bool RunNative(const NativeRecord& record, JSContext* cx, const JS::CallArgs& args)
{
    ThreadState& t = *record.thread;
    NativeFrame frame(t, false);
    JSObject* self = ThisObject(t, *cx, args);
    jsval result = JSVAL_VOID;
    if (!self || !frame.Conclude(Call({record, cx, self, args}, &result)))
        return false;
    args.rval().set(ToEngine(result));
    return true;
}

bool CallNative(::JSContext* engine, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    const NativeRecord& record = RecordOf(args);
    ThreadState& t = *record.thread;
    JSContext* cx = t.current;
    if (!cx)
        return false;
    return Guarded(engine, [&] { return RunNative(record, cx, args) && (!t.EarlyCallsDue() || RunEarlyCalls(t)); });
}

JSObject* NewInstance(ThreadState& t, JSContext& cx, const JS::CallArgs& args, const HostClass& host_class)
{
    // Takes the prototype from new.target, so that script can derive classes from this one.
    ::JSObject* made = ::JS_NewObjectForConstructor(t.engine, &host_class.engine_class, args);
    if (!made)
        return nullptr;
    InitHostObject(t, made, GlobalOf(t, cx));
    return JSVAL_TO_OBJECT(t.Keep(OBJECT_TO_JSVAL(Outer(made))));
}

bool RunConstructor(const NativeRecord& record, JSContext* cx, const JS::CallArgs& args)
{
    ThreadState& t = *record.thread;
    NativeFrame frame(t, args.isConstructing());
    JSObject* self = args.isConstructing() ? NewInstance(t, *cx, args, *record.constructs) : ThisObject(t, *cx, args);
    jsval result = JSVAL_VOID;
    if (!self || !frame.Conclude(Call({record, cx, self, args}, &result)))
        return false;
    if (args.isConstructing() && JSVAL_IS_PRIMITIVE(result))
        result = OBJECT_TO_JSVAL(self);
    args.rval().set(ToEngine(result));
    return true;
}

bool CallConstructor(::JSContext* engine, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    const NativeRecord& record = RecordOf(args);
    ThreadState& t = *record.thread;
    JSContext* cx = t.current;
    if (!cx)
        return false;
    return Guarded(engine,
                   [&] { return RunConstructor(record, cx, args) && (!t.EarlyCallsDue() || RunEarlyCalls(t)); });
}

template <bool IsSetter> bool CallPropertyOp(::JSContext* engine, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    const NativeRecord& record = RecordOf(args);
    ThreadState& t = *record.thread;
    JSContext* cx = t.current;
    if (!cx)
        return false;
    return Guarded(engine, [&] {
        NativeFrame frame(t, false);
        JSObject* self = ThisObject(t, *cx, args);
        if (!self)
            return false;
        jsval word = IsSetter && args.length() > 0 ? ToArgument(t, args[0]) : JSVAL_VOID;
        if (!frame.Conclude(record.op(cx, self, record.id, &word)))
            return false;
        args.rval().set(IsSetter ? JS::UndefinedValue() : ToEngine(word));
        return true;
    });
}

bool SameRecord(const NativeRecord& a, const NativeRecord& b)
{
    return a.native == b.native && a.op == b.op && a.id == b.id && a.nargs == b.nargs && a.is_setter == b.is_setter &&
           a.constructs == b.constructs;
}

std::size_t HashRecord(const NativeRecord& record)
{
    std::size_t hash = std::hash<void*>()(reinterpret_cast<void*>(record.native));
    hash = hash * 31 + std::hash<void*>()(reinterpret_cast<void*>(record.op));
    return hash * 31 + static_cast<std::size_t>(record.id) + record.nargs;
}

::JSFunction* NewFunction(ThreadState& t, ::JSNative call, const NativeRecord& wanted, unsigned flags, const char* name)
{
    const NativeRecord* record = FindRecord(t, wanted);
    ::JSFunction* fun = js::NewFunctionWithReserved(t.engine, call, wanted.nargs, flags, name);
    if (!fun)
        return nullptr;
    ::JSObject* obj = ::JS_GetFunctionObject(fun);
    js::SetFunctionNativeReserved(obj, kRecordSlot, JS::PrivateValue(const_cast<NativeRecord*>(record)));
    if (RecordInPlace(*obj) != record)
        g_record_in_place = false;
    return fun;
}

} // namespace

const NativeRecord* FindRecord(ThreadState& t, const NativeRecord& wanted)
{
    const std::size_t hash = HashRecord(wanted);
    const auto range = t.native_index.equal_range(hash);
    for (auto known = range.first; known != range.second; ++known) {
        if (SameRecord(*known->second, wanted))
            return known->second;
    }
    t.native_records.push_back(wanted);
    t.native_index.emplace(hash, &t.native_records.back());
    return &t.native_records.back();
}

::JSFunction* NewNativeFunction(ThreadState& t, JSNative native, unsigned nargs, const char* name)
{
    return NewFunction(t, CallNative, {&t, native, nullptr, JSVAL_VOID, nargs, false, nullptr}, 0, name);
}

::JSFunction* NewConstructor(ThreadState& t, JSNative native, unsigned nargs, const char* name,
                             const HostClass* constructs)
{
    return NewFunction(t, CallConstructor, {&t, native, nullptr, JSVAL_VOID, nargs, false, constructs},
                       JSFUN_CONSTRUCTOR, name);
}

::JSObject* AccessorFunction(ThreadState& t, JSPropertyOp op, jsval id, bool is_setter)
{
    const NativeRecord wanted{&t, nullptr, op, id, is_setter ? 1U : 0U, is_setter, nullptr};
    ::JSObject*& known = DataOfGlobal(JS::CurrentGlobalOrNull(t.engine)).accessors[FindRecord(t, wanted)];
    if (!known) {
        ::JSFunction* fun =
            NewFunction(t, is_setter ? CallPropertyOp<true> : CallPropertyOp<false>, wanted, 0, nullptr);
        known = fun ? ::JS_GetFunctionObject(fun) : nullptr;
    }
    return known;
}

} // namespace qxjs
