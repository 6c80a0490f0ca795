// The conversion of transforms into the host's space: values in, values out.

#include <algorithm>
#include <cmath>

#include "plugin/document/gltfnode.h"

namespace q7z
{

namespace
{

/// Below this a rotation counts as a half turn: its w is so near to 0 that rounding decides the differences that carry the signs.
constexpr Float kHalfTurnW = 1e-6;

/// Z mirrored. A difference, not a negation, so that no zero turns negative.
Vector MirrorZ(const Vector& v) noexcept
{
  return {v.x, v.y, 0.0 - v.z};
}

/// F * matrix * F for the mirror F = diag(1, 1, -1); the offset stays.
HostMatrix MirrorBlock(const HostMatrix& matrix) noexcept
{
  const Vector z = matrix.axisZ;
  return {.offset = matrix.offset,
          .axisX = MirrorZ(matrix.axisX),
          .axisY = MirrorZ(matrix.axisY),
          .axisZ = {0.0 - z.x, 0.0 - z.y, z.z}};
}

Vector ConvertOffset(const Vector& offset, Float scale, Bool flipZ) noexcept
{
  return (flipZ ? MirrorZ(offset) : offset) * scale;
}

/// The block's transpose, without an offset.
HostMatrix Transpose(const HostMatrix& m) noexcept
{
  return {.offset = {},
          .axisX = {m.axisX.x, m.axisY.x, m.axisZ.x},
          .axisY = {m.axisX.y, m.axisY.y, m.axisZ.y},
          .axisZ = {m.axisX.z, m.axisY.z, m.axisZ.z}};
}

/// The rotation of a quaternion, taken as it is: one that has not length 1 also scales or shears.
HostMatrix RotationOf(const Vector4& q) noexcept
{
  return {.offset = {},
          .axisX = {1 - 2 * (q.y * q.y + q.z * q.z), 2 * (q.x * q.y + q.z * q.w), 2 * (q.x * q.z - q.y * q.w)},
          .axisY = {2 * (q.x * q.y - q.z * q.w), 1 - 2 * (q.x * q.x + q.z * q.z), 2 * (q.y * q.z + q.x * q.w)},
          .axisZ = {2 * (q.x * q.z + q.y * q.w), 2 * (q.y * q.z - q.x * q.w), 1 - 2 * (q.x * q.x + q.y * q.y)}};
}

Vector Normalize(const Vector& v) noexcept
{
  const Float length = v.GetLength();
  return length > 0 ? v * (1 / length) : v;
}

/// Half of the root of what the diagonal leaves for one of the four values.
Float HalfRoot(Float value) noexcept
{
  return std::sqrt(std::max(0.0, value)) / 2;
}

/// The signs of a half turn's axis. The differences have vanished, so the largest value takes what sign there is and the others
/// follow from the sums of opposite elements, each 4 times the product of two values.
void SignHalfTurn(const HostMatrix& m, const Vector& differences, Vector4& q) noexcept
{
  const Float xy = m.axisX.y + m.axisY.x;
  const Float xz = m.axisX.z + m.axisZ.x;
  const Float yz = m.axisY.z + m.axisZ.y;
  if (q.x >= q.y && q.x >= q.z)
  {
    q.x = std::copysign(q.x, differences.x);
    q.y = std::copysign(q.y, xy * q.x);
    q.z = std::copysign(q.z, xz * q.x);
  }
  else if (q.y >= q.z)
  {
    q.y = std::copysign(q.y, differences.y);
    q.x = std::copysign(q.x, xy * q.y);
    q.z = std::copysign(q.z, yz * q.y);
  }
  else
  {
    q.z = std::copysign(q.z, differences.z);
    q.x = std::copysign(q.x, xz * q.z);
    q.y = std::copysign(q.y, yz * q.z);
  }
}

/// The quaternion of a block, of length 1. The block of a pure rotation comes back from it; one with a mirror or a shear gives a
/// rotation that has no particular meaning.
Vector4 QuaternionOf(const HostMatrix& matrix) noexcept
{
  const HostMatrix m{.offset = {},
                     .axisX = Normalize(matrix.axisX),
                     .axisY = Normalize(matrix.axisY),
                     .axisZ = Normalize(matrix.axisZ)};
  const Float a = m.axisX.x;
  const Float b = m.axisY.y;
  const Float c = m.axisZ.z;
  Vector4 q{HalfRoot(1 + a - b - c), HalfRoot(1 - a + b - c), HalfRoot(1 - a - b + c), HalfRoot(1 + a + b + c)};
  const Vector differences{m.axisY.z - m.axisZ.y, m.axisZ.x - m.axisX.z, m.axisX.y - m.axisY.x};
  if (q.w > kHalfTurnW)
  {
    q.x = std::copysign(q.x, differences.x);
    q.y = std::copysign(q.y, differences.y);
    q.z = std::copysign(q.z, differences.z);
  }
  else
    SignHalfTurn(m, differences, q);
  // Never 0: the four radicands add up to 4.
  const Float factor = 1 / std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w);
  return {q.x * factor, q.y * factor, q.z * factor, q.w * factor};
}

}  // namespace

HostMatrix ConvertMatrix(const HostMatrix& matrix, Float scale, Bool flipZ) noexcept
{
  HostMatrix result = matrix;
  if (flipZ)
  {
    // The mirror goes around the rotation alone, F * Rc * F * Sres, with what the rotation leaves of the block behind it. With a
    // mirror or a shear in the matrix that is not F * M * F, deliberately.
    const HostMatrix rotation = RotationOf(QuaternionOf(matrix));
    result = MirrorBlock(rotation) * (Transpose(rotation) * matrix);
  }
  result.offset = ConvertOffset(matrix.offset, scale, flipZ);
  return result;
}

HostMatrix ConvertNodeTransform(const GltfNode& node, Float scale, Bool flipZ) noexcept
{
  if (node.hasMatrix)
    return ConvertMatrix(node.matrix, scale, flipZ);
  const HostMatrix rotation = RotationOf(node.rotation);
  // Without the mirror the rotation is inverted. That asymmetry, against the matrix form as well, is deliberate.
  HostMatrix result = flipZ ? MirrorBlock(rotation) : Transpose(rotation);
  result.axisX = result.axisX * node.scale.x;
  result.axisY = result.axisY * node.scale.y;
  result.axisZ = result.axisZ * node.scale.z;
  result.offset = ConvertOffset(node.translation, scale, flipZ);
  return result;
}

}  // namespace q7z
