// Baking: every transform is sampled at every frame of the document's time, and the samples take the place of the objects' own
// tracks. Vectors that never change lose their tracks.

#include <cmath>

#include "framework/check.h"
#include "plugin/export/gltfpreprocessor.h"
#include "plugin/export/gltfprogress.h"

namespace q7z
{

namespace
{

/// Values that differ by less from one frame to the next are constant.
constexpr Float kLargestConstantStep = 0.0001;

/// The time range is a number in a file that nothing backs; more keys than this count as out of memory.
constexpr Int kMostKeys = 50'000'000;

/// One parameter of an object in baking.
struct BakeTrack
{
  HostOwner<HostTrack> track;  // not inserted yet
  Bool isConstant = true;
};

/// The nine of an object, in the order of kTransformTrackIds.
struct BakeRecord
{
  BakeTrack tracks[9];
};

struct FrameRange
{
  Int32 first;
  Int32 last;
  Int32 rate;  // frames a second
  Int GetCount() const noexcept { return Int(last) - first + 1; }
  HostTime GetTime(Int frame) const noexcept { return {static_cast<Float>(frame), static_cast<Float>(rate)}; }
};

/// A skinned mesh moves with its joints; its own transform has no say.
Bool IsSkinned(const HostObject* op) noexcept
{
  return op->GetType() == kPolygonObjectType && op->GetTag(kWeightTagType);
}

Result<HostOwner<HostTrack>> MakeBakeTrack(HostObject* op, const HostDescId& id, const FrameRange& range) noexcept
{
  HostOwner<HostTrack> track(HostTrack::Alloc(op, id));
  HostCurve* const curve = track ? track->GetCurve(true) : nullptr;
  if (!curve)
    return Error::OutOfMemory();
  for (Int frame = range.first; frame <= range.last; ++frame)
  {
    if (!curve->AddKey(range.GetTime(frame)))
      return Error::OutOfMemory();
  }
  return track;
}

/// What an object's position, rotation (in its own order) and scale would be for the matrix that it has now.
void ReadValues(const HostObject* op, Float (&values)[9]) noexcept
{
  const HostMatrix local = HostObjectGetBaseMatrix(op).GetInverse() * op->GetLocalMatrix();
  const Vector vectors[3] = {local.offset,
                             MatrixToAnglesInOrder(local, op->GetRotationOrder()),
                             {local.axisX.GetLength(), local.axisY.GetLength(), local.axisZ.GetLength()}};
  for (int i = 0; i < 9; ++i)
    values[i] = vectors[i / 3][i % 3];
}

/// The records of a bake and what each of its walks does with one object. The walks are parallel: an object's visit touches its own
/// tracks and record alone.
class AnimationBaker
{
public:
  AnimationBaker(const FrameRange& range, SpinLock& lock) noexcept : _range(range), _lock(lock) {}

  Result<void> CreateBakeTracks(HostObject* op) noexcept
  {
    if (IsSkinned(op))
      return {};
    BakeRecord record;
    for (int i = 0; i < 9; ++i)
    {
      ASSIGN_OR_RETURN(record.tracks[i].track, MakeBakeTrack(op, kTransformTrackIds[i], _range));
    }
    const SpinLockGuard guard(_lock);
    RETURN_IF_ERROR(_records.Set(op, std::move(record)));
    return {};
  }

  /// Enters the transform that op has at a frame, which the document stands at.
  Result<void> SampleObject(HostObject* op, Int frame) noexcept
  {
    RETURN_IF_ERROR(ProgressCheckCancel());
    HostObject* const source = GetAuxSource(op);
    BakeRecord* const record = source && !IsSkinned(source) ? _records.Find(source) : nullptr;
    if (!record)
      return {};
    Float values[9];
    ReadValues(op, values);
    for (int i = 0; i < 9; ++i)
      RETURN_IF_ERROR(Enter(record->tracks[i], frame, values[i]));
    return {};
  }

  Result<void> ApplyBakeTracks(HostObject* op) noexcept
  {
    BakeRecord* const record = _records.Find(op);
    for (int vector = 0; vector < 3; ++vector)
    {
      BakeTrack* const baked = record ? record->tracks + 3 * vector : nullptr;
      if (baked || IsSkinned(op))
        ReplaceTracks(op, vector, baked);
    }
    return {};
  }

private:
  Result<void> Enter(BakeTrack& target, Int frame, Float value) noexcept
  {
    HostCurve* const curve = target.track->GetCurve(false);
    HostKey* const bakedKey = curve ? curve->GetKey(static_cast<Int32>(frame - _range.first)) : nullptr;
    CHECK_STATE(bakedKey);
    bakedKey->SetValue(curve, value);
    const Float step = curve->GetValue(_range.GetTime(frame)) - curve->GetValue(_range.GetTime(frame - 1));
    target.isConstant = target.isConstant && std::fabs(step) < kLargestConstantStep;
    return {};
  }

  /// @param baked  three tracks to put in; null for none.
  static void ReplaceTracks(HostObject* op, int vector, BakeTrack* baked) noexcept
  {
    const Bool isConstant = !baked || (baked[0].isConstant && baked[1].isConstant && baked[2].isConstant);
    for (int i = 0; i < 3; ++i)
    {
      FreeTracks(op, kTransformTrackIds[3 * vector + i]);
      if (!isConstant)
        baked[i].track.release()->InsertInto(op);
    }
  }

  const FrameRange _range;
  SpinLock& _lock;
  HashMap<HostObject*, BakeRecord> _records;  // filled under _lock
};

}  // namespace

Result<void> GltfPreprocessor::BakeStage() noexcept
{
  const Int32 rate = GetFrameRate();
  HostValue start;
  HostValue end;
  _doc->GetParameter(kDocumentStartParameter, start);
  _doc->GetParameter(kDocumentEndParameter, end);
  const FrameRange range{FrameOfHostTime(start.GetTime(), rate), FrameOfHostTime(end.GetTime(), rate), rate};
  if (range.last <= range.first || rate <= 0)
    return {};
  ProgressSetText(kBakingText);
  ProgressReset();
  ProgressAddTotal(range.GetCount());
  if (range.GetCount() > kMostKeys / 9 / (_objectCount > 0 ? _objectCount : 1))
    return Error::OutOfMemory();

  AnimationBaker baker(range, _lock);
  const auto create = [&baker](HostObject* op) { return baker.CreateBakeTracks(op); };
  RETURN_IF_ERROR(WalkWith(_doc, create, _sequential, WalkAll));
  const Int32 present = FrameOfHostTime(_doc->GetTime(), rate);
  for (Int frame = range.first; frame <= range.last; ++frame)
  {
    RETURN_IF_ERROR(ProgressCheckCancel());
    GoToFrame(static_cast<Int32>(frame));
    const auto sample = [&baker, frame](HostObject* op) { return baker.SampleObject(op, frame); };
    RETURN_IF_ERROR(WalkWith(_doc, sample, _sequential, WalkAll));
    ProgressStep(_lock);
  }
  const auto apply = [&baker](HostObject* op) { return baker.ApplyBakeTracks(op); };
  RETURN_IF_ERROR(WalkWith(_doc, apply, _sequential, WalkAll));
  GoToFrame(present);
  return {};
}

}  // namespace q7z
