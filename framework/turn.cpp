#include "framework/turn.h"

#include <array>

namespace q7z
{

namespace
{

// From here on a turn more or less is less than what the angle itself is uncertain by.
constexpr Float kLargestAngle = 1e9;
constexpr Float kTwoOverPi = 0x1.45f306dc9c883p-1;

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

constexpr DoubleDouble Times(const DoubleDouble& value, Float sign) noexcept
{
  return {value.high * sign, value.low * sign};
}

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

}  // namespace

Turn ThoroughTurn(Float angle) noexcept
{
  const Reduced reduced(angle);
  const DoubleDouble rest = reduced.GetRest();
  const DoubleDouble square = rest * rest;
  return TurnedByQuarters({rest * AlternatingSeries(1, square), AlternatingSeries(0, square)}, reduced.GetQuarters());
}

namespace
{

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

}  // namespace

/// The next turn of the table, and from there a short way, of which only the way itself has two halves.
Turn QuickTurn(Float angle) noexcept
{
  const Reduced reduced(angle);
  DoubleDouble rest = reduced.GetRestQuickly();
  const Float sign = std::copysign(1.0, rest.high);
  rest = Times(rest, sign);
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

}  // namespace q7z
