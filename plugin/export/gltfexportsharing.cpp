// Which objects share one mesh of the file: those with equal points that came from the same object. The comparison is by a hash of
// the points alone, on purpose: two copies with equal points but other polygons share a mesh.

#include <bit>

#include "framework/check.h"
#include "plugin/export/gltfexporter.h"

namespace q7z
{

namespace
{

constexpr UInt kFactor = 0xBF58476D1CE4E5B9;

constexpr UInt Mix(UInt a) noexcept
{
  const UInt t = a ^ (a >> 32);
  const UInt u = t ^ (t >> 12) ^ (t >> 20);
  return u ^ (u >> 4) ^ (u >> 7);
}

UInt HashPoints(const Vector* points, Int32 count) noexcept
{
  UInt h = 0;
  for (Int32 i = 0; i < count; ++i)
  {
    const UInt x = Mix(std::bit_cast<UInt>(points[i].x));
    const UInt y = Mix(std::bit_cast<UInt>(points[i].y));
    const UInt z = Mix(std::bit_cast<UInt>(points[i].z));
    h = (x * kFactor + y + h) * kFactor + z + kFactor + 2;
  }
  return h;
}

}  // namespace

Result<UInt> GLTFExporter::PointHash(HostPolygonObject* op) noexcept
{
  CHECK_STATE(op && op->GetType() == 5100);
  const Vector* const points = op->GetPointsR();
  const Int32 count = op->GetPointCount();
  // Copies have the same points in memory, and nothing changes them while the file is made.
  if (const PointsHash* const known = _pointHashes.Find(points); known && known->count == count)
    return known->hash;
  const UInt hash = points ? HashPoints(points, count) : 0;
  CHECK_STATE(hash);
  RETURN_IF_ERROR(_pointHashes.Set(points, PointsHash{count, hash}));
  return hash;
}

Result<Int32> GLTFExporter::FindSharedMesh(HostPolygonObject* op, HostObject* source, HostObject*& fileUnder) noexcept
{
  CHECK_ARGUMENT(source);
  ASSIGN_OR_RETURN(const UInt hashOp, PointHash(op));
  CHECK_STATE(hashOp);
  if (source->GetType() != kPolygonObjectType)
    return FindSharedCopy(op, source, hashOp);
  ASSIGN_OR_RETURN(const UInt hashSource, PointHash(ToPoly(source)));
  if (hashSource != hashOp)
    return -1;
  if (const Int32* const known = _meshIndices.Find(source))
    return *known;
  // The first copy of an unchanged object files its mesh where all later copies look.
  fileUnder = source;
  return -1;
}

/// Copies that one generator made know each other through it.
Result<Int32> GLTFExporter::FindSharedCopy(HostPolygonObject* op, HostObject* source, UInt hashOp) noexcept
{
  using Copies = HashMap<UInt, HostObject*>;
  ASSIGN_OR_RETURN(Copies * copies, _sourceCopies.FindOrInsert(source));
  HostObject** const copy = copies->Find(hashOp);
  const Int32* const known = copy && *copy != op ? _meshIndices.Find(*copy) : nullptr;
  if (known)
    return *known;
  RETURN_IF_ERROR(copies->Set(hashOp, op));
  return -1;
}

}  // namespace q7z
