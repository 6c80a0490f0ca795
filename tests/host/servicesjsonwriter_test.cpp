// The JSON service, writing: the text of each kind of value, and what cannot be written.

#include <cmath>
#include <limits>

#include "host/services/headlessjson.h"
#include "tests/host/servicesupport.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

namespace
{

DataDictionary MakeObject(const char* name, Data value)
{
  DataDictionary dictionary;
  EXPECT_FALSE(dictionary.Set(DataKey(MakeString(name)), std::move(value)).HasError());
  return dictionary;
}

Data MakeArray(std::initializer_list<Data> elements)
{
  BaseArray<Data> array;
  for (const Data& element : elements)
    EXPECT_FALSE(array.Append(element).HasError());
  Result<Data> made = Data::CreateArray(std::move(array));
  return made.HasError() ? Data() : std::move(made).GetValue();
}

std::string Write(const Data& value, bool formatted = false)
{
  const Result<String> text = WriteJson(value, formatted);
  return text.HasError() ? MessageOf(text) : Text(text.GetValue());
}

struct ValueRow
{
  const char* name;
  Data value;
  const char* expected;
};

std::vector<ValueRow> MakeValues()
{
  return {
    {"Nil", Data(), "null"},
    {"True", Data(true), "true"},
    {"False", Data(false), "false"},
    {"Zero", Data(Int(0)), "0"},
    {"SmallestInt", Data(Int(INT64_MIN)), "-9223372036854775808"},
    {"LargestInt", Data(Int(INT64_MAX)), "9223372036854775807"},

    {"FloatOne", Data(1.0), "1.0"},
    {"FloatZero", Data(0.0), "0.0"},
    {"FloatNegativeZero", Data(-0.0), "-0.0"},
    {"FloatTenth", Data(0.1), "0.1"},
    {"FloatThird", Data(1.0 / 3.0), "0.3333333333333333"},
    {"FloatLarge", Data(1e300), "1e+300"},
    {"FloatSmall", Data(5e-324), "5e-324"},
    {"FloatWhole", Data(123456.0), "123456.0"},
    {"FloatMillion", Data(1000000.0), "1e+06"},

    {"SingleOne", Data(1.0f), "1.0"},
    {"SingleTenth", Data(0.1f), "0.1"},
    // The same number, once as it was given and once as the double that it becomes.
    {"SingleThird", Data(1.0f / 3.0f), "0.33333334"},
    {"DoubleOfSingleThird", Data(static_cast<Float>(1.0f / 3.0f)), "0.3333333432674408"},
    {"SingleLargest", Data(3.4028235e38f), "3.4028235e+38"},
    {"SingleSmallest", Data(1e-45f), "1e-45"},
    {"SingleNegative", Data(-16777216.0f), "-16777216.0"},

    {"EmptyText", Data(""_s), "\"\""},
    {"QuoteAndBackslash", Data("a\"b\\c/"_s), "\"a\\\"b\\\\c/\""},
    {"LineEnds", Data("\n\r\t"_s), "\"\\n\\r\\t\""},
    {"OtherControls", Data(String("\0\x01\x1f\x7f", 4)), "\"\\u0000\\u0001\\u001f\x7f\""},
    {"Unicode", Data("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"_s), "\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\""},
    {"StrayByteIsReplaced", Data("a\xFF\"b"_s), "\"a\xEF\xBF\xBD\\\"b\""},
    {"CutCharacterIsReplaced", Data("a\xE2\x82"_s), "\"a\xEF\xBF\xBD\xEF\xBF\xBD\""},
    {"EscapeBehindManyPlainBytes", Data("0123456789012345678901234567890123456789\"0123456789012345678901234567890123456789"_s),
     "\"0123456789012345678901234567890123456789\\\"0123456789012345678901234567890123456789\""},

    {"EmptyArray", MakeArray({}), "[]"},
    {"EmptyObject", Data(DataDictionary()), "{}"},
    {"Nested", Data(MakeObject("a", MakeArray({Data(Int(1)), Data(MakeObject("b\n", Data(2.5)))}))), R"({"a":[1,{"b\n":2.5}]})"},
  };
}

class JsonWriting : public testing::TestWithParam<ValueRow>
{};

TEST_P(JsonWriting, GivesTheText)
{
  EXPECT_EQ(Write(GetParam().value), GetParam().expected);
}

TEST_P(JsonWriting, GivesWhatReadsAsTheSame)
{
  // Read back in an array, since a text alone at the top is as good as any value.
  BaseArray<Byte> bytes;
  const std::string text = Write(MakeArray({GetParam().value}));
  ASSERT_FALSE(bytes.AppendCopies(reinterpret_cast<const Byte*>(text.data()), static_cast<Int>(text.size())).HasError());
  const Result<BaseArray<Data>> read = HeadlessJson().ParseBytes(std::move(bytes));
  ASSERT_FALSE(read.HasError()) << MessageOf(read);
  const Data& value = read.GetValue()[0].GetArray().GetValue()[0];
  EXPECT_EQ(value.GetKind(), GetParam().value.GetKind());
  // A single number comes back as the double nearest to its own shortest text, which is written differently, yet rounds to it.
  if (GetParam().value.IsSinglePrecision())
  {
    EXPECT_EQ(static_cast<Float32>(value.GetFloat().GetValue()), static_cast<Float32>(GetParam().value.GetFloat().GetValue()));
  }
  else
  {
    EXPECT_EQ(Write(value), Write(GetParam().value));
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonWriting, testing::ValuesIn(MakeValues()), RowName());

TEST(JsonWriter, IndentsByTwo)
{
  DataDictionary dictionary = MakeObject("a", MakeArray({Data(Int(1)), MakeArray({}), Data(DataDictionary())}));
  ASSERT_FALSE(dictionary.Set(DataKey("b"), Data(MakeObject("c", Data("d"_s)))).HasError());
  const Result<String> text = HeadlessJson().Write(dictionary, true);
  ASSERT_FALSE(text.HasError());
  EXPECT_EQ(Text(text.GetValue()), "{\n"
                                   "  \"a\": [\n"
                                   "    1,\n"
                                   "    [],\n"
                                   "    {}\n"
                                   "  ],\n"
                                   "  \"b\": {\n"
                                   "    \"c\": \"d\"\n"
                                   "  }\n"
                                   "}");
}

struct RefusedRow
{
  const char* name;
  Data value;
};

const RefusedRow kRefused[] = {
  {"Infinity", Data(std::numeric_limits<Float>::infinity())},
  {"NegativeInfinity", Data(-std::numeric_limits<Float>::infinity())},
  {"NotANumber", Data(std::numeric_limits<Float>::quiet_NaN())},
  {"SingleInfinity", Data(std::numeric_limits<Float32>::infinity())},
  {"SingleNotANumber", Data(std::numeric_limits<Float32>::quiet_NaN())},
};

class JsonRefused : public testing::TestWithParam<RefusedRow>
{};

TEST_P(JsonRefused, IsNoJson)
{
  const Result<String> text = HeadlessJson().Write(MakeObject("deep", MakeArray({GetParam().value})), false);
  ASSERT_TRUE(text.HasError());
  EXPECT_EQ(text.GetError().GetClass(), ErrorClass::kIllegalArgument);
  EXPECT_EQ(MessageOf(text), "JSON has no number that is not finite.");
}

INSTANTIATE_TEST_SUITE_P(Rows, JsonRefused, testing::ValuesIn(kRefused), RowName());

TEST(JsonWriter, WritesWhatCanBeReadAndNothingDeeper)
{
  Data value = MakeArray({});
  for (int depth = 1; depth < 1024; ++depth)
    value = MakeArray({value});
  EXPECT_EQ(Write(value), std::string(1024, '[') + std::string(1024, ']'));
  EXPECT_EQ(Write(MakeArray({value})), "The JSON value nests deeper than 1,024.");
}

TEST(JsonWriter, WritesLongTexts)
{
  std::string bytes;
  for (int i = 0; i < 300000; ++i)
    bytes += static_cast<char>('a' + i % 26);
  EXPECT_EQ(Write(MakeArray({Data(MakeString(bytes)), Data(MakeString(bytes))})), "[\"" + bytes + "\",\"" + bytes + "\"]");
}

}  // namespace

}  // namespace q7z::test
