#include "preprocessor/name_hash_detail.h"

#include <chrono>
#include <cstddef>
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

/// Two characters, or one: names are short, and to copy a number of bytes only known here would be a call.
std::uint64_t Word(const wchar_t* at, size_t left)
{
    static_assert(sizeof(wchar_t) * 2 == sizeof(std::uint64_t));
    const std::uint64_t first = left > 0 ? static_cast<std::uint32_t>(at[0]) : 0;
    const std::uint64_t second = left > 1 ? static_cast<std::uint32_t>(at[1]) : 0;
    return first | (second << 32);
}

} // namespace

std::uint64_t HashOfName(std::wstring_view name)
{
    constexpr size_t whole = 4;
    const HashKeys& keys = Keys();
    std::uint64_t hash = keys.start ^ name.size();
    const auto add = [&](std::uint64_t first, std::uint64_t second) { hash = Fold(first ^ keys.first, second ^ hash); };
    const wchar_t* at = name.data();
    size_t left = name.size();
    for (; left >= whole; left -= whole, at += whole)
        add(Word(at, 2), Word(at + 2, 2));
    if (left != 0)
        add(Word(at, left), left > 2 ? Word(at + 2, left - 2) : 0);
    return Fold(hash, keys.last);
}
