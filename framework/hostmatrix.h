#pragma once

// HostMatrix: an offset and three axis vectors, the columns of a 3-by-3 block. A point p goes to
// offset + p.x * axisX + p.y * axisY + p.z * axisZ. Twelve 64-bit floats, no invariant.

#include "framework/vector.h"

namespace q7z
{

struct HostMatrix
{
  Vector offset;
  Vector axisX{1, 0, 0};
  Vector axisY{0, 1, 0};
  Vector axisZ{0, 0, 1};

  /// The point p mapped, offset included.
  constexpr Vector operator*(const Vector& p) const noexcept { return offset + TransformDirection(p); }

  /// The direction v mapped, without the offset.
  constexpr Vector TransformDirection(const Vector& v) const noexcept { return axisX * v.x + axisY * v.y + axisZ * v.z; }

  /// (A * B) applied to p is A applied to (B applied to p).
  constexpr HostMatrix operator*(const HostMatrix& b) const noexcept
  {
    return {*this * b.offset, TransformDirection(b.axisX), TransformDirection(b.axisY), TransformDirection(b.axisZ)};
  }

  /// The plain affine inverse; the identity when the block is singular (or not finite).
  HostMatrix GetInverse() const noexcept;

  Float GetDeterminant() const noexcept { return axisX.Dot(axisY.Cross(axisZ)); }

  friend constexpr Bool operator==(const HostMatrix&, const HostMatrix&) noexcept = default;
};

static_assert(sizeof(HostMatrix) == 96);

}  // namespace q7z
