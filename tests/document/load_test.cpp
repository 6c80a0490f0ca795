// The driver of a load: which arrays are read, which elements are left out, what is resolved and what is a warning. And how members
// are read.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/document/gltfutilities.h"
#include "tests/document/documentload.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace
{

constexpr const char* kAssetMissing =
  "8 Something that the file refers to could not be loaded, or is not valid. What depends on it is missing.";
constexpr const char* kBroken = "8 This data of the file could not be decoded: ";

/// The keys of a map, in its order.
template <typename K, typename V>
std::vector<Int> Keys(const HashMap<K, V>& map)
{
  std::vector<Int> keys;
  for (const auto& entry : map)
    keys.push_back(entry.GetKey());
  return keys;
}

}  // namespace

TEST(Records, AreLeftOutWhereTheyAreBroken)
{
  DocumentLoad load;
  ASSERT_EQ(load.RunText(R"({"asset":{"generator":1},"scene":"first",
      "nodes":[{},{"matrix":[1]},{},{"children":[null]},{"rotation":[0,0,0,"1"]},{"children":1}],
      "scenes":[{"nodes":["a"]},{}],"skins":[{"joints":7},{}],
      "meshes":[{"primitives":[{"attributes":{"POSITION":0}},{}]},{"primitives":[]},{"primitives":[7]},{"primitives":{}},
                {"primitives":[],"weights":["a"]}],
      "buffers":[{},{"byteLength":4},{"byteLength":"4"}],
      "bufferViews":[{"buffer":0},{"byteLength":4},{"buffer":0,"byteLength":4}],
      "accessors":[{"componentType":5126,"type":"VEC3"},{"componentType":5126,"count":1,"type":"VEC3"},
                   {"componentType":5126,"count":1,"type":"VEC3","sparse":{}}],
      "materials":[{"emissiveFactor":[]},{}],"textures":[{"sampler":2},{"source":0}],"samplers":[{},{"magFilter":1}],"images":[{}],
      "animations":[{"channels":[{"target":{"path":"scale"}}]},{"channels":[{"sampler":0,"target":{"node":0}}]},{"channels":[3]},
                    {"samplers":[{"output":1}]},{"channels":{}},{}]})"),
            "");
  const GltfData& data = load.GetData();
  EXPECT_TRUE(data.generator.IsEmpty());
  EXPECT_EQ(data.defaultScene, 0);
  EXPECT_THAT(Keys(data.nodes), ElementsAre(0, 2));
  EXPECT_THAT(Keys(data.scenes), ElementsAre(1));
  EXPECT_THAT(Keys(data.skins), ElementsAre(1));
  EXPECT_THAT(Keys(data.meshes), ElementsAre(1));
  EXPECT_THAT(Keys(data.buffers), ElementsAre(1));
  EXPECT_THAT(Keys(data.bufferViews), ElementsAre(2));
  EXPECT_THAT(Keys(data.accessors), ElementsAre(-1, 1));
  EXPECT_THAT(Keys(data.materials), ElementsAre(1));
  EXPECT_THAT(Keys(data.textures), ElementsAre(1));
  EXPECT_THAT(Keys(data.animations), ElementsAre(5));
  EXPECT_THAT(load.GetMessages(), ElementsAre(kAssetMissing));  // skin 1, which has no accessor
}

TEST(Records, FollowTheOptions)
{
  const struct
  {
    const DataKey& key;
    const char* text;
    Int buffers;
    Int meshes;
    Int skins;
    Int materials = 1;
  } rows[] = {{importkeys::kGeometry, R"("meshes":[{}],"buffers":[{"byteLength":1}])", 0, 0, 1},
              // What is not wanted is not looked at.
              {importkeys::kGeometry, R"("meshes":7,"accessors":7,"bufferViews":7,"buffers":7)", 0, 0, 1},
              {importkeys::kAnimationTrs, R"("meshes":[{}],"buffers":[{"byteLength":1}])", 1, 1, 0},
              {importkeys::kMaterials, R"("meshes":[{}],"buffers":[{"byteLength":1}])", 1, 1, 1, 0},
              {importkeys::kCameras, R"("meshes":[{}],"buffers":[{"byteLength":1}])", 1, 1, 1}};
  for (const auto& row : rows)
  {
    DocumentLoad load;
    ASSERT_EQ(ErrorText(load.options.Set(row.key, false)), "");
    ASSERT_EQ(load.RunText(std::string(R"({"nodes":[{}],"scenes":[{}],"skins":[{}],"materials":[{}],)") + row.text + "}"), "");
    EXPECT_EQ(load.GetData().buffers.GetCount(), row.buffers);
    EXPECT_EQ(load.GetData().meshes.GetCount(), row.meshes);
    EXPECT_EQ(load.GetData().skins.GetCount(), row.skins);
    EXPECT_EQ(load.GetData().materials.GetCount(), row.materials);
  }
}

/// What a document's buffers become. two.bin (1, 2) lies beside the file.
struct BuffersRow
{
  const char* name;
  Bool isGlb;
  const char* buffers;
  std::vector<Bytes> bytes;  // by index; of an absent buffer none
  std::vector<std::string> messages;
};

class Buffers : public testing::TestWithParam<BuffersRow>
{};

TEST_P(Buffers, AreLoadedOrWarnedAbout)
{
  const BuffersRow& row = GetParam();
  DocumentLoad load;
  load.folder.Write("two.bin", Bytes{1, 2});
  const std::string json = std::string(R"({"buffers":[)") + row.buffers + "]}";
  ASSERT_EQ(row.isGlb ? load.RunGlb(GlbBuilder().PaddedJson(json).Bin({7, 8, 9, 0}).File()) : load.RunText(json), "");
  EXPECT_THAT(load.GetMessages(), ElementsAreArray(row.messages));
  for (size_t i = 0; i < row.bytes.size(); ++i)
  {
    const GltfBuffer* const buffer = load.GetData().buffers.Find(static_cast<Int>(i));
    EXPECT_THAT(buffer ? ToVector(buffer->GetBytes()) : std::vector<Byte>(), ElementsAreArray(row.bytes[i])) << i;
  }
}

const BuffersRow kBuffers[] = {
  {"NoUri", false, R"({"byteLength":2})", {{}}, {}},
  {"MissingFile", false, R"({"byteLength":2,"uri":"no.bin"},{"byteLength":2,"uri":"two.bin"})", {{}, {1, 2}}, {kAssetMissing}},
  {"GlbFirst", true, R"({"byteLength":2})", {{7, 8, 9, 0}}, {}},
  // No check of the length here.
  {"GlbFirstLongerDeclared", true, R"({"byteLength":2000})", {{7, 8, 9, 0}}, {}},
  {"GlbFirstWithUri", true, R"({"byteLength":2,"uri":"two.bin"},{"byteLength":2})", {{1, 2}, {}}, {}},
  {"GlbSecondWithoutUri", true, R"({"byteLength":2},{"byteLength":2})", {{7, 8, 9, 0}, {}}, {}},
  {"GlbFirstThatWasRead", true, R"({},{"byteLength":2},{"byteLength":2})", {{}, {7, 8, 9, 0}, {}}, {}},
  {"GlbEmptyUri", true, R"({"byteLength":2,"uri":""})", {{7, 8, 9, 0}}, {}},
};
INSTANTIATE_TEST_SUITE_P(Rows, Buffers, testing::ValuesIn(kBuffers), RowName());

TEST(Buffers, LetGoOfTheirTextOnceItIsDecoded)
{
  const std::string octets = "data:application/octet-stream;base64,";
  const std::string gltf = "data:application/gltf-buffer;base64,";
  DocumentLoad load;
  load.folder.Write("two.bin", Bytes{1, 2});
  ASSERT_EQ(load.RunText(R"({"buffers":[{"byteLength":2,"uri":")" + octets + R"(AwQ="},{"byteLength":3,"uri":")" + octets +
                         R"(AwQ="},{"byteLength":2,"uri":")" + gltf + R"(A*"},{"byteLength":2,"uri":"two.bin"}]})"),
            "");
  EXPECT_THAT(load.GetMessages(), ElementsAre(kBroken + octets + "AwQ=", kBroken + gltf + "A*"));
  const std::string uris[] = {octets, octets, gltf, "two.bin"};
  for (Int i = 0; i < 4; ++i)
    EXPECT_EQ(Text(load.GetData().buffers.Find(i)->GetUri()), uris[i]) << i;
  EXPECT_THAT(ToVector(load.GetData().buffers.Find(1)->GetBytes()), ElementsAre(3, 4)) << "too few stay";
}

TEST(Buffers, AreNamedInAWarningOf260Characters)
{
  DocumentLoad load;
  const std::string uri = "data:application/octet-stream;base64,*" + std::string(100000, 'A');
  ASSERT_EQ(load.RunText(R"({"buffers":[{"byteLength":2,"uri":")" + uri + "\"}]}"), "");
  // The text in front has 44 characters.
  EXPECT_THAT(load.GetMessages(), ElementsAre(kBroken + uri.substr(0, 216)));
}

TEST(Warnings, ComeInTheOrderOfTheGroups)
{
  DocumentLoad load;
  ASSERT_EQ(load.RunText(R"({"skins":[{}],"meshes":[{"primitives":[{"attributes":{"POSITION":9}}]}],
      "buffers":[{"byteLength":2,"uri":"data:application/gltf-buffer;base64,A*"}],"extensionsUsed":["A"]})"),
            "");
  EXPECT_THAT(load.GetMessages(),
              ElementsAre("4 The file uses these extensions, which are ignored: A",
                          kBroken + std::string("data:application/gltf-buffer;base64,A*"), kAssetMissing, kAssetMissing));
}

// What small records are read with.

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

TEST(GltfNode, CountsItsNumbers)
{
  const std::pair<const char*, size_t> rows[] = {{"matrix", 16}, {"rotation", 4}, {"scale", 3}, {"translation", 3}};
  for (const auto& [name, right] : rows)
  {
    const std::string message =
      "Illegal state: Condition " + std::to_string(right) + " == " + name + "Array.GetCount() not fulfilled. ";
    for (const size_t count : {size_t(0), right - 1, right, right + 1})
    {
      std::string numbers;
      for (size_t i = 0; i < count; ++i)
        numbers += i ? ",1" : "1";
      GltfNode node;
      const std::string json = std::string("{\"") + name + "\":[" + numbers + "]}";
      EXPECT_EQ(ErrorText(node.ReadFromJson(ParseObject(json))), count == right ? "" : message) << json;
    }
  }
}

TEST(GltfNode, KeepsNoFractionsOfWeights)
{
  GltfNode node;
  ASSERT_EQ(ErrorText(node.ReadFromJson(ParseObject(R"({"weights":[1,0.5,2.9]})"))), "");
  EXPECT_THAT(ToVector(node.weights), testing::ElementsAre(1, 0, 2));
}

}  // namespace q7z::test
