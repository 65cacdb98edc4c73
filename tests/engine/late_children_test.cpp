#include <array>
#include <string>

#include "engine_fixture.h"

namespace
{

constexpr JSClass ParentClass(std::uint32_t flags)
{
    return {"Parent", flags, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
}
constexpr JSClass kChildClass = {"Child", 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};

std::array<JSLateChild, 512> g_late;

const void* AddressOf(jsint number)
{
    return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(number));
}

/// hang(parent, number): a child named after that address, as JS_AddLateChild answers.
JSBool Hang(JSContext* cx, JSObject*, uintN, jsval* argv, jsval* rval)
{
    JSObject* parent = JSVAL_TO_OBJECT(argv[0]);
    const jsint number = JSVAL_TO_INT(argv[1]);
    JSObject* child = JS_NewObject(cx, &kChildClass, nullptr, parent);
    if (!child || !JS_DefineProperty(cx, child, "number", argv[1], nullptr, nullptr, 0) ||
        !JS_AddLateChild(cx, parent, child, AddressOf(number), &g_late.at(static_cast<std::size_t>(number))))
        return JS_FALSE;
    *rval = OBJECT_TO_JSVAL(child);
    return JS_TRUE;
}

/// cut(parent, number): takes the child away, as its owner does when it ends.
JSBool Cut(JSContext* cx, JSObject*, uintN, jsval* argv, jsval* rval)
{
    const jsint number = JSVAL_TO_INT(argv[1]);
    JSLateChild& late = g_late.at(static_cast<std::size_t>(number));
    if (!late.IsWaiting())
        return JS_DeleteProperty2(cx, JSVAL_TO_OBJECT(argv[0]), JS_AddressName(AddressOf(number)).c_str(), rval);
    JS_DropLateChild(&late);
    return JS_TRUE;
}

/// Nothing tells an object whose children are late from one whose children are not: each test runs with both.
class LateChildren : public EngineTest, public ::testing::WithParamInterface<std::uint32_t>
{
protected:
    LateChildren() : parent_class(ParentClass(GetParam()))
    {
        g_late = {};
        JSObject* global = JS_GetGlobalObject(cx);
        JS_InitClass(cx, global, nullptr, &parent_class, nullptr, 0, nullptr, kMethods, nullptr, nullptr);
        d = JS_DefineObject(cx, global, "d", &parent_class, nullptr, JSPROP_PERMANENT);
        JS_DefineFunction(cx, global, "hang", Hang, 2, 0);
        JS_DefineFunction(cx, global, "cut", Cut, 2, 0);
    }
    ~LateChildren() override
    {
        for (JSLateChild& late : g_late)
            JS_DropLateChild(&late);
    }

    bool IsLate() const { return (GetParam() & JSCLASS_HAS_LATE_CHILDREN) != 0; }

    static JSBool Nothing(JSContext*, JSObject*, uintN, jsval*, jsval*) { return JS_TRUE; }
    static constexpr JSFunctionSpec kMethods[] = {{"Method", Nothing, 0, 0, 0}, {nullptr, nullptr, 0, 0, 0}};

    JSClass parent_class;
    JSObject* d = nullptr;
};

TEST_P(LateChildren, WaitUntilSomebodyLooks)
{
    EXPECT_EQ(Show("hang(d, 1); hang(d, 2); d.Method(); d.Method; 'Method' in d"), "true");
    EXPECT_EQ(g_late[1].IsWaiting(), IsLate());
    EXPECT_EQ(Show("'P0x2' in d"), "true");
    EXPECT_FALSE(g_late[1].IsWaiting());
    EXPECT_FALSE(g_late[2].IsWaiting());
}

TEST_P(LateChildren, AreFoundByTheirNames)
{
    EXPECT_EQ(Show("c = hang(d, 26); [d.P0x1a === c, d['P0x' + '1a'].number, 'P0x1a' in d, d.P0x1b].join()"),
              "true,26,true,");
    EXPECT_EQ(Show("hang(d, 2); d.hasOwnProperty('P0x2')"), "true");
    EXPECT_EQ(Show("hang(d, 3); Object.create(d).P0x3.number"), "3");
    EXPECT_EQ(Show("hang(d, 4); with (d) P0x4.number"), "4");
    EXPECT_EQ(Show("hang(d, 5); JSON.stringify(Object.getOwnPropertyDescriptor(d, 'P0x5'))"),
              R"({"value":{},"writable":true,"enumerable":true,"configurable":true})");
    EXPECT_EQ(Show("hang(d, 6); typeof d.P0x6 + typeof d.P0x7"), "objectundefined");
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(Run("hang(d, 8)"));
    ASSERT_TRUE(JS_GetProperty(cx, d, "P0x8", &v));
    EXPECT_EQ(ShowWord(v), "[object Object]");
    EXPECT_EQ(Show("hang(d, 9); P0x9.number", d), "9");
}

TEST_P(LateChildren, AreFoundInCodeThatHasOftenLookedInVain)
{
    EXPECT_EQ(Show("function has(o, name) { return name in o } function get(o) { return o.P0x21 }\n"
                   "function own(o, name) { return o.hasOwnProperty(name) }\n"
                   "for (let i = 0; i < 20000; ++i) { has(d, 'P0x20'); get(d); own(d, 'P0x22'); }\n"
                   "hang(d, 32); found = [has(d, 'P0x20')]; hang(d, 33); found.push(get(d).number);\n"
                   "hang(d, 34); found.push(own(d, 'P0x22')); found.join()"),
              "true,33,true");
}

TEST_P(LateChildren, AreListedInTheOrderInWhichTheyCame)
{
    EXPECT_EQ(Show("hang(d, 3); hang(d, 1); hang(d, 2); Object.keys(d).join()"), "P0x3,P0x1,P0x2");
    EXPECT_EQ(Show("hang(d, 9); hang(d, 8); d.P0x8; hang(d, 7); Object.keys(d).join()"),
              "P0x3,P0x1,P0x2,P0x9,P0x8,P0x7");
    EXPECT_EQ(Show("hang(d, 6); names = ''; for (name in d) names += name; names"), "P0x3P0x1P0x2P0x9P0x8P0x7P0x6");
    EXPECT_EQ(Show("hang(d, 5); names = ''; for (name in Object.create(d)) names += name; names.length"), "32");
    EXPECT_EQ(Show("hang(d, 4); Reflect.ownKeys(d).length + Object.entries({...d}).length"), "18");
    EXPECT_EQ(Show("hang(d, 10); JSON.stringify(d) == JSON.stringify(Object.assign({}, d))"), "true");
    ASSERT_TRUE(Run("hang(d, 11)"));
    JSIdArray* ids = JS_Enumerate(cx, d);
    ASSERT_NE(ids, nullptr);
    EXPECT_EQ(ids->length, 11);
    JS_DestroyIdArray(cx, ids);
}

TEST_P(LateChildren, ComeBeforeWhatScriptAddsBehindThem)
{
    EXPECT_EQ(Show("hang(d, 1); d.own = 1; hang(d, 2); d['other'] = 2; hang(d, 3); Object.keys(d).join()"),
              "P0x1,own,P0x2,other,P0x3");
    EXPECT_EQ(Show("Object.defineProperty(d, 'fixed', {value: 1, enumerable: true}); hang(d, 4);\n"
                   "Object.defineProperty(d, 'read', {get() { return 5 }, enumerable: true, configurable: true});\n"
                   "Object.keys(d).slice(5).join() + d.read"),
              "fixed,P0x4,read5");
}

TEST_P(LateChildren, ComeBeforeWhatHidesAnInheritedNameBehindThem)
{
    EXPECT_EQ(
        Show("hang(d, 1); d.Method = 1; hang(d, 2); d.toString = () => 'd'; Object.keys(d).join() + d.Method + d"),
        "P0x1,Method,P0x2,toString1d");
    EXPECT_EQ(Show("hang(d, 3); Object.defineProperty(d, 'valueOf', {get() { return () => 7 }, configurable: true,\n"
                   "enumerable: true}); hang(d, 4); Object.keys(d).slice(4).join() + (d - 0)"),
              "P0x3,valueOf,P0x47");
}

TEST_P(LateChildren, ComeBeforeWhatHotCodeAddsBehindThem)
{
    EXPECT_EQ(Show("function add(o) { o.own = 1 } function hide(o) { o.Method = 1 }\n"
                   "bad = 0; for (let i = 0; i < 5000; ++i) {\n"
                   "  hang(d, 1); add(d); hang(d, 2); hide(d); hang(d, 3);\n"
                   "  bad += Object.keys(d).join() != 'P0x1,own,P0x2,Method,P0x3';\n"
                   "  for (let n of [1, 2, 3]) cut(d, n); delete d.own; delete d.Method;\n"
                   "} bad"),
              "0");
}

TEST_P(LateChildren, AreDeletedByScript)
{
    EXPECT_EQ(Show("c = hang(d, 1); hang(d, 2); [delete d.P0x1, 'P0x1' in d, Object.keys(d), c.number].join()"),
              "true,false,P0x2,1");
    EXPECT_EQ(Show("hang(d, 3); d.P0x3 = 'own'; d.P0x3 + Object.keys(d)"), "ownP0x2,P0x3");
}

TEST_P(LateChildren, GoWithTheirOwners)
{
    EXPECT_EQ(Show("for (let n = 1; n < 6; ++n) hang(d, n); cut(d, 1); cut(d, 3); cut(d, 5); Object.keys(d).join()"),
              "P0x2,P0x4");
    EXPECT_EQ(Show("cut(d, 2); hang(d, 3); cut(d, 4); Object.keys(d).join()"), "P0x3");
    EXPECT_EQ(Show("cut(d, 3); hang(d, 1); cut(d, 1); Object.keys(d).length"), "0");
}

TEST_P(LateChildren, AreNotAddedToObjectsThatTakeNothingMore)
{
    EXPECT_EQ(Show("hang(d, 1); Object.preventExtensions(d); Object.keys(d).join()"), "P0x1");
    EXPECT_EQ(Show("try { hang(d, 2) } catch (e) { e instanceof TypeError }"), "true");
    EXPECT_EQ(Show("cut(d, 1); Object.keys(d).length"), "0");
}

TEST_P(LateChildren, AreFrozenWithTheirObject)
{
    EXPECT_EQ(Show("hang(d, 1); Object.freeze(d); [delete d.P0x1, Object.isFrozen(d), d.P0x1.number].join()"),
              "false,true,1");
}

TEST_P(LateChildren, ReplaceWhatScriptHasPutInTheirPlace)
{
    EXPECT_EQ(Show("d.P0x1 = 'own'; hang(d, 2); hang(d, 1); d.P0x1.number + ' ' + Object.keys(d)"), "1 P0x1,P0x2");
}

TEST_P(LateChildren, LiveAsLongAsTheirObject)
{
    ASSERT_TRUE(Run("for (let n = 1; n < 100; ++n) hang(d, n); 0"));
    JS_GC(cx);
    EXPECT_EQ(Show("d.P0x50.number + Object.keys(d).length"), "179");
    ASSERT_TRUE(Run("for (let n = 100; n < 200; ++n) hang(d, n); e = Object.create(d); 0"));
    JS_GC(cx);
    EXPECT_EQ(Show("Object.keys(d).length"), "199");
}

TEST_P(LateChildren, WaitNoLongerWhenTheirObjectIsGone)
{
    const std::size_t before = JS_CountHostObjects();
    JSObject* other = JS_NewObject(cx, &parent_class, nullptr, nullptr);
    JSObject* child = JS_NewObject(cx, &kChildClass, nullptr, nullptr);
    ASSERT_TRUE(JS_AddLateChild(cx, other, child, AddressOf(7), &g_late[7]));
    EXPECT_EQ(g_late[7].IsWaiting(), IsLate());
    JS_GC(cx);
    EXPECT_FALSE(g_late[7].IsWaiting());
    EXPECT_EQ(JS_CountHostObjects(), before);
}

TEST_P(LateChildren, GoWhenTheScopeIsCleared)
{
    ASSERT_TRUE(Run("hang(d, 1); hang(d, 2)"));
    JS_ClearScope(cx, d);
    EXPECT_EQ(Show("'P0x1' in d || Object.keys(d).length"), "0");
}

TEST_P(LateChildren, AreDefinedBeforeSurvivorsOfAContextAreShown)
{
    JSContext* other = NewContext();
    JS_SetSurvivorHook(other, [](JSContext*, JSObject*) { EXPECT_FALSE(g_late[1].IsWaiting()); });
    JSObject* held = JS_DefineObject(other, JS_GetGlobalObject(other), "held", &parent_class, nullptr, 0);
    JSObject* child = JS_NewObject(other, &kChildClass, nullptr, held);
    ASSERT_TRUE(JS_AddLateChild(other, held, child, AddressOf(1), &g_late[1]));
    ASSERT_TRUE(JS_DefineProperty(cx, JS_GetGlobalObject(cx), "held", OBJECT_TO_JSVAL(held), nullptr, nullptr, 0));
    JS_DestroyContext(other);
    EXPECT_EQ(Show("typeof held.P0x1"), "object");
}

TEST_P(LateChildren, SurviveCollectionsWhereverTheyComeFrom)
{
    JS_SetStress(true);
    EXPECT_EQ(Show("for (let n = 1; n < 20; ++n) hang(d, n); d.own = 1; hang(d, 20); cut(d, 5);\n"
                   "Object.keys(d).length + d.P0x14.number"),
              "40");
}

INSTANTIATE_TEST_SUITE_P(Engine, LateChildren, ::testing::Values(0U, JSCLASS_HAS_LATE_CHILDREN),
                         [](const auto& row) { return row.param ? "Late" : "AtOnce"; });

TEST(AddressName, IsALetterAndTheAddress)
{
    EXPECT_EQ(JS_AddressName(AddressOf(0x7f0a)), "P0x7f0a");
}

} // namespace
