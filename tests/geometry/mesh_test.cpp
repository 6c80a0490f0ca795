// What a mesh of a file becomes in the host: points, polygons, normals, UVs, colours, selections, merged and split.

#include <gtest/gtest.h>

#include "plugin/module/hostpolygon.h"
#include "tests/geometry/meshfile.h"
#include "tests/support/testhost.h"

namespace q7z::test
{

namespace
{

// Parameters of the loader.
constexpr Int32 kSplitMesh = 1018;
constexpr Int32 kNormals = 1005;
constexpr Int32 kUvs = 1011;
constexpr Int32 kVertexColors = 1010;
constexpr Int32 kFlipZ = 1012;
constexpr Int32 kMaterials = 1013;
constexpr Int32 kScale = 1002;
constexpr Int32 kNormalsNone = 1006;
constexpr Int32 kNormalsPhong = 1008;

const std::vector<float> kTriangle = {0, 0, 3, 1, 0, 3, 0, 1, 3};

/// The object "m" under the scene's group.
HostObject* FindMesh(TestHost& host)
{
  HostObject* const scene = host.Document()->GetFirstObject();
  return scene ? scene->GetDown() : nullptr;
}

HostPolygonObject* FindPolygonObject(TestHost& host)
{
  HostObject* const op = FindMesh(host);
  return op && op->GetType() == 5100 ? ToPoly(op) : nullptr;
}

MeshFile OneTriangle()
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  file.Primitive("\"POSITION\":" + std::to_string(positions));
  return file;
}

}  // namespace

TEST(Mesh, MirrorTurnsTheWindingAndScalesLengths)
{
  TestHost host;
  host.Set(kScale, HostUnitScale{2, 3});  // two of the document's centimetres
  ASSERT_EQ(host.LoadText(OneTriangle().Json()), "none");
  HostPolygonObject* const op = FindPolygonObject(host);
  ASSERT_TRUE(op);
  ASSERT_EQ(op->GetPointCount(), 3);
  EXPECT_EQ(op->GetPointsR()[0], (Vector{0, 0, -6}));
  EXPECT_EQ(op->GetPointsR()[1], (Vector{2, 0, -6}));
  EXPECT_EQ(op->GetPolygonsR()[0], (HostPolygon{2, 1, 0, 0}));
}

TEST(Mesh, WithoutTheMirrorTheWindingStays)
{
  TestHost host;
  host.Set(kFlipZ, false);
  ASSERT_EQ(host.LoadText(OneTriangle().Json()), "none");
  HostPolygonObject* const op = FindPolygonObject(host);
  ASSERT_TRUE(op);
  EXPECT_EQ(op->GetPointsR()[2], (Vector{0, 100, 300}));
  EXPECT_EQ(op->GetPolygonsR()[0], (HostPolygon{0, 1, 2, 2}));
}

TEST(Mesh, IndicesLeaveOutARestAndKeepWhatLiesBeyondTheVertices)
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const int indices = file.Indices({0, 1, 2, 2, 1, 7, 0});
  file.Primitive("\"POSITION\":" + std::to_string(positions), "\"indices\":" + std::to_string(indices));
  TestHost host;
  host.Set(kNormals, kNormalsNone);
  ASSERT_EQ(host.LoadText(file.Json()), "none");
  HostPolygonObject* const op = FindPolygonObject(host);
  ASSERT_TRUE(op);
  ASSERT_EQ(op->GetPolygonCount(), 2);
  EXPECT_EQ(op->GetPolygonsR()[1], (HostPolygon{7, 1, 2, 2}));
}

TEST(Mesh, NormalsAreMirroredNeitherScaledNorNormalised)
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const int normals = file.Floats({0, 0, 1, 0, 0, 2, 0, 1, 3}, "VEC3");
  file.Primitive("\"POSITION\":" + std::to_string(positions) + ",\"NORMAL\":" + std::to_string(normals));
  TestHost host;
  ASSERT_EQ(host.LoadText(file.Json()), "none");
  HostTag* const tag = FindPolygonObject(host)->GetTag(5711);
  ASSERT_TRUE(tag);
  const HostCorners corners = static_cast<HostNormalTag*>(tag)->GetHandleR().Get(0);
  // The polygon is (2, 1, 0, 0), and corner d repeats c.
  EXPECT_EQ(corners.a, (Vector{0, 1, -3}));
  EXPECT_EQ(corners.b, (Vector{0, 0, -2}));
  EXPECT_EQ(corners.c, (Vector{0, 0, -1}));
  EXPECT_EQ(corners.d, (Vector{0, 0, -1}));
}

TEST(Mesh, SignedNormalisedNormalsTurnTheirSign)
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const std::vector<int8_t> bytes = {127, 0, 0, -127, 0, 0, 0, -128, 127};
  const int normals = file.Add(bytes, 5120, "VEC3", true);
  file.Primitive("\"POSITION\":" + std::to_string(positions) + ",\"NORMAL\":" + std::to_string(normals));
  TestHost host;
  host.Set(kFlipZ, false);
  ASSERT_EQ(host.LoadText(file.Json()), "none");
  const HostCorners corners = static_cast<HostNormalTag*>(FindPolygonObject(host)->GetTag(5711))->GetHandleR().Get(0);
  EXPECT_EQ(corners.a, (Vector{-1, 0, 0}));
  EXPECT_EQ(corners.b, (Vector{1, 0, 0}));
  EXPECT_EQ(corners.c, (Vector{0, 128.0 / 127.0, -1}));
}

TEST(Mesh, UvsKeepTheirDirectionAndTheHighestSetWins)
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const int second = file.Floats({0.25f, 0.5f, 1, 0, 0, 1}, "VEC2");
  const int first = file.Floats({9, 9, 9, 9, 9, 9}, "VEC2");
  file.Primitive("\"POSITION\":" + std::to_string(positions) + ",\"TEXCOORD_1\":" + std::to_string(second) +
                 ",\"TEXCOORD_0\":" + std::to_string(first));
  TestHost host;
  host.Set(kFlipZ, false);
  ASSERT_EQ(host.LoadText(file.Json()), "none");
  HostTag* const tag = FindPolygonObject(host)->GetTag(5671);
  ASSERT_TRUE(tag);
  const HostCorners corners = static_cast<HostUvwTag*>(tag)->GetHandleR().Get(0);
  EXPECT_EQ(corners.a, (Vector{0.25, 0.5, 1}));
  EXPECT_EQ(corners.c, (Vector{0, 1, 1}));
  EXPECT_EQ(corners.d, (Vector{0, 1, 1}));
}

namespace
{

struct ColorRow
{
  const char* name;
  int componentType;
  const char* type;
  bool normalized;
  std::vector<int> first;  // components of the first vertex
  float expected[4];
};

const ColorRow kColorRows[] = {
  // Whole numbers are multiplied by 1/255 once more, alpha included.
  {"ByteNormalised", 5121, "VEC4", true, {255, 0, 51, 255}, {1 / 255.0f, 0, 0.2f / 255, 1 / 255.0f}},
  {"ByteAsItStands", 5121, "VEC4", false, {255, 0, 51, 102}, {1, 0, 0.2f, 0.4f}},
  {"ShortNormalised", 5123, "VEC4", true, {65535, 0, 13107, 65535}, {1 / 255.0f, 0, 0.2f / 255, 1 / 255.0f}},
  {"ShortWithoutAlpha", 5123, "VEC3", false, {255, 510, 0}, {1, 2, 0, 1 / 255.0f}},
};

class VertexColors : public testing::TestWithParam<ColorRow>
{};

int AddColors(MeshFile& file, const ColorRow& row)
{
  std::vector<int> all;
  for (int i = 0; i < 3; ++i)
    all.insert(all.end(), row.first.begin(), row.first.end());
  if (row.componentType == 5121)
    return file.Add(std::vector<uint8_t>(all.begin(), all.end()), 5121, row.type, row.normalized);
  return file.Add(std::vector<uint16_t>(all.begin(), all.end()), 5123, row.type, row.normalized);
}

}  // namespace

TEST_P(VertexColors, ArriveAsTheirTypeSays)
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const int colors = AddColors(file, GetParam());
  file.Primitive("\"POSITION\":" + std::to_string(positions) + ",\"COLOR_0\":" + std::to_string(colors));
  TestHost host;
  ASSERT_EQ(host.LoadText(file.Json()), "none");
  HostTag* const tag = FindPolygonObject(host)->GetTag(431000045);
  ASSERT_TRUE(tag);
  auto* const colorTag = static_cast<HostVertexColorTag*>(tag);
  EXPECT_TRUE(colorTag->IsPerPoint());
  for (int c = 0; c < 4; ++c)
    EXPECT_FLOAT_EQ(colorTag->GetHandleR().GetPoint(2)[c], GetParam().expected[c]) << "component " << c;
}
INSTANTIATE_TEST_SUITE_P(Rows, VertexColors, testing::ValuesIn(kColorRows), [](const auto& row) { return row.param.name; });

TEST(Mesh, FloatColorsStayAsTheyAre)
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const int colors = file.Floats({0.1f, 0.2f, 0.3f, 0, 0, 0, 2, -1, 0.5f}, "VEC3");
  file.Primitive("\"POSITION\":" + std::to_string(positions) + ",\"COLOR_0\":" + std::to_string(colors));
  TestHost host;
  ASSERT_EQ(host.LoadText(file.Json()), "none");
  const Float32* const last =
    static_cast<HostVertexColorTag*>(FindPolygonObject(host)->GetTag(431000045))->GetHandleR().GetPoint(2);
  EXPECT_EQ(last[0], 2);
  EXPECT_EQ(last[1], -1);
  EXPECT_EQ(last[2], 0.5f);
  EXPECT_EQ(last[3], 1);
}

TEST(Mesh, TagsThatNothingWasWrittenToAreGone)
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const int scalar = file.Floats({1, 1, 1}, "SCALAR");
  file.Primitive("\"POSITION\":" + std::to_string(positions) + ",\"COLOR_0\":" + std::to_string(scalar));
  TestHost host;
  ASSERT_EQ(host.LoadText(file.Json()), "none");
  HostPolygonObject* const op = FindPolygonObject(host);
  EXPECT_FALSE(op->GetTag(431000045));
  EXPECT_FALSE(op->GetTag(5711));
  EXPECT_FALSE(op->GetTag(5671));
  EXPECT_TRUE(op->GetTag(5612)) << "phong does not depend on the file";
}

namespace
{

/// Two primitives, four and three vertices; the second has no UVs.
MeshFile TwoPrimitives()
{
  MeshFile file;
  const int quad = file.Floats({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, "VEC3");
  const int quadIndices = file.Indices({0, 1, 2, 0, 2, 3});
  const int quadUvs = file.Floats({0, 0, 1, 0, 1, 1, 0, 1}, "VEC2");
  const int triangle = file.Floats(kTriangle, "VEC3");
  file.Primitive("\"POSITION\":" + std::to_string(quad) + ",\"TEXCOORD_0\":" + std::to_string(quadUvs),
                 "\"indices\":" + std::to_string(quadIndices));
  file.Primitive("\"POSITION\":" + std::to_string(triangle));
  return file;
}

}  // namespace

TEST(Mesh, MergedPrimitivesFollowEachOther)
{
  TestHost host;
  host.Set(kFlipZ, false);
  ASSERT_EQ(host.LoadText(TwoPrimitives().Json()), "none");
  HostPolygonObject* const op = FindPolygonObject(host);
  ASSERT_TRUE(op);
  ASSERT_EQ(op->GetPointCount(), 7);
  ASSERT_EQ(op->GetPolygonCount(), 3);
  EXPECT_EQ(op->GetPolygonsR()[1], (HostPolygon{0, 2, 3, 3}));
  EXPECT_EQ(op->GetPolygonsR()[2], (HostPolygon{4, 5, 6, 6}));
  ASSERT_EQ(op->GetTagCount(5673), 2);
  auto* const second = static_cast<HostPolygonSelectionTag*>(op->GetTag(5673, 1));
  EXPECT_EQ(second->GetName(), "prim-1"_s);
  EXPECT_EQ(second->GetSelection()->GetCount(), 1);
  EXPECT_TRUE(second->GetSelection()->IsSelected(2));
  const HostCornerHandle uvs = static_cast<HostUvwTag*>(op->GetTag(5671))->GetHandleR();
  EXPECT_EQ(uvs.Get(1).c, (Vector{0, 1, 1}));
  EXPECT_EQ(uvs.Get(2).a, (Vector{0, 0, 0})) << "no primitive wrote these";
}

TEST(Mesh, SplitPrimitivesAreObjectsOfTheirOwn)
{
  TestHost host;
  host.Set(kSplitMesh, true);
  ASSERT_EQ(host.LoadText(TwoPrimitives().Json()), "none");
  HostObject* const group = FindMesh(host);
  ASSERT_TRUE(group);
  EXPECT_EQ(group->GetType(), 5140);
  EXPECT_EQ(group->GetName(), "m"_s);
  // Inserted first, so the last stands first.
  HostObject* const first = group->GetDown();
  ASSERT_TRUE(first && first->GetNext());
  EXPECT_EQ(first->GetName(), "Prim 1"_s);
  EXPECT_EQ(first->GetNext()->GetName(), "Prim 0"_s);
  EXPECT_EQ(ToPoly(first)->GetPointCount(), 3);
  EXPECT_FALSE(first->GetTag(5673)) << "no selections when split";
  EXPECT_FALSE(first->GetTag(5671));
  EXPECT_TRUE(first->GetNext()->GetTag(5671));
}

namespace
{

struct OptionRow
{
  const char* name;
  Int32 parameter;
  HostValue value;
  int normalTags, uvTags, colorTags, phongTags, selectionTags;
};

const OptionRow kOptionRows[] = {
  {"Defaults", kFlipZ, true, 1, 1, 1, 1, 2},
  {"NoNormals", kNormals, kNormalsNone, 0, 1, 1, 0, 2},
  {"PhongAlone", kNormals, kNormalsPhong, 0, 1, 1, 1, 2},
  {"NoUvs", kUvs, false, 1, 0, 1, 1, 2},
  {"NoColors", kVertexColors, false, 1, 1, 0, 1, 2},
  {"NoMaterials", kMaterials, false, 1, 1, 1, 1, 0},
};

class MeshOption : public testing::TestWithParam<OptionRow>
{};

}  // namespace

TEST_P(MeshOption, DecidesAboutTags)
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const int normals = file.Floats(kTriangle, "VEC3");
  const int uvs = file.Floats({0, 0, 1, 0, 0, 1}, "VEC2");
  const int colors = file.Floats(kTriangle, "VEC3");
  const std::string attributes = "\"POSITION\":" + std::to_string(positions) + ",\"NORMAL\":" + std::to_string(normals) +
                                 ",\"TEXCOORD_0\":" + std::to_string(uvs) + ",\"COLOR_0\":" + std::to_string(colors);
  file.Primitive(attributes).Primitive(attributes);
  TestHost host;
  host.Set(GetParam().parameter, GetParam().value);
  ASSERT_EQ(host.LoadText(file.Json()), "none");
  HostPolygonObject* const op = FindPolygonObject(host);
  ASSERT_TRUE(op);
  EXPECT_EQ(op->GetTagCount(5711), GetParam().normalTags);
  EXPECT_EQ(op->GetTagCount(5671), GetParam().uvTags);
  EXPECT_EQ(op->GetTagCount(431000045), GetParam().colorTags);
  EXPECT_EQ(op->GetTagCount(5612), GetParam().phongTags);
  EXPECT_EQ(op->GetTagCount(5673), GetParam().selectionTags);
}
INSTANTIATE_TEST_SUITE_P(Rows, MeshOption, testing::ValuesIn(kOptionRows), [](const auto& row) { return row.param.name; });

namespace
{

struct BrokenMesh
{
  const char* name;
  std::string json;
};

std::string WithNormals(const std::vector<float>& normals)
{
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const int normalAccessor = file.Floats(normals, "VEC3");
  return file.Primitive("\"POSITION\":" + std::to_string(positions) + ",\"NORMAL\":" + std::to_string(normalAccessor)).Json();
}

std::string WithClaim(const std::string& claim)
{
  return R"({"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],"accessors":[)" +
         claim +
         R"(],"bufferViews":[{"buffer":0,"byteLength":2147483647}],"buffers":[{"byteLength":12,"uri":)"
         R"("data:application/octet-stream;base64,AAAAAAAAAAAAAAAA"}]})";
}

const BrokenMesh kBrokenMeshes[] = {
  {"FewerNormalsThanVertices", WithNormals({0, 0, 1})},
  {"MoreVerticesThanBytes", WithClaim(R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":2147483647})")},
  {"CountBeyond32Bits", WithClaim(R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":9223372036854775807})")},
  {"NegativeCount", WithClaim(R"({"bufferView":0,"componentType":5126,"type":"VEC3","count":-3})")},
  {"TwoVertices", MeshFile().Primitive("\"POSITION\":0").Json()},
};

class MeshFailure : public testing::TestWithParam<BrokenMesh>
{};

}  // namespace

TEST_P(MeshFailure, LeavesTheNodeOutWithAWarning)
{
  TestHost host;
  EXPECT_EQ(host.LoadText(GetParam().json), "none");
  ASSERT_TRUE(host.Document()->GetFirstObject());
  EXPECT_FALSE(host.Document()->GetFirstObject()->GetDown());
  EXPECT_GE(host.WarningCount(), 1);
}
INSTANTIATE_TEST_SUITE_P(Rows, MeshFailure, testing::ValuesIn(kBrokenMeshes), [](const auto& row) { return row.param.name; });

TEST(Mesh, SharedAccessorsDoNotMultiplyWithoutBound)
{
  // 4000 primitives of one megabyte of indices would be 1.3 billion polygons.
  MeshFile file;
  const int positions = file.Floats(kTriangle, "VEC3");
  const int indices = file.Add(std::vector<uint8_t>(1 << 20, 0), 5121, "SCALAR");
  for (int i = 0; i < 4000; ++i)
    file.Primitive("\"POSITION\":" + std::to_string(positions), "\"indices\":" + std::to_string(indices));
  TestHost host;
  EXPECT_EQ(host.LoadText(file.Json()), "none");
  EXPECT_FALSE(FindMesh(host));
  EXPECT_GE(host.WarningCount(), 1);
}

}  // namespace q7z::test
