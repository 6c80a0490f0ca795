#include "framework/trigonometry.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "framework/doubledouble.h"

namespace q7z
{

namespace
{

// From here on a turn more or less is less than what the angle itself is uncertain by.
constexpr Float kLargestAngle = 1e9;
// Below, the sine is the angle and the cosine is 1.
constexpr Float kSmallestAngle = 0x1p-27;
// Below, products lose bits for being too small.
constexpr Float kSmallestLength = 1e-140;

constexpr Float kTwoOverPi = 0x1.45f306dc9c883p-1;
// pi / 2 is the sum of these to 160 bits.
constexpr Float kHalfPiParts[] = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54, -0x1.f1976b7ed8fbcp-110};

/// 1 / n! for an n up to 22, of which n! is exact.
constexpr DoubleDouble InverseFactorial(int n) noexcept
{
  Float factorial = 1;
  for (int i = 2; i <= n; ++i)
    factorial *= i;
  return Quotient(DoubleDouble(1), DoubleDouble(factorial));
}

constexpr int kLastFactorial = 22;
constexpr std::array<DoubleDouble, kLastFactorial + 1> kInverseFactorials = []
{
  std::array<DoubleDouble, kLastFactorial + 1> inverses;
  for (int n = 0; n <= kLastFactorial; ++n)
    inverses[static_cast<size_t>(n)] = InverseFactorial(n);
  return inverses;
}();

/// 1/first! - z/(first+2)! + z^2/(first+4)! - ..., for z up to (pi/4)^2. What stands far behind the point needs no second half.
constexpr DoubleDouble AlternatingSeries(int first, const DoubleDouble& z) noexcept
{
  const auto inverse = [](int n) { return kInverseFactorials[static_cast<size_t>(n)]; };
  const int middle = first + 8;
  Float tail = 0;
  for (int n = kLastFactorial - (kLastFactorial - first) % 2; n > middle; n -= 2)
    tail = inverse(n).high - z.high * tail;
  DoubleDouble sum = inverse(middle) - DoubleDouble(z.high * tail);
  for (int n = middle - 2; n >= first; n -= 2)
    sum = inverse(n) - z * sum;
  return sum;
}

/// The nearest whole number, for a value below 2^51.
constexpr Float RoundToWhole(Float value) noexcept
{
  constexpr Float kShift = 0x1.8p52;  // behind it a number has no places left
  return (value + kShift) - kShift;
}

/// The sine and the cosine of one angle.
struct Turn
{
  DoubleDouble sine;
  DoubleDouble cosine;
};

constexpr Turn TurnedByQuarters(const Turn& turn, Int quarters) noexcept
{
  switch (quarters & 3)
  {
    case 1: return {turn.cosine, -turn.sine};
    case 2: return {-turn.sine, -turn.cosine};
    case 3: return {-turn.cosine, turn.sine};
    default: return turn;
  }
}

/// A finite angle as a number of quarter turns and what is left, an eighth of a turn at most.
class Reduced
{
public:
  explicit Reduced(Float angle) noexcept
      : _near(std::abs(angle) < kLargestAngle ? angle : std::fmod(angle, 4 * kHalfPiParts[0])),
        _count(RoundToWhole(_near * kTwoOverPi))
  {}

  Int GetQuarters() const noexcept { return static_cast<Int>(_count); }

  /// To more than 100 bits.
  DoubleDouble GetRest() const noexcept
  {
    DoubleDouble rest(_near);
    for (int i = 0; i < 3 && _count != 0; ++i)
      rest = rest - Product(_count, kHalfPiParts[i]);
    return rest;
  }

  /// To 70 bits, for a fraction of the price, where neither many quarter turns nor a short rest need more.
  DoubleDouble GetRestQuickly() const noexcept
  {
    if (_count == 0)
      return DoubleDouble(_near);
    const DoubleDouble rest = Sum(_near - _count * kShortHalfPiParts[0], -_count * kShortHalfPiParts[1]);
    if (std::abs(_count) > kLargestShortCount || std::abs(rest.high) < kSmallestQuickRest)
      return GetRest();
    return SumOfOrdered(rest.high, rest.low - _count * kShortHalfPiParts[2]);
  }

private:
  // pi / 2 again, the first two parts short enough for exact products with such counts.
  static constexpr Float kShortHalfPiParts[] = {0x1.921fb544p+0, 0x1.0b4611a6p-34, 0x1.3198a2e037073p-69};
  static constexpr Float kLargestShortCount = 0x1p20;
  static constexpr Float kSmallestQuickRest = 0x1p-16;

  Float _near;
  Float _count;
};

/// To about 90 bits.
Turn ThoroughTurn(Float angle) noexcept
{
  const Reduced reduced(angle);
  const DoubleDouble rest = reduced.GetRest();
  const DoubleDouble square = rest * rest;
  return TurnedByQuarters({rest * AlternatingSeries(1, square), AlternatingSeries(0, square)}, reduced.GetQuarters());
}

/// The sine and the cosine side by side, which are computed alike.
using Lanes = Float __attribute__((vector_size(2 * sizeof(Float))));
using DoubleDoubleLanes = DoubleDoubleOf<Lanes>;

struct DoubleDoublePair
{
  alignas(sizeof(Lanes)) Float highs[2];
  alignas(sizeof(Lanes)) Float lows[2];

  constexpr DoubleDoublePair() noexcept = default;
  constexpr DoubleDoublePair(const DoubleDouble& first, const DoubleDouble& second) noexcept
      : highs{first.high, second.high}, lows{first.low, second.low}
  {}
  DoubleDoubleLanes Load() const noexcept { return {Lanes{highs[0], highs[1]}, Lanes{lows[0], lows[1]}}; }
};

/// The turns by 0, 1/64, 2/64 and so on, to an eighth of a turn.
constexpr Float kTurnsPerRadian = 64;
constexpr size_t kTurnCount = 52;
struct TableTurn
{
  DoubleDoublePair turn;          // sine and cosine
  DoubleDoublePair aside;         // at a right angle to it: cosine and -sine
  DoubleDoublePair partsOfAside;  // of what is high in that
};
constexpr std::array<TableTurn, kTurnCount> kTurns = []
{
  std::array<TableTurn, kTurnCount> turns{};
  for (size_t i = 0; i < kTurnCount; ++i)
  {
    const DoubleDouble angle(static_cast<Float>(i) / kTurnsPerRadian);
    const DoubleDouble square = angle * angle;
    const Turn turn{angle * AlternatingSeries(1, square), AlternatingSeries(0, square)};
    turns[i] = {{turn.sine, turn.cosine}, {turn.cosine, -turn.sine}, {Split(turn.cosine.high), Split(-turn.sine.high)}};
  }
  return turns;
}();

/// To about 66 bits, which is enough to round it, but for one in thousands: the next turn of the table, and from there a short way,
/// of which only the way itself has two halves.
Turn QuickTurn(Float angle) noexcept
{
  const Reduced reduced(angle);
  DoubleDouble rest = reduced.GetRestQuickly();
  const Float sign = std::copysign(1.0, rest.high);
  rest = {rest.high * sign, rest.low * sign};
  const Float index = RoundToWhole(rest.high * kTurnsPerRadian);
  const TableTurn& start = kTurns[static_cast<size_t>(index)];
  const DoubleDouble way = SumOfOrdered(rest.high - index / kTurnsPerRadian, rest.low);

  constexpr Float k3 = kInverseFactorials[3].high, k4 = kInverseFactorials[4].high, k5 = kInverseFactorials[5].high;
  constexpr Float k6 = kInverseFactorials[6].high, k7 = kInverseFactorials[7].high, k8 = kInverseFactorials[8].high;
  const Float square = way.high * way.high;
  // The sine of the way is the way and this; its cosine is 1 and that.
  const Float ofSine = way.low - way.high * square * (k3 - square * (k5 - square * k7));
  const Float ofCosine = -square * (0.5 - square * (k4 - square * (k6 - square * k8))) - way.high * way.low;

  // from + onto * sine(way) + from * (cosine(way) - 1)
  const auto both = [](Float value) { return Lanes{value, value}; };
  const DoubleDouble wayParts = Split(way.high);
  const DoubleDoubleLanes from = start.turn.Load();
  const DoubleDoubleLanes onto = start.aside.Load();
  const DoubleDoubleLanes aside =
    ProductOfParts(onto.high, start.partsOfAside.Load(), both(way.high), {both(wayParts.high), both(wayParts.low)});
  const DoubleDoubleLanes sum = Sum(from.high, aside.high);
  const Lanes low = aside.low + from.low + (onto.low * both(way.high) + onto.high * both(ofSine)) + from.high * both(ofCosine);
  const DoubleDoubleLanes moved = SumOfOrdered(sum.high, sum.low + low);
  return TurnedByQuarters({{moved.high[0] * sign, moved.low[0] * sign}, {moved.high[1], moved.low[1]}}, reduced.GetQuarters());
}

/// The square root of a value above 0.
DoubleDouble SquareRoot(const DoubleDouble& value) noexcept
{
  const Float near = std::sqrt(value.high);
  return DoubleDouble(near) + Quotient(value - Product(near, near), DoubleDouble(2 * near));
}

// What a result of a quick turn may be wrong by, against its size. Where the arc sine and the arc cosine are steep, they
// make more of it.
constexpr Float kQuickError = 0x1p-62;
constexpr Float kQuickSteepError = 0x1p-59;

/// What rounds once all that a quick value may be, or the thorough value.
template <typename Thorough>
Float RoundedOnce(const DoubleDouble& quick, Float quickError, const Thorough& thorough) noexcept
{
  const Float error = std::abs(quick.high) * quickError;
  const Float below = quick.high + (quick.low - error);
  const Float above = quick.high + (quick.low + error);
  return below == above ? below : thorough().Round();
}

/// compute(turn by the angle) rounded, thoroughly computed if what is missing in a quick one could matter.
template <typename Compute>
Float RoundOnce(Float angle, Float quickError, const Compute& compute) noexcept
{
  return RoundedOnce(compute(QuickTurn(angle)), quickError, [&] { return compute(ThoroughTurn(angle)); });
}

}  // namespace

Float Sin(Float angle) noexcept
{
  if (!std::isfinite(angle) || std::abs(angle) < kSmallestAngle)
    return std::isfinite(angle) ? angle : std::sin(angle);
  return RoundOnce(angle, kQuickError, [](const Turn& turn) { return turn.sine; });
}

Float Cos(Float angle) noexcept
{
  if (!std::isfinite(angle))
    return std::cos(angle);
  return RoundOnce(angle, kQuickError, [](const Turn& turn) { return turn.cosine; });
}

SineAndCosine SinCos(Float angle) noexcept
{
  if (!std::isfinite(angle) || std::abs(angle) < kSmallestAngle)
    return {Sin(angle), Cos(angle)};
  const Turn turn = QuickTurn(angle);
  return {RoundedOnce(turn.sine, kQuickError, [&] { return ThoroughTurn(angle).sine; }),
          RoundedOnce(turn.cosine, kQuickError, [&] { return ThoroughTurn(angle).cosine; })};
}

Float Tan(Float angle) noexcept
{
  if (!std::isfinite(angle) || std::abs(angle) < kSmallestAngle)
    return std::isfinite(angle) ? angle : std::tan(angle);
  return RoundOnce(angle, kQuickError, [](const Turn& turn) { return Quotient(turn.sine, turn.cosine); });
}

// The inverse functions start from the C library's angle, and add what its own sine and cosine say is missing: a step of Newton's,
// whose error is that angle's squared. So what the library has in its last bits does not matter.

Float Asin(Float value) noexcept
{
  const Float near = std::asin(value);
  if (!(std::abs(value) < 1) || near == 0)
    return near;
  return RoundOnce(near, kQuickSteepError,
                   [&](const Turn& turn)
                   {
                     const DoubleDouble missing = DoubleDouble(value) - turn.sine;
                     return DoubleDouble(near) + DoubleDouble(missing.high / turn.cosine.high);
                   });
}

Float Acos(Float value) noexcept
{
  constexpr Float kHalf = 0.5;
  const Float near = std::acos(value);
  if (!(std::abs(value) < 1))
    return near;
  if (value <= kHalf)
    return RoundOnce(near, kQuickSteepError,
                     [&](const Turn& turn)
                     {
                       const DoubleDouble missing = turn.cosine - DoubleDouble(value);
                       return DoubleDouble(near) + DoubleDouble(missing.high / turn.sine.high);
                     });
  // Of a small angle the cosine tells little; half of it has a sine of this square root.
  const DoubleDouble sineOfHalf = SquareRoot(DoubleDouble((1 - value) / 2));
  return RoundOnce(near / 2, kQuickError,
                   [&](const Turn& turn)
                   {
                     const DoubleDouble missing = sineOfHalf - turn.sine;
                     return DoubleDouble(near) + DoubleDouble(2 * missing.high / turn.cosine.high);
                   });
}

Float Atan(Float value) noexcept
{
  return Atan2(value, 1);
}

Float Atan2(Float y, Float x) noexcept
{
  const Float near = std::atan2(y, x);
  const Float largest = std::max(std::abs(y), std::abs(x));
  if (near == 0 || !(largest > kSmallestLength && largest < 1 / kSmallestLength))
    return near;
  return RoundOnce(near, kQuickError,
                   [&](const Turn& turn)
                   {
                     const DoubleDouble aside = turn.cosine * DoubleDouble(y) - turn.sine * DoubleDouble(x);
                     return DoubleDouble(near) + DoubleDouble(aside.high / (turn.cosine.high * x + turn.sine.high * y));
                   });
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
