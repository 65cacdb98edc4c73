#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// The merges on plain trees, as slow and as close to the rules as possible.
namespace merge_model
{

struct Item
{
    enum Kind
    {
        element,
        text,
        comment
    };

    Kind kind = element;
    std::string name;
    std::string content;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<std::shared_ptr<Item>> children;

    const std::string* Attribute(const std::string& attribute) const;
    std::string AttributeOr(const std::string& attribute) const;
    void DeleteAttribute(const std::string& attribute);
};
using ItemPtr = std::shared_ptr<Item>;

/// As XML on one line.
std::string Dump(const Item& item);

ItemPtr SearchNode(const std::string& name, const Item& src, const Item& parent, bool nameOnly);
void MergeWith(Item& base, Item& overlay, ItemPtr anchor, bool after);
void MergeXml(Item& dest, const Item& src, bool keepExisting);

} // namespace merge_model
