#pragma once

// DoubleDouble: a number as the sum of two, the second at most half of the last bit of the first, which makes about 106 bits. The
// plain operations of the processor alone, each rounded as it stands there, so that all systems get the same bits.

#include "framework/types.h"

namespace q7z
{

/// T is Float, or several of them that are computed with at once.
template <typename T>
struct DoubleDoubleOf
{
  T high{};
  T low{};

  constexpr DoubleDoubleOf() noexcept = default;
  constexpr explicit DoubleDoubleOf(T value) noexcept : high(value) {}
  constexpr DoubleDoubleOf(T theHigh, T theLow) noexcept : high(theHigh), low(theLow) {}

  constexpr T Round() const noexcept { return high + low; }
  constexpr DoubleDoubleOf operator-() const noexcept { return {-high, -low}; }
};
using DoubleDouble = DoubleDoubleOf<Float>;

/// The exact sum of two numbers.
template <typename T>
constexpr DoubleDoubleOf<T> Sum(T a, T b) noexcept
{
  const T sum = a + b;
  const T ofB = sum - a;
  return {sum, (a - (sum - ofB)) + (b - ofB)};
}

/// The exact sum, for an a that is 0 or not below b in size.
template <typename T>
constexpr DoubleDoubleOf<T> SumOfOrdered(T a, T b) noexcept
{
  const T sum = a + b;
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
template <typename T>
constexpr DoubleDoubleOf<T> ProductOfParts(T a, const DoubleDoubleOf<T>& partsOfA, T b,
                                           const DoubleDoubleOf<T>& partsOfB) noexcept
{
  const DoubleDoubleOf<T>& x = partsOfA;
  const DoubleDoubleOf<T>& y = partsOfB;
  const T product = a * b;
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
