#include "script/script_values.h"
#include "script/value_conversion.h"
#include "tests/script/script_fixture.h"

#include <limits>

namespace
{

class ScriptValuesTest : public ScriptTest
{
protected:
    /// The native object behind a script value.
    template <typename Class> Class* Native(const wxString& text)
    {
        CJScriptLink* link = nullptr;
        EXPECT_TRUE(script.Evaluate(text, nullptr, link));
        return link ? dynamic_cast<Class*>(link->GetRootObject()) : nullptr;
    }

    wxString Thrown(const wxString& text) { return Show("try { " + text + "; 'nothing' } catch (e) { e.message }"); }
};

TEST_F(ScriptValuesTest, ScriptMakesAPointerOfNothing)
{
    auto* const pointer = Native<qxjsPointer>("var p = new wxObjectPtr(); p");
    ASSERT_NE(pointer, nullptr);
    EXPECT_EQ(pointer->GetValue(), nullptr);
    EXPECT_EQ(Show("(p instanceof wxObjectPtr) + '|' + p.StrToUpper('built in')"), "true|BUILT IN");
}

TEST_F(ScriptValuesTest, ScriptMakesASize)
{
    auto* const size = Native<qxjsSize_t>("var s = new size_t(12); s");
    ASSERT_NE(size, nullptr);
    EXPECT_EQ(size->GetValue(), 12u);
    EXPECT_EQ(Show("(s instanceof size_t) + '|' + s.FindStr('abc', 'c', true)"), "true|2");
}

struct SizeOf
{
    const char* name;
    const char* number;
    std::uint32_t value;
};

class ScriptSizeTest : public ScriptValuesTest, public ::testing::WithParamInterface<SizeOf>
{};

TEST_P(ScriptSizeTest, HoldsWhatFitsIntoIt)
{
    auto* const size = Native<qxjsSize_t>(wxString("var s = new size_t(") + GetParam().number + "); s");
    ASSERT_NE(size, nullptr);
    EXPECT_EQ(size->GetValue(), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Of, ScriptSizeTest,
    ::testing::Values(SizeOf{"Zero", "0", 0}, SizeOf{"Fraction", "2.9", 2},
                      SizeOf{"LargestInt", "2147483647", 2147483647u}, SizeOf{"PastInt", "2147483648", 2147483648u},
                      SizeOf{"Large", "3000000000", 3000000000u}, SizeOf{"Text", "'3000000000'", 3000000000u},
                      SizeOf{"Largest", "4294967295", 4294967295u},
                      SizeOf{"LargestAndAFraction", "4294967295.5", 4294967295u},
                      SizeOf{"TooLarge", "4294967296", 4294967295u}, SizeOf{"Infinity", "Infinity", 4294967295u},
                      SizeOf{"Negative", "-1", 4294967295u}, SizeOf{"NegativeFraction", "-0.5", 0},
                      SizeOf{"MostNegative", "-2147483648", 2147483648u},
                      SizeOf{"TooNegative", "-3000000000", 2147483648u}, SizeOf{"NotANumber", "NaN", 0},
                      SizeOf{"Undefined", "undefined", 0}),
    NameOfRow<SizeOf>);

TEST_F(ScriptValuesTest, TheConstructorsCheckTheirArguments)
{
    EXPECT_EQ(Thrown("new wxObjectPtr(1)"), "Bad argument count for function 'wxObjectPtr' (1 instead of 0)");
    EXPECT_EQ(Thrown("new size_t()"), "Bad argument count for function 'size_t' (0 instead of 1)");
    EXPECT_EQ(Thrown("new size_t(Object.create(null))"), "Argument 1: can not convert to int");
}

TEST_F(ScriptValuesTest, ScriptSeesNoPropertiesOfTheirOwn)
{
    EXPECT_EQ(Show("Object.keys(new wxObjectPtr()).length + Object.keys(new size_t(5)).length"), "0");
}

TEST_F(ScriptValuesTest, MinimalObjectsCannotBeMadeByScript)
{
    EXPECT_EQ(Show("typeof qxMinimalObject == 'undefined' || (function () {"
                   "try { new qxMinimalObject(); return false; } catch (e) { return true; } })()"),
              "true");
    EXPECT_TRUE(wxString(qxjsMinimal::m_JSMap.name) == "qxMinimalObject");
}

TEST_F(ScriptValuesTest, APointerPassesThroughScriptUntouched)
{
    wxObject object;
    jsval value = pwxObject_to_jsval(Context(), &object);
    ASSERT_TRUE(JS_DefineWideProperty(Context(), Global()->GetJSObject(), L"held", 4, value, nullptr, nullptr, 0));
    EXPECT_EQ(Show("var list = [held]; held = null; list[0] instanceof wxObjectPtr"), "true");
    wxObject* found = nullptr;
    EXPECT_TRUE(jsval_to_pwxObject(Context(), Value("list[0]"), found));
    EXPECT_EQ(found, &object);
}

TEST_F(ScriptValuesTest, ASizePassesThroughScriptUntouched)
{
    const std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
    jsval value = size_t_to_jsval(Context(), most);
    ASSERT_TRUE(JS_DefineWideProperty(Context(), Global()->GetJSObject(), L"held", 4, value, nullptr, nullptr, 0));
    auto* const size = Native<qxjsSize_t>("held");
    ASSERT_NE(size, nullptr);
    EXPECT_EQ(size->GetValue(), most);
    size->SetValue(3);
    EXPECT_EQ(Native<qxjsSize_t>("held")->GetValue(), 3u);
}

TEST_F(ScriptValuesTest, APointerOfTheHostIsReadWithItsNewValue)
{
    wxObject object;
    qxjsPointer carrier(nullptr);
    carrier.SetValue(&object);
    ASSERT_TRUE(script.CreateChild(carrier.GetJSLink(), Global(), "carrier", false, false));
    wxObject* found = nullptr;
    EXPECT_TRUE(jsval_to_pwxObject(Context(), Value("carrier"), found));
    EXPECT_EQ(found, &object);
}

TEST_F(ScriptValuesTest, APointerThatIsGoneIsNull)
{
    {
        qxjsPointer carrier(this);
        ASSERT_TRUE(script.CreateChild(carrier.GetJSLink(), Global(), "carrier", false, false));
        ASSERT_TRUE(script.Evaluate("var kept = carrier", nullptr));
    }
    wxObject* found = &global;
    EXPECT_TRUE(jsval_to_pwxObject(Context(), Value("kept"), found));
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(log.Errors(), Texts{"Failed to convert jsobject to pointer. C object has been deleted ?"});
}

TEST_F(ScriptValuesTest, WithoutAHandleNoValueIsMade)
{
    JSRuntime* const runtime = JS_NewRuntime(0);
    JSContext* const bare = JS_NewContext(runtime, 0);
    EXPECT_TRUE(JSVAL_IS_NULL(size_t_to_jsval(bare, 1)));
    EXPECT_TRUE(JSVAL_IS_NULL(pwxObject_to_jsval(bare, &global)));
    const Texts expected = {"Failed to convert size_t to jsval !!", "Failed to convert pwxObject to jsval !!"};
    EXPECT_EQ(log.Errors(), expected);
    JS_DestroyContext(bare);
    JS_Finish(runtime);
}

TEST_F(ScriptValuesTest, AnArrayOfTooManyElementsIsRefusedUnread)
{
    wxArrayInt numbers;
    numbers.Add(7);
    EXPECT_FALSE(jsval_to_wxArrayInt(Context(), Value("var long = []; long.length = 4294967295; long"), numbers));
    EXPECT_FALSE(jsval_to_wxArrayInt(Context(), Value("long.length = 10000001; long"), numbers));
    EXPECT_EQ(numbers.size(), 1u);
    EXPECT_TRUE(jsval_to_wxArrayInt(Context(), Value("long.length = 1000; long"), numbers));
    EXPECT_EQ(numbers.size(), 1000u);
}

TEST_F(ScriptValuesTest, ValuesAreDeletedWithTheirScriptObjects)
{
    JS_GC(Context());
    const std::size_t before = JS_CountHostObjects();
    ASSERT_TRUE(script.Evaluate("for (var i = 0; i < 1000; ++i) { new size_t(i); new wxObjectPtr(); }", nullptr));
    JS_GC(Context());
    EXPECT_LE(JS_CountHostObjects(), before + 2);
}

} // namespace
