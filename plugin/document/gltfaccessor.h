#pragma once

// GltfAccessor: typed access to the elements of a buffer view. Single elements are read with every check; a whole accessor is
// checked once and then read through GltfElements, with the same results.

#include <cstring>
#include <initializer_list>

#include "framework/hostmatrix.h"
#include "plugin/document/gltfbuffer.h"

namespace q7z
{

struct GltfData;

enum GltfComponentType : UInt32
{
  kSignedByte = 5120,
  kUnsignedByte = 5121,
  kSignedShort = 5122,
  kUnsignedShort = 5123,
  kUnsignedInt = 5125,
  kFloatComponent = 5126,
};

/// The readable elements of an accessor: element i begins at first + i * stride. Bytes are not aligned.
struct GltfElements
{
  const Byte* first = nullptr;  ///< null for the non-indexed accessor, whose element i is i in every component
  Int stride = 0;
  Int count = 0;  ///< of a non-indexed accessor: any index reads
  UInt32 componentType = 0;
  Bool normalized = false;
  Int componentCount = 0;
  Int byteLimit = 0;  ///< bytes of one element
};

class GltfAccessor
{
public:
  /// The accessor that stands under -1 and means "no indices": element i is i.
  static GltfAccessor MakeNonIndexed() noexcept;

  GltfAccessor() noexcept = default;
  /// An accessor to be written: without elements, at offset 0.
  /// @param type  one of the format's types, such as "VEC3".
  GltfAccessor(String type, UInt32 componentType) noexcept;

  Result<void> ReadFromJson(const DataDictionary& element) noexcept;

  Bool IsNonIndexed() const noexcept { return _nonIndexed; }
  Int GetCount() const noexcept { return _count; }
  UInt32 GetComponentType() const noexcept { return _componentType; }
  Bool IsNormalized() const noexcept { return _normalized; }
  Int GetComponentCount() const noexcept;
  Int GetBufferViewIndex() const noexcept { return _bufferViewIndex; }
  const BaseArray<Data>& GetMin() const noexcept { return _min; }
  const BaseArray<Data>& GetMax() const noexcept { return _max; }

  Bool IsOfType(std::initializer_list<String> types) const noexcept;
  Bool IsOfType(std::initializer_list<UInt32> componentTypes) const noexcept;

  /// Binds the view; does nothing on the non-indexed accessor.
  void SetBufferView(const GltfBufferView* bufferView) noexcept;

  // Single reads. A type with more components than asked for gives its first ones, one with fewer is an error. The reads of the
  // non-indexed accessor give idx in every component.
  Result<void> GetElementBytes(Int idx, BaseArray<Byte>& bytes) const noexcept;
  Result<UInt32> GetUInt32(Int idx) const noexcept;
  struct UInt32x4
  {
    UInt32 values[4];
  };
  Result<UInt32x4> GetUInt32x4(Int idx) const noexcept;
  Result<Float> GetFloat(Int idx) const noexcept;
  Result<Vector2> GetVector2(Int idx) const noexcept;
  Result<Vector> GetVector3(Int idx) const noexcept;
  Result<Vector4> GetVector4(Int idx) const noexcept;
  Result<HostMatrix> GetMatrix(Int idx) const noexcept;

  /// @return whether there are elements and every one from 0 to GetCount() - 1 can be read, with what is needed to do so. When
  /// this answers false the typed reads tell, element by element, what is wrong.
  Bool GetElements(GltfElements& elements) const noexcept;

  // Writing. Components are those of the accessor's own type: unsigned 16- and 32-bit integers, or 32-bit floats.

  const String& GetType() const noexcept { return _type; }
  Int GetByteOffset() const noexcept { return _byteOffset; }
  void SetByteOffset(Int byteOffset) noexcept { _byteOffset = byteOffset; }
  void SetComponentType(UInt32 componentType) noexcept;

  /// Appends count tightly packed elements to the buffer and to its view, and counts and bounds them.
  Result<void> AppendElements(GltfBuffer& buffer, GltfBufferView& view, const void* elements, Int count) noexcept;
  /// Counts and bounds elements that stand in a buffer already, stride bytes apart. Components that are not finite do not count
  /// towards the bounds.
  Result<void> TrackElements(const Byte* first, Int count, Int stride) noexcept;
  /// The same for count unsigned integers, one an element, whose bounds are known.
  Result<void> TrackIntegers(Int min, Int max, Int count) noexcept;
  /// The bounds as they are written: 0 for a component without a finite value.
  Result<Data> MakeMin() const noexcept { return MakeBound(_min); }
  Result<Data> MakeMax() const noexcept { return MakeBound(_max); }

private:
  Result<void> MakeBounds() noexcept;
  Result<Data> MakeBound(const BaseArray<Data>& bound) const noexcept;
  Result<void> ReadElementBytes(Int idx, Byte* bytes) const noexcept;
  template <typename T, int count>
  Result<void> ReadComponents(Int idx, T (&values)[count]) const noexcept;

  Int _bufferViewIndex = -1;  // into bufferViews
  Int _byteOffset = 0;
  UInt32 _componentType = 0;
  Bool _normalized = false;
  Bool _nonIndexed = false;
  Int _count = 0;
  String _type;
  BaseArray<Data> _max;
  BaseArray<Data> _min;
  const GltfBufferView* _bufferView = nullptr;  // set on demand; not owned
  Int _elementByteCount = 0;                    // component size times component count
};

/// Finds an accessor and binds its view and buffer; repeating it is harmless. `accessor` is what the caller's pointer is set to.
/// @param nonIndexedAllowed  whether index -1, the non-indexed accessor, will do.
Result<GltfAccessor*> GetAccessor(GltfData& gltfData, Int32 idx, Bool nonIndexedAllowed) noexcept;

namespace components
{

/// Reads one component of a type as a 64-bit float, exactly as the single-element reads convert it. Signed bytes that are not
/// normalised need to know their element and have no such reader.
template <UInt32 componentType, Bool normalized>
Float ToFloat(const Byte* component) noexcept;
/// The same as an unsigned integer: floats truncate, signed values extend their sign.
template <UInt32 componentType, Bool normalized>
UInt32 ToUInt32(const Byte* component) noexcept;

}  // namespace components

/// Calls body(load) with a function object for the elements' component type: load(pointerToElement, componentIndex) gives the
/// component as a 64-bit float. Signed bytes that are not normalised (5120) take the slow road: body is not called and false is
/// returned; so it is for the non-indexed accessor.
template <typename Body>
Bool WithFloatLoader(const GltfElements& elements, Body&& body) noexcept;

/// The same with load(pointerToElement, componentIndex) giving an unsigned 32-bit integer.
template <typename Body>
Bool WithIndexLoader(const GltfElements& elements, Body&& body) noexcept;

}  // namespace q7z

#include "plugin/document/gltfcomponents.h"
