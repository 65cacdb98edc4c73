#include "xml/entity_table_detail.h"

#include <algorithm>

namespace xml_detail
{

namespace
{

bool IsPredefined(std::string_view name)
{
    static constexpr std::string_view names[] = {"amp", "apos", "gt", "lt", "quot"};
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

} // namespace

bool EntityTable::Declare(std::string_view name, std::string_view text)
{
    const size_t index = IndexOf(name);
    const std::vector<size_t> uses = ReferencesIn(text);
    for (const size_t used : uses)
        m_entities[used].usedBy.push_back(index);
    m_entities[index].uses = uses;
    return Deepen(index);
}

std::string EntityTable::FindUndeclared(std::string_view text)
{
    std::vector<size_t> open = ReferencesIn(text);
    while (!open.empty()) {
        Entity& entity = m_entities[open.back()];
        open.pop_back();
        if (entity.nesting == 0)
            return entity.name;
        if (entity.checked)
            continue;
        entity.checked = true;
        open.insert(open.end(), entity.uses.begin(), entity.uses.end());
    }
    return {};
}

size_t EntityTable::IndexOf(std::string_view name)
{
    const auto [place, isNew] = m_indices.emplace(name, m_entities.size());
    if (isNew)
        m_entities.emplace_back().name = name;
    return place->second;
}

std::vector<size_t> EntityTable::ReferencesIn(std::string_view text)
{
    std::vector<size_t> references;
    for (size_t at = text.find('&'); at != text.npos; at = text.find('&', at)) {
        const size_t end = text.find_first_of("&;", ++at);
        if (end == text.npos)
            break;
        const std::string_view name = text.substr(at, end - at);
        at = end;
        if (text[end] == ';' && !name.empty() && name.front() != '#' && !IsPredefined(name))
            references.push_back(IndexOf(name));
    }
    return references;
}

/// Each entity is deepened at most as often as entities may be nested, so the whole stays linear in the declarations.
bool EntityTable::Deepen(size_t changed)
{
    std::vector<size_t> open{changed};
    while (!open.empty()) {
        const size_t index = open.back();
        open.pop_back();
        unsigned int nesting = 1;
        for (const size_t used : m_entities[index].uses)
            nesting = std::max(nesting, m_entities[used].nesting + 1);
        if (nesting > maxNesting)
            return false;
        if (nesting <= m_entities[index].nesting)
            continue;
        m_entities[index].nesting = nesting;
        open.insert(open.end(), m_entities[index].usedBy.begin(), m_entities[index].usedBy.end());
    }
    return true;
}

} // namespace xml_detail
