#include <algorithm>
#include <cstring>

#include "engine/class_detail.h"
#include "engine/entry_detail.h"
#include "engine/jobs_detail.h"
#include "engine/js_script.h"
#include "engine/text_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

// Where a text runs: evaluated on a global, there, be it the context's own or not.
struct Target
{
    ::JSObject* global;
    bool scoped; // on another object
};

Target TargetOf(const JSContext& cx, JSObject* obj)
{
    ::JSObject* const target = Inner(obj);
    if (!target || target == cx.global)
        return {cx.global, false};
    const bool scoped = !IsOurGlobal(target);
    return {scoped ? cx.global : target, scoped};
}

// The objects that names are looked up on, innermost first, without the global, which the engine adds itself.
bool FillScopeChain(Entry& entry, JSObject* obj, JS::RootedObjectVector& chain)
{
    while (obj && !::JS_IsGlobalObject(Inner(obj))) {
        // A ring of parents would be endless; one that long is none that a host means.
        if (chain.length() > 1000) {
            ::JS_ReportErrorUTF8(entry.Engine(), "too many parent objects");
            return false;
        }
        if (!chain.append(Inner(obj)))
            return false;
        obj = JS_GetParent(&entry.Context(), obj);
    }
    return true;
}

bool CheckGlobal(Entry& entry)
{
    if (entry.Context().global)
        return true;
    ::JS_ReportErrorUTF8(entry.Engine(), "the context has no global object");
    return false;
}

::JSScript* Compile(Entry& entry, std::u16string_view text, const ScriptCache::Place& place, bool run_once)
{
    NoteSource(entry.Thread(), text);
    JS::CompileOptions options(entry.Engine());
    options.setFileAndLine(place.file.data(), place.line).setNonSyntacticScope(place.scoped).setIsRunOnce(run_once);
    JS::SourceText<char16_t> source;
    if (!source.init(entry.Engine(), text.data(), text.size(), JS::SourceOwnership::Borrowed))
        return nullptr;
    return JS::Compile(entry.Engine(), options, source);
}

// Nearly every text a host evaluates is short.
class Utf16Text
{
public:
    Utf16Text(const wchar_t* chars, std::size_t length)
    {
        char16_t* to = m_short;
        if (length * 2 > sizeof m_short / sizeof *m_short) {
            m_long = std::make_unique<char16_t[]>(length * 2);
            to = m_long.get();
        }
        m_view = {to, EncodeUtf16(chars, length, to)};
    }
    std::u16string_view View() const { return m_view; }

private:
    char16_t m_short[512];
    std::unique_ptr<char16_t[]> m_long;
    std::u16string_view m_view;
};

::JSScript* CompileCached(Entry& entry, ScriptCache& cache, std::u16string_view text, const char* file, uintN line,
                          bool scoped)
{
    const ScriptCache::Place place{file, line, scoped};
    bool worth_keeping = false;
    ::JSScript* script = cache.Find(text, place, worth_keeping);
    if (script)
        return script;
    script = Compile(entry, text, place, !worth_keeping);
    if (script && worth_keeping)
        cache.Insert(text, place, script);
    return script;
}

// Converting and hashing a short text costs as much as running it, so one that comes over and over is spared both.
::JSScript* CompileCached(Entry& entry, ScriptCache& cache, std::wstring_view text, const char* file, uintN line,
                          bool scoped)
{
    ::JSScript* script = cache.FindLatest(text, file, line, scoped);
    if (script)
        return script;
    script = CompileCached(entry, cache, Utf16Text(text.data(), text.size()).View(), file, line, scoped);
    cache.NoteLatest(text, script);
    return script;
}

bool ExecuteOn(Entry& entry, JSObject* obj, JS::HandleScript script, JS::MutableHandleValue result)
{
    JS::RootedObjectVector chain(entry.Engine());
    return FillScopeChain(entry, obj, chain) && ::JS_ExecuteScript(entry.Engine(), chain, script, result);
}

inline bool Execute(Entry& entry, JSObject* obj, JS::HandleScript script, bool scoped, JS::MutableHandleValue result)
{
    return scoped ? ExecuteOn(entry, obj, script, result) : ::JS_ExecuteScript(entry.Engine(), script, result);
}

inline JSBool Finish(Entry& entry, bool success, JS::HandleValue result, jsval* rval)
{
    if (!success)
        return entry.Fail();
    if (rval)
        *rval = ToWord(entry.Thread(), result);
    return JS_TRUE;
}

template <typename Text>
JSBool Evaluate(JSContext* cx, JSObject* obj, Text text, const char* file, uintN line, jsval* rval)
{
    Entry entry(cx, "JS_EvaluateUCScript", EntryKind::Run);
    if (!entry)
        return JS_FALSE;
    if (!CheckGlobal(entry))
        return entry.Fail();
    const Target target = TargetOf(*cx, obj);
    std::optional<JSAutoRealm> realm;
    if (target.global != cx->global)
        realm.emplace(entry.Engine(), target.global);
    ScriptCache& cache = DataOfGlobal(target.global).cache;
    JS::RootedScript script(entry.Engine(), CompileCached(entry, cache, text, file ? file : "", line, target.scoped));
    if (!script)
        return entry.Fail(ReportStyle::Parser);
    JS::RootedValue result(entry.Engine());
    return Finish(entry, Execute(entry, obj, script, target.scoped, &result), result, rval);
}

JSScript* CompileForHost(JSContext* cx, JSObject* obj, std::u16string_view text, const char* file, uintN line)
{
    Entry entry(cx, "JS_CompileUCScript");
    if (!entry)
        return nullptr;
    auto record = std::make_unique<JSScript>();
    const Target target = TargetOf(*cx, obj);
    record->scoped = target.scoped;
    record->filename = file ? file : "";
    record->line = line;
    std::optional<JSAutoRealm> realm;
    if (CheckGlobal(entry)) {
        realm.emplace(entry.Engine(), target.global);
        record->script = Compile(entry, text, {record->filename, line, record->scoped}, false);
    }
    if (!record->script) {
        entry.Fail(ReportStyle::Parser);
        return nullptr;
    }
    cx->scripts.push_back(std::move(record));
    return cx->scripts.back().get();
}

} // namespace

JSBool JS_EvaluateUCScript(JSContext* cx, JSObject* obj, const jschar* chars, uintN length, const char* file,
                           uintN line, jsval* rval)
{
    return Evaluate(cx, obj, std::u16string_view(chars, length), file, line, rval);
}

JSBool JS_EvaluateWide(JSContext* cx, JSObject* obj, const wchar_t* chars, std::size_t length, const char* file,
                       uintN line, jsval* rval)
{
    return Evaluate(cx, obj, std::wstring_view(chars, length), file, line, rval);
}

JSScript* JS_CompileUCScript(JSContext* cx, JSObject* obj, const jschar* chars, std::size_t length, const char* file,
                             uintN line)
{
    return CompileForHost(cx, obj, {chars, length}, file, line);
}

JSScript* JS_CompileWide(JSContext* cx, JSObject* obj, const wchar_t* chars, std::size_t length, const char* file,
                         uintN line)
{
    return CompileForHost(cx, obj, Utf16Text(chars, length).View(), file, line);
}

JSBool JS_ExecuteScript(JSContext* cx, JSObject* obj, JSScript* record, jsval* rval)
{
    Entry entry(cx, __func__, EntryKind::Run);
    if (!entry)
        return JS_FALSE;
    if (!record || !record->script) {
        ::JS_ReportErrorUTF8(entry.Engine(), "no script to execute");
        return entry.Fail();
    }
    JS::RootedScript script(entry.Engine(), record->script);
    // A script belongs to the global it was compiled on.
    JSAutoRealm realm(entry.Engine(), script);
    JS::RootedValue result(entry.Engine());
    if (!record->scoped && TargetOf(*cx, obj).scoped) {
        ::JS_ReportErrorUTF8(entry.Engine(), "a script compiled for the global cannot run on another object");
        return entry.Fail();
    }
    return Finish(entry, Execute(entry, obj, script, record->scoped, &result), result, rval);
}

void JS_DestroyScript(JSContext* cx, JSScript* script)
{
    if (!Usable(cx, __func__))
        return;
    const auto same = [&](const std::unique_ptr<JSScript>& known) { return known.get() == script; };
    cx->scripts.erase(std::remove_if(cx->scripts.begin(), cx->scripts.end(), same), cx->scripts.end());
}

static JSBool Call(Entry& entry, JSObject* obj, JS::HandleValue fun, uintN argc, const jsval* argv, jsval* rval)
{
    JS::RootedValueVector arguments(entry.Engine());
    if (!arguments.reserve(argc))
        return entry.Fail();
    for (uintN i = 0; i < argc; ++i)
        arguments.infallibleAppend(ToEngine(argv[i]));
    JS::RootedObject self(entry.Engine(), obj ? Inner(obj) : entry.Context().global);
    JS::RootedValue result(entry.Engine());
    const bool success = ::JS_CallFunctionValue(entry.Engine(), self, fun, arguments, &result);
    return Finish(entry, success, result, rval);
}

JSBool JS_CallFunctionValue(JSContext* cx, JSObject* obj, jsval fval, uintN argc, jsval* argv, jsval* rval)
{
    Entry entry(cx, __func__, EntryKind::Run);
    if (!entry)
        return JS_FALSE;
    JS::RootedValue fun(entry.Engine(), ToEngine(fval));
    return Call(entry, obj, fun, argc, argv, rval);
}

JSBool JS_CallFunction(JSContext* cx, JSObject* obj, JSFunction* fun, uintN argc, jsval* argv, jsval* rval)
{
    return JS_CallFunctionValue(cx, obj, OBJECT_TO_JSVAL(JS_GetFunctionObject(fun)), argc, argv, rval);
}

JSBool JS_CallFunctionName(JSContext* cx, JSObject* obj, const char* name, uintN argc, jsval* argv, jsval* rval)
{
    Entry entry(cx, __func__, EntryKind::Run);
    if (!entry)
        return JS_FALSE;
    JS::RootedObject self(entry.Engine(), obj ? Inner(obj) : cx->global);
    JS::RootedValue fun(entry.Engine());
    if (!CheckGlobal(entry) || !::JS_GetProperty(entry.Engine(), self, name, &fun))
        return entry.Fail();
    return Call(entry, obj, fun, argc, argv, rval);
}

} // namespace qxjs
