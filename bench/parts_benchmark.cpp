// What the parts of preprocessing cost, and how the cost grows: cutting a text into lines, scanning them, replacing
// defines, evaluating conditions, converting texts. Sizes are lines, terms or characters; the fits at the end of each
// group say whether it is linear.
//
//   parts_benchmark [--benchmark_filter=REGEX]
#include "base/text_encoding.h"
#include "base/utf8_detail.h"
#include "base/utf8_text.h"
#include "parser/parser.h"
#include "parser/parser_block.h"
#include "preprocessor/plain_expression_detail.h"
#include "preprocessor/preprocessor.h"
#include "preprocessor/preprocessor_scripts_detail.h"

#include <benchmark/benchmark.h>

#include <wx/init.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace
{

constexpr int64_t FewLines = 1 << 10;
constexpr int64_t ManyLines = 1 << 18;

std::string Repeated(const std::string& part, int64_t count)
{
    std::string text;
    for (int64_t i = 0; i < count; ++i)
        text += part;
    return text;
}

/// A text of the lines `line("0")`, `line("1")` and so on.
template <typename Line> std::string Numbered(int64_t count, Line line)
{
    std::string text;
    for (int64_t i = 0; i < count; ++i)
        text += line(std::to_string(i)) + "\n";
    return text;
}

void Count(benchmark::State& state, size_t bytes)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
    state.SetComplexityN(state.range(0));
}

void Sized(benchmark::internal::Benchmark* benchmark)
{
    benchmark->RangeMultiplier(4)->Range(FewLines, ManyLines)->Complexity(benchmark::oN);
    benchmark->Unit(benchmark::kMicrosecond);
}

/// A parser whose preprocessor knows some defines.
class Bench
{
public:
    Bench()
    {
        m_pp.AddDefine("NAME", "value", wxArrayString());
        wxArrayString names;
        names.Add("a");
        names.Add("b");
        m_pp.AddDefine("CALL", "(#a, #b)", names);
        m_pp.AddDefine("CHOICE", "#(#a?#b:none)", names);
    }

    std::unique_ptr<CParserBlock> Cut(const std::string& text)
    {
        return m_parser.CutLines(*CUtf8Text::FromBytes(text), "bench", nullptr);
    }

    std::unique_ptr<CParserBlock> Preprocess(const CParserBlock& lines, bool& isDone)
    {
        isDone = m_parser.ParseLines(lines) == 0;
        return std::unique_ptr<CParserBlock>(m_parser.GetLastBlock(1));
    }

private:
    CPreprocessor m_pp{nullptr, true};
    CParser m_parser{&m_pp};
};

void Load(benchmark::State& state)
{
    const std::string text = Numbered(state.range(0), [](auto number) { return "value[" + number + "] = 2;"; });
    Bench bench;
    for (auto _ : state) {
        auto block = bench.Cut(text);
        benchmark::DoNotOptimize(block);
    }
    Count(state, text.size());
}
BENCHMARK(Load)->Apply(Sized);

void LoadUnits(benchmark::State& state)
{
    const std::string text = Numbered(state.range(0), [](auto number) { return "value[" + number + "] = 2;"; });
    Bench bench;
    for (auto _ : state) {
        const auto block = bench.Cut(text);
        for (unsigned int slot = 0; slot < block->GetCount(); ++slot)
            benchmark::DoNotOptimize(block->GetUnit(slot));
    }
    Count(state, text.size());
}
BENCHMARK(LoadUnits)->Apply(Sized);

template <typename Line> void Preprocess(benchmark::State& state, Line line)
{
    const std::string text = Numbered(state.range(0), line);
    Bench bench;
    for (auto _ : state) {
        state.PauseTiming();
        const auto lines = bench.Cut(text);
        state.ResumeTiming();
        bool isDone = false;
        auto block = bench.Preprocess(*lines, isDone);
        state.PauseTiming();
        if (!isDone) {
            state.SkipWithError("the text was refused");
            break;
        }
        block.reset();
        state.ResumeTiming();
    }
    Count(state, text.size());
}

void ScanPlain(benchmark::State& state)
{
    Preprocess(state, [](auto number) { return "    value[" + number + "] = first + second;"; });
}
BENCHMARK(ScanPlain)->Apply(Sized);

void ScanComments(benchmark::State& state)
{
    Preprocess(state, [](auto number) { return "a[" + number + "] /* why */ = b; // a note"; });
}
BENCHMARK(ScanComments)->Apply(Sized);

void ScanStrings(benchmark::State& state)
{
    Preprocess(state, [](auto number) { return "text(\"part " + number + "\" \" of it\", 'x');"; });
}
BENCHMARK(ScanStrings)->Apply(Sized);

void ScanSections(benchmark::State& state)
{
    Preprocess(state, [](auto number) { return "#ifdef NAME\na" + number + "\n#else\nb\n#endif"; });
}
BENCHMARK(ScanSections)->Apply(Sized);

void Expand(benchmark::State& state)
{
    Preprocess(state, [](auto number) { return "use " + number + " of #NAME here"; });
}
BENCHMARK(Expand)->Apply(Sized);

void ExpandCall(benchmark::State& state)
{
    Preprocess(state, [](auto number) { return "use #CALL(" + number + ", #NAME) here"; });
}
BENCHMARK(ExpandCall)->Apply(Sized);

void ExpandChoice(benchmark::State& state)
{
    Preprocess(state, [](auto number) { return "use #CHOICE(" + number + " > 10, yes) here"; });
}
BENCHMARK(ExpandChoice)->Apply(Sized);

void ExpandLoop(benchmark::State& state)
{
    const std::string last = std::to_string(state.range(0));
    const std::string text = "#for i 1;" + last + ";1\nrow #i\n#endfor\n";
    Bench bench;
    for (auto _ : state) {
        const auto lines = bench.Cut(text);
        bool isDone = false;
        const auto block = bench.Preprocess(*lines, isDone);
        if (!isDone) {
            state.SkipWithError("the text was refused");
            break;
        }
    }
    Count(state, 0);
}
BENCHMARK(ExpandLoop)->Apply(Sized);

template <typename Term> void EvaluateConditions(benchmark::State& state, Term term)
{
    const CPreprocessorLimits limits;
    CPreprocessorScript script(limits);
    bool result = false;
    int64_t number = 0;
    for (auto _ : state) {
        if (!script.Evaluate(wxString(term(std::to_string(number++ % state.range(0)))), result)) {
            state.SkipWithError("the condition was refused");
            break;
        }
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(state.iterations());
}

/// As most conditions are: decided without the engine.
void EvaluatePlainCondition(benchmark::State& state)
{
    EvaluateConditions(state, [](auto number) { return number + " % 3 == 1 && (true || 'a' < \"b\")"; });
}
BENCHMARK(EvaluatePlainCondition)->Arg(1 << 20);

/// Conditions that come again and again, compiled once.
void EvaluateKnownScript(benchmark::State& state)
{
    EvaluateConditions(state, [](auto number) { return "Math.max(" + number + ", 7) > 7"; });
}
BENCHMARK(EvaluateKnownScript)->Arg(8);

/// Conditions of which no two are the same.
void EvaluateNewScript(benchmark::State& state)
{
    EvaluateConditions(state, [](auto number) { return "Math.max(" + number + ", 7) > 7"; });
}
BENCHMARK(EvaluateNewScript)->Arg(1 << 30);

void EvaluateTerms(benchmark::State& state)
{
    const wxString text = "0" + Repeated(" || 0 > 1", state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(EvaluatePlain(text));
    Count(state, text.length());
}
BENCHMARK(EvaluateTerms)->Apply(Sized);

template <typename Convert> void ConvertText(benchmark::State& state, const std::string& part, Convert convert)
{
    const wxString text = wxString::FromUTF8(Repeated(part, state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(convert(text));
    Count(state, text.length());
}

void ConvertToScript(benchmark::State& state)
{
    ConvertText(state, "a \"word\"\tin it\n",
                [](const wxString& text) { return CPreprocessor::StringToJS(text, true); });
}
BENCHMARK(ConvertToScript)->Apply(Sized);

void ConvertToLiteral(benchmark::State& state)
{
    ConvertText(state, "a \"word\"\tin it\n", CPreprocessor::StringToC);
}
BENCHMARK(ConvertToLiteral)->Apply(Sized);

void ConvertFromLiteral(benchmark::State& state)
{
    ConvertText(state, "a \\\"word\\\"\\tin it\\n", CPreprocessor::StringFromC);
}
BENCHMARK(ConvertFromLiteral)->Apply(Sized);

void ConvertQuotes(benchmark::State& state)
{
    ConvertText(state, "\"one\"  \"two\", ", CPreprocessor::ConcatQuotes);
}
BENCHMARK(ConvertQuotes)->Apply(Sized);

void ConvertEscapes(benchmark::State& state)
{
    ConvertText(state, "one, two; ", [](const wxString& text) {
        return CPreprocessor::UnescapeChar(CPreprocessor::EscapeChar(text, ',', '^'), ',', '^');
    });
}
BENCHMARK(ConvertEscapes)->Apply(Sized);

void ConvertPieces(benchmark::State& state)
{
    ConvertText(state, "one^,two,",
                [](const wxString& text) { return CPreprocessor::SplitEscapeChar(text, ',', true, '^').size(); });
}
BENCHMARK(ConvertPieces)->Apply(Sized);

void ConvertIndent(benchmark::State& state)
{
    ConvertText(state, "a line\r\n", [](const wxString& text) { return CPreprocessor::IndentLines(text, "\t", 2); });
}
BENCHMARK(ConvertIndent)->Apply(Sized);

void ConvertToUtf8(benchmark::State& state)
{
    ConvertText(state, "a word, \u00fcber \u20ac ", ToUtf8);
}
BENCHMARK(ConvertToUtf8)->Apply(Sized);

void ConvertFromUtf8(benchmark::State& state)
{
    const std::string bytes = Repeated("a word, \u00fcber \u20ac ", state.range(0));
    for (auto _ : state) {
        wxString text;
        vcq::detail::AppendUtf8(text, bytes.data(), bytes.size());
        benchmark::DoNotOptimize(text);
    }
    Count(state, bytes.size());
}
BENCHMARK(ConvertFromUtf8)->Apply(Sized);

} // namespace

int main(int argc, char** argv)
{
    const wxInitializer wx;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
