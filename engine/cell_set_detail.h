#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <unordered_map>

namespace qxjs
{

// A set of addresses of collected things, a bit for each place in a megabyte where one can be. Every object of a
// host's class enters and leaves it once; a hash table of millions of them would cost more cache misses than making
// and collecting the objects. Any address may be asked for; none is looked into.
class CellSet
{
public:
    std::size_t Size() const { return m_size; }

    bool Contains(const void* p) const
    {
        const Region* region = Find(p);
        return region && (region->bits[WordOf(p)] & BitOf(p)) != 0 && IsPlace(p);
    }

    void Insert(const void* p)
    {
        Region* region = Find(p);
        if (!region)
            region = Add(p);
        std::uint64_t& word = region->bits[WordOf(p)];
        const bool is_new = (word & BitOf(p)) == 0;
        word |= BitOf(p);
        region->count += is_new;
        m_size += is_new;
    }

    void Erase(const void* p)
    {
        if (!Contains(p))
            return;
        Region* region = Find(p);
        region->bits[WordOf(p)] &= ~BitOf(p);
        --m_size;
        if (--region->count == 0)
            Drop(p);
    }

    // Calls `fn` with the address of each; the set must not change meanwhile.
    template <typename Fn> void ForEach(Fn fn) const
    {
        for (const auto& region : m_regions) {
            for (std::size_t word = 0; word < std::size(region.second->bits); ++word) {
                for (std::uint64_t bits = region.second->bits[word]; bits != 0; bits &= bits - 1) {
                    const std::uintptr_t place = word * 64 + static_cast<unsigned>(__builtin_ctzll(bits));
                    fn(reinterpret_cast<void*>((region.first << kRegionShift) | (place << kPlaceShift)));
                }
            }
        }
    }

private:
    static constexpr unsigned kRegionShift = 20;
    static constexpr unsigned kPlaceShift = 3;
    static constexpr std::uintptr_t kNone = ~std::uintptr_t{0};
    struct Region
    {
        std::size_t count;
        std::uint64_t bits[(std::size_t{1} << (kRegionShift - kPlaceShift)) / 64];
    };

    static std::uintptr_t Address(const void* p) { return reinterpret_cast<std::uintptr_t>(p); }
    static std::uintptr_t KeyOf(const void* p) { return Address(p) >> kRegionShift; }
    static bool IsPlace(const void* p) { return Address(p) % (1U << kPlaceShift) == 0; }
    static std::size_t PlaceOf(const void* p)
    {
        return (Address(p) & ((std::uintptr_t{1} << kRegionShift) - 1)) >> kPlaceShift;
    }
    static std::size_t WordOf(const void* p) { return PlaceOf(p) / 64; }
    static std::uint64_t BitOf(const void* p) { return std::uint64_t{1} << (PlaceOf(p) % 64); }

    // The engine fills and sweeps one region after the other, so the last one is nearly always the next.
    Region* Find(const void* p) const
    {
        const std::uintptr_t key = KeyOf(p);
        if (key == m_last_key)
            return m_last;
        const auto found = m_regions.find(key);
        if (found == m_regions.end())
            return nullptr;
        m_last_key = key;
        m_last = found->second.get();
        return m_last;
    }
    Region* Add(const void* p)
    {
        m_last_key = KeyOf(p);
        m_last = (m_regions[m_last_key] = std::make_unique<Region>()).get();
        return m_last;
    }
    void Drop(const void* p)
    {
        m_regions.erase(KeyOf(p));
        m_last_key = kNone;
        m_last = nullptr;
    }

    std::unordered_map<std::uintptr_t, std::unique_ptr<Region>> m_regions;
    mutable std::uintptr_t m_last_key = kNone;
    mutable Region* m_last = nullptr;
    std::size_t m_size = 0;
};

} // namespace qxjs
