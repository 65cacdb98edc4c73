#pragma once

#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

/// Shows texts in failure messages; GoogleTest finds it by its name.
inline void PrintTo(const wxString& text, std::ostream* out)
{
    *out << '"' << text.utf8_string() << '"';
}

/// What Run and its kin give for a failure: the result, the place it concerns, the message.
inline std::string Failure(const std::string& message, unsigned long line, const std::string& file = "main.txt",
                           long result = -1)
{
    return std::to_string(result) + ", file \"" + file + "\" line " + std::to_string(line) + ": " + message;
}

/// As above, for a failure that concerns no unit.
inline std::string FailureWithoutUnit(const std::string& message, long result = -1)
{
    return std::to_string(result) + ", no unit: " + message;
}

/// The last error of a parser with the result that came with it, in the form of Failure.
inline std::string LastFailure(const CParser& parser, long result)
{
    wxString message;
    const CParserUnit* unit = nullptr;
    parser.GetLastError(&message, &unit);
    return std::to_string(result) + ", " + (unit ? unit->GetContext().utf8_string() : "no unit") + ": " +
           message.utf8_string();
}

/// The text of a block, as GetBuffer gives it.
inline std::string TextOf(const CParserBlock& block)
{
    wxString text;
    block.GetBuffer(text, false);
    return text.utf8_string();
}

/// The units of a block, holes left out, as "NAME:LINE:TEXT".
inline std::vector<std::string> UnitsOf(const CParserBlock& block)
{
    std::vector<std::string> units;
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot)
        if (const CParserUnit* const unit = block.GetUnit(slot))
            units.push_back(unit->GetFileName().utf8_string() + ":" + std::to_string(unit->m_line) + ":" +
                            unit->m_text.utf8_string());
    return units;
}

/// A parser with a preprocessor given to it, for texts named "main.txt". What is logged is collected, not shown.
template <class Preprocessor = CPreprocessor> class PreprocessBench
{
public:
    Preprocessor pp{nullptr, true};
    CParser parser{&pp};
    LogCapture log;

    /// Preprocesses a text. On success its output, one "\n" behind each line; else see Failure. A message that was
    /// recorded without failing makes a Failure with the result 0.
    std::string Run(const wxString& text, const wxString& name = "main.txt")
    {
        parser.ClearError();
        const long result = parser.Parse(text, name, nullptr, false);
        return Outcome(result);
    }

    /// Run with all that the host defines before: texts of the form "NAME=VALUE".
    std::string RunWith(const std::vector<std::string>& defines, const wxString& text)
    {
        for (const std::string& define : defines)
            Define(define);
        return Run(text);
    }

    void Define(const wxString& define)
    {
        pp.AddDefine(define.BeforeFirst('='), define.AfterFirst('='), wxArrayString());
    }

    /// Run in partial mode.
    std::string RunPartial(const wxString& text)
    {
        pp.SetPartialMode(true);
        return Run(text);
    }

    /// Preprocesses a block that was made by hand.
    std::string Process(CParserBlock& block)
    {
        parser.ClearError();
        pp.SetParser(&parser);
        const long result = pp.PreprocessBlock(&block);
        wxString message;
        parser.GetLastErrorStr(&message);
        return result == 0 && message.empty() ? TextOf(block) : LastFailure(parser, result);
    }

    /// The units of the last run, as "NAME:LINE:TEXT".
    std::vector<std::string> Units() { return UnitsOf(*parser.GetLastBlock(0)); }

    /// The last run's block as it stands, after a failure too.
    std::string Text() { return TextOf(*parser.GetLastBlock(0)); }

    wxString Message() const
    {
        wxString message;
        parser.GetLastErrorStr(&message);
        return message;
    }

    /// The define table, line by line.
    std::set<std::string> Defines() const
    {
        wxString text;
        pp.GetDefines(text);
        std::set<std::string> lines;
        while (!text.empty()) {
            lines.insert(text.BeforeFirst('\n').utf8_string());
            text = text.AfterFirst('\n');
        }
        return lines;
    }

private:
    std::string Outcome(long result) { return result == 0 && Message().empty() ? Text() : LastFailure(parser, result); }
};

/// A GoogleTest fixture around a bench.
template <class Preprocessor = CPreprocessor>
class PreprocessTest : public ::testing::Test, protected PreprocessBench<Preprocessor>
{
protected:
    using PreprocessBench<Preprocessor>::Run;
};
