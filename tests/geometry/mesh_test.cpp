// What a mesh of a file becomes in the host: points, polygons, normals, UVs, colours, selections, merged and split.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/module/hostpolygon.h"
#include "tests/support/gltfbuilders.h"
#include "tests/support/rowname.h"
#include "tests/support/testhost.h"

namespace q7z::test
{
namespace
{

using Numbers = std::vector<float>;
using Polygons = std::vector<HostPolygon>;

// Parameters of the loader.
constexpr Int32 kScale = 1002;
constexpr Int32 kFlipZ = 1012;
constexpr Int32 kMaterials = 1013;
constexpr Int32 kSplitMesh = 1018;

const Numbers kTriangle = {0, 0, 3, 1, 0, 3, 0, 1, 3};

/// A primitive of positions, of attributes that are given as text, and further members.
std::string AddPrimitive(GltfJson& file, const Numbers& positions, const std::string& attributes, const std::string& more = "")
{
  return R"({"attributes":{"POSITION":)" + std::to_string(file.Floats(positions, "VEC3")) + attributes + "}" + more + "}";
}

std::string Attribute(const char* name, int accessor)
{
  return std::string(",\"") + name + "\":" + std::to_string(accessor);
}

std::string MeshText(GltfJson& file, const std::string& primitives)
{
  file.Add("meshes", R"({"primitives":[)" + primitives + "]}");
  file.Add("nodes", R"({"name":"m","mesh":0})");
  file.Add("scenes", R"({"nodes":[0]})");
  return file.Text();
}

/// A quad, and two triangles without other attributes, the second at a point that is not there, with an index to spare.
std::string TwoPrimitives()
{
  GltfJson file;
  const std::string attributes = Attribute("TEXCOORD_1", file.Floats({0, 0, 1, 0, 1, 1, 0, 1}, "VEC2")) +
                                 Attribute("TEXCOORD_0", file.Floats({9, 9, 9, 9, 9, 9, 9, 9}, "VEC2")) +
                                 Attribute("NORMAL", file.Floats({0, 0, 1, 0, 0, 2, 0, 1, 3, 0, 0, 1}, "VEC3"));
  const std::string indices = R"(,"indices":)" + std::to_string(file.Indices({0, 1, 2, 0, 2, 3}));
  const std::string quad = AddPrimitive(file, {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, attributes, indices);
  const std::string triangle =
    AddPrimitive(file, kTriangle, "", R"(,"indices":)" + std::to_string(file.Indices({0, 1, 2, 2, 1, 7, 0})));
  return MeshText(file, quad + "," + triangle);
}

HostCorners GetCorners(HostPolygonObject* op, Int32 type, Int polygon)
{
  HostTag* const tag = op->GetTag(type);
  return type == 5711 ? static_cast<HostNormalTag*>(tag)->GetHandleR().Get(polygon)
                      : static_cast<HostUvwTag*>(tag)->GetHandleR().Get(polygon);
}

Polygons GetPolygons(HostPolygonObject* op)
{
  return Polygons(op->GetPolygonsR(), op->GetPolygonsR() + op->GetPolygonCount());
}

class Mesh : public testing::Test
{
protected:
  /// The object of the node, or null.
  HostObject* Load(const std::string& text)
  {
    EXPECT_EQ(_host.LoadText(text), "none");
    HostObject* const scene = _host.Document()->GetFirstObject();
    return scene ? scene->GetDown() : nullptr;
  }

  TestHost _host;
};

TEST_F(Mesh, MergedPrimitivesFollowEachOther)
{
  _host.Set(kFlipZ, false);
  HostPolygonObject* const op = ToPoly(Load(TwoPrimitives()));
  ASSERT_TRUE(op);
  ASSERT_EQ(op->GetPointCount(), 7);
  EXPECT_EQ(op->GetPointsR()[6], (Vector{0, 100, 300}));
  EXPECT_EQ(GetPolygons(op), (Polygons{{0, 1, 2, 2}, {0, 2, 3, 3}, {4, 5, 6, 6}, {6, 5, 11, 11}}));
  ASSERT_EQ(op->GetTagCount(5673), 2);
  auto* const second = static_cast<HostPolygonSelectionTag*>(op->GetTag(5673, 1));
  EXPECT_EQ(second->GetName(), "prim-1"_s);
  EXPECT_EQ(second->GetSelection()->GetCount(), 2);
  EXPECT_TRUE(second->GetSelection()->IsSelected(2));
  EXPECT_EQ(GetCorners(op, 5671, 0).c, (Vector{1, 1, 1})) << "the highest set wins";
  EXPECT_EQ(GetCorners(op, 5671, 0).d, (Vector{1, 1, 1}));
  EXPECT_EQ(GetCorners(op, 5671, 2).a, (Vector{0, 0, 0})) << "no primitive wrote these";
  EXPECT_EQ(GetCorners(op, 5711, 0).c, (Vector{0, 1, 3}));
}

TEST_F(Mesh, SplitPrimitivesAreMirroredObjectsOfTheirOwn)
{
  _host.Set(kSplitMesh, true);
  _host.Set(kScale, HostUnitScale{2, 3});  // two of the document's centimetres
  HostObject* const group = Load(TwoPrimitives());
  ASSERT_TRUE(group);
  EXPECT_EQ(group->GetType(), 5140);
  EXPECT_EQ(group->GetName(), "m"_s);
  // Inserted first, so the last stands first.
  HostPolygonObject* const last = ToPoly(group->GetDown());
  HostPolygonObject* const first = ToPoly(group->GetDown()->GetNext());
  EXPECT_EQ(last->GetName(), "Prim 1"_s);
  EXPECT_EQ(first->GetName(), "Prim 0"_s);
  EXPECT_EQ(last->GetPointsR()[2], (Vector{0, 2, -6}));
  EXPECT_EQ(GetPolygons(last), (Polygons{{2, 1, 0, 0}, {7, 1, 2, 2}}));
  EXPECT_FALSE(last->GetTag(5673)) << "no selections when split";
  EXPECT_FALSE(last->GetTag(5671));
  EXPECT_EQ(GetCorners(first, 5711, 0).a, (Vector{0, 1, -3})) << "neither scaled nor normalised";
  EXPECT_EQ(GetCorners(first, 5671, 0).a, (Vector{1, 1, 1})) << "UVs keep their direction";
}

struct ColorRow
{
  const char* name;
  int componentType;
  const char* type;
  const char* more;
  Numbers last;  // of the last vertex; the others are 0
  Numbers expected;
};

class VertexColors : public Mesh, public testing::WithParamInterface<ColorRow>
{};

TEST_P(VertexColors, ArriveAsTheirTypeSays)
{
  GltfJson file;
  Numbers numbers(2 * GetParam().last.size());
  numbers.insert(numbers.end(), GetParam().last.begin(), GetParam().last.end());
  const int colors = file.Numbers(numbers, GetParam().componentType, GetParam().type, GetParam().more);
  const std::string primitive = AddPrimitive(file, kTriangle, Attribute("COLOR_0", colors));
  HostPolygonObject* const op = ToPoly(Load(MeshText(file, primitive)));
  Numbers found;
  if (auto* const tag = static_cast<HostVertexColorTag*>(op->GetTag(431000045)))
  {
    EXPECT_TRUE(tag->IsPerPoint());
    found.assign(tag->GetHandleR().GetPoint(2), tag->GetHandleR().GetPoint(2) + 4);
  }
  EXPECT_THAT(found, testing::Pointwise(testing::FloatEq(), GetParam().expected));
}

const ColorRow kColorRows[] = {
  // Whole numbers are multiplied by 1/255 once more, alpha included.
  {"Bytes", 5121, "VEC4", R"("normalized":true)", {255, 0, 51, 255}, {1 / 255.0F, 0, 0.2F / 255, 1 / 255.0F}},
  {"BytesAsTheyStand", 5121, "VEC4", "", {255, 0, 51, 102}, {1, 0, 0.2F, 0.4F}},
  {"Shorts", 5123, "VEC4", R"("normalized":true)", {65535, 0, 13107, 65535}, {1 / 255.0F, 0, 0.2F / 255, 1 / 255.0F}},
  {"ShortsWithoutAlpha", 5123, "VEC3", "", {255, 510, 0}, {1, 2, 0, 1 / 255.0F}},
  {"FloatsStay", 5126, "VEC3", "", {2, -1, 0.5F}, {2, -1, 0.5F, 1}},
  {"TagThatNothingWasWrittenToIsGone", 5126, "SCALAR", "", {1}, {}},
};
INSTANTIATE_TEST_SUITE_P(Rows, VertexColors, testing::ValuesIn(kColorRows), RowName());

TEST_F(Mesh, WithoutMaterialsHasNoSelections)
{
  _host.Set(kMaterials, false);
  EXPECT_EQ(Load(TwoPrimitives())->GetTagCount(5673), 0);
}

/// Keeps no material, as a host that runs out of memory.
class ForgetfulTextures final : public HostTextureTable
{
public:
  HostMaterial* GetMaterial(const HostTextureTag*) noexcept override { return nullptr; }
  void SetMaterial(HostTextureTag*, HostMaterial*) noexcept override {}
};

TEST_F(Mesh, ThatLosesItsMaterialIsLeftOut)
{
  ForgetfulTextures textures;
  _host.Host().GetTables().texture = &textures;
  GltfJson file;
  file.Add("materials", "{}");
  EXPECT_FALSE(Load(MeshText(file, AddPrimitive(file, kTriangle, "", R"(,"material":0)"))));
  EXPECT_EQ(_host.WarningCount(), 1);
}

TEST_F(Mesh, WithFewerNormalsThanVerticesIsLeftOut)
{
  GltfJson file;
  const std::string primitive = AddPrimitive(file, kTriangle, Attribute("NORMAL", file.Floats({0, 0, 1}, "VEC3")));
  EXPECT_FALSE(Load(MeshText(file, primitive)));
  EXPECT_EQ(_host.WarningCount(), 1);
}

TEST_F(Mesh, NeedsNoBytesForIndicesBehindTheLastTriangle)
{
  GltfJson file;
  const std::string attributes = R"({"attributes":{"POSITION":)" + std::to_string(file.Floats(kTriangle, "VEC3")) + "}";
  file.Indices({0, 1, 2});  // what the file's bytes end with; the accessor below asks for two more
  file.Add("accessors", R"({"bufferView":1,"componentType":5123,"type":"SCALAR","count":5})");
  HostPolygonObject* const op = ToPoly(Load(MeshText(file, attributes + R"(,"indices":2})")));
  ASSERT_TRUE(op);
  EXPECT_EQ(GetPolygons(op), (Polygons{{2, 1, 0, 0}}));
}

TEST_F(Mesh, SharedAccessorsDoNotMultiplyWithoutBound)
{
  // 4000 primitives of one megabyte of indices would be 1.3 billion polygons.
  GltfJson file;
  const std::string indices = R"(,"indices":)" + std::to_string(file.Values(std::vector<uint8_t>(1 << 20), 5121, "SCALAR"));
  const std::string primitive = AddPrimitive(file, kTriangle, "", indices);
  std::string primitives = primitive;
  for (int i = 1; i < 4000; ++i)
    primitives += "," + primitive;
  EXPECT_FALSE(Load(MeshText(file, primitives)));
  EXPECT_GE(_host.WarningCount(), 1);
}

}  // namespace
}  // namespace q7z::test
