// The records of meshes: reading, resolving, and how attributes are sorted.

#include <gtest/gtest.h>

#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

namespace
{

/// A document with one mesh and six accessors: 0 and 1 positions of 3 and 5 vertices, 2 and 3 indices (3 and 2), 4 none, 5 and 6
/// with a count below and beyond every number.
GltfData ReadMesh(const std::string& mesh)
{
  const auto accessor = [](const char* type, const char* count)
  { return std::string(R"({"bufferView":0,"componentType":5121,"type":")") + type + R"(","count":)" + count + "}"; };
  return ReadRecords(R"({"meshes":[)" + mesh + R"(],"buffers":[{"byteLength":64}],"bufferViews":[{"buffer":0,"byteLength":64}],
      "accessors":[)" + accessor("VEC3", "3") +
                       "," + accessor("VEC3", "5") + "," + accessor("SCALAR", "3") + "," + accessor("SCALAR", "2") + "," +
                       accessor("VEC3", "0") + "," + accessor("VEC3", "-3") + "," + accessor("SCALAR", "9223372036854775807") +
                       "]}",
                     Bytes(64, 0));
}

std::string Mesh(const std::string& primitive)
{
  return R"({"primitives":[{)" + primitive + "}]}";
}

std::string Describe(const GltfAttributeSets& sets, const GltfData& data)
{
  std::string text;
  for (const GltfAttributeSet& set : sets)
  {
    text += (text.empty() ? "" : " ") + std::to_string(set.number) + ":";
    for (const auto& accessor : data.accessors)
      text += &accessor.GetValue() == set.accessor ? std::to_string(accessor.GetKey()) : "";
  }
  return text;
}

}  // namespace

/// What becomes of a mesh of one primitive: dropped at reading, failed at resolving, failed at counting, or its counts.
struct MeshRow
{
  const char* name;
  const char* primitive;
  const char* resolveMessage;  // "dropped" when there is no record
  const char* countMessage;
  Int vertexCount;
  Int indexCount;
  Int polygonCount;
};

class OnePrimitive : public testing::TestWithParam<MeshRow>
{};

TEST_P(OnePrimitive, IsCountedOrRefused)
{
  const MeshRow& row = GetParam();
  GltfData data = ReadMesh(Mesh(row.primitive));
  GltfMesh* const mesh = data.meshes.Find(0);
  if (!mesh)
  {
    EXPECT_STREQ("dropped", row.resolveMessage);
    return;
  }
  EXPECT_EQ(ErrorText(mesh->Resolve(&data)), row.resolveMessage);
  const Result<GltfPrimitive::Counts> counts = mesh->GetPrimitives()[0].GetCounts();
  EXPECT_EQ(ErrorText(counts), row.countMessage);
  if (counts.HasError())
    return;
  EXPECT_EQ(counts.GetValue().vertexCount, row.vertexCount);
  EXPECT_EQ(counts.GetValue().indexCount, row.indexCount);
  EXPECT_EQ(counts.GetValue().polygonCount, row.polygonCount);
}

constexpr const char* kNoAccessor = "Illegal state: Condition accessor not fulfilled. ";
constexpr const char* kNoPositions = "Illegal state: Condition posAcc not fulfilled. ";
constexpr const char* kNoTriangle = "Illegal state: Condition result.first && result.second not fulfilled. ";

const MeshRow kPrimitives[] = {
  {"Indexed", R"("attributes":{"POSITION":1},"indices":2)", "", "", 5, 3, 1},
  // The drawing mode is not read at all, and the member read in its place changes nothing.
  {"ModeOfPoints", R"("attributes":{"POSITION":0},"indices":2,"mode":0)", "", "", 3, 3, 1},
  {"TwoIndices", R"("attributes":{"POSITION":0},"indices":3)", "", kNoTriangle, 0, 0, 0},
  {"NoVertices", R"("attributes":{"POSITION":4},"indices":2)", "", kNoTriangle, 0, 0, 0},
  {"CountBelowZero", R"("attributes":{"POSITION":5})", "", kNoTriangle, 0, 0, 0},
  {"LargestCount", R"("attributes":{"POSITION":0},"indices":6)", "", "", 3, INT64_MAX, 3074457345618258602},
  {"NoPositions", R"("attributes":{"NORMAL":0})", "", kNoPositions, 0, 0, 0},
  {"AttributeNoNumber", R"("attributes":{"POSITION":"0"})", "dropped", "", 0, 0, 0},
  {"AttributeBeyond32Bits", R"("attributes":{"POSITION":4294967296})", "dropped", "", 0, 0, 0},
  {"TargetAttributeNoNumber", R"("attributes":{"POSITION":0},"targets":[{"POSITION":null}])", "dropped", "", 0, 0, 0},
  {"TargetNoObject", R"("attributes":{"POSITION":0},"targets":[0])", "dropped", "", 0, 0, 0},
  {"MissingPositions", R"("attributes":{"POSITION":99})", kNoAccessor, kNoPositions, 0, 0, 0},
  {"NonIndexedPositions", R"("attributes":{"POSITION":-1})", "Illegal state: Condition nonIndexedAllowed not fulfilled. ",
   kNoPositions, 0, 0, 0},
  {"MissingIndices", R"("attributes":{"POSITION":0},"indices":99)", kNoAccessor, kNoPositions, 0, 0, 0},
  // An index is a 32-bit value, so this one is -1.
  {"IndicesCutTo32Bits", R"("attributes":{"POSITION":0},"indices":4294967295)", "", "", 3, 3, 1},
  {"MissingTarget", R"("attributes":{"POSITION":0},"targets":[{},{"POSITION":99}])", kNoAccessor, "", 3, 3, 1},
  {"Duplicate", R"("attributes":{"POSITION":0,"COLOR_0":0,"COLOR_00":0})", "Illegal state: Set duplication occured", "", 3, 3, 1},
  {"DuplicateInTarget", R"("attributes":{"POSITION":0},"targets":[{"TEXCOORD_1":0,"TEXCOORD_01":0}])",
   "Illegal state: Set duplication occured", "", 3, 3, 1},
};
INSTANTIATE_TEST_SUITE_P(Rows, OnePrimitive, testing::ValuesIn(kPrimitives), RowName());

TEST(Classification, SortsAttributesIntoFamiliesAndSetsByNumber)
{
  GltfData data = ReadMesh(Mesh(R"("attributes":{"TEXCOORD_10":0,"POSITION":0,"TEXCOORD_2":1,"NORMAL":1,"COLOR_1":2,"COLOR_0":3,
      "JOINTS_0":0,"WEIGHTS_0":1,"WEIGHTS_1":2,"TANGENT":99,"_BATCHID":99,"POSITION_0":99,"COLOR_":99,"COLOR_x":99,"COLOR_4294967296":99,"color_3":99})"));
  GltfMesh& mesh = *data.meshes.Find(0);
  ASSERT_EQ(ErrorText(mesh.Resolve(&data)), "");
  const PrimitiveAccessors& accessors = mesh.GetPrimitives()[0].GetAccessors();
  EXPECT_EQ(accessors.positions, data.accessors.Find(0));
  EXPECT_EQ(accessors.normals, data.accessors.Find(1));
  EXPECT_EQ(accessors.indices, data.accessors.Find(-1));
  EXPECT_EQ(Describe(accessors.colors, data), "0:3 1:2");
  EXPECT_EQ(Describe(accessors.uvs, data), "2:1 10:0");
  EXPECT_EQ(Describe(accessors._skinJointsAccessors, data), "0:0");
  EXPECT_EQ(Describe(accessors._skinWeightsAccessors, data), "0:1 1:2");
  EXPECT_EQ(FindSet(accessors.uvs, 10), data.accessors.Find(0));
  EXPECT_EQ(FindSet(accessors.uvs, 3), nullptr);
  EXPECT_EQ(FindSet(accessors.uvs, 11), nullptr);
}

TEST(GltfMesh, IsValidWhenResolvedAndEveryPrimitiveHasPositions)
{
  constexpr const char* kTooFew =
    "Illegal state: Condition _weights.IsEmpty() || prim.GetTargetsCount() <= _weights.GetCount() not fulfilled. ";
  const struct
  {
    const char* mesh;
    const char* message;
    Bool valid;
  } rows[] = {{R"({"primitives":[{"attributes":{"POSITION":0}},{"attributes":{}}]})", "", false},
              {R"({"primitives":[{"attributes":{"POSITION":4}}]})", "", false},
              {R"({"primitives":[{"attributes":{"POSITION":0}},{"attributes":{"POSITION":0,"NORMAL":99}}]})", kNoAccessor, false},
              {R"({})", "", true},
              {R"({"weights":[1,0],"primitives":[{"attributes":{"POSITION":0},"targets":[{},{},{}]}]})", kTooFew, false},
              {R"({"weights":[1,0,0.5],"primitives":[{"attributes":{"POSITION":0},"targets":[{},{}]}]})", "", true},
              {R"({"weights":[],"primitives":[{"attributes":{"POSITION":0},"targets":[{},{}]}]})", "", true}};
  for (const auto& row : rows)
  {
    GltfData data = ReadMesh(row.mesh);
    GltfMesh& mesh = *data.meshes.Find(0);
    EXPECT_FALSE(mesh.IsValid()) << row.mesh;  // not resolved yet
    EXPECT_EQ(ErrorText(mesh.Resolve(&data)), row.message) << row.mesh;
    EXPECT_EQ(mesh.IsValid(), row.valid) << row.mesh;
  }
}

}  // namespace q7z::test
