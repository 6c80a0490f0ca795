// Merging, packing and encoding of bitmaps, and the conversions that materials need.

#include "plugin/material/gltfmaterialbitmaps.h"
#include "plugin/material/gltfmaterialexportcolor.h"
#include "tests/materialexport/materialfixture.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

const std::string kManyRows = []
{
  std::string text = "50,50,50";
  for (int i = 1; i < 300; ++i)
    text += " / 50,50,50";
  return text;
}();

/// Files by the names that a material gives them: c, a and n of its colour, alpha and normal, r and m of its layer.
struct MergeRow
{
  const char* name;
  std::map<std::string, std::string> files;
  const char* expected;  // the images, behind each other
};

class MergedBitmaps : public MaterialExportTest, public testing::WithParamInterface<MergeRow>
{};

TEST_P(MergedBitmaps, BecomeImages)
{
  std::string channels = Channel(3);
  std::string shaders;
  for (const auto& [name, pixels] : GetParam().files)
  {
    _bitmaps.files[name] = ImageOf(pixels);
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
  {"ColorAsPng", {{"c.png", "255,0,0,7 0,0,0,7"}}, "png 2x1 255,0,0 0,0,0"},
  {"ColorAsJpeg", {{"c.jpg", "255,0,0 0,0,0"}}, "jpg 2x1 255,0,0 0,0,0"},
  {"AlphaMakesJpegPng", {{"c.jpg", "255,0,0"}, {"a.png", "9,9,9"}}, "png 1x1 255,0,0,9"},
  {"AlphaFromItsChannel", {{"c.png", "255,0,0"}, {"a.png", "9,9,9,77"}}, "png 1x1 255,0,0,77"},
  {"ColoredAlphaAsBrightness", {{"c.png", "0,0,0"}, {"a.png", "255,0,0"}}, "png 1x1 0,0,0,76"},
  {"SmallAlphaGrows", {{"c.png", "9,0,0 / 9,0,0"}, {"a.png", "0,0,0,1"}}, "png 1x2 all 9,0,0,1"},
  {"LargeAlphaShrinks", {{"c.png", "9,0,0"}, {"a.png", "5,5,5,6 5,5,5,6"}}, "png 1x1 9,0,0,6"},
  {"AlphaAlone", {{"a.png", "0,0,0,4 0,0,0,5"}}, "png 2x1 255,255,255,4 255,255,255,5"},
  {"ManyRows", {{"c.png", kManyRows}, {"a.png", "7,7,7"}}, "png 1x300 all 50,50,50,7"},
  {"RoughnessAlone", {{"r.png", "10,10,10,1 0,0,0,1"}}, "png 2x1 255,10,255 255,0,255"},
  {"MetallicAlone", {{"m.png", "20,20,20 20,20,20"}}, "png 2x1 all 255,255,20"},
  {"SaturatedPixelsGiveTheirLargest",
   {{"r.png", "255,0,0 10,30,20"}, {"m.png", "0,0,9 40,41,42"}},
   "png 2x1 255,255,9 255,30,42"},
  {"ManyRowsOfTheFirstSize", {{"r.png", kManyRows}, {"m.png", "60,60,60 60,60,60"}}, "png 1x300 all 255,50,60"},
  // Names are compared as they are.
  {"Jpeg", {{"n.jpeg", "255,0,0,9"}}, "jpg 1x1 255,0,0"},
  {"Capitals", {{"n.JPG", "255,0,0"}}, "png 1x1 255,0,0"},
  {"SuffixOfTheFolder", {{"n.jpg/b", "255,0,0"}}, "png 1x1 255,0,0"},
  {"LastSuffixCounts", {{"n.jpg.tif", "255,0,0"}}, "png 1x1 255,0,0"},
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
    {"Green", {0, 0.25, 0}, {1. / 3, 1, 0.25}, {0, 0.25, 0}},
    {"Cyan", {0, 1, 1}, {0.5, 1, 1}, {0, 1, 1}},
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
