#include "host/images/resample.h"

#include <algorithm>
#include <cmath>

#include "framework/basearray.h"

namespace q7z
{

namespace
{

// Weights have 14 bits behind the point, sums of rows 6. So a sum over both fits into 32 bits: a row's is below 2^16 in size, and the
// sizes of a place's weights add up to less than 2 × 2^14.
constexpr int kWeightBits = 14;
constexpr int kRowBits = 6;
constexpr Int kRowsPerJob = 16;

/// Weight of a sample at a distance in samples.
Float GetCubic(Float distance) noexcept
{
  const Float x = std::abs(distance);
  if (x >= 2)
    return 0;
  return x < 1 ? (1.5 * x - 2.5) * x * x + 1 : ((-0.5 * x + 2.5) * x - 4) * x + 2;
}

/// The samples of a line that make one of another line's.
struct Place
{
  Int first = 0;
  Int count = 0;
  Int weights = 0;  // index of the first one
};

/// How a line of one length becomes a line of another.
class Line
{
public:
  Result<void> Make(Int sourceCount, Int targetCount) noexcept
  {
    const Float step = static_cast<Float>(sourceCount) / static_cast<Float>(targetCount);
    const Float stretch = std::max(step, 1.0);
    RETURN_IF_ERROR(_places.Reserve(targetCount));
    for (Int i = 0; i < targetCount; ++i)
      RETURN_IF_ERROR(AddPlace((static_cast<Float>(i) + 0.5) * step - 0.5, stretch, sourceCount));
    return {};
  }
  const Place& operator[](Int target) const noexcept { return _places[target]; }
  const Int32* GetWeights(const Place& place) const noexcept { return _weights.begin() + place.weights; }

private:
  Result<void> AddPlace(Float center, Float stretch, Int sourceCount) noexcept
  {
    Place place;
    place.first = std::max(static_cast<Int>(std::ceil(center - 2 * stretch)), Int(0));
    const Int last = std::min(static_cast<Int>(std::floor(center + 2 * stretch)), sourceCount - 1);
    place.count = last - place.first + 1;
    place.weights = _weights.GetCount();
    Float sum = 0;
    for (Int i = 0; i < place.count; ++i)
      sum += GetCubic((static_cast<Float>(place.first + i) - center) / stretch);
    // What is rounded off goes along, so that the whole numbers add up to 1 exactly, and a plain image stays plain.
    Float exact = 0;
    Int32 given = 0;
    for (Int i = 0; i < place.count; ++i)
    {
      exact += GetCubic((static_cast<Float>(place.first + i) - center) / stretch) / sum;
      const Int32 upTo = static_cast<Int32>(std::lround(std::ldexp(exact, kWeightBits)));
      RETURN_IF_ERROR(_weights.Append(upTo - given));
      given = upTo;
    }
    return _places.Append(place);
  }

  BaseArray<Place> _places;
  BaseArray<Int32> _weights;
};

Int32 RoundOff(Int32 value, int bits) noexcept
{
  return (value + (1 << (bits - 1))) >> bits;
}

/// One row of the target's height and the source's width.
void MixRows(const PixelImage& source, const Place& place, const Int32* weights, Int32* sums) noexcept
{
  const Int count = source.GetRowBytes();
  std::fill_n(sums, count, 0);
  for (Int k = 0; k < place.count; ++k)
  {
    const Byte* const row = source.GetRow(place.first + k);
    const Int32 weight = weights[k];
    for (Int i = 0; i < count; ++i)
      sums[i] += weight * row[i];
  }
  for (Int i = 0; i < count; ++i)
    sums[i] = RoundOff(sums[i], kWeightBits - kRowBits);
}

template <Int32 channels>
void MixPixels(const Line& line, const Int32* row, Int32 width, Byte* target) noexcept
{
  for (Int x = 0; x < width; ++x, target += channels)
  {
    const Place& place = line[x];
    const Int32* const weights = line.GetWeights(place);
    const Int32* pixel = row + place.first * channels;
    Int32 sums[channels] = {};
    for (Int k = 0; k < place.count; ++k, pixel += channels)
    {
      for (Int32 c = 0; c < channels; ++c)
        sums[c] += weights[k] * pixel[c];
    }
    for (Int32 c = 0; c < channels; ++c)
      target[c] = static_cast<Byte>(std::clamp(RoundOff(sums[c], kWeightBits + kRowBits), 0, 255));
  }
}

class Resampling
{
public:
  Resampling(const PixelImage& source, PixelImage& target) noexcept : _source(source), _target(target) {}

  Result<void> Prepare() noexcept
  {
    RETURN_IF_ERROR(_columns.Make(_source.GetWidth(), _target.GetWidth()));
    return _rows.Make(_source.GetHeight(), _target.GetHeight());
  }

  Result<void> operator()(Int first, Int end) const noexcept
  {
    BaseArray<Int32> sums;
    BaseArray<Byte> pixels;  // in the source's channels
    RETURN_IF_ERROR(sums.ResizeForOverwrite(_source.GetRowBytes()));
    RETURN_IF_ERROR(pixels.ResizeForOverwrite(Int(_target.GetWidth()) * _source.GetChannels()));
    for (Int y = first; y < end; ++y)
    {
      const Place& place = _rows[y];
      MixRows(_source, place, _rows.GetWeights(place), sums.begin());
      if (_source.HasAlpha())
        MixPixels<4>(_columns, sums.begin(), _target.GetWidth(), pixels.begin());
      else
        MixPixels<3>(_columns, sums.begin(), _target.GetWidth(), pixels.begin());
      ConvertPixels(pixels.begin(), _source.GetChannels(), _target.GetRow(y), _target.GetChannels(), _target.GetWidth());
    }
    return {};
  }

private:
  const PixelImage& _source;
  PixelImage& _target;
  Line _columns;
  Line _rows;
};

}  // namespace

Result<void> Resample(const PixelImage& source, PixelImage& target, HostJobs* jobs) noexcept
{
  if (source.GetWidth() == target.GetWidth() && source.GetHeight() == target.GetHeight())
  {
    ConvertPixels(source.GetRow(0), source.GetChannels(), target.GetRow(0), target.GetChannels(),
                  Int(source.GetWidth()) * source.GetHeight());
    return {};
  }
  Resampling resampling(source, target);
  RETURN_IF_ERROR(resampling.Prepare());
  return jobs ? ParallelFor(*jobs, target.GetHeight(), kRowsPerJob, resampling) : resampling(0, target.GetHeight());
}

}  // namespace q7z
