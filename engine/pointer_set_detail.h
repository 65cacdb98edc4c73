#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qxjs
{

// A set of addresses, open addressing with linear probing.
class PointerSet
{
public:
    std::size_t Size() const { return m_size; }

    bool Contains(const void* p) const { return !m_slots.empty() && p && m_slots[Find(p)] == p; }

    void Insert(const void* p)
    {
        if ((m_size + 1) * 2 > m_slots.size())
            Rehash(m_slots.empty() ? 64 : m_slots.size() * 2);
        const void*& slot = m_slots[Find(p)];
        m_size += slot != p;
        slot = p;
    }

    void Erase(const void* p)
    {
        if (!Contains(p))
            return;
        std::size_t hole = Find(p);
        m_slots[hole] = nullptr;
        --m_size;
        // Entries behind the hole that were pushed past it move back, or they would not be found again.
        for (std::size_t i = Next(hole); m_slots[i]; i = Next(i)) {
            const std::size_t home = Home(m_slots[i]);
            if (((i - home) & Mask()) >= ((i - hole) & Mask())) {
                m_slots[hole] = m_slots[i];
                m_slots[i] = nullptr;
                hole = i;
            }
        }
    }

private:
    std::size_t Mask() const { return m_slots.size() - 1; }
    std::size_t Next(std::size_t i) const { return (i + 1) & Mask(); }
    std::size_t Home(const void* p) const
    {
        return ((reinterpret_cast<std::uintptr_t>(p) >> 3) * 0x9E3779B97F4A7C15ULL >> 20) & Mask();
    }
    std::size_t Find(const void* p) const
    {
        std::size_t i = Home(p);
        while (m_slots[i] && m_slots[i] != p)
            i = Next(i);
        return i;
    }
    void Rehash(std::size_t size)
    {
        std::vector<const void*> old(size, nullptr);
        old.swap(m_slots);
        for (const void* p : old) {
            if (p)
                m_slots[Find(p)] = p;
        }
    }

    std::vector<const void*> m_slots;
    std::size_t m_size = 0;
};

} // namespace qxjs
