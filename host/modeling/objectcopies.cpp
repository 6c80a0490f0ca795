#include "host/modeling/objectcopies.h"

#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"

namespace q7z
{

namespace
{

using Owner = HeadlessOwner<HeadlessObject>;

Bool IsTransformTrack(const HeadlessTrack& track) noexcept
{
  const Int32 parameter = track.GetId()[0].id;
  return parameter >= kPositionParameter && parameter <= kScaleParameter;
}

Bool HasTransformTracks(const HeadlessObject& object) noexcept
{
  // The list is sorted by id.
  const HeadlessTrack* track = object.GetTracks()->GetFirst();
  while (track && track->GetId()[0].id < kPositionParameter)
    track = track->GetNext();
  return track && IsTransformTrack(*track);
}

/// Gives the copy the transform tracks of another object in place of its own.
Bool TakeTransformTracks(const HeadlessObject& from, HeadlessObject& copy) noexcept
{
  for (HeadlessTrack* track = copy.GetTracks()->GetFirst(); track;)
  {
    HeadlessTrack* const next = track->GetNext();
    if (IsTransformTrack(*track))
    {
      track->Remove();
      HeadlessNode::Free(track);
    }
    track = next;
  }
  for (const HeadlessTrack* track = from.GetTracks()->GetFirst(); track; track = track->GetNext())
  {
    HeadlessTrack* const clone = IsTransformTrack(*track) ? track->Clone() : nullptr;
    if (clone)
      clone->InsertInto(&copy);
    else if (IsTransformTrack(*track))
      return false;
  }
  return true;
}

HeadlessTag* FindAuxTag(const HeadlessObject& object) noexcept
{
  HeadlessTag* tag = object.GetFirstTag();
  while (tag && !(tag->GetType() == kNodeBasedTagType && tag->GetName().GetView() == kAuxTagName))
    tag = tag->GetNext();
  return tag;
}

/// Gives the copy the aux tag of another object, or none, in place of its own.
Bool TakeAuxTag(const HeadlessObject& from, HeadlessObject& copy) noexcept
{
  if (HeadlessTag* const own = FindAuxTag(copy))
  {
    own->Remove();
    HeadlessNode::Free(own);
  }
  const HeadlessTag* const tag = FindAuxTag(from);
  HeadlessTag* const clone = tag ? tag->Clone() : nullptr;
  if (clone)
    clone->InsertInto(&copy);
  return clone || !tag;
}

/// Name, transform and visibility.
Bool TakePlace(const HeadlessObject& from, HeadlessObject& copy) noexcept
{
  return copy.SetName(from.GetName()) && copy.CopyPlaceFrom(from);
}

/// All but pose morph tags, which are nothing without points.
Bool CopyTags(const HeadlessObject& from, HeadlessObject& copy) noexcept
{
  for (const HeadlessTag* tag = from.GetFirstTag(); tag; tag = tag->GetNext())
  {
    if (tag->GetType() == kPoseMorphTagType)
      continue;
    HeadlessTag* const clone = tag->Clone();
    if (!clone)
      return false;
    clone->InsertInto(&copy);
  }
  return true;
}

void FreeTagsOfType(HeadlessObject& object, Int32 type) noexcept
{
  for (HeadlessTag* tag = object.GetFirstTag(); tag;)
  {
    HeadlessTag* const next = tag->GetNext();
    if (tag->GetType() == type)
    {
      tag->Remove();
      HeadlessNode::Free(tag);
    }
    tag = next;
  }
}

}  // namespace

Owner ObjectCopies::Make(const HeadlessObject& object) noexcept
{
  return object.GetType() == kSkinDeformerType ? MakeNull(object) : Finish(MakeWithTracks(object));
}

Owner ObjectCopies::MakeShown(const HeadlessObject& shown, const HeadlessObject& instance) noexcept
{
  if (shown.GetType() == kSkinDeformerType)
    return MakeNull(instance);
  Owner copy = MakeWithTracks(shown);
  if (!copy || !TakePlace(instance, *copy))
    return nullptr;
  const Bool stands = !HasTransformTracks(shown) && !HasTransformTracks(instance);
  // The copy of an object that stands still is one more of the same; one that moves moves as the instance does.
  if (!stands && (!TakeTransformTracks(instance, *copy) || !TakeAuxTag(instance, *copy)))
    return nullptr;
  return Finish(std::move(copy));
}

Owner ObjectCopies::MakeNull(const HeadlessObject& object) noexcept
{
  Owner copy(HeadlessObject::Create(kNullObjectType));
  if (!copy || !TakePlace(object, *copy) || !copy->GetParameters().CopyFrom(object.GetParameters()) ||
      !copy->SetLayer(object.GetLayer()))
    return nullptr;
  if (!copy->GetTracks()->CopyFrom(copy.get(), *object.GetTracks()) || !CopyTags(object, *copy))
    return nullptr;
  return Finish(std::move(copy));
}

Owner ObjectCopies::MakeWithTracks(const HeadlessObject& object) noexcept
{
  const Bool isMorphed = object.FindTag(kPoseMorphTagType) != nullptr;
  const Bool isSkinned = object.FindTag(kWeightTagType) && _deformers.ActOn(object);
  if (!isMorphed && !isSkinned)
    return Owner(object.CloneAlone());
  Owner* deformed = _deformed.Find(&object);
  if (!deformed)
  {
    Owner made = MakeDeformed(object);
    if (!made)
      return nullptr;
    Result<Owner*> kept = _deformed.Set(&object, std::move(made));
    if (kept.HasError())
      return nullptr;
    deformed = kept.GetValue();
  }
  return Owner((*deformed)->CloneAlone());
}

/// Morphs come before skins: their shapes are those of the bind pose.
Owner ObjectCopies::MakeDeformed(const HeadlessObject& object) noexcept
{
  Owner copy(object.CloneAlone());
  HeadlessPolygonObject* const mesh = copy ? copy->AsPolygonObject() : nullptr;
  if (!copy || (mesh && !(ApplyPoseMorphs(*mesh) && ApplySkins(object, *mesh))))
    return nullptr;
  FreeTagsOfType(*copy, kPoseMorphTagType);
  return copy;
}

Bool ObjectCopies::ApplySkins(const HeadlessObject& object, HeadlessPolygonObject& copy) noexcept
{
  for (const HeadlessTag* tag = _deformers.ActOn(object) ? object.GetFirstTag() : nullptr; tag; tag = tag->GetNext())
  {
    const Bool isWeightTag = tag->GetType() == kWeightTagType;
    if (isWeightTag && !ApplySkin(static_cast<const HeadlessWeightTag&>(*tag), _globals, copy))
      return false;
  }
  return true;
}

Owner ObjectCopies::Finish(Owner copy) const noexcept
{
  if (!copy || _keepsTracks)
    return copy;
  copy->GetTracks()->Clear();
  for (HeadlessTag* tag = copy->GetFirstTag(); tag; tag = tag->GetNext())
    tag->GetTracks()->Clear();
  return copy;
}

}  // namespace q7z
