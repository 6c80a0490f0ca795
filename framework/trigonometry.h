#pragma once

// Trigonometry, for everything whose result can reach a file. The C libraries of the systems differ in the last bit of these
// functions; here the exact result is rounded once, but for one case in millions, and that by the same steps everywhere. So the
// same document gives the same bytes on every system. Angles are radians. Anything that is not finite gives what the C library gives.

#include "framework/types.h"

namespace q7z
{

Float Sin(Float angle) noexcept;
Float Cos(Float angle) noexcept;
Float Tan(Float angle) noexcept;

struct SineAndCosine
{
  Float sine;
  Float cosine;
};
/// Both for little more than the price of one.
SineAndCosine SinCos(Float angle) noexcept;

/// @param value  from -1 to 1.
Float Asin(Float value) noexcept;
Float Acos(Float value) noexcept;
Float Atan(Float value) noexcept;
/// The angle of the point (x, y), from -pi to pi.
Float Atan2(Float y, Float x) noexcept;

/// The length of (x, y), each of at most 1e150.
Float Hypot(Float x, Float y) noexcept;

/// value * value * value, rounded once.
Float Cube(Float value) noexcept;

}  // namespace q7z
