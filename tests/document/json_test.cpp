// The layer through which records take values out of parsed JSON.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/document/gltfutilities.h"
#include "tests/document/documenthost.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

constexpr DataKey kMember("v");

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
  EXPECT_EQ(ReadInt(dict, kMember, -7), row.asInt);
  EXPECT_EQ(ReadFloat(dict, kMember, -0.5), row.asFloat);
  EXPECT_EQ(Text(ReadString(dict, kMember, "default"_s)), row.asString);
  EXPECT_EQ(ReadBool(dict, kMember, true), row.asBool);
}

INSTANTIATE_TEST_SUITE_P(Rows, LenientReaders,
                         testing::Values(LenientRow{"Absent", R"({"w":1})", -7, -0.5, "default", true},
                                         LenientRow{"NoMembers", R"({})", -7, -0.5, "default", true},
                                         LenientRow{"Whole", R"({"v":12})", 12, 12.0, "default", true},
                                         LenientRow{"Fraction", R"({"v":12.75})", 12, 12.75, "default", true},
                                         LenientRow{"NegativeFraction", R"({"v":-12.75})", -12, -12.75, "default", true},
                                         LenientRow{"LargestWhole", R"({"v":9223372036854775807})", INT64_MAX,
                                                    9223372036854775808.0, "default", true},
                                         LenientRow{"FloatBeyondInt", R"({"v":1e19})", -7, 1e19, "default", true},
                                         LenientRow{"String", R"({"v":"12"})", -7, -0.5, "12", true},
                                         LenientRow{"False", R"({"v":false})", -7, -0.5, "default", false},
                                         LenientRow{"Null", R"({"v":null})", -7, -0.5, "default", true},
                                         LenientRow{"Array", R"({"v":[1]})", -7, -0.5, "default", true},
                                         LenientRow{"Object", R"({"v":{}})", -7, -0.5, "default", true}),
                         RowName());

TEST(RequiredReaders, FailWhenAbsentOrOfAnotherKind)
{
  for (const char* const json : {R"({})", R"({"v":null})", R"({"v":[1]})", R"({"v":true})"})
  {
    const DataDictionary dict = ParseObject(json);
    EXPECT_TRUE(ReadRequiredInt(dict, kMember).HasError()) << json;
    EXPECT_TRUE(ReadRequiredString(dict, kMember).HasError()) << json;
    EXPECT_TRUE(ReadDictionary(dict, kMember).HasError()) << json;
  }
  EXPECT_TRUE(ReadRequiredInt(ParseObject(R"({"v":"1"})"), kMember).HasError());
  EXPECT_TRUE(ReadRequiredString(ParseObject(R"({"v":1})"), kMember).HasError());
  EXPECT_EQ(ErrorText(ReadRequiredInt(DataDictionary(), kMember)), "The required member v is missing.");
}

TEST(RequiredReaders, GiveTheValue)
{
  EXPECT_EQ(ReadRequiredInt(ParseObject(R"({"v":34962})"), kMember).GetValue(), 34962);
  EXPECT_EQ(ReadRequiredInt(ParseObject(R"({"v":3.0})"), kMember).GetValue(), 3);
  EXPECT_EQ(Text(ReadRequiredString(ParseObject(R"({"v":"VEC3"})"), kMember).GetValue()), "VEC3");
  EXPECT_EQ(ReadDictionary(ParseObject(R"({"v":{"a":1,"b":2}})"), kMember).GetValue().GetCount(), 2);
}

/// What each array reader makes of a member: "absent", "error" or the elements.
struct ArrayRow
{
  const char* name;
  const char* json;
  const char* ints;
  const char* floats;
  const char* strings;
  const char* data;
};

template <typename T, typename Reader>
std::string Describe(Reader read, const char* json)
{
  BaseArray<T> out;
  EXPECT_FALSE(out.Resize(3).HasError());  // what was there before goes
  const Result<Bool> found = read(ParseObject(json), kMember, out);
  if (found.HasError())
    return "error";
  if (!found.GetValue())
    return out.IsEmpty() ? "absent" : "absent, but filled";
  std::string text;
  for (const T& value : out)
  {
    text += text.empty() ? "" : ",";
    if constexpr (std::is_same_v<T, String>)
      text += Text(value);
    else if constexpr (std::is_same_v<T, Data>)
      text += std::to_string(static_cast<int>(value.GetKind()));
    else
      text += Text(String::FromFloat(static_cast<Float>(value)).GetValue());
  }
  return text;
}

class ArrayReaders : public testing::TestWithParam<ArrayRow>
{};

TEST_P(ArrayReaders, TellWhetherTheMemberIsThere)
{
  const ArrayRow& row = GetParam();
  EXPECT_EQ(Describe<Int>(ReadIntArray, row.json), row.ints);
  EXPECT_EQ(Describe<Float>(ReadFloatArray, row.json), row.floats);
  EXPECT_EQ(Describe<String>(ReadStringArray, row.json), row.strings);
  EXPECT_EQ(Describe<Data>(ReadDataArray, row.json), row.data);
}

INSTANTIATE_TEST_SUITE_P(Rows, ArrayReaders,
                         testing::Values(ArrayRow{"Absent", R"({})", "absent", "absent", "absent", "absent"},
                                         ArrayRow{"Empty", R"({"v":[]})", "", "", "", ""},
                                         ArrayRow{"Numbers", R"({"v":[1,2.5]})", "1,2", "1,2.5", "error", "2,3"},
                                         ArrayRow{"Strings", R"({"v":["a","b"]})", "error", "error", "a,b", "4,4"},
                                         ArrayRow{"Mixed", R"({"v":[1,"b"]})", "error", "error", "error", "2,4"},
                                         ArrayRow{"TooLarge", R"({"v":[1e30]})", "error", "1e+30", "error", "3"},
                                         ArrayRow{"NoArray", R"({"v":1})", "error", "error", "error", "error"},
                                         ArrayRow{"Null", R"({"v":null})", "error", "error", "error", "error"},
                                         ArrayRow{"Object", R"({"v":{}})", "error", "error", "error", "error"}),
                         RowName());

TEST(ForEachElement, WalksFromTheFirstElementOn)
{
  std::vector<Int> seen;
  const auto collect = [&](const DataDictionary& dataValue, Int idx) -> Bool
  {
    seen.push_back(100 * idx + ReadInt(dataValue, "n", -1));
    return true;
  };
  EXPECT_TRUE(ForEachElement(ParseObject(R"({"v":[{"n":5},{},{"n":7}]})"), kMember, collect).GetValue());
  EXPECT_THAT(seen, ElementsAre(5, 99, 207));
}

TEST(ForEachElement, IsNoErrorWithoutTheMember)
{
  const auto refuse = [](const DataDictionary&, Int) -> Bool { return false; };
  EXPECT_FALSE(ForEachElement(DataDictionary(), kMember, refuse).GetValue());
  EXPECT_TRUE(ForEachElement(ParseObject(R"({"v":[]})"), kMember, refuse).GetValue());
}

TEST(ForEachElement, StopsWhereTheCallbackSaysSo)
{
  int calls = 0;
  const auto refuseSecond = [&](const DataDictionary&, Int idx) -> Bool
  {
    ++calls;
    return idx != 1;
  };
  const Result<Bool> result = ForEachElement(ParseObject(R"({"v":[{},{},{}]})"), kMember, refuseSecond);
  EXPECT_EQ(ErrorText(result), "Illegal state: Condition callback(dataValue, idx) not fulfilled. ");
  EXPECT_THAT(result.GetError().GetFile(), EndsWith("gltfutilities.cpp"));
  EXPECT_EQ(calls, 2);
}

TEST(ForEachElement, StopsAtAnElementThatIsNoObject)
{
  for (const char* const json : {R"({"v":[{},1]})", R"({"v":[{},[]]})", R"({"v":[{},null]})", R"({"v":{}})"})
  {
    int calls = 0;
    const auto count = [&](const DataDictionary&, Int) -> Bool { return ++calls; };
    EXPECT_TRUE(ForEachElement(ParseObject(json), kMember, count).HasError()) << json;
    EXPECT_LE(calls, 1) << json;
  }
}

}  // namespace q7z::test
