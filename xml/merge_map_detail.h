#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace xml_detail
{

/// Pointers by numbers that are not 0, in one piece of memory: the merge into a large document looks up each element,
/// and would take most of its time for the nodes of a standard map. Keys are never taken out.
template <typename Value> class PointerMap
{
public:
    bool IsEmpty() const { return m_count == 0; }

    void Reserve(std::size_t count)
    {
        std::size_t size = m_slots.size();
        while (size < count * 2)
            size = size ? size * 2 : MinSize;
        if (size != m_slots.size())
            Resize(size);
    }

    /// The pointer of a key, which is new and null if there was none.
    Value*& operator[](std::uint64_t key)
    {
        Reserve(m_count + 1);
        Slot& slot = SlotOf(m_slots, key);
        m_count += slot.key == 0 ? 1 : 0;
        slot.key = key;
        return slot.value;
    }

    /// The pointer of a key; null for a new key.
    Value* const* Find(std::uint64_t key) const
    {
        if (m_slots.empty())
            return nullptr;
        const Slot& slot = SlotOf(m_slots, key);
        return slot.key ? &slot.value : nullptr;
    }

private:
    struct Slot
    {
        std::uint64_t key = 0;
        Value* value = nullptr;
    };

    static constexpr std::size_t MinSize = 16; ///< Sizes are powers of 2.

    template <typename Slots> static auto& SlotOf(Slots& slots, std::uint64_t key)
    {
        const std::size_t mask = slots.size() - 1;
        std::size_t at = static_cast<std::size_t>((key * 0x9E3779B97F4A7C15u) >> 32) & mask;
        while (slots[at].key != 0 && slots[at].key != key)
            at = (at + 1) & mask;
        return slots[at];
    }

    void Resize(std::size_t size)
    {
        std::vector<Slot> slots(size);
        for (const Slot& slot : m_slots) {
            if (slot.key)
                SlotOf(slots, slot.key) = slot;
        }
        m_slots.swap(slots);
    }

    std::vector<Slot> m_slots;
    std::size_t m_count = 0;
};

} // namespace xml_detail
