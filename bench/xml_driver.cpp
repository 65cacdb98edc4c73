// What loading, saving and merging XML documents costs, with wxXmlDocument's own functions and with ours.
//
//   xml_driver plain|fast INPUT [OUTPUT]     CPU seconds of reading, writing and deleting, peak memory after each
//   xml_driver merge BASE OVERLAY OUTPUT     the same with the merge of an overlay in between
//
// `plain` is wxXmlDocument through buffered streams, `fast` is ours. One document a process, so that the peaks are its
// own. Without OUTPUT the document is not written.
#include "xml/merge_detail.h"
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
    CXmlDocument::LoadError error;
    return fast ? xml_detail::ReadTree(file, document, wxString(), wxXMLDOC_NONE, maxDepth, error)
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

void Merge(const wxXmlDocument& base, const wxXmlDocument& overlay)
{
    const Phase phase("merge");
    xml_detail::OverlayMerge merge;
    merge.Run(*base.GetRoot(), *overlay.GetRoot(), nullptr, true);
    for (wxXmlNode* const node : merge.TakeRemoved())
        xml_detail::DeleteTree(node, [](const wxXmlNode*) {});
}

void Delete(wxXmlDocument& document)
{
    const Phase phase("delete");
    xml_detail::DeleteTree(document.DetachDocumentNode(), [](const wxXmlNode*) {});
}

bool ReadMergeWrite(const wxString& baseName, const wxString& overlayName, const wxString& output)
{
    wxXmlDocument base;
    wxXmlDocument overlay;
    if (!Read(base, baseName, true) || !Read(overlay, overlayName, true))
        return false;
    Merge(base, overlay);
    const bool isWritten = Write(base, output, true);
    Delete(overlay);
    Delete(base);
    return isWritten;
}

bool ReadWrite(const wxString& input, const wxString& output, bool fast)
{
    wxXmlDocument document;
    const bool isDone = Read(document, input, fast) && (output.empty() || Write(document, output, fast));
    Delete(document);
    return isDone;
}

} // namespace

int main(int argc, char** argv)
{
    const wxInitializer initializer;
    if (argc < 3)
        return 2;
    const std::string mode = argv[1];
    const auto argument = [&](int i) { return i < argc ? wxString::FromUTF8(argv[i]) : wxString(); };
    const bool isDone = mode == "merge" ? ReadMergeWrite(argument(2), argument(3), argument(4))
                                        : ReadWrite(argument(2), argument(3), mode == "fast");
    return isDone ? 0 : 1;
}
