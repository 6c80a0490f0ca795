#include "framework/rotation.h"

#include <algorithm>
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

/// What the angles of a matrix are made of: axes of length 1. What the third axis could add is known.
struct Frame
{
  Vector axisX;
  Vector axisZ;
};

constexpr Int kFrames = 32;  // to be worked on at once

/// Of a frame whose pitch is at a pole: all turning about the vertical goes to the bank.
Vector AnglesAtPole(const Frame& frame) noexcept
{
  const Float bank = ClampedAcos(frame.axisX.x);
  if (frame.axisZ.y > 0)
    return {0, kHalfPi, frame.axisX.z < 0 ? kTwoPi - bank : bank};
  return {0, -kHalfPi, frame.axisX.z > 0 ? kTwoPi - bank : bank};
}

/// In the default order. Each step is taken for all of them, since within one of them a step must wait for that before it.
/// @param count  kFrames at most.
void FramesToAngles(const Frame* frames, Int count, Vector* angles) noexcept
{
  Float levels[kFrames];  // the length of what axisZ has beside the vertical
  Bool isPole[kFrames];   // those angles are made at once
  Float sines[kFrames];
  Float cosines[kFrames];
  for (Int i = 0; i < count; ++i)
  {
    const Vector& axis = frames[i].axisZ;
    const Float t = std::sqrt(axis.z * axis.z + axis.x * axis.x);
    levels[i] = t;
    isPole[i] = t < kPoleLimit;
    if (isPole[i])
    {
      angles[i] = AnglesAtPole(frames[i]);
      continue;
    }
    const Float u = axis.x / t;
    const Float a = u >= 1 ? kHalfPi : u <= -1 ? -kHalfPi : Asin(u);
    const Float heading = axis.z > 0 ? -a : a + kPi;
    angles[i].x = heading < 0 ? heading + kTwoPi : heading;
  }
  for (Int i = 0; i < count; ++i)
  {
    if (!isPole[i])
      angles[i].y = Atan(frames[i].axisZ.y / levels[i]);
  }
  for (Int i = 0; i < count; ++i)
  {
    const auto [s, c] = SinCos(angles[i].x);
    sines[i] = s;
    cosines[i] = c;
  }
  for (Int i = 0; i < count; ++i)
  {
    if (isPole[i])
      continue;
    const Vector& axis = frames[i].axisX;
    const Float bank = ClampedAcos(axis.x * cosines[i] + axis.z * sines[i]);
    angles[i].z = axis.y > 0 ? kTwoPi - bank : bank;
  }
}

Frame MakeFrame(const Vector4& quaternion, Bool flipZ) noexcept
{
  const Float x = quaternion.x;
  const Float y = quaternion.y;
  const Float z = flipZ ? -quaternion.z : quaternion.z;
  const Float w = quaternion.w;
  return {Normalize({1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y)}),
          Normalize({2 * (x * z - w * y), 2 * (w * x + y * z), 1 - 2 * (x * x + y * y)})};
}

Frame MakeFrame(const HostMatrix& matrix) noexcept
{
  return {Normalize(matrix.axisX), Normalize(matrix.axisZ)};
}

template <typename Rotation, typename ToFrame>
void ToAnglesInBlocks(const Rotation* rotations, Int count, Vector* angles, const ToFrame& toFrame) noexcept
{
  for (Int done = 0; done < count; done += kFrames)
  {
    Frame frames[kFrames];
    const Int frameCount = std::min(kFrames, count - done);
    std::transform(rotations + done, rotations + done + frameCount, frames, toFrame);
    FramesToAngles(frames, frameCount, angles + done);
  }
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
  const Frame frame = normalized ? Frame{matrix.axisX, matrix.axisZ} : MakeFrame(matrix);
  Vector angles;
  FramesToAngles(&frame, 1, &angles);
  return angles;
}

void MatricesToAngles(const HostMatrix* matrices, Int count, Vector* angles) noexcept
{
  ToAnglesInBlocks(matrices, count, angles, [](const HostMatrix& matrix) { return MakeFrame(matrix); });
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
  const Frame frame = MakeFrame(quaternion, flipZ);
  Vector angles;
  FramesToAngles(&frame, 1, &angles);
  return angles;
}

void QuaternionsToAngles(const Vector4* quaternions, Int count, Bool flipZ, Vector* angles) noexcept
{
  ToAnglesInBlocks(quaternions, count, angles, [&](const Vector4& quaternion) { return MakeFrame(quaternion, flipZ); });
}

Vector OptimalAngles(const Vector& previous, const Vector& current, RotationOrder order) noexcept
{
  const Vector own = WrapDifference(current, previous);
  const Vector other = WrapDifference(OtherForm(current, order), previous);
  return previous + (SumOfAbsolutes(other) < SumOfAbsolutes(own) ? other : own);
}

}  // namespace q7z
