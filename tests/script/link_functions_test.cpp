#include "tests/script/class_fixture.h"

#include <wx/platinfo.h>

namespace
{

/// The functions that every script object has.
class LinkFunctionsTest : public ClassTest
{};

TEST_F(LinkFunctionsTest, ThePlatformIsWhatTheToolkitSays)
{
    const wxPlatformInfo& platform = wxPlatformInfo::Get();
    EXPECT_EQ(Show("GetOperatingSystemFamilyName()"), platform.GetOperatingSystemFamilyName());
    EXPECT_EQ(Show("GetOperatingSystemIdName()"), platform.GetOperatingSystemIdName());
    EXPECT_EQ(Show("GetOSMajorVersion()"), wxString::Format("%d", platform.GetOSMajorVersion()));
    EXPECT_EQ(Show("GetOSMinorVersion()"), wxString::Format("%d", platform.GetOSMinorVersion()));
    EXPECT_EQ(Show("GetPortIdName()"), platform.GetPortIdName());
    EXPECT_EQ(Show("GetPortIdShortName()"), platform.GetPortIdShortName());
}

TEST_F(LinkFunctionsTest, ThePlatformIsToldWhateverTheArguments)
{
    for (const char* name : {"GetOperatingSystemFamilyName", "GetOperatingSystemIdName", "GetOSMajorVersion",
                             "GetOSMinorVersion", "GetPortIdName", "GetPortIdShortName"}) {
        EXPECT_EQ(Show(wxString::Format("%s(1, 'x') === %s()", name, name)), "true") << name;
        EXPECT_EQ(Show(wxString::Format("%s.length", name)), "0") << name;
    }
}

TEST_F(LinkFunctionsTest, EveryObjectHasThemWithTheirLengths)
{
    Table& table = Make("Any", &CJScriptLink::ms_JSClass, {});
    Child("part", table.cls);
    EXPECT_EQ(Show("['GetOperatingSystemFamilyName', 'FormatStrStr', 'FindStr', 'StrToUpper', 'StrToLower', 'ASSERT',"
                   " 'ASSERT_MSG', 'FormatString', 'LogVerbose', 'LogError', 'print', 'perror', 'FindReplaceStr',"
                   " 'FormatStringA', 'pause', 'StartsWithStr', 'CallOnDestroy']"
                   ".map(function (name) { return part[name].length; }).join()"),
              "0,2,3,1,1,1,2,0,0,0,0,0,3,2,0,2,1");
}

TEST_F(LinkFunctionsTest, FormatStringReplacesNumberedPlaceholders)
{
    EXPECT_EQ(Show("FormatString('%2-%1', 'a', 'b')"), "b-a");
    EXPECT_EQ(Show("FormatString('%1%1 %1', 7)"), "77 7");
    EXPECT_EQ(Show("FormatString('%3 %1', 'a', 'b')"), "%3 a");
    EXPECT_EQ(Show("FormatString('%0 %', 'a')"), "%0 %");
    EXPECT_EQ(Show("FormatString('%1x %1_ %1.', 'a')"), "%1x %1_ a.");
    EXPECT_EQ(Show("FormatString('%01', 'a')"), "a");
    EXPECT_EQ(Show("FormatString('%%1', 'a')"), "%a");
    EXPECT_EQ(Show("FormatString('%99999999999999999999', 'a')"), "%99999999999999999999");
    EXPECT_EQ(Show("FormatString('%1', '%2', 'b')"), "%2") << "inserted text is not scanned again";
    EXPECT_EQ(Show("FormatString('%10', 1, 2, 3, 4, 5, 6, 7, 8, 9, 'ten')"), "ten");
    EXPECT_EQ(Show("FormatString('plain')"), "plain");
    EXPECT_EQ(Show(wxS("FormatString('%1\u00e9 %1\u0661', 'a')")), wxS("a\u00e9 a\u0661")) << "words are ASCII";
    EXPECT_EQ(Show("FormatString()"), "");
    EXPECT_EQ(Show(wxS("FormatString('\u00e9 %1 \U0001F600', '\u4e2d')")), wxS("\u00e9 \u4e2d \U0001F600"));
}

TEST_F(LinkFunctionsTest, FormatStringATakesTheArgumentsAsAnArray)
{
    EXPECT_EQ(Show("FormatStringA('%2-%1-%3', ['a', 2])"), "2-a-%3");
    EXPECT_EQ(Show("FormatStringA('%1', [])"), "%1");
    EXPECT_EQ(Thrown("FormatStringA('%1', 'a')"), "Error: Argument 2: can not convert to wxArrayString");
}

TEST_F(LinkFunctionsTest, FormatStrStrReplacesTheFirstPlaceholderOnly)
{
    EXPECT_EQ(Show("FormatStrStr('%s-%s %d', 'a%s')"), "a%s-%s %d");
    EXPECT_EQ(Show("FormatStrStr('plain', 'a')"), "plain");
}

TEST_F(LinkFunctionsTest, FindStrGivesThePlaceWithAndWithoutCase)
{
    EXPECT_EQ(Show("FindStr('abcabc', 'c', true)"), "2");
    EXPECT_EQ(Show("FindStr('abc', 'B', true)"), "-1");
    EXPECT_EQ(Show("FindStr('abc', 'B', false)"), "1");
    EXPECT_EQ(Show("FindStr('abc', '', true)"), "0");
    EXPECT_EQ(Show(wxS("FindStr('x\u00c9', '\u00c9', true)")), "1");
    EXPECT_EQ(Thrown("FindStr('a', 'b')"), "Error: Bad argument count for function 'FindStr' (2 instead of 3)");
}

TEST_F(LinkFunctionsTest, LettersChangeTheirCase)
{
    EXPECT_EQ(Show("StrToUpper('aB1') + StrToLower('aB1')"), "AB1ab1");
    EXPECT_EQ(Thrown("StrToUpper()"), "Error: Bad argument count for function 'StrToUpper' (0 instead of 1)");
}

TEST_F(LinkFunctionsTest, FindReplaceStrReplacesEveryOccurrence)
{
    EXPECT_EQ(Show("FindReplaceStr('a.b.c', '.', '..')"), "a..b..c");
    EXPECT_EQ(Show("FindReplaceStr('abc', 'x', 'y')"), "abc");
    EXPECT_EQ(Show("FindReplaceStr('abc', '', 'y')"), "abc");
    EXPECT_EQ(Show("FindReplaceStr('aaa', 'aa', 'a')"), "aa");
}

TEST_F(LinkFunctionsTest, StartsWithStrGivesWhatFollowsThePrefix)
{
    EXPECT_EQ(Show("StartsWithStr('prefix.rest', 'prefix.')"), "rest");
    EXPECT_EQ(Show("StartsWithStr('prefix', 'Prefix') + '|' + StartsWithStr('a', 'a')"), "|");
}

TEST_F(LinkFunctionsTest, EveryArgumentIsLoggedAsText)
{
    const bool verbose = wxLog::GetVerbose();
    wxLog::SetVerbose(true);
    EXPECT_EQ(Show("typeof LogVerbose('a%s', 1, null) + typeof print(undefined)"), "undefinedundefined");
    Show("LogError('b%d', [1, 2]); perror(); pause()");
    wxLog::SetVerbose(false);
    Show("print('quiet')");
    wxLog::SetVerbose(verbose);
    EXPECT_EQ(log.Texts(wxLOG_Info), (Texts{"a%s 1 null", "undefined", "pause"}));
    EXPECT_EQ(log.Errors(), (Texts{"b%d 1,2", ""}));
}

TEST_F(LinkFunctionsTest, ANulDoesNotEndWhatIsLogged)
{
    const bool verbose = wxLog::GetVerbose();
    wxLog::SetVerbose(true);
    Show("print('a\\0b', 1); perror('c\\0d', 2)");
    wxLog::SetVerbose(verbose);
    EXPECT_EQ(log.Texts(wxLOG_Info), Texts{wxString(L"a\0b 1", 5)});
    EXPECT_EQ(log.Errors(), Texts{wxString(L"c\0d 2", 5)});
}

TEST_F(LinkFunctionsTest, PauseTakesNoArgument)
{
    EXPECT_EQ(Thrown("pause(1)"), "Error: Bad argument count for function 'pause' (1 instead of 0)");
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(LinkFunctionsTest, AssertionsThatHoldSayNothing)
{
    EXPECT_EQ(Show("typeof ASSERT(true) + typeof ASSERT_MSG(1, 'x')"), "undefinedundefined");
    EXPECT_TRUE(log.Errors().empty());
    Show("ASSERT_MSG(false, 'broken %s')");
#ifdef NDEBUG
    EXPECT_TRUE(log.Errors().empty());
#else
    EXPECT_EQ(log.Errors(), Texts{"Assertion failed: broken %s"});
#endif
}

TEST_F(LinkFunctionsTest, OnlyFunctionsAreRegisteredForTheEnd)
{
    EXPECT_EQ(Thrown("CallOnDestroy(5)"), "Error: Argument 1: can not convert to pJSFunction");
    EXPECT_EQ(Thrown("CallOnDestroy(null)"), "nothing");
    EXPECT_EQ(Thrown("CallOnDestroy()"), "Error: Bad argument count for function 'CallOnDestroy' (0 instead of 1)");
}

// Calls from the native side.

TEST_F(LinkFunctionsTest, AFunctionIsCalledWithItsObjectAsThis)
{
    Table& table = Make("Called", &CJScriptLink::ms_JSClass, NumberRows(1));
    Part& part = Child("part", table.cls);
    Part& second = Child("second", table.cls);
    Show("var seen = []; part.f = function (a) { seen.push(this === part, arguments.length, a); return result; };"
         "var result; ");
    CJScriptLink* const link = part.GetJSLink();
    JSFunction* const f = link->GetJSFunction("f");
    ASSERT_NE(f, nullptr);
    bool result = false;
    EXPECT_TRUE(link->CallFunction(f, result));
    EXPECT_TRUE(result) << "nothing counts as true";
    Show("result = 0");
    EXPECT_TRUE(link->CallFunction(f, result, wxString(L"\u00e9\0x", 3)));
    EXPECT_FALSE(result);
    Show("result = 'x'");
    EXPECT_TRUE(link->CallFunction(f, result, second.GetJSLink()));
    EXPECT_TRUE(result);
    EXPECT_TRUE(link->CallFunction(f, result, static_cast<CJScriptLink*>(nullptr)));
    EXPECT_EQ(Show("seen.length + '|' + seen.slice(0, 3) + '|' + seen[5].length + '|' + (seen[8] === second) + '|' +"
                   "(seen[11] === null)"),
              "12|true,0,|3|true|true");
}

TEST_F(LinkFunctionsTest, AFailingCallIsReportedAndLeavesTheResult)
{
    Show("var f = function () { throw new Error('no'); }");
    bool result = true;
    EXPECT_FALSE(Global()->CallFunction(Global()->GetJSFunction("f"), result));
    EXPECT_TRUE(result);
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_TRUE(Reports()[0].Contains("no"));
    EXPECT_FALSE(Global()->CallFunction(nullptr, result));
    qxjsMinimal loose;
    EXPECT_FALSE(loose.GetJSLink()->CallFunction(Global()->GetJSFunction("f"), result));
    EXPECT_FALSE(loose.GetJSLink()->CallFunction(Global()->GetJSFunction("f"), result, wxString("x")));
    EXPECT_EQ(loose.GetJSLink()->GetJSFunction("f"), nullptr);
    EXPECT_EQ(Reports().size(), 1u);
}

TEST_F(LinkFunctionsTest, OnlyFunctionsAreFoundAsFunctions)
{
    Show("var number = 5, object = {}, nothing = null");
    for (const wxString name : {"number", "object", "nothing", "missing"})
        EXPECT_EQ(Global()->GetJSFunction(name), nullptr) << name.utf8_string();
}

} // namespace
