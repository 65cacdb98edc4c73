#include "engine/double_pool_detail.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace qxjs
{

namespace
{
struct ByAddress
{
    template <typename Block> bool operator()(const std::unique_ptr<Block>& block, const Block* address) const
    {
        return std::less<const Block*>()(block.get(), address);
    }
};
} // namespace

bool DoublePool::Contains(const void* address) const
{
    const Block* block = BlockOf(address);
    auto found = std::lower_bound(m_blocks.begin(), m_blocks.end(), block, ByAddress());
    return found != m_blocks.end() && found->get() == block;
}

void DoublePool::Mark(const void* cell)
{
    Block* block = BlockOf(cell);
    const auto index = static_cast<std::size_t>(static_cast<const double*>(cell) - block->cells);
    block->marks[index / 8] |= static_cast<std::uint8_t>(1U << (index % 8));
    block->used = true;
}

void DoublePool::UseBlock(Block* block)
{
    block->used = true;
    m_next = block->cells;
    m_end = block->cells + kCells;
}

void DoublePool::Sweep()
{
    for (auto& block : m_blocks) {
        std::memset(block->marks, 0, sizeof block->marks);
        block->used = false;
    }
    m_marker.MarkDoubles(*this);
    for (auto& block : m_blocks) {
        if (!block->used)
            m_free.push_back(block.get());
    }
}

// Half of the blocks are free afterwards: with fewer, programs that keep many doubles would sweep all the time.
void DoublePool::Grow()
{
    const std::size_t wanted = std::max<std::size_t>(1, m_blocks.size() - m_free.size());
    while (m_free.size() < wanted) {
        m_blocks.push_back(std::make_unique<Block>());
        m_free.push_back(m_blocks.back().get());
    }
    std::sort(m_blocks.begin(), m_blocks.end());
}

void DoublePool::Refill()
{
    if (m_free.empty()) {
        Sweep();
        Grow();
    }
    Block* block = m_free.back();
    m_free.pop_back();
    UseBlock(block);
}

} // namespace qxjs
