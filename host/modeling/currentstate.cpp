#include "host/modeling/currentstate.h"

#include "host/modeling/copiedjoints.h"
#include "host/modeling/copysize.h"
#include "host/modeling/deformation.h"
#include "host/modeling/instancechains.h"
#include "host/modeling/objectcopies.h"
#include "host/modeling/skindeformers.h"
#include "host/scene/headlesscontainer.h"
#include "host/scene/headlesstag.h"

namespace q7z
{

namespace
{

/// Where the copy of an object goes.
struct CopyPlace
{
  HeadlessObject* parent = nullptr;  ///< null for the root
  Int32 scope = 0;                   ///< see CopiedJoints
  Bool isUnfolded = false;           ///< the object is there because an instance shows it
  HostMatrix toParent;               ///< from the object's parent's space to that of `parent`
};

/// The children of one object, of which `next` is to be copied next.
struct CopyFrame
{
  const HeadlessObject* owner;
  const HeadlessObject* next;
  CopyPlace place;
};

class CurrentState
{
public:
  CurrentState(Bool keepsHierarchy, Bool keepsTracks, const UnfoldingLimits& limits) noexcept
      : _copies(keepsTracks), _keepsHierarchy(keepsHierarchy), _limits(limits)
  {}

  HeadlessObject* Run(const HeadlessDocument* document, const HeadlessObject& root) noexcept
  {
    if (!_copies.Init(document, root) || !Copy(root, CopyPlace()))
      return nullptr;
    while (_frames.IsPopulated())
    {
      CopyFrame& frame = _frames.GetLast();
      const HeadlessObject* const object = frame.next;
      if (!object)
      {
        Close(*frame.owner);
        _frames.Truncate(_frames.GetCount() - 1);
        continue;
      }
      frame.next = object->GetNext();
      if (!Copy(*object, CopyPlace(frame.place)))
        return nullptr;
    }
    return _joints.MapLinks() ? _root.release() : nullptr;
  }

private:
  Bool Copy(const HeadlessObject& object, const CopyPlace& place) noexcept
  {
    if (place.isUnfolded && !CountUnfolded(object))
      return false;
    if (object.IsInstance())
      return CopyInstance(object, place);
    const Bool isGone = object.GetType() == kSkinDeformerType && !object.GetDown();
    if (isGone && place.parent)
      return true;
    HeadlessObject* const copy = Insert(object, _copies.Make(object), place);
    return copy && _joints.Add(object, *copy, place.scope, true) && Open(object, InChildren(place, *copy));
  }

  Bool CopyInstance(const HeadlessObject& instance, const CopyPlace& place) noexcept
  {
    ShownObject shown;
    if (!_chains.Follow(instance, shown))
      return false;
    Bool isInside = false;
    if (!IsInsideItself(shown, isInside))
      return false;
    if (isInside)
      shown = ShownObject();
    const HeadlessObject* const object = shown.object;
    if (object && !CountUnfoldedBytes(*object))
      return false;
    HeadlessObject* const copy =
      Insert(instance, object ? _copies.MakeShown(*object, instance) : _copies.MakeNull(instance), place);
    if (!copy || !_joints.Add(instance, *copy, place.scope, !object))
      return false;
    const CopyPlace inside = InChildren(place, *copy);
    return Open(instance, inside) && Unfold(shown, *copy, inside);
  }

  /// The children of what an instance shows. What is opened last is copied first.
  Bool Unfold(ShownObject shown, HeadlessObject& copy, CopyPlace place) noexcept
  {
    const HeadlessObject* const object = shown.object;
    if (!object && !shown.nextWithChildren)
      return true;
    if (!_joints.AddScope(place.scope))
      return false;
    place.isUnfolded = true;
    while (const HeadlessObject* const between = shown.nextWithChildren)
    {
      const Bool opened = _joints.Add(*between, copy, place.scope, false) && Open(*between, place);
      if (!opened || !_chains.Follow(*between, shown))
        return false;
    }
    return !object || (_joints.Add(*object, copy, place.scope, true) && Open(*object, place));
  }

  /// Whether one of the objects that an instance shows, or would show the children of, is being copied around it. A search in
  /// vain counts as unfolded, since nothing that it would be proportional to comes of it.
  /// @return false without memory.
  Bool IsInsideItself(ShownObject shown, Bool& isInside) noexcept
  {
    isInside = shown.object && _open.Contains(shown.object);
    Int steps = 0;
    for (; !isInside && shown.nextWithChildren; ++steps)
    {
      const HeadlessObject& between = *shown.nextWithChildren;
      isInside = _open.Contains(&between);
      if (!_chains.Follow(between, shown))
        return false;
    }
    _unfoldedObjects += isInside ? steps : 0;
    return _unfoldedObjects <= _limits.objects;
  }

  /// Puts a copy in its place; null stays null.
  HeadlessObject* Insert(const HeadlessObject& original, HeadlessOwner<HeadlessObject> copy, const CopyPlace& place) noexcept
  {
    HeadlessObject* const inserted = copy.get();
    if (!inserted)
      return nullptr;
    if (!place.parent)
    {
      _root = std::move(copy);
      return inserted;
    }
    if (!_keepsHierarchy)
      inserted->SetLocalMatrix(place.toParent * original.GetLocalMatrix());
    copy.release()->InsertUnderLast(place.parent);
    return inserted;
  }

  /// The place of the children of a copy that stands at place.
  CopyPlace InChildren(const CopyPlace& place, HeadlessObject& copy) const noexcept
  {
    CopyPlace inside = place;
    inside.parent = _keepsHierarchy || !place.parent ? &copy : place.parent;
    if (!_keepsHierarchy && place.parent)
      inside.toParent = copy.GetLocalMatrix();
    return inside;
  }

  /// Has the children of owner copied, before those that were opened before.
  Bool Open(const HeadlessObject& owner, const CopyPlace& place) noexcept
  {
    if (!owner.GetDown())
      return true;
    Result<Int32*> count = _open.FindOrInsert(&owner);
    if (count.HasError())
      return false;
    ++*count.GetValue();
    return !_frames.Append({&owner, owner.GetDown(), place}).HasError();
  }

  void Close(const HeadlessObject& owner) noexcept
  {
    Int32* const count = _open.Find(&owner);
    if (--*count == 0)
      _open.Erase(&owner);
  }

  Bool CountUnfoldedBytes(const HeadlessObject& object) noexcept
  {
    _unfoldedBytes += EstimateCopySize(object);
    return _unfoldedBytes <= _limits.bytes;
  }

  Bool CountUnfolded(const HeadlessObject& object) noexcept
  {
    return ++_unfoldedObjects <= _limits.objects && CountUnfoldedBytes(object);
  }

  ObjectCopies _copies;
  InstanceChains _chains;
  CopiedJoints _joints;
  BaseArray<CopyFrame> _frames;
  HashMap<const HeadlessObject*, Int32> _open;  // how often the children of each are being copied
  HeadlessOwner<HeadlessObject> _root;
  Int _unfoldedObjects = 0;
  Int _unfoldedBytes = 0;
  Bool _keepsHierarchy;
  UnfoldingLimits _limits;
};

Bool IsSet(const HostContainer* settings, Int32 id) noexcept
{
  const HostValue* const value = settings ? ToHeadless(settings)->Find(id) : nullptr;
  return value && value->GetBool();
}

}  // namespace

HeadlessObject* MakeCurrentStateCopy(const HeadlessDocument* document, const HeadlessObject* root, const HostContainer* settings,
                                     const UnfoldingLimits& limits) noexcept
{
  if (!root)
    return nullptr;
  CurrentState state(IsSet(settings, kKeepHierarchySetting), IsSet(settings, kKeepTracksSetting), limits);
  return state.Run(document, *root);
}

}  // namespace q7z
