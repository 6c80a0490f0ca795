#include "plugin/material/gltfmaterialimport.h"

#include "framework/check.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/material/gltfportbundle.h"
#include "plugin/material/gltftexturename.h"
#include "plugin/module/diagnostics.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

namespace
{

const DataKey kNodeSpaceId("nodeSpaceId");

Result<Data> MakeNumbers(std::initializer_list<Float> numbers) noexcept
{
  BaseArray<Data> elements;
  RETURN_IF_ERROR(elements.Reserve(static_cast<Int>(numbers.size())));
  for (const Float number : numbers)
    RETURN_IF_ERROR(elements.Append(Data(number)));
  return Data::CreateArray(std::move(elements));
}

Result<void> AddParameter(HostMaterialExchangeData& record, const DataKey& key, Data value, Bool constant = true) noexcept
{
  RETURN_IF_ERROR(record.parameters.Set(key.GetName(), {std::move(value), constant}));
  return {};
}

/// Any word that the format does not have counts as opaque.
String GetAlphaMode(const GltfMaterial& gltfMaterial) noexcept
{
  if (gltfMaterial.alphaMode == "MASK"_s)
    return "MASK"_s;
  return gltfMaterial.alphaMode == "BLEND"_s ? "BLEND"_s : "OPAQUE"_s;
}

/// Where the image lies when it is a file of its own; an empty URL for an embedded one.
Result<Url> GetFileUrl(const GltfImage& image) noexcept
{
  if (image.GetURIString().IsEmpty() || image.IsBase64())
    return Url();
  // A copy, so that the document does not keep the file's whole text alive.
  ASSIGN_OR_RETURN(const String uri, image.GetURIString().Copy());
  return Url::FromDecodedReference(uri);
}

}  // namespace

Result<void> MaterialImporter::Init(HostDocument* doc, const Url& docFileName) noexcept
{
  CHECK_ARGUMENT(doc);
  _doc = doc;
  _docFileName = docFileName;
  RETURN_IF_ERROR(_context.Set(kNodeSpaceId, Data(HostGetActiveNodeSpace())));
  HostUrlService* const urls = FindService<HostUrlService>();
  if (!urls)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no URL service."_s);
  ASSIGN_OR_RETURN(const Url baseFolder, urls->GetBaseFolder());
  ASSIGN_OR_RETURN(texFolderUrl, baseFolder.Append("tex"_s));
  RETURN_IF_ERROR(urls->CreateFolder(texFolderUrl));
  _isInitialized = true;
  return {};
}

Result<HostOwner<HostMaterial>> MaterialImporter::CreateMaterial(const GltfMaterial& gltfMaterial) noexcept
{
  CHECK_STATE(_doc);
  HostMaterialExchangeData record;
  record.materialTypeId = MATERIAL::PORTBUNDLE::GLTF::GetId();
  RETURN_IF_ERROR(Fill(gltfMaterial, record));
  HostMaterialImport* const importer = FindService<HostMaterialImport>();
  if (!importer)
    return MAKE_ERROR(ErrorClass::kNullPtr, "No material importer found"_s);
  const Result<HostMaterial*> imported = importer->Import(record, _doc, _context);
  if (imported.HasError())
    PrintError("The host could not import a material"_s, imported.GetError());
  HostOwner<HostMaterial> baseMaterial(imported.HasError() ? HostMaterial::Alloc(kMaterialType) : imported.GetValue());
  CHECK_STATE(baseMaterial);
  return baseMaterial;
}

Result<void> MaterialImporter::Fill(const GltfMaterial& gltfMaterial, HostMaterialExchangeData& record) noexcept
{
  CHECK_STATE(texFolderUrl.IsPopulated());
  const Vector4& color = gltfMaterial.baseColorFactor;
  const Vector& emissive = gltfMaterial.emissiveFactor;
  ASSIGN_OR_RETURN(Data colorValue, MakeNumbers({color.x, color.y, color.z, color.w}));
  ASSIGN_OR_RETURN(Data emissiveValue, MakeNumbers({emissive.x, emissive.y, emissive.z}));
  RETURN_IF_ERROR(AddParameter(record, keys::kBaseColorFactor, std::move(colorValue)));
  RETURN_IF_ERROR(AddParameter(record, keys::kMetallicFactor, gltfMaterial.metallicFactor));
  RETURN_IF_ERROR(AddParameter(record, keys::kRoughnessFactor, gltfMaterial.roughnessFactor));
  RETURN_IF_ERROR(AddParameter(record, keys::kNormalScale, gltfMaterial.normalScale));
  RETURN_IF_ERROR(AddParameter(record, keys::kOcclusionStrength, gltfMaterial.occlusionStrength));
  RETURN_IF_ERROR(AddParameter(record, keys::kEmissiveFactor, std::move(emissiveValue)));
  RETURN_IF_ERROR(AddParameter(record, keys::kAlphaMode, GetAlphaMode(gltfMaterial)));
  RETURN_IF_ERROR(AddParameter(record, keys::kAlphaCutoff, gltfMaterial.alphaCutoff));
  RETURN_IF_ERROR(AddParameter(record, keys::kDoubleSided, gltfMaterial.doubleSided));
  return FillTextures(gltfMaterial, record);
}

Result<void> MaterialImporter::FillTextures(const GltfMaterial& gltfMaterial, HostMaterialExchangeData& record) noexcept
{
  ASSIGN_OR_RETURN(Data opaqueBlack, MakeNumbers({0, 0, 0, 1}));
  ASSIGN_OR_RETURN(Data black, MakeNumbers({0, 0, 0}));
  struct Slot
  {
    const GltfTextureInfo& texture;
    const DataKey& key;
    Data defaultValue;
  };
  const Slot slots[] = {
    {gltfMaterial.baseColorTexture, keys::kBaseColorTexture, std::move(opaqueBlack)},
    {gltfMaterial.emissiveTexture, keys::kEmissiveTexture, Data()},
    {gltfMaterial.normalTexture, keys::kNormalTexture, Data()},
    {gltfMaterial.metallicRoughnessTexture, keys::kMetallicRoughnessTexture, Data()},
    {gltfMaterial.occlusionTexture, keys::kOcclusionTexture, std::move(black)},
  };
  for (const Slot& slot : slots)
    RETURN_IF_ERROR(AddTexture(slot.texture, slot.key, slot.defaultValue, gltfMaterial.name, record));
  return {};
}

Result<void> MaterialImporter::AddTexture(const GltfTextureInfo& texture, const DataKey& key, Data defaultValue,
                                          const String& materialName, HostMaterialExchangeData& record) noexcept
{
  if (!texture.IsInitialized())
    return {};
  const Bool hasNoTexture = texture.GetIndex() == -1;
  RETURN_IF_ERROR(AddParameter(record, key, std::move(defaultValue), hasNoTexture));
  if (hasNoTexture)
    return {};
  ASSIGN_OR_RETURN(const GltfImage* const image, texture.GetImage());
  ASSIGN_OR_RETURN(Url url, GetFileUrl(*image));
  if (url.IsEmpty())
  {
    ASSIGN_OR_RETURN(url, WriteTexture(texture, *image, key, materialName));
  }
  RETURN_IF_ERROR(record.textures.Set(key.GetName(), {std::move(url), nullptr}));
  return {};
}

Result<Url> MaterialImporter::WriteTexture(const GltfTextureInfo& texture, const GltfImage& image, const DataKey& key,
                                           const String& materialName) noexcept
{
  ASSIGN_OR_RETURN(const String ext, image.GetImageExtension());
  CHECK_STATE(ext.IsPopulated());
  ASSIGN_OR_RETURN(const String fileName, MakeTextureFileName(materialName, key.GetName(), ext));
  ASSIGN_OR_RETURN(Url url, texFolderUrl.Append(fileName));
  const GltfImage* const* const written = _writtenImages.Find(fileName);
  if (written && *written == &image)
    return url;  // the file holds it already
  RETURN_IF_ERROR(NoteFile(fileName, image));
  const Result<void> saved = texture.SaveImageData(url);
  if (saved.HasError())
  {
    _writtenImages.Erase(fileName);  // the next material tries again
    return saved.GetError();
  }
  return url;
}

/// Materials of one name write to one file, and the last image stays.
Result<void> MaterialImporter::NoteFile(const String& fileName, const GltfImage& image) noexcept
{
  if (image.GetData().IsEmpty())
    return {};  // nothing will be written
  if (_writtenImages.Contains(fileName))
  {
    ASSIGN_OR_RETURN(const String text,
                     String::Format("The texture file \"@\" is written for several materials of one name; all of "
                                    "them show the image that was written last."_s,
                                    {fileName}));
    _warnings.Add(HostMessageClass::kWarning, text);
  }
  RETURN_IF_ERROR(_writtenImages.Set(fileName, &image));
  return {};
}

}  // namespace q7z
