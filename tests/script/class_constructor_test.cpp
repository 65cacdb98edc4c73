#include "script/class_module.h"
#include "tests/script/class_fixture.h"

#include <limits>

namespace
{

/// Natives that say which one ran, and with how many arguments.
template <int Number> JSBool Say(JSContext* cx, JSObject*, uintN argc, jsval*, jsval* rval)
{
    JSObject* const said = JS_NewObject(cx, nullptr, nullptr, nullptr);
    jsval number = INT_TO_JSVAL(Number);
    jsval count = INT_TO_JSVAL(static_cast<jsint>(argc));
    *rval = OBJECT_TO_JSVAL(said);
    return JS_SetProperty(cx, said, "number", &number) && JS_SetProperty(cx, said, "count", &count);
}

CJScriptLinkClass* multiClass = nullptr;

JSBool Choose(JSContext* cx, JSObject* object, uintN argc, jsval* argv, jsval* rval)
{
    return multiClass->CreateNewMulti(cx, object, argc, argv, rval);
}

/// The same through the context's handle.
JSBool ChooseByHandle(JSContext* cx, JSObject* object, uintN argc, jsval* argv, jsval* rval)
{
    return CJScript::FromContext(cx)->CreateNewMulti(multiClass, cx, object, argc, argv, rval);
}

class ClassConstructorTest : public ClassTest
{
protected:
    ~ClassConstructorTest() override { multiClass = nullptr; }

    Table& Declared(const char* name, std::vector<JSMapEntry> rows)
    {
        Table& table = Make(name, nullptr, std::move(rows));
        EXPECT_TRUE(CJScriptLinkClass::DeclareJSClass(Context(), &table.cls));
        return table;
    }
};

TEST_F(ClassConstructorTest, WithoutAPrimaryOneTheFirstConstructorRuns)
{
    Declared("Plain", {JSMapEntry(&Say<1>, 1), JSMapEntry(&Say<2>, 5)});
    EXPECT_EQ(Show("Plain.length"), "1");
    EXPECT_EQ(Show("var made = new Plain(1, 2, 3); made.number + '|' + made.count"), "1|3");
}

TEST_F(ClassConstructorTest, ThePrimaryOneRunsWithTheLargestArgumentCountOfAll)
{
    Declared("Multi", {JSMapEntry(&Say<1>, 1), JSMapEntry(&Say<2>, 2, true), JSMapEntry(&Say<3>, 5)});
    EXPECT_EQ(Show("Multi.length"), "5");
    EXPECT_EQ(Show("new Multi().number"), "2");
}

TEST_F(ClassConstructorTest, OfTwoPrimaryOnesTheLastRuns)
{
    Declared("Twice", {JSMapEntry(&Say<1>, 4, true), JSMapEntry(&Say<2>, 2, true)});
    EXPECT_EQ(Show("new Twice().number + '|' + Twice.length"), "2|4");
}

TEST_F(ClassConstructorTest, AClassWithoutConstructorsCannotBeMadeByScript)
{
    Declared("Bare", {JSMapEntry("MAX", 3)});
    EXPECT_EQ(Show("typeof Bare + Bare.MAX"), "object3");
    EXPECT_EQ(Thrown("new Bare()").BeforeFirst(':'), "TypeError");
}

TEST_F(ClassConstructorTest, TheConstructorThatTakesSoManyArgumentsIsChosen)
{
    Table& table = Declared("Multi", {JSMapEntry(&Choose, 0, true), JSMapEntry(&Say<1>, 1), JSMapEntry(&Say<2>, 0),
                                      JSMapEntry(&Say<3>, 3)});
    multiClass = &table.cls;
    EXPECT_EQ(Show("new Multi().number + '|' + new Multi(1).number + '|' + new Multi(1, 2, 3).number"), "2|1|3");
    EXPECT_EQ(Thrown("new Multi(1, 2)"), "Error: Bad argument count for constructor 'Multi' (2)");
}

TEST_F(ClassConstructorTest, TheHandleOfTheContextChoosesLikeTheClass)
{
    Table& table = Declared("Multi", {JSMapEntry(&ChooseByHandle, 0, true), JSMapEntry(&Say<1>, 1)});
    multiClass = &table.cls;
    EXPECT_EQ(Show("new Multi(1).number"), "1");
    EXPECT_EQ(Thrown("new Multi()"), "Error: Bad argument count for constructor 'Multi' (0)");
}

TEST_F(ClassConstructorTest, ConstantsStandOnThePrototypeAndDoNotChange)
{
    Declared("Numbers", {JSMapEntry(&Say<1>, 0), JSMapEntry("LOWEST", std::numeric_limits<int>::min()),
                         JSMapEntry("HIGHEST", std::numeric_limits<int>::max())});
    EXPECT_EQ(Show("var p = Numbers.prototype; p.LOWEST = 1; delete p.LOWEST; p.LOWEST + '|' + p.HIGHEST"),
              "-2147483648|2147483647");
}

TEST_F(ClassConstructorTest, AllOfAClassCanBePutOnAnObjectThatDoesNotInheritIt)
{
    Table& above = Make("Above", nullptr, {JSMapEntry("ONE", 1), JSMapEntry("same", &Say<1>, 0)});
    Table& below = Make("Below", &above.cls, {JSMapEntry("TWO", 2), JSMapEntry("same", &Say<2>, 0)});
    below.cls.AddStaticFuncSpec("fixed", &Say<3>, 1);
    JSObject* const bare = JS_NewObject(Context(), nullptr, nullptr, nullptr);
    jsval value = OBJECT_TO_JSVAL(bare);
    ASSERT_TRUE(JS_SetProperty(Context(), JS_GetGlobalObject(Context()), "bare", &value));
    ASSERT_TRUE(below.cls.AddPropFuncToObject(Context(), bare));
    EXPECT_EQ(Show("[bare.ONE, bare.TWO, bare.same().number, bare.fixed().number, bare.fixed.length].join()"),
              "1,2,2,3,1");
}

TEST_F(ClassConstructorTest, PropertiesPutOnAnObjectReadItsOwnNativeObject)
{
    Table& table = Make("Counted", nullptr, NumberRows(2));
    Part& part = Child("part", table.cls);
    Table& worlds = Make("World", nullptr, NumberRows(2));
    Part world(worlds.cls);
    CJScript other(nullptr);
    ASSERT_TRUE(other.SetGlobal(world.GetJSLink(), "World"));
    wxString shown;
    EXPECT_TRUE(other.Evaluate("p1 = 12; World.p2", nullptr, shown));
    EXPECT_EQ(shown, "12");
    EXPECT_EQ(world.m_number, 12);
    EXPECT_EQ(part.m_number, 3);
}

TEST_F(ClassConstructorTest, StaticPropertiesPutOnAnObjectReadItsNativeObjectToo)
{
    Table& worlds = Make("World", nullptr, NumberRows(1));
    ASSERT_TRUE(worlds.cls.CreateSpec());
    worlds.cls.AddStaticPropSpec("shared", 1, JSPROP_ENUMERATE);
    Part world(worlds.cls);
    CJScript other(nullptr);
    ASSERT_TRUE(other.SetGlobal(world.GetJSLink(), "World"));
    wxString shown;
    EXPECT_TRUE(other.Evaluate("shared = 12; World.shared + World.p1", nullptr, shown));
    EXPECT_EQ(shown, "24");
    EXPECT_EQ(world.m_number, 12);
}

TEST_F(ClassConstructorTest, StaticSpecificationsStandOnTheConstructor)
{
    Table& table = Make("Tool", nullptr, {JSMapEntry(&Say<1>, 0)});
    table.cls.AddStaticFuncSpec("make", &Say<7>, 2);
    ASSERT_TRUE(CJScriptLinkClass::DeclareJSClass(Context(), &table.cls));
    EXPECT_EQ(Show("Tool.make().number + '|' + Tool.make.length + '|' + typeof new Tool().make"), "7|2|undefined");
}

TEST_F(ClassConstructorTest, AReadOnlySpecificationHasNoSetter)
{
    Table& table = Make("Fixed", nullptr, NumberRows(1));
    ASSERT_TRUE(table.cls.CreateSpec());
    table.cls.AddPropSpec("fixed", 1, JSPROP_ENUMERATE | JSPROP_READONLY);
    Part& part = Child("part", table.cls);
    EXPECT_EQ(Show("part.fixed = 9; part.fixed"), "3");
    EXPECT_EQ(part.m_number, 3);
}

TEST_F(ClassConstructorTest, EveryContextHasAPrototypeOfItsOwn)
{
    Table& table = Declared("Shared", {JSMapEntry(&Say<1>, 0)});
    JSObject* const first = table.cls.CreateProto(Context(), false);
    EXPECT_EQ(table.cls.CreateProto(Context(), false), first);
    {
        qxjsMinimal world;
        CJScript other(nullptr);
        ASSERT_TRUE(other.SetGlobal(world.GetJSLink(), ""));
        JSObject* const second = table.cls.CreateProto(other.GetContext(), false);
        ASSERT_NE(second, nullptr);
        EXPECT_NE(second, first);
        EXPECT_EQ(table.cls.GetClassContext(other.GetContext())->prototype, second);
    }
    JS_GC(Context());
    EXPECT_EQ(table.cls.CreateProto(Context(), false), first);
    EXPECT_EQ(Show("new Shared().number"), "1");
}

TEST_F(ClassConstructorTest, PreparingAClassMakesNoPrototype)
{
    Table& table = Make("Prepared", nullptr, NumberRows(1));
    EXPECT_EQ(table.cls.CreateProto(Context(), true), nullptr);
    EXPECT_EQ(table.rows[0].tinyid, 1);
    EXPECT_EQ(table.cls.GetClassContext(Context())->prototype, nullptr);
    EXPECT_STREQ(table.cls.GetClassContext(Context())->jsClass.name, "Prepared");
    EXPECT_EQ(Show("typeof Prepared"), "undefined");
}

TEST_F(ClassConstructorTest, DeclaringAClassWithoutAGlobalPreparesIt)
{
    Table& table = Make("Declared", nullptr, NumberRows(1));
    EXPECT_TRUE(CJScriptLinkClass::DeclareJSClass(Context(), &table.cls));
    EXPECT_EQ(Show("typeof Declared"), "object");
    CJScript bare(nullptr);
    Table& prepared = Make("Bare", nullptr, NumberRows(1));
    EXPECT_TRUE(CJScriptLinkClass::DeclareJSClass(bare.GetContext(), &prepared.cls));
    EXPECT_EQ(prepared.rows[0].tinyid, 1);
}

TEST_F(ClassConstructorTest, AFreshGlobalHasTheRegisteredClasses)
{
    Table& table = Make("Late", nullptr, {JSMapEntry(&Say<4>, 0)});
    EXPECT_TRUE(CJScriptLinkClass::RegisterJSClass(&table.cls));
    EXPECT_TRUE(CJScriptLinkClass::RegisterJSClass(&table.cls));
    EXPECT_EQ(Show("typeof Late"), "undefined");
    script.ClearScope(Global());
    EXPECT_EQ(Show("new Late().number"), "4");
    CJScriptLinkClass::UnregisterJSClass(&table.cls);
    script.ClearScope(Global());
    EXPECT_EQ(Show("typeof Late"), "undefined");
}

struct Moduled
{
    static CJScriptLinkClass ms_JSClass;
};
JSMapEntry moduledRows[] = {JSMapEntry(&Say<6>, 0), JSMapEntry()};
const JSMap moduledMap{"Moduled", nullptr, moduledRows};
CJScriptLinkClass Moduled::ms_JSClass(&moduledMap);

TEST_F(ClassConstructorTest, AModuleRegistersItsClassWhileItRuns)
{
    JSClassModule<Moduled> module;
    ASSERT_TRUE(module.OnInit());
    script.ClearScope(Global());
    EXPECT_EQ(Show("new Moduled().number"), "6");
    module.OnExit();
    script.ClearScope(Global());
    EXPECT_EQ(Show("typeof Moduled"), "undefined");
}

TEST_F(ClassConstructorTest, AnErrorOfANativeIsAnErrorObjectWithItsMessage)
{
    Define("fail", [](JSContext* cx, uintN, jsval*, jsval*) {
        CJScriptLinkClass::DeclareError(cx, wxS("100%s \u00e9\U0001F600"));
        return JS_FALSE;
    });
    EXPECT_EQ(Show("try { fail() } catch (e) { (e instanceof Error) + e.message }"), wxS("true100%s \u00e9\U0001F600"));
}

} // namespace
