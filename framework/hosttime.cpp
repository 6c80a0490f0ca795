#include "framework/hosttime.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace q7z
{

namespace
{

constexpr Float kTicksPerSecond = 1000;
constexpr Float kLargestSeconds = 1e15;
constexpr Float kLargestInteger = 2147483520.0;

/// For a value of at most 1e18 either way.
Float Floor(Float value) noexcept
{
  const Float towardsZero = static_cast<Float>(static_cast<Int>(value));
  return towardsZero > value ? towardsZero - 1 : towardsZero;
}

/// Beyond 32 bits the common divisor is found in floating point.
HostTime ReduceLarge(Float ticks, Float magnitude) noexcept
{
  const Float weight = magnitude < kTicksPerSecond ? 1e15 : 1e18 / magnitude;
  const Float denominator = weight < 1 ? weight * kTicksPerSecond : kTicksPerSecond;
  Float a = (weight < 1 ? weight : 1) * magnitude;
  Float b = denominator;
  while (b >= 0.5)
  {
    const Float rest = std::fmod(a, b);
    a = b;
    b = rest;
  }
  const Float numerator = (weight < 1 ? weight : 1) * ticks;
  return {numerator / a, denominator / a};
}

/// The common divisor is made of the primes of 1000, which is 2^3 * 5^3. Without a branch: which ones it has is anybody's guess.
HostTime ReduceSmall(Int32 ticks) noexcept
{
  constexpr Int32 kPowersOfFive[] = {1, 5, 25, 125};
  const int twos = std::min(std::countr_zero(static_cast<UInt32>(ticks)), 3);
  const int fives = (ticks % 5 == 0) + (ticks % 25 == 0) + (ticks % 125 == 0);
  const Int32 divisor = kPowersOfFive[fives] << twos;
  const Int32 numerator = ticks / divisor;
  const Int32 denominator = 1000 / divisor;
  return {static_cast<Float>(numerator), static_cast<Float>(denominator)};
}

}  // namespace

Bool operator==(const HostTime& a, const HostTime& b) noexcept
{
  if (a.numerator == b.numerator && a.denominator == b.denominator)
    return true;
  return std::floor(a.numerator * b.denominator) == std::floor(b.numerator * a.denominator);
}

HostTime HostTimeFromSeconds(Float seconds) noexcept
{
  if (std::isnan(seconds))
    return {0, 1};
  const Float clamped = seconds < -kLargestSeconds ? -kLargestSeconds : seconds > kLargestSeconds ? kLargestSeconds : seconds;
  const Float ticks = Floor(clamped * kTicksPerSecond + 0.5);
  const Float magnitude = std::fabs(ticks);
  if (magnitude < 0.001)
    return {0, 1};
  if (magnitude >= kLargestInteger)
    return ReduceLarge(ticks, magnitude);
  return ReduceSmall(static_cast<Int32>(ticks));
}

Int32 FrameOfHostTime(const HostTime& time, Float framesPerSecond) noexcept
{
  const Float frame = std::floor(framesPerSecond * time.numerator) / std::floor(time.denominator);
  if (std::isnan(frame))
    return 0;
  if (frame >= INT32_MAX)
    return INT32_MAX;
  return frame <= INT32_MIN ? INT32_MIN : static_cast<Int32>(frame);
}

}  // namespace q7z
