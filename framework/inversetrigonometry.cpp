// The arc functions. All of them are the angle of a point: quickly by a table of angles, or thoroughly, starting from the C
// library's angle and adding what its own sine and cosine say is missing: a step of Newton's, whose error is that angle's squared.
// So what the library has in its last bits does not matter.

#include <algorithm>
#include <array>
#include <cmath>

#include "framework/trigonometry.h"
#include "framework/turn.h"

namespace q7z
{

namespace
{

constexpr Float kQuickArcError = 0x1p-63;

constexpr Float kSlopes = 64;
constexpr size_t kSlopeCount = 65;

/// The angle of a slope from 0 to 1/64.
constexpr DoubleDouble SmallArc(const DoubleDouble& slope) noexcept
{
  constexpr int kLastTerm = 17;
  const DoubleDouble square = slope * slope;
  DoubleDouble sum = Quotient(DoubleDouble(1), DoubleDouble(kLastTerm));
  for (int n = kLastTerm - 2; n > 0; n -= 2)
    sum = Quotient(DoubleDouble(1), DoubleDouble(n)) - square * sum;
  return slope * sum;
}

/// The angles of the slopes 0, 1/64, 2/64 and so on, to 1. From one to the next there is a slope of 64 / (64^2 + i * (i - 1)).
constexpr std::array<DoubleDouble, kSlopeCount> kArcs = []
{
  std::array<DoubleDouble, kSlopeCount> arcs{};
  for (size_t i = 1; i < kSlopeCount; ++i)
  {
    const DoubleDouble divisor(kSlopes * kSlopes + static_cast<Float>(i * (i - 1)));
    arcs[i] = arcs[i - 1] + SmallArc(Quotient(DoubleDouble(kSlopes), divisor));
  }
  return arcs;
}();

/// What is left of an angle behind one of the table: the angle of a slope up to 1/127, the cube and all behind it short.
DoubleDouble AddSmallArc(const DoubleDouble& arc, const DoubleDouble& slope) noexcept
{
  const Float square = slope.high * slope.high;
  const Float tail = slope.high * square * (1.0 / 3 - square * (1.0 / 5 - square * (1.0 / 7 - square * (1.0 / 9))));
  const DoubleDouble sum = Sum(arc.high, slope.high);
  return SumOfOrdered(sum.high, sum.low + (arc.low + (slope.low - tail)));
}

/// a / b to about 100 bits.
DoubleDouble QuickQuotient(const DoubleDouble& a, const DoubleDouble& b) noexcept
{
  const Float near = a.high / b.high;
  const DoubleDouble product = Product(b.high, near);
  const Float rest = ((a.high - product.high) - product.low) + (a.low - b.low * near);
  return {near, rest / b.high};
}

/// a + factor * b, for a factor of a few bits.
DoubleDouble SumWithMultiple(const DoubleDouble& a, Float factor, const DoubleDouble& b) noexcept
{
  const DoubleDouble parts = Split(b.high);
  const DoubleDouble sum = Sum(a.high, factor * parts.high);
  const DoubleDouble all = Sum(sum.high, factor * parts.low);
  return SumOfOrdered(all.high, all.low + (sum.low + (a.low + factor * b.low)));
}

/// The angle of the point (x, y), not both of them 0, to about 66 bits. The point turns back by the next angle of the table. There is
/// no branch, which would go any way.
DoubleDouble QuickArc(const DoubleDouble& y, const DoubleDouble& x) noexcept
{
  constexpr DoubleDouble kQuarter(kHalfPiParts[0], kHalfPiParts[1]);
  constexpr DoubleDouble kBases[] = {{0, 0}, {2 * kHalfPiParts[0], 2 * kHalfPiParts[1]}, kQuarter, kQuarter};
  constexpr Float kSigns[] = {1, -1, -1, 1};
  const Float signOfY = std::copysign(1.0, y.high);
  const Float signOfX = std::copysign(1.0, x.high);
  const size_t isSteep = y.high * signOfY > x.high * signOfX;
  const size_t quadrant = 2 * isSteep + (signOfX < 0);
  const DoubleDouble points[] = {{y.high * signOfY, y.low * signOfY}, {x.high * signOfX, x.low * signOfX}};
  const DoubleDouble& rise = points[isSteep];
  const DoubleDouble& run = points[1 - isSteep];

  const Float index = RoundToWhole(rise.high / run.high * kSlopes);
  const Float slope = index / kSlopes;
  const DoubleDouble rest = QuickQuotient(SumWithMultiple(rise, -slope, run), SumWithMultiple(run, slope, rise));
  const DoubleDouble arc = AddSmallArc(kArcs[static_cast<size_t>(index)], rest);

  const Float sign = kSigns[quadrant];
  const DoubleDouble& base = kBases[quadrant];
  const DoubleDouble sum = Sum(base.high, sign * arc.high);
  const DoubleDouble angle = SumOfOrdered(sum.high, sum.low + (base.low + sign * arc.low));
  return {angle.high * signOfY, angle.low * signOfY};
}

DoubleDouble ThoroughAtan2(Float y, Float x) noexcept
{
  const Float near = std::atan2(y, x);
  const Turn turn = ThoroughTurn(near);
  const DoubleDouble aside = turn.cosine * DoubleDouble(y) - turn.sine * DoubleDouble(x);
  return DoubleDouble(near) + DoubleDouble(aside.high / (turn.cosine.high * x + turn.sine.high * y));
}

}  // namespace

Float Asin(Float value) noexcept
{
  const Float near = std::asin(value);
  if (!(std::abs(value) < 1) || near == 0)
    return near;
  const auto improved = [&](const Turn& turn)
  {
    const DoubleDouble missing = DoubleDouble(value) - turn.sine;
    return DoubleDouble(near) + DoubleDouble(missing.high / turn.cosine.high);
  };
  const Turn turn = QuickTurn(near);
  return RoundedOnce(improved(turn), kQuickTurnError / turn.cosine.high, [&] { return improved(ThoroughTurn(near)); });
}

Float Acos(Float value) noexcept
{
  constexpr Float kHalf = 0.5;
  const Float near = std::acos(value);
  if (!(std::abs(value) < 1))
    return near;
  if (value <= kHalf)
  {
    const auto improved = [&](const Turn& turn)
    {
      const DoubleDouble missing = turn.cosine - DoubleDouble(value);
      return DoubleDouble(near) + DoubleDouble(missing.high / turn.sine.high);
    };
    const Turn turn = QuickTurn(near);
    return RoundedOnce(improved(turn), kQuickTurnError / turn.sine.high, [&] { return improved(ThoroughTurn(near)); });
  }
  // Of a small angle the cosine tells little; half of it has a sine of this square root.
  const DoubleDouble sineOfHalf = SquareRoot(DoubleDouble((1 - value) / 2));
  const auto improved = [&](const Turn& turn)
  {
    const DoubleDouble missing = sineOfHalf - turn.sine;
    return DoubleDouble(near) + DoubleDouble(2 * missing.high / turn.cosine.high);
  };
  return RoundedOnce(improved(QuickTurn(near / 2)), kQuickTurnError, [&] { return improved(ThoroughTurn(near / 2)); });
}

Float Atan(Float value) noexcept
{
  return Atan2(value, 1);
}

Float Atan2(Float y, Float x) noexcept
{
  const Float largest = std::max(std::abs(y), std::abs(x));
  const Float smallest = std::min(std::abs(y), std::abs(x));
  if (!(largest > kSmallestLength && largest < 1 / kSmallestLength) || y == 0)
    return std::atan2(y, x);
  if (smallest < kSmallestLength)
    return ThoroughAtan2(y, x).Round();
  return RoundedOnce(QuickArc(DoubleDouble(y), DoubleDouble(x)), kQuickArcError, [&] { return ThoroughAtan2(y, x); });
}

}  // namespace q7z
