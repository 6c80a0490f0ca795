#pragma once

// The records of `animations` on the reading side, and the references between them. The animation import works on them; they live
// in the document of one load. An export writes its animation without records of its own.

#include "framework/basearray.h"
#include "framework/data.h"
#include "framework/hashmap.h"

namespace q7z
{

class GltfAccessor;
struct GltfData;

// Values of a sampler's "interpolation".
inline constexpr String kLinearInterpolation = "LINEAR"_s;
inline constexpr String kStepInterpolation = "STEP"_s;
inline constexpr String kSplineInterpolation = "CUBICSPLINE"_s;

struct GltfAnimationSampler
{
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;
  /// Finds both accessors, the input first.
  Result<void> Resolve(GltfData* gltfData) noexcept;

  Int input = -1;   // into accessors: the keys' times in seconds
  Int output = -1;  // into accessors: valuesPerKey elements for each key, or as many for each morph target
  String interpolation;
  Int valuesPerKey = 1;                           // 3 for "CUBICSPLINE": in-tangent, value, out-tangent
  const GltfAccessor* _inputAccessor = nullptr;   // set at resolving; not owned
  const GltfAccessor* _outputAccessor = nullptr;  // set at resolving; not owned
};

struct GltfChannel
{
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;

  Int samplerIndex = -1;  // into the samplers of the animation
  Int node = -1;          // into nodes; -1 for none
  String path;
  const GltfAnimationSampler* sampler = nullptr;  // set at resolving; not owned
};

struct GltfAnimation
{
  /// A channel or a sampler that cannot be read is an error of the whole animation.
  Result<void> ReadFromJson(const DataDictionary& element) noexcept;
  /// Resolves the samplers and then links the channels to them; ends at the first that cannot be had, so that one bad sampler leaves all channels unlinked.
  Result<void> ResolveAnimation(GltfData* gltfData) noexcept;

  String name;
  BaseArray<GltfChannel> channels;              // in the file's order
  HashMap<Int, GltfAnimationSampler> samplers;  // by their place in the file
};

}  // namespace q7z
