#pragma once

// RowName: names the cases of a table after the `name` of their rows. For INSTANTIATE_TEST_SUITE_P(Rows, Suite, rows, RowName()).

#include <string>

#include <gtest/gtest.h>

namespace q7z::test
{

struct RowName
{
  template <typename Row>
  std::string operator()(const testing::TestParamInfo<Row>& row) const
  {
    return row.param.name;
  }
};

}  // namespace q7z::test
