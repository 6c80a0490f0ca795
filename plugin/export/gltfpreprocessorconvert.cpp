// The conversion: the host makes a copy of the whole tree in which all is plain objects. The copy takes the tree's place in the
// document; the tree stays reachable, as the copies' sources, under an object that is never written.

#include "framework/check.h"
#include "plugin/export/gltfpreprocessor.h"
#include "plugin/export/gltfpreprocessormodeling.h"
#include "plugin/export/gltfprogress.h"

namespace q7z
{

namespace
{

// Settings of modeling command 245: keep the hierarchy, keep the tracks.
constexpr Int32 kKeepHierarchy = 2140;
constexpr Int32 kKeepTracks = 2141;

Result<HostOwner<HostObject>> MakeDontexportRoot() noexcept
{
  HostOwner<HostObject> root(HostObject::Alloc(kNullObjectType));
  if (!root || !root->SetName(kDontExportName))
    return Error::OutOfMemory();
  root->SetVisibility(kEditorVisibility, kHiddenMode);
  root->SetVisibility(kRenderVisibility, kHiddenMode);
  return root;
}

/// Gives a converted object the transform tracks that its source has.
Result<void> CopyTracks(HostObject* op) noexcept
{
  const HostObject* const source = GetAuxSource(op);
  if (!source || source == op)
    return {};
  for (const HostDescId& id : kTransformTrackIds)
  {
    const HostTrack* const track = HostTrack::Find(source, id);
    if (!track)
      continue;
    FreeTracks(op, id);
    HostTrack* const clone = track->Clone(op);
    if (!clone)
      return Error::OutOfMemory();
    clone->InsertInto(op);
  }
  return {};
}

/// Keeps what phong shading makes of an object that has no normals of its own.
Result<void> EnsurePhongNormals(HostPolygonObject* op) noexcept
{
  if (op->GetTag(kNormalTagType) || !op->GetTag(kPhongTagType) || op->GetPolygonCount() == 0)
    return {};
  HostOwner<HostTag> tag(HostTag::Alloc(kNormalTagType, op->GetPolygonCount()));
  const HostCornerHandle normals = tag ? static_cast<HostNormalTag*>(tag.get())->GetHandleW() : HostCornerHandle();
  if (!normals || !g_hostTables->phong->ComputeNormals(op, normals))
    return Error::OutOfMemory();
  op->InsertTag(tag.release());
  return {};
}

void FreeWeightTags(HostObject* op) noexcept
{
  for (HostTag* tag = op->GetFirstTag(); tag;)
  {
    HostTag* const next = tag->GetNext();
    if (tag->GetType() == kWeightTagType)
    {
      tag->Remove();
      HostNode::Free(tag);
    }
    tag = next;
  }
}

/// Moves what stands under an object behind it, in reverse, and frees the object.
void ReplaceByChildren(HostObject* root) noexcept
{
  while (HostObject* const child = root->GetDown())
    child->InsertAfter(root);  // deliberately behind the root, not behind the child before: the walk sees the reversed order
  root->Remove();
  HostNode::Free(root);
}

}  // namespace

Result<void> GltfPreprocessor::ConvertStage() noexcept
{
  ASSIGN_OR_RETURN(HostOwner<HostObject> dontexportRoot, MakeDontexportRoot());
  ProgressSetText(kConvertingText);
  ProgressReset();
  _morphObjects.Reset();
  if (_options.exportMorphs)
    RETURN_IF_ERROR(WalkWith(_doc, [this](HostObject* op) { return CollectMorphObjects(op); }, _sequential, WalkAll));
  ASSIGN_OR_RETURN(HostObject* const group, GroupAll());
  ASSIGN_OR_RETURN(HostOwner<HostObject> converted, ConvertTree(group));
  HostObject* const bakedRoot = converted.release();
  bakedRoot->InsertAfter(group);
  const HostMatrix groupMatrix = group->GetGlobalMatrix();
  group->InsertUnderLast(dontexportRoot.get());
  group->SetGlobalMatrix(groupMatrix);

  RETURN_IF_ERROR(FinishConverted(bakedRoot));
  ReplaceByChildren(bakedRoot);
  _doc->InsertObject(dontexportRoot.release(), nullptr, nullptr);
  _morphObjects.Reset();
  return {};
}

Result<void> GltfPreprocessor::CollectMorphObjects(HostObject* op) noexcept
{
  for (HostTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext())
  {
    if (tag->GetType() != kPoseMorphTagType)
      continue;
    const auto* const morphTag = static_cast<const HostPoseMorphTag*>(tag);
    const Int32 morphCount = morphTag->GetMorphCount();
    const SpinLockGuard guard(_lock);
    if (morphCount > 0)
      RETURN_IF_ERROR(_morphObjects.Set(op, true));
    for (Int32 i = 0; i < morphCount; ++i)
    {
      const HostMorph* const morph = morphTag->GetMorph(i);
      CHECK_STATE(morph);
      if (HostObject* const target = morph->GetObject())
        RETURN_IF_ERROR(_morphObjects.Set(target, true));
    }
  }
  return {};
}

/// Puts all of the document under one object, in order.
Result<HostObject*> GltfPreprocessor::GroupAll() noexcept
{
  HostObject* const group = HostObject::Alloc(kNullObjectType);
  if (!group)
    return Error::OutOfMemory();
  _doc->InsertObject(group, nullptr, nullptr);
  while (HostObject* const op = group->GetNext())
    op->InsertUnderLast(group);
  return group;
}

Result<HostOwner<HostObject>> GltfPreprocessor::ConvertTree(HostObject* group) noexcept
{
  ModelingSettings settings;
  ModelingCommandData data;
  data.document = _doc;
  data.object = group;
  data.settings = settings.Make();
  if (!data.settings || !data.settings->Set(kKeepHierarchy, true) || !data.settings->Set(kKeepTracks, true))
    return Error::OutOfMemory();
  CHECK_STATE(SendModelingCommand(245, data));
  CHECK_STATE(data.result);
  HostObject* const bakedRoot = data.result[0];
  CHECK_STATE(bakedRoot);
  return HostOwner<HostObject>(bakedRoot);
}

/// Makes of the copies what the export reads; bakedRoot stands alone at the top of the document.
Result<void> GltfPreprocessor::FinishConverted(HostObject* bakedRoot) noexcept
{
  _objectCount = CountTree(bakedRoot) - 1;
  ProgressAddTotal(Int(_objectCount) + 1);
  const auto finish = [this](HostObject* op) -> Result<void>
  {
    RETURN_IF_ERROR(CopyTracks(op));
    RETURN_IF_ERROR(OptimizeObject(op));
    ProgressStep(_lock);
    return ProgressCheckCancel();
  };
  return WalkWith(_doc, finish, true, WalkAll);
}

Result<void> GltfPreprocessor::OptimizeObject(HostObject* op) noexcept
{
  if (!HasGeometry(op))
    return {};
  ModelingCommandData data;
  data.document = _doc;
  data.object = op;
  data.mode = kUseAllPolygons;
  CHECK_STATE(SendModelingCommand(221, data));
  if (!NeedsItsPoints(op, GetAuxSource(op)))
    CHECK_STATE(SendModelingCommand(227, data));
  RETURN_IF_ERROR(EnsurePhongNormals(ToPoly(op)));
  if (!_options.exportSkins)
    FreeWeightTags(op);
  return {};
}

/// Whether something else counts op's points, so that none may go.
Bool GltfPreprocessor::NeedsItsPoints(HostObject* op, HostObject* source) const noexcept
{
  const Bool keepTopology = _morphObjects.Contains(op) || (source && _morphObjects.Contains(source));
  const Bool pointAnimated = _options.exportMorphs && (HostTrack::Find(op, kPointTrackParameter) ||
                                                       (source && HostTrack::Find(source, kPointTrackParameter)));
  const Bool skinned = _options.exportSkins && op->GetTag(kWeightTagType);
  return keepTopology || pointAnimated || skinned;
}

}  // namespace q7z
