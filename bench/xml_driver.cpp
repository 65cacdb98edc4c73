// What loading and saving an XML document costs, with wxXmlDocument's own functions and with ours.
//
//   xml_driver plain|fast INPUT [OUTPUT]     CPU seconds of reading, writing and deleting, peak memory after each
//
// `plain` is wxXmlDocument through buffered streams, `fast` is ours. One document a process, so that the peaks are its
// own. Without OUTPUT the document is not written.
#include "xml/tree_links_detail.h"
#include "xml/tree_reader_detail.h"
#include "xml/tree_writer_detail.h"

#include <sys/resource.h>

#include <cstdio>
#include <string>

#include <wx/init.h>
#include <wx/wfstream.h>

namespace
{

constexpr int indentation = 2;
constexpr unsigned int maxDepth = 1000;
constexpr size_t bufferSize = 1 << 16;

double Seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

rusage Usage()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage;
}

/// Prints the CPU time and the peak of memory when it ends.
class Phase
{
public:
    explicit Phase(const char* name) : m_name(name), m_before(Usage()) {}
    ~Phase()
    {
        const rusage after = Usage();
        std::printf("%-7s %7.3f s user %7.3f s system %7ld MiB peak\n", m_name,
                    Seconds(after.ru_utime) - Seconds(m_before.ru_utime),
                    Seconds(after.ru_stime) - Seconds(m_before.ru_stime), after.ru_maxrss / 1024);
    }
    Phase(const Phase&) = delete;
    Phase& operator=(const Phase&) = delete;

private:
    const char* m_name;
    rusage m_before;
};

bool Read(wxXmlDocument& document, const wxString& name, bool fast)
{
    const Phase phase("read");
    wxFFileInputStream file(name);
    wxBufferedInputStream buffered(file, bufferSize);
    xml_detail::ReadProblem problem;
    return fast ? xml_detail::ReadTree(file, document, wxString(), wxXMLDOC_NONE, maxDepth, problem)
                : document.Load(buffered);
}

bool Write(const wxXmlDocument& document, const wxString& name, bool fast)
{
    const Phase phase("write");
    wxFFileOutputStream file(name);
    wxBufferedOutputStream buffered(file, bufferSize);
    return fast ? xml_detail::WriteTree(document, file, indentation, maxDepth)
                : document.Save(buffered, indentation) && buffered.Close();
}

} // namespace

int main(int argc, char** argv)
{
    const wxInitializer initializer;
    if (argc < 3)
        return 2;
    const bool fast = std::string(argv[1]) == "fast";
    wxXmlDocument document;
    if (!Read(document, wxString::FromUTF8(argv[2]), fast))
        return 1;
    if (argc > 3 && !Write(document, wxString::FromUTF8(argv[3]), fast))
        return 1;
    const Phase phase("delete");
    xml_detail::DeleteTree(document.DetachDocumentNode(), [](const wxXmlNode*) {});
    return 0;
}
