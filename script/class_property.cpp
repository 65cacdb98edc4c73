#include "script/native_function.h"
#include "script/script.h"
#include "script/script_class.h"
#include "script/script_link.h"
#include "script/value_conversion.h"

#include <wx/log.h>

#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace
{

constexpr const wchar_t* TraceMask = L"TavoliJscriptTrace";
constexpr int IdOfNames = 1000000;

const char* FieldAddress(const CJScriptLink* link, const JSMapEntry& entry)
{
    return reinterpret_cast<const char*>(link->GetRootObject()) + entry.position;
}

template <typename Field> const Field& ReadField(const CJScriptLink* link, const JSMapEntry& entry)
{
    return *reinterpret_cast<const Field*>(FieldAddress(link, entry));
}

template <typename Field> Field& WriteField(CJScriptLink* link, const JSMapEntry& entry)
{
    return *reinterpret_cast<Field*>(const_cast<char*>(FieldAddress(link, entry)));
}

/// The script object of a scriptable native object that is a property of another; made when it has none.
jsval ObjectAt(JSContext* cx, const void* object, const JSMapEntry& entry, const CJScriptLink* holder)
{
    if (!object)
        return JSVAL_NULL;
    const char* const place = static_cast<const char*>(object) + entry.extra;
    auto* const link = const_cast<CJScriptLink*>(reinterpret_cast<const CJScriptLink*>(place));
    link->CreateObjectOf(cx, const_cast<CJScriptLink*>(holder), entry.index);
    return pCJScriptLink_to_jsval(cx, link);
}

/// An address as the number that is exactly it.
jsval AddressValue(JSContext* cx, const void* address)
{
    return double_to_jsval(cx, static_cast<double>(reinterpret_cast<std::uintptr_t>(address)));
}

const wchar_t* BoolText(bool value)
{
    return value ? L"true" : L"false";
}

enum class Stored
{
    Yes,
    NotConverted,
    NoObject, ///< The conversion ran script that destroyed the native object.
};

/// Where a property is written: the script object, and what its private data was then.
struct Target
{
    JSObject* object;
    CJScriptLink* link;
};

/// Writes a converted value into a field. When the conversion fails, a plain field stays as it is, and an array has the
/// elements before the failing one.
template <typename Field> Stored Store(JSContext* cx, const Target& target, const JSMapEntry& entry, jsval value)
{
    constexpr bool isArray = std::is_same_v<Field, wxArrayInt> || std::is_same_v<Field, wxArrayString>;
    Field converted{};
    const bool isConverted = JSConversion<Field>::From(cx, value, converted);
    if (!JSVAL_IS_PRIMITIVE(value) && JS_GetPrivate(cx, target.object) != target.link)
        return Stored::NoObject;
    if (isConverted || (isArray && !JSVAL_IS_PRIMITIVE(value) && JS_IsArrayObject(cx, JSVAL_TO_OBJECT(value))))
        WriteField<Field>(target.link, entry) = converted;
    return isConverted ? Stored::Yes : Stored::NotConverted;
}

bool IsWritable(JSMapEntry::Kind kind)
{
    switch (kind) {
    case JSMapEntry::Integer:
    case JSMapEntry::Double:
    case JSMapEntry::Text:
    case JSMapEntry::Boolean:
    case JSMapEntry::IntegerArray:
    case JSMapEntry::TextArray:
        return true;
    default:
        return false;
    }
}

Stored StoreEntryValue(JSContext* cx, const Target& target, const JSMapEntry& entry, jsval value)
{
    switch (entry.kind) {
    case JSMapEntry::Integer:
        return Store<int>(cx, target, entry, value);
    case JSMapEntry::Double:
        return Store<double>(cx, target, entry, value);
    case JSMapEntry::Text: {
        const Stored stored = Store<wxString>(cx, target, entry, value);
        if (stored == Stored::Yes)
            wxLogTrace(TraceMask, wxS("Set Prop wxString =%s"), ReadField<wxString>(target.link, entry));
        return stored;
    }
    case JSMapEntry::Boolean: {
        const Stored stored = Store<bool>(cx, target, entry, value);
        if (stored == Stored::Yes)
            wxLogTrace(TraceMask, wxS("Set Prop bool =%s"), BoolText(ReadField<bool>(target.link, entry)));
        return stored;
    }
    case JSMapEntry::IntegerArray:
        return Store<wxArrayInt>(cx, target, entry, value);
    default:
        return Store<wxArrayString>(cx, target, entry, value);
    }
}

bool IsIdNumber(jsval id)
{
    return JSVAL_IS_INT(id);
}

/// Reads any property but a number. Out of line: what is logged here needs a frame whose set-up would cost reading a
/// number more than the rest of it.
[[gnu::noinline]] jsval ReadEntry(JSContext* cx, const JSMapEntry& entry, const CJScriptLink* link)
{
    switch (entry.kind) {
    case JSMapEntry::ObjectPointer: {
        const wxObject* const object = ReadField<wxObject*>(link, entry);
        wxLogTrace(TraceMask, wxS("Get Prop WXOBJECT =%p"), static_cast<const void*>(object));
        return ObjectAt(cx, object, entry, link);
    }
    case JSMapEntry::Text:
        wxLogTrace(TraceMask, wxS("Get Prop wxString =%s"), ReadField<wxString>(link, entry));
        return wxString_to_jsval(cx, ReadField<wxString>(link, entry));
    case JSMapEntry::Boolean:
        wxLogTrace(TraceMask, wxS("Get Prop bool =%s"), BoolText(ReadField<bool>(link, entry)));
        return bool_to_jsval(cx, ReadField<bool>(link, entry));
    case JSMapEntry::RawPointer: {
        const void* const pointer = ReadField<const void*>(link, entry);
        wxLogTrace(TraceMask, wxS("Get Prop WXOBJECT =%p"), pointer);
        return AddressValue(cx, pointer);
    }
    case JSMapEntry::Object: {
        const void* const object = FieldAddress(link, entry);
        wxLogTrace(TraceMask, wxS("Get Prop WXOBJECTREF =%p"), object);
        return ObjectAt(cx, object, entry, link);
    }
    case JSMapEntry::RawObject: {
        const void* const object = FieldAddress(link, entry);
        wxLogTrace(TraceMask, wxS("Get Prop WXOBJECTREF =%p"), object);
        return AddressValue(cx, object);
    }
    case JSMapEntry::IntegerArray:
        return wxArrayInt_to_jsval(cx, ReadField<wxArrayInt>(link, entry));
    case JSMapEntry::TextArray:
        return wxArrayString_to_jsval(cx, ReadField<wxArrayString>(link, entry));
    default:
        return JSVAL_NULL;
    }
}

/// A read or write that fails without a message: says in the report of what.
int FailSilently(JSContext* cx, JSObject* object, const JSMapEntry* entry)
{
    const JSClass* const cls = JS_GetClass(cx, object);
    const wxString owner = cls ? wxString(cls->name, wxConvUTF8) : wxString(wxS("an object"));
    CJScript::NoteSilentFailure(cx, entry ? owner + wxS(".") + wxString(entry->name, wxConvUTF8)
                                          : wxS("a property of ") + owner);
    return JS_FALSE;
}

} // namespace

JSMapEntry* CJScriptLinkClass::FindEntry(jsval id, bool byTinyId) const
{
    if (!IsIdNumber(id) || JSVAL_TO_INT(id) < 1)
        return nullptr;
    const auto number = static_cast<std::uint32_t>(JSVAL_TO_INT(id));
    if (byTinyId)
        return number < m_rowsByTinyId.size() ? m_rowsByTinyId[number] : nullptr;
    const CJScriptLinkClass* cls = this;
    while (cls && number < cls->m_firstIndex)
        cls = cls->GetParent();
    if (!cls || !cls->m_map->entries || number >= cls->m_nextIndex)
        return nullptr;
    // Constants have no index, so a row can stand behind the place its index says.
    JSMapEntry* row = cls->m_map->entries + (number - cls->m_firstIndex);
    while (row->name && row->index != number)
        ++row;
    return row->name ? row : nullptr;
}

bool CJScriptLinkClass::GetEntryValue(JSContext* cx, JSMapEntry* entry, const CJScriptLink* link, jsval* value) const
{
    if (entry->kind == JSMapEntry::Integer)
        return JS_NewDoubleValue(cx, ReadField<int>(link, *entry), value); // as int_to_jsval, a call less
    if (entry->kind == JSMapEntry::Double)
        return JS_NewDoubleValue(cx, ReadField<double>(link, *entry), value);
    *value = ReadEntry(cx, *entry, link);
    return true;
}

bool CJScriptLinkClass::CreatePropertiesObject(JSContext* cx, CJScriptLink* link)
{
    const bool parentsMade = !GetParent() || GetParent()->CreatePropertiesObject(cx, link);
    return parentsMade && std::all_of(m_embedded.begin(), m_embedded.end(), [&](const JSMapEntry* row) {
               return !JSVAL_IS_NULL(ObjectAt(cx, FieldAddress(link, *row), *row, link));
           });
}

int CJScriptLinkClass::GetPropW(JSContext* cx, JSObject* object, jsval id, jsval* vp)
{
    const auto* const link = static_cast<CJScriptLink*>(JS_GetPrivate(cx, object));
    const CJScriptLinkClass* const cls = link ? link->GetClass() : nullptr;
    JSMapEntry* const entry = cls ? cls->FindEntry(id, true) : nullptr;
    return entry ? cls->GetEntryValue(cx, entry, link, vp) : FailSilently(cx, object, nullptr);
}

JSNumberField CJScriptLinkClass::NumberField(void* data, jsval id)
{
    auto* const link = static_cast<CJScriptLink*>(data);
    const CJScriptLinkClass* const cls = link->GetClass();
    const JSMapEntry* const entry = cls ? cls->FindEntry(id, true) : nullptr;
    if (entry && entry->kind == JSMapEntry::Integer)
        return {&WriteField<int>(link, *entry), JSNumberField::Int32};
    if (entry && entry->kind == JSMapEntry::Double)
        return {&WriteField<double>(link, *entry), JSNumberField::Double};
    return {nullptr, JSNumberField::None};
}

int CJScriptLinkClass::GetPropW(const CJScriptLink* link, JSMapEntry* entry, jsval* vp) const
{
    return link && entry && link->GetContext() && GetEntryValue(link->GetContext(), entry, link, vp);
}

int CJScriptLinkClass::SetPropW(JSContext* cx, JSObject* object, jsval id, jsval* vp)
{
    auto* const link = static_cast<CJScriptLink*>(JS_GetPrivate(cx, object));
    const CJScriptLinkClass* const cls = link ? link->GetClass() : nullptr;
    if (!cls)
        return FailSilently(cx, object, nullptr);
    const int number = IsIdNumber(id) ? JSVAL_TO_INT(id) : IdOfNames;
    const JSMapEntry* const entry = cls->FindEntry(id, true);
    if (!entry) {
        wxLogError(wxS("CJScriptLinkClass::SetProp id %d not found"), number);
        return FailSilently(cx, object, nullptr);
    }
    if (!IsWritable(entry->kind))
        return FailSilently(cx, object, entry);
    const Stored stored = StoreEntryValue(cx, {object, link}, *entry, *vp);
    if (stored == Stored::NotConverted)
        wxLogError(wxS("CJScriptLinkClass::SetProp id %d failed"), number);
    return stored == Stored::Yes ? JS_TRUE : FailSilently(cx, object, entry);
}
