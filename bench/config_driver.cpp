// Times of a configuration store, beside the document under it and other libraries with the same values.
//
//     config_driver objects N     N objects with 10 values each: registered, stored, saved, loaded
//     config_driver apart N       the same without hooks, and the document alone
//     config_driver sections N    N sections of which 1,000 belong to objects
//     config_driver peers N       N groups of 10 values, written and read by the store and by other libraries
//     config_driver unchanged     saves that change nothing in 100 objects, beside the sync of the disk alone
#include "bench/config_peers.h"
#include "script/script.h"
#include "script/script_minimal.h"
#include "tests/support/temp_directory.h"
#include "xml/xml_config.h"

#include <wx/init.h>
#include <wx/wfstream.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr int Repetitions = 5;

double Milliseconds(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// The shortest of some runs, in milliseconds of the processor: others use the machine too.
template <typename Run> double Time(Run run, int repetitions = Repetitions, clockid_t clock = CLOCK_PROCESS_CPUTIME_ID)
{
    double best = 1e9;
    for (int i = 0; i < repetitions; ++i) {
        const double begin = Milliseconds(clock);
        run();
        best = std::min(best, Milliseconds(clock) - begin);
    }
    return best;
}

void Show(const char* what, double milliseconds)
{
    std::printf("%-44s %9.2f ms\n", what, milliseconds);
}

/// Ends the program when a step that is timed has not been done.
void Must(bool done, const char* what)
{
    if (done)
        return;
    std::fprintf(stderr, "failed: %s\n", what);
    std::exit(1);
}

wxString ObjectName(int i)
{
    return wxString::Format(wxS("object%d"), i);
}

/// A store with objects whose hooks read and write ten values.
class Bench
{
public:
    explicit Bench(int objects)
    {
        Must(m_script.SetGlobal(m_global.GetJSLink(), wxS("Global")), "a context");
        config = std::make_unique<CXmlConfig>(&m_script, wxS("Config"), m_global.GetJSLink(), place.Dir(),
                                              wxS("cfg.xml"), true);
        document = std::make_unique<CXmlDocument>(&m_script, wxS("Document"), m_global.GetJSLink());
        for (int i = 0; i < objects; ++i) {
            m_objects.push_back(std::make_unique<qxjsMinimal>());
            m_script.CreateChild(Link(i), m_global.GetJSLink(), ObjectName(i), false, false);
        }
        SetHooks(true);
    }

    /// Hooks that do what users' do, or none.
    void SetHooks(bool real)
    {
        const wxString hooks =
            real ? wxS("var proto = Object.getPrototypeOf(object0);"
                       "proto.StoreXmlConfig = function (n) {"
                       "  for (var i = 0; i < 10; ++i) n.AddProp('value' + i, 'the value ' + i); return true; };"
                       "proto.LoadXmlConfig = function (n) {"
                       "  this.v = []; for (var i = 0; i < 10; ++i) this.v.push(n.GetProp('value' + i)); };")
                 : wxS("delete proto.StoreXmlConfig; delete proto.LoadXmlConfig;");
        Must(m_script.Evaluate(hooks, nullptr), "hooks");
    }

    CJScriptLink* Link(int i) { return m_objects[static_cast<std::size_t>(i)]->GetJSLink(); }

    void Register(bool load)
    {
        config->CleanObjects();
        for (int i = 0; i < static_cast<int>(m_objects.size()); ++i) {
            if (load)
                config->ObjectRegisterNamed(Link(i), ObjectName(i), wxString());
            else
                config->ObjectRegisterNamedNoLoad(Link(i), ObjectName(i), wxString());
        }
    }

    TempDirectory place;
    std::unique_ptr<CXmlConfig> config;
    std::unique_ptr<CXmlDocument> document;

private:
    qxjsMinimal m_global;
    std::vector<std::unique_ptr<qxjsMinimal>> m_objects;
    CJScript m_script{nullptr};
};

void Sync(const TempDirectory& place, const std::string& bytes)
{
    CFile file = place.Dir().CreateFileW(wxS("sync"), true);
    Must(file.GetOutputStream()->WriteAll(bytes.data(), bytes.size()) && file.Close(), "a sync");
}

/// The same bytes loaded and saved by a document alone, which script sees too, with the same care for the disk.
double TimeDocument(const TempDirectory& place, CXmlDocument& document)
{
    return Time(
        [&] {
            CFile in = place.Dir().OpenFile(wxS("cfg.xml"), wxFile::read);
            Must(document.Load(*in.GetInputStream(), wxS("UTF-8"), 0), "a document");
            CFile out = place.Dir().CreateFileW(wxS("document.xml"), true);
            Must(document.Save(*out.GetOutputStream()) && out.Close(), "a document's save");
            document.Clear();
        },
        1);
}

int TimeObjects(int objects)
{
    Bench bench(objects);
    CXmlConfig& config = *bench.config;
    config.CreateEmtyConfig();
    Show("register", Time([&] { bench.Register(false); }));
    Show("store, with hooks", Time([&] { Must(config.StoreAll(), "a store"); }));
    Show("save, with hooks", Time([&] { Must(config.SaveFile(true), "a save"); }));
    Show("load, with hooks", Time([&] { config.LoadFile(); }));
    Show("register and load", Time([&] { bench.Register(true); }));
    Show("store by link", Time([&] {
             for (int i = 0; i < objects; ++i)
                 Must(config.ObjectStore(bench.Link(i)), "a store");
         }));
    return 0;
}

/// What the store adds to the document under it: hooks apart, so the objects have none.
int TimeApart(int objects)
{
    Bench bench(objects);
    CXmlConfig& config = *bench.config;
    bench.SetHooks(false);
    std::string text = "<Config>\n";
    for (int i = 0; i < objects; ++i) {
        text += " <object" + std::to_string(i);
        for (int value = 0; value < ConfigValues; ++value)
            text += " value" + std::to_string(value) + "=\"the value " + std::to_string(value) + "\"";
        text += "/>\n";
    }
    bench.place.Put("cfg.xml", text + "</Config>\n");
    bench.Register(false);
    double store = 1e9;
    double document = 1e9;
    // In turns, so that both meet the same heap.
    for (int i = 0; i < Repetitions; ++i) {
        store = std::min(store, Time(
                                    [&] {
                                        config.LoadFile();
                                        Must(config.SaveFile(true), "a save");
                                        config.Clear();
                                    },
                                    1));
        document = std::min(document, TimeDocument(bench.place, *bench.document));
    }
    Show("load and save of the store, hooks apart", store);
    Show("load and save of the document alone", document);
    std::printf("%-44s %9.2f\n", "store / document", store / document);
    return 0;
}

int TimeSections(int sections)
{
    constexpr int objects = 1000;
    Bench bench(objects);
    CXmlConfig& config = *bench.config;
    config.CreateEmtyConfig();
    for (int i = 0; i < sections - objects; ++i)
        config.GetRawRoot()->AddRawNode(wxString::Format(wxS("section%d"), i))->AddProp(wxS("v"), long(i));
    bench.Register(false);
    Must(config.SaveFile(true), "a save");
    Show("save", Time([&] { Must(config.SaveFile(true), "a save"); }));
    Show("load", Time([&] { config.LoadFile(); }));
    return 0;
}

void WriteStore(const std::string& path, int groups)
{
    CXmlConfig config(nullptr, FromSystemName(path), nullptr, CDir(wxS("/")), true);
    for (int group = 0; group < groups; ++group) {
        CXmlNode* const section = config.GetSectionNode(wxString::FromUTF8(ConfigGroup(group)), true);
        for (int value = 0; value < ConfigValues; ++value)
            section->AddProp(wxString::FromUTF8(ConfigKey(value)), wxString::FromUTF8(ConfigText(value)));
    }
    Must(config.SaveFile(true), "a save");
}

std::size_t ReadStore(const std::string& path, int groups)
{
    CXmlConfig config(nullptr, FromSystemName(path), nullptr, CDir(wxS("/")), true);
    config.LoadFile();
    std::size_t size = 0;
    for (int group = 0; group < groups; ++group) {
        CXmlNode* const section = config.GetSectionNode(wxString::FromUTF8(ConfigGroup(group)), false);
        for (int value = 0; value < ConfigValues; ++value)
            size += section->GetPropW(wxString::FromUTF8(ConfigKey(value)), wxString()).length();
    }
    return size;
}

std::vector<ConfigPeer> Peers()
{
    std::vector<ConfigPeer> peers = {{"the store", WriteStore, ReadStore},
                                     {"wxFileConfig", WriteFileConfig, ReadFileConfig}};
#ifdef QXP_BENCH_GLIB
    peers.push_back({"GKeyFile", WriteKeyFile, ReadKeyFile});
#endif
#ifdef QXP_BENCH_LIBXML2
    peers.push_back({"libxml2", WriteXmlTree, ReadXmlTree});
#endif
    return peers;
}

int TimePeers(int groups)
{
    const std::size_t length = static_cast<std::size_t>(groups) * ConfigValues * ConfigText(0).length();
    for (const ConfigPeer& peer : Peers()) {
        const TempDirectory place;
        const std::string path = place.Path("file");
        const double write = Time([&] { peer.write(path, groups); });
        const double read = Time([&] { Must(peer.read(path, groups) == length, peer.name); });
        std::printf("%-16s write %9.2f ms, read %9.2f ms\n", peer.name, write, read);
    }
    return 0;
}

int TimeUnchanged()
{
    constexpr int objects = 100;
    constexpr int repetitions = 30;
    Bench bench(objects);
    CXmlConfig& config = *bench.config;
    bench.Register(false);
    Must(config.SaveFile(true), "a save");
    const double save = Time([&] { Must(config.SaveFile(true), "a save"); }, repetitions, CLOCK_MONOTONIC);
    const double sync = Time([&] { Sync(bench.place, std::string(20'000, 'x')); }, repetitions, CLOCK_MONOTONIC);
    Show("save of 100 objects that changes nothing", save);
    Show("writing as many bytes and flushing them", sync);
    Show("beyond the disk", save - sync);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const wxInitializer wx;
    const std::string mode = argc > 1 ? argv[1] : "";
    const int count = argc > 2 ? std::atoi(argv[2]) : 10'000;
    if (mode == "objects" && count > 0)
        return TimeObjects(count);
    if (mode == "apart" && count > 0)
        return TimeApart(count);
    if (mode == "sections" && count > 1000)
        return TimeSections(count);
    if (mode == "peers" && count > 0)
        return TimePeers(count);
    if (mode == "unchanged")
        return TimeUnchanged();
    std::fprintf(stderr, "usage: config_driver objects|apart|sections|peers|unchanged [N]\n");
    return 2;
}
