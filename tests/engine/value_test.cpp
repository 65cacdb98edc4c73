#include <cmath>
#include <cstring>
#include <limits>

#include <rapidcheck.h>

#include "engine_fixture.h"

namespace
{

using EngineValue = EngineTest;

TEST(EngineWord, TagsAreTheDocumentedOnes)
{
    EXPECT_EQ(JSVAL_NULL, 0);
    EXPECT_EQ(JSVAL_VOID, static_cast<jsval>(-2147483647));
    EXPECT_EQ(INT_TO_JSVAL(2), 5);
    EXPECT_EQ(JSVAL_TRUE, 14);
    EXPECT_EQ(JSVAL_FALSE, 6);
    EXPECT_TRUE(JSVAL_IS_OBJECT(JSVAL_NULL));
    EXPECT_FALSE(JSVAL_IS_INT(JSVAL_VOID));
    EXPECT_TRUE(JSVAL_IS_INT(INT_TO_JSVAL(-1)));
    EXPECT_TRUE(JSVAL_IS_VOID(JSVAL_VOID));
    EXPECT_TRUE(JSVAL_IS_PRIMITIVE(JSVAL_NULL));
}

TEST(EngineWord, IntegersKeepTheirValueAtTheEnds)
{
    for (jsint i : {0, 1, -1, JSVAL_INT_MAX, JSVAL_INT_MIN})
        EXPECT_EQ(JSVAL_TO_INT(INT_TO_JSVAL(i)), i);
}

TEST_F(EngineValue, ANaNOfAnyBitsReachesScriptAsNaN)
{
    for (const std::uint64_t bits : {0xFFFE000000000008U, 0xFFF8800000000001U, 0x7FF0000000000001U}) {
        double number = 0;
        std::memcpy(&number, &bits, sizeof bits);
        jsval v = JSVAL_VOID;
        ASSERT_TRUE(JS_NewDoubleValue(cx, number, &v));
        ASSERT_TRUE(JS_SetProperty(cx, JS_GetGlobalObject(cx), "n", &v));
        EXPECT_EQ(Show("typeof n + (n !== n)"), "numbertrue");
    }
}

TEST_F(EngineValue, NumbersFromScriptAreIntegersWhenTheyFitAndDoublesOtherwise)
{
    struct Row
    {
        const char* text;
        bool is_int;
        double value;
    };
    const Row rows[] = {{"1+1", true, 2},
                        {"-5", true, -5},
                        {"1073741823", true, 1073741823},
                        {"-1073741823", true, -1073741823},
                        {"1073741824", false, 1073741824},
                        {"-1073741824", false, -1073741824},
                        {"2147483648", false, 2147483648.0},
                        {"0.5", false, 0.5},
                        {"1/0", false, std::numeric_limits<double>::infinity()}};
    for (const Row& row : rows) {
        jsval v = JSVAL_VOID;
        ASSERT_TRUE(Run(row.text, &v)) << row.text;
        EXPECT_EQ(JSVAL_IS_INT(v), row.is_int) << row.text;
        EXPECT_EQ(JSVAL_IS_DOUBLE(v), !row.is_int) << row.text;
        jsdouble d = 0;
        ASSERT_TRUE(JS_ValueToNumber(cx, v, &d));
        EXPECT_EQ(d, row.value) << row.text;
    }
}

TEST_F(EngineValue, MinusZeroStaysADouble)
{
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(Run("-0", &v));
    ASSERT_TRUE(JSVAL_IS_DOUBLE(v));
    EXPECT_TRUE(std::signbit(*JSVAL_TO_DOUBLE(v)));
    ASSERT_TRUE(JS_NewNumberValue(cx, -0.0, &v));
    EXPECT_TRUE(JSVAL_IS_DOUBLE(v));
}

TEST_F(EngineValue, ValuesWithoutAWordBecomeVoid)
{
    jsval v = JSVAL_NULL;
    ASSERT_TRUE(Run("Symbol('x')", &v));
    EXPECT_EQ(v, JSVAL_VOID);
    v = JSVAL_NULL;
    ASSERT_TRUE(Run("10n", &v));
    EXPECT_EQ(v, JSVAL_VOID);
    ASSERT_TRUE(Run("undefined", &v));
    EXPECT_EQ(v, JSVAL_VOID);
    ASSERT_TRUE(Run("null", &v));
    EXPECT_EQ(v, JSVAL_NULL);
}

TEST_F(EngineValue, ConversionsFollowScriptsRules)
{
    jsdouble d = 0;
    EXPECT_TRUE(JS_ValueToNumber(cx, JSVAL_VOID, &d));
    EXPECT_TRUE(std::isnan(d));
    EXPECT_TRUE(JS_ValueToNumber(cx, STRING_TO_JSVAL(JS_NewStringCopyZ(cx, "12")), &d));
    EXPECT_EQ(d, 12);
    EXPECT_TRUE(JS_ValueToNumber(cx, JSVAL_TRUE, &d));
    EXPECT_EQ(d, 1);
    jsint i = 0;
    EXPECT_TRUE(JS_ValueToInt32(cx, DOUBLE_TO_JSVAL(JS_NewDouble(cx, 4294967297.9)), &i));
    EXPECT_EQ(i, 1);
    JSBool b = JS_TRUE;
    EXPECT_TRUE(JS_ValueToBoolean(cx, INT_TO_JSVAL(0), &b));
    EXPECT_EQ(b, JS_FALSE);
    EXPECT_TRUE(JS_ValueToBoolean(cx, STRING_TO_JSVAL(JS_NewStringCopyZ(cx, "0")), &b));
    EXPECT_EQ(b, JS_TRUE);
    EXPECT_EQ(ShowWord(JSVAL_NULL), "null");
    EXPECT_EQ(ShowWord(JSVAL_VOID), "undefined");
    EXPECT_EQ(ShowWord(JSVAL_FALSE), "false");
}

TEST_F(EngineValue, AConversionThatThrowsFailsAndLeavesTheOutputAlone)
{
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(Run("({valueOf() { throw new Error('no number') }, toString() { throw new Error('no text') }})", &v));
    jsdouble d = 42;
    EXPECT_FALSE(JS_ValueToNumber(cx, v, &d));
    EXPECT_EQ(d, 42);
    EXPECT_EQ(JS_ValueToString(cx, v), nullptr);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].message, "Error: no number");
    EXPECT_EQ(reports[1].message, "Error: no text");
}

TEST_F(EngineValue, TypesAreToldApart)
{
    jsval v = JSVAL_VOID;
    EXPECT_EQ(JS_TypeOfValue(cx, v), JSTYPE_VOID);
    EXPECT_EQ(JS_TypeOfValue(cx, JSVAL_NULL), JSTYPE_OBJECT);
    EXPECT_EQ(JS_TypeOfValue(cx, JSVAL_TRUE), JSTYPE_BOOLEAN);
    EXPECT_EQ(JS_TypeOfValue(cx, INT_TO_JSVAL(1)), JSTYPE_NUMBER);
    ASSERT_TRUE(Run("(function(){})", &v));
    EXPECT_EQ(JS_TypeOfValue(cx, v), JSTYPE_FUNCTION);
    ASSERT_TRUE(Run("'x'", &v));
    EXPECT_EQ(JS_TypeOfValue(cx, v), JSTYPE_STRING);
}

TEST_F(EngineValue, DoublesSurviveSweepsOfThePoolAsLongAsTheyAreRooted)
{
    jsval kept = DOUBLE_TO_JSVAL(JS_NewDouble(cx, 0.25));
    jsdouble* bare = JS_NewDouble(cx, 0.75);
    ASSERT_TRUE(JS_AddNamedRoot(cx, &kept, "kept"));
    ASSERT_TRUE(JS_AddRoot(cx, &bare));
    for (int i = 0; i < 200; ++i) {
        ASSERT_TRUE(Run("0.5"));
        for (int n = 0; n < 600; ++n)
            JS_NewDouble(cx, n + 0.125);
        JS_GC(cx);
    }
    EXPECT_EQ(*JSVAL_TO_DOUBLE(kept), 0.25);
    EXPECT_EQ(*bare, 0.75);
    JS_RemoveRoot(cx, &kept);
    JS_RemoveRoot(cx, &bare);
}

TEST_F(EngineValue, ManyLiveDoublesKeepTheirValues)
{
    ASSERT_TRUE(JS_EnterLocalRootScope(cx));
    std::vector<jsdouble*> cells;
    for (int i = 0; i < 100000; ++i)
        cells.push_back(JS_NewDouble(cx, i + 0.5));
    for (int i = 0; i < 100000; ++i)
        ASSERT_EQ(*cells[static_cast<std::size_t>(i)], i + 0.5);
    JS_LeaveLocalRootScope(cx);
}

TEST_F(EngineValue, AnyNumberComesBackFromScriptUnchanged)
{
    ASSERT_TRUE(Run("function same(x) { return x }"));
    EXPECT_TRUE(rc::check([this](double d) {
        jsval arg = JSVAL_VOID;
        RC_ASSERT(JS_NewNumberValue(cx, d, &arg));
        jsval result = JSVAL_VOID;
        RC_ASSERT(JS_CallFunctionName(cx, nullptr, "same", 1, &arg, &result));
        jsdouble back = 0;
        RC_ASSERT(JS_ValueToNumber(cx, result, &back));
        RC_ASSERT(back == d || (std::isnan(d) && std::isnan(back)));
    }));
}

} // namespace
