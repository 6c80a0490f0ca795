#pragma once

// Skin weights of a mesh under construction: the weight tag of its object with the joints of the skin, and the weights of each
// primitive's points. A SkinCreator lives while its mesh is made; the tag belongs to the object from the start.

#include "framework/basearray.h"
#include "framework/hashmap.h"
#include "plugin/document/gltfnode.h"
#include "plugin/geometry/gltfmesh.h"
#include "plugin/geometry/gltfmeshcreator.h"

namespace q7z
{

class SkinCreator
{
public:
  /// There is a tag, and joints in it.
  Bool IsValid() const noexcept { return _meshCreator && _nodesMap && _skinWeightTag && _mapJointIndicesGltfToQ7Z.IsPopulated(); }

  MeshCreator* _meshCreator = nullptr;                   // not owned
  const HashMap<Int, HostObject*>* _nodesMap = nullptr;  // joints by node index; not owned
  HostWeightTag* _skinWeightTag = nullptr;               // owned by the mesh
  BaseArray<Int32> _mapJointIndicesGltfToQ7Z;            // by position in the skin's joints: the joint's index in the tag
  GeometryBudget* _budget = nullptr;                     // for joints and weights; not owned, null for no limit
};

/// Gives the creator's mesh a weight tag with the skin's joints, in their order; a node that is listed twice is there twice.
/// @param nodesMap  the joint objects by node index. @param budget  null for no limit.
Result<void> StartSkinCreator(SkinCreator& skinCreator, MeshCreator& meshCreator, const GltfSkin* gltfSkin,
                              const HashMap<Int, HostObject*>& nodesMap, const GltfNode* node, GeometryBudget* budget) noexcept;

/// Writes the weights of a primitive's points, which begin at the creator's cursor. Sets are worked in rising order; what names
/// one joint of a point twice leaves the later weight. A set of other types than the format's is skipped.
Result<void> AddMeshSkinJointWeights(MeshCreator& meshCreator, SkinCreator& skinCreator, const PrimitiveAccessors& baseAccessors,
                                     Int vertexCount, const GltfSkin* skinPtr) noexcept;

}  // namespace q7z
