// Skins: the joint objects of the file's skins, and the bind poses of the polygon objects that wear them.

#include "framework/check.h"
#include "plugin/document/gltfaccessor.h"
#include "plugin/import/gltfimporter.h"

namespace q7z
{

namespace
{

/// A joint while its skin is bound.
struct JointPose
{
  HostObject* object;  // not owned
  HostMatrix local;    // as its node has it
};

/// Gives the joints their own local matrices back, on every way out. In reverse order, as a joint may be listed twice.
class JointPoses
{
public:
  JointPoses() noexcept = default;
  JointPoses(const JointPoses&) = delete;
  JointPoses& operator=(const JointPoses&) = delete;
  ~JointPoses()
  {
    for (Int i = _poses.GetCount() - 1; i >= 0; --i)
      _poses[i].object->SetLocalMatrix(_poses[i].local);
  }
  Result<void> Save(HostObject* object) noexcept { return _poses.Append({object, object->GetLocalMatrix()}); }

private:
  BaseArray<JointPose> _poses;
};

}  // namespace

// The skins do not change during a load, so one pass serves all hierarchies.
Result<void> GltfImporter::MakeJoints() noexcept
{
  if (_jointsMade || !_options.IsSkins())
    return {};
  for (const auto& entry : _gltfData.skins)
  {
    for (const Int nodeIndex : entry.GetValue().joints)
      RETURN_IF_ERROR(MakeJoint(nodeIndex));
  }
  _jointsMade = true;
  return {};
}

Result<void> GltfImporter::MakeJoint(Int nodeIndex) noexcept
{
  if (_jointsToObjects.Contains(nodeIndex))
    return {};
  if (!_gltfData.nodes.Contains(nodeIndex))
    RETURN_IF_ERROR(TakeObjects(1));
  HostOwner<HostObject> joint(HostAllocObject(kJointObjectType));
  if (!joint)
    return Error::OutOfMemory();
  HostObject* const object = joint.get();
  RETURN_IF_ERROR(_looseJoints.Set(nodeIndex, std::move(joint)));
  RETURN_IF_ERROR(_jointsToObjects.Set(nodeIndex, object));
  return {};
}

Result<void> GltfImporter::BindSkins() noexcept
{
  if (!_options.IsSkins() || _skinsToObjects.IsEmpty())
    return {};
  for (const auto& entry : _gltfData.skins)
  {
    HostPolygonObject* const* const found = _skinsToObjects.Find(entry.GetKey());
    if (!found)
      continue;
    HostPolygonObject* const polygonObjectOp = *found;
    CHECK_STATE(polygonObjectOp);
    RETURN_IF_ERROR(BindSkin(entry.GetValue(), polygonObjectOp));
  }
  return InsertDeformers();
}

// Moves the joints where the inverse bind matrices put them, lets the tag remember that, and moves them back. Only the joints
// move, so only their matrices are saved.
Result<void> GltfImporter::BindSkin(const GltfSkin& skin, HostPolygonObject* polygonObjectOp) noexcept
{
  HostWeightTag* const weightTag = static_cast<HostWeightTag*>(polygonObjectOp->GetTag(kWeightTagType));
  if (!weightTag)
    return {};
  RETURN_IF_ERROR(TakeWayUp(polygonObjectOp));
  const HostMatrix polygonMatrix = polygonObjectOp->GetGlobalMatrix();

  JointPoses poses;
  for (Int i = 0; i < skin.joints.GetCount(); ++i)
  {
    HostObject* const* const joint = _nodesToObjects.Find(skin.joints[i]);
    if (!joint)
      continue;
    RETURN_IF_ERROR(TakeWayUp(*joint));
    RETURN_IF_ERROR(poses.Save(*joint));
    if (!skin.accessor)
      continue;
    ASSIGN_OR_RETURN(const HostMatrix inverseBindMatrix, skin.accessor->GetMatrix(i));
    const HostMatrix converted = ConvertMatrix(inverseBindMatrix, _options.GetScale(), _options.IsFlipZ());
    (*joint)->SetGlobalMatrix(polygonMatrix * converted.GetInverse());
  }
  CHECK_STATE(weightTag->SetBindPose(_doc));
  return {};
}

// One more with every hierarchy, also for skins of earlier ones.
Result<void> GltfImporter::InsertDeformers() noexcept
{
  for (const auto& entry : _gltfData.skins)
  {
    HostPolygonObject* const* const polygonObjectOp = _skinsToObjects.Find(entry.GetKey());
    if (!polygonObjectOp)
      continue;
    RETURN_IF_ERROR(TakeObjects(1));
    HostObject* const deformer = HostAllocObject(kSkinDeformerType);
    if (!deformer)
      return Error::OutOfMemory();
    HostInsertUnder(deformer, *polygonObjectOp);
  }
  return {};
}

}  // namespace q7z
