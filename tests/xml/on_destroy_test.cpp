#include "tests/script/script_fixture.h"
#include "xml/xml_document.h"

#include <wx/mstream.h>

#include <memory>

namespace
{

/// A host's document "d" with the nodes r, a, b and c, all known to script.
class XmlOnDestroyOrderTest : public ScriptTest
{
protected:
    XmlOnDestroyOrderTest()
    {
        document = std::make_unique<CXmlDocument>(&script, wxS("d"), Global());
        Show(wxS("d.SetContent('<r><a><b/></a><c/></r>'); var r = d.GetRoot(), a = r.GetFirst(), b = a.GetFirst(),"
                 " c = a.GetNext(), log = [];"
                 "function Hear(node) { node.CallOnDestroy(function () { log.push(this.Ok() + this.GetName()); }); }"));
        Define("clear", [&](JSContext*, uintN, jsval*, jsval*) { return Host([&] { document->Clear(); }); });
        Define("setRoot", [&](JSContext*, uintN, jsval*, jsval*) { return Host([&] { document->SetRoot("n"); }); });
        Define("end", [&](JSContext*, uintN, jsval*, jsval*) {
            document.reset();
            return JS_TRUE;
        });
    }

    template <typename Do> JSBool Host(Do action)
    {
        if (document)
            action();
        return JS_TRUE;
    }

    std::unique_ptr<CXmlDocument> document;
};

TEST_F(XmlOnDestroyOrderTest, a_node_that_is_removed_is_still_there)
{
    EXPECT_EQ(Show(wxS("Hear(a); r.RemoveNode('a'); log.join()")), wxS("truea"));
    EXPECT_EQ(Show(wxS("r.GetCount()")), wxS("1"));
}

TEST_F(XmlOnDestroyOrderTest, children_that_are_removed_are_all_still_there)
{
    for (const wxString operation : {wxS("RemoveChildren"), wxS("Clear")})
        EXPECT_EQ(Show(wxS("d.SetContent('<r><a/><c/></r>'); r = d.GetRoot(); log = []; Hear(r.GetNode('c'));"
                           "Hear(r.GetNode('a')); r.") +
                       operation + wxS("(); log.join() + r.GetCount()")),
                  wxS("truea,truec0"))
            << operation;
}

TEST_F(XmlOnDestroyOrderTest, the_whole_tree_is_still_there_and_heard_in_its_order)
{
    for (const wxString operation :
         {wxS("d.SetContent('<n/>')"), wxS("d.SetContent('no xml')"), wxS("clear()"), wxS("setRoot()"), wxS("end()")})
        EXPECT_EQ(Show(wxS("d.SetContent('<r><a><b/></a><c/></r>'); r = d.GetRoot(); a = r.GetFirst(); log = [];"
                           "[r.GetNode('c'), a.GetFirst(), a, r].forEach(Hear); ") +
                       operation + wxS("; log.join()")),
                  wxS("truer,truea,trueb,truec"))
            << operation;
}

TEST_F(XmlOnDestroyOrderTest, the_nodes_of_a_document_end_before_it)
{
    Show(wxS("d.CallOnDestroy(function () { log.push('d' + this.GetRoot().GetName()); });"
             "r.CallOnDestroy(function () { log.push('r'); })"));
    document.reset();
    EXPECT_EQ(Show(wxS("log.join()")), wxS("r,dr"));
}

TEST_F(XmlOnDestroyOrderTest, no_node_gets_a_script_object_while_its_document_ends)
{
    Show(wxS("d.SetContent('<r><a/></r>'); d.GetRoot().CallOnDestroy(function () { log.push(this.GetFirst()); })"));
    document.reset();
    EXPECT_EQ(Show(wxS("String(log[0])")), wxS("null"));
}

TEST_F(XmlOnDestroyOrderTest, what_is_loaded_while_the_document_ends_goes_with_it)
{
    Show(wxS("r.CallOnDestroy(function () { d.SetContent('<n><m/></n>'); Hear(d.GetRoot().GetFirst());"
             " d.GetRoot().CallOnDestroy(function () { log.push(typeof d); }); })"));
    document.reset();
    EXPECT_EQ(Show(wxS("log.sort().join()")), wxS("false,undefined"))
        << "script that asks to hear of an end during one hears of it, but reaches nothing";
}

TEST_F(XmlOnDestroyOrderTest, a_node_deeper_in_a_removed_subtree_ends_with_the_tree)
{
    EXPECT_EQ(Show(wxS("Hear(b); r.RemoveNode('a'); log.join() + '|' + b.Ok()")), wxS("|false"));
    EXPECT_EQ(Show(wxS("d.SetContent('<n/>'); log.join()")), wxS("false"));
}

TEST_F(XmlOnDestroyOrderTest, a_function_that_asks_again_is_called_once)
{
    EXPECT_EQ(Show(wxS("function again() { log.push(1); this.CallOnDestroy(again); } a.CallOnDestroy(again);"
                       "r.RemoveNode('a'); log.join()")),
              wxS("1"));
}

TEST_F(XmlOnDestroyOrderTest, every_function_of_a_node_is_called_also_when_the_first_removes_it)
{
    EXPECT_EQ(Show(wxS("a.CallOnDestroy(function () { r.RemoveNode('a'); }); Hear(a); Hear(a); r.RemoveNode('a');"
                       "log.join() + r.GetCount()")),
              wxS("truea,truea1"));
}

TEST_F(XmlOnDestroyOrderTest, a_removal_is_done_once_where_a_function_does_it_too)
{
    EXPECT_EQ(Show(wxS("d.SetContent('<r><a/><a/><a/></r>'); r = d.GetRoot();"
                       "r.GetFirst().CallOnDestroy(function () { r.RemoveNode('a'); }); r.RemoveNode('a');"
                       "r.GetCount()")),
              wxS("2"));
}

TEST_F(XmlOnDestroyOrderTest, what_is_added_while_children_are_removed_goes_too)
{
    EXPECT_EQ(Show(wxS("c.CallOnDestroy(function () { r.AddNode('new'); }); r.RemoveChildren(); r.GetCount()")),
              wxS("0"));
}

TEST_F(XmlOnDestroyOrderTest, the_content_of_the_outer_call_stays)
{
    EXPECT_EQ(Show(wxS("r.CallOnDestroy(function () { d.SetContent('<inner/>'); }); d.SetContent('<outer/>');"
                       "d.GetRoot().GetName()")),
              wxS("outer"));
}

TEST_F(XmlOnDestroyOrderTest, a_load_into_a_document_that_a_function_deletes_fails)
{
    Show(wxS("r.CallOnDestroy(end)"));
    wxMemoryInputStream stream("<n/>", 4);
    EXPECT_FALSE(document->Load(stream, wxS("UTF-8"), 0));
    EXPECT_EQ(document, nullptr);
}

TEST_F(XmlOnDestroyOrderTest, a_document_of_script_that_the_host_deletes_may_lose_its_script_object_meanwhile)
{
    Define("collect", [&](JSContext* cx, uintN, jsval*, jsval*) {
        JS_GC(cx);
        return JS_TRUE;
    });
    // No object of a node is left that would keep that of the document.
    Show(wxS("made = new XmlDocument(); made.SetContent('<r/>'); made.GetRoot().CallOnDestroy(function () {"
             "  log.push(this === globalThis, delete globalThis.made); collect(); collect(); });"
             "made.CallOnDestroy(function () { log.push('made'); for (let i = 0; i < 10; ++i) new XmlDocument(); });"
             "Object.keys(made).forEach(name => delete made[name])"));
    JS_GC(Context());
    delete Global()->GetChild(wxS("made"))->GetRootObject();
    EXPECT_EQ(Show(wxS("log.join()")), wxS("true,true,made"));
}

TEST_F(XmlOnDestroyOrderTest, a_node_that_a_function_moves_away_is_not_deleted)
{
    CXmlDocument other(&script, wxS("other"), Global());
    ASSERT_TRUE(other.SetContent(wxS("<o/>")));
    Define("move", [&](JSContext*, uintN, jsval*, jsval*) {
        CXmlNode* const root = document->GetRawRoot();
        CXmlNode* const moved = root->GetRawNode(wxS("a"));
        root->RemoveChild(moved);
        other.GetRawRoot()->InsertChild(moved, false);
        return JS_TRUE;
    });
    EXPECT_EQ(Show(wxS("a.CallOnDestroy(move); r.RemoveNode('a');"
                       "other.GetRoot().GetFirst().GetName() + r.GetCount() + a.GetParent().GetName()")),
              wxS("a1o"));
}

/// What a function does to the document, whatever the document is at.
struct ReentryRow
{
    std::string name;
    const char* text;
};

void PrintTo(const ReentryRow& row, std::ostream* out)
{
    *out << row.name;
}

const ReentryRow Reentries[] = {
    {"removes_itself", "this.GetParent().RemoveNode(this.GetName())"},
    {"removes_its_parent", "this.GetParent().GetParent().RemoveNode(this.GetParent().GetName())"},
    {"removes_its_siblings", "this.GetParent().RemoveChildren()"},
    {"removes_what_is_below", "this.Clear()"},
    {"empties_the_root", "d.GetRoot().Clear()"},
    {"loads", "d.SetContent('<n><a/><b/><c/></n>')"},
    {"loads_and_listens", "d.SetContent('<n><a/></n>'); d.GetRoot().GetFirst().CallOnDestroy(function () {})"},
    {"clears", "clear()"},
    {"sets_the_root", "setRoot()"},
    {"adds", "this.AddNode('x').AddNode('y'); this.GetParent().AddNode('a')"},
    {"merges", "merge()"},
    {"unlinks", "unlink()"},
    {"moves", "move()"},
    {"collects", "for (let i = 0; i < 30000; ++i) ({}); 0"},
    {"asks_again", "this.CallOnDestroy(function () {})"},
    {"deletes_the_document", "end()"},
    {"throws", "throw 1"},
};

class XmlReentryTest : public XmlOnDestroyOrderTest, public ::testing::WithParamInterface<ReentryRow>
{};

TEST_P(XmlReentryTest, each_function_is_called_once_in_every_operation)
{
    CXmlDocument other(&script, wxS("other"), Global());
    ASSERT_TRUE(other.SetContent(wxS("<o/>")));
    const auto takeOut = [&] {
        CXmlNode* const root = document ? document->GetRawRoot() : nullptr;
        CXmlNode* const first = root ? root->GetRawChildren() : nullptr;
        if (first && first->Ok())
            root->RemoveChild(first);
        return first && first->Ok() ? first : nullptr;
    };
    Define("unlink", [&](JSContext*, uintN, jsval*, jsval*) {
        CXmlNode* const node = takeOut();
        // Nobody else would delete it.
        if (node)
            document->DeleteNode(node->GetXmlNode());
        return JS_TRUE;
    });
    Define("move", [&](JSContext*, uintN, jsval*, jsval*) {
        if (CXmlNode* const node = takeOut())
            other.GetRawRoot()->InsertChild(node, false);
        return JS_TRUE;
    });
    Define("merge", [&](JSContext*, uintN, jsval*, jsval*) {
        CXmlDocument overlay;
        CXmlNode* const root = document ? document->GetRawRoot() : nullptr;
        if (root && overlay.SetContent(wxS("<") + root->GetName() + wxS("><a Merge='Remove'/><c Merge='Remove'/></") +
                                       root->GetName() + wxS(">")))
            document->MergeWith(&overlay);
        return JS_TRUE;
    });
    for (const wxString operation : {wxS("r.RemoveNode('a')"), wxS("r.RemoveChildren()"), wxS("a.RemoveChildren()"),
                                     wxS("r.Clear()"), wxS("d.SetContent('<k><l/></k>')"),
                                     wxS("d.SetContent('no xml')"), wxS("clear()"), wxS("setRoot()"), wxS("end()")}) {
        document = nullptr;
        document = std::make_unique<CXmlDocument>(&script, wxS("d"), Global());
        Show(wxS("d.SetContent('<r><a><b/></a><c/><e/></r>'); r = d.GetRoot(); a = r.GetFirst(); heard = {};"
                 "for (const node of [r, a, a.GetFirst(), a.GetNext(), r.GetNode('e')]) {"
                 "  const name = node.GetName(); heard[name] = 0;"
                 "  node.CallOnDestroy(function () { ++heard[name]; ") +
             wxString::FromUTF8(GetParam().text) + wxS("; }); }"));
        Show(operation);
        document = nullptr;
        EXPECT_EQ(Show(wxS("JSON.stringify(heard)")), wxS("{\"r\":1,\"a\":1,\"b\":1,\"c\":1,\"e\":1}")) << operation;
        JS_GC(Context());
    }
}

INSTANTIATE_TEST_SUITE_P(Xml, XmlReentryTest, ::testing::ValuesIn(Reentries), NameOfRow<ReentryRow>);

} // namespace
