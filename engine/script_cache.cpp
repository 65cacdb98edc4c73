#include "engine/script_cache_detail.h"

#include <algorithm>
#include <cstring>

// Hosts evaluate the same short texts again and again: conditions, loop bounds, substitutions. Compiling one costs some
// 5 us and its first run more, looking it up 0.05 us. What runs is the same script each time, and fresh literals and
// functions are made on each run, so only the time shows.
namespace qxjs
{

namespace
{
constexpr std::size_t kSeen = ScriptCache::kEntries;
// A host that goes round more texts than there is room for always misses the one that was dropped last. So a new text
// drops the oldest only one time in eight: most that are kept stay, and texts that come from now on are soon in.
constexpr unsigned kOddsOfNew = 3;

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
std::uint64_t ScriptCache::Hash(std::u16string_view text, const Place& place)
{
    const std::uint64_t rest = std::uint64_t{place.line} * 2 + (place.scoped ? 1 : 0);
    return MixWord(HashText(text), rest ^ std::uint64_t{place.file.size()} << 40);
}

void ScriptCache::NoteLatest(std::wstring_view text, const ::JSScript* script)
{
    if (m_entries.empty() || m_entries.front().script != script)
        return;
    m_latest = &m_entries.front();
    m_latest_text = text;
}

::JSScript* ScriptCache::Find(std::u16string_view text, const Place& place, bool& worth_keeping)
{
    worth_keeping = false;
    if (text.size() > kLongestText)
        return nullptr;
    const std::uint64_t hash = Hash(text, place);
    const auto known = m_by_hash.find(hash);
    if (known != m_by_hash.end() && known->second->text == text && known->second->IsAt(place)) {
        m_entries.splice(m_entries.begin(), m_entries, known->second);
        m_latest = nullptr;
        return known->second->script;
    }
    // A tagged template's array of strings is made once a script, which a second run would show.
    if (text.find(u'`') != std::u16string_view::npos)
        return nullptr;
    worth_keeping = IsSecondSight(hash) && (HasRoomFor(text) || Toss(kOddsOfNew));
    return nullptr;
}

bool ScriptCache::HasRoomFor(std::u16string_view text) const
{
    return m_entries.size() < kEntries && m_text_units + text.size() <= kTextUnits;
}

// True once in 2^bits times.
bool ScriptCache::Toss(unsigned bits)
{
    m_dice = m_dice * 1664525 + 1013904223;
    return m_dice >> (32 - bits) == 0;
}

// Only a text that comes again is kept; those that never do cost nothing but a mark. Two texts with one place for
// theirs toss for it: if the later one always won, two that come in turn would both never be kept.
bool ScriptCache::IsSecondSight(std::uint64_t hash)
{
    if (m_seen.empty())
        m_seen.resize(kSeen);
    std::uint32_t& mark = m_seen[hash % kSeen];
    const auto half = static_cast<std::uint32_t>(hash >> 32);
    if (mark == half)
        return true;
    if (mark == 0 || Toss(1))
        mark = half;
    return false;
}

void ScriptCache::DropOldest()
{
    m_by_hash.erase(m_entries.back().hash);
    m_text_units -= m_entries.back().text.size();
    m_entries.pop_back();
}

void ScriptCache::Insert(std::u16string_view text, const Place& place, ::JSScript* script)
{
    const std::uint64_t hash = Hash(text, place);
    if (m_by_hash.count(hash) > 0)
        return;
    m_entries.push_front({hash, std::u16string(text), std::string(place.file), place.line, place.scoped, script});
    m_latest = nullptr;
    m_by_hash[hash] = m_entries.begin();
    m_text_units += text.size();
    while (m_entries.size() > kEntries || m_text_units > kTextUnits)
        DropOldest();
}

void ScriptCache::Trace(JSTracer* trc)
{
    for (Cached& cached : m_entries)
        js::gc::TraceExternalEdge(trc, &cached.script, "cached script");
}

} // namespace qxjs
