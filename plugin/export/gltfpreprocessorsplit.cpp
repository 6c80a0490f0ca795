// The first stage: an object from a scene hook, and polygon objects cut into parts by the selections that their materials are
// bound to.

#include <cmath>

#include "framework/check.h"
#include "plugin/export/gltfpreprocessor.h"
#include "plugin/export/gltfpreprocessormodeling.h"
#include "plugin/export/gltfprogress.h"
#include "plugin/module/hostmaterial.h"

namespace q7z
{

namespace
{

/// The parameter of a texture tag that names the selection it is bound to.
constexpr Int32 kRestriction = 1006;

// The scene hook that may offer an object of its own, and the message that asks it.
constexpr Int32 kObjectHook = 1054188;
constexpr Int32 kGetHookObject = 180420109;

struct AliasTransDeleter
{
  void operator()(HostAliasTrans* trans) const noexcept { HostAliasTrans::Free(trans); }
};

String GetRestriction(const HostTag* textureTag) noexcept
{
  HostValue value;
  textureTag->GetParameter(kRestriction, value);
  return value.GetString();
}

void FreeTag(HostTag* tag) noexcept
{
  tag->Remove();
  HostNode::Free(tag);
}

/// An object's selection tags by their names; of equal names the first in list order comes first.
class SelectionTags
{
public:
  Result<void> Collect(const HostObject* op) noexcept
  {
    for (HostTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext())
    {
      if (tag->GetType() == kPolygonSelectionTagType)
        RETURN_IF_ERROR(_entries.Append({static_cast<HostPolygonSelectionTag*>(tag), -1}));
    }
    for (Int i = _entries.GetCount(); i-- > 0;)
    {
      ASSIGN_OR_RETURN(Int* const first, _firsts.FindOrInsert(_entries[i].tag->GetName()));
      _entries[i].next = *first - 1;
      *first = i + 1;
    }
    return {};
  }

  Bool IsEmpty() const noexcept { return _entries.IsEmpty(); }
  Bool Contains(const String& name) const noexcept { return _firsts.Contains(name); }

  /// Null for none.
  HostPolygonSelectionTag* Find(const String& name) const noexcept
  {
    const Int* const first = _firsts.Find(name);
    return first && *first > 0 ? _entries[*first - 1].tag : nullptr;
  }

  /// Frees the tag that Find gives.
  void FreeFirst(const String& name) noexcept
  {
    Int* const first = _firsts.Find(name);
    const Entry& entry = _entries[*first - 1];
    *first = entry.next + 1;
    FreeTag(entry.tag);
  }

private:
  struct Entry
  {
    HostPolygonSelectionTag* tag;
    Int next;  // of the same name, an index into _entries; -1 for none
  };
  BaseArray<Entry> _entries;
  HashMap<String, Int> _firsts;  // an index into _entries plus 1; 0 when all are gone
};

Result<BaseArray<HostTextureTag*>> CollectTextureTags(const HostObject* op) noexcept
{
  BaseArray<HostTextureTag*> tags;
  for (HostTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext())
  {
    if (tag->GetType() == kTextureTagType)
      RETURN_IF_ERROR(tags.Append(static_cast<HostTextureTag*>(tag)));
  }
  return tags;
}

void MoveChildren(HostObject* from, HostObject* to) noexcept
{
  while (HostObject* const child = from->GetDown())
    child->InsertUnderLast(to);
}

Result<void> NameAfterMaterial(HostObject* target, const HostObject* op, const HostMaterial* material) noexcept
{
  ASSIGN_OR_RETURN(const String name, String::Join({op->GetName(), "-"_s, material->GetName()}));
  if (!target->SetName(name))
    return Error::OutOfMemory();
  return {};
}

HostMaterial* FindFirstMaterial(const HostObject* op) noexcept
{
  for (HostTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext())
  {
    if (tag->GetType() != kTextureTagType)
      continue;
    if (HostMaterial* const material = static_cast<const HostTextureTag*>(tag)->GetMaterial())
      return material;
  }
  return nullptr;
}

Bool IsNear(const Vector& a, const Vector& b) noexcept
{
  return (a - b).GetLength() <= 1e-9 * (1 + a.GetLength());
}

Bool IsNear(const HostMatrix& a, const HostMatrix& b) noexcept
{
  return IsNear(a.offset, b.offset) && IsNear(a.axisX, b.axisX) && IsNear(a.axisY, b.axisY) && IsNear(a.axisZ, b.axisZ);
}

Bool HasVectorsOf(const HostObject* target, const HostObject* op) noexcept
{
  return target->GetRelativePosition() == op->GetRelativePosition() &&
         target->GetRelativeRotation() == op->GetRelativeRotation() && target->GetRelativeScale() == op->GetRelativeScale();
}

/// Local matrix and stored vectors. Where the vectors would put target elsewhere (op has a base transform under them, or another
/// rotation order), the matrix counts alone.
void CopyTransform(const HostObject* op, HostObject* target) noexcept
{
  const HostMatrix matrix = op->GetLocalMatrix();
  target->SetLocalMatrix(matrix);
  if (HasVectorsOf(target, op))
    return;
  target->SetParameter(kPositionParameter, op->GetRelativePosition());
  target->SetParameter(kRotationParameter, op->GetRelativeRotation());
  target->SetParameter(kScaleParameter, op->GetRelativeScale());
  if (!IsNear(target->GetLocalMatrix(), matrix))
    target->SetLocalMatrix(matrix);
}

Result<void> CopyTransformTracks(const HostObject* op, HostObject* target) noexcept
{
  for (const HostDescId& id : kTransformTrackIds)
  {
    const HostTrack* const track = HostTrack::Find(op, id);
    if (!track)
      continue;
    HostTrack* const clone = track->Clone(target);
    if (!clone)
      return Error::OutOfMemory();
    clone->InsertInto(target);
  }
  return {};
}

/// The object that stands in op's place once parts of it are separate.
Result<HostOwner<HostObject>> MakeGroup(const HostObject* op) noexcept
{
  HostOwner<HostObject> group(HostObject::Alloc(kNullObjectType));
  if (!group || !group->SetName(op->GetName()))
    return Error::OutOfMemory();
  CopyTransform(op, group.get());
  RETURN_IF_ERROR(CopyTransformTracks(op, group.get()));
  return group;
}

/// Takes off a part what it has from the object that it was cut out of and what the group has now.
void StripPart(HostObject* part) noexcept
{
  for (HostTag* tag = part->GetFirstTag(); tag;)
  {
    HostTag* const next = tag->GetNext();
    if (tag->GetType() == kTextureTagType || tag->GetType() == kPolygonSelectionTagType)
      FreeTag(tag);
    tag = next;
  }
  for (const HostDescId& id : kTransformTrackIds)
    FreeTracks(part, id);
}

}  // namespace

/// The instance objects by what they show.
struct GltfPreprocessor::InstanceLists
{
  HashMap<HostObject*, BaseArray<HostObject*>> shownBy;

  Result<void> Collect(const BaseArray<HostObject*>& instances) noexcept
  {
    for (HostObject* const instance : instances)
    {
      HostObject* const shown = instance->GetReference();
      if (!shown)
        continue;
      ASSIGN_OR_RETURN(BaseArray<HostObject*>* const list, shownBy.FindOrInsert(shown));
      RETURN_IF_ERROR(list->Append(instance));
    }
    return {};
  }
};

/// What is known of the object that is being split.
struct GltfPreprocessor::Split
{
  HostObject* op = nullptr;
  HostOwner<HostObject> children;  // holds op's children; null for none
  SelectionTags selections;
  HostOwner<HostObject> group;  // null until a part needs it, and when it has been inserted
  ModelingSettings settings;
  ModelingCommandData data;

  Result<void> TakeChildren() noexcept
  {
    if (!op->GetDown())
      return {};
    children.reset(HostObject::Alloc(kNullObjectType));
    if (!children)
      return Error::OutOfMemory();
    MoveChildren(op, children.get());
    return {};
  }
  Result<void> PrepareCommand(HostDocument* doc) noexcept
  {
    data.document = doc;
    data.object = op;
    data.settings = settings.Make();
    data.mode = kUsePolygonSelection;
    return data.settings ? Result<void>() : Result<void>(Error::OutOfMemory());
  }
  void GiveChildren(HostObject* parent) noexcept
  {
    if (children)
      MoveChildren(children.get(), parent);
  }
};

Result<void> GltfPreprocessor::SplitStage() noexcept
{
  ProgressSetText(kPreparingText);
  ProgressReset();
  if (!_options.useCurrentFrame)
    GoToFrame(_options.exportFrame);
  RETURN_IF_ERROR(ImportHookObject());
  RETURN_IF_ERROR(CollectStage());
  _objectCount = CountObjects(_doc);
  ProgressAddTotal(Int(2) * _objectCount);
  RETURN_IF_ERROR(SplitCollected());
  _instances.Reset();
  _splitObjects.Reset();
  return {};
}

Result<void> GltfPreprocessor::ImportHookObject() noexcept
{
  HostNode* const hook = g_hostTables->document->FindSceneHook(_doc, kObjectHook);
  HostObject* slot = nullptr;
  if (hook)
    g_hostTables->document->SendMessage(hook, kGetHookObject, &slot);
  if (!slot)
    return {};
  const std::unique_ptr<HostAliasTrans, AliasTransDeleter> trans(HostAliasTrans::Alloc());
  if (!trans || !trans->Init(_doc))
    return Error::OutOfMemory();
  HostOwner<HostObject> clone(slot->Clone(trans.get()));
  if (!clone)
    return Error::OutOfMemory();
  trans->Translate();
  _doc->InsertObject(clone.release(), nullptr, nullptr);
  return {};
}

Result<void> GltfPreprocessor::CollectStage() noexcept
{
  _instances.Reset();
  _splitObjects.Reset();
  return WalkWith(_doc, [this](HostObject* op) { return CollectObject(op); }, true, WalkAll);
}

Result<void> GltfPreprocessor::CollectObject(HostObject* op) noexcept
{
  const Int32 type = op->GetType();
  if (type == kInstanceObjectType || type == kSecondInstanceObjectType)
    return _instances.Append(op);
  if (type != kPolygonObjectType)
    return {};
  SelectionTags selections;
  RETURN_IF_ERROR(selections.Collect(op));
  for (HostTag* tag = selections.IsEmpty() ? nullptr : op->GetFirstTag(); tag; tag = tag->GetNext())
  {
    if (tag->GetType() == kTextureTagType && selections.Contains(GetRestriction(tag)))
      return _splitObjects.Append(op);
  }
  return {};
}

Result<void> GltfPreprocessor::SplitCollected() noexcept
{
  InstanceLists instances;
  RETURN_IF_ERROR(instances.Collect(_instances));
  BaseArray<HostOwner<HostObject>> replaced;  // what no longer belongs to the document, in the place that it had in the list
  RETURN_IF_ERROR(replaced.Resize(_splitObjects.GetCount()));
  for (Int i = 0; i < _splitObjects.GetCount(); ++i)
  {
    HostObject* const op = _splitObjects[i];
    ASSIGN_OR_RETURN(HostObject* const standing, SplitBySelections(op, instances));
    if (standing != op)
      replaced[i].reset(op);
    ProgressStep(_lock);
    RETURN_IF_ERROR(ProgressCheckCancel());
  }
  for (HostOwner<HostObject>& op : replaced)
  {
    op.reset();
    ProgressStep(_lock);
    RETURN_IF_ERROR(ProgressCheckCancel());
  }
  return {};
}

/// @return the object that stands in op's place: op, or a group; op belongs to the caller then.
Result<HostObject*> GltfPreprocessor::SplitBySelections(HostObject* op, InstanceLists& instances) noexcept
{
  Split split;
  split.op = op;
  RETURN_IF_ERROR(split.selections.Collect(op));
  if (split.selections.IsEmpty())
    return op;
  RETURN_IF_ERROR(split.TakeChildren());
  ASSIGN_OR_RETURN(const BaseArray<HostTextureTag*> textureTags, CollectTextureTags(op));
  RETURN_IF_ERROR(split.PrepareCommand(_doc));
  for (Int i = textureTags.GetCount(); i-- > 0;)
    RETURN_IF_ERROR(SplitOff(split, textureTags[i]));
  HostObject* const standing = split.group && split.group->GetDown() ? split.group.get() : op;
  if (standing != op)
    RETURN_IF_ERROR(ReplaceByGroup(split, instances));
  split.GiveChildren(standing);
  return standing;
}

/// Separates what one texture tag is bound to. Both it and the selection are gone then.
Result<void> GltfPreprocessor::SplitOff(Split& split, HostTextureTag* tTag) noexcept
{
  CHECK_STATE(tTag);
  const String name = GetRestriction(tTag);
  HostPolygonSelectionTag* const selectionTag = split.selections.Find(name);
  if (!selectionTag || !tTag->GetMaterial())
    return {};
  HostSelection* const restriction = selectionTag->GetSelection();
  CHECK_STATE(restriction);
  if (restriction->GetCount() > 0)
    RETURN_IF_ERROR(MovePart(split, restriction, tTag));
  FreeTag(tTag);
  split.selections.FreeFirst(name);
  return {};
}

/// Takes the polygons of a selection out of the object. @return the new object that they make up.
Result<HostOwner<HostObject>> GltfPreprocessor::CutSelected(Split& split, HostSelection* restriction) noexcept
{
  HostSelection* const bsPolyS = ToPoly(split.op)->GetPolygonSelection();
  CHECK_STATE(restriction->CopyTo(bsPolyS));
  ModelingCommandData& data = split.data;
  CHECK_STATE(SendModelingCommand(220, data));
  HostOwner<HostObject> part(data.result ? data.result[0] : nullptr);
  if (part)
    return part;
  ASSIGN_OR_RETURN(const String text, String::Format("Illegal state: Could not split object '@'"_s, {split.op->GetName()}));
  return MAKE_ERROR(ErrorClass::kIllegalState, text);
}

/// Moves the polygons of a selection into a part of their own under the group, which is made when there is none yet.
Result<void> GltfPreprocessor::MovePart(Split& split, HostSelection* restriction, HostTextureTag* tTag) noexcept
{
  ASSIGN_OR_RETURN(HostOwner<HostObject> part, CutSelected(split, restriction));
  HostOwner<HostTag> clone(tTag->Clone());
  if (!clone || !clone->SetParameter(kRestriction, String()))  // it applies to the whole part
    return Error::OutOfMemory();
  if (!split.group)
  {
    ASSIGN_OR_RETURN(split.group, MakeGroup(split.op));
  }
  StripPart(part.get());
  part->InsertTag(clone.release());
  RETURN_IF_ERROR(NameAfterMaterial(part.get(), split.op, tTag->GetMaterial()));
  part->SetLocalMatrix(HostMatrix());
  part.release()->InsertUnderLast(split.group.get());
  return {};
}

/// Puts the group in op's place, with what is left of op as its first child. op belongs to nobody then.
Result<void> GltfPreprocessor::ReplaceByGroup(Split& split, InstanceLists& instances) noexcept
{
  HostObject* const op = split.op;
  if (HasGeometry(op))
  {
    HostOwner<HostObject> rest(op->Clone());
    if (!rest)
      return Error::OutOfMemory();
    if (const HostMaterial* const material = FindFirstMaterial(rest.get()))
      RETURN_IF_ERROR(NameAfterMaterial(rest.get(), op, material));
    // Deliberately with the tracks that the group has too.
    rest->SetLocalMatrix(HostMatrix());
    rest.release()->InsertUnder(split.group.get());
  }
  HostObject* const group = split.group.release();
  group->InsertAfter(op);
  RETURN_IF_ERROR(ReplaceReferences(op, group, instances));
  op->Remove();
  _objectCount += CountTree(group);
  return {};
}

/// Has the instances that show an object show another.
Result<void> GltfPreprocessor::ReplaceReferences(HostObject* origRef, HostObject* newRef, InstanceLists& instances) noexcept
{
  CHECK_ARGUMENT(origRef);
  CHECK_ARGUMENT(newRef);
  const BaseArray<HostObject*>* const list = instances.shownBy.Find(origRef);
  if (!list)
    return {};
  for (HostObject* const instance : *list)
  {
    if (!instance->SetReference(newRef))
      return Error::OutOfMemory();
  }
  return {};
}

}  // namespace q7z
