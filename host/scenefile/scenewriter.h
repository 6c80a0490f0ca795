#pragma once

// SceneWriter: writes one document, straight from the scene to the sink. Members stand in a fixed order; those with default
// content are left out. Operations may throw bad_alloc.

#include <string_view>
#include <unordered_map>

#include "host/scene/headlessdocument.h"
#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "host/scenefile/jsonemitter.h"

namespace q7z
{

class SceneWriter
{
public:
  /// All must outlive the writer. folder: that of the document's file.
  SceneWriter(const HeadlessDocument& document, std::string_view folder, std::string_view imageFolder, ByteSink& sink)
      : _document(document), _folder(folder), _imageFolder(imageFolder), _json(sink)
  {}

  Result<void> Write();

private:
  // The document.
  void WriteSettings(const HeadlessDocument& defaults);
  void WriteLayers();
  void WriteTakes();
  void WriteTake(const HeadlessTake& take);
  void WriteOverride(const HeadlessOverride& over);

  // Objects.
  void WriteObjects();
  void WriteObject(const HeadlessObject& object);
  void WriteTransform(const HeadlessObject& object);
  void WriteVectors(const TransformVectors& vectors, Bool evenDefaults);
  void WriteObjectSettings(const HeadlessObject& object);
  void WriteGeometry(const HeadlessPolygonObject& object);

  // Tags.
  void WriteTags(const HeadlessObject& object);
  void WriteTag(const HeadlessTag& tag);
  void WriteTagContent(const HeadlessTag& tag);
  void WriteCorners(std::string_view name, const HeadlessCornerTag& tag);
  void WriteColors(const HeadlessVertexColorTag& tag);
  void WriteSelection(const HeadlessSelectionTag& tag);
  void WritePhong(const HeadlessPhongTag& tag);
  void WriteMorphs(const HeadlessPoseMorphTag& tag);
  void WriteMorph(const HeadlessMorph& morph);
  void WriteWeights(const HeadlessWeightTag& tag);
  void WriteJointWeights(const HeadlessWeightTag& tag, Int32 joint);
  void WriteBindPose(const HeadlessWeightTag& tag);

  // Tracks.
  void WriteTracks(const HeadlessTrackList& tracks);
  void WriteTrackId(const HostDescId& id);
  void WriteKeys(const HeadlessCurve& curve);
  void WriteKey(const HeadlessKey& key);
  void WriteKeyParameters(const HeadlessKey& key);
  void WriteTangent(std::string_view name, const KeyTangent& tangent);

  // Materials.
  void WriteMaterials();
  void WriteMaterial(const HeadlessMaterial& material);
  void WriteNodeMaterial(const NodeMaterialRecord& record);
  void WriteChannels(const HeadlessMaterial& material);
  void WriteReflectanceLayers(const HeadlessMaterial& material);
  void WriteShader(const HeadlessShader& shader);
  void WriteData(const Data& data);
  void WriteDataArray(const DataArrayView& elements);

  // Parameter tables.
  void WriteTable(std::string_view name, const HeadlessContainer& table);
  /// What differs from a table of defaults; null stands for an entry that only the defaults have.
  void WriteTableUpdate(std::string_view name, const HeadlessContainer& table, const HeadlessContainer& defaults);
  void WriteEntries(const HeadlessContainer& table);
  void WriteEntry(const HeadlessContainer::EntryView& entry);
  void WriteEntryKey(const HostDescId& id);
  void WriteValue(const HostValue& value);
  void WriteTypedValue(const HostValue& value);

  // Single values.
  void WriteTime(const HostTime& time);
  void WriteMatrix(const HostMatrix& matrix);
  void WritePoints(const HostArray<Vector>& points);
  void WriteName(const HeadlessNode& node, Bool evenEmpty = false);
  void WriteIntMember(std::string_view name, Int value);
  void WriteBoolMember(std::string_view name, Bool value);
  void WriteFloatMember(std::string_view name, Float value);
  void WriteTextMember(std::string_view name, std::string_view text);

  // Ids: each node of the document that a link can lead to has the next one, in the order of writing.
  void AssignIds();
  void AssignId(const HeadlessNamedNode* node);
  void WriteNextId() { WriteIntMember("id", ++_lastId); }
  /// 0 for null and for what is not in the document.
  Int FindId(const HeadlessNode* node) const;
  void WriteIdOrNull(const HeadlessNode* node);

  const HeadlessDocument& _document;
  std::string_view _folder;
  std::string_view _imageFolder;
  JsonEmitter _json;
  std::unordered_map<const HeadlessNode*, Int> _linkedIds;  // of nodes that a link leads to, or once did
  Int _lastId = 0;
};

}  // namespace q7z
