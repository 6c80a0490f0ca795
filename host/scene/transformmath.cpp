#include "host/scene/transformmath.h"

namespace q7z
{

namespace
{

/// Lengths over the base's scale, where that has one to divide by.
Vector DivideByScale(const Vector& lengths, const Vector& baseScale) noexcept
{
  Vector result;
  for (int i = 0; i < 3; ++i)
    result[i] = baseScale[i] != 0 ? lengths[i] / baseScale[i] : lengths[i];
  return result;
}

/// All but the rotation. rest becomes what has it: what the base leaves of the matrix, with X turned round in a mirror.
TransformVectors TakePositionAndScale(const BaseTransform* base, const HostMatrix& matrix, HostMatrix& rest) noexcept
{
  rest = base ? base->matrix.GetInverse() * matrix : matrix;
  TransformVectors vectors;
  vectors.position = rest.offset;
  vectors.scale = {rest.axisX.GetLength(), rest.axisY.GetLength(), rest.axisZ.GetLength()};
  if (rest.GetDeterminant() < 0)
  {
    vectors.scale.x = -vectors.scale.x;
    rest.axisX = -rest.axisX;
  }
  if (base)
    vectors.scale = DivideByScale(vectors.scale, base->scale);
  return vectors;
}

}  // namespace

HostMatrix ComposeLocalMatrix(const BaseTransform* base, const TransformVectors& vectors, RotationOrder order) noexcept
{
  const Vector scale = base ? vectors.scale.Scaled(base->scale) : vectors.scale;
  HostMatrix matrix = AnglesToMatrix(vectors.rotation, order);
  matrix.offset = vectors.position;
  matrix.axisX = matrix.axisX * scale.x;
  matrix.axisY = matrix.axisY * scale.y;
  matrix.axisZ = matrix.axisZ * scale.z;
  return base ? base->matrix * matrix : matrix;
}

TransformVectors DecomposeLocalMatrix(const BaseTransform* base, const HostMatrix& matrix, RotationOrder order) noexcept
{
  HostMatrix rest;
  TransformVectors vectors = TakePositionAndScale(base, matrix, rest);
  vectors.rotation = MatrixToAnglesInOrder(rest, order);
  return vectors;
}

Vector DecomposeScale(const BaseTransform* base, const HostMatrix& matrix) noexcept
{
  HostMatrix rest;
  return TakePositionAndScale(base, matrix, rest).scale;
}

}  // namespace q7z
