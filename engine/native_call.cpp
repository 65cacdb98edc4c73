#include "engine/native_call_detail.h"

#include <exception>
#include <functional>

#include "engine/class_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

constexpr std::size_t kRecordSlot = 0;
constexpr unsigned kWordsInFrame = 10; // callee, this and eight arguments

const NativeRecord& RecordOf(const JS::CallArgs& args)
{
    return *static_cast<const NativeRecord*>(js::GetFunctionNativeReserved(&args.callee(), kRecordSlot).toPrivate());
}

// A native's stay: what the interface returns to it goes when it ends.
class NativeFrame
{
public:
    NativeFrame(ThreadState& t, bool constructing)
        : m_thread(t), m_locals(t.locals.Size()), m_scopes(t.local_scopes.size()), m_constructing(t.constructing)
    {
        t.constructing = constructing;
        StressPoint(t);
    }
    ~NativeFrame()
    {
        m_thread.constructing = m_constructing;
        m_thread.local_scopes.resize(std::min(m_scopes, m_thread.local_scopes.size()));
        m_thread.locals.Truncate(m_locals);
    }
    NativeFrame(const NativeFrame&) = delete;
    NativeFrame& operator=(const NativeFrame&) = delete;

private:
    ThreadState& m_thread;
    std::size_t m_locals;
    std::size_t m_scopes;
    bool m_constructing;
};

// callee, this, and at least `nargs` arguments, on the stack when they are few.
class ArgumentWords
{
public:
    ArgumentWords(ThreadState& t, const JS::CallArgs& args, unsigned nargs, JSObject* self)
    {
        const unsigned given = args.length();
        const unsigned count = std::max(given, nargs) + 2;
        if (count > kWordsInFrame) {
            m_many = std::make_unique<jsval[]>(count);
            m_words = m_many.get();
        }
        m_words[0] = OBJECT_TO_JSVAL(Outer(&args.callee()));
        m_words[1] = OBJECT_TO_JSVAL(self);
        for (unsigned i = 0; i < given; ++i)
            m_words[i + 2] = ToArgument(t, args[i]);
        std::fill(m_words + given + 2, m_words + count, JSVAL_VOID);
    }
    ArgumentWords(const ArgumentWords&) = delete;
    ArgumentWords& operator=(const ArgumentWords&) = delete;
    jsval* Argv() { return m_words + 2; }

private:
    jsval m_few[kWordsInFrame];
    std::unique_ptr<jsval[]> m_many;
    jsval* m_words = m_few;
};

// Script's `this` as an object: the global for none, as sloppy functions see it.
JSObject* ThisObject(ThreadState& t, JSContext& cx, const JS::CallArgs& args)
{
    const JS::Value self = args.thisv();
    if (self.isObject())
        return Outer(&self.toObject());
    if (self.isNullOrUndefined())
        return Outer(GlobalOf(t, cx));
    JS::RootedValue value(t.engine, self);
    ::JSObject* obj = JS::ToObject(t.engine, value);
    if (obj)
        t.Keep(OBJECT_TO_JSVAL(Outer(obj)));
    return Outer(obj);
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

// What a native that returned has left: success with an exception pending counts as success.
bool Conclude(ThreadState& t, JSBool success)
{
    if (success)
        ::JS_ClearPendingException(t.engine);
    return success != JS_FALSE;
}

bool CallNative(::JSContext* engine, unsigned argc, JS::Value* vp)
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
        ArgumentWords words(t, args, record.nargs, self);
        jsval result = JSVAL_VOID;
        if (!Conclude(t, record.native(cx, self, argc, words.Argv(), &result)))
            return false;
        args.rval().set(ToEngine(result));
        return true;
    });
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

bool CallConstructor(::JSContext* engine, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    const NativeRecord& record = RecordOf(args);
    ThreadState& t = *record.thread;
    JSContext* cx = t.current;
    if (!cx)
        return false;
    return Guarded(engine, [&] {
        NativeFrame frame(t, args.isConstructing());
        JSObject* self =
            args.isConstructing() ? NewInstance(t, *cx, args, *record.constructs) : ThisObject(t, *cx, args);
        if (!self)
            return false;
        ArgumentWords words(t, args, record.nargs, self);
        jsval result = JSVAL_VOID;
        if (!Conclude(t, record.native(cx, self, argc, words.Argv(), &result)))
            return false;
        if (args.isConstructing() && JSVAL_IS_PRIMITIVE(result))
            result = OBJECT_TO_JSVAL(self);
        args.rval().set(ToEngine(result));
        return true;
    });
}

bool CallPropertyOp(::JSContext* engine, const JS::CallArgs& args, jsval value, bool is_setter)
{
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
        jsval word = is_setter && args.length() > 0 ? ToArgument(t, args[0]) : value;
        if (!Conclude(t, record.op(cx, self, record.id, &word)))
            return false;
        args.rval().set(is_setter ? JS::UndefinedValue() : ToEngine(word));
        return true;
    });
}

bool CallGetter(::JSContext* engine, unsigned argc, JS::Value* vp)
{
    return CallPropertyOp(engine, JS::CallArgsFromVp(argc, vp), JSVAL_VOID, false);
}

bool CallSetter(::JSContext* engine, unsigned argc, JS::Value* vp)
{
    return CallPropertyOp(engine, JS::CallArgsFromVp(argc, vp), JSVAL_VOID, true);
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
    js::SetFunctionNativeReserved(::JS_GetFunctionObject(fun), kRecordSlot,
                                  JS::PrivateValue(const_cast<NativeRecord*>(record)));
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
        ::JSFunction* fun = NewFunction(t, is_setter ? CallSetter : CallGetter, wanted, 0, nullptr);
        known = fun ? ::JS_GetFunctionObject(fun) : nullptr;
    }
    return known;
}

} // namespace qxjs
