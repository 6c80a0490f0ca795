#pragma once

// HashMap: a map that is walked in the order of insertion. Entries stand in one array, so a walk is a plain loop; an erased
// entry leaves a gap that the walk steps over. Pointers to values hold until the map grows or is moved from.

#include <bit>

#include "framework/basearray.h"
#include "framework/string.h"

namespace q7z
{

/// The hash of a key; overloads may stand beside a key type of their own.
constexpr UInt MixBits(UInt value) noexcept
{
  value ^= value >> 31;
  value *= 0x9e3779b97f4a7c15u;
  value ^= value >> 29;
  value *= 0xd6e8feb86659fd93u;
  return value ^ (value >> 32);
}
constexpr UInt HashOf(Int key) noexcept
{
  return MixBits(static_cast<UInt>(key));
}
constexpr UInt HashOf(Int32 key) noexcept
{
  return MixBits(static_cast<UInt>(key));
}
constexpr UInt HashOf(UInt key) noexcept
{
  return MixBits(key);
}
inline UInt HashOf(const String& key) noexcept
{
  return MixBits(key.GetHash());
}
template <typename T>
UInt HashOf(T* key) noexcept
{
  return MixBits(reinterpret_cast<UInt>(key));
}

template <typename K, typename V>
class HashMap
{
public:
  class Entry
  {
  public:
    const K& GetKey() const noexcept { return _key; }
    V& GetValue() noexcept { return _value; }
    const V& GetValue() const noexcept { return _value; }

  private:
    friend class HashMap;
    Entry(K key, V value, UInt32 hash) noexcept : _key(std::move(key)), _value(std::move(value)), _hash(hash) {}
    K _key;
    V _value;
    UInt32 _hash;
    Bool _erased = false;

  public:
    Entry(Entry&&) noexcept = default;
    Entry& operator=(Entry&&) noexcept = default;
  };

  HashMap() noexcept = default;
  HashMap(HashMap&& other) noexcept
      : _entries(std::move(other._entries)), _slots(std::move(other._slots)), _erasedCount(std::exchange(other._erasedCount, 0))
  {}
  HashMap& operator=(HashMap&& other) noexcept
  {
    if (this == &other)
      return *this;
    _entries = std::move(other._entries);
    _slots = std::move(other._slots);
    _erasedCount = std::exchange(other._erasedCount, 0);
    return *this;
  }

  Int GetCount() const noexcept { return _entries.GetCount() - _erasedCount; }
  Bool IsEmpty() const noexcept { return GetCount() == 0; }
  Bool IsPopulated() const noexcept { return GetCount() != 0; }

  /// @return the value under key, or null.
  V* Find(const K& key) noexcept { return FindIn<V>(*this, key); }
  const V* Find(const K& key) const noexcept { return FindIn<const V>(*this, key); }
  Bool Contains(const K& key) const noexcept { return Find(key) != nullptr; }

  /// Puts value under key, replacing an older one (whose place in the walk it keeps).
  /// @return the value in the map.
  Result<V*> Set(K key, V value) noexcept
  {
    if (V* found = Find(key))
    {
      *found = std::move(value);
      return found;
    }
    return Append(std::move(key), std::move(value));
  }

  /// Puts value under a key that is not there yet.
  /// @return the value in the map, or an illegal-state error when the key is there already.
  Result<V*> Insert(K key, V value) noexcept
  {
    if (Find(key))
      return Error::Make(ErrorClass::kIllegalState, "The key is in the map already."_s, __FILE__, __LINE__);
    return Append(std::move(key), std::move(value));
  }

  /// The value under key, made from V() when it is not there yet.
  Result<V*> FindOrInsert(K key) noexcept
  {
    if (V* found = Find(key))
      return found;
    return Append(std::move(key), V());
  }

  /// Removes the entry under key. @return whether there was one.
  Bool Erase(const K& key) noexcept
  {
    const UInt32 hash = static_cast<UInt32>(HashOf(key));
    if (_slots.IsEmpty())
      return false;
    const UInt32 mask = static_cast<UInt32>(_slots.GetCount() - 1);
    for (UInt32 slot = hash & mask; _slots[slot] != kFree; slot = (slot + 1) & mask)
    {
      Entry& entry = _entries[_slots[slot]];
      if (entry._erased || entry._hash != hash || !(entry._key == key))
        continue;
      if (_slots[slot] == static_cast<UInt32>(_entries.GetCount() - 1))
        return EraseLast(slot);
      entry._erased = true;
      entry._value = V();
      ++_erasedCount;
      return true;
    }
    return false;
  }

  Result<void> Reserve(Int count) noexcept
  {
    RETURN_IF_ERROR(_entries.Reserve(count));
    return count * 2 > _slots.GetCount() ? Rehash(count) : Result<void>();
  }

  void Reset() noexcept
  {
    _entries.Reset();
    _slots.Reset();
    _erasedCount = 0;
  }

  /// Walks the entries in the order of insertion.
  template <typename E>
  class Iterator
  {
  public:
    Iterator(E* position, E* end) noexcept : _position(position), _end(end) { Skip(); }
    E& operator*() const noexcept { return *_position; }
    E* operator->() const noexcept { return _position; }
    Iterator& operator++() noexcept
    {
      ++_position;
      Skip();
      return *this;
    }
    Bool operator!=(const Iterator& other) const noexcept { return _position != other._position; }
    Bool operator==(const Iterator& other) const noexcept { return _position == other._position; }

  private:
    void Skip() noexcept
    {
      while (_position != _end && IsErased(*_position))
        ++_position;
    }
    E* _position;
    E* _end;
  };
  Iterator<Entry> begin() noexcept { return {_entries.begin(), _entries.end()}; }
  Iterator<Entry> end() noexcept { return {_entries.end(), _entries.end()}; }
  Iterator<const Entry> begin() const noexcept { return {_entries.begin(), _entries.end()}; }
  Iterator<const Entry> end() const noexcept { return {_entries.end(), _entries.end()}; }

private:
  static constexpr UInt32 kFree = 0xffffffffu;

  static Bool IsErased(const Entry& entry) noexcept { return entry._erased; }

  template <typename Out, typename Self>
  static Out* FindIn(Self& self, const K& key) noexcept
  {
    if (self._slots.IsEmpty())
      return nullptr;
    const UInt32 hash = static_cast<UInt32>(HashOf(key));
    const UInt32 mask = static_cast<UInt32>(self._slots.GetCount() - 1);
    for (UInt32 slot = hash & mask; self._slots[slot] != kFree; slot = (slot + 1) & mask)
    {
      auto& entry = self._entries[self._slots[slot]];
      if (!entry._erased && entry._hash == hash && entry._key == key)
        return &entry._value;
    }
    return nullptr;
  }

  Result<V*> Append(K key, V value) noexcept
  {
    if (_entries.GetCount() >= Int(kFree) - 1)
      return Error::OutOfMemory();
    if ((_entries.GetCount() + 1) * 2 > _slots.GetCount())
      RETURN_IF_ERROR(MakeRoom());
    const UInt32 hash = static_cast<UInt32>(HashOf(key));
    RETURN_IF_ERROR(_entries.Append(Entry(std::move(key), std::move(value), hash)));
    Link(static_cast<UInt32>(_entries.GetCount() - 1));
    return &_entries.GetLast()._value;
  }

  /// Room for one more entry. Where half of the entries are gaps they are closed instead, so that a map whose entries come and
  /// go stays as small as it ever was full.
  Result<void> MakeRoom() noexcept
  {
    if (_erasedCount * 2 < _entries.GetCount() || _erasedCount == 0)
      return Rehash(_entries.GetCount() + 1);
    Int count = 0;
    for (Int i = 0; i < _entries.GetCount(); ++i)
    {
      if (_entries[i]._erased)
        continue;
      if (count != i)
        _entries[count] = std::move(_entries[i]);
      ++count;
    }
    _entries.Truncate(count);
    _erasedCount = 0;
    LinkAll();
    return {};
  }

  void Link(UInt32 index) noexcept
  {
    const UInt32 mask = static_cast<UInt32>(_slots.GetCount() - 1);
    UInt32 slot = _entries[index]._hash & mask;
    while (_slots[slot] != kFree)
      slot = (slot + 1) & mask;
    _slots[slot] = index;
  }

  Result<void> Rehash(Int count) noexcept
  {
    const Int slotCount = static_cast<Int>(std::bit_ceil(static_cast<UInt>(count) * 3));
    BaseArray<UInt32> slots;
    RETURN_IF_ERROR(slots.ResizeForOverwrite(slotCount));
    _slots = std::move(slots);
    LinkAll();
    return {};
  }

  void LinkAll() noexcept
  {
    for (UInt32& slot : _slots)
      slot = kFree;
    for (Int i = 0; i < _entries.GetCount(); ++i)
      Link(static_cast<UInt32>(i));
  }

  // The entry that was added last leaves no gap: its slot is the end of every probe that met it, as nothing came later.
  Bool EraseLast(UInt32 slot) noexcept
  {
    _slots[slot] = kFree;
    _entries.Truncate(_entries.GetCount() - 1);
    return true;
  }

  BaseArray<Entry> _entries;
  BaseArray<UInt32> _slots;  // indices into _entries, open addressing, a power of two
  Int _erasedCount = 0;
};

/// A set that is walked in the order of insertion.
struct NoValue
{};
template <typename K>
using HashSet = HashMap<K, NoValue>;

}  // namespace q7z
