#pragma once

// What the records of an animation mean in time: the range of a sampler and of a whole file, the value of a sampler at any time,
// and whether it ever changes. The animation import works with it; nothing here touches the scene but SetDocumentTimeRange.

#include "plugin/animation/gltfsamplerkeys.h"
#include "plugin/module/hosttrack.h"

namespace q7z
{

struct GltfTimeRange
{
  Float minSeconds = 0;
  Float maxSeconds = 0.01;  // so that a file whose animations all end at 0 has a range
};

/// What the input accessor says in its `min` and `max`; keys are never searched. Fails without both, or for times that are not
/// floats.
Result<GltfTimeRange> GetSamplerTimeRange(const GltfAnimationSampler& sampler) noexcept;

/// From 0 or earlier to 0.01 or later, over the samplers of all linked channels. The first sampler without a range is the error.
Result<GltfTimeRange> GetDocumentTimeRange(const GltfData& gltfData) noexcept;

/// The document's frames a second. A document without a rate has the host's usual one, 30.
Int32 GetDocumentRate(const HostDocument& doc) noexcept;

/// The document starts at 0 and ends with its animations, and after a frame at the earliest; its second range likewise.
Result<void> SetDocumentTimeRange(HostDocument& doc, const GltfData& gltfData) noexcept;

/// Linear for a name that is none of the three, and, with a line in the diagnostic output, without a sampler.
InterpolationMode GetSamplerInterpolationMode(const GltfAnimationSampler* sampler) noexcept;

/// The number of keys; 0 without an input accessor.
Int GetKeyCount(const GltfAnimationSampler& sampler) noexcept;

/// The sampler's values at times: one for each, in their order. Before the first and behind the last key the nearest holds, only
/// that a "STEP" sampler is 0 before its first. All 0 without keys. Quaternions are taken component by component and not normalised.
Result<void> ResampleVector(const GltfAnimationSampler& sampler, const BaseArray<Float>& times, const SamplerLayout& layout,
                            BaseArray<Vector>& values) noexcept;
Result<void> ResampleQuaternion(const GltfAnimationSampler& sampler, const BaseArray<Float>& times, const SamplerLayout& layout,
                                BaseArray<Vector4>& values) noexcept;
Result<void> ResampleScalar(const GltfAnimationSampler& sampler, const BaseArray<Float>& times, const SamplerLayout& layout,
                            BaseArray<Float>& values) noexcept;

/// Whether all keys are exactly equal in value and tangents; so with less than two. For T = Vector, Vector4, Float.
template <typename T>
Result<Bool> IsConstantSampler(const GltfAnimationSampler& sampler, const SamplerLayout& layout) noexcept;

}  // namespace q7z
