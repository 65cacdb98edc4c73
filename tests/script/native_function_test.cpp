#include "script/class_module.h"
#include "script/native_function.h"
#include "tests/script/script_fixture.h"

#include <algorithm>
#include <memory>

namespace
{

/// A class with functions of every number of arguments and every type.
class Tool : public wxObject
{
public:
    Tool() { m_link.Link(this, &ms_JSClass); }

    wxString Take0() { return "none"; }
    wxString Take1(int a) { return wxString() << a; }
    wxString Take2(int a, int b) { return wxString() << a << '|' << b; }
    wxString Take3(int a, int b, int c) { return wxString() << a << '|' << b << '|' << c; }
    wxString Take4(int a, int b, int c, int d) { return wxString() << a << '|' << b << '|' << c << '|' << d; }
    wxString Take5(int a, int b, int c, int d, int e) { return Take4(a, b, c, d) << '|' << e; }

    int GiveInt(int v) { return v; }
    double GiveDouble(double v) { return v; }
    bool GiveBool(bool v) { return v; }
    wxString GiveText(const wxString& v) const { return v; }
    wxArrayInt GiveInts(wxArrayInt v) { return v; }
    wxArrayString GiveTexts(const wxArrayString& v) { return v; }
    wxArraypCJScriptLink GiveLinks(wxArraypCJScriptLink v) { return v; }
    CJScriptLink* GiveLink(CJScriptLink* v) { return v; }
    Tool* GiveTool(Tool* v) { return v; }
    wxObject* GivePointer(wxObject* v) { return v; }
    JSFunction* GiveFunction(JSFunction* v) { return v; }
    void GiveNothing() {}
    static int Twice(int v) { return 2 * v; }
    int Count(bool v) const { return v ? 1 : 0; }
    wxString Describe(Tool* tool, int) { return tool ? "a tool" : "null"; }

    wxString CountLinks(const wxArraypCJScriptLink& links, int)
    {
        const auto alive = std::count_if(links.begin(), links.end(), [](const CJScriptLink* link) { return link; });
        return wxString() << static_cast<int>(alive) << " of " << static_cast<int>(links.size());
    }

    CJScriptLink* GetJSLink() { return &m_link; }
    const JSMap* GetJSMap() const { return &m_JSMap; }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;

private:
    int m_number = 1;
    CJScriptLink m_link;

    wxDECLARE_CLASS(Tool);
};

wxIMPLEMENT_CLASS(Tool, wxObject);

JSMapEntry Tool::m_JSMapEntries[] = {
    JSConstructor<Tool>(),
    JSField<Tool>("number", &Tool::m_number),
    JSMethod<&Tool::CountLinks>("CountLinks"),
    JSMethod<&Tool::Take0>("Take0"),
    JSMethod<&Tool::Take1>("Take1"),
    JSMethod<&Tool::Take2>("Take2"),
    JSMethod<&Tool::Take3>("Take3"),
    JSMethod<&Tool::Take4>("Take4"),
    JSMethod<&Tool::Take5>("Take5"),
    JSMethod<&Tool::GiveInt>("GiveInt"),
    JSMethod<&Tool::GiveDouble>("GiveDouble"),
    JSMethod<&Tool::GiveBool>("GiveBool"),
    JSMethod<&Tool::GiveText>("GiveText"),
    JSMethod<&Tool::GiveInts>("GiveInts"),
    JSMethod<&Tool::GiveTexts>("GiveTexts"),
    JSMethod<&Tool::GiveLinks>("GiveLinks"),
    JSMethod<&Tool::GiveLink>("GiveLink"),
    JSMethod<&Tool::GiveTool>("GiveTool"),
    JSMethod<&Tool::GivePointer>("GivePointer"),
    JSMethod<&Tool::GiveFunction>("GiveFunction"),
    JSMethod<&Tool::GiveNothing>("GiveNothing"),
    JSMethod<&Tool::Twice>("Twice"),
    JSMethod<&Tool::Count>("Count"),
    JSMethod<&Tool::Describe>("Describe"),
    JSMapEntry(),
};
const JSMap Tool::m_JSMap{"Tool", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass Tool::ms_JSClass(&Tool::m_JSMap);

class NativeFunctionTest : public ScriptTest
{
protected:
    NativeFunctionTest()
    {
        EXPECT_TRUE(CJScriptLinkClass::DeclareJSClass(Context(), &Tool::ms_JSClass));
        EXPECT_TRUE(script.CreateChild(tool->GetJSLink(), Global(), "tool", false, false));
    }

    /// The message of what a text throws; "nothing" when it throws nothing.
    wxString Thrown(const wxString& text)
    {
        return Show("try { " + text + "; 'nothing' } catch (e) { (e instanceof Error) + ': ' + e.message }");
    }

    std::unique_ptr<Tool> tool = std::make_unique<Tool>();
};

struct Call
{
    const char* name;
    const char* text;
    const char* expected;
};

class NativeCountTest : public NativeFunctionTest, public ::testing::WithParamInterface<int>
{
protected:
    static wxString Arguments(int count)
    {
        wxString list;
        for (int i = 1; i <= count; ++i)
            list << (i > 1 ? "," : "") << i;
        return list;
    }
};

TEST_P(NativeCountTest, OnlyTheDeclaredNumberOfArgumentsIsTaken)
{
    const int count = GetParam();
    const wxString name = wxString::Format("Take%d", count);
    for (int given = 0; given <= 6; ++given) {
        const wxString call = "tool." + name + "(" + Arguments(given) + ")";
        if (given != count) {
            const wxString message =
                wxString::Format("Bad argument count for function '%s' (%d instead of %d)", name, given, count);
            EXPECT_EQ(Thrown(call), "true: " + message);
            continue;
        }
        wxString expected = Arguments(count);
        expected.Replace(",", "|");
        EXPECT_EQ(Show(call), count ? expected : wxString("none"));
    }
}

TEST_P(NativeCountTest, TheMessageNamesTheFirstArgumentThatFails)
{
    for (int failing = 1; failing <= GetParam(); ++failing) {
        wxString list;
        for (int i = 1; i <= GetParam(); ++i)
            list << (i > 1 ? "," : "") << (i < failing ? "1" : "Object.create(null)");
        EXPECT_EQ(Thrown(wxString::Format("tool.Take%d(%s)", GetParam(), list)),
                  wxString::Format("true: Argument %d: can not convert to int", failing));
    }
}

INSTANTIATE_TEST_SUITE_P(Of, NativeCountTest, ::testing::Range(0, 6));

class NativeMessageTest : public NativeFunctionTest, public ::testing::WithParamInterface<Call>
{};

TEST_P(NativeMessageTest, NamesTheType)
{
    EXPECT_EQ(Thrown(GetParam().text), wxString("true: Argument 1: can not convert to ") + GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Of, NativeMessageTest,
    ::testing::Values(Call{"Int", "tool.GiveInt(Object.create(null))", "int"},
                      Call{"IntOfAThrowingObject", "tool.GiveInt({valueOf: function () { throw 1; }})", "int"},
                      Call{"Double", "tool.GiveDouble(Object.create(null))", "double"},
                      Call{"Ints", "tool.GiveInts(5)", "wxArrayInt"},
                      Call{"IntsOfOneThatIsNone", "tool.GiveInts([1, Object.create(null)])", "wxArrayInt"},
                      Call{"IntsOfAnObject", "tool.GiveInts({length: 1, 0: 1})", "wxArrayInt"},
                      Call{"IntsOfTooMany", "var long = []; long.length = 4294967295; tool.GiveInts(long)",
                           "wxArrayInt"},
                      Call{"Texts", "tool.GiveTexts('a')", "wxArrayString"},
                      Call{"TextsOfOneThatIsNone", "tool.GiveTexts([Object.create(null)])", "wxArrayString"},
                      Call{"Links", "tool.GiveLinks(tool)", "wxArraypCJScriptLink"},
                      Call{"LinksOfOneThatIsNone", "tool.GiveLinks([tool, 1])", "wxArraypCJScriptLink"},
                      Call{"Link", "tool.GiveLink('tool')", "pCJScriptLink"},
                      Call{"Object", "tool.GiveTool(1)", "pCJScriptLinkRoot"},
                      Call{"ObjectOfAnotherClass", "tool.GiveTool(new TextFile())", "pCJScriptLinkRoot"},
                      Call{"Pointer", "tool.GivePointer(undefined)", "pwxObject"},
                      Call{"PointerOfAnotherClass", "tool.GivePointer(tool)", "pwxObject"},
                      Call{"Function", "tool.GiveFunction({})", "pJSFunction"},
                      Call{"FunctionOfAText", "tool.GiveFunction('f')", "pJSFunction"}),
    NameOfRow<Call>);

class NativeResultTest : public NativeFunctionTest, public ::testing::WithParamInterface<Call>
{};

TEST_P(NativeResultTest, IsWhatTheNativeReturned)
{
    EXPECT_EQ(Show(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Of, NativeResultTest,
    ::testing::Values(
        Call{"Int", "[tool.GiveInt(7.9), tool.GiveInt('-12'), tool.GiveInt(null), tool.GiveInt([3])].join()",
             "7,-12,0,3"},
        Call{"IntOfNoNumber", "tool.GiveInt(NaN)", "0"},
        Call{"IntBehindItsEnds", "[tool.GiveInt(1e20), tool.GiveInt(-Infinity)].join()", "2147483647,-2147483648"},
        Call{"Double", "[tool.GiveDouble(0.5), tool.GiveDouble('1e3'), tool.GiveDouble(NaN)].join()", "0.5,1000,NaN"},
        Call{"Bool", "[tool.GiveBool('x'), tool.GiveBool(''), tool.GiveBool(undefined)].join()", "true,false,false"},
        Call{"Text", "[tool.GiveText('a'), tool.GiveText(5), tool.GiveText(null)].join()", "a,5,null"},
        Call{"TextWithNulsAndOthers", "tool.GiveText('a\\0\\u20ac\\ud83d\\ude00') === 'a\\0\\u20ac\\ud83d\\ude00'",
             "true"},
        Call{"TextOfWhatIsNone", "tool.GiveText(Object.create(null)) === ''", "true"},
        Call{"Ints", "var a = tool.GiveInts([1, '2', 3.9]); a.join() + Array.isArray(a)", "1,2,3true"},
        Call{"Texts", "tool.GiveTexts(['a', 5, null, undefined]).join()", "a,5,null,undefined"},
        Call{"TextsAreTexts", "typeof tool.GiveTexts([5])[0]", "string"},
        Call{"EmptyArrays", "tool.GiveInts([]).length + tool.GiveTexts([]).length + tool.GiveLinks([]).length", "0"},
        Call{"Links", "var l = tool.GiveLinks([tool, null]); (l[0] === tool) + '' + (l[1] === null)", "truetrue"},
        Call{"Link", "(tool.GiveLink(tool) === tool) + '' + tool.GiveLink(null)", "truenull"},
        Call{"LinkOfAForeignObject", "tool.GiveLink({})", "null"},
        Call{"Object", "(tool.GiveTool(tool) === tool) + '' + tool.GiveTool(null)", "truenull"},
        Call{"Pointer", "tool.GivePointer(tool.GivePointer(null)) instanceof wxObjectPtr", "true"},
        Call{"Function",
             "var f = function () { return 7; }; (tool.GiveFunction(f) === f) + '' + tool.GiveFunction(f)()", "true7"},
        Call{"NoFunction", "tool.GiveFunction(null)", "null"}, Call{"Nothing", "tool.GiveNothing()", "undefined"},
        Call{"StaticFunction", "tool.Twice(21)", "42"}, Call{"ConstFunction", "tool.GiveText('const')", "const"},
        Call{"OfAnObjectThatScriptMade", "new Tool().Take1(5)", "5"}),
    NameOfRow<Call>);

TEST_F(NativeFunctionTest, AMethodOfAnotherClassIsRefused)
{
    EXPECT_EQ(Thrown("tool.Take0.call(new TextFile())"), "true: Object is not of class 'Tool'");
    EXPECT_EQ(Thrown("var f = tool.Take0; f()"), "true: Object is not of class 'Tool'");
    EXPECT_EQ(Thrown("tool.Take0.call(undefined)"), "true: Object is not of class 'Tool'");
}

TEST_F(NativeFunctionTest, AStaticFunctionWorksOnEveryScriptableObject)
{
    EXPECT_EQ(Show("var twice = tool.Twice; twice(4) + '|' + twice.call(new TextFile(), 5)"), "8|10");
}

TEST_F(NativeFunctionTest, AFunctionOfNumbersIsCheckedLikeAnyOther)
{
    EXPECT_EQ(Thrown("tool.GiveInt.call(new TextFile(), 1)"), "true: Object is not of class 'Tool'");
    EXPECT_EQ(Thrown("tool.GiveInt(1, 2)"), "true: Bad argument count for function 'GiveInt' (2 instead of 1)");
    EXPECT_EQ(Thrown("tool.GiveDouble.call(new TextFile())"),
              "true: Bad argument count for function 'GiveDouble' (0 instead of 1)");
    EXPECT_EQ(Thrown("tool.GiveInt.call(new TextFile(), Object.create(null))"),
              "true: Argument 1: can not convert to int");
    EXPECT_EQ(Show("tool.GiveInt.call({}, 1)"), "(failed)");
    ASSERT_TRUE(script.Evaluate("var kept = tool", nullptr));
    tool.reset();
    EXPECT_EQ(Show("try { kept.GiveInt(1) } catch (e) { 'caught' }"), "(failed)");
    EXPECT_EQ(Reports().back(), "CJScript try { kept.GiveInt(1) } catch (e) { 'caught' }\n"
                                " Call stack is:\nGiveInt\nlocal (0)\n");
}

TEST_F(NativeFunctionTest, NumbersPassAsTheyAre)
{
    EXPECT_EQ(Show("[2147483647, -2147483648, 1073741824, -1073741824, 0].every(i => tool.GiveInt(i) === i)"), "true");
    EXPECT_EQ(Show("[0.1, -0, 5, 2147483648, Infinity, NaN].every(d => Object.is(tool.GiveDouble(d), d))"), "true");
    EXPECT_EQ(Show("[tool.GiveDouble(true), tool.GiveDouble(null), tool.GiveInt(true), tool.Twice(1.5)].join()"),
              "1,0,1,2");
    EXPECT_EQ(Show("[tool.Count(true), tool.Count(false), tool.Count('x'), tool.Count(0)].join()"), "1,0,1,0");
}

TEST_F(NativeFunctionTest, CalledByAHostANativeGivesTheWordOfItsNumber)
{
    const JSMapEntry row = JSMethod<&Tool::GiveInt>("GiveInt");
    jsval words[] = {JSVAL_NULL, JSVAL_NULL, INT_TO_JSVAL(5)};
    jsval result = JSVAL_VOID;
    ASSERT_TRUE(row.native(Context(), tool->GetJSLink()->GetJSObject(), 1, words + 2, &result));
    ASSERT_TRUE(JSVAL_IS_DOUBLE(result));
    EXPECT_EQ(*JSVAL_TO_DOUBLE(result), 5);
}

TEST_F(NativeFunctionTest, TheCountIsCheckedBeforeTheClass)
{
    EXPECT_EQ(Thrown("tool.Take0.call(new TextFile(), 1)"),
              "true: Bad argument count for function 'Take0' (1 instead of 0)");
}

TEST_F(NativeFunctionTest, AnObjectWithoutANativeEndsTheScriptWithoutAMessage)
{
    EXPECT_EQ(Show("try { tool.Take0.call({}) } catch (e) { 'caught' }"), "(failed)");
    ASSERT_TRUE(script.Evaluate("var kept = tool", nullptr));
    tool.reset();
    EXPECT_EQ(Show("kept.Take0(1, 2)"), "(failed)");
    EXPECT_EQ(Show("try { kept.Take0() } catch (e) { 'caught' }"), "(failed)");
    EXPECT_EQ(Reports().back(), "CJScript try { kept.Take0() } catch (e) { 'caught' }\n"
                                " Call stack is:\nTake0\nlocal (0)\n");
    EXPECT_EQ(Show("typeof kept"), "object");
}

TEST_F(NativeFunctionTest, TheReportOfASilentFailureNamesWhatFailedAndWhere)
{
    wxString report;
    EXPECT_FALSE(script.Execute("function f() {\n tool.Take0.call({});\n}\nf();", nullptr, &report));
    EXPECT_EQ(Reports(), (Texts{"CJScript function f() {\n Call stack is:\nTake0\nlocal (1)\nlocal (3)\n",
                                "CJScript function f() {\n"}));
    ASSERT_TRUE(script.Evaluate("var kept = tool", nullptr));
    tool.reset();
    EXPECT_FALSE(script.Evaluate("kept.number", nullptr));
    EXPECT_EQ(Reports().back(), "CJScript kept.number\n Call stack is:\na property of Tool\nlocal (0)\n");
    EXPECT_FALSE(script.Evaluate("kept.number = 1", nullptr));
    EXPECT_EQ(Reports().back(), "CJScript kept.number = 1\n Call stack is:\na property of Tool\nlocal (0)\n");
    EXPECT_EQ(Show("typeof kept"), "object");
}

TEST_F(NativeFunctionTest, OfALongStackTheInnermostTenPlacesAreNamed)
{
    EXPECT_FALSE(script.Evaluate("function f(n) { n ? f(n - 1) : tool.Take0.call({}); } f(50)", nullptr));
    EXPECT_EQ(Reports().back().Freq('\n'), 1 + 1 + 1 + 10);
}

TEST_F(NativeFunctionTest, ANativeThatGoesWhileItsArgumentsAreConvertedIsNotCalled)
{
    Define("drop", [&](JSContext*, uintN, jsval*, jsval*) {
        tool.reset();
        return JS_TRUE;
    });
    EXPECT_EQ(Show("tool.Take1({valueOf: function () { drop(); return 1; }})"), "(failed)");
}

TEST_F(NativeFunctionTest, AnArgumentThatGoesWhileAnotherIsConvertedIsNotPassed)
{
    auto other = std::make_unique<Tool>();
    ASSERT_TRUE(script.CreateChild(other->GetJSLink(), Global(), "other", false, false));
    Define("drop", [&](JSContext*, uintN, jsval*, jsval*) {
        other.reset();
        return JS_TRUE;
    });
    EXPECT_EQ(Show("tool.Describe(other, 1)"), "a tool");
    EXPECT_EQ(Show("tool.Describe(other, {valueOf: function () { drop(); return 1; }})"), "null");
    EXPECT_EQ(log.Errors(), Texts{"Failed to convert jsobject to pointer. C object has been deleted ?"});
}

TEST_F(NativeFunctionTest, AnElementThatGoesWhileAnotherArgumentIsConvertedIsNotPassed)
{
    auto other = std::make_unique<Tool>();
    ASSERT_TRUE(script.CreateChild(other->GetJSLink(), Global(), "other", false, false));
    Define("drop", [&](JSContext*, uintN, jsval*, jsval*) {
        other.reset();
        return JS_TRUE;
    });
    EXPECT_EQ(Show("tool.CountLinks([other, tool, null], 1)"), "2 of 3");
    EXPECT_EQ(Show("tool.CountLinks([other, tool], {valueOf: function () { drop(); return 1; }})"), "1 of 2");
}

TEST_F(NativeFunctionTest, AnElementThatGoesWhileAnotherIsReadIsNotPassed)
{
    auto other = std::make_unique<Tool>();
    ASSERT_TRUE(script.CreateChild(other->GetJSLink(), Global(), "other", false, false));
    Define("drop", [&](JSContext*, uintN, jsval*, jsval*) {
        other.reset();
        return JS_TRUE;
    });
    EXPECT_EQ(Show("var list = [other]; Object.defineProperty(list, 1, {get: function () { drop(); return tool; }});"
                   "tool.CountLinks(list, 1)"),
              "1 of 2");
}

TEST_F(NativeFunctionTest, AnUncaughtMessageStandsInTheReport)
{
    wxString report;
    EXPECT_FALSE(script.Execute("var before = 1;\ntool.Take2(1, 2, 3);", nullptr, &report));
    EXPECT_EQ(report, "tool.Take2(1, 2, 3);\n"
                      "==> Error: Bad argument count for function 'Take2' (3 instead of 2)\n");
    EXPECT_FALSE(script.Execute("tool.GiveFunction(5);", nullptr, &report));
    EXPECT_EQ(report, "tool.GiveFunction(5);\n==> Error: Argument 1: can not convert to pJSFunction\n");
}

TEST_F(NativeFunctionTest, FunctionsTellTheirNameAndNumberOfArguments)
{
    EXPECT_EQ(Show("[tool.Take3.name, tool.Take3.length, tool.Take0.length, typeof tool.Take3].join()"),
              "Take3,3,0,function");
}

TEST_F(NativeFunctionTest, ASilentFailureEndsTheScriptThroughConversionsToo)
{
    const wxString silent = " Call stack is:\nTake0\nlocal (0)\nlocal (0)\n";
    ASSERT_TRUE(script.Evaluate("var n = 0; function fail() { tool.Take0.call({}) }"
                                "var o = {toString: fail, valueOf: fail};",
                                nullptr));
    for (const char* text : {"StrToUpper(o); n = 1", "try { tool.Take1(o) } catch (e) { n = 1 } n = 2",
                             "try { new size_t(o) } catch (e) { n = 1 } n = 2",
                             "try { tool.GiveTexts([o]) } catch (e) { n = 1 } n = 2", "tool.number = o; n = 1"}) {
        EXPECT_FALSE(script.Evaluate(text, nullptr)) << text;
        EXPECT_EQ(Reports().back(), wxString("CJScript ") + text + "\n" + silent);
        EXPECT_EQ(Show("n"), "0") << text;
    }
    EXPECT_FALSE(script.Evaluate("StrToUpper({toString: function () { StrToLower(o); n = 1 }}); n = 2", nullptr));
    EXPECT_EQ(Show("n"), "0");
}

TEST_F(NativeFunctionTest, ASilentFailureOfWhatANativeEvaluatesIsItsOwn)
{
    Define("evaluate", [&](JSContext*, uintN, jsval*, jsval*) {
        EXPECT_FALSE(script.Evaluate("tool.Take0.call({})", nullptr));
        return JS_TRUE;
    });
    EXPECT_EQ(Show("evaluate(); 'went on'"), "went on");
    EXPECT_EQ(Reports(), Texts{"CJScript local (0): \n Call stack is:\nTake0\nlocal (0)\nlocal (0)\n"});
    EXPECT_FALSE(script.Evaluate("evaluate(); tool.Take1.call({})", nullptr));
    EXPECT_EQ(Reports().back(), "CJScript evaluate(); tool.Take1.call({})\n Call stack is:\nTake1\nlocal (0)\n");
}

TEST_F(NativeFunctionTest, ASilentFailureThatNoReportFollowsIsForgotten)
{
    const wxString missing = "CJScript missing\n==> ReferenceError: missing is not defined\n";
    ASSERT_TRUE(script.Evaluate("Promise.resolve().then(function () { tool.Take0.call({}) })", nullptr));
    EXPECT_FALSE(script.Evaluate("missing", nullptr));
    EXPECT_EQ(Reports(), Texts{missing});
    ASSERT_TRUE(script.Evaluate("Promise.resolve().then(function () { tool.Take0.call({}) })", nullptr));
    EXPECT_FALSE(script.Evaluate("tool.Take1.call({})", nullptr));
    EXPECT_EQ(Reports().back(), "CJScript tool.Take1.call({})\n Call stack is:\nTake1\nlocal (0)\n");
    jsval value = Value("({toString: function () { tool.Take0.call({}) }})");
    EXPECT_EQ(script.JSValToString(value), "");
    EXPECT_FALSE(script.Evaluate("missing", nullptr));
    EXPECT_EQ(Reports().back(), missing);
    EXPECT_FALSE(script.Evaluate("Promise.resolve().then(function () { tool.Take0.call({}) }); missing", nullptr));
    EXPECT_FALSE(Reports().back().Contains("Call stack")) << Reports().back();
}

TEST_F(NativeFunctionTest, CallsSurviveACollectionAtEveryStep)
{
    const bool before = JS_SetStress(true);
    EXPECT_EQ(Show("var r = tool.GiveTexts(['a', 'b' + 1]).concat(tool.GiveInts([1, 2]));"
                   "r.push(tool.GivePointer(null) instanceof wxObjectPtr, new Tool().Take2(3, 4)); r.join()"),
              "a,b1,1,2,true,3|4");
    EXPECT_EQ(Thrown("tool.Take1()"), "true: Bad argument count for function 'Take1' (0 instead of 1)");
    JS_SetStress(before);
}

} // namespace
