#include "plugin/geometry/gltfmorphtargets.h"

#include "framework/arithmetic.h"
#include "framework/check.h"

namespace q7z
{

namespace
{

// Parameters of the pose morph tag.
constexpr Int32 kMixedParameter = 1009;
constexpr Int32 kModeParameter = 1001;
constexpr Int32 kMixedPointsParameter = 1017;
constexpr Int32 kMixedNormalsParameter = 1053;
constexpr Int32 kMixedUvsParameter = 1023;

// As points go: a pose is an object, however small.
constexpr Int kElementsPerPose = 32;

/// What any of the primitives has values for in a target.
MeshAttributes FindTargetAttributes(const PrimitiveRange& primitives, Int target) noexcept
{
  MeshAttributes attributes{.normals = false, .uvs = false, .colors = false};
  for (Int i = 0; i < primitives.count; ++i)
  {
    const BaseArray<PrimitiveAccessors>& targets = primitives.first[i].GetTargetsAccessors();
    if (target >= targets.GetCount())
      continue;
    attributes.normals = attributes.normals || targets[target].normals;
    attributes.uvs = attributes.uvs || targets[target].uvs.IsPopulated();
    attributes.colors = attributes.colors || targets[target].colors.IsPopulated();
  }
  return attributes;
}

Result<void> TakePoses(GeometryBudget& budget, Int count, Int vertexCount, Int polyCount) noexcept
{
  Int elements = 0;
  if (!CheckedAdd(vertexCount, polyCount, elements) || !CheckedAdd(elements, kElementsPerPose, elements) ||
      !CheckedMultiply(elements, count, elements))
    return Error::OutOfMemory();
  return budget.Take(elements, 0);
}

/// A primitive and what it writes into the poses.
class PrimitivePoses
{
public:
  PrimitivePoses(const GltfPrimitive& primitive, const ImportOptions& options) noexcept
      : _primitive(primitive), _primAccessors(primitive.GetAccessors()), _options(options)
  {}

  Result<void> Add(TargetCreator& targetCreator) const noexcept
  {
    CHECK_STATE(targetCreator._targetMeshCreators.GetCount() == GetTargetsCount());
    if (GetTargetsCount() == 0)
      return {};
    ASSIGN_OR_RETURN(const GltfPrimitive::Counts counts, _primitive.GetCounts());
    for (Int i = 0; i < GetTargetsCount(); ++i)
      RETURN_IF_ERROR(AddTarget(targetCreator, i, counts.vertexCount, counts.polygonCount));
    return {};
  }

private:
  Int GetTargetsCount() const noexcept { return _primitive.GetTargetsCount(); }

  Result<void> AddTarget(TargetCreator& targetCreator, Int target, Int vertexCount, Int polyCount) const noexcept
  {
    CHECK_STATE(targetCreator._poseMorphTag);
    CHECK_STATE(targetCreator._meshCreator);
    CHECK_STATE(vertexCount);
    CHECK_STATE(polyCount);
    const HostPolygonObject* const poly = targetCreator._meshCreator->mesh.get();
    CHECK_STATE(poly);
    MeshCreator& poseMeshCreator = targetCreator._targetMeshCreators[target];
    const PrimitiveAccessors& targetAccessors = _primitive.GetTargetsAccessors()[target];
    CHECK_STATE((poseMeshCreator.cursorPoints + vertexCount - 1 >= 0 && poseMeshCreator.cursorPoints + vertexCount - 1 < poly->GetPointCount()));
    CHECK_STATE((poseMeshCreator.cursorPolygons + polyCount - 1 >= 0 && poseMeshCreator.cursorPolygons + polyCount - 1 < poly->GetPolygonCount()));
    // Colours have no such parameter.
    targetCreator._mixesPoints = targetCreator._mixesPoints || targetAccessors.positions;
    targetCreator._mixesNormals = targetCreator._mixesNormals || targetAccessors.normals;
    targetCreator._mixesUvs = targetCreator._mixesUvs || targetAccessors.uvs.IsPopulated();
    RETURN_IF_ERROR(WriteAttributes(poseMeshCreator, poly, targetAccessors, vertexCount, polyCount));
    poseMeshCreator.Advance(vertexCount, polyCount);
    return {};
  }

  Result<void> WriteAttributes(MeshCreator& poseMeshCreator, const HostPolygonObject* base,
                               const PrimitiveAccessors& targetAccessors, Int vertexCount, Int polyCount) const noexcept
  {
    const ImportOptions& options = _options;
    const Vector flipZMultiplier{1, 1, options.IsFlipZ() ? -1.0 : 1.0};
    const PrimitiveAccessors* const targetAccForPointsPointer = targetAccessors.positions ? &targetAccessors : nullptr;
    CHECK_STATE(AddMeshPositions(poseMeshCreator, _primAccessors, targetAccForPointsPointer, vertexCount, flipZMultiplier, options.GetScale()));
    if (poseMeshCreator.sharesPolygons)
      poseMeshCreator.mesh->SharePolygons(base);
    else
      CHECK_STATE(AddMeshPolygons(poseMeshCreator, _primAccessors, polyCount, options.IsFlipZ()));
    if (targetAccessors.normals)
      CHECK_STATE(AddMeshNormals(poseMeshCreator, _primAccessors, &targetAccessors, polyCount, flipZMultiplier));
    if (targetAccessors.colors.IsPopulated())
      CHECK_STATE(AddMeshVertexColors(poseMeshCreator, _primAccessors, &targetAccessors, vertexCount));
    if (targetAccessors.uvs.IsPopulated())
      CHECK_STATE(AddMeshUVs(poseMeshCreator, _primAccessors, &targetAccessors, polyCount));
    return {};
  }

  const GltfPrimitive& _primitive;
  const PrimitiveAccessors& _primAccessors;
  const ImportOptions& _options;
};

}  // namespace

Result<void> TargetCreator::StartTargetCreator(MeshCreator& meshCreator, const PrimitiveRange& primitives, Int targetsCount,
                                               const MeshContext& context) noexcept
{
  CHECK_STATE(meshCreator.mesh);
  _meshCreator = &meshCreator;
  _document = context.document;
  const Int vertexCount = meshCreator.mesh->GetPointCount();
  const Int polyCount = meshCreator.mesh->GetPolygonCount();
  if (context.budget)
    RETURN_IF_ERROR(TakePoses(*context.budget, targetsCount, vertexCount, polyCount));
  RETURN_IF_ERROR(_targetMeshCreators.Resize(targetsCount));
  // Where several primitives follow each other, the base would have to be copied for each.
  const Bool sharesPolygons = primitives.count == 1 && HostPolygonObject::CanSharePolygons();
  for (Int i = 0; i < targetsCount; ++i)
  {
    MeshCreator& poseMeshCreator = _targetMeshCreators[i];
    poseMeshCreator._options = context.options;
    poseMeshCreator.attributes = FindTargetAttributes(primitives, i);
    poseMeshCreator.sharesPolygons = sharesPolygons;
    CHECK_STATE(poseMeshCreator.AllocatePolyAndTags(vertexCount, polyCount));
  }
  RETURN_IF_ERROR(MakeTag(_document));
  return MakePosesParent();
}

Result<void> TargetCreator::MakeTag(HostDocument* doc) noexcept
{
  _poseMorphTag = static_cast<HostPoseMorphTag*>(_meshCreator->mesh->MakeTag(kPoseMorphTagType));
  if (!_poseMorphTag)
    return Error::OutOfMemory();
  _poseMorphTag->EnterEdit(doc);
  CHECK_STATE(_poseMorphTag->ExitEdit(doc, true));
  if (!_poseMorphTag->SetParameter(kMixedParameter, Int32(0)) || !_poseMorphTag->SetParameter(kModeParameter, Int32(1)))
    return Error::OutOfMemory();
  HostMorph* const base = _poseMorphTag->AddMorph();
  return base && base->SetName("Default"_s) ? Result<void>() : Error::OutOfMemory();
}

Result<void> TargetCreator::MakePosesParent() noexcept
{
  _posesParentOp = HostAllocObject(kNullObjectType);
  if (!_posesParentOp)
    return Error::OutOfMemory();
  HostInsertUnder(_posesParentOp, _meshCreator->mesh.get());
  return _posesParentOp->SetName("Poses"_s) ? Result<void>() : Error::OutOfMemory();
}

void TargetCreator::FinishTargetCreator(const BaseArray<Float>& weights) noexcept
{
  DropError(Finish(weights));  // the mesh is good without its poses
}

Result<void> TargetCreator::Finish(const BaseArray<Float>& weights) noexcept
{
  CHECK_STATE(_meshCreator && _meshCreator->mesh);
  CHECK_STATE(_poseMorphTag);
  CHECK_STATE(_posesParentOp);
  RETURN_IF_ERROR(SwitchOn());
  RETURN_IF_ERROR(StoreBase());
  for (Int i = 0; i < _targetMeshCreators.GetCount(); ++i)
    RETURN_IF_ERROR(StorePose(i));
  if (weights.IsPopulated())
    RETURN_IF_ERROR(SetStrengths(weights));
  _poseMorphTag->Update(_document);
  return {};
}

Result<void> TargetCreator::SwitchOn() noexcept
{
  const struct
  {
    Bool isOn;
    Int32 parameter;
  } switches[] = {{_mixesPoints, kMixedPointsParameter},
                  {_mixesNormals, kMixedNormalsParameter},
                  {_mixesUvs, kMixedUvsParameter}};
  for (const auto& entry : switches)
  {
    if (entry.isOn && !_poseMorphTag->SetParameter(entry.parameter, Int32(1)))
      return Error::OutOfMemory();
  }
  return {};
}

// The host frees the object whose points become the base pose, so it gets a copy.
Result<void> TargetCreator::StoreBase() noexcept
{
  HostOwner<HostObject> copy(_meshCreator->mesh->Clone());
  HostMorph* const base = _poseMorphTag->GetMorph(0);
  if (!copy || !base || !_poseMorphTag->StoreObject(base, _document, copy.get()))
    return Error::OutOfMemory();
  static_cast<void>(copy.release());  // gone by now
  return {};
}

Result<void> TargetCreator::StorePose(Int target) noexcept
{
  MeshCreator& poseMeshCreator = _targetMeshCreators[target];
  HostPolygonObject* const poseOp = poseMeshCreator.mesh.release();
  CHECK_STATE(poseOp);
  poseOp->InsertUnderLast(_posesParentOp);
  ASSIGN_OR_RETURN(const String number, String::FromInt(target));
  ASSIGN_OR_RETURN(const String name, String::Format("Target @"_s, {number}));
  if (!poseOp->SetName(name))
    return Error::OutOfMemory();
  HostMorph* const morph = _poseMorphTag->AddMorph();
  if (!morph || !morph->SetName(name) || !_poseMorphTag->StoreObject(morph, _document, poseOp))
    return Error::OutOfMemory();
  poseMeshCreator.RemoveUnusedTags();
  return {};
}

Result<void> TargetCreator::SetStrengths(const BaseArray<Float>& weights) noexcept
{
  CHECK_STATE(weights.GetCount() == _targetMeshCreators.GetCount());
  for (Int32 i = 1; i <= weights.GetCount(); ++i)
  {
    if (!_poseMorphTag->SetParameter(HostPoseMorphTagGetStrengthId(_poseMorphTag, i), weights[i - 1]))
      return Error::OutOfMemory();
  }
  return {};
}

Result<void> AddPrimitivePose(const GltfPrimitive& primitive, TargetCreator& targetCreator, const ImportOptions& options) noexcept
{
  return PrimitivePoses(primitive, options).Add(targetCreator);
}

}  // namespace q7z
