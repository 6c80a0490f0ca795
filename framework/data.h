#pragma once

// Data: one JSON-like value, and DataDictionary: an ordered set of named members. Both are small handles on counted, immutable
// blocks: a copy shares, and the first write through a handle that shares makes that handle a block of its own (copy on write).
// Numbers keep their kind: a whole number is Int, one with a point or an exponent is Float. Arrays of numbers, the most of many
// documents, hold them bare; a few 32-bit ones, such as a vector's, lie in the Data itself.
//
// A parser makes the blocks of a document in one DataArena, so that a document lives in few allocations; an arena goes with the
// last block that lies in it.

#include <cstring>
#include <iterator>

#include "framework/basearray.h"
#include "framework/string.h"

namespace q7z
{

enum class DataKind : Byte
{
  kNil,
  kBool,
  kInt,
  kFloat,
  kString,  // from here on a value may hold memory
  kArray,
  kDictionary,
};

/// A member name with its hash. Constants of it are made once, at compile time: constexpr DataKey kMeshes("meshes").
class DataKey
{
public:
  template <size_t size>
  constexpr DataKey(const Char (&name)[size]) noexcept : _name(name, size - 1), _hash(String::HashBytes(name, size - 1))
  {}
  explicit DataKey(const String& name) noexcept : _name(name), _hash(name.GetHash()) {}
  DataKey(const String& name, UInt hash) noexcept : _name(name), _hash(hash) {}

  constexpr const String& GetName() const noexcept { return _name; }
  constexpr UInt GetHash() const noexcept { return _hash; }
  friend Bool operator==(const DataKey& a, const DataKey& b) noexcept { return a._hash == b._hash && a._name == b._name; }

private:
  String _name;
  UInt _hash;
};

class Data;
class DataDictionary;
struct DataMember;
class DataArena;

namespace detail
{
struct DataBlock;  // counted storage of elements or members
}

/// Memory for the blocks of one parsed document. Counted; not for several threads at once while it grows.
class DataArena
{
public:
  /// @return an arena with one reference, or null without memory.
  static DataArena* Create() noexcept;
  /// @return memory that lives as long as the arena, aligned to 8; null without memory.
  void* Allocate(Int byteCount) noexcept;
  void AddReference() noexcept;
  void Release() noexcept;

private:
  struct Chunk;
  Chunk* AddChunk(Int byteCount) noexcept;
  DataArena() noexcept = default;
  ~DataArena();
  Int _references = 1;  // counted atomically
  Chunk* _chunks = nullptr;
  Byte* _position = nullptr;
  Byte* _end = nullptr;
  Int _nextChunkBytes = Int(4) << 10;  // of the next chunk for small requests
};

/// How an array lies in memory. A short one lies in the Data itself, the others in a block.
enum class DataArrayForm : Byte
{
  kValues,  ///< elements of any kinds
  kInts,
  kFloats,
  kShort,  ///< a few floats that were given as 32 bits
};

/// A read-only row of values, valid as long as the Data that was asked for it.
class DataArrayView
{
public:
  class Iterator;

  DataArrayView() noexcept = default;
  DataArrayView(DataArrayForm form, const void* first, Int count) noexcept : _first(first), _count(count), _form(form) {}
  Int GetCount() const noexcept { return _count; }
  Bool IsEmpty() const noexcept { return _count == 0; }
  inline Data operator[](Int index) const noexcept;
  inline Iterator begin() const noexcept;
  inline Iterator end() const noexcept;

private:
  const void* _first = nullptr;
  Int _count = 0;
  DataArrayForm _form = DataArrayForm::kValues;
};

class DataDictionary
{
public:
  DataDictionary() noexcept = default;  ///< empty, without memory
  DataDictionary(const DataDictionary& other) noexcept;
  DataDictionary(DataDictionary&& other) noexcept : _block(other._block) { other._block = nullptr; }
  DataDictionary& operator=(DataDictionary other) noexcept;
  ~DataDictionary();

  /// Takes count members, in order; of a repeated name the last value counts, in the place of the first.
  /// The members are moved from. The block lies in arena when one is given.
  static Result<DataDictionary> Create(DataMember* members, Int count, DataArena* arena = nullptr) noexcept;

  Int GetCount() const noexcept;
  Bool IsEmpty() const noexcept { return GetCount() == 0; }
  Bool IsPopulated() const noexcept { return GetCount() != 0; }

  /// @return the member's value, or null when there is none.
  const Data* Find(const DataKey& key) const noexcept;

  /// Puts value under key, at the end or in the place of an older value.
  Result<void> Set(const DataKey& key, Data value) noexcept;

  /// @return whether the member went: false when there is none, or no memory to part from a shared block.
  Bool Erase(const DataKey& key) noexcept;

  /// Members in order, valid until the next write.
  const DataMember* begin() const noexcept;
  const DataMember* end() const noexcept;

private:
  friend class Data;
  detail::DataBlock* _block = nullptr;
};

class Data
{
public:
  constexpr Data() noexcept : _int(0) {}
  Data(Bool value) noexcept : _bool(value), _kind(DataKind::kBool) {}
  Data(Int value) noexcept : _int(value), _kind(DataKind::kInt) {}
  Data(Int32 value) noexcept : _int(value), _kind(DataKind::kInt) {}
  Data(UInt32 value) noexcept : _int(value), _kind(DataKind::kInt) {}
  Data(Float value) noexcept : _float(value), _kind(DataKind::kFloat) {}
  /// Kept as a 64-bit float that is written in the shortest form of the 32-bit number.
  Data(Float32 value) noexcept : _float(value), _kind(DataKind::kFloat), _isSingle(true) {}
  Data(String value) noexcept : _string(std::move(value)), _kind(DataKind::kString) {}
  Data(DataDictionary value) noexcept : _block(value._block), _kind(DataKind::kDictionary) { value._block = nullptr; }
  Data(const void*) = delete;  // no pointer becomes a Bool

  Data(const Data& other) noexcept : Data()
  {
    if (other.HasMemory())
      Share(other);
    else
      TakeBits(other);
  }
  Data(Data&& other) noexcept : Data()
  {
    TakeBits(other);
    ::new (&other) Data;
  }
  Data& operator=(Data other) noexcept
  {
    ReleaseContent();
    TakeBits(other);
    ::new (&other) Data;
    return *this;
  }
  ~Data() { ReleaseContent(); }

  /// An array that takes the elements over. The block lies in arena when one is given.
  static Result<Data> CreateArray(BaseArray<Data> elements) noexcept;
  static Result<Data> CreateArray(Data* elements, Int count, DataArena* arena) noexcept;  ///< moves from elements
  static Result<Data> CreateArray(const Int* elements, Int count, DataArena* arena) noexcept;
  static Result<Data> CreateArray(const Float* elements, Int count, DataArena* arena) noexcept;

  DataKind GetKind() const noexcept { return _kind; }
  Bool IsNil() const noexcept { return _kind == DataKind::kNil; }

  /// Whether a Float was given as 32 bits, and so is written in the shortest form that reads back as the same 32-bit number.
  Bool IsSinglePrecision() const noexcept { return _isSingle; }

  // Conversions. An Int converts to Float; a Float converts to Int by truncation when it is finite and fits 64 bits; nothing else
  // changes its kind. The error is of the class illegal argument and names both kinds.
  Result<Bool> GetBool() const noexcept;
  Result<Int> GetInt() const noexcept;
  Result<Float> GetFloat() const noexcept;
  Result<String> GetString() const noexcept;
  Result<DataDictionary> GetDictionary() const noexcept;
  Result<DataArrayView> GetArray() const noexcept;

  /// Structural equality; an Int never equals a Float.
  friend Bool operator==(const Data& a, const Data& b) noexcept;

private:
  static constexpr Int kMostShort = sizeof(String) / sizeof(Float32);

  /// Whether there is a counted block, or may be one.
  Bool HasMemory() const noexcept { return _kind >= DataKind::kString && _form != DataArrayForm::kShort; }
  /// Whatever kind it is, its bytes are all of it: a value moves with them, and what it moved from forgets them.
  void TakeBits(const Data& other) noexcept
  {
    std::memcpy(static_cast<void*>(this), static_cast<const void*>(&other), sizeof(Data));
  }
  void Share(const Data& other) noexcept;
  void ReleaseContent() noexcept
  {
    if (HasMemory())
      ReleaseMemory();
  }
  void ReleaseMemory() noexcept;
  static DataArrayForm FindForm(const Data* elements, Int count) noexcept;
  static Result<Data> MakeArray(DataArrayForm form, Int count, detail::DataBlock* block) noexcept;
  static Data MakeShortArray(const Data* elements, Int count) noexcept;
  DataArrayView GetView() const noexcept;
  union
  {
    Bool _bool;
    Int _int;
    Float _float;
    String _string;
    detail::DataBlock* _block;     // elements of an array or members of a dictionary; may be null when empty
    Float32 _singles[kMostShort];  // of a short array
  };
  DataKind _kind = DataKind::kNil;
  Bool _isSingle = false;
  DataArrayForm _form = DataArrayForm::kValues;
  Byte _shortCount = 0;  // of _singles
};

struct DataMember
{
  DataKey key;
  Data value;
};

inline Data DataArrayView::operator[](Int index) const noexcept
{
  switch (_form)
  {
    case DataArrayForm::kInts: return Data(static_cast<const Int*>(_first)[index]);
    case DataArrayForm::kFloats: return Data(static_cast<const Float*>(_first)[index]);
    case DataArrayForm::kShort: return Data(static_cast<const Float32*>(_first)[index]);
    case DataArrayForm::kValues: break;
  }
  return static_cast<const Data*>(_first)[index];
}

class DataArrayView::Iterator
{
public:
  using iterator_category = std::input_iterator_tag;
  using value_type = Data;
  using difference_type = Int;
  using pointer = const Data*;
  using reference = Data;

  Iterator(const DataArrayView& view, Int index) noexcept : _view(view), _index(index) {}
  Data operator*() const noexcept { return _view[_index]; }
  Iterator& operator++() noexcept
  {
    ++_index;
    return *this;
  }
  friend Bool operator==(const Iterator& a, const Iterator& b) noexcept { return a._index == b._index; }

private:
  DataArrayView _view;
  Int _index;
};

inline DataArrayView::Iterator DataArrayView::begin() const noexcept
{
  return {*this, 0};
}
inline DataArrayView::Iterator DataArrayView::end() const noexcept
{
  return {*this, _count};
}

}  // namespace q7z
