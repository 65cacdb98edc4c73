#include <cstring>

#include "engine/class_detail.h"

// Hosts evaluate the same short texts again and again: conditions, loop bounds, substitutions. Compiling one costs some
// 5 us and its first run more, looking it up 0.05 us. What runs is the same script each time, and fresh literals and
// functions are made on each run, so only the time shows.
namespace qxjs
{

namespace
{
constexpr std::size_t kSeen = 512;

// Eight bytes a step; a byte-wise hash would cost as much as everything else for longer texts.
std::uint64_t Mix(std::uint64_t hash, const void* data, std::size_t bytes)
{
    const auto* from = static_cast<const unsigned char*>(data);
    for (; bytes != 0;) {
        std::uint64_t word = 0;
        const std::size_t step = bytes < sizeof word ? bytes : sizeof word;
        std::memcpy(&word, from, step);
        hash = (hash ^ word) * 0x9E3779B97F4A7C15ULL;
        hash ^= hash >> 32;
        from += step;
        bytes -= step;
    }
    return hash;
}
} // namespace

std::uint64_t ScriptCache::Hash(const Key& key)
{
    std::uint64_t hash = Mix(key.text.size(), key.text.data(), key.text.size() * sizeof(char16_t));
    hash = Mix(hash, key.file.data(), key.file.size());
    const std::uint64_t rest = std::uint64_t{key.line} * 2 + (key.scoped ? 1 : 0);
    return Mix(hash, &rest, sizeof rest);
}

ScriptCache::Entries::iterator ScriptCache::Locate(const Key& key, std::uint64_t hash)
{
    const auto range = m_index.equal_range(hash);
    for (auto found = range.first; found != range.second; ++found) {
        const Cached& cached = *found->second;
        if (cached.line == key.line && cached.scoped == key.scoped && cached.text == key.text &&
            cached.file == key.file)
            return found->second;
    }
    return m_entries.end();
}

::JSScript* ScriptCache::Find(const Key& key, bool& worth_keeping)
{
    worth_keeping = false;
    // A tagged template's array of strings is made once a script, which a second run would show.
    if (key.text.size() > kLongestText || key.text.find(u'`') != std::u16string_view::npos)
        return nullptr;
    const std::uint64_t hash = Hash(key);
    auto found = Locate(key, hash);
    if (found != m_entries.end()) {
        m_entries.splice(m_entries.begin(), m_entries, found);
        return found->script;
    }
    // Only a text that comes a second time is kept; those that never do cost nothing but this mark.
    if (m_seen.empty())
        m_seen.resize(kSeen);
    std::uint64_t& mark = m_seen[hash % kSeen];
    worth_keeping = mark == hash;
    mark = hash;
    return nullptr;
}

void ScriptCache::DropOldest()
{
    const auto oldest = std::prev(m_entries.end());
    const auto range = m_index.equal_range(oldest->hash);
    for (auto found = range.first; found != range.second; ++found) {
        if (found->second == oldest) {
            m_index.erase(found);
            break;
        }
    }
    m_text_units -= oldest->text.size();
    m_entries.pop_back();
}

void ScriptCache::Insert(const Key& key, ::JSScript* script)
{
    const std::uint64_t hash = Hash(key);
    if (Locate(key, hash) != m_entries.end())
        return;
    m_entries.push_front({hash, std::u16string(key.text), std::string(key.file), key.line, key.scoped, script});
    m_index.emplace(hash, m_entries.begin());
    m_text_units += key.text.size();
    while (m_entries.size() > kEntries || m_text_units > kTextUnits)
        DropOldest();
}

void ScriptCache::Trace(JSTracer* trc)
{
    for (Cached& cached : m_entries)
        js::gc::TraceExternalEdge(trc, &cached.script, "cached script");
}

} // namespace qxjs
