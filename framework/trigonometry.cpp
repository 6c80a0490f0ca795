#include "framework/trigonometry.h"

#include <cmath>

#include "framework/turn.h"

namespace q7z
{

namespace
{

// Below, the sine is the angle and the cosine is 1.
constexpr Float kSmallestAngle = 0x1p-27;

}  // namespace

Float Sin(Float angle) noexcept
{
  if (!std::isfinite(angle) || std::abs(angle) < kSmallestAngle)
    return std::isfinite(angle) ? angle : std::sin(angle);
  return RoundedOnce(QuickTurn(angle).sine, kQuickTurnError, [&] { return ThoroughTurn(angle).sine; });
}

Float Cos(Float angle) noexcept
{
  if (!std::isfinite(angle))
    return std::cos(angle);
  return RoundedOnce(QuickTurn(angle).cosine, kQuickTurnError, [&] { return ThoroughTurn(angle).cosine; });
}

SineAndCosine SinCos(Float angle) noexcept
{
  if (!std::isfinite(angle) || std::abs(angle) < kSmallestAngle)
    return {Sin(angle), Cos(angle)};
  const Turn turn = QuickTurn(angle);
  return {RoundedOnce(turn.sine, kQuickTurnError, [&] { return ThoroughTurn(angle).sine; }),
          RoundedOnce(turn.cosine, kQuickTurnError, [&] { return ThoroughTurn(angle).cosine; })};
}

Float Tan(Float angle) noexcept
{
  if (!std::isfinite(angle) || std::abs(angle) < kSmallestAngle)
    return std::isfinite(angle) ? angle : std::tan(angle);
  const auto tangent = [](const Turn& turn) { return Quotient(turn.sine, turn.cosine); };
  return RoundedOnce(tangent(QuickTurn(angle)), kQuickTurnError, [&] { return tangent(ThoroughTurn(angle)); });
}

Float Hypot(Float x, Float y) noexcept
{
  const DoubleDouble square = Product(x, x) + Product(y, y);
  const Float near = std::sqrt(square.high);
  if (!(near > kSmallestLength && near < 1 / kSmallestLength))
    return near;
  return SquareRoot(square).Round();
}

Float Cube(Float value) noexcept
{
  return (Product(value, value) * DoubleDouble(value)).Round();
}

}  // namespace q7z
