// One sampler becomes tracks: its keys as they stand or baked, the rest keys, the tracks, the keys on their curves.

#include <algorithm>
#include <bit>
#include <cmath>

#include "framework/check.h"
#include "plugin/animation/gltfanimationimport.h"

namespace q7z
{

namespace
{

// Real files need a key or two for each byte at most, but may share accessors and may be baked. Below the free number no file is held to
// its size.
constexpr Int kFreeKeys = 4'000'000;
constexpr Int kKeysPerByte = 4;

// Keys out of order move those behind them. Real files have none, but for the rest keys, each of which may move all keys of its track.
constexpr Int kMovedKeys = 5'000'000'000;
constexpr Int kMovesPerKey = 2;

/// The keys that AddRestKeys adds, at most.
constexpr Int kRestKeyCount = 2;

/// A first time this near to 0 counts as 0.
constexpr Float kNearZero = 0.0001;

/// Keys in the order in which they are written, which is not that of their times. The components of the values go to the tracks in
/// order.
struct KeyList
{
  BaseArray<Vector> values;
  BaseArray<Float> times;  // in step with values; seconds
  // Slopes a second, as the file has them: of the first keys, which are those of a spline. Empty for others.
  BaseArray<Vector> inTangents;
  BaseArray<Vector> outTangents;

  Result<void> Append(const Vector& value, Float seconds) noexcept
  {
    RETURN_IF_ERROR(values.Append(value));
    return times.Append(seconds);
  }
  Bool HasTangents(Int i) const noexcept { return i < inTangents.GetCount(); }
};

}  // namespace

KeyBudget::KeyBudget(Int bufferByteCount) noexcept
    : _byteCount(bufferByteCount),
      _remainingKeys(kFreeKeys + kKeysPerByte * bufferByteCount),
      _remainingMoves(kMovedKeys + kMovesPerKey * _remainingKeys)
{}

Result<void> KeyBudget::TakeFrom(Int& remaining, Int count) noexcept
{
  _isOver = _isOver || count > remaining;
  if (_isOver)
    return MAKE_ERROR(ErrorClass::kOutOfMemory, "The animations of the file have too many keys."_s);
  remaining -= count;
  return {};
}

Result<void> KeyBudget::Take(Int keyCount, Int trackCount) noexcept
{
  // No product is needed that could wrap.
  return TakeFrom(_remainingKeys, keyCount > _remainingKeys ? keyCount : keyCount * trackCount);
}

Result<void> KeyBudget::TakeClaimed(Int keyCount, Int trackCount) noexcept
{
  return Take(std::min(keyCount, _byteCount), trackCount);
}

Result<void> KeyBudget::TakeMoves(Int keyCount) noexcept
{
  return TakeFrom(_remainingMoves, keyCount);
}

namespace
{

/// Keyframes as the file has them; tangents only for splines.
template <typename T>
struct FileKeys
{
  BaseArray<T> values;
  BaseArray<T> inTangents;
  BaseArray<T> outTangents;

  Result<void> Append(const KeyframeOf<T>& keyframe) noexcept
  {
    RETURN_IF_ERROR(values.Append(keyframe.value));
    if (!keyframe.hasTangents)
      return {};
    RETURN_IF_ERROR(inTangents.Append(keyframe.inTangent));
    return outTangents.Append(keyframe.outTangent);
  }
};

/// Room for the sampler's keys and the rest keys, when the bytes behind the keys are there.
template <typename T>
Result<void> ReserveKeys(const GltfAnimationSampler& sampler, Int keyCount, FileKeys<T>& fileKeys, KeyList& keys) noexcept
{
  GltfElements elements;
  if (!sampler._inputAccessor->GetElements(elements))
    return {};
  RETURN_IF_ERROR(fileKeys.values.Reserve(keyCount));
  return keys.times.Reserve(keyCount + kRestKeyCount);
}

/// There is room for rest keys behind them.
template <typename T>
Result<void> ConvertAll(const BaseArray<T>& values, const ValueConversion<T>& valueConversion,
                        BaseArray<Vector>& converted) noexcept
{
  RETURN_IF_ERROR(converted.Reserve(values.GetCount() + kRestKeyCount));
  RETURN_IF_ERROR(converted.ResizeForOverwrite(values.GetCount()));
  valueConversion.Convert(values.begin(), values.GetCount(), converted.begin());
  return {};
}

/// The sampler's own keys.
template <typename T>
Result<void> ReadDirectKeys(const SamplerTracks& request, const ValueConversion<T>& valueConversion, KeyList& keys) noexcept
{
  const GltfAnimationSampler& sampler = *request.sampler;
  const Int keyCount = GetKeyCount(sampler);
  if (keyCount == 0)
    return {};
  FileKeys<T> fileKeys;
  RETURN_IF_ERROR(ReserveKeys(sampler, keyCount, fileKeys, keys));
  const auto readAll = [&](auto readKeyframe, auto readTime) -> Result<void>
  {
    for (Int k = 0; k < keyCount; ++k)
    {
      KeyframeOf<T> keyframe;
      Float seconds = 0;
      RETURN_IF_ERROR(readKeyframe(k, keyframe));
      RETURN_IF_ERROR(readTime(k, seconds));
      RETURN_IF_ERROR(fileKeys.Append(keyframe));
      RETURN_IF_ERROR(keys.times.Append(seconds));
    }
    return {};
  };
  const auto withKeyframes = [&](auto readKeyframe)
  { return WithKeyTimes(*sampler._inputAccessor, [&](auto readTime) { return readAll(readKeyframe, readTime); }); };
  RETURN_IF_ERROR(WithKeyframes<T>(sampler, request.layout, withKeyframes));
  RETURN_IF_ERROR(ConvertAll(fileKeys.values, valueConversion, keys.values));
  if (fileKeys.inTangents.IsEmpty())
    return {};
  RETURN_IF_ERROR(ConvertAll(fileKeys.inTangents, valueConversion, keys.inTangents));
  return ConvertAll(fileKeys.outTangents, valueConversion, keys.outTangents);
}

Result<void> Resample(const SamplerTracks& request, const BaseArray<Float>& times, BaseArray<Vector>& values) noexcept
{
  return ResampleVector(*request.sampler, times, request.layout, values);
}

Result<void> Resample(const SamplerTracks& request, const BaseArray<Float>& times, BaseArray<Vector4>& values) noexcept
{
  return ResampleQuaternion(*request.sampler, times, request.layout, values);
}

Result<void> Resample(const SamplerTracks& request, const BaseArray<Float>& times, BaseArray<Float>& values) noexcept
{
  return ResampleScalar(*request.sampler, times, request.layout, values);
}

/// Keys without tangents at keys.times.
template <typename T>
Result<void> BakeKeys(const SamplerTracks& request, const ValueConversion<T>& valueConversion, KeyList& keys) noexcept
{
  BaseArray<T> values;
  RETURN_IF_ERROR(Resample(request, keys.times, values));
  return ConvertAll(values, valueConversion, keys.values);
}

/// Every frame of the document from the sampler's first time to its last.
Result<void> MakeFrameTimes(const GltfTimeRange& range, Int32 fps, KeyBudget& budget, Int trackCount,
                            BaseArray<Float>& times) noexcept
{
  const Int frame0 = FrameOfHostTime(HostTimeFromSeconds(range.minSeconds), fps);
  const Int frame1 = FrameOfHostTime(HostTimeFromSeconds(range.maxSeconds), fps);
  if (frame1 < frame0)
    return {};
  RETURN_IF_ERROR(budget.Take(frame1 - frame0 + 1, trackCount));
  RETURN_IF_ERROR(times.Reserve(frame1 - frame0 + 1 + kRestKeyCount));
  for (Int frame = frame0; frame <= frame1; ++frame)
    RETURN_IF_ERROR(times.Append(static_cast<Float>(frame) / fps));
  return {};
}

/// Each key's time, and before it the time one frame earlier unless that lies before lowerBound. No time comes twice.
Result<void> MakeStepTimes(const GltfAnimationSampler& sampler, Float frameTime, Float lowerBound,
                           BaseArray<Float>& times) noexcept
{
  const Int keyCount = GetKeyCount(sampler);
  if (keyCount == 0)
    return {};
  HashSet<UInt> seen;  // by their bits
  const auto append = [&](Float seconds) -> Result<void>
  {
    const UInt bits = std::bit_cast<UInt>(seconds);
    if (seen.Contains(bits))
      return {};
    RETURN_IF_ERROR(seen.Set(bits, NoValue()));
    return times.Append(seconds);
  };
  const auto readTimes = [&](auto readTime) -> Result<void>
  {
    for (Int k = 0; k < keyCount; ++k)
    {
      Float seconds = 0;
      RETURN_IF_ERROR(readTime(k, seconds));
      const Float frameBefore = seconds - frameTime;
      if (frameBefore >= lowerBound)
        RETURN_IF_ERROR(append(frameBefore));
      RETURN_IF_ERROR(append(seconds));
    }
    return {};
  };
  return WithKeyTimes(*sampler._inputAccessor, readTimes);
}

/// From time 0 on the earliest key's pose, if that comes later, and one frame before it the pose of the node.
Result<void> AddRestKeys(const Vector& restValue, Float frameTime, KeyList& keys) noexcept
{
  Int earliest = 0;
  Bool hasZero = false;
  for (Int i = 0; i < keys.times.GetCount(); ++i)
  {
    if (keys.times[i] < keys.times[earliest])
      earliest = i;
    hasZero = hasZero || std::fabs(keys.times[i]) <= kNearZero;
  }
  if (!hasZero)
    RETURN_IF_ERROR(keys.Append(Vector(keys.values[earliest]), 0.0));
  return keys.Append(restValue, -frameTime);
}

// Tracks.

Result<HostTrack*> AddTrack(HostNode* target, HostNode* holder, const HostDescId& id) noexcept
{
  HostTrack* const track = HostTrack::Alloc(target, id);
  if (!track)
    return Error::OutOfMemory();
  track->InsertInto(holder);
  return track;
}

Result<HostTrack*> GetTakeTrack(HostNode* target, const HostDescId& id, HostTake* take, HostTakeData* takeData) noexcept
{
  HostValue value;
  target->GetParameter(id, value);
  HostOverride* const over = take->FindOrAddOverride(takeData, target, id, value);
  CHECK_STATE(over);
  if (HostTrack* const found = HostTrack::Find(over, id))
    return found;
  ASSIGN_OR_RETURN(HostTrack* const track, AddTrack(target, over, id));
  over->Update(takeData, id);
  return track;
}

Result<HostTrack*> GetTrack(HostNode* target, const HostDescId& id, HostTake* take, HostTakeData* takeData) noexcept
{
  HostTrack* outTrack = nullptr;
  if (take)
  {
    ASSIGN_OR_RETURN(outTrack, GetTakeTrack(target, id, take, takeData));
  }
  else
  {
    outTrack = HostTrack::Find(target, id);
    if (!outTrack)
    {
      ASSIGN_OR_RETURN(outTrack, AddTrack(target, target, id));
    }
  }
  CHECK_STATE(outTrack);
  return outTrack;
}

Result<void> GetTracks(const SamplerTracks& request, HostTakeData* takeData, BaseArray<HostTrack*>& tracks) noexcept
{
  HostNode* const target = request.target ? request.target : request.object;
  RETURN_IF_ERROR(tracks.Reserve(request.didCount));
  for (Int i = 0; i < request.didCount; ++i)
  {
    ASSIGN_OR_RETURN(HostTrack* const track, GetTrack(target, request.dids[i], request.take, takeData));
    RETURN_IF_ERROR(tracks.Append(track));
  }
  return {};
}

// Keys.

/// Writes the keys of a list to the curve of one track.
class KeyWriter
{
public:
  /// @param hostTimes  those of the keys. @param component  of the values, for this track. Nothing is owned.
  KeyWriter(const KeyList& keys, const BaseArray<HostTime>& hostTimes, HostTrack* track, int component, InterpolationMode mode,
            KeyBudget& budget) noexcept
      : _keys(&keys),
        _hostTimes(&hostTimes),
        _curve(track->GetCurve(true)),
        _isRotation(track->GetDescId()[0].id == kRotationParameter),
        _component(component),
        _mode(mode),
        _budget(&budget),
        _keyCount(_curve ? _curve->GetKeyCount() : 0)
  {}

  /// Key i, unless it is written, and the keys behind it that the host takes in a run.
  Result<void> WriteFrom(Int i) noexcept;
  /// The first key that is still to be written.
  Int GetNext() const noexcept { return _next; }

private:
  Result<HostKey*> WriteKey(Int i) noexcept;
  Result<void> TakeMoves(Int32 index) noexcept;
  void WriteTangents(Int i, Int32 index) const noexcept;

  // What the host makes of this number and of the modes is its own.
  static constexpr HostDescId kKeyParameter = HostDescLevel{915, kIntegerDataType};

  const KeyList* _keys;
  const BaseArray<HostTime>* _hostTimes;
  HostValue _keySetting = Int32(1);
  HostCurve* _curve;  // null for a track without one, whose keys are left out
  Bool _isRotation;
  int _component;
  InterpolationMode _mode;
  KeyBudget* _budget;
  Int _next = 0;
  Int32 _lastIndex = -1;
  Int32 _keyCount;  // of the curve
};

Result<void> KeyWriter::WriteFrom(Int i) noexcept
{
  if (i < _next)
    return {};
  const Int count = _keys->values.GetCount();
  _next = _curve ? i + 1 : count;
  if (!_curve)
    return {};
  ASSIGN_OR_RETURN(const HostKey* const key, WriteKey(i));
  WriteTangents(i, _lastIndex);
  if (_next == count)
    return {};
  const HostKeyRun run{_hostTimes->begin() + _next, _keys->values.begin() + _next, _component, count - _next};
  const Int runEnd = _next + _curve->AddKeysBehind(key, run);
  for (Int k = _next; k < runEnd && _keys->HasTangents(k); ++k)
    WriteTangents(k, _lastIndex + static_cast<Int32>(k - i));
  const Int32 runCount = static_cast<Int32>(runEnd - _next);
  _next = runEnd;
  _lastIndex += runCount;
  _keyCount += runCount;
  return {};
}

Result<HostKey*> KeyWriter::WriteKey(Int i) noexcept
{
  Int32 index = -1;
  HostKey* const key = _curve->AddKey((*_hostTimes)[i], &index);
  if (!key)
    return Error::OutOfMemory();
  RETURN_IF_ERROR(TakeMoves(index));
  _lastIndex = index;
  if (!key->SetParameter(_curve, kKeyParameter, _keySetting, 128))
    return Error::OutOfMemory();
  HostKeySetAuxiliaryMode(key, _curve, 4);
  key->SetValue(_curve, _keys->values[i][_component]);
  key->SetInterpolation(_curve, _mode);
  if (_isRotation)
    HostKeySetRotationMode(key, _curve, _mode == InterpolationMode::Spline ? 3 : 2, true, true);
  return key;
}

/// Of a key that was added or found at a place of the curve.
Result<void> KeyWriter::TakeMoves(Int32 index) noexcept
{
  const Int32 keyCount = _curve->GetKeyCount();
  const Bool isNew = keyCount > _keyCount;
  _keyCount = keyCount;
  return isNew ? _budget->TakeMoves(keyCount - 1 - index) : Result<void>();
}

/// For the key i of the list, which is key `index` of the curve: a slope a second becomes a value at a third of the way between two
/// keys.
void KeyWriter::WriteTangents(Int i, Int32 index) const noexcept
{
  if (!_keys->HasTangents(i) || i == 0 || index <= 0)
    return;
  HostKey* const key = _curve->GetKey(index);
  HostKey* const prevKey = _curve->GetKey(index - 1);
  if (!key || !prevKey)
    return;
  const Float third = (_keys->times[i] - _keys->times[i - 1]) / 3.0;
  prevKey->SetRightTangent(_curve, HostTimeFromSeconds(third), third * _keys->outTangents[i - 1][_component]);
  key->SetLeftTangent(_curve, HostTimeFromSeconds(-third), third * -_keys->inTangents[i][_component]);
}

Result<void> WriteKeys(const BaseArray<HostTrack*>& tracks, const KeyList& keys, InterpolationMode mode,
                       KeyBudget& budget) noexcept
{
  CHECK_ARGUMENT(tracks.GetCount() == 1 || tracks.GetCount() == 3);
  if (keys.values.IsEmpty())
    return {};
  BaseArray<HostTime> hostTimes;
  RETURN_IF_ERROR(hostTimes.Reserve(keys.times.GetCount()));
  for (const Float seconds : keys.times)
    RETURN_IF_ERROR(hostTimes.Append(HostTimeFromSeconds(seconds)));
  BaseArray<KeyWriter> writers;
  for (Int d = 0; d < tracks.GetCount(); ++d)
  {
    HostTrack* const track = tracks[d];
    CHECK_STATE(track);
    RETURN_IF_ERROR(writers.Append(KeyWriter(keys, hostTimes, track, static_cast<int>(d), mode, budget)));
  }
  for (Int i = 0; i < keys.values.GetCount();)
  {
    Int next = keys.values.GetCount();
    for (KeyWriter& writer : writers)
    {
      RETURN_IF_ERROR(writer.WriteFrom(i));
      next = std::min(next, writer.GetNext());
    }
    i = next;
  }
  return {};
}

}  // namespace

/// Only rotations bake samplers that hold.
Result<void> AnimationImporter::MakeBakedTimes(const SamplerTracks& request, BaseArray<Float>& times) noexcept
{
  const Int32 fps = GetDocumentRate(*_doc);
  if (request.mode != InterpolationMode::Step)
  {
    ASSIGN_OR_RETURN(const GltfTimeRange range, GetSamplerTimeRange(*request.sampler));
    return MakeFrameTimes(range, fps, _keyBudget, request.didCount, times);
  }
  RETURN_IF_ERROR(_keyBudget.TakeClaimed(GetKeyCount(*request.sampler), request.didCount));
  HostValue start;
  _doc->GetParameter(kDocumentStartParameter, start);
  return MakeStepTimes(*request.sampler, 1.0 / fps, start.GetTime().GetSeconds(), times);
}

template <typename T>
Result<void> AnimationImporter::ImportSamplerTracks(const SamplerTracks& request,
                                                    const ValueConversion<T>& valueConversion) noexcept
{
  if (!request.object)
    return {};
  const GltfAnimationSampler* const sampler = request.sampler;
  const HostDescId* const dids = request.dids;
  const Int didCount = request.didCount;
  CHECK_STATE(_doc);
  CHECK_ARGUMENT(sampler);
  CHECK_ARGUMENT(dids);
  CHECK_ARGUMENT(_options);
  CHECK_STATE(didCount == 1 || didCount == 3);
  RETURN_IF_ERROR(_keyBudget.TakeClaimed(GetKeyCount(*sampler), didCount));
  if (_options->IsCleanTracks())
  {
    ASSIGN_OR_RETURN(const Bool isConstant, IsConstantSampler<T>(*sampler, request.layout));
    if (isConstant)
      return {};  // the node keeps its own value, even where the sampler has another
  }
  HostTakeData* const takeData = _doc->GetTakeData();
  CHECK_STATE(takeData);
  BaseArray<HostTrack*> tracks;
  RETURN_IF_ERROR(GetTracks(request, takeData, tracks));

  KeyList keys;
  if (request.bake)
  {
    RETURN_IF_ERROR(MakeBakedTimes(request, keys.times));
    RETURN_IF_ERROR(BakeKeys(request, valueConversion, keys));
  }
  else
  {
    RETURN_IF_ERROR(ReadDirectKeys(request, valueConversion, keys));
  }
  if (request.addRestKeys && keys.values.IsPopulated())
    RETURN_IF_ERROR(AddRestKeys(request.restValue, 1.0 / GetDocumentRate(*_doc), keys));
  return WriteKeys(tracks, keys, request.bake ? InterpolationMode::Linear : request.mode, _keyBudget);
}

template Result<void> AnimationImporter::ImportSamplerTracks(const SamplerTracks&, const ValueConversion<Vector>&) noexcept;
template Result<void> AnimationImporter::ImportSamplerTracks(const SamplerTracks&, const ValueConversion<Vector4>&) noexcept;
template Result<void> AnimationImporter::ImportSamplerTracks(const SamplerTracks&, const ValueConversion<Float>&) noexcept;

}  // namespace q7z
