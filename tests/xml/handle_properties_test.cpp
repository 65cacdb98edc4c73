#include "script/script.h"
#include "script/script_minimal.h"
#include "tests/xml/xml_fixture.h"

#include <rapidcheck/gtest.h>
#include <wx/xml/xml.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace
{

/// A plain tree that the document is held against.
struct Model
{
    std::string name;
    Model* parent = nullptr;
    std::vector<std::unique_ptr<Model>> children;
    CXmlNode* handle = nullptr; ///< As first met.
    CXmlNode* guest = nullptr;  ///< That of the overlay that the node came from, while there is that.

    int IndexOf(const Model& child) const
    {
        for (std::size_t i = 0; i < children.size(); ++i)
            if (children[i].get() == &child)
                return static_cast<int>(i);
        return -1;
    }
};

/// Drives a document and the plain tree through the same random edits.
class Walk
{
public:
    explicit Walk(CXmlDocument& document) : m_document(document) { SetRoot(); }

    void Step()
    {
        using Action = void (Walk::*)();
        static constexpr Action actions[] = {
            &Walk::Add,         &Walk::Add,     &Walk::Add,      &Walk::Remove,   &Walk::RemoveAll,
            &Walk::Move,        &Walk::MoveAt,  &Walk::Navigate, &Walk::Navigate, &Walk::SetText,
            &Walk::RemoveNamed, &Walk::Overlay, &Walk::Overlay,  &Walk::Copy,     &Walk::RemoveByOverlay};
        (this->*actions[*rc::gen::inRange<std::size_t>(0, std::size(actions))])();
        if (*rc::gen::inRange(0, 60) == 0)
            SetRoot();
    }

    void Check()
    {
        RC_ASSERT(Show(m_document) == Text(*m_root));
        CheckHandles(*m_root);
    }

private:
    void SetRoot()
    {
        m_document.SetRoot(wxS("r"));
        m_root = std::make_unique<Model>();
        m_root->name = "r";
    }

    static std::string Text(const Model& node)
    {
        if (node.name[0] == '#')
            return node.name;
        std::string text = "<" + node.name;
        if (node.children.empty())
            return text + "/>";
        text += ">";
        for (const auto& child : node.children)
            text += Text(*child);
        return text + "</" + node.name + ">";
    }

    /// The handle of a node, by the way from the root; the same as ever.
    CXmlNode* Handle(Model& node)
    {
        CXmlNode* const handle =
            node.parent ? Handle(*node.parent)->GetRawItem(node.parent->IndexOf(node)) : m_document.GetRawRoot();
        RC_ASSERT(handle->Ok());
        RC_ASSERT(!node.handle || node.handle == handle);
        return node.handle = handle;
    }

    void CheckHandles(Model& node)
    {
        CXmlNode* const handle = Handle(node);
        RC_ASSERT(handle->GetChildrenCount() == static_cast<int>(node.children.size()));
        RC_ASSERT(handle->GetIndex() == (node.parent ? node.parent->IndexOf(node) : -1));
        if (node.guest) {
            RC_ASSERT(node.guest->GetXmlNode() == handle->GetXmlNode());
            RC_ASSERT(node.guest->GetDocument() == &m_document);
            RC_ASSERT(node.guest->GetChildrenCount() == static_cast<int>(node.children.size()));
        }
        if (handle->GetJSLink()->GetContext())
            RC_ASSERT(handle->GetJSLink()->IsCreated());
        for (const auto& child : node.children)
            CheckHandles(*child);
    }

    static void Collect(Model& node, std::vector<Model*>& into)
    {
        if (node.name[0] != '#')
            into.push_back(&node);
        for (const auto& child : node.children)
            Collect(*child, into);
    }

    Model& AnyElement()
    {
        std::vector<Model*> all;
        Collect(*m_root, all);
        return **rc::gen::elementOf(all);
    }

    static std::string AnyName() { return *rc::gen::element<std::string>("a", "b", "c"); }

    Model& Append(Model& parent, const std::string& name)
    {
        parent.children.push_back(std::make_unique<Model>());
        parent.children.back()->name = name;
        parent.children.back()->parent = &parent;
        return *parent.children.back();
    }

    void Add()
    {
        Model& parent = AnyElement();
        const std::string name = AnyName();
        CXmlNode* const added = Handle(parent)->AddRawNode(wxString::FromUTF8(name));
        Append(parent, name).handle = added;
    }

    void Remove()
    {
        Model& node = AnyElement();
        if (!node.parent)
            return;
        CXmlNode* const handle = Handle(node);
        RC_ASSERT(Handle(*node.parent)->RemoveRawNode(handle));
        Take(node);
    }

    void RemoveNamed()
    {
        Model& parent = AnyElement();
        const std::string name = AnyName();
        const auto hasName = [&](const auto& child) { return child->name == name; };
        const auto child = std::find_if(parent.children.begin(), parent.children.end(), hasName);
        RC_ASSERT(Handle(parent)->RemoveNode(wxString::FromUTF8(name)) == (child != parent.children.end()));
        if (child != parent.children.end())
            parent.children.erase(child);
    }

    void RemoveAll()
    {
        Model& parent = AnyElement();
        if (&parent == m_root.get() && *rc::gen::inRange(0, 3) != 0)
            return;
        Handle(parent)->RemoveChildren();
        parent.children.clear();
    }

    static std::unique_ptr<Model> Take(Model& node)
    {
        auto& siblings = node.parent->children;
        const auto place = siblings.begin() + node.parent->IndexOf(node);
        std::unique_ptr<Model> taken = std::move(*place);
        siblings.erase(place);
        return taken;
    }

    /// Takes a node out of the tree, and says where to: null when there is nothing to move.
    std::unique_ptr<Model> Unlink(Model*& target, CXmlNode*& handle)
    {
        Model& node = AnyElement();
        if (!node.parent)
            return nullptr;
        handle = Handle(node);
        Handle(*node.parent)->RemoveChild(handle);
        std::unique_ptr<Model> taken = Take(node);
        target = &AnyElement();
        return taken;
    }

    void Move()
    {
        Model* target = nullptr;
        CXmlNode* handle = nullptr;
        std::unique_ptr<Model> taken = Unlink(target, handle);
        if (!taken)
            return;
        Handle(*target)->InsertChild(handle, *rc::gen::arbitrary<bool>());
        taken->parent = target;
        target->children.push_back(std::move(taken));
    }

    void MoveAt()
    {
        Model* target = nullptr;
        CXmlNode* handle = nullptr;
        std::unique_ptr<Model> taken = Unlink(target, handle);
        if (!taken)
            return;
        const int count = static_cast<int>(target->children.size());
        const int index = *rc::gen::inRange(0, count + 1);
        const bool after = *rc::gen::arbitrary<bool>();
        CXmlNode* const at = Handle(*target)->GetRawItem(index);
        Handle(*target)->InsertChildAt(handle, at, after);
        const int reached = index < count ? index : count - 1;
        taken->parent = target;
        target->children.insert(target->children.begin() + (count == 0 ? 0 : reached + after), std::move(taken));
    }

    void SetText()
    {
        Model& parent = AnyElement();
        const std::string text = "#" + AnyName();
        Handle(parent)->SetNodeContent(wxString::FromUTF8(text));
        for (const auto& child : parent.children) {
            if (child->name[0] == '#') {
                child->name = text;
                return;
            }
        }
        Append(parent, text);
    }

    static void ForgetGuests(Model& node)
    {
        node.guest = nullptr;
        for (const auto& child : node.children)
            ForgetGuests(*child);
    }

    /// The last overlay ends here, and with it its handles on what is in the document now.
    CXmlDocument& NewOverlay(const std::string& children)
    {
        ForgetGuests(*m_root);
        m_overlay = std::make_unique<CXmlDocument>();
        RC_ASSERT(m_overlay->SetContent(wxString::FromUTF8("<r>" + children + "</r>")));
        return *m_overlay;
    }

    int FirstOfRoot(const std::string& name) const
    {
        const auto& children = m_root->children;
        const auto hasName = [&](const auto& child) { return child->name == name; };
        const auto found = std::find_if(children.begin(), children.end(), hasName);
        return found == children.end() ? -1 : static_cast<int>(found - children.begin());
    }

    void Overlay()
    {
        const std::string anchor = AnyName();
        const std::string name = AnyName();
        const bool after = *rc::gen::arbitrary<bool>();
        const std::string marker = "<" + anchor + " Merge='" + (after ? "Pos" : "PosBefore") + "'/>";
        CXmlDocument& overlay = NewOverlay(marker + "<" + name + "><b/></" + name + ">");
        CXmlNode* const moved = overlay.GetRawRoot()->GetRawItem(1);
        RC_ASSERT(m_document.MergeWith(&overlay));
        const int found = FirstOfRoot(anchor);
        Append(Append(*m_root, name), "b");
        m_root->children.back()->guest = moved;
        if (found >= 0)
            std::rotate(m_root->children.begin() + found + after, m_root->children.end() - 1, m_root->children.end());
    }

    void RemoveByOverlay()
    {
        const std::string name = AnyName();
        RC_ASSERT(m_document.MergeWith(&NewOverlay("<" + name + " Merge='Remove'/>")));
        const int found = FirstOfRoot(name);
        if (found >= 0)
            m_root->children.erase(m_root->children.begin() + found);
    }

    void Copy()
    {
        const std::string name = AnyName();
        RC_ASSERT(m_document.MergeXML(&NewOverlay("<" + name + "/>"), *rc::gen::arbitrary<bool>()));
        if (FirstOfRoot(name) < 0)
            Append(*m_root, name);
    }

    void Navigate()
    {
        Model& node = AnyElement();
        CXmlNode* const handle = Handle(node);
        RC_ASSERT(handle->GetName().utf8_string() == node.name);
        RC_ASSERT(handle->GetRawParent()->Ok() == (node.parent != nullptr));
        const int index = node.parent ? node.parent->IndexOf(node) : -1;
        const bool hasNext = node.parent && index + 1 < static_cast<int>(node.parent->children.size());
        RC_ASSERT(handle->GetRawNext()->Ok() == hasNext);
        RC_ASSERT(handle->IsLast() == !hasNext);
        RC_ASSERT(handle->GetRawPrevious()->Ok() == (index > 0));
        if (hasNext)
            RC_ASSERT(handle->GetRawNext()->GetRawPrevious() == handle);
        const int item = *rc::gen::inRange(-1, static_cast<int>(node.children.size()) + 2);
        const bool isThere = item >= 0 && item < static_cast<int>(node.children.size());
        RC_ASSERT(handle->GetRawItem(item)->Ok() == isThere);
    }

    CXmlDocument& m_document;
    std::unique_ptr<CXmlDocument> m_overlay;
    std::unique_ptr<Model> m_root;
};

/// Collections at every step of the bridge, while it lives.
class Stress
{
public:
    explicit Stress(bool on) : m_before(JS_SetStress(on)) {}
    ~Stress() { JS_SetStress(m_before); }

private:
    bool m_before;
};

void TakeWalk(CXmlDocument& document)
{
    Walk walk(document);
    for (int steps = *rc::gen::inRange(1, 60); steps > 0; --steps) {
        walk.Step();
        walk.Check();
    }
}

RC_GTEST_PROP(XmlHandleProperties, edits_do_what_they_do_to_a_plain_tree, ())
{
    CXmlDocument document;
    TakeWalk(document);
}

RC_GTEST_PROP(XmlHandleProperties, edits_do_what_they_do_to_a_plain_tree_with_script_and_collections, ())
{
    qxjsMinimal global;
    CJScript script(nullptr);
    RC_ASSERT(script.SetGlobal(global.GetJSLink(), wxString()));
    const Stress stress(*rc::gen::inRange(0, 10) == 0);
    CXmlDocument document(&script, wxS("Doc"), global.GetJSLink());
    TakeWalk(document);
}

} // namespace
