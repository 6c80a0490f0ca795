#include "plugin/document/gltfnode.h"

#include "plugin/document/gltfdata.h"
#include "plugin/document/gltfkeys.h"
#include "plugin/document/gltfutilities.h"

namespace q7z
{

namespace
{

/// Column-major; the last row (elements 3, 7, 11 and 15) is not kept.
Result<void> ReadMatrix(const DataDictionary& element, GltfNode& node) noexcept
{
  BaseArray<Float> matrixArray;
  ASSIGN_OR_RETURN(node.hasMatrix, ReadFloatArray(element, keys::kMatrix, matrixArray));
  if (!node.hasMatrix)
    return {};
  CHECK_STATE(16 == matrixArray.GetCount());
  const auto column = [&](Int i) { return Vector{matrixArray[4 * i], matrixArray[4 * i + 1], matrixArray[4 * i + 2]}; };
  node.matrix = {.offset = column(3), .axisX = column(0), .axisY = column(1), .axisZ = column(2)};
  return {};
}

Result<void> ReadRotation(const DataDictionary& element, Vector4& rotation) noexcept
{
  BaseArray<Float> rotationArray;
  ASSIGN_OR_RETURN(const Bool found, ReadFloatArray(element, keys::kRotation, rotationArray));
  if (!found)
    return {};
  CHECK_STATE(4 == rotationArray.GetCount());
  rotation = {rotationArray[0], rotationArray[1], rotationArray[2], rotationArray[3]};
  return {};
}

Result<void> ReadScale(const DataDictionary& element, Vector& scale) noexcept
{
  BaseArray<Float> scaleArray;
  ASSIGN_OR_RETURN(const Bool found, ReadFloatArray(element, keys::kScale, scaleArray));
  if (!found)
    return {};
  CHECK_STATE(3 == scaleArray.GetCount());
  scale = {scaleArray[0], scaleArray[1], scaleArray[2]};
  return {};
}

Result<void> ReadTranslation(const DataDictionary& element, Vector& translation) noexcept
{
  BaseArray<Float> translationArray;
  ASSIGN_OR_RETURN(const Bool found, ReadFloatArray(element, keys::kTranslation, translationArray));
  if (!found)
    return {};
  CHECK_STATE(3 == translationArray.GetCount());
  translation = {translationArray[0], translationArray[1], translationArray[2]};
  return {};
}

}  // namespace

Result<void> GltfNode::ReadFromJson(const DataDictionary& element) noexcept
{
  name = ReadString(element, keys::kName, String());
  camera = ReadInt(element, keys::kCamera, -1);
  skin = ReadInt(element, keys::kSkin, -1);
  mesh = ReadInt(element, keys::kMesh, -1);
  RETURN_IF_ERROR(ReadIntArray(element, keys::kChildren, children));
  RETURN_IF_ERROR(ReadIntArray(element, keys::kWeights, weights));
  // Matrix and TRS may stand together: all are kept, and hasMatrix lets the matrix win.
  RETURN_IF_ERROR(ReadMatrix(element, *this));
  RETURN_IF_ERROR(ReadRotation(element, rotation));
  RETURN_IF_ERROR(ReadScale(element, scale));
  return ReadTranslation(element, translation);
}

Result<void> GltfScene::ReadFromJson(const DataDictionary& element) noexcept
{
  name = ReadString(element, keys::kName, String());
  RETURN_IF_ERROR(ReadIntArray(element, keys::kNodes, nodes));
  return {};
}

}  // namespace q7z
