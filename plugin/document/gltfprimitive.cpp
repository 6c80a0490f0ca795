#include "plugin/document/gltfprimitive.h"

#include <algorithm>
#include <utility>

#include "framework/check.h"
#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

namespace
{

Result<void> ReadAttributes(const DataDictionary& element, GltfAttributes& attributes) noexcept
{
  for (const DataMember& member : element)
  {
    const Result<Int> value = member.value.GetInt();
    const Bool keyValid = true;  // the names of a dictionary's members are always texts
    // Accessors are numbered with 32 bits; a number beyond is none.
    const Bool valueValid = !value.HasError() && value.GetValue() >= INT32_MIN && value.GetValue() <= INT32_MAX;
    CHECK_STATE(keyValid && valueValid);
    RETURN_IF_ERROR(attributes.Set(member.key.GetName(), static_cast<Int32>(value.GetValue())));
  }
  return {};
}

/// The set's number of an attribute such as COLOR_2 by its prefix COLOR_. @return false for a name that is no such set.
Bool ParseSetNumber(const String& name, const String& prefix, Int32& number) noexcept
{
  Int parsed = 0;
  if (!name.StartsWith(prefix) || !name.GetPart(prefix.GetByteCount(), name.GetByteCount()).ParseInt(parsed))
    return false;
  number = static_cast<Int32>(parsed);
  return number == parsed;
}

/// Into rising order. Two names may spell one number, such as COLOR_0 and COLOR_00.
Result<void> SortSets(GltfAttributeSets& sets) noexcept
{
  const auto less = [](const GltfAttributeSet& a, const GltfAttributeSet& b) { return a.number < b.number; };
  const auto same = [](const GltfAttributeSet& a, const GltfAttributeSet& b) { return a.number == b.number; };
  std::sort(sets.begin(), sets.end(), less);
  if (std::adjacent_find(sets.begin(), sets.end(), same) != sets.end())
    return MAKE_ERROR(ErrorClass::kIllegalState, "Illegal state: Set duplication occured"_s);
  return {};
}

}  // namespace

GltfAccessor* FindSet(const GltfAttributeSets& sets, Int32 number) noexcept
{
  const auto less = [](const GltfAttributeSet& set, Int32 wanted) { return set.number < wanted; };
  const GltfAttributeSet* const found = std::lower_bound(sets.begin(), sets.end(), number, less);
  return found != sets.end() && found->number == number ? found->accessor : nullptr;
}

Result<void> PrimitiveAccessors::Classify(const GltfAttributes& attributes, GltfData& gltfData) noexcept
{
  const struct
  {
    String prefix;
    GltfAttributeSets& sets;
  } families[] = {{"COLOR_"_s, colors},
                  {"TEXCOORD_"_s, uvs},
                  {"JOINTS_"_s, _skinJointsAccessors},
                  {"WEIGHTS_"_s, _skinWeightsAccessors}};

  for (const auto& attribute : attributes)
  {
    const String& name = attribute.GetKey();
    const Int32 index = attribute.GetValue();
    if (name == "POSITION"_s)
    {
      ASSIGN_OR_RETURN(positions, GetAccessor(gltfData, index, false));
      continue;
    }
    if (name == "NORMAL"_s)
    {
      ASSIGN_OR_RETURN(normals, GetAccessor(gltfData, index, false));
      continue;
    }
    for (const auto& family : families)
    {
      Int32 number = 0;
      if (!ParseSetNumber(name, family.prefix, number))
        continue;
      ASSIGN_OR_RETURN(GltfAccessor * accessor, GetAccessor(gltfData, index, false));
      RETURN_IF_ERROR(family.sets.Append({number, accessor}));
      break;
    }
  }
  for (const auto& family : families)
    RETURN_IF_ERROR(SortSets(family.sets));
  return {};
}

Result<void> GltfPrimitive::ReadFromJson(const DataDictionary& element) noexcept
{
  _indices = ReadInt(element, keys::kIndices, -1);
  _material = ReadInt(element, keys::kMaterial, -1);
  _mode = ReadInt(element, keys::kAlphaMode, 4);
  ASSIGN_OR_RETURN(const DataDictionary attributes, ReadDictionary(element, keys::kAttributes));
  RETURN_IF_ERROR(ReadAttributes(attributes, _attributes));
  const auto readTarget = [this](const DataDictionary& target, Int) -> Bool
  {
    GltfAttributes targetAttributes;
    return !ReadAttributes(target, targetAttributes).HasError() && !_targets.Append(std::move(targetAttributes)).HasError() &&
           !_targetsAccessors.Append(PrimitiveAccessors()).HasError();
  };
  RETURN_IF_ERROR(ForEachElement(element, keys::kTargets, readTarget));
  return {};
}

Result<void> GltfPrimitive::Resolve(GltfData& gltfData) noexcept
{
  // The index is cut to 32 bits, as the accessors are numbered; -1 finds the non-indexed accessor.
  ASSIGN_OR_RETURN(_primAccessors.indices, GetAccessor(gltfData, static_cast<Int32>(_indices), true));
  RETURN_IF_ERROR(_primAccessors.Classify(_attributes, gltfData));
  CHECK_STATE(_targets.GetCount() == _targetsAccessors.GetCount());
  for (Int i = 0; i < _targets.GetCount(); ++i)
    RETURN_IF_ERROR(_targetsAccessors[i].Classify(_targets[i], gltfData));
  return {};
}

Bool GltfPrimitive::IsValid() const noexcept
{
  return _primAccessors.positions && _primAccessors.positions->GetCount() != 0;
}

Result<void> GltfPrimitive::CheckValid() const noexcept
{
  CHECK_STATE(IsValid());
  return {};
}

Result<GltfPrimitive::Counts> GltfPrimitive::GetCounts() const noexcept
{
  const GltfAccessor* const posAcc = _primAccessors.positions;
  CHECK_STATE(posAcc);
  const GltfAccessor* const idxAcc = _primAccessors.indices;
  CHECK_STATE(idxAcc);
  // A file may declare counts below 0; they are as good as none.
  const Int vertexCount = std::max(posAcc->GetCount(), Int(0));
  const Int indexCount = idxAcc->IsNonIndexed() ? vertexCount : std::max(idxAcc->GetCount(), Int(0));
  const std::pair<Int, Int> result(vertexCount, indexCount / 3);
  CHECK_STATE(result.first && result.second);
  return Counts{.vertexCount = vertexCount, .indexCount = indexCount, .polygonCount = indexCount / 3};
}

}  // namespace q7z
