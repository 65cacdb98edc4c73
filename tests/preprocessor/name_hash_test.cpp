#include "preprocessor/name_hash_detail.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace
{

constexpr size_t SlotCount = 1 << 14;

/// The slots of a table of SlotCount that as many names fall on.
size_t SlotsTaken(const std::vector<std::wstring>& names)
{
    std::set<size_t> slots;
    for (const std::wstring& name : names)
        slots.insert(static_cast<size_t>(HashOfName(name)) % SlotCount);
    return slots.size();
}

template <typename MakeName> std::vector<std::wstring> Names(MakeName makeName)
{
    std::vector<std::wstring> names;
    for (size_t number = 0; number < SlotCount; ++number)
        names.push_back(makeName(number));
    return names;
}

std::wstring WithBits(size_t number, const wchar_t* zero, const wchar_t* one)
{
    std::wstring name;
    for (size_t bit = 1; bit < SlotCount; bit *= 2)
        name += number & bit ? one : zero;
    return name;
}

// As many names as slots, thrown at random, leave 1/e of the slots free; a tenth more is no accident.
constexpr size_t FewestTaken = SlotCount * 6 / 10;

TEST(NameHashTest, NamesOfAllPatternsFallOnAllSlots)
{
    EXPECT_LT(FewestTaken, SlotsTaken(Names([](size_t number) { return L"NAME" + std::to_wstring(number); })));
    EXPECT_LT(FewestTaken, SlotsTaken(Names([](size_t number) { return std::to_wstring(number) + L"_NAME"; })));
    EXPECT_LT(FewestTaken, SlotsTaken(Names([](size_t number) { return std::wstring(number, L'a'); })));
    EXPECT_LT(FewestTaken, SlotsTaken(Names([](size_t number) { return std::wstring(number, L'\0'); })));
    EXPECT_LT(FewestTaken, SlotsTaken(Names([](size_t number) { return WithBits(number, L"a", L"b"); })));
    EXPECT_LT(FewestTaken, SlotsTaken(Names([](size_t number) { return WithBits(number, L"Aa", L"BB"); })));
    EXPECT_LT(FewestTaken, SlotsTaken(Names([](size_t number) { return WithBits(number, L"ab__", L"ba__"); })));
}

TEST(NameHashTest, EqualNamesHaveEqualHashesWhereverTheyStand)
{
    const std::wstring text = L"..name_of_a_define..name_of_a_define";
    for (size_t length = 0; length <= 16; ++length)
        EXPECT_EQ(HashOfName(std::wstring_view(text).substr(2, length)),
                  HashOfName(std::wstring_view(text).substr(20, length)))
            << length;
}

} // namespace
