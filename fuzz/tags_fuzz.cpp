#include "fuzz/fuzz_support.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tags/tag_parser.h"

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace
{

// An input: a line with the begin tag, a blank, the end tag, and perhaps a blank and options (letters); then the text.

struct Input
{
    wxString begin;
    wxString end;
    wxString options;
    wxString text;
};

Input Split(const wxString& bytes)
{
    Input input;
    wxString rest;
    const wxString line = bytes.BeforeFirst('\n', &input.text);
    input.begin = line.BeforeFirst(' ', &rest);
    input.end = rest.BeforeFirst(' ', &input.options);
    return input;
}

/// Cutting a line drops the blanks at the cut.
wxString WithoutBlanks(const wxString& text)
{
    wxString kept;
    for (const wxUniChar character : text) {
        if (character != ' ' && character != '\t' && character != '\n' && character != '\r')
            kept += character;
    }
    return kept;
}

/// The characters of each line, in no order.
using Lines = std::map<unsigned long, std::vector<wxChar>>;

void Collect(const CParserBlock& block, Lines& lines)
{
    unsigned long last = 0;
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        const CParserUnit* const unit = block.GetUnit(slot);
        if (!unit)
            continue;
        Require(unit->m_block == &block, "a unit knows its block");
        Require(unit->m_file.get(), "a unit knows its file");
        Require(unit->m_line >= last, "the units of a block are in the order of the text");
        last = unit->m_line;
        for (const wxUniChar character : WithoutBlanks(unit->m_text))
            lines[unit->m_line].push_back(character);
    }
}

unsigned long FirstLine(const CParserBlock& block)
{
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        if (const CParserUnit* const unit = block.GetUnit(slot))
            return unit->m_line;
    }
    return 0;
}

void CheckTree(const CTagBlock& block, Lines& lines, std::vector<unsigned long>& rewritten)
{
    Collect(block, lines);
    unsigned long last = 0;
    for (size_t i = 0; i < block.GetSubBlockCount(); ++i) {
        const CTagBlock& sub = *block.GetSubBlock(i);
        Require(sub.GetParent() == &block, "a sub-block knows its parent");
        Require(!sub.GetType().empty(), "a sub-block has a type");
        Require(sub.GetBeginHeader() && FirstLine(*sub.GetBeginHeader()) >= last, "sub-blocks are in the text's order");
        Require(!block.IsDoubleTag() || sub.IsDoubleTag(), "only double tags are tags in a double tag");
        last = FirstLine(*sub.GetBeginHeader());
        Collect(*sub.GetBeginHeader(), lines);
        if (sub.GetType() == "IGNORE")
            rewritten.push_back(last);
        CheckTree(sub, lines, rewritten);
        if (!sub.GetEndHeader()) {
            Require(FirstLine(sub) == 0 && sub.GetSubBlockCount() == 0, "a single tag has no content");
            continue;
        }
        Require(FirstLine(*sub.GetEndHeader()) >= last, "a block is closed behind its opening");
        Collect(*sub.GetEndHeader(), lines);
    }
}

void Sort(Lines& lines)
{
    for (auto& line : lines)
        std::sort(line.second.begin(), line.second.end());
}

/// Every character of the text is somewhere in the tree, on its line, once.
void CheckNothingIsLost(Lines before, const CTagBlock& text)
{
    Lines after;
    std::vector<unsigned long> rewritten;
    CheckTree(text, after, rewritten);
    for (const unsigned long line : rewritten) {
        before.erase(line);
        after.erase(line);
    }
    // The "?" before the end of an instruction goes from its last line, which may be a later one.
    if (!rewritten.empty()) {
        for (Lines* lines : {&before, &after}) {
            for (auto& line : *lines)
                line.second.erase(std::remove(line.second.begin(), line.second.end(), L'?'), line.second.end());
        }
    }
    Sort(before);
    Sort(after);
    for (Lines* lines : {&before, &after}) {
        for (auto line = lines->begin(); line != lines->end();)
            line = line->second.empty() ? lines->erase(line) : std::next(line);
    }
    Require(before == after, "no character is lost or doubled");
}

void CheckCopies(const CTagBlock& text)
{
    const std::unique_ptr<CTagBlock> clone(text.Clone());
    CTagBlock assigned(nullptr, nullptr);
    assigned = *clone;
    Require(clone->GetHierarchy(0) == text.GetHierarchy(0), "a copy has the same hierarchy");
    Require(assigned.GetHierarchy(2) == text.GetHierarchy(2), "an assigned block has the same hierarchy");
    wxString content;
    wxString copied;
    text.GetBuffer(content, false);
    assigned.GetBuffer(copied, false);
    Require(content == copied, "a copy has the same content");
}

void Run(const Input& input)
{
    const auto has = [&](wxChar option) { return input.options.find(option) != wxString::npos; };
    CPreprocessor preprocessor(nullptr, true);
    preprocessor.Desactivate();
    CTagParser parser(&preprocessor, input.begin.wc_str(), input.end.wc_str());
    parser.SetNestingLimit(has('n') ? 3 : 50);
    parser.Parse(input.text, "main", nullptr, false);
    auto& text = dynamic_cast<CTagBlock&>(*parser.GetLastBlock(0));
    text.SetDoubleTag(has('d'));
    Lines before;
    Collect(text, before);

    const long result = parser.ParseBlock(&text);
    wxString message;
    const CParserUnit* unit = nullptr;
    parser.GetLastError(&message, &unit);
    Require(result <= 0, "a text without tags is no failure");
    Require((result == 0) == message.empty(), "failures have messages, and only they");
    Require(result == 0 || unit, "a failure has a place");
    Require(text.IsDoubleTag() == has('d'), "the text's kind stays");
    Require(parser.GetLastBlock(0) == &text, "only the text is listed");
    CheckCopies(text);
    if (result != 0)
        return;
    const wxString hierarchy = text.GetHierarchy(0);
    CheckNothingIsLost(before, text);
    Require(parser.ParseBlock(&text) == 0 && text.GetHierarchy(0) == hierarchy, "nothing more is found later");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    Run(Split(InputText(data, size)));
    return 0;
}
