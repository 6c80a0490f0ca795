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
  HostMatrix rest = base ? base->matrix.GetInverse() * matrix : matrix;
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
  vectors.rotation = MatrixToAnglesInOrder(rest, order);
  return vectors;
}

}  // namespace q7z
