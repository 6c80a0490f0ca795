#pragma once

// BaseArray: the growing array of the system. Growth can fail and says so; nothing is lost when it does. Move only; a copy is
// asked for with CopyFrom. Elements must move without throwing.

#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "framework/memory.h"
#include "framework/result.h"
#include "framework/types.h"

namespace q7z
{

template <typename T>
class BaseArray
{
public:
  BaseArray() noexcept = default;
  BaseArray(BaseArray&& other) noexcept
      : _elements(std::exchange(other._elements, nullptr)),
        _count(std::exchange(other._count, 0)),
        _capacity(std::exchange(other._capacity, 0))
  {}
  BaseArray& operator=(BaseArray&& other) noexcept
  {
    if (this != &other)
    {
      Reset();
      _elements = std::exchange(other._elements, nullptr);
      _count = std::exchange(other._count, 0);
      _capacity = std::exchange(other._capacity, 0);
    }
    return *this;
  }
  BaseArray(const BaseArray&) = delete;
  BaseArray& operator=(const BaseArray&) = delete;
  ~BaseArray() { Reset(); }

  Int GetCount() const noexcept { return _count; }
  Int GetCapacity() const noexcept { return _capacity; }
  Bool IsEmpty() const noexcept { return _count == 0; }
  Bool IsPopulated() const noexcept { return _count != 0; }

  /// The first element, or null when there is none.
  T* GetFirst() noexcept { return _count ? _elements : nullptr; }
  const T* GetFirst() const noexcept { return _count ? _elements : nullptr; }

  T& operator[](Int index) noexcept { return _elements[index]; }
  const T& operator[](Int index) const noexcept { return _elements[index]; }
  T& GetLast() noexcept { return _elements[_count - 1]; }
  const T& GetLast() const noexcept { return _elements[_count - 1]; }

  T* begin() noexcept { return _elements; }
  T* end() noexcept { return _elements + _count; }
  const T* begin() const noexcept { return _elements; }
  const T* end() const noexcept { return _elements + _count; }

  /// Appends one element; the array is as it was when that fails.
  Result<void> Append(T value) noexcept
  {
    if (_count == _capacity)
      RETURN_IF_ERROR(Grow(_count + 1));
    ::new (_elements + _count) T(std::move(value));
    ++_count;
    return {};
  }

  /// Appends copies of count elements, which lie outside the array.
  Result<void> AppendCopies(const T* values, Int count) noexcept
    requires std::is_trivially_copyable_v<T>
  {
    if (count <= 0)
      return {};
    constexpr Int kMost = INT64_MAX / static_cast<Int>(sizeof(T));
    if (count > kMost || _count > kMost - count)
      return Error::OutOfMemory();
    RETURN_IF_ERROR(Grow(_count + count));
    std::memcpy(static_cast<void*>(_elements + _count), values, static_cast<size_t>(count) * sizeof(T));
    _count += count;
    return {};
  }

  /// Makes room for at least count elements in all, exactly that many when it has to grow.
  Result<void> Reserve(Int count) noexcept { return count > _capacity ? Reallocate(count) : Result<void>(); }

  /// Sets the count; new elements are value-initialised (numbers are 0).
  Result<void> Resize(Int count) noexcept
  {
    if (count <= _count)
    {
      Truncate(count);
      return {};
    }
    RETURN_IF_ERROR(Reserve(count));
    if constexpr (std::is_trivially_default_constructible_v<T>)
      std::memset(static_cast<void*>(_elements + _count), 0, static_cast<size_t>(count - _count) * sizeof(T));
    else
      std::uninitialized_value_construct_n(_elements + _count, count - _count);
    _count = count;
    return {};
  }

  /// Sets the count; the content of new elements is undefined until they are written.
  Result<void> ResizeForOverwrite(Int count) noexcept
    requires std::is_trivially_copyable_v<T>
  {
    if (count > _capacity)
      RETURN_IF_ERROR(Reallocate(count));
    _count = count < 0 ? 0 : count;
    return {};
  }

  /// Replaces the content by a copy of other's.
  Result<void> CopyFrom(const BaseArray& other) noexcept
  {
    BaseArray copy;
    RETURN_IF_ERROR(copy.Reserve(other._count));
    for (const T& value : other)
      ::new (copy._elements + copy._count++) T(value);
    *this = std::move(copy);
    return {};
  }

  /// Drops the elements from count on; keeps the memory.
  void Truncate(Int count) noexcept
  {
    count = count < 0 ? 0 : count;
    if (count >= _count)
      return;
    std::destroy(_elements + count, _elements + _count);
    _count = count;
  }

  /// Removes one element; the ones behind it move up. An index outside the array removes nothing.
  void Erase(Int index) noexcept
  {
    if (index < 0 || index >= _count)
      return;
    for (Int i = index + 1; i < _count; ++i)
      _elements[i - 1] = std::move(_elements[i]);
    Truncate(_count - 1);
  }

  /// Drops all elements and the memory.
  void Reset() noexcept
  {
    if (!_elements)
      return;
    std::destroy(_elements, _elements + _count);
    FreeMemory(_elements, _capacity * static_cast<Int>(sizeof(T)));
    _elements = nullptr;
    _count = _capacity = 0;
  }

private:
  /// At least minimum elements of room, by half again so that appending costs constant time on average.
  Result<void> Grow(Int minimum) noexcept
  {
    if (minimum <= _capacity)
      return {};
    const Int grown = _capacity + _capacity / 2 + 8;
    return Reallocate(grown > minimum ? grown : minimum);
  }

  Result<void> Reallocate(Int capacity) noexcept
  {
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
    if (capacity > INT64_MAX / static_cast<Int>(sizeof(T)))
      return Error::OutOfMemory();
    T* elements = static_cast<T*>(AllocateMemory(capacity * static_cast<Int>(sizeof(T))));
    if (!elements)
      return Error::OutOfMemory();
    if constexpr (std::is_trivially_copyable_v<T>)
    {
      if (_count)
        std::memcpy(static_cast<void*>(elements), _elements, static_cast<size_t>(_count) * sizeof(T));
    }
    else
    {
      std::uninitialized_move(_elements, _elements + _count, elements);
      std::destroy(_elements, _elements + _count);
    }
    FreeMemory(_elements, _capacity * static_cast<Int>(sizeof(T)));
    _elements = elements;
    _capacity = capacity;
    return {};
  }

  T* _elements = nullptr;
  Int _count = 0;
  Int _capacity = 0;
};

}  // namespace q7z
