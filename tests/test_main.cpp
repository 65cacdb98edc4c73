#include <gtest/gtest.h>
#include <wx/init.h>

int main(int argc, char** argv)
{
    wxInitializer initializer;
    if (!initializer.IsOk())
        return 1;
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
