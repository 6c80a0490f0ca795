// The host's rational time: quantising to milliseconds, frames, equality.

#include <gtest/gtest.h>

#include <limits>

#include "framework/hosttime.h"

namespace q7z::test
{
namespace
{

constexpr Float kInfinity = std::numeric_limits<Float>::infinity();
constexpr Float kNan = std::numeric_limits<Float>::quiet_NaN();

struct SecondsCase
{
  Float seconds;
  Float numerator;
  Float denominator;
};
const SecondsCase kSecondsCases[] = {
  {0, 0, 1},
  {0.0004, 0, 1},
  {0.0005, 1, 1000},
  {-0.0005, 0, 1},  // halves go up
  {-0.0006, -1, 1000},
  {1, 1, 1},
  {1.5, 3, 2},
  {-0.25, -1, 4},
  {0.51, 51, 100},
  {1.0 / 30, 33, 1000},
  {3600, 3600, 1},
  {2147483.519, 2147483519, 1000},  // the last that is reduced in integers
  {2147483.52, 53687088, 25},       // 2147483520 and 1000 share 40
  {1000000000000.001, 1000000000000001, 1000},
  {1e15, 1e15, 1},
  {-1e15, -1e15, 1},
  {1e16, 1e15, 1},
  {1e300, 1e15, 1},
  {kInfinity, 1e15, 1},
  {-kInfinity, -1e15, 1},
  {kNan, 0, 1},
};

TEST(HostTime, SecondsAreQuantisedToMillisecondsAndReduced)
{
  for (const SecondsCase& row : kSecondsCases)
  {
    const HostTime time = HostTimeFromSeconds(row.seconds);
    EXPECT_EQ(time.numerator, row.numerator) << row.seconds;
    EXPECT_EQ(time.denominator, row.denominator) << row.seconds;
  }
}

struct FrameCase
{
  HostTime time;
  Float framesPerSecond;
  Int32 frame;
};
const FrameCase kFrameCases[] = {
  {{51, 100}, 30, 15},  // 15.3
  {{33, 1000}, 30, 0},  // 0.99, a frame's own time falls short of the frame
  {{-1, 4}, 30, -7},    // -7.5, towards zero
  {{-1, 1000}, 30, 0},  // -0.03
  {{5, 2}, 25, 62},     // 62.5
  {{1, 1}, 29.97, 29},  // the product is floored first
  {{3, 2.9}, 10, 15},   // the denominator too: 30 / 2
  {{1, 1}, 0, 0},      {{1, 0}, 30, INT32_MAX},    {{-1, 0}, 30, INT32_MIN},    {{1, 0.5}, 30, INT32_MAX},  // its floor is 0
  {{0, 0}, 30, 0},     {{1e15, 1}, 30, INT32_MAX}, {{-1e15, 1}, 30, INT32_MIN}, {{2147483647, 1}, 1, INT32_MAX},
  {{kNan, 1}, 30, 0},
};

TEST(HostTime, FrameIsTruncatedBehindTheFloors)
{
  for (const FrameCase& row : kFrameCases)
    EXPECT_EQ(FrameOfHostTime(row.time, row.framesPerSecond), row.frame)
      << row.time.numerator << "/" << row.time.denominator << " at " << row.framesPerSecond;
  EXPECT_EQ(FrameOfHostTime(HostTimeFromSeconds(0.51), 30), 15);
}

struct EqualCase
{
  HostTime a;
  HostTime b;
  bool equal;
};
const EqualCase kEqualCases[] = {
  {{1, 2}, {1, 2}, true},        {{1, 2}, {2, 4}, true},   {{51, 100}, {510, 1000}, true},
  {{1, 1000}, {0, 1}, false},    {{1, 1}, {-1, 1}, false}, {{1.2, 1}, {1.9, 1}, true},  // the floors of the cross products count
  {{1.2, 1}, {2.1, 1}, false},   {{0, 1}, {0, 7}, true},   {{1, 0}, {2, 0}, true},      // both products are 0
  {{kNan, 1}, {kNan, 1}, false},
};

TEST(HostTime, EqualityComparesFlooredCrossProducts)
{
  for (const EqualCase& row : kEqualCases)
  {
    EXPECT_EQ(row.a == row.b, row.equal) << row.a.numerator << "/" << row.a.denominator;
    EXPECT_EQ(row.b == row.a, row.equal) << row.a.numerator << "/" << row.a.denominator;
  }
}

TEST(HostTime, SecondsOfNoDenominatorAreNone)
{
  EXPECT_EQ((HostTime{5, 0}.GetSeconds()), 0);
  EXPECT_EQ((HostTime{51, 100}.GetSeconds()), 0.51);
  EXPECT_EQ(HostTime().GetSeconds(), 0);
}

}  // namespace
}  // namespace q7z::test
