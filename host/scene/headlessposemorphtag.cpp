#include "host/scene/headlessposemorphtag.h"

#include <new>

#include "framework/result.h"
#include "host/scene/headlessobject.h"

namespace q7z
{

namespace
{

constexpr Int32 kContainerDataType = 5;
constexpr Int32 kFirstStrength = 1001;
constexpr Int32 kStrengthStep = 100;

}  // namespace

Bool HeadlessMorph::SetName(const String& name) noexcept
{
  Result<String> copy = name.Copy();
  if (copy.HasError())
    return false;
  _name = std::move(copy).GetValue();
  return true;
}

HeadlessObject* HeadlessMorph::GetObject() const noexcept
{
  return _object.GetAs<HeadlessObject>();
}

Bool HeadlessMorph::SetObject(HeadlessObject* object) noexcept
{
  if (!_object.Set(object))
    return false;
  _pointNode.SetPoints({});
  _hasPoints = false;
  return true;
}

void HeadlessMorph::SetPoints(HostArray<Vector> points) noexcept
{
  _object.Clear();
  _pointNode.SetPoints(std::move(points));
  _hasPoints = true;
}

void HeadlessMorph::CopyFrom(const HeadlessMorph& other) noexcept
{
  _name = other._name;
  _strength = other._strength;
  _object = other._object;
  _pointNode = other._pointNode;
  _hasPoints = other._hasPoints;
}

HeadlessMorph* HeadlessPoseMorphTag::GetMorph(Int32 index) const noexcept
{
  return index >= 0 && index < GetMorphCount() ? _morphs[index].get() : nullptr;
}

HeadlessMorph* HeadlessPoseMorphTag::AddMorph() noexcept
{
  // The last morph's strength still has an id.
  if (GetMorphCount() >= (INT32_MAX - kFirstStrength) / kStrengthStep)
    return nullptr;
  std::unique_ptr<HeadlessMorph> morph(new (std::nothrow) HeadlessMorph(this, GetMorphCount()));
  if (!morph || _morphs.Append(std::move(morph)).HasError())
    return nullptr;
  return _morphs.GetLast().get();
}

Bool HeadlessPoseMorphTag::StoreObject(HeadlessMorph* morph, HeadlessObject* object) noexcept
{
  HeadlessPolygonObject* const polygonObject = object ? object->AsPolygonObject() : nullptr;
  if (!morph || morph->GetTag() != this || !polygonObject)
    return false;
  if (morph->GetIndex() > 0)
    return morph->SetObject(object);
  morph->SetPoints(polygonObject->GetPoints());
  object->Remove();
  HeadlessNode::Free(object);
  return true;
}

HostDescId HeadlessPoseMorphTag::GetStrengthId(Int32 index) noexcept
{
  return HostDescId({kStrengthParameter, kContainerDataType, 0}, {index * kStrengthStep + kFirstStrength, kRealDataType, 0});
}

HeadlessMorph* HeadlessPoseMorphTag::FindByStrengthId(const HostDescId& id) const noexcept
{
  if (id.GetDepth() != 2 || id[0].id != kStrengthParameter || id[1].id < kFirstStrength)
    return nullptr;
  const Int32 offset = id[1].id - kFirstStrength;
  return offset % kStrengthStep == 0 ? GetMorph(offset / kStrengthStep) : nullptr;
}

HeadlessNode::ParameterAnswer HeadlessPoseMorphTag::GetOwnParameter(const HostDescId& id, HostValue& value) const noexcept
{
  const HeadlessMorph* const morph = FindByStrengthId(id);
  if (!morph)
    return ParameterAnswer::kNotMine;
  value = HostValue(morph->GetStrength());
  return ParameterAnswer::kDone;
}

HeadlessNode::ParameterAnswer HeadlessPoseMorphTag::SetOwnParameter(const HostDescId& id, const HostValue& value) noexcept
{
  HeadlessMorph* const morph = FindByStrengthId(id);
  if (!morph)
    return ParameterAnswer::kNotMine;
  if (!IsNumber(value))
    return ParameterAnswer::kRefused;
  morph->SetStrength(value.GetFloat());
  return ParameterAnswer::kDone;
}

void HeadlessPoseMorphTag::VisitLinks(LinkVisitor visit, void* context) noexcept
{
  HeadlessNode::VisitLinks(visit, context);
  for (const std::unique_ptr<HeadlessMorph>& morph : _morphs)
    visit(context, morph->GetLink());
}

Bool HeadlessPoseMorphTag::CopyDataFrom(const HeadlessTag& other) noexcept
{
  const auto& source = static_cast<const HeadlessPoseMorphTag&>(other);
  for (const std::unique_ptr<HeadlessMorph>& morph : source._morphs)
  {
    HeadlessMorph* const copy = AddMorph();
    if (!copy)
      return false;
    copy->CopyFrom(*morph);
  }
  return true;
}

}  // namespace q7z
