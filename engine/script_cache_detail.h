#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/installed_engine_detail.h"

namespace qxjs
{

// Compiled texts of one global; see script_cache.cpp.
class ScriptCache
{
public:
    // Where a text stands, and what it runs on.
    struct Place
    {
        std::string_view file;
        unsigned line;
        bool scoped;
    };
    // The script that was found or inserted last, if it is this text's; else null.
    ::JSScript* FindLatest(std::wstring_view text, const Place& place) const;
    // The script compiled for this text and place, or null. `worth_keeping` tells whether to Insert what gets compiled.
    ::JSScript* Find(std::u16string_view text, const Place& place, bool& worth_keeping);
    void Insert(std::u16string_view text, const Place& place, ::JSScript* script);
    void Trace(JSTracer* trc);
    std::size_t CountScripts() const { return m_entries.size(); }

    // A small script takes half a kilobyte, and there is room for any set of templates that people write by hand.
    static constexpr std::size_t kEntries = 8192;
    static constexpr std::size_t kTextUnits = 512 * 1024;
    static constexpr std::size_t kLongestText = 4096;

private:
    struct Cached
    {
        std::uint64_t hash;
        std::u16string text;
        std::string file;
        unsigned line;
        bool scoped;
        ::JSScript* script;

        bool IsAt(const Place& place) const
        {
            return line == place.line && scoped == place.scoped && file == place.file;
        }
    };
    using Entries = std::list<Cached>;

    bool IsSecondSight(std::uint64_t hash);
    bool HasRoomFor(std::u16string_view text) const;
    bool Toss(unsigned bits);
    static std::uint64_t Hash(std::u16string_view text, const Place& place);
    void DropOldest();

    Entries m_entries; // the most recently used first
    std::unordered_map<std::uint64_t, Entries::iterator> m_by_hash;
    std::size_t m_text_units = 0;
    std::vector<std::uint32_t> m_seen; // halves of hashes
    std::uint32_t m_dice = 1;
};

} // namespace qxjs
