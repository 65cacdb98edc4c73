#include "fuzz/fuzz_support.h"
#include "preprocessor/plain_expression_detail.h"
#include "script/script.h"
#include "script/script_minimal.h"

namespace
{

/// The engine, the judge of whatever is decided without it.
class Engine
{
public:
    Engine() : m_script(nullptr) { m_script.SetGlobal(m_global.GetJSLink(), wxString()); }

    template <typename Result> void Judge(const wxString& text, const PlainValue& value)
    {
        Result decided{};
        if (!ConvertPlain(value, decided))
            return;
        Result judged{};
        Require(m_script.Evaluate(text, nullptr, judged), "what is decided is a script");
        Require(decided == judged, "the engine agrees");
    }

private:
    qxjsMinimal m_global;
    CJScript m_script;
};

} // namespace

/// An input is an expression. Nothing is run that the evaluator leaves to the engine, so no input runs for ever.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    static auto* const engine = new Engine;
    const wxString text = InputText(data, size);
    const std::optional<PlainValue> value = EvaluatePlain(text);
    if (!value)
        return 0;
    engine->Judge<bool>(text, *value);
    engine->Judge<int>(text, *value);
    engine->Judge<wxString>(text, *value);
    return 0;
}
