#include "plugin/animation/gltfsampler.h"

#include <algorithm>
#include <cmath>

#include "framework/check.h"
#include "framework/trigonometry.h"
#include "plugin/document/gltfdata.h"
#include "plugin/module/diagnostics.h"
#include "plugin/module/hostdocument.h"

namespace q7z
{

namespace
{

constexpr Int32 kUsualRate = 30;

void Widen(GltfTimeRange& range, const GltfTimeRange& other) noexcept
{
  range.minSeconds = std::min(range.minSeconds, other.minSeconds);
  range.maxSeconds = std::max(range.maxSeconds, other.maxSeconds);
}

Result<GltfTimeRange> GetAnimationTimeRange(const GltfAnimation& animation) noexcept
{
  GltfTimeRange range;
  for (const GltfChannel& channel : animation.channels)
  {
    if (!channel.sampler)
      continue;
    ASSIGN_OR_RETURN(const GltfTimeRange samplerRange, GetSamplerTimeRange(*channel.sampler));
    Widen(range, samplerRange);
  }
  return range;
}

Result<void> CheckSampler(const GltfAnimationSampler* sampler) noexcept
{
  CHECK_STATE(sampler);
  return {};
}

Result<void> SetParameter(HostDocument& doc, Int32 parameter, const HostValue& value) noexcept
{
  return doc.SetParameter(parameter, value) ? Result<void>() : Error::OutOfMemory();
}

Result<void> CopyParameter(HostDocument& doc, Int32 from, Int32 to) noexcept
{
  HostValue value;
  doc.GetParameter(from, value);
  return SetParameter(doc, to, value);
}

}  // namespace

Result<GltfTimeRange> GetSamplerTimeRange(const GltfAnimationSampler& sampler) noexcept
{
  const GltfAccessor* const _inputAccessor = sampler._inputAccessor;
  CHECK_STATE(_inputAccessor);
  CHECK_STATE(_inputAccessor->GetComponentType() == 5126);
  const BaseArray<Data>& minArray = _inputAccessor->GetMin();
  const BaseArray<Data>& maxArray = _inputAccessor->GetMax();
  CHECK_STATE(minArray.GetCount() == 1);
  CHECK_STATE(maxArray.GetCount() == 1);
  GltfTimeRange range;
  ASSIGN_OR_RETURN(range.minSeconds, minArray[0].GetFloat());
  ASSIGN_OR_RETURN(range.maxSeconds, maxArray[0].GetFloat());
  return range;
}

Result<GltfTimeRange> GetDocumentTimeRange(const GltfData& gltfData) noexcept
{
  GltfTimeRange range;
  for (const auto& entry : gltfData.animations)
  {
    ASSIGN_OR_RETURN(const GltfTimeRange animationRange, GetAnimationTimeRange(entry.GetValue()));
    Widen(range, animationRange);
  }
  return range;
}

Int32 GetDocumentRate(const HostDocument& doc) noexcept
{
  HostValue rate;
  doc.GetParameter(kDocumentRateParameter, rate);
  const Int32 framesPerSecond = rate.GetInt32(0);
  return framesPerSecond > 0 ? framesPerSecond : kUsualRate;
}

Result<void> SetDocumentTimeRange(HostDocument& doc, const GltfData& gltfData) noexcept
{
  ASSIGN_OR_RETURN(const GltfTimeRange range, GetDocumentTimeRange(gltfData));
  const Float frameTime = 1.0 / GetDocumentRate(doc);
  RETURN_IF_ERROR(SetParameter(doc, kDocumentStartParameter, HostTimeFromSeconds(0.0)));
  RETURN_IF_ERROR(SetParameter(doc, kDocumentEndParameter, HostTimeFromSeconds(std::max(frameTime, range.maxSeconds))));
  RETURN_IF_ERROR(CopyParameter(doc, kDocumentEndParameter, kDocumentSecondEndParameter));
  return CopyParameter(doc, kDocumentStartParameter, kDocumentSecondStartParameter);
}

InterpolationMode GetSamplerInterpolationMode(const GltfAnimationSampler* sampler) noexcept
{
  const Result<void> checked = CheckSampler(sampler);
  if (checked.HasError())
  {
    PrintError("A channel of an animation has no sampler"_s, checked.GetError());
    return InterpolationMode::Linear;
  }
  if (sampler->interpolation == kSplineInterpolation)
    return InterpolationMode::Spline;
  return sampler->interpolation == kStepInterpolation ? InterpolationMode::Step : InterpolationMode::Linear;
}

Int GetKeyCount(const GltfAnimationSampler& sampler) noexcept
{
  return sampler._inputAccessor ? std::max(sampler._inputAccessor->GetCount(), Int(0)) : 0;
}

namespace
{

struct TimedKey
{
  Float seconds;
  Int keyIndex;
};

/// By time, then by index; times that are no numbers come last.
Bool ComesBefore(const TimedKey& a, const TimedKey& b) noexcept
{
  const Bool isNumber = !std::isnan(a.seconds);
  if (isNumber != !std::isnan(b.seconds))
    return isNumber;
  return isNumber && a.seconds != b.seconds ? a.seconds < b.seconds : a.keyIndex < b.keyIndex;
}

/// The keys on both sides of a time, by their indices in the file; -1 for none.
struct KeyBracket
{
  Int previous = -1;
  Int next = -1;
  Bool isOnPrevious = false;  ///< exactly at the previous key's time
};

/// The keys of a sampler in the order of their times, and a place among them that moves on with the times that are looked up.
class KeyTimeline
{
public:
  Result<void> Init(const GltfAnimationSampler& sampler) noexcept;

  Bool IsEmpty() const noexcept { return _keys.IsEmpty(); }
  KeyBracket FindBracket(Float seconds) noexcept;
  /// The time at a place of the order. Brackets hold indices in the file and are looked up with them here, on purpose: the two are
  /// the same wherever times ascend.
  Float GetSeconds(Int place) const noexcept { return _keys[place].seconds; }

private:
  Int FindFirstLater(Float seconds) noexcept;

  BaseArray<TimedKey> _keys;
  Int _numberCount = 0;  // of keys whose time is a number
  Int _place = 0;        // what the last lookup found
};

Result<void> KeyTimeline::Init(const GltfAnimationSampler& sampler) noexcept
{
  const Int keyCount = GetKeyCount(sampler);
  if (keyCount == 0)
    return {};
  const auto readTimes = [&](auto readTime) -> Result<void>
  {
    for (Int i = 0; i < keyCount; ++i)
    {
      TimedKey key = {0, i};
      RETURN_IF_ERROR(readTime(i, key.seconds));
      RETURN_IF_ERROR(_keys.Append(key));
    }
    return {};
  };
  RETURN_IF_ERROR(WithKeyTimes(*sampler._inputAccessor, readTimes));
  if (!std::is_sorted(_keys.begin(), _keys.end(), ComesBefore))
    std::sort(_keys.begin(), _keys.end(), ComesBefore);
  const auto isNumber = [](const TimedKey& key) { return !std::isnan(key.seconds); };
  _numberCount = std::partition_point(_keys.begin(), _keys.end(), isNumber) - _keys.begin();
  return {};
}

/// The first place with a later time, or _numberCount. Times mostly ascend, so it is mostly near where the last one was.
Int KeyTimeline::FindFirstLater(Float seconds) noexcept
{
  constexpr Int kLargestStep = 8;
  const auto isNotLater = [seconds](const TimedKey& key) { return !(key.seconds > seconds); };
  const Bool isBehind = _place == 0 || isNotLater(_keys[_place - 1]);
  const Int searched = isBehind ? _place : 0;
  const Int end = std::min(searched + kLargestStep, _numberCount);
  for (_place = searched; _place < end; ++_place)
  {
    if (!isNotLater(_keys[_place]))
      return _place;
  }
  const TimedKey* const first = _keys.begin();
  _place = std::partition_point(first + _place, first + _numberCount, isNotLater) - first;
  return _place;
}

KeyBracket KeyTimeline::FindBracket(Float seconds) noexcept
{
  const Int place = FindFirstLater(seconds);
  if (place == 0 && _numberCount > 0)
    return {.next = _keys[0].keyIndex};
  const Bool isLast = place == _numberCount;
  const TimedKey& previous = _keys[isLast ? _keys.GetCount() - 1 : place - 1];
  return {.previous = previous.keyIndex,
          .next = isLast ? -1 : _keys[place].keyIndex,
          .isOnPrevious = seconds == previous.seconds};
}

/// The value between two keys at the part s of their distance dt in seconds. A name that is none of the format's gives 0.
template <typename T>
T Interpolate(const String& interpolation, const KeyframeOf<T>& a, const KeyframeOf<T>& b, Float s, Float dt) noexcept
{
  if (interpolation == kLinearInterpolation)
    return a.value * (1 - s) + b.value * s;
  if (interpolation != kSplineInterpolation)
    return T{};
  const Float s2 = s * s;
  const Float s3 = Cube(s);
  return a.value * (1 + (2 * s3 - 3 * s2)) + a.outTangent * (dt * (s + (s3 - 2 * s2))) + b.value * (3 * s2 - 2 * s3) +
         b.inTangent * (dt * (s3 - s2));
}

/// The value of a sampler at a time; read gives its keyframes.
template <typename T, typename Read>
Result<void> Evaluate(const GltfAnimationSampler& sampler, KeyTimeline& timeline, Float seconds, Read&& read, T& value) noexcept
{
  const KeyBracket bracket = timeline.FindBracket(seconds);
  const Bool hasPrevious = bracket.previous >= 0;
  KeyframeOf<T> a;
  if (hasPrevious)
    RETURN_IF_ERROR(read(bracket.previous, a));
  value = a.value;
  if (bracket.isOnPrevious || sampler.interpolation == kStepInterpolation || bracket.next < 0)
    return {};
  KeyframeOf<T> b;
  RETURN_IF_ERROR(read(bracket.next, b));
  if (!hasPrevious)
  {
    value = b.value;
    return {};
  }
  const Float start = timeline.GetSeconds(bracket.previous);
  const Float dt = timeline.GetSeconds(bracket.next) - start;
  value = Interpolate(sampler.interpolation, a, b, (seconds - start) / dt, dt);
  return {};
}

template <typename T>
Result<void> Resample(const GltfAnimationSampler& sampler, const BaseArray<Float>& times, const SamplerLayout& layout,
                      BaseArray<T>& values) noexcept
{
  values.Truncate(0);
  RETURN_IF_ERROR(values.Resize(times.GetCount()));
  if (times.IsEmpty())
    return {};
  KeyTimeline timeline;
  RETURN_IF_ERROR(timeline.Init(sampler));
  if (timeline.IsEmpty())
    return {};
  const auto evaluateAll = [&](auto read) -> Result<void>
  {
    for (Int i = 0; i < times.GetCount(); ++i)
      RETURN_IF_ERROR(Evaluate(sampler, timeline, times[i], read, values[i]));
    return {};
  };
  return WithKeyframes<T>(sampler, layout, evaluateAll);
}

}  // namespace

Result<void> ResampleVector(const GltfAnimationSampler& sampler, const BaseArray<Float>& times, const SamplerLayout& layout,
                            BaseArray<Vector>& values) noexcept
{
  return Resample(sampler, times, layout, values);
}

Result<void> ResampleQuaternion(const GltfAnimationSampler& sampler, const BaseArray<Float>& times, const SamplerLayout& layout,
                                BaseArray<Vector4>& values) noexcept
{
  return Resample(sampler, times, layout, values);
}

Result<void> ResampleScalar(const GltfAnimationSampler& sampler, const BaseArray<Float>& times, const SamplerLayout& layout,
                            BaseArray<Float>& values) noexcept
{
  return Resample(sampler, times, layout, values);
}

template <typename T>
Result<Bool> IsConstantSampler(const GltfAnimationSampler& sampler, const SamplerLayout& layout) noexcept
{
  const Int keyCount = GetKeyCount(sampler);
  if (keyCount < 2)
    return true;
  Bool isConstant = true;
  const auto compare = [&](auto read) -> Result<void>
  {
    KeyframeOf<T> first;
    RETURN_IF_ERROR(read(0, first));
    for (Int i = 1; i < keyCount && isConstant; ++i)
    {
      KeyframeOf<T> other;
      RETURN_IF_ERROR(read(i, other));
      isConstant = other.value == first.value && other.inTangent == first.inTangent && other.outTangent == first.outTangent;
    }
    return {};
  };
  RETURN_IF_ERROR(WithKeyframes<T>(sampler, layout, compare));
  return isConstant;
}

template Result<Bool> IsConstantSampler<Vector>(const GltfAnimationSampler&, const SamplerLayout&) noexcept;
template Result<Bool> IsConstantSampler<Vector4>(const GltfAnimationSampler&, const SamplerLayout&) noexcept;
template Result<Bool> IsConstantSampler<Float>(const GltfAnimationSampler&, const SamplerLayout&) noexcept;

}  // namespace q7z
