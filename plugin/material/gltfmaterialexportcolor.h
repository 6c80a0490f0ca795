#pragma once

// Colours as hue, saturation and value. Pure functions on values.

#include "framework/vector.h"

namespace q7z
{

/// x to the range 0 to 1; what is no number becomes 0.
constexpr Float ClampToUnit(Float x) noexcept
{
  return x > 0 ? (x < 1 ? x : 1) : 0;
}
constexpr Vector ClampToUnit(const Vector& v) noexcept
{
  return {ClampToUnit(v.x), ClampToUnit(v.y), ClampToUnit(v.z)};
}

/// Hue and saturation 0 to 1, value in the components' own range. Of a colour that is nearly grey the value is the smallest
/// component.
Vector RgbToHsv(const Vector& rgb) noexcept;

Vector HsvToRgb(const Vector& hsv) noexcept;

}  // namespace q7z
