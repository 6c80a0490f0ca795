#include "plugin/export/gltfexporttransform.h"

#include <cmath>

#include "framework/rotation.h"

namespace q7z
{

namespace
{

constexpr Float kIdentityTolerance = 0.0001;

// Half a turn. The sine is the one that the number nearest to pi has.
constexpr Float kHalfTurnSine = 1.2246467991473532e-16;
constexpr Float kHalfTurnCosine = -1.0;

HostMatrix MakeScale(const Vector& s) noexcept
{
  return {{}, {s.x, 0, 0}, {0, s.y, 0}, {0, 0, s.z}};
}

// A rotation of half a turn about Y, as the host turns.
constexpr HostMatrix MakeHalfTurn() noexcept
{
  return {{}, {kHalfTurnCosine, 0, kHalfTurnSine}, {0, 1, 0}, {-kHalfTurnSine, 0, kHalfTurnCosine}};
}

// Takes the signs of the scale out of the axes, so that what is left turns and does not mirror.
HostMatrix RemoveScaleSigns(const HostMatrix& matrix, const Vector& scale) noexcept
{
  const Vector magnitude{std::abs(scale.x), std::abs(scale.y), std::abs(scale.z)};
  return matrix * MakeScale(scale).GetInverse() * MakeScale(magnitude);
}

}  // namespace

ExportedTransform MakeExportedTransform(const HostMatrix& matrix, const Vector& scale, const TransformRules& rules) noexcept
{
  HostMatrix turned = RemoveScaleSigns(matrix, scale);
  // A file's camera looks along -Z, the host's along Z; the mirror turns the one into the other.
  if (rules.isCamera && !rules.flipZ)
    turned = turned * MakeHalfTurn();
  const Float fz = rules.flipZ ? -1.0 : 1.0;
  ExportedTransform transform;
  transform.translation = Vector{matrix.offset.x, matrix.offset.y, fz * matrix.offset.z} * rules.exportScale;
  transform.rotation = AnglesToQuaternion(MatrixToAngles(turned, kDefaultRotationOrder, false), rules.flipZ);
  transform.scale = scale;
  return transform;
}

Bool IsIdentity(const HostMatrix& matrix) noexcept
{
  const Vector x = matrix.axisX - Vector{1, 0, 0};
  const Vector y = matrix.axisY - Vector{0, 1, 0};
  const Vector z = matrix.axisZ - Vector{0, 0, 1};
  return std::sqrt(matrix.offset.Dot(matrix.offset)) < kIdentityTolerance &&
         std::sqrt(x.Dot(x) + y.Dot(y) + z.Dot(z)) < kIdentityTolerance;
}

}  // namespace q7z
