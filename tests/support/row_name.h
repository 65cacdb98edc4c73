#pragma once

#include <gtest/gtest.h>

#include <string>

/// Rows of tables name their tests: TEST_P suites pass this to INSTANTIATE_TEST_SUITE_P.
template <typename Row> std::string NameOfRow(const ::testing::TestParamInfo<Row>& info)
{
    return info.param.name;
}
