// Preprocesses one file and shows for every line left where it came from.
#include <vc_qxparser.h>

#include <wx/init.h>

#include <cstdio>

int main(int argc, char** argv)
{
    const wxInitializer wx;
    const wxString name = argc > 1 ? FromSystemName(argv[1]) : wxString();
    wxString text;
    if (!CDir().OpenFile(name, wxFile::read).Read(text, CFile::convDefault))
        return std::fprintf(stderr, "cannot read the file\n"), 2;

    CPreprocessor preprocessor(nullptr, true);
    preprocessor.AddDefine(wxS("product"), wxS("Lamp"), wxArrayString());
    CParser parser(&preprocessor);
    if (parser.Parse(text, name, nullptr, false) != 0) {
        wxString message;
        const CParserUnit* unit = nullptr;
        parser.GetLastError(&message, &unit);
        const wxString place = unit ? unit->GetContext() : name;
        return std::fprintf(stderr, "%s: %s\n", ToUtf8(place).c_str(), ToUtf8(message).c_str()), 1;
    }
    const CParserBlock& block = *parser.GetLastBlock(0);
    for (unsigned int slot = 0; slot < block.GetCount(); ++slot) {
        if (const CParserUnit* unit = block.GetUnit(slot)) // null: a line that was dropped
            std::printf("%s: %s\n", ToUtf8(unit->GetContext()).c_str(), ToUtf8(unit->m_text).c_str());
    }
}
