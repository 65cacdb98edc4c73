#include "engine_fixture.h"
using EngineScript = EngineTest;
TEST_F(EngineScript, ATextEvaluatesToItsLastValue)
{
    jsval v = JSVAL_VOID;
    ASSERT_TRUE(Run("1 + 1", &v));
    EXPECT_EQ(v, INT_TO_JSVAL(2));
    EXPECT_EQ(Show("'a' + 1.5"), "a1.5");
    EXPECT_EQ(Show("foo"), "!ReferenceError: foo is not defined");
    EXPECT_EQ(Show("for (;"), "!expected expression, got end of script");
}
