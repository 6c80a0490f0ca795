// The records of nodes, skins and scenes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

using testing::ElementsAre;

namespace
{

std::string Numbers(int count)
{
  std::string text = "[";
  for (int i = 0; i < count; ++i)
    text += (i ? "," : "") + std::to_string(i + 1);
  return text + "]";
}

}  // namespace

TEST(GltfNode, HasDefaults)
{
  GltfNode node;
  ASSERT_EQ(ErrorText(node.ReadFromJson(DataDictionary())), "");
  EXPECT_TRUE(node.name.IsEmpty());
  EXPECT_FALSE(node.HasCamera());
  EXPECT_FALSE(node.HasMesh());
  EXPECT_EQ(node.skin, -1);
  EXPECT_TRUE(node.children.IsEmpty());
  EXPECT_FALSE(node.hasMatrix);
  EXPECT_EQ(node.matrix, HostMatrix());
  EXPECT_EQ(node.rotation, (Vector4{0, 0, 0, 1}));
  EXPECT_EQ(node.scale, (Vector{1, 1, 1}));
  EXPECT_EQ(node.translation, (Vector{0, 0, 0}));
}

TEST(GltfNode, ReadsItsMembers)
{
  GltfNode node;
  ASSERT_EQ(ErrorText(node.ReadFromJson(ParseObject(
              R"({"name":"arm","camera":0,"skin":2,"mesh":3,"children":[4,5],"weights":[1,0.5,2.9],
                  "rotation":[1,2,3,4],"scale":[5,6,7],"translation":[8,9,10]})"))),
            "");
  EXPECT_EQ(Text(node.name), "arm");
  EXPECT_TRUE(node.HasCamera());
  EXPECT_EQ(node.skin, 2);
  EXPECT_TRUE(node.HasMesh());
  EXPECT_THAT(ToVector(node.children), ElementsAre(4, 5));
  EXPECT_THAT(ToVector(node.weights), ElementsAre(1, 0, 2));  // fractions are not kept
  EXPECT_EQ(node.rotation, (Vector4{1, 2, 3, 4}));
  EXPECT_EQ(node.scale, (Vector{5, 6, 7}));
  EXPECT_EQ(node.translation, (Vector{8, 9, 10}));
}

TEST(GltfNode, TakesAMatrixByColumnsBesideTheOthers)
{
  GltfNode node;
  ASSERT_EQ(ErrorText(node.ReadFromJson(ParseObject(R"({"translation":[8,9,10],"matrix":)" + Numbers(16) + "}"))), "");
  EXPECT_TRUE(node.hasMatrix);
  EXPECT_EQ(node.matrix, (HostMatrix{.offset = {13, 14, 15}, .axisX = {1, 2, 3}, .axisY = {5, 6, 7}, .axisZ = {9, 10, 11}}));
  EXPECT_EQ(node.translation, (Vector{8, 9, 10}));
}

/// Members with too few, the right and too many numbers.
struct CountRow
{
  const char* name;  // the member
  int right;
  const char* message;
};

class NodeNumbers : public testing::TestWithParam<CountRow>
{};

TEST_P(NodeNumbers, AreCounted)
{
  const CountRow& row = GetParam();
  for (const int count : {0, row.right - 1, row.right, row.right + 1})
  {
    GltfNode node;
    const std::string json = "{\"" + std::string(row.name) + "\":" + Numbers(count) + "}";
    EXPECT_EQ(ErrorText(node.ReadFromJson(ParseObject(json))), count == row.right ? "" : row.message) << json;
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, NodeNumbers,
                         testing::Values(CountRow{"matrix", 16,
                                                  "Illegal state: Condition 16 == matrixArray.GetCount() not fulfilled. "},
                                         CountRow{"rotation", 4,
                                                  "Illegal state: Condition 4 == rotationArray.GetCount() not fulfilled. "},
                                         CountRow{"scale", 3,
                                                  "Illegal state: Condition 3 == scaleArray.GetCount() not fulfilled. "},
                                         CountRow{"translation", 3,
                                                  "Illegal state: Condition 3 == translationArray.GetCount() not fulfilled. "}),
                         RowName());

TEST(GltfNode, FailsOnArraysOfAnotherKind)
{
  for (const char* const json : {R"({"children":["a"]})", R"({"children":1})", R"({"weights":[null]})",
                                 R"({"matrix":"identity"})", R"({"rotation":[0,0,0,"1"]})"})
  {
    GltfNode node;
    EXPECT_TRUE(node.ReadFromJson(ParseObject(json)).HasError()) << json;
  }
}

TEST(GltfScene, ReadsNameAndRoots)
{
  GltfScene scene;
  ASSERT_EQ(ErrorText(scene.ReadFromJson(ParseObject(R"({"name":"stage","nodes":[3,1]})"))), "");
  EXPECT_EQ(Text(scene.name), "stage");
  EXPECT_THAT(ToVector(scene.nodes), ElementsAre(3, 1));
  EXPECT_TRUE(GltfScene().ReadFromJson(ParseObject(R"({"nodes":[{}]})")).HasError());
}

TEST(GltfSkin, ReadsItsMembers)
{
  GltfSkin skin;
  ASSERT_EQ(ErrorText(skin.ReadFromJson(DataDictionary())), "");
  EXPECT_EQ(skin.inverseBindMatrices, -1);
  EXPECT_EQ(skin.skeleton, -1);
  ASSERT_EQ(ErrorText(skin.ReadFromJson(ParseObject(R"({"name":"hide","inverseBindMatrices":1,"skeleton":2,"joints":[5,6]})"))),
            "");
  EXPECT_EQ(Text(skin.name), "hide");
  EXPECT_EQ(skin.inverseBindMatrices, 1);
  EXPECT_EQ(skin.skeleton, 2);
  EXPECT_THAT(ToVector(skin.joints), ElementsAre(5, 6));
  EXPECT_EQ(skin.accessor, nullptr);
}

TEST(GltfSkin, ResolvesToItsAccessor)
{
  GltfData data = ReadRecords(R"({"skins":[{"inverseBindMatrices":0},{},{"inverseBindMatrices":9}],"buffers":[{"byteLength":64}],
      "bufferViews":[{"buffer":0,"byteLength":64}],"accessors":[{"bufferView":0,"componentType":5126,"count":1,"type":"MAT4"}]})",
                              Bytes(64, 0));
  EXPECT_EQ(ErrorText(data.skins.Find(0)->Resolve(&data)), "");
  EXPECT_EQ(data.skins.Find(0)->accessor, data.accessors.Find(0));
  EXPECT_EQ(ErrorText(data.skins.Find(1)->Resolve(&data)), "Illegal state: Condition nonIndexedAllowed not fulfilled. ");
  EXPECT_EQ(data.skins.Find(1)->accessor, nullptr);
  EXPECT_EQ(ErrorText(data.skins.Find(2)->Resolve(&data)), "Illegal state: Condition accessor not fulfilled. ");
  EXPECT_EQ(ErrorText(data.skins.Find(0)->Resolve(nullptr)), "Illegal argument: Condition gltfData not fulfilled. ");
}

}  // namespace q7z::test
