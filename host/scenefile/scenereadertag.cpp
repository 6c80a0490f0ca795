// Tags.

#include <algorithm>

#include "host/scenefile/scenereader.h"

namespace q7z
{

namespace
{

/// The members that a tag's type adds to those of all tags.
std::vector<std::string_view> GetOwnMembers(Int32 type)
{
  switch (type)
  {
    case kNormalTagType: return {"normals"};
    case kUvwTagType: return {"uvws"};
    case kVertexColorTagType: return {"perPoint", "colors"};
    case kPolygonSelectionTagType: return {"polygons"};
    case kTextureTagType: return {"material"};
    case kPhongTagType: return {"on", "limit", "angle"};
    case kWeightTagType: return {"joints", "weights", "bind"};
    case kPoseMorphTagType: return {"morphs"};
    default: return {};
  }
}

Int GetPointCount(const HeadlessTag& tag) noexcept
{
  const HeadlessPolygonObject* const object = tag.GetObject()->AsPolygonObject();
  return object ? object->GetPointCount() : 0;
}

Int GetPolygonCount(const HeadlessTag& tag) noexcept
{
  const HeadlessPolygonObject* const object = tag.GetObject()->AsPolygonObject();
  return object ? object->GetPolygonCount() : 0;
}

}  // namespace

Result<void> SceneReader::ReadTag(const JsonNode& node, HeadlessObject& object)
{
  Int32 type = 0;
  RETURN_IF_ERROR(CheckObject(node));
  RETURN_IF_ERROR(RequireMember(node, "type", type));
  std::vector<std::string_view> names = GetOwnMembers(type);
  names.insert(names.end(), {"id", "type", "name", "parameters", "tracks"});
  RETURN_IF_ERROR(CheckMembers(node, "a tag of type " + std::to_string(type), names));
  HeadlessTag* const tag = HeadlessTag::Create(type);
  CHECK_MEMORY(tag);
  tag->InsertInto(&object);
  RETURN_IF_ERROR(ReadId(node, *tag));
  RETURN_IF_ERROR(ReadName(node, *tag));
  RETURN_IF_ERROR(ReadTableMember(node, "parameters", tag->GetParameters()));
  RETURN_IF_ERROR(ReadTagContent(node, *tag));
  return ReadTracks(node, *tag);
}

Result<void> SceneReader::ReadTagContent(const JsonNode& node, HeadlessTag& tag)
{
  switch (tag.GetType())
  {
    case kNormalTagType: return ReadCorners(node, "normals", static_cast<HeadlessCornerTag&>(tag));
    case kUvwTagType: return ReadCorners(node, "uvws", static_cast<HeadlessCornerTag&>(tag));
    case kVertexColorTagType: return ReadColors(node, static_cast<HeadlessVertexColorTag&>(tag));
    case kPolygonSelectionTagType: return ReadSelection(node, static_cast<HeadlessSelectionTag&>(tag));
    case kTextureTagType: return ReadTexture(node, static_cast<HeadlessTextureTag&>(tag));
    case kPhongTagType: return ReadPhong(node, static_cast<HeadlessPhongTag&>(tag));
    case kPoseMorphTagType: return ReadMorphs(node, static_cast<HeadlessPoseMorphTag&>(tag));
    case kWeightTagType: _weights.push_back({&node, static_cast<HeadlessWeightTag*>(&tag)}); return {};
    default: return {};
  }
}

namespace
{

/// Whether all numbers of an array have texts of 32-bit numbers. A packed array knows; of another one each element does.
Bool IsSingleArray(const JsonNode& array) noexcept
{
  if (array.kind != JsonKind::kArray)
    return array.isSingle;
  return std::all_of(array.elements, array.elements + array.count, [](const JsonNode& element) { return element.isSingle; });
}

}  // namespace

/// A tag without the member has no data.
Result<void> SceneReader::ReadCorners(const JsonNode& node, std::string_view name, HeadlessCornerTag& tag)
{
  const JsonNode* const array = node.Find(name);
  if (!array)
    return {};
  const Int polygonCount = GetPolygonCount(tag);
  RETURN_IF_ERROR(CheckCount(*array, 12 * polygonCount, "numbers"));
  const Bool asDoubles = !IsSingleArray(*array);
  CHECK_MEMORY(tag.Resize(polygonCount, asDoubles));
  const HostCornerHandle handle = tag.GetHandleW(asDoubles);
  if (!handle)
    return {};
  return asDoubles ? ReadNumbers(*array, handle.doubles) : ReadSingles(*array, handle.singles);
}

Result<void> SceneReader::ReadColors(const JsonNode& node, HeadlessVertexColorTag& tag)
{
  Bool perPoint = true;
  RETURN_IF_ERROR(ReadMember(node, "perPoint", perPoint));
  CHECK_MEMORY(tag.Resize(0, perPoint));
  const JsonNode* const array = node.Find("colors");
  if (!array)
    return {};
  const Int count = perPoint ? GetPointCount(tag) : GetPolygonCount(tag);
  RETURN_IF_ERROR(CheckCount(*array, (perPoint ? 4 : 16) * count, "numbers"));
  CHECK_MEMORY(tag.Resize(count, perPoint));
  const HostColorHandle handle = tag.GetHandleW();
  return handle ? ReadSingles(*array, handle.colors) : Result<void>();
}

Result<void> SceneReader::ReadSelection(const JsonNode& node, HeadlessSelectionTag& tag)
{
  std::vector<SelectionRange> ranges;
  const Int polygonCount = GetPolygonCount(tag);
  RETURN_IF_ERROR(ForEachNode(node.Find("polygons"),
                              [&](const JsonNode& pair, Int)
                              {
                                ranges.emplace_back();
                                return ReadRange(pair, polygonCount, ranges.back());
                              }));
  // In this order each range goes to the end of the selection.
  std::sort(ranges.begin(), ranges.end(), [](const SelectionRange& a, const SelectionRange& b) { return a.first < b.first; });
  for (const SelectionRange& range : ranges)
    CHECK_MEMORY(tag.GetSelection().SelectRange(range.first, range.last));
  return {};
}

Result<void> SceneReader::ReadRange(const JsonNode& pair, Int polygonCount, SelectionRange& range)
{
  RETURN_IF_ERROR(CheckCount(pair, 2, "polygons"));
  RETURN_IF_ERROR(ReadInt32Element(pair, 0, range.first));
  RETURN_IF_ERROR(ReadInt32Element(pair, 1, range.last));
  for (Int i = 0; i < 2; ++i)
  {
    const Int polygon = pair.GetElement(i).whole;
    if (polygon < 0 || polygon >= polygonCount)
      return MakeIndexError(pair, i, "polygon", polygonCount);
  }
  return range.first <= range.last ? Result<void>()
                                   : _tree.MakeError(pair, "the first polygon of a range stands behind its last");
}

Result<void> SceneReader::ReadTexture(const JsonNode& node, HeadlessTextureTag& tag)
{
  const JsonNode* const material = node.Find("material");
  if (!material)
    return {};
  return ReadLink(*material, LinkTarget::kMaterial,
                  [&tag](HeadlessNamedNode* target) { return tag.SetMaterial(static_cast<HeadlessMaterial*>(target)); });
}

Result<void> SceneReader::ReadPhong(const JsonNode& node, HeadlessPhongTag& tag)
{
  PhongSettings settings;
  RETURN_IF_ERROR(ReadMember(node, "on", settings.on));
  RETURN_IF_ERROR(ReadMember(node, "limit", settings.limit));
  RETURN_IF_ERROR(ReadMember(node, "angle", settings.angleRadians));
  tag.SetSettings(settings);
  return {};
}

// Morphs.

Result<void> SceneReader::ReadMorphs(const JsonNode& node, HeadlessPoseMorphTag& tag)
{
  return ForEachNode(node.Find("morphs"),
                     [&](const JsonNode& element, Int) -> Result<void>
                     {
                       HeadlessMorph* const morph = tag.AddMorph();
                       CHECK_MEMORY(morph);
                       return ReadMorph(element, *morph);
                     });
}

Result<void> SceneReader::ReadMorph(const JsonNode& node, HeadlessMorph& morph)
{
  String name;
  Float strength = 0;
  RETURN_IF_ERROR(CheckMembers(node, "a morph", {"name", "strength", "object", "points"}));
  RETURN_IF_ERROR(ReadMember(node, "name", name));
  RETURN_IF_ERROR(ReadMember(node, "strength", strength));
  CHECK_MEMORY(morph.SetName(name));
  morph.SetStrength(strength);
  const JsonNode* const object = node.Find("object");
  const JsonNode* const array = node.Find("points");
  if (object && array)
    return _tree.MakeError(node, "a morph has an object or points, not both");
  if (object)
  {
    return ReadLink(*object, LinkTarget::kObject,
                    [&morph](HeadlessNamedNode* target) { return morph.SetObject(static_cast<HeadlessObject*>(target)); });
  }
  HostArray<Vector> points;
  if (!array)
    return {};
  RETURN_IF_ERROR(ReadPoints(*array, points));
  morph.SetPoints(std::move(points));
  return {};
}

// Weights.

Result<void> SceneReader::ReadWeightTag(const JsonNode& node, HeadlessWeightTag& tag)
{
  if (const JsonNode* const joints = node.Find("joints"))
    RETURN_IF_ERROR(ReadJoints(*joints, tag));
  if (const JsonNode* const weights = node.Find("weights"))
    RETURN_IF_ERROR(ReadWeights(*weights, tag));
  const JsonNode* const bind = node.Find("bind");
  return bind ? ReadBindPose(*bind, tag) : Result<void>();
}

Result<void> SceneReader::ReadJoints(const JsonNode& joints, HeadlessWeightTag& tag)
{
  RETURN_IF_ERROR(CheckArray(joints));
  // A joint that is gone is one that goes at once.
  const HeadlessOwner<HeadlessObject> gone(HeadlessObject::Create(kJointObjectType));
  CHECK_MEMORY(gone);
  for (Int i = 0; i < joints.GetElementCount(); ++i)
  {
    const JsonNode element = joints.GetElement(i);
    if (element.kind != JsonKind::kInt && element.kind != JsonKind::kNull)
      return MakeElementKindError(joints, i, "an id or null");
    HeadlessNamedNode* joint = gone.get();
    if (element.kind == JsonKind::kInt)
      joint = FindTarget(element.whole, LinkTarget::kObject);
    if (!joint)
      return _tree.MakeError(joints, i, MakeMissingTargetText(element.whole, LinkTarget::kObject));
    CHECK_MEMORY(tag.AddJoint(static_cast<HeadlessObject*>(joint)) == i);
  }
  return {};
}

Result<void> SceneReader::ReadWeights(const JsonNode& weights, HeadlessWeightTag& tag)
{
  RETURN_IF_ERROR(CheckCount(weights, tag.GetJointCount(), "arrays"));
  return ForEachNode(&weights,
                     [&](const JsonNode& pairs, Int joint) { return ReadJointWeights(pairs, static_cast<Int32>(joint), tag); });
}

Result<void> SceneReader::ReadJointWeights(const JsonNode& pairs, Int32 jointIndex, HeadlessWeightTag& tag)
{
  PointWeight before{-1, 0};
  return ForEachNode(&pairs,
                     [&](const JsonNode& pair, Int) -> Result<void>
                     {
                       PointWeight weight;
                       RETURN_IF_ERROR(ReadPointWeight(pair, GetPointCount(tag), weight));
                       if (weight.point <= before.point)
                         return _tree.MakeError(pair, 0, "a larger point than the one before expected");
                       before = weight;
                       CHECK_MEMORY(weight.weight == 0 || tag.SetWeight(jointIndex, weight.point, weight.weight));
                       return {};
                     });
}

Result<void> SceneReader::ReadPointWeight(const JsonNode& pair, Int pointCount, PointWeight& weight)
{
  RETURN_IF_ERROR(CheckCount(pair, 2, "numbers"));
  RETURN_IF_ERROR(ReadInt32Element(pair, 0, weight.point));
  if (weight.point < 0 || weight.point >= pointCount)
    return MakeIndexError(pair, 0, "point", pointCount);
  if (!pair.GetElement(1).IsNumber())
    return MakeElementKindError(pair, 1, "a number");
  weight.weight = pair.GetElement(1).GetNumber();
  return {};
}

Result<void> SceneReader::ReadBindPose(const JsonNode& bind, HeadlessWeightTag& tag)
{
  HostMatrix object;
  std::vector<HostMatrix> joints(static_cast<size_t>(tag.GetJointCount()));
  RETURN_IF_ERROR(CheckMembers(bind, "a bind pose", {"object", "joints"}));
  RETURN_IF_ERROR(RequireMember(bind, "object", object));
  const JsonNode* const matrices = bind.Find("joints");
  if (!matrices)
    return _tree.MakeError(bind, "joints", "missing");
  RETURN_IF_ERROR(CheckCount(*matrices, tag.GetJointCount(), "matrices"));
  RETURN_IF_ERROR(ForEachNode(matrices, [&](const JsonNode& node, Int i) -> Result<void>
                              { return ReadValue(node, joints[static_cast<size_t>(i)]); }));
  tag.SetBindPose(object, joints.data(), tag.GetJointCount());
  return {};
}

}  // namespace q7z
