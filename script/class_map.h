#pragma once

#include "base/api.h"
#include "engine/jsapi.h"

#include <wx/arrstr.h>
#include <wx/dynarray.h>
#include <wx/object.h>
#include <wx/string.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

class CJScriptLink;
class CJScriptLinkClass;

/// One row of a class table: a property, constant, event, method or constructor.
///
/// Positions are in bytes from the native object's wxObject part, which must be its first base class. The reference
/// arguments of the constructors only choose the kind by their type; JSField, JSMethod and the like (below and in
/// native_function.h) make rows from members and check their types.
struct VC_QXPARSER_API JSMapEntry
{
    /// What a row describes.
    enum Kind : std::uint8_t
    {
        End = 0,                  ///< The end of a table.
        ObjectPointer = 0x01,     ///< A pointer to a scriptable object; script reads its object, or null.
        Integer = 0x02,           ///< An int; script reads and writes a number.
        Double = 0x03,            ///< A double; script reads and writes a number.
        Text = 0x04,              ///< A wxString; script reads and writes a text.
        Boolean = 0x05,           ///< A bool; script reads and writes a truth value.
        RawPointer = 0x07,        ///< Script reads the pointer as a number.
        Object = 0x08,            ///< An embedded scriptable object.
        RawObject = 0x09,         ///< An embedded plain object; script reads its address as a number.
        IntegerArray = 0x0a,      ///< A wxArrayInt; script reads a copy as an array, and writes one.
        TextArray = 0x0b,         ///< A wxArrayString; script reads a copy as an array, and writes one.
        Constant = 0x32,          ///< An integer on the prototype.
        Event = 0x33,             ///< The name of the function that handles an event.
        Method = 0x40,            ///< A native function.
        Constructor = 0x80,       ///< A native function that makes objects of the class.
        PrimaryConstructor = 0x81 ///< The one that script's `new` runs.
    };

    /// The row that ends a table.
    JSMapEntry() = default;

    ///@{
    /// The row of a field. `fieldPosition` is where it is; `linkPosition`, for scriptable objects, where in that object
    /// its link is. The rows of scriptable objects, of raw pointers and of raw objects can only be read by script.
    JSMapEntry(const char* rowName, std::size_t fieldPosition, std::size_t linkPosition, wxObject*);
    JSMapEntry(const char* rowName, std::size_t fieldPosition, int&);
    JSMapEntry(const char* rowName, std::size_t fieldPosition, double&);
    JSMapEntry(const char* rowName, std::size_t fieldPosition, wxString&);
    JSMapEntry(const char* rowName, std::size_t fieldPosition, bool&);
    JSMapEntry(const char* rowName, std::size_t fieldPosition, wxObject*&);
    JSMapEntry(const char* rowName, std::size_t fieldPosition, std::size_t linkPosition, wxObject&);
    JSMapEntry(const char* rowName, std::size_t fieldPosition, wxObject&);
    JSMapEntry(const char* rowName, std::size_t fieldPosition, wxArrayInt&);
    JSMapEntry(const char* rowName, std::size_t fieldPosition, wxArrayString&);
    ///@}

    /// An integer constant on the prototype.
    JSMapEntry(const char* rowName, int value);

    ///@{
    /// An event: when one of this name (see CJScriptLinkClass::NameEvent) or type reaches the object, its script
    /// function `handler` is called.
    JSMapEntry(const wchar_t* eventName, const char* handler);
    JSMapEntry(int eventType, const char* handler);
    ///@}

    /// A method. `arguments` is what script sees as its length; the native checks its own count. `number` may save
    /// script the native (see JSNumberNative).
    JSMapEntry(const char* rowName, JSNative native, unsigned int arguments, JSNumberNative number = nullptr);

    ///@{
    /// A constructor, and the primary one, which script's `new` runs when there is one.
    JSMapEntry(JSNative native, unsigned int arguments);
    JSMapEntry(JSNative native, unsigned int arguments, bool primary);
    ///@}

    /// The row of a field: what the constructors above come to.
    static JSMapEntry Field(Kind rowKind, const char* rowName, std::size_t fieldPosition, std::size_t linkPosition = 0);

    const char* name = nullptr; ///< As script sees it; "ctor" for constructors, null for the end.
    std::uint32_t index = 0;    ///< Counted from 1 over the whole class chain; written when the class is first used.
    std::uint8_t tinyid = 0;    ///< The property's id over the whole class chain; written likewise.
    Kind kind = End;            ///< What the row describes.
    std::uint32_t extra = 0;    ///< The link's position, the number of arguments, or the constant's value.
    std::uint32_t position = 0; ///< Of fields.
    JSNative native = nullptr;  ///< Of methods and constructors.
    wxString text;              ///< Of events: the event's name, or its type as a decimal number.
    JSNumberNative number = nullptr; ///< Of methods; may be null.
};

/// What a scriptable class shows to script: a constant table, one per class.
struct JSMap
{
    const char* name;          ///< The class's name in script.
    CJScriptLinkClass* parent; ///< The parent class's descriptor, or null.
    JSMapEntry* entries;       ///< The rows, ended by JSMapEntry(); null for none.
};

namespace script_detail
{

/// The position of a member, in bytes from the start of its class: how this platform represents the pointer to it.
template <typename Owner, typename Field> std::size_t PositionOf(Field Owner::*member)
{
    static_assert(sizeof(member) == sizeof(std::ptrdiff_t));
    std::ptrdiff_t position = 0;
    std::memcpy(&position, &member, sizeof position);
    return static_cast<std::size_t>(position);
}

template <typename Field> struct FieldKind;
template <> struct FieldKind<int>
{
    static constexpr auto value = JSMapEntry::Integer;
};
template <> struct FieldKind<double>
{
    static constexpr auto value = JSMapEntry::Double;
};
template <> struct FieldKind<wxString>
{
    static constexpr auto value = JSMapEntry::Text;
};
template <> struct FieldKind<bool>
{
    static constexpr auto value = JSMapEntry::Boolean;
};
template <> struct FieldKind<wxArrayInt>
{
    static constexpr auto value = JSMapEntry::IntegerArray;
};
template <> struct FieldKind<wxArrayString>
{
    static constexpr auto value = JSMapEntry::TextArray;
};

} // namespace script_detail

/// A property over a field of the class `Owner`, or of one of its bases.
template <typename Owner, typename Base, typename Field> JSMapEntry JSField(const char* name, Field Base::*member)
{
    return JSMapEntry::Field(script_detail::FieldKind<Field>::value, name,
                             script_detail::PositionOf<Owner, Field>(member));
}

/// A property over a pointer to a scriptable object; `link` is the member of that object's class that is its link.
template <typename Owner, typename Base, typename Target>
JSMapEntry JSObjectField(const char* name, Target* Base::*member, CJScriptLink Target::*link)
{
    return JSMapEntry::Field(JSMapEntry::ObjectPointer, name, script_detail::PositionOf<Owner, Target*>(member),
                             script_detail::PositionOf<Target, CJScriptLink>(link));
}
/// A property over an embedded scriptable object; `link` as above.
template <typename Owner, typename Base, typename Target>
JSMapEntry JSObjectField(const char* name, Target Base::*member, CJScriptLink Target::*link)
{
    return JSMapEntry::Field(JSMapEntry::Object, name, script_detail::PositionOf<Owner, Target>(member),
                             script_detail::PositionOf<Target, CJScriptLink>(link));
}
