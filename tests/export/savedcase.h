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
  std::string members;  // of the scene document
  Parameters parameters;
  std::vector<std::pair<const char*, const char*>> expected;  // path and text
};

class SavedScene : public testing::TestWithParam<SavedCase>
{};

inline std::string Objects(const std::string& objects)
{
  return "\"objects\": [" + objects + "]";
}

/// A triangle's members.
inline const std::string kTriangle = R"("type": 5100, "points": [0,0,0, 100,0,0, 0,100,0], "polygons": [0,1,2,2])";

/// What stands under what in a file: "A[B#2, C], D" in its order. A mesh has its number of triangles behind "#", a camera a "*".
std::string WriteOutline(const SavedContent& file);

}  // namespace q7z::test
