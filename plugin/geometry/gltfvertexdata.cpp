#include "plugin/geometry/gltfvertexdata.h"

#include <algorithm>
#include <bit>
#include <numeric>

#include "framework/hashmap.h"

namespace q7z
{

namespace
{

Bool HasNaN(const Vector32& v) noexcept
{
  return v.x != v.x || v.y != v.y || v.z != v.z;
}

Bool HasNaN(const VertexColor& c) noexcept
{
  return c.r != c.r || c.g != c.g || c.b != c.b || c.a != c.a;
}

/// Two numbers as one word. Adding 0 turns -0, which equals 0, into it.
UInt PackPair(Float32 first, Float32 second) noexcept
{
  return UInt(std::bit_cast<UInt32>(first + 0.0f)) << 32 | std::bit_cast<UInt32>(second + 0.0f);
}

}  // namespace

Result<void> VertexPositions::Init(const Vector* points, Int32 pointCount) noexcept
{
  RETURN_IF_ERROR(_sources.ResizeForOverwrite(pointCount));
  std::iota(_sources.begin(), _sources.end(), 0);
  _points = points;
  _pointCount = pointCount;
  return {};
}

Result<void> VertexPositions::AppendElsewhere(const Vector& position) noexcept
{
  RETURN_IF_ERROR(_others.Append(position));
  return _sources.Append(static_cast<Int32>(_pointCount + _others.GetCount() - 1));
}

BaseArray<Int32> VertexPositions::TakePoints() noexcept
{
  if (_others.IsPopulated())
  {
    for (Int32& source : _sources)
      source = source < _pointCount ? source : kNone;
  }
  return std::move(_sources);
}

Result<void> VertexData::Init(const Vector* positions, Int32 vertices_count, Bool hasColors) noexcept
{
  CHECK_STATE(positions);
  CHECK_STATE(vertices_count > 0);
  _hasColors = hasColors;
  RETURN_IF_ERROR(_isProcessed.Resize(vertices_count));
  RETURN_IF_ERROR(_copyCounts.Resize(vertices_count));
  RETURN_IF_ERROR(Reserve(vertices_count));
  RETURN_IF_ERROR(_positions.Init(positions, vertices_count));
  RETURN_IF_ERROR(_normals.Resize(vertices_count));
  RETURN_IF_ERROR(_uvs.Resize(vertices_count));
  RETURN_IF_ERROR(_polygonColors.ResizeForOverwrite(hasColors ? vertices_count : 0));
  RETURN_IF_ERROR(_older.ResizeForOverwrite(vertices_count));
  std::fill(_polygonColors.begin(), _polygonColors.end(), VertexColor());
  std::fill_n(_older.begin(), vertices_count, kNone);
  _vertexCount = vertices_count;
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
  const Key key{vertex_index, normal, uv, color};
  const Int32 found = skipLookup ? kNone : FindVertex(vertex_index, normal, uv, color);
  if (found != kNone)
    return found;
  if (_isProcessed[vertex_index])
    return AddCopy(key);
  _normals[vertex_index] = normal;
  _uvs[vertex_index] = uv;
  if (_hasColors)
    _polygonColors[vertex_index] = color;
  _isProcessed[vertex_index] = 1;
  return vertex_index;
}

Result<void> VertexData::Reserve(Int vertexCount) noexcept
{
  RETURN_IF_ERROR(_positions.Reserve(vertexCount));
  RETURN_IF_ERROR(_normals.Reserve(vertexCount));
  RETURN_IF_ERROR(_uvs.Reserve(vertexCount));
  RETURN_IF_ERROR(_polygonColors.Reserve(_hasColors ? vertexCount : 0));
  RETURN_IF_ERROR(_older.Reserve(vertexCount));
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

/// What a vertex has beside its position.
Int32 VertexData::AppendValues(const Key& key) noexcept
{
  // Room for all of it was made before.
  DropError(_normals.Append(key.normal));
  DropError(_uvs.Append(key.uv));
  if (_hasColors)
    DropError(_polygonColors.Append(key.color));
  DropError(_older.Append(kNone));
  return _vertexCount++;
}

Result<Int32> VertexData::AddVertex(const Vector& position, const Vector32& normal, const Vector32& uv,
                                    const VertexColor& color) noexcept
{
  CHECK_STATE(_isInitialized);
  RETURN_IF_ERROR(MakeRoom());
  RETURN_IF_ERROR(_positions.AppendElsewhere(position));
  return AppendValues({kNone, normal, uv, color});
}

/// One more vertex of a point. A key with a NaN is found by nothing and enters no list.
Result<Int32> VertexData::AddCopy(const Key& key) noexcept
{
  RETURN_IF_ERROR(MakeRoom());
  const Bool isLost = HasNaN(key.normal) || HasNaN(key.uv) || (_hasColors && HasNaN(key.color));
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

/// For a point that has them.
Int32 VertexData::FindAmongCopies(const Key& key) const noexcept
{
  // From the newest to the oldest: of two equal ones the later counts.
  Int32 vertex = _older[key.point];
  for (Byte i = 0; i < kLongestWalk && vertex != kNone; ++i, vertex = _older[vertex])
  {
    if (HasValues(vertex, key))
      return vertex;
  }
  if (vertex != kNone)
  {
    const Int32 found = FindInSlots(key);
    if (found != kNone)
      return found;
  }
  return HasValues(key.point, key) ? key.point : kNone;
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
  for (Int32 vertex = _older[point]; vertex != kNone; vertex = _older[vertex])
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
  return _normals[vertex_index];
}

Result<Vector32> VertexData::GetUV(Int32 vertex_index) const noexcept
{
  CHECK_STATE(_isInitialized);
  CHECK_ARGUMENT((vertex_index >= 0 && vertex_index < _uvs.GetCount()));
  return _uvs[vertex_index];
}

Result<VertexColor> VertexData::GetPolygonColor(Int32 vertex_index) const noexcept
{
  CHECK_STATE(_isInitialized);
  CHECK_ARGUMENT((vertex_index >= 0 && vertex_index < _polygonColors.GetCount()));
  return _polygonColors[vertex_index];
}

BaseArray<Int32> VertexData::TakeHostPoints() noexcept
{
  _isInitialized = false;
  return _positions.TakePoints();
}

}  // namespace q7z
