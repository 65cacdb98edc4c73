#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <unordered_map>

#include "engine/js_types.h"

namespace qxjs
{

// The addresses a host wants looked at in collections. What stands there is the host's to change at any time, without
// notice; so which root holds a thing can only be remembered as a guess, to be checked.
class RootTable
{
public:
    struct Root
    {
        JSContext* cx;
        std::string name;
        const void* seen = nullptr; // what the guess for this root is filed under
    };
    using Roots = std::unordered_map<void*, Root>;

    void Add(void* address, JSContext* cx, const char* name)
    {
        Root& root = m_roots[address];
        root.cx = cx;
        root.name = name ? name : "";
        See(address, root, ThingAt(address));
    }
    void Remove(void* address)
    {
        const auto found = m_roots.find(address);
        if (found != m_roots.end())
            Remove(found);
    }
    void RemoveOf(const JSContext* cx)
    {
        for (auto root = m_roots.begin(); root != m_roots.end();)
            root = root->second.cx == cx ? Remove(root) : std::next(root);
    }
    void Clear()
    {
        m_roots.clear();
        m_guesses.clear();
    }

    // Whether some root holds the thing, as a word or as a bare address.
    bool Holds(const void* thing)
    {
        const auto guess = m_guesses.find(thing);
        if (guess != m_guesses.end() && ThingAt(guess->second) == thing)
            return true;
        for (auto& [address, root] : m_roots) {
            if (ThingAt(address) == thing) {
                See(address, root, thing);
                return true;
            }
        }
        return false;
    }

    Roots::const_iterator begin() const { return m_roots.begin(); }
    Roots::const_iterator end() const { return m_roots.end(); }

private:
    static const void* ThingAt(const void* address)
    {
        jsval word = 0;
        std::memcpy(&word, address, sizeof word);
        return JSVAL_IS_GCTHING(word) ? JSVAL_TO_GCTHING(word) : nullptr;
    }
    void See(void* address, Root& root, const void* thing)
    {
        Forget(address, root);
        if (!thing)
            return;
        root.seen = thing;
        m_guesses[thing] = address;
    }
    void Forget(void* address, Root& root)
    {
        const auto guess = m_guesses.find(root.seen);
        if (guess != m_guesses.end() && guess->second == address)
            m_guesses.erase(guess);
        root.seen = nullptr;
    }
    Roots::iterator Remove(Roots::iterator root)
    {
        Forget(root->first, root->second);
        return m_roots.erase(root);
    }

    Roots m_roots;
    std::unordered_map<const void*, void*> m_guesses; // the root that held a thing when it was last seen
};

} // namespace qxjs
