// What the handles on the nodes of a document cost a host.
//
//   handle_driver N     a walk over N children through handles made on the way, against a walk over the nodes that
//                       allocates and clears as many bytes for each; CPU seconds, best of five, and memory
#include "vc_qxparser.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include <wx/init.h>
#include <wx/xml/xml.h>

namespace
{

constexpr int Rounds = 5;

rusage Usage()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage;
}

double CpuSeconds()
{
    const rusage usage = Usage();
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

template <typename Work> double Measure(Work work)
{
    const double before = CpuSeconds();
    work();
    return CpuSeconds() - before;
}

bool Load(CXmlDocument& document, int count)
{
    wxString text = wxS("<r>");
    for (int i = 0; i < count; ++i)
        text += wxS("<a/>");
    return document.SetContent(text + wxS("</r>"));
}

std::size_t WalkNodes(CXmlNode& root)
{
    std::vector<std::unique_ptr<char[]>> blocks;
    for (const wxXmlNode* node = root.GetXmlNode()->GetChildren(); node; node = node->GetNext())
        blocks.push_back(std::make_unique<char[]>(sizeof(CXmlNode)));
    return blocks.size();
}

std::size_t WalkHandles(CXmlNode& root)
{
    std::size_t count = 0;
    for (CXmlNode* node = root.GetRawChildren(); node->Ok(); node = node->GetRawNext())
        ++count;
    return count;
}

} // namespace

int main(int argc, char** argv)
{
    const wxInitializer wx;
    const int count = argc > 1 ? std::atoi(argv[1]) : 1000000;
    double nodes = 0;
    double handles = 0;
    double end = 0;
    for (int round = 0; round < Rounds; ++round) {
        CXmlDocument document;
        if (!Load(document, count))
            return 1;
        CXmlNode* const root = document.GetRawRoot();
        const auto best = [&](double& least, double seconds) { least = round ? std::min(least, seconds) : seconds; };
        best(nodes, Measure([&] { WalkNodes(*root); }));
        best(handles, Measure([&] { WalkHandles(*root); }));
        best(end, Measure([&] { document.Clear(); }));
    }
    std::printf("nodes %.3f s  handles %.3f s (%.2f times)  end %.3f s  %zu bytes a handle  %ld MiB peak\n", nodes,
                handles, handles / nodes, end, sizeof(CXmlNode), Usage().ru_maxrss / 1024);
    return 0;
}
