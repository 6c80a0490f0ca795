#include "plugin/document/gltfaccessor.h"

#include "framework/check.h"
#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"
#include "plugin/module/hostconsole.h"

namespace q7z
{

namespace
{

constexpr Int kMaximumElementBytes = 64;  // sixteen components of four bytes

struct TypeEntry
{
  String name;
  Int componentCount;
};
constexpr TypeEntry kTypes[] = {
  {"SCALAR"_s, 1}, {"VEC2"_s, 2}, {"VEC3"_s, 3}, {"VEC4"_s, 4}, {"MAT2"_s, 4}, {"MAT3"_s, 9}, {"MAT4"_s, 16},
};

void LoadWide(const Byte* component, Int byteCount, Float& value) noexcept
{
  value = components::LoadWide<Float>(component, byteCount);
}
void LoadWide(const Byte* component, Int byteCount, UInt32& value) noexcept
{
  value = components::LoadWide<UInt32>(component, byteCount);
}

template <UInt32 componentType, Bool normalized>
void Convert(const Byte* component, Float& value) noexcept
{
  value = components::ToFloat<componentType, normalized>(component);
}
template <UInt32 componentType, Bool normalized>
void Convert(const Byte* component, UInt32& value) noexcept
{
  value = components::ToUInt32<componentType, normalized>(component);
}

/// The first count components of an element of elementByteCount bytes.
template <typename T>
void ConvertComponents(UInt32 componentType, Bool normalized, const Byte* element, Int elementByteCount, T* values,
                       int count) noexcept
{
  const auto convert = [&](auto type, auto norm)
  {
    for (int i = 0; i < count; ++i)
      Convert<type(), norm()>(element + i * components::GetSize(type()), values[i]);
  };
  if (components::WithType(componentType, normalized, convert))
    return;
  for (int i = 0; i < count; ++i)
    LoadWide(element + i, elementByteCount - i, values[i]);
}

}  // namespace

GltfAccessor GltfAccessor::MakeNonIndexed() noexcept
{
  GltfAccessor accessor;
  accessor._nonIndexed = true;
  accessor._type = "SCALAR"_s;
  return accessor;
}

Result<void> GltfAccessor::ReadFromJson(const DataDictionary& element) noexcept
{
  _bufferViewIndex = ReadInt(element, keys::kBufferView, -1);
  _byteOffset = ReadInt(element, keys::kByteOffset, 0);
  ASSIGN_OR_RETURN(const Int componentType, ReadRequiredInt(element, keys::kComponentType));
  _componentType = componentType > 0 && componentType <= UINT32_MAX ? static_cast<UInt32>(componentType) : 0;
  _normalized = ReadBool(element, keys::kNormalized, false);
  ASSIGN_OR_RETURN(_count, ReadRequiredInt(element, keys::kCount));
  ASSIGN_OR_RETURN(_type, ReadRequiredString(element, keys::kType));
  RETURN_IF_ERROR(ReadDataArray(element, keys::kMax, _max));
  RETURN_IF_ERROR(ReadDataArray(element, keys::kMin, _min));
  if (element.Find(keys::kSparse))
    return MAKE_ERROR(ErrorClass::kUnsupportedOperation, HostLoadString(10010));
  const Int componentCount = GetComponentCount();
  const Int componentTypeSize = components::GetSize(_componentType);
  CHECK_STATE(componentCount && componentTypeSize);
  _elementByteCount = componentCount * componentTypeSize;
  return {};
}

Int GltfAccessor::GetComponentCount() const noexcept
{
  for (const TypeEntry& entry : kTypes)
  {
    if (entry.name == _type)
      return entry.componentCount;
  }
  return 0;
}

Bool GltfAccessor::IsOfType(std::initializer_list<String> types) const noexcept
{
  return std::find(types.begin(), types.end(), _type) != types.end();
}

Bool GltfAccessor::IsOfType(std::initializer_list<UInt32> componentTypes) const noexcept
{
  return std::find(componentTypes.begin(), componentTypes.end(), _componentType) != componentTypes.end();
}

void GltfAccessor::SetBufferView(const GltfBufferView* bufferView) noexcept
{
  if (!IsNonIndexed())
    _bufferView = bufferView;
}

Result<void> GltfAccessor::GetElementBytes(Int idx, BaseArray<Byte>& bytes) const noexcept
{
  RETURN_IF_ERROR(bytes.Resize(_elementByteCount));
  return ReadElementBytes(idx, bytes.GetFirst());
}

/// @param bytes  room for an element; null when an element has no bytes.
Result<void> GltfAccessor::ReadElementBytes(Int idx, Byte* bytes) const noexcept
{
  CHECK_STATE(_elementByteCount);
  CHECK_STATE(!IsNonIndexed() && _bufferView);
  return _bufferView->ReadElement(idx, _byteOffset, _elementByteCount, bytes);
}

template <typename T, int count>
Result<void> GltfAccessor::ReadComponents(Int idx, T (&values)[count]) const noexcept
{
  if (IsNonIndexed())
  {
    CHECK_STATE(_type == "SCALAR"_s);
    for (T& value : values)
      value = static_cast<T>(idx);
    return {};
  }
  CHECK_STATE((idx >= 0 && idx < _count));
  Byte bytes[kMaximumElementBytes];
  RETURN_IF_ERROR(ReadElementBytes(idx, bytes));
  CHECK_STATE(count <= GetComponentCount());
  ConvertComponents(_componentType, _normalized, bytes, _elementByteCount, values, count);
  return {};
}

Result<UInt32> GltfAccessor::GetUInt32(Int idx) const noexcept
{
  UInt32 values[1] = {};
  RETURN_IF_ERROR(ReadComponents(idx, values));
  return values[0];
}

Result<GltfAccessor::UInt32x4> GltfAccessor::GetUInt32x4(Int idx) const noexcept
{
  UInt32x4 result = {};
  RETURN_IF_ERROR(ReadComponents(idx, result.values));
  return result;
}

Result<Float> GltfAccessor::GetFloat(Int idx) const noexcept
{
  Float values[1] = {};
  RETURN_IF_ERROR(ReadComponents(idx, values));
  return values[0];
}

Result<Vector2> GltfAccessor::GetVector2(Int idx) const noexcept
{
  Float values[2] = {};
  RETURN_IF_ERROR(ReadComponents(idx, values));
  return Vector2{values[0], values[1]};
}

Result<Vector> GltfAccessor::GetVector3(Int idx) const noexcept
{
  Float values[3] = {};
  RETURN_IF_ERROR(ReadComponents(idx, values));
  return Vector{values[0], values[1], values[2]};
}

Result<Vector4> GltfAccessor::GetVector4(Int idx) const noexcept
{
  Float values[4] = {};
  RETURN_IF_ERROR(ReadComponents(idx, values));
  return Vector4{values[0], values[1], values[2], values[3]};
}

Result<HostMatrix> GltfAccessor::GetMatrix(Int idx) const noexcept
{
  CHECK_STATE(!IsNonIndexed());
  Float values[16] = {};
  RETURN_IF_ERROR(ReadComponents(idx, values));
  const auto column = [&](int i) { return Vector{values[4 * i], values[4 * i + 1], values[4 * i + 2]}; };
  return HostMatrix{.offset = column(3), .axisX = column(0), .axisY = column(1), .axisZ = column(2)};
}

Bool GltfAccessor::GetElements(GltfElements& elements) const noexcept
{
  elements = {.count = _count,
              .componentType = _componentType,
              .normalized = _normalized,
              .componentCount = GetComponentCount(),
              .byteLimit = _elementByteCount};
  if (IsNonIndexed())
    return true;
  if (_elementByteCount && _bufferView)
    elements.first = _bufferView->FindElements(_count, _byteOffset, _elementByteCount, elements.stride);
  return elements.first;
}

Result<GltfAccessor*> GetAccessor(GltfData& gltfData, Int32 idx, Bool nonIndexedAllowed) noexcept
{
  GltfAccessor* const accessor = gltfData.accessors.Find(idx);
  CHECK_STATE(accessor);
  if (accessor->IsNonIndexed())
  {
    CHECK_STATE(nonIndexedAllowed);
    CHECK_STATE(accessor->IsOfType({"SCALAR"_s}));
    return accessor;
  }
  // An accessor without a view has -1, which passes here and finds no view.
  if (accessor->GetBufferViewIndex() < -1)
    return MAKE_ERROR(ErrorClass::kIllegalState, "Illegal state: Accessors without bufferView aren't supported yet"_s);
  GltfBufferView* const bView = gltfData.bufferViews.Find(accessor->GetBufferViewIndex());
  CHECK_STATE(bView);
  GltfBuffer* const buff = gltfData.buffers.Find(bView->GetBufferIndex());
  CHECK_STATE(buff);
  bView->SetBuffer(buff);
  accessor->SetBufferView(bView);
  return accessor;
}

}  // namespace q7z
