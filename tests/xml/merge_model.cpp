#include "tests/xml/merge_model.h"

#include <algorithm>
#include <cctype>

namespace merge_model
{

namespace
{

bool SameNoCase(const std::string& a, const std::string& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

void Unlink(Item& parent, const ItemPtr& child)
{
    parent.children.erase(std::find(parent.children.begin(), parent.children.end(), child));
}

void InsertChildAt(Item& parent, const ItemPtr& child, const ItemPtr& at, bool after)
{
    std::vector<ItemPtr>& children = parent.children;
    std::size_t reached = 0;
    while (reached < children.size() && children[reached] != at && reached + 1 < children.size())
        ++reached;
    if (!children.empty() && after)
        ++reached;
    children.insert(children.begin() + static_cast<std::ptrdiff_t>(reached), child);
}

void AddInherited(Item& base, const ItemPtr& child, const ItemPtr& anchor, bool after)
{
    if (anchor)
        InsertChildAt(base, child, anchor, after);
    else
        base.children.push_back(child);
}

ItemPtr SearchPlaceHolder(const std::string& name, const Item& parent)
{
    for (const ItemPtr& child : parent.children) {
        if (SameNoCase(child->name, "PlaceHolder") && SameNoCase(child->AttributeOr("Name"), name))
            return child;
    }
    return nullptr;
}

/// Returns the placeholder, null without one.
ItemPtr AddAtPlaceHolder(Item& base, const ItemPtr& child, bool after)
{
    const ItemPtr placeHolder = SearchPlaceHolder(child->AttributeOr("PlaceHolder"), base);
    if (placeHolder)
        InsertChildAt(base, child, placeHolder, after);
    else
        base.children.push_back(child);
    child->DeleteAttribute("Merge");
    child->DeleteAttribute("PlaceHolder");
    return placeHolder;
}

} // namespace

const std::string* Item::Attribute(const std::string& attribute) const
{
    for (const auto& [key, value] : attributes) {
        if (key == attribute)
            return &value;
    }
    return nullptr;
}

std::string Item::AttributeOr(const std::string& attribute) const
{
    const std::string* const value = Attribute(attribute);
    return value ? *value : std::string();
}

void Item::DeleteAttribute(const std::string& attribute)
{
    const auto found =
        std::find_if(attributes.begin(), attributes.end(), [&](const auto& entry) { return entry.first == attribute; });
    if (found != attributes.end())
        attributes.erase(found);
}

std::string Dump(const Item& item)
{
    if (item.kind == Item::text)
        return item.content;
    if (item.kind == Item::comment)
        return "<!--" + item.content + "-->";
    std::string out = "<" + item.name;
    for (const auto& [key, value] : item.attributes)
        out += " " + key + "='" + value + "'";
    if (item.children.empty())
        return out + "/>";
    out += ">";
    for (const ItemPtr& child : item.children)
        out += Dump(*child);
    return out + "</" + item.name + ">";
}

ItemPtr SearchNode(const std::string& name, const Item& src, const Item& parent, bool nameOnly)
{
    auto cursor = src.attributes.begin();
    for (const ItemPtr& child : parent.children) {
        if (!SameNoCase(child->name, name))
            continue;
        if (nameOnly || cursor == src.attributes.end())
            return child;
        bool isMatch = true;
        while (isMatch && cursor != src.attributes.end() && !SameNoCase(cursor->first, "Merge")) {
            const std::string* const value = child->Attribute(cursor->first);
            isMatch = value && SameNoCase(*value, cursor->second);
            if (isMatch)
                ++cursor;
        }
        if (isMatch)
            return child;
    }
    return nullptr;
}

void MergeWith(Item& base, Item& overlay, ItemPtr anchor, bool after)
{
    const std::vector<ItemPtr> children = overlay.children;
    for (const ItemPtr& child : children) {
        const bool hasPlaceHolder = !child->AttributeOr("PlaceHolder").empty();
        const std::string mode = child->AttributeOr("Merge");
        const bool isBefore = SameNoCase(mode, "PosBefore");
        const bool isMatch = isBefore || SameNoCase(mode, "Force") || SameNoCase(mode, "Pos") ||
                             SameNoCase(mode, "PosAfter") || SameNoCase(mode, "Stop");
        if (SameNoCase(mode, "Remove")) {
            if (const ItemPtr counterpart = SearchNode(child->name, *child, base, false))
                Unlink(base, counterpart);
        } else if (!isMatch) {
            Unlink(overlay, child);
            if (hasPlaceHolder)
                AddAtPlaceHolder(base, child, after);
            else
                AddInherited(base, child, anchor, after);
        } else if (hasPlaceHolder) {
            Unlink(overlay, child);
            if (const ItemPtr placeHolder = AddAtPlaceHolder(base, child, !isBefore))
                anchor = placeHolder;
        } else if (const ItemPtr counterpart = SearchNode(child->name, *child, base, false)) {
            if (!child->children.empty())
                MergeWith(*counterpart, *child, anchor, after);
            anchor = counterpart;
            after = !isBefore;
        } else if (!child->children.empty()) {
            Unlink(overlay, child);
            AddInherited(base, child, anchor, after);
        }
    }
}

void MergeXml(Item& dest, const Item& src, bool keepExisting)
{
    for (const ItemPtr& child : src.children) {
        if (const ItemPtr counterpart = SearchNode(child->name, *child, dest, true)) {
            for (const auto& [key, value] : child->attributes) {
                const auto found = std::find_if(counterpart->attributes.begin(), counterpart->attributes.end(),
                                                [name = key](const auto& entry) { return entry.first == name; });
                if (found == counterpart->attributes.end())
                    counterpart->attributes.emplace_back(key, value);
                else if (!keepExisting)
                    found->second = value;
            }
            MergeXml(*counterpart, *child, keepExisting);
        } else {
            const auto added = std::make_shared<Item>();
            added->name = child->name;
            added->attributes = child->attributes;
            dest.children.push_back(added);
        }
    }
}

} // namespace merge_model
