#pragma once

// What pose morphs and skins do to points and normals. A deformation works on a copy of an object, and writes only where something
// moves: arrays that nothing moves stay shared with the original. Used while a copy of the current state is made.

#include "framework/hashmap.h"
#include "framework/hostmatrix.h"
#include "host/scene/headlessobject.h"

namespace q7z
{

class HeadlessWeightTag;

/// Global matrices of objects that stand still meanwhile. Each is worked out once, however deep the objects are.
class GlobalMatrices
{
public:
  /// @return false without memory.
  Bool Get(const HeadlessObject& object, HostMatrix& matrix) noexcept;

private:
  HashMap<const HeadlessObject*, HostMatrix> _matrices;
  BaseArray<const HeadlessObject*> _path;  // of one call
};

/// Applies the object's pose morph tags, in list order, and leaves them: each morph moves a point by tag strength (parameter 1031,
/// 1 when unset) * morph strength * (morph - base). The base is the points that morph 0 keeps, or the object's own when it keeps
/// none or another number of them. Morphs of another number of points than the object has do nothing.
/// @return false without memory; the object is half morphed then.
Bool ApplyPoseMorphs(HeadlessPolygonObject& object) noexcept;

/// Moves the points of a copy as far as the tag's joints moved since the bind pose, relative to the object that the tag is on; what
/// that object's points are does not count. A point takes the mean of its joints' movements by weight; one whose weights add up
/// to 0 stays. Joints that were freed do not count. The corners of normal tags turn with their points and keep their length.
/// Without a bind pose nothing moves.
/// @return false without memory; the copy is half moved then.
Bool ApplySkin(const HeadlessWeightTag& tag, GlobalMatrices& globals, HeadlessPolygonObject& copy) noexcept;

}  // namespace q7z
