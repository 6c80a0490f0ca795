// Small records and what they are read with: the JSON layer and nodes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/document/gltfutilities.h"
#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

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
