#pragma once

// Whole-number arithmetic on values that come from a file: nothing wraps.

#include "framework/types.h"

namespace q7z
{

/// sum = a + b. @return false, with sum untouched, when that does not fit 64 bits.
constexpr Bool CheckedAdd(Int a, Int b, Int& sum) noexcept
{
  return !__builtin_add_overflow(a, b, &sum);
}

/// product = a * b. @return false when that does not fit 64 bits.
constexpr Bool CheckedMultiply(Int a, Int b, Int& product) noexcept
{
  return !__builtin_mul_overflow(a, b, &product);
}

/// base + stride * index, the position of an element. @return false when that does not fit 64 bits.
constexpr Bool CheckedPosition(Int base, Int stride, Int index, Int& position) noexcept
{
  Int distance = 0;
  return CheckedMultiply(stride, index, distance) && CheckedAdd(base, distance, position);
}

}  // namespace q7z
