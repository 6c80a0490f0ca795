#include "tests/geometry/meshexportfixture.h"

#include <algorithm>
#include <cstring>

#include "plugin/module/hostids.h"

namespace q7z::test
{

namespace
{

Float ReadComponent(const Byte* bytes, UInt32 componentType)
{
  Float32 number = 0;
  UInt32 index = 0;
  UInt16 shortIndex = 0;
  switch (componentType)
  {
    case 5126: std::memcpy(&number, bytes, 4); return number;
    case 5125: std::memcpy(&index, bytes, 4); return index;
    default: std::memcpy(&shortIndex, bytes, 2); return shortIndex;
  }
}

std::vector<Float> Numbers(const Result<Data>& bound)
{
  std::vector<Float> numbers;
  const DataArrayView values = bound.GetValue().GetArray().GetValue();
  for (const Data& value : values)
    numbers.push_back(value.GetFloat().GetValue());
  return numbers;
}

HostCornerHandle WriteCorners(const HostCornerHandle& handle, const std::vector<HostCorners>& corners)
{
  for (size_t i = 0; i < corners.size(); ++i)
    handle.Set(static_cast<Int>(i), corners[i]);
  return handle;
}

}  // namespace

std::vector<Float> CollectedMesh::Read(const MeshAccessor& attribute, const GltfBufferView& view) const
{
  std::vector<Float> values;
  const GltfAccessor& accessor = attribute.accessor;
  const Int componentBytes = accessor.GetComponentType() == 5123 ? 2 : 4;
  const Int elementBytes = componentBytes * accessor.GetComponentCount();
  const Int stride = view.GetByteStride() ? view.GetByteStride() : elementBytes;
  for (Int i = 0; i < accessor.GetCount(); ++i)
  {
    const Int inView = accessor.GetByteOffset() + i * stride;
    if (inView + elementBytes > view.GetByteLength() ||
        view.GetByteOffset() + inView + elementBytes > buffer.GetBytes().GetCount())
      break;
    for (Int c = 0; c < accessor.GetComponentCount(); ++c)
    {
      const Byte* const component = buffer.GetBytes().begin() + view.GetByteOffset() + inView + c * componentBytes;
      values.push_back(ReadComponent(component, accessor.GetComponentType()));
    }
  }
  return values;
}

std::vector<Float> Min(const MeshAccessor& attribute)
{
  return Numbers(attribute.accessor.MakeMin());
}

std::vector<Float> Max(const MeshAccessor& attribute)
{
  return Numbers(attribute.accessor.MakeMax());
}

MeshExport::MeshExport()
{
  _options.flipZ = false;
  _options.exportMorphs = false;
}

HostPolygonObject* MeshExport::Make(const std::vector<Vector>& points, const std::vector<HostPolygon>& polygons)
{
  HostPolygonObject* const op = HostPolygonObject::Alloc(static_cast<Int32>(points.size()), static_cast<Int32>(polygons.size()));
  std::copy(points.begin(), points.end(), op->GetPointsW());
  std::copy(polygons.begin(), polygons.end(), op->GetPolygonsW());
  Document()->InsertObject(op, nullptr, nullptr);
  return op;
}

HostPolygonObject* MeshExport::MakeQuad()
{
  return Make({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}}, {{0, 1, 2, 2}, {2, 1, 3, 3}});
}

void MeshExport::AddNormals(HostPolygonObject* op, const std::vector<HostCorners>& corners, Bool asDoubles)
{
  auto* const tag = static_cast<HostNormalTag*>(op->MakeTag(kNormalTagType, static_cast<Int32>(corners.size())));
  WriteCorners(tag->GetHandleW(asDoubles), corners);
}

void MeshExport::AddUvs(HostPolygonObject* op, const std::vector<HostCorners>& corners)
{
  auto* const tag = static_cast<HostUvwTag*>(op->MakeTag(kUvwTagType, static_cast<Int32>(corners.size())));
  WriteCorners(tag->GetHandleW(), corners);
}

HostVertexColorTag* MeshExport::AddColors(HostPolygonObject* op, Bool perPoint)
{
  auto* const tag = static_cast<HostVertexColorTag*>(op->MakeTag(kVertexColorTagType, op->GetPointCount()));
  tag->SetPerPoint(perPoint);
  return tag;
}

HostTag* MeshExport::AddTexture(HostPolygonObject* op)
{
  return op->MakeTag(kTextureTagType, 0);
}

HostObject* MeshExport::AddJoint(Int32 type)
{
  HostObject* const joint = HostObject::Alloc(type);
  Document()->InsertObject(joint, nullptr, nullptr);
  return joint;
}

CollectedMesh MeshExport::Collect(HostPolygonObject* op)
{
  CollectedMesh mesh;
  mesh.error =
    ErrorText(CollectMeshData(mesh.record, mesh.buffer, op, Document(), op->GetPointsR(), mesh.positions, _options, false));
  return mesh;
}

CollectedMesh MeshExport::CollectTarget(HostPolygonObject* op, const std::vector<Vector>& points, const CollectedMesh& mesh)
{
  CollectedMesh target;
  DropError(target.positions.CopyFrom(mesh.positions));  // seen in the target
  target.error =
    ErrorText(CollectMeshData(target.record, target.buffer, op, Document(), points.data(), target.positions, _options, true));
  return target;
}

}  // namespace q7z::test
