#include "script/native_function.h"

#include "script/script.h"

namespace script_detail
{

namespace
{

wxString RunningFunction(JSContext* cx, const jsval* argv)
{
    JSFunction* const function = JS_ValueToFunction(cx, JS_ARGV_CALLEE(argv));
    return function ? wxString(JS_GetFunctionName(function), wxConvUTF8) : wxString();
}

} // namespace

JSBool FailCount(JSContext* cx, const jsval* argv, uintN count, unsigned int expected)
{
    CJScriptLinkClass::DeclareError(cx, wxString::Format(wxS("Bad argument count for function '%s' (%d instead of %d)"),
                                                         RunningFunction(cx, argv), static_cast<int>(count),
                                                         static_cast<int>(expected)));
    return JS_FALSE;
}

JSBool FailWithoutObject(JSContext* cx, const jsval* argv)
{
    CJScript::NoteSilentFailure(cx, RunningFunction(cx, argv));
    return JS_FALSE;
}

JSBool FailArgument(JSContext* cx, unsigned int position, const wchar_t* type)
{
    CJScriptLinkClass::DeclareError(
        cx, wxString::Format(wxS("Argument %d: can not convert to %s"), static_cast<int>(position), type));
    return JS_FALSE;
}

JSBool FailClass(JSContext* cx, const CJScriptLinkClass& expected)
{
    CJScriptLinkClass::DeclareError(cx, wxString::Format(wxS("Object is not of class '%s'"), expected.GetMap()->name));
    return JS_FALSE;
}

bool AttachToScript(JSContext* cx, JSObject* object, CJScriptLink* link, std::size_t bytes, jsval* rval)
{
    const bool attached = JS_IsConstructing(cx) ? link->AttachObjectDynamic(cx, object) : link->CreateObjectDynamic(cx);
    if (!attached)
        return false;
    link->AnnounceMemory(bytes);
    *rval = OBJECT_TO_JSVAL(link->GetJSObject());
    return true;
}

} // namespace script_detail
