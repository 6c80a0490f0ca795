#include "framework/hosttime.h"

#include <cmath>
#include <numeric>

namespace q7z
{

namespace
{

constexpr Float kTicksPerSecond = 1000;
constexpr Float kLargestSeconds = 1e15;
constexpr Float kLargestInteger = 2147483520.0;

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

}  // namespace

Float HostTime::GetSeconds() const noexcept
{
  return denominator == 0 ? 0 : numerator / denominator;
}

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
  const Float ticks = std::floor(clamped * kTicksPerSecond + 0.5);
  const Float magnitude = std::fabs(ticks);
  if (magnitude < 0.001)
    return {0, 1};
  if (magnitude >= kLargestInteger)
    return ReduceLarge(ticks, magnitude);
  const Float divisor = static_cast<Float>(std::gcd(static_cast<Int>(magnitude), Int(1000)));
  return {ticks / divisor, kTicksPerSecond / divisor};
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
