#pragma once

// HostTime: the host's rational time, in seconds.

#include "framework/types.h"

namespace q7z
{

struct HostTime
{
  Float numerator = 0;
  Float denominator = 1;

  /// numerator / denominator, and 0 when the denominator is 0.
  Float GetSeconds() const noexcept { return denominator == 0 ? 0 : numerator / denominator; }

  /// Equal parts, or equal floors of the cross products a.numerator * b.denominator and b.numerator * a.denominator.
  friend Bool operator==(const HostTime& a, const HostTime& b) noexcept;
};

/// Quantised to milliseconds and reduced; clamped to 1e15 seconds either way. Not-a-number gives 0.
HostTime HostTimeFromSeconds(Float seconds) noexcept;

/// The frame that the time lies in: floor(fps * numerator) / floor(denominator), truncated; never rounded. A denominator whose
/// floor is 0, a rate of 0 or a result outside 32 bits gives the nearest 32-bit number, or 0 for not-a-number.
Int32 FrameOfHostTime(const HostTime& time, Float framesPerSecond) noexcept;

}  // namespace q7z
