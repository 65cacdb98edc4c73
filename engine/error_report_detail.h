#pragma once

#include <string>

#include "engine/installed_engine_detail.h"
#include "engine/js_error.h"

namespace qxjs
{

// A report with everything it points to.
struct ReportStorage
{
    JSErrorReport report{};
    std::string filename;
    std::string message;
    std::wstring wide_message;
    std::u16string uc_message;
    std::string line;
    std::u16string uc_line;
    std::wstring wide_line;
};

enum class ReportStyle
{
    Exception,
    Parser // found by the parser with no script running: no type in front, no exception flag
};

// Hands the pending exception to the context's reporter and clears it.
void ReportPending(JSContext& cx, ::JSContext* engine, ReportStyle style);
// The message an uncaught exception has.
std::wstring DescribeException(::JSContext* engine, JS::HandleValue exception);
// Hands a plain message to the context's reporter.
void ReportMessage(JSContext& cx, std::u16string_view text, const char* file, unsigned line);
// Lets the throw hook see the pending exception.
void CallThrowHook(JSContext& cx, ::JSContext* engine);

} // namespace qxjs
