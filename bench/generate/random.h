#pragma once

// Numbers for generated inputs: the same from the same start, on every machine.

#include "framework/types.h"

namespace q7z::generate
{

/// A Weyl sequence through a 64-bit mixer. A value, of use to one thread.
class Random
{
public:
  explicit Random(UInt start) : _state(start) {}

  UInt NextBits()
  {
    _state += 0x9E3779B97F4A7C15;
    UInt bits = _state;
    bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
    return bits ^ bits >> 31;
  }

  /// From low up to, but not including, high, in steps of 2^-24 of the range.
  Float Next(Float low, Float high) { return low + (high - low) * static_cast<Float>(NextBits() >> 40) / 16777216; }

private:
  UInt _state;
};

}  // namespace q7z::generate
