#include "base/option.h"
#include "tests/base/base_test_support.h"

#include <rapidcheck.h>

#include <utility>
#include <vector>

namespace
{

using Pairs = std::vector<std::pair<wxString, wxString>>;

Pairs All(const COption& option)
{
    Pairs pairs;
    CHashStringToString::const_iterator it;
    for (bool more = option.First(it); more; more = option.Next(it))
        pairs.emplace_back(it->first, it->second);
    return pairs;
}

Pairs Extracted(const wxString& text)
{
    COption option;
    option.ExtractOption(text);
    return All(option);
}

} // namespace

struct OptionCase
{
    const char* text;
    Pairs options;
};

TEST(OptionTest, ReadsEachFormOfAnOption)
{
    const OptionCase cases[] = {
        {"", {}},
        {" \t,, ", {}},
        {"a", {{"a", ""}}},
        {"a=1", {{"a", "1"}}},
        {"a=\"x y\"", {{"a", "x y"}}},
        {"a='x y'", {{"a", "x y"}}},
        {"a='say \"x\"'", {{"a", "say \"x\""}}},
        {"a=\"it's\"", {{"a", "it's"}}},
        {"a=''", {{"a", ""}}},
        {"a=", {{"a", ""}}},
        {"a = 1", {{"a", "1"}}},
        {"a\t=\t'1'", {{"a", "1"}}},
        {"a=1 b", {{"a", "1"}, {"b", ""}}},
        {"a=1,b=2", {{"a", "1"}, {"b", "2"}}},
        {"a\tb , c", {{"a", ""}, {"b", ""}, {"c", ""}}},
        {"a=1\nb=2\r\nc", {{"a", "1"}, {"b", "2"}, {"c", ""}}},
        {"a='1'b='2'", {{"a", "1"}, {"b", "2"}}},
        {"a='no end, b=1", {{"a", "no end, b=1"}}},
        {"a=b=c", {{"a", "b=c"}}},
        {"a, =1", {{"a", ""}}},
        {"=1 b", {{"b", ""}}},
        {"='x y' b", {{"b", ""}}},
        {"a=\\'x y\\'", {{"a", "\\'x"}, {"y\\'", ""}}},
        {"A=1 a=2", {{"A", "1"}, {"a", "2"}}},
    };
    for (const OptionCase& each : cases)
        EXPECT_EQ(each.options, Extracted(each.text)) << each.text;
}

TEST(OptionTest, ALaterOptionReplacesTheValueAndKeepsThePlace)
{
    EXPECT_EQ((Pairs{{"a", "3"}, {"b", "2"}}), Extracted("a=1 b=2 a=3"));
    EXPECT_EQ((Pairs{{"a", ""}}), Extracted("a=1 a"));
}

TEST(OptionTest, ManyOptionsKeepTheirOrderAndAreFound)
{
    COption option;
    for (int i = 0; i < 30; ++i) {
        option.ExtractOption(wxString::Format("n%d=old n%d=%d", i, i / 2, i));
        wxString value;
        ASSERT_TRUE(option.Get(wxString::Format("n%d", i / 2), value));
        EXPECT_EQ(wxString::Format("%d", i), value);
        EXPECT_FALSE(option.Get(wxString::Format("n%d", i + 1), value));
    }
    CHashStringToString::const_iterator it;
    int seen = 0;
    for (bool more = option.First(it); more; more = option.Next(it), ++seen) {
        EXPECT_EQ(wxString::Format("n%d", seen), it->first);
        EXPECT_EQ(seen < 15 ? wxString::Format("%d", 2 * seen + 1) : wxString("old"), it->second);
    }
    EXPECT_EQ(30, seen);
}

TEST(OptionTest, ExtractOptionAddsToWhatIsThere)
{
    COption option;
    option.ExtractOption("a=1 b=2");
    option.ExtractOption("c=3 a=4");
    EXPECT_EQ((Pairs{{"a", "4"}, {"b", "2"}, {"c", "3"}}), All(option));
}

TEST(OptionTest, GetGivesTheValueOrLeavesItAlone)
{
    COption option;
    option.ExtractOption("a=1 b");
    wxString value = "before";
    EXPECT_FALSE(option.Get("c", value));
    EXPECT_EQ("before", value);
    EXPECT_TRUE(option.Get("a", value));
    EXPECT_EQ("1", value);
    EXPECT_TRUE(option.Get("b", value));
    EXPECT_EQ("", value);
}

TEST(OptionTest, FirstAndNextAreFalseWithoutOptions)
{
    const COption option;
    CHashStringToString::const_iterator it;
    EXPECT_FALSE(option.First(it));
    EXPECT_FALSE(option.Next(it));
    EXPECT_FALSE(option.Next(it));
}

TEST(OptionTest, CopiesAreIndependent)
{
    COption option;
    option.ExtractOption("a=1");
    COption copy(option);
    COption assigned;
    assigned.ExtractOption("z");
    assigned = option;
    option.ExtractOption("a=2 b");
    EXPECT_EQ((Pairs{{"a", "1"}}), All(copy));
    EXPECT_EQ((Pairs{{"a", "1"}}), All(assigned));
}

TEST(OptionTest, HasRunTimeClassInformation)
{
    EXPECT_STREQ(wxT("COption"), COption().GetClassInfo()->GetClassName());
}

TEST(OptionTest, EveryQuotedValueIsReadBack)
{
    EXPECT_TRUE(rc::check([] {
        const auto word = rc::gen::nonEmpty(rc::gen::container<std::string>(rc::gen::inRange('a', 'e')));
        const auto value =
            rc::gen::container<std::string>(rc::gen::element<char>('a', ' ', '\t', ',', '=', '\'', '\\'));
        const auto options =
            *rc::gen::container<std::vector<std::pair<std::string, std::string>>>(rc::gen::pair(word, value));
        wxString text;
        std::vector<std::pair<wxString, wxString>> expected;
        for (const auto& option : options) {
            const char* const separators[] = {" ", ",", "\t", " , "};
            text += option.first + *rc::gen::element("=", " =", "= ") + "\"" + option.second + "\"";
            text += separators[*rc::gen::inRange(0, 4)];
            const auto sameName = [&](const auto& other) { return other.first == option.first; };
            const auto known = std::find_if(expected.begin(), expected.end(), sameName);
            if (known == expected.end())
                expected.emplace_back(option.first, option.second);
            else
                known->second = option.second;
        }
        RC_ASSERT(Extracted(text) == expected);
    }));
}

TEST(OptionTest, NoTextIsRefusedAndNoNameIsEmptyOrHoldsASeparator)
{
    EXPECT_TRUE(rc::check([] {
        const auto text =
            *rc::gen::container<std::string>(rc::gen::element<char>('a', 'b', '=', '"', '\'', ' ', ',', '\n'));
        for (const auto& option : Extracted(text)) {
            RC_ASSERT(!option.first.empty());
            RC_ASSERT(option.first.find_first_of(" ,=\n\t") == wxString::npos);
        }
    }));
}
