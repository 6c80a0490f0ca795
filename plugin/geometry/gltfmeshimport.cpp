// The operations that write a primitive's attributes into the host's arrays: points, polygons, normals, UVs and selections.

#include <algorithm>

#include "framework/basearray.h"
#include "plugin/document/gltfaccessor.h"
#include "plugin/geometry/gltfelementreader.h"
#include "plugin/geometry/gltfmeshcreator.h"

namespace q7z
{

namespace
{

constexpr Bool IsSinglePrecision(UInt32 componentType) noexcept
{
  return componentType == kFloatComponent;
}

/// The vertices of a polygon's corners a, b, c, counted from the primitive's first point. Unsigned, so that an index below the
/// cursor is out of every range.
struct CornerVertices
{
  CornerVertices(const HostPolygon& polygon, Int32 cursorPoints) noexcept
      : vertices{Int(polygon.a) - cursorPoints, Int(polygon.b) - cursorPoints, Int(polygon.c) - cursorPoints}
  {}
  Int vertices[3];
};

/// Writes one polygon's corners in the precision of T; corner d repeats c. values has componentCount numbers a corner, and a UV's
/// third is 1.
template <int componentCount, typename T>
void WriteCorners(T* target, const Float (&values)[3][componentCount]) noexcept
{
  for (int corner = 0; corner < 4; ++corner)
  {
    const Float* const source = values[corner < 3 ? corner : 2];
    target[3 * corner] = static_cast<T>(source[0]);
    target[3 * corner + 1] = static_cast<T>(source[1]);
    target[3 * corner + 2] = componentCount == 3 ? static_cast<T>(source[componentCount - 1]) : T(1);
  }
}

/// What a corner attribute is read from and written to.
struct CornerJob
{
  const HostPolygon* polygons;  // the primitive's first polygon
  Int polyCount;
  Int32 cursorPoints;
  Int32 cursorPolygons;
  HostCornerHandle handle;
  Vector multiplier{1, 1, 1};
  const GltfAccessor* base;
  const GltfAccessor* target;  // null for none
};

/// The plain loop: every corner's element, times the multiplier, into an array of T.
template <int componentCount, typename T, typename Read>
Result<void> FillCorners(const CornerJob& job, T* tagData, const Read& read) noexcept
{
  T* out = tagData + 12 * Int(job.cursorPolygons);
  for (Int i = 0; i < job.polyCount; ++i, out += 12)
  {
    const CornerVertices corners(job.polygons[i], job.cursorPoints);
    Float values[3][componentCount] = {};
    for (int k = 0; k < 3; ++k)
    {
      if (!read(corners.vertices[k], values[k])) [[unlikely]]
        return GetReadError<componentCount>(*job.base, corners.vertices[k]);
      for (int c = 0; c < componentCount; ++c)
        values[k][c] *= job.multiplier[c];
    }
    WriteCorners(out, values);
  }
  return {};
}

/// Base and target of a vertex, added.
template <int componentCount>
struct ElementSum
{
  Float values[componentCount];
};

/// Adds base and target for all vertices that have both; none when that would read far more than the corners need, or when the
/// elements have to be read one by one.
template <int componentCount>
Result<void> SumElements(const CornerJob& job, BaseArray<ElementSum<componentCount>>& sums) noexcept
{
  GltfElements elements;
  const Int count = std::min(job.base->GetCount(), job.target->GetCount());
  const Bool isBulk = job.base->GetElements(elements) && elements.componentCount >= componentCount &&
                      job.target->GetElements(elements) && elements.componentCount >= componentCount;
  if (!isBulk || count > 12 * job.polyCount)
    return {};
  RETURN_IF_ERROR(sums.ResizeForOverwrite(count));
  RETURN_IF_ERROR(WithElementReader<componentCount>(*job.base,
                                                    [&](const auto& read) -> Result<void>
                                                    {
                                                      for (Int i = 0; i < count; ++i)
                                                      {
                                                        if (!read(i, sums[i].values)) [[unlikely]]
                                                          return GetReadError<componentCount>(*job.base, i);
                                                      }
                                                      return {};
                                                    }));
  return WithElementReader<componentCount>(*job.target,
                                           [&](const auto& read) -> Result<void>
                                           {
                                             for (Int i = 0; i < count; ++i)
                                             {
                                               Float delta[componentCount] = {};
                                               if (!read(i, delta)) [[unlikely]]
                                                 return GetReadError<componentCount>(*job.target, i);
                                               for (int c = 0; c < componentCount; ++c)
                                                 sums[i].values[c] += delta[c];
                                             }
                                             return {};
                                           });
}

/// One vertex by itself.
template <int componentCount>
Result<void> SumElement(const CornerJob& job, Int vertex, Float (&values)[componentCount]) noexcept
{
  Float deltas[componentCount] = {};
  RETURN_IF_ERROR(detail::ReadSingle(*job.base, vertex, values));
  RETURN_IF_ERROR(detail::ReadSingle(*job.target, vertex, deltas));
  for (int c = 0; c < componentCount; ++c)
    values[c] += deltas[c];
  return {};
}

/// The loop with a morph target, whose elements are added before the multiplier applies, into an array of T.
template <int componentCount, typename T>
Result<void> FillCornersWithTarget(const CornerJob& job, T* tagData) noexcept
{
  BaseArray<ElementSum<componentCount>> sums;
  RETURN_IF_ERROR(SumElements(job, sums));
  T* out = tagData + 12 * Int(job.cursorPolygons);
  for (Int i = 0; i < job.polyCount; ++i, out += 12)
  {
    const CornerVertices corners(job.polygons[i], job.cursorPoints);
    Float values[3][componentCount] = {};
    for (int k = 0; k < 3; ++k)
    {
      const Int vertex = corners.vertices[k];
      if (static_cast<UInt>(vertex) < static_cast<UInt>(sums.GetCount()))
        std::copy_n(sums[vertex].values, componentCount, values[k]);
      else
        RETURN_IF_ERROR(SumElement(job, vertex, values[k]));
      for (int c = 0; c < componentCount; ++c)
        values[k][c] *= job.multiplier[c];
    }
    WriteCorners(out, values);
  }
  return {};
}

template <int componentCount>
Result<void> WriteCornerAttribute(const CornerJob& job) noexcept
{
  if (job.target)
    return job.handle.singles ? FillCornersWithTarget<componentCount>(job, job.handle.singles)
                              : FillCornersWithTarget<componentCount>(job, job.handle.doubles);
  return WithElementReader<componentCount>(*job.base,
                                           [&](const auto& read)
                                           {
                                             return job.handle.singles
                                                      ? FillCorners<componentCount>(job, job.handle.singles, read)
                                                      : FillCorners<componentCount>(job, job.handle.doubles, read);
                                           });
}

// Points that stay in the cache between the reading of a base and of its target.
constexpr Int kChunkVertices = 1024;

/// Calls write(i, element) for the elements from first to end - 1.
template <typename Write>
Result<void> ReadVectors(const GltfAccessor& accessor, Int first, Int end, const Write& write) noexcept
{
  return WithElementReader<3>(accessor,
                              [&](const auto& read) -> Result<void>
                              {
                                for (Int i = first; i < end; ++i)
                                {
                                  Float p[3] = {};
                                  if (!read(i, p)) [[unlikely]]
                                    return GetReadError<3>(accessor, i);
                                  write(i, Vector{p[0], p[1], p[2]});
                                }
                                return {};
                              });
}

/// Whether values of these accessors are 64-bit numbers that 32 bits would round. The sum of two 32-bit numbers is kept as one:
/// nobody reads a pose more finely than its base, and it would take twice the memory.
Bool NeedsDoubles(const GltfAccessor& base, const GltfAccessor* target) noexcept
{
  return !IsSinglePrecision(base.GetComponentType()) || (target && !IsSinglePrecision(target->GetComponentType()));
}

}  // namespace

Result<void> AddMeshPositions(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors,
                              const PrimitiveAccessors* targetAccessors, Int vertexCount, const Vector& flipZMultiplier,
                              Float scale) noexcept
{
  const GltfAccessor* const ptsAccessor = baseAccessors.positions;
  CHECK_STATE(ptsAccessor);
  HostPolygonObject* const poly = meshCreator.mesh.get();
  CHECK_STATE(poly);
  Vector* const ptsArray = poly->GetPointsW();
  CHECK_STATE(ptsArray);
  if (vertexCount < 1)
    return {};
  Vector* const out = ptsArray + meshCreator.cursorPoints;
  const auto convert = [&](const Vector& p)
  { return Vector{p.x * flipZMultiplier.x * scale, p.y * flipZMultiplier.y * scale, p.z * flipZMultiplier.z * scale}; };
  if (!targetAccessors)
    return ReadVectors(*ptsAccessor, 0, vertexCount, [&](Int i, const Vector& p) { out[i] = convert(p); });
  const GltfAccessor* const targetAccessor = targetAccessors->positions;
  CHECK_STATE(targetAccessor);
  for (Int first = 0; first < vertexCount; first += kChunkVertices)
  {
    const Int end = std::min(first + kChunkVertices, vertexCount);
    RETURN_IF_ERROR(ReadVectors(*ptsAccessor, first, end, [&](Int i, const Vector& p) { out[i] = p; }));
    RETURN_IF_ERROR(ReadVectors(*targetAccessor, first, end,
                                [&](Int i, const Vector& delta) { out[i] = convert(out[i] + delta); }));
  }
  return {};
}

Result<void> AddMeshPolygons(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors, Int polyCount,
                             Bool flipZ) noexcept
{
  const GltfAccessor* const idxAccessor = baseAccessors.indices;
  CHECK_STATE(idxAccessor);
  HostPolygonObject* const poly = meshCreator.mesh.get();
  CHECK_STATE(poly);
  HostPolygon* const polys = poly->GetPolygonsW();
  CHECK_STATE(polys);
  HostPolygon* const out = polys + meshCreator.cursorPolygons;
  const UInt32 cursorPoints = static_cast<UInt32>(meshCreator.cursorPoints);
  // An index beyond the vertices is written as it stands; the mirror turns the winding by exchanging the first and third corner.
  const auto write = [&](Int i, UInt32 i0, UInt32 i1, UInt32 i2)
  {
    const Int32 a = static_cast<Int32>(i0 + cursorPoints);
    const Int32 b = static_cast<Int32>(i1 + cursorPoints);
    const Int32 c = static_cast<Int32>(i2 + cursorPoints);
    out[i] = flipZ ? HostPolygon{c, b, a, a} : HostPolygon{a, b, c, c};
  };
  if (idxAccessor->IsNonIndexed())
  {
    for (Int i = 0; i < polyCount; ++i)
    {
      const UInt32 first = static_cast<UInt32>(3 * i);
      write(i, first, first + 1, first + 2);
    }
    return {};
  }
  GltfElements elements;
  const auto runBulk = [&](auto load)
  {
    const Byte* element = elements.first;
    for (Int i = 0; i < polyCount; ++i, element += 3 * elements.stride)
      write(i, load(element, 0), load(element + elements.stride, 0), load(element + 2 * elements.stride, 0));
  };
  if (idxAccessor->GetElements(elements) && elements.count / 3 >= polyCount && WithIndexLoader(elements, runBulk))
    return {};
  for (Int i = 0; i < polyCount; ++i)
  {
    ASSIGN_OR_RETURN(const UInt32 i0, idxAccessor->GetUInt32(3 * i));
    ASSIGN_OR_RETURN(const UInt32 i1, idxAccessor->GetUInt32(3 * i + 1));
    ASSIGN_OR_RETURN(const UInt32 i2, idxAccessor->GetUInt32(3 * i + 2));
    write(i, i0, i1, i2);
  }
  return {};
}

Result<void> AddMeshNormals(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors,
                            const PrimitiveAccessors* targetAccessors, Int polyCount, const Vector& flipZMultiplier) noexcept
{
  if (!meshCreator.normalTag || !baseAccessors.normals)
    return {};
  HostPolygonObject* const poly = meshCreator.mesh.get();
  CHECK_STATE(poly);
  const HostPolygon* const polys = poly->GetPolygonsR();
  CHECK_STATE(polys);
  const GltfAccessor* const target = targetAccessors ? targetAccessors->normals : nullptr;
  const HostCornerHandle handle = meshCreator.normalTag->GetHandleW(NeedsDoubles(*baseAccessors.normals, target));
  CHECK_STATE(handle);
  meshCreator.normalsWritten = true;
  return WriteCornerAttribute<3>({.polygons = polys + meshCreator.cursorPolygons,
                                  .polyCount = polyCount,
                                  .cursorPoints = meshCreator.cursorPoints,
                                  .cursorPolygons = meshCreator.cursorPolygons,
                                  .handle = handle,
                                  .multiplier = flipZMultiplier,
                                  .base = baseAccessors.normals,
                                  .target = target});
}

Result<void> AddMeshUVs(MeshCreator& meshCreator, const PrimitiveAccessors& baseAccessors,
                        const PrimitiveAccessors* targetAccessors, Int polyCount) noexcept
{
  if (!meshCreator.uvTag || baseAccessors.uvs.IsEmpty())
    return {};
  HostPolygonObject* const poly = meshCreator.mesh.get();
  CHECK_STATE(poly);
  const HostPolygon* const polys = poly->GetPolygonsR();
  CHECK_STATE(polys);
  // All sets write to the one tag, so the last set wins.
  for (const GltfAttributeSet& set : baseAccessors.uvs)
  {
    if (!set.accessor->IsOfType({"VEC2"_s}) || !set.accessor->IsOfType({kFloatComponent, kUnsignedByte, kUnsignedShort}))
      continue;
    const GltfAccessor* deltaAccessor = nullptr;
    if (targetAccessors)
    {
      deltaAccessor = FindSet(targetAccessors->uvs, set.number);
      CHECK_STATE(deltaAccessor);
    }
    meshCreator.uvsWritten = true;
    const HostCornerHandle handle = meshCreator.uvTag->GetHandleW(NeedsDoubles(*set.accessor, deltaAccessor));
    CHECK_STATE(handle);
    RETURN_IF_ERROR(WriteCornerAttribute<2>({.polygons = polys + meshCreator.cursorPolygons,
                                             .polyCount = polyCount,
                                             .cursorPoints = meshCreator.cursorPoints,
                                             .cursorPolygons = meshCreator.cursorPolygons,
                                             .handle = handle,
                                             .base = set.accessor,
                                             .target = deltaAccessor}));
  }
  return {};
}

Result<void> AddPolygonSelections(MeshCreator& meshCreator, const PrimitiveAccessors&, Int polyCount) noexcept
{
  HostOwner<HostPolygonSelectionTag> tag(static_cast<HostPolygonSelectionTag*>(HostTag::Alloc(kPolygonSelectionTagType)));
  if (!tag)
    return Error::OutOfMemory();
  HostSelection* const polySelBSel = tag->GetSelection();
  CHECK_STATE(polySelBSel);
  const Int32 last = static_cast<Int32>(meshCreator.cursorPolygons + polyCount - 1);
  if (!polySelBSel->SelectRange(meshCreator.cursorPolygons, last))
    return Error::OutOfMemory();
  ASSIGN_OR_RETURN(const String number, String::FromInt(meshCreator.currentPrimitive));
  ASSIGN_OR_RETURN(const String name, String::Format("prim-@"_s, {number}));
  if (!tag->SetName(name))
    return Error::OutOfMemory();
  RETURN_IF_ERROR(meshCreator.polygonSelections.Set(meshCreator.currentMaterial, tag.get()));
  if (!meshCreator.mesh->InsertTag(tag.get()))
    return Error::OutOfMemory();
  static_cast<void>(tag.release());  // the object owns it now
  return {};
}

}  // namespace q7z
