#pragma once

#include "script/script.h"
#include "script/script_minimal.h"
#include "tags/cond_tag_parser.h"
#include "tests/support/log_capture.h"
#include "tests/support/preprocess_bench.h"
#include "xml/xml_document.h"

#include <gtest/gtest.h>

#include <string>

/// A template engine that takes its templates as they are, and a document with script.
class CondBench
{
public:
    CondBench()
    {
        pp.Desactivate();
        script.SetGlobal(global.GetJSLink(), "Global");
        document.SetScript(&script, "Document", global.GetJSLink());
    }

    /// Reads a template in the place of the one before; fails the test when it is none.
    void Read(const wxString& text)
    {
        parser.Clean();
        parser.Parse(text, "main.tpl", nullptr, false);
        const long result = parser.ParseBlock(parser.GetLastBlock(0));
        ASSERT_EQ(0, result) << LastFailure(parser, result);
    }

    /// What a template makes of a document, "|" for each line feed; "false: MESSAGE" after a failure.
    std::string Expand(const wxString& text, const wxString& xml = "<r/>")
    {
        Read(text);
        EXPECT_TRUE(document.SetContent(xml));
        return Process();
    }

    std::string Process()
    {
        wxString out;
        if (!parser.Process(document.GetRawRoot(), out, &script))
            return "false" + LastFailure(parser, 0).substr(1);
        out.Replace("\n", "|");
        return out.utf8_string();
    }

    /// What a text makes of the root element, as the content of a template.
    std::string Line(const wxString& text, const wxString& xml = "<r/>")
    {
        const std::string out = Expand("<%keep%>\n" + text + "\n<%/keep%>\n", xml);
        return out.substr(0, out.find('|'));
    }

    std::string Errors() const
    {
        std::string errors;
        for (const wxString& error : log.Errors())
            errors += (errors.empty() ? "" : "; ") + error.utf8_string();
        return errors;
    }

    LogCapture log;
    CPreprocessor pp{nullptr, true};
    qxjsMinimal global;
    CJScript script{nullptr};
    CXmlDocument document;
    CCondTagParser parser{&pp};
};

class CondTest : public ::testing::Test, protected CondBench
{};

/// A failure of Process, as Expand shows it.
inline std::string CondFailure(const std::string& message)
{
    return "false, no unit: " + message;
}
