#include "plugin/geometry/gltfskinweights.h"

#include "framework/arithmetic.h"
#include "framework/check.h"
#include "plugin/document/gltfaccessor.h"
#include "plugin/geometry/gltfelementreader.h"

namespace q7z
{

namespace
{

constexpr Float kLeastWeight = 1e-10;
constexpr int kComponents = 4;  // joints a point and set

// As points go: a joint of a tag keeps a matrix and an array of its own.
constexpr Int kElementsPerJoint = 8;

// Vertices that are read in one go; what they need stays in the cache.
constexpr Int32 kBatchVertices = 256;

/// The accessors of one set, with types that can be read.
struct WeightSet
{
  const GltfAccessor& joints;
  const GltfAccessor& weights;
};

struct Chunk
{
  UInt32 joints[kBatchVertices][kComponents];
  Float weights[kBatchVertices][kComponents];
  HostPointWeight entries[kBatchVertices * kComponents];
};

Result<void> TakeFromBudget(const SkinCreator& skinCreator, Int count, Int elementsEach) noexcept
{
  Int elements = 0;
  if (!CheckedMultiply(count, elementsEach, elements))
    return Error::OutOfMemory();
  return skinCreator._budget ? skinCreator._budget->Take(elements, 0) : Result<void>();
}

Result<void> ReadJoints(const GltfAccessor& accessor, Int first, Int32 count, Chunk& chunk) noexcept
{
  GltfElements elements;
  const auto readAll = [&](auto load)
  {
    const Byte* element = elements.first + first * elements.stride;
    for (Int32 i = 0; i < count; ++i, element += elements.stride)
    {
      for (int k = 0; k < kComponents; ++k)
        chunk.joints[i][k] = load(element, k);
    }
  };
  if (accessor.GetElements(elements) && first + count <= elements.count && WithIndexLoader(elements, readAll))
    return {};
  for (Int32 i = 0; i < count; ++i)
  {
    ASSIGN_OR_RETURN(const GltfAccessor::UInt32x4 joints, accessor.GetUInt32x4(first + i));
    for (int k = 0; k < kComponents; ++k)
      chunk.joints[i][k] = joints.values[k];
  }
  return {};
}

Result<void> ReadWeights(const GltfAccessor& accessor, Int first, Int32 count, Chunk& chunk) noexcept
{
  return WithElementReader<kComponents>(accessor,
                                        [&](const auto& read) -> Result<void>
                                        {
                                          for (Int32 i = 0; i < count; ++i)
                                          {
                                            if (!read(first + i, chunk.weights[i])) [[unlikely]]
                                              return GetReadError<kComponents>(accessor, first + i);
                                          }
                                          return {};
                                        });
}

/// Makes entries of what was read. @return how many.
Result<Int32> CollectEntries(const SkinCreator& skinCreator, Int32 firstPoint, Int32 count, Chunk& chunk) noexcept
{
  const BaseArray<Int32>& map = skinCreator._mapJointIndicesGltfToQ7Z;
  Int32 entryCount = 0;
  for (Int32 i = 0; i < count; ++i)
  {
    for (int k = 0; k < kComponents; ++k)
    {
      // Writers fill up with joints of no weight, which need not be there.
      if (chunk.weights[i][k] < kLeastWeight)
        continue;
      const Int joint = chunk.joints[i][k];
      const Int32* const q7zJointIdxEntry = joint < map.GetCount() ? &map[joint] : nullptr;
      CHECK_STATE(q7zJointIdxEntry);
      chunk.entries[entryCount++] = {*q7zJointIdxEntry, firstPoint + i, chunk.weights[i][k]};
    }
  }
  return entryCount;
}

Result<void> AddWeightSet(const SkinCreator& skinCreator, const WeightSet& set, Int32 cursorPoints, Int vertexCount) noexcept
{
  RETURN_IF_ERROR(TakeFromBudget(skinCreator, vertexCount, kComponents));
  Chunk chunk;
  for (Int first = 0; first < vertexCount; first += kBatchVertices)
  {
    const Int left = vertexCount - first;
    const Int32 count = left < kBatchVertices ? static_cast<Int32>(left) : kBatchVertices;
    RETURN_IF_ERROR(ReadJoints(set.joints, first, count, chunk));
    RETURN_IF_ERROR(ReadWeights(set.weights, first, count, chunk));
    const Int32 firstPoint = static_cast<Int32>(cursorPoints + first);
    ASSIGN_OR_RETURN(const Int32 entryCount, CollectEntries(skinCreator, firstPoint, count, chunk));
    if (!skinCreator._skinWeightTag->SetWeights(chunk.entries, entryCount))
      return Error::OutOfMemory();
  }
  return {};
}

}  // namespace

Result<void> StartSkinCreator(SkinCreator& skinCreator, MeshCreator& meshCreator, const GltfSkin* gltfSkin,
                              const HashMap<Int, HostObject*>& nodesMap, const GltfNode* node, GeometryBudget* budget) noexcept
{
  CHECK_STATE(gltfSkin);
  CHECK_STATE(node);
  skinCreator._meshCreator = &meshCreator;
  skinCreator._nodesMap = &nodesMap;
  skinCreator._budget = budget;
  const Int jointCount = gltfSkin->joints.GetCount();
  RETURN_IF_ERROR(TakeFromBudget(skinCreator, jointCount, kElementsPerJoint));
  skinCreator._skinWeightTag = static_cast<HostWeightTag*>(meshCreator.mesh->MakeTag(kWeightTagType));
  if (!skinCreator._skinWeightTag)
    return Error::OutOfMemory();
  RETURN_IF_ERROR(skinCreator._mapJointIndicesGltfToQ7Z.Reserve(jointCount));
  for (const Int nodeIndex : gltfSkin->joints)
  {
    HostObject* const* const jointEntry = nodesMap.Find(nodeIndex);
    CHECK_STATE(jointEntry);
    const Int32 q7zJointIdx = skinCreator._skinWeightTag->AddJoint(*jointEntry);
    CHECK_STATE(q7zJointIdx != -1);
    RETURN_IF_ERROR(skinCreator._mapJointIndicesGltfToQ7Z.Append(q7zJointIdx));
  }
  return {};
}

Result<void> AddMeshSkinJointWeights(MeshCreator& meshCreator, SkinCreator& skinCreator, const PrimitiveAccessors& baseAccessors,
                                     Int vertexCount, const GltfSkin* skinPtr) noexcept
{
  CHECK_STATE(skinPtr);
  CHECK_STATE(skinCreator.IsValid());
  CHECK_STATE(baseAccessors._skinJointsAccessors.IsPopulated());
  CHECK_STATE(baseAccessors._skinJointsAccessors.GetCount() == baseAccessors._skinWeightsAccessors.GetCount());
  CHECK_STATE(skinCreator._skinWeightTag);
  CHECK_STATE(skinCreator._mapJointIndicesGltfToQ7Z.IsPopulated());
  CHECK_STATE(skinCreator._mapJointIndicesGltfToQ7Z.GetCount() == skinCreator._skinWeightTag->GetJointCount());
  for (const GltfAttributeSet& set : baseAccessors._skinJointsAccessors)
  {
    const GltfAccessor& joints = *set.accessor;
    if (!joints.IsOfType({"VEC4"_s}) || !joints.IsOfType({kUnsignedByte, kUnsignedShort}))
      continue;
    const GltfAccessor* const weightsAccessorEntry = FindSet(baseAccessors._skinWeightsAccessors, set.number);
    CHECK_STATE(weightsAccessorEntry);
    const GltfAccessor& weights = *weightsAccessorEntry;
    if (!weights.IsOfType({"VEC4"_s}) || !weights.IsOfType({kFloatComponent, kUnsignedByte, kUnsignedShort}))
      continue;
    RETURN_IF_ERROR(AddWeightSet(skinCreator, {joints, weights}, meshCreator.cursorPoints, vertexCount));
  }
  return {};
}

}  // namespace q7z
