#include <cstring>
#include <limits>

#include "engine_fixture.h"

namespace
{

int g_live = 0;

struct Counter
{
    Counter() { ++g_live; }
    ~Counter() { --g_live; }
    double value = 0;
};

void FinalizeCounter(JSContext* cx, JSObject* obj)
{
    delete static_cast<Counter*>(JS_GetPrivate(cx, obj));
}

constexpr JSClass kCounter = {"Counter", 0,       nullptr, nullptr, nullptr,
                              nullptr,   nullptr, nullptr, nullptr, FinalizeCounter};

enum
{
    kValue = -3,
    kDouble = 200,
    kName = 7
};

JSBool Construct(JSContext* cx, JSObject* obj, uintN argc, jsval* argv, jsval* rval)
{
    if (!JS_IsConstructing(cx)) {
        *rval = STRING_TO_JSVAL(JS_NewUCStringCopyZ(cx, u"called"));
        return JS_TRUE;
    }
    auto* counter = new Counter;
    JS_SetPrivate(cx, obj, counter);
    if (argc > 0 && !JS_ValueToNumber(cx, argv[0], &counter->value))
        return JS_FALSE;
    return JS_TRUE;
}

JSBool Get(JSContext* cx, JSObject* obj, jsval id, jsval* vp)
{
    auto* counter = static_cast<Counter*>(JS_GetInstancePrivate(cx, obj, &kCounter, nullptr));
    if (!counter)
        return JS_TRUE;
    if (JSVAL_IS_STRING(id)) {
        *vp = id;
        return JS_TRUE;
    }
    return JS_NewDoubleValue(cx, JSVAL_TO_INT(id) == kDouble ? counter->value * 2 : counter->value, vp);
}

JSBool Set(JSContext* cx, JSObject* obj, jsval id, jsval* vp)
{
    auto* counter = static_cast<Counter*>(JS_GetPrivate(cx, obj));
    EXPECT_EQ(id, INT_TO_JSVAL(kValue));
    return counter && JS_ValueToNumber(cx, *vp, &counter->value);
}

JSBool Add(JSContext* cx, JSObject* obj, uintN, jsval* argv, jsval* rval)
{
    auto* counter = static_cast<Counter*>(JS_GetInstancePrivate(cx, obj, &kCounter, argv));
    double by = 0;
    if (!counter || !JS_ValueToNumber(cx, argv[0], &by))
        return JS_FALSE;
    counter->value += by;
    return JS_NewDoubleValue(cx, counter->value, rval);
}

JSBool Name(JSContext* cx, JSObject*, uintN argc, jsval* argv, jsval* rval)
{
    JSFunction* running = JS_ValueToFunction(cx, JS_ARGV_CALLEE(argv));
    const std::string text =
        std::string(JS_GetFunctionName(running)) + std::to_string(argc) + (JSVAL_IS_VOID(argv[2]) ? "void" : "given");
    *rval = STRING_TO_JSVAL(JS_NewStringCopyZ(cx, text.c_str()));
    return JS_TRUE;
}

constexpr JSPropertySpec kProperties[] = {{"value", kValue, JSPROP_ENUMERATE | JSPROP_PERMANENT, Get, Set},
                                          {"twice", kDouble, JSPROP_ENUMERATE | JSPROP_READONLY, Get, Set},
                                          {"plain", 0, JSPROP_ENUMERATE, nullptr, nullptr},
                                          {nullptr, 0, 0, nullptr, nullptr}};
constexpr JSFunctionSpec kFunctions[] = {{"add", Add, 1, 0, 0}, {"name", Name, 3, 0, 0}, {nullptr, nullptr, 0, 0, 0}};
constexpr JSFunctionSpec kStatics[] = {{"create", Name, 3, 0, 0}, {nullptr, nullptr, 0, 0, 0}};

class EngineClass : public EngineTest
{
protected:
    EngineClass()
    {
        proto = JS_InitClass(cx, JS_GetGlobalObject(cx), nullptr, &kCounter, Construct, 1, kProperties, kFunctions,
                             nullptr, kStatics);
        EXPECT_NE(proto, nullptr);
        EXPECT_EQ(g_live, 0);
    }
    ~EngineClass() override
    {
        JS_SetGlobalObject(cx, nullptr);
        JS_GC(cx);
        EXPECT_EQ(g_live, 0);
    }
    JSObject* proto;
};

TEST_F(EngineClass, ScriptMakesInstancesWithPropertiesAndMethods)
{
    EXPECT_EQ(Show("var c = new Counter(5); c.value += 0.5; c.add(1) + ' ' + c.value + ' ' + c.twice + ' ' + c.plain"),
              "6.5 6.5 13 undefined");
    EXPECT_EQ(g_live, 1);
    EXPECT_EQ(Show("c instanceof Counter && c.constructor === Counter && Object.prototype.toString.call(c)"),
              "[object Counter]");
    EXPECT_EQ(Show("var names = []; for (var n in c) names.push(n); names.join()"), "value,twice,plain");
    EXPECT_EQ(Show("(delete Counter.prototype.value) + ' ' + Counter.length"), "false 1");
}

TEST_F(EngineClass, TheConstructorKnowsWhetherItWasCalledWithNew)
{
    EXPECT_EQ(Show("Counter(1)"), "called");
    EXPECT_EQ(g_live, 0);
}

TEST_F(EngineClass, ScriptCanDeriveAClass)
{
    EXPECT_EQ(Show("class D extends Counter { constructor() { super(20) } more() { return this.add(1) } } "
                   "var d = new D; d.more() + ' ' + (d instanceof Counter) + ' ' + d.value"),
              "21 true 21");
}

TEST_F(EngineClass, AReadOnlyPropertyIgnoresWritesInSloppyAndThrowsInStrictCode)
{
    EXPECT_EQ(Show("var c = new Counter(5); c.twice = 9; c.twice"), "10");
    EXPECT_EQ(Show("(function () { 'use strict'; try { c.twice = 9 } catch (e) { return e.name } })()"), "TypeError");
}

TEST_F(EngineClass, OperationsOnAForeignObjectDoNotReachItsMemory)
{
    EXPECT_EQ(Show("Object.create(Counter.prototype).value"), "undefined");
    EXPECT_EQ(Show("Counter.prototype.value"), "undefined");
    EXPECT_EQ(Show("try { Counter.prototype.add.call({}, 1) } catch (e) { e.name }"), "TypeError");
    EXPECT_EQ(Show("try { Counter.prototype.add.call(5, 1) } catch (e) { e.name }"), "TypeError");
}

TEST_F(EngineClass, ANativeKnowsItsOwnNameAndItsMissingArguments)
{
    EXPECT_EQ(Show("new Counter().name()"), "name0void");
    EXPECT_EQ(Show("new Counter().name(1, 2, 3)"), "name3given");
    EXPECT_EQ(Show("Counter.create(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20)"), "create20given");
}

TEST_F(EngineClass, AnObjectMadeByTheHostHasTheClasssPrototype)
{
    JSObject* made = JS_NewObject(cx, &kCounter, nullptr, nullptr);
    EXPECT_EQ(JS_GetPrototype(cx, made), proto);
    JSContext* other = NewContext();
    JSObject* elsewhere = JS_NewObject(other, &kCounter, nullptr, nullptr);
    EXPECT_NE(JS_GetPrototype(other, elsewhere), proto) << "the class is unknown in that global";
    JS_DestroyContext(other);
}

TEST_F(EngineClass, WithoutAConstructorTheNameHoldsThePrototype)
{
    constexpr JSClass kQuiet = {"Quiet", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
    JSObject* quiet =
        JS_InitClass(cx, JS_GetGlobalObject(cx), proto, &kQuiet, nullptr, 0, nullptr, kStatics, nullptr, nullptr);
    EXPECT_EQ(JS_GetPrototype(cx, quiet), proto);
    EXPECT_EQ(Show("Quiet.create()"), "create0void");
    EXPECT_EQ(Show("Quiet.add === Counter.prototype.add"), "true");
}

TEST_F(EngineClass, TheSameTableOnManyObjectsWorksOnEach)
{
    for (int i = 0; i < 50; ++i) {
        const std::string name = "o" + std::to_string(i);
        JSObject* o = JS_DefineObject(cx, JS_GetGlobalObject(cx), name.c_str(), &kCounter, nullptr, 0);
        auto* counter = new Counter;
        counter->value = i;
        JS_SetPrivate(cx, o, counter);
        ASSERT_TRUE(JS_DefineProperties(cx, o, kProperties));
        ASSERT_TRUE(JS_DefineFunctions(cx, o, kFunctions));
    }
    EXPECT_EQ(Show("o7.value + o49.twice + o3.add(1)"), "109");
    EXPECT_EQ(Show("o1.hasOwnProperty('value')"), "true");
}

TEST_F(EngineClass, APropertyWithoutTinyIdGetsItsNameAsId)
{
    JSObject* o = JS_DefineObject(cx, JS_GetGlobalObject(cx), "o", &kCounter, nullptr, 0);
    JS_SetPrivate(cx, o, new Counter);
    ASSERT_TRUE(JS_DefineProperty(cx, o, "named", JSVAL_VOID, Get, nullptr, 0));
    ASSERT_TRUE(JS_DefinePropertyWithTinyId(cx, o, "ided", kDouble, JSVAL_VOID, Get, nullptr, 0));
    JS_GC(cx);
    EXPECT_EQ(Show("o.named + o.ided"), "named0");
}

TEST_F(EngineClass, APropertyOperationThatFailsSilentlyEndsTheScript)
{
    EXPECT_FALSE(Run("var after = 0; try { Counter.prototype.value = 5 } catch (e) { after = 1 } after = 2"));
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(Show("after"), "0");
}

TEST_F(EngineClass, FunctionsAreMadeWithoutBeingBoundToAName)
{
    JSFunction* fun = JS_NewFunction(cx, Name, 3, 0, nullptr, "loose");
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(JS_CallFunction(cx, nullptr, fun, 0, nullptr, &v));
    EXPECT_EQ(ShowWord(v), "loose0void");
}

JSBool ShowThis(JSContext* cx, JSObject* obj, uintN, jsval*, jsval* rval)
{
    JSString* str = JS_ValueToString(cx, OBJECT_TO_JSVAL(obj));
    *rval = obj == JS_GetGlobalObject(cx) ? JSVAL_TRUE : STRING_TO_JSVAL(str);
    return str != nullptr;
}

TEST_F(EngineClass, ANativesThisIsAlwaysAnObject)
{
    JS_DefineFunction(cx, JS_GetGlobalObject(cx), "self", ShowThis, 0, 0);
    EXPECT_EQ(Show("self()"), "true");
    EXPECT_EQ(Show("self.call(null)"), "true");
    EXPECT_EQ(Show("self.call('text')"), "text");
    EXPECT_EQ(Show("self.call([1,2])"), "1,2");
}

// Numbers that script reads and writes where they are kept.

struct Numbers
{
    int whole = 7;
    double real = 2.5;
    std::vector<std::string> calls;
};

JSBool GetOther(JSContext* cx, JSObject* obj, jsval, jsval* vp)
{
    auto* numbers = static_cast<Numbers*>(JS_GetPrivate(cx, obj));
    if (numbers)
        numbers->calls.push_back("get");
    *vp = numbers ? JSVAL_TRUE : JSVAL_FALSE;
    return JS_TRUE;
}

JSBool SetOther(JSContext* cx, JSObject* obj, jsval, jsval* vp)
{
    if (auto* numbers = static_cast<Numbers*>(JS_GetPrivate(cx, obj)))
        numbers->calls.push_back("set " + JS_StringToUtf8(cx, JS_ValueToString(cx, *vp)));
    return JS_TRUE;
}

JSNumberField FieldOf(void* data, jsval id)
{
    auto* numbers = static_cast<Numbers*>(data);
    if (id == INT_TO_JSVAL(1))
        return {&numbers->whole, JSNumberField::Int32};
    if (id == INT_TO_JSVAL(2))
        return {&numbers->real, JSNumberField::Double};
    return {nullptr, JSNumberField::None};
}

class EngineNumberField : public EngineTest
{
protected:
    EngineNumberField()
    {
        constexpr JSClass kNumbers = {"Numbers", 0,       nullptr, nullptr, nullptr,
                                      nullptr,   nullptr, nullptr, nullptr, nullptr};
        constexpr JSPropertySpec kFields[] = {{"whole", 1, JSPROP_ENUMERATE, GetOther, SetOther, FieldOf},
                                              {"real", 2, JSPROP_ENUMERATE, GetOther, SetOther, FieldOf},
                                              {"other", 3, JSPROP_ENUMERATE, GetOther, SetOther, FieldOf},
                                              {nullptr, 0, 0, nullptr, nullptr}};
        JS_InitClass(cx, JS_GetGlobalObject(cx), nullptr, &kNumbers, nullptr, 0, kFields, nullptr, nullptr, nullptr);
        JS_SetPrivate(cx, JS_DefineObject(cx, JS_GetGlobalObject(cx), "o", &kNumbers, nullptr, 0), &numbers);
    }

    Numbers numbers;
};

TEST_F(EngineNumberField, IsReadWithoutTheGetter)
{
    EXPECT_EQ(Show("[o.whole, o.real, o.whole === 7, Object.is(o.real, 2.5)]"), "7,2.5,true,true");
    numbers.whole = std::numeric_limits<int>::min();
    numbers.real = -0.0;
    EXPECT_EQ(Show("[o.whole, Object.is(o.real, -0)]"), "-2147483648,true");
    EXPECT_TRUE(numbers.calls.empty());
}

TEST_F(EngineNumberField, ANaNOfAnyBitsIsReadAsNaN)
{
    for (const std::uint64_t bits : {0xFFFE000000000008U, 0xFFF8800000000001U, 0x7FF0000000000001U}) {
        std::memcpy(&numbers.real, &bits, sizeof bits);
        EXPECT_EQ(Show("typeof o.real + (o.real !== o.real)"), "numbertrue");
    }
}

TEST_F(EngineNumberField, IsWrittenWithoutTheSetterWhenTheValueIsOfItsType)
{
    EXPECT_EQ(Show("[o.whole = -2147483648, o.real = 3, o.real]"), "-2147483648,3,3");
    EXPECT_EQ(numbers.whole, std::numeric_limits<int>::min());
    EXPECT_EQ(numbers.real, 3);
    EXPECT_TRUE(numbers.calls.empty());
}

TEST_F(EngineNumberField, AnyOtherValueGoesToTheSetter)
{
    ASSERT_TRUE(Run("o.whole = 1.5; o.whole = '1'; o.whole = undefined; o.real = true; o.real = null"));
    EXPECT_EQ(numbers.whole, 7);
    EXPECT_EQ(numbers.real, 2.5);
    EXPECT_EQ(numbers.calls, (std::vector<std::string>{"set 1.5", "set 1", "set undefined", "set true", "set null"}));
}

TEST_F(EngineNumberField, APropertyThatIsNoneGoesToItsOperations)
{
    EXPECT_EQ(Show("[o.other, o.other = 4]"), "true,4");
    EXPECT_EQ(numbers.calls, (std::vector<std::string>{"get", "set 4"}));
}

TEST_F(EngineNumberField, AnObjectWithoutPrivateDataGoesToTheOperations)
{
    EXPECT_EQ(Show("[Numbers.whole, Object.create(o).whole, Object.create(o).whole = 3]"), "false,false,3");
    EXPECT_EQ(Show("Object.getOwnPropertyDescriptor(Numbers, 'whole').get.call(5)"), "false");
    EXPECT_EQ(numbers.whole, 7);
    EXPECT_TRUE(numbers.calls.empty());
}

JSBool Other(JSContext* cx, JSObject* obj, uintN argc, jsval* argv, jsval* rval)
{
    if (auto* numbers = static_cast<Numbers*>(JS_GetPrivate(cx, obj)))
        numbers->calls.push_back("native " + std::to_string(argc));
    *rval = argc > 0 ? argv[argc - 1] : JSVAL_VOID;
    return argc < 3;
}

// Takes one integer; -1 asks for a double.
JSNumber Quick(void* data, uintN argc, const jsval* argv)
{
    auto* numbers = static_cast<Numbers*>(data);
    if (argc != 1 || !JSVAL_IS_INT(argv[0]))
        return {JSNumberField::None};
    EXPECT_TRUE(JSVAL_IS_OBJECT(JS_ARGV_THIS(argv)) && JSVAL_IS_OBJECT(JS_ARGV_CALLEE(argv)));
    JSNumber number{JSNumberField::Int32};
    number.whole = numbers->whole + JSVAL_TO_INT(argv[0]);
    if (JSVAL_TO_INT(argv[0]) == -1) {
        number.type = JSNumberField::Double;
        number.real = numbers->real;
    }
    return number;
}

class EngineNumberNative : public EngineTest
{
protected:
    EngineNumberNative()
    {
        constexpr JSClass kNumbers = {"Numbers", 0,       nullptr, nullptr, nullptr,
                                      nullptr,   nullptr, nullptr, nullptr, nullptr};
        constexpr JSFunctionSpec kNatives[] = {
            {"add", Other, 1, 0, 0, Quick}, {"long", Other, 9, 0, 0, Quick}, {nullptr, nullptr, 0, 0, 0}};
        JS_InitClass(cx, JS_GetGlobalObject(cx), nullptr, &kNumbers, nullptr, 0, nullptr, kNatives, nullptr, nullptr);
        JS_SetPrivate(cx, JS_DefineObject(cx, JS_GetGlobalObject(cx), "o", &kNumbers, nullptr, 0), &numbers);
    }

    Numbers numbers;
};

TEST_F(EngineNumberNative, SavesTheNative)
{
    EXPECT_EQ(Show("[o.add(3), o.add(-1), o.add(1073741816)]"), "10,2.5,1073741823");
    numbers.whole = std::numeric_limits<int>::max();
    numbers.real = -0.0;
    EXPECT_EQ(Show("[o.add(0), Object.is(o.add(-1), -0)]"), "2147483647,true");
    EXPECT_TRUE(numbers.calls.empty());
}

TEST_F(EngineNumberNative, ANaNOfAnyBitsIsNaN)
{
    for (const std::uint64_t bits : {0xFFFE000000000008U, 0xFFF8800000000001U, 0x7FF0000000000001U}) {
        std::memcpy(&numbers.real, &bits, sizeof bits);
        EXPECT_EQ(Show("typeof o.add(-1) + (o.add(-1) !== o.add(-1))"), "numbertrue");
    }
}

TEST_F(EngineNumberNative, WhatItDoesNotTakeGoesToTheNative)
{
    EXPECT_EQ(Show("[o.add('a'), o.add(1, 2), o.add(1.5), String(o.add())]"), "a,2,1.5,undefined");
    EXPECT_EQ(numbers.calls, (std::vector<std::string>{"native 1", "native 2", "native 1", "native 0"}));
    EXPECT_FALSE(Run("try { o.add(1, 2, 3) } catch (e) {}")) << "it may fail";
    EXPECT_EQ(numbers.calls.size(), 5u);
}

TEST_F(EngineNumberNative, ManyArgumentsGoToTheNative)
{
    EXPECT_EQ(Show("[o.long(1), o.add(1)]"), "1,8");
    EXPECT_FALSE(Run("o.add(1, 2, 3, 4, 5, 6, 7, 8, 9, 10)"));
    EXPECT_EQ(numbers.calls, (std::vector<std::string>{"native 1", "native 10"}));
}

TEST_F(EngineNumberNative, AnObjectWithoutPrivateDataGoesToTheNative)
{
    EXPECT_EQ(Show("[Numbers.add(1), Object.create(o).add(2), o.add.call(5, 3), (0, o.add)(4)]"), "1,2,3,4");
    EXPECT_TRUE(numbers.calls.empty());
}

} // namespace
