#include "framework/trigonometry.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "framework/doubledouble.h"

namespace q7z
{

namespace
{

// From here on a turn more or less is less than what the angle itself is uncertain by.
constexpr Float kLargestAngle = 1e9;
// Below, the sine is the angle and the cosine is 1.
constexpr Float kSmallestAngle = 0x1p-27;
// Below, products lose bits for being too small.
constexpr Float kSmallestLength = 1e-140;

constexpr Float kTwoOverPi = 0x1.45f306dc9c883p-1;
// pi / 2 is the sum of these to 160 bits.
constexpr Float kHalfPiParts[] = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54, -0x1.f1976b7ed8fbcp-110};

/// What is known of a result: to about 63 bits, or to about 90. The first is enough to round it, but for one in hundreds.
enum class Effort
{
  kQuick,
  kThorough,
};
constexpr Float kQuickError = 0x1p-62;

/// 1 / n! for an n up to 22, of which n! is exact.
constexpr DoubleDouble InverseFactorial(int n) noexcept
{
  Float factorial = 1;
  for (int i = 2; i <= n; ++i)
    factorial *= i;
  return Quotient(DoubleDouble(1), DoubleDouble(factorial));
}

constexpr int kLastFactorial = 22;
constexpr std::array<DoubleDouble, kLastFactorial + 1> kInverseFactorials = []
{
  std::array<DoubleDouble, kLastFactorial + 1> inverses;
  for (int n = 0; n <= kLastFactorial; ++n)
    inverses[static_cast<size_t>(n)] = InverseFactorial(n);
  return inverses;
}();

/// 1/first! - z/(first+2)! + z^2/(first+4)! - ..., for z up to (pi/4)^2. What stands far behind the point needs no second half.
DoubleDouble AlternatingSeries(int first, const DoubleDouble& z, Effort effort) noexcept
{
  const auto inverse = [](int n) { return kInverseFactorials[static_cast<size_t>(n)]; };
  const int middle = first + (effort == Effort::kQuick ? 4 : 8);
  Float tail = 0;
  for (int n = kLastFactorial - (kLastFactorial - first) % 2; n > middle; n -= 2)
    tail = inverse(n).high - z.high * tail;
  DoubleDouble sum = inverse(middle) - DoubleDouble(z.high * tail);
  for (int n = middle - 2; n >= first; n -= 2)
    sum = inverse(n) - z * sum;
  return sum;
}

/// The sine and the cosine of an angle that is finite.
class Turn
{
public:
  Turn(Float angle, Effort effort) noexcept : _effort(effort)
  {
    const Float near = std::abs(angle) < kLargestAngle ? angle : std::fmod(angle, 4 * kHalfPiParts[0]);
    const Float count = std::floor(near * kTwoOverPi + 0.5);
    _quarters = static_cast<Int>(count);
    _rest = DoubleDouble(near);
    for (int i = 0; i < 3 && count != 0; ++i)
      _rest = _rest - Product(count, kHalfPiParts[i]);
    _square = _rest * _rest;
  }

  DoubleDouble GetSine() const noexcept { return GetShifted(_quarters); }
  DoubleDouble GetCosine() const noexcept { return GetShifted(_quarters + 1); }

private:
  /// The sine of the rest and so many quarter turns.
  DoubleDouble GetShifted(Int quarters) const noexcept
  {
    const DoubleDouble value =
      quarters & 1 ? AlternatingSeries(0, _square, _effort) : _rest * AlternatingSeries(1, _square, _effort);
    return quarters & 2 ? -value : value;
  }

  Effort _effort;
  Int _quarters = 0;   // to the nearest number of them
  DoubleDouble _rest;  // at most an eighth of a turn
  DoubleDouble _square;
};

/// The square root of a value above 0.
DoubleDouble SquareRoot(const DoubleDouble& value) noexcept
{
  const Float near = std::sqrt(value.high);
  return DoubleDouble(near) + Quotient(value - Product(near, near), DoubleDouble(2 * near));
}

/// compute(effort) rounded, thoroughly computed if what is missing in a quick one could matter.
template <typename Compute>
Float RoundOnce(const Compute& compute) noexcept
{
  const DoubleDouble quick = compute(Effort::kQuick);
  const Float error = std::abs(quick.high) * kQuickError;
  const Float below = quick.high + (quick.low - error);
  const Float above = quick.high + (quick.low + error);
  return below == above ? below : compute(Effort::kThorough).Round();
}

}  // namespace

Float Sin(Float angle) noexcept
{
  if (!std::isfinite(angle) || std::abs(angle) < kSmallestAngle)
    return std::isfinite(angle) ? angle : std::sin(angle);
  return RoundOnce([&](Effort effort) { return Turn(angle, effort).GetSine(); });
}

Float Cos(Float angle) noexcept
{
  if (!std::isfinite(angle))
    return std::cos(angle);
  return RoundOnce([&](Effort effort) { return Turn(angle, effort).GetCosine(); });
}

Float Tan(Float angle) noexcept
{
  if (!std::isfinite(angle) || std::abs(angle) < kSmallestAngle)
    return std::isfinite(angle) ? angle : std::tan(angle);
  return RoundOnce(
    [&](Effort effort)
    {
      const Turn turn(angle, effort);
      return Quotient(turn.GetSine(), turn.GetCosine());
    });
}

// The inverse functions start from the C library's angle, and add what its own sine and cosine say is missing: a step of Newton's,
// whose error is that angle's squared. So what the library has in its last bits does not matter.

Float Asin(Float value) noexcept
{
  const Float near = std::asin(value);
  if (!(std::abs(value) < 1) || near == 0)
    return near;
  return RoundOnce(
    [&](Effort effort)
    {
      const Turn turn(near, effort);
      return DoubleDouble(near) + Quotient(DoubleDouble(value) - turn.GetSine(), turn.GetCosine());
    });
}

Float Acos(Float value) noexcept
{
  constexpr Float kHalf = 0.5;
  const Float near = std::acos(value);
  if (!(std::abs(value) < 1))
    return near;
  return RoundOnce(
    [&](Effort effort)
    {
      // Of a small angle the cosine tells little; half of it has a sine of the square root of this.
      const Turn turn(value > kHalf ? near / 2 : near, effort);
      const DoubleDouble sine = turn.GetSine();
      const DoubleDouble cosine = turn.GetCosine();
      if (value <= kHalf)
        return DoubleDouble(near) + Quotient(cosine - DoubleDouble(value), sine);
      const DoubleDouble missing = SquareRoot(DoubleDouble((1 - value) / 2)) - sine;
      return DoubleDouble(near) + Quotient(DoubleDouble(2) * missing, cosine);
    });
}

Float Atan(Float value) noexcept
{
  return Atan2(value, 1);
}

Float Atan2(Float y, Float x) noexcept
{
  const Float near = std::atan2(y, x);
  const Float largest = std::max(std::abs(y), std::abs(x));
  if (near == 0 || !(largest > kSmallestLength && largest < 1 / kSmallestLength))
    return near;
  return RoundOnce(
    [&](Effort effort)
    {
      const Turn turn(near, effort);
      const DoubleDouble sine = turn.GetSine();
      const DoubleDouble cosine = turn.GetCosine();
      const DoubleDouble aside = cosine * DoubleDouble(y) - sine * DoubleDouble(x);
      return DoubleDouble(near) + DoubleDouble(aside.high / (cosine.high * x + sine.high * y));
    });
}

Float Hypot(Float x, Float y) noexcept
{
  const DoubleDouble square = Product(x, x) + Product(y, y);
  const Float near = std::sqrt(square.high);
  if (!(near > kSmallestLength && near < 1 / kSmallestLength))
    return near;
  return SquareRoot(square).Round();
}

Float Cube(Float value) noexcept
{
  return (Product(value, value) * DoubleDouble(value)).Round();
}

}  // namespace q7z
