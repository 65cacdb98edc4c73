#include "engine/error_report_detail.h"

#include <cstdarg>
#include <cstdio>

#include "engine/entry_detail.h"
#include "engine/text_detail.h"
#include "engine/words_detail.h"

namespace qxjs
{

namespace
{

void FillLine(ReportStorage& storage, const ::JSErrorReport& from)
{
    if (!from.linebuf())
        return;
    storage.uc_line.assign(from.linebuf(), from.linebufLength());
    storage.line = ToLatin1(storage.uc_line);
    storage.wide_line = ToWide(storage.uc_line);
    const std::size_t offset = std::min(from.tokenOffset(), storage.uc_line.size());
    JSErrorReport& report = storage.report;
    report.uclinebuf = storage.uc_line.c_str();
    report.uctokenptr = report.uclinebuf + offset;
    report.linebuf = storage.line.c_str();
    report.tokenptr = report.linebuf + offset;
    report.widelinebuf = storage.wide_line.c_str();
    report.widetokenoffset = ToWide({report.uclinebuf, offset}).size();
}

void FillMessage(ReportStorage& storage, std::u16string_view whole, std::u16string_view without_type)
{
    storage.message = ToLatin1(whole);
    storage.wide_message = ToWide(whole);
    storage.uc_message = without_type;
    storage.report.ucmessage = storage.uc_message.c_str();
    storage.report.widemessage = storage.wide_message.c_str();
}

void FillPlace(ReportStorage& storage, const char* file, unsigned line)
{
    if (file) {
        storage.filename = file;
        storage.report.filename = storage.filename.c_str();
    }
    storage.report.lineno = line;
}

bool Fill(::JSContext* engine, ReportStorage& storage, const JS::ExceptionStack& exception, ReportStyle style)
{
    JS::ErrorReportBuilder builder(engine);
    if (!builder.init(engine, exception, JS::ErrorReportBuilder::WithSideEffects)) {
        ::JS_ClearPendingException(engine);
        return false;
    }
    const ::JSErrorReport& from = *builder.report();
    const bool bare = style == ReportStyle::Parser && from.exnType == JSEXN_SYNTAXERR;
    const std::u16string text = Utf8ToUtf16(from.message() ? from.message().c_str() : "");
    const std::u16string whole = bare ? text : Utf8ToUtf16(builder.toStringResult().c_str());
    FillPlace(storage, from.filename, from.lineno);
    FillMessage(storage, whole, text);
    FillLine(storage, from);
    storage.report.errorNumber = from.errorNumber;
    if (from.isWarning())
        storage.report.flags = JSREPORT_WARNING;
    else
        storage.report.flags = bare ? JSREPORT_ERROR : JSREPORT_EXCEPTION;
    return true;
}

void CallReporter(JSContext& cx, ReportStorage& storage)
{
    if (cx.reporter)
        cx.reporter(&cx, storage.message.c_str(), &storage.report);
}

void Throw(JSContext* cx, const std::u16string& text)
{
    Entry entry(cx, "JS_ReportError");
    if (!entry)
        return;
    // With no script running there is nobody to catch it.
    if (entry.IsOutermostOnContext())
        ReportMessage(*cx, text, nullptr, 0);
    else
        ::JS_ReportErrorUTF8(entry.Engine(), "%s", ToUtf8(text).c_str());
}

} // namespace

void ReportPending(JSContext& cx, ::JSContext* engine, ReportStyle style)
{
    JS::ExceptionStack exception(engine);
    if (!JS::StealPendingExceptionStack(engine, &exception)) {
        ::JS_ClearPendingException(engine);
        return;
    }
    ReportStorage storage;
    if (!Fill(engine, storage, exception, style))
        FillMessage(storage, u"uncaught exception", u"uncaught exception");
    if (cx.stopped.what == Stop::None) // while describing the exception; else that is reported
        CallReporter(cx, storage);
    ::JS_ClearPendingException(engine);
}

std::wstring DescribeException(::JSContext* engine, JS::HandleValue exception)
{
    ReportStorage storage;
    const JS::ExceptionStack stack(engine, exception, nullptr);
    return Fill(engine, storage, stack, ReportStyle::Exception) ? storage.wide_message : L"uncaught exception";
}

void ReportMessage(JSContext& cx, std::u16string_view text, const char* file, unsigned line)
{
    ReportStorage storage;
    FillPlace(storage, file, line);
    FillMessage(storage, text, text);
    CallReporter(cx, storage);
}

void CallThrowHook(JSContext& cx, ::JSContext* engine)
{
    JSRuntime* rt = cx.runtime.load(std::memory_order_relaxed);
    if (!rt || !rt->throw_hook)
        return;
    JS::RootedValue exception(engine);
    if (!::JS_GetPendingException(engine, &exception))
        return;
    jsval word = ToWord(*t_state, exception);
    rt->throw_hook(&cx, nullptr, nullptr, &word, rt->throw_closure);
}

void JS_ReportError(JSContext* cx, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) + 1 : 1, '\0');
    if (length > 0)
        std::vsnprintf(text.data(), text.size(), format, again);
    text.pop_back();
    va_end(again);
    va_end(arguments);
    Throw(cx, Utf8ToUtf16(text));
}

void JS_ReportErrorWide(JSContext* cx, const wchar_t* message, std::size_t length)
{
    Throw(cx, ToUtf16({message, length}));
}

void JS_ReportOutOfMemory(JSContext* cx)
{
    Entry entry(cx, __func__);
    if (!entry)
        return;
    ::JS_ReportOutOfMemory(entry.Engine());
    entry.Fail();
}

JSBool JS_IsExceptionPending(JSContext* cx)
{
    ThreadState* t = Usable(cx, __func__);
    return t && ::JS_IsExceptionPending(t->engine);
}

JSBool JS_GetPendingException(JSContext* cx, jsval* vp)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t || !::JS_IsExceptionPending(t->engine))
        return JS_FALSE;
    RealmScope realm(*t, *cx);
    JS::RootedValue exception(t->engine);
    if (!::JS_GetPendingException(t->engine, &exception))
        return JS_FALSE;
    *vp = ToWord(*t, exception);
    return JS_TRUE;
}

void JS_SetPendingException(JSContext* cx, jsval v)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t)
        return;
    RealmScope realm(*t, *cx);
    JS::RootedValue exception(t->engine, ToEngine(v));
    ::JS_SetPendingException(t->engine, exception);
}

void JS_ClearPendingException(JSContext* cx)
{
    if (ThreadState* t = Usable(cx, __func__))
        ::JS_ClearPendingException(t->engine);
}

JSErrorReport* JS_ErrorFromException(JSContext* cx, jsval v)
{
    ThreadState* t = Usable(cx, __func__);
    if (!t || JSVAL_IS_PRIMITIVE(v))
        return nullptr;
    RealmScope realm(*t, *cx);
    JS::RootedObject obj(t->engine, Inner(JSVAL_TO_OBJECT(v)));
    if (!::JS_ErrorFromException(t->engine, obj))
        return nullptr;
    std::optional<JS::AutoSaveExceptionState> pending;
    if (::JS_IsExceptionPending(t->engine))
        pending.emplace(t->engine);
    JS::RootedValue value(t->engine, JS::ObjectValue(*obj));
    JS::ExceptionStack exception(t->engine, value, nullptr);
    auto storage = std::make_unique<ReportStorage>();
    if (!Fill(t->engine, *storage, exception, ReportStyle::Exception))
        return nullptr;
    cx->exception_report = std::move(storage);
    return &cx->exception_report->report;
}

} // namespace qxjs
