// Node materials: the host's material exchange hands over a record of the format's own kind, textures as pixels.

#include <algorithm>
#include <charconv>

#include "framework/check.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"
#include "plugin/material/gltfmaterialexport.h"
#include "plugin/material/gltfmaterialexportcolor.h"
#include "plugin/material/gltfmaterialexportjobs.h"
#include "plugin/material/gltfportbundle.h"
#include "plugin/module/hostconsole.h"

namespace q7z
{

namespace
{

constexpr const Char* kLinearProfile = "net.tarno.image.colorprofile.linear_rgb";

/// Which texture a texture of a record becomes, and the bitmap that it is known by.
struct TextureSlot
{
  const DataKey& key;
  TextureKind kind;
  Int32 bitmapFilenameKey;
};
const TextureSlot kTextureSlots[] = {
  {keys::kBaseColorTexture, kBaseColorKind, kBaseColorBitmap},
  {keys::kMetallicRoughnessTexture, kMetallicRoughnessKind, kRoughnessBitmap},
  {keys::kEmissiveTexture, kEmissiveKind, kEmissiveBitmap},
  {keys::kNormalTexture, kNormalKind, kNormalBitmap},
  {keys::kOcclusionTexture, kOcclusionKind, kOcclusionBitmap},
};

const TextureSlot* FindSlot(const String& key) noexcept
{
  const TextureSlot* const slot = std::find_if(std::begin(kTextureSlots), std::end(kTextureSlots),
                                               [&](const TextureSlot& entry) { return entry.key.GetName() == key; });
  return slot == std::end(kTextureSlots) ? nullptr : slot;
}

/// Textures that hold colours; the others hold numbers.
Bool IsColorTexture(const String& key) noexcept
{
  return key == keys::kBaseColorTexture.GetName() || key == keys::kEmissiveTexture.GetName();
}

Result<String> ToDecimal(UInt value) noexcept
{
  Char text[24];
  const auto end = std::to_chars(text, text + sizeof(text), value).ptr;
  return String::Create({text, static_cast<size_t>(end - text)});
}

Error MakeKindError() noexcept
{
  return MAKE_ERROR(ErrorClass::kIllegalArgument, "Invalid TypedConstantParameter"_s);
}

using Parameters = HashMap<String, HostExchangeParameter>;

/// The value of a parameter that is there. A parameter without a value is an error.
/// @return null when there is no such parameter.
Result<const Data*> FindConstant(const Parameters* parametersPtr, const DataKey& key) noexcept
{
  CHECK_STATE(parametersPtr != nullptr);
  const HostExchangeParameter* const parameter = parametersPtr->Find(key.GetName());
  if (!parameter)
    return nullptr;
  const Data* const parameterDataPtr = parameter->value.IsNil() ? nullptr : &parameter->value;
  CHECK_STATE(parameterDataPtr != nullptr);
  return parameterDataPtr;
}

Result<void> ReadText(const Parameters& parameters, const DataKey& key, String& target) noexcept
{
  ASSIGN_OR_RETURN(const Data* const value, FindConstant(&parameters, key));
  if (!value)
    return {};
  Result<String> text = value->GetString();
  if (text.HasError())
    return MakeKindError();
  target = std::move(text).GetValue();
  return {};
}

/// Numbers stand alone or, where there are several, in an array of just as many.
Result<void> ReadNumbers(const Parameters& parameters, const DataKey& key, std::initializer_list<Float*> targets) noexcept
{
  ASSIGN_OR_RETURN(const Data* const value, FindConstant(&parameters, key));
  if (!value)
    return {};
  const Bool standAlone = targets.size() == 1;
  DataArrayView elements;
  if (!standAlone)
  {
    const Result<DataArrayView> array = value->GetArray();
    if (array.HasError() || array.GetValue().GetCount() != static_cast<Int>(targets.size()))
      return MakeKindError();
    elements = array.GetValue();
  }
  Int index = 0;
  for (Float* const target : targets)
  {
    const Result<Float> number = standAlone ? value->GetFloat() : elements[index++].GetFloat();
    if (number.HasError())
      return MakeKindError();
    *target = number.GetValue();
  }
  return {};
}

}  // namespace

/// One texture of a record on its way to an image.
struct MaterialDescriptor::Encoding
{
  String key;                         // of the texture in the record
  const TextureSlot* slot = nullptr;  // null for a key that is no texture of the format
  HostImage* buffer = nullptr;        // as the record holds it
  HostImage* image = nullptr;         // as it is encoded
  ImageKey imageKey;
  Result<BaseArray<Byte>> bytes = BaseArray<Byte>();  // stay empty where another texture has the image

  /// Whether other is the same image and stands before this one in the file.
  Bool Repeats(const Encoding& other) const noexcept
  {
    return slot && other.slot && other.slot->kind < slot->kind && other.imageKey == imageKey;
  }
};

Result<void> MaterialDescriptor::ExchangeMaterialExport(const DataDictionary& settings, Bool exportTextures,
                                                        Bool keepRaw) noexcept
{
  ASSIGN_OR_RETURN(const String nodeSpaceId, ReadRequiredString(settings, keys::kSpaceId));
  // Materials of other spaces have nothing to hand over and stay plain.
  if (nodeSpaceId != kStandardNodeSpace)
    return {};
  HostMaterialExport* const exchange = FindService<HostMaterialExport>();
  if (!exchange)
    return MAKE_ERROR(ErrorClass::kNullPtr, "The host offers no export of materials."_s);
  ASSIGN_OR_RETURN(const HostMaterialExchangeData record, exchange->Save(_material, settings));
  const String& materialTypeId = record.materialTypeId;
  CHECK_STATE(materialTypeId == MATERIAL::PORTBUNDLE::GLTF::GetId());
  if (exportTextures)
    RETURN_IF_ERROR(EncodeTextures(record, keepRaw));
  return ReadParameters(record);
}

/// Encodes the textures at the same time and takes them in the record's order.
Result<void> MaterialDescriptor::EncodeTextures(const HostMaterialExchangeData& record, Bool keepRaw) noexcept
{
  HostMediaSessions* const sessions = FindService<HostMediaSessions>();
  const Bool succeeded = sessions != nullptr;
  BaseArray<Encoding> encodings;
  for (const auto& entry : record.textures)
  {
    HostImage* const buffer = entry.GetValue().buffer;
    if (!buffer)
      continue;
    CHECK_STATE(succeeded);
    Encoding encoding;
    encoding.key = entry.GetKey();
    encoding.slot = FindSlot(encoding.key);
    encoding.buffer = encoding.image = buffer;
    if (IsColorTexture(encoding.key))
    {
      ASSIGN_OR_RETURN(encoding.image, sessions->ConvertColorProfile(buffer, kLinearProfile));
    }
    ASSIGN_OR_RETURN(encoding.imageKey.first, ToDecimal(sessions->GetHash(buffer)));
    RETURN_IF_ERROR(encodings.Append(std::move(encoding)));
  }
  if (!sessions)
    return {};  // and no texture that would need one
  const auto isMadeElsewhere = [&](const Encoding& encoding)
  {
    const Int32* const index = _dupdetect->FindImage(encoding.imageKey);
    return (index && *index != DupDetect::kReserved) ||
           std::any_of(encodings.begin(), encodings.end(), [&](const Encoding& other) { return encoding.Repeats(other); });
  };
  RETURN_IF_ERROR(RunJobs(encodings.GetCount(), 1,
                          [&](Int first, Int end) -> Result<void>
                          {
                            for (Int i = first; i < end; ++i)
                            {
                              if (!isMadeElsewhere(encodings[i]))
                                encodings[i].bytes = sessions->Encode(HostMediaSessions::kPngExport, encodings[i].image);
                            }
                            return {};
                          }));
  for (Encoding& encoding : encodings)
    RETURN_IF_ERROR(TakeTexture(encoding, *sessions, keepRaw));
  return {};
}

Result<void> MaterialDescriptor::TakeTexture(Encoding& encoding, HostMediaSessions& sessions, Bool keepRaw) noexcept
{
  const auto saveConvert = [&]() -> const Result<BaseArray<Byte>>& { return encoding.bytes; };
  CHECK_STATE(saveConvert());
  const TextureSlot* const textureInfo = encoding.slot;
  CHECK_STATE(textureInfo);
  const Int32 bitmapFilenameKey = textureInfo->bitmapFilenameKey;
  CHECK_STATE(bitmapFilenameKey < Bitmaps::BCOUNT);
  ExportTexture& texture = _textures[textureInfo->kind];
  if (encoding.bytes.GetValue().IsPopulated())
    RETURN_IF_ERROR(texture.image.SetImageData(std::move(encoding.bytes).GetValue(), kPngImageType, keepRaw));
  texture.hasImage = true;
  _fileNames[bitmapFilenameKey] = encoding.imageKey.first;
  if (!_dupdetect->FindImage(encoding.imageKey))
    RETURN_IF_ERROR(_dupdetect->SetImage(encoding.imageKey, DupDetect::kReserved));
  ASSIGN_OR_RETURN(const String size, String::FromInt(sessions.GetByteCount(encoding.buffer)));
  ASSIGN_OR_RETURN(const String line, String::Format("Material: @: | Channel: @ | Filename: @ | Size: @"_s,
                                                     {_name, encoding.key, encoding.imageKey.first, size}));
  HOST_DIAGNOSTIC(line);
  return {};
}

Result<void> MaterialDescriptor::ReadParameters(const HostMaterialExchangeData& record) noexcept
{
  const Parameters& parameters = record.parameters;
  Vector& emissive = _factors.emissive;
  Vector4& baseColor = _factors.baseColor;
  RETURN_IF_ERROR(ReadText(parameters, keys::kAlphaMode, _factors.alphaMode));
  RETURN_IF_ERROR(ReadNumbers(parameters, keys::kEmissiveFactor, {&emissive.x, &emissive.y, &emissive.z}));
  RETURN_IF_ERROR(ReadNumbers(parameters, keys::kNormalScale, {&_textures[kNormalKind].factor}));
  RETURN_IF_ERROR(ReadNumbers(parameters, keys::kOcclusionStrength, {&_textures[kOcclusionKind].factor}));
  RETURN_IF_ERROR(ReadNumbers(parameters, keys::kBaseColorFactor, {&baseColor.x, &baseColor.y, &baseColor.z, &baseColor.w}));
  RETURN_IF_ERROR(ReadNumbers(parameters, keys::kMetallicFactor, {&_factors.metallic}));
  RETURN_IF_ERROR(ReadNumbers(parameters, keys::kRoughnessFactor, {&_factors.roughness}));
  emissive = ClampToUnit(emissive);
  for (Float* const component : {&baseColor.x, &baseColor.y, &baseColor.z, &baseColor.w})
    *component = ClampToUnit(*component);
  _factors.metallic = ClampToUnit(_factors.metallic);
  _factors.roughness = ClampToUnit(_factors.roughness);
  return {};
}

}  // namespace q7z
