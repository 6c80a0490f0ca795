// Tags.

#include "host/scenefile/scenewriter.h"

namespace q7z
{

void SceneWriter::WriteTags(const HeadlessObject& object)
{
  if (!object.GetFirstTag())
    return;
  _json.WriteKey("tags");
  _json.BeginArray();
  for (const HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
    WriteTag(*tag);
  _json.EndArray();
}

void SceneWriter::WriteTag(const HeadlessTag& tag)
{
  _json.BeginObject();
  WriteNextId();
  WriteIntMember("type", tag.GetType());
  WriteName(tag);
  WriteTable("parameters", tag.GetParameters());
  WriteTracks(*tag.GetTracks());
  WriteTagContent(tag);
  _json.EndObject();
}

void SceneWriter::WriteTagContent(const HeadlessTag& tag)
{
  switch (tag.GetType())
  {
    case kNormalTagType: WriteCorners("normals", static_cast<const HeadlessCornerTag&>(tag)); break;
    case kUvwTagType: WriteCorners("uvws", static_cast<const HeadlessCornerTag&>(tag)); break;
    case kVertexColorTagType: WriteColors(static_cast<const HeadlessVertexColorTag&>(tag)); break;
    case kPolygonSelectionTagType: WriteSelection(static_cast<const HeadlessSelectionTag&>(tag)); break;
    case kTextureTagType:
      if (const Int material = FindId(static_cast<const HeadlessTextureTag&>(tag).GetMaterial()))
        WriteIntMember("material", material);
      break;
    case kPhongTagType: WritePhong(static_cast<const HeadlessPhongTag&>(tag)); break;
    case kWeightTagType: WriteWeights(static_cast<const HeadlessWeightTag&>(tag)); break;
    case kPoseMorphTagType: WriteMorphs(static_cast<const HeadlessPoseMorphTag&>(tag)); break;
    default: break;
  }
}

void SceneWriter::WriteCorners(std::string_view name, const HeadlessCornerTag& tag)
{
  const HostCornerHandle handle = tag.GetHandleR();
  if (!handle)
    return;
  _json.WriteKey(name);
  if (handle.singles)
    _json.WriteSingles(handle.singles, 12 * handle.polygonCount);
  else
    _json.WriteDoubles(handle.doubles, 12 * handle.polygonCount);
}

void SceneWriter::WriteColors(const HeadlessVertexColorTag& tag)
{
  const HostColorHandle handle = tag.GetHandleR();
  WriteBoolMember("perPoint", tag.IsPerPoint());
  if (!handle)
    return;
  _json.WriteKey("colors");
  _json.WriteSingles(handle.colors, (tag.IsPerPoint() ? 4 : 16) * handle.count);
}

void SceneWriter::WriteSelection(const HeadlessSelectionTag& tag)
{
  if (tag.GetSelection().IsEmpty())
    return;
  _json.WriteKey("polygons");
  _json.BeginArray(JsonLayout::kInline);
  for (const SelectionRange& range : tag.GetSelection().GetRanges())
  {
    const Int32 numbers[2] = {range.first, range.last};
    _json.WriteInts(numbers, 2);
  }
  _json.EndArray();
}

void SceneWriter::WritePhong(const HeadlessPhongTag& tag)
{
  WriteBoolMember("on", tag.GetSettings().on);
  WriteBoolMember("limit", tag.GetSettings().limit);
  WriteFloatMember("angle", tag.GetSettings().angleRadians);
}

// Morphs.

void SceneWriter::WriteMorphs(const HeadlessPoseMorphTag& tag)
{
  if (tag.GetMorphCount() == 0)
    return;
  _json.WriteKey("morphs");
  _json.BeginArray();
  for (Int32 i = 0; i < tag.GetMorphCount(); ++i)
    WriteMorph(*tag.GetMorph(i));
  _json.EndArray();
}

void SceneWriter::WriteMorph(const HeadlessMorph& morph)
{
  _json.BeginObject();
  if (morph.GetName().IsPopulated())
    WriteTextMember("name", morph.GetName().GetView());
  WriteFloatMember("strength", morph.GetStrength());
  if (const HeadlessPointNode* const points = morph.GetPointNode())
    WritePoints(points->GetPoints());
  else if (const Int object = FindId(morph.GetObject()))
    WriteIntMember("object", object);
  _json.EndObject();
}

// Weights.

void SceneWriter::WriteWeights(const HeadlessWeightTag& tag)
{
  if (tag.GetJointCount() > 0)
  {
    _json.WriteKey("joints");
    _json.BeginArray(JsonLayout::kInline);
    for (Int32 i = 0; i < tag.GetJointCount(); ++i)
      WriteIdOrNull(tag.GetJoint(i));
    _json.EndArray();
    _json.WriteKey("weights");
    _json.BeginArray();
    for (Int32 i = 0; i < tag.GetJointCount(); ++i)
      WriteJointWeights(tag, i);
    _json.EndArray();
  }
  if (tag.HasBindPose())
    WriteBindPose(tag);
}

void SceneWriter::WriteJointWeights(const HeadlessWeightTag& tag, Int32 joint)
{
  _json.BeginArray(JsonLayout::kInline);
  for (const PointWeight& weight : tag.GetWeights(joint))
  {
    if (weight.weight == 0)
      continue;
    _json.BeginArray();
    _json.WriteInt(weight.point);
    _json.WriteFloat(weight.weight);
    _json.EndArray();
  }
  _json.EndArray();
}

void SceneWriter::WriteBindPose(const HeadlessWeightTag& tag)
{
  _json.WriteKey("bind");
  _json.BeginObject();
  _json.WriteKey("object");
  WriteMatrix(tag.GetObjectBindMatrix());
  _json.WriteKey("joints");
  _json.BeginArray();
  for (Int32 i = 0; i < tag.GetJointCount(); ++i)
    WriteMatrix(tag.GetJointBindMatrix(i));
  _json.EndArray();
  _json.EndObject();
}

}  // namespace q7z
