// Corner data keeps its values and its precision: 32 bits in their own shortest form, 64 bits never taken for them.

#include <bit>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "host/scene/headlesstag.h"
#include "tests/scenefile/scenetext.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

constexpr Float kInfinity = std::numeric_limits<Float>::infinity();

/// A document with one polygon whose UVW tag begins with the number; the others are 0.
DocumentOwner MakeDocument(Float number, Bool asDoubles)
{
  DocumentOwner document = Read(MakeText(R"("objects": [{"id": 1, "type": 5100, "points": [0, 0, 0], "polygons": [0, 0, 0, 0],
                                            "tags": [{"id": 2, "type": 5671}]}])"));
  auto& tag = static_cast<HeadlessCornerTag&>(*document->GetFirstObject()->GetFirstTag());
  EXPECT_TRUE(tag.Resize(1, asDoubles));
  const HostCornerHandle handle = tag.GetHandleW(asDoubles);
  if (asDoubles)
    handle.doubles[0] = number;
  else
    handle.singles[0] = static_cast<Float32>(number);
  return document;
}

std::string GetFirstText(const HeadlessDocument& document)
{
  const std::string text = Write(document);
  const size_t start = text.find("\"uvws\": [") + 9;
  return text.substr(start, text.find(',', start) - start);
}

struct CornerRow
{
  const char* name;
  Float number;
  Bool asDoubles;
  const char* text;
};

class SceneCorner : public testing::TestWithParam<CornerRow>
{};

TEST_P(SceneCorner, IsWrittenInItsPrecision)
{
  const DocumentOwner document = MakeDocument(GetParam().number, GetParam().asDoubles);
  EXPECT_EQ(GetFirstText(*document), GetParam().text);
}

TEST_P(SceneCorner, ReadsBackInItsPrecision)
{
  const DocumentOwner written = MakeDocument(GetParam().number, GetParam().asDoubles);
  const DocumentOwner document = Read(Write(*written));
  ASSERT_TRUE(document);
  const auto& tag = static_cast<const HeadlessCornerTag&>(*document->GetFirstObject()->GetFirstTag());
  ASSERT_EQ(tag.IsDouble(), GetParam().asDoubles);
  const HostCornerHandle handle = tag.GetHandleR();
  if (GetParam().asDoubles)
    EXPECT_EQ(std::bit_cast<UInt>(handle.doubles[0]), std::bit_cast<UInt>(GetParam().number));
  else
    EXPECT_EQ(std::bit_cast<UInt32>(handle.singles[0]), std::bit_cast<UInt32>(static_cast<Float32>(GetParam().number)));
}

const CornerRow kCorners[] = {
  {"SingleTenth", 0.1, false, "0.1"},
  {"SingleThird", 1.0 / 3, false, "0.33333334"},
  {"SingleLarge", 1e30, false, "1e+30"},
  {"SingleLargest", std::numeric_limits<Float32>::max(), false, "3.4028235e+38"},
  {"SingleSmallest", 1e-45, false, "1e-45"},
  {"SingleNegativeZero", -0.0, false, "-0.0"},
  {"SingleWhole", 16777216, false, "16777216.0"},
  {"SingleInfinity", kInfinity, false, R"({"float": "inf"})"},
  // Its shortest text 7.038531e-26 would read back as the number below it.
  {"SingleBetweenTwoDoubles", Float(std::bit_cast<Float32>(0x15AE43FDu)), false, "7.03853069e-26"},
  {"DoubleThird", 1.0 / 3, true, "0.3333333333333333"},
  {"DoubleOfASingle", Float(0.1f), true, "0.10000000149011612"},
  {"DoubleLarge", 1e300, true, "1e+300"},
  // These texts could be of 32-bit numbers; one zero more says that they are not.
  {"DoubleTenth", 0.1, true, "0.10"},
  {"DoubleHalf", 0.5, true, "0.50"},
  {"DoubleWhole", 3, true, "3.00"},
  {"DoubleNegativeZero", -0.0, true, "-0.00"},
  {"DoubleWithExponent", 1e30, true, "1.0e+30"},
  {"DoubleWithPointAndExponent", 1.5e-30, true, "1.50e-30"},
};
INSTANTIATE_TEST_SUITE_P(Rows, SceneCorner, testing::ValuesIn(kCorners), RowName());

// The mark stands at the first number that can have one.
TEST(SceneCorners, MarkSkipsNumbersThatAreNotFinite)
{
  const DocumentOwner document = MakeDocument(kInfinity, true);
  const std::string text = Write(*document);
  EXPECT_NE(text.find(R"("uvws": [{"float": "inf"}, 0.00, 0.0, )"), std::string::npos) << text;
}

struct HandRow
{
  const char* name;
  const char* first;  ///< the first of 24 numbers, of which the others are 0.5
  Bool isDouble;
  Float value;
};

class SceneHandWrittenCorner : public testing::TestWithParam<HandRow>
{};

TEST_P(SceneHandWrittenCorner, GivesAPrecision)
{
  std::string numbers = GetParam().first;
  for (int i = 1; i < 24; ++i)
    numbers += ", 0.5";
  const DocumentOwner document = Read(MakeTagText(R"({"id": 2, "type": 5711, "normals": [)" + numbers + "]}"));
  ASSERT_TRUE(document);
  const auto& tag = static_cast<const HeadlessCornerTag&>(*document->GetFirstObject()->GetFirstTag());
  EXPECT_EQ(tag.IsDouble(), GetParam().isDouble);
  EXPECT_EQ(tag.GetHandleR().Get(0).a.x, GetParam().value);
}

const HandRow kHandRows[] = {
  {"WholeNumber", "1", false, 1},
  {"LargestWholeSingle", "16777216", false, 16777216},
  {"WholeNumberBeyondSingles", "16777217", true, 16777217},
  {"MoreDigitsThanSinglesHave", "0.123456789", true, 0.123456789},
  {"OtherSpelling", "1E0", true, 1},
  {"BeyondSingles", "1e39", true, 1e39},
};
INSTANTIATE_TEST_SUITE_P(Rows, SceneHandWrittenCorner, testing::ValuesIn(kHandRows), RowName());

// A tag that never had data keeps none; it does not get zeros.
TEST(SceneCorners, TagWithoutDataStaysEmpty)
{
  const DocumentOwner document = Read(MakeTagText(R"({"id": 2, "type": 5711}, {"id": 3, "type": 431000045, "perPoint": false})"));
  ASSERT_TRUE(document);
  const HeadlessTag* const tag = document->GetFirstObject()->GetFirstTag();
  EXPECT_EQ(static_cast<const HeadlessCornerTag*>(tag)->GetPolygonCount(), 0);
  EXPECT_FALSE(static_cast<const HeadlessVertexColorTag*>(tag->GetNext())->IsPerPoint());
  EXPECT_EQ(static_cast<const HeadlessVertexColorTag*>(tag->GetNext())->GetCount(), 0);
}

TEST(SceneCorners, ColorsOfCorners)
{
  std::string numbers = "0.1";
  for (int i = 1; i < 32; ++i)
    numbers += ", 2";
  const DocumentOwner document =
    Read(MakeTagText(R"({"id": 2, "type": 431000045, "perPoint": false, "colors": [)" + numbers + "]}"));
  ASSERT_TRUE(document);
  const auto& tag = static_cast<const HeadlessVertexColorTag&>(*document->GetFirstObject()->GetFirstTag());
  EXPECT_EQ(tag.GetCount(), 2);
  EXPECT_EQ(tag.GetHandleR().GetCorner(0, 0)[0], 0.1f);
  EXPECT_EQ(tag.GetHandleR().GetCorner(1, 3)[3], 2);
}

}  // namespace
}  // namespace q7z::test
