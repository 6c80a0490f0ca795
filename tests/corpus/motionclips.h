#pragma once

// Single animations of real files, each as a file of its own, and a file made here of what no real one has; and what a conversion
// changes on purpose of the motion in a file, as docs/differences.md tells it.

#include <ostream>
#include <string>
#include <vector>

#include "tests/corpus/gltfviewer.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{

enum class Change
{
  kNone,
  kSplines,      ///< tangents leave a third of an interval long
  kTurnSplines,  ///< rotations leave without tangents
  kSteps,        ///< a rotation that jumps turns over the last frame before a key
  kQuaternions,  ///< quaternions whose length is not 1 count as they stand: compared less closely
  kBentSkin,     ///< what joints bend while it is saved is bound as it stands: triangles are compared at the first time alone
  kSkinLost,     ///< a skin with several meshes holds the last one, a joint takes the place of the mesh on its node: nodes alone
};

/// One animation of a file, or what stands in a file without one.
struct Clip
{
  std::string file;  ///< below the folder of assets, or kMadeHere
  int animation = -1;
  Change change = Change::kNone;
  friend void PrintTo(const Clip& clip, std::ostream* out) { *out << clip.file << " animation " << clip.animation; }
};

/// A mesh with joints and a morph target, both animated.
inline constexpr const char* kMadeHere = "morphs on joints";

std::vector<Clip> ListClips();

/// @return the path of a file with the one animation; empty when the folder of assets is not there or has no such file.
std::string WriteClip(const Clip& clip, const TestFolder& folder);

/// Does to the original what saving does. Times go through milliseconds in any case.
void ApplyChange(Change change, GltfViewer& original);

}  // namespace q7z::test
