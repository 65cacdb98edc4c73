#pragma once

#include "tests/base/base_test_support.h"
#include "tests/support/temp_directory.h"
#include "xml/xml_config.h"

#include <wx/log.h>

#include <cstdlib>
#include <optional>
#include <string>

/// A store on "cfg.xml" whose states are told apart by a number and are large enough to be written in several pieces.
class ConfigFaultsTest : public TempDirTest
{
public:
    static constexpr int Sections = 30;

    /// What a section holds in the state of this number.
    static wxString Value(long number, int section)
    {
        return wxString::Format("%ld in %d ", number, section) + wxString('x', 4000);
    }

    /// Makes the tree the state of this number.
    static void SetState(CXmlConfig& config, long number)
    {
        config.CreateEmtyConfig();
        config.GetRawRoot()->AddProp("state", number);
        for (int i = 0; i < Sections; ++i)
            config.GetSectionNode(wxString::Format("section%d", i), true)->AddProp("name", Value(number, i));
    }

protected:
    std::string Base() const override { return PlaceInMemory(); }

    void SetUp() override
    {
        TempDirTest::SetUp();
        std::filesystem::create_directory(Path("runtime"));
        std::filesystem::permissions(Path("runtime"), std::filesystem::perms::owner_all);
        std::filesystem::create_directory(Path("place"));
        m_runtime.emplace("XDG_RUNTIME_DIR", Path("runtime"));
    }
    void TearDown() override
    {
        m_runtime.reset();
        TempDirTest::TearDown();
    }

    CDir Place() const { return CDir(Name("place")); }

    std::unique_ptr<CXmlConfig> Open(const wxString& name = "cfg.xml") const
    {
        return std::make_unique<CXmlConfig>(nullptr, name, nullptr, Place(), true);
    }

    /// The number of the state that the tree is, all of it; -1 when it is none.
    static long StateOf(CXmlConfig& config)
    {
        CXmlNode* const root = config.GetRawRoot();
        const long number = root ? root->GetPropLong("state", -1) : -1;
        if (number < 0)
            return -1;
        CXmlConfig same(nullptr, "none", nullptr, CDir("/"), true);
        SetState(same, number);
        return TextOf(same) == TextOf(config) ? number : -1;
    }

    /// The number of the state that a load finds; -1 when that is none.
    long LoadState(const wxString& name = "cfg.xml") const
    {
        const auto config = Open(name);
        config->LoadFile();
        return config->IsLoaded() ? StateOf(*config) : -1;
    }

    bool SaveState(long number, const wxString& name = "cfg.xml") const
    {
        const auto config = Open(name);
        SetState(*config, number);
        return config->SaveFile(true);
    }

    /// The state that a file holds; nothing when it is not there.
    std::optional<long> StateIn(const std::string& name) const
    {
        if (!Bytes("place/" + name))
            return std::nullopt;
        const auto config = Open();
        config->LoadFile(Place().OpenFile(FromSystemName(name), wxFile::read));
        return StateOf(*config);
    }

    /// How often an experiment is repeated: so many times in the usual tests, more in the long form.
    static int Rounds(int usual)
    {
        const char* const factor = std::getenv("QXP_FAULTS_FACTOR");
        return usual * (factor ? std::atoi(factor) : 1);
    }

    wxLogNull m_quiet;

private:
    static std::string TextOf(CXmlConfig& config)
    {
        std::string text;
        for (CXmlNode* node = config.GetRawRoot()->GetRawChildren(); node->Ok(); node = node->GetRawNext())
            text += ToUtf8(node->GetName() + node->GetAllProps() + "\n");
        return text + ToUtf8(config.GetRawRoot()->GetAllProps());
    }

    std::optional<ScopedVariable> m_runtime;
};
