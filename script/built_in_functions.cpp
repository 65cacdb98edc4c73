#include "script/log_detail.h"
#include "script/native_function.h"
#include "script/script.h"
#include "script/script_link.h"

#include <wx/log.h>
#include <wx/platinfo.h>

namespace
{

constexpr auto AnyCount = 0U;

bool IsWordChar(wchar_t ch)
{
    return (ch >= L'A' && ch <= L'Z') || (ch >= L'a' && ch <= L'z') || (ch >= L'0' && ch <= L'9') || ch == L'_';
}

/// Whether a text that grows from a few may grow further; asked before it has to move, which takes most of all.
bool MayAppend(const wxString& text, const wxString& more)
{
    const std::size_t length = text.length() + more.length();
    return JS_MayGoOn(length > text.capacity() ? 2 * length * sizeof(wchar_t) : 0);
}

/// All arguments as texts, separated by blanks.
wxString JoinArguments(JSContext* cx, uintN argc, const jsval* argv)
{
    wxString line;
    for (uintN i = 0; i < argc; ++i) {
        wxString text;
        jsval_to_wxString(cx, argv[i], text);
        line << (i ? wxS(" ") : wxS("")) << text;
    }
    return line;
}

JSBool LogVerboseNative(JSContext* cx, JSObject*, uintN argc, jsval* argv, jsval*)
{
    const wxString line = JoinArguments(cx, argc, argv);
    if (wxLog::GetVerbose())
        LogWhole(wxLOG_Info, line);
    return JS_TRUE;
}

JSBool LogErrorNative(JSContext* cx, JSObject*, uintN argc, jsval* argv, jsval*)
{
    LogWhole(wxLOG_Error, JoinArguments(cx, argc, argv));
    return JS_TRUE;
}

JSBool FormatStringNative(JSContext* cx, JSObject*, uintN argc, jsval* argv, jsval* rval)
{
    wxArrayString arguments;
    wxString format;
    for (uintN i = 0; i < argc; ++i) {
        wxString text;
        jsval_to_wxString(cx, argv[i], text);
        if (i == 0)
            format = text;
        else
            arguments.Add(text);
    }
    *rval = wxString_to_jsval(cx, CJScriptLink::FormatString(format, arguments));
    return JS_TRUE;
}

} // namespace

JSMapEntry CJScriptLink::m_JSMapEntries[] = {
    JSMethodOfAnyCount<&CJScriptLink::GetOperatingSystemFamilyName>("GetOperatingSystemFamilyName"),
    JSMethodOfAnyCount<&CJScriptLink::GetOperatingSystemIdName>("GetOperatingSystemIdName"),
    JSMethodOfAnyCount<&CJScriptLink::GetOSMajorVersion>("GetOSMajorVersion"),
    JSMethodOfAnyCount<&CJScriptLink::GetOSMinorVersion>("GetOSMinorVersion"),
    JSMethodOfAnyCount<&CJScriptLink::GetPortIdName>("GetPortIdName"),
    JSMethodOfAnyCount<&CJScriptLink::GetPortIdShortName>("GetPortIdShortName"),
    JSMethod<&CJScriptLink::FormatStrStr>("FormatStrStr"),
    JSMethod<&CJScriptLink::FindStr>("FindStr"),
    JSMethod<&CJScriptLink::StrToUpper>("StrToUpper"),
    JSMethod<&CJScriptLink::StrToLower>("StrToLower"),
    JSMethod<&CJScriptLink::ASSERT>("ASSERT"),
    JSMethod<&CJScriptLink::ASSERT_MSG>("ASSERT_MSG"),
    JSMapEntry("FormatString", &FormatStringNative, AnyCount),
    JSMapEntry("LogVerbose", &LogVerboseNative, AnyCount),
    JSMapEntry("LogError", &LogErrorNative, AnyCount),
    JSMapEntry("print", &LogVerboseNative, AnyCount),
    JSMapEntry("perror", &LogErrorNative, AnyCount),
    JSMethod<&CJScriptLink::FindReplaceStr>("FindReplaceStr"),
    JSMethod<&CJScriptLink::JS_FormatStringA>("FormatStringA"),
    JSMethod<&CJScriptLink::JS_Pause>("pause"),
    JSMethod<&CJScriptLink::JS_StartsWithStr>("StartsWithStr"),
    JSMethod<&CJScriptLink::JS_RegisterCallOnDestroy>("CallOnDestroy"),
    JSMapEntry(),
};

wxString CJScriptLink::GetOperatingSystemFamilyName()
{
    return wxPlatformInfo::Get().GetOperatingSystemFamilyName();
}

wxString CJScriptLink::GetOperatingSystemIdName()
{
    return wxPlatformInfo::Get().GetOperatingSystemIdName();
}

int CJScriptLink::GetOSMajorVersion()
{
    return wxPlatformInfo::Get().GetOSMajorVersion();
}

int CJScriptLink::GetOSMinorVersion()
{
    return wxPlatformInfo::Get().GetOSMinorVersion();
}

wxString CJScriptLink::GetPortIdName()
{
    return wxPlatformInfo::Get().GetPortIdName();
}

wxString CJScriptLink::GetPortIdShortName()
{
    return wxPlatformInfo::Get().GetPortIdShortName();
}

wxString CJScriptLink::FormatStrStr(const wxString& format, const wxString& text)
{
    wxString result = format;
    result.Replace(wxS("%s"), text, false);
    return result;
}

int CJScriptLink::FindStr(const wxString& text, const wxString& what, bool matchCase)
{
    return matchCase ? text.Find(what) : text.Lower().Find(what.Lower());
}

wxString CJScriptLink::StrToUpper(const wxString& text)
{
    return text.Upper();
}

wxString CJScriptLink::StrToLower(const wxString& text)
{
    return text.Lower();
}

wxString CJScriptLink::FormatString(const wxString& format, const wxArrayString& arguments)
{
    const wchar_t* at = format.wx_str();
    const wchar_t* const end = at + format.length();
    wxString result;
    while (at != end) {
        if (*at != L'%') {
            result.append(1, wxUniChar(*at++));
            continue;
        }
        const wchar_t* wordEnd = at + 1;
        while (wordEnd != end && IsWordChar(*wordEnd))
            ++wordEnd;
        unsigned long number = 0;
        const wxString word(at + 1, wordEnd - (at + 1));
        if (word.ToULong(&number) && number >= 1 && number <= arguments.size()) {
            if (!MayAppend(result, arguments[number - 1]))
                return wxString();
            result += arguments[number - 1];
            at = wordEnd;
        } else
            result.append(1, wxUniChar(*at++));
    }
    return result;
}

wxString CJScriptLink::FindReplaceStr(const wxString& text, const wxString& what, const wxString& by)
{
    if (what.empty())
        return text;
    wxString result;
    std::size_t from = 0;
    for (std::size_t at = 0; (at = text.find(what, from)) != wxString::npos; from = at + what.length()) {
        result.append(text, from, at - from);
        if (!MayAppend(result, by))
            return wxString();
        result += by;
    }
    return result.append(text, from, wxString::npos);
}

wxString CJScriptLink::JS_FormatStringA(const wxString& format, const wxArrayString& arguments)
{
    return FormatString(format, arguments);
}

void CJScriptLink::JS_Pause()
{
    wxLogVerbose(wxS("pause"));
}

wxString CJScriptLink::JS_StartsWithStr(const wxString& text, const wxString& prefix)
{
    wxString rest;
    return text.StartsWith(prefix, &rest) ? rest : wxString();
}

void CJScriptLink::ASSERT(bool condition)
{
    ASSERT_MSG(condition, wxS("ASSERT"));
}

#ifdef NDEBUG
void CJScriptLink::ASSERT_MSG(bool, const wxString&) {}
#else
void CJScriptLink::ASSERT_MSG(bool condition, const wxString& message)
{
    if (!condition)
        wxLogError(wxS("Assertion failed: %s"), message);
}
#endif
