#include <algorithm>
#include <cstring>
#include <type_traits>

#include "engine/entry_detail.h"
#include "engine/js_limits.h"
#include "engine/js_value.h"
#include "engine/text_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

// The limit above which the engine takes a string for a mistake is its own; it then fails with an error pending.
JSString* Kept(ThreadState& t, JSContext& cx, ::JSString* str)
{
    if (!str) {
        if (cx.depth == 0)
            ::JS_ClearPendingException(t.engine);
        return nullptr;
    }
    return JSVAL_TO_STRING(t.Keep(STRING_TO_JSVAL(Outer(str))));
}

bool AllBelow(const wchar_t* chars, std::size_t length, std::uint32_t bound)
{
    std::uint32_t any = 0;
    for (std::size_t i = 0; i < length; ++i)
        any |= static_cast<std::uint32_t>(chars[i]);
    return any < bound;
}

::JSString* NewLatin1(::JSContext* engine, const wchar_t* chars, std::size_t length)
{
    JS::UniqueLatin1Chars buffer(static_cast<JS::Latin1Char*>(::JS_malloc(engine, std::max<std::size_t>(1, length))));
    if (!buffer)
        return nullptr;
    for (std::size_t i = 0; i < length; ++i)
        buffer[i] = static_cast<JS::Latin1Char>(chars[i]);
    return ::JS_NewLatin1String(engine, std::move(buffer), length);
}

::JSString* NewShortLatin1(::JSContext* engine, const wchar_t* chars, std::size_t length)
{
    char buffer[256];
    for (std::size_t i = 0; i < length; ++i)
        buffer[i] = static_cast<char>(chars[i]);
    return ::JS_NewStringCopyN(engine, buffer, length);
}

::JSString* NewTwoByte(::JSContext* engine, const wchar_t* chars, std::size_t length)
{
    JS::UniqueTwoByteChars buffer(
        static_cast<char16_t*>(::JS_malloc(engine, std::max<std::size_t>(1, 2 * length) * sizeof(char16_t))));
    if (!buffer)
        return nullptr;
    const std::size_t units = EncodeUtf16(chars, length, buffer.get());
    // The text holds something beyond Latin-1, so looking whether it can be stored narrow would be in vain.
    return ::JS_NewUCStringDontDeflate(engine, std::move(buffer), units);
}

// Whether the script's limits leave room for a copy of a text; only for long ones is it worth asking.
bool HasRoomFor(std::size_t bytes)
{
    constexpr std::size_t few = 1 << 20;
    return bytes < few || JS_MayGoOn(bytes);
}

// The engine's characters, read in place: nothing collects while this is used.
struct Text
{
    std::size_t length;
    const JS::Latin1Char* latin1; // or null
    const char16_t* units;

    // `out` has room for `length` characters; returns how many it got.
    std::size_t Decode(wchar_t* out) const
    {
        if (!latin1)
            return DecodeUtf16(units, length, out);
        std::copy(latin1, latin1 + length, out);
        return length;
    }
};

bool ReadText(ThreadState& t, ::JSString* str, Text& text)
{
    ::JSLinearString* linear = JS::StringToLinearString(t.engine, str);
    if (!linear) {
        ++t.uses;
        return false;
    }
    const JS::AutoCheckCannotGC nogc;
    text = {JS::GetLinearStringLength(linear), nullptr, nullptr};
    if (JS::LinearStringHasLatin1Chars(linear))
        text.latin1 = JS::GetLatin1LinearStringChars(nogc, linear);
    else
        text.units = JS::GetTwoByteLinearStringChars(nogc, linear);
    return true;
}

bool ReadWide(JSContext* cx, JSString* str, const char* function, std::wstring& out)
{
    ThreadState* t = UsableQuietly(cx, function);
    Text text;
    if (!t || !str || !HasRoomFor(JS::GetStringLength(Inner(str)) * sizeof(wchar_t)) || !ReadText(*t, Inner(str), text))
        return false;
    if (text.latin1 && out.capacity() < text.length) {
        out = std::wstring(text.latin1, text.latin1 + text.length); // written once; growing it would fill it first
    } else {
        out.resize(text.length);
        out.resize(text.Decode(out.data()));
    }
    return true;
}

std::unique_ptr<char16_t[]> CopyChars(::JSContext* engine, ::JSString* str)
{
    ::JSLinearString* linear = ::JS_EnsureLinearString(engine, str);
    if (!linear)
        return nullptr;
    const std::size_t length = JS::GetLinearStringLength(linear);
    auto chars = std::make_unique<char16_t[]>(length + 1);
    JS::AutoCheckCannotGC nogc;
    if (JS::LinearStringHasLatin1Chars(linear)) {
        const JS::Latin1Char* from = JS::GetLatin1LinearStringChars(nogc, linear);
        std::copy(from, from + length, chars.get());
    } else {
        const char16_t* from = JS::GetTwoByteLinearStringChars(nogc, linear);
        std::copy(from, from + length, chars.get());
    }
    return chars;
}

} // namespace

::JSString* InternForever(ThreadState& t, ::JSString* atom)
{
    if (atom && !t.interned_set.Contains(atom)) {
        t.interned_set.Insert(atom);
        t.interned.push_back(atom);
    }
    return atom;
}

JSString* JS_NewUCStringCopyN(JSContext* cx, const jschar* chars, std::size_t length)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return nullptr;
    StressPoint(*t);
    return Kept(*t, *cx, ::JS_NewUCStringCopyN(t->engine, chars, length));
}

JSString* JS_NewUCStringCopyZ(JSContext* cx, const jschar* chars)
{
    return JS_NewUCStringCopyN(cx, chars, std::char_traits<jschar>::length(chars));
}

JSString* JS_NewStringCopyN(JSContext* cx, const char* latin1, std::size_t length)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return nullptr;
    StressPoint(*t);
    return Kept(*t, *cx, ::JS_NewStringCopyN(t->engine, latin1, length));
}

JSString* JS_NewStringCopyZ(JSContext* cx, const char* latin1)
{
    return JS_NewStringCopyN(cx, latin1, std::strlen(latin1));
}

JSString* JS_NewStringFromWide(JSContext* cx, const wchar_t* chars, std::size_t length)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return nullptr;
    StressPoint(*t);
    if (!HasRoomFor(length * sizeof(char16_t)))
        return nullptr;
    ::JSString* str = nullptr;
    if (!AllBelow(chars, length, 0x100))
        str = NewTwoByte(t->engine, chars, length);
    else if (length <= 256)
        str = NewShortLatin1(t->engine, chars, length);
    else
        str = NewLatin1(t->engine, chars, length);
    return Kept(*t, *cx, str);
}

JSString* JS_InternUCStringN(JSContext* cx, const jschar* chars, std::size_t length)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return nullptr;
    return Kept(*t, *cx, InternForever(*t, ::JS_AtomizeUCStringN(t->engine, chars, length)));
}

JSString* JS_InternUCString(JSContext* cx, const jschar* chars)
{
    return JS_InternUCStringN(cx, chars, std::char_traits<jschar>::length(chars));
}

JSString* JS_InternString(JSContext* cx, const char* latin1)
{
    std::u16string chars;
    for (; *latin1; ++latin1)
        chars += static_cast<unsigned char>(*latin1);
    return JS_InternUCStringN(cx, chars.data(), chars.size());
}

std::size_t JS_GetStringLength(JSString* str)
{
    return str && t_state ? JS::GetStringLength(Inner(str)) : 0;
}

const jschar* JS_GetStringChars(JSString* str)
{
    ThreadState* t = t_state;
    if (!t || t->collecting || !str)
        return nullptr;
    ++t->uses;
    t->Keep(STRING_TO_JSVAL(str));
    auto known = t->string_chars.find(Inner(str));
    if (known != t->string_chars.end())
        return known->second.get();
    if (t->string_chars.size() >= t->string_chars_limit) {
        SweepStringChars(*t);
        t->string_chars_limit = std::max<std::size_t>(64, t->string_chars.size() * 2);
    }
    auto chars = CopyChars(t->engine, Inner(str));
    if (!chars)
        return nullptr;
    return t->string_chars.emplace(Inner(str), std::move(chars)).first->second.get();
}

bool JS_StringToWide(JSContext* cx, JSString* str, std::wstring& out)
{
    return ReadWide(cx, str, __func__, out);
}

bool JS_StringToWide(JSContext* cx, JSString* str, wxString& out)
{
    if constexpr (std::is_reference_v<decltype(out.ToStdWstring())>) {
        // What the string is inside: its own functions for writing into it go through one buffer more.
        return ReadWide(cx, str, __func__, const_cast<std::wstring&>(out.ToStdWstring()));
    } else {
        std::wstring wide;
        if (!ReadWide(cx, str, __func__, wide))
            return false;
        out = wide;
        return true;
    }
}

std::string JS_StringToUtf8(JSContext* cx, JSString* str)
{
    ThreadState* t = Usable(cx, __func__);
    auto chars = t && str ? CopyChars(t->engine, Inner(str)) : nullptr;
    return chars ? ToUtf8({chars.get(), JS::GetStringLength(Inner(str))}) : std::string();
}

} // namespace qxjs
