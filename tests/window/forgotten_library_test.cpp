#include "script/script.h"
#include "script/script_minimal.h"
#include "tests/support/log_capture.h"
#include "tests/window/scriptable_frame.h"

#include <gtest/gtest.h>
#include <wx/utils.h>

TEST(ForgottenLibraryTest, TheFirstWindowLoadsTheLibraryOrIsRefusedAloud)
{
    wxString expected;
    const bool isMissing = wxGetEnv(wxS("EXPECT_WINDOW_LIBRARY"), &expected) && expected == wxS("missing");
    LogCapture log;
    ScriptableFrame::NameEvents();
    qxjsMinimal global;
    CJScript script(nullptr);
    ASSERT_TRUE(script.SetGlobal(global.GetJSLink(), wxS("Global")));
    EXPECT_TRUE(log.Records().empty()) << "objects that are no windows need no library";

    ScriptableFrame frame;
    ASSERT_TRUE(script.CreateChild(frame.GetJSLink(), global.GetJSLink(), wxS("frame"), false, false));
    ASSERT_TRUE(script.Evaluate(wxS("frame.OnPress = function () { ++this.presses; }"), nullptr));
    wxCommandEvent press(wxEVT_BUTTON, frame.m_button->GetId());
    EXPECT_EQ(frame.m_button->ProcessWindowEvent(press), !isMissing);
    EXPECT_EQ(frame.m_presses, isMissing ? 0 : 1);
    if (isMissing)
        EXPECT_EQ(log.Errors(),
                  std::vector<wxString>{wxS("Script objects that are windows need libvc_qxparser_window.so.1")});
    else
        EXPECT_TRUE(log.Errors().empty());
}
