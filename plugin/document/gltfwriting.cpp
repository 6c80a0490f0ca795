// The writing side of the records of buffers and accessors.

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

#include "framework/check.h"
#include "plugin/document/gltfaccessor.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

namespace
{

constexpr Byte kPad = 32;  // a blank, in binary data as in text

/// Takes the smaller / larger of what is there and value. Nil stands for nothing yet.
void MergeBound(Data& bound, Data value, Bool isSmaller) noexcept
{
  if (value.IsNil())
    return;
  if (bound.IsNil())
  {
    bound = std::move(value);
    return;
  }
  // Kinds never mix within an accessor, and 32-bit numbers of either kind are exact as 64-bit floats.
  const Float present = bound.GetFloat().GetValue();
  const Float candidate = value.GetFloat().GetValue();
  if (isSmaller ? candidate < present : candidate > present)
    bound = std::move(value);
}

template <typename T>
struct ComponentBounds
{
  T min;
  T max;
  Bool isSet = false;
};

/// One component of all elements.
template <typename T>
class Components
{
public:
  Components(const Byte* first, Int count, Int stride, Int component) noexcept
      : _first(first + component * static_cast<Int>(sizeof(T))), _count(count), _stride(stride)
  {}

  /// Comparisons with a NaN are false; infinities are left out. Of equal bounds the first counts, since zeros have signs.
  ComponentBounds<T> FindBounds() const noexcept
  {
    ComponentBounds<T> bounds = FindBoundsInLanes();
    if (!IsFinite(bounds.min) || !IsFinite(bounds.max))
      return FindFiniteBounds();
    bounds.min = bounds.min == 0 ? FindFirstZero() : bounds.min;
    bounds.max = bounds.max == 0 ? FindFirstZero() : bounds.max;
    return bounds;
  }

private:
  T Load(Int i) const noexcept
  {
    T value;
    std::memcpy(&value, _first + i * _stride, sizeof(T));
    return value;
  }

  static Bool IsFinite(T value) noexcept
  {
    return value >= std::numeric_limits<T>::lowest() && value <= std::numeric_limits<T>::max();
  }

  /// With infinities, and anything where there are none but NaNs. Lanes do not wait for each other.
  ComponentBounds<T> FindBoundsInLanes() const noexcept
  {
    constexpr Int kLaneCount = 4;
    T min[kLaneCount];
    T max[kLaneCount];
    for (Int lane = 0; lane < kLaneCount; ++lane)
      min[lane] = max[lane] = _count > 0 ? Load(0) : T();
    const Int lanedCount = _count / kLaneCount * kLaneCount;
    for (Int i = 0; i < lanedCount; i += kLaneCount)
    {
      for (Int lane = 0; lane < kLaneCount; ++lane)
      {
        const T value = Load(i + lane);
        min[lane] = value < min[lane] ? value : min[lane];
        max[lane] = value > max[lane] ? value : max[lane];
      }
    }
    for (Int i = lanedCount; i < _count; ++i)
    {
      min[0] = std::min(min[0], Load(i));
      max[0] = std::max(max[0], Load(i));
    }
    return {*std::min_element(min, min + kLaneCount), *std::max_element(max, max + kLaneCount), _count > 0};
  }

  ComponentBounds<T> FindFiniteBounds() const noexcept
  {
    ComponentBounds<T> bounds{std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest(), false};
    for (Int i = 0; i < _count; ++i)
    {
      const T value = Load(i);
      if (!IsFinite(value))
        continue;
      bounds.min = std::min(bounds.min, value);
      bounds.max = std::max(bounds.max, value);
      bounds.isSet = true;
    }
    return bounds;
  }

  T FindFirstZero() const noexcept
  {
    for (Int i = 0; i < _count; ++i)
    {
      if (const T value = Load(i); value == 0)
        return value;
    }
    return 0;
  }

  const Byte* _first;
  Int _count;
  Int _stride;
};

/// Bounds of 16-bit integers are kept as integers and those of everything else as floats, of 32-bit integers, too. Deliberate.
template <typename T>
Data ToData(T value) noexcept
{
  if constexpr (std::is_same_v<T, Float32>)
    return Data(value);
  else if constexpr (std::is_same_v<T, UInt16>)
    return Data(static_cast<Int32>(value));
  else
    return Data(static_cast<Float>(value));
}

template <typename T>
void MergeBounds(const Byte* first, Int count, Int stride, BaseArray<Data>& min, BaseArray<Data>& max) noexcept
{
  for (Int component = 0; component < min.GetCount(); ++component)
  {
    const ComponentBounds<T> bounds = Components<T>(first, count, stride, component).FindBounds();
    if (!bounds.isSet)
      continue;
    MergeBound(min[component], ToData(bounds.min), true);
    MergeBound(max[component], ToData(bounds.max), false);
  }
}

}  // namespace

Result<void> GltfBuffer::Reserve(Int byteCount) noexcept
{
  const Int capacity = _buffer.GetCapacity();
  if (byteCount < 0 || byteCount > INT64_MAX / 4 - capacity)
    return Error::OutOfMemory();
  if (byteCount <= capacity - _buffer.GetCount())
    return {};
  // By half again, so that appending costs constant time on average; the first bytes get just what they need.
  const Int grown = capacity ? (capacity + byteCount) / 2 * 3 : std::max(byteCount, Int(1));
  return _buffer.Reserve((grown + 15) / 16 * 16);
}

Result<Byte*> GltfBuffer::AppendRoom(Int byteCount) noexcept
{
  RETURN_IF_ERROR(Reserve(byteCount));
  const Int count = _buffer.GetCount();
  RETURN_IF_ERROR(_buffer.ResizeForOverwrite(count + byteCount));
  _byteLength += byteCount;
  return _buffer.begin() + count;
}

void GltfBuffer::DropFrom(Int offset) noexcept
{
  _byteLength -= std::max<Int>(_buffer.GetCount() - offset, 0);
  _buffer.Truncate(offset);
}

Result<void> GltfBuffer::AppendBytes(const void* bytes, Int byteCount) noexcept
{
  ASSIGN_OR_RETURN(Byte * room, AppendRoom(byteCount));
  if (byteCount > 0)
    std::memcpy(room, bytes, static_cast<size_t>(byteCount));
  return {};
}

Result<void> GltfBuffer::Align() noexcept
{
  const Int padCount = -_buffer.GetCount() & 3;
  ASSIGN_OR_RETURN(Byte * room, AppendRoom(padCount));
  std::fill_n(room, padCount, kPad);
  return {};
}

Result<void> GltfBuffer::PadToWords() noexcept
{
  const Int byteLength = _byteLength;
  RETURN_IF_ERROR(Align());
  _byteLength = byteLength;
  return {};
}

GltfAccessor::GltfAccessor(String type, UInt32 componentType) noexcept : _type(std::move(type))
{
  SetComponentType(componentType);
}

void GltfAccessor::SetComponentType(UInt32 componentType) noexcept
{
  _componentType = componentType;
  _elementByteCount = GetComponentCount() * components::GetSize(componentType);
}

Result<void> GltfAccessor::AppendElements(GltfBuffer& buffer, GltfBufferView& view, const void* elements, Int count) noexcept
{
  const Int byteCount = count * _elementByteCount;
  ASSIGN_OR_RETURN(Byte * room, buffer.AppendRoom(byteCount));
  if (byteCount > 0)
    std::memcpy(room, elements, static_cast<size_t>(byteCount));
  view.AddByteLength(byteCount);
  return TrackElements(room, count, _elementByteCount);
}

Result<void> GltfAccessor::MakeBounds() noexcept
{
  RETURN_IF_ERROR(_min.Resize(GetComponentCount()));
  return _max.Resize(GetComponentCount());
}

Result<void> GltfAccessor::TrackIntegers(Int min, Int max, Int count) noexcept
{
  RETURN_IF_ERROR(MakeBounds());
  _count += count;
  if (count < 1)
    return {};
  const auto toData = [isShort = _componentType == kUnsignedShort](Int value)
  { return isShort ? ToData(static_cast<UInt16>(value)) : ToData(static_cast<UInt32>(value)); };
  MergeBound(_min[0], toData(min), true);
  MergeBound(_max[0], toData(max), false);
  return {};
}

Result<void> GltfAccessor::TrackElements(const Byte* first, Int count, Int stride) noexcept
{
  RETURN_IF_ERROR(MakeBounds());
  _count += count;
  switch (_componentType)
  {
    case kUnsignedShort: MergeBounds<UInt16>(first, count, stride, _min, _max); break;
    case kUnsignedInt: MergeBounds<UInt32>(first, count, stride, _min, _max); break;
    default: MergeBounds<Float32>(first, count, stride, _min, _max); break;
  }
  return {};
}

Result<Data> GltfAccessor::MakeBound(const BaseArray<Data>& bound) const noexcept
{
  BaseArray<Data> values;
  RETURN_IF_ERROR(values.Reserve(bound.GetCount()));
  for (const Data& value : bound)
    RETURN_IF_ERROR(values.Append(value.IsNil() ? Data(Float32(0)) : value));
  return Data::CreateArray(std::move(values));
}

}  // namespace q7z
