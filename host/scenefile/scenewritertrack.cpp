// Tracks and keys.

#include "host/scenefile/scenewriter.h"

#include <new>

namespace q7z
{

void SceneWriter::WriteTracks(const HeadlessTrackList& tracks)
{
  if (tracks.IsEmpty())
    return;
  _json.WriteKey("tracks");
  _json.BeginArray();
  for (const HeadlessTrack* track = tracks.GetFirst(); track; track = track->GetNext())
  {
    _json.BeginObject();
    WriteTrackId(track->GetId());
    // A curve without keys is not the same as no curve.
    if (const HeadlessCurve* const curve = track->GetCurve())
      WriteKeys(*curve);
    _json.EndObject();
  }
  _json.EndArray();
}

void SceneWriter::WriteTrackId(const HostDescId& id)
{
  _json.WriteKey("id");
  _json.BeginArray(JsonLayout::kInline);
  for (Int32 level = 0; level < id.GetDepth(); ++level)
  {
    const Int32 numbers[3] = {id[level].id, id[level].dataType, id[level].creator};
    _json.WriteInts(numbers, 3);
  }
  _json.EndArray();
}

void SceneWriter::WriteKeys(const HeadlessCurve& curve)
{
  _json.WriteKey("keys");
  _json.BeginArray();
  for (Int i = 0; i < curve.GetKeyCount(); ++i)
    WriteKey(*curve.GetKey(i));
  _json.EndArray();
}

void SceneWriter::WriteKey(const HeadlessKey& key)
{
  _json.BeginObject(JsonLayout::kInline);
  _json.WriteKey("time");
  WriteTime(key.GetTime());
  WriteFloatMember("value", key.GetValue());
  WriteIntMember("interpolation", static_cast<Int>(key.GetInterpolation()));
  WriteTangent("left", key.GetLeftTangent());
  WriteTangent("right", key.GetRightTangent());
  if (key.HasRotationMode())
  {
    _json.WriteKey("rotationMode");
    _json.BeginArray();
    _json.WriteInt(key.GetRotationMode().mode);
    _json.WriteBool(key.GetRotationMode().first);
    _json.WriteBool(key.GetRotationMode().second);
    _json.EndArray();
  }
  if (key.HasAuxiliaryMode())
    WriteIntMember("auxiliaryMode", key.GetAuxiliaryMode());
  WriteKeyParameters(key);
  if (!key.GetPoints().IsEmpty())
    WritePoints(key.GetPoints());
  _json.EndObject();
}

void SceneWriter::WriteKeyParameters(const HeadlessKey& key)
{
  HeadlessContainer parameters;
  if (!key.CopyParametersTo(parameters))
    throw std::bad_alloc();
  WriteTable("parameters", parameters);
}

void SceneWriter::WriteTangent(std::string_view name, const KeyTangent& tangent)
{
  if (!tangent.isSet)
    return;
  _json.WriteKey(name);
  _json.BeginObject();
  _json.WriteKey("time");
  WriteTime(tangent.time);
  WriteFloatMember("value", tangent.value);
  _json.EndObject();
}

}  // namespace q7z
