#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/jsapi.h"

// A context with a global, and everything its reporter and the misuse hook hear.
class EngineTest : public ::testing::Test
{
public:
    struct Report
    {
        std::string message;
        std::string file;
        unsigned line;
        unsigned flags;
        std::u16string uc_message;
        std::wstring wide_message;
        std::string source_line;
        std::ptrdiff_t column;
        unsigned number;
    };

    static void Note(JSContext* cx, const char* message, JSErrorReport* report);

protected:
    EngineTest();
    ~EngineTest() override;

    // A further context with its own reports, destroyed by the caller.
    JSContext* NewContext();

    bool Run(const char* text, jsval* rval = nullptr, JSObject* obj = nullptr, unsigned line = 0);
    // The value of the text as script's String() shows it; "!" and the last report's message when it fails.
    std::string Show(const char* text, JSObject* obj = nullptr);
    std::string ShowWord(jsval v);

    JSRuntime* rt;
    JSContext* cx;
    std::vector<Report> reports;
};

// What the misuse hook has heard, emptied by reading.
std::vector<std::string> TakeMisuse();
