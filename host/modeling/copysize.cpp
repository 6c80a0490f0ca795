#include "host/modeling/copysize.h"

#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"

namespace q7z
{

namespace
{

constexpr Int kParameterBytes = sizeof(HostDescId) + sizeof(HostValue) + 2 * sizeof(void*);

/// The depth of containers in each other is that of the copy itself.
Int EstimateParameters(const HeadlessContainer& parameters) noexcept
{
  Int size = parameters.GetCount() * kParameterBytes;
  parameters.VisitContainers([&](const HeadlessContainer& inner) noexcept
                             { size += static_cast<Int>(sizeof(HeadlessContainer)) + EstimateParameters(inner); });
  return size;
}

/// Copies share keys.
Int EstimateTracks(const HeadlessTrackList& tracks) noexcept
{
  Int size = 0;
  for (const HeadlessTrack* track = tracks.GetFirst(); track; track = track->GetNext())
    size += static_cast<Int>(sizeof(HeadlessTrack) + sizeof(HeadlessCurve)) + EstimateParameters(track->GetParameters());
  return size;
}

Int EstimateSelection(const HeadlessSelection& selection) noexcept
{
  return selection.GetRanges().GetCount() * static_cast<Int>(sizeof(SelectionRange));
}

Int EstimateWeights(const HeadlessWeightTag& tag) noexcept
{
  Int size = 0;
  for (Int32 i = 0; i < tag.GetJointCount(); ++i)
    size += static_cast<Int>(sizeof(HostMatrix) + sizeof(JointWeights)) +
            tag.GetWeights(i).GetCount() * static_cast<Int>(sizeof(PointWeight));
  return size;
}

Int EstimateTagData(const HeadlessTag& tag) noexcept
{
  switch (tag.GetType())
  {
    case kWeightTagType: return EstimateWeights(static_cast<const HeadlessWeightTag&>(tag));
    case kPolygonSelectionTagType: return EstimateSelection(static_cast<const HeadlessSelectionTag&>(tag).GetSelection());
    case kPoseMorphTagType:
      return static_cast<const HeadlessPoseMorphTag&>(tag).GetMorphCount() * static_cast<Int>(sizeof(HeadlessMorph));
    default: return 0;
  }
}

}  // namespace

Int EstimateCopySize(const HeadlessObject& object) noexcept
{
  Int size = static_cast<Int>(sizeof(HeadlessPolygonObject)) + EstimateParameters(object.GetParameters()) +
             EstimateTracks(*object.GetTracks());
  if (const HeadlessPolygonObject* const mesh = object.AsPolygonObject())
    size += EstimateSelection(mesh->GetPolygonSelection());
  for (const HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
  {
    size += static_cast<Int>(sizeof(HeadlessTextureTag)) + EstimateParameters(tag->GetParameters()) +
            EstimateTracks(*tag->GetTracks()) + EstimateTagData(*tag);
  }
  return size;
}

}  // namespace q7z
