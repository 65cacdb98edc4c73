#include "preprocessor/name_hash_detail.h"

#include <chrono>
#include <cstddef>
#include <cstring>
#include <exception>
#include <random>

namespace
{

struct HashKeys
{
    HashKeys()
    {
        try {
            std::random_device source;
            for (std::uint64_t* const key : {&start, &first, &last})
                *key = (static_cast<std::uint64_t>(source()) << 32) | source();
        } catch (const std::exception&) {
            // A system without random numbers is no reason to refuse a text.
            std::mt19937_64 source(
                static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()));
            start = source();
            first = source();
            last = source();
        }
    }

    std::uint64_t start;
    std::uint64_t first;
    std::uint64_t last;
};

const HashKeys& Keys()
{
    static const HashKeys keys;
    return keys;
}

/// The two halves of the product of two words, each bit of which depends on all bits of both, in one word.
std::uint64_t Fold(std::uint64_t left, std::uint64_t right)
{
    __extension__ using Product = unsigned __int128;
    const Product product = static_cast<Product>(left) * right;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

struct Block
{
    std::uint64_t words[2] = {};
};

Block BlockAt(const wchar_t* at, size_t size)
{
    Block block;
    std::memcpy(block.words, at, size * sizeof(wchar_t));
    return block;
}

} // namespace

std::uint64_t HashOfName(std::wstring_view name)
{
    constexpr size_t whole = sizeof(Block) / sizeof(wchar_t);
    const HashKeys& keys = Keys();
    std::uint64_t hash = keys.start ^ name.size();
    const auto add = [&](const Block& block) { hash = Fold(block.words[0] ^ keys.first, block.words[1] ^ hash); };
    const wchar_t* at = name.data();
    size_t left = name.size();
    for (; left >= whole; left -= whole, at += whole)
        add(BlockAt(at, whole));
    if (left != 0)
        add(BlockAt(at, left));
    return Fold(hash, keys.last);
}
