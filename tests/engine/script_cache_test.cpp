#include "engine/script_cache_detail.h"

#include <gtest/gtest.h>

#include <string>

// What is kept, and for how long. Scripts are only addresses here.
namespace
{

using qxjs::ScriptCache;

// What stands in for a compiled script where none is run.
::JSScript* Stand(std::size_t number)
{
    return reinterpret_cast<::JSScript*>(number * 8 + 8);
}

// Looks the texts up in turn, as a host with a template does, and says how many had to be compiled.
std::size_t CountCompiled(ScriptCache& cache, std::size_t texts, std::size_t first = 0)
{
    std::size_t compiled = 0;
    for (std::size_t i = first; i < first + texts; ++i) {
        std::u16string text;
        for (char digit : std::to_string(i))
            text += static_cast<char16_t>(digit);
        const ScriptCache::Place place{"local", 0, false};
        bool worth_keeping = false;
        ::JSScript* const found = cache.Find(text, place, worth_keeping);
        compiled += found ? 0 : 1;
        if (found)
            EXPECT_EQ(found, Stand(i));
        else if (worth_keeping)
            cache.Insert(text, place, Stand(i));
    }
    return compiled;
}

TEST(ScriptCacheTest, AThousandTextsInTurnAreSoonCompiledNoMore)
{
    ScriptCache cache;
    EXPECT_EQ(CountCompiled(cache, 1000), 1000u);
    for (int round = 0; round < 30; ++round)
        CountCompiled(cache, 1000);
    EXPECT_EQ(CountCompiled(cache, 1000), 0u);
}

TEST(ScriptCacheTest, OfMoreTextsInTurnThanItHoldsMostAreFound)
{
    ScriptCache cache;
    constexpr std::size_t texts = ScriptCache::kEntries * 5 / 4;
    for (int round = 0; round < 30; ++round)
        CountCompiled(cache, texts);
    EXPECT_EQ(cache.CountScripts(), ScriptCache::kEntries);
    EXPECT_LT(CountCompiled(cache, texts), texts * 2 / 5);
}

TEST(ScriptCacheTest, TextsThatComeFromNowOnTakeThePlacesOfOldOnes)
{
    ScriptCache cache;
    for (int round = 0; round < 30; ++round)
        CountCompiled(cache, ScriptCache::kEntries * 2);
    EXPECT_EQ(cache.CountScripts(), ScriptCache::kEntries);
    for (int round = 0; round < 120; ++round)
        CountCompiled(cache, 1000, 1000000);
    EXPECT_EQ(CountCompiled(cache, 1000, 1000000), 0u);
}

TEST(ScriptCacheTest, ItHoldsNoMoreScriptsThanItsLimit)
{
    ScriptCache cache;
    const ScriptCache::Place place{"local", 0, false};
    for (std::size_t i = 0; i <= ScriptCache::kEntries; ++i) {
        EXPECT_EQ(cache.CountScripts(), i);
        cache.Insert(std::u16string(1, static_cast<char16_t>(i + 1)), place, Stand(i));
    }
    EXPECT_EQ(cache.CountScripts(), ScriptCache::kEntries);
    bool worth_keeping = false;
    EXPECT_EQ(cache.Find(u"\u0001", place, worth_keeping), nullptr) << "the oldest has gone";
    EXPECT_EQ(cache.Find(u"\u0002", place, worth_keeping), Stand(1));
}

TEST(ScriptCacheTest, ItHoldsNoMoreTextThanItsLimit)
{
    ScriptCache cache;
    const ScriptCache::Place place{"local", 0, false};
    constexpr std::size_t most = ScriptCache::kTextUnits / ScriptCache::kLongestText;
    for (std::size_t i = 0; i <= most; ++i) {
        EXPECT_EQ(cache.CountScripts(), i);
        std::u16string text(ScriptCache::kLongestText, u' ');
        text[0] = static_cast<char16_t>(i);
        cache.Insert(text, place, Stand(i));
    }
    EXPECT_EQ(cache.CountScripts(), most);
    bool worth_keeping = true;
    EXPECT_EQ(cache.Find(std::u16string(ScriptCache::kLongestText + 1, u' '), place, worth_keeping), nullptr);
    EXPECT_FALSE(worth_keeping) << "a text that is too long";
}

TEST(ScriptCacheTest, TheLatestScriptIsFoundByTheWideTextNotedForIt)
{
    ScriptCache cache;
    const ScriptCache::Place place{"local", 2, true};
    EXPECT_EQ(cache.FindLatest(L"x", "local", 2, true), nullptr);
    cache.Insert(u"x\xD83D\xDE00", place, Stand(1));
    EXPECT_EQ(cache.FindLatest(L"x\x1F600", "local", 2, true), nullptr) << "not noted yet";
    cache.NoteLatest(L"x\x1F600", Stand(1));
    EXPECT_EQ(cache.FindLatest(L"x\x1F600", "local", 2, true), Stand(1));
    EXPECT_EQ(cache.FindLatest(L"x", "local", 2, true), nullptr);
    EXPECT_EQ(cache.FindLatest(L"x\x1F601", "local", 2, true), nullptr);
    EXPECT_EQ(cache.FindLatest(L"x\x1F600", "other", 2, true), nullptr);
    EXPECT_EQ(cache.FindLatest(L"x\x1F600", "loca", 2, true), nullptr);
    EXPECT_EQ(cache.FindLatest(L"x\x1F600", "local", 3, true), nullptr);
    EXPECT_EQ(cache.FindLatest(L"x\x1F600", "local", 2, false), nullptr);
}

TEST(ScriptCacheTest, ANotedScriptIsTheLatestUntilAnotherIsFoundOrInserted)
{
    ScriptCache cache;
    const ScriptCache::Place place{"local", 2, true};
    const auto note_first = [&] {
        bool worth_keeping = false;
        EXPECT_EQ(cache.Find(u"x", place, worth_keeping), Stand(1));
        cache.NoteLatest(L"x", Stand(1));
        EXPECT_EQ(cache.FindLatest(L"x", "local", 2, true), Stand(1));
    };
    cache.Insert(u"x", place, Stand(1));
    note_first();
    cache.Insert(u"y", place, Stand(2));
    EXPECT_EQ(cache.FindLatest(L"x", "local", 2, true), nullptr);
    cache.NoteLatest(L"x", Stand(1));
    EXPECT_EQ(cache.FindLatest(L"x", "local", 2, true), nullptr) << "it is not the latest";
    note_first();
    bool worth_keeping = false;
    EXPECT_EQ(cache.Find(u"y", place, worth_keeping), Stand(2));
    EXPECT_EQ(cache.FindLatest(L"x", "local", 2, true), nullptr);
}

} // namespace
