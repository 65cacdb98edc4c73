#include "tests/script/script_fixture.h"

#include <gtest/gtest.h>

// Owners go one after the other, however many wait: an engine call made while one goes must not start on the next.
TEST_F(ScriptTest, AHundredThousandObjectsWithOnDestroyFunctionsEndInOneGo)
{
    Show("var ended = 0; (function () { for (var i = 0; i < 100000; ++i)"
         " new wxObjectPtr().CallOnDestroy(function () { ++ended; }); })()");
    JS_GC(Context());
    EXPECT_EQ(Show("ended"), "100000");
    EXPECT_TRUE(Reports().empty());
}
