// A program that is linked for fixed addresses has places of its own for the functions whose address it takes. The
// library must know the stubs in a class by these too.

#include "engine/jsapi.h"

int main()
{
    static const JSClass global = {"G", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    static const JSClass stubs = {"Stubs",          0,
                                  JS_PropertyStub,  JS_PropertyStub,
                                  JS_PropertyStub,  JS_PropertyStub,
                                  JS_EnumerateStub, JS_ResolveStub,
                                  JS_ConvertStub,   JS_FinalizeStub};
    JSContext* cx = JS_NewContext(nullptr, 8192);
    JS_SetGlobalObject(cx, JS_NewGlobal(cx, &global));
    const bool made = JS_NewObject(cx, &stubs, nullptr, nullptr) != nullptr;
    JS_DestroyContext(cx);
    return made ? 0 : 1;
}
