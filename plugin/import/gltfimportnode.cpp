// One node of the file becomes one object: a mesh, an instance of one, a group, or the joint that takes their place.

#include "framework/check.h"
#include "plugin/camera/gltfcamera.h"
#include "plugin/import/gltfimporter.h"
#include "plugin/module/hostconsole.h"

namespace q7z
{

namespace
{

constexpr Int32 kInstanceModeParameter = 1002;
constexpr Int32 kNodeMarkParameter = 929;

constexpr String kNodePattern = "Node_@"_s;

}  // namespace

/// A node under construction. What it owns goes with it when building fails; the maps learn of it when nothing can fail any more.
struct GltfImporter::NodeBuild
{
  const GltfNode& node;
  Int nodeIndex;
  HostOwner<HostObject> mesh;
  HostOwner<HostObject> camera;
  HostOwner<HostObject> opMain;
  HostObject* meshObject = nullptr;             // the node's mesh or instance; null when there is none or it went with its group
  HostPolygonObject* skinned = nullptr;         // what the node's skin is to deform; null for none
  HostOwner<HostObject>* looseJoint = nullptr;  // where a joint that is opMain goes back to
};

Result<HostObject*> GltfImporter::BuildNode(const GltfNode* node, Int nodeIndex, HostObject* parent) noexcept
{
  CHECK_STATE(node);
  NodeBuild build{*node, nodeIndex};
  const Result<void> built = BuildDetached(build);
  if (built.HasError())
  {
    if (build.looseJoint)
      *build.looseJoint = std::move(build.opMain);
    return built.GetError();
  }
  HostObject* const opMain = build.opMain.release();
  HostInsertUnder(opMain, parent);
  return opMain;
}

Result<void> GltfImporter::BuildDetached(NodeBuild& build) noexcept
{
  ASSIGN_OR_RETURN(build.mesh, MakeMesh(build.node));
  build.meshObject = build.mesh.get();
  ASSIGN_OR_RETURN(build.camera, MakeCamera(build.node));
  RETURN_IF_ERROR(MakeMain(build));
  RETURN_IF_ERROR(ReplaceByJoint(build));
  RETURN_IF_ERROR(FindSkinned(build));
  RETURN_IF_ERROR(PlaceMain(build));
  return EnterIntoMaps(build);
}

Result<void> GltfImporter::MakeMain(NodeBuild& build) noexcept
{
  HostOwner<HostObject>& opMain = build.opMain;
  if (build.mesh && !build.camera)
    opMain = std::move(build.mesh);
  else if (build.camera && !build.mesh)
    opMain = std::move(build.camera);
  if (opMain)
    return {};
  opMain.reset(HostAllocObject(kNullObjectType));
  CHECK_STATE(opMain);
  RETURN_IF_ERROR(SetObjectName(opMain.get(), build.node.name, kNodePattern, build.nodeIndex));
  return build.mesh ? GroupMeshAndCamera(build) : Result<void>();
}

/// Both stand under the main object; the mesh is inserted first, so that the camera comes first.
Result<void> GltfImporter::GroupMeshAndCamera(NodeBuild& build) noexcept
{
  const String name = build.opMain->GetName();
  ASSIGN_OR_RETURN(const String meshName, String::Join({name, " Mesh"_s}));
  ASSIGN_OR_RETURN(const String cameraName, String::Join({name, " Camera"_s}));
  if (!build.mesh->SetName(meshName) || !build.camera->SetName(cameraName))
    return Error::OutOfMemory();
  HostInsertUnder(build.mesh.release(), build.opMain.get());
  HostInsertUnder(build.camera.release(), build.opMain.get());
  return {};
}

Result<void> GltfImporter::ReplaceByJoint(NodeBuild& build) noexcept
{
  HostObject* const* const found = _jointsToObjects.Find(build.nodeIndex);
  if (!found)
    return {};
  HostObject* const joint = *found;
  HostObject* const replaced = build.opMain.get();
  if (!joint->SetName(replaced->GetName()))
    return Error::OutOfMemory();

  // The first child alone: in its new place the next sibling is none, or a child that the joint had before.
  if (HostObject* const child = replaced->GetDown())
  {
    HostRemove(child);
    HostInsertUnder(child, joint);
  }
  if (replaced->GetType() == kNullObjectType)
  {
    build.opMain.reset();
    build.meshObject = nullptr;
  }
  else
  {
    // Deliberately without a parent: a mesh on a joint stands outside the hierarchy.
    HostInsertUnder(replaced, nullptr);
    RETURN_IF_ERROR(_detached.Append(std::move(build.opMain)));
  }
  HostRemove(joint);
  build.looseJoint = _looseJoints.Find(build.nodeIndex);
  static_cast<void>(build.looseJoint->release());  // a joint that stands nowhere has its owner there
  build.opMain.reset(joint);
  return {};
}

Result<void> GltfImporter::FindSkinned(NodeBuild& build) noexcept
{
  const Int skin = build.node.skin;
  if (!_options.IsSkins() || skin == -1)
    return {};
  if (_skinsToObjects.Contains(skin))
  {
    ASSIGN_OR_RETURN(const String skinText, String::FromInt(skin));
    ASSIGN_OR_RETURN(const String line, String::Format("More than one node addresses same skin #@!"_s, {skinText}));
    HOST_DIAGNOSTIC(line);
  }
  for (HostObject* const candidate : {build.opMain.get(), build.meshObject})
  {
    if (!build.skinned && candidate && candidate->GetType() == kPolygonObjectType)
      build.skinned = ToPoly(candidate);
  }
  return {};
}

Result<void> GltfImporter::PlaceMain(NodeBuild& build) noexcept
{
  HostOwner<HostObject>& opMain = build.opMain;
  CHECK_STATE(opMain);
  opMain->SetLocalMatrix(ConvertNodeTransform(build.node, _options.GetScale(), _options.IsFlipZ()));
  CHECK_STATE(opMain->SetParameter(kNodeMarkParameter, 1));
  return {};
}

// Whoever shares the mesh, or binds the skin, comes after this node.
Result<void> GltfImporter::EnterIntoMaps(const NodeBuild& build) noexcept
{
  const Bool isFirstOfMesh = build.meshObject && !_meshesToObjects.Contains(build.node.mesh);
  if (isFirstOfMesh)
    RETURN_IF_ERROR(_meshesToObjects.Set(build.node.mesh, build.meshObject));
  if (!build.skinned)
    return {};
  const Result<HostPolygonObject**> entered = _skinsToObjects.Set(build.node.skin, build.skinned);
  if (!entered.HasError())
    return {};
  if (isFirstOfMesh)
    _meshesToObjects.Erase(build.node.mesh);
  return entered.GetError();
}

Result<HostOwner<HostObject>> GltfImporter::MakeMesh(const GltfNode& node) noexcept
{
  if (!_options.IsGeometry() || !node.HasMesh())
    return HostOwner<HostObject>();
  const GltfMesh* const meshPtr = _gltfData.meshes.Find(node.mesh);
  CHECK_STATE(meshPtr && meshPtr->IsValid());
  HostObject* const* const shown = _meshesToObjects.Find(node.mesh);
  ASSIGN_OR_RETURN(HostOwner<HostObject> mesh, shown ? MakeInstance(*shown) : MakeMeshObject(node, *meshPtr));
  if (!mesh->SetName(node.name.IsPopulated() ? node.name : "Mesh"_s))
    return Error::OutOfMemory();
  return mesh;
}

Result<HostOwner<HostObject>> GltfImporter::MakeCamera(const GltfNode& node) noexcept
{
  if (!_options.IsCameras() || !node.HasCamera())
    return HostOwner<HostObject>();
  const GltfCameraRecord* const cameraPtr = _gltfData.cameras.Find(node.camera);
  CHECK_STATE(cameraPtr);
  HostOwner<HostObject> camera(HostAllocObject(kCameraObjectType));
  if (!camera)
    return Error::OutOfMemory();
  RETURN_IF_ERROR(WriteCameraToHost(cameraPtr->camera.get(), camera.get(), _doc, _options));
  if (!camera->SetName(node.name.IsPopulated() ? node.name : "Camera"_s))
    return Error::OutOfMemory();
  return camera;
}

Result<HostOwner<HostObject>> GltfImporter::MakeInstance(HostObject* shown) noexcept
{
  HostOwner<HostObject> instance(HostAllocObject(kInstanceObjectType));
  if (!instance || !instance->SetReference(shown))
    return Error::OutOfMemory();
  CHECK_STATE(instance->SetParameter(kInstanceModeParameter, 0));
  return instance;
}

Result<HostOwner<HostObject>> GltfImporter::MakeMeshObject(const GltfNode& node, const GltfMesh& mesh) noexcept
{
  const Bool skinned = _options.IsSkins() && node.skin != -1;
  MeshContext context;
  context.document = _doc;
  context.materials = &_materialsToObjects;
  context.nodes = &_jointsToObjects;
  context.skin = skinned ? _gltfData.skins.Find(node.skin) : nullptr;
  context.options = &_options;
  context.node = &node;
  context.budget = &_geometryBudget;

  BaseArray<HostOwner<HostPolygonObject>> meshPolys;
  RETURN_IF_ERROR(CreateMeshObjects(mesh, context, meshPolys));
  CHECK_STATE(meshPolys.GetCount());
  for (const HostOwner<HostPolygonObject>& polygonObject : meshPolys)
    RETURN_IF_ERROR(HideMorphTargets(polygonObject.get()));
  if (meshPolys.GetCount() > 1)
    return GroupPrimitives(meshPolys);
  HostOwner<HostObject> opMesh = std::move(meshPolys[0]);
  CHECK_STATE(opMesh);
  return opMesh;
}

Result<HostOwner<HostObject>> GltfImporter::GroupPrimitives(BaseArray<HostOwner<HostPolygonObject>>& meshPolys) noexcept
{
  HostOwner<HostObject> group(HostAllocObject(kNullObjectType));
  if (!group)
    return Error::OutOfMemory();
  for (Int i = 0; i < meshPolys.GetCount(); ++i)
  {
    HostOwner<HostPolygonObject>& poly = meshPolys[i];
    CHECK_STATE(poly);
    RETURN_IF_ERROR(SetObjectName(poly.get(), String(), "Prim @"_s, i));
    HostInsertUnder(poly.release(), group.get());
  }
  return group;
}

// The first child of a mesh with morphs is the group of its poses.
Result<void> GltfImporter::HideMorphTargets(HostPolygonObject* poly) noexcept
{
  HostObject* const poses = poly ? poly->GetDown() : nullptr;
  if (!poses)
    return {};
  HostLayer* layer = nullptr;
  if (_options.IsTargetsLayer())
  {
    ASSIGN_OR_RETURN(layer, GetTargetsLayer());
    CHECK_STATE(poses->SetLayer(layer));
  }
  for (HostObject* pose = poses->GetDown(); pose; pose = pose->GetNext())
  {
    pose->SetVisibility(kEditorVisibility, kHiddenMode);
    pose->SetVisibility(kRenderVisibility, kHiddenMode);
    if (layer)
      CHECK_STATE(pose->SetLayer(layer));
  }
  return {};
}

Result<HostLayer*> GltfImporter::GetTargetsLayer() noexcept
{
  if (_targetsLayer)
    return _targetsLayer;
  HostLayer* const rootLayer = _doc->GetLayerRoot();
  CHECK_STATE(rootLayer);
  HostLayer* const layer = rootLayer->Add();
  if (!layer || !layer->SetName("Pose Morph Targets"_s))
    return Error::OutOfMemory();
  _targetsLayer = layer;
  return layer;
}

}  // namespace q7z
