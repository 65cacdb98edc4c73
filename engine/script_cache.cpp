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

std::uint64_t MixWord(std::uint64_t hash, std::uint64_t word)
{
    hash = (hash ^ word) * 0x9E3779B97F4A7C15ULL;
    return hash ^ (hash >> 32);
}

// Eight bytes a step, the last of them may overlap; a byte-wise hash would cost as much as everything else.
std::uint64_t HashText(std::u16string_view text)
{
    std::uint64_t hash = text.size();
    std::uint64_t word = 0;
    const char16_t* from = text.data();
    constexpr std::size_t step = sizeof word / sizeof *from;
    if (text.size() < step) {
        for (char16_t unit : text)
            word = word << 16 | unit;
        return MixWord(hash, word);
    }
    for (const char16_t* const last = from + text.size() - step; from < last; from += step) {
        std::memcpy(&word, from, sizeof word);
        hash = MixWord(hash, word);
    }
    std::memcpy(&word, text.data() + text.size() - step, sizeof word);
    return MixWord(hash, word);
}
} // namespace

// A text hardly ever comes from many files, so their names need no more than their length here.
std::uint64_t ScriptCache::Hash(const Key& key)
{
    const std::uint64_t rest = std::uint64_t{key.line} * 2 + (key.scoped ? 1 : 0);
    return MixWord(HashText(key.text), rest ^ std::uint64_t{key.file.size()} << 40);
}

ScriptCache::Cached* ScriptCache::Locate(const Key& key, std::uint64_t hash)
{
    if (m_buckets.empty())
        m_buckets.resize(kBuckets);
    for (Cached* cached = Bucket(hash); cached; cached = cached->next) {
        if (cached->hash == hash && cached->line == key.line && cached->scoped == key.scoped &&
            cached->text == key.text && cached->file == key.file)
            return cached;
    }
    return nullptr;
}

::JSScript* ScriptCache::Find(const Key& key, bool& worth_keeping)
{
    worth_keeping = false;
    if (key.text.size() > kLongestText)
        return nullptr;
    const std::uint64_t hash = Hash(key);
    if (Cached* found = Locate(key, hash)) {
        if (found->place != m_entries.begin())
            m_entries.splice(m_entries.begin(), m_entries, found->place);
        return found->script;
    }
    // A tagged template's array of strings is made once a script, which a second run would show.
    if (key.text.find(u'`') != std::u16string_view::npos)
        return nullptr;
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
    const Cached& oldest = m_entries.back();
    Cached** link = &Bucket(oldest.hash);
    while (*link != &oldest)
        link = &(*link)->next;
    *link = oldest.next;
    m_text_units -= oldest.text.size();
    m_entries.pop_back();
}

void ScriptCache::Insert(const Key& key, ::JSScript* script)
{
    const std::uint64_t hash = Hash(key);
    if (Locate(key, hash))
        return;
    m_entries.push_front(
        {hash, std::u16string(key.text), std::string(key.file), key.line, key.scoped, script, {}, Bucket(hash)});
    m_entries.front().place = m_entries.begin();
    Bucket(hash) = &m_entries.front();
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
