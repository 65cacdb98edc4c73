#include "engine/native_call_detail.h"

#include <atomic>
#include <exception>
#include <functional>

#include "engine/class_detail.h"
#include "engine/native_frame_detail.h"
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

[[gnu::noinline]] JSObject* ConvertThis(ThreadState& t, JSContext& cx, JS::Value self)
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
    const JS::Value self = args.thisv().get();
    return self.isObject() ? Outer(&self.toObject()) : ConvertThis(t, cx, self);
}

// The engine's frames cannot be unwound by a C++ exception, so none gets past here.
template <typename Body> bool Guarded(const ThreadState& t, Body body)
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        ::JS_ReportOutOfMemory(t.engine);
    } catch (const std::exception& error) {
        ::JS_ReportErrorUTF8(t.engine, "native function failed: %s", error.what());
    } catch (...) {
        ::JS_ReportErrorUTF8(t.engine, "native function failed");
    }
    if (t.stops != 0)
        ::JS_ClearPendingException(t.engine); // script could catch it
    return false;
}

// The words that a native finds around its `argv`, which is returned. `words` has room for callee, this, and all
// arguments given or declared. Inlined, as are its callers, and nothing here has its address taken: each call less
// between script and native is a tenth of the whole, and so are words in memory.
[[gnu::always_inline]] inline jsval* FillWords(jsval* words, const NativeRecord& record, const JSObject* self,
                                               const JS::CallArgs& args)
{
    const unsigned given = args.length();
    words[0] = OBJECT_TO_JSVAL(Outer(&args.callee()));
    words[1] = OBJECT_TO_JSVAL(self);
    jsval* const argv = words + 2;
    for (unsigned i = 0; i < given; ++i)
        argv[i] = ToArgument(*record.thread, args[i].get());
    for (unsigned i = given; i < record.nargs; ++i)
        argv[i] = JSVAL_VOID;
    return argv;
}

[[gnu::noinline, gnu::cold]] JSBool CallWithMany(const NativeRecord& record, JSContext& cx, JSObject* self,
                                                 unsigned argc, JS::Value* vp, jsval* result)
{
    const auto words = std::make_unique<jsval[]>(std::max(argc, record.nargs) + 2);
    jsval* const argv = FillWords(words.get(), record, self, JS::CallArgsFromVp(argc, vp));
    return record.native(&cx, self, argc, argv, result);
}

bool HasMany(const NativeRecord& record, const JS::CallArgs& args)
{
    return args.length() > kFewArguments || record.nargs > kFewArguments;
}

[[gnu::always_inline]] inline JSBool Call(const NativeRecord& record, JSContext& cx, JSObject* self,
                                          const JS::CallArgs& args, jsval* result)
{
    if (HasMany(record, args))
        return CallWithMany(record, cx, self, args.length(), args.base(), result);
    jsval words[kFewArguments + 2];
    jsval* const argv = FillWords(words, record, self, args);
    return record.native(&cx, self, args.length(), argv, result);
}

[[gnu::always_inline]] inline bool RunNative(const NativeRecord& record, JSContext& cx, const JS::CallArgs& args)
{
    ThreadState& t = *record.thread;
    NativeFrame frame(t);
    JSObject* self = ThisObject(t, cx, args);
    jsval result = JSVAL_VOID;
    if (!self || !frame.Conclude(Call(record, cx, self, args, &result)))
        return false;
    args.rval().set(ToEngine(result));
    return true;
}

[[gnu::noinline]] bool RunPlainNative(const NativeRecord& record, JSContext& cx, unsigned argc, JS::Value* vp)
{
    return RunNative(record, cx, JS::CallArgsFromVp(argc, vp));
}

JS::Value ValueOf(const JSNumber& number)
{
    return number.type == JSNumberField::Int32 ? JS::Int32Value(number.whole) : NumberToEngine(number.real);
}

// The word of a number, and asking for the private pointer, would cost as much as all the rest.
[[gnu::always_inline]] inline bool RunNumberNative(const NativeRecord& record, JSContext& cx, const JS::CallArgs& args)
{
    ::JSObject* const self = args.thisv().isObject() ? &args.thisv().toObject() : nullptr;
    void* const data = self ? PrivateOf(self) : nullptr;
    if (!data || HasMany(record, args))
        return RunPlainNative(record, cx, args.length(), args.base());
    NativeFrame frame(*record.thread);
    jsval words[kFewArguments + 2];
    jsval* const argv = FillWords(words, record, Outer(self), args);
    const JSNumber number = record.number(data, args.length(), argv);
    if (number.type != JSNumberField::None) {
        frame.Conclude(JS_TRUE);
        args.rval().set(ValueOf(number));
        return true;
    }
    jsval result = JSVAL_VOID;
    if (!frame.Conclude(record.native(&cx, Outer(self), args.length(), argv, &result)))
        return false;
    args.rval().set(ToEngine(result));
    return true;
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

bool RunConstructor(const NativeRecord& record, JSContext& cx, const JS::CallArgs& args)
{
    if (!args.isConstructing())
        return RunNative(record, cx, args);
    ThreadState& t = *record.thread;
    NativeFrame frame(t, true);
    JSObject* self = NewInstance(t, cx, args, *record.constructs);
    jsval result = JSVAL_VOID;
    if (!self || !frame.Conclude(Call(record, cx, self, args, &result)))
        return false;
    args.rval().set(ToEngine(JSVAL_IS_PRIMITIVE(result) ? OBJECT_TO_JSVAL(self) : result));
    return true;
}

template <bool IsSetter> bool RunPropertyOp(const NativeRecord& record, JSContext& cx, const JS::CallArgs& args)
{
    ThreadState& t = *record.thread;
    NativeFrame frame(t);
    JSObject* self = ThisObject(t, cx, args);
    if (!self)
        return false;
    jsval word = IsSetter && args.length() > 0 ? ToArgument(t, args[0]) : JSVAL_VOID;
    if (!frame.Conclude(record.op(&cx, self, record.id, &word)))
        return false;
    args.rval().set(IsSetter ? JS::UndefinedValue() : ToEngine(word));
    return true;
}

using Runner = bool(const NativeRecord& record, JSContext& cx, const JS::CallArgs& args);

template <Runner* Run> bool RunWithEarlyCalls(const NativeRecord& record, JSContext& cx, const JS::CallArgs& args)
{
    ThreadState& t = *record.thread;
    return Run(record, cx, args) && (!t.EarlyCallsDue() || RunEarlyCalls(t));
}

// What the engine calls.
template <Runner* Run> bool CallRecord(::JSContext*, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    const NativeRecord& record = RecordOf(args);
    JSContext* cx = record.thread->current;
    return cx && Guarded(*record.thread, [&] { return Run(record, *cx, args); });
}

JSNumberField NumberField(const NativeRecord& record, const JS::CallArgs& args)
{
    void* const data = args.thisv().isObject() ? PrivateOf(&args.thisv().toObject()) : nullptr;
    return data ? record.field(data, record.id) : JSNumberField{nullptr, JSNumberField::None};
}

// Numbers of hosts' objects are what script asks for most, and a word and a frame for each would double the cost.
bool GetNumber(::JSContext* engine, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    const JSNumberField field = NumberField(RecordOf(args), args);
    if (field.type == JSNumberField::Int32)
        args.rval().setInt32(*static_cast<const std::int32_t*>(field.address));
    else if (field.type == JSNumberField::Double)
        args.rval().set(NumberToEngine(*static_cast<const double*>(field.address)));
    else
        return CallRecord<RunPropertyOp<false>>(engine, argc, vp);
    return true;
}

bool SetNumber(::JSContext* engine, unsigned argc, JS::Value* vp)
{
    const JS::CallArgs args = JS::CallArgsFromVp(argc, vp);
    const JSNumberField field = NumberField(RecordOf(args), args);
    const JS::Value& value = args.get(0).get();
    if (field.type == JSNumberField::Int32 && value.isInt32())
        *static_cast<std::int32_t*>(field.address) = value.toInt32();
    else if (field.type == JSNumberField::Double && value.isNumber())
        *static_cast<double*>(field.address) = value.toNumber();
    else
        return CallRecord<RunPropertyOp<true>>(engine, argc, vp);
    args.rval().setUndefined();
    return true;
}

bool SameRecord(const NativeRecord& a, const NativeRecord& b)
{
    return a.native == b.native && a.op == b.op && a.field == b.field && a.id == b.id && a.nargs == b.nargs &&
           a.is_setter == b.is_setter && a.constructs == b.constructs && a.number == b.number;
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

::JSFunction* NewNativeFunction(ThreadState& t, JSNative native, unsigned nargs, const char* name,
                                JSNumberNative number)
{
    ::JSNative call =
        number ? CallRecord<RunWithEarlyCalls<RunNumberNative>> : CallRecord<RunWithEarlyCalls<RunNative>>;
    return NewFunction(t, call, {&t, native, nullptr, nullptr, JSVAL_VOID, nargs, false, nullptr, number}, 0, name);
}

::JSFunction* NewConstructor(ThreadState& t, JSNative native, unsigned nargs, const char* name,
                             const HostClass* constructs)
{
    return NewFunction(t, CallRecord<RunWithEarlyCalls<RunConstructor>>,
                       {&t, native, nullptr, nullptr, JSVAL_VOID, nargs, false, constructs}, JSFUN_CONSTRUCTOR, name);
}

::JSObject* AccessorFunction(ThreadState& t, const AccessorOps& ops, bool is_setter)
{
    JSPropertyOp op = is_setter ? ops.setter : ops.getter;
    const NativeRecord wanted{&t, nullptr, op, ops.field, ops.id, is_setter ? 1U : 0U, is_setter, nullptr};
    ::JSObject*& known = DataOfGlobal(JS::CurrentGlobalOrNull(t.engine)).accessors[FindRecord(t, wanted)];
    if (!known) {
        ::JSNative getter = ops.field ? GetNumber : CallRecord<RunPropertyOp<false>>;
        ::JSNative setter = ops.field ? SetNumber : CallRecord<RunPropertyOp<true>>;
        ::JSFunction* fun = NewFunction(t, is_setter ? setter : getter, wanted, 0, nullptr);
        known = fun ? ::JS_GetFunctionObject(fun) : nullptr;
    }
    return known;
}

} // namespace qxjs
