#pragma once

#include "base/api.h"
#include "engine/jsapi.h"
#include "script/class_map.h"
#include "script/script_class.h"
#include "script/script_link.h"
#include "script/value_conversion.h"

#include <wx/object.h>
#include <wx/string.h>

#include <cstdint>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

/// @file
/// Rows of class tables made from native functions:
///
///     JSMapEntry CCounter::m_JSMapEntries[] = {
///         JSConstructor<CCounter, int>(),
///         JSMethod<&CCounter::Add>("Add"),
///         JSField<CCounter>("value", &CCounter::m_value),
///         JSMapEntry(),
///     };
///
/// The native behind each row checks the object and the number of arguments, converts the arguments and the result
/// (value_conversion.h), and throws the same messages for every function.

/// How one type crosses between host and script; `name` is what messages call it. A host adds a type by specialising
/// it.
template <typename Type, typename = void> struct JSConversion;

namespace script_detail
{

/// Throws "Bad argument count for function 'NAME' (COUNT instead of EXPECTED)" for the running function; returns
/// JS_FALSE.
VC_QXPARSER_API JSBool FailCount(JSContext* cx, const jsval* argv, uintN count, unsigned int expected);
/// Throws "Argument POSITION: can not convert to TYPE"; positions count from 1. Returns JS_FALSE.
VC_QXPARSER_API JSBool FailArgument(JSContext* cx, unsigned int position, const wchar_t* type);
/// Throws "Object is not of class 'NAME'"; returns JS_FALSE.
VC_QXPARSER_API JSBool FailClass(JSContext* cx, const CJScriptLinkClass& expected);
/// Notes for the report that the running function has failed without a message; returns JS_FALSE.
VC_QXPARSER_API JSBool FailWithoutObject(JSContext* cx, const jsval* argv);
/// Ties a native object made by script to its script object: the fresh one of `new`, or else a new one. The script
/// object owns it from then on. False when there can be none.
VC_QXPARSER_API bool AttachToScript(JSContext* cx, JSObject* object, CJScriptLink* link, std::size_t bytes,
                                    jsval* rval);

/// Native bytes that every object costs beyond its own size, roughly: strings, the link, its script side.
constexpr std::size_t ObjectOverhead = 200;

template <typename Type> using Plain = std::remove_cv_t<std::remove_reference_t<Type>>;

/// An array argument and the objects that its links are those of, which live until the native returns.
struct LinksArgument : wxArraypCJScriptLink
{
    std::vector<jsval> objects;
};

/// What an argument is kept in while the others are converted.
template <typename Type> struct KeptAs
{
    using Kept = Type;
};
template <> struct KeptAs<wxArraypCJScriptLink>
{
    using Kept = LinksArgument;
};
template <typename Type> using Argument = typename KeptAs<Plain<Type>>::Kept;

template <typename Result, typename... Arguments> struct Signature
{
    using ArgumentTuple = std::tuple<Argument<Arguments>...>;
    static constexpr unsigned int count = sizeof...(Arguments);
};

template <typename Function> struct FunctionTraits;
template <typename R, typename... A> struct FunctionTraits<R (*)(A...)> : Signature<R, A...>
{
    using Class = void;
    using Result = R;
};
template <typename R, typename C, typename... A> struct FunctionTraits<R (C::*)(A...)> : Signature<R, A...>
{
    using Class = C;
    using Result = R;
};
template <typename R, typename C, typename... A> struct FunctionTraits<R (C::*)(A...) const> : Signature<R, A...>
{
    using Class = C;
    using Result = R;
};

template <typename Tuple, std::size_t... I>
bool ConvertArguments(JSContext* cx, const jsval* argv, Tuple& arguments, std::index_sequence<I...>)
{
    [[maybe_unused]] const auto convert = [&](auto& argument, unsigned int position) {
        using Type = Plain<decltype(argument)>;
        return JSConversion<Type>::From(cx, argv[position], argument) ||
               FailArgument(cx, position + 1, JSConversion<Type>::name);
    };
    return (convert(std::get<I>(arguments), I) && ...);
}

/// Reads pointers to script's objects once more: while another argument was converted, script may have run and their
/// native objects may have gone.
template <typename Tuple, std::size_t... I>
bool RefreshPointers(JSContext* cx, const jsval* argv, Tuple& arguments, std::index_sequence<I...>)
{
    [[maybe_unused]] const auto refresh = [&](auto& argument, unsigned int position) {
        using Type = Plain<decltype(argument)>;
        if constexpr (std::is_pointer_v<Type> && !std::is_same_v<Type, JSFunction*>)
            return !argument || JSConversion<Type>::From(cx, argv[position], argument) ||
                   FailArgument(cx, position + 1, JSConversion<Type>::name);
        else if constexpr (std::is_same_v<Type, LinksArgument>) {
            static_cast<wxArraypCJScriptLink&>(argument) = LinksOf(cx, argument.objects);
            return true;
        } else
            return true;
    };
    return sizeof...(I) < 2 || (refresh(std::get<I>(arguments), I) && ...);
}

/// Whether the native object behind `link` is of the class that a method belongs to.
template <typename Class> bool IsOfClass(const CJScriptLink* link)
{
    if constexpr (std::is_same_v<Class, CJScriptLink> || std::is_void_v<Class>)
        return true;
    else {
        const CJScriptLinkClass* const cls = link->GetClass();
        return cls == &Class::ms_JSClass || (cls && cls->IsKindOf(&Class::ms_JSClass));
    }
}

/// The native object behind `link`, which is of that class: for functions that are no members, the link.
template <typename Class> auto* TargetOf(CJScriptLink* link)
{
    if constexpr (std::is_same_v<Class, CJScriptLink> || std::is_void_v<Class>)
        return link;
    else
        return static_cast<Class*>(link->GetRootObject());
}

/// Calls the native with the converted arguments.
template <auto Function, typename Target, typename Tuple>
typename FunctionTraits<decltype(Function)>::Result Call(Target* target, Tuple& arguments)
{
    using Traits = FunctionTraits<decltype(Function)>;
    const auto call = [&](auto&... argument) -> typename Traits::Result {
        if constexpr (std::is_void_v<typename Traits::Class>)
            return Function(argument...);
        else
            return (target->*Function)(argument...);
    };
    return std::apply(call, arguments);
}

/// Does that and converts its result.
template <auto Function, typename Target, typename Tuple>
void Invoke(JSContext* cx, Target* target, Tuple& arguments, jsval* rval)
{
    using Result = typename FunctionTraits<decltype(Function)>::Result;
    if constexpr (std::is_void_v<Result>) {
        Call<Function>(target, arguments);
        *rval = JSVAL_VOID;
    } else
        *rval = JSConversion<Plain<Result>>::To(cx, Call<Function>(target, arguments));
}

/// What a native does when it is given another number of arguments than it takes.
enum class WrongCount
{
    Throws,
    EndsScript, ///< Without a message.
    Ignores
};

/// Whether converting the arguments may run script: only objects have conversions of their own.
template <unsigned int Count> bool MayRunScript(const jsval* argv)
{
    for (unsigned int i = 0; i < Count; ++i) {
        if (!JSVAL_IS_PRIMITIVE(argv[i]))
            return true;
    }
    return false;
}

/// The native behind a method.
template <auto Function, WrongCount Reaction = WrongCount::Throws>
JSBool CallNative(JSContext* cx, JSObject* object, uintN argc, jsval* argv, jsval* rval)
{
    using Traits = FunctionTraits<decltype(Function)>;
    auto* link = static_cast<CJScriptLink*>(JS_GetPrivate(cx, object));
    if (!link)
        return FailWithoutObject(cx, argv);
    if (Reaction != WrongCount::Ignores && argc != Traits::count)
        return Reaction == WrongCount::Throws ? FailCount(cx, argv, argc, Traits::count) : FailWithoutObject(cx, argv);
    using Positions = std::make_index_sequence<Traits::count>;
    typename Traits::ArgumentTuple arguments;
    if (!ConvertArguments(cx, argv, arguments, Positions()))
        return JS_FALSE;
    if (MayRunScript<Traits::count>(argv)) {
        if (!RefreshPointers(cx, argv, arguments, Positions()))
            return JS_FALSE;
        // The native object may have gone meanwhile.
        link = static_cast<CJScriptLink*>(JS_GetPrivate(cx, object));
        if (!link)
            return FailWithoutObject(cx, argv);
    }
    using Class = typename Traits::Class;
    if constexpr (!std::is_void_v<Class> && !std::is_same_v<Class, CJScriptLink>) {
        if (!IsOfClass<Class>(link))
            return FailClass(cx, Class::ms_JSClass);
    }
    auto* const target = TargetOf<Class>(link);
    if (!target)
        return JS_FALSE;
    Invoke<Function>(cx, target, arguments, rval);
    return JS_TRUE;
}

///@{
/// Reads a word that holds just such a value; false for other words.
inline bool ReadPlain(jsval v, int& out)
{
    if (!JSVAL_IS_INT(v))
        return false;
    out = JSVAL_TO_INT(v);
    return true;
}
inline bool ReadPlain(jsval v, double& out)
{
    if (!JSVAL_IS_NUMBER(v))
        return false;
    out = JSVAL_IS_INT(v) ? JSVAL_TO_INT(v) : *JSVAL_TO_DOUBLE(v);
    return true;
}
inline bool ReadPlain(jsval v, bool& out)
{
    if (!JSVAL_IS_BOOLEAN(v))
        return false;
    out = JSVAL_TO_BOOLEAN(v);
    return true;
}
///@}

template <typename Type> constexpr bool isNumber = std::is_same_v<Type, int> || std::is_same_v<Type, double>;
template <typename Tuple> struct ArePlain;
template <typename... Types> struct ArePlain<std::tuple<Types...>>
{
    static constexpr bool value = ((isNumber<Types> || std::is_same_v<Types, bool>)&&...);
};

inline JSNumber NumberOf(int value)
{
    return {JSNumberField::Int32, value};
}
inline JSNumber NumberOf(double value)
{
    return {JSNumberField::Double, 0, value};
}

template <typename Tuple, std::size_t... I>
bool ReadArguments([[maybe_unused]] const jsval* argv, [[maybe_unused]] Tuple& arguments, std::index_sequence<I...>)
{
    return (ReadPlain(argv[I], std::get<I>(arguments)) && ...);
}

/// What CallNative does when everything is as nearly always: the object and the arguments are what the native takes.
template <auto Function> JSNumber CallForNumber(void* data, uintN argc, const jsval* argv)
{
    using Traits = FunctionTraits<decltype(Function)>;
    constexpr JSNumber none{JSNumberField::None};
    auto* const link = static_cast<CJScriptLink*>(data);
    typename Traits::ArgumentTuple arguments;
    if (argc != Traits::count || !ReadArguments(argv, arguments, std::make_index_sequence<Traits::count>()) ||
        !IsOfClass<typename Traits::Class>(link))
        return none;
    auto* const target = TargetOf<typename Traits::Class>(link);
    return target ? NumberOf(Call<Function>(target, arguments)) : none;
}

/// CallForNumber for functions of numbers and truth values that return a number; null for others.
template <auto Function> constexpr JSNumberNative NumberNative()
{
    using Traits = FunctionTraits<decltype(Function)>;
    if constexpr (isNumber<Plain<typename Traits::Result>> && ArePlain<typename Traits::ArgumentTuple>::value)
        return &CallForNumber<Function>;
    else
        return nullptr;
}

/// The native behind a constructor.
template <typename Class, typename... Arguments>
JSBool ConstructNative(JSContext* cx, JSObject* object, uintN argc, jsval* argv, jsval* rval)
{
    if (argc != sizeof...(Arguments))
        return FailCount(cx, argv, argc, sizeof...(Arguments));
    using Positions = std::index_sequence_for<Arguments...>;
    std::tuple<Argument<Arguments>...> arguments;
    if (!ConvertArguments(cx, argv, arguments, Positions()) || !RefreshPointers(cx, argv, arguments, Positions()))
        return JS_FALSE;
    auto made = std::apply([](auto&... argument) { return std::make_unique<Class>(argument...); }, arguments);
    if (!AttachToScript(cx, object, made->GetJSLink(), sizeof(Class) + ObjectOverhead, rval))
        return FailWithoutObject(cx, argv);
    static_cast<void>(made.release()); // the script object owns it from now on
    return JS_TRUE;
}

/// The native behind a primary constructor: picks the one for the number of arguments.
template <typename Class> JSBool ConstructByCount(JSContext* cx, JSObject* object, uintN argc, jsval* argv, jsval* rval)
{
    return Class::ms_JSClass.CreateNewMulti(cx, object, argc, argv, rval);
}

} // namespace script_detail

/// A method over a member function of the scriptable class, or over a static one.
template <auto Function> JSMapEntry JSMethod(const char* name)
{
    return JSMapEntry(name, &script_detail::CallNative<Function>,
                      script_detail::FunctionTraits<decltype(Function)>::count,
                      script_detail::NumberNative<Function>());
}

/// A method without arguments that ends the script, without a message, when it is given some.
template <auto Function> JSMapEntry JSMethodWithoutArguments(const char* name)
{
    static_assert(script_detail::FunctionTraits<decltype(Function)>::count == 0);
    return JSMapEntry(name, &script_detail::CallNative<Function, script_detail::WrongCount::EndsScript>, 0,
                      script_detail::NumberNative<Function>());
}

/// A method without arguments that ignores those it is given.
template <auto Function> JSMapEntry JSMethodOfAnyCount(const char* name)
{
    static_assert(script_detail::FunctionTraits<decltype(Function)>::count == 0);
    return JSMapEntry(name, &script_detail::CallNative<Function, script_detail::WrongCount::Ignores>, 0);
}

/// A constructor of a scriptable class that takes these arguments.
template <typename Class, typename... Arguments> JSMapEntry JSConstructor()
{
    return JSMapEntry(&script_detail::ConstructNative<Class, Arguments...>, sizeof...(Arguments));
}

/// The primary constructor: for classes that can be made with different numbers of arguments.
template <typename Class> JSMapEntry JSPrimaryConstructor()
{
    return JSMapEntry(&script_detail::ConstructByCount<Class>, 0, true);
}

/// The conversions of value_conversion.h, one line a type.
template <typename Type, bool (*FromFunction)(JSContext*, jsval, Type&), auto ToFunction> struct JSNamedConversion
{
    /// Reads a value of script's: what FromFunction does.
    static bool From(JSContext* cx, jsval v, Type& out) { return FromFunction(cx, v, out); }
    /// Makes a value for script: what ToFunction does.
    template <typename Value> static jsval To(JSContext* cx, Value&& value)
    {
        return ToFunction(cx, std::forward<Value>(value));
    }
};

template <> struct JSConversion<int> : JSNamedConversion<int, &jsval_to_int, &int_to_jsval>
{
    static constexpr const wchar_t* name = L"int";
    /// Nearly all are integer words, and those need no call.
    static bool From(JSContext* cx, jsval v, int& out)
    {
        if (!JSVAL_IS_INT(v))
            return jsval_to_int(cx, v, out);
        out = JSVAL_TO_INT(v);
        return true;
    }
    /// As int_to_jsval, a call less.
    static jsval To(JSContext* cx, int value)
    {
        jsval result = JSVAL_NULL;
        JS_NewDoubleValue(cx, value, &result);
        return result;
    }
};
template <> struct JSConversion<double> : JSNamedConversion<double, &jsval_to_double, &double_to_jsval>
{
    static constexpr const wchar_t* name = L"double";
};
template <> struct JSConversion<bool> : JSNamedConversion<bool, &jsval_to_bool, &bool_to_jsval>
{
    static constexpr const wchar_t* name = L"bool";
};
template <> struct JSConversion<wxString> : JSNamedConversion<wxString, &jsval_to_wxString, &wxString_to_jsval>
{
    static constexpr const wchar_t* name = L"wxString";
};
template <> struct JSConversion<wxArrayInt> : JSNamedConversion<wxArrayInt, &jsval_to_wxArrayInt, &wxArrayInt_to_jsval>
{
    static constexpr const wchar_t* name = L"wxArrayInt";
};
template <>
struct JSConversion<wxArrayString> : JSNamedConversion<wxArrayString, &jsval_to_wxArrayString, &wxArrayString_to_jsval>
{
    static constexpr const wchar_t* name = L"wxArrayString";
};
template <> struct JSConversion<script_detail::LinksArgument>
{
    static constexpr const wchar_t* name = L"wxArraypCJScriptLink";
    static bool From(JSContext* cx, jsval v, script_detail::LinksArgument& out)
    {
        if (!jsval_to_objects(cx, v, out.objects))
            return false;
        static_cast<wxArraypCJScriptLink&>(out) = LinksOf(cx, out.objects);
        return true;
    }
};
template <>
struct JSConversion<wxArraypCJScriptLink>
    : JSNamedConversion<wxArraypCJScriptLink, &jsval_to_wxArraypCJScriptLink, &wxArraypCJScriptLink_to_jsval>
{
    static constexpr const wchar_t* name = L"wxArraypCJScriptLink";
};
template <>
struct JSConversion<CJScriptLink*> : JSNamedConversion<CJScriptLink*, &jsval_to_pCJScriptLink, &pCJScriptLink_to_jsval>
{
    static constexpr const wchar_t* name = L"pCJScriptLink";
};
template <> struct JSConversion<wxObject*> : JSNamedConversion<wxObject*, &jsval_to_pwxObject, &pwxObject_to_jsval>
{
    static constexpr const wchar_t* name = L"pwxObject";
};
template <> struct JSConversion<JSFunction*>
{
    static constexpr const wchar_t* name = L"pJSFunction";
    static bool From(JSContext* cx, jsval v, JSFunction*& out) { return jsval_to_pJSFunction(cx, v, out); }
    static jsval To(JSContext*, JSFunction* function)
    {
        return function ? OBJECT_TO_JSVAL(JS_GetFunctionObject(function)) : JSVAL_NULL;
    }
};
/// A value that passes through as it is. (It is the machine word of that size, so a plain number of that type is one
/// too.)
template <> struct JSConversion<jsval>
{
    static constexpr const wchar_t* name = L"jsval";
    static bool From(JSContext* cx, jsval v, jsval& out) { return jsval_to_jsval(cx, v, out); }
    static jsval To(JSContext* cx, jsval v) { return jsval_to_jsval(cx, v); }
};
/// Pointers to scriptable objects. Script passes their objects, or null; it gets null for one without a script object.
template <typename Class>
struct JSConversion<Class*, std::enable_if_t<std::is_base_of_v<wxObject, Class> && !std::is_same_v<wxObject, Class>>>
{
    static constexpr const wchar_t* name = L"pCJScriptLinkRoot";
    static bool From(JSContext* cx, jsval v, Class*& out)
    {
        wxObject* object = nullptr;
        if (!jsval_to_pCJScriptLinkRoot(cx, v, object))
            return false;
        out = dynamic_cast<Class*>(object);
        return out || !object;
    }
    static jsval To(JSContext* cx, Class* object)
    {
        return pCJScriptLink_to_jsval(cx, object ? object->GetJSLink() : nullptr);
    }
};
