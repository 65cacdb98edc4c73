#include "base/case_folding_detail.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace
{

using vcq::detail::FoldCase;
using vcq::detail::IsSameNoCase;

/// The process' locale for the kinds of characters, put back at the end.
class CaseFoldingTest : public ::testing::TestWithParam<const char*>
{
protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, GetParam()), nullptr); }
    ~CaseFoldingTest() override { std::setlocale(LC_CTYPE, m_before.c_str()); }

private:
    const std::string m_before = std::setlocale(LC_CTYPE, nullptr);
};

TEST_P(CaseFoldingTest, LettersAreTheSameInAnyCase)
{
    EXPECT_TRUE(IsSameNoCase(wxS("Id1_Z"), wxS("iD1_z")));
    EXPECT_TRUE(IsSameNoCase(L"\u00c9\u03a3\u0416\U00010400", L"\u00e9\u03c3\u0436\U00010428"));
    EXPECT_TRUE(IsSameNoCase(wxString(), wxString()));
}

TEST_P(CaseFoldingTest, OtherCharactersAreTheSameAsThemselvesOnly)
{
    EXPECT_FALSE(IsSameNoCase(L"e", L"\u00e9"));
    EXPECT_FALSE(IsSameNoCase(L"\u0131", L"i"));
    EXPECT_FALSE(IsSameNoCase(wxS("@["), wxS("`{")));
    EXPECT_FALSE(IsSameNoCase(wxS("a"), wxS("ab")));
    EXPECT_FALSE(IsSameNoCase(L"\u00df", wxS("ss")));
    EXPECT_EQ(FoldCase(wchar_t(0xd800)), wchar_t(0xd800));
}

INSTANTIATE_TEST_SUITE_P(Base, CaseFoldingTest, ::testing::Values("C", "C.UTF-8"),
                         [](const auto& row) { return row.index ? "Unicode" : "Ascii"; });

} // namespace
