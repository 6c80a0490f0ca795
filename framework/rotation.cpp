#include "framework/rotation.h"

#include <cmath>
#include <utility>

#include "framework/trigonometry.h"

namespace q7z
{

namespace
{

constexpr Float kPi = 3.141592653589793;
constexpr Float kTwoPi = 6.283185307179586;
constexpr Float kHalfPi = kPi / 2;
constexpr Float kPoleLimit = 1e-5;
constexpr Float kOrderPoleLimit = 1e-14;

// The host's rotations about one axis. Their rows are told; a HostMatrix holds columns.
HostMatrix Rx(Float angle) noexcept
{
  const auto [s, c] = SinCos(angle);
  return {{}, {1, 0, 0}, {0, c, -s}, {0, s, c}};
}

HostMatrix Ry(Float angle) noexcept
{
  const auto [s, c] = SinCos(angle);
  return {{}, {c, 0, s}, {0, 1, 0}, {-s, 0, c}};
}

HostMatrix Rz(Float angle) noexcept
{
  const auto [s, c] = SinCos(angle);
  return {{}, {c, -s, 0}, {s, c, 0}, {0, 0, 1}};
}

Vector Normalize(const Vector& axis) noexcept
{
  const Float length = axis.GetLength();
  return axis * (length == 0 ? 0 : 1 / length);
}

/// acos with everything beyond the ends held at them.
Float ClampedAcos(Float value) noexcept
{
  return value >= 1 ? 0 : value <= -1 ? kPi : Acos(value);
}

/// Angles of a matrix whose pitch is at a pole: all turning about the vertical goes to the bank.
Vector AnglesAtPole(const HostMatrix& m) noexcept
{
  const Float bank = ClampedAcos(m.axisX.x);
  if (m.axisZ.y > 0)
    return {0, kHalfPi, m.axisX.z < 0 ? kTwoPi - bank : bank};
  return {0, -kHalfPi, m.axisX.z > 0 ? kTwoPi - bank : bank};
}

Vector WrapDifference(const Vector& angles, const Vector& previous) noexcept
{
  Vector wrapped;
  for (int i = 0; i < 3; ++i)
  {
    const Float turns = (angles[i] - previous[i]) / kTwoPi;
    const Float rest = kTwoPi * (turns - std::floor(turns));
    wrapped[i] = rest >= kPi ? rest - kTwoPi : rest;
  }
  return wrapped;
}

Vector OtherForm(const Vector& angles, RotationOrder order) noexcept
{
  switch (order)
  {
    case 0:
    case 3: return {kPi - angles.x, kPi + angles.y, angles.z + kPi};
    case 1:
    case 4: return {angles.x + kPi, angles.y + kPi, kPi - angles.z};
    default: return {angles.x + kPi, kPi - angles.y, angles.z + kPi};
  }
}

Float SumOfAbsolutes(const Vector& v) noexcept
{
  return std::fabs(v.x) + std::fabs(v.y) + std::fabs(v.z);
}

/// Which axis turns first (outermost in the product), second and third, and which angle each takes.
struct AxisOrder
{
  int axes[3];    // 0 x, 1 y, 2 z
  int angles[3];  // slots
};

constexpr AxisOrder kAxisOrders[] = {
  {{2, 0, 1}, {2, 0, 1}}, {{0, 2, 1}, {0, 2, 1}}, {{0, 1, 2}, {0, 1, 2}}, {{1, 0, 2}, {1, 0, 2}},
  {{1, 2, 0}, {1, 2, 0}}, {{2, 1, 0}, {2, 1, 0}}, {{1, 0, 2}, {0, 1, 2}},
};

}  // namespace

HostMatrix AnglesToMatrix(const Vector& angles, RotationOrder order) noexcept
{
  if (angles == Vector())
    return HostMatrix();
  const AxisOrder& axisOrder = kAxisOrders[order >= 0 && order <= 6 ? order : kDefaultRotationOrder];
  HostMatrix product;
  for (int i = 0; i < 3; ++i)
  {
    const Float angle = angles[axisOrder.angles[i]];
    const int axis = axisOrder.axes[i];
    const HostMatrix turn = axis == 0 ? Rx(angle) : axis == 1 ? Ry(angle) : Rz(angle);
    product = i == 0 ? turn : product * turn;
  }
  return product;
}

Vector MatrixToAngles(const HostMatrix& matrix, RotationOrder, Bool normalized) noexcept
{
  HostMatrix m = matrix;
  if (!normalized)
  {
    m.axisX = Normalize(m.axisX);
    m.axisY = Normalize(m.axisY);
    m.axisZ = Normalize(m.axisZ);
  }
  const Float t = std::sqrt(m.axisZ.z * m.axisZ.z + m.axisZ.x * m.axisZ.x);
  if (t < kPoleLimit)
    return AnglesAtPole(m);

  const Float u = m.axisZ.x / t;
  const Float a = u >= 1 ? kHalfPi : u <= -1 ? -kHalfPi : Asin(u);
  Float heading = m.axisZ.z > 0 ? -a : a + kPi;
  if (heading < 0)
    heading += kTwoPi;
  const Float pitch = Atan(m.axisZ.y / t);
  const auto [s, c] = SinCos(heading);
  const Float bank = ClampedAcos(m.axisX.x * c + m.axisX.z * s);
  return {heading, pitch, m.axisX.y > 0 ? kTwoPi - bank : bank};
}

Vector MatrixToAnglesInOrder(const HostMatrix& matrix, RotationOrder order) noexcept
{
  if (order < 0 || order >= kDefaultRotationOrder)
    return MatrixToAngles(matrix, kDefaultRotationOrder, false);
  const Vector columns[3] = {Normalize(matrix.axisX), Normalize(matrix.axisY), Normalize(matrix.axisZ)};
  // Component (row, column) of the block.
  const auto at = [&](int row, int column) { return columns[column][row]; };
  const AxisOrder& axisOrder = kAxisOrders[order];
  const int i = axisOrder.axes[0];
  const int j = axisOrder.axes[1];
  const int k = axisOrder.axes[2];
  // Signs of the product R_i * R_j * R_k of turns in the host's sense; its component (i, k) holds the middle angle alone.
  const Float sign = (j - i + 3) % 3 == 1 ? -1 : 1;
  const Float cosine = Hypot(at(i, i), at(i, j));
  const Float middle = Atan2(sign * at(i, k), cosine);
  // At a pole the first and the last angle turn about one axis; all of it goes to the last.
  const Float first = cosine > kOrderPoleLimit ? Atan2(-sign * at(j, k), at(k, k)) : 0;
  // With the first turn taken off, row j is that of the last turn alone. So near a pole, where the first angle is uncertain, the
  // last makes up for its error.
  const auto [sine, c] = SinCos(first);
  const Float s = sign * sine;
  const Float last = Atan2(sign * (c * at(j, i) + s * at(k, i)), c * at(j, j) + s * at(k, j));
  Vector angles;
  angles[axisOrder.angles[0]] = first;
  angles[axisOrder.angles[1]] = middle;
  angles[axisOrder.angles[2]] = last;
  return angles;
}

Vector4 AnglesToQuaternion(const Vector& angles, Bool flipZ) noexcept
{
  const Float a0 = flipZ ? -angles.x : angles.x;
  const Float a1 = flipZ ? -angles.y : angles.y;
  const auto [s0, c0] = SinCos(a0 / 2);
  const auto [s1, c1] = SinCos(a1 / 2);
  const auto [s2, c2] = SinCos(angles.z / 2);
  const Float w = c2 * c0 * c1 - s2 * s0 * s1;
  const Float x = c2 * c0 * s1 - s2 * c1 * s0;
  const Float y = c2 * c1 * s0 + s2 * c0 * s1;
  const Float z = c2 * s0 * s1 + s2 * c0 * c1;
  const Float n = std::sqrt(w * w + x * x + y * y + z * z);
  return {x / n, y / n, z / n, -w / n};
}

Vector QuaternionToAngles(const Vector4& quaternion, Bool flipZ) noexcept
{
  const Float x = quaternion.x;
  const Float y = quaternion.y;
  const Float z = flipZ ? -quaternion.z : quaternion.z;
  const Float w = quaternion.w;
  HostMatrix m;
  m.axisX = {1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)};
  m.axisY = {2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x)};
  m.axisZ = {2 * (x * z - w * y), 2 * (w * x + y * z), 1 - 2 * (x * x + y * y)};
  return MatrixToAngles(m, kDefaultRotationOrder, false);
}

Vector OptimalAngles(const Vector& previous, const Vector& current, RotationOrder order) noexcept
{
  const Vector own = WrapDifference(current, previous);
  const Vector other = WrapDifference(OtherForm(current, order), previous);
  return previous + (SumOfAbsolutes(other) < SumOfAbsolutes(own) ? other : own);
}

}  // namespace q7z
