#include "host/scene/hostarray.h"

#include <new>

#include "framework/memory.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace q7z
{

namespace
{

std::atomic<MappedArrayGuard> g_guard{nullptr};

#if defined(__linux__)

constexpr Int kLargePageBytes = Int(2) << 20;
constexpr Int kMaximumBytes = Int(1) << 46;

Bool IsGranted(Int byteCount) noexcept
{
  const MappedArrayGuard guard = g_guard.load(std::memory_order_relaxed);
  return !guard || guard(byteCount);
}

/// Fresh zeros, aligned for large pages: more than is needed is mapped, and what sticks out goes back.
void* MapLargePages(Int byteCount) noexcept
{
  const size_t size = static_cast<size_t>(byteCount);
  const size_t page = static_cast<size_t>(kLargePageBytes);
  void* const mapped = mmap(nullptr, size + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED)
    return nullptr;
  Byte* const begin = static_cast<Byte*>(mapped);
  const size_t lead = (page - reinterpret_cast<size_t>(begin) % page) % page;
  if (lead > 0)
    munmap(begin, lead);
  if (lead < page)
    munmap(begin + lead + size, page - lead);
  madvise(begin + lead, size, MADV_HUGEPAGE);  // a hint; without it the block is merely slower to fill
  return begin + lead;
}

ArrayBlock* AllocateMapped(Int byteCount) noexcept
{
  if (byteCount > kMaximumBytes)
    return nullptr;
  const Int wanted = byteCount + static_cast<Int>(sizeof(ArrayBlock));
  const Int rounded = (wanted + kLargePageBytes - 1) / kLargePageBytes * kLargePageBytes;
  if (!IsGranted(rounded))
    return nullptr;
  void* const memory = MapLargePages(rounded);
  if (!memory)
    return nullptr;
  ArrayBlock* const block = ::new (memory) ArrayBlock;
  block->byteCount = byteCount;
  block->mappedByteCount = rounded;
  return block;
}

#endif

ArrayBlock* AllocatePlain(Int byteCount) noexcept
{
  Int total = 0;
  void* const memory = CheckedAdd(byteCount, sizeof(ArrayBlock), total) ? AllocateMemory(total) : nullptr;
  if (!memory)
    return nullptr;
  ArrayBlock* const block = ::new (memory) ArrayBlock;
  block->byteCount = byteCount;
  std::memset(block->GetData(), 0, static_cast<size_t>(byteCount));
  return block;
}

}  // namespace

ArrayBlock* AllocateArrayBlock(Int byteCount) noexcept
{
#if defined(__linux__)
  if (byteCount >= kMappedArrayBytes)
    return AllocateMapped(byteCount);
#endif
  return AllocatePlain(byteCount);
}

void FreeArrayBlock(ArrayBlock* block) noexcept
{
#if defined(__linux__)
  if (block->mappedByteCount > 0)
  {
    munmap(block, static_cast<size_t>(block->mappedByteCount));
    return;
  }
#endif
  FreeMemory(block, block->byteCount + static_cast<Int>(sizeof(ArrayBlock)));
}

void SetMappedArrayGuard(MappedArrayGuard guard) noexcept
{
  g_guard.store(guard, std::memory_order_relaxed);
}

}  // namespace q7z
