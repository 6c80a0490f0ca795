#include "plugin/animation/gltfcurves.h"

#include <algorithm>
#include <cmath>

#include "framework/check.h"

namespace q7z
{

namespace
{

/// A channel whose components all stay within this of zero is static.
constexpr Float kStaticLimit = 0.0001;

HostTime GetTimeParameter(const HostDocument& doc, Int32 parameter) noexcept
{
  HostValue value;
  return doc.GetParameter(parameter, value) ? value.GetTime() : HostTime();
}

/// Keys that are put in hold their value where all others do.
constexpr InterpolationMode GetFillMode(Bool allStep) noexcept
{
  return allStep ? InterpolationMode::Step : InterpolationMode::Spline;
}

Result<void> AddFilledKey(HostCurve& curve, const HostTime& time, Float value, Bool allStep) noexcept
{
  HostKey* const key = curve.AddKey(time);
  if (!key)
    return Error::OutOfMemory();
  key->SetValue(&curve, value);
  key->SetInterpolation(&curve, GetFillMode(allStep));
  return {};
}

Bool IsBefore(const HostTime& a, const HostTime& b) noexcept
{
  return a.GetSeconds() < b.GetSeconds();
}

/// The times of all keys and both ends of the range, in ascending order; the same time may stand several times.
Result<void> GatherTimes(const CurveList& curves, const TimeRange& timeRange, BaseArray<HostTime>& times) noexcept
{
  Int count = 2;
  for (const HostCurve* const curve : curves)
    count += curve ? curve->GetKeyCount() : 0;
  RETURN_IF_ERROR(times.Reserve(count));
  RETURN_IF_ERROR(times.Append(timeRange.start));
  RETURN_IF_ERROR(times.Append(timeRange.end));
  for (HostCurve* const curve : curves)
  {
    const Int32 keyCount = curve ? curve->GetKeyCount() : 0;
    for (Int32 i = 0; i < keyCount; ++i)
      RETURN_IF_ERROR(times.Append(curve->GetKey(i)->GetTime()));
  }
  std::stable_sort(times.begin(), times.end(), IsBefore);
  return {};
}

Bool IsSameTime(const HostTime& a, const HostTime& b) noexcept
{
  return a.numerator == b.numerator && a.denominator == b.denominator;
}

/// Whether all curves have their keys at the very same times, among them both ends of the range: then none lacks a key, and nothing
/// needs sorting. That is how most files come.
Bool AreAligned(const CurveList& curves, const TimeRange& timeRange) noexcept
{
  for (const HostCurve* const curve : curves)
  {
    if (!curve || curve->GetKeyCount() != curves[0]->GetKeyCount())
      return false;
  }
  if (curves.IsEmpty())
    return false;
  const Int32 keyCount = curves[0]->GetKeyCount();
  CurveKeys keys(curves[0]);
  for (Int i = 1; i < curves.GetCount(); ++i)
  {
    CurveKeys otherKeys(curves[i]);
    for (Int32 k = 0; k < keyCount; ++k)
    {
      if (!IsSameTime(otherKeys.GetKey(k)->GetTime(), keys.GetKey(k)->GetTime()))
        return false;
    }
  }
  Bool hasStart = false;
  Bool hasEnd = false;
  for (Int32 k = 0; k < keyCount; ++k)
  {
    const HostTime& time = keys.GetKey(k)->GetTime();
    hasStart = hasStart || IsSameTime(time, timeRange.start);
    hasEnd = hasEnd || IsSameTime(time, timeRange.end);
  }
  return hasStart && hasEnd;
}

/// Puts keys at those of the ascending times at which the curve has none.
Result<void> AlignCurve(HostCurve& curve, Bool allStep, const BaseArray<HostTime>& times) noexcept
{
  Int32 next = 0;  // the first key that is not before the time at hand
  for (const HostTime& time : times)
  {
    while (next < curve.GetKeyCount() && IsBefore(curve.GetKey(next)->GetTime(), time) &&
           !(curve.GetKey(next)->GetTime() == time))
      ++next;
    if (next < curve.GetKeyCount() && curve.GetKey(next)->GetTime() == time)
      continue;
    if (next > 0 && curve.GetKey(next - 1)->GetTime() == time)
      continue;
    HostKey* const key = HostCurveAddKeyAdapted(&curve, time);
    if (!key)
      return Error::OutOfMemory();
    key->SetInterpolation(&curve, GetFillMode(allStep));
  }
  return {};
}

/// The frames of the range and the walk that asks whether a channel ever leaves zero.
struct BakedFrames
{
  Int32 rate;
  Int32 start;
  Int32 end;

  Int32 GetFrame(HostKey* key) const noexcept { return FrameOfHostTime(key->GetTime(), rate); }

  /// prev goes on from component to component.
  Bool Moves(HostCurve& curve, Int32 dim, Vector& prev) const noexcept
  {
    HostKey* const firstKey = curve.GetKey(0);
    HostKey* const lastKey = curve.GetKey(curve.GetKeyCount() - 1);
    if (!firstKey || !lastKey || firstKey == lastKey)
      return false;
    const Int32 last = GetFrame(lastKey);
    for (Int frame = GetFrame(firstKey); frame <= last; ++frame)
    {
      Vector cur;
      cur[dim] = curve.GetValue({static_cast<Float>(frame), static_cast<Float>(rate)});
      if (frame >= start && frame <= end && (cur - prev).GetLength() > kStaticLimit)
        return true;
      prev = cur;
    }
    return false;
  }
};

}  // namespace

TimeRange GetTimeRange(const HostDocument& doc) noexcept
{
  return {GetTimeParameter(doc, kDocumentStartParameter), GetTimeParameter(doc, kDocumentEndParameter)};
}

Result<Bool> FindCurves(HostObject* op, Int32 parameter, CurveList& curves) noexcept
{
  CHECK_ARGUMENT(!curves.IsPopulated());
  Bool areEmpty = true;
  for (const Int32 component : {kComponentX, kComponentY, kComponentZ})
  {
    HostTrack* const track = HostTrack::Find(op, MakeTransformTrackId(parameter, component));
    HostCurve* const curve = track ? track->GetCurve(true) : nullptr;
    RETURN_IF_ERROR(curves.Append(curve));
    areEmpty = areEmpty && (!curve || curve->GetKeyCount() == 0);
  }
  return areEmpty;
}

Bool AreAllStep(const CurveList& curves) noexcept
{
  for (HostCurve* const curve : curves)
  {
    const Int32 keyCount = curve ? curve->GetKeyCount() : 0;
    for (Int32 i = 0; i < keyCount; ++i)
    {
      if (curve->GetKey(i)->GetInterpolation() != InterpolationMode::Step)
        return false;
    }
  }
  return true;
}

Result<HostCurve*> MakeFilledCurve(HostNode* node, const HostDescId& id, Float value, Bool allStep, const TimeRange& timeRange,
                                   TrackList& tempTracks) noexcept
{
  HostOwner<HostTrack> track(HostTrack::Alloc(node, id));
  HostCurve* const curve = track ? track->GetCurve(true) : nullptr;
  if (!curve)
    return Error::OutOfMemory();
  RETURN_IF_ERROR(tempTracks.Append(std::move(track)));
  RETURN_IF_ERROR(AddFilledKey(*curve, timeRange.start, value, allStep));
  RETURN_IF_ERROR(AddFilledKey(*curve, timeRange.end, value, allStep));
  return curve;
}

Result<void> AlignCurves(const CurveList& curves, Bool allStep, const TimeRange& timeRange) noexcept
{
  if (AreAligned(curves, timeRange))
    return {};
  BaseArray<HostTime> times;
  RETURN_IF_ERROR(GatherTimes(curves, timeRange, times));
  for (HostCurve* const curve : curves)
  {
    if (curve)
      RETURN_IF_ERROR(AlignCurve(*curve, allStep, times));
  }
  return {};
}

Result<void> FinishCurves(const CurveList& curves, Bool allStep, const TimeRange& timeRange,
                          const ExportOptions& options) noexcept
{
  // Keys of a bake stand at the same frames already, and are still aligned while morphs are exported.
  if (!options.bakeAnimation || options.exportMorphs)
    RETURN_IF_ERROR(AlignCurves(curves, allStep, timeRange));
  for (Int i = 0; i < curves.GetCount(); ++i)
    CHECK_ARGUMENT(curves[i]);
  for (Int i = 0; i + 1 < curves.GetCount(); ++i)
    CHECK_STATE(curves[i]->GetKeyCount() == curves[i + 1]->GetKeyCount());
  return {};
}

Result<Bool> CollectCurves(HostObject* op, Int32 parameter, Float restValue, const TimeRange& timeRange,
                           const ExportOptions& options, CurveList& curves, TrackList& tempTracks) noexcept
{
  CHECK_ARGUMENT(!curves.IsPopulated());
  CHECK_ARGUMENT(!tempTracks.IsPopulated());
  ASSIGN_OR_RETURN(const Bool areEmpty, FindCurves(op, parameter, curves));
  if (areEmpty)
    return false;
  const Bool allStep = AreAllStep(curves);
  const Int32 components[Dim::COUNT] = {kComponentX, kComponentY, kComponentZ};
  for (Int dim = Dim::X; dim < Dim::COUNT; ++dim)
  {
    if (curves[dim])
      continue;
    const HostDescId id = MakeTransformTrackId(parameter, components[dim]);
    ASSIGN_OR_RETURN(curves[dim], MakeFilledCurve(op, id, restValue, allStep, timeRange, tempTracks));
  }
  RETURN_IF_ERROR(FinishCurves(curves, allStep, timeRange, options));
  return true;
}

Result<Bool> CollectBakedCurves(HostDocument* _doc, HostObject* op, Int32 parameter, const TimeRange& timeRange,
                                const ExportOptions& options, CurveList& curves) noexcept
{
  CHECK_ARGUMENT(!curves.IsPopulated());
  CHECK_STATE(_doc);
  HostValue value;
  const Int32 rate = _doc->GetParameter(kDocumentRateParameter, value) ? value.GetInt32() : 0;
  const BakedFrames frames{rate, FrameOfHostTime(timeRange.start, rate), FrameOfHostTime(timeRange.end, rate)};
  const Int bakedFrames = Int(frames.end) - frames.start + 1;
  ASSIGN_OR_RETURN(const Bool areEmpty, FindCurves(op, parameter, curves));
  if (areEmpty)
    return false;
  for (Int dim = Dim::X; dim < Dim::COUNT; ++dim)
    CHECK_STATE(curves[dim] && curves[dim]->GetKeyCount() == bakedFrames);
  Vector prev;
  Bool isStatic = true;
  for (Int32 dim = Dim::X; isStatic && dim < Dim::COUNT; ++dim)
    isStatic = !frames.Moves(*curves[dim], dim, prev);
  if (isStatic)
    return false;
  RETURN_IF_ERROR(FinishCurves(curves, false, timeRange, options));
  return true;
}

Result<Bool> ReadTangents(const CurveList& curves, TangentList& tangents) noexcept
{
  for (Int i = 0; i < curves.GetCount(); ++i)
    CHECK_ARGUMENT(curves[i]);
  for (Int i = 0; i + 1 < curves.GetCount(); ++i)
    CHECK_ARGUMENT(curves[i]->GetKeyCount() == curves[i + 1]->GetKeyCount());
  CHECK_ARGUMENT(!tangents.IsPopulated());
  const Int32 keyCount = curves.IsEmpty() ? 0 : curves[0]->GetKeyCount();
  RETURN_IF_ERROR(tangents.Resize(keyCount, curves.GetCount()));
  Bool hasTangents = false;
  for (Int dim = 0; dim < curves.GetCount(); ++dim)
  {
    CurveKeys keys(curves[dim]);
    for (Int32 i = 0; i < keyCount; ++i)
    {
      const HostKeyCopy* const key = keys.GetKey(i);
      CHECK_STATE(key);
      if (key->GetInterpolation() != InterpolationMode::Spline)
        continue;
      const HostTangents values = curves[dim]->GetTangents(i);
      tangents.Set(i, dim, values.leftValue, values.rightValue);
      hasTangents = hasTangents || values.leftValue != 0.0 || values.rightValue != 0.0;
    }
  }
  return hasTangents;
}

String ChooseInterpolation(const CurveList& curves, Bool hasTangents, const ExportOptions& options) noexcept
{
  if (options.bakeAnimation)
    return "LINEAR"_s;
  if (AreAllStep(curves))
    return "STEP"_s;
  return hasTangents ? "CUBICSPLINE"_s : "LINEAR"_s;
}

KeyRange CutToRange(const Keyframes& keyframes, const TimeRange& timeRange) noexcept
{
  const Int lastIndex = keyframes.GetCount() - 1;
  KeyRange range{0, lastIndex};
  while (range.first < lastIndex && keyframes.GetSeconds(range.first) < timeRange.start.GetSeconds())
    ++range.first;
  while (range.last >= 0 && keyframes.GetSeconds(range.last) > timeRange.end.GetSeconds())
    --range.last;
  return range;
}

}  // namespace q7z
