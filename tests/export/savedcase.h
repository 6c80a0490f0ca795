#pragma once

// SavedScene: a suite of scenes and of what stands in the file after each was saved. Several files fill it with their rows. Scenes
// are in centimetres and files in metres, so that 100 becomes 1; Z is mirrored. Of top-level objects the last comes first.

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/rowname.h"
#include "tests/support/savedfile.h"

namespace q7z::test
{

struct SavedCase
{
  const char* name;
  std::string members;                                        // of the scene document
  std::vector<std::pair<const char*, const char*>> expected;  // path and text
  Parameters parameters = {};
};

class SavedScene : public testing::TestWithParam<SavedCase>
{};

inline std::string Objects(const std::string& objects)
{
  return "\"objects\": [" + objects + "]";
}

/// A triangle's members.
inline const std::string kTriangle = R"("type": 5100, "points": [0,0,0, 100,0,0, 0,100,0], "polygons": [0,1,2,2])";

// Ids of tracks.
inline constexpr const char* kX = "[[903,23,0],[1000,19,0]]";
inline constexpr const char* kY = "[[903,23,0],[1001,19,0]]";
inline constexpr const char* kHeading = "[[904,23,0],[1000,19,0]]";
inline constexpr const char* kScaleX = "[[905,23,0],[1000,19,0]]";
inline constexpr const char* kScaleY = "[[905,23,0],[1001,19,0]]";

/// A track in a scene document. @param keys  seconds and values, with tangents behind: "0=1.0>1/3,0.5 2=3.0<-1,0.0".
/// @param interpolation  1 spline, 2 linear, 3 steps.
std::string Track(const std::string& id, const std::string& keys, int interpolation = 2);

/// Tracks with one of the triangle's points. @param keys  for each the points at one more second, "" for none.
std::string PointTrack(const std::vector<std::string>& keys);
inline constexpr const char* kStill = "0,0,0, 100,0,0, 0,100,0";

/// What stands under what in a file: "A[B#2, C], D" in its order. A mesh has its number of triangles behind "#", a camera a "*".
std::string WriteOutline(const SavedContent& file);

}  // namespace q7z::test
