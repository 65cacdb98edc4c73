#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace xml_detail
{

/// The general entities that a document type declares. The parser expands one inside the other by recursion, and drops
/// from an attribute those that it does not know when it has not read all declarations; this table knows beforehand.
class EntityTable
{
public:
    /// How many entities may stand one inside the other.
    static constexpr unsigned int maxNesting = 100;

    /// Notes that `name` stands for `text`. False when entities are now nested deeper than that, or without end. An
    /// external entity has no text: using it is an error of its own.
    bool Declare(std::string_view name, std::string_view text);

    /// The first entity without declaration that expanding `text` would need; empty when there is none.
    std::string FindUndeclared(std::string_view text);

private:
    struct Entity
    {
        std::string name;
        std::vector<size_t> uses;
        std::vector<size_t> usedBy;
        unsigned int nesting = 0; ///< 0 until it is declared
        bool checked = false;     ///< all that it needs is declared
    };

    size_t IndexOf(std::string_view name);
    std::vector<size_t> ReferencesIn(std::string_view text);
    bool Deepen(size_t index);

    std::vector<Entity> m_entities;
    std::unordered_map<std::string, size_t> m_indices;
};

} // namespace xml_detail
