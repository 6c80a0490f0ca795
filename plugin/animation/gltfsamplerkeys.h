#pragma once

// Keyframes of an animation sampler, decoded from its output accessor. The import of tracks and the evaluation of samplers read
// through here: the accessor's range is checked once for all keys, with the results and errors of single reads.

#include "framework/arithmetic.h"
#include "plugin/document/gltfanimation.h"
#include "plugin/geometry/gltfelementreader.h"

namespace q7z
{

template <typename T>
struct KeyframeOf
{
  T value{};
  T inTangent{};  // tangents are slopes a second, 0 without hasTangents
  T outTangent{};
  Bool hasTangents = false;
};

using VectorKeyframe = KeyframeOf<Vector>;
using QuaternionKeyframe = KeyframeOf<Vector4>;  // in the file's order: x, y, z, w
using ScalarKeyframe = KeyframeOf<Float>;

/// Where the elements of one animated value lie in an output accessor: element e of it is e * stride + offset. One morph target out
/// of several has its own; everything else the default.
struct SamplerLayout
{
  Int stride = 1;
  Int offset = 0;
};

namespace detail
{

inline constexpr int CountComponents(const Float*) noexcept
{
  return 1;
}
inline constexpr int CountComponents(const Vector*) noexcept
{
  return 3;
}
inline constexpr int CountComponents(const Vector4*) noexcept
{
  return 4;
}

inline void TakeComponents(const Float (&components)[1], Float& value) noexcept
{
  value = components[0];
}
inline void TakeComponents(const Float (&components)[3], Vector& value) noexcept
{
  value = {components[0], components[1], components[2]};
}
inline void TakeComponents(const Float (&components)[4], Vector4& value) noexcept
{
  value = {components[0], components[1], components[2], components[3]};
}

}  // namespace detail

/// Calls body(read) once. read(keyIndex, keyframe) fills a KeyframeOf<T> and returns Result<void>: the error of the first element
/// that cannot be read. body returns Result<void>, which is the result. Fails without an output accessor.
template <typename T, typename Body>
Result<void> WithKeyframes(const GltfAnimationSampler& sampler, const SamplerLayout& layout, Body&& body) noexcept
{
  constexpr int kComponentCount = detail::CountComponents(static_cast<const T*>(nullptr));
  const GltfAccessor* const accessor = sampler._outputAccessor;
  CHECK_STATE(accessor);
  const Int valuesPerKey = sampler.valuesPerKey;
  const auto withElements = [&](auto readElement) -> Result<void>
  {
    const auto read = [&](Int element, T& value) -> Result<void>
    {
      Int position = 0;
      if (!CheckedPosition(layout.offset, layout.stride, element, position))
        position = -1;  // which no accessor has
      Float components[kComponentCount] = {};
      if (!readElement(position, components)) [[unlikely]]
        return GetReadError<kComponentCount>(*accessor, position);
      detail::TakeComponents(components, value);
      return {};
    };
    return body(
      [&](Int keyIndex, KeyframeOf<T>& keyframe) -> Result<void>
      {
        keyframe.hasTangents = valuesPerKey == 3;
        if (!keyframe.hasTangents)
          return read(keyIndex, keyframe.value);
        RETURN_IF_ERROR(read(keyIndex * 3, keyframe.inTangent));
        RETURN_IF_ERROR(read(keyIndex * 3 + 1, keyframe.value));
        return read(keyIndex * 3 + 2, keyframe.outTangent);
      });
  };
  return WithElementReader<kComponentCount>(*accessor, withElements);
}

/// Calls body(readTime) once. readTime(keyIndex, seconds) gives the time of a key and returns Result<void>. body returns
/// Result<void>, which is the result.
template <typename Body>
Result<void> WithKeyTimes(const GltfAccessor& inputAccessor, Body&& body) noexcept
{
  const auto withElements = [&](auto readElement) -> Result<void>
  {
    return body(
      [&](Int keyIndex, Float& seconds) -> Result<void>
      {
        Float components[1] = {};
        if (!readElement(keyIndex, components)) [[unlikely]]
          return GetReadError<1>(inputAccessor, keyIndex);
        seconds = components[0];
        return {};
      });
  };
  return WithElementReader<1>(inputAccessor, withElements);
}

}  // namespace q7z
