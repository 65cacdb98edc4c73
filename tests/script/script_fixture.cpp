#include "tests/script/script_fixture.h"

#include <array>
#include <utility>

namespace
{

constexpr size_t MostNatives = 8;

std::array<Native, MostNatives> g_natives;
size_t g_nativeCount = 0;

template <size_t Index> JSBool CallNative(JSContext* cx, JSObject*, uintN argc, jsval* argv, jsval* rval)
{
    return g_natives[Index](cx, argc, argv, rval);
}

template <size_t... Index> constexpr std::array<JSNative, MostNatives> MakeEntries(std::index_sequence<Index...>)
{
    return {CallNative<Index>...};
}

constexpr std::array<JSNative, MostNatives> Entries = MakeEntries(std::make_index_sequence<MostNatives>());

} // namespace

void DefineNative(JSContext* cx, JSObject* object, const char* name, Native native)
{
    ASSERT_LT(g_nativeCount, MostNatives);
    const size_t index = g_nativeCount++;
    g_natives[index] = std::move(native);
    const JSFunctionSpec functions[] = {{name, Entries[index], 0, 0, 0}, {nullptr, nullptr, 0, 0, 0}};
    ASSERT_TRUE(JS_DefineFunctions(cx, object ? object : JS_GetGlobalObject(cx), functions));
}

void ForgetNatives()
{
    g_natives = {};
    g_nativeCount = 0;
}

jsval ScriptTest::Value(const wxString& text)
{
    jsval value = JSVAL_VOID;
    const std::wstring wide = text.ToStdWstring();
    EXPECT_TRUE(JS_EvaluateWide(Context(), nullptr, wide.data(), wide.size(), "local", 0, &value));
    return value;
}

wxString Show(CJScript& script, const wxString& text)
{
    wxString value;
    return script.Evaluate(text, nullptr, value) ? value : wxString("(failed)");
}
