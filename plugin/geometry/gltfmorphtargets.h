#pragma once

// Morph targets of a mesh under construction: for each a whole polygon object, the pose, with the target's values added to the
// primitive's own, and the pose morph tag of the mesh that keeps them. A TargetCreator lives while its mesh is made; what it makes
// is handed to the mesh at the end.

#include "framework/basearray.h"
#include "plugin/geometry/gltfmesh.h"
#include "plugin/geometry/gltfmeshcreator.h"

namespace q7z
{

/// The primitives that one object is made of.
struct PrimitiveRange
{
  const GltfPrimitive* first = nullptr;  // not owned
  Int count = 0;
};

class TargetCreator
{
public:
  /// Makes an empty pose for each target, the tag with its base pose, and the group that is to hold the poses. The mesh owns tag
  /// and group.
  /// @param primitives  all that will be added; poses get the tags that these have values for.
  Result<void> StartTargetCreator(MeshCreator& meshCreator, const PrimitiveRange& primitives, Int targetsCount,
                                  const MeshContext& context) noexcept;

  /// Moves the poses under their group and into the tag. What fails ends this without a word: the tag has fewer morphs then.
  /// @param weights  the strengths of the targets; empty for none.
  void FinishTargetCreator(const BaseArray<Float>& weights) noexcept;

  MeshCreator* _meshCreator = nullptr;         // of the base object; not owned
  BaseArray<MeshCreator> _targetMeshCreators;  // by target
  HostPoseMorphTag* _poseMorphTag = nullptr;   // owned by the mesh
  HostObject* _posesParentOp = nullptr;        // owned by the mesh

  // What the tag is to mix, as some target has it.
  Bool _mixesPoints = false;
  Bool _mixesNormals = false;
  Bool _mixesUvs = false;

private:
  Result<void> MakeTag(HostDocument* doc) noexcept;
  Result<void> MakePosesParent() noexcept;
  Result<void> Finish(const BaseArray<Float>& weights) noexcept;
  Result<void> SwitchOn() noexcept;
  Result<void> StoreBase() noexcept;
  Result<void> StorePose(Int target) noexcept;
  Result<void> SetStrengths(const BaseArray<Float>& weights) noexcept;

  HostDocument* _document = nullptr;  // not owned
};

/// Writes a primitive into every pose, at the pose's own cursors. The primitive has as many targets as there are poses, or the
/// operation fails.
Result<void> AddPrimitivePose(const GltfPrimitive& primitive, TargetCreator& targetCreator,
                              const ImportOptions& options) noexcept;

}  // namespace q7z
