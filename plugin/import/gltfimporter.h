#pragma once

// GltfImporter: one load from the parsed file to the scene in the document. The loader makes one for each load; it dies with the
// load. What it has inserted belongs to the document; what never found a place dies with it.

#include <memory>

#include "plugin/animation/gltfanimationimport.h"
#include "plugin/document/gltfload.h"
#include "plugin/geometry/gltfmesh.h"
#include "plugin/import/gltfimportplan.h"
#include "plugin/material/gltfmaterialimport.h"
#include "plugin/module/hostdocument.h"

namespace q7z
{

class GltfImporter final : public GltfLoad
{
public:
  /// @param doc  the target, not owned. @param merging  the document keeps its own settings.
  static Result<std::unique_ptr<GltfImporter>> Create(HostDocument* doc, const Url& fileUrl, Bool isGlb, Bool merging,
                                                      HostBackgroundJob* backgroundJob) noexcept;

  /// Builds what the parsed file holds. Items that fail give warnings; an error leaves the document with the scenes before it.
  Result<void> ConstructScene() noexcept;

private:
  struct NodeBuild;

  GltfImporter(HostDocument* doc, const Url& fileUrl, Bool isGlb, Bool merging, HostBackgroundJob* backgroundJob) noexcept
      : GltfLoad(fileUrl, isGlb, backgroundJob), _doc(doc), _merging(merging), _materialImporter(_warnings)
  {}

  // gltfimportscene.cpp: materials, scenes, roots and the document's texts.
  Result<void> LoadMaterials(const LoadProgress& progress) noexcept;
  Result<void> CreateDocumentMaterial(Int gltfMatIdx, const GltfMaterial& gltfMaterial, const ImportWarnings& log) noexcept;
  Result<HostOwner<HostMaterial>> MakeMaterial(Int gltfMatIdx, const GltfMaterial& gltfMaterial,
                                               const ImportWarnings& log) noexcept;
  void SetLimits() noexcept;
  Result<void> LoadScenes() noexcept;
  Result<void> LoadScene(Int sceneIndex, const GltfScene& scene) noexcept;
  Result<void> FillScene(Int sceneIndex, const GltfScene& scene, HostObject* sceneParent) noexcept;
  Result<void> LoadRoots() noexcept;
  Result<void> FindRoots() noexcept;
  Result<Bool> LoadMetaInfo() noexcept;

  // gltfimporthierarchy.cpp: the walk over the nodes of one scene.
  Result<void> LoadHierarchy(const BaseArray<Int>& nodeIndices, HostObject* parent) noexcept;
  Result<void> ImportNode(PlannedNode& visit, HostObject* parent) noexcept;
  Result<void> ReplaceFailedNode(Int nodeIndex, const Error& error) noexcept;
  Result<void> TakeObjects(Int count) noexcept;
  Result<void> TakeWayUp(const HostObject* object) noexcept;
  Result<Bool> IsOwnAncestor(Int nodeIndex, const HostObject* parent) noexcept;

  // gltfimportnode.cpp: one node.
  Result<HostObject*> BuildNode(const GltfNode* node, Int nodeIndex, HostObject* parent) noexcept;
  Result<void> BuildDetached(NodeBuild& build) noexcept;
  Result<void> MakeMain(NodeBuild& build) noexcept;
  Result<void> GroupMeshAndCamera(NodeBuild& build) noexcept;
  Result<void> ReplaceByJoint(NodeBuild& build) noexcept;
  Result<void> FindSkinned(NodeBuild& build) noexcept;
  Result<void> PlaceMain(NodeBuild& build) noexcept;
  Result<void> EnterIntoMaps(const NodeBuild& build) noexcept;
  Result<HostOwner<HostObject>> MakeMesh(const GltfNode& node) noexcept;
  Result<HostOwner<HostObject>> MakeCamera(const GltfNode& node) noexcept;
  Result<HostOwner<HostObject>> MakeInstance(HostObject* shown) noexcept;
  Result<HostOwner<HostObject>> MakeMeshObject(const GltfNode& node, const GltfMesh& mesh) noexcept;
  Result<HostOwner<HostObject>> GroupPrimitives(BaseArray<HostOwner<HostPolygonObject>>& meshPolys) noexcept;
  Result<void> HideMorphTargets(HostPolygonObject* poly) noexcept;
  Result<HostLayer*> GetTargetsLayer() noexcept;

  // gltfimportskin.cpp: joints and bind poses.
  Result<void> MakeJoints() noexcept;
  Result<void> MakeJoint(Int nodeIndex) noexcept;
  Result<void> BindSkins() noexcept;
  Result<void> BindSkin(const GltfSkin& skin, HostPolygonObject* polygonObjectOp) noexcept;
  Result<void> InsertDeformers() noexcept;

  // gltfimportanimation.cpp: animations and takes.
  Result<void> TryLoadAnimations() noexcept;
  Result<void> LoadAnimations() noexcept;
  Result<void> LoadOnlyAnimation(Int gltfAnimationIdx, const GltfAnimation& animation, HostTake* mainTake) noexcept;
  Result<void> LoadIntoTake(Int gltfAnimationIdx, const GltfAnimation& animation, HostTakeData* takeData) noexcept;
  Result<void> ImportAnimation(Int gltfAnimationIdx, const GltfAnimation& animation, HostTake* take, Bool addRestKeys) noexcept;

  HostDocument* _doc;  // not owned
  Bool _merging;
  AnimationImporter _animationImporter;
  MaterialImporter _materialImporter;

  BaseArray<Int> _roots;                             // node indices, of a file without scenes
  HashMap<Int, HostObject*> _nodesToObjects;         // every visited node; a stand-in for one that failed
  HashMap<Int, HostObject*> _meshesToObjects;        // the first object built for a mesh
  HashMap<Int, HostMaterial*> _materialsToObjects;   // by material index
  HashMap<Int, HostPolygonObject*> _skinsToObjects;  // the polygon object of a skin
  HashMap<Int, HostObject*> _jointsToObjects;        // by node index
  HashMap<Int, HostOwner<HostObject>> _looseJoints;  // by node index: owns a joint as long as it stands nowhere
  BaseArray<HostOwner<HostObject>> _detached;        // objects in the maps that are in no hierarchy
  HostLayer* _targetsLayer = nullptr;                // not owned; null until needed
  Bool _jointsMade = false;
  Bool _hasCycle = false;  // some node was met below itself

  GeometryBudget _geometryBudget{0};
  Int _remainingObjects = 0;  // how many objects the nodes may still become
  Int _remainingSteps = 0;    // upward steps that are left for global matrices and ancestors
  Int _visitedNodes = 0;
  LoadProgress _hierarchyProgress;
};

/// Names an object: name, or pattern with index in place of its "@" where the name is empty.
Result<void> SetObjectName(HostObject* object, const String& name, const String& pattern, Int index) noexcept;

}  // namespace q7z
