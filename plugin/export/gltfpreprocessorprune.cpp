// Pruning: branches that would put nothing into the file but empty nodes go, and what is left is counted.

#include "framework/check.h"
#include "plugin/export/gltfpreprocessor.h"

namespace q7z
{

namespace
{

/// Whether an object without children is worth a node of its own.
Bool HasContent(HostObject* op, const ExportOptions& options) noexcept
{
  switch (op->GetType())
  {
    case kPolygonObjectType: return HasGeometry(op);
    case kCameraObjectType:
    case kRenderCameraObjectType: return options.exportCameras;
    case kJointObjectType: return options.exportSkins;
    default: return false;
  }
}

Bool IsRemovable(HostObject* op) noexcept
{
  return GetBoolMarker(op, kRemovableBranch);
}

}  // namespace

Result<void> GltfPreprocessor::PruneStage() noexcept
{
  HostOwner<HostObject> dontexportRoot;
  if (HostObject* const first = _doc->GetFirstObject(); first && IsDontExport(first))
  {
    first->Remove();
    dontexportRoot.reset(first);
  }
  _objectCount = 0;
  for (HostObject* op = FindFirstInPostOrder(_doc->GetFirstObject()); op; op = FindNextInPostOrder(op))
    RETURN_IF_ERROR(MarkRemovable(op));
  RETURN_IF_ERROR(RemoveMarked());
  if (dontexportRoot)
    _doc->InsertObject(dontexportRoot.release(), nullptr, nullptr);
  return {};
}

/// Counts an object's tree and tells whether it may go; its children were asked before.
Result<void> GltfPreprocessor::MarkRemovable(HostObject* op) noexcept
{
  Int32 count = 1;
  Bool empty = true;
  for (HostObject* child = op->GetDown(); child; child = child->GetNext())
  {
    count += GetIntMarker(child, kSubtreeCount);
    empty = empty && IsRemovable(child);
  }
  RETURN_IF_ERROR(SetMarker(op, kSubtreeCount, count));
  return empty && !HasContent(op, _options) ? SetMarker(op, kRemovableBranch, true) : Result<void>();
}

Result<void> GltfPreprocessor::RemoveMarked() noexcept
{
  // The walk asks again about what was removed, so that it goes at the end, all at once.
  const HostOwner<HostObject> removed(HostObject::Alloc(kNullObjectType));
  if (!removed)
    return Error::OutOfMemory();
  const auto visit = [this, &removed](HostObject* op) -> Result<void>
  {
    if (!IsRemovable(op))
    {
      ++_objectCount;
      return {};
    }
    HostObject* const parent = op->GetUp();
    const Int32 count = GetIntMarker(op, kSubtreeCount);
    op->InsertUnderLast(removed.get());
    return parent ? SetMarker(parent, kSubtreeCount, GetIntMarker(parent, kSubtreeCount) - count) : Result<void>();
  };
  return WalkWith(_doc, visit, true, IsRemovable);
}

}  // namespace q7z
