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

PageFetcher g_fetchPages = nullptr;

#if defined(__linux__)

/// How long a page takes to be there that is touched for the first time.
std::chrono::steady_clock::duration TimeFirstTouch(Byte* page) noexcept
{
  const auto before = std::chrono::steady_clock::now();
  *static_cast<volatile Byte*>(page) = 0;
  return std::chrono::steady_clock::now() - before;
}

void TryLargePages(Byte* page, Int pageCount) noexcept
{
  constexpr Int kTriedPages = 8;
  constexpr auto kMostTime = std::chrono::milliseconds(7);  // a page takes 0.2 to 0.6, a slow one 1 to 4
  static std::atomic<Bool> areSlow = false;
  // Where all would be tried, there is more to lose than to gain.
  if (pageCount < kTriedPages || areSlow.load(std::memory_order_relaxed))
    return;
  // Hints; without them the memory is merely slower to fill.
  madvise(page, static_cast<size_t>(pageCount * kLargePageBytes), MADV_HUGEPAGE);
  auto spent = std::chrono::steady_clock::duration::zero();
  for (Int i = 0; i < std::min(pageCount, kTriedPages); ++i)
  {
    spent += TimeFirstTouch(page);
    page += kLargePageBytes;
    if (spent < kMostTime)
      continue;
    areSlow.store(true, std::memory_order_relaxed);
    madvise(page, static_cast<size_t>((pageCount - i - 1) * kLargePageBytes), MADV_NOHUGEPAGE);
    return;
  }
}

#endif

}  // namespace

void SetPageFetcher(PageFetcher fetch) noexcept
{
  g_fetchPages = fetch;
}

void UseLargePages([[maybe_unused]] void* start, [[maybe_unused]] Int byteCount) noexcept
{
#if defined(__linux__)
  Byte* const begin = static_cast<Byte*>(start);
  const Int lead = -static_cast<Int>(reinterpret_cast<UInt>(begin)) & (kLargePageBytes - 1);
  const Int pageCount = (byteCount - lead) / kLargePageBytes;
  if (pageCount < 1)
    return;
  if (g_fetchPages)
    g_fetchPages(begin + lead, pageCount * kLargePageBytes);
  else
    TryLargePages(begin + lead, pageCount);
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
