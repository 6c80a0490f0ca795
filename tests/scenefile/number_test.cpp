// Numbers: every double comes back, in its shortest text, and its kind with it.

#include <limits>

#include <gtest/gtest.h>

#include "tests/scenefile/scenetext.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

std::string WriteParameter(const HostValue& value)
{
  const DocumentOwner document(HeadlessDocument::Create());
  EXPECT_TRUE(document->GetSettings().Set(5, value));
  const std::string text = Write(*document);
  const size_t start = text.find("\"5\": ");
  return text.substr(start + 5, text.find("\n  }", start) - start - 5);
}

struct NumberRow
{
  const char* name;
  HostValue value;
  const char* text;
};

class SceneNumber : public testing::TestWithParam<NumberRow>
{};

TEST_P(SceneNumber, HasTheShortestText)
{
  EXPECT_EQ(WriteParameter(GetParam().value), GetParam().text);
}

TEST_P(SceneNumber, ReadsBackWithItsKind)
{
  const DocumentOwner document = Read(MakeText(R"("settings": {"5": )" + std::string(GetParam().text) + "}"));
  ASSERT_TRUE(document);
  const HostValue* const value = document->GetSettings().Find(5);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->GetKind(), GetParam().value.GetKind());
  EXPECT_EQ(WriteParameter(*value), GetParam().text);
}

constexpr Float kInfinity = std::numeric_limits<Float>::infinity();
constexpr Float kNan = std::numeric_limits<Float>::quiet_NaN();

const NumberRow kNumbers[] = {
  {"WholeFloat", HostValue(1.0), "1.0"},
  {"Tenth", HostValue(0.1), "0.1"},
  {"SumOfTenths", HostValue(0.1 + 0.2), "0.30000000000000004"},
  {"SingleTenth", HostValue(Float(0.1f)), "0.10000000149011612"},
  {"NegativeZero", HostValue(-0.0), "-0.0"},
  {"Large", HostValue(1e300), "1e+300"},
  {"Largest", HostValue(std::numeric_limits<Float>::max()), "1.7976931348623157e+308"},
  {"Smallest", HostValue(std::numeric_limits<Float>::denorm_min()), "5e-324"},
  {"BeyondWholeFloats", HostValue(9007199254740993.0), "9007199254740992.0"},
  {"Nan", HostValue(kNan), R"({"float": "nan"})"},
  {"Infinity", HostValue(kInfinity), R"({"float": "inf"})"},
  {"NegativeInfinity", HostValue(-kInfinity), R"({"float": "-inf"})"},
  {"Whole", HostValue(Int32(1)), "1"},
  {"LargestWhole", HostValue(Int(INT64_MAX)), "9223372036854775807"},
  {"SmallestWhole", HostValue(Int(INT64_MIN)), "-9223372036854775808"},
  {"Bool", HostValue(true), "true"},
  {"WholeTime", HostValue(HostTime{-3, 25}), R"({"time": [-3, 25]})"},
  {"FractionOfTime", HostValue(HostTime{0.5, -0.0}), R"({"time": [0.5, -0.0]})"},
  {"EndlessTime", HostValue(HostTime{kInfinity, 1e19}), R"({"time": [{"float": "inf"}, 1e+19]})"},
  {"Vector", HostValue(Vector{1, -0.0, kNan}), R"({"vector": [1.0, -0.0, {"float": "nan"}]})"},
  {"Vector4", HostValue(Vector4{1, 0.1, 2, 3}), R"({"vector4": [1.0, 0.1, 2.0, 3.0]})"},
  {"Unit", HostValue(HostUnitScale{0.1, 10}), R"({"unit": [0.1, 10]})"},
  {"EmptyLink", HostValue::Link(nullptr), R"({"link": null})"},
  {"Text", HostValue("a\"\\\n\t\r\x01\x7F\xC3\xA9"_s), "\"a\\\"\\\\\\n\\t\\r\\u0001\x7F\xC3\xA9\""},
  {"EmptyText", HostValue(String()), "\"\""},
  {"ZeroByte", HostValue(String("a\0b", 3)), R"("a\u0000b")"},
};
INSTANTIATE_TEST_SUITE_P(Rows, SceneNumber, testing::ValuesIn(kNumbers), RowName());

// Bytes that are no UTF-8 would make a text that nobody reads.
TEST(SceneText, BrokenBytesAreReplaced)
{
  EXPECT_EQ(WriteParameter(HostValue("a\xFF\xC3(\xE2\x82"_s)), "\"a\xEF\xBF\xBD\xEF\xBF\xBD(\xEF\xBF\xBD\xEF\xBF\xBD\"");
}

}  // namespace
}  // namespace q7z::test
