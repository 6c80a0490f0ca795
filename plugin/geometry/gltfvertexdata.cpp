#include "plugin/geometry/gltfvertexdata.h"

#include <algorithm>
#include <bit>

#include "framework/hashmap.h"

namespace q7z
{

namespace
{

Bool IsNaN(const Vector32& v) noexcept
{
  return v.x != v.x || v.y != v.y || v.z != v.z;
}

Bool IsNaN(const VertexColor& c) noexcept
{
  return c.r != c.r || c.g != c.g || c.b != c.b || c.a != c.a;
}

/// Two numbers as one word. Adding 0 turns -0, which equals 0, into it.
UInt PackPair(Float32 first, Float32 second) noexcept
{
  return UInt(std::bit_cast<UInt32>(first + 0.0f)) << 32 | std::bit_cast<UInt32>(second + 0.0f);
}

}  // namespace

Result<void> VertexPositions::AppendElsewhere(const Vector& position) noexcept
{
  RETURN_IF_ERROR(_others.Append(position));
  return _sources.Append(static_cast<Int32>(_pointCount + _others.GetCount() - 1));
}

BaseArray<Int32> VertexPositions::TakePointsOfCopies() noexcept
{
  if (_others.IsPopulated())
  {
    for (Int32& source : _sources)
      source = source < _pointCount ? source : kNone;
  }
  return std::move(_sources);
}

Result<void> VertexBytes::Init(GltfBuffer& buffer, Int stride, Int count) noexcept
{
  _buffer = &buffer;
  _offset = buffer.GetBytes().GetCount();
  _stride = stride;
  ASSIGN_OR_RETURN(_first, buffer.AppendRoom(count * stride));
  _count = count;
  return {};
}

Result<void> VertexBytes::Reserve(Int count) noexcept
{
  RETURN_IF_ERROR(_buffer->Reserve((count - _count) * _stride));
  _first = _buffer->GetRoom(_offset);
  return {};
}

void VertexBytes::Append() noexcept
{
  DropError(_buffer->AppendRoom(_stride));  // there is room
  ++_count;
}

Result<void> VertexData::Init(const Vector* positions, Int32 vertices_count, Bool hasColors) noexcept
{
  VertexLayout layout{sizeof(Vector32) + sizeof(VertexUv), 0, sizeof(Vector32), VertexLayout::kNone};
  if (hasColors)
  {
    layout.color = layout.stride;
    layout.stride += sizeof(VertexColor);
  }
  return Init(positions, vertices_count, layout, _ownBuffer);
}

Result<void> VertexData::Init(const Vector* positions, Int32 vertices_count, const VertexLayout& layout,
                              GltfBuffer& buffer) noexcept
{
  CHECK_STATE(positions);
  CHECK_STATE(vertices_count > 0);
  RETURN_IF_ERROR(_isProcessed.Resize(vertices_count));
  RETURN_IF_ERROR(_copyCounts.Resize(vertices_count));
  RETURN_IF_ERROR(_older.ResizeForOverwrite(vertices_count));
  RETURN_IF_ERROR(_vertices.Init(buffer, layout.stride, vertices_count));
  std::fill_n(_older.begin(), vertices_count, kNone);
  _positions.Init(positions, vertices_count);
  _normals.Init(_vertices, layout.normal);
  _uvs.Init(_vertices, layout.uv);
  _polygonColors.Init(_vertices, layout.color);
  _vertexCount = vertices_count;
  _capacity = vertices_count;
  _isInitialized = true;
  return {};
}

Result<void> VertexData::CheckHostPoint(Int32 vertex_index) const noexcept
{
  CHECK_ARGUMENT((vertex_index >= 0 && vertex_index < _isProcessed.GetCount()));
  return {};
}

Result<Int32> VertexData::AddVertexData(Int32 vertex_index, const Vector32& normal, const Vector32& uv, const VertexColor& color,
                                        Bool skipLookup) noexcept
{
  CHECK_STATE(_isInitialized);
  RETURN_IF_ERROR(CheckHostPoint(vertex_index));
  const Int32 found = skipLookup ? kNone : FindVertex(vertex_index, normal, uv, color);
  return found != kNone ? found : AddMissing(vertex_index, normal, uv, color);
}

Result<Int32> VertexData::AddMissing(Int32 point, const Vector32& normal, const Vector32& uv, const VertexColor& color) noexcept
{
  const Key key = MakeKey(point, normal, uv, color);
  RETURN_IF_ERROR(NoteUvDepth(key.uv.z));
  if (_isProcessed[point])
    return AddCopy(key);
  SetValues(point, key);
  _isProcessed[point] = 1;
  _older[point] = HasNaN(key) ? kNone : point;
  return point;
}

Result<void> VertexData::Reserve(Int vertexCount) noexcept
{
  RETURN_IF_ERROR(_positions.Reserve(vertexCount));
  RETURN_IF_ERROR(_vertices.Reserve(vertexCount));
  RETURN_IF_ERROR(_older.Reserve(vertexCount));
  if (_uvDepths.IsPopulated())
    RETURN_IF_ERROR(_uvDepths.Reserve(vertexCount));
  _capacity = std::max(_capacity, vertexCount);
  return {};
}

/// Room for one more vertex in every array, so that appending it cannot fail halfway.
Result<void> VertexData::MakeRoom() noexcept
{
  if (_vertexCount == INT32_MAX)
    return Error::OutOfMemory();
  return _vertexCount < _capacity ? Result<void>() : Reserve(_capacity + _capacity / 2 + 8);
}

/// For a vertex that is about to be made.
Result<void> VertexData::NoteUvDepth(Float32 depth) noexcept
{
  if (_uvDepths.IsPopulated() || (_hasUvDepth && depth == _uvDepth))
    return {};
  if (!_hasUvDepth && depth == depth)
  {
    _uvDepth = depth;
    _hasUvDepth = true;
    return {};
  }
  RETURN_IF_ERROR(_uvDepths.Reserve(_capacity));
  RETURN_IF_ERROR(_uvDepths.ResizeForOverwrite(_vertexCount));
  std::fill(_uvDepths.begin(), _uvDepths.end(), _uvDepth);
  return {};
}

void VertexData::SetValues(Int32 vertex, const Key& key) noexcept
{
  Byte* const bytes = _vertices.GetVertex(vertex);
  _normals.Set(bytes, key.normal);
  _uvs.Set(bytes, {key.uv.x, key.uv.y});
  _polygonColors.Set(bytes, key.color);
  if (_uvDepths.IsPopulated())
    _uvDepths[vertex] = key.uv.z;
}

/// What a vertex has beside its position.
Int32 VertexData::AppendValues(const Key& key) noexcept
{
  // Room for all of it was made before.
  _vertices.Append();
  DropError(_older.Append(kNone));
  if (_uvDepths.IsPopulated())
    DropError(_uvDepths.Append(0));
  SetValues(_vertexCount, key);
  return _vertexCount++;
}

Result<Int32> VertexData::AddVertex(const Vector& position, const Vector32& normal, const Vector32& uv,
                                    const VertexColor& color) noexcept
{
  CHECK_STATE(_isInitialized);
  const Key key = MakeKey(kNone, normal, uv, color);
  RETURN_IF_ERROR(NoteUvDepth(key.uv.z));
  RETURN_IF_ERROR(MakeRoom());
  RETURN_IF_ERROR(_positions.AppendElsewhere(position));
  return AppendValues(key);
}

/// Such a vertex is found by nothing and enters no list.
Bool VertexData::HasNaN(const Key& key) noexcept
{
  return IsNaN(key.normal) || IsNaN(key.uv) || IsNaN(key.color);
}

VertexData::Key VertexData::MakeKey(Int32 point, const Vector32& normal, const Vector32& uv,
                                    const VertexColor& color) const noexcept
{
  return {point, _normals.IsKept() ? normal : Vector32(), _uvs.IsKept() ? uv : Vector32(),
          _polygonColors.IsKept() ? color : VertexColor()};
}

VertexData::Key VertexData::GetKey(Int32 vertex) const noexcept
{
  return {_positions.GetPoint(vertex), GetNormalOf(vertex), GetUvOf(vertex), GetColorOf(vertex)};
}

/// One more vertex of a point.
Result<Int32> VertexData::AddCopy(const Key& key) noexcept
{
  RETURN_IF_ERROR(MakeRoom());
  const Bool isLost = HasNaN(key);
  const Byte count = _copyCounts[key.point];
  if (!isLost && count >= kLongestWalk)
    RETURN_IF_ERROR(MakeSlots(kLongestWalk + 1));
  DropError(_positions.AppendAtPoint(key.point));  // room was made
  const Int32 vertex = AppendValues(key);
  if (isLost)
    return vertex;
  _older[vertex] = _older[key.point];
  _older[key.point] = vertex;
  if (count <= kLongestWalk)
    ++_copyCounts[key.point];
  if (count == kLongestWalk)
    EnterCopiesOf(key.point);
  else if (count > kLongestWalk)
    EnterCopy(vertex);
  return vertex;
}

UInt32 VertexData::GetHash(const Key& key) noexcept
{
  UInt hash = MixBits(static_cast<UInt32>(key.point));
  hash = MixBits(hash ^ PackPair(key.normal.x, key.normal.y));
  hash = MixBits(hash ^ PackPair(key.normal.z, key.uv.x));
  hash = MixBits(hash ^ PackPair(key.uv.y, key.uv.z));
  hash = MixBits(hash ^ PackPair(key.color.r, key.color.g));
  return static_cast<UInt32>(MixBits(hash ^ PackPair(key.color.b, key.color.a)));
}

Bool VertexData::HasNumbers(Int32 vertex, const Vector32& normal, const Vector32& uv, const VertexColor& color) const noexcept
{
  const Byte* const bytes = _vertices.GetVertex(vertex);
  return _normals.IsEqual(bytes, normal) && _uvs.IsEqual(bytes, {uv.x, uv.y}) && HasUvDepth(vertex, uv) &&
         _polygonColors.IsEqual(bytes, color);
}

/// For a point that has vertices that can be found.
Int32 VertexData::FindAmongCopies(const Key& key) const noexcept
{
  // Of two equal ones the later counts.
  Int32 vertex = _older[key.point];
  for (Byte i = 0; i < kLongestWalk && IsCopy(vertex); ++i, vertex = _older[vertex])
  {
    if (HasValues(vertex, key))
      return vertex;
  }
  if (IsCopy(vertex))
  {
    const Int32 found = FindInSlots(key);
    if (found != kNone)
      return found;
  }
  // The point itself is the oldest, and in no list when it has a NaN.
  return !HasNaN(key) && HasValues(key.point, key) ? key.point : kNone;
}

Int32 VertexData::FindInSlots(const Key& key) const noexcept
{
  const UInt32 mask = static_cast<UInt32>(_slots.GetCount() - 1);
  for (UInt32 slot = GetHash(key) & mask; _slots[slot] != kNone; slot = (slot + 1) & mask)
  {
    if (_positions.GetPoint(_slots[slot]) == key.point && HasValues(_slots[slot], key))
      return _slots[slot];
  }
  return kNone;
}

/// Replaces an older vertex with an equal key.
void VertexData::EnterCopy(Int32 vertex) noexcept
{
  const Key key = GetKey(vertex);
  const UInt32 mask = static_cast<UInt32>(_slots.GetCount() - 1);
  UInt32 slot = GetHash(key) & mask;
  while (_slots[slot] != kNone && !(_positions.GetPoint(_slots[slot]) == key.point && HasValues(_slots[slot], key)))
    slot = (slot + 1) & mask;
  _slotsInUse += _slots[slot] == kNone;
  _slots[slot] = vertex;
}

/// Enters the copies of a point whose list has just become too long to be walked.
void VertexData::EnterCopiesOf(Int32 point) noexcept
{
  Int32 copies[kLongestWalk + 1];
  Int count = 0;
  for (Int32 vertex = _older[point]; IsCopy(vertex); vertex = _older[vertex])
    copies[count++] = vertex;
  while (count > 0)
    EnterCopy(copies[--count]);
}

/// Room for count more copies, of which half of the slots stays free at least.
Result<void> VertexData::MakeSlots(Int count) noexcept
{
  if ((_slotsInUse + count) * 2 <= _slots.GetCount())
    return {};
  BaseArray<Int32> slots;
  RETURN_IF_ERROR(slots.ResizeForOverwrite(static_cast<Int>(std::bit_ceil(static_cast<UInt>(_slotsInUse + count) * 3))));
  std::fill_n(slots.begin(), slots.GetCount(), kNone);
  std::swap(slots, _slots);
  _slotsInUse = 0;
  for (const Int32 vertex : slots)
  {
    if (vertex != kNone)
      EnterCopy(vertex);
  }
  return {};
}

Vector32 VertexData::GetNormalOf(Int32 vertex) const noexcept
{
  return IsUnused(vertex) || !_normals.IsKept() ? Vector32() : _normals.Get(_vertices.GetVertex(vertex));
}

Vector32 VertexData::GetUvOf(Int32 vertex) const noexcept
{
  if (IsUnused(vertex) || !_uvs.IsKept())
    return {};
  const VertexUv uv = _uvs.Get(_vertices.GetVertex(vertex));
  return {uv.x, uv.y, GetUvDepth(vertex)};
}

VertexColor VertexData::GetColorOf(Int32 vertex) const noexcept
{
  return IsUnused(vertex) || !_polygonColors.IsKept() ? VertexColor() : _polygonColors.Get(_vertices.GetVertex(vertex));
}

Result<Vector> VertexData::GetPosition(Int32 vertex_index) const noexcept
{
  CHECK_STATE(_isInitialized);
  CHECK_ARGUMENT((vertex_index >= 0 && vertex_index < _positions.GetCount()));
  return _positions[vertex_index];
}

Result<Vector32> VertexData::GetNormal(Int32 vertex_index) const noexcept
{
  CHECK_STATE(_isInitialized);
  CHECK_ARGUMENT((vertex_index >= 0 && vertex_index < _normals.GetCount()));
  return GetNormalOf(vertex_index);
}

Result<Vector32> VertexData::GetUV(Int32 vertex_index) const noexcept
{
  CHECK_STATE(_isInitialized);
  CHECK_ARGUMENT((vertex_index >= 0 && vertex_index < _uvs.GetCount()));
  return GetUvOf(vertex_index);
}

Result<VertexColor> VertexData::GetPolygonColor(Int32 vertex_index) const noexcept
{
  CHECK_STATE(_isInitialized);
  CHECK_ARGUMENT((vertex_index >= 0 && vertex_index < _polygonColors.GetCount()));
  return GetColorOf(vertex_index);
}

/// The next point from first on that a corner has given its values, or none has; the point count when there is no such.
Int32 VertexData::FindNext(Int32 first, Byte isProcessed) const noexcept
{
  return static_cast<Int32>(std::find(_isProcessed.begin() + first, _isProcessed.end(), isProcessed) - _isProcessed.begin());
}

void VertexData::FillUnused() noexcept
{
  for (Int32 point = FindNext(0, 0); point < GetPointCount(); point = FindNext(point + 1, 0))
    SetValues(point, Key());
}

Int32 VertexData::FindFirstUsed() const noexcept
{
  const Int32 point = FindNext(0, 1);
  return point < GetPointCount() ? point : kNone;
}

Int32 VertexData::FindLastUsed() const noexcept
{
  Int32 vertex = _vertexCount - 1;  // a copy is used
  while (vertex >= 0 && IsUnused(vertex))
    --vertex;
  return vertex;
}

BaseArray<Int32> VertexData::TakePointsOfCopies() noexcept
{
  _isInitialized = false;
  return _positions.TakePointsOfCopies();
}

}  // namespace q7z
