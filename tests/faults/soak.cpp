// Goes on and on: each cycle parses a text with an include and a loop, expands a template with script over a document
// and saves a configuration. After a first part, memory and open files must not grow any more.
//
//     soak CYCLES
#include "base/text_encoding.h"
#include "parser/parser.h"
#include "preprocessor/preprocessor.h"
#include "script/script.h"
#include "script/script_minimal.h"
#include "tags/cond_tag_parser.h"
#include "tests/support/temp_directory.h"
#include "xml/xml_config.h"

#include <wx/init.h>

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace
{

/// How far apart the remains of a collection lie varies by about this much.
constexpr long AllowedGrowth = 4L * 1024 * 1024;

long ResidentBytes()
{
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

long OpenFiles()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

class Soak
{
public:
    Soak()
    {
        m_place.Put("part.txt", "#define A #i\npart\n");
        m_off.Desactivate();
        m_script.SetGlobal(m_global.GetJSLink(), wxS("Global"));
        m_document.SetScript(&m_script, wxS("Document"), m_global.GetJSLink());
    }

    /// Without what is garbage, and what the allocator keeps.
    long NeededBytes()
    {
        JS_GC(m_script.GetContext());
        JS_GC(m_script.GetContext());
        ::malloc_trim(0);
        return ResidentBytes();
    }

    bool Cycle(long number) { return Parses(number) && Expands(number) && Saves(number); }

private:
    bool Parses(long number)
    {
        CParser parser;
        CDir dir = m_place.Dir();
        parser.SetDir(dir);
        const wxString text = wxString::Format(wxS("#define N %ld\n#define i 1\n#include <part.txt>\n#undef i\n"
                                                   "#for j 1;3;1\n#if (#j == 2)\n#N #j \"text\"\n#endif\n#endfor\n"),
                                               number);
        wxString result;
        if (parser.Parse(text, wxS("in.txt"), nullptr, true) != 0)
            return false;
        parser.GetLastBlock(0)->GetBuffer(result, false);
        return result.Contains(wxString::Format(wxS("%ld 2 \"text\""), number));
    }

    bool Expands(long number)
    {
        CCondTagParser parser(&m_off);
        const wxString text = wxS("<%repeat filter=\"a\"%>\n[%v%] [%(GetProp('v') * 2)%]\n<%/repeat%>\n");
        wxString result;
        return m_document.SetContent(wxString::Format(wxS("<r><a v='%ld'/><a v='2'/></r>"), number)) &&
               parser.Parse(text, wxS("t"), nullptr, false) == 0 && parser.ParseBlock(parser.GetLastBlock(0)) == 0 &&
               parser.Process(m_document.GetRawRoot(), result, &m_script) &&
               result.Contains(wxString::Format(wxS("%ld %ld"), number, 2 * number));
    }

    bool Saves(long number)
    {
        CXmlConfig config(&m_script, wxS("Config"), m_global.GetJSLink(), m_place.Dir(), wxS("cfg.xml"), true);
        config.ObjectRegisterNamedNoLoad(m_global.GetJSLink(), wxS("o"), wxString());
        return config.UpdateFile([&](CXmlConfig& changed) {
            changed.GetSectionNode(wxS("cycle"), true)->AddOrChangeProp(wxS("n"), number);
            return true;
        });
    }

    TempDirectory m_place{PlaceInMemory()};
    qxjsMinimal m_global;
    CJScript m_script{nullptr};
    CXmlDocument m_document;
    CPreprocessor m_off{nullptr, true};
};

int Run(long cycles)
{
    Soak soak;
    long memory = 0;
    long files = 0;
    const long first = cycles / 5;
    for (long i = 0; i < cycles; ++i) {
        if (!soak.Cycle(i))
            return std::fprintf(stderr, "cycle %ld failed\n", i), 1;
        if (i == first) {
            memory = soak.NeededBytes();
            files = OpenFiles();
        }
    }
    const long growth = soak.NeededBytes() - memory;
    const long left = OpenFiles() - files;
    std::printf("%ld cycles; after the first %ld: %ld KiB of %ld more, %ld files more\n", cycles, first, growth / 1024,
                memory / 1024, left);
    return growth <= AllowedGrowth && left == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const wxInitializer wx;
    const long cycles = argc > 1 ? std::atol(argv[1]) : 0;
    if (cycles < 10)
        return std::fprintf(stderr, "usage: soak CYCLES\n"), 2;
    return Run(cycles);
}
