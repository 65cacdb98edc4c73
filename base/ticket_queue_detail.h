#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>

namespace vcq::detail
{

/// Items in the order in which they came. Each has a number, its ticket, by which it is found while it waits.
template <typename Item> class TicketQueue
{
public:
    bool IsEmpty() const { return m_items.empty(); }
    bool HasOne() const { return m_items.size() == 1; }
    const Item& Front() const { return m_items.front(); }
    std::uint64_t Push(const Item& item)
    {
        m_items.push_back(item);
        return m_first + m_items.size() - 1;
    }
    Item Pop()
    {
        const Item item = m_items.front();
        m_items.pop_front();
        ++m_first;
        return item;
    }
    /// Null when it has been taken out.
    Item* Find(std::uint64_t ticket)
    {
        return ticket >= m_first && ticket - m_first < m_items.size() ? &m_items[ticket - m_first] : nullptr;
    }

private:
    std::deque<Item> m_items;
    std::uint64_t m_first = 1; ///< The ticket of the first; 0 is nobody's.
};

} // namespace vcq::detail
