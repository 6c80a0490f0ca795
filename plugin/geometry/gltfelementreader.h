#pragma once

// Reading many elements of an accessor as 64-bit floats: the accessor's range is checked once and a loop without checks runs for
// its component type; where that is not possible, each element is read by itself. Results and failures are the same either way.

#include <utility>

#include "framework/check.h"
#include "plugin/document/gltfaccessor.h"

namespace q7z
{

namespace detail
{

inline Result<void> ReadSingle(const GltfAccessor& accessor, Int idx, Float (&values)[1]) noexcept
{
  ASSIGN_OR_RETURN(values[0], accessor.GetFloat(idx));
  return {};
}

inline Result<void> ReadSingle(const GltfAccessor& accessor, Int idx, Float (&values)[2]) noexcept
{
  ASSIGN_OR_RETURN(const Vector2 value, accessor.GetVector2(idx));
  values[0] = value.x;
  values[1] = value.y;
  return {};
}

inline Result<void> ReadSingle(const GltfAccessor& accessor, Int idx, Float (&values)[3]) noexcept
{
  ASSIGN_OR_RETURN(const Vector value, accessor.GetVector3(idx));
  values[0] = value.x;
  values[1] = value.y;
  values[2] = value.z;
  return {};
}

inline Result<void> ReadSingle(const GltfAccessor& accessor, Int idx, Float (&values)[4]) noexcept
{
  ASSIGN_OR_RETURN(const Vector4 value, accessor.GetVector4(idx));
  values[0] = value.x;
  values[1] = value.y;
  values[2] = value.z;
  values[3] = value.w;
  return {};
}

}  // namespace detail

/// The error that reading an element gives; for the moment when a reader has answered false.
template <int componentCount>
Error GetReadError(const GltfAccessor& accessor, Int idx) noexcept
{
  Float values[componentCount] = {};
  return detail::ReadSingle(accessor, idx, values).GetError();
}

/// Calls body(read) once. read(idx, values) fills componentCount numbers and answers whether element idx can be read; when it
/// answers false, GetReadError tells why. body returns Result<void>, which is the result.
template <int componentCount, typename Body>
Result<void> WithElementReader(const GltfAccessor& accessor, Body&& body) noexcept
{
  GltfElements elements;
  if (accessor.GetElements(elements) && elements.componentCount >= componentCount)
  {
    Result<void> result;
    const auto runBody = [&](auto load)
    {
      result = body(
        [elements, load](Int idx, Float(&values)[componentCount]) -> Bool
        {
          if (static_cast<UInt>(idx) >= static_cast<UInt>(elements.count)) [[unlikely]]
            return false;
          const Byte* const element = elements.first + idx * elements.stride;
          for (int i = 0; i < componentCount; ++i)
            values[i] = load(element, i);
          return true;
        });
    };
    if (WithFloatLoader(elements, runBody))
      return result;
  }
  return body([&](Int idx, Float(&values)[componentCount]) -> Bool
              { return !detail::ReadSingle(accessor, idx, values).HasError(); });
}

}  // namespace q7z
