#pragma once

// SceneReader: makes a document out of a parsed scene document. One reader reads one document. Every operation checks what it
// reads; the first mistake ends the reading. Operations may throw bad_alloc.

#include <functional>
#include <string>
#include <vector>

#include "host/scene/headlessdocument.h"
#include "host/scene/headlessposemorphtag.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "host/scenefile/jsontree.h"

namespace q7z
{

class SceneReader
{
public:
  /// Both must outlive the reader. folder: that of the document's file.
  SceneReader(const JsonTree& tree, std::string_view folder) : _tree(tree), _folder(folder) {}

  Result<HeadlessOwner<HeadlessDocument>> Read();

private:
  enum class LinkTarget
  {
    kObject,
    kMaterial,
    kLayer,
    kAnything,
  };
  using LinkSetter = std::function<Bool(HeadlessNamedNode* target)>;

  // The document.
  Result<void> ReadFormat();
  Result<void> ReadSettings();
  Result<void> ReadRenderData();
  Result<void> ReadLayers();
  Result<void> ReadTakes();
  Result<void> ReadTake(const JsonNode& node, Int index, HeadlessTake*& current);
  Result<void> ReadOverrides(const JsonNode& list, HeadlessTake& take);
  Result<void> ReadOverride(const JsonNode& node, HeadlessTake& take);

  // Objects.
  Result<void> ReadObjects(const JsonNode& list, HeadlessObject* parent);
  Result<void> ReadObject(const JsonNode& node, HeadlessObject* parent);
  Result<void> CheckObjectMembers(const JsonNode& node, const HeadlessObject& object);
  Result<void> ReadTransform(const JsonNode& node, HeadlessObject& object);
  Result<void> ReadVisibility(const JsonNode& node, HeadlessObject& object);
  Result<void> ReadObjectLinks(const JsonNode& node, HeadlessObject& object);
  Result<void> ReadGeometry(const JsonNode& node, HeadlessPolygonObject& object);
  Result<void> ReadPoints(const JsonNode& array, HostArray<Vector>& points);
  Result<void> ReadPolygons(const JsonNode& array, Int pointCount, HostArray<HostPolygon>& polygons);

  // Tags.
  Result<void> ReadTag(const JsonNode& node, HeadlessObject& object);
  Result<void> ReadTagContent(const JsonNode& node, HeadlessTag& tag);
  Result<void> ReadCorners(const JsonNode& node, std::string_view name, HeadlessCornerTag& tag);
  Result<void> ReadColors(const JsonNode& node, HeadlessVertexColorTag& tag);
  Result<void> ReadSelection(const JsonNode& node, HeadlessSelectionTag& tag);
  Result<void> ReadRange(const JsonNode& pair, Int polygonCount, SelectionRange& range);
  Result<void> ReadTexture(const JsonNode& node, HeadlessTextureTag& tag);
  Result<void> ReadPhong(const JsonNode& node, HeadlessPhongTag& tag);
  Result<void> ReadMorphs(const JsonNode& node, HeadlessPoseMorphTag& tag);
  Result<void> ReadMorph(const JsonNode& node, HeadlessMorph& morph);

  // Weight tags: read when all ids are known.
  Result<void> ReadWeightTag(const JsonNode& node, HeadlessWeightTag& tag);
  Result<void> ReadJoints(const JsonNode& joints, HeadlessWeightTag& tag);
  Result<void> ReadWeights(const JsonNode& weights, HeadlessWeightTag& tag);
  Result<void> ReadJointWeights(const JsonNode& pairs, Int32 jointIndex, HeadlessWeightTag& tag);
  Result<void> ReadPointWeight(const JsonNode& pair, Int pointCount, PointWeight& weight);
  Result<void> ReadBindPose(const JsonNode& bind, HeadlessWeightTag& tag);

  // Tracks.
  Result<void> ReadTracks(const JsonNode& owner, HeadlessNode& node);
  Result<void> ReadTrack(const JsonNode& node, HeadlessNode& owner, HeadlessTrack*& before);
  Result<void> ReadTrackId(const JsonNode& array, HostDescId& id);
  Result<void> ReadTrackLevel(const JsonNode& array, HostDescLevel& level);
  Result<void> ReadKeys(const JsonNode& array, HeadlessCurve& curve);
  Result<void> ReadKey(const JsonNode& node, const HeadlessKey* before, HeadlessCurve& curve);
  Result<void> ReadKeyContent(const JsonNode& node, HeadlessKey& key);
  Result<void> ReadKeyParameters(const JsonNode& table, HeadlessKey& key);
  Result<void> ReadTangent(const JsonNode& key, std::string_view name, KeyTangent& tangent);
  Result<void> ReadRotationMode(const JsonNode& array, KeyRotationMode& mode);

  // Materials.
  Result<void> ReadMaterials();
  Result<void> ReadMaterial(const JsonNode& node);
  Result<void> ReadNodeMaterial(const JsonNode& node, HeadlessMaterial& material);
  Result<void> ReadExchangeParameters(const JsonNode& node, HostMaterialExchangeData& data);
  Result<void> ReadExchangeTextures(const JsonNode& node, HostMaterialExchangeData& data);
  Result<void> ReadTextureUrl(const JsonNode& node, Url& url);
  Result<void> ReadData(const JsonNode& node, Data& data);
  Result<void> ReadDataArray(const JsonNode& array, Data& data);
  Result<void> ReadFloatArray(const JsonNode& array, Data& data);
  Result<void> ReadDataDictionary(const JsonNode& object, Data& data);
  Result<void> ReadChannels(const JsonNode& node, HeadlessMaterial& material);
  Result<void> ReadReflectanceLayers(const JsonNode& list, HeadlessMaterial& material);
  Result<void> ReadLayerShaders(const JsonNode& node, Int layer, HeadlessMaterial& material);
  Result<void> ReadShader(const JsonNode& node, HeadlessShader& shader);

  // Parameter tables. An update changes a table that has content of its own already; null takes an entry of it away.
  Result<void> ReadTable(const JsonNode& object, HeadlessContainer& table, Bool isUpdate = false);
  Result<void> ReadTableMember(const JsonNode& owner, std::string_view name, HeadlessContainer& table, Bool isUpdate = false);
  Result<void> ReadEntry(const HostDescId& id, const JsonNode& node, HeadlessContainer& table, Bool isUpdate);
  Result<void> ReadTypedEntry(const HostDescId& id, const JsonNode& node, HeadlessContainer& table);
  Result<void> ReadTableLink(const HostDescId& id, const JsonNode& node, HeadlessContainer& table);

  // Single values. A member that is missing leaves the target as it is.
  template <typename T>
  Result<void> ReadMember(const JsonNode& object, std::string_view name, T& target)
  {
    const JsonNode* const member = object.Find(name);
    return member ? ReadValue(*member, target) : Result<void>();
  }
  template <typename T>
  Result<void> RequireMember(const JsonNode& object, std::string_view name, T& target)
  {
    const JsonNode* const member = object.Find(name);
    return member ? ReadValue(*member, target) : _tree.MakeError(object, name, "missing");
  }
  Result<void> ReadValue(const JsonNode& node, Bool& target);
  Result<void> ReadValue(const JsonNode& node, Int& target);
  Result<void> ReadValue(const JsonNode& node, Int32& target);
  Result<void> ReadValue(const JsonNode& node, Float& target);
  Result<void> ReadValue(const JsonNode& node, String& target);  ///< lives as long as the tree
  Result<void> ReadValue(const JsonNode& node, Vector& target);
  Result<void> ReadValue(const JsonNode& node, Vector4& target);
  Result<void> ReadValue(const JsonNode& node, HostTime& target);
  Result<void> ReadValue(const JsonNode& node, HostUnitScale& target);
  Result<void> ReadValue(const JsonNode& node, HostMatrix& target);
  Result<void> ReadInt32Element(const JsonNode& array, Int index, Int32& target);
  Result<void> ReadInt32InRange(const JsonNode& node, Int32 first, Int32 last, Int32& target);
  Result<void> ReadName(const JsonNode& object, HeadlessNode& node);

  // Arrays and objects.
  Result<void> CheckObject(const JsonNode& node);
  Result<void> CheckArray(const JsonNode& node);
  /// @param what  what the object is, such as "a key".
  Result<void> CheckMembers(const JsonNode& node, std::string_view what, const std::vector<std::string_view>& names);
  /// Calls body(node, index) for each element of an array (null: of none), which are objects or arrays.
  template <typename Body>
  Result<void> ForEachNode(const JsonNode* array, const Body& body)
  {
    if (!array)
      return {};
    RETURN_IF_ERROR(CheckArray(*array));
    if (array->kind != JsonKind::kArray)
      return MakeElementKindError(*array, 0, "an object or an array");
    for (Int i = 0; i < array->count; ++i)
      RETURN_IF_ERROR(body(array->elements[i], i));
    return {};
  }
  Result<void> CheckCount(const JsonNode& array, Int count, std::string_view what);
  /// The number of numbers in an array, which is a multiple of size and gives a 32-bit count of groups.
  Result<void> ReadGroupCount(const JsonNode& array, Int size, Int& groupCount);
  /// All of an array's numbers, as many as the array has.
  Result<void> ReadNumbers(const JsonNode& array, Float* target);
  Result<void> ReadSingles(const JsonNode& array, Float32* target);
  Error MakeKindError(const JsonNode& node, std::string_view expected);
  Error MakeElementKindError(const JsonNode& array, Int index, std::string_view expected);
  /// Of an element that is the number of a point or a polygon, of which the object has count.
  Error MakeIndexError(const JsonNode& array, Int index, std::string_view what, Int count);

  // Ids and links.
  Result<void> ReadId(const JsonNode& object, HeadlessNamedNode& node);
  /// Brings the ids in order. No id may be read after that.
  Result<void> SortIds();
  Result<void> ReadLink(const JsonNode& place, LinkTarget target, LinkSetter set);
  Result<void> ResolveLinks();
  /// Null for an id that nothing of that kind has.
  HeadlessNamedNode* FindTarget(Int id, LinkTarget target) const;
  static std::string MakeMissingTargetText(Int id, LinkTarget target);

  struct KnownId
  {
    Int id = 0;
    HeadlessNamedNode* node = nullptr;
    const JsonNode* place = nullptr;
  };
  struct PendingLink
  {
    Int id = 0;
    LinkTarget target = LinkTarget::kAnything;
    const JsonNode* place = nullptr;
    LinkSetter set;
  };
  struct PendingWeights
  {
    const JsonNode* node = nullptr;
    HeadlessWeightTag* tag = nullptr;
  };

  const JsonTree& _tree;
  std::string_view _folder;
  HeadlessOwner<HeadlessDocument> _document;
  std::vector<KnownId> _ids;
  std::vector<PendingLink> _links;
  std::vector<PendingWeights> _weights;
};

/// An id of one to three levels from its decimal text, such as "903.1000". @return false for any other text.
Bool ParseDescId(std::string_view text, HostDescId& id) noexcept;

}  // namespace q7z

/// Of an operation that fails without memory alone.
#define CHECK_MEMORY(...)                 \
  do                                      \
  {                                       \
    if (!(__VA_ARGS__)) [[unlikely]]      \
      return ::q7z::Error::OutOfMemory(); \
  } while (false)
