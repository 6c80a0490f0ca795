#include "plugin/export/objectmarkers.h"

#include "framework/check.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

namespace
{

/// The sub-container of an object's settings that holds its markers.
constexpr Int32 kMarkerContainer = 1059496;

constexpr String kAuxTagName = "glTFAuxTag"_s;
// Parameters of the root of an aux tag's nodes.
constexpr Int32 kAuxLink = 1000;
constexpr Int32 kAuxIsSet = 1001;

/// A tag of that name that came with the scene could lead anywhere, even to what is no object.
void FreeForeignAuxTags(HostObject* op) noexcept
{
  for (HostTag* tag = op->GetFirstTag(); tag;)
  {
    HostTag* const next = tag->GetNext();
    if (tag->GetName() == kAuxTagName)
    {
      tag->Remove();
      HostNode::Free(tag);
    }
    tag = next;
  }
}

}  // namespace

Result<HostContainer*> GetObjectMarkers(HostObject* op) noexcept
{
  HostContainer* const gltfContainer = op->GetContainer()->GetContainer(kMarkerContainer, true);
  CHECK_STATE(gltfContainer);
  return gltfContainer;
}

Bool GetBoolMarker(HostObject* op, ObjectMarker marker, Bool defaultValue) noexcept
{
  const HostContainer* const markers = op->GetContainer()->GetContainer(kMarkerContainer);
  return markers ? markers->GetBool(marker, defaultValue) : defaultValue;
}

Int32 GetIntMarker(HostObject* op, ObjectMarker marker, Int32 defaultValue) noexcept
{
  const HostContainer* const markers = op->GetContainer()->GetContainer(kMarkerContainer);
  return markers ? markers->GetInt32(marker, defaultValue) : defaultValue;
}

Result<void> SetMarker(HostObject* op, ObjectMarker marker, const HostValue& value) noexcept
{
  ASSIGN_OR_RETURN(HostContainer* const markers, GetObjectMarkers(op));
  if (!markers->Set(marker, value))
    return Error::OutOfMemory();
  return {};
}

Result<void> AddAuxTag(HostObject* op, SpinLock& lock) noexcept
{
  HostOwner<HostTag> tag(HostTag::Alloc(kNodeBasedTagType));
  if (!tag || !tag->SetName(kAuxTagName))
    return Error::OutOfMemory();
  HostNodeMaster* const master = HostNodeMaster::Of(tag.get());
  CHECK_STATE(master);
  HostNode* const root = master->GetRoot();
  CHECK_STATE(root);
  if (!root->SetParameter(kAuxIsSet, Int32(1)) || !root->SetParameter(kAuxLink, HostValue::Link(op)))
    return Error::OutOfMemory();

  const SpinLockGuard guard(lock);
  FreeForeignAuxTags(op);
  op->InsertTag(tag.release());
  return {};
}

HostObject* GetAuxSource(const HostObject* op) noexcept
{
  const HostTag* tag = op->GetFirstTag();
  while (tag && !(tag->GetName() == kAuxTagName))
    tag = tag->GetNext();
  const HostNodeMaster* const master = tag ? HostNodeMaster::Of(tag) : nullptr;
  const HostNode* const root = master ? master->GetRoot() : nullptr;
  HostValue link;
  if (!root || !root->GetParameter(kAuxLink, link))
    return nullptr;
  return static_cast<HostObject*>(link.GetLink());  // AddAuxTag links to objects alone
}

Bool IsDontExport(HostObject* op) noexcept
{
  return op->GetVisibility(kEditorVisibility) == kHiddenMode && op->GetVisibility(kRenderVisibility) == kHiddenMode &&
         op->GetName() == kDontExportName;
}

Bool HasTransformTracks(const HostObject* op) noexcept
{
  for (const HostDescId& id : kTransformTrackIds)
  {
    if (HostTrack::Find(op, id))
      return true;
  }
  return false;
}

void FreeTracks(HostObject* op, const HostDescId& id) noexcept
{
  while (HostTrack* const track = HostTrack::Find(op, id))
  {
    track->Remove();
    HostNode::Free(track);
  }
}

Bool HasGeometry(HostObject* op) noexcept
{
  return op->GetType() == kPolygonObjectType && ToPoly(op)->GetPointCount() > 0 && ToPoly(op)->GetPolygonCount() > 0;
}

}  // namespace q7z
