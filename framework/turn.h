#pragma once

// What trigonometry is made of: the sine and the cosine of an angle to more bits than a Float has, quickly or thoroughly, and the
// one rounding of what is made of them.

#include <cmath>

#include "framework/doubledouble.h"

namespace q7z
{

/// The sine and the cosine of one angle.
struct Turn
{
  DoubleDouble sine;
  DoubleDouble cosine;
};

/// To about 66 bits, which is enough to round it, but for one in hundreds. For a finite angle.
Turn QuickTurn(Float angle) noexcept;
/// What may be wrong in either part of a quick turn, against its size.
inline constexpr Float kQuickTurnError = 0x1p-62;
/// To about 90 bits. For a finite angle.
Turn ThoroughTurn(Float angle) noexcept;

/// pi / 2 is the sum of these to 160 bits.
inline constexpr Float kHalfPiParts[] = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54, -0x1.f1976b7ed8fbcp-110};

/// Below, products lose bits for being too small.
inline constexpr Float kSmallestLength = 1e-140;

/// The nearest whole number, for a value below 2^51.
constexpr Float RoundToWhole(Float value) noexcept
{
  constexpr Float kShift = 0x1.8p52;  // behind it a number has no places left
  return (value + kShift) - kShift;
}

/// The square root of a value above 0.
inline DoubleDouble SquareRoot(const DoubleDouble& value) noexcept
{
  const Float near = std::sqrt(value.high);
  const DoubleDouble square = Product(near, near);
  return SumOfOrdered(near, ((value.high - square.high) - square.low + value.low) / (2 * near));
}

/// What rounds once all that a quick value may be, or the thorough value.
/// @param quickError  what the quick value may be wrong by, against its size.
template <typename Thorough>
Float RoundedOnce(const DoubleDouble& quick, Float quickError, const Thorough& thorough) noexcept
{
  const Float error = std::abs(quick.high) * quickError;
  const Float below = quick.high + (quick.low - error);
  const Float above = quick.high + (quick.low + error);
  return below == above ? below : thorough().Round();
}

}  // namespace q7z
