#include "plugin/geometry/gltfmeshexport.h"

#include "framework/check.h"
#include "plugin/geometry/gltfmeshexportparts.h"
#include "plugin/module/hostids.h"

namespace q7z
{

namespace
{

void MarkAttributes(MeshData& record, const HostPolygonObject* op, const ExportOptions& settings) noexcept
{
  record.indices.isUsed = true;
  record.positions.isUsed = true;
  // A phong tag alone is enough, though it gives no corner a normal.
  record.normals.isUsed = settings.exportNormals && (op->GetTag(kPhongTagType) || op->GetTag(kNormalTagType));
  record.uvs.isUsed = settings.exportUvs && op->GetTag(kUvwTagType);
  const auto* const colorTag = static_cast<const HostVertexColorTag*>(op->GetTag(kVertexColorTagType));
  record.polygonColors.isUsed = colorTag && !colorTag->IsPerPoint();
}

}  // namespace

MeshData::MeshData() noexcept
    : indices{GltfAccessor("SCALAR"_s, kUnsignedShort)},
      positions{GltfAccessor("VEC3"_s, kFloatComponent)},
      normals{GltfAccessor("VEC3"_s, kFloatComponent)},
      uvs{GltfAccessor("VEC2"_s, kFloatComponent)},
      polygonColors{GltfAccessor("VEC4"_s, kFloatComponent)},
      vertexColors{GltfAccessor("VEC4"_s, kFloatComponent)},
      joints{GltfAccessor("VEC4"_s, kUnsignedShort)},
      weights{GltfAccessor("VEC4"_s, kFloatComponent)},
      indexView(kIndexTarget),
      vertexView(kVertexTarget),
      colorView(kVertexTarget),
      jointView(kVertexTarget),
      weightView(kVertexTarget)
{}

Result<void> CollectMeshData(MeshData& record, GltfBuffer& buffer, HostPolygonObject* op, HostDocument* doc,
                             const Vector* positions, BaseArray<Vector>& init_positions, const ExportOptions& settings,
                             Bool isTarget) noexcept
{
  CHECK_STATE(op);
  CHECK_STATE(doc);
  CHECK_STATE(positions);
  record.name = op->GetName();
  MarkAttributes(record, op, settings);
  IndexRoom indices;
  if (!isTarget)
  {
    ASSIGN_OR_RETURN(indices, AppendIndexRoom(record, buffer, op, settings.flipZ));
  }
  GltfBuffer ownVertices;
  GltfBuffer& vertices = isTarget || !HasWideIndices(op->GetPointCount()) ? ownVertices : buffer;
  VertexData vertexData;
  RETURN_IF_ERROR(vertexData.Init(positions, op->GetPointCount(), LayOutVertex(record), vertices));
  RETURN_IF_ERROR(SplitVertices(record, indices, op, vertexData, settings.exportMorphs, isTarget));
  RETURN_IF_ERROR(WriteVertices(record, buffer, vertices, vertexData, init_positions, settings, isTarget));
  record.copyPoints = vertexData.TakePointsOfCopies();
  // Nothing would ever refer to the joints and colours of a target.
  if (isTarget)
    return {};
  RETURN_IF_ERROR(WriteSkinWeights(record, buffer, op, doc));
  return WriteVertexColors(record, buffer, op);
}

}  // namespace q7z
