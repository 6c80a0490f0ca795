#include "plugin/document/gltfdata.h"

#include "plugin/document/gltfimportoptions.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

namespace
{

/// The objects in an array of the file: those elements that can become records.
Int CountObjects(const DataDictionary& jsonGLTF, const DataKey& key) noexcept
{
  const Data* const member = jsonGLTF.Find(key);
  if (!member || member->GetKind() != DataKind::kArray)
    return 0;
  Int count = 0;
  const Result<DataArrayView> elements = member->GetArray();
  for (const Data& element : elements.GetValue())
    count += element.GetKind() == DataKind::kDictionary;
  return count;
}

/// Reads an array of the file into its map, one record for each element, under the element's index. A record whose reader fails
/// is removed again, without a word; the walk goes on.
template <typename Key, typename Record>
Result<void> ReadRecords(const DataDictionary& jsonGLTF, const DataKey& key, HashMap<Key, Record>& records) noexcept
{
  const auto readRecord = [&records](const DataDictionary& dataValue, Int idx) -> Bool
  {
    const Result<Record*> record = records.Insert(static_cast<Key>(idx), Record());
    if (record.HasError())
      return false;
    if (record.GetValue()->ReadFromJson(dataValue).HasError())
      records.Erase(static_cast<Key>(idx));
    return true;
  };
  RETURN_IF_ERROR(records.Reserve(records.GetCount() + CountObjects(jsonGLTF, key)));
  RETURN_IF_ERROR(ForEachElement(jsonGLTF, key, readRecord));
  return {};
}

void ReadAsset(const DataDictionary& jsonGLTF, GltfData& gltfData) noexcept
{
  const Result<DataDictionary> asset = ReadDictionary(jsonGLTF, keys::kAsset);
  if (asset.HasError())
    return;  // a file without it loads
  gltfData.generator = ReadString(asset.GetValue(), keys::kGenerator, String());
  gltfData.version = ReadString(asset.GetValue(), keys::kVersion, String());
  gltfData.copyright = ReadString(asset.GetValue(), keys::kCopyright, String());
}

Result<void> ReadGeometry(const DataDictionary& jsonGLTF, GltfData& gltfData) noexcept
{
  RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kBuffers, gltfData.buffers));
  RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kBufferViews, gltfData.bufferViews));
  RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kAccessors, gltfData.accessors));
  return ReadRecords(jsonGLTF, keys::kMeshes, gltfData.meshes);
}

Result<void> ReadMaterials(const DataDictionary& jsonGLTF, GltfData& gltfData) noexcept
{
  RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kMaterials, gltfData.materials));
  RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kTextures, gltfData.textures));
  RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kSamplers, gltfData.samplers));
  return ReadRecords(jsonGLTF, keys::kImages, gltfData.images);
}

}  // namespace

Result<void> GltfData::Init() noexcept
{
  RETURN_IF_ERROR(accessors.Set(-1, GltfAccessor::MakeNonIndexed()));
  RETURN_IF_ERROR(samplers.Set(-1, GltfSampler()));
  return {};
}

Result<Bool> FillInLoadedData(GltfData* gltfData, const DataDictionary& jsonGLTF, const ImportOptions& options) noexcept
{
  CHECK_ARGUMENT(gltfData);
  ReadAsset(jsonGLTF, *gltfData);
  if (options.IsCameras())
    RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kCameras, gltfData->cameras));
  if (options.IsGeometry())
    RETURN_IF_ERROR(ReadGeometry(jsonGLTF, *gltfData));
  if (options.IsMaterials())
    RETURN_IF_ERROR(ReadMaterials(jsonGLTF, *gltfData));
  if (options.IsAnimations())
    RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kAnimations, gltfData->animations));
  if (options.IsSkins())
    RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kSkins, gltfData->skins));
  RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kNodes, gltfData->nodes));
  RETURN_IF_ERROR(ReadRecords(jsonGLTF, keys::kScenes, gltfData->scenes));
  gltfData->defaultScene = ReadInt(jsonGLTF, keys::kScene, 0);
  return true;
}

}  // namespace q7z
