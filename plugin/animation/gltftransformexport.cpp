// The samplers of position, rotation and scale.

#include <algorithm>
#include <cmath>

#include "framework/check.h"
#include "framework/rotation.h"
#include "plugin/animation/gltfanimationexport.h"

namespace q7z
{

namespace
{

constexpr Float kPi = 3.141592653589793;

/// A step that turns by this or more in one angle gets a key in its middle.
constexpr Float kLargestTurn = 3.141492653589793;

/// What holds of the curves before any key is read.
Result<void> CheckCurves(const CurveList& curves, const Keyframes& keyframes) noexcept
{
  CHECK_ARGUMENT(curves.GetCount() == Dim::COUNT);
  for (Int dim = Dim::X; dim < Dim::COUNT; ++dim)
    CHECK_ARGUMENT(curves[dim]);
  CHECK_ARGUMENT(curves[Dim::X]->GetKeyCount() == curves[Dim::Y]->GetKeyCount() &&
                 curves[Dim::Y]->GetKeyCount() == curves[Dim::Z]->GetKeyCount());
  CHECK_ARGUMENT(!keyframes.IsPopulated());
  return {};
}

struct TimedVector
{
  Float seconds = 0;
  Vector value;
};

/// The keys of three curves, each of which stands at one time in all of them.
class VectorKeys
{
public:
  explicit VectorKeys(const CurveList& curves) noexcept
      : _keys{CurveKeys(curves[Dim::X]), CurveKeys(curves[Dim::Y]), CurveKeys(curves[Dim::Z])}
  {}

  Result<TimedVector> Read(Int32 index) noexcept
  {
    const HostKeyCopy* const key[Dim::COUNT] = {_keys[Dim::X].GetKey(index), _keys[Dim::Y].GetKey(index),
                                                _keys[Dim::Z].GetKey(index)};
    CHECK_STATE(key[Dim::X] && key[Dim::Y] && key[Dim::Z]);
    CHECK_STATE(key[Dim::X]->GetTime() == key[Dim::Y]->GetTime() && key[Dim::Y]->GetTime() == key[Dim::Z]->GetTime());
    return TimedVector{key[Dim::X]->GetTime().GetSeconds(),
                       {key[Dim::X]->GetValue(), key[Dim::Y]->GetValue(), key[Dim::Z]->GetValue()}};
  }

private:
  CurveKeys _keys[Dim::COUNT];
};

/// Appends keys between the two to entries, until none turns by half a turn. The angles stand next to each other but for one rounding,
/// so that few are made.
Result<void> SubdivideRotation(const Keyframe* i0, const Keyframe* i1, Keyframes& entries) noexcept
{
  CHECK_ARGUMENT(i0->second.GetCount() == Dim::COUNT);
  CHECK_ARGUMENT(i1->second.GetCount() == Dim::COUNT);
  Float angles[Dim::COUNT];
  Bool isLarge = false;
  for (Int dim = Dim::X; dim < Dim::COUNT; ++dim)
  {
    isLarge = isLarge || std::abs(i1->second[dim] - i0->second[dim]) >= kLargestTurn;
    angles[dim] = (i0->second[dim] + i1->second[dim]) / 2;
  }
  if (!isLarge)
    return {};
  const Keyframe middle{(i0->first + i1->first) / 2, {angles, i0->second.GetCount()}};
  RETURN_IF_ERROR(SubdivideRotation(i0, &middle, entries));
  RETURN_IF_ERROR(entries.Append(middle.first, angles, Dim::COUNT));
  return SubdivideRotation(&middle, i1, entries);
}

/// Turns an object's rotation keys into quaternions.
class RotationReader
{
public:
  RotationReader(const HostObject* op, Bool flipZ, Bool isBaked, Keyframes& keyframes) noexcept
      : _keyframes(keyframes),
        _baseMatrix(HostObjectGetBaseMatrix(op)),
        _order(op->GetRotationOrder()),
        _skipTurn(!IsCamera(op) || flipZ),
        _flipZ(flipZ),
        _isBaked(isBaked)
  {}

  static constexpr Int32 kMostKeys = 32;

  /// @param count  kMostKeys at most.
  Result<void> Take(const TimedVector* keys, Int32 count) noexcept
  {
    HostMatrix matrices[kMostKeys];
    Vector angles[kMostKeys];
    for (Int32 i = 0; i < count; ++i)
      matrices[i] = _baseMatrix * AnglesToMatrix(keys[i].value, _order);
    MatricesToAngles(matrices, count, angles);
    for (Int32 i = 0; i < count; ++i)
      RETURN_IF_ERROR(TakeAngles(keys[i].seconds, angles[i]));
    return {};
  }

private:
  Result<void> TakeAngles(Float seconds, Vector angles) noexcept
  {
    if (!_isBaked)
    {
      angles = OptimalAngles(_previous, angles, kDefaultRotationOrder);
      _previous = angles;
    }
    const Float values[] = {angles.x, angles.y, angles.z};
    RETURN_IF_ERROR(_steps.Append(seconds, values, Dim::COUNT));
    if (_steps.GetCount() > 1 && !_isBaked)
      RETURN_IF_ERROR(FillStep());
    RETURN_IF_ERROR(AppendQuaternion(_steps[_steps.GetCount() - 1]));
    return KeepLast();
  }

  static Bool IsCamera(const HostObject* op) noexcept
  {
    return op->GetType() == kCameraObjectType || op->GetType() == kRenderCameraObjectType;
  }

  /// The keys that the step from the last key needs.
  Result<void> FillStep() noexcept
  {
    Keyframes between;
    const Keyframe i0 = _steps[0];
    const Keyframe i1 = _steps[1];
    RETURN_IF_ERROR(SubdivideRotation(&i0, &i1, between));
    for (Int i = 0; i < between.GetCount(); ++i)
      RETURN_IF_ERROR(AppendQuaternion(between[i]));
    return {};
  }

  Result<void> KeepLast() noexcept
  {
    const Keyframe last = _steps[_steps.GetCount() - 1];
    const Float values[] = {last.second[Dim::X], last.second[Dim::Y], last.second[Dim::Z]};
    _steps.Clear();
    return _steps.Append(last.first, values, Dim::COUNT);
  }

  Result<void> AppendQuaternion(const Keyframe& key) noexcept
  {
    Vector angles{key.second[Dim::X], key.second[Dim::Y], key.second[Dim::Z]};
    if (!_skipTurn)
    {
      const HostMatrix turned =
        AnglesToMatrix(angles, kDefaultRotationOrder) * AnglesToMatrix({kPi, 0, 0}, kDefaultRotationOrder);
      angles = MatrixToAngles(turned, kDefaultRotationOrder, false);
    }
    const Vector4 q = AnglesToQuaternion(angles, _flipZ);
    const Float values[] = {q.x, q.y, q.z, q.w};
    return _keyframes.Append(key.first, values, 4);
  }

  Keyframes& _keyframes;
  HostMatrix _baseMatrix;
  RotationOrder _order;
  Bool _skipTurn;
  Bool _flipZ;
  Bool _isBaked;
  Vector _previous;
  Keyframes _steps;  // the last key and the one at hand, as angles
};

void PutVector(const KeyNumbers& numbers, Float factor, BaseArray<Float32>& values, Int& count) noexcept
{
  for (Int dim = Dim::X; dim < Dim::COUNT; ++dim)
    values[count++] = static_cast<Float32>(numbers[dim] * factor);
}

}  // namespace

Result<void> TransformSamplerWriter::WriteTrack(GltfBuffer& buffer, HostObject* op, Bool flipZ, const ExportOptions& options,
                                                const TimeRange& timeRange) noexcept
{
  CHECK_ARGUMENT(op);
  CurveList curves;
  TrackList tempTracks;
  ASSIGN_OR_RETURN(const Bool hasCurves, options.bakeAnimation
                                           ? CollectBakedCurves(_doc, op, _parameter, timeRange, options, curves)
                                           : CollectCurves(op, _parameter, _restValue, timeRange, options, curves, tempTracks));
  if (!hasCurves)
    return {};
  Keyframes keyframes;
  TangentList tangents;
  ASSIGN_OR_RETURN(const Bool hasTangents, ReadKeys(curves, op, flipZ, options, keyframes, tangents));
  _interpolation = ChooseInterpolation(curves, hasTangents, options);
  const KeyRange range = CutToRange(keyframes, timeRange);
  if (!range.IsWritten())
    return {};
  BeginData(buffer);
  RETURN_IF_ERROR(WriteTimes(buffer, keyframes, range));
  return WriteKeys(buffer, options, keyframes, tangents, range);
}

Result<Bool> VectorSamplerWriter::ReadKeys(const CurveList& curves, HostObject* op, Bool flipZ, const ExportOptions&,
                                           Keyframes& keyframes, TangentList& tangents) noexcept
{
  RETURN_IF_ERROR(CheckCurves(curves, keyframes));
  const FixedTransform base{HostObjectGetBaseMatrix(op), HostObjectGetBaseScale(op)};
  ASSIGN_OR_RETURN(const Bool hasTangents, ReadTangents(curves, tangents));
  const Int32 keyCount = curves[Dim::X]->GetKeyCount();
  RETURN_IF_ERROR(keyframes.Reserve(keyCount, Dim::COUNT));
  VectorKeys keys(curves);
  for (Int32 i = 0; i < keyCount; ++i)
  {
    ASSIGN_OR_RETURN(const TimedVector key, keys.Read(i));
    const Vector converted = Convert(base, flipZ, key.value);
    const Float values[] = {converted.x, converted.y, converted.z};
    RETURN_IF_ERROR(keyframes.Append(key.seconds, values, Dim::COUNT));
  }
  return hasTangents;
}

// Tangents leave as the host has them: not divided by a time, not turned, not mirrored.
Result<void> VectorSamplerWriter::WriteKeys(GltfBuffer& buffer, const ExportOptions& options, const Keyframes& keyframes,
                                            const TangentList& tangents, const KeyRange& range) noexcept
{
  const Float factor = GetFactor(options);
  const Bool isSpline = _interpolation == "CUBICSPLINE"_s;
  const Int elementCount = range.GetCount() * (isSpline ? 3 : 1);
  BaseArray<Float32> values;
  RETURN_IF_ERROR(values.ResizeForOverwrite(elementCount * Dim::COUNT));
  Int count = 0;
  for (Int i = range.first; i <= range.last; ++i)
  {
    CHECK_STATE(keyframes[i].second.GetCount() == Dim::COUNT);
    if (isSpline)
    {
      CHECK_STATE(tangents[i].first.GetCount() == Dim::COUNT);
      CHECK_STATE(tangents[i].second.GetCount() == Dim::COUNT);
      PutVector(tangents[i].first, factor, values, count);
    }
    PutVector(keyframes[i].second, factor, values, count);
    if (isSpline)
      PutVector(tangents[i].second, factor, values, count);
  }
  return WriteValues(buffer, values, elementCount);
}

Vector TranslationSamplerWriter::Convert(const FixedTransform& base, Bool flipZ, const Vector& value) const noexcept
{
  const Vector p = base.matrix * value;
  return {p.x, p.y, flipZ ? -p.z : p.z};
}

Vector ScaleSamplerWriter::Convert(const FixedTransform& base, Bool, const Vector& value) const noexcept
{
  return {value.x * base.scale.x, value.y * base.scale.y, value.z * base.scale.z};
}

Result<Bool> RotationSamplerWriter::ReadKeys(const CurveList& curves, HostObject* op, Bool flipZ, const ExportOptions& options,
                                             Keyframes& keyframes, TangentList&) noexcept
{
  RETURN_IF_ERROR(CheckCurves(curves, keyframes));
  const Int32 keyCount = curves[Dim::X]->GetKeyCount();
  RETURN_IF_ERROR(keyframes.Reserve(keyCount, 4));
  RotationReader reader(op, flipZ, options.bakeAnimation, keyframes);
  VectorKeys keys(curves);
  for (Int32 first = 0; first < keyCount; first += RotationReader::kMostKeys)
  {
    TimedVector block[RotationReader::kMostKeys];
    const Int32 count = std::min(keyCount - first, RotationReader::kMostKeys);
    for (Int32 i = 0; i < count; ++i)
    {
      ASSIGN_OR_RETURN(block[i], keys.Read(first + i));
    }
    RETURN_IF_ERROR(reader.Take(block, count));
  }
  return false;
}

Result<void> RotationSamplerWriter::WriteKeys(GltfBuffer& buffer, const ExportOptions&, const Keyframes& keyframes,
                                              const TangentList&, const KeyRange& range) noexcept
{
  BaseArray<Float32> values;
  RETURN_IF_ERROR(values.ResizeForOverwrite(range.GetCount() * 4));
  Int count = 0;
  for (Int i = range.first; i <= range.last; ++i)
  {
    CHECK_STATE(keyframes[i].second.GetCount() == 4);
    for (Int component = 0; component < 4; ++component)
      values[count++] = static_cast<Float32>(keyframes[i].second[component]);
  }
  return WriteValues(buffer, values, range.GetCount());
}

}  // namespace q7z
