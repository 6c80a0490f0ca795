// Skins come out in two steps: the walk notes joints' nodes and what each skinned mesh hangs on, since a joint may be visited behind
// its mesh; behind the walk each note becomes an element of `skins`.

#include "plugin/export/gltfexportskin.h"

#include "framework/check.h"
#include "framework/rotation.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/export/gltfexporter.h"
#include "plugin/export/gltfprogress.h"

namespace q7z
{

SkinRecord::SkinRecord() noexcept : _view(kVertexTarget), _accessor("MAT4"_s, kFloatComponent)
{}

Result<void> SkinRecord::AddJoint(GltfBuffer& target, const HostMatrix& matrix, Int nodeIndex) noexcept
{
  if (_joints.IsEmpty())
    _view.AddByteOffset(target.GetByteLength());
  RETURN_IF_ERROR(_joints.Append(Data(nodeIndex)));
  Float32 columns[16] = {};
  const Vector* const vectors[] = {&matrix.axisX, &matrix.axisY, &matrix.axisZ, &matrix.offset};
  for (Int i = 0; i < 4; ++i)
  {
    columns[4 * i] = static_cast<Float32>(vectors[i]->x);
    columns[4 * i + 1] = static_cast<Float32>(vectors[i]->y);
    columns[4 * i + 2] = static_cast<Float32>(vectors[i]->z);
  }
  columns[15] = 1;
  return _accessor.AppendElements(target, _view, columns, 1);
}

HostMatrix MirrorMatrix(const HostMatrix& matrix) noexcept
{
  const Vector& o = matrix.offset;
  const Vector angles = MatrixToAngles(matrix, kDefaultRotationOrder, false);
  const HostMatrix rotation = AnglesToMatrix(angles, kDefaultRotationOrder);
  const HostMatrix mirroredRotation = AnglesToMatrix({-angles.x, -angles.y, angles.z}, kDefaultRotationOrder);
  HostMatrix translation;
  translation.offset = o;
  HostMatrix mirroredTranslation;
  mirroredTranslation.offset = {o.x, o.y, -o.z};
  return mirroredTranslation * mirroredRotation * rotation.GetInverse() * translation.GetInverse() * matrix;
}

/// Notes a joint's node, or the joints of a mesh. @param op  as it stood before the conversion, as is what its weights lead to.
Result<void> GLTFExporter::CollectJoints(HostObject* op, DataDictionary* node, Int nodeIndex, Bool flipZ) noexcept
{
  CHECK_STATE(op);
  if (op->GetType() == kJointObjectType)
  {
    RETURN_IF_ERROR(_jointNodes.Set(op, static_cast<UInt32>(nodeIndex)));
    return {};
  }
  const auto* const tag = static_cast<const HostWeightTag*>(op->GetTag(kWeightTagType));
  if (!tag)
    return {};
  ASSIGN_OR_RETURN(const HostMatrix opMatrix, GetSourceMatrix(op));
  const HostMatrix toMesh = opMatrix.GetInverse();
  BaseArray<JointEntry> joints;
  const Int32 count = tag->GetJointCount();
  for (Int32 i = 0; i < count; ++i)
  {
    HostObject* const joint = tag->GetJoint(i, _doc.get());
    if (!joint || joint->GetType() == kNullObjectType)
      continue;  // the numbers of the joints at the vertices leave these out, too
    ASSIGN_OR_RETURN(const HostMatrix jointMatrix, GetSourceMatrix(joint));
    HostMatrix bind = toMesh * jointMatrix;
    bind.offset = bind.offset * _options.exportScale;
    RETURN_IF_ERROR(joints.Append({joint, (flipZ ? MirrorMatrix(bind) : bind).GetInverse()}));
  }
  if (joints.IsPopulated())
    RETURN_IF_ERROR(_skinJoints.Set(node, std::move(joints)));
  return {};
}

/// The global matrix of an object that stands still during the walk. Each is worked out once: a chain of joints may be as long as a
/// mesh has weights.
Result<HostMatrix> GLTFExporter::GetSourceMatrix(HostObject* op) noexcept
{
  BaseArray<HostObject*> path;
  const HostMatrix* known = nullptr;
  for (HostObject* place = op; place && !known; place = place->GetUp())
  {
    known = _sourceMatrices.Find(place);
    if (!known)
      RETURN_IF_ERROR(path.Append(place));
  }
  HostMatrix matrix = known ? *known : HostMatrix();
  for (Int i = path.GetCount(); i-- > 0;)
  {
    matrix = matrix * path[i]->GetLocalMatrix();
    RETURN_IF_ERROR(_sourceMatrices.Set(path[i], matrix));
  }
  return matrix;
}

Result<void> GLTFExporter::WriteSkins() noexcept
{
  ProgressSetText(kWritingSkinsText);
  ProgressReset();
  ProgressAddTotal(_skinJoints.GetCount());
  for (const auto& entry : _skinJoints)
  {
    RETURN_IF_ERROR(ProgressCheckCancel());
    RETURN_IF_ERROR(WriteSkin(entry.GetKey(), entry.GetValue().GetCount()));
    ProgressStep(_progressLock);
    ProgressPollCancel();
  }
  return {};
}

Result<void> GLTFExporter::WriteSkin(DataDictionary* node, Int jointCount) noexcept
{
  SkinRecord skin;
  GltfBuffer& target = _options.IsGlb() ? _glbBuffer : skin.GetBuffer();
  for (Int i = 0; i < jointCount; ++i)
    RETURN_IF_ERROR(AddSkinJoint(node, i, skin, target));
  ASSIGN_OR_RETURN(const Int skinIndex, AddSkin(skin));
  return node->Set(keys::kSkin, Data(skinIndex));
}

Result<void> GLTFExporter::AddSkinJoint(DataDictionary* node, Int i, SkinRecord& skin, GltfBuffer& target) noexcept
{
  const BaseArray<JointEntry>* const jointEntry = _skinJoints.Find(node);
  CHECK_STATE(jointEntry);
  const BaseArray<JointEntry>& joints = *jointEntry;
  CHECK_STATE(i < joints.GetCount());
  const UInt32* const nodeIndex = _jointNodes.Find(joints[i].op);
  if (!nodeIndex)
  {
    ASSIGN_OR_RETURN(const String message,
                     String::Format("Illegal state: No source object found for '@'"_s, {joints[i].op->GetName()}));
    return MAKE_ERROR(ErrorClass::kIllegalState, message);
  }
  return skin.AddJoint(target, joints[i].inverseBind, *nodeIndex);
}

Result<Int> GLTFExporter::AddSkin(SkinRecord& skin) noexcept
{
  Int bufferIndex = 0;
  if (!_options.IsGlb())
  {
    RETURN_IF_ERROR(EncodeBuffer(skin.GetBuffer()));
    ASSIGN_OR_RETURN(bufferIndex, AddBuffer(skin.GetBuffer()));
  }
  ASSIGN_OR_RETURN(const Int view, AddBufferView(skin.GetView(), bufferIndex, true));
  ASSIGN_OR_RETURN(const Int accessor, AddAccessor(skin.GetAccessor(), view));
  ASSIGN_OR_RETURN(Data joints, Data::CreateArray(skin.TakeJoints()));
  DataDictionary element;
  RETURN_IF_ERROR(element.Set(keys::kInverseBindMatrices, Data(accessor)));
  RETURN_IF_ERROR(element.Set(keys::kJoints, std::move(joints)));
  RETURN_IF_ERROR(_skins.Append(Data(std::move(element))));
  return _skins.GetCount() - 1;
}

}  // namespace q7z
