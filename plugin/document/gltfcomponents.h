#pragma once

// How the components of an accessor's elements become numbers, for single reads and for loops over whole accessors alike. Bytes
// are little-endian and not aligned. Included by gltfaccessor.h alone.

#include <algorithm>
#include <type_traits>

#include "plugin/document/gltfaccessor.h"

namespace q7z
{

namespace components
{

template <typename T>
T Load(const Byte* component) noexcept
{
  T value;
  std::memcpy(&value, component, sizeof(T));
  return value;
}

/// Truncates toward zero; a negative number extends its sign. What fits neither way (not-a-number, too) gives the largest
/// number, which as an index is out of every range.
inline UInt32 TruncateToUInt32(Float value) noexcept
{
  const Bool fits = value > -2147483649.0 && value < 4294967296.0;
  return fits ? static_cast<UInt32>(static_cast<Int>(value)) : UINT32_MAX;
}

/// Bytes of a component; 0 for a type that there is not.
constexpr Int GetSize(UInt32 componentType) noexcept
{
  switch (componentType)
  {
    case kSignedByte:
    case kUnsignedByte: return 1;
    case kSignedShort:
    case kUnsignedShort: return 2;
    case kUnsignedInt:
    case kFloatComponent: return 4;
    default: return 0;
  }
}

template <UInt32 componentType, Bool normalized>
Float ToFloat(const Byte* component) noexcept
{
  static_assert(GetSize(componentType) != 0 && (componentType != kSignedByte || normalized));
  // The divisors of the signed types are negative on purpose: a positive value turns negative.
  if constexpr (componentType == kSignedByte)
    return std::max(-1.0, Load<std::int8_t>(component) / -127.0);
  else if constexpr (componentType == kUnsignedByte)
    return normalized ? *component / 255.0 : *component;
  else if constexpr (componentType == kSignedShort)
    return normalized ? std::max(-1.0, Load<Int16>(component) / -32767.0) : Load<Int16>(component);
  else if constexpr (componentType == kUnsignedShort)
    return normalized ? std::max(-1.0, Load<UInt16>(component) / 65535.0) : Load<UInt16>(component);
  else if constexpr (componentType == kUnsignedInt)
    return Load<UInt32>(component);
  else
    return Load<Float32>(component);
}

template <UInt32 componentType, Bool normalized>
UInt32 ToUInt32(const Byte* component) noexcept
{
  if constexpr (componentType == kUnsignedInt)
    return Load<UInt32>(component);
  else
    return TruncateToUInt32(ToFloat<componentType, normalized>(component));
}

/// A signed byte that is not normalised is read as wide as its target: four bytes of an integer, eight bytes that are the bits of
/// a 64-bit float, although the next component begins one byte further. Deliberate. Behind the element's own bytes it sees zeros.
/// @param byteCount  from the component to the end of its element.
template <typename T>
T LoadWide(const Byte* component, Int byteCount) noexcept
{
  T value = 0;
  std::memcpy(&value, component, static_cast<size_t>(std::min(byteCount, static_cast<Int>(sizeof(T)))));
  return value;
}

/// Calls body(type, normalized) with the two as compile-time constants; false when the type has no reader of its own.
template <typename Body>
Bool WithType(UInt32 componentType, Bool normalized, Body&& body) noexcept
{
  const auto call = [&]<UInt32 type>(std::integral_constant<UInt32, type> constant)
  {
    if (normalized)
      body(constant, std::true_type());
    else
      body(constant, std::false_type());
    return true;
  };
  switch (componentType)
  {
    case kSignedByte:
      if (normalized)
        body(std::integral_constant<UInt32, kSignedByte>(), std::true_type());
      return normalized;
    case kUnsignedByte: return call(std::integral_constant<UInt32, kUnsignedByte>());
    case kSignedShort: return call(std::integral_constant<UInt32, kSignedShort>());
    case kUnsignedShort: return call(std::integral_constant<UInt32, kUnsignedShort>());
    // These two are never normalised.
    case kUnsignedInt: body(std::integral_constant<UInt32, kUnsignedInt>(), std::false_type()); return true;
    case kFloatComponent: body(std::integral_constant<UInt32, kFloatComponent>(), std::false_type()); return true;
    default: return false;
  }
}

template <UInt32 componentType, Bool normalized>
struct FloatLoader
{
  Float operator()(const Byte* element, Int component) const noexcept
  {
    return ToFloat<componentType, normalized>(element + component * GetSize(componentType));
  }
};

template <UInt32 componentType, Bool normalized>
struct IndexLoader
{
  UInt32 operator()(const Byte* element, Int component) const noexcept
  {
    return ToUInt32<componentType, normalized>(element + component * GetSize(componentType));
  }
};

}  // namespace components

template <typename Body>
Bool WithFloatLoader(const GltfElements& elements, Body&& body) noexcept
{
  const auto call = [&](auto type, auto normalized) { body(components::FloatLoader<type(), normalized()>()); };
  return elements.first && components::WithType(elements.componentType, elements.normalized, call);
}

template <typename Body>
Bool WithIndexLoader(const GltfElements& elements, Body&& body) noexcept
{
  const auto call = [&](auto type, auto normalized) { body(components::IndexLoader<type(), normalized()>()); };
  return elements.first && components::WithType(elements.componentType, elements.normalized, call);
}

}  // namespace q7z
