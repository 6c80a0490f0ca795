#pragma once

// Rotations as three angles (heading, pitch, bank in the default order), as blocks of a HostMatrix, and as quaternions in glTF's
// order x, y, z, w. Pure functions on values; angles in radians.

#include "framework/hostmatrix.h"
#include "framework/vector.h"

namespace q7z
{

/// The host's code of the order in which the three angles apply, 0 to 6; 6 is the default.
using RotationOrder = Int32;
inline constexpr RotationOrder kDefaultRotationOrder = 6;

/// A matrix with zero offset. An order outside 0 to 6 counts as 6.
HostMatrix AnglesToMatrix(const Vector& angles, RotationOrder order) noexcept;

/// Heading and bank from 0 to 2 pi, pitch from -pi/2 to pi/2, in order 6.
/// @param normalized  the axes have unit length already.
Vector MatrixToAngles(const HostMatrix& matrix, RotationOrder order, Bool normalized) noexcept;
/// The same for many, in the default order and not normalized, each in less time.
void MatricesToAngles(const HostMatrix* matrices, Int count, Vector* angles) noexcept;

/// The angles of order 6 brought into another order, for objects that keep one of their own.
Vector MatrixToAnglesInOrder(const HostMatrix& matrix, RotationOrder order) noexcept;

/// x, y, z, w with a negated w; flipZ mirrors Z.
Vector4 AnglesToQuaternion(const Vector& angles, Bool flipZ) noexcept;

/// The angles of order 6 of a quaternion as a file stores it; flipZ mirrors Z. Not normalised first.
Vector QuaternionToAngles(const Vector4& quaternion, Bool flipZ) noexcept;
/// The same for many, each in less time.
void QuaternionsToAngles(const Vector4* quaternions, Int count, Bool flipZ, Vector* angles) noexcept;

/// The one of the two equivalent forms of current that lies nearer to previous, next to it by whole turns.
Vector OptimalAngles(const Vector& previous, const Vector& current, RotationOrder order) noexcept;

}  // namespace q7z
