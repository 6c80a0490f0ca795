#include "framework/hostmatrix.h"

#include <cmath>

namespace q7z
{

HostMatrix HostMatrix::GetInverse() const noexcept
{
  const Vector crossX = axisY.Cross(axisZ);
  const Float determinant = axisX.Dot(crossX);
  if (determinant == 0 || !std::isfinite(determinant))
    return HostMatrix();
  const Float factor = 1 / determinant;
  if (!std::isfinite(factor))
    return HostMatrix();
  const Vector rowX = crossX * factor;
  const Vector rowY = axisZ.Cross(axisX) * factor;
  const Vector rowZ = axisX.Cross(axisY) * factor;
  return {-Vector{rowX.Dot(offset), rowY.Dot(offset), rowZ.Dot(offset)},
          {rowX.x, rowY.x, rowZ.x},
          {rowX.y, rowY.y, rowZ.y},
          {rowX.z, rowY.z, rowZ.z}};
}

}  // namespace q7z
