// Trigonometry to its last bit. The expected numbers were worked out with seventy decimal digits and rounded once.

#include "framework/trigonometry.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace q7z::test
{
namespace
{

struct AngleCase
{
  Float angle;
  Float sine;
  Float cosine;
  Float tangent;
};
const AngleCase kAngleCases[] = {
  {0.5, 0x1.eaee8744b05f0p-2, 0x1.c1528065b7d50p-1, 0x1.17b4f5bf3474ap-1},
  {-1.0, -0x1.aed548f090ceep-1, 0x1.14a280fb5068cp-1, -0x1.8eb245cbee3a6p+0},
  {2.0, 0x1.d18f6ead1b446p-1, -0x1.aa22657537205p-2, -0x1.17af62e0950f8p+1},
  // Next to half a turn and a quarter, where the angle's own error is the result.
  {3.141592653589793, 0x1.1a62633145c07p-53, -1.0, -0x1.1a62633145c07p-53},
  {-1.5707963267948966, -1.0, 0x1.1a62633145c07p-54, -0x1.d02967c31cdb5p+53},
  {100.0, -0x1.03425b78c4db8p-1, 0x1.b981dbf665fdfp-1, -0x1.2ca74d62b5d38p-1},
  {1000000.0, -0x1.6664b2568d867p-2, 0x1.df9df9906d32cp-1, -0x1.7e9768ab734c0p-2},
  {-700000000.0, -0x1.b797ec7284e40p-1, 0x1.067dbb2feeee3p-1, -0x1.acb906781db65p+0},
  {1e-300, 1e-300, 1.0, 1e-300},
};

TEST(Trigonometry, RoundsOnce)
{
  for (const AngleCase& row : kAngleCases)
  {
    EXPECT_EQ(Sin(row.angle), row.sine) << row.angle;
    EXPECT_EQ(Cos(row.angle), row.cosine) << row.angle;
    EXPECT_EQ(Tan(row.angle), row.tangent) << row.angle;
    EXPECT_EQ(SinCos(row.angle).sine, row.sine) << row.angle;
    EXPECT_EQ(SinCos(row.angle).cosine, row.cosine) << row.angle;
  }
}

struct ValueCase
{
  Float value;
  Float arcSine;
  Float arcCosine;
};
const ValueCase kValueCases[] = {
  {0.1, 0x1.9a49276037884p-4, 0x1.787b22ce3f590p+0},
  {-0.5, -0x1.0c152382d7366p-1, 0x1.0c152382d7366p+1},
  {0.7071067811865476, 0x1.921fb54442d19p-1, 0x1.921fb54442d18p-1},
  {0.9999999999999999, 0x1.921fb50442d18p+0, 0x1.0p-26},
  {-0.9999999999999999, -0x1.921fb50442d18p+0, 0x1.921fb52442d18p+1},
  {1e-9, 0x1.12e0be826d695p-30, 0x1.921fb53ff74e9p+0},
  {1.0, 0x1.921fb54442d18p+0, 0.0},
  {-1.0, -0x1.921fb54442d18p+0, 0x1.921fb54442d18p+1},
};

TEST(Trigonometry, RoundsInverseFunctionsOnce)
{
  for (const ValueCase& row : kValueCases)
  {
    EXPECT_EQ(Asin(row.value), row.arcSine) << row.value;
    EXPECT_EQ(Acos(row.value), row.arcCosine) << row.value;
  }
}

struct PointCase
{
  Float y;
  Float x;
  Float angle;
  Float length;
};
const PointCase kPointCases[] = {
  {1, 1, 0x1.921fb54442d18p-1, 0x1.6a09e667f3bcdp+0},
  {1, -1, 0x1.2d97c7f3321d2p+1, 0x1.6a09e667f3bcdp+0},
  {-1, -1, -0x1.2d97c7f3321d2p+1, 0x1.6a09e667f3bcdp+0},
  {-3, 4, -0x1.4978fa3269ee1p-1, 5},
  {1e-8, 1, 0x1.5798ee2308c3ap-27, 1},
  {1, 1e-8, 0x1.921fb5194fb3cp+0, 1},
  {-1e-8, -1, -0x1.921fb52ec942ap+1, 1},
  {2, 0, 0x1.921fb54442d18p+0, 2},
  {0, -2, 0x1.921fb54442d18p+1, 2},
  {-0.0, -0.0, -0x1.921fb54442d18p+1, 0},
  {0.0078125, 1, 0x1.fffd555bbba97p-8, 0x1.0001fffe00040p+0},
  {0.3, -0.7, 0x1.5e4c36ca0118ap+1, 0x1.85ed7614b038cp-1},
  {-0.7, 0.3, -0x1.2a78b84fbf5fcp+0, 0x1.85ed7614b038cp-1},
  {-127, -128, -0x1.2e184848870b6p+1, 0x1.68a0923c0be0fp+7},
  {-5, 1e-20, -0x1.921fb54442d18p+0, 5},
  {1e-200, 1, 1e-200, 1},
};

TEST(Trigonometry, FindsPoints)
{
  for (const PointCase& row : kPointCases)
  {
    EXPECT_EQ(Atan2(row.y, row.x), row.angle) << row.y << " " << row.x;
    EXPECT_EQ(Hypot(row.x, row.y), row.length) << row.y << " " << row.x;
  }
  EXPECT_EQ(Atan(1), 0x1.921fb54442d18p-1);
}

TEST(Trigonometry, RoundsACubeOnce)
{
  EXPECT_EQ(Cube(0.1), 0x1.0624dd2f1a9fdp-10);
  EXPECT_EQ(Cube(0.3333333333333333), 0x1.2f684bda12f67p-5);
  EXPECT_EQ(Cube(-0.7), -0x1.5f3b645a1cabfp-2);
  EXPECT_EQ(Cube(0.9), 0x1.753f7ced91688p-1);
}

TEST(Trigonometry, KeepsTheSignOfZero)
{
  EXPECT_TRUE(std::signbit(Sin(-0.0)));
  EXPECT_TRUE(std::signbit(Tan(-0.0)));
  EXPECT_TRUE(std::signbit(Asin(-0.0)));
  EXPECT_TRUE(std::signbit(Atan2(-0.0, 1)));
}

TEST(Trigonometry, StaysFiniteForAnyAngle)
{
  for (const Float angle : {1e9, -3e15, 1e22, 1e308})
  {
    EXPECT_LE(std::abs(Sin(angle)), 1.0) << angle;
    EXPECT_LE(std::abs(Cos(angle)), 1.0) << angle;
  }
  const Float infinity = std::numeric_limits<Float>::infinity();
  EXPECT_TRUE(std::isnan(Sin(infinity)));
  EXPECT_TRUE(std::isnan(Cos(-infinity)));
  EXPECT_TRUE(std::isnan(Tan(std::nan(""))));
  EXPECT_TRUE(std::isnan(Acos(2)));
  EXPECT_EQ(Atan(infinity), 0x1.921fb54442d18p+0);
}

}  // namespace
}  // namespace q7z::test
