#include "tests/xml/merge_fixture.h"
#include "tests/xml/merge_model.h"
#include "xml/merge_detail.h"
#include "xml/tree_links_detail.h"

#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <limits>
#include <set>

using merge_model::Item;
using merge_model::ItemPtr;

namespace
{

using Program = std::vector<std::uint8_t>;

ItemPtr MakeItem(Item::Kind kind, const std::string& name, const std::string& content = std::string())
{
    const auto item = std::make_shared<Item>();
    item->kind = kind;
    item->name = name;
    item->content = content;
    return item;
}

void AddAttribute(Item& item, std::uint8_t value)
{
    static const std::pair<const char*, const char*> attributes[] = {{"k", "1"},
                                                                     {"k", "2"},
                                                                     {"k", "x"},
                                                                     {"k", "X"},
                                                                     {"m", "1"},
                                                                     {"m", "2"},
                                                                     {"m", "1"},
                                                                     {"Merge", "Pos"},
                                                                     {"Merge", "Pos"},
                                                                     {"Merge", "Pos"},
                                                                     {"Merge", "Remove"},
                                                                     {"Merge", "Force"},
                                                                     {"Merge", "PosBefore"},
                                                                     {"Merge", "posbefore"},
                                                                     {"Merge", "Add"},
                                                                     {"Merge", "?"},
                                                                     {"merge", "Pos"},
                                                                     {"Name", "1"},
                                                                     {"Name", "x"},
                                                                     {"PlaceHolder", "1"},
                                                                     {"PlaceHolder", "X"},
                                                                     {"PlaceHolder", ""},
                                                                     {"M", "1"}};
    const auto& [name, text] = attributes[value % std::size(attributes)];
    if (!item.Attribute(name))
        item.attributes.emplace_back(name, text);
}

/// Makes a tree: each byte adds a node or an attribute, or goes a level up or down. Any part of a program is one too,
/// so that those that fail shrink well.
ItemPtr Build(const Program& program)
{
    static const char* const names[] = {"a", "a", "A", "b", "c", "PlaceHolder", "text"};
    const ItemPtr root = MakeItem(Item::element, "r");
    std::vector<ItemPtr> open = {root};
    for (const std::uint8_t byte : program) {
        const std::uint8_t value = byte / 8;
        std::vector<ItemPtr>& children = open.back()->children;
        const ItemPtr last = children.empty() ? nullptr : children.back();
        if (byte % 8 < 2)
            children.push_back(MakeItem(Item::element, names[value % std::size(names)]));
        else if (byte % 8 < 5 && last && last->kind == Item::element)
            AddAttribute(*last, value);
        else if (byte % 8 == 5 && last && last->kind == Item::element)
            open.push_back(last);
        else if (byte % 8 == 6 && open.size() > 1)
            open.pop_back();
        else if (byte % 8 == 7 && value % 2)
            children.push_back(MakeItem(Item::comment, "comment", "c"));
        else if (byte % 8 == 7 && !(last && last->kind == Item::text))
            children.push_back(MakeItem(Item::text, "text", "t"));
    }
    return root;
}

/// Keeps the first child of each name on every level.
void DropRepeatedNames(Item& item)
{
    std::set<std::string> names;
    std::vector<ItemPtr> children;
    for (const ItemPtr& child : item.children) {
        if (names.insert(child->name == "A" ? "a" : child->name).second)
            children.push_back(child);
        DropRepeatedNames(*child);
    }
    item.children = children;
}

Program SomeProgram()
{
    return *rc::gen::scale(4, rc::gen::arbitrary<Program>());
}

wxXmlNode& RootOf(CXmlDocument& document)
{
    return *document.GetRawRoot()->GetXmlNode();
}

void DeleteAll(const std::vector<wxXmlNode*>& nodes)
{
    for (wxXmlNode* const node : nodes)
        xml_detail::DeleteTree(node, [](const wxXmlNode*) {});
}

std::size_t CountNodes(wxXmlNode& top)
{
    std::size_t count = 0;
    unsigned int depth = 0;
    for (wxXmlNode* node = &top; node; node = xml_detail::NextInTree(node, &top, depth))
        ++count;
    return count;
}

} // namespace

RC_GTEST_PROP(MergeProperties, overlay_gives_what_the_rules_give, ())
{
    const ItemPtr base = Build(SomeProgram());
    const ItemPtr overlay = Build(SomeProgram());
    TestDocument document(Dump(*base));
    TestDocument other(Dump(*overlay));
    merge_model::MergeWith(*base, *overlay, nullptr, true);
    RC_ASSERT(document.MergeWith(&other));
    RC_ASSERT(document.Dump() == Dump(*base));
    RC_ASSERT(other.Dump() == Dump(*overlay));
}

RC_GTEST_PROP(MergeProperties, overlay_gives_the_same_with_an_index_from_the_start, ())
{
    const ItemPtr base = Build(SomeProgram());
    const ItemPtr overlay = Build(SomeProgram());
    TestDocument document(Dump(*base));
    TestDocument other(Dump(*overlay));
    merge_model::MergeWith(*base, *overlay, nullptr, true);
    xml_detail::OverlayMerge merge(*rc::gen::inRange(0, 20));
    merge.Run(RootOf(document), RootOf(other), nullptr, true);
    DeleteAll(merge.TakeRemoved());
    RC_ASSERT(document.Dump() == Dump(*base));
    RC_ASSERT(other.Dump() == Dump(*overlay));
}

RC_GTEST_PROP(MergeProperties, copy_gives_what_the_rules_give, (bool keepExisting))
{
    const ItemPtr dest = Build(SomeProgram());
    const ItemPtr src = Build(SomeProgram());
    TestDocument document(Dump(*dest));
    TestDocument other(Dump(*src));
    merge_model::MergeXml(*dest, *src, keepExisting);
    xml_detail::CopyMerge merge(keepExisting, *rc::gen::inRange(0, 20));
    merge.Run(RootOf(document), RootOf(other));
    RC_ASSERT(document.Dump() == Dump(*dest));
    RC_ASSERT(other.Dump() == Dump(*src));
}

RC_GTEST_PROP(MergeProperties, no_node_is_lost, ())
{
    TestDocument document(Dump(*Build(SomeProgram())));
    TestDocument other(Dump(*Build(SomeProgram())));
    const std::size_t before = CountNodes(RootOf(document)) + CountNodes(RootOf(other));
    xml_detail::OverlayMerge merge;
    merge.Run(RootOf(document), RootOf(other), nullptr, true);
    std::size_t after = CountNodes(RootOf(document)) + CountNodes(RootOf(other));
    const std::vector<wxXmlNode*> removed = merge.TakeRemoved();
    for (wxXmlNode* const node : removed)
        after += CountNodes(*node);
    DeleteAll(removed);
    RC_ASSERT(after == before);
}

RC_GTEST_PROP(MergeProperties, copy_of_what_is_there_changes_nothing, (bool keepExisting))
{
    const ItemPtr item = Build(SomeProgram());
    DropRepeatedNames(*item);
    TestDocument document(Dump(*item));
    TestDocument same(Dump(*item));
    RC_ASSERT(document.MergeXML(&same, keepExisting));
    RC_ASSERT(document.Dump() == Dump(*item));
    RC_ASSERT(document.MergeXML(&document, keepExisting));
    RC_ASSERT(document.Dump() == Dump(*item));
}

RC_GTEST_PROP(MergeProperties, order_of_children_is_known_whatever_is_inserted_where, ())
{
    wxXmlNode parent(wxXML_ELEMENT_NODE, "r");
    xml_detail::MergeChildren children(parent, 0);
    xml_detail::MergeChildren walked(parent, std::numeric_limits<std::size_t>::max());
    std::vector<wxXmlNode*> expected;
    const auto steps = *rc::gen::container<std::vector<std::pair<std::uint8_t, std::uint16_t>>>(
        *rc::gen::inRange<std::size_t>(0, 600), rc::gen::arbitrary<std::pair<std::uint8_t, std::uint16_t>>());
    wxXmlNode* at = nullptr;
    for (const auto& [kind, where] : steps) {
        auto* const child = new wxXmlNode(wxXML_ELEMENT_NODE, where % 3 ? "a" : "b");
        child->AddAttribute("k", wxString::Format("%d", where / 3 % 5));
        child->AddAttribute("m", wxString::Format("%d", where / 15 % 7));
        // Mostly at the same child again, or at the one added last, which uses up the room there.
        if (!at || kind % 16 == 0)
            at = expected.empty() ? nullptr : expected[where % expected.size()];
        const bool after = kind % 2;
        if (at) {
            const auto place = std::find(expected.begin(), expected.end(), at) + (after ? 1 : 0);
            children.InsertAt(*child, *at, after);
            expected.insert(place, child);
        } else {
            children.Append(*child);
            expected.push_back(child);
        }
        if (kind % 4 < 2)
            at = child;
        if (kind % 32 == 31) {
            const auto gone = expected.begin() + static_cast<std::ptrdiff_t>(where % expected.size());
            children.Remove(**gone);
            at = *gone == at ? nullptr : at;
            delete *gone;
            expected.erase(gone);
        }
        wxXmlNode src(wxXML_ELEMENT_NODE, "a");
        src.AddAttribute("k", wxString::Format("%d", kind % 5));
        src.AddAttribute("m", wxString::Format("%d", kind / 5 % 7));
        RC_ASSERT(children.FindCounterpart("a", src) == walked.FindCounterpart("a", src));
        RC_ASSERT(children.FindByName("b") == walked.FindByName("b"));
    }
    std::vector<wxXmlNode*> found;
    for (wxXmlNode* node = parent.GetChildren(); node; node = node->GetNext())
        found.push_back(node);
    RC_ASSERT(found == expected);
}
