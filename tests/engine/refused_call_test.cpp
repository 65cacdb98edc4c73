#include <thread>

#include "engine_fixture.h"

namespace
{

// What the calls are given: words of a context of another thread, none of which may change.
struct Words
{
    JSContext* cx;
    JSObject* object;
    JSObject* array;
    JSString* text;
    JSFunction* function;
    JSScript* script;
    jsval value = INT_TO_JSVAL(5);
};

struct Call
{
    const char* name;
    const char* reportedAs; ///< variants of a call share a name in reports
    bool (*failed)(Words& words);
};

JSBool NoNative(JSContext*, JSObject*, uintN, jsval*, jsval*)
{
    return JS_TRUE;
}

constexpr JSPropertySpec kNoProperties[] = {{nullptr, 0, 0, nullptr, nullptr}};
constexpr JSFunctionSpec kNoFunctions[] = {{nullptr, nullptr, 0, 0, 0}};
constexpr JSClass kClass = {"Plain", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};

const Call kCalls[] = {
    {"JS_SetProperty", "JS_SetProperty", [](Words& w) { return !JS_SetProperty(w.cx, w.object, "x", &w.value); }},
    {"JS_SetUCProperty", "JS_SetProperty",
     [](Words& w) { return !JS_SetUCProperty(w.cx, w.object, u"x", 1, &w.value); }},
    {"JS_SetWideProperty", "JS_SetProperty",
     [](Words& w) { return !JS_SetWideProperty(w.cx, w.object, L"x", 1, &w.value); }},
    {"JS_GetProperty", "JS_GetProperty", [](Words& w) { return !JS_GetProperty(w.cx, w.object, "x", &w.value); }},
    {"JS_GetUCProperty", "JS_GetProperty",
     [](Words& w) { return !JS_GetUCProperty(w.cx, w.object, u"x", 1, &w.value); }},
    {"JS_GetWideProperty", "JS_GetProperty",
     [](Words& w) { return !JS_GetWideProperty(w.cx, w.object, L"x", 1, &w.value); }},
    {"JS_HasProperty", "JS_HasProperty",
     [](Words& w) {
         JSBool found = JS_FALSE;
         return !JS_HasProperty(w.cx, w.object, "x", &found);
     }},
    {"JS_HasUCProperty", "JS_HasProperty",
     [](Words& w) {
         JSBool found = JS_FALSE;
         return !JS_HasUCProperty(w.cx, w.object, u"x", 1, &found);
     }},
    {"JS_DeleteProperty2", "JS_DeleteProperty2",
     [](Words& w) { return !JS_DeleteProperty2(w.cx, w.object, "x", &w.value); }},
    {"JS_DeleteUCProperty2", "JS_DeleteProperty2",
     [](Words& w) { return !JS_DeleteUCProperty2(w.cx, w.object, u"x", 1, &w.value); }},
    {"JS_DeleteWideProperty2", "JS_DeleteProperty2",
     [](Words& w) { return !JS_DeleteWideProperty2(w.cx, w.object, L"x", 1, &w.value); }},
    {"JS_DefineProperty", "JS_DefineProperty",
     [](Words& w) { return !JS_DefineProperty(w.cx, w.object, "x", w.value, nullptr, nullptr, 0); }},
    {"JS_DefineUCProperty", "JS_DefineProperty",
     [](Words& w) { return !JS_DefineUCProperty(w.cx, w.object, u"x", 1, w.value, nullptr, nullptr, 0); }},
    {"JS_DefineWideProperty", "JS_DefineProperty",
     [](Words& w) { return !JS_DefineWideProperty(w.cx, w.object, L"x", 1, w.value, nullptr, nullptr, 0); }},
    {"JS_DefinePropertyWithTinyId", "JS_DefineProperty",
     [](Words& w) { return !JS_DefinePropertyWithTinyId(w.cx, w.object, "x", 1, w.value, nullptr, nullptr, 0); }},
    {"JS_DefineProperties", "JS_DefineProperties",
     [](Words& w) { return !JS_DefineProperties(w.cx, w.object, kNoProperties); }},
    {"JS_DefineFunctions", "JS_DefineFunctions",
     [](Words& w) { return !JS_DefineFunctions(w.cx, w.object, kNoFunctions); }},
    {"JS_DefineFunction", "JS_DefineFunction",
     [](Words& w) { return !JS_DefineFunction(w.cx, w.object, "f", NoNative, 0, 0); }},
    {"JS_DefineObject", "JS_DefineObject",
     [](Words& w) { return !JS_DefineObject(w.cx, w.object, "o", &kClass, nullptr, 0); }},
    {"JS_InitClass", "JS_InitClass",
     [](Words& w) {
         return !JS_InitClass(w.cx, w.object, nullptr, &kClass, NoNative, 0, nullptr, nullptr, nullptr, nullptr);
     }},
    {"JS_NewObject", "JS_NewObject", [](Words& w) { return !JS_NewObject(w.cx, &kClass, nullptr, nullptr); }},
    {"JS_NewGlobal", "JS_NewGlobal", [](Words& w) { return !JS_NewGlobal(w.cx, &kClass); }},
    {"JS_GetClass", "JS_GetClass", [](Words& w) { return !JS_GetClass(w.cx, w.object); }},
    {"JS_SetPrivate", "JS_SetPrivate", [](Words& w) { return !JS_SetPrivate(w.cx, w.object, nullptr); }},
    {"JS_GetParent", "JS_GetParent", [](Words& w) { return !JS_GetParent(w.cx, w.array); }},
    {"JS_SetParent", "JS_SetParent", [](Words& w) { return !JS_SetParent(w.cx, w.array, w.object); }},
    {"JS_GetPrototype", "JS_GetPrototype", [](Words& w) { return !JS_GetPrototype(w.cx, w.array); }},
    {"JS_SetPrototype", "JS_SetPrototype", [](Words& w) { return !JS_SetPrototype(w.cx, w.array, nullptr); }},
    {"JS_InstanceOf", "JS_InstanceOf", [](Words& w) { return !JS_InstanceOf(w.cx, w.object, &kClass, nullptr); }},
    {"JS_Enumerate", "JS_Enumerate", [](Words& w) { return !JS_Enumerate(w.cx, w.object); }},
    {"JS_IdToValue", "JS_IdToValue", [](Words& w) { return !JS_IdToValue(w.cx, jsid(), &w.value); }},
    {"JS_NewArrayObject", "JS_NewArrayObject", [](Words& w) { return !JS_NewArrayObject(w.cx, 0, nullptr); }},
    {"JS_IsArrayObject", "JS_IsArrayObject", [](Words& w) { return !JS_IsArrayObject(w.cx, w.array); }},
    {"JS_GetArrayLength", "JS_GetArrayLength",
     [](Words& w) {
         jsuint length = 0;
         return !JS_GetArrayLength(w.cx, w.array, &length);
     }},
    {"JS_SetArrayLength", "JS_SetArrayLength", [](Words& w) { return !JS_SetArrayLength(w.cx, w.array, 9); }},
    {"JS_GetElement", "JS_GetElement", [](Words& w) { return !JS_GetElement(w.cx, w.array, 0, &w.value); }},
    {"JS_SetElement", "JS_SetElement", [](Words& w) { return !JS_SetElement(w.cx, w.array, 0, &w.value); }},
    {"JS_CompileUCScript", "JS_CompileUCScript",
     [](Words& w) { return !JS_CompileUCScript(w.cx, nullptr, u"1", 1, "t", 1); }},
    {"JS_CompileWide", "JS_CompileUCScript", [](Words& w) { return !JS_CompileWide(w.cx, nullptr, L"1", 1, "t", 1); }},
    {"JS_EvaluateWide", "JS_EvaluateUCScript",
     [](Words& w) { return !JS_EvaluateWide(w.cx, nullptr, L"1", 1, "t", 1, &w.value); }},
    {"JS_ExecuteScript", "JS_ExecuteScript",
     [](Words& w) { return !JS_ExecuteScript(w.cx, w.object, w.script, &w.value); }},
    {"JS_CallFunction", "JS_CallFunctionValue",
     [](Words& w) { return !JS_CallFunction(w.cx, w.object, w.function, 0, nullptr, &w.value); }},
    {"JS_CallFunctionValue", "JS_CallFunctionValue",
     [](Words& w) { return !JS_CallFunctionValue(w.cx, w.object, w.value, 0, nullptr, &w.value); }},
    {"JS_CallFunctionName", "JS_CallFunctionName",
     [](Words& w) { return !JS_CallFunctionName(w.cx, w.object, "f", 0, nullptr, &w.value); }},
    {"JS_ValueToFunction", "JS_ValueToFunction", [](Words& w) { return !JS_ValueToFunction(w.cx, w.value); }},
    {"JS_ObjectIsFunction", "JS_ObjectIsFunction", [](Words& w) { return !JS_ObjectIsFunction(w.cx, w.object); }},
    {"JS_NewFunction", "JS_NewFunction", [](Words& w) { return !JS_NewFunction(w.cx, NoNative, 0, 0, nullptr, "f"); }},
    {"JS_ValueToNumber", "JS_ValueToNumber",
     [](Words& w) {
         jsdouble number = 0;
         return !JS_ValueToNumber(w.cx, w.value, &number);
     }},
    {"JS_ValueToInt32", "JS_ValueToNumber",
     [](Words& w) {
         jsint number = 0;
         return !JS_ValueToInt32(w.cx, STRING_TO_JSVAL(w.text), &number);
     }},
    {"JS_ValueToObject", "JS_ValueToObject",
     [](Words& w) {
         JSObject* object = nullptr;
         return !JS_ValueToObject(w.cx, w.value, &object);
     }},
    {"JS_NewDoubleValue", "JS_NewDoubleValue", [](Words& w) { return !JS_NewDoubleValue(w.cx, 1.5, &w.value); }},
    {"JS_NewNumberValue", "JS_NewNumberValue", [](Words& w) { return !JS_NewNumberValue(w.cx, 1.5, &w.value); }},
    {"JS_NewStringCopyZ", "JS_NewStringCopyN", [](Words& w) { return !JS_NewStringCopyZ(w.cx, "x"); }},
    {"JS_NewStringFromWide", "JS_NewStringFromWide", [](Words& w) { return !JS_NewStringFromWide(w.cx, L"x", 1); }},
    {"JS_InternUCString", "JS_InternUCStringN", [](Words& w) { return !JS_InternUCString(w.cx, u"x"); }},
    {"JS_InternString", "JS_InternUCStringN", [](Words& w) { return !JS_InternString(w.cx, "x"); }},
    {"JS_StringToWide", "JS_StringToWide",
     [](Words& w) {
         std::wstring wide;
         return !JS_StringToWide(w.cx, w.text, wide);
     }},
    {"JS_StringToUtf8", "JS_StringToUtf8", [](Words& w) { return JS_StringToUtf8(w.cx, w.text).empty(); }},
    {"JS_IsExceptionPending", "JS_IsExceptionPending", [](Words& w) { return !JS_IsExceptionPending(w.cx); }},
    {"JS_GetPendingException", "JS_GetPendingException",
     [](Words& w) { return !JS_GetPendingException(w.cx, &w.value); }},
    {"JS_ErrorFromException", "JS_ErrorFromException", [](Words& w) { return !JS_ErrorFromException(w.cx, w.value); }},
    {"JS_AddNamedRoot", "JS_AddNamedRoot", [](Words& w) { return !JS_AddNamedRoot(w.cx, &w.value, "value"); }},
    {"JS_RemoveRoot", "JS_RemoveRoot", [](Words& w) { return !JS_RemoveRoot(w.cx, &w.value); }},
    {"JS_EnterLocalRootScope", "JS_EnterLocalRootScope", [](Words& w) { return !JS_EnterLocalRootScope(w.cx); }},
    {"JS_IsConstructing", "JS_IsConstructing", [](Words& w) { return !JS_IsConstructing(w.cx); }},
    {"JS_GetTimeLimit", "JS_GetTimeLimit", [](Words& w) { return JS_GetTimeLimit(w.cx) == 0; }},
    {"JS_GetMemoryLimit", "JS_GetMemoryLimit", [](Words& w) { return JS_GetMemoryLimit(w.cx) == 0; }},
};

// Calls without a result.
const Call kOrders[] = {
    {"JS_ReportError", "JS_ReportError",
     [](Words& w) {
         JS_ReportError(w.cx, "no");
         return true;
     }},
    {"JS_ReportErrorWide", "JS_ReportError",
     [](Words& w) {
         JS_ReportErrorWide(w.cx, L"no", 2);
         return true;
     }},
    {"JS_ReportOutOfMemory", "JS_ReportOutOfMemory",
     [](Words& w) {
         JS_ReportOutOfMemory(w.cx);
         return true;
     }},
    {"JS_SetPendingException", "JS_SetPendingException",
     [](Words& w) {
         JS_SetPendingException(w.cx, w.value);
         return true;
     }},
    {"JS_ClearScope", "JS_ClearScope",
     [](Words& w) {
         JS_ClearScope(w.cx, w.object);
         return true;
     }},
    {"JS_SetGlobalObject", "JS_SetGlobalObject",
     [](Words& w) {
         JS_SetGlobalObject(w.cx, nullptr);
         return true;
     }},
    {"JS_SetTimeLimit", "JS_SetTimeLimit",
     [](Words& w) {
         JS_SetTimeLimit(w.cx, 1);
         return true;
     }},
    {"JS_SetMemoryLimit", "JS_SetMemoryLimit",
     [](Words& w) {
         JS_SetMemoryLimit(w.cx, 1);
         return true;
     }},
};

void PrintTo(const Call& call, std::ostream* out)
{
    *out << call.name;
}

class RefusedCall : public EngineTest, public ::testing::WithParamInterface<Call>
{
protected:
    RefusedCall()
    {
        Run("var x = 7; var a = [1, 2]; function f() { x = 8; }");
        words.cx = cx;
        words.object = JS_GetGlobalObject(cx);
        jsval array = JSVAL_NULL;
        JS_GetProperty(cx, words.object, "a", &array);
        words.array = JSVAL_TO_OBJECT(array);
        words.text = JS_NewStringCopyZ(cx, "12");
        jsval function = JSVAL_NULL;
        JS_GetProperty(cx, words.object, "f", &function);
        words.function = JS_ValueToFunction(cx, function);
        words.script = JS_CompileUCScript(cx, nullptr, u"x = 9", 5, "local", 1);
    }

    ~RefusedCall() override { JS_DestroyScript(cx, words.script); }

    Words words{};
};

TEST_P(RefusedCall, FromAnotherThreadFailsIsReportedByNameAndChangesNothing)
{
    bool failed = false;
    std::thread([&] { failed = GetParam().failed(words); }).join();
    EXPECT_TRUE(failed);
    const std::vector<std::string> misuse = TakeMisuse();
    ASSERT_EQ(misuse.size(), 1u);
    EXPECT_EQ(misuse[0],
              std::string(GetParam().reportedAs) + " called from another thread than the context's; refused");
    EXPECT_EQ(words.value, INT_TO_JSVAL(5));
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(Show("x + ',' + a + ',' + typeof o"), "7,1,2,undefined");
}

std::string NameOf(const ::testing::TestParamInfo<Call>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Calls, RefusedCall, ::testing::ValuesIn(kCalls), NameOf);
INSTANTIATE_TEST_SUITE_P(Orders, RefusedCall, ::testing::ValuesIn(kOrders), NameOf);

} // namespace
