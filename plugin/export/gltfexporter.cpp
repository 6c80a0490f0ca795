#include "plugin/export/gltfexporter.h"

#include <new>

#include "framework/check.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/export/glb.h"
#include "plugin/export/gltfprogress.h"
#include "plugin/module/hostservices.h"

namespace q7z
{

namespace
{

namespace exchangekeys
{
const DataKey kMaterialTypes("materialTypes");
const DataKey kGltfBundle("net.tarno.material.portbundle.gltf");
const DataKey kTextureSupport("textureSupport");
const DataKey kTextureResize("textureResize");
const DataKey kTextureDimensions("textureDimensions");
}  // namespace exchangekeys

// The exchange's own numbers for the ways to bring a texture to a size.
UInt32 GetTextureResize(Int32 textureResizeMode) noexcept
{
  switch (textureResizeMode)
  {
    case kTextureKeep: return 0;
    case kTextureExact: return 2;
    default: return 1;
  }
}

Result<Data> MakeIntegerPair(Int32 first, Int32 second) noexcept
{
  Data values[] = {Data(first), Data(second)};
  return Data::CreateArray(values, 2, nullptr);
}

/// Puts a text that the document has into asset.
Result<void> CopyDocumentText(const HostDocument& doc, Int32 parameter, const DataKey& key, DataDictionary& asset) noexcept
{
  HostValue value;
  if (!doc.GetParameter(parameter, value) || value.GetKind() != HostValueKind::kString)
    return {};
  ASSIGN_OR_RETURN(String text, String::Format("@"_s, {value.GetString()}));
  return asset.Set(key, Data(std::move(text)));
}

}  // namespace

Result<std::unique_ptr<GLTFExporter>> GLTFExporter::Create(HostDocument* document, const HostFilename& fileName,
                                                           const ExportOptions& options) noexcept
{
  CHECK_ARGUMENT(document);
  std::unique_ptr<GLTFExporter> exporter(new (std::nothrow) GLTFExporter(fileName, options));
  if (!exporter)
    return Error::OutOfMemory();
  exporter->_jsonDoc.reset(new (std::nothrow) DataDictionary);
  CHECK_STATE(exporter->_jsonDoc);
  exporter->_doc.reset(document->Clone(0));
  CHECK_STATE(exporter->_doc);
  exporter->_preprocessor.SetDocument(exporter->_doc.get());
  ASSIGN_OR_RETURN(DataDictionary asset, exporter->MakeAsset());
  RETURN_IF_ERROR(exporter->_jsonDoc->Set(keys::kAsset, Data(std::move(asset))));
  return exporter;
}

// A generator and a copyright stand in the file when the document has them; none of our own does.
Result<DataDictionary> GLTFExporter::MakeAsset() const noexcept
{
  DataDictionary asset;
  ASSIGN_OR_RETURN(const String major, String::FromInt(2));
  ASSIGN_OR_RETURN(const String minor, String::FromInt(0));
  ASSIGN_OR_RETURN(String version, String::Format("@.@"_s, {major, minor}));
  RETURN_IF_ERROR(asset.Set(keys::kVersion, Data(std::move(version))));
  RETURN_IF_ERROR(CopyDocumentText(*_doc, kDocumentAuthorParameter, keys::kGenerator, asset));
  RETURN_IF_ERROR(CopyDocumentText(*_doc, kDocumentCopyrightParameter, keys::kCopyright, asset));
  return asset;
}

Result<void> GLTFExporter::SetupMaterialExchange() noexcept
{
  DataDictionary materialTypes;
  RETURN_IF_ERROR(materialTypes.Set(exchangekeys::kGltfBundle, Data(0)));
  ASSIGN_OR_RETURN(Data dimensions, MakeIntegerPair(_options.textureWidth, _options.textureHeight));

  RETURN_IF_ERROR(_exchangeData.Set(keys::kSpaceId, Data(HostGetActiveNodeSpace())));
  RETURN_IF_ERROR(_exchangeData.Set(exchangekeys::kMaterialTypes, Data(std::move(materialTypes))));
  RETURN_IF_ERROR(_exchangeData.Set(exchangekeys::kTextureSupport, Data(_options.exportTextures)));
  RETURN_IF_ERROR(_exchangeData.Set(exchangekeys::kTextureResize, Data(GetTextureResize(_options.textureResizeMode))));
  return _exchangeData.Set(exchangekeys::kTextureDimensions, std::move(dimensions));
}

Result<void> GLTFExporter::WriteScene() noexcept
{
  CHECK_STATE(_doc);
  CHECK_STATE(_jsonDoc);
  ASSIGN_OR_RETURN(const Int32 objectCount, _preprocessor.Run(_options));
  RETURN_IF_ERROR(WalkObjects(objectCount));
  if (_options.exportSkins)
    RETURN_IF_ERROR(WriteSkins());
  if (_options.IsGlb() && _glbBuffer.GetBytes().IsPopulated())
    RETURN_IF_ERROR(AddBuffer(_glbBuffer));
  FreeScene();
  return AssembleDocument();
}

/// The elements stand for themselves by now, and their text can have the memory.
void GLTFExporter::FreeScene() noexcept
{
  _objectNodes.Reset();
  _meshIndices.Reset();
  _pointHashes.Reset();
  _sourceCopies.Reset();
  _sourceMatrices.Reset();
  _preprocessor.SetDocument(nullptr);
  _doc.reset();
}

Result<void> GLTFExporter::WalkObjects(Int32 objectCount) noexcept
{
  ProgressSetText(kWritingObjectsText);
  ProgressReset();
  ProgressAddTotal(objectCount);
  RETURN_IF_ERROR(WalkWith(_doc.get(), [this](HostObject* op) { return VisitObject(op); }, true, &IsSkipped));
  return JoinHierarchy();
}

/// The one place where the hierarchy gets into the file.
Result<void> GLTFExporter::JoinHierarchy() noexcept
{
  for (auto& entry : _objectNodes)
  {
    NodeRecord& record = entry.GetValue();
    if (record.children.IsEmpty())
      continue;
    ASSIGN_OR_RETURN(Data children, Data::CreateArray(std::move(record.children)));
    if (entry.GetKey())
      RETURN_IF_ERROR(record.dictionary->Set(keys::kChildren, std::move(children)));
    else
      RETURN_IF_ERROR(_scene.Set(keys::kNodes, std::move(children)));
  }
  return {};
}

Result<void> GLTFExporter::SetArray(const DataKey& key, BaseArray<Data> elements) noexcept
{
  if (elements.IsEmpty())
    return {};
  ASSIGN_OR_RETURN(Data array, Data::CreateArray(std::move(elements)));
  return _jsonDoc->Set(key, std::move(array));
}

Result<void> GLTFExporter::AssembleDocument() noexcept
{
  BaseArray<Data> scenes;
  if (_scene.Find(keys::kNodes))
    RETURN_IF_ERROR(scenes.Append(Data(std::move(_scene))));
  BaseArray<Data> nodes;
  RETURN_IF_ERROR(nodes.Reserve(_nodes.GetCount()));
  for (const std::unique_ptr<DataDictionary>& node : _nodes)
    RETURN_IF_ERROR(nodes.Append(Data(std::move(*node))));

  RETURN_IF_ERROR(SetArray(keys::kScenes, std::move(scenes)));
  RETURN_IF_ERROR(SetArray(keys::kNodes, std::move(nodes)));
  RETURN_IF_ERROR(SetArray(keys::kMeshes, std::move(_meshes)));
  RETURN_IF_ERROR(SetArray(keys::kCameras, std::move(_cameras)));
  RETURN_IF_ERROR(SetArray(keys::kSkins, std::move(_skins)));
  RETURN_IF_ERROR(SetArray(keys::kAccessors, std::move(_accessors)));
  RETURN_IF_ERROR(SetArray(keys::kBufferViews, std::move(_bufferViews)));
  RETURN_IF_ERROR(SetArray(keys::kBuffers, std::move(_buffers)));
  // Samplers and images mean nothing without a texture.
  if (_textures.IsPopulated())
  {
    RETURN_IF_ERROR(SetArray(keys::kImages, std::move(_images)));
    RETURN_IF_ERROR(SetArray(keys::kSamplers, std::move(_samplers)));
    RETURN_IF_ERROR(SetArray(keys::kTextures, std::move(_textures)));
  }
  RETURN_IF_ERROR(SetArray(keys::kMaterials, std::move(_materials)));
  return SetAnimations();
}

Result<void> GLTFExporter::SetAnimations() noexcept
{
  if (_animationSamplers.IsEmpty() || _animationChannels.IsEmpty())
    return {};
  ASSIGN_OR_RETURN(Data samplers, Data::CreateArray(std::move(_animationSamplers)));
  ASSIGN_OR_RETURN(Data channels, Data::CreateArray(std::move(_animationChannels)));
  DataDictionary animation;
  RETURN_IF_ERROR(animation.Set(keys::kSamplers, std::move(samplers)));
  RETURN_IF_ERROR(animation.Set(keys::kChannels, std::move(channels)));
  BaseArray<Data> animations;
  RETURN_IF_ERROR(animations.Append(Data(std::move(animation))));
  return SetArray(keys::kAnimations, std::move(animations));
}

Result<String> GLTFExporter::WriteJson(Bool formatted) const noexcept
{
  if (!_jsonDoc || _jsonDoc->IsEmpty())
    return MAKE_ERROR(ErrorClass::kIllegalState, "GLTFExporter Uninitialized."_s);
  HostJson* const json = FindService<HostJson>();
  if (!json)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no JSON writer."_s);
  return json->Write(*_jsonDoc, formatted);
}

// All binary data stands in data URIs, so that there is no side file.
Result<void> GLTFExporter::WriteGltf() noexcept
{
  ASSIGN_OR_RETURN(const String text, WriteJson(true));
  HostUrlService* const urls = FindService<HostUrlService>();
  if (!urls)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no file access by location."_s);
  ASSIGN_OR_RETURN(const Url url, TarnoConvert(_fileName));
  return urls->Write(url, reinterpret_cast<const Byte*>(text.GetBytes()), text.GetByteCount());
}

Result<void> GLTFExporter::WriteGlb() noexcept
{
  ASSIGN_OR_RETURN(const String text, WriteJson(false));
  GltfBuffer json;
  RETURN_IF_ERROR(json.AppendBytes(text.GetBytes(), text.GetByteCount()));
  RETURN_IF_ERROR(json.PadToWords());
  // The JSON is finished: its byteLength may be up to three bytes below the chunk's.
  RETURN_IF_ERROR(_glbBuffer.PadToWords());
  GlbHeader header;
  return header.Write(json.GetBytes(), _glbBuffer.GetBytes(), _fileName);
}

}  // namespace q7z
