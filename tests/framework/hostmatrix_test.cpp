// The host's matrix: inverses, the singular ones too.

#include <gtest/gtest.h>

#include <limits>

#include "framework/hostmatrix.h"
#include "tests/framework/nonfinite.h"

namespace q7z::test
{
namespace
{

struct InverseCase
{
  const char* name;
  HostMatrix matrix;
  HostMatrix inverse;
};
const InverseCase kInverseCases[] = {
  {"Stretch", {{2, 4, 1}, {2, 0, 0}, {0, 4, 0}, {0, 0, 0.5}}, {{-1, -1, -2}, {0.5, 0, 0}, {0, 0.25, 0}, {0, 0, 2}}},
  {"Mirror", {{0, 0, 4}, {1, 0, 0}, {0, 1, 0}, {0, 0, -1}}, {{0, 0, 4}, {1, 0, 0}, {0, 1, 0}, {0, 0, -1}}},
  {"Shear", {{3, 2, 1}, {1, 0, 0}, {1, 1, 0}, {0, 0, 1}}, {{-1, -2, -1}, {1, 0, 0}, {-1, 1, 0}, {0, 0, 1}}},
  {"Cycle", {{1, 2, 3}, {0, 2, 0}, {0, 0, 4}, {8, 0, 0}}, {{-1, -0.75, -0.125}, {0, 0, 0.125}, {0.5, 0, 0}, {0, 0.25, 0}}},
};

TEST(HostMatrix, InverseByHand)
{
  for (const InverseCase& row : kInverseCases)
  {
    EXPECT_EQ(row.matrix.GetInverse(), row.inverse) << row.name;
    EXPECT_EQ(row.inverse.GetInverse(), row.matrix) << row.name;
  }
}

TEST(HostMatrix, MatrixWithoutInverseGivesTheIdentity)
{
  const std::pair<const char*, HostMatrix> rows[] = {
    {"AxisOfLengthZero", {{1, 2, 3}, {1, 0, 0}, {0, 0, 0}, {0, 0, 1}}},
    {"TwoEqualAxes", {{1, 2, 3}, {1, 2, 3}, {1, 2, 3}, {0, 0, 1}}},
    {"AllZero", {{}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}},
    {"TooSmallToInvert", {{}, {1e-310, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {"NotANumber", {{}, {kNan, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {"Infinite", {{}, {kInfinity, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {"TooLarge", {{}, {1e200, 0, 0}, {0, 1e200, 0}, {0, 0, 1}}},
  };
  for (const auto& [name, matrix] : rows)
    EXPECT_EQ(matrix.GetInverse(), HostMatrix()) << name;
}

}  // namespace
}  // namespace q7z::test
