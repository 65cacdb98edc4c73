#include "tests/script/class_fixture.h"

namespace
{

JSBool DoNothing(JSContext*, JSObject*, uintN, jsval*, jsval*)
{
    return JS_TRUE;
}

class ClassChainTest : public ClassTest
{
protected:
    int anyInt = 0;
    std::size_t number = PositionIn(&Part::m_number);

    /// The root has no parent, so its numbers start at 1.
    Table& root = Make("Root", nullptr,
                       {JSMapEntry(&DoNothing, 0), JSMapEntry("first", number, anyInt), JSMapEntry("FIVE", 5),
                        JSMapEntry("run", &DoNothing, 0), JSMapEntry("second", number, anyInt)});
    Table& middle = Make("Middle", &root.cls,
                         {JSMapEntry("SIX", 6), JSMapEntry(77, "OnEvent"), JSMapEntry("third", number, anyInt)});
    Table& leaf = Make("Leaf", &middle.cls, {JSMapEntry("fourth", number, anyInt), JSMapEntry("go", &DoNothing, 0)});
};

TEST_F(ClassChainTest, IndicesRunOnThroughTheChainAndSkipConstants)
{
    ASSERT_TRUE(leaf.cls.CreateSpec());
    EXPECT_EQ(root.rows[0].index, 1u);
    EXPECT_EQ(root.rows[1].index, 2u);
    EXPECT_EQ(root.rows[2].index, 0u);
    EXPECT_EQ(root.rows[3].index, 3u);
    EXPECT_EQ(root.rows[4].index, 4u);
    EXPECT_EQ(middle.rows[0].index, 0u);
    EXPECT_EQ(middle.rows[1].index, 5u);
    EXPECT_EQ(middle.rows[2].index, 6u);
    EXPECT_EQ(leaf.rows[0].index, 7u);
    EXPECT_EQ(leaf.rows[1].index, 8u);
}

TEST_F(ClassChainTest, TinyIdsRunOnThroughTheChainAndOnlyPropertiesHaveThem)
{
    ASSERT_TRUE(leaf.cls.CreateSpec());
    EXPECT_EQ(root.rows[0].tinyid, 0);
    EXPECT_EQ(root.rows[1].tinyid, 1);
    EXPECT_EQ(root.rows[2].tinyid, 0);
    EXPECT_EQ(root.rows[3].tinyid, 0);
    EXPECT_EQ(root.rows[4].tinyid, 2);
    EXPECT_EQ(middle.rows[1].tinyid, 0);
    EXPECT_EQ(middle.rows[2].tinyid, 3);
    EXPECT_EQ(leaf.rows[0].tinyid, 4);
    EXPECT_EQ(leaf.rows[1].tinyid, 0);
}

TEST_F(ClassChainTest, BuildingTheSpecificationsTwiceChangesNothing)
{
    ASSERT_TRUE(leaf.cls.CreateSpec());
    ASSERT_TRUE(leaf.cls.CreateSpec());
    ASSERT_TRUE(root.cls.CreateSpec());
    EXPECT_EQ(root.rows[1].index, 2u);
    EXPECT_EQ(leaf.rows[0].tinyid, 4);
}

TEST_F(ClassChainTest, ARowIsFoundByItsTinyIdFromEveryClassBelow)
{
    ASSERT_TRUE(leaf.cls.CreateSpec());
    const auto find = [](Table& table, int id) { return table.cls.FindEntry(INT_TO_JSVAL(id), true); };
    EXPECT_EQ(find(leaf, -1), nullptr);
    EXPECT_EQ(find(leaf, 0), nullptr);
    EXPECT_EQ(find(leaf, 1), &root.rows[1]);
    EXPECT_EQ(find(leaf, 2), &root.rows[4]);
    EXPECT_EQ(find(leaf, 3), &middle.rows[2]);
    EXPECT_EQ(find(leaf, 4), &leaf.rows[0]);
    EXPECT_EQ(find(leaf, 5), nullptr);
    EXPECT_EQ(find(leaf, JSVAL_INT_MAX), nullptr);
    EXPECT_EQ(find(leaf, JSVAL_INT_MIN), nullptr);
    EXPECT_EQ(find(middle, 3), &middle.rows[2]);
    EXPECT_EQ(find(middle, 4), nullptr);
    EXPECT_EQ(find(root, 2), &root.rows[4]);
    EXPECT_EQ(find(root, 3), nullptr);
}

TEST_F(ClassChainTest, ARowIsFoundByItsIndexFromEveryClassBelow)
{
    ASSERT_TRUE(leaf.cls.CreateSpec());
    const auto find = [](Table& table, int id) { return table.cls.FindEntry(INT_TO_JSVAL(id), false); };
    EXPECT_EQ(find(leaf, 0), nullptr);
    EXPECT_EQ(find(leaf, 1), &root.rows[0]);
    EXPECT_EQ(find(leaf, 2), &root.rows[1]);
    EXPECT_EQ(find(leaf, 3), &root.rows[3]);
    EXPECT_EQ(find(leaf, 4), &root.rows[4]);
    EXPECT_EQ(find(leaf, 5), &middle.rows[1]);
    EXPECT_EQ(find(leaf, 6), &middle.rows[2]);
    EXPECT_EQ(find(leaf, 7), &leaf.rows[0]);
    EXPECT_EQ(find(leaf, 8), &leaf.rows[1]);
    EXPECT_EQ(find(leaf, 9), nullptr);
    EXPECT_EQ(find(middle, 7), nullptr);
    EXPECT_EQ(find(root, 4), &root.rows[4]);
    EXPECT_EQ(find(root, 5), nullptr);
}

TEST_F(ClassChainTest, OnlyIntegerIdsFindARow)
{
    ASSERT_TRUE(leaf.cls.CreateSpec());
    jsval one = JSVAL_VOID;
    ASSERT_TRUE(JS_NewDoubleValue(Context(), 1, &one));
    for (const jsval id : {JSVAL_VOID, JSVAL_NULL, JSVAL_TRUE, one, STRING_TO_JSVAL(JS_InternString(Context(), "1"))}) {
        EXPECT_EQ(leaf.cls.FindEntry(id, true), nullptr) << id;
        EXPECT_EQ(leaf.cls.FindEntry(id, false), nullptr) << id;
    }
}

TEST_F(ClassChainTest, AClassThatIsNotBuiltYetHasNoRows)
{
    EXPECT_EQ(leaf.cls.FindEntry(INT_TO_JSVAL(1), true), nullptr);
    EXPECT_EQ(leaf.cls.FindEntry(INT_TO_JSVAL(1), false), nullptr);
}

TEST_F(ClassChainTest, PropertiesOfAllParentsReadAndWriteThroughADerivedObject)
{
    Part& part = Child("part", leaf.cls);
    EXPECT_EQ(Show("[part.first, part.second, part.third, part.fourth, part.FIVE, part.SIX].join()"), "3,3,3,3,5,6");
    EXPECT_EQ(Show("part.first = 8"), "8");
    EXPECT_EQ(part.m_number, 8);
    EXPECT_EQ(Show("part.third"), "8");
}

TEST_F(ClassChainTest, AnObjectIsAnInstanceOfEveryClassOfItsChain)
{
    Child("part", leaf.cls);
    EXPECT_EQ(Show("part instanceof Root"), "true");
    EXPECT_TRUE(leaf.cls.IsKindOf(&root.cls));
    EXPECT_TRUE(leaf.cls.IsKindOf(&leaf.cls));
    EXPECT_FALSE(root.cls.IsKindOf(&leaf.cls));
    EXPECT_FALSE(leaf.cls.IsKindOf(&CJScriptLink::ms_JSClass));
    EXPECT_EQ(Show("Object.prototype.toString.call(part)"), "[object Leaf]");
}

TEST_F(ClassChainTest, AChainOf255PropertiesWorks)
{
    Table& top = Make("Top", nullptr, NumberRows(200));
    Table& full = Make("Full", &top.cls, NumberRows(55));
    Part& part = Child("part", full.cls);
    EXPECT_EQ(full.rows[54].tinyid, 255);
    EXPECT_EQ(full.cls.FindEntry(INT_TO_JSVAL(255), true), &full.rows[54]);
    EXPECT_EQ(full.cls.FindEntry(INT_TO_JSVAL(256), true), nullptr);
    EXPECT_EQ(full.cls.FindEntry(INT_TO_JSVAL(100000), true), nullptr);
    EXPECT_EQ(Show("part.p55 = 9"), "9");
    EXPECT_EQ(part.m_number, 9);
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ClassChainTest, The256thPropertyStopsTheDeclaration)
{
    std::vector<JSMapEntry> rows = NumberRows(256);
    rows.emplace_back("late", &DoNothing, 0);
    Table& table = Make("Crowded", nullptr, rows);
    EXPECT_TRUE(table.cls.CreateSpec());
    EXPECT_EQ(log.Errors(), Texts{"CJScriptLinkClass::CreateSpec Too many Properties for Crowded"});
    Child("part", table.cls);
    EXPECT_EQ(Show("part.p255 + '|' + typeof part.p256 + '|' + typeof part.late"), "3|undefined|undefined");
    EXPECT_EQ(table.rows[255].tinyid, 0);
    EXPECT_EQ(table.rows[255].index, 0u);
    EXPECT_EQ(table.rows[256].index, 0u);
    EXPECT_EQ(table.cls.FindEntry(INT_TO_JSVAL(256), false), nullptr);
    EXPECT_EQ(log.Errors().size(), 1u) << "reported once";
}

TEST_F(ClassChainTest, AClassBelowAFullOneReadsItsParentsProperties)
{
    Table& full = Make("Full", nullptr, NumberRows(255));
    Table& below = Make("Below", &full.cls, {JSMapEntry("run", &DoNothing, 0)});
    Part& part = Child("part", below.cls);
    EXPECT_EQ(below.cls.FindEntry(INT_TO_JSVAL(1), true), &full.rows[0]);
    EXPECT_EQ(below.cls.FindEntry(INT_TO_JSVAL(255), true), &full.rows[254]);
    EXPECT_EQ(below.cls.FindEntry(INT_TO_JSVAL(256), true), nullptr);
    EXPECT_EQ(Show("part.p1 = 4; part.p255"), "4");
    EXPECT_EQ(part.m_number, 4);
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ClassChainTest, APropertyBelowAFullClassIsTooMany)
{
    Table& full = Make("Full", nullptr, NumberRows(255));
    Table& below = Make("Below", &full.cls, NumberRows(1));
    EXPECT_TRUE(below.cls.CreateSpec());
    EXPECT_EQ(log.Errors(), Texts{"CJScriptLinkClass::CreateSpec Too many Properties for Below"});
}

TEST_F(ClassChainTest, AClassWithoutRowsHasItsParentsNumbers)
{
    JSMap map{"Bare", &leaf.cls, nullptr};
    CJScriptLinkClass bare(&map);
    ASSERT_TRUE(bare.CreateSpec());
    EXPECT_EQ(bare.FindEntry(INT_TO_JSVAL(4), true), &leaf.rows[0]);
    EXPECT_EQ(bare.FindEntry(INT_TO_JSVAL(5), true), nullptr);
    EXPECT_EQ(bare.FindEntry(INT_TO_JSVAL(8), false), &leaf.rows[1]);
    EXPECT_EQ(bare.FindEntry(INT_TO_JSVAL(9), false), nullptr);
}

TEST_F(ClassChainTest, AClassMayEndBeforeTheContextsThatKnowIt)
{
    {
        Table brief("Brief", nullptr, NumberRows(1));
        Part part(brief.cls);
        ASSERT_TRUE(script.CreateChild(part.GetJSLink(), Global(), "part", false, false));
        EXPECT_EQ(Show("var kept = part; part.p1"), "3");
    }
    JS_GC(Context());
    EXPECT_EQ(Show("typeof kept"), "object");
}

} // namespace
