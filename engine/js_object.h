#pragma once

#include "base/api.h"
#include "engine/js_types.h"

#include <string>

/// @file
/// Classes, objects, properties, arrays.
///
/// Unless said otherwise false, or null, means an error that is pending or reported (js_error.h), and objects and
/// values returned live as js_gc.h says. Reading and writing properties may run script.
namespace qxjs
{

constexpr std::uint32_t JSCLASS_HAS_PRIVATE = 0x01; ///< every class has; accepted and ignored, like other flags
constexpr std::uint32_t JSCLASS_HAS_LATE_CHILDREN = 0x10000; ///< see JS_AddLateChild; not for globals

/// What a class of objects does. The record is read when objects are made and may go away afterwards; records with
/// equal members are the same class. The engine calls `finalize` only: each other hook must be null or its stub below,
/// and an object of a class with another hook is not made, which is an error.
struct JSClass
{
    const char* name;         ///< of the class, as instances print it
    std::uint32_t flags;      ///< JSCLASS_...
    JSPropertyOp addProperty; ///< null or JS_PropertyStub
    JSPropertyOp delProperty; ///< null or JS_PropertyStub
    JSPropertyOp getProperty; ///< null or JS_PropertyStub
    JSPropertyOp setProperty; ///< null or JS_PropertyStub
    JSEnumerateOp enumerate;  ///< null or JS_EnumerateStub
    JSResolveOp resolve;      ///< null or JS_ResolveStub
    JSConvertOp convert;      ///< null or JS_ConvertStub
    JSFinalizeOp finalize;    ///< may be null
};

///@{
/// The hooks that a JSClass may name; each is the same as null.
VC_QXPARSER_API JSBool JS_PropertyStub(JSContext* cx, JSObject* obj, jsval id, jsval* vp);
VC_QXPARSER_API JSBool JS_EnumerateStub(JSContext* cx, JSObject* obj);
VC_QXPARSER_API JSBool JS_ResolveStub(JSContext* cx, JSObject* obj, jsval id);
VC_QXPARSER_API JSBool JS_ConvertStub(JSContext* cx, JSObject* obj, JSType type, jsval* vp);
VC_QXPARSER_API void JS_FinalizeStub(JSContext* cx, JSObject* obj);
///@}

/// One property of a class or an object. With a getter or setter it is an accessor that carries `tinyid`, any integer
/// that fits a word, to them; script may run it on any object as `this`, so they check what they are given. An
/// accessor without setter, or JSPROP_READONLY, ignores writes in sloppy code and throws in strict code. With neither
/// it is a plain property with the value undefined. An array ends with a null name.
struct JSPropertySpec
{
    const char* name;                ///< null at the end of an array
    jsint tinyid;                    ///< what the getter and the setter are told as `id`
    uintN flags;                     ///< JSPROP_...
    JSPropertyOp getter;             ///< may be null
    JSPropertyOp setter;             ///< may be null
    JSNumberFieldOp field = nullptr; ///< may save script the getter and setter
};

/// One native function; `nargs` is its length and the least number of words it may read. Ends with a null name.
struct JSFunctionSpec
{
    const char* name;                ///< null at the end of an array
    JSNative call;                   ///< the native
    uintN nargs;                     ///< what script sees as the function's length
    uintN flags;                     ///< JSPROP_..., of the property that holds the function
    uintN extra;                     ///< ignored
    JSNumberNative number = nullptr; ///< may save script the native
};

/// Makes a class known on `obj`, usually the global: the prototype (itself of the class, its private data null), and
/// the constructor under the class's name; without a constructor that name holds the prototype. Properties and
/// functions go to the prototype, the static ones to the constructor. Any of the arrays may be null. With `new`, the
/// native gets a fresh object as `obj` that becomes the result unless the native returns another object; called
/// without, it gets script's `this` (see JS_IsConstructing). Instances print as "[object Name]". Returns the prototype;
/// root it to keep it.
VC_QXPARSER_API JSObject* JS_InitClass(JSContext* cx, JSObject* obj, JSObject* parent_proto, const JSClass* clasp,
                                       JSNative constructor, uintN nargs, const JSPropertySpec* ps,
                                       const JSFunctionSpec* fs, const JSPropertySpec* static_ps,
                                       const JSFunctionSpec* static_fs);

/// Defines properties on an object: all of an array that ends with a null name.
VC_QXPARSER_API JSBool JS_DefineProperties(JSContext* cx, JSObject* obj, const JSPropertySpec* ps);
/// Defines native functions on an object: all of an array that ends with a null name.
VC_QXPARSER_API JSBool JS_DefineFunctions(JSContext* cx, JSObject* obj, const JSFunctionSpec* fs);
/// Defines one native function as the property `name` of `obj`, with the attributes JSPROP_...
VC_QXPARSER_API JSFunction* JS_DefineFunction(JSContext* cx, JSObject* obj, const char* name, JSNative call,
                                              uintN nargs, uintN attrs);

/// A new object; a null class makes a plain one. A null `proto` means the prototype JS_InitClass gave the class in
/// this global, or else that of plain objects. A null `parent` means the context's global.
VC_QXPARSER_API JSObject* JS_NewObject(JSContext* cx, const JSClass* clasp, JSObject* proto, JSObject* parent);
/// The same, as the property `name` of `obj`, which becomes its parent.
VC_QXPARSER_API JSObject* JS_DefineObject(JSContext* cx, JSObject* obj, const char* name, const JSClass* clasp,
                                          JSObject* proto, uintN attrs);

/// The class of an object of a host's class, which lives as long as the thread's engine; null for all other objects.
VC_QXPARSER_API const JSClass* JS_GetClass(JSContext* cx, JSObject* obj);

/// The pointer a host keeps in an object of a class of its own: null at first and for all other objects.
VC_QXPARSER_API void* JS_GetPrivate(JSContext* cx, JSObject* obj);
/// False for objects that are not of a host's class.
VC_QXPARSER_API JSBool JS_SetPrivate(JSContext* cx, JSObject* obj, void* data);
/// The same as JS_GetPrivate, but null too when the object is of another class than `clasp`; with `argv` non-null
/// (a native's own) that also is a pending TypeError.
VC_QXPARSER_API void* JS_GetInstancePrivate(JSContext* cx, JSObject* obj, const JSClass* clasp, jsval* argv);
/// Whether the object is of the class, or of one with equal members; `argv` as for JS_GetInstancePrivate.
VC_QXPARSER_API JSBool JS_InstanceOf(JSContext* cx, JSObject* obj, const JSClass* clasp, jsval* argv);

///@{
/// The object whose names a script evaluated on `obj` sees next. Objects of host classes keep the one they were given;
/// all others have the context's global, and a global has none.
VC_QXPARSER_API JSObject* JS_GetParent(JSContext* cx, JSObject* obj);
VC_QXPARSER_API JSBool JS_SetParent(JSContext* cx, JSObject* obj, JSObject* parent);
///@}

/// The prototype; null when the object has none.
VC_QXPARSER_API JSObject* JS_GetPrototype(JSContext* cx, JSObject* obj);
/// Gives the object another prototype, null for none. An error when that would make a circle.
VC_QXPARSER_API JSBool JS_SetPrototype(JSContext* cx, JSObject* obj, JSObject* proto);

/// What a host keeps of a late child; null pointers at first. It stays where it is as long as it waits.
struct JSLateChild
{
    JSLateChild* previous = nullptr; ///< the one whose property comes before
    JSLateChild* next = nullptr;     ///< the one whose property comes behind
    JSObject* object = nullptr;      ///< what the property will be
    const void* address = nullptr;   ///< what it is named after

    /// Whether the property is still to be defined.
    bool IsWaiting() const { return next != nullptr; }
};

/// The name of what is named after an address: "P", and the address as "%p" shows it.
VC_QXPARSER_API std::string JS_AddressName(const void* address);

/// Makes `child` an enumerable property of `obj`, named after `address`. Where the class of `obj` has the flag
/// JSCLASS_HAS_LATE_CHILDREN the property is not defined before somebody looks at such names, lists or adds properties:
/// an object with a million children that nobody finds by name costs neither names nor properties. Until then, or until
/// JS_DropLateChild, `late` belongs to `obj`; nobody else can tell the difference, but for a property that script
/// makes undeletable under an inherited name: that is listed in front of the children that wait.
VC_QXPARSER_API JSBool JS_AddLateChild(JSContext* cx, JSObject* obj, JSObject* child, const void* address,
                                       JSLateChild* late);
/// Takes a child that waits away from its object, in finalizers too; nothing happens to one that does not wait.
VC_QXPARSER_API void JS_DropLateChild(JSLateChild* late);

/// Keeps `held` alive as long as `holder`, which must be of a host's class: at most one for each `index`, the last one
/// given. Script does not see it; JS_ClearScope lets go of all.
VC_QXPARSER_API JSBool JS_HoldObject(JSContext* cx, JSObject* holder, jsint index, JSObject* held);

///@{
/// Reads a property, own or inherited. Narrow names are Latin-1. Lengths count UTF-16 units or wide characters. A
/// property that is not there reads as JSVAL_VOID with success.
VC_QXPARSER_API JSBool JS_GetProperty(JSContext* cx, JSObject* obj, const char* name, jsval* vp);
VC_QXPARSER_API JSBool JS_GetUCProperty(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length,
                                        jsval* vp);
VC_QXPARSER_API JSBool JS_GetWideProperty(JSContext* cx, JSObject* obj, const wchar_t* name, std::size_t length,
                                          jsval* vp);
///@}

///@{
/// Sets a property as an assignment in script does: setters run, and a property that is not there is made. *vp is only
/// read.
VC_QXPARSER_API JSBool JS_SetProperty(JSContext* cx, JSObject* obj, const char* name, jsval* vp);
VC_QXPARSER_API JSBool JS_SetUCProperty(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length,
                                        jsval* vp);
VC_QXPARSER_API JSBool JS_SetWideProperty(JSContext* cx, JSObject* obj, const wchar_t* name, std::size_t length,
                                          jsval* vp);
///@}

///@{
/// Whether there is a property, own or inherited.
VC_QXPARSER_API JSBool JS_HasProperty(JSContext* cx, JSObject* obj, const char* name, JSBool* found);
VC_QXPARSER_API JSBool JS_HasUCProperty(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length,
                                        JSBool* found);
///@}

///@{
/// Deletes an own property: *rval is JSVAL_TRUE when it is gone or never was there, JSVAL_FALSE when it is permanent.
VC_QXPARSER_API JSBool JS_DeleteProperty2(JSContext* cx, JSObject* obj, const char* name, jsval* rval);
VC_QXPARSER_API JSBool JS_DeleteUCProperty2(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length,
                                            jsval* rval);
VC_QXPARSER_API JSBool JS_DeleteWideProperty2(JSContext* cx, JSObject* obj, const wchar_t* name, std::size_t length,
                                              jsval* rval);
///@}

///@{
/// Defines an own property without running setters; with a getter or setter an accessor, as in JSPropertySpec, whose
/// `value` is ignored. Without a tinyid those get the name as id.
VC_QXPARSER_API JSBool JS_DefineProperty(JSContext* cx, JSObject* obj, const char* name, jsval value,
                                         JSPropertyOp getter, JSPropertyOp setter, uintN attrs);
VC_QXPARSER_API JSBool JS_DefineUCProperty(JSContext* cx, JSObject* obj, const jschar* name, std::size_t length,
                                           jsval value, JSPropertyOp getter, JSPropertyOp setter, uintN attrs);
VC_QXPARSER_API JSBool JS_DefineWideProperty(JSContext* cx, JSObject* obj, const wchar_t* name, std::size_t length,
                                             jsval value, JSPropertyOp getter, JSPropertyOp setter, uintN attrs);
VC_QXPARSER_API JSBool JS_DefinePropertyWithTinyId(JSContext* cx, JSObject* obj, const char* name, jsint tinyid,
                                                   jsval value, JSPropertyOp getter, JSPropertyOp setter, uintN attrs);
///@}

/// Removes all own properties; those that are permanent become undefined where they can be written. A global keeps
/// its standard names, and its top-level const, let and class, which are no properties: for an empty global make a
/// new one.
VC_QXPARSER_API void JS_ClearScope(JSContext* cx, JSObject* obj);

/// The own enumerable properties, symbols left out, in script's order. Free it with JS_DestroyIdArray; until then the
/// ids are alive.
struct JSIdArray
{
    jsint length;       ///< the number of ids
    const jsid* vector; ///< the ids
};
/// Makes the list of an object's properties; null after an error.
VC_QXPARSER_API JSIdArray* JS_Enumerate(JSContext* cx, JSObject* obj);
/// Frees a list; null is fine.
VC_QXPARSER_API void JS_DestroyIdArray(JSContext* cx, JSIdArray* ida);
/// The id as a value: a string, or an integer for an index.
VC_QXPARSER_API JSBool JS_IdToValue(JSContext* cx, jsid id, jsval* vp);

/// A new array of `length` elements, copied from `vector` or, when that is null, holes.
VC_QXPARSER_API JSObject* JS_NewArrayObject(JSContext* cx, jsint length, const jsval* vector);
/// Whether the object is an array.
VC_QXPARSER_API JSBool JS_IsArrayObject(JSContext* cx, JSObject* obj);
/// The length, holes included; for what is no array what its property "length" says.
VC_QXPARSER_API JSBool JS_GetArrayLength(JSContext* cx, JSObject* obj, jsuint* length);
/// Sets the length: cuts the end of an array off, or adds holes there.
VC_QXPARSER_API JSBool JS_SetArrayLength(JSContext* cx, JSObject* obj, jsuint length);

///@{
/// Indices count from 0; a hole, or an index past the end, reads as JSVAL_VOID with success.
VC_QXPARSER_API JSBool JS_GetElement(JSContext* cx, JSObject* obj, jsint index, jsval* vp);
VC_QXPARSER_API JSBool JS_SetElement(JSContext* cx, JSObject* obj, jsint index, jsval* vp);
///@}

} // namespace qxjs
