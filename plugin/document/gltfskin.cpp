// The record of `skins`.

#include "framework/check.h"
#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

Result<void> GltfSkin::ReadFromJson(const DataDictionary& element) noexcept
{
  name = ReadString(element, keys::kName, String());
  inverseBindMatrices = ReadInt(element, keys::kInverseBindMatrices, -1);
  skeleton = ReadInt(element, keys::kSkeleton, -1);
  RETURN_IF_ERROR(ReadIntArray(element, keys::kJoints, joints));
  return {};
}

Result<void> GltfSkin::Resolve(GltfData* gltfData) noexcept
{
  CHECK_ARGUMENT(gltfData);
  // The index is cut to 32 bits, as the accessors are numbered. Without one it is -1, and the non-indexed accessor will not do.
  ASSIGN_OR_RETURN(accessor, GetAccessor(*gltfData, static_cast<Int32>(inverseBindMatrices), false));
  return {};
}

}  // namespace q7z
