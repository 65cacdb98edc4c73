#include "engine_fixture.h"

namespace
{

using EngineObject = EngineTest;

constexpr JSClass kPlain = {"Plain", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
constexpr JSClass kOther = {"Other", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};

TEST_F(EngineObject, PropertiesAreReadWrittenFoundAndDeletedByAnyKindOfName)
{
    JSObject* o = JS_DefineObject(cx, JS_GetGlobalObject(cx), "o", nullptr, nullptr, JSPROP_ENUMERATE);
    jsval v = INT_TO_JSVAL(5);
    ASSERT_TRUE(JS_SetProperty(cx, o, "n\xE9", &v));
    v = INT_TO_JSVAL(6);
    ASSERT_TRUE(JS_SetUCProperty(cx, o, u"a\0b", 3, &v));
    v = INT_TO_JSVAL(7);
    ASSERT_TRUE(JS_SetWideProperty(cx, o, L"\U0001F600", 1, &v));
    EXPECT_EQ(Show("o['n\\xe9'] + o['a\\0b'] + o['\\u{1F600}']"), "18");
    ASSERT_TRUE(JS_GetWideProperty(cx, o, L"n\xE9", 2, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(5));
    ASSERT_TRUE(JS_GetUCProperty(cx, o, u"\U0001F600", 2, &v));
    EXPECT_EQ(v, INT_TO_JSVAL(7));
    ASSERT_TRUE(JS_GetProperty(cx, o, "missing", &v));
    EXPECT_EQ(v, JSVAL_VOID);
    JSBool found = JS_FALSE;
    ASSERT_TRUE(JS_HasProperty(cx, o, "toString", &found));
    EXPECT_TRUE(found);
    ASSERT_TRUE(JS_HasUCProperty(cx, o, u"missing", 7, &found));
    EXPECT_FALSE(found);
    ASSERT_TRUE(JS_DeleteWideProperty2(cx, o, L"\U0001F600", 1, &v));
    EXPECT_EQ(v, JSVAL_TRUE);
    ASSERT_TRUE(JS_DeleteUCProperty2(cx, o, u"missing", 7, &v));
    EXPECT_EQ(v, JSVAL_TRUE);
    EXPECT_EQ(Show("Object.keys(o).length"), "2");
}

TEST_F(EngineObject, AttributesAreKept)
{
    JSObject* o = JS_DefineObject(cx, JS_GetGlobalObject(cx), "o", nullptr, nullptr, 0);
    ASSERT_TRUE(JS_DefineProperty(cx, o, "shown", INT_TO_JSVAL(1), nullptr, nullptr, JSPROP_ENUMERATE | 0x40));
    ASSERT_TRUE(
        JS_DefineUCProperty(cx, o, u"fixed", 5, INT_TO_JSVAL(2), nullptr, nullptr, JSPROP_READONLY | JSPROP_PERMANENT));
    ASSERT_TRUE(JS_DefineWideProperty(cx, o, L"hidden", 6, INT_TO_JSVAL(3), nullptr, nullptr, 0));
    EXPECT_EQ(Show("Object.keys(o).join() + (delete o.fixed) + (o.fixed = 9, o.fixed) + o.hidden"), "shownfalse23");
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(JS_DeleteProperty2(cx, o, "fixed", &v));
    EXPECT_EQ(v, JSVAL_FALSE);
}

TEST_F(EngineObject, AGetterThatThrowsFailsTheRead)
{
    jsval o = JSVAL_VOID;
    ASSERT_TRUE(Run("({get p() { throw new Error('no') }, set p(v) { throw new Error('never') }})", &o));
    jsval v = INT_TO_JSVAL(1);
    EXPECT_FALSE(JS_GetProperty(cx, JSVAL_TO_OBJECT(o), "p", &v));
    EXPECT_EQ(v, INT_TO_JSVAL(1));
    EXPECT_FALSE(JS_SetProperty(cx, JSVAL_TO_OBJECT(o), "p", &v));
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[1].message, "Error: never");
}

TEST_F(EngineObject, PrivateDataIsForObjectsOfHostClasses)
{
    int data = 0;
    JSObject* o = JS_NewObject(cx, &kPlain, nullptr, nullptr);
    EXPECT_EQ(JS_GetPrivate(cx, o), nullptr);
    ASSERT_TRUE(JS_SetPrivate(cx, o, &data));
    EXPECT_EQ(JS_GetPrivate(cx, o), &data);
    EXPECT_EQ(JS_GetInstancePrivate(cx, o, &kPlain, nullptr), &data);
    EXPECT_EQ(JS_GetInstancePrivate(cx, o, &kOther, nullptr), nullptr);
    JSObject* plain = JS_NewObject(cx, nullptr, nullptr, nullptr);
    EXPECT_FALSE(JS_SetPrivate(cx, plain, &data));
    EXPECT_EQ(JS_GetPrivate(cx, plain), nullptr);
    EXPECT_EQ(JS_GetPrivate(cx, nullptr), nullptr);
    jsval v = JSVAL_VOID;
    for (const char* text : {"[]", "(function(){})", "new Proxy({}, {})", "Math", "/x/"}) {
        ASSERT_TRUE(Run(text, &v));
        EXPECT_EQ(JS_GetPrivate(cx, JSVAL_TO_OBJECT(v)), nullptr) << text;
    }
}

TEST_F(EngineObject, AClassRecordMayGoAwayWhileItsObjectsLive)
{
    JSObject* o = nullptr;
    {
        auto name = std::make_unique<std::string>("Brief");
        auto clasp = std::make_unique<JSClass>();
        clasp->name = name->c_str();
        o = JS_DefineObject(cx, JS_GetGlobalObject(cx), "o", clasp.get(), nullptr, 0);
    }
    ASSERT_NE(o, nullptr);
    constexpr JSClass kBrief = {"Brief", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    EXPECT_TRUE(JS_InstanceOf(cx, o, &kBrief, nullptr)) << "equal records are the same class";
    EXPECT_FALSE(JS_InstanceOf(cx, o, &kOther, nullptr));
}

TEST_F(EngineObject, AClassWithHooksThatAreNeverCalledIsRefused)
{
    JSClass clasp = kPlain;
    clasp.resolve = [](JSContext*, JSObject*, jsval) { return JS_TRUE; };
    EXPECT_EQ(JS_NewObject(cx, &clasp, nullptr, nullptr), nullptr);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "Error: class Plain has hooks that are not supported");
}

TEST_F(EngineObject, PrototypesAreGivenReadAndChanged)
{
    JSObject* proto = JS_NewObject(cx, nullptr, nullptr, nullptr);
    JSObject* o = JS_NewObject(cx, &kPlain, proto, nullptr);
    EXPECT_EQ(JS_GetPrototype(cx, o), proto);
    JSObject* second = JS_NewObject(cx, nullptr, proto, nullptr);
    ASSERT_TRUE(JS_SetPrototype(cx, o, second));
    EXPECT_EQ(JS_GetPrototype(cx, o), second);
    EXPECT_EQ(JS_GetPrototype(cx, second), proto);
}

TEST_F(EngineObject, EnumerationGivesOwnEnumerableNamesInOrder)
{
    jsval o = JSVAL_VOID;
    ASSERT_TRUE(Run("var o = Object.create({inherited: 1}); o.b = 1; o.a = 2; o[3] = 3; o[-1] = 4; o[4294967294] = 5; "
                    "o[Symbol('s')] = 6; Object.defineProperty(o, 'hidden', {value: 7}); o",
                    &o));
    JSIdArray* ids = JS_Enumerate(cx, JSVAL_TO_OBJECT(o));
    ASSERT_NE(ids, nullptr);
    JS_GC(cx);
    std::string names;
    for (jsint i = 0; i < ids->length; ++i) {
        jsval v = JSVAL_VOID;
        ASSERT_TRUE(JS_IdToValue(cx, ids->vector[i], &v));
        names += ShowWord(v) + (JSVAL_IS_INT(v) ? "# " : " ");
    }
    JS_DestroyIdArray(cx, ids);
    EXPECT_EQ(names, "3# 4294967294 b a -1 ");
}

TEST_F(EngineObject, ClearingAScopeRemovesEverythingThatCanBeRemoved)
{
    jsval o = JSVAL_VOID;
    ASSERT_TRUE(Run("var o = {a: 1, [Symbol('s')]: 2, 7: 3}; Object.defineProperty(o, 'stays', {value: 4, writable: "
                    "true}); Object.defineProperty(o, 'fixed', {value: 5}); o",
                    &o));
    JS_ClearScope(cx, JSVAL_TO_OBJECT(o));
    EXPECT_EQ(Show("Reflect.ownKeys(o).map(String).join() + o.stays + o.fixed"), "stays,fixedundefined5");
    EXPECT_TRUE(reports.empty());
}

TEST_F(EngineObject, ClearingAGlobalLeavesTheStandardNames)
{
    ASSERT_TRUE(Run("var v = 1; function f() {} loose = 2; Array.mark = 1; parseInt('1')"));
    JS_ClearScope(cx, JS_GetGlobalObject(cx));
    EXPECT_EQ(Show("typeof v + typeof f + typeof loose + typeof Array + typeof parseInt + typeof Math + typeof eval"),
              "undefinedundefinedundefinedfunctionfunctionobjectfunction");
    EXPECT_TRUE(reports.empty());
}

TEST_F(EngineObject, ArraysAreMadeReadAndWritten)
{
    const jsval values[] = {INT_TO_JSVAL(1), STRING_TO_JSVAL(JS_NewUCStringCopyZ(cx, u"two")), JSVAL_NULL};
    JSObject* array = JS_NewArrayObject(cx, 3, values);
    ASSERT_TRUE(JS_IsArrayObject(cx, array));
    EXPECT_FALSE(JS_IsArrayObject(cx, JS_GetGlobalObject(cx)));
    jsuint length = 0;
    ASSERT_TRUE(JS_GetArrayLength(cx, array, &length));
    EXPECT_EQ(length, 3u);
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(JS_GetElement(cx, array, 1, &v));
    EXPECT_EQ(ShowWord(v), "two");
    ASSERT_TRUE(JS_GetElement(cx, array, 99, &v));
    EXPECT_EQ(v, JSVAL_VOID);
    v = JSVAL_TRUE;
    ASSERT_TRUE(JS_SetElement(cx, array, 5, &v));
    EXPECT_EQ(ShowWord(OBJECT_TO_JSVAL(array)), "1,two,,,,true");
    ASSERT_TRUE(JS_SetArrayLength(cx, array, 2));
    EXPECT_EQ(ShowWord(OBJECT_TO_JSVAL(array)), "1,two");
    JSObject* holes = JS_NewArrayObject(cx, 4, nullptr);
    ASSERT_TRUE(JS_GetArrayLength(cx, holes, &length));
    EXPECT_EQ(length, 4u);
}

TEST_F(EngineObject, ContextsKeepTheirNamesApartButMayShareObjects)
{
    JSContext* other = NewContext();
    ASSERT_TRUE(Run("var mine = {x: 1}"));
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(JS_GetProperty(other, JS_GetGlobalObject(other), "mine", &v));
    EXPECT_EQ(v, JSVAL_VOID);
    ASSERT_TRUE(JS_GetProperty(cx, JS_GetGlobalObject(cx), "mine", &v));
    ASSERT_TRUE(JS_SetProperty(other, JS_GetGlobalObject(other), "shared", &v));
    ASSERT_TRUE(JS_EvaluateUCScript(other, nullptr, u"shared.x = 2", 12, "local", 0, nullptr));
    JS_DestroyContext(other);
    EXPECT_EQ(Show("mine.x"), "2");
}

} // namespace
