#pragma once

// Data: one JSON-like value, and DataDictionary: an ordered set of named members. Both are small handles on counted, immutable
// blocks: a copy shares, and the first write through a handle that shares makes that handle a block of its own (copy on write).
// Numbers keep their kind: a whole number is Int, one with a point or an exponent is Float.
//
// A parser makes the blocks of a document in one DataArena, so that a document lives in few allocations; an arena goes with the
// last block that lies in it.

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
  kString,
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

/// A read-only row of values, valid as long as a Data that holds it.
class DataArrayView
{
public:
  DataArrayView() noexcept = default;
  DataArrayView(const Data* first, Int count) noexcept : _first(first), _count(count) {}
  Int GetCount() const noexcept { return _count; }
  Bool IsEmpty() const noexcept { return _count == 0; }
  inline const Data& operator[](Int index) const noexcept;
  const Data* begin() const noexcept { return _first; }
  inline const Data* end() const noexcept;

private:
  const Data* _first = nullptr;
  Int _count = 0;
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

  Data(const Data& other) noexcept;
  Data(Data&& other) noexcept;
  Data& operator=(Data other) noexcept;
  ~Data();

  /// An array that takes the elements over. The block lies in arena when one is given.
  static Result<Data> CreateArray(BaseArray<Data> elements) noexcept;
  static Result<Data> CreateArray(Data* elements, Int count, DataArena* arena) noexcept;  ///< moves from elements

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
  void ReleaseContent() noexcept;
  union
  {
    Bool _bool;
    Int _int;
    Float _float;
    String _string;
    detail::DataBlock* _block;  // elements of an array or members of a dictionary; may be null when empty
  };
  DataKind _kind = DataKind::kNil;
  Bool _isSingle = false;
};

struct DataMember
{
  DataKey key;
  Data value;
};

inline const Data& DataArrayView::operator[](Int index) const noexcept
{
  return _first[index];
}
inline const Data* DataArrayView::end() const noexcept
{
  return _first + _count;
}

}  // namespace q7z
