// The sampler of morph strengths: either the animated strengths of an object's morphs, or a track whose every key is a shape of its
// own, so that the weights switch from one to the next.

#include "framework/check.h"
#include "plugin/animation/gltfanimationexport.h"

#include "plugin/export/objectmarkers.h"
#include "plugin/module/hostpolygon.h"

namespace q7z
{

namespace
{

/// The tag's own strength, by which every morph's is multiplied.
constexpr Int32 kOverallStrengthParameter = 1031;
constexpr HostDescId kOverallStrengthId{HostDescLevel{kOverallStrengthParameter, kRealDataType}};

HostPoseMorphTag* GetMorphTag(HostObject* op) noexcept
{
  return static_cast<HostPoseMorphTag*>(op->GetTag(kPoseMorphTagType));
}

HostDescId GetStrengthId(const HostPoseMorphTag* pTag, Int32 index) noexcept
{
  return index == 0 ? kOverallStrengthId : HostPoseMorphTagGetStrengthId(pTag, index);
}

Float GetOverallStrength(const HostPoseMorphTag* pTag) noexcept
{
  HostValue value;
  return pTag->GetParameter(kOverallStrengthId, value) ? value.GetFloat(1.0) : 1.0;
}

/// One curve for each morph that has one; the overall strength stands in the place of the base pose.
/// @return whether there is not a single key.
Result<Bool> FindMorphCurves(HostPoseMorphTag* pTag, CurveList& curves) noexcept
{
  Bool areEmpty = true;
  for (Int32 i = 0; i < pTag->GetMorphCount(); ++i)
  {
    HostTrack* const track = HostTrack::Find(pTag, GetStrengthId(pTag, i));
    HostCurve* const curve = track ? track->GetCurve(true) : nullptr;
    RETURN_IF_ERROR(curves.Append(curve));
    areEmpty = areEmpty && (!curve || curve->GetKeyCount() == 0);
  }
  return areEmpty;
}

Result<void> FillMorphGaps(HostPoseMorphTag* pTag, const TimeRange& timeRange, CurveList& curves, TrackList& tempTracks) noexcept
{
  CHECK_ARGUMENT(!tempTracks.IsPopulated());
  CHECK_STATE(pTag);
  const Bool allStep = AreAllStep(curves);
  for (Int32 i = 0; i < static_cast<Int32>(curves.GetCount()); ++i)
  {
    if (curves[i])
      continue;
    Float value = GetOverallStrength(pTag);
    if (i > 0)
    {
      CHECK_STATE(pTag->GetMorph(i));
      value = pTag->GetMorph(i)->GetStrength();
    }
    ASSIGN_OR_RETURN(curves[i], MakeFilledCurve(pTag, GetStrengthId(pTag, i), value, allStep, timeRange, tempTracks));
  }
  return {};
}

/// @return false when there is nothing to write.
Result<Bool> CollectMorphCurves(HostObject* op, const TimeRange& timeRange, const ExportOptions& options, CurveList& curves,
                                TrackList& tempTracks) noexcept
{
  CHECK_ARGUMENT(op);
  CHECK_ARGUMENT(!curves.IsPopulated());
  CHECK_ARGUMENT(!tempTracks.IsPopulated());
  HostPoseMorphTag* const pTag = GetMorphTag(op);
  CHECK_STATE(pTag);
  ASSIGN_OR_RETURN(const Bool areEmpty, FindMorphCurves(pTag, curves));
  if (areEmpty)
    return false;
  const Bool allStep = AreAllStep(curves);
  RETURN_IF_ERROR(FillMorphGaps(pTag, timeRange, curves, tempTracks));
  RETURN_IF_ERROR(FinishCurves(curves, allStep, timeRange, options));
  return true;
}

/// The value of every curve at each key. @return whether some tangent is not zero.
Result<Bool> ReadMorphKeys(const CurveList& curves, Keyframes& keyframes, TangentList& tangents) noexcept
{
  CHECK_ARGUMENT(!keyframes.IsPopulated());
  ASSIGN_OR_RETURN(const Bool hasTangents, ReadTangents(curves, tangents));
  const Int32 keyCount = curves.IsEmpty() ? 0 : curves[0]->GetKeyCount();
  const Int count = curves.GetCount();
  RETURN_IF_ERROR(keyframes.Reserve(keyCount, count));
  BaseArray<HostKey*> keys;
  BaseArray<Float> values;
  RETURN_IF_ERROR(keys.Resize(count));
  RETURN_IF_ERROR(values.Resize(count));
  for (Int32 index = 0; index < keyCount; ++index)
  {
    for (Int i = 0; i < count; ++i)
    {
      keys[i] = curves[i]->GetKey(index);
      CHECK_ARGUMENT(keys[i]);
      if (i > 0)
        CHECK_ARGUMENT(keys[i]->GetTime() == keys[i - 1]->GetTime());
      values[i] = keys[i]->GetValue();
    }
    RETURN_IF_ERROR(keyframes.Append(keys[0]->GetTime().GetSeconds(), values.GetFirst(), count));
  }
  return hasTangents;
}

/// What stands behind the first number of each key, for every target in turn.
void PutNumbers(const KeyNumbers& numbers, Float factor, BaseArray<Float32>& values, Int& count) noexcept
{
  for (Int j = 1; j < numbers.GetCount(); ++j)
    values[count++] = static_cast<Float32>(factor * numbers[j]);
}

/// Tangents are not multiplied by the overall strength; the values are.
Result<void> ListWeights(const Keyframes& keyframes, const TangentList& tangents, const KeyRange& range, Bool isSpline,
                         BaseArray<Float32>& values) noexcept
{
  const Int targetCount = keyframes[range.first].second.GetCount() - 1;
  RETURN_IF_ERROR(values.ResizeForOverwrite(range.GetCount() * targetCount * (isSpline ? 3 : 1)));
  Int count = 0;
  for (Int i = range.first; i <= range.last; ++i)
  {
    if (isSpline)
      PutNumbers(tangents[i].first, 1.0, values, count);
    PutNumbers(keyframes[i].second, keyframes[i].second[0], values, count);
    if (isSpline)
      PutNumbers(tangents[i].second, 1.0, values, count);
  }
  return {};
}

Bool HasPoses(HostObject* op) noexcept
{
  const HostPoseMorphTag* const pTag = GetMorphTag(op);
  return pTag && pTag->GetMorph(1);
}

/// Whether the strengths of morphs are what the sampler is made of.
Bool HasExportedMorphs(HostObject* op) noexcept
{
  return HasPoses(op) && !GetBoolMarker(op, kMorphExportFailed);
}

HostCurve* FindPointCurve(HostObject* op) noexcept
{
  HostTrack* const track = HostTrack::Find(op, HostDescId(kPointTrackParameter));
  return track ? track->GetCurve(true) : nullptr;
}

}  // namespace

Result<void> WeightsSamplerWriter::WriteTrack(GltfBuffer& buffer, HostObject* op, Bool, const ExportOptions& options,
                                              const TimeRange& timeRange) noexcept
{
  CHECK_ARGUMENT(op);
  if (!options.exportMorphs)
    return {};
  return HasExportedMorphs(op) ? WriteMorphs(buffer, op, options, timeRange) : WriteKeyTargets(buffer, op);
}

Result<void> WeightsSamplerWriter::WriteMorphs(GltfBuffer& buffer, HostObject* op, const ExportOptions& options,
                                               const TimeRange& timeRange) noexcept
{
  CurveList curves;
  TrackList tempTracks;
  ASSIGN_OR_RETURN(const Bool hasCurves, CollectMorphCurves(op, timeRange, options, curves, tempTracks));
  if (!hasCurves)
    return {};
  const HostPoseMorphTag* const pTag = GetMorphTag(op);
  if (pTag)
    CHECK_STATE(curves.GetCount() == pTag->GetMorphCount());
  Keyframes keyframes;
  TangentList tangents;
  ASSIGN_OR_RETURN(const Bool hasTangents, ReadMorphKeys(curves, keyframes, tangents));
  _interpolation = ChooseInterpolation(curves, hasTangents, options);
  const KeyRange range = CutToRange(keyframes, timeRange);
  if (!range.IsWritten())
    return {};
  BaseArray<Float32> values;
  RETURN_IF_ERROR(ListWeights(keyframes, tangents, range, _interpolation == "CUBICSPLINE"_s, values));
  BeginData(buffer);
  RETURN_IF_ERROR(WriteTimes(buffer, keyframes, range));
  return WriteValues(buffer, values, values.GetCount());
}

/// Each key of a point track is a target: at key a, target a is fully on. The times are the track's own.
Result<void> WeightsSamplerWriter::WriteKeyTargets(GltfBuffer& buffer, HostObject* op) noexcept
{
  HostCurve* const curve = FindPointCurve(op);
  if (!curve)
    return {};
  // Without poses it was the targets of these keys that failed.
  if (!HasPoses(op) && GetBoolMarker(op, kMorphExportFailed))
    return {};
  BeginData(buffer);
  const Int32 keyCount = curve->GetKeyCount();
  BaseArray<Float32> row;
  for (Int32 i = 0; i < keyCount; ++i)
  {
    if (HostKey* const key = curve->GetKey(i))
      RETURN_IF_ERROR(row.Append(static_cast<Float32>(key->GetTime().GetSeconds())));
  }
  RETURN_IF_ERROR(_input.AppendElements(buffer, _view, row.GetFirst(), row.GetCount()));
  _output.SetByteOffset(_output.GetByteOffset() + row.GetCount() * static_cast<Int>(sizeof(Float32)));
  RETURN_IF_ERROR(row.Resize(keyCount));
  for (Float32& weight : row)
    weight = 0;
  for (Int32 a = 0; a < keyCount; ++a)
  {
    row[a] = 1;
    RETURN_IF_ERROR(WriteValues(buffer, row, keyCount));
    row[a] = 0;
  }
  return {};
}

}  // namespace q7z
