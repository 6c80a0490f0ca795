// The vertices of meshes in the file: which corners share one, their normals, UVs and colours, joints and weights. Nothing is mirrored
// or scaled here, and without morphs vertices are shared.

#include "host/scene/headlesstag.h"
#include "plugin/module/hostpolygon.h"
#include "tests/export/savedcase.h"

namespace q7z::test
{
namespace
{

const Parameters kPlain = {{kExportFlipZParameter, false},
                           {kExportMorphsParameter, false},
                           {kExportSkinsParameter, true},
                           {kExportScaleParameter, HostUnitScale{1, 3}}};

/// @param before  objects in front of it, each with a comma behind.
std::string Mesh(const std::string& points, const std::string& polygons, const std::string& tags, const std::string& before = "")
{
  return Objects(before + R"({"id": 1, "name": "T", "type": 5100, "points": [)" + points + R"(], "polygons": [)" + polygons +
                 R"(], "tags": [)" + tags + "]}");
}

/// (0 1 2) and (2 1 3) in the plane z = 0.
std::string Quad(const std::string& tags, const std::string& before = "")
{
  return Mesh("0,0,0, 1,0,0, 0,1,0, 1,1,0", "0,1,2,2, 2,1,3,3", tags, before);
}

std::string Normals(const std::string& corners)
{
  return R"({"id": 2, "type": 5711, "normals": [)" + corners + "]}";
}

std::string Uvs(const std::string& corners)
{
  return R"({"id": 3, "type": 5671, "uvws": [)" + corners + "]}";
}

std::string Colors(const char* perPoint, const std::string& colors)
{
  return R"({"id": 4, "type": 431000045, "perPoint": )" + std::string(perPoint) + R"(, "colors": [)" + colors + "]}";
}

/// The UVs 1, -2 and 0.5 under a texture that is moved and repeated.
std::string Tiled(const std::string& offsetU, const std::string& offsetV, const std::string& lengthU, const std::string& lengthV)
{
  return Mesh("0,0,0, 1,0,0, 0,1,0", "0,1,2,2",
              Uvs("1,1,0, -2,-2,0, 0.5,0.5,0, 0,0,0") + R"(, {"id": 5, "type": 5616, "name": "t", "parameters": {"1000": )" +
                offsetU + R"(, "1001": )" + offsetV + R"(, "1002": )" + lengthU + R"(, "1003": )" + lengthV + "}}");
}

const std::string kUp = "0,0,1, 0,0,1, 0,0,1, 0,0,1";
const std::string kNothing = "0,0,0, 0,0,0, 0,0,0, 0,0,0";
const std::string kBlack = "0,0,0,1, 0,0,0,1, 0,0,0,1, 0,0,0,1";
/// The second polygon differs at its corner b, which is point 1.
const std::string kOneUvDiffers = Uvs(kUp + ", 0,0,1, 1,0,1, 0,0,1, 0,0,1");
const std::string kOneColorDiffers = Colors("false", kBlack + ", 0,0,0,1, 0.5,0,0,1, 0,0,0,1, 0,0,0,1");

const SavedCase kVertexCases[] = {
  {"CornersShareAVertexWhereAllIsEqual",
   Quad(Normals(kUp + ", " + kUp) + ", " + kOneUvDiffers),
   {{"bufferViews/1/byteStride", "32"},
    {"mesh 0 indices", "0 1 2 2 4 3"},
    {"mesh 0 POSITION", "0 0 0 1 0 0 0 1 0 1 1 0 1 0 0"},
    {"mesh 0 NORMAL", "0 0 1 0 0 1 0 0 1 0 0 1 0 0 1"},
    {"mesh 0 TEXCOORD_0", "0 0 0 0 0 0 0 0 1 0"}},
   kPlain},
  // The faces' normals are 3 along z and 4 along x; they meet at point 0. Those of the points 5 to 7 cancel.
  {"MissingNormalIsTheMeanOfTheFacesAround",
   Mesh("0,0,0, 3,0,0, 0,1,0, 0,4,0, 0,0,1, 0,0,0, 1,0,0, 0,1,0", "0,1,2,2, 3,4,0,0, 5,6,7,7, 5,7,6,6",
        Normals(kNothing + ", " + kNothing + ", " + kNothing + ", " + kNothing)),
   {{"mesh 0 NORMAL", "0.8 0 0.6 0 0 1 0 0 1 1 0 0 1 0 0 0 0 0 0 0 0 0 0 0"}},
   kPlain},
  {"ColorsOfCornersSplit",
   Quad(kOneColorDiffers),
   {{"mesh 0 indices", "0 1 2 2 4 3"}, {"mesh 0 COLOR_0", "0 0 0 1 0 0 0 1 0 0 0 1 0 0 0 1 0.5 0 0 1"}},
   kPlain},
  {"ColorsStandBehindNormalsAndUvs",
   Quad(Normals(kUp + ", " + kUp) + ", " + Uvs(kUp + ", " + kUp) + ", " + kOneColorDiffers),
   {{"bufferViews/1/byteStride", "48"}, {"mesh 0 COLOR_0", "0 0 0 1 0 0 0 1 0 0 0 1 0 0 0 1 0.5 0 0 1"}},
   kPlain},
  {"CopiesHaveTheColorsAndWeightsOfTheirPoint",
   Quad(Colors("true", "0,0,0,1, 0.25,0.5,0.75,1, 0,0,0,1, 0,0,0,1") + ", " + kOneUvDiffers +
          R"(, {"id": 5, "type": 1019365, "joints": [10, 11], "weights": [[], [[1,0.75]]]})",
        R"({"id": 10, "type": 1019362, "name": "J"}, {"id": 11, "type": 1019362, "name": "K"}, )"),
   {{"mesh 0 COLOR_0", "0 0 0 1 0.25 0.5 0.75 1 0 0 0 1 0 0 0 1 0.25 0.5 0.75 1"},
    {"mesh 0 JOINTS_0", "1 0 0 0 1 0 0 0 1 0 0 0 1 0 0 0 1 0 0 0"},
    {"mesh 0 WEIGHTS_0", "0 0 0 0 0.75 0 0 0 0 0 0 0 0 0 0 0 0.75 0 0 0"}},
   kPlain},
  {"PlainTexture", Tiled("0.0", "0.0", "1.0", "1.0"), {{"mesh 0 TEXCOORD_0", "1 1 -2 -2 0.5 0.5"}}, kPlain},
  {"TiledTexture", Tiled("0.0", "0.5", "0.5", "2.0"), {{"mesh 0 TEXCOORD_0", "2 0.25 -4 -1.25 1 0"}}, kPlain},
  {"MovedTexture", Tiled("0.5", "0.0", "2.0", "0.5"), {{"mesh 0 TEXCOORD_0", "0.25 2 -1.25 -4 0 1"}}, kPlain},
  {"TextureOfNoLength", Tiled("0.25", "0.0", "0.0", "0.0"), {{"mesh 0 TEXCOORD_0", "-inf nan -inf nan -inf nan"}}, kPlain},
};
INSTANTIATE_TEST_SUITE_P(Vertices, SavedScene, testing::ValuesIn(kVertexCases), RowName());

// A host's tags may be for fewer polygons, or points, than there are, and in either precision. A corner without a colour is opaque, a
// point without one is all zero.
TEST(SavedTags, MayEndBeforeTheMesh)
{
  for (const Bool perPoint : {false, true})  // with 32 bits, with 64
  {
    TestHost host;
    HostPolygonObject* const op = HostPolygonObject::Alloc(4, 2);
    const HostPolygon polygons[] = {{0, 1, 2, 2}, {2, 1, 3, 3}};
    std::copy(std::begin(polygons), std::end(polygons), op->GetPolygonsW());
    ToHost(&host.Scene())->InsertObject(op, nullptr, nullptr);
    for (const Int32 type : {kNormalTagType, kUvwTagType})
      static_cast<HostUvwTag*>(op->MakeTag(type, 1))->GetHandleW(perPoint).Set(0, {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {}});
    auto* const colors = static_cast<HostVertexColorTag*>(op->MakeTag(kVertexColorTagType, 4));
    ASSERT_TRUE(ToHeadless(colors)->Resize(1, perPoint));
    colors->GetHandleW().colors[0] = 0.5f;
    const SaveFolder folder;
    ASSERT_EQ(folder.Save(host, host.Scene(), kPlain).error, "");
    const SavedContent file(folder.TakeBytes());
    EXPECT_EQ(file.At("mesh 0 indices"), "0 1 2 4 5 3");
    EXPECT_EQ(file.At("mesh 0 TEXCOORD_0"), "1 0 2 0 3 0 0 0 0 0 0 0");
    EXPECT_EQ(file.At("mesh 0 COLOR_0"), perPoint ? "0.5 0 0 1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0"
                                                  : "0.5 0 0 1 0 0 0 1 0 0 0 1 0 0 0 1 0 0 0 1 0 0 0 1");
  }
}

// Indices have two bytes for up to 65536 vertices. All points are used; one more vertex comes of a corner with a UV of its own.
TEST(SavedIndices, AreShortAsLongAsTheyCan)
{
  std::string points = "0,0,0";
  std::string polygons = "0,1,2,2, 0,2,1,1";
  std::string uvs = ",0,0, 0,0,0, 0,0,0, 0,0,0, " + kNothing;
  for (int i = 1; i < 65536; ++i)
  {
    const auto n = [i](int k) { return "," + std::to_string(std::min(i + k, 65535)); };
    points += ",0,0,0";
    polygons += i % 3 == 0 ? n(0) + n(1) + n(2) + n(2) : "";
    uvs += i % 3 == 0 ? ", " + kNothing : "";
  }
  for (const Bool isSplit : {false, true})
  {
    const SavedFile file(SceneText(Mesh(points, polygons, Uvs((isSplit ? "1" : "0") + uvs))), kPlain);
    EXPECT_EQ(file.At("accessors/0/componentType"), isSplit ? "5125" : "5123");
    EXPECT_EQ(file.At("accessors/0/min"), isSplit ? "[0.0]" : "[0]");
    EXPECT_EQ(file.At("accessors/0/max"), isSplit ? "[65536.0]" : "[65535]");
    EXPECT_EQ(file.At("accessors/1/count"), isSplit ? "65537" : "65536");
    EXPECT_TRUE(file.At("mesh 0 indices").starts_with(isSplit ? "0 1 2 65536 2 1 3" : "0 1 2 0 2 1 3"));
  }
}

// A fan whose middle has another UV in every polygon: so many vertices that the room for them moves while they are made.
TEST(SavedIndices, StayWhatTheyAreWhereVerticesBecomeMany)
{
  constexpr int kPolygons = 65535;
  std::string points = "0,0,0, 0,0,1";
  std::string polygons;
  std::string uvs;
  for (int i = 0; i < kPolygons; ++i)
  {
    const std::string last = std::to_string(i + 2);
    points += ", 0,0," + last;
    polygons += (i ? ", 0," : "0,") + std::to_string(i + 1) + "," + last + "," + last;
    uvs += (i ? ", " : "") + std::to_string(i) + ",0,0, 0,0,0, 0,0,0, 0,0,0";
  }
  const SavedFile file(SceneText(Mesh(points, polygons, Uvs(uvs))), kPlain);
  EXPECT_EQ(file.At("accessors/0/max"), "[131070.0]");
  EXPECT_EQ(file.At("accessors/1/count"), "131071");
  const std::string indices = file.At("mesh 0 indices");
  EXPECT_TRUE(indices.starts_with("0 1 2 65537 2 3 65538 3 4 "));
  EXPECT_TRUE(indices.ends_with(" 131070 65535 65536"));
  EXPECT_NE(file.At("mesh 0 POSITION").find(" 0 0 65536 0 0 0 "), std::string::npos);
  EXPECT_TRUE(file.At("mesh 0 TEXCOORD_0").ends_with(" 65533 0 65534 0"));
}

struct InfluenceRow
{
  const char* name;
  std::vector<const char*> weights;  ///< at every point, of one joint after the other
  const char* joints;
  const char* expected;
};

class Influences : public testing::TestWithParam<InfluenceRow>
{};

TEST_P(Influences, KeepTheStrongest)
{
  constexpr int kCount = 300;  // more than are worked out at once
  std::string points = "0,0,0";
  std::string polygons = "0,1,2,2";
  std::string joints = GetParam().joints;
  std::string expected = GetParam().expected;
  for (int point = 1; point < kCount; ++point)
  {
    points += ", 0,0,0";
    polygons += ", 0,1," + std::to_string(point) + "," + std::to_string(point);
    joints += std::string(" ") + GetParam().joints;
    expected += std::string(" ") + GetParam().expected;
  }
  std::string objects;
  std::string ids;
  std::string weights;
  for (size_t i = 0; i < GetParam().weights.size(); ++i)
  {
    const std::string comma = i ? ", " : "";
    ids += comma + std::to_string(10 + i);
    objects += R"({"id": )" + std::to_string(10 + i) + R"(, "type": 1019362, "name": "J"}, )";
    weights += comma + "[";
    for (int point = 0; point < kCount; ++point)
      weights += (point ? ",[" : "[") + std::to_string(point) + "," + GetParam().weights[i] + "]";
    weights += "]";
  }
  const std::string tag = R"({"id": 5, "type": 1019365, "joints": [)" + ids + R"(], "weights": [)" + weights + "]}";
  const SavedFile file(SceneText(Mesh(points, polygons, tag, objects)), kPlain);
  EXPECT_EQ(file.At("mesh 0 JOINTS_0"), joints);
  EXPECT_EQ(file.At("mesh 0 WEIGHTS_0"), expected);
}

const InfluenceRow kInfluences[] = {
  {"LargestFourOfFive", {"0.5", "0.125", "2.0", "0.25", "1.0"}, "2 4 0 3", "2 1 0.5 0.25"},
  {"SmallestLastIsDropped", {"1.0", "0.5", "0.5", "0.25", "0.125"}, "0 1 2 3", "1 0.5 0.5 0.25"},
  {"EqualToTheLastGoesBehind", {"1.0", "0.5", "0.5"}, "0 1 2 0", "1 0.5 0.5 0"},
  {"EqualToTheFirstGoesInFront", {"1.0", "0.5", "1.0"}, "2 0 1 0", "1 1 0.5 0"},
  {"EqualInTheMiddleGoesBeforeTheFirstOfItsKind", {"1.0", "0.5", "0.25", "0.5"}, "0 3 1 2", "1 0.5 0.5 0.25"},
  {"ZerosCount", {"0.0", "0.0", "0.0", "0.0", "0.0"}, "4 3 2 1", "0 0 0 0"},
};
INSTANTIATE_TEST_SUITE_P(Rows, Influences, testing::ValuesIn(kInfluences), RowName());

}  // namespace
}  // namespace q7z::test
