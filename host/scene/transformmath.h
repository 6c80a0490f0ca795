#pragma once

// How an object's local matrix and its position, rotation and scale follow from each other. Pure functions on values.

#include "host/scene/headlessobject.h"

namespace q7z
{

/// base matrix * (position, rotation in the order, scale times base scale).
HostMatrix ComposeLocalMatrix(const BaseTransform* base, const TransformVectors& vectors, RotationOrder order) noexcept;

/// The vectors of what the base matrix leaves of a local matrix: position = offset, scale = axis lengths with X negated for a
/// mirror, rotation from what is left after X was negated.
TransformVectors DecomposeLocalMatrix(const BaseTransform* base, const HostMatrix& matrix, RotationOrder order) noexcept;
/// The scale of these alone, without the work that the angles are.
Vector DecomposeScale(const BaseTransform* base, const HostMatrix& matrix) noexcept;

}  // namespace q7z
