#include "fuzz/fuzz_support.h"
#include "script/script.h"
#include "script/script_minimal.h"
#include "tests/support/temp_directory.h"
#include "xml/xml_config.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>

namespace
{

// An input: the bytes of a configuration file.

/// Hooks that read all there is and write it again, with a mark.
constexpr const wchar_t* Hooks = LR"(
    o.LoadXmlConfig = function (section) {
        this.read = [];
        for (var child = section.GetFirst(); child.Ok(); child = child.GetNext())
            this.read.push(child.GetName() + child.GetAllProps() + child.GetContent());
    };
    o._DefaultXmlConfig = function () { this.read = ["default"]; };
    o.StoreXmlConfig = function (section) {
        for (var text of this.read)
            section.AddNode("item").AddProp("text", text);
        return section.AddProp("mark", 1);
    };
)";

std::optional<std::string> Bytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Indentation adds white space to texts that stand between elements, and reading takes away what a text starts with.
std::string WithoutWhiteSpace(std::string text)
{
    const auto isWhite = [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; };
    text.erase(std::remove_if(text.begin(), text.end(), isWhite), text.end());
    return text;
}

/// A store with two objects, one of which has its section among those of others.
class Store
{
public:
    explicit Store(const CDir& place)
    {
        Require(m_script.SetGlobal(m_global.GetJSLink(), wxS("Global")), "a context gets its global object");
        m_config.emplace(&m_script, wxS("Config"), m_global.GetJSLink(), place, wxS("cfg.xml"), true);
        for (qxjsMinimal* const object : {&m_first, &m_second}) {
            Require(m_script.CreateChild(object->GetJSLink(), m_global.GetJSLink(), wxS("o"), false, false),
                    "and a child");
            Require(m_script.Evaluate(Hooks, nullptr), "which gets hooks");
        }
        m_config->ObjectRegisterNamedNoLoad(m_first.GetJSLink(), wxS("a"), wxString());
        m_config->ObjectRegisterNamedNoLoad(m_second.GetJSLink(), wxS("b"), wxS("a"));
    }

    CXmlConfig& Config() { return *m_config; }

private:
    qxjsMinimal m_global;
    qxjsMinimal m_first;
    qxjsMinimal m_second;
    CJScript m_script{nullptr};
    std::optional<CXmlConfig> m_config;
};

void Run(const std::string& input, const TempDirectory& place)
{
    place.Put("cfg.xml", input);
    std::string saved;
    {
        Store store(place.Dir());
        store.Config().LoadFile();
        Require(store.Config().GetRawRoot(), "there is always a root");
        Require(store.Config().IsLoaded() || store.Config().GetRawRoot()->GetName() == wxS("Config"),
                "what cannot be loaded is an empty configuration");
        if (!store.Config().SaveFile(true)) {
            Require(Bytes(place.Path("cfg.xml")) == input, "a failed save leaves the file");
            return;
        }
        Require(Bytes(place.Path("cfg.xml.old")) == input, "the file becomes the backup");
        saved = *Bytes(place.Path("cfg.xml"));
    }
    CXmlConfig again(nullptr, wxS("cfg.xml"), nullptr, place.Dir(), true);
    again.LoadFile();
    Require(again.IsLoaded(), "what is saved can be loaded");
    Require(again.GetSectionNode(wxS("a"), false)->Ok(), "with the sections of all objects");
    CDir elsewhere = place.Dir();
    Require(again.SaveFile(elsewhere, wxS("again.xml"), true), "and saved again");
    Require(WithoutWhiteSpace(*Bytes(place.Path("again.xml"))) == WithoutWhiteSpace(saved), "with the same content");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    static const TempDirectory place;
    static const int runtime = ::setenv("XDG_RUNTIME_DIR", place.Path().c_str(), 1);
    Require(runtime == 0, "locks have a place");
    Run(std::string(reinterpret_cast<const char*>(data), size), place);
    return 0;
}
