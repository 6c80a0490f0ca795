#include "host/scene/hostarray.h"

#include <new>

#include "framework/memory.h"
#include "host/platform/platform.h"

namespace q7z
{

namespace
{

std::atomic<MappedArrayGuard> g_guard{nullptr};

constexpr Int kMaximumBytes = Int(1) << 46;

Bool IsGranted(Int byteCount) noexcept
{
  const MappedArrayGuard guard = g_guard.load(std::memory_order_relaxed);
  return !guard || guard(byteCount);
}

ArrayBlock* AllocateMapped(Int byteCount) noexcept
{
  if (byteCount > kMaximumBytes)
    return nullptr;
  const Int mappedByteCount = byteCount + static_cast<Int>(sizeof(ArrayBlock));
  void* const memory = IsGranted(mappedByteCount) ? MapZeros(mappedByteCount) : nullptr;
  if (!memory)
    return nullptr;
  ArrayBlock* const block = ::new (memory) ArrayBlock;
  block->byteCount = byteCount;
  block->mappedByteCount = mappedByteCount;
  return block;
}

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
  return byteCount >= kMappedArrayBytes ? AllocateMapped(byteCount) : AllocatePlain(byteCount);
}

void FreeArrayBlock(ArrayBlock* block) noexcept
{
  if (block->mappedByteCount > 0)
    UnmapZeros(block, block->mappedByteCount);
  else
    FreeMemory(block, block->byteCount + static_cast<Int>(sizeof(ArrayBlock)));
}

void SetMappedArrayGuard(MappedArrayGuard guard) noexcept
{
  g_guard.store(guard, std::memory_order_relaxed);
}

}  // namespace q7z
