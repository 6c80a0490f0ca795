// Factors of classic materials: what each channel and the reflectance layer say, with and without their bitmaps.

#include "tests/materialexport/materialfixture.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

/// A classic material's members from those of its channels, parameters and first layer.
std::string Classic(const std::string& channels, const std::string& parameters = "", const std::string& layer = "")
{
  return R"("channels": {)" + channels + R"(}, "parameters": {)" + parameters + "}" +
         (layer.empty() ? "" : R"(, "layers": [{"id": 1000)" + layer + "}]");
}

struct FactorCase
{
  const char* name;
  std::string material;
  std::vector<std::pair<const char*, const char*>> expected;  // member of the material, and its JSON
};

class ClassicFactors : public MaterialExportTest, public testing::WithParamInterface<FactorCase>
{
protected:
  ClassicFactors()
  {
    for (const char* const name : {"c.png", "a.png", "n.png", "b.png", "o.png", "e.png", "l.png"})
      _bitmaps.files[name] = ImageOf("1,2,3");
  }
};

TEST_P(ClassicFactors, AreWritten)
{
  ASSERT_EQ(Save({GetParam().material}), "");
  for (const auto& [member, json] : GetParam().expected)
    EXPECT_EQ(At("materials/0/" + std::string(member)), json) << member;
}

constexpr const char* kColor = "pbrMetallicRoughness/baseColorFactor";
constexpr const char* kMetallic = "pbrMetallicRoughness/metallicFactor";
constexpr const char* kRoughness = "pbrMetallicRoughness/roughnessFactor";
constexpr const char* kScale = "normalTexture/scale";

// Layer parameters are 1000 + their offset: 65 colour, 66 brightness, 68 mode, 69 mix, 32 roughness, 36 metallic, 48 and 52 bump.
const FactorCase kFactorCases[] = {
  {"NothingOn",
   Classic(R"("0": {"on": false}, "1": {"on": false}, "2": {"on": false}, "3": {"on": false}, "7": {"on": false})",
           R"("2100": {"vector": [1, 0, 0]}, "2300": {"vector": [1, 0, 0]}, "2400": {"vector": [1, 1, 1]}, "2401": 1.0)"),
   {{kColor, "[1.0,1.0,1.0,1.0]"},
    {kMetallic, "1.0"},
    {kRoughness, "1.0"},
    {"emissiveFactor", "[0.0,0.0,0.0]"},
    {"alphaMode", "\"OPAQUE\""},
    {"alphaCutoff", "-"},
    {"normalTexture", "-"},
    {"occlusionTexture", "-"},
    {"emissiveTexture", "-"}}},

  // Colour.
  {"ColorKeepsItsHue",
   Classic(Channel(0), R"("2100": {"vector": [0.5, 0.25, 0]}, "2101": 0.5)"),
   {{kColor, "[0.25,0.125,0.0,1.0]"}}},
  {"ColorBrighterThanWhite",
   Classic(Channel(0), R"("2100": {"vector": [0.5, 0.25, 0]}, "2101": 4.0)"),
   {{kColor, "[1.0,1.0,0.0,1.0]"}}},
  {"MixCountsWithATextureOnly",
   Classic(Channel(0), R"("2100": {"vector": [1, 1, 1]}, "2102": 0.5, "2103": 1)"),
   {{kColor, "[1.0,1.0,1.0,1.0]"}}},
  {"MultipliedTexture",
   Classic(Channel(0, "c.png"), R"("2100": {"vector": [1, 1, 1]}, "2101": 0.5, "2102": 0.5, "2103": 3)"),
   {{kColor, "[0.25,0.25,0.25,1.0]"}, {"pbrMetallicRoughness/baseColorTexture", "{\"index\":0}"}}},
  // 0.42 first; the factors' own product, 0.14, would make it 0.08399999999999999.
  {"BrightnessCountsBeforeTheMix",
   Classic(Channel(0, "c.png"), R"("2100": {"vector": [0.6, 0.6, 0.6]}, "2101": 0.7, "2102": 0.2, "2103": 3)"),
   {{kColor, "[0.084,0.084,0.084,1.0]"}}},
  {"CoveringByDefault", Classic(Channel(0, "c.png"), R"("2100": {"vector": [0.5, 0.25, 0]})"), {{kColor, "[1.0,1.0,1.0,1.0]"}}},

  // Transparency.
  {"Transparent",
   Classic(Channel(2), R"("2400": {"vector": [0.5, 0.25, 0]}, "2401": 0.5)"),
   {{kColor, "[1.0,1.0,1.0,0.75]"}, {"alphaMode", "\"BLEND\""}}},
  {"TransparencyOfBlack",
   Classic(Channel(2), R"("2400": {"vector": [0, 0, 0]}, "2401": 1.0)"),
   {{kColor, "[1.0,1.0,1.0,1.0]"}, {"alphaMode", "\"OPAQUE\""}}},
  // As the brightness says, though no file should hold it.
  {"MoreThanTransparent",
   Classic(Channel(2), R"("2400": {"vector": [1, 1, 1]}, "2401": 1.5)"),
   {{kColor, "[1.0,1.0,1.0,-0.5]"}, {"alphaMode", "\"BLEND\""}}},
  {"AlphaChannelWithoutFile", Classic(Channel(7)), {{"alphaMode", "\"BLEND\""}, {"pbrMetallicRoughness/baseColorTexture", "-"}}},

  // Emission.
  {"EmissionAboveOne",
   Classic(Channel(1), R"("2300": {"vector": [0.5, 0.25, 0]}, "2301": 3.0)"),
   {{"emissiveFactor", "[1.0,0.75,0.0]"}}},
  {"EmissiveTexture",
   Classic(Channel(1, "e.png"), R"("2300": {"vector": [1, 1, 1]}, "2301": 0.0)"),
   {{"emissiveFactor", "[0.0,0.0,0.0]"}, {"emissiveTexture", "{\"index\":0}"}}},

  // Occlusion.
  {"OcclusionByDefault", Classic(Channel(12, "o.png")), {{"occlusionTexture", "{\"index\":0,\"strength\":0.0}"}}},

  // Reflectance.
  {"Reflectance",
   Classic(Channel(3), R"("1065": {"vector": [1, 1, 1]}, "1066": 0.5, "1032": 0.5, "1036": 1.0)", ", \"shaders\": {}"),
   {{kColor, "[0.5,0.5,0.5,1.0]"}, {kRoughness, "0.25"}, {kMetallic, "0.5"}}},
  {"ReflectanceIsClamped",
   Classic(Channel(3), R"("1066": 4.0, "1032": 0.5, "1036": -1.0)", ", \"shaders\": {}"),
   {{kRoughness, "1.0"}, {kMetallic, "0.0"}}},
  {"LayerBrightnessMustBeReal",
   Classic(Channel(3), R"("1066": 0, "1032": 0.5)", ", \"shaders\": {}"),
   {{kColor, "[1.0,1.0,1.0,1.0]"}, {kRoughness, "0.5"}}},
  {"ReflectanceUnderColor",
   Classic(Channel(0) + ", " + Channel(3),
           R"("2100": {"vector": [1, 1, 1]}, "2101": 0.5, "1065": {"vector": [1, 0, 0]}, "1066": 0.25, "1032": 1.0, "1036": 0.5)",
           ", \"shaders\": {}"),
   {{kColor, "[0.5,0.5,0.5,1.0]"}, {kRoughness, "0.5"}, {kMetallic, "0.25"}}},
  {"LayerTextureMultiplied",
   Classic(Channel(3), R"("1065": {"vector": [1, 1, 1]}, "1066": 0.5, "1068": 3, "1069": 0.5, "1032": 1.0)",
           R"(, "shaders": {"67": {"parameters": {"1002": "l.png"}}})"),
   {{kColor, "[0.25,0.25,0.25,1.0]"}, {kRoughness, "0.5"}, {"pbrMetallicRoughness/baseColorTexture", "{\"index\":0}"}}},
  {"LayerTextureMultipliesByDefault",
   Classic(Channel(3), R"("1065": {"vector": [0.5, 0.5, 0.5]}, "1068": 0.0)",
           R"(, "shaders": {"67": {"parameters": {"1002": "l.png"}}})"),
   {{kColor, "[0.5,0.5,0.5,1.0]"}}},
  {"LayerNumberedBeyondAllParameters",
   R"("channels": {"3": {"on": true}}, "layers": [{"id": 2147483647}])",
   {{kColor, "[1.0,1.0,1.0,1.0]"}, {kRoughness, "1.0"}, {kMetallic, "1.0"}}},

  // Normals.
  {"NormalStrengthByDefault", Classic(Channel(13, "n.png")), {{kScale, "1.0"}}},
  {"BumpAfterNormal",
   Classic(Channel(6, "b.png") + ", " + Channel(13, "n.png"), R"("3300": 0.5, "1009": 0.25)"),
   {{kScale, "0.25"}}},
  {"NormalWhereBumpHasNoFile",
   Classic(Channel(6) + ", " + Channel(13, "n.png"), R"("3300": 0.5, "1009": 0.25)"),
   {{kScale, "0.5"}}},
  {"LayerNormalAfterBump",
   Classic(Channel(3) + ", " + Channel(6, "b.png"), R"("1009": 0.25, "1048": 0.5, "1052": 1.5)",
           R"(, "shaders": {"59": {"parameters": {"1002": "n.png"}}})"),
   {{kScale, "0.75"}}},
  {"LayerNormalIsClamped",
   Classic(Channel(3), R"("1048": 2.0, "1052": 1.5)", R"(, "shaders": {"59": {"parameters": {"1002": "n.png"}}})"),
   {{kScale, "1.0"}}},
};
INSTANTIATE_TEST_SUITE_P(Rows, ClassicFactors, testing::ValuesIn(kFactorCases), RowName());

TEST_F(MaterialExportTest, WithoutTexturesNoFileIsRead)
{
  _parameters = {{kExportTexturesParameter, HostValue(false)}};
  ASSERT_EQ(Save({Classic(Channel(0, "missing.png") + ", " + Channel(7, "missing.png"),
                          R"("2100": {"vector": [0.5, 0.5, 0.5]}, "2103": 1)")}),
            "");
  EXPECT_EQ(At("materials/0/pbrMetallicRoughness"),
            R"({"baseColorFactor":[0.5,0.5,0.5,1.0],"metallicFactor":1.0,"roughnessFactor":1.0})");
  EXPECT_EQ(At("materials/0/alphaMode"), "\"OPAQUE\"") << "the alpha channel counts with textures";
  EXPECT_EQ(At("images"), "-");
  EXPECT_TRUE(_bitmaps.loadCounts.empty());
}

TEST_F(MaterialExportTest, DoubleSidedIsTheSaversChoice)
{
  _parameters = {{kDoubleSidedParameter, HostValue(true)}};
  ASSERT_EQ(Save({""}), "");
  EXPECT_EQ(At("materials/0/doubleSided"), "true");
}

}  // namespace
}  // namespace q7z::test
