#pragma once

#include "tests/script/script_fixture.h"
#include "tests/support/temp_directory.h"
#include "xml/xml_config.h"

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

constexpr wxLogLevel SaveFailureLevel = 101;

/// A file as a store writes it, around the text of its sections.
inline std::string Saved(const std::string& content)
{
    const std::string header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    return header + (content.empty() ? "<Config/>\n" : "<Config>\n" + content + "</Config>\n");
}

/// The text of a file; nothing when it is not there.
inline std::optional<std::string> FileText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// A store on the file "cfg.xml" in a directory of its own, with a script context and objects for it.
class ConfigTest : public ScriptTest
{
protected:
    ConfigTest()
    {
        Open();
        Show(wxS("var calls = []; function call(text, result) { calls.push(text); return result; }"));
    }

    /// Begins with a new store on the file, without loading it.
    void Open(const wxString& name = wxS("cfg.xml"))
    {
        config.reset();
        config = std::make_unique<CXmlConfig>(&script, wxS("Config"), Global(), place.Dir(), name, true);
    }

    /// A native object that script knows by this name.
    CJScriptLink* Object(const wxString& name)
    {
        objects[name] = std::make_unique<qxjsMinimal>();
        EXPECT_TRUE(script.CreateChild(objects[name]->GetJSLink(), Global(), name, false, false));
        return objects[name]->GetJSLink();
    }

    /// One whose hooks note their calls with the section's properties; it stores the property v="NAME".
    CJScriptLink* Recorder(const wxString& name)
    {
        CJScriptLink* const link = Object(name);
        Show(wxString::Format(wxS("%1$s.LoadXmlConfig = function (n) { call('load %1$s' + n.GetAllProps()); };"
                                  "%1$s._DefaultXmlConfig = function () { call('default %1$s'); };"
                                  "%1$s.StoreXmlConfig = function (n) {"
                                  "  n.AddProp('v', '%1$s'); return call('store %1$s', true); }"),
                              name));
        return link;
    }

    /// What the hooks have noted since the last time.
    wxString Calls() { return Show(wxS("calls.splice(0).join('; ')")); }

    void Put(const std::string& bytes, const std::string& name = "cfg.xml") { place.Put(name, bytes); }
    std::optional<std::string> Bytes(const std::string& name = "cfg.xml") const { return FileText(place.Path(name)); }

    /// Every name in the directory, hidden ones too.
    std::set<std::string> Names() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(place.Path()))
            names.insert(entry.path().filename());
        return names;
    }

    wxString RootName() { return config->GetRawRoot() ? config->GetRawRoot()->GetName() : wxString(wxS("(none)")); }

    TempDirectory place;
    std::map<wxString, std::unique_ptr<qxjsMinimal>> objects;
    std::unique_ptr<CXmlConfig> config;
};
