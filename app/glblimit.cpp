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

// Three quarters of what fits.
constexpr Int kFarBelow = Int(3) << 30;

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

bool HasPlainTags(const HeadlessObject& object)
{
  const HeadlessTag* tag = object.GetFirstTag();
  while (tag && IsPlainTag(*tag))
    tag = tag->GetNext();
  return !tag;
}

/// What is saved in an object's place: itself, or the one object that an instance shows. Null when that is not known.
const HeadlessObject* FindSaved(const HeadlessObject& object)
{
  const HeadlessObject* const saved = object.IsInstance() ? object.GetReference() : &object;
  const bool isKnown = saved && IsPlainObject(*saved) && HasPlainTags(*saved) && (saved == &object || !saved->GetDown());
  return isKnown ? saved : nullptr;
}

/// What an object adds to the file at most; nothing when that is not known.
std::optional<Int> GetLargestBytes(const HeadlessObject& object)
{
  const HeadlessObject* const saved = FindSaved(object);
  if (!saved || !object.GetTracks()->IsEmpty() || !HasPlainTags(object))
    return std::nullopt;
  const HeadlessPolygonObject* const mesh = saved->AsPolygonObject();
  const Int polygons = mesh ? mesh->GetPolygonCount() : 0;
  const Int nameBytes = object.GetName().GetByteCount() + (saved == &object ? 0 : saved->GetName().GetByteCount());
  return kJsonBytesPerObject + nameBytes * kJsonBytesPerNameByte + polygons * kBytesPerPolygon;
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
    BaseArray<Char> json;
    if (json.Resize(jsonBytes + kJsonPadding).HasError())
      return GlbLook::kOutOfMemory;
    const Int count = _file.ReadAt(kPrefixBytes, json.begin(), jsonBytes);
    if (count != jsonBytes)
      return GlbLook::kUnreadable;
    const Result<Int> declared = ReadBufferLength(json.begin(), jsonBytes);
    if (declared.HasError())
      return declared.GetError().GetClass() == ErrorClass::kOutOfMemory ? GlbLook::kOutOfMemory : GlbLook::kTooLarge;
    return LookAtLengths(length, jsonBytes, declared.GetValue());
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
