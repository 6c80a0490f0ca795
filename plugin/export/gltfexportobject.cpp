// The visit of one object in the export walk: which node it becomes and what hangs on it.

#include <new>

#include "framework/check.h"
#include "plugin/camera/gltfcamera.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/export/gltfexporter.h"
#include "plugin/export/gltfexporttransform.h"
#include "plugin/export/gltfprogress.h"
#include "plugin/module/diagnostics.h"

namespace q7z
{

namespace
{

template <Int count>
Result<Data> MakeSingles(const Float (&values)[count]) noexcept
{
  Data elements[count];
  for (Int i = 0; i < count; ++i)
    elements[i] = Data(static_cast<Float32>(values[i]));
  return Data::CreateArray(elements, count, nullptr);
}

// Joints, meshes and cameras can be part of a skin; other objects never are.
Bool IsSkinned(const HostObject* op) noexcept
{
  const Int32 type = op->GetType();
  const Bool takesPart =
    type == kPolygonObjectType || type == kNullObjectType || type == kJointObjectType || IsExportableCamera(op);
  return takesPart && op->GetTag(kWeightTagType) != nullptr;
}

}  // namespace

Bool IsSkipped(HostObject* op) noexcept
{
  if (!op)
    return true;
  if (GetBoolMarker(op, kNeededForJoints) || !GetBoolMarker(op, kHiddenObject))
    return IsDontExport(op);
  return true;
}

Result<void> GLTFExporter::VisitObject(HostObject* op) noexcept
{
  CHECK_STATE(op);
  if (ProgressIsCancelled())
    return MakeCancelledError();
  if (IsSkipped(op))
    return {};
  Int nodeIndex = 0;
  ASSIGN_OR_RETURN(DataDictionary * node, AddNode(op, nodeIndex));
  HostObject* const source = GetAuxSource(op);
  RETURN_IF_ERROR(TakeMorphTag(op, source));
  if (HasGeometry(op) && !GetBoolMarker(op, kHiddenObject))
    RETURN_IF_ERROR(SetMesh(ToPoly(op), source, *node));
  if (_options.exportCameras && IsExportableCamera(op) && !GetBoolMarker(op, kHiddenObject))
    RETURN_IF_ERROR(SetCamera(op, *node));
  const Bool skinned = IsSkinned(op);
  if (skinned || op->GetType() == kJointObjectType)
    RETURN_IF_ERROR(CollectJoints(source, node, nodeIndex, _options.flipZ));
  RETURN_IF_ERROR(SetAnimation(op, source, nodeIndex));
  // A skinned mesh stands where its joints put it.
  if (!skinned)
    RETURN_IF_ERROR(SetTransform(op, *node));
  ProgressStep(_progressLock);
  ProgressPollCancel();
  return {};
}

/// Makes the node and enters it under its parent.
Result<DataDictionary*> GLTFExporter::AddNode(HostObject* op, Int& nodeIndex) noexcept
{
  std::unique_ptr<DataDictionary> owner(new (std::nothrow) DataDictionary);
  if (!owner)
    return Error::OutOfMemory();
  DataDictionary* const node = owner.get();
  RETURN_IF_ERROR(node->Set(keys::kName, Data(op->GetName())));
  RETURN_IF_ERROR(_nodes.Append(std::move(owner)));
  nodeIndex = _nodes.GetCount() - 1;

  ASSIGN_OR_RETURN(NodeRecord * record, _objectNodes.FindOrInsert(op));
  record->dictionary = node;
  ASSIGN_OR_RETURN(NodeRecord * parent, _objectNodes.FindOrInsert(op->GetUp()));
  RETURN_IF_ERROR(parent->children.Append(Data(nodeIndex)));
  return node;
}

/// The conversion leaves shapes behind on the object that it converted; the converted one takes them over.
Result<void> GLTFExporter::TakeMorphTag(HostObject* op, HostObject* source) noexcept
{
  if (!_options.exportMorphs || !source || source->GetType() != kPolygonObjectType || op->GetTag(kPoseMorphTagType))
    return {};
  const HostPoseMorphTag* const tag = static_cast<const HostPoseMorphTag*>(source->GetTag(kPoseMorphTagType));
  if (!tag || tag->GetMorphCount() < 1)
    return {};
  const std::unique_ptr<HostAliasTrans, decltype(&HostAliasTrans::Free)> owner(HostAliasTrans::Alloc(), &HostAliasTrans::Free);
  HostAliasTrans* const aliastrans = owner.get();
  CHECK_STATE(aliastrans && aliastrans->Init(tag->GetDocument()));
  HostOwner<HostTag> clone(tag->Clone(aliastrans));
  if (!clone)
    return Error::OutOfMemory();
  op->InsertTag(clone.release());
  aliastrans->Translate();
  return {};
}

Result<void> GLTFExporter::SetMesh(HostPolygonObject* op, HostObject* source, DataDictionary& node) noexcept
{
  HostObject* fileUnder = op;
  if (_options.shareMeshes)
  {
    const Result<Int32> shared = FindSharedMesh(op, source, fileUnder);
    if (shared.HasError() && shared.GetError().GetClass() == ErrorClass::kOutOfMemory)
      return shared.GetError();
    if (shared.HasError())
      PrintError("An object's points could not be compared with others'"_s, shared.GetError());
    else if (shared.GetValue() != -1)
    {
      // A mesh that lost its targets has none for this object either.
      if (source && GetBoolMarker(source, kMorphExportFailed))
        RETURN_IF_ERROR(SetMarker(op, kMorphExportFailed, true));
      return node.Set(keys::kMesh, Data(shared.GetValue()));
    }
  }
  MeshExportData mesh;
  GltfBuffer ownBuffer;
  GltfBuffer& buffer = _options.IsGlb() ? _glbBuffer : ownBuffer;
  MaterialDescriptor material;
  RETURN_IF_ERROR(FillMesh(op, mesh, buffer, material));
  ASSIGN_OR_RETURN(const Int meshIndex, WriteMesh(mesh, buffer, material));
  RETURN_IF_ERROR(node.Set(keys::kMesh, Data(meshIndex)));
  RETURN_IF_ERROR(_meshIndices.Set(fileUnder, static_cast<Int32>(meshIndex)));
  return {};
}

Result<void> GLTFExporter::SetCamera(HostObject* op, DataDictionary& node) noexcept
{
  ASSIGN_OR_RETURN(const GltfCameraOwner camera, CreateCameraFromHost(op, _options));
  ASSIGN_OR_RETURN(const Int cameraIndex, AppendCameraJson(*camera));
  return node.Set(keys::kCamera, Data(cameraIndex));
}

Result<Int> GLTFExporter::AppendCameraJson(const GltfCamera& camera) noexcept
{
  const Bool isPerspective = camera.type == "perspective"_s;
  DataDictionary members;
  RETURN_IF_ERROR(members.Set(keys::kZnear, Data(static_cast<Float32>(camera.znear))));
  RETURN_IF_ERROR(members.Set(keys::kZfar, Data(static_cast<Float32>(camera.zfar))));
  RETURN_IF_ERROR(members.Set(isPerspective ? keys::kAspectRatio : keys::kXmag, Data(static_cast<Float32>(camera.first))));
  RETURN_IF_ERROR(members.Set(isPerspective ? keys::kYfov : keys::kYmag, Data(static_cast<Float32>(camera.second))));
  DataDictionary element;
  RETURN_IF_ERROR(element.Set(keys::kType, Data(camera.type)));
  RETURN_IF_ERROR(element.Set(isPerspective ? keys::kPerspective : keys::kOrthographic, Data(std::move(members))));
  RETURN_IF_ERROR(_cameras.Append(Data(std::move(element))));
  return _cameras.GetCount() - 1;
}

Result<void> GLTFExporter::SetTransform(HostObject* op, DataDictionary& node) noexcept
{
  const HostMatrix matrix = op->GetLocalMatrix();
  if (IsIdentity(matrix) && !HasTransformTracks(op))
    return {};
  const TransformRules rules{_options.exportScale, _options.flipZ, IsCameraObject(op)};
  const ExportedTransform transform = MakeExportedTransform(matrix, op->GetRelativeScale(), rules);
  const Vector& t = transform.translation;
  const Vector4& r = transform.rotation;
  const Vector& s = transform.scale;
  ASSIGN_OR_RETURN(Data translation, MakeSingles({t.x, t.y, t.z}));
  ASSIGN_OR_RETURN(Data rotation, MakeSingles({r.x, r.y, r.z, r.w}));
  ASSIGN_OR_RETURN(Data scale, MakeSingles({s.x, s.y, s.z}));
  RETURN_IF_ERROR(node.Set(keys::kTranslation, std::move(translation)));
  RETURN_IF_ERROR(node.Set(keys::kRotation, std::move(rotation)));
  return node.Set(keys::kScale, std::move(scale));
}

}  // namespace q7z
