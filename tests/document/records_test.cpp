// Small records and what they are read with: the JSON layer, import options, nodes and skins.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/document/gltfutilities.h"
#include "plugin/module/configvariables.h"
#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

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

/// What each of the lenient readers makes of a member.
struct LenientRow
{
  const char* name;
  const char* json;
  Int asInt;
  Float asFloat;
  const char* asString;
  Bool asBool;
};

class LenientReaders : public testing::TestWithParam<LenientRow>
{};

TEST_P(LenientReaders, ConvertOrGiveTheDefault)
{
  const LenientRow& row = GetParam();
  const DataDictionary dict = ParseObject(row.json);
  EXPECT_EQ(ReadInt(dict, "v", -7), row.asInt);
  EXPECT_EQ(ReadFloat(dict, "v", -0.5), row.asFloat);
  EXPECT_EQ(Text(ReadString(dict, "v", "default"_s)), row.asString);
  EXPECT_EQ(ReadBool(dict, "v", true), row.asBool);
}

const LenientRow kLenient[] = {
  {"Absent", R"({"w":1})", -7, -0.5, "default", true},
  {"Fraction", R"({"v":12.75})", 12, 12.75, "default", true},
  {"NegativeFraction", R"({"v":-12.75})", -12, -12.75, "default", true},
  {"LargestWhole", R"({"v":9223372036854775807})", INT64_MAX, 9223372036854775808.0, "default", true},
  {"FloatBeyondInt", R"({"v":1e19})", -7, 1e19, "default", true},
  {"String", R"({"v":"12"})", -7, -0.5, "12", true},
  {"False", R"({"v":false})", -7, -0.5, "default", false},
  {"Null", R"({"v":null})", -7, -0.5, "default", true},
  {"Object", R"({"v":{}})", -7, -0.5, "default", true},
};
INSTANTIATE_TEST_SUITE_P(Rows, LenientReaders, testing::ValuesIn(kLenient), RowName());

struct GateRow
{
  const char* name;
  Bool trs;
  Bool morph;
  Bool geometry;
  Bool noSkin;  // the configuration variable
  Bool skins;   // here and below: what is read
  Bool animations;
  Bool morphTargets;
};

class Gates : public testing::TestWithParam<GateRow>
{
protected:
  void TearDown() override { g_gltfImporterNoSkin = false; }
};

TEST_P(Gates, FollowTheirOptions)
{
  const GateRow& row = GetParam();
  ImportOptions options;
  ASSERT_FALSE(options.Set(importkeys::kAnimationTrs, row.trs).HasError());
  ASSERT_FALSE(options.Set(importkeys::kAnimationMorph, row.morph).HasError());
  ASSERT_FALSE(options.Set(importkeys::kGeometry, row.geometry).HasError());
  g_gltfImporterNoSkin = row.noSkin;
  EXPECT_EQ(options.IsSkins(), row.skins);
  EXPECT_EQ(options.IsAnimations(), row.animations);
  EXPECT_EQ(options.IsMorphTargets(), row.morphTargets);
}

const GateRow kGates[] = {
  {"All", true, true, true, false, true, true, true},
  {"SkinsForbidden", true, true, true, true, false, true, true},
  {"NoTransforms", false, true, true, false, false, true, true},
  {"MorphNeedsGeometry", false, true, false, false, false, false, false},
  {"TransformsAlone", true, false, false, false, true, true, false},
  {"Nothing", false, false, true, false, false, false, false},
};
INSTANTIATE_TEST_SUITE_P(Rows, Gates, testing::ValuesIn(kGates), RowName());

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

const CountRow kCounts[] = {
  {"matrix", 16, "Illegal state: Condition 16 == matrixArray.GetCount() not fulfilled. "},
  {"rotation", 4, "Illegal state: Condition 4 == rotationArray.GetCount() not fulfilled. "},
  {"scale", 3, "Illegal state: Condition 3 == scaleArray.GetCount() not fulfilled. "},
  {"translation", 3, "Illegal state: Condition 3 == translationArray.GetCount() not fulfilled. "},
};
INSTANTIATE_TEST_SUITE_P(Rows, NodeNumbers, testing::ValuesIn(kCounts), RowName());

TEST(GltfNode, KeepsNoFractionsOfWeights)
{
  GltfNode node;
  ASSERT_EQ(ErrorText(node.ReadFromJson(ParseObject(R"({"weights":[1,0.5,2.9]})"))), "");
  EXPECT_THAT(ToVector(node.weights), testing::ElementsAre(1, 0, 2));
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
