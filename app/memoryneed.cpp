#include "app/memoryneed.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "host/platform/platform.h"
#include "host/platform/process.h"

namespace q7z::app
{

namespace
{

/// How much of a file is JSON and no payload: of a GLB file what it says, of a text by a look at some places.
class JsonShare
{
public:
  explicit JsonShare(PlatformFile& file) noexcept : _file(file) {}

  Int Estimate() noexcept
  {
    constexpr Int kJsonBytesPlace = 12;
    std::array<char, 4> magic{};
    Int32 jsonBytes = 0;
    if (!ReadAt(0, magic) || std::memcmp(magic.data(), "glTF", magic.size()) != 0)
      return EstimateOfText();
    const Bool isRead = _file.ReadAt(kJsonBytesPlace, &jsonBytes, sizeof(jsonBytes)) == sizeof(jsonBytes);
    return isRead ? std::clamp(Int(jsonBytes), Int(0), _file.GetLength()) : 0;
  }

private:
  template <size_t count>
  Bool ReadAt(Int position, std::array<char, count>& bytes) noexcept
  {
    return _file.ReadAt(position, bytes.data(), count) == static_cast<Int>(count);
  }

  /// A payload has no quotes, JSON has one every few bytes.
  Int EstimateOfText() noexcept
  {
    constexpr Int kPlaces = 32;
    std::array<char, 512> bytes{};
    Int count = 0;
    for (Int i = 0; i < kPlaces; ++i)
    {
      const Int position = (_file.GetLength() - static_cast<Int>(bytes.size())) / kPlaces * i;
      count += ReadAt(position, bytes) && std::find(bytes.begin(), bytes.end(), '"') != bytes.end();
    }
    return _file.GetLength() / kPlaces * count;
  }

  PlatformFile& _file;
};

/// What a load keeps in small pieces, or less. Objects take twelve times their JSON; the keys of animations far more, up to eight times
/// the file.
Int GuessHeap(Int fileBytes, Int jsonBytes) noexcept
{
  constexpr Int kGrowth = 8;
  constexpr Int kMostGrowthOfJson = 64;
  constexpr Int kMostForKeys = Int(96) << 20;
  return std::min({kGrowth * fileBytes, kMostGrowthOfJson * jsonBytes, kGrowth * jsonBytes + kMostForKeys});
}

}  // namespace

/// A file of keys that is converted takes up to fifty times its size. Larger files are mostly arrays and pictures, which come in large
/// blocks by themselves, and whose passing buffers would stay in the heap.
void PrepareMemoryFor(const std::string& path)
{
  constexpr Int kSmallestFile = Int(1) << 20;
  constexpr Int kLargestFile = Int(64) << 20;
  constexpr Int kMostGrowth = 64;
  PlatformFile file;
  if (!file.Open(path.c_str(), PlatformOpen::kRead) || file.GetLength() < kSmallestFile)
    return;
  StartFetchingPages();
  if (file.GetLength() <= kLargestFile)
    ExpectAllocations(GuessHeap(file.GetLength(), JsonShare(file).Estimate()), file.GetLength() * kMostGrowth);
}

}  // namespace q7z::app
