#include "bench/generate/inputs.h"
#include "bench/tests/generatedfile.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace q7z::generate
{

namespace
{

std::string Contents(const std::filesystem::path& path)
{
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

struct Row
{
  const char* name;
  std::function<std::string(FileForm)> make;
  Int nodes;
  Int meshes;
  Int vertices;   // of the first mesh
  Int triangles;  // likewise
};

std::string Sample(FileForm form)
{
  return Contents(std::filesystem::path(Q7Z_TEST_SOURCE_DIR) / "samples" / (form == FileForm::kGlb ? "scene.glb" : "scene.gltf"));
}

const Row kRows[] = {
  {"SmallestGrid", [](FileForm form) { return FileBytes(MakeGrid(2), form); }, 1, 1, 4, 2},
  {"Grid", [](FileForm form) { return FileBytes(MakeGrid(30), form); }, 1, 1, 900, 1682},
  {"OneNode", [](FileForm form) { return FileBytes(MakeNodes(1, 1), form); }, 1, 1, 16, 12},
  {"NodesOfThreeLevels", [](FileForm form) { return FileBytes(MakeNodes(200, 16), form); }, 200, 16, 16, 12},
  {"SmallestFile", [](FileForm form) { return FileBytes(MakeSmall(1, form), form); }, 1, 1, 4, 2},
  {"FileOf100KB", [](FileForm form) { return FileBytes(MakeSmall(100000, FileForm::kGlb), form); }, 4, 4, 529, 968},
  {"Skin", [](FileForm form) { return FileBytes(MakeSkin(5, 6), form); }, 7, 1, 25, 32},
  {"Morphs", [](FileForm form) { return FileBytes(MakeMorphs(5, 3), form); }, 1, 1, 25, 32},
  {"Textures", [](FileForm form) { return FileBytes(MakeTextures(3, 4), form); }, 1, 1, 4, 2},
  {"Sample", Sample, 38, 15, 625, 1152},
};

class Inputs : public testing::TestWithParam<Row>
{};

void CheckMesh(const GeneratedFile& file, simdjson::dom::element mesh)
{
  for (const simdjson::dom::element primitive : mesh["primitives"].get_array())
  {
    const std::vector<Float> points = file.GetValues(primitive["attributes"]["POSITION"]);
    const std::vector<Float> normals = file.GetValues(primitive["attributes"]["NORMAL"]);
    const std::vector<Float> indices = file.GetValues(primitive["indices"]);
    ASSERT_EQ(points.size(), normals.size());
    ASSERT_EQ(indices.size() % 3, 0u);
    for (std::size_t i = 0; i < normals.size(); i += 3)
      ASSERT_NEAR(std::hypot(normals[i], normals[i + 1], normals[i + 2]), 1, 1e-6) << "normal " << i / 3;
    for (std::size_t i = 0; i < indices.size(); i += 3)
    {
      const Float* corners[3];
      for (std::size_t corner = 0; corner < 3; ++corner)
      {
        ASSERT_LT(indices[i + corner] * 3, static_cast<Float>(points.size()));
        corners[corner] = &points[static_cast<std::size_t>(indices[i + corner]) * 3];
      }
      // The face's own normal and that of its first corner look to the same side.
      Float u[3];
      Float v[3];
      for (std::size_t axis = 0; axis < 3; ++axis)
      {
        u[axis] = corners[1][axis] - corners[0][axis];
        v[axis] = corners[2][axis] - corners[0][axis];
      }
      const Float* const normal = &normals[static_cast<std::size_t>(indices[i]) * 3];
      const Float side = normal[0] * (u[1] * v[2] - u[2] * v[1]) + normal[1] * (u[2] * v[0] - u[0] * v[2]) +
                         normal[2] * (u[0] * v[1] - u[1] * v[0]);
      ASSERT_GT(side, 0) << "triangle " << i / 3;
    }
  }
}

// Each node but the roots is the child of one other, and an existing one.
void CheckHierarchy(const GeneratedFile& file)
{
  std::vector<int> parents(static_cast<std::size_t>(file.GetCount("nodes")), 0);
  for (const simdjson::dom::element root : file.GetRoot()["scenes"].at(0)["nodes"].get_array())
    ++parents.at(UInt(root));
  for (const simdjson::dom::element node : file.GetRoot()["nodes"].get_array())
  {
    simdjson::dom::array children;
    if (node["children"].get(children) != simdjson::SUCCESS)
      continue;
    EXPECT_GT(children.size(), 0u);
    for (const simdjson::dom::element child : children)
      ++parents.at(UInt(child));
  }
  EXPECT_EQ(std::count(parents.begin(), parents.end(), 1), file.GetCount("nodes"));
}

void CheckMeshUse(const GeneratedFile& file)
{
  std::vector<int> uses(static_cast<std::size_t>(file.GetCount("meshes")), 0);
  for (const simdjson::dom::element node : file.GetRoot()["nodes"].get_array())
  {
    UInt mesh = 0;
    if (node["mesh"].get(mesh) == simdjson::SUCCESS)
      ++uses.at(mesh);
  }
  EXPECT_EQ(std::count(uses.begin(), uses.end(), 0), 0);
}

void CheckBounds(const GeneratedFile& file)
{
  Int bounded = 0;
  for (UInt i = 0; i < static_cast<UInt>(file.GetCount("accessors")); ++i)
  {
    const simdjson::dom::element accessor = file.GetRoot()["accessors"].at(i);
    simdjson::dom::array min;
    if (accessor["min"].get(min) != simdjson::SUCCESS)
      continue;
    ++bounded;
    const std::vector<Float> values = file.GetValues(static_cast<Int>(i));
    const std::size_t components = min.size();
    for (std::size_t component = 0; component < components; ++component)
    {
      Float least = values.at(component);
      Float most = least;
      for (std::size_t k = component; k < values.size(); k += components)
      {
        least = std::min(least, values[k]);
        most = std::max(most, values[k]);
      }
      // Written in the fewest digits that tell 32-bit floats apart.
      EXPECT_EQ(static_cast<Float32>(double(min.at(component))), static_cast<Float32>(least));
      EXPECT_EQ(static_cast<Float32>(double(accessor["max"].at(component))), static_cast<Float32>(most));
    }
  }
  EXPECT_GE(bounded, file.GetCount("meshes"));
}

TEST_P(Inputs, AddUp)
{
  const Row& row = GetParam();
  for (const FileForm form : {FileForm::kGlb, FileForm::kGltf})
  {
    const GeneratedFile file(row.make(form));
    EXPECT_EQ(file.GetCount("nodes"), row.nodes);
    EXPECT_EQ(file.GetCount("meshes"), row.meshes);
    const simdjson::dom::element primitive = file.GetRoot()["meshes"].at(0)["primitives"].at(0);
    EXPECT_EQ(Int(file.GetValues(primitive["attributes"]["POSITION"]).size()), row.vertices * 3);
    EXPECT_EQ(Int(file.GetValues(primitive["indices"]).size()), row.triangles * 3);
    for (const simdjson::dom::element mesh : file.GetRoot()["meshes"].get_array())
      CheckMesh(file, mesh);
    CheckHierarchy(file);
    CheckMeshUse(file);
    CheckBounds(file);
  }
}

TEST_P(Inputs, HoldTheSameInBothForms)
{
  EXPECT_EQ(GeneratedFile(GetParam().make(FileForm::kGlb)).GetBuffer(),
            GeneratedFile(GetParam().make(FileForm::kGltf)).GetBuffer());
}

INSTANTIATE_TEST_SUITE_P(Rows, Inputs, testing::ValuesIn(kRows), [](const auto& row) { return row.param.name; });

TEST(GeneratedInputs, FollowFromTheirNumbers)
{
  EXPECT_EQ(FileBytes(MakeGrid(9, 1), FileForm::kGlb), FileBytes(MakeGrid(9, 1), FileForm::kGlb));
  EXPECT_NE(FileBytes(MakeGrid(9, 1), FileForm::kGlb), FileBytes(MakeGrid(9, 2), FileForm::kGlb));
  EXPECT_EQ(FileBytes(MakeNodes(9, 2, 1), FileForm::kGltf), FileBytes(MakeNodes(9, 2, 1), FileForm::kGltf));
  EXPECT_NE(FileBytes(MakeNodes(9, 2, 1), FileForm::kGltf), FileBytes(MakeNodes(9, 2, 2), FileForm::kGltf));
}

TEST(GeneratedInputs, AnimationMovesEachNodeInThreeWays)
{
  const GeneratedFile file(FileBytes(MakeAnimation(3, 4), FileForm::kGlb));
  EXPECT_EQ(file.GetCount("nodes"), 3);
  for (const simdjson::dom::element node : file.GetRoot()["nodes"].get_array())
    EXPECT_EQ(Int(node["mesh"]), 0) << "what shows nothing is not saved";
  const simdjson::dom::element animation = file.GetRoot()["animations"].at(0);
  std::vector<std::string> moved;
  for (const simdjson::dom::element channel : animation["channels"].get_array())
  {
    const simdjson::dom::element sampler = animation["samplers"].at(UInt(channel["sampler"]));
    const std::string path{std::string_view(channel["target"]["path"])};
    moved.push_back(std::to_string(Int(channel["target"]["node"])) + " " + path);
    EXPECT_EQ(std::string_view(sampler["interpolation"]), "LINEAR");
    const std::vector<Float> times = file.GetValues(sampler["input"]);
    ASSERT_EQ(times.size(), 4u);
    EXPECT_EQ(times[0], 0);
    EXPECT_EQ(static_cast<Float32>(times[3]), 0.1f);
    EXPECT_EQ(Float(file.GetRoot()["accessors"].at(UInt(sampler["input"]))["max"].at(0)), 0.1);
    EXPECT_EQ(file.GetValues(sampler["output"]).size(), path == "rotation" ? 16u : 12u);
  }
  const std::vector<std::string> expected = {"0 translation", "0 rotation",    "0 scale",    "1 translation", "1 rotation",
                                             "1 scale",       "2 translation", "2 rotation", "2 scale"};
  EXPECT_EQ(moved, expected);
}

TEST(GeneratedInputs, GridHasWideIndices)
{
  const GeneratedFile file(FileBytes(MakeGrid(3), FileForm::kGlb));
  const Int indices = file.GetRoot()["meshes"].at(0)["primitives"].at(0)["indices"];
  EXPECT_EQ(Int(file.GetRoot()["accessors"].at(static_cast<std::size_t>(indices))["componentType"]), 5125);
}

TEST(GeneratedInputs, SmallFilesHaveTheSizeAskedFor)
{
  for (const FileForm form : {FileForm::kGlb, FileForm::kGltf})
  {
    EXPECT_NEAR(static_cast<Float>(FileSize(MakeSmall(1000, form), form)), 1000, 100);
    for (const Int byteCount : {10000, 100000, 1000000})
    {
      const Int size = FileSize(MakeSmall(byteCount, form), form);
      EXPECT_LE(size, byteCount);
      EXPECT_GE(size, byteCount * 8 / 10);
      EXPECT_EQ(size, static_cast<Int>(FileBytes(MakeSmall(byteCount, form), form).size()));
    }
  }
}

TEST(FileSink, AppearsWholeOrNotAtAll)
{
  const std::filesystem::path folder = std::filesystem::path(Q7Z_TEST_TEMP_DIR) / "filesink";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  const std::filesystem::path path = folder / "out";
  {
    FileSink sink(path.string());
    sink.WriteText("first");
    EXPECT_FALSE(std::filesystem::exists(path));
    sink.Finish();
  }
  {
    FileSink sink(path.string());
    sink.WriteText("second, given up");
  }
  EXPECT_EQ(Contents(path), "first");
  EXPECT_THROW(FileSink((folder / "none" / "out").string()), std::exception);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
}

}  // namespace

}  // namespace q7z::generate
