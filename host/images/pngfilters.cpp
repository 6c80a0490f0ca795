#include "host/images/pngfilters.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace q7z
{

namespace
{

constexpr Byte kSub = 1;
constexpr Byte kUp = 2;
constexpr Byte kPaeth = 4;

// Plain loops over rows, which compilers turn into vector code: none looks at what it has written.

void FilterSub(const Byte* row, Int byteCount, Int pixelBytes, Byte* target) noexcept
{
  std::memcpy(target, row, static_cast<size_t>(pixelBytes));
  for (Int i = pixelBytes; i < byteCount; ++i)
    target[i] = static_cast<Byte>(row[i] - row[i - pixelBytes]);
}

void FilterUp(const Byte* row, const Byte* above, Int byteCount, Byte* target) noexcept
{
  for (Int i = 0; i < byteCount; ++i)
    target[i] = static_cast<Byte>(row[i] - above[i]);
}

/// Differences to whichever of left, above and corner is nearest to left + above - corner, in this order.
void FilterPaeth(const Byte* row, const Byte* above, Int byteCount, Int pixelBytes, Byte* target) noexcept
{
  FilterUp(row, above, pixelBytes, target);
  for (Int i = pixelBytes; i < byteCount; ++i)
  {
    const short left = row[i - pixelBytes];
    const short up = above[i];
    const short corner = above[i - pixelBytes];
    const short toLeft = static_cast<short>(std::abs(up - corner));
    const short toUp = static_cast<short>(std::abs(left - corner));
    const short toCorner = static_cast<short>(std::abs(left + up - 2 * corner));
    const short nearest = toLeft <= toUp && toLeft <= toCorner ? left : toUp <= toCorner ? up : corner;
    target[i] = static_cast<Byte>(row[i] - nearest);
  }
}

Int SumDistances(const Byte* differences, Int byteCount) noexcept
{
  UInt32 sum = 0;  // a row has fewer than 2^18 bytes
  for (Int i = 0; i < byteCount; ++i)
    sum += static_cast<UInt32>(std::abs(static_cast<signed char>(differences[i])));
  return sum;
}

/// The best filtering of a row so far, in one of two places.
class BestRow
{
public:
  BestRow(Byte* first, Byte* second, Int byteCount) noexcept : _best(first), _next(second), _byteCount(byteCount) {}

  Byte* GetNext() noexcept { return _next; }
  /// Weighs what was written to GetNext. Of equals the first stays.
  void Weigh(Byte filter) noexcept
  {
    const Int sum = SumDistances(_next, _byteCount);
    if (_filter && sum >= _sum)
      return;
    std::swap(_best, _next);
    _sum = sum;
    _filter = filter;
  }
  Byte GetFilter() const noexcept { return _filter; }
  Int GetSum() const noexcept { return _sum; }
  const Byte* GetBest() const noexcept { return _best; }

private:
  Byte* _best;
  Byte* _next;
  Int _byteCount;
  Int _sum = 0;
  Byte _filter = 0;
};

Int FilterRow(const Byte* row, const Byte* above, Int byteCount, Int pixelBytes, Byte* target, Byte* scratch) noexcept
{
  BestRow best(scratch, scratch + byteCount, byteCount);
  FilterSub(row, byteCount, pixelBytes, best.GetNext());
  best.Weigh(kSub);
  if (above && best.GetSum() > 0)
  {
    FilterUp(row, above, byteCount, best.GetNext());
    best.Weigh(kUp);
    FilterPaeth(row, above, byteCount, pixelBytes, best.GetNext());
    best.Weigh(kPaeth);
  }
  target[0] = best.GetFilter();
  std::memcpy(target + 1, best.GetBest(), static_cast<size_t>(byteCount));
  return best.GetSum();
}

}  // namespace

Int FilterRows(const PixelImage& image, Byte* target, Byte* scratch) noexcept
{
  const Int byteCount = image.GetRowBytes();
  Int sum = 0;
  for (Int y = 0; y < image.GetHeight(); ++y, target += byteCount + 1)
  {
    const Byte* const above = y > 0 ? image.GetRow(y - 1) : nullptr;
    sum += FilterRow(image.GetRow(y), above, byteCount, image.GetChannels(), target, scratch);
  }
  return sum;
}

}  // namespace q7z
