#pragma once

// What a conversion changes on purpose of the motion in a file, as docs/differences.md tells it: which clips it meets, and what
// becomes of their samplers.

#include "tests/corpus/gltfviewer.h"
#include "tests/corpus/motionclips.h"

namespace q7z::test
{

enum class Change
{
  kNone,
  kSplines,      ///< tangents leave a third of an interval long
  kTurnSplines,  ///< rotations leave without tangents
  kSteps,        ///< a rotation that jumps turns over the last frame before a key
  kQuaternions,  ///< quaternions whose length is not 1 count as they stand: compared less closely
  kFourJoints,   ///< of more joints on a point the four with the largest weights stay
  kBentSkin,     ///< what joints bend while it is saved is bound as it stands: triangles are compared at the first time alone
  kSkinLost,     ///< a skin with several meshes holds the last one, a joint takes the place of the mesh on its node: nodes alone
};

Change FindChange(const Clip& clip);

/// Does to the original what saving does. Times go through milliseconds in any case.
void ApplyChange(Change change, GltfViewer& original);

}  // namespace q7z::test
