#include "tests/xml/config_fixture.h"

namespace
{

class ConfigSectionTest : public ConfigTest
{
protected:
    wxString NameAt(const wxString& path, bool create = false)
    {
        CXmlNode* const node = config->GetSectionNode(path, create);
        return node->Ok() ? node->GetName() : wxString(wxS("(none)"));
    }
};

} // namespace

TEST_F(ConfigSectionTest, APathLeadsDownFromTheRootElement)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><a><b k='1'/><b k='2'/></a><b k='3'/></r>")));
    EXPECT_EQ(config->GetSectionNode(wxS("a/b"), false)->GetAllProps(), wxS(" k=\"1\""));
    EXPECT_EQ(config->GetSectionNode(wxS("b"), false)->GetAllProps(), wxS(" k=\"3\""));
    EXPECT_EQ(NameAt(wxS("a")), wxS("a"));
}

TEST_F(ConfigSectionTest, EmptySegmentsCountForNothing)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><a><b/></a></r>")));
    CXmlNode* const node = config->GetSectionNode(wxS("a/b"), false);
    for (const wchar_t* const path : {wxS("a//b"), wxS("/a/b"), wxS("a/b/"), wxS("//a///b//")})
        EXPECT_EQ(config->GetSectionNode(path, false), node) << path;
    EXPECT_EQ(NameAt(wxS("")), wxS("r"));
    EXPECT_EQ(NameAt(wxS("//")), wxS("r"));
}

TEST_F(ConfigSectionTest, NamesAreExact)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><Win/></r>")));
    EXPECT_EQ(NameAt(wxS("win")), wxS("(none)"));
    EXPECT_EQ(NameAt(wxS("Win")), wxS("Win"));
}

TEST_F(ConfigSectionTest, AMissingStepIsTheEmptyNode)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><a/></r>")));
    EXPECT_EQ(config->GetSectionNode(wxS("a/b"), false), config->GetEmptyNode());
    EXPECT_EQ(config->GetSectionNode(wxS("x/b"), false), config->GetEmptyNode());
    EXPECT_EQ(config->GetSectionNode(wxS("a"), false)->GetChildrenCount(), 0);
}

TEST_F(ConfigSectionTest, MissingStepsAreMadeOnRequest)
{
    ASSERT_TRUE(config->SetContent(wxS("<r><a/></r>")));
    EXPECT_EQ(NameAt(wxS("a/b//c"), true), wxS("c"));
    EXPECT_EQ(NameAt(wxS("a/b/c")), wxS("c"));
    EXPECT_EQ(config->GetRawRoot()->GetChildrenCount(), 1) << "what was there is used";
}

TEST_F(ConfigSectionTest, WithoutATreeThereIsNoSectionUntilOneIsMade)
{
    EXPECT_EQ(config->GetSectionNode(wxS("a"), false), config->GetEmptyNode());
    EXPECT_EQ(RootName(), wxS("(none)"));
    EXPECT_EQ(NameAt(wxS("a"), true), wxS("a"));
    EXPECT_EQ(RootName(), wxS("Config"));
}

TEST_F(ConfigSectionTest, TextsAndCommentsAreNoSections)
{
    ASSERT_TRUE(config->SetContent(wxS("<r>some text<!-- a comment --><text k='1'/></r>")));
    EXPECT_EQ(config->GetSectionNode(wxS("text"), false)->GetAllProps(), wxS(" k=\"1\""));
    EXPECT_EQ(NameAt(wxS("comment")), wxS("(none)"));
    config->GetSectionNode(wxS("comment"), true)->AddProp(wxS("k"), wxS("2"));
    EXPECT_EQ(config->GetSectionNode(wxS("comment"), false)->GetAllProps(), wxS(" k=\"2\""));
}

TEST_F(ConfigSectionTest, APathDeeperThanTheDocumentMayBeIsTheEmptyNode)
{
    config->SetMaxDepth(3);
    EXPECT_EQ(NameAt(wxS("a/b"), true), wxS("b"));
    EXPECT_EQ(config->GetSectionNode(wxS("a/b/c"), true), config->GetEmptyNode());
    EXPECT_FALSE(config->ObjectStore(tCfgObject{Recorder(wxS("o")), wxS("a/b/c")}));
    EXPECT_EQ(Calls(), wxS(""));
}

TEST_F(ConfigSectionTest, ChangesBetweenLookUpsAreSeen)
{
    std::string content;
    for (int i = 0; i < 200; ++i)
        content += "<s" + std::to_string(i) + "/>";
    ASSERT_TRUE(config->SetContent(FromSystemName("<r>" + content + "</r>")));
    CXmlNode* const root = config->GetRawRoot();
    EXPECT_EQ(NameAt(wxS("s150")), wxS("s150"));
    EXPECT_EQ(NameAt(wxS("new")), wxS("(none)"));
    root->AddRawNode(wxS("new"))->AddProp(wxS("k"), 1L);
    root->AddRawNode(wxS("new"))->AddProp(wxS("k"), 2L);
    EXPECT_EQ(config->GetSectionNode(wxS("new"), false)->GetAllProps(), wxS(" k=\"1\"")) << "the first of a name";
    config->GetSectionNode(wxS("s150"), false)->SetName(wxS("renamed"));
    EXPECT_EQ(NameAt(wxS("s150")), wxS("(none)"));
    EXPECT_EQ(NameAt(wxS("renamed")), wxS("renamed"));
    EXPECT_TRUE(root->RemoveRawNode(wxS("new")));
    EXPECT_EQ(config->GetSectionNode(wxS("new"), false)->GetAllProps(), wxS(" k=\"2\""));
    CXmlNode* const moved = config->GetSectionNode(wxS("s199"), false);
    root->RemoveChild(moved);
    EXPECT_EQ(NameAt(wxS("s199")), wxS("(none)"));
    moved->SetName(wxS("s0"));
    moved->AddProp(wxS("k"), 3L);
    root->InsertChildAt(moved, config->GetSectionNode(wxS("s0"), false), false);
    EXPECT_EQ(config->GetSectionNode(wxS("s0"), false)->GetAllProps(), wxS(" k=\"3\""));
    root->RemoveChildren();
    EXPECT_EQ(NameAt(wxS("s1")), wxS("(none)"));
}
