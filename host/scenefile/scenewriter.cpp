#include "host/scenefile/scenewriter.h"

#include "host/scene/conversion.h"
#include "host/scenefile/scenefile.h"

namespace q7z
{

Result<void> SceneWriter::Write()
{
  const HeadlessOwner<HeadlessDocument> defaults(HeadlessDocument::Create());
  if (!defaults)
    return Error::OutOfMemory();
  AssignIds();
  _json.BeginObject();
  WriteTextMember("format", "q7z scene");
  WriteIntMember("version", 1);
  WriteSettings(*defaults);
  WriteLayers();
  WriteMaterials();
  WriteObjects();
  WriteTakes();
  _json.EndObject();
  return _json.Finish();
}

void SceneWriter::WriteSettings(const HeadlessDocument& defaults)
{
  WriteName(_document);
  if (!(_document.GetNodeSpace() == defaults.GetNodeSpace()))
    WriteTextMember("nodeSpace", _document.GetNodeSpace().GetView());
  WriteTableUpdate("parameters", _document.GetParameters(), defaults.GetParameters());
  WriteTableUpdate("settings", _document.GetSettings(), defaults.GetSettings());
  if (const HeadlessContainer* const render = _document.GetRenderData())
    WriteTableUpdate("render", *render, *defaults.GetRenderData());
  else
  {
    _json.WriteKey("render");
    _json.WriteNull();
  }
  const HostTime& time = _document.GetTime();
  if (time.numerator == 0 && time.denominator == 1)
    return;
  _json.WriteKey("time");
  WriteTime(time);
}

void SceneWriter::WriteLayers()
{
  const HeadlessLayer& root = _document.GetLayerRoot();
  if (root.GetLayerCount() == 0)
    return;
  _json.WriteKey("layers");
  _json.BeginArray();
  for (Int i = 0; i < root.GetLayerCount(); ++i)
  {
    _json.BeginObject(JsonLayout::kInline);
    WriteNextId();
    WriteName(*root.GetLayer(i));
    _json.EndObject();
  }
  _json.EndArray();
}

// Takes.

void SceneWriter::WriteTakes()
{
  const HeadlessTakeData& takes = _document.GetTakeData();
  if (takes.GetTakeCount() == 1 && takes.GetMainTake()->GetName() == "Main"_s)
    return;
  _json.WriteKey("takes");
  _json.BeginArray();
  for (Int i = 0; i < takes.GetTakeCount(); ++i)
    WriteTake(*takes.GetTake(i));
  _json.EndArray();
}

void SceneWriter::WriteTake(const HeadlessTake& take)
{
  _json.BeginObject();
  WriteName(take);
  if (take.IsMain())
    WriteBoolMember("main", true);
  if (&take == _document.GetTakeData().GetCurrentTake())
    WriteBoolMember("current", true);
  if (take.GetOverrideCount() > 0)
  {
    _json.WriteKey("overrides");
    _json.BeginArray();
    for (Int i = 0; i < take.GetOverrideCount(); ++i)
      WriteOverride(*take.GetOverride(i));
    _json.EndArray();
  }
  _json.EndObject();
}

void SceneWriter::WriteOverride(const HeadlessOverride& over)
{
  _json.BeginObject();
  _json.WriteKey("target");
  WriteIdOrNull(over.GetTarget());
  WriteTable("values", over.GetParameters());
  WriteTracks(*over.GetTracks());
  _json.EndObject();
}

// Ids.

void SceneWriter::AssignIds()
{
  for (Int i = 0; i < _document.GetLayerRoot().GetLayerCount(); ++i)
    AssignId(_document.GetLayerRoot().GetLayer(i));
  for (const HeadlessMaterial* material = _document.GetFirstMaterial(); material; material = material->GetNext())
    AssignId(material);
  for (const HeadlessObject* object = _document.GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
  {
    AssignId(object);
    for (const HeadlessTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext())
      AssignId(tag);
  }
  _lastId = 0;
}

void SceneWriter::AssignId(const HeadlessNamedNode* node)
{
  ++_lastId;
  if (node->HasAnchor())
    _linkedIds.emplace(node, _lastId);
}

Int SceneWriter::FindId(const HeadlessNode* node) const
{
  const auto found = _linkedIds.find(node);
  return found != _linkedIds.end() ? found->second : 0;
}

void SceneWriter::WriteIdOrNull(const HeadlessNode* node)
{
  const Int id = FindId(node);
  id ? _json.WriteInt(id) : _json.WriteNull();
}

// The face.

Result<void> WriteSceneDocument(const HeadlessDocument& document, std::string_view folder, ByteSink& sink,
                                std::string_view imageFolder) noexcept
{
  try
  {
    SceneWriter writer(document, folder, imageFolder, sink);
    return writer.Write();
  }
  catch (...)
  {
    return Error::OutOfMemory();
  }
}

}  // namespace q7z
