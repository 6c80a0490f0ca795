#pragma once

// The curves behind one sampler: finding those that an object has, making the ones that it lacks, and giving all of them keys at the
// same times. The curves belong to their tracks; those made here live in the list's own tracks.

#include "plugin/animation/gltfkeyframes.h"
#include "plugin/document/gltfexportoptions.h"
#include "plugin/module/hostdocument.h"
#include "plugin/module/hosttrack.h"

namespace q7z
{

/// The components of a vector, as indices of curves.
struct Dim
{
  enum : Int
  {
    X,
    Y,
    Z,
    COUNT,
  };
};

/// The document's start and end.
struct TimeRange
{
  HostTime start;
  HostTime end;
};

/// The keys of a sampler that are written: from first to last.
struct KeyRange
{
  Int first;
  Int last;
  Int GetCount() const noexcept { return last - first + 1; }
  Bool IsWritten() const noexcept { return last > first; }
};

/// The keys of a curve in order, for less than a question to the host each. The curve outlives it and does not change meanwhile.
class CurveKeys
{
public:
  explicit CurveKeys(const HostCurve* curve) noexcept : _curve(curve) {}

  /// Null where there is none. Valid until the next call.
  const HostKeyCopy* GetKey(Int32 index) noexcept
  {
    if (index < _first || index >= _first + _count)
    {
      _first = index;
      _count = _curve->CopyKeys(index, kBlock, _copies);
    }
    return index < _first + _count ? &_copies[index - _first] : nullptr;
  }

private:
  static constexpr Int32 kBlock = 32;
  const HostCurve* _curve;
  Int32 _first = 0;
  Int32 _count = 0;
  HostKeyCopy _copies[kBlock];
};

using CurveList = BaseArray<HostCurve*>;
using TrackList = BaseArray<HostOwner<HostTrack>>;

/// The start and end time that the document's parameters hold.
TimeRange GetTimeRange(const HostDocument& doc) noexcept;

/// One entry for each component of a vector parameter of op, null where there is no track.
/// @return whether there is not a single key.
Result<Bool> FindCurves(HostObject* op, Int32 parameter, CurveList& curves) noexcept;

/// Whether no curve has a key that does not hold its value.
Bool AreAllStep(const CurveList& curves) noexcept;

/// A track for a curve that is missing, with value at both ends of the range, kept in tempTracks.
Result<HostCurve*> MakeFilledCurve(HostNode* node, const HostDescId& id, Float value, Bool allStep, const TimeRange& timeRange,
                                   TrackList& tempTracks) noexcept;

/// Gives every curve a key at each time at which any has one, and at both ends of the range.
Result<void> AlignCurves(const CurveList& curves, Bool allStep, const TimeRange& timeRange) noexcept;

/// AlignCurves where the options want it, and the check that each key has its like in all curves.
Result<void> FinishCurves(const CurveList& curves, Bool allStep, const TimeRange& timeRange,
                          const ExportOptions& options) noexcept;

/// The curves of a vector parameter as the user left them. @return false when there is nothing to write.
Result<Bool> CollectCurves(HostObject* op, Int32 parameter, Float restValue, const TimeRange& timeRange,
                           const ExportOptions& options, CurveList& curves, TrackList& tempTracks) noexcept;

/// The same of curves that have a key at every frame; those that stay near zero are nothing to write.
Result<Bool> CollectBakedCurves(HostDocument* _doc, HostObject* op, Int32 parameter, const TimeRange& timeRange,
                                const ExportOptions& options, CurveList& curves) noexcept;

/// The tangent values of all keys. @return whether any is not zero.
Result<Bool> ReadTangents(const CurveList& curves, TangentList& tangents) noexcept;

/// "LINEAR", "STEP" or "CUBICSPLINE".
String ChooseInterpolation(const CurveList& curves, Bool hasTangents, const ExportOptions& options) noexcept;

/// The keys within the range; both ends count.
KeyRange CutToRange(const Keyframes& keyframes, const TimeRange& timeRange) noexcept;

}  // namespace q7z
