#include "engine/entry_detail.h"
#include "engine/js_script.h"
#include "engine/js_value.h"
#include "engine/native_frame_detail.h"
#include "engine/words_detail.h"

// Questions about functions, and about the stack.
namespace qxjs
{

JSFunction* JS_ValueToFunction(JSContext* cx, jsval v)
{
    Entry entry(cx, __func__);
    if (!entry)
        return nullptr;
    JS::RootedValue value(entry.Engine(), ToEngine(v));
    ::JSFunction* fun = ::JS_ValueToFunction(entry.Engine(), value);
    if (!fun) {
        // For a callable object that is no function the engine says nothing.
        if (!::JS_IsExceptionPending(entry.Engine()))
            ::JS_ReportErrorUTF8(entry.Engine(), "value is not a function");
        entry.Fail();
        return nullptr;
    }
    entry.Thread().Keep(OBJECT_TO_JSVAL(Outer(::JS_GetFunctionObject(fun))));
    return reinterpret_cast<JSFunction*>(fun);
}

JSBool JS_ObjectIsFunction(JSContext* cx, JSObject* obj)
{
    return Usable(cx, __func__) && obj && ::JS_ObjectIsFunction(Inner(obj));
}

JSObject* JS_GetFunctionObject(JSFunction* fun)
{
    return reinterpret_cast<JSObject*>(fun);
}

const char* JS_GetFunctionName(JSFunction* fun)
{
    ThreadState* t = t_state;
    ::JSString* id = nullptr;
    if (t && !t->collecting && fun)
        id = ::JS_GetFunctionId(reinterpret_cast<::JSFunction*>(fun));
    if (!id)
        return "anonymous";
    JSContext* cx = t->current ? t->current : &t->hostless;
    return t->names.insert(JS_StringToUtf8(cx, Outer(id))).first->c_str();
}

JSBool JS_IsConstructing(JSContext* cx)
{
    ThreadState* t = UsableQuietly(cx, __func__);
    return t && t->native && t->native->IsConstructing();
}

namespace
{

bool AppendFrame(::JSContext* engine, JS::HandleObject saved, std::vector<FrameRecord>& frames)
{
    JS::RootedString source(engine);
    std::uint32_t line = 0;
    if (JS::GetSavedFrameSource(engine, nullptr, saved, &source) != JS::SavedFrameResult::Ok ||
        JS::GetSavedFrameLine(engine, nullptr, saved, &line) != JS::SavedFrameResult::Ok)
        return false;
    FrameRecord frame{};
    frame.line = line;
    frame.script.line = line;
    JS::UniqueChars file = ::JS_EncodeStringToUTF8(engine, source);
    frame.script.filename = file ? file.get() : "";
    frames.push_back(std::move(frame));
    return true;
}

void CaptureFrames(ThreadState& t, JSContext& cx)
{
    cx.frames.clear();
    RealmScope realm(t, cx);
    JS::AutoSaveExceptionState exception(t.engine);
    JS::RootedObject saved(t.engine);
    if (!JS::CaptureCurrentStack(t.engine, &saved))
        return;
    while (saved && AppendFrame(t.engine, saved, cx.frames)) {
        JS::RootedObject parent(t.engine);
        if (JS::GetSavedFrameParent(t.engine, nullptr, saved, &parent) != JS::SavedFrameResult::Ok)
            break;
        saved = parent;
    }
}

} // namespace

JSStackFrame* JS_FrameIterator(JSContext* cx, JSStackFrame** iterp)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return nullptr;
    std::size_t index = 0;
    if (*iterp)
        index = static_cast<std::size_t>(reinterpret_cast<FrameRecord*>(*iterp) - cx->frames.data()) + 1;
    else
        CaptureFrames(*t, *cx);
    *iterp = index < cx->frames.size() ? reinterpret_cast<JSStackFrame*>(&cx->frames[index]) : nullptr;
    return *iterp;
}

JSScript* JS_GetFrameScript(JSContext*, JSStackFrame* fp)
{
    return fp ? &reinterpret_cast<FrameRecord*>(fp)->script : nullptr;
}

jsbytecode* JS_GetFramePC(JSContext*, JSStackFrame* fp)
{
    return fp ? reinterpret_cast<jsbytecode*>(&reinterpret_cast<FrameRecord*>(fp)->line) : nullptr;
}

uintN JS_PCToLineNumber(JSContext*, JSScript* script, jsbytecode* pc)
{
    if (pc)
        return *reinterpret_cast<const uintN*>(pc);
    return script ? script->line : 0;
}

const char* JS_GetScriptFilename(JSContext*, JSScript* script)
{
    return script ? script->filename.c_str() : nullptr;
}

} // namespace qxjs
