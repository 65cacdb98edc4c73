#include "tests/script/class_fixture.h"

namespace
{

JSBool DoNothing(JSContext*, JSObject*, uintN, jsval*, jsval*)
{
    return JS_TRUE;
}

/// One table with a row of every kind of property, made by the constructors whose reference arguments choose the kind.
class ClassKindsTest : public ClassTest
{
protected:
    static std::vector<JSMapEntry> Rows()
    {
        int anyInt = 0;
        double anyDouble = 0;
        wxString anyText;
        bool anyFlag = false;
        wxObject* anyPointer = nullptr;
        wxObject anyObject;
        wxArrayInt anyNumbers;
        wxArrayString anyTexts;
        qxjsMinimal embedded;
        return {JSMapEntry("other", PositionIn(&Part::m_pointer), PositionIn(&Part::m_link), anyPointer),
                JSMapEntry("number", PositionIn(&Part::m_number), anyInt),
                JSMapEntry("real", PositionIn(&Part::m_double), anyDouble),
                JSMapEntry("text", PositionIn(&Part::m_text), anyText),
                JSMapEntry("flag", PositionIn(&Part::m_flag), anyFlag),
                JSMapEntry("raw", PositionIn(&Part::m_raw), anyPointer),
                JSMapEntry("embedded", PositionIn(&Part::m_embedded), LinkPositionIn(embedded), anyObject),
                JSMapEntry("plain", PositionIn(&Part::m_plain), anyObject),
                JSMapEntry("numbers", PositionIn(&Part::m_numbers), anyNumbers),
                JSMapEntry("texts", PositionIn(&Part::m_texts), anyTexts)};
    }

    /// Whether a statement runs to its end; what it logs is forgotten.
    bool Runs(const wxString& statement) { return script.Evaluate(statement, nullptr); }

    Table& table = Make("Part", nullptr, Rows());
    Part& part = Child("part", table.cls);
};

TEST_F(ClassKindsTest, TheReferenceArgumentChoosesTheKind)
{
    const std::vector<int> kinds{0x01, 0x02, 0x03, 0x04, 0x05, 0x07, 0x08, 0x09, 0x0a, 0x0b};
    for (std::size_t i = 0; i < kinds.size(); ++i)
        EXPECT_EQ(table.rows[i].kind, kinds[i]) << table.rows[i].name;
    EXPECT_EQ(table.rows[0].extra, PositionIn(&Part::m_link));
    EXPECT_EQ(table.rows[1].position, PositionIn(&Part::m_number));
    EXPECT_EQ(table.rows[1].extra, 0u);
}

TEST_F(ClassKindsTest, RowsThatAreNoPropertiesHaveTheirKindAndParts)
{
    const JSMapEntry constant("MAX", -7);
    EXPECT_EQ(constant.kind, 0x32);
    EXPECT_EQ(static_cast<int>(constant.extra), -7);
    const JSMapEntry named(L"switched", "OnSwitch");
    EXPECT_EQ(named.kind, 0x33);
    EXPECT_EQ(named.text, "switched");
    EXPECT_STREQ(named.name, "OnSwitch");
    const JSMapEntry numbered(4242, "OnSwitch");
    EXPECT_EQ(numbered.kind, 0x33);
    EXPECT_EQ(numbered.text, "4242");
    const JSMapEntry method("run", &DoNothing, 2);
    EXPECT_EQ(method.kind, 0x40);
    EXPECT_EQ(method.extra, 2u);
    EXPECT_EQ(method.native, &DoNothing);
    const JSMapEntry constructor(&DoNothing, 3);
    EXPECT_EQ(constructor.kind, 0x80);
    EXPECT_STREQ(constructor.name, "ctor");
    EXPECT_EQ(constructor.extra, 3u);
    const JSMapEntry primary(&DoNothing, 4, true);
    EXPECT_EQ(primary.kind, 0x81);
    EXPECT_STREQ(primary.name, "ctor");
    const JSMapEntry end;
    EXPECT_EQ(end.name, nullptr);
}

TEST_F(ClassKindsTest, AnIntegerReadsAsANumberAndIsWrittenTruncated)
{
    EXPECT_EQ(Show("typeof part.number + part.number"), "number3");
    EXPECT_TRUE(Runs("part.number = -2.9"));
    EXPECT_EQ(part.m_number, -2);
    EXPECT_TRUE(Runs("part.number = '12'"));
    EXPECT_EQ(part.m_number, 12);
}

TEST_F(ClassKindsTest, ARealReadsAndIsWrittenAsANumber)
{
    EXPECT_EQ(Show("part.real"), "1.5");
    EXPECT_TRUE(Runs("part.real = '2.25'"));
    EXPECT_EQ(part.m_double, 2.25);
}

TEST_F(ClassKindsTest, ATextReadsAndIsWrittenWhole)
{
    part.m_text = wxString(L"a\0b\u00e9\U0001F600", 5);
    EXPECT_EQ(Show("part.text.length + '|' + part.text.charCodeAt(2)"), "6|98");
    EXPECT_TRUE(Runs(wxS("part.text = 'x\\u0000\\u00e9\\ud83d\\ude00'")));
    EXPECT_EQ(part.m_text, wxString(L"x\0\u00e9\U0001F600", 4));
    EXPECT_TRUE(Runs("part.text = undefined"));
    EXPECT_EQ(part.m_text, "undefined");
}

TEST_F(ClassKindsTest, ABooleanReadsAndIsWrittenByItsTruth)
{
    EXPECT_EQ(Show("typeof part.flag + part.flag"), "booleanfalse");
    EXPECT_TRUE(Runs("part.flag = 'x'"));
    EXPECT_TRUE(part.m_flag);
    EXPECT_TRUE(Runs("part.flag = 0"));
    EXPECT_FALSE(part.m_flag);
}

TEST_F(ClassKindsTest, APointerReadsAsTheObjectsScriptObjectOrNull)
{
    EXPECT_EQ(Show("part.other === null"), "true");
    Part& second = Child("second", table.cls);
    part.m_pointer = &second;
    EXPECT_EQ(Show("part.other === second"), "true");
}

TEST_F(ClassKindsTest, ARawPointerReadsAsItsAddress)
{
    EXPECT_EQ(Show("part.raw"), "0");
    part.m_raw = &part;
    EXPECT_EQ(Show("part.raw"), wxString::Format("%llu", reinterpret_cast<unsigned long long>(&part)));
}

TEST_F(ClassKindsTest, AnEmbeddedObjectReadsAsItsScriptObject)
{
    ASSERT_TRUE(script.CreateChild(part.m_embedded.GetJSLink(), Global(), "inner", false, false));
    EXPECT_EQ(Show("part.embedded === inner"), "true");
    CJScriptLink* link = nullptr;
    EXPECT_TRUE(script.Evaluate("part.embedded", nullptr, link));
    EXPECT_EQ(link, part.m_embedded.GetJSLink());
}

TEST_F(ClassKindsTest, AnObjectWithoutScriptObjectGetsOneWhenItIsRead)
{
    EXPECT_EQ(Show("part.embedded.mark = 5; part.embedded.mark"), "5");
    JS_GC(Context());
    EXPECT_EQ(Show("part.embedded.mark"), "5") << "it lives as long as the one it is a property of";
    auto second = std::make_unique<Part>(table.cls);
    part.m_pointer = second.get();
    EXPECT_EQ(Show("var kept = part.other; kept.number + '|' + (part.other === kept)"), "3|true");
    JS_GC(Context());
    EXPECT_EQ(Show("part.other === kept"), "true");
    part.m_pointer = nullptr;
    second.reset();
    EXPECT_EQ(Show("part.other === null"), "true");
    EXPECT_FALSE(Runs("kept.number"));
}

TEST_F(ClassKindsTest, AnObjectMadeByReadingTakesTheFirstNameItGets)
{
    EXPECT_EQ(Show("part.embedded.mark = 5"), "5");
    ASSERT_TRUE(script.CreateChild(part.m_embedded.GetJSLink(), part.GetJSLink(), "inner", false, false));
    EXPECT_EQ(Show("part.inner === part.embedded"), "true");
    EXPECT_EQ(part.m_embedded.GetJSLink()->GetCompleteName(), "part.inner");
}

TEST_F(ClassKindsTest, AnObjectMadeByReadingGoesWithItsHolder)
{
    Part& second = Child("second", table.cls);
    const std::size_t before = JS_CountHostObjects();
    EXPECT_EQ(Show("typeof second.embedded"), "object");
    EXPECT_EQ(JS_CountHostObjects(), before + 1);
    EXPECT_EQ(Show("delete this.second; typeof second"), "undefined");
    JS_GC(Context());
    EXPECT_FALSE(second.m_embedded.GetJSLink()->IsCreated());
    EXPECT_EQ(JS_CountHostObjects(), before - 1);
}

TEST_F(ClassKindsTest, AnObjectGetsThoseItEmbedsWithItsOwn)
{
    auto* const made = new Part(table.cls);
    ASSERT_TRUE(script.CreateChildDynamic(made->GetJSLink()));
    EXPECT_TRUE(made->m_embedded.GetJSLink()->IsCreated());
    EXPECT_TRUE(table.cls.CreatePropertiesObject(Context(), part.GetJSLink()));
    EXPECT_TRUE(part.m_embedded.GetJSLink()->IsCreated());
    JS_GC(Context()); // the object belongs to script, and goes before its class
}

TEST_F(ClassKindsTest, AnEmbeddedPlainObjectReadsAsItsAddress)
{
    EXPECT_EQ(Show("part.plain"), wxString::Format("%llu", reinterpret_cast<unsigned long long>(&part.m_plain)));
}

TEST_F(ClassKindsTest, AnArrayReadsAsACopy)
{
    part.m_numbers.Add(4);
    part.m_numbers.Add(5);
    part.m_texts.Add("a");
    EXPECT_EQ(Show("part.numbers[0] = 9; part.texts.push('b'); part.numbers + '|' + part.texts"), "4,5|a");
    EXPECT_EQ(part.m_numbers[0], 4);
    EXPECT_EQ(part.m_texts.size(), 1u);
}

TEST_F(ClassKindsTest, AnArrayIsWrittenElementByElement)
{
    part.m_numbers.Add(1);
    EXPECT_TRUE(Runs("part.numbers = [7.9, '8']; part.texts = [1, null, 'c']"));
    ASSERT_EQ(part.m_numbers.size(), 2u);
    EXPECT_EQ(part.m_numbers[0], 7);
    EXPECT_EQ(part.m_numbers[1], 8);
    ASSERT_EQ(part.m_texts.size(), 3u);
    EXPECT_EQ(part.m_texts[1], "null");
    EXPECT_TRUE(Runs("part.numbers = []"));
    EXPECT_TRUE(part.m_numbers.empty());
}

TEST_F(ClassKindsTest, AnArrayKeepsTheElementsBeforeOneThatCannotBeConverted)
{
    part.m_numbers.Add(1);
    EXPECT_FALSE(Runs("part.numbers = [5, {valueOf: function () { throw 'no'; }}, 6]"));
    ASSERT_EQ(part.m_numbers.size(), 3u);
    EXPECT_EQ(part.m_numbers[0], 5);
    EXPECT_EQ(part.m_numbers[1], 0);
    EXPECT_EQ(part.m_numbers[2], 0);
    EXPECT_EQ(log.Errors(), Texts{"CJScriptLinkClass::SetProp id 9 failed"});
}

TEST_F(ClassKindsTest, AnythingButAnArrayLeavesAnArrayAsItIs)
{
    part.m_numbers.Add(1);
    part.m_texts.Add("a");
    EXPECT_FALSE(Runs("part.numbers = 5"));
    EXPECT_FALSE(Runs("part.texts = ({length: 1})"));
    EXPECT_EQ(part.m_numbers.size(), 1u);
    EXPECT_EQ(part.m_texts.size(), 1u);
    EXPECT_EQ(log.Errors(),
              (Texts{"CJScriptLinkClass::SetProp id 9 failed", "CJScriptLinkClass::SetProp id 10 failed"}));
}

TEST_F(ClassKindsTest, AFailedConversionLeavesAPlainFieldAsItIs)
{
    EXPECT_EQ(Thrown("part.number = {valueOf: function () { throw 'no'; }}"), "no");
    EXPECT_EQ(Thrown("part.real = {valueOf: function () { throw 'no'; }}"), "no");
    EXPECT_EQ(part.m_number, 3);
    EXPECT_EQ(part.m_double, 1.5);
    EXPECT_EQ(log.Errors(),
              (Texts{"CJScriptLinkClass::SetProp id 2 failed", "CJScriptLinkClass::SetProp id 3 failed"}));
}

TEST_F(ClassKindsTest, PointersAndEmbeddedObjectsCannotBeWritten)
{
    Part& second = Child("second", table.cls);
    part.m_raw = &second;
    for (const wxString name : {"other", "raw", "embedded", "plain"}) {
        EXPECT_FALSE(Runs("part." + name + " = second")) << name.utf8_string();
        EXPECT_FALSE(Runs("part." + name + " = null")) << name.utf8_string();
    }
    EXPECT_EQ(Reports().back(), "CJScript part.plain = null\n Call stack is:\nPart.plain\nlocal (0)\n");
    EXPECT_EQ(part.m_pointer, nullptr);
    EXPECT_EQ(part.m_raw, &second);
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ClassKindsTest, AKindThatIsNotInTheTableReadsAsNullAndIsNotWritten)
{
    JSMapEntry strange = JSMapEntry::Field(static_cast<JSMapEntry::Kind>(0x06), "strange", 0);
    Table& odd = Make("Odd", nullptr, {strange});
    Child("odd", odd.cls);
    EXPECT_EQ(Show("odd.strange === null"), "true");
    EXPECT_FALSE(Runs("odd.strange = 1"));
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ClassKindsTest, PropertiesAreEnumerableAndPermanent)
{
    EXPECT_EQ(Show("var names = []; for (var name in part) names.push(name); names.slice(0, 3).join()"),
              "other,number,real");
    EXPECT_EQ(Show("delete Part.number; delete Object.getPrototypeOf(part).number; part.number"), "3");
}

TEST_F(ClassKindsTest, WritingAnUnknownIdIsLogged)
{
    JSObject* const object = part.m_link.GetJSObject();
    jsval value = INT_TO_JSVAL(5);
    EXPECT_FALSE(CJScriptLinkClass::SetPropW(Context(), object, INT_TO_JSVAL(200), &value));
    EXPECT_FALSE(CJScriptLinkClass::SetPropW(Context(), object, JSVAL_VOID, &value));
    const jsval name = STRING_TO_JSVAL(JS_InternString(Context(), "number"));
    EXPECT_FALSE(CJScriptLinkClass::SetPropW(Context(), object, name, &value));
    EXPECT_EQ(log.Errors(),
              (Texts{"CJScriptLinkClass::SetProp id 200 not found", "CJScriptLinkClass::SetProp id 1000000 not found",
                     "CJScriptLinkClass::SetProp id 1000000 not found"}));
    EXPECT_FALSE(CJScriptLinkClass::GetPropW(Context(), object, INT_TO_JSVAL(200), &value));
    EXPECT_FALSE(CJScriptLinkClass::GetPropW(Context(), object, name, &value));
}

TEST_F(ClassKindsTest, AnObjectWithoutALinkHasNoProperties)
{
    log.Clear();
    JSObject* const empty = JS_NewObject(Context(), nullptr, nullptr, nullptr);
    jsval value = INT_TO_JSVAL(5);
    EXPECT_FALSE(CJScriptLinkClass::GetPropW(Context(), empty, INT_TO_JSVAL(2), &value));
    EXPECT_FALSE(CJScriptLinkClass::SetPropW(Context(), empty, INT_TO_JSVAL(2), &value));
    EXPECT_EQ(value, INT_TO_JSVAL(5));
    EXPECT_TRUE(log.Records().empty());
    EXPECT_FALSE(Runs("Object.getPrototypeOf(part).number"));
    EXPECT_FALSE(Runs("Object.getPrototypeOf(part).number = 5"));
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ClassKindsTest, TheNativeSideReadsAPropertyByItsRow)
{
    jsval value = JSVAL_VOID;
    JSMapEntry* const row = table.cls.FindEntry(INT_TO_JSVAL(2), true);
    EXPECT_TRUE(table.cls.GetPropW(&part.m_link, row, &value));
    ASSERT_TRUE(JSVAL_IS_DOUBLE(value));
    EXPECT_EQ(*JSVAL_TO_DOUBLE(value), 3);
    EXPECT_FALSE(table.cls.GetPropW(&part.m_link, nullptr, &value));
    EXPECT_FALSE(table.cls.GetPropW(nullptr, row, &value));
}

TEST_F(ClassKindsTest, ReadingAndWritingLeavesATrace)
{
    wxLog::AddTraceMask("TavoliJscriptTrace");
    part.m_text = "50%s";
    Show("part.text; part.flag; part.text = 'new'; part.flag = true; part.other; part.embedded; part.number");
    wxLog::RemoveTraceMask("TavoliJscriptTrace");
    Texts traces;
    for (const LogCapture::Record& record : log.Records())
        if (record.level == wxLOG_Trace)
            traces.push_back(record.text.AfterFirst(')').Trim(false));
#if wxDEBUG_LEVEL
    const wxString address = wxString::Format("%p", static_cast<void*>(&part.m_embedded));
    const wxString null = wxString::Format("%p", static_cast<void*>(nullptr));
    EXPECT_EQ(traces, (Texts{"Get Prop wxString =50%s", "Get Prop bool =false", "Set Prop wxString =new",
                             "Set Prop bool =true", "Get Prop WXOBJECT =" + null, "Get Prop WXOBJECTREF =" + address}));
#else
    EXPECT_TRUE(traces.empty());
#endif
}

} // namespace
