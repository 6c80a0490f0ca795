#pragma once

// DoubleDouble: a number as the sum of two, the second at most half of the last bit of the first, which makes about 106 bits. The
// plain operations of the processor alone, each rounded as it stands there, so that all systems get the same bits.

#include "framework/types.h"

namespace q7z
{

struct DoubleDouble
{
  Float high = 0;
  Float low = 0;

  constexpr DoubleDouble() noexcept = default;
  constexpr explicit DoubleDouble(Float value) noexcept : high(value) {}
  constexpr DoubleDouble(Float theHigh, Float theLow) noexcept : high(theHigh), low(theLow) {}

  constexpr Float Round() const noexcept { return high + low; }
  constexpr DoubleDouble operator-() const noexcept { return {-high, -low}; }
};

/// The exact sum of two numbers.
constexpr DoubleDouble Sum(Float a, Float b) noexcept
{
  const Float sum = a + b;
  const Float ofB = sum - a;
  return {sum, (a - (sum - ofB)) + (b - ofB)};
}

/// The exact sum, for an a that is 0 or not below b in size.
constexpr DoubleDouble SumOfOrdered(Float a, Float b) noexcept
{
  const Float sum = a + b;
  return {sum, b - (sum - a)};
}

/// A number as the sum of two of at most 26 bits each, so that their products are exact.
constexpr DoubleDouble Split(Float a) noexcept
{
  constexpr Float kFactor = 0x1p27 + 1;
  const Float scaled = kFactor * a;
  const Float high = scaled - (scaled - a);
  return {high, a - high};
}

/// The exact product of two numbers whose parts are told, as long as no part of it is too small or too large to be held.
constexpr DoubleDouble ProductOfParts(Float a, const DoubleDouble& partsOfA, Float b, const DoubleDouble& partsOfB) noexcept
{
  const DoubleDouble& x = partsOfA;
  const DoubleDouble& y = partsOfB;
  const Float product = a * b;
  return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
}

/// The exact product of two numbers, as long as no part of it is too small or too large to be held.
constexpr DoubleDouble Product(Float a, Float b) noexcept
{
  return ProductOfParts(a, Split(a), b, Split(b));
}

constexpr DoubleDouble operator+(const DoubleDouble& a, const DoubleDouble& b) noexcept
{
  const DoubleDouble high = Sum(a.high, b.high);
  const DoubleDouble low = Sum(a.low, b.low);
  const DoubleDouble sum = SumOfOrdered(high.high, high.low + low.high);
  return SumOfOrdered(sum.high, sum.low + low.low);
}

constexpr DoubleDouble operator-(const DoubleDouble& a, const DoubleDouble& b) noexcept
{
  return a + -b;
}

constexpr DoubleDouble operator*(const DoubleDouble& a, const DoubleDouble& b) noexcept
{
  const DoubleDouble product = Product(a.high, b.high);
  return SumOfOrdered(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr DoubleDouble Quotient(const DoubleDouble& a, const DoubleDouble& b) noexcept
{
  const Float near = a.high / b.high;
  const DoubleDouble rest = a - b * DoubleDouble(near);
  return SumOfOrdered(near, rest.high / b.high);
}

}  // namespace q7z
