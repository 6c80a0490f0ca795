// The record of `meshes`.

#include "framework/check.h"
#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

Result<void> GltfMesh::ReadFromJson(const DataDictionary& element) noexcept
{
  _name = ReadString(element, keys::kName, String());
  const auto readPrimitive = [this](const DataDictionary& dataValue, Int) -> Bool
  {
    GltfPrimitive primitive;
    return !primitive.ReadFromJson(dataValue).HasError() && !_primitives.Append(std::move(primitive)).HasError();
  };
  RETURN_IF_ERROR(ForEachElement(element, keys::kPrimitives, readPrimitive));
  RETURN_IF_ERROR(ReadFloatArray(element, keys::kWeights, _weights));
  return {};
}

Result<void> GltfMesh::Resolve(GltfData* gltfData) noexcept
{
  CHECK_ARGUMENT(gltfData);
  for (GltfPrimitive& prim : _primitives)
  {
    RETURN_IF_ERROR(prim.Resolve(*gltfData));
    CHECK_STATE(_weights.IsEmpty() || prim.GetTargetsCount() <= _weights.GetCount());
  }
  _resolved = true;
  return {};
}

Bool GltfMesh::IsValid() const noexcept
{
  if (!_resolved)
    return false;
  for (const GltfPrimitive& prim : _primitives)
  {
    if (!prim.IsValid())
      return false;
  }
  return true;
}

}  // namespace q7z
