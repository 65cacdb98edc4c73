#pragma once

#include "base/api.h"
#include "engine/js_types.h"

/// @file
/// Errors: exceptions while script runs, reports when it has stopped.
///
/// A call that fails inside a native of the same context leaves its exception pending: the native returns JS_FALSE to
/// pass it on to the script, or clears it. The outermost call on a context instead hands the exception to the
/// context's reporter, once, and clears it. A script stopped by a limit or an interrupt (js_runtime.h), or by a native
/// that failed without an exception, cannot catch that; limits are reported, the silent native is not.
namespace qxjs
{

/// A flag of JSErrorReport: nothing special, an error that stopped something.
constexpr uintN JSREPORT_ERROR = 0x0;
/// A flag of JSErrorReport: a warning; nothing was stopped.
constexpr uintN JSREPORT_WARNING = 0x1;
/// A flag of JSErrorReport: the error is an exception that script did not catch.
constexpr uintN JSREPORT_EXCEPTION = 0x2;

/// What is known of an error. All of it, pointers included, is valid only during the reporter's call, or as
/// JS_ErrorFromException says.
struct JSErrorReport
{
    const char* filename;     ///< as given to the evaluation; null when unknown
    uintN lineno;             ///< in the numbering given to the evaluation
    const char* linebuf;      ///< the source line as Latin-1 with '?' for the rest; only for syntax errors, else null
    const char* tokenptr;     ///< where in linebuf the error is; null with it, so that the difference is 0
    const jschar* uclinebuf;  ///< the source line
    const jschar* uctokenptr; ///< where in uclinebuf the error is
    uintN flags;       ///< JSREPORT_EXCEPTION for exceptions; 0 for syntax errors found before anything ran, and limits
    uintN errorNumber; ///< the engine's number; 0 for errors that script made itself
    const jschar* ucmessage;     ///< the message without the error's type, as in "foo is not defined"
    const jschar** messageArgs;  ///< always null
    const wchar_t* widemessage;  ///< the whole message: the reporter's `message` without loss
    const wchar_t* widelinebuf;  ///< uclinebuf in wide characters; null with it
    std::size_t widetokenoffset; ///< the offset of the error in widelinebuf; 0 without one
};

/// Hears of errors. `message` is the whole message as Latin-1 with '?' for the rest, as in "ReferenceError: foo is not
/// defined"; syntax errors found before anything ran come without their "SyntaxError: ". Calls made by the reporter are
/// nested ones.
using JSErrorReporter = void (*)(JSContext* cx, const char* message, JSErrorReport* report);

/// Sets the function that hears of the errors of outermost calls on the context, and returns the previous one; null, as
/// at first, for none: errors are then dropped.
VC_QXPARSER_API JSErrorReporter JS_SetErrorReporter(JSContext* cx, JSErrorReporter reporter);

///@{
/// Called at the end of an outermost call, once for each promise that was rejected and that nothing handles, with the
/// message an uncaught exception would have. The call itself does not fail for it. Returns the previous hook; null, as
/// at first, for none.
using JSRejectionHook = void (*)(JSContext* cx, const wchar_t* message);
VC_QXPARSER_API JSRejectionHook JS_SetRejectionHook(JSContext* cx, JSRejectionHook hook);
///@}

///@{
/// Inside a native: throws an Error with this message. With no script running: calls the reporter. The text is UTF-8.
VC_QXPARSER_API void JS_ReportError(JSContext* cx, const char* format, ...) __attribute__((format(printf, 2, 3)));
VC_QXPARSER_API void JS_ReportErrorWide(JSContext* cx, const wchar_t* message, std::size_t length);
VC_QXPARSER_API void JS_ReportOutOfMemory(JSContext* cx);
///@}

///@{
/// The exception on its way, if there is one; it stays pending.
VC_QXPARSER_API JSBool JS_IsExceptionPending(JSContext* cx);
VC_QXPARSER_API JSBool JS_GetPendingException(JSContext* cx, jsval* vp);
///@}

/// Any value can be thrown. Set with no script running, it stays until the next evaluation or call drops it.
VC_QXPARSER_API void JS_SetPendingException(JSContext* cx, jsval v);
/// Drops the exception on its way; nothing happens when there is none.
VC_QXPARSER_API void JS_ClearPendingException(JSContext* cx);

/// The report an Error object carries, valid until the next call of this function on the context; null for other
/// values. Flags are JSREPORT_EXCEPTION; widemessage has the error's type in front.
VC_QXPARSER_API JSErrorReport* JS_ErrorFromException(JSContext* cx, jsval v);

} // namespace qxjs
