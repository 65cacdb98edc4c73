#include "tests/script/script_fixture.h"
#include "xml/xml_document.h"

#include <algorithm>
#include <string>

namespace
{

class XmlNodeScriptTest : public ScriptTest
{
protected:
    /// What a text gives with the document `d`, its root `r` and the root's children `a` and `b`.
    wxString With(const wxString& text)
    {
        EXPECT_EQ(Show(wxS("d = new XmlDocument(); d.SetContent('<r k=\"1\" l=\"2\"><a i=\"1\">t<x/></a><b/><a "
                           "i=\"2\"/></r>'); r = d.GetRoot(); a = r.GetFirst(); b = a.GetNext(); 0")),
                  wxS("0"));
        return Show(text);
    }
};

struct MethodRow
{
    std::string name;
    const wchar_t* call;
    const wchar_t* result;
    int arguments;
};

void PrintTo(const MethodRow& row, std::ostream* out)
{
    *out << row.name;
}

const MethodRow Methods[] = {
    {"GetChildren", L"r.GetChildren() === a", L"true", 0},
    {"GetFirst", L"r.GetFirst() === a", L"true", 0},
    {"GetNext", L"a.GetNext() === b", L"true", 0},
    {"GetNextByName", L"a.GetNextByName('a').GetProp('i')", L"2", 1},
    {"GetPrevious", L"b.GetPrevious() === a", L"true", 0},
    {"GetPreviousByName", L"b.GetNext().GetPreviousByName('a') === a", L"true", 1},
    {"GetParent", L"a.GetParent() === r", L"true", 0},
    {"GetNode", L"r.GetNode('b') === b", L"true", 1},
    {"AddNode", L"n = r.AddNode('n'); n.GetName() + n.GetIndex()", L"n3", 1},
    {"RemoveNode", L"r.RemoveNode('a') + ' ' + r.RemoveNode('z') + ' ' + (r.GetFirst() === b)", L"true false true", 1},
    {"AddChild", L"n = a.AddChild('n'); n.GetName() + n.GetIndex()", L"n2", 1},
    {"Clear", L"a.Clear() + a.GetAllProps() + a.GetCount()", L"undefined0", 0},
    {"ClearProps", L"a.ClearProps() + a.GetAllProps() + a.GetCount()", L"undefined2", 0},
    {"RemoveChildren", L"a.RemoveChildren() + a.GetAllProps() + a.GetCount()", L"undefined i=\"1\"0", 0},
    {"HasNode", L"r.HasNode('b') + ' ' + r.HasNode('B')", L"true false", 1},
    {"GetNodeContent", L"a.GetNodeContent() + '|' + b.GetNodeContent()", L"t|", 0},
    {"GetContent", L"a.GetContent()", L"t", 0},
    {"GetName", L"a.GetName()", L"a", 0},
    {"SetName", L"a.SetName('n') + a.GetName()", L"undefinedn", 1},
    {"HasProp", L"r.HasProp('k') + ' ' + r.HasProp('K')", L"true false", 1},
    {"GetProp", L"r.GetProp('k') + '|' + r.GetProp('z') + '|'", L"1||", 1},
    {"GetChildrenCount", L"r.GetChildrenCount()", L"3", 0},
    {"GetChildrenCountOf", L"r.GetChildrenCountOf('a')", L"2", 1},
    {"GetCount", L"a.GetCount()", L"2", 0},
    {"GetCountOf", L"r.GetCountOf('z')", L"0", 1},
    {"GetAllProps", L"r.GetAllProps()", L" k=\"1\" l=\"2\"", 0},
    {"GetAllPropsBefore", L"r.GetAllPropsBefore('L')", L" k=\"1\"", 1},
    {"GetAllPropsAfter", L"r.GetAllPropsAfter('K')", L" l=\"2\"", 1},
    {"IsFirst", L"a.IsFirst() + ' ' + b.IsFirst()", L"true false", 0},
    {"IsLast", L"b.IsLast() + ' ' + b.GetNext().IsLast()", L"false true", 0},
    {"IsAlone", L"b.IsAlone() + ' ' + b.AddNode('n').IsAlone()", L"false true", 0},
    {"IsMiddle", L"a.IsMiddle() + ' ' + b.IsMiddle()", L"false true", 0},
    {"AddProp", L"r.AddProp('m', 3) + ' ' + r.GetFirst().GetFirst().GetFirst().AddProp('m', 3) + r.GetAllProps()",
     L"true false k=\"1\" l=\"2\" m=\"3\"", 2},
    {"DelProp", L"r.DelProp('k') + ' ' + r.DelProp('k') + r.GetAllProps()", L"true false l=\"2\"", 1},
    {"Ok", L"a.Ok() + ' ' + b.GetFirst().Ok()", L"true false", 0},
    {"GetChildrenDepth", L"r.GetChildrenDepth()", L"2", 0},
    {"Item", L"(r.Item(1) === b) + ' ' + r.Item('1').GetName() + ' ' + r.Item(1.9).GetName() + ' ' + r.Item(-1).Ok()",
     L"true b b false", 1},
    {"GetIndex", L"r.GetIndex() + ' ' + b.GetIndex()", L"-1 1", 0},
    {"GetNodeString", L"a.GetFirst().GetNext().GetNodeString()", L"Item(0).Item(1)", 0},
};

class XmlNodeMethodTest : public XmlNodeScriptTest, public ::testing::WithParamInterface<MethodRow>
{};

TEST_P(XmlNodeMethodTest, does_what_its_native_operation_does)
{
    EXPECT_EQ(With(GetParam().call), wxString(GetParam().result));
    EXPECT_TRUE(Reports().empty());
}

TEST_P(XmlNodeMethodTest, takes_exactly_its_arguments)
{
    const int expected = GetParam().arguments;
    const wxString name = wxString::FromUTF8(GetParam().name);
    for (const int count : {expected - 1, expected + 1}) {
        if (count < 0)
            continue;
        wxString arguments;
        for (int i = 0; i < count; ++i)
            arguments << (i ? wxS(", ") : wxS("")) << wxS("'a'");
        const wxString message =
            With(wxS("try { r.") + name + wxS("(") + arguments + wxS(") } catch (e) { e.message }"));
        if (expected == 0)
            EXPECT_EQ(message, wxS("(failed)"));
        else
            EXPECT_EQ(message, wxString::Format(wxS("Bad argument count for function '%s' (%d instead of %d)"), name,
                                                count, expected));
        EXPECT_EQ(Show(wxS("r.GetCount() + r.GetAllProps()")), wxS("3 k=\"1\" l=\"2\""));
    }
}

INSTANTIATE_TEST_SUITE_P(Xml, XmlNodeMethodTest, ::testing::ValuesIn(Methods), NameOfRow<MethodRow>);

TEST_F(XmlNodeScriptTest, the_table_has_these_methods_in_this_order)
{
    std::vector<std::string> names;
    for (const JSMapEntry* entry = CXmlNode::m_JSMapEntries; entry->name; ++entry) {
        EXPECT_EQ(entry->kind, JSMapEntry::Method) << entry->name;
        names.emplace_back(entry->name);
    }
    ASSERT_EQ(names.size(), std::size(Methods));
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(names[i], Methods[i].name);
}

TEST_F(XmlNodeScriptTest, the_class_is_named_and_built_on_the_common_one)
{
    CXmlDocument document;
    EXPECT_STREQ(CXmlNode::m_JSMap.name, "CXmlNode");
    EXPECT_EQ(CXmlNode::m_JSMap.parent, &CJScriptLink::ms_JSClass);
    EXPECT_EQ(CXmlNode::m_JSMap.entries, CXmlNode::m_JSMapEntries);
    EXPECT_EQ(document.GetEmptyNode()->GetJSMap(), &CXmlNode::m_JSMap);
    EXPECT_EQ(document.GetEmptyNode()->GetJSLink()->GetClass(), &CXmlNode::ms_JSClass);
}

TEST_F(XmlNodeScriptTest, script_does_not_make_nodes)
{
    EXPECT_EQ(Show(wxS("try { new CXmlNode() } catch (e) { 'refused' }")), wxS("refused"));
}

TEST_F(XmlNodeScriptTest, names_are_taken_from_any_value)
{
    EXPECT_EQ(With(wxS("r.AddNode(5).GetName() + r.AddNode(null).GetName() + r.HasProp(undefined)")),
              wxS("5nullfalse"));
}

TEST_F(XmlNodeScriptTest, a_position_must_be_a_number)
{
    for (const wxString value : {wxS("{valueOf() { throw 1; }}"), wxS("'abc'"), wxS("undefined"), wxS("{}"), wxS("NaN"),
                                 wxS("Symbol()"), wxS("10n")})
        EXPECT_EQ(With(wxS("try { r.Item(") + value + wxS(") } catch (e) { e.message }")),
                  wxS("Argument 1: can not convert to int"))
            << value;
}

TEST_F(XmlNodeScriptTest, a_position_is_what_script_makes_a_number_of)
{
    EXPECT_EQ(With(wxS("[r.Item('1'), r.Item(1.9), r.Item(null), r.Item(true), r.Item({valueOf() { return 1; }})]"
                       ".map(n => n.GetName()).join()")),
              wxS("b,b,a,b,b"));
    EXPECT_EQ(With(wxS("[r.Item(Infinity), r.Item(-Infinity), r.Item(1e20)].map(n => n.Ok()).join()")),
              wxS("false,false,false"));
}

TEST_F(XmlNodeScriptTest, a_value_whose_conversion_to_text_throws_adds_no_property)
{
    for (const wxString value : {wxS("{toString() { throw 1; }}"), wxS("{toString() { return Symbol(); }}")})
        EXPECT_EQ(With(wxS("try { r.AddProp('m', ") + value + wxS(") } catch (e) { e.message + r.GetAllProps() }")),
                  wxS("Argument 2: can not convert to wxString k=\"1\" l=\"2\""))
            << value;
}

TEST_F(XmlNodeScriptTest, a_property_takes_any_value_as_text)
{
    EXPECT_EQ(With(wxS("for (const v of [undefined, null, {}, 1.5]) r.AddProp('m', v); r.GetAllPropsAfter('l')")),
              wxS(" m=\"undefined\" m=\"null\" m=\"[object Object]\" m=\"1.5\""));
}

TEST_F(XmlNodeScriptTest, an_argument_that_changes_the_document_while_it_is_converted)
{
    EXPECT_EQ(With(wxS("try { a.SetName({toString() { d.SetContent('<n/>'); return 'x'; }}) } catch (e) { 1 }")),
              wxS("(failed)"));
    EXPECT_EQ(Show(wxS("d.GetRoot().GetName()")), wxS("n"));
    EXPECT_EQ(With(wxS("a.GetNode({toString() { a.RemoveChildren(); return 'x'; }}).Ok()")), wxS("false"));
}

TEST_F(XmlNodeScriptTest, every_node_has_the_built_in_functions)
{
    EXPECT_EQ(With(wxS("a.StrToUpper(a.GetName()) + a.FindStr('abc', 'c', true)")), wxS("A2"));
}

} // namespace
