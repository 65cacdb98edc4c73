#include "script/value_conversion.h"

#include "script/script.h"
#include "script/script_link.h"
#include "script/script_values.h"

#include <wx/log.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace
{

constexpr size_t ElementsAtOnce = 1000;

void LogNativeObjectGone()
{
    wxLogError(wxS("Failed to convert jsobject to pointer. C object has been deleted ?"));
}

CJScriptLink* LinkOf(JSContext* cx, jsval v)
{
    return JSVAL_IS_NULL(v) ? nullptr : static_cast<CJScriptLink*>(JS_GetPrivate(cx, JSVAL_TO_OBJECT(v)));
}

/// Reads the elements of a script array one by one with `convert(element)`. The array gets its size by what is read, as
/// script can make one of any length without filling it.
template <typename Array, typename Convert> bool ReadArray(JSContext* cx, jsval v, Array& out, Convert convert)
{
    if (JSVAL_IS_PRIMITIVE(v) || !JS_IsArrayObject(cx, JSVAL_TO_OBJECT(v)))
        return false;
    JSObject* const array = JSVAL_TO_OBJECT(v);
    jsuint length = 0;
    if (!JS_GetArrayLength(cx, array, &length) || length > MostArrayElements)
        return false;
    out.clear();
    for (jsuint i = 0; i < length; ++i) {
        if (!JS_MayGoOn(0))
            return false;
        jsval element = JSVAL_VOID;
        if (!JS_GetElement(cx, array, static_cast<jsint>(i), &element) || !convert(element)) {
            out.resize(length);
            return false;
        }
    }
    return true;
}

/// Keeps what is made meanwhile no longer than itself: of the elements of a long array, as recent results, the array
/// itself would be forgotten before it is full.
class LocalRoots
{
public:
    explicit LocalRoots(JSContext* cx) : m_context(cx) { JS_EnterLocalRootScope(cx); }
    ~LocalRoots() { JS_LeaveLocalRootScope(m_context); }
    LocalRoots(const LocalRoots&) = delete;
    LocalRoots& operator=(const LocalRoots&) = delete;

private:
    JSContext* m_context;
};

/// Makes a script array, each element by `convert(i)`.
template <typename Convert> jsval MakeArray(JSContext* cx, size_t length, Convert convert)
{
    JSObject* const array = JS_NewArrayObject(cx, 0, nullptr);
    if (!array)
        return JSVAL_NULL;
    for (size_t i = 0; i < length;) {
        const LocalRoots elements(cx);
        for (const size_t end = std::min(length, i + ElementsAtOnce); i < end; ++i) {
            jsval element = convert(i);
            if (!JS_SetElement(cx, array, static_cast<jsint>(i), &element))
                return JSVAL_NULL;
        }
    }
    return OBJECT_TO_JSVAL(array);
}

/// A new script object that owns a new `Carrier` of the value.
template <typename Carrier, typename Value> jsval MakeCarrier(JSContext* cx, Value value, const wchar_t* failure)
{
    auto carrier = std::make_unique<Carrier>(value);
    CJScript* const script = CJScript::FromContext(cx);
    CJScriptLink* const link = carrier->GetJSLink();
    if (!script || !script->CreateChildDynamic(link) || !link->GetRootObject()->IsKindOf(&Carrier::ms_classInfo)) {
        wxLogError(wxS("%s"), failure);
        return JSVAL_NULL;
    }
    static_cast<void>(carrier.release()); // the script object owns it from now on
    return OBJECT_TO_JSVAL(link->GetJSObject());
}

} // namespace

int TruncateToInt(double number)
{
    if (std::isnan(number))
        return 0;
    constexpr auto lowest = std::numeric_limits<int>::min();
    constexpr auto highest = std::numeric_limits<int>::max();
    if (number >= highest)
        return highest;
    return number <= lowest ? lowest : static_cast<int>(number);
}

bool jsval_to_jsval(JSContext*, jsval v, jsval& out)
{
    out = v;
    return true;
}

bool jsval_to_int(JSContext* cx, jsval v, int& out)
{
    if (JSVAL_IS_INT(v)) {
        out = JSVAL_TO_INT(v);
        return true;
    }
    double number = 0;
    if (!JS_ValueToNumber(cx, v, &number))
        return false;
    out = TruncateToInt(number);
    return true;
}

bool jsval_to_double(JSContext* cx, jsval v, double& out)
{
    return JS_ValueToNumber(cx, v, &out);
}

bool jsval_to_bool(JSContext* cx, jsval v, bool& out)
{
    JSBool truth = JS_FALSE;
    if (!JS_ValueToBoolean(cx, v, &truth))
        return false;
    out = truth;
    return true;
}

bool jsval_to_wxString(JSContext* cx, jsval v, wxString& out)
{
    JSString* const string = JS_ValueToString(cx, v);
    if (string && JS_StringToWide(cx, string, out))
        return true;
    JS_ClearPendingException(cx);
    out.clear();
    return true;
}

bool jsval_to_pCJScriptLink(JSContext* cx, jsval v, CJScriptLink*& out)
{
    if (!JSVAL_IS_OBJECT(v))
        return false;
    out = LinkOf(cx, v);
    return true;
}

bool jsval_to_pCJScriptLinkRoot(JSContext* cx, jsval v, wxObject*& out)
{
    CJScriptLink* link = nullptr;
    if (!jsval_to_pCJScriptLink(cx, v, link))
        return false;
    if (!link && !JSVAL_IS_NULL(v))
        LogNativeObjectGone();
    out = link ? link->GetRootObject() : nullptr;
    return true;
}

bool jsval_to_pwxObject(JSContext* cx, jsval v, wxObject*& out)
{
    out = nullptr;
    if (!JSVAL_IS_OBJECT(v)) {
        wxLogError(wxS("Failed to convert jsval to pwxObject !!"));
        return false;
    }
    wxObject* native = nullptr;
    jsval_to_pCJScriptLinkRoot(cx, v, native);
    if (!native)
        return true;
    // Not wxDynamicCast, which casts before it asks.
    if (!native->IsKindOf(wxCLASSINFO(qxjsPointer)))
        return false;
    out = static_cast<wxObject*>(static_cast<qxjsPointer*>(native)->GetValue());
    return true;
}

bool jsval_to_pJSFunction(JSContext* cx, jsval v, JSFunction*& out)
{
    if (JSVAL_IS_NULL(v)) {
        out = nullptr;
        return true;
    }
    JSFunction* const function = JS_ValueToFunction(cx, v);
    if (!function) {
        JS_ClearPendingException(cx);
        return false;
    }
    out = function;
    return true;
}

bool jsval_to_wxArrayInt(JSContext* cx, jsval v, wxArrayInt& out)
{
    return ReadArray(cx, v, out, [&](jsval element) {
        int number = 0;
        if (!jsval_to_int(cx, element, number))
            return false;
        out.Add(number);
        return true;
    });
}

bool jsval_to_wxArrayString(JSContext* cx, jsval v, wxArrayString& out)
{
    return ReadArray(cx, v, out, [&](jsval element) {
        JSString* const string = JS_ValueToString(cx, element);
        wxString text;
        if (!string || !JS_StringToWide(cx, string, text))
            return false;
        out.Add(text);
        return true;
    });
}

bool jsval_to_wxArraypCJScriptLink(JSContext* cx, jsval v, wxArraypCJScriptLink& out)
{
    if (JSVAL_IS_PRIMITIVE(v) || !JS_IsArrayObject(cx, JSVAL_TO_OBJECT(v)))
        return false;
    const LocalRoots elements(cx);
    std::vector<jsval> objects;
    const bool read = jsval_to_objects(cx, v, objects);
    out = LinksOf(cx, objects);
    return read;
}

bool jsval_to_objects(JSContext* cx, jsval v, std::vector<jsval>& out)
{
    return ReadArray(cx, v, out, [&](jsval element) {
        if (!JSVAL_IS_OBJECT(element))
            return false;
        out.push_back(element);
        return true;
    });
}

wxArraypCJScriptLink LinksOf(JSContext* cx, const std::vector<jsval>& objects)
{
    wxArraypCJScriptLink links;
    links.reserve(objects.size());
    for (const jsval object : objects)
        links.push_back(LinkOf(cx, object));
    return links;
}

jsval jsval_to_jsval(JSContext*, jsval v)
{
    return v;
}

jsval int_to_jsval(JSContext* cx, int value)
{
    jsval result = JSVAL_NULL;
    JS_NewDoubleValue(cx, value, &result);
    return result;
}

jsval double_to_jsval(JSContext* cx, double value)
{
    jsval result = JSVAL_NULL;
    JS_NewDoubleValue(cx, value, &result);
    return result;
}

jsval bool_to_jsval(JSContext*, bool value)
{
    return BOOLEAN_TO_JSVAL(value);
}

jsval wxString_to_jsval(JSContext* cx, const wxString& value)
{
    JSString* const string = JS_NewStringFromWide(cx, value.wx_str(), value.length());
    return string ? STRING_TO_JSVAL(string) : JSVAL_NULL;
}

jsval pCJScriptLink_to_jsval(JSContext*, CJScriptLink* value)
{
    return value ? OBJECT_TO_JSVAL(value->GetJSObject()) : JSVAL_NULL;
}

jsval size_t_to_jsval(JSContext* cx, std::uint32_t value)
{
    return MakeCarrier<qxjsSize_t>(cx, value, L"Failed to convert size_t to jsval !!");
}

jsval pwxObject_to_jsval(JSContext* cx, wxObject* value)
{
    return MakeCarrier<qxjsPointer>(cx, static_cast<void*>(value), L"Failed to convert pwxObject to jsval !!");
}

jsval wxArrayInt_to_jsval(JSContext* cx, wxArrayInt value)
{
    return MakeArray(cx, value.size(), [&](size_t i) { return int_to_jsval(cx, value[i]); });
}

jsval wxArrayString_to_jsval(JSContext* cx, wxArrayString value)
{
    return MakeArray(cx, value.size(), [&](size_t i) { return wxString_to_jsval(cx, value[i]); });
}

jsval wxArraypCJScriptLink_to_jsval(JSContext* cx, wxArraypCJScriptLink value)
{
    return MakeArray(cx, value.size(), [&](size_t i) { return pCJScriptLink_to_jsval(cx, value[i]); });
}
