#include "framework/memory.h"

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
#if defined(__linux__)
  if (block)
    madvise(block, static_cast<size_t>(rounded), MADV_HUGEPAGE);  // a hint; without it the block is merely slower to fill
#endif
  return block;
}

}  // namespace

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
