#pragma once

// What lies between two keys of a curve. The evaluation of a document asks here. Pure functions on curves.

#include "framework/rotation.h"
#include "host/scene/headlesstrack.h"

namespace q7z
{

/// The keys on both sides of a time; one key twice at its time and outside the curve.
struct KeyPair
{
  const HeadlessKey* left;
  const HeadlessKey* right;
  Float place;  ///< of the time between them, 0 to 1
};

/// @param curve  with at least one key.
KeyPair FindKeys(const HeadlessCurve& curve, Float seconds) noexcept;

/// A rotation between keys that carry a rotation mode: one turn at an even pace, the shorter way round. Three angles would pass a full
/// turn the long way. The tangents of spline keys belong to the angles and have no part in it.
/// @param curves  those of the three angles by slot, with at least one key; entries may be null.
/// @param angles  left alone when the curves are to be read one by one: at a key and outside the curves, where a key holds or has no
///   rotation mode, and where the three have their keys at different times.
void TurnBetweenKeys(const HeadlessCurve* const (&curves)[3], const HostTime& time, RotationOrder order, Vector& angles) noexcept;

}  // namespace q7z
