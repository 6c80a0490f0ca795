// Merging, packing and encoding of bitmaps, each alone.

#include <memory>
#include <optional>

#include "plugin/material/gltfmaterialbitmaps.h"
#include "plugin/material/gltfmaterialexportcolor.h"
#include "tests/materialexport/materialfixture.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

constexpr std::array<uint8_t, 3> kRed = {255, 0, 0};
constexpr std::array<uint8_t, 3> kBlack = {0, 0, 0};
constexpr std::array<uint8_t, 3> kWhitePixel = {255, 255, 255};

std::array<uint8_t, 3> Gray(uint8_t value)
{
  return {value, value, value};
}

std::string TextOf(const ExportTexture& texture)
{
  const BaseArray<Byte>& bytes = texture.image.GetData();
  return std::string(reinterpret_cast<const char*>(bytes.begin()), static_cast<size_t>(bytes.GetCount()));
}

HostBitmap* Handle(std::optional<Picture>& picture)
{
  return picture ? picture->AsBitmap() : nullptr;
}

struct PairCase
{
  const char* name;
  std::optional<Picture> first;
  std::optional<Picture> second;
  const char* expected;
  bool isJpeg = false;
};

class PairOfBitmaps : public MaterialExportTest, public testing::WithParamInterface<PairCase>
{
protected:
  PairCase _row = GetParam();
  ExportTexture _texture;
};

using BaseColorMerge = PairOfBitmaps;

TEST_P(BaseColorMerge, MakesOneImage)
{
  ASSERT_FALSE(MergeBaseColor(_texture, Handle(_row.first), _row.isJpeg, Handle(_row.second), true).HasError());
  EXPECT_EQ(TextOf(_texture), _row.expected);
  EXPECT_EQ(_texture.hasImage, *_row.expected != 0);
  const bool isJpeg = TextOf(_texture).starts_with("jpg");
  EXPECT_EQ(_texture.image.GetImageType(), isJpeg || !_texture.hasImage ? 1104 : 1023671);
}

const PairCase kBaseColorCases[] = {
  {"ColorAsPng", Picture(2, 1, {kRed, kBlack}), {}, "png 2x1 255,0,0 0,0,0"},
  {"ColorAsJpeg", Picture(2, 1, {kRed, kBlack}), {}, "jpg 2x1 255,0,0 0,0,0", true},
  {"AlphaMakesJpegPng", Picture(1, 1, {kRed}), Picture(1, 1, {Gray(9)}), "png 1x1 255,0,0,9", true},
  {"AlphaFromItsChannel", Picture(1, 1, {kRed}), Picture(1, 1, {Gray(9)}, {77}), "png 1x1 255,0,0,77"},
  {"ColoredAlphaAsBrightness", Picture(1, 1, {kBlack}), Picture(1, 1, {kRed}), "png 1x1 0,0,0,76"},
  {"SmallAlphaChannelGrows", Picture(2, 4, {kRed}), Picture(1, 2, {kBlack}, {1, 2}),
   "png 2x4 255,0,0,1 255,0,0,1 255,0,0,1 255,0,0,1 255,0,0,2 255,0,0,2 255,0,0,2 255,0,0,2"},
  {"LargeAlphaShrinks", Picture(1, 1, {kRed}), Picture(2, 2, {Gray(5)}, {6}), "png 1x1 255,0,0,6"},
  {"AlphaAloneByChannel", {}, Picture(2, 1, {kBlack}, {4, 5}), "png 2x1 255,255,255,4 255,255,255,5"},
};
INSTANTIATE_TEST_SUITE_P(Rows, BaseColorMerge, testing::ValuesIn(kBaseColorCases), RowName());

class MetallicRoughnessPack : public PairOfBitmaps
{};

TEST_P(MetallicRoughnessPack, MakesOneImage)
{
  ASSERT_FALSE(MergeMetallicRoughness(_texture, Handle(_row.first), Handle(_row.second), true).HasError());
  EXPECT_EQ(TextOf(_texture), _row.expected);
  EXPECT_EQ(_texture.hasImage, *_row.expected != 0);
}

const PairCase kMetallicRoughnessCases[] = {
  {"RoughnessAlone", Picture(2, 1, {Gray(10), Gray(0)}), {}, "png 2x1 255,10,255 255,0,255"},
  {"MetallicAlone", {}, Picture(64, 32, {Gray(20)}), "png 64x32 all 255,255,20"},
  {"Both", Picture(2, 1, {Gray(1), Gray(2)}), Picture(2, 1, {Gray(3), Gray(4)}), "png 2x1 255,1,3 255,2,4"},
  {"SaturatedPixelsGiveTheirLargest", Picture(2, 1, {kRed, {10, 30, 20}}), Picture(2, 1, {{0, 0, 9}, {40, 41, 42}}),
   "png 2x1 255,255,9 255,30,42"},
  {"AlphaIsNotAsked", Picture(1, 1, {Gray(5)}, {1}), Picture(1, 1, {Gray(6)}, {2}), "png 1x1 255,5,6"},
  {"ManyRowsOfTheFirstSize", Picture(1, 300, {Gray(50)}), Picture(2, 1, {Gray(60)}), "png 1x300 all 255,50,60"},
};
INSTANTIATE_TEST_SUITE_P(Rows, MetallicRoughnessPack, testing::ValuesIn(kMetallicRoughnessCases), RowName());

struct SingleCase
{
  const char* name;
  const char* fileName;
  const char* expected;
};

class SingleBitmap : public MaterialExportTest, public testing::WithParamInterface<SingleCase>
{};

TEST_P(SingleBitmap, IsEncodedAsItsNameSays)
{
  Picture picture(1, 1, {kRed}, {9});
  ExportTexture texture;
  const String name(GetParam().fileName, static_cast<Int>(std::strlen(GetParam().fileName)));
  ASSERT_FALSE(EncodeSingle(picture.AsBitmap(), name, texture, false).HasError());
  EXPECT_EQ(TextOf(texture), GetParam().expected);
  EXPECT_TRUE(texture.hasImage);
  EXPECT_FALSE(picture.hasAlpha);
  // Standard base64 of the text.
  const bool isJpeg = TextOf(texture).starts_with("jpg");
  EXPECT_EQ(texture.image.GetURIString().GetView(),
            isJpeg ? "data:image/jpeg;base64,anBnIDF4MSAyNTUsMCww" : "data:image/png;base64,cG5nIDF4MSAyNTUsMCww");
}

// Names are compared as they are.
const SingleCase kSingleCases[] = {
  {"Jpeg", "b.jpeg", "jpg 1x1 255,0,0"},
  {"Capitals", "b.JPG", "png 1x1 255,0,0"},
  {"SuffixOfTheFolder", "a.jpg/b", "png 1x1 255,0,0"},
  {"LastSuffixCounts", "a.jpg.tif", "png 1x1 255,0,0"},
};
INSTANTIATE_TEST_SUITE_P(Rows, SingleBitmap, testing::ValuesIn(kSingleCases), RowName());

TEST_F(MaterialExportTest, TheFilterForSmallSizesIsTheHosts)
{
  EXPECT_EQ(ExportTexture().sampler.minFilter, 9729) << "unset";
  for (const auto& [setting, filter] : std::initializer_list<std::pair<Int32, Int32>>{{0, 9728}, {1, 9729}, {2, 9987}, {3, 9729}})
  {
    ASSERT_TRUE(_host.Host().GetTables().material->GetGlobalSettings()->Set(1025, setting));
    EXPECT_EQ(ExportTexture().sampler.minFilter, filter) << setting;
  }
}

struct ColorCase
{
  const char* name;
  Vector rgb;
  Vector hsv;
  Vector back;  // what hsv gives
};

TEST(MaterialColors, AsHueSaturationAndValue)
{
  const ColorCase rows[] = {
    {"Gray", {0.5, 0.5, 0.5}, {0, 0, 0.5}, {0.5, 0.5, 0.5}},
    // Nearly grey: the smallest component is the value.
    {"NearlyWhite", {1, 0.9995, 1}, {0, 0, 0.9995}, {0.9995, 0.9995, 0.9995}},
    {"Red", {2, 0, 0}, {0, 1, 2}, {2, 0, 0}},
    {"Yellow", {1, 1, 0}, {1. / 6, 1, 1}, {1, 1, 0}},
    {"Violet", {0.5, 0.25, 1}, {0.7222222222222222, 0.75, 1}, {0.5, 0.25, 1}},
    {"Pink", {1, 0, 0.5}, {11. / 12, 1, 1}, {1, 0, 0.5}},
  };
  const auto expectNear = [](const Vector& actual, const Vector& expected, const char* name)
  {
    for (int i = 0; i < 3; ++i)
      EXPECT_NEAR(actual[i], expected[i], 1e-12) << name << " " << i;
  };
  for (const ColorCase& row : rows)
  {
    expectNear(RgbToHsv(row.rgb), row.hsv, row.name);
    expectNear(HsvToRgb(row.hsv), row.back, row.name);
  }
  expectNear(HsvToRgb({1, 1, 1}), {1, 0, 0}, "hue 1 is hue 0");
}

}  // namespace
}  // namespace q7z::test
