#include "host/scene/headlesstag.h"

#include <new>

#include "host/scene/headlessmaterial.h"
#include "host/scene/headlessobject.h"
#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlessweighttag.h"

namespace q7z
{

HeadlessTag* HeadlessTag::MakeEmpty(Int32 type) noexcept
{
  switch (type)
  {
    case kNormalTagType:
    case kUvwTagType: return new (std::nothrow) HeadlessCornerTag(type);
    case kVertexColorTagType: return new (std::nothrow) HeadlessVertexColorTag(type);
    case kPolygonSelectionTagType: return new (std::nothrow) HeadlessSelectionTag(type);
    case kTextureTagType: return new (std::nothrow) HeadlessTextureTag(type);
    case kPhongTagType: return new (std::nothrow) HeadlessPhongTag(type);
    case kWeightTagType: return new (std::nothrow) HeadlessWeightTag(type);
    case kPoseMorphTagType: return new (std::nothrow) HeadlessPoseMorphTag(type);
    default: return new (std::nothrow) HeadlessTag(type);
  }
}

Bool HeadlessTag::IsKnownType(Int32 type) noexcept
{
  switch (type)
  {
    case kNormalTagType:
    case kUvwTagType:
    case kVertexColorTagType:
    case kPolygonSelectionTagType:
    case kTextureTagType:
    case kPhongTagType:
    case kWeightTagType:
    case kPoseMorphTagType:
    case kNodeBasedTagType: return true;
    default: return false;
  }
}

HeadlessTag* HeadlessTag::Create(Int32 type, Int32 count) noexcept
{
  HeadlessOwner<HeadlessTag> tag(count >= 0 ? MakeEmpty(type) : nullptr);
  if (!tag)
    return nullptr;
  const Bool hasCorners = type == kNormalTagType || type == kUvwTagType;
  if (hasCorners && !static_cast<HeadlessCornerTag&>(*tag).Resize(count))
    return nullptr;
  if (type == kVertexColorTagType && !static_cast<HeadlessVertexColorTag&>(*tag).Resize(count, true))
    return nullptr;
  return tag.release();
}

HeadlessDocument* HeadlessTag::GetDocument() const noexcept
{
  return _object ? _object->GetDocument() : nullptr;
}

void HeadlessTag::InsertInto(HeadlessObject* object) noexcept
{
  if (TakeOut())
    CountMistake(GetSceneDiagnostics().insertedTwice);
  _object = object;
  _previous = object->_lastTag;
  (_previous ? _previous->_next : object->_firstTag) = this;
  object->_lastTag = this;
}

Bool HeadlessTag::TakeOut() noexcept
{
  if (!_object)
    return false;
  (_previous ? _previous->_next : _object->_firstTag) = _next;
  (_next ? _next->_previous : _object->_lastTag) = _previous;
  _object = nullptr;
  _previous = _next = nullptr;
  return true;
}

HeadlessTag* HeadlessTag::Clone() const noexcept
{
  HeadlessOwner<HeadlessTag> copy(MakeEmpty(GetType()));
  if (!copy || !copy->CopyCommonFrom(*this) || !copy->CopyDataFrom(*this))
    return nullptr;
  return copy.release();
}

// Corner data.

Bool HeadlessCornerTag::Resize(Int polygonCount, Bool asDoubles) noexcept
{
  Int numberCount = 0;
  HostArray<Float32> singles;
  HostArray<Float> doubles;
  if (!CheckedMultiply(polygonCount, 12, numberCount))
    return false;
  if (asDoubles ? !doubles.Create(numberCount) : !singles.Create(numberCount))
    return false;
  _singles = std::move(singles);
  _doubles = std::move(doubles);
  return true;
}

Bool HeadlessCornerTag::SwitchToDoubles() noexcept
{
  const Int count = _singles.GetCount();
  HostArray<Float> doubles;
  if (!doubles.Create(count))
    return false;
  const Float32* const source = _singles.GetR();
  Float* const target = doubles.GetW();
  for (Int i = 0; i < count; ++i)
    target[i] = source[i];
  _doubles = std::move(doubles);
  _singles.Reset();
  return true;
}

HostCornerHandle HeadlessCornerTag::GetHandleW(Bool needsDoubles) noexcept
{
  if (needsDoubles && !IsDouble() && !SwitchToDoubles())
    return {};
  HostCornerHandle handle;
  handle.singles = _singles.GetW();
  handle.doubles = _doubles.GetW();
  handle.polygonCount = handle ? GetPolygonCount() : 0;
  return handle;
}

HostCornerHandle HeadlessCornerTag::GetHandleR() const noexcept
{
  HostCornerHandle handle;
  handle.singles = const_cast<Float32*>(_singles.GetR());
  handle.doubles = const_cast<Float*>(_doubles.GetR());
  handle.polygonCount = GetPolygonCount();
  return handle;
}

void HeadlessCornerTag::SetNumbers(HostArray<Float32> singles, HostArray<Float> doubles) noexcept
{
  _singles = std::move(singles);
  _doubles = std::move(doubles);
}

Bool HeadlessCornerTag::CopyDataFrom(const HeadlessTag& other) noexcept
{
  const auto& source = static_cast<const HeadlessCornerTag&>(other);
  _singles = source._singles;
  _doubles = source._doubles;
  return true;
}

// Colours.

Bool HeadlessVertexColorTag::Resize(Int count, Bool perPoint) noexcept
{
  Int numberCount = 0;
  HostArray<Float32> colors;
  if (!CheckedMultiply(count, perPoint ? 4 : 16, numberCount) || !colors.Create(numberCount))
    return false;
  Float32* const numbers = colors.GetW();
  for (Int i = 3; i < numberCount; i += 4)
    numbers[i] = 1;
  _colors = std::move(colors);
  _perPoint = perPoint;
  return true;
}

Bool HeadlessVertexColorTag::SetPerPoint(Bool perPoint) noexcept
{
  if (perPoint == _perPoint)
    return true;
  const HeadlessPolygonObject* const object = GetObject() ? GetObject()->AsPolygonObject() : nullptr;
  if (!object)
    return Resize(0, perPoint);
  return Resize(perPoint ? object->GetPointCount() : object->GetPolygonCount(), perPoint);
}

HostColorHandle HeadlessVertexColorTag::GetHandleW() noexcept
{
  Float32* const colors = _colors.GetW();
  return {colors, colors ? GetCount() : 0};
}

HostColorHandle HeadlessVertexColorTag::GetHandleR() const noexcept
{
  return {const_cast<Float32*>(_colors.GetR()), GetCount()};
}

Bool HeadlessVertexColorTag::CopyDataFrom(const HeadlessTag& other) noexcept
{
  const auto& source = static_cast<const HeadlessVertexColorTag&>(other);
  _colors = source._colors;
  _perPoint = source._perPoint;
  return true;
}

// Selections, materials, phong.

Bool HeadlessSelectionTag::CopyDataFrom(const HeadlessTag& other) noexcept
{
  return _selection.CopyFrom(static_cast<const HeadlessSelectionTag&>(other)._selection);
}

HeadlessMaterial* HeadlessTextureTag::GetMaterial() const noexcept
{
  return _material.GetAs<HeadlessMaterial>();
}

Bool HeadlessTextureTag::SetMaterial(HeadlessMaterial* material) noexcept
{
  return _material.Set(material);
}

void HeadlessTextureTag::VisitLinks(LinkVisitor visit, void* context) noexcept
{
  HeadlessNode::VisitLinks(visit, context);
  visit(context, _material);
}

Bool HeadlessTextureTag::CopyDataFrom(const HeadlessTag& other) noexcept
{
  _material = static_cast<const HeadlessTextureTag&>(other)._material;
  return true;
}

Bool HeadlessPhongTag::CopyDataFrom(const HeadlessTag& other) noexcept
{
  _settings = static_cast<const HeadlessPhongTag&>(other)._settings;
  return true;
}

}  // namespace q7z
