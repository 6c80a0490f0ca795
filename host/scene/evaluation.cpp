#include "host/scene/evaluation.h"

#include "host/scene/curvekeys.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

namespace
{

/// The components of an object's transform that tracks set. Nothing is read or written without such a track.
class TransformChange
{
public:
  explicit TransformChange(HeadlessNode& node) noexcept
      : _object(node.GetKind() == NodeKind::kObject ? static_cast<HeadlessObject*>(&node) : nullptr)
  {}

  /// @return false for an id that is no component of the transform.
  Bool Set(const HostDescId& id, Float value, const HeadlessCurve& curve) noexcept
  {
    if (!_object || id.GetDepth() != 2 || id[1].id < kComponentX || id[1].id > kComponentZ)
      return false;
    Vector* const vector = FindVector(id[0].id);
    if (!vector)
      return false;
    if (!_isRead)
      _vectors = _object->GetVectors();
    _isRead = true;
    (*vector)[id[1].id - kComponentX] = value;
    if (vector == &_vectors.rotation)
      _rotationCurves[id[1].id - kComponentX] = &curve;
    return true;
  }

  void Apply(const HostTime& time) noexcept
  {
    if (!_isRead)
      return;
    TurnBetweenKeys(_rotationCurves, time, _object->GetRotationOrder(), _vectors.rotation);
    _object->SetVectors(_vectors);  // without memory it moves all the same
  }

private:
  Vector* FindVector(Int32 parameter) noexcept
  {
    switch (parameter)
    {
      case kPositionParameter: return &_vectors.position;
      case kRotationParameter: return &_vectors.rotation;
      case kScaleParameter: return &_vectors.scale;
      default: return nullptr;
    }
  }

  HeadlessObject* _object;  // null for a node that is none
  TransformVectors _vectors;
  const HeadlessCurve* _rotationCurves[3] = {};  // that the angles come from
  Bool _isRead = false;
};

// Point tracks.

/// A spline's tangents are of its value; the points that its keys store move evenly.
void EvaluatePoints(const HeadlessCurve& curve, Float seconds, HeadlessPolygonObject& object) noexcept
{
  const KeyPair keys = FindKeys(curve, seconds);
  const HostArray<Vector>& from = keys.left->GetPoints();
  const HostArray<Vector>& to = keys.right->GetPoints();
  const Int count = object.GetPointCount();
  if (from.GetCount() != count)
    return;
  const Bool holds = keys.left->GetInterpolation() == InterpolationMode::Step || to.GetCount() != count || keys.place == 0;
  if (holds)
  {
    object.SetGeometry(from, object.GetPolygons());
    return;
  }
  Vector* const points = object.GetPointsW();
  for (Int i = 0; points && i < count; ++i)
    points[i] = from.GetR()[i] + (to.GetR()[i] - from.GetR()[i]) * keys.place;
}

HeadlessPolygonObject* AsPolygonObject(HeadlessNode& node) noexcept
{
  return node.GetKind() == NodeKind::kObject ? static_cast<HeadlessObject&>(node).AsPolygonObject() : nullptr;
}

// Nodes.

void EvaluateTrack(const HeadlessTrack& track, const HostTime& time, HeadlessNode& node, TransformChange& transform) noexcept
{
  const HeadlessCurve* const curve = track.GetCurve();
  const HostDescId& id = track.GetId();
  if (!curve || curve->GetKeyCount() == 0)
    return;
  if (id == HostDescId(kPointTrackParameter))
  {
    if (HeadlessPolygonObject* const object = AsPolygonObject(node))
      EvaluatePoints(*curve, time.GetSeconds(), *object);
    return;
  }
  const Float value = curve->GetValue(time);
  if (!transform.Set(id, value, *curve))
    node.SetParameter(id, value);
}

void ApplyValues(const HeadlessOverride& over, HeadlessNode& node) noexcept
{
  const HeadlessContainer& values = over.GetParameters();
  for (Int i = 0; i < values.GetCount(); ++i)
  {
    const HeadlessContainer::EntryView entry = values.GetEntry(i);
    if (entry.value)
      node.SetParameter(entry.id, *entry.value);
  }
}

/// Whether the override has a value for the parameter, itself or as part of a vector.
Bool HasValue(const HeadlessOverride& over, const HostDescId& id) noexcept
{
  const HeadlessContainer& values = over.GetParameters();
  return values.Find(id) || (id.GetDepth() > 1 && values.Find(id[0].id));
}

/// @param own   the node's own tracks that count, or null for none.
/// @param over  the current take's override of the node, or null.
void EvaluateNode(HeadlessNode& node, const HeadlessTrackList* own, const HeadlessOverride* over, const HostTime& time) noexcept
{
  TransformChange transform(node);
  if (over)
    ApplyValues(*over, node);
  for (const HeadlessTrack* track = own ? own->GetFirst() : nullptr; track; track = track->GetNext())
  {
    if (!over || !HasValue(*over, track->GetId()))
      EvaluateTrack(*track, time, node, transform);
  }
  // Behind the node's own, so that they win.
  for (const HeadlessTrack* track = over ? over->GetTracks()->GetFirst() : nullptr; track; track = track->GetNext())
    EvaluateTrack(*track, time, node, transform);
  transform.Apply(time);
}

const HeadlessOverride* FindOverride(const HeadlessTake& take, const HeadlessNamedNode& node) noexcept
{
  const Bool mayHaveOne = take.GetOverrideCount() > 0 && node.HasAnchor();
  return mayHaveOne ? take.FindOverride(&node) : nullptr;
}

void EvaluateObject(HeadlessObject& object, const HeadlessTake& take, const HostTime& time) noexcept
{
  EvaluateNode(object, object.GetTracks(), FindOverride(take, object), time);
  for (HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
    EvaluateNode(*tag, tag->GetTracks(), FindOverride(take, *tag), time);
}

Bool IsAnimated(HeadlessObject& object) noexcept
{
  if (object.GetTracks()->GetFirst())
    return true;
  for (const HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
  {
    if (tag->GetTracks()->GetFirst())
      return true;
  }
  return false;
}

/// For a take without overrides, where an object's tracks touch nothing else.
/// @return false when it could not be done, or not for all.
Bool EvaluateOnThreads(HeadlessDocument& document, const HeadlessTake& take, HostJobs& jobs) noexcept
{
  constexpr Int kObjectsPerJob = 64;
  BaseArray<HeadlessObject*> objects;
  for (HeadlessObject* object = document.GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
  {
    if (IsAnimated(*object) && objects.Append(object).HasError())
      return false;
  }
  if (objects.GetCount() <= kObjectsPerJob)
    return false;
  auto evaluate = [&](Int first, Int end) -> Result<void>
  {
    for (Int i = first; i < end; ++i)
      EvaluateObject(*objects[i], take, document.GetTime());
    return {};
  };
  return !ParallelFor(jobs, objects.GetCount(), kObjectsPerJob, evaluate).HasError();
}

}  // namespace

void EvaluateTracks(HeadlessDocument& document, HostJobs* jobs) noexcept
{
  const HeadlessTake& take = *document.GetTakeData().GetCurrentTake();
  const HostTime time = document.GetTime();
  if (jobs && take.GetOverrideCount() == 0 && EvaluateOnThreads(document, take, *jobs))
    return;
  for (HeadlessObject* object = document.GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
    EvaluateObject(*object, take, time);
  for (Int i = 0; i < take.GetOverrideCount(); ++i)
  {
    const HeadlessOverride& over = *take.GetOverride(i);
    HeadlessNamedNode* const target = over.GetTarget();
    const Bool isInWalk = target && (target->GetKind() == NodeKind::kObject || target->GetKind() == NodeKind::kTag);
    if (target && !isInWalk)
      EvaluateNode(*target, nullptr, &over, time);
  }
}

}  // namespace q7z
