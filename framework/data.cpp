#include "framework/data.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <numeric>
#include <utility>

#include "framework/check.h"
#include "framework/memory.h"

namespace q7z
{

namespace detail
{

/// A counted header, the elements (Data or DataMember) behind it and, for a large dictionary, an index of its members.
struct DataBlock
{
  std::atomic<Int> references{1};
  Int count = 0;
  Int capacity = 0;
  DataArena* arena = nullptr;  // where the block lies; null for memory of its own

  template <typename T>
  T* GetElements() noexcept
  {
    return reinterpret_cast<T*>(this + 1);
  }
};

}  // namespace detail

namespace
{

using detail::DataBlock;

// A new dictionary's room. Nodes are the most of a large document: name, mesh or children, translation, rotation, scale.
constexpr Int kFirstMembers = 5;
// Up to here a dictionary is searched from end to end.
constexpr Int kSmallDictionary = 16;
constexpr Int kMostMembers = Int(1) << 32;  // of a dictionary with an index

constexpr Int kLargestRequest = Int(1) << 46;
constexpr Int kLargestChunk = Int(1) << 20;

template <typename T>
Int GetIndexCount(Int capacity) noexcept
{
  return std::is_same_v<T, DataMember> && capacity > kSmallDictionary ? capacity : 0;
}

/// The bytes of a block with room for capacity elements and, for members of a large dictionary, the index behind them.
template <typename T>
Int GetByteCount(Int capacity) noexcept
{
  return static_cast<Int>(sizeof(DataBlock) + static_cast<size_t>(capacity) * sizeof(T) +
                          static_cast<size_t>(GetIndexCount<T>(capacity)) * sizeof(UInt32));
}

/// The members' numbers, sorted by key; null for a small dictionary.
UInt32* GetIndex(DataBlock& dictionary) noexcept
{
  const Int capacity = dictionary.capacity;
  return GetIndexCount<DataMember>(capacity) ? reinterpret_cast<UInt32*>(dictionary.GetElements<DataMember>() + capacity)
                                             : nullptr;
}

template <typename T>
DataBlock* AllocateBlock(Int capacity, DataArena* arena) noexcept
{
  static_assert(sizeof(DataBlock) % alignof(T) == 0);
  if (GetIndexCount<T>(capacity) > kMostMembers)
    return nullptr;
  const Int byteCount = GetByteCount<T>(capacity);
  void* const memory = arena ? arena->Allocate(byteCount) : AllocateMemory(byteCount);
  if (!memory)
    return nullptr;
  DataBlock* const block = ::new (memory) DataBlock;
  block->capacity = capacity;
  block->arena = arena;
  if (arena)
    arena->AddReference();
  return block;
}

template <typename T>
void ReleaseBlock(DataBlock* block) noexcept
{
  if (!block || block->references.fetch_sub(1, std::memory_order_acq_rel) != 1)
    return;
  std::destroy_n(block->GetElements<T>(), block->count);
  DataArena* const arena = block->arena;
  if (arena)
    arena->Release();
  else
    FreeMemory(block, GetByteCount<T>(block->capacity));
}

void AddReference(DataBlock* block) noexcept
{
  if (block)
    block->references.fetch_add(1, std::memory_order_relaxed);
}

/// The order of an index: by hash, then by name, so that no choice of names makes a lookup slow.
Bool IsBefore(const DataKey& a, const DataKey& b) noexcept
{
  return a.GetHash() != b.GetHash() ? a.GetHash() < b.GetHash() : a.GetName() < b.GetName();
}

/// The place of key in a block's index: that of its member, or the one where it would go.
UInt32* FindPlace(DataBlock& block, const DataKey& key) noexcept
{
  const DataMember* const members = block.GetElements<DataMember>();
  UInt32* const index = GetIndex(block);
  return std::lower_bound(index, index + block.count, key,
                          [&](UInt32 member, const DataKey& wanted) { return IsBefore(members[member].key, wanted); });
}

DataMember* FindMember(DataBlock* block, const DataKey& key) noexcept
{
  if (!block)
    return nullptr;
  DataMember* const members = block->GetElements<DataMember>();
  if (const UInt32* const index = GetIndex(*block))
  {
    const UInt32* const place = FindPlace(*block, key);
    return place != index + block->count && members[*place].key == key ? members + *place : nullptr;
  }
  for (Int i = 0; i < block->count; ++i)
  {
    if (members[i].key == key)
      return members + i;
  }
  return nullptr;
}

/// Puts a member at the end of a block that has room for it and does not hold its key.
void AppendMember(DataBlock& block, DataMember&& member) noexcept
{
  if (UInt32* const index = GetIndex(block))
  {
    UInt32* const place = FindPlace(block, member.key);
    std::copy_backward(place, index + block.count, index + block.count + 1);
    *place = static_cast<UInt32>(block.count);
  }
  ::new (block.GetElements<DataMember>() + block.count) DataMember(std::move(member));
  ++block.count;
}

/// Orders an index over count members anew. Equal names, which only a row that is not yet a dictionary holds, keep their order.
void SortIndex(UInt32* index, const DataMember* members, Int count) noexcept
{
  std::iota(index, index + count, UInt32(0));
  std::sort(index, index + count, [&](UInt32 a, UInt32 b)
            { return IsBefore(members[a].key, members[b].key) || (members[a].key == members[b].key && a < b); });
}

/// Leaves the first of each run of equal names in a sorted index and gives it the value of the last.
/// @return how many names there are.
Int MergeRepeated(UInt32* index, DataMember* members, Int count) noexcept
{
  Int merged = 0;
  for (Int i = 1; i < count; ++i)
  {
    DataMember& first = members[index[merged]];
    if (first.key == members[index[i]].key)
      first.value = std::move(members[index[i]].value);
    else
      index[++merged] = index[i];
  }
  return merged + 1;
}

/// Moves members into an empty block that has an index, in the time of sorting them.
void FillIndexed(DataBlock& block, DataMember* members, Int count) noexcept
{
  UInt32* const index = GetIndex(block);
  SortIndex(index, members, count);
  const Int merged = MergeRepeated(index, members, count);
  std::sort(index, index + merged);
  DataMember* const target = block.GetElements<DataMember>();
  for (Int i = 0; i < merged; ++i)
    ::new (target + i) DataMember(std::move(members[index[i]]));
  block.count = merged;
  SortIndex(index, target, merged);
}

/// A copy of block with room for capacity members.
DataBlock* CopyDictionary(DataBlock* block, Int capacity) noexcept
{
  DataBlock* const copy = AllocateBlock<DataMember>(capacity, nullptr);
  if (!copy || !block)
    return copy;
  std::uninitialized_copy_n(block->GetElements<DataMember>(), block->count, copy->GetElements<DataMember>());
  copy->count = block->count;
  if (UInt32* const index = GetIndex(*copy))
    SortIndex(index, copy->GetElements<DataMember>(), copy->count);
  return copy;
}

const Char* GetKindName(DataKind kind) noexcept
{
  switch (kind)
  {
    case DataKind::kNil: return "nothing";
    case DataKind::kBool: return "a boolean";
    case DataKind::kInt: return "a whole number";
    case DataKind::kFloat: return "a number";
    case DataKind::kString: return "a text";
    case DataKind::kArray: return "an array";
    case DataKind::kDictionary: return "an object";
  }
  return "nothing";
}

String NameOf(DataKind kind) noexcept
{
  const std::string_view name = GetKindName(kind);
  return String(name.data(), static_cast<Int>(name.size()));
}

Error ConversionError(DataKind expected, DataKind found) noexcept
{
  Result<String> text = String::Format("@ expected, @ found."_s, {NameOf(expected), NameOf(found)});
  return text.HasError() ? text.GetError() : MAKE_ERROR(ErrorClass::kIllegalArgument, text.GetValue());
}

}  // namespace

struct DataArena::Chunk
{
  Chunk* next;
  Int byteCount;
};

DataArena* DataArena::Create() noexcept
{
  void* const memory = AllocateMemory(sizeof(DataArena));
  return memory ? ::new (memory) DataArena : nullptr;
}

DataArena::~DataArena()
{
  while (_chunks)
  {
    Chunk* const chunk = _chunks;
    _chunks = chunk->next;
    FreeMemory(chunk, chunk->byteCount);
  }
}

void* DataArena::Allocate(Int byteCount) noexcept
{
  if (byteCount < 0 || byteCount > kLargestRequest)
    return nullptr;
  const Int rounded = (byteCount + 7) / 8 * 8;
  if (rounded <= _end - _position)
    return std::exchange(_position, _position + rounded);
  Chunk* const chunk = AddChunk(rounded);
  if (!chunk)
    return nullptr;
  Byte* const block = reinterpret_cast<Byte*>(chunk + 1);
  Byte* const end = reinterpret_cast<Byte*>(chunk) + chunk->byteCount;
  // The chunk with more room left is the one to go on with.
  if (end - (block + rounded) > _end - _position)
  {
    _position = block + rounded;
    _end = end;
  }
  return block;
}

/// A chunk with room for byteCount bytes. A large request gets one that just holds it.
DataArena::Chunk* DataArena::AddChunk(Int byteCount) noexcept
{
  const Int needed = byteCount + static_cast<Int>(sizeof(Chunk));
  const Int chunkBytes = needed > _nextChunkBytes ? needed : _nextChunkBytes;
  void* const memory = AllocateMemory(chunkBytes);
  if (!memory)
    return nullptr;
  if (chunkBytes == _nextChunkBytes && _nextChunkBytes < kLargestChunk)
    _nextChunkBytes *= 2;
  return _chunks = ::new (memory) Chunk{_chunks, chunkBytes};
}

void DataArena::AddReference() noexcept
{
  std::atomic_ref<Int>(_references).fetch_add(1, std::memory_order_relaxed);
}

void DataArena::Release() noexcept
{
  if (std::atomic_ref<Int>(_references).fetch_sub(1, std::memory_order_acq_rel) != 1)
    return;
  this->~DataArena();
  FreeMemory(this, sizeof(DataArena));
}

DataDictionary::DataDictionary(const DataDictionary& other) noexcept : _block(other._block)
{
  AddReference(_block);
}

DataDictionary& DataDictionary::operator=(DataDictionary other) noexcept
{
  std::swap(_block, other._block);
  return *this;
}

DataDictionary::~DataDictionary()
{
  ReleaseBlock<DataMember>(_block);
}

Result<DataDictionary> DataDictionary::Create(DataMember* members, Int count, DataArena* arena) noexcept
{
  DataDictionary dictionary;
  if (count == 0)
    return dictionary;
  dictionary._block = AllocateBlock<DataMember>(count, arena);
  if (!dictionary._block)
    return Error::OutOfMemory();
  if (GetIndex(*dictionary._block))
  {
    FillIndexed(*dictionary._block, members, count);
    return dictionary;
  }
  for (Int i = 0; i < count; ++i)
  {
    if (DataMember* const earlier = FindMember(dictionary._block, members[i].key))
      earlier->value = std::move(members[i].value);
    else
      AppendMember(*dictionary._block, std::move(members[i]));
  }
  return dictionary;
}

Int DataDictionary::GetCount() const noexcept
{
  return _block ? _block->count : 0;
}

const Data* DataDictionary::Find(const DataKey& key) const noexcept
{
  const DataMember* const member = FindMember(_block, key);
  return member ? &member->value : nullptr;
}

Result<void> DataDictionary::Set(const DataKey& key, Data value) noexcept
{
  const Int count = GetCount();
  DataDictionary old;  // lives to the end, since key may lie in it
  DataMember* found = FindMember(_block, key);
  const Bool isShared = _block && _block->references.load(std::memory_order_acquire) > 1;
  if (!_block || isShared || (!found && count == _block->capacity))
  {
    DataBlock* const copy = CopyDictionary(_block, found ? count : count + count / 2 + kFirstMembers);
    if (!copy)
      return Error::OutOfMemory();
    old._block = std::exchange(_block, copy);
    found = FindMember(_block, key);
  }
  if (found)
    found->value = std::move(value);
  else
    AppendMember(*_block, DataMember{key, std::move(value)});
  return {};
}

Bool DataDictionary::Erase(const DataKey& key) noexcept
{
  if (!Find(key))
    return false;
  DataDictionary old;  // lives to the end, since key may lie in it
  if (_block->references.load(std::memory_order_acquire) > 1)
  {
    DataBlock* const copy = CopyDictionary(_block, _block->count);
    if (!copy)
      return false;
    old._block = std::exchange(_block, copy);
  }
  DataMember* const first = _block->GetElements<DataMember>();
  DataMember* const end = first + _block->count;
  DataMember* const erased = FindMember(_block, key);
  std::move(erased + 1, end, erased);
  std::destroy_at(end - 1);
  --_block->count;
  if (UInt32* const index = GetIndex(*_block))
    SortIndex(index, first, _block->count);
  return true;
}

const DataMember* DataDictionary::begin() const noexcept
{
  return _block ? _block->GetElements<DataMember>() : nullptr;
}
const DataMember* DataDictionary::end() const noexcept
{
  return _block ? begin() + _block->count : nullptr;
}

/// Takes a share of what another holds.
void Data::Share(const Data& other) noexcept
{
  if (other._kind == DataKind::kString)
  {
    ::new (&_string) String(other._string);
    _kind = DataKind::kString;
    return;
  }
  TakeBits(other);
  AddReference(_block);
}

void Data::ReleaseMemory() noexcept
{
  if (_kind == DataKind::kString)
    _string.~String();
  else if (_kind == DataKind::kDictionary)
    ReleaseBlock<DataMember>(_block);
  else if (_form == DataArrayForm::kInts)
    ReleaseBlock<Int>(_block);
  else if (_form == DataArrayForm::kFloats)
    ReleaseBlock<Float>(_block);
  else
    ReleaseBlock<Data>(_block);
}

DataArrayForm Data::FindForm(const Data* elements, Int count) noexcept
{
  if (count == 0)
    return DataArrayForm::kValues;
  const Data& first = elements[0];
  const auto isAlike = [&](const Data& element) { return element._kind == first._kind && element._isSingle == first._isSingle; };
  const Bool isInt = first._kind == DataKind::kInt;
  if ((!isInt && first._kind != DataKind::kFloat) || !std::all_of(elements + 1, elements + count, isAlike))
    return DataArrayForm::kValues;
  if (!first._isSingle)
    return isInt ? DataArrayForm::kInts : DataArrayForm::kFloats;
  return count <= kMostShort ? DataArrayForm::kShort : DataArrayForm::kValues;
}

Result<Data> Data::CreateArray(BaseArray<Data> elements) noexcept
{
  return CreateArray(elements.GetFirst(), elements.GetCount(), nullptr);
}

namespace
{

/// A block of count elements, the i-th of which make(i) gives. Null without memory, and for no elements.
template <typename T, typename Make>
DataBlock* MakeArrayBlock(Int count, DataArena* arena, Make make) noexcept
{
  DataBlock* const block = count > 0 ? AllocateBlock<T>(count, arena) : nullptr;
  if (!block)
    return nullptr;
  for (Int i = 0; i < count; ++i)
    ::new (block->GetElements<T>() + i) T(make(i));
  block->count = count;
  return block;
}

}  // namespace

/// Takes a block over that is null without memory or for no elements.
Result<Data> Data::MakeArray(DataArrayForm form, Int count, DataBlock* block) noexcept
{
  if (count > 0 && !block)
    return Error::OutOfMemory();
  Data array;
  array._block = block;
  array._kind = DataKind::kArray;
  array._form = form;
  return array;
}

Result<Data> Data::CreateArray(Data* elements, Int count, DataArena* arena) noexcept
{
  const DataArrayForm form = FindForm(elements, count);
  DataBlock* block = nullptr;
  switch (form)
  {
    case DataArrayForm::kValues:
      block = MakeArrayBlock<Data>(count, arena, [=](Int i) -> Data&& { return std::move(elements[i]); });
      break;
    case DataArrayForm::kInts: block = MakeArrayBlock<Int>(count, arena, [=](Int i) { return elements[i]._int; }); break;
    case DataArrayForm::kFloats: block = MakeArrayBlock<Float>(count, arena, [=](Int i) { return elements[i]._float; }); break;
    case DataArrayForm::kShort: return MakeShortArray(elements, count);
  }
  return MakeArray(form, count, block);
}

Result<Data> Data::CreateArray(const Int* elements, Int count, DataArena* arena) noexcept
{
  return MakeArray(DataArrayForm::kInts, count, MakeArrayBlock<Int>(count, arena, [=](Int i) { return elements[i]; }));
}

Result<Data> Data::CreateArray(const Float* elements, Int count, DataArena* arena) noexcept
{
  return MakeArray(DataArrayForm::kFloats, count, MakeArrayBlock<Float>(count, arena, [=](Int i) { return elements[i]; }));
}

Data Data::MakeShortArray(const Data* elements, Int count) noexcept
{
  Data array;
  for (Int i = 0; i < count; ++i)
    array._singles[i] = static_cast<Float32>(elements[i]._float);
  array._kind = DataKind::kArray;
  array._form = DataArrayForm::kShort;
  array._shortCount = static_cast<Byte>(count);
  return array;
}

DataArrayView Data::GetView() const noexcept
{
  if (_form == DataArrayForm::kShort)
    return {_form, _singles, _shortCount};
  return _block ? DataArrayView(_form, _block + 1, _block->count) : DataArrayView();
}

Result<Bool> Data::GetBool() const noexcept
{
  if (_kind != DataKind::kBool)
    return ConversionError(DataKind::kBool, _kind);
  return _bool;
}

Result<Int> Data::GetInt() const noexcept
{
  if (_kind == DataKind::kInt)
    return _int;
  // 2^63 is the first float that does not fit; not-a-number fails both tests.
  if (_kind == DataKind::kFloat && _float >= -9223372036854775808.0 && _float < 9223372036854775808.0)
    return static_cast<Int>(_float);
  return ConversionError(DataKind::kInt, _kind);
}

Result<Float> Data::GetFloat() const noexcept
{
  if (_kind == DataKind::kFloat)
    return _float;
  if (_kind == DataKind::kInt)
    return static_cast<Float>(_int);
  return ConversionError(DataKind::kFloat, _kind);
}

Result<String> Data::GetString() const noexcept
{
  if (_kind != DataKind::kString)
    return ConversionError(DataKind::kString, _kind);
  return _string;
}

Result<DataDictionary> Data::GetDictionary() const noexcept
{
  if (_kind != DataKind::kDictionary)
    return ConversionError(DataKind::kDictionary, _kind);
  DataDictionary dictionary;
  dictionary._block = _block;
  AddReference(_block);
  return dictionary;
}

Result<DataArrayView> Data::GetArray() const noexcept
{
  if (_kind != DataKind::kArray)
    return ConversionError(DataKind::kArray, _kind);
  return GetView();
}

namespace
{

Bool AreEqual(const DataArrayView& a, const DataArrayView& b) noexcept
{
  Bool areEqual = a.GetCount() == b.GetCount();
  for (Int i = 0; areEqual && i < a.GetCount(); ++i)
    areEqual = a[i] == b[i];
  return areEqual;
}

/// The same for the members of two dictionaries, in any order.
Bool AreEqual(DataBlock* a, DataBlock* b) noexcept
{
  const Int count = a ? a->count : 0;
  if (count != (b ? b->count : 0))
    return false;
  for (Int i = 0; a != b && i < count; ++i)
  {
    const DataMember& member = a->GetElements<DataMember>()[i];
    const DataMember* const other = FindMember(b, member.key);
    if (!other || !(member.value == other->value))
      return false;
  }
  return true;
}

}  // namespace

Bool operator==(const Data& a, const Data& b) noexcept
{
  if (a._kind != b._kind)
    return false;
  switch (a._kind)
  {
    case DataKind::kNil: return true;
    case DataKind::kBool: return a._bool == b._bool;
    case DataKind::kInt: return a._int == b._int;
    case DataKind::kFloat: return a._float == b._float;
    case DataKind::kString: return a._string == b._string;
    case DataKind::kArray:
    case DataKind::kDictionary: break;
  }
  return a._kind == DataKind::kArray ? AreEqual(a.GetView(), b.GetView()) : AreEqual(a._block, b._block);
}

}  // namespace q7z
