// A class, roots, strings and errors by the engine's own interface alone, as hosts of the 1.x engine were written.
#include <vc_qxparser.h>

#include <wx/init.h>

#include <cstdio>
#include <string>

namespace
{

struct Counter
{
    int value = 0;
    int step = 1;
};

enum
{
    COUNTER_VALUE,
    COUNTER_STEP
};

void CounterFinalize(JSContext* cx, JSObject* obj)
{
    delete static_cast<Counter*>(JS_GetPrivate(cx, obj)); // null for the prototype
}

const JSClass globalClass = {"Global", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
const JSClass counterClass = {"Counter",       JSCLASS_HAS_PRIVATE, JS_PropertyStub, JS_PropertyStub, JS_PropertyStub,
                              JS_PropertyStub, JS_EnumerateStub,    JS_ResolveStub,  JS_ConvertStub,  CounterFinalize};

/// The counter behind an object; null, for what script has made by other means, too.
Counter* CounterOf(JSContext* cx, JSObject* obj, jsval* argv)
{
    return static_cast<Counter*>(JS_GetInstancePrivate(cx, obj, &counterClass, argv));
}

JSBool CounterGet(JSContext* cx, JSObject* obj, jsval id, jsval* vp)
{
    if (const Counter* const counter = CounterOf(cx, obj, nullptr))
        *vp = INT_TO_JSVAL(JSVAL_TO_INT(id) == COUNTER_VALUE ? counter->value : counter->step);
    return JS_TRUE;
}

JSBool CounterSet(JSContext* cx, JSObject* obj, jsval, jsval* vp)
{
    Counter* const counter = CounterOf(cx, obj, nullptr);
    return !counter || JS_ValueToInt32(cx, *vp, &counter->step);
}

JSBool CounterAdd(JSContext* cx, JSObject* obj, uintN argc, jsval* argv, jsval* rval)
{
    Counter* const counter = CounterOf(cx, obj, argv);
    if (!counter)
        return JS_FALSE; // a TypeError is pending
    if (argc > 1) {
        JS_ReportError(cx, "add takes one argument, not %u", argc);
        return JS_FALSE;
    }
    jsint times = 1;
    if (argc == 1 && !JS_ValueToInt32(cx, argv[0], &times))
        return JS_FALSE;
    counter->value += times * counter->step;
    return JS_NewNumberValue(cx, counter->value, rval);
}

JSBool CounterConstruct(JSContext* cx, JSObject* obj, uintN, jsval*, jsval*)
{
    if (!JS_IsConstructing(cx)) {
        JS_ReportError(cx, "Counter needs new");
        return JS_FALSE;
    }
    return JS_SetPrivate(cx, obj, new Counter);
}

const JSPropertySpec counterProperties[] = {
    {"value", COUNTER_VALUE, JSPROP_ENUMERATE | JSPROP_READONLY, CounterGet, nullptr},
    {"step", COUNTER_STEP, JSPROP_ENUMERATE, CounterGet, CounterSet},
    {nullptr, 0, 0, nullptr, nullptr},
};
const JSFunctionSpec counterFunctions[] = {{"add", CounterAdd, 1, 0, 0}, {nullptr, nullptr, 0, 0, 0}};

void Report(JSContext*, const char* message, JSErrorReport* report)
{
    std::printf("%s:%u: %s\n", report->filename ? report->filename : "?", report->lineno, message);
}

void Run(JSContext* cx, const std::u16string& text)
{
    jsval result = JSVAL_VOID;
    if (!JS_EvaluateUCScript(cx, nullptr, text.data(), static_cast<uintN>(text.size()), "example.js", 1, &result))
        return; // reported
    if (JSString* const shown = JS_ValueToString(cx, result))
        std::printf("%s\n", JS_StringToUtf8(cx, shown).c_str());
}

} // namespace

int main()
{
    const wxInitializer wx;
    JSRuntime* const rt = JS_NewRuntime(16 << 20);
    JSContext* const cx = JS_NewContext(rt, 8192);
    if (!cx)
        return 1;
    JS_SetErrorReporter(cx, Report);
    JSObject* const global = JS_NewGlobal(cx, &globalClass);
    JS_SetGlobalObject(cx, global); // keeps it alive
    JS_InitClass(cx, global, nullptr, &counterClass, CounterConstruct, 0, counterProperties, counterFunctions, nullptr,
                 nullptr);

    Run(cx, u"var c = new Counter(); c.step = 5; c.add() + c.add(2)");
    Run(cx, u"c.value = 0; [c.value, c.step, Object.keys(Counter.prototype).join()].join(' ')");
    Run(cx, u"c.add(1, 2)");
    Run(cx, u"\n\nc.add.call({})");
    Run(cx, u"Counter()");

    jsval kept = JSVAL_NULL;
    JS_AddRoot(cx, &kept);
    if (JS_GetProperty(cx, global, "c", &kept)) {
        Run(cx, u"c = null; '\\u{1F600} ' + typeof c");
        JS_GC(cx);
        jsval sum = JSVAL_VOID;
        if (JS_CallFunctionName(cx, JSVAL_TO_OBJECT(kept), "add", 0, nullptr, &sum))
            std::printf("%d\n", JSVAL_IS_INT(sum) ? JSVAL_TO_INT(sum) : -1);
    }
    JS_RemoveRoot(cx, &kept);
    JS_DestroyContext(cx);
    JS_Finish(rt);
    return 0;
}
