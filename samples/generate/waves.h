#pragma once

// Arithmetic of the generators that gives the same bits on every machine: sums, products and square roots only, since the sines
// of two libraries may differ in their last bit, and generated files are compared byte for byte.

#include "framework/types.h"

#include <cmath>

namespace q7z::generate
{

/// The sine of an angle told in whole turns (0.25 is a right angle), to about eleven digits; exact at quarters of a turn.
inline Float SineOfTurns(Float turns)
{
  turns -= std::floor(turns + 0.5);
  if (turns > 0.25)
    turns = 0.5 - turns;
  else if (turns < -0.25)
    turns = -0.5 - turns;
  if (turns == 0.25 || turns == -0.25)
    return turns * 4;
  const Float x = turns * 6.283185307179586;
  // The series of the sine up to x^15, which at a right angle is off by 6e-12.
  Float sum = 1;
  for (int k = 15; k > 1; k -= 2)
    sum = 1 - x * x / (k * (k - 1)) * sum;
  return x * sum;
}

inline Float CosineOfTurns(Float turns)
{
  return SineOfTurns(turns + 0.25);
}

}  // namespace q7z::generate
