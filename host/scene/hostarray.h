#pragma once

// HostArray: the bulk data of the scene (points, polygons, corner data, colours). An array is sized once and starts as zeros; a
// copy of the handle shares the block (counted atomically), and the first writer of a shared block gets one of its own. Big
// blocks come from the system directly, aligned for large pages, since touching fresh small pages costs more than the arithmetic
// that fills them. Elements are plain numbers or structs of them.

#include <atomic>
#include <cstring>
#include <type_traits>
#include <utility>

#include "framework/arithmetic.h"
#include "framework/types.h"

namespace q7z
{

/// Storage of one array: this head, then the elements.
struct alignas(16) ArrayBlock
{
  std::atomic<Int> references{1};
  Int byteCount = 0;        ///< of the elements
  Int mappedByteCount = 0;  ///< of the whole mapping, this head included; 0 for plain memory

  void* GetData() noexcept { return this + 1; }
};

/// Makes a block of zeros with one reference. Null without memory.
[[nodiscard]] ArrayBlock* AllocateArrayBlock(Int byteCount) noexcept;
void FreeArrayBlock(ArrayBlock* block) noexcept;

/// Blocks from this size on come from the system directly, past operator new.
inline constexpr Int kMappedArrayBytes = Int(4) << 20;

/// For tests: asked before each direct request, with its size; false refuses it. Null (the default) grants all.
using MappedArrayGuard = Bool (*)(Int byteCount);
void SetMappedArrayGuard(MappedArrayGuard guard) noexcept;

template <typename T>
class HostArray
{
  static_assert(std::is_trivially_copyable_v<T>);

public:
  HostArray() noexcept = default;
  HostArray(const HostArray& other) noexcept : _block(other._block)
  {
    if (_block)
      _block->references.fetch_add(1, std::memory_order_relaxed);
  }
  HostArray(HostArray&& other) noexcept : _block(std::exchange(other._block, nullptr)) {}
  HostArray& operator=(HostArray other) noexcept
  {
    std::swap(_block, other._block);
    return *this;
  }
  ~HostArray() { Reset(); }

  /// Takes a new block of count zeros; 0 takes none. @return false without memory or for a negative count: nothing has changed.
  [[nodiscard]] Bool Create(Int count) noexcept
  {
    Int byteCount = 0;
    if (count < 0 || !CheckedMultiply(count, sizeof(T), byteCount))
      return false;
    ArrayBlock* block = count > 0 ? AllocateArrayBlock(byteCount) : nullptr;
    if (count > 0 && !block)
      return false;
    Reset();
    _block = block;
    return true;
  }

  void Reset() noexcept
  {
    if (_block && _block->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
      FreeArrayBlock(_block);
    _block = nullptr;
  }

  Int GetCount() const noexcept { return _block ? _block->byteCount / static_cast<Int>(sizeof(T)) : 0; }
  Bool IsEmpty() const noexcept { return _block == nullptr; }
  Bool IsShared() const noexcept { return _block && _block->references.load(std::memory_order_acquire) > 1; }

  /// Null when the count is 0.
  const T* GetR() const noexcept { return _block ? static_cast<const T*>(_block->GetData()) : nullptr; }

  /// For writing; a shared block is copied first. Null when the count is 0 or without memory for the copy.
  T* GetW() noexcept
  {
    if (!_block || (IsShared() && !Unshare()))
      return nullptr;
    return static_cast<T*>(_block->GetData());
  }

private:
  Bool Unshare() noexcept
  {
    HostArray own;
    if (!own.Create(GetCount()) || !own._block)
      return false;
    std::memcpy(own._block->GetData(), _block->GetData(), static_cast<size_t>(_block->byteCount));
    std::swap(_block, own._block);
    return true;
  }

  ArrayBlock* _block = nullptr;
};

}  // namespace q7z
