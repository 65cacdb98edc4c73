#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace qxjs
{

// Where the doubles live that double words point to. The engine keeps numbers in its values, so these cells are ours:
// bump allocation in whole free blocks, and when none is left, a sweep that keeps what the owner marks. Tying this to
// the engine's collections would let a loop that only makes doubles grow without bound.
class DoublePool
{
public:
    class Marker
    {
    public:
        // Calls Mark for every cell in use.
        virtual void MarkDoubles(DoublePool& pool) = 0;

    protected:
        ~Marker() = default;
    };

    explicit DoublePool(Marker& marker) : m_marker(marker) {}
    DoublePool(const DoublePool&) = delete;
    DoublePool& operator=(const DoublePool&) = delete;

    // A new cell, 8-aligned. It survives the next sweep only if the marker marks it.
    double* New(double value)
    {
        if (m_next == m_end)
            Refill();
        *m_next = value;
        return m_next++;
    }

    // Whether the address is that of a cell, used or not.
    bool Contains(const void* address) const;
    void Mark(const void* cell);
    std::size_t CountBlocks() const { return m_blocks.size(); }

private:
    static constexpr std::size_t kBlockBytes = 4096;
    static constexpr std::size_t kCells = 504;
    struct alignas(kBlockBytes) Block
    {
        std::uint8_t marks[kCells / 8];
        bool used;
        alignas(8) double cells[kCells];
    };
    static_assert(sizeof(Block) == kBlockBytes);

    static Block* BlockOf(const void* address)
    {
        return reinterpret_cast<Block*>(reinterpret_cast<std::uintptr_t>(address) & ~(kBlockBytes - 1));
    }
    void Refill();
    void Sweep();
    void Grow();
    void UseBlock(Block* block);

    Marker& m_marker;
    std::vector<std::unique_ptr<Block>> m_blocks; // sorted by address
    std::vector<Block*> m_free;
    double* m_next = nullptr;
    double* m_end = nullptr;
};

} // namespace qxjs
