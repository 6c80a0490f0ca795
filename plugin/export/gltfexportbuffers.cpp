// How binary data comes into the file: buffers, views, accessors, and the elements of a mesh. In the text form each mesh has a
// buffer of its own, a data URI; in the binary form all bytes go into one, whose element comes last.

#include "framework/check.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/export/gltfexporter.h"
#include "plugin/geometry/gltfmorphexport.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

namespace
{

constexpr String kBufferPrefix = "data:application/octet-stream;base64,"_s;

// Tight elements of up to this many bytes go without a stride.
constexpr UInt32 kLargestTightStride = 12;

Result<Int> AppendElement(BaseArray<Data>& elements, DataDictionary element) noexcept
{
  RETURN_IF_ERROR(elements.Append(Data(std::move(element))));
  return elements.GetCount() - 1;
}

Result<Data> MakeArray(BaseArray<Data> elements) noexcept
{
  return Data::CreateArray(std::move(elements));
}

}  // namespace

Result<void> GLTFExporter::EncodeBuffer(GltfBuffer& buffer) noexcept
{
  HostBase64Encoder* const encoder = FindService<HostBase64Encoder>();
  if (!encoder)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no base64 encoder."_s);
  const BaseArray<Byte>& bytes = buffer.GetBytes();
  ASSIGN_OR_RETURN(String uri, encoder->Encode(kBufferPrefix, bytes.GetFirst(), bytes.GetCount()));
  buffer.SetUri(std::move(uri));
  return {};
}

Result<Int> GLTFExporter::AddBuffer(const GltfBuffer& buffer) noexcept
{
  DataDictionary element;
  if (!_options.IsGlb())
    RETURN_IF_ERROR(element.Set(keys::kUri, Data(buffer.GetUri())));
  RETURN_IF_ERROR(element.Set(keys::kByteLength, Data(buffer.GetByteLength())));
  return AppendElement(_buffers, std::move(element));
}

Result<Int> GLTFExporter::AddBufferView(const GltfBufferView& view, Int bufferIndex, Bool omitTarget) noexcept
{
  DataDictionary element;
  RETURN_IF_ERROR(element.Set(keys::kBuffer, Data(bufferIndex)));
  RETURN_IF_ERROR(element.Set(keys::kByteOffset, Data(view.GetByteOffset())));
  RETURN_IF_ERROR(element.Set(keys::kByteLength, Data(view.GetByteLength())));
  if (!omitTarget)
    RETURN_IF_ERROR(element.Set(keys::kTarget, Data(view.GetTarget())));
  if (view.GetByteStride() > kLargestTightStride)
    RETURN_IF_ERROR(element.Set(keys::kByteStride, Data(view.GetByteStride())));
  return AppendElement(_bufferViews, std::move(element));
}

Result<Int> GLTFExporter::AddAccessor(const GltfAccessor& accessor, Int viewIndex) noexcept
{
  ASSIGN_OR_RETURN(Data min, accessor.MakeMin());
  ASSIGN_OR_RETURN(Data max, accessor.MakeMax());
  DataDictionary element;
  RETURN_IF_ERROR(element.Set(keys::kBufferView, Data(viewIndex)));
  RETURN_IF_ERROR(element.Set(keys::kType, Data(accessor.GetType())));
  RETURN_IF_ERROR(element.Set(keys::kComponentType, Data(accessor.GetComponentType())));
  RETURN_IF_ERROR(element.Set(keys::kCount, Data(accessor.GetCount())));
  RETURN_IF_ERROR(element.Set(keys::kByteOffset, Data(accessor.GetByteOffset())));
  RETURN_IF_ERROR(element.Set(keys::kMin, std::move(min)));
  RETURN_IF_ERROR(element.Set(keys::kMax, std::move(max)));
  return AppendElement(_accessors, std::move(element));
}

Result<Int> GLTFExporter::AppendToGlb(const GltfImage& image) noexcept
{
  const BaseArray<Byte>& bytes = image.GetData();
  GltfBufferView view(kVertexTarget);
  view.AddByteOffset(_glbBuffer.GetBytes().GetCount());
  view.AddByteLength(bytes.GetCount());
  RETURN_IF_ERROR(_glbBuffer.AppendBytes(bytes.GetFirst(), bytes.GetCount()));
  RETURN_IF_ERROR(_glbBuffer.Align());
  return AddBufferView(view, 0, true);
}

Result<void> GLTFExporter::FillMesh(HostPolygonObject* op, MeshExportData& mesh, GltfBuffer& buffer,
                                    MaterialDescriptor& material) noexcept
{
  CHECK_ARGUMENT(op);
  RETURN_IF_ERROR(FillMaterial(op, material));
  RETURN_IF_ERROR(ExportMesh(mesh, buffer, op, _doc.get(), _options));
  return _options.IsGlb() ? Result<void>() : EncodeBuffer(buffer);
}

Result<void> GLTFExporter::SetAttribute(DataDictionary& attributes, const DataKey& name, const MeshAccessor& accessor,
                                        Int viewIndex) noexcept
{
  if (!accessor.isUsed)
    return {};
  ASSIGN_OR_RETURN(const Int index, AddAccessor(accessor.accessor, viewIndex));
  return attributes.Set(name, Data(index));
}

/// Writes the views and accessors of a mesh in their order. @param indices  receives the accessor of the indices.
Result<DataDictionary> GLTFExporter::WriteAttributes(const MeshExportData& mesh, Int bufferIndex, Int& indices) noexcept
{
  DataDictionary attributes;
  ASSIGN_OR_RETURN(const Int indexView, AddBufferView(mesh.indexView, bufferIndex, false));
  ASSIGN_OR_RETURN(const Int vertexView, AddBufferView(mesh.vertexView, bufferIndex, false));
  ASSIGN_OR_RETURN(indices, AddAccessor(mesh.indices.accessor, indexView));
  RETURN_IF_ERROR(SetAttribute(attributes, keys::kPosition, mesh.positions, vertexView));
  RETURN_IF_ERROR(SetAttribute(attributes, keys::kNormal, mesh.normals, vertexView));
  RETURN_IF_ERROR(SetAttribute(attributes, keys::kTexcoord0, mesh.uvs, vertexView));
  RETURN_IF_ERROR(SetAttribute(attributes, keys::kColor0, mesh.polygonColors, vertexView));
  if (mesh.vertexColors.isUsed)
  {
    ASSIGN_OR_RETURN(const Int colorView, AddBufferView(mesh.colorView, bufferIndex, false));
    RETURN_IF_ERROR(SetAttribute(attributes, keys::kColor0, mesh.vertexColors, colorView));
  }
  if (mesh.joints.isUsed && mesh.weights.isUsed)
  {
    ASSIGN_OR_RETURN(const Int jointView, AddBufferView(mesh.jointView, bufferIndex, false));
    ASSIGN_OR_RETURN(const Int weightView, AddBufferView(mesh.weightView, bufferIndex, false));
    RETURN_IF_ERROR(SetAttribute(attributes, keys::kJoints0, mesh.joints, jointView));
    RETURN_IF_ERROR(SetAttribute(attributes, keys::kWeights0, mesh.weights, weightView));
  }
  return attributes;
}

Result<BaseArray<Data>> GLTFExporter::WriteTargets(const MeshExportData& mesh, Int bufferIndex) noexcept
{
  BaseArray<Data> targets;
  for (const MeshData& target : mesh.targets)
  {
    DataDictionary attributes;
    // The key of a point track that stores nothing stands for a target without positions; a view of nothing would be refused.
    if (target.positions.isUsed)
    {
      ASSIGN_OR_RETURN(const Int view, AddBufferView(target.vertexView, bufferIndex, false));
      RETURN_IF_ERROR(SetAttribute(attributes, keys::kPosition, target.positions, view));
    }
    RETURN_IF_ERROR(targets.Append(Data(std::move(attributes))));
  }
  return targets;
}

Result<Int> GLTFExporter::WriteMesh(const MeshExportData& mesh, const GltfBuffer& buffer,
                                    const MaterialDescriptor& material) noexcept
{
  Int bufferIndex = 0;
  if (!_options.IsGlb())
  {
    ASSIGN_OR_RETURN(bufferIndex, AddBuffer(buffer));
  }
  Int indices = 0;
  ASSIGN_OR_RETURN(DataDictionary attributes, WriteAttributes(mesh, bufferIndex, indices));
  ASSIGN_OR_RETURN(BaseArray<Data> targets, WriteTargets(mesh, bufferIndex));

  DataDictionary primitive;
  if (targets.IsPopulated())
  {
    ASSIGN_OR_RETURN(Data array, MakeArray(std::move(targets)));
    RETURN_IF_ERROR(primitive.Set(keys::kTargets, std::move(array)));
  }
  RETURN_IF_ERROR(primitive.Set(keys::kAttributes, Data(std::move(attributes))));
  RETURN_IF_ERROR(primitive.Set(keys::kIndices, Data(indices)));
  RETURN_IF_ERROR(SetMaterial(material, primitive));
  BaseArray<Data> primitives;
  RETURN_IF_ERROR(primitives.Append(Data(std::move(primitive))));
  ASSIGN_OR_RETURN(Data primitiveArray, MakeArray(std::move(primitives)));

  DataDictionary element;
  if (mesh.name.IsPopulated())
    RETURN_IF_ERROR(element.Set(keys::kName, Data(mesh.name)));
  RETURN_IF_ERROR(element.Set(keys::kPrimitives, std::move(primitiveArray)));
  RETURN_IF_ERROR(SetMorphMembers(mesh, element));
  return AppendElement(_meshes, std::move(element));
}

/// The names of a mesh's targets and their default weights.
Result<void> GLTFExporter::SetMorphMembers(const MeshExportData& mesh, DataDictionary& element) noexcept
{
  if (mesh.targets.IsPopulated())
  {
    BaseArray<Data> names;
    for (const MeshData& target : mesh.targets)
      RETURN_IF_ERROR(names.Append(Data(target.name)));
    ASSIGN_OR_RETURN(Data nameArray, MakeArray(std::move(names)));
    DataDictionary extras;
    RETURN_IF_ERROR(extras.Set(keys::kTargetNames, std::move(nameArray)));
    RETURN_IF_ERROR(element.Set(keys::kExtras, Data(std::move(extras))));
  }
  if (mesh.defaultWeights.IsEmpty())
    return {};
  BaseArray<Data> weights;
  for (const Float weight : mesh.defaultWeights)
    RETURN_IF_ERROR(weights.Append(Data(weight)));
  ASSIGN_OR_RETURN(Data weightArray, MakeArray(std::move(weights)));
  return element.Set(keys::kWeights, std::move(weightArray));
}

}  // namespace q7z
