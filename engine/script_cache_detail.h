#pragma once

#include <cstdint>
#include <cstring>
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
    // The script noted with NoteLatest if it is this text's, and none has been found or inserted since; else null.
    ::JSScript* FindLatest(std::wstring_view text, const char* file, unsigned line, bool scoped) const
    {
        const bool found = m_latest && m_latest->line == line && m_latest->scoped == scoped && m_latest_text == text &&
                           std::strcmp(m_latest->file.c_str(), file) == 0;
        return found ? m_latest->script : nullptr;
    }
    // Notes the text that a script comes from, if that is the one found or inserted last.
    void NoteLatest(std::wstring_view text, const ::JSScript* script);
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

    Entries m_entries;                // the most recently used first
    const Cached* m_latest = nullptr; // the first of them, if it is the one noted
    std::wstring m_latest_text;
    std::unordered_map<std::uint64_t, Entries::iterator> m_by_hash;
    std::size_t m_text_units = 0;
    std::vector<std::uint32_t> m_seen; // halves of hashes
    std::uint32_t m_dice = 1;
};

} // namespace qxjs
