#include "plugin/geometry/gltfmesh.h"

#include "framework/arithmetic.h"
#include "framework/check.h"
#include "plugin/document/gltfaccessor.h"
#include "plugin/geometry/gltfmeshcreator.h"
#include "plugin/geometry/gltfmorphtargets.h"
#include "plugin/geometry/gltfskinweights.h"

namespace q7z
{

namespace
{

constexpr Float kRadiansPerDegree = 0.017453292519943295;

// Below this much geometry no file is held to its size: real files share small accessors among many primitives.
constexpr Int kFreeElements = 1000000;
constexpr Int kElementsPerByte = 16;

/// How a mesh is put together.
struct MeshPlan
{
  Bool morphWanted = false;
  Int targetsCount = 0;  // of the first primitive, which alone decides about morphs
  Bool skinWanted = false;
  Bool split = false;
};

Bool HasSkinAttributes(const GltfPrimitive& primitive) noexcept
{
  const PrimitiveAccessors& accessors = primitive.GetAccessors();
  return accessors._skinJointsAccessors.IsPopulated() && accessors._skinWeightsAccessors.IsPopulated();
}

MeshPlan PlanMesh(const GltfMesh& mesh, const MeshContext& context) noexcept
{
  const ImportOptions& options = *context.options;
  MeshPlan plan;
  plan.targetsCount = mesh.GetPrimitives().IsPopulated() ? mesh.GetPrimitives()[0].GetTargetsCount() : 0;
  plan.morphWanted = options.IsMorphTargets() && plan.targetsCount > 0;
  if (options.IsAnimationTrs() && context.skin && context.nodes)
  {
    for (const GltfPrimitive& primitive : mesh.GetPrimitives())
      plan.skinWanted = plan.skinWanted || HasSkinAttributes(primitive);
  }
  plan.split = options.IsSplitMesh() && !plan.skinWanted;
  return plan;
}

/// Fails where the positions or the indices could not be read, before anything is made in the size that they claim.
Result<void> CheckElements(const GltfPrimitive& primitive, const GltfPrimitive::Counts& counts) noexcept
{
  const PrimitiveAccessors& accessors = primitive.GetAccessors();
  GltfElements elements;
  if (!accessors.positions->GetElements(elements))
    RETURN_IF_ERROR(accessors.positions->GetVector3(counts.vertexCount - 1));
  if (!accessors.indices->IsNonIndexed() && !accessors.indices->GetElements(elements))
    RETURN_IF_ERROR(accessors.indices->GetUInt32(3 * counts.polygonCount - 1));  // a rest behind is never read
  return {};
}

Result<GltfPrimitive::Counts> CountPrimitive(const GltfPrimitive& primitive, const MeshContext& context) noexcept
{
  ASSIGN_OR_RETURN(const GltfPrimitive::Counts counts, primitive.GetCounts());
  RETURN_IF_ERROR(CheckElements(primitive, counts));
  if (context.budget)
    RETURN_IF_ERROR(context.budget->Take(counts.vertexCount, counts.polygonCount));
  return counts;
}

/// The skin that a primitive's points get weights for; nothing for none.
struct PrimitiveSkin
{
  SkinCreator* skinCreator = nullptr;
  const GltfSkin* skinPtr = nullptr;
};

/// Writes one primitive at the creator's cursors.
Result<void> AddPrimitiveGeometry(MeshCreator& meshCreator, const GltfPrimitive& primitive, const ImportOptions& options,
                                  Bool noSelections, const PrimitiveSkin& skin) noexcept
{
  const PrimitiveAccessors& _primAccessors = primitive.GetAccessors();
  ASSIGN_OR_RETURN(const GltfPrimitive::Counts counts, primitive.GetCounts());
  const Int vertexCount = counts.vertexCount;
  const Int polyCount = counts.polygonCount;
  CHECK_STATE(vertexCount);
  CHECK_STATE(polyCount);
  const HostPolygonObject* const poly = meshCreator.mesh.get();
  CHECK_STATE(poly);
  CHECK_STATE((meshCreator.cursorPoints + vertexCount - 1 >= 0 && meshCreator.cursorPoints + vertexCount - 1 < poly->GetPointCount()));
  CHECK_STATE(
    (meshCreator.cursorPolygons + polyCount - 1 >= 0 && meshCreator.cursorPolygons + polyCount - 1 < poly->GetPolygonCount()));

  const Vector flipZMultiplier{1, 1, options.IsFlipZ() ? -1.0 : 1.0};
  CHECK_STATE(AddMeshPositions(meshCreator, _primAccessors, nullptr, vertexCount, flipZMultiplier, options.GetScale()));
  CHECK_STATE(AddMeshPolygons(meshCreator, _primAccessors, polyCount, options.IsFlipZ()));
  if (meshCreator.normalTag && _primAccessors.normals)
    CHECK_STATE(AddMeshNormals(meshCreator, _primAccessors, nullptr, polyCount, flipZMultiplier));
  CHECK_STATE(AddMeshVertexColors(meshCreator, _primAccessors, nullptr, vertexCount));
  CHECK_STATE(AddMeshUVs(meshCreator, _primAccessors, nullptr, polyCount));
  if (options.IsMaterials() && !noSelections)
    CHECK_STATE(AddPolygonSelections(meshCreator, _primAccessors, polyCount));
  const auto [skinCreator, skinPtr] = skin;
  if (skinCreator && skinPtr)
    CHECK_STATE(AddMeshSkinJointWeights(meshCreator, *skinCreator, _primAccessors, vertexCount, skinPtr));
  meshCreator.Advance(vertexCount, polyCount);
  return {};
}

/// Names a texture tag and, where the primitive has a selection, restricts it to that.
Result<void> NameTextureTag(MeshCreator& meshCreator, HostTextureTag& tag, Int materialIndex,
                            const HostMaterial& material) noexcept
{
  String name = material.GetName();
  if (HostPolygonSelectionTag* const* entry = meshCreator.polygonSelections.Find(materialIndex))
  {
    const HostPolygonSelectionTag* const polySel = *entry;
    CHECK_STATE(polySel);
    if (!tag.SetParameter(1006, polySel->GetName()))
      return Error::OutOfMemory();
    ASSIGN_OR_RETURN(const String number, String::FromInt(meshCreator.currentPrimitive));
    ASSIGN_OR_RETURN(name, String::Format("prim@_@"_s, {number, name}));
  }
  return tag.SetName(name) ? Result<void>() : Error::OutOfMemory();
}

Result<void> AssignPrimitiveMaterial(MeshCreator& meshCreator, const GltfPrimitive& primitive,
                                     const MeshContext& context) noexcept
{
  const Int materialIndex = primitive.GetMaterial();
  if (!context.options->IsMaterials() || materialIndex == -1 || !context.materials)
    return {};
  HostMaterial* const* material = context.materials->Find(materialIndex);
  if (!material || !*material)
    return {};
  CHECK_STATE(meshCreator.mesh);
  HostOwner<HostTextureTag> tag(static_cast<HostTextureTag*>(HostTag::Alloc(kTextureTagType)));
  if (!tag)
    return Error::OutOfMemory();
  tag->SetMaterial(*material);
  // A host without memory for the link says nothing.
  if (tag->GetMaterial() != *material || !tag->SetParameter(1004, Int32(6)))
    return Error::OutOfMemory();
  RETURN_IF_ERROR(NameTextureTag(meshCreator, *tag, materialIndex, **material));
  if (!meshCreator.mesh->InsertTag(tag.get()))
    return Error::OutOfMemory();
  static_cast<void>(tag.release());  // the object owns it now
  return {};
}

Result<void> CreateSplit(const GltfMesh& mesh, const MeshContext& context, const MeshPlan& plan,
                         BaseArray<HostOwner<HostPolygonObject>>& objects) noexcept
{
  MeshCreator meshCreator(context.options);
  for (Int i = 0; i < mesh.GetPrimitives().GetCount(); ++i)
  {
    const GltfPrimitive& primitive = mesh.GetPrimitives()[i];
    meshCreator.currentPrimitive = static_cast<Int32>(i);
    meshCreator.currentMaterial = primitive.GetMaterial();
    ASSIGN_OR_RETURN(const GltfPrimitive::Counts counts, CountPrimitive(primitive, context));
    RETURN_IF_ERROR(meshCreator.AllocatePolyAndTags(counts.vertexCount, counts.polygonCount));
    TargetCreator targetCreator;
    if (plan.morphWanted)
      RETURN_IF_ERROR(targetCreator.StartTargetCreator(meshCreator, {&primitive, 1}, plan.targetsCount, context));
    RETURN_IF_ERROR(AddPrimitiveGeometry(meshCreator, primitive, *context.options, true, {}));
    RETURN_IF_ERROR(AssignPrimitiveMaterial(meshCreator, primitive, context));
    if (plan.morphWanted)
    {
      RETURN_IF_ERROR(AddPrimitivePose(primitive, targetCreator, *context.options));
      targetCreator.FinishTargetCreator(mesh.GetWeights());
    }
    meshCreator.RemoveUnusedTags();
    RETURN_IF_ERROR(objects.Append(std::move(meshCreator.mesh)));
  }
  return {};
}

Result<void> CreateMerged(const GltfMesh& mesh, const MeshContext& context, const MeshPlan& plan,
                          BaseArray<HostOwner<HostPolygonObject>>& objects) noexcept
{
  Int vertexCount = 0;
  Int polyCount = 0;
  for (const GltfPrimitive& primitive : mesh.GetPrimitives())
  {
    ASSIGN_OR_RETURN(const GltfPrimitive::Counts counts, CountPrimitive(primitive, context));
    if (!CheckedAdd(vertexCount, counts.vertexCount, vertexCount) || !CheckedAdd(polyCount, counts.polygonCount, polyCount))
      return Error::OutOfMemory();
  }
  if (mesh.GetPrimitives().IsEmpty())
    return {};  // no object; whoever asked counts them
  MeshCreator meshCreator(context.options);
  RETURN_IF_ERROR(meshCreator.AllocatePolyAndTags(vertexCount, polyCount));
  TargetCreator targetCreator;
  const PrimitiveRange allPrimitives{mesh.GetPrimitives().GetFirst(), mesh.GetPrimitives().GetCount()};
  if (plan.morphWanted)
    RETURN_IF_ERROR(targetCreator.StartTargetCreator(meshCreator, allPrimitives, plan.targetsCount, context));
  SkinCreator skinCreator;
  PrimitiveSkin skin;
  if (plan.skinWanted)
  {
    RETURN_IF_ERROR(StartSkinCreator(skinCreator, meshCreator, context.skin, *context.nodes, context.node, context.budget));
    skin = {&skinCreator, context.skin};
  }
  const Bool noSelections = mesh.GetPrimitives().GetCount() == 1;
  for (Int i = 0; i < mesh.GetPrimitives().GetCount(); ++i)
  {
    const GltfPrimitive& primitive = mesh.GetPrimitives()[i];
    meshCreator.currentPrimitive = static_cast<Int32>(i);
    meshCreator.currentMaterial = primitive.GetMaterial();
    RETURN_IF_ERROR(AddPrimitiveGeometry(meshCreator, primitive, *context.options, noSelections, skin));
    RETURN_IF_ERROR(AssignPrimitiveMaterial(meshCreator, primitive, context));
    if (plan.morphWanted)
      RETURN_IF_ERROR(AddPrimitivePose(primitive, targetCreator, *context.options));
  }
  if (plan.morphWanted)
    targetCreator.FinishTargetCreator(mesh.GetWeights());
  meshCreator.RemoveUnusedTags();
  return objects.Append(std::move(meshCreator.mesh));
}

}  // namespace

GeometryBudget::GeometryBudget(Int bufferByteCount) noexcept : _remaining(kFreeElements)
{
  Int elements = 0;
  if (!CheckedMultiply(bufferByteCount, kElementsPerByte, elements) || !CheckedAdd(_remaining, elements, _remaining))
    _remaining = INT64_MAX;
}

Result<void> GeometryBudget::Take(Int pointCount, Int polygonCount) noexcept
{
  Int elements = 0;
  if (!CheckedAdd(pointCount, polygonCount, elements) || elements > _remaining)
    return MAKE_ERROR(ErrorClass::kOutOfMemory, "The meshes would become larger than the data of the file allows."_s);
  _remaining -= elements;
  return {};
}

Result<void> CreateMeshObjects(const GltfMesh& mesh, const MeshContext& context,
                               BaseArray<HostOwner<HostPolygonObject>>& objects) noexcept
{
  const GltfNode* const node = context.node;
  CHECK_STATE(node);
  for (const GltfPrimitive& primitive : mesh.GetPrimitives())
    RETURN_IF_ERROR(primitive.CheckValid());
  const Int firstObject = objects.GetCount();
  const MeshPlan plan = PlanMesh(mesh, context);
  RETURN_IF_ERROR(plan.split ? CreateSplit(mesh, context, plan, objects) : CreateMerged(mesh, context, plan, objects));
  if (context.options->GetNormals() == "none"_s)
    return {};
  const Float phongAngle = context.options->GetPhongAngle() * kRadiansPerDegree;
  for (Int i = firstObject; i < objects.GetCount(); ++i)
  {
    if (!objects[i]->SetPhong(true, true, phongAngle))
      return Error::OutOfMemory();
  }
  return {};
}

}  // namespace q7z
