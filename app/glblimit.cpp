#include "app/glblimit.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "host/platform/platform.h"
#include "host/scene/headlessobject.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/services/headlessjson.h"

namespace q7z::app
{

namespace
{

// A quarter of what fits.
constexpr Int kFarBelow = Int(1) << 30;

// Six corners of two triangles, each with an index, a position, a normal, UVs and a colour.
constexpr Int kBytesPerPolygon = 6 * (4 + 12 + 12 + 8 + 16);
// A node, a mesh with all its accessors and views.
constexpr Int kJsonBytesPerObject = 4096;
// The name stands at the node and at the mesh; a control character is written as six.
constexpr Int kJsonBytesPerNameByte = 2 * 6;

constexpr Int kPrefixBytes = 20;  // the header of the file, and that of its first chunk
constexpr Int kChunkHeaderBytes = 8;

bool IsPlainObject(const HeadlessObject& object)
{
  constexpr std::array kTypes = {kNullObjectType, kPolygonObjectType, kCameraObjectType, kRenderCameraObjectType};
  return std::find(kTypes.begin(), kTypes.end(), object.GetType()) != kTypes.end() && object.GetTracks()->IsEmpty();
}

bool IsPlainTag(const HeadlessTag& tag)
{
  constexpr std::array kTypes = {kNormalTagType, kUvwTagType, kVertexColorTagType, kPhongTagType, kPolygonSelectionTagType};
  return std::find(kTypes.begin(), kTypes.end(), tag.GetType()) != kTypes.end();
}

/// What an object adds to the file at most; nothing when that is not known.
std::optional<Int> GetLargestBytes(const HeadlessObject& object)
{
  if (!IsPlainObject(object))
    return std::nullopt;
  for (const HeadlessTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext())
  {
    if (!IsPlainTag(*tag))
      return std::nullopt;
  }
  const HeadlessPolygonObject* const mesh = object.AsPolygonObject();
  const Int polygons = mesh ? mesh->GetPolygonCount() : 0;
  return kJsonBytesPerObject + object.GetName().GetByteCount() * kJsonBytesPerNameByte + polygons * kBytesPerPolygon;
}

/// The member of a dictionary; null when there is none, or value is no dictionary. The value holds on to it.
const Data* Find(const Data* value, const DataKey& key)
{
  if (!value || value->GetKind() != DataKind::kDictionary)
    return nullptr;
  const DataDictionary dictionary = value->GetDictionary().GetValue();
  return dictionary.Find(key);
}

/// The byteLength of the one buffer; 0 without buffers, -1 for anything else.
Int GetDeclaredBytes(const Data& root)
{
  const Data* const buffers = Find(&root, DataKey("buffers"));
  if (!buffers)
    return root.GetKind() == DataKind::kDictionary ? 0 : -1;
  if (buffers->GetKind() != DataKind::kArray)
    return -1;
  const DataArrayView elements = buffers->GetArray().GetValue();
  const Data* const length = elements.GetCount() == 1 ? Find(&elements[0], DataKey("byteLength")) : nullptr;
  return length && length->GetKind() == DataKind::kInt ? length->GetInt().GetValue() : -1;
}

class GlbLooker
{
public:
  GlbLook Look(const std::string& path)
  {
    std::array<std::uint32_t, 5> words{};
    if (!_file.Open(path.c_str(), PlatformOpen::kRead))
      return GlbLook::kUnreadable;
    const Int count = _file.ReadAt(0, words.data(), kPrefixBytes);
    if (count != kPrefixBytes)
      return count < 0 ? GlbLook::kUnreadable : GlbLook::kTooLarge;
    return LookAtJson(words[2], words[3]);
  }

private:
  GlbLook LookAtJson(Int length, Int jsonBytes)
  {
    if (kPrefixBytes + jsonBytes > _file.GetLength())
      return GlbLook::kTooLarge;
    BaseArray<Byte> json;
    if (json.Resize(jsonBytes).HasError())
      return GlbLook::kOutOfMemory;
    const Int count = _file.ReadAt(kPrefixBytes, json.begin(), jsonBytes);
    if (count != jsonBytes)
      return GlbLook::kUnreadable;
    const Result<BaseArray<Data>> parsed = HeadlessJson().ParseBytes(std::move(json));
    if (parsed.HasError())
      return parsed.GetError().GetClass() == ErrorClass::kOutOfMemory ? GlbLook::kOutOfMemory : GlbLook::kTooLarge;
    return LookAtLengths(length, jsonBytes, GetDeclaredBytes(parsed.GetValue()[0]));
  }

  GlbLook LookAtLengths(Int length, Int jsonBytes, Int declaredBytes)
  {
    const Int binaryStart = kPrefixBytes + jsonBytes;
    if (declaredBytes < 0 || declaredBytes > UINT32_MAX)
      return GlbLook::kTooLarge;
    const Int binaryBytes = (declaredBytes + 3) / 4 * 4;
    // The length counts the second header even where there is no second chunk.
    const Int fileBytes = binaryStart + (binaryBytes ? kChunkHeaderBytes + binaryBytes : 0);
    if (length != binaryStart + kChunkHeaderBytes + binaryBytes || _file.GetLength() != fileBytes)
      return GlbLook::kTooLarge;
    std::uint32_t chunkLength = 0;
    const Int count = binaryBytes ? _file.ReadAt(binaryStart, &chunkLength, sizeof(chunkLength)) : 0;
    if (count < 0)
      return GlbLook::kUnreadable;
    return chunkLength == binaryBytes ? GlbLook::kFits : GlbLook::kTooLarge;
  }

  PlatformFile _file;
};

}  // namespace

bool IsFarBelowGlbLimit(const HeadlessDocument& document)
{
  // Takes can animate, materials have images.
  if (document.GetTakeData().GetTakeCount() > 1 || document.GetFirstMaterial())
    return false;
  Int bytes = 0;
  for (const HeadlessObject* object = document.GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
  {
    const std::optional<Int> largest = GetLargestBytes(*object);
    if (!largest || *largest > kFarBelow - bytes)
      return false;
    bytes += *largest;
  }
  return true;
}

GlbLook LookAtGlb(const std::string& path)
{
  return GlbLooker().Look(path);
}

}  // namespace q7z::app
