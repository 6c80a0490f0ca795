// The host's matrix and its rational time: inverses, the singular ones too; quantising to milliseconds, frames, equality.

#include <gtest/gtest.h>

#include "framework/hostmatrix.h"
#include "framework/hosttime.h"
#include "tests/framework/text.h"

namespace q7z::test
{
namespace
{

const std::tuple<const char*, HostMatrix, HostMatrix> kInverseCases[] = {
  {"Stretch", {{2, 4, 1}, {2, 0, 0}, {0, 4, 0}, {0, 0, 0.5}}, {{-1, -1, -2}, {0.5, 0, 0}, {0, 0.25, 0}, {0, 0, 2}}},
  {"Mirror", {{0, 0, 4}, {1, 0, 0}, {0, 1, 0}, {0, 0, -1}}, {{0, 0, 4}, {1, 0, 0}, {0, 1, 0}, {0, 0, -1}}},
  {"Shear", {{3, 2, 1}, {1, 0, 0}, {1, 1, 0}, {0, 0, 1}}, {{-1, -2, -1}, {1, 0, 0}, {-1, 1, 0}, {0, 0, 1}}},
  {"Cycle", {{1, 2, 3}, {0, 2, 0}, {0, 0, 4}, {8, 0, 0}}, {{-1, -0.75, -0.125}, {0, 0, 0.125}, {0.5, 0, 0}, {0, 0.25, 0}}},
};

TEST(HostMatrix, InverseByHand)
{
  for (const auto& [name, matrix, inverse] : kInverseCases)
  {
    EXPECT_EQ(matrix.GetInverse(), inverse) << name;
    EXPECT_EQ(inverse.GetInverse(), matrix) << name;
  }
}

TEST(HostMatrix, MatrixWithoutInverseGivesTheIdentity)
{
  const std::pair<const char*, HostMatrix> rows[] = {
    {"AxisOfLengthZero", {{1, 2, 3}, {1, 0, 0}, {0, 0, 0}, {0, 0, 1}}},
    {"TwoEqualAxes", {{1, 2, 3}, {1, 2, 3}, {1, 2, 3}, {0, 0, 1}}},
    {"TooSmallToInvert", {{}, {1e-310, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {"NotANumber", {{}, {kNan, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {"Infinite", {{}, {kInfinity, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
    {"TooLarge", {{}, {1e200, 0, 0}, {0, 1e200, 0}, {0, 0, 1}}},
  };
  for (const auto& [name, matrix] : rows)
    EXPECT_EQ(matrix.GetInverse(), HostMatrix()) << name;
}

// Times.

const std::tuple<Float, Float, Float> kSecondsCases[] = {
  {0.0005, 1, 1000},
  {-0.0005, 0, 1},  // halves go up
  {-0.0006, -1, 1000},
  {1.5, 3, 2},
  {1.0 / 30, 33, 1000},
  {2147483.519, 2147483519, 1000},  // the last that is reduced in integers
  {2147483.52, 53687088, 25},       // 2147483520 and 1000 share 40
  {1000000000000.001, 1000000000000001, 1000},
  {1e16, 1e15, 1},
  {kInfinity, 1e15, 1},
  {-kInfinity, -1e15, 1},
  {kNan, 0, 1},
};

TEST(HostTime, SecondsAreQuantisedToMillisecondsAndReduced)
{
  for (const auto& [seconds, numerator, denominator] : kSecondsCases)
  {
    const HostTime time = HostTimeFromSeconds(seconds);
    EXPECT_EQ(time.numerator, numerator) << seconds;
    EXPECT_EQ(time.denominator, denominator) << seconds;
  }
}

const std::tuple<HostTime, Float, Int32> kFrameCases[] = {
  {{51, 100}, 30, 15},  // 15.3
  {{33, 1000}, 30, 0},  // 0.99, a frame's own time falls short of the frame
  {{-1, 4}, 30, -7},    // -7.5, towards zero
  {{1, 1}, 29.97, 29},  // the product is floored first
  {{3, 2.9}, 10, 15},   // the denominator too: 30 / 2
  {{1, 1}, 0, 0},      {{-1, 0}, 30, INT32_MIN},   {{1, 0.5}, 30, INT32_MAX},  // its floor is 0
  {{0, 0}, 30, 0},     {{1e15, 1}, 30, INT32_MAX}, {{2147483647, 1}, 1, INT32_MAX}, {{kNan, 1}, 30, 0},
};

TEST(HostTime, FrameIsTruncatedBehindTheFloors)
{
  for (const auto& [time, framesPerSecond, frame] : kFrameCases)
    EXPECT_EQ(FrameOfHostTime(time, framesPerSecond), frame)
      << time.numerator << "/" << time.denominator << " at " << framesPerSecond;
  EXPECT_EQ(FrameOfHostTime(HostTimeFromSeconds(0.51), 30), 15);
}

TEST(HostTime, EqualityComparesFlooredCrossProducts)
{
  EXPECT_TRUE((HostTime{51, 100} == HostTime{510, 1000}));
  EXPECT_FALSE((HostTime{1, 1000} == HostTime{0, 1}));
  EXPECT_TRUE((HostTime{1.2, 1} == HostTime{1.9, 1}));
  EXPECT_FALSE((HostTime{2.1, 1} == HostTime{1.2, 1}));
  EXPECT_TRUE((HostTime{1, 0} == HostTime{2, 0}));  // both products are 0
  EXPECT_FALSE((HostTime{kNan, 1} == HostTime{kNan, 1}));
  EXPECT_EQ((HostTime{5, 0}.GetSeconds()), 0);
}

}  // namespace
}  // namespace q7z::test
