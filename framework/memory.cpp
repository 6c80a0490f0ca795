#include "framework/memory.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace q7z
{

namespace
{

constexpr Int kLargePageBytes = Int(2) << 20;
constexpr Int kMaximumBytes = Int(1) << 46;

Int RoundToLargePages(Int byteCount) noexcept
{
  return (byteCount + kLargePageBytes - 1) / kLargePageBytes * kLargePageBytes;
}

void* AllocateLarge(Int byteCount) noexcept
{
  const Int rounded = RoundToLargePages(byteCount);
  void* const block = ::operator new(static_cast<size_t>(rounded), std::align_val_t{kLargePageBytes}, std::nothrow);
  if (block)
    UseLargePages(block, rounded);
  return block;
}

#if defined(__linux__)

/// Whether pages come slowly, by the times of those that have come.
class PageTimer
{
public:
  /// Touches a page for the first time. @return false once too much time was lost.
  Bool Touch(Byte* page) noexcept
  {
    const auto before = std::chrono::steady_clock::now();
    *static_cast<volatile Byte*>(page) = 0;
    _lost = std::max(Duration::zero(), _lost + (std::chrono::steady_clock::now() - before) - kUsualTime);
    return _lost < kMostLost;
  }

private:
  using Duration = std::chrono::steady_clock::duration;
  static constexpr auto kUsualTime = std::chrono::microseconds(700);  // 200 on an idle machine; a slow page takes 1000 to 4000
  static constexpr auto kMostLost = std::chrono::milliseconds(5);

  Duration _lost = Duration::zero();
};

#endif

}  // namespace

void UseLargePages([[maybe_unused]] void* start, [[maybe_unused]] Int byteCount, [[maybe_unused]] Int fetched) noexcept
{
#if defined(__linux__)
  static std::atomic<Bool> areSlow = false;
  Byte* const begin = static_cast<Byte*>(start);
  const Int lead = -static_cast<Int>(reinterpret_cast<UInt>(begin)) & (kLargePageBytes - 1);
  const Int pageCount = (byteCount - lead) / kLargePageBytes;
  if (pageCount < 1 || areSlow.load(std::memory_order_relaxed))
    return;
  // Hints; without them the memory is merely slower to fill.
  Byte* page = begin + lead;
  madvise(page, static_cast<size_t>(pageCount * kLargePageBytes), MADV_HUGEPAGE);
  PageTimer timer;
  for (Int i = 0; i < std::min(pageCount, fetched / kLargePageBytes); ++i)
  {
    const Bool isQuick = timer.Touch(page);
    page += kLargePageBytes;
    if (isQuick)
      continue;
    areSlow.store(true, std::memory_order_relaxed);
    madvise(page, static_cast<size_t>((pageCount - i - 1) * kLargePageBytes), MADV_NOHUGEPAGE);
    return;
  }
#endif
}

void* AllocateMemory(Int byteCount) noexcept
{
  if (byteCount < 0 || byteCount > kMaximumBytes)
    return nullptr;
  if (byteCount >= kLargeBlockBytes)
    return AllocateLarge(byteCount);
  return ::operator new(static_cast<size_t>(byteCount), std::nothrow);
}

void FreeMemory(void* block, Int byteCount) noexcept
{
  if (byteCount >= kLargeBlockBytes)
    ::operator delete(block, std::align_val_t{kLargePageBytes});
  else
    ::operator delete(block);
}

}  // namespace q7z
