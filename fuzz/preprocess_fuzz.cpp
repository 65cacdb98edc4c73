#include "fuzz/fuzz_support.h"
#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tests/support/temp_directory.h"

namespace
{

// An input: a line of options (letters), the text, and behind a line "=include" the text of the file "a".

struct Input
{
    wxString options;
    wxString text;
    std::string include;
};

Input Split(const std::uint8_t* data, std::size_t size)
{
    std::string bytes(reinterpret_cast<const char*>(data), size);
    Input input;
    const std::size_t mark = bytes.find("\n=include\n");
    if (mark != std::string::npos) {
        input.include = bytes.substr(mark + 10);
        bytes.resize(mark);
    }
    const std::size_t lineEnd = bytes.find('\n');
    input.options = FromSystemName(bytes.substr(0, lineEnd));
    if (lineEnd != std::string::npos)
        input.text = FromSystemName(bytes.substr(lineEnd + 1));
    return input;
}

/// Scripts of the preprocessor reach files by name: a pipe opened for reading waits for ever, and no limit ends that.
bool MayOpenFiles(const std::string& text)
{
    return text.find("File") != std::string::npos || text.find("\\u") != std::string::npos;
}

CPreprocessorLimits SmallLimits()
{
    CPreprocessorLimits limits;
    limits.includeDepth = 2;
    limits.loopNesting = 2;
    limits.openSections = 20;
    limits.argumentNesting = 5;
    limits.loopPasses = 10;
    limits.scriptMilliseconds = 100;
    limits.scriptBytes = 256 << 20;
    return limits;
}

void CheckBlock(const CParserBlock& block)
{
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        const CParserUnit* const unit = block.GetUnit(slot);
        if (!unit)
            continue;
        Require(unit->m_block == &block, "a unit knows its block");
        Require(unit->m_file.get() && !unit->GetFileName().empty(), "a unit knows its file");
        Require(unit->m_line > 0, "a unit knows its line");
    }
}

void Run(const Input& input, CDir dir)
{
    const auto has = [&](wchar_t option) { return input.options.find(option) != wxString::npos; };
    static const wchar_t* removed[] = {L"x", nullptr};
    CPreprocessor preprocessor(nullptr, has(L't'));
    preprocessor.SetPartialMode(has(L'p'));
    preprocessor.SetLimits(SmallLimits());
    if (has(L'd'))
        preprocessor.AddDefine(wxS("x"), wxS("1"), wxArrayString());
    CParser parser(&preprocessor);
    parser.SetDir(dir);
    if (has(L'e'))
        parser.KeepEmptyLines();
    parser.SetRemoveDefines(removed);

    const long result = parser.Parse(input.text, wxS("main"), nullptr, has(L'r'));
    wxString message;
    parser.GetLastErrorStr(&message);
    Require(result == 0 || !message.empty(), "a failure has a message");
    CheckBlock(*parser.GetLastBlock(0));
    if (result != 0)
        return;
    wxString text;
    parser.GetLastBlock(0)->GetBuffer(text, false);
    Require(parser.Parse(wxS("#endif"), wxS("after"), nullptr, false) != 0, "no section is left open");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    static const TempDirectory place;
    const Input input = Split(data, size);
    if (MayOpenFiles(ToUtf8(input.text)) || MayOpenFiles(input.include))
        return 0;
    place.Put("a", input.include);
    Run(input, place.Dir());
    return 0;
}
