#include "fuzz/fuzz_support.h"
#include "parser/parser.h"
#include "preprocessor/preprocessor.h"

#include <wx/arrstr.h>

#include <algorithm>
#include <map>
#include <string>

namespace
{

constexpr const wchar_t* Names[] = {L"a", L"b", L"ab", L"_1", L"defined"};

/// The table as the rules describe it, without any of its ways to be fast.
using Model = std::map<wxString, wxString>;

wxString NameOf(wxChar selector)
{
    return Names[static_cast<size_t>(selector) % WXSIZEOF(Names)];
}

/// The lines of a listing, sorted.
wxArrayString Listing(const CPreprocessor& preprocessor)
{
    wxString text;
    preprocessor.GetDefines(text);
    wxArrayString lines = wxSplit(text, wxS('\n'), wxS('\0'));
    lines.Sort();
    return lines;
}

/// A line of an input: a letter for what to do, one for the name, and the value.
void Apply(const wxString& line, CPreprocessor& preprocessor, CParser& parser, Model& model)
{
    if (line.length() < 2)
        return;
    const wxString name = NameOf(line[1]);
    const wxString value = line.substr(2);
    parser.ClearError();
    wxString message;
    if (line[0] == wxS('-')) {
        preprocessor.RemoveDefine(name);
        model.erase(name);
        return;
    }
    const auto [entry, isNew] = model.emplace(name, value);
    preprocessor.AddDefine(name, value, wxArrayString());
    parser.GetLastErrorStr(&message);
    Require(message.empty() == (isNew || entry->second == value), "only another value is an error");
}

void CheckTable(const CPreprocessor& preprocessor, const Model& model)
{
    for (const wchar_t* name : Names)
        Require(preprocessor.HasDefine(name) == (model.count(name) == 1), "the table has what was added");
    wxString expected;
    for (const auto& [name, value] : model)
        expected << wxS("#define ") << name << wxS(" ") << value << wxS("\n");
    wxArrayString lines = wxSplit(expected, wxS('\n'), wxS('\0'));
    lines.Sort();
    Require(Listing(preprocessor) == lines, "the listing has what was added");
}

void CheckCopy(CPreprocessor& preprocessor)
{
    CPreprocessor copy(nullptr, true);
    const CParser parser(&copy);
    preprocessor.CopyDefineTo(&copy);
    Require(Listing(copy) == Listing(preprocessor), "a copied table lists the same");
}

/// Taking definitions out of a text keeps its lines, is done after one time, and leaves none.
void CheckRemoval(const wxString& text)
{
    const wchar_t* names[] = {L"a", L"b", nullptr};
    const wxString changed = [&] {
        wxString once = text;
        CPreprocessor::BufferInPlaceRemoveDefines(once, names);
        return once;
    }();
    Require(std::count(changed.begin(), changed.end(), '\n') == std::count(text.begin(), text.end(), '\n'),
            "no line end goes");
    Require(changed.length() <= text.length(), "nothing is added");
    wxString twice = changed;
    CPreprocessor::BufferInPlaceRemoveDefines(twice, names);
    Require(twice == changed, "once is enough");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    const wxString text = InputText(data, size);
    CPreprocessor preprocessor(nullptr, true);
    CParser parser(&preprocessor);
    preprocessor.SetParser(&parser);
    Model model;
    for (const wxString& line : wxSplit(text, wxS('\n'), wxS('\0')))
        Apply(line, preprocessor, parser, model);
    CheckTable(preprocessor, model);
    CheckCopy(preprocessor);
    CheckRemoval(text);
    return 0;
}
