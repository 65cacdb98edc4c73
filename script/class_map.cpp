#include "script/class_map.h"

JSMapEntry JSMapEntry::Field(Kind rowKind, const char* rowName, std::size_t fieldPosition, std::size_t linkPosition)
{
    JSMapEntry row;
    row.kind = rowKind;
    row.name = rowName;
    row.position = static_cast<std::uint32_t>(fieldPosition);
    row.extra = static_cast<std::uint32_t>(linkPosition);
    return row;
}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, std::size_t linkPosition, wxObject*)
    : JSMapEntry(Field(ObjectPointer, rowName, fieldPosition, linkPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, int&)
    : JSMapEntry(Field(Integer, rowName, fieldPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, double&)
    : JSMapEntry(Field(Double, rowName, fieldPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, wxString&)
    : JSMapEntry(Field(Text, rowName, fieldPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, bool&)
    : JSMapEntry(Field(Boolean, rowName, fieldPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, wxObject*&)
    : JSMapEntry(Field(RawPointer, rowName, fieldPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, std::size_t linkPosition, wxObject&)
    : JSMapEntry(Field(Object, rowName, fieldPosition, linkPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, wxObject&)
    : JSMapEntry(Field(RawObject, rowName, fieldPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, wxArrayInt&)
    : JSMapEntry(Field(IntegerArray, rowName, fieldPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, std::size_t fieldPosition, wxArrayString&)
    : JSMapEntry(Field(TextArray, rowName, fieldPosition))
{}

JSMapEntry::JSMapEntry(const char* rowName, int value)
    : name(rowName), kind(Constant), extra(static_cast<std::uint32_t>(value))
{}

JSMapEntry::JSMapEntry(const wchar_t* eventName, const char* handler) : name(handler), kind(Event), text(eventName) {}

JSMapEntry::JSMapEntry(int eventType, const char* handler)
    : name(handler), kind(Event), text(wxString::Format(wxS("%d"), eventType))
{}

JSMapEntry::JSMapEntry(const char* rowName, JSNative function, unsigned int arguments, JSNumberNative numberFunction)
    : name(rowName), kind(Method), extra(arguments), native(function), number(numberFunction)
{}

JSMapEntry::JSMapEntry(JSNative function, unsigned int arguments)
    : name("ctor"), kind(Constructor), extra(arguments), native(function)
{}

JSMapEntry::JSMapEntry(JSNative function, unsigned int arguments, bool)
    : name("ctor"), kind(PrimaryConstructor), extra(arguments), native(function)
{}
