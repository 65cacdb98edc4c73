// The library as a plugin: everything it needs, the engine too, comes and goes with it.

#include "engine/jsapi.h"

extern "C" __attribute__((visibility("default"))) int qxp_probe_run()
{
    constexpr JSClass kGlobal = {"G", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    JSContext* cx = JS_NewContext(nullptr, 8192);
    JS_SetGlobalObject(cx, JS_NewGlobal(cx, &kGlobal));
    jsval v = JSVAL_VOID;
    const bool good = JS_EvaluateUCScript(cx, nullptr, u"6 * 7", 5, "p", 0, &v) && v == INT_TO_JSVAL(42);
    JS_DestroyContext(cx);
    return good ? 0 : 1;
}
