#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/init.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    wxApp::SetInstance(new wxApp);
    const wxInitializer initializer(argc, argv);
    if (!initializer.IsOk() || !wxTheApp->CallOnInit())
        return 1;
    return RUN_ALL_TESTS();
}
