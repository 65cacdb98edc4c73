// Reads programs, with a zero byte between them, and writes what the preprocessor makes of each, with a zero byte
// behind it: every warning, every unit with its file, line and text, and the defines, sorted; or "error", the context
// of its unit and the message, with tabs between. A line "partial" stands first when partial mode has kept something.
//
//   directives_driver FOLDER whole|partial|untrimmed      FOLDER has the files that programs include
#include "base/dir.h"
#include "base/text_encoding.h"
#include "parser/parser.h"
#include "parser/parser_block.h"
#include "parser/parser_file.h"
#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"

#include <wx/init.h>
#include <wx/log.h>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace
{

/// Writes down the warnings.
class CNotingPreprocessor : public CPreprocessor
{
public:
    using CPreprocessor::CPreprocessor;

    std::ostringstream m_warnings;

private:
    void WarningGiven(const wxString& text, const CParserUnit& unit) override
    {
        m_warnings << "warning\t" << ToUtf8(unit.GetContext()) << "\t" << ToUtf8(text) << "\n";
    }
};

void WriteDefines(std::ostream& out, const CPreprocessor& pp)
{
    wxString list;
    pp.GetDefines(list);
    std::istringstream source(ToUtf8(list));
    std::vector<std::string> lines;
    for (std::string line; std::getline(source, line);)
        lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    for (const std::string& line : lines)
        out << line << "\n";
}

std::string ResultOf(const std::string& program, CDir& folder, const std::string& mode)
{
    CNotingPreprocessor pp(nullptr, mode != "untrimmed");
    pp.SetDir(folder);
    pp.SetPartialMode(mode == "partial");
    CParser parser(&pp);
    if (mode == "untrimmed")
        parser.KeepEmptyLines();
    if (parser.Parse(wxString::FromUTF8(program), wxS("p"), nullptr, false) != 0) {
        wxString message;
        const CParserUnit* unit = nullptr;
        parser.GetLastError(&message, &unit);
        return "error\t" + (unit ? ToUtf8(unit->GetContext()) : "") + "\t" + ToUtf8(message);
    }
    std::ostringstream text;
    text << (pp.WasPartial() ? "partial\n" : "") << pp.m_warnings.str();
    const CParserBlock* const block = parser.GetLastBlock(0);
    for (unsigned int i = 0; i < block->GetCount(); ++i)
        if (const CParserUnit* const unit = block->GetUnit(i))
            text << ToUtf8(unit->GetFileName()) << ":" << unit->m_line << ":" << ToUtf8(unit->m_text) << "\n";
    WriteDefines(text, pp);
    return text.str();
}

} // namespace

int main(int argc, char** argv)
{
    const wxInitializer wx;
    if (argc != 3)
        return 2;
    CDir folder = CDir::GetRoot(wxString::FromUTF8(argv[1]));
    const wxLogNull quiet;
    std::ios::sync_with_stdio(false);
    const std::string programs(std::istreambuf_iterator<char>(std::cin), {});
    for (std::size_t at = 0; at <= programs.size();) {
        const std::size_t end = std::min(programs.find('\0', at), programs.size());
        std::cout << ResultOf(programs.substr(at, end - at), folder, argv[2]) << '\0';
        at = end + 1;
    }
    return std::cout.flush() ? 0 : 1;
}
