#include "script/script_values.h"
#include "tests/script/class_fixture.h"

#include <algorithm>

namespace
{

JSBool Seven(JSContext*, JSObject*, uintN, jsval*, jsval* rval)
{
    *rval = INT_TO_JSVAL(7);
    return JS_TRUE;
}

class ClassRegistryTest : public ClassTest
{
protected:
    static std::ptrdiff_t TimesRegistered(CJScriptLinkClass& cls)
    {
        const CArrayJSClassInfo registered = CJScriptLinkClass::GetRegisteredClasses();
        return std::count(registered.begin(), registered.end(), &cls);
    }
};

TEST_F(ClassRegistryTest, AClassIsRegisteredOnceAndListedBehindTheOthers)
{
    Table& table = Make("Listed", nullptr, {});
    EXPECT_EQ(TimesRegistered(table.cls), 0);
    EXPECT_TRUE(CJScriptLinkClass::RegisterJSClass(&table.cls));
    EXPECT_TRUE(CJScriptLinkClass::RegisterJSClass(&table.cls));
    EXPECT_EQ(TimesRegistered(table.cls), 1);
    EXPECT_EQ(CJScriptLinkClass::GetRegisteredClasses().Last(), &table.cls);
    CJScriptLinkClass::UnregisterJSClass(&table.cls);
    CJScriptLinkClass::UnregisterJSClass(&table.cls);
    EXPECT_EQ(TimesRegistered(table.cls), 0);
}

TEST_F(ClassRegistryTest, TheLibrarysOwnClassesAreRegisteredFromTheStart)
{
    for (CJScriptLinkClass* const cls : {&qxjsPointer::ms_JSClass, &qxjsSize_t::ms_JSClass, &qxjsMinimal::ms_JSClass})
        EXPECT_EQ(TimesRegistered(*cls), 1) << cls->GetMap()->name;
}

TEST_F(ClassRegistryTest, AClassThatEndsIsNoLongerRegistered)
{
    const size_t before = CJScriptLinkClass::GetRegisteredClasses().size();
    {
        Table table("Passing", nullptr, {});
        CJScriptLinkClass::RegisterJSClass(&table.cls);
        EXPECT_EQ(CJScriptLinkClass::GetRegisteredClasses().size(), before + 1);
    }
    EXPECT_EQ(CJScriptLinkClass::GetRegisteredClasses().size(), before);
}

TEST_F(ClassRegistryTest, WhatIsRegisteredLaterIsDeclaredWithTheGlobalOnDemand)
{
    Table& table = Make("Late", nullptr, {JSMapEntry(&Seven, 0)});
    CJScriptLinkClass::RegisterJSClass(&table.cls);
    EXPECT_EQ(Show("typeof Late"), "undefined");
    EXPECT_TRUE(CJScriptLinkClass::DeclareGlobal(Global()));
    EXPECT_EQ(Show("typeof Late"), "function");
}

TEST_F(ClassRegistryTest, AContextsPrototypesAreForgottenAndMadeAnew)
{
    Table& table = Make("Renewed", nullptr, {});
    JSObject* const first = table.cls.CreateProto(Context(), false);
    ASSERT_NE(first, nullptr);
    CJScriptLinkClass::DestroyContextProto(Context());
    EXPECT_EQ(table.cls.GetClassContext(Context())->prototype, nullptr);
    EXPECT_EQ(table.cls.GetClassContext(Context())->context, Context());
    EXPECT_NE(table.cls.CreateProto(Context(), false), nullptr);
}

TEST_F(ClassRegistryTest, FunctionsMayBeAddedToWhatTheTableSays)
{
    Table& table = Make("More", nullptr, {});
    table.cls.AddFuncSpec("seven", &Seven, 3);
    Child("part", table.cls);
    EXPECT_EQ(Show("part.seven() + '|' + part.seven.length"), "7|3");
}

TEST_F(ClassRegistryTest, AStaticPropertyHasNoNativeObjectToReadFrom)
{
    Table& table = Make("Static", nullptr, {JSMapEntry(&Seven, 0)});
    table.cls.AddStaticPropSpec("number", 1, JSPROP_ENUMERATE);
    ASSERT_TRUE(CJScriptLinkClass::DeclareJSClass(Context(), &table.cls));
    EXPECT_EQ(Show("'number' in Static"), "true");
    EXPECT_EQ(Show("Static.number"), "(failed)");
    EXPECT_EQ(Show("'number' in Static.prototype"), "false");
}

TEST_F(ClassRegistryTest, TheRecordsOfAContextEndWithIt)
{
    Table& table = Make("Known", nullptr, {});
    CJScript other(nullptr);
    JSContext* const cx = other.GetContext();
    table.cls.GetClassContext(cx)->jsClass.name = "marked";
    EXPECT_STREQ(table.cls.GetClassContext(cx)->jsClass.name, "marked");
    other.CleanAll();
    EXPECT_STREQ(table.cls.GetClassContext(cx)->jsClass.name, "Known");
    CJScriptLinkClass::DestroyContext(cx);
}

TEST_F(ClassRegistryTest, AStaticReadOnlySpecificationHasNoSetter)
{
    Table& table = Make("Static", nullptr, {JSMapEntry(&Seven, 0)});
    table.cls.AddStaticPropSpec("fixed", 1, JSPROP_ENUMERATE | JSPROP_READONLY);
    table.cls.AddStaticPropSpec("free", 2, JSPROP_ENUMERATE);
    ASSERT_TRUE(CJScriptLinkClass::DeclareJSClass(Context(), &table.cls));
    EXPECT_EQ(Show("['fixed', 'free'].map(function (name) {"
                   " return typeof Object.getOwnPropertyDescriptor(Static, name).set }).join()"),
              "undefined,function");
    EXPECT_EQ(Show("Static.fixed = 9; 'went on'"), "went on");
}

TEST_F(ClassRegistryTest, AClassKeepsLinksNoLongerOnceADynamicObjectIsMade)
{
    Table& table = Make("Keeping", nullptr, {});
    table.cls.SetKeepPrivate(true);
    Part part(table.cls);
    ASSERT_TRUE(part.GetJSLink()->CreateObjectDynamic(Context()));
    EXPECT_TRUE(part.GetJSLink()->IsDynamic());
    EXPECT_EQ(part.GetJSLink()->GetParent(), nullptr);
    EXPECT_TRUE(part.GetJSLink()->DeleteObject());
    EXPECT_FALSE(part.GetJSLink()->IsCreated());
}

TEST_F(ClassRegistryTest, AClassKeepsLinksNoLongerOnceScriptMakesAnObject)
{
    ASSERT_TRUE(script.Evaluate("var kept", nullptr));
    qxjsSize_t::ms_JSClass.SetKeepPrivate(true);
    CJScriptLink* link = nullptr;
    ASSERT_TRUE(script.Evaluate("kept = new size_t(1); kept", nullptr, link));
    EXPECT_TRUE(link->DeleteObject());
    EXPECT_FALSE(link->IsCreated());
    delete link->GetRootObject();
    EXPECT_EQ(Show("typeof kept"), "object");
    qxjsSize_t::ms_JSClass.SetKeepPrivate(false);
}

TEST_F(ClassRegistryTest, WithoutAContextNoObjectIsMade)
{
    Table& table = Make("Nowhere", nullptr, {});
    Part part(table.cls);
    Part parent(table.cls);
    ASSERT_TRUE(script.CreateChild(parent.GetJSLink(), Global(), "parent", false, false));
    EXPECT_FALSE(part.GetJSLink()->CreateObjectDynamic(nullptr));
    EXPECT_FALSE(part.GetJSLink()->CreateObject(nullptr, parent.GetJSLink(), "part", false, true));
    EXPECT_FALSE(part.GetJSLink()->IsCreated());
    EXPECT_FALSE(part.GetJSLink()->IsDynamic());
    EXPECT_EQ(part.GetJSLink()->GetContext(), nullptr);
}

TEST_F(ClassRegistryTest, AValueIsReadByItsRow)
{
    Table& table = Make("Row", nullptr, NumberRows(2));
    Part& part = Child("part", table.cls);
    part.m_number = 12;
    JSMapEntry* const row = table.cls.FindEntry(INT_TO_JSVAL(2), true);
    ASSERT_NE(row, nullptr);
    jsval value = JSVAL_VOID;
    ASSERT_TRUE(table.cls.GetEntryValue(Context(), row, part.GetJSLink(), &value));
    ASSERT_TRUE(JSVAL_IS_DOUBLE(value));
    EXPECT_EQ(*JSVAL_TO_DOUBLE(value), 12);
}

} // namespace
