// Tracks and keys.

#include <cmath>

#include "host/scenefile/scenereader.h"

namespace q7z
{

Result<void> SceneReader::ReadTracks(const JsonNode& owner, HeadlessNode& node)
{
  HeadlessTrack* before = nullptr;
  return ForEachNode(owner.Find("tracks"), [&](const JsonNode& element, Int) { return ReadTrack(element, node, before); });
}

/// Tracks stand by rising id, so that each goes to the end of the list.
Result<void> SceneReader::ReadTrack(const JsonNode& node, HeadlessNode& owner, HeadlessTrack*& before)
{
  HostDescId id;
  RETURN_IF_ERROR(CheckMembers(node, "a track", {"id", "keys"}));
  const JsonNode* const levels = node.Find("id");
  if (!levels)
    return _tree.MakeError(node, "id", "missing");
  RETURN_IF_ERROR(ReadTrackId(*levels, id));
  if (before && !(before->GetId() < id))
    return _tree.MakeError(*levels, "a larger id than that of the track before expected");
  HeadlessTrack* const track = HeadlessTrack::Create(id);
  CHECK_MEMORY(track);
  CHECK_MEMORY(track->InsertInto(&owner));
  before = track;
  const JsonNode* const keys = node.Find("keys");
  if (!keys)
    return {};
  CHECK_MEMORY(track->FindOrMakeCurve());
  return ReadKeys(*keys, *track->GetCurve());
}

Result<void> SceneReader::ReadTrackId(const JsonNode& array, HostDescId& id)
{
  HostDescLevel levels[3];
  RETURN_IF_ERROR(CheckArray(array));
  const Int depth = array.GetElementCount();
  if (depth < 1 || depth > 3)
    return _tree.MakeError(array, "1 to 3 levels expected, " + std::to_string(depth) + " found");
  RETURN_IF_ERROR(ForEachNode(&array, [&](const JsonNode& node, Int i) { return ReadTrackLevel(node, levels[i]); }));
  if (depth == 3)
    id = HostDescId(levels[0], levels[1], levels[2]);
  else
    id = depth == 2 ? HostDescId(levels[0], levels[1]) : HostDescId(levels[0]);
  return {};
}

Result<void> SceneReader::ReadTrackLevel(const JsonNode& array, HostDescLevel& level)
{
  Int32 numbers[3] = {};
  RETURN_IF_ERROR(CheckCount(array, 3, "whole numbers"));
  for (Int i = 0; i < 3; ++i)
    RETURN_IF_ERROR(ReadInt32Element(array, i, numbers[i]));
  level = {numbers[0], numbers[1], numbers[2]};
  return {};
}

Result<void> SceneReader::ReadKeys(const JsonNode& array, HeadlessCurve& curve)
{
  RETURN_IF_ERROR(CheckArray(array));
  CHECK_MEMORY(curve.Reserve(array.GetElementCount()));
  const HeadlessKey* before = nullptr;
  return ForEachNode(&array,
                     [&](const JsonNode& node, Int index) -> Result<void>
                     {
                       RETURN_IF_ERROR(ReadKey(node, before, curve));
                       before = curve.GetKey(index);
                       return {};
                     });
}

/// Keys stand in time order, so that each goes to the end of the curve.
Result<void> SceneReader::ReadKey(const JsonNode& node, const HeadlessKey* before, HeadlessCurve& curve)
{
  HostTime time;
  RETURN_IF_ERROR(CheckMembers(node, "a key",
                               {"time", "value", "interpolation", "left", "right", "rotationMode", "auxiliaryMode", "parameters",
                                "points"}));
  RETURN_IF_ERROR(RequireMember(node, "time", time));
  if (!std::isfinite(time.GetSeconds()))
    return _tree.MakeError(node, "time", "a finite time expected");
  if (before && !(before->GetTime().GetSeconds() < time.GetSeconds()))
    return _tree.MakeError(node, "time", "a later time than that of the key before expected");
  HeadlessKey* const key = curve.AddKey(time, nullptr);
  CHECK_MEMORY(key);
  return ReadKeyContent(node, *key);
}

Result<void> SceneReader::ReadKeyContent(const JsonNode& node, HeadlessKey& key)
{
  Float value = 0;
  RETURN_IF_ERROR(ReadMember(node, "value", value));
  key.SetValue(value);
  if (const JsonNode* const interpolation = node.Find("interpolation"))
  {
    Int32 mode = 0;
    RETURN_IF_ERROR(ReadInt32InRange(*interpolation, 1, 3, mode));
    key.SetInterpolation(static_cast<InterpolationMode>(mode));
  }
  KeyTangent left;
  KeyTangent right;
  RETURN_IF_ERROR(ReadTangent(node, "left", left));
  RETURN_IF_ERROR(ReadTangent(node, "right", right));
  CHECK_MEMORY(!left.isSet || key.SetLeftTangent(left.time, left.value));
  CHECK_MEMORY(!right.isSet || key.SetRightTangent(right.time, right.value));
  if (const JsonNode* const array = node.Find("rotationMode"))
  {
    KeyRotationMode mode;
    RETURN_IF_ERROR(ReadRotationMode(*array, mode));
    CHECK_MEMORY(key.SetRotationMode(mode));
  }
  if (const JsonNode* const auxiliary = node.Find("auxiliaryMode"))
  {
    Int32 mode = 0;
    RETURN_IF_ERROR(ReadValue(*auxiliary, mode));
    CHECK_MEMORY(key.SetAuxiliaryMode(mode));
  }
  if (const JsonNode* const table = node.Find("parameters"))
    RETURN_IF_ERROR(ReadKeyParameters(*table, key));
  HostArray<Vector> points;
  if (const JsonNode* const array = node.Find("points"))
    RETURN_IF_ERROR(ReadPoints(*array, points));
  CHECK_MEMORY(key.SetPoints(std::move(points)));
  return {};
}

/// Most keys have the one setting that costs no table.
Result<void> SceneReader::ReadKeyParameters(const JsonNode& table, HeadlessKey& key)
{
  const Bool isSingle = table.kind == JsonKind::kObject && table.count == 1 && table.members[0].value.kind == JsonKind::kInt;
  HostDescId id;
  if (isSingle && ParseDescId(table.members[0].name, id))
  {
    CHECK_MEMORY(key.SetParameter(id, HostValue(table.members[0].value.whole)));
    return {};
  }
  HeadlessContainer* const parameters = key.FindOrMakeParameters();
  CHECK_MEMORY(parameters);
  return ReadTable(table, *parameters);
}

Result<void> SceneReader::ReadTangent(const JsonNode& key, std::string_view name, KeyTangent& tangent)
{
  const JsonNode* const node = key.Find(name);
  if (!node)
    return {};
  RETURN_IF_ERROR(CheckMembers(*node, "a tangent", {"time", "value"}));
  RETURN_IF_ERROR(RequireMember(*node, "time", tangent.time));
  RETURN_IF_ERROR(RequireMember(*node, "value", tangent.value));
  tangent.isSet = true;
  return {};
}

/// A number and two truth values.
Result<void> SceneReader::ReadRotationMode(const JsonNode& array, KeyRotationMode& mode)
{
  RETURN_IF_ERROR(CheckCount(array, 3, "arguments"));
  RETURN_IF_ERROR(ReadInt32Element(array, 0, mode.mode));
  for (Int i = 1; i < 3; ++i)
  {
    if (array.GetElement(i).kind != JsonKind::kBool)
      return MakeElementKindError(array, i, "true or false");
  }
  mode.first = array.GetElement(1).boolean;
  mode.second = array.GetElement(2).boolean;
  return {};
}

}  // namespace q7z
