#include "script/script.h"
#include "script/script_minimal.h"
#include "script/window_events.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_directory.h"
#include "tests/window/scriptable_frame.h"
#include "xml/xml_config.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{

class ConfigWindowTest : public testing::Test
{
protected:
    ConfigWindowTest()
    {
        EXPECT_TRUE(ready);
        EXPECT_TRUE(script.CreateChild(frame->GetJSLink(), global.GetJSLink(), wxS("frame"), false, false));
        config.CreateEmtyConfig();
        frame->SetName(wxS("main window"));
        EXPECT_TRUE(script.Evaluate(wxS("frame.StoreXmlConfig = function (n) { return n.AddProp('v', 1); };"
                                        "frame._DefaultXmlConfig = function () { ++this.presses; }"),
                                    nullptr));
    }

    bool HasSection(const wxString& path)
    {
        EXPECT_TRUE(config.StoreAll());
        return config.GetSectionNode(path, false)->HasProp(wxS("v"));
    }

    LogCapture log;
    TempDirectory place;
    qxjsMinimal global;
    CJScript script{nullptr};
    const bool ready = script.SetGlobal(global.GetJSLink(), wxS("Global"));
    std::unique_ptr<ScriptableFrame> frame = std::make_unique<ScriptableFrame>();
    CXmlConfig config{&script, wxS("Config"), global.GetJSLink(), place.Dir(), wxS("cfg.xml"), true};
};

} // namespace

TEST_F(ConfigWindowTest, AWindowIsRegisteredUnderItsName)
{
    config.ObjectRegisterNoSect(frame->GetJSLink());
    EXPECT_TRUE(config.HasObject(wxS("main_window")));
    EXPECT_EQ(frame->m_presses, 1) << "and loaded at once";
    EXPECT_TRUE(HasSection(wxS("main_window")));
}

TEST_F(ConfigWindowTest, AWindowIsRegisteredInASection)
{
    config.ObjectRegister(frame->GetJSLink(), wxS("all windows"));
    EXPECT_TRUE(HasSection(wxS("all_windows/main_window")));
}

TEST_F(ConfigWindowTest, ScriptRegistersWindowsByTheirNames)
{
    EXPECT_TRUE(script.Evaluate(wxS("Config.Register(frame)"), nullptr));
    EXPECT_TRUE(HasSection(wxS("main_window")));
    EXPECT_TRUE(script.Evaluate(wxS("Config.RegisterSection(frame, 'part')"), nullptr));
    EXPECT_TRUE(HasSection(wxS("part/main_window")));
}

TEST_F(ConfigWindowTest, AWindowWithoutANameIsIgnored)
{
    frame->SetName(wxString());
    config.ObjectRegister(frame->GetJSLink(), wxS("section"));
    EXPECT_FALSE(config.HasObject(frame->GetJSLink()));
}

TEST_F(ConfigWindowTest, ARegistrationEndsWithItsWindow)
{
    config.ObjectRegisterNoSect(frame->GetJSLink());
    frame.reset();
    EXPECT_FALSE(config.HasObject(wxS("main_window")));
    EXPECT_TRUE(config.SaveFile(true));
    EXPECT_TRUE(log.Errors().empty());
}

TEST_F(ConfigWindowTest, OnlyWindowsHaveTheNamesOfWindows)
{
    wxString name = wxS("unchanged");
    EXPECT_FALSE(GetWindowName(&global, name));
    EXPECT_FALSE(GetWindowName(nullptr, name));
    EXPECT_EQ(name, wxS("unchanged"));
    EXPECT_TRUE(GetWindowName(frame.get(), name));
    EXPECT_EQ(name, wxS("main window"));
}
