#pragma once

// Single animations of real files, each as a file of its own, and a file made here of what no real one has.

#include <ostream>
#include <string>
#include <vector>

#include "tests/support/testfolder.h"

namespace q7z::test
{

/// One animation of a file, or what stands in a file without one.
struct Clip
{
  std::string file;  ///< below the folder of assets, or kMadeHere
  int animation = -1;
  friend void PrintTo(const Clip& clip, std::ostream* out) { *out << clip.file << " animation " << clip.animation; }
};

/// A mesh with joints and a morph target, both animated.
inline constexpr const char* kMadeHere = "morphs on joints";

std::vector<Clip> ListClips();

/// The files among the valid ones whose motion does not arrive, because its accessors are sparse or have no data.
bool IsUnread(const std::string& file);

/// @return the path of a file with the one animation; empty when the folder of assets is not there or has no such file.
std::string WriteClip(const Clip& clip, const TestFolder& folder);

}  // namespace q7z::test
