#include "host/scene/curvekeys.h"

#include <cmath>

#include "framework/trigonometry.h"

namespace q7z
{

namespace
{

/// Turns smaller than this, in radians, are straight lines as far as 64 bits can tell.
constexpr Float kSmallAngle = 1e-6;

Bool IsTurn(const HeadlessKey& key) noexcept
{
  return key.HasRotationMode() && key.GetRotationMode().mode != 0 && key.GetInterpolation() != InterpolationMode::Step;
}

Vector4 ToQuaternion(const Vector& angles, RotationOrder order) noexcept
{
  return AnglesToQuaternion(MatrixToAngles(AnglesToMatrix(angles, order), kDefaultRotationOrder, false), false);
}

HostMatrix ToMatrix(const Vector4& q) noexcept
{
  return {{},
          {1 - 2 * (q.y * q.y + q.z * q.z), 2 * (q.x * q.y + q.w * q.z), 2 * (q.x * q.z - q.w * q.y)},
          {2 * (q.x * q.y - q.w * q.z), 1 - 2 * (q.x * q.x + q.z * q.z), 2 * (q.y * q.z + q.w * q.x)},
          {2 * (q.x * q.z + q.w * q.y), 2 * (q.y * q.z - q.w * q.x), 1 - 2 * (q.x * q.x + q.y * q.y)}};
}

Float Dot(const Vector4& a, const Vector4& b) noexcept
{
  return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}

/// At an even pace, the shorter way round.
Vector4 Turn(const Vector4& from, const Vector4& to, Float place) noexcept
{
  const Float cosine = Dot(from, to);
  const Vector4 near = to * (cosine < 0 ? -1.0 : 1.0);
  const Vector4 gap = near + from * -1.0;
  // Half of the angle from the chord, which is exact where the angle is small.
  const Float angle = 2 * Asin(std::fmin(std::sqrt(Dot(gap, gap)) / 2, 1.0));
  const Float sine = Sin(angle);
  const Bool isStraight = angle < kSmallAngle;
  const Vector4 turned =
    from * (isStraight ? 1 - place : Sin((1 - place) * angle) / sine) + near * (isStraight ? place : Sin(place * angle) / sine);
  return turned * (1 / std::sqrt(Dot(turned, turned)));
}

}  // namespace

KeyPair FindKeys(const HeadlessCurve& curve, Float seconds) noexcept
{
  const Int low = curve.FindPlaceBehind(seconds);
  const HeadlessKey* const left = curve.GetKey(low > 0 ? low - 1 : 0);
  const HeadlessKey* const right = curve.GetKey(low < curve.GetKeyCount() ? low : low - 1);
  const Float start = left->GetTime().GetSeconds();
  const Float span = right->GetTime().GetSeconds() - start;
  return {left, right, span > 0 ? (seconds - start) / span : 0};
}

void TurnBetweenKeys(const HeadlessCurve* const (&curves)[3], const HostTime& time, RotationOrder order, Vector& angles) noexcept
{
  Vector from;
  Vector to;
  KeyPair first{};
  for (int i = 0; i < 3; ++i)
  {
    if (!curves[i])
      return;
    const KeyPair keys = FindKeys(*curves[i], time.GetSeconds());
    first = i == 0 ? keys : first;
    const Bool hasSameTimes = keys.left->GetTime() == first.left->GetTime() && keys.right->GetTime() == first.right->GetTime();
    if (keys.place <= 0 || !IsTurn(*keys.left) || !hasSameTimes)
      return;
    from[i] = keys.left->GetValue();
    to[i] = keys.right->GetValue();
  }
  const Vector4 turned = Turn(ToQuaternion(from, order), ToQuaternion(to, order), first.place);
  angles = MatrixToAnglesInOrder(ToMatrix(turned), order);
}

}  // namespace q7z
