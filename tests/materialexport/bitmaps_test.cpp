// Merging, packing and encoding of bitmaps, and the conversions that materials need.

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

std::array<uint8_t, 3> Gray(uint8_t value)
{
  return {value, value, value};
}

/// Files by the names that a material gives them: c, a and n of its colour, alpha and normal, r and m of its layer.
struct MergeRow
{
  const char* name;
  std::map<std::string, Picture> files;
  const char* expected;  // the images, behind each other
};

class MergedBitmaps : public MaterialExportTest, public testing::WithParamInterface<MergeRow>
{};

TEST_P(MergedBitmaps, BecomeImages)
{
  std::string channels = Channel(3);
  std::string shaders;
  for (const auto& [name, picture] : GetParam().files)
  {
    _bitmaps.files[name] = picture;
    const std::string shader = R"({"parameters": {"1002": ")" + name + "\"}}";
    if (name[0] == 'r' || name[0] == 'm')
      shaders += (shaders.empty() ? "" : ", ") + std::string(name[0] == 'r' ? R"("40": )" : R"("44": )") + shader;
    else
      channels += ", " + Channel(name[0] == 'c' ? 0 : name[0] == 'a' ? 7 : 13, name);
  }
  ASSERT_EQ(Save({R"("channels": {)" + channels + R"(}, "layers": [{"id": 1000, "shaders": {)" + shaders + "}}]"}), "");
  std::string images;
  for (int i = 0; i < Count("images"); ++i)
    images += (i ? "; " : "") + Image(i);
  EXPECT_EQ(images, GetParam().expected);
}

const MergeRow kMergeRows[] = {
  {"ColorAsPng", {{"c.png", {2, 1, {kRed, kBlack}, {7}}}}, "png 2x1 255,0,0 0,0,0"},
  {"ColorAsJpeg", {{"c.jpg", {2, 1, {kRed, kBlack}}}}, "jpg 2x1 255,0,0 0,0,0"},
  {"AlphaMakesJpegPng", {{"c.jpg", {1, 1, {kRed}}}, {"a.png", {1, 1, {Gray(9)}}}}, "png 1x1 255,0,0,9"},
  {"AlphaFromItsChannel", {{"c.png", {1, 1, {kRed}}}, {"a.png", {1, 1, {Gray(9)}, {77}}}}, "png 1x1 255,0,0,77"},
  {"ColoredAlphaAsBrightness", {{"c.png", {1, 1, {kBlack}}}, {"a.png", {1, 1, {kRed}}}}, "png 1x1 0,0,0,76"},
  {"SmallAlphaGrows", {{"c.png", {1, 2, {kRed}}}, {"a.png", {1, 1, {kBlack}, {1}}}}, "png 1x2 all 255,0,0,1"},
  {"LargeAlphaShrinks", {{"c.png", {1, 1, {kRed}}}, {"a.png", {2, 2, {Gray(5)}, {6}}}}, "png 1x1 255,0,0,6"},
  {"AlphaAlone", {{"a.png", {2, 1, {kBlack}, {4, 5}}}}, "png 2x1 255,255,255,4 255,255,255,5"},
  {"ManyRows", {{"c.png", {3, 200, {kRed}}}, {"a.png", {3, 200, {Gray(100)}}}}, "png 3x200 all 255,0,0,100"},
  {"RoughnessAlone", {{"r.png", {2, 1, {Gray(10), Gray(0)}, {1}}}}, "png 2x1 255,10,255 255,0,255"},
  {"MetallicAlone", {{"m.png", {64, 32, {Gray(20)}}}}, "png 64x32 all 255,255,20"},
  {"SaturatedPixelsGiveTheirLargest",
   {{"r.png", {2, 1, {kRed, {10, 30, 20}}}}, {"m.png", {2, 1, {{0, 0, 9}, {40, 41, 42}}}}},
   "png 2x1 255,255,9 255,30,42"},
  {"ManyRowsOfTheFirstSize", {{"r.png", {1, 300, {Gray(50)}}}, {"m.png", {2, 1, {Gray(60)}}}}, "png 1x300 all 255,50,60"},
  // Names are compared as they are.
  {"Jpeg", {{"n.jpeg", {1, 1, {kRed}, {9}}}}, "jpg 1x1 255,0,0"},
  {"Capitals", {{"n.JPG", {1, 1, {kRed}}}}, "png 1x1 255,0,0"},
  {"SuffixOfTheFolder", {{"n.jpg/b", {1, 1, {kRed}}}}, "png 1x1 255,0,0"},
  {"LastSuffixCounts", {{"n.jpg.tif", {1, 1, {kRed}}}}, "png 1x1 255,0,0"},
};
INSTANTIATE_TEST_SUITE_P(Rows, MergedBitmaps, testing::ValuesIn(kMergeRows), RowName());

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
