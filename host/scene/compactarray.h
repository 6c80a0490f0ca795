#pragma once

// CompactArray: an array that is one word where it is empty and one block where it is not, for owners of which there are many and
// most have few elements or none. It grows when it is told to.

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "framework/memory.h"
#include "framework/types.h"

namespace q7z
{

template <typename T>
class CompactArray
{
public:
  CompactArray() noexcept = default;
  CompactArray(const CompactArray&) = delete;
  CompactArray& operator=(const CompactArray&) = delete;
  ~CompactArray() { Reset(); }

  Int GetCount() const noexcept { return _block ? _block->count : 0; }
  Int GetCapacity() const noexcept { return _block ? _block->capacity : 0; }

  T& operator[](Int index) noexcept { return begin()[index]; }
  const T& operator[](Int index) const noexcept { return begin()[index]; }
  T* begin() noexcept { return _block ? reinterpret_cast<T*>(_block + 1) : nullptr; }
  T* end() noexcept { return begin() + GetCount(); }
  const T* begin() const noexcept { return const_cast<CompactArray*>(this)->begin(); }
  const T* end() const noexcept { return begin() + GetCount(); }

  /// Room for count elements in all. @return false without memory: nothing has changed then.
  [[nodiscard]] Bool Reserve(Int count) noexcept
  {
    static_assert(sizeof(Block) % alignof(T) == 0);
    if (count <= GetCapacity())
      return true;
    void* const memory = AllocateMemory(GetByteCount(count));
    if (!memory)
      return false;
    Block* const grown = ::new (memory) Block{GetCount(), count};
    std::uninitialized_move(begin(), end(), reinterpret_cast<T*>(grown + 1));
    Reset();
    _block = grown;
    return true;
  }

  /// Puts an element in front of the one at index, or at the end. There must be room.
  T& Insert(Int index, T value) noexcept
  {
    ::new (end()) T(std::move(value));
    ++_block->count;
    std::rotate(begin() + index, end() - 1, end());
    return (*this)[index];
  }

  void Erase(Int index) noexcept
  {
    std::move(begin() + index + 1, end(), begin() + index);
    std::destroy_at(end() - 1);
    --_block->count;
  }

  void Reset() noexcept
  {
    if (!_block)
      return;
    std::destroy(begin(), end());
    FreeMemory(_block, GetByteCount(_block->capacity));
    _block = nullptr;
  }

private:
  /// The elements stand behind it.
  struct Block
  {
    Int count;
    Int capacity;
  };

  static Int GetByteCount(Int capacity) noexcept
  {
    return static_cast<Int>(sizeof(Block)) + capacity * static_cast<Int>(sizeof(T));
  }

  Block* _block = nullptr;
};

}  // namespace q7z
