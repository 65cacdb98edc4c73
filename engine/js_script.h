#pragma once

#include "base/api.h"
#include "engine/js_types.h"

/// @file
/// Running script, calling functions, looking at the stack.
///
/// Where a function takes an object to run on: null or the context's global means the global scope. With any other
/// object, names are looked up on it, then on its parent (JS_GetParent), its parent's parent and so on, at last on the
/// global; `var` and `function` declare properties of the object, which also is `this`. Top-level loops are far slower
/// that way than on the global; loops inside functions are not.
///
/// Line numbers start at `line`, so 0 numbers the first line 0. `file` is copied; "local" is a usual one.
///
/// False, or null, means an error that is pending, or has been reported when this was the outermost call (js_error.h).
namespace qxjs
{

///@{
/// Evaluates a text; *rval (may be null) becomes the value of its last statement. Texts that come again are compiled
/// once; this cannot be told from outside. `length` counts UTF-16 units, or wide characters.
VC_QXPARSER_API JSBool JS_EvaluateUCScript(JSContext* cx, JSObject* obj, const jschar* chars, uintN length,
                                           const char* file, uintN line, jsval* rval);
VC_QXPARSER_API JSBool JS_EvaluateWide(JSContext* cx, JSObject* obj, const wchar_t* chars, std::size_t length,
                                       const char* file, uintN line, jsval* rval);
///@}

///@{
/// A compiled script, owned by the caller until JS_DestroyScript, or JS_DestroyContext, which deletes what is left. It
/// runs on the global current at compile time, or on other objects below that global.
VC_QXPARSER_API JSScript* JS_CompileUCScript(JSContext* cx, JSObject* obj, const jschar* chars, std::size_t length,
                                             const char* file, uintN line);
VC_QXPARSER_API JSScript* JS_CompileWide(JSContext* cx, JSObject* obj, const wchar_t* chars, std::size_t length,
                                         const char* file, uintN line);
///@}

/// Runs a compiled script; *rval (may be null) becomes the value of its last statement.
VC_QXPARSER_API JSBool JS_ExecuteScript(JSContext* cx, JSObject* obj, JSScript* script, jsval* rval);
/// Deletes a compiled script; null is fine.
VC_QXPARSER_API void JS_DestroyScript(JSContext* cx, JSScript* script);

///@{
/// Calls a function with `obj` as `this`, the global when null. `argv` may hold any live words; *rval (may be null) is
/// set on success only.
VC_QXPARSER_API JSBool JS_CallFunction(JSContext* cx, JSObject* obj, JSFunction* fun, uintN argc, jsval* argv,
                                       jsval* rval);
VC_QXPARSER_API JSBool JS_CallFunctionValue(JSContext* cx, JSObject* obj, jsval fval, uintN argc, jsval* argv,
                                            jsval* rval);
VC_QXPARSER_API JSBool JS_CallFunctionName(JSContext* cx, JSObject* obj, const char* name, uintN argc, jsval* argv,
                                           jsval* rval);
///@}

/// The function a value is; null and a pending TypeError when it is none.
VC_QXPARSER_API JSFunction* JS_ValueToFunction(JSContext* cx, jsval v);
/// Whether the object can be called.
VC_QXPARSER_API JSBool JS_ObjectIsFunction(JSContext* cx, JSObject* obj);
/// A function and its object are the same thing at the same address.
VC_QXPARSER_API JSObject* JS_GetFunctionObject(JSFunction* fun);
/// In UTF-8; "anonymous" for a function without a name. Valid as long as the thread's engine.
VC_QXPARSER_API const char* JS_GetFunctionName(JSFunction* fun);
/// A function object for a native, bound to no name: for properties the host defines itself. Null after an error.
VC_QXPARSER_API JSFunction* JS_NewFunction(JSContext* cx, JSNative native, uintN nargs, uintN flags, JSObject* parent,
                                           const char* name);
/// True inside a native that script called with `new`.
VC_QXPARSER_API JSBool JS_IsConstructing(JSContext* cx);

///@{
/// Walks the script frames from the innermost outwards: with *iterp null the first call takes a picture of the stack
/// and gives the top frame, each further one the next; null at the end, and at once when no script runs. Native
/// functions have no frame of their own. Frames, their scripts and pcs are valid until the next walk on the context.
VC_QXPARSER_API JSStackFrame* JS_FrameIterator(JSContext* cx, JSStackFrame** iterp);
VC_QXPARSER_API JSScript* JS_GetFrameScript(JSContext* cx, JSStackFrame* fp);
VC_QXPARSER_API jsbytecode* JS_GetFramePC(JSContext* cx, JSStackFrame* fp);
///@}

/// The line `pc` stands on, in the numbering the script was given; with a null `pc` the first line of a
/// compiled script.
VC_QXPARSER_API uintN JS_PCToLineNumber(JSContext* cx, JSScript* script, jsbytecode* pc);
/// The file name the script was given.
VC_QXPARSER_API const char* JS_GetScriptFilename(JSContext* cx, JSScript* script);

} // namespace qxjs
