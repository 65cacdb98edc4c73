#include "script/script_values.h"
#include "script/value_conversion.h"
#include "tests/script/script_fixture.h"

#include <cstdint>
#include <memory>
#include <string>

namespace
{

constexpr const char* DeletedMessage = "Failed to convert jsobject to pointer. C object has been deleted ?";
constexpr const char* NoPointerMessage = "Failed to convert jsval to pwxObject !!";

const char* const NoObjects[] = {"undefined", "true", "false", "5", "0.5", "'text'"};

class PointerConversionTest : public ScriptTest
{
protected:
    /// The script object of a native one that is gone.
    jsval Orphan()
    {
        qxjsMinimal child;
        EXPECT_TRUE(script.CreateChild(child.GetJSLink(), Global(), "child", false, false));
        return Value("var orphan = child; orphan");
    }
};

// Links.

TEST_F(PointerConversionTest, ALinkIsThatOfTheObject)
{
    CJScriptLink* out = nullptr;
    EXPECT_TRUE(jsval_to_pCJScriptLink(Context(), Value("this"), out));
    EXPECT_EQ(out, Global());
}

TEST_F(PointerConversionTest, TheLinkOfTheNullObjectIsNull)
{
    CJScriptLink* out = Global();
    EXPECT_TRUE(jsval_to_pCJScriptLink(Context(), JSVAL_NULL, out));
    EXPECT_EQ(out, nullptr);
}

TEST_F(PointerConversionTest, TheLinkOfAnObjectWithoutOneIsNull)
{
    for (const jsval value : {Value("({})"), Value("[]"), Value("parseInt"), Orphan()}) {
        CJScriptLink* out = Global();
        EXPECT_TRUE(jsval_to_pCJScriptLink(Context(), value, out));
        EXPECT_EQ(out, nullptr);
    }
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(PointerConversionTest, WhatIsNoObjectHasNoLinkAndLeavesTheOutput)
{
    for (const char* text : NoObjects) {
        CJScriptLink* out = Global();
        EXPECT_FALSE(jsval_to_pCJScriptLink(Context(), Value(text), out)) << text;
        EXPECT_EQ(out, Global()) << text;
    }
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(PointerConversionTest, ALinkBecomesItsObject)
{
    EXPECT_EQ(pCJScriptLink_to_jsval(Context(), Global()), Value("this"));
    EXPECT_EQ(pCJScriptLink_to_jsval(Context(), nullptr), JSVAL_NULL);
}

TEST_F(PointerConversionTest, ALinkWithoutObjectBecomesTheNullObject)
{
    qxjsMinimal unborn;
    EXPECT_EQ(pCJScriptLink_to_jsval(Context(), unborn.GetJSLink()), JSVAL_NULL);
}

// Native objects.

TEST_F(PointerConversionTest, ANativeObjectIsThatOfTheLink)
{
    wxObject* out = nullptr;
    EXPECT_TRUE(jsval_to_pCJScriptLinkRoot(Context(), Value("this"), out));
    EXPECT_EQ(out, &global);
    EXPECT_EQ(Global()->GetRootObject(), &global);
}

TEST_F(PointerConversionTest, TheNativeObjectOfTheNullObjectIsNull)
{
    wxObject* out = &global;
    EXPECT_TRUE(jsval_to_pCJScriptLinkRoot(Context(), JSVAL_NULL, out));
    EXPECT_EQ(out, nullptr);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(PointerConversionTest, ANativeObjectThatIsGoneIsLoggedAndNull)
{
    wxObject* out = &global;
    EXPECT_TRUE(jsval_to_pCJScriptLinkRoot(Context(), Orphan(), out));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(log.Errors(), Texts{DeletedMessage});
    EXPECT_EQ(log.Records().size(), 1u);
}

TEST_F(PointerConversionTest, AnObjectThatNeverHadANativeOneIsLoggedAndNull)
{
    wxObject* out = &global;
    EXPECT_TRUE(jsval_to_pCJScriptLinkRoot(Context(), Value("({})"), out));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(log.Errors(), Texts{DeletedMessage});
}

TEST_F(PointerConversionTest, WhatIsNoObjectHasNoNativeOneAndLeavesTheOutput)
{
    for (const char* text : NoObjects) {
        wxObject* out = &global;
        EXPECT_FALSE(jsval_to_pCJScriptLinkRoot(Context(), Value(text), out)) << text;
        EXPECT_EQ(out, &global) << text;
    }
    EXPECT_TRUE(log.Records().empty());
}

// Carried pointers.

TEST_F(PointerConversionTest, APointerComesBackAsItIs)
{
    wxObject carried;
    jsval word = pwxObject_to_jsval(Context(), &carried);
    EXPECT_EQ(JSVAL_TAG(word), JSVAL_OBJECT);
    wxObject* out = nullptr;
    EXPECT_TRUE(jsval_to_pwxObject(Context(), word, out));
    EXPECT_EQ(out, &carried);
    EXPECT_EQ(script.JSValToObject(word), &carried);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(PointerConversionTest, APointerComesBackThroughScript)
{
    wxObject carried;
    jsval word = pwxObject_to_jsval(Context(), &carried);
    ASSERT_TRUE(script.Evaluate("var held; function hold(object) { held = [object]; }", nullptr));
    ASSERT_TRUE(script.CallWithRet("hold", Global(), nullptr, 1, &word));
    JS_GC(Context());
    wxObject* out = nullptr;
    EXPECT_TRUE(jsval_to_pwxObject(Context(), Value("held[0]"), out));
    EXPECT_EQ(out, &carried);
}

TEST_F(PointerConversionTest, ANullPointerComesBackAsNull)
{
    wxObject* out = &global;
    const jsval word = pwxObject_to_jsval(Context(), nullptr);
    EXPECT_NE(word, JSVAL_NULL);
    EXPECT_TRUE(jsval_to_pwxObject(Context(), word, out));
    EXPECT_EQ(out, nullptr);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(PointerConversionTest, TheCarrierGoesWithItsScriptObjectAndThePointerStays)
{
    const std::size_t fresh = FreshObjects();
    std::vector<std::string> deaths;
    Mortal carried(deaths, "carried");
    pwxObject_to_jsval(Context(), &carried);
    EXPECT_EQ(JS_CountHostObjects(), fresh + 1);
    JS_GC(Context());
    EXPECT_EQ(JS_CountHostObjects(), fresh);
    EXPECT_TRUE(deaths.empty());
}

TEST_F(PointerConversionTest, WhatIsNoObjectIsNoPointerAndLogged)
{
    for (const char* text : NoObjects) {
        log.Clear();
        wxObject* out = &global;
        EXPECT_FALSE(jsval_to_pwxObject(Context(), Value(text), out)) << text;
        EXPECT_EQ(out, nullptr) << text;
        EXPECT_EQ(log.Errors(), Texts{NoPointerMessage}) << text;
        EXPECT_EQ(log.Records().size(), 1u) << text;
    }
}

TEST_F(PointerConversionTest, TheNullObjectIsTheNullPointerUnlogged)
{
    wxObject* out = &global;
    EXPECT_TRUE(jsval_to_pwxObject(Context(), JSVAL_NULL, out));
    EXPECT_EQ(out, nullptr);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(PointerConversionTest, AnObjectWithoutNativeOneIsTheNullPointerAndLogged)
{
    for (const jsval value : {Value("({})"), Orphan()}) {
        log.Clear();
        wxObject* out = &global;
        EXPECT_TRUE(jsval_to_pwxObject(Context(), value, out));
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(log.Errors(), Texts{DeletedMessage});
    }
}

TEST_F(PointerConversionTest, AnObjectOfAnotherClassIsNoPointer)
{
    for (const jsval value : {Value("this"), size_t_to_jsval(Context(), 5)}) {
        wxObject* out = &global;
        EXPECT_FALSE(jsval_to_pwxObject(Context(), value, out));
        EXPECT_EQ(out, nullptr);
    }
}

TEST_F(PointerConversionTest, AValueThatIsNoPointerGivesTheNullObject)
{
    jsval value = INT_TO_JSVAL(5);
    EXPECT_EQ(script.JSValToObject(value), nullptr);
    EXPECT_EQ(log.Errors(), Texts{NoPointerMessage});
    value = JSVAL_NULL;
    EXPECT_EQ(script.JSValToObject(value), nullptr);
}

// Carried sizes.

TEST_F(PointerConversionTest, ASizeIsCarriedByAnObject)
{
    for (const std::uint32_t size : {0u, 5u, 0x80000000u, UINT32_MAX}) {
        const jsval word = size_t_to_jsval(Context(), size);
        wxObject* carrier = nullptr;
        ASSERT_TRUE(jsval_to_pCJScriptLinkRoot(Context(), word, carrier));
        ASSERT_TRUE(carrier && carrier->IsKindOf(wxCLASSINFO(qxjsSize_t)));
        EXPECT_EQ(static_cast<qxjsSize_t*>(carrier)->GetValue(), size);
    }
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(PointerConversionTest, TheCarriersGoWithTheirScriptObjects)
{
    for (int count = 0; count < 50; ++count)
        size_t_to_jsval(Context(), count);
    JS_GC(Context());
    EXPECT_EQ(JS_CountHostObjects(), FreshObjects());
}

TEST_F(PointerConversionTest, ACarrierMadeByANativeReachesScript)
{
    Define("size", [](JSContext* cx, uintN, jsval*, jsval* rval) {
        *rval = size_t_to_jsval(cx, 7);
        return JS_TRUE;
    });
    EXPECT_EQ(Show("typeof size() + (size() === size())"), "objectfalse");
    CJScriptLink* link = nullptr;
    EXPECT_TRUE(script.Evaluate("size()", nullptr, link));
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(static_cast<qxjsSize_t*>(link->GetRootObject())->GetValue(), 7u);
}

TEST(CarrierWithoutScriptTest, ConversionsAreLoggedAndGiveTheNullObject)
{
    const NoHostObjectsLeft check;
    const LogCapture log;
    JSRuntime* runtime = JS_Init(16777216);
    JSContext* context = JS_NewContext(runtime, 8192);
    wxObject carried;
    EXPECT_EQ(size_t_to_jsval(context, 5), JSVAL_NULL);
    EXPECT_EQ(pwxObject_to_jsval(context, &carried), JSVAL_NULL);
    JS_DestroyContext(context);
    JS_Finish(runtime);
    EXPECT_EQ(log.Errors(), (Texts{"Failed to convert size_t to jsval !!", "Failed to convert pwxObject to jsval !!"}));
    EXPECT_EQ(log.Records().size(), 2u);
}

// The carriers themselves.

TEST(CarrierTest, APointerCarrierHoldsWhatItIsGiven)
{
    wxObject carried;
    qxjsPointer carrier(&carried);
    EXPECT_EQ(carrier.GetValue(), &carried);
    carrier.SetValue(nullptr);
    EXPECT_EQ(carrier.GetValue(), nullptr);
    EXPECT_EQ(qxjsPointer(nullptr).GetValue(), nullptr);
}

TEST(CarrierTest, ASizeCarrierHoldsWhatItIsGiven)
{
    qxjsSize_t carrier(UINT32_MAX);
    EXPECT_EQ(carrier.GetValue(), UINT32_MAX);
    carrier.SetValue(5);
    EXPECT_EQ(carrier.GetValue(), 5u);
}

template <typename Carrier> void ExpectLinked(Carrier& carrier, const char* name)
{
    EXPECT_EQ(carrier.GetJSLink()->GetRootObject(), &carrier);
    EXPECT_FALSE(carrier.GetJSLink()->IsCreated());
    EXPECT_EQ(std::as_const(carrier).GetJSLink(), carrier.GetJSLink());
    EXPECT_STREQ(carrier.GetJSMap()->name, name);
    EXPECT_EQ(carrier.GetJSMap(), &Carrier::m_JSMap);
    EXPECT_EQ(carrier.GetJSLink()->GetJSMap(), &Carrier::m_JSMap);
    EXPECT_EQ(Carrier::ms_JSClass.GetMap(), &Carrier::m_JSMap);
    EXPECT_TRUE(carrier.IsKindOf(wxCLASSINFO(Carrier)));
}

TEST(CarrierTest, EachIsLinkedToItselfUnderItsClassName)
{
    qxjsPointer pointer(nullptr);
    qxjsSize_t size(0);
    qxjsMinimal minimal;
    ExpectLinked(pointer, "wxObjectPtr");
    ExpectLinked(size, "size_t");
    ExpectLinked(minimal, "qxMinimalObject");
}

} // namespace
