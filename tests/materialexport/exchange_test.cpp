// Node materials: what the host's exchange hands over, and when it is asked at all.

#include <algorithm>

#include "tests/materialexport/materialfixture.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

constexpr const char* kNode =
  R"("node": {"space": "net.space", "materialType": "net.tarno.material.portbundle.gltf", "parameters": {}, "textures": {}})";

class NodeMaterials : public MaterialExportTest
{
protected:
  std::string SaveNodes(int count = 1) { return Save(std::vector<std::string>(static_cast<size_t>(count), kNode)); }

  PlainImage _red{"200,0,0"};
  PlainImage _blue{"0,0,200 0,0,200"};
};

TEST_F(NodeMaterials, AskWithTheSettingsOfTheSave)
{
  _exchange.records["M0"] = {};
  _parameters = {{kTextureWidthParameter, HostValue(64)}, {kTextureHeightParameter, HostValue(32)}};
  ASSERT_EQ(SaveNodes(), "");
  ASSERT_EQ(_exchange.callCount, 1);
  EXPECT_EQ(_exchange.settings.Find(DataKey("spaceId"))->GetString().GetValue(), "com.brenmoor3d.brenmoor4q7z.class.nodespace"_s);
  EXPECT_EQ(*_exchange.settings.Find(DataKey("textureSupport")), Data(true));
  EXPECT_EQ(*_exchange.settings.Find(DataKey("textureResize")), Data(1));
  EXPECT_EQ(_exchange.settings.Find(DataKey("textureDimensions"))->GetArray().GetValue()[1], Data(32));
}

TEST_F(NodeMaterials, TakeTheParametersOfTheRecord)
{
  _exchange.records["M0"] = {.parameters = {{"alphaMode", Data("MASK"_s)},
                                            {"alphaCutoff", Data(0.25)},
                                            {"emissiveFactor", Numbers({0.25, 0.5, 3})},
                                            {"normalScale", Data(2.5)},
                                            {"occlusionStrength", Data(0.5)},
                                            {"baseColorFactor", Numbers({0.5, -1, 0.25, 1.5})},
                                            {"metallicFactor", Data(-0.5)},
                                            {"roughnessFactor", Data(1)},
                                            {"doubleSided", Data(true)},
                                            {"unknown", Data("x"_s)}},
                             .textures = {{"normalTexture", &_red}, {"occlusionTexture", &_blue}}};
  ASSERT_EQ(SaveNodes(), "");
  // The cutoff is the record's own default: the exchange's is not asked for.
  EXPECT_EQ(At("materials/0"),
            R"({"pbrMetallicRoughness":{"baseColorFactor":[0.5,0.0,0.25,1.0],"metallicFactor":0.0,"roughnessFactor":1.0},)"
            R"("normalTexture":{"index":0,"scale":2.5},"occlusionTexture":{"index":1,"strength":0.5},)"
            R"("emissiveFactor":[0.25,0.5,1.0],"alphaMode":"MASK","alphaCutoff":0.5,"doubleSided":false,"name":"M0"})");
}

TEST_F(NodeMaterials, TakeTheTexturesOfTheRecord)
{
  PlainImage pictures[] = {PlainImage("0,0,0,7"), PlainImage("1,0,0,7"), PlainImage("2,0,0,7"), PlainImage("3,0,0,7"),
                           PlainImage("4,0,0,7")};
  _exchange.records["M0"] = {.textures = {{"occlusionTexture", &pictures[3]},
                                          {"emissiveTexture", &pictures[4]},
                                          {"withoutPixels", nullptr},
                                          {"normalTexture", &pictures[2]},
                                          {"metallicRoughnessTexture", &pictures[1]},
                                          {"baseColorTexture", &pictures[0]}}};
  for (const int format : {kGltfFormat, kGlbFormat})
  {
    _parameters = {{kFileFormatParameter, HostValue(format)}};
    ASSERT_EQ(SaveNodes(), "");
    ASSERT_EQ(Count("images"), 5);
    EXPECT_EQ(Image(0), "png 1x1 0,0,0,7 linear");
    EXPECT_EQ(Image(1), "png 1x1 1,0,0,7");
    EXPECT_EQ(Image(2), "png 1x1 2,0,0,7");
    EXPECT_EQ(Image(3), "png 1x1 3,0,0,7");
    EXPECT_EQ(Image(4), "png 1x1 4,0,0,7 linear");
    EXPECT_EQ(At("materials/0/normalTexture"), R"({"index":2,"scale":1.0})");
    EXPECT_EQ(At("materials/0/occlusionTexture"), R"({"index":3,"strength":1.0})");
    EXPECT_EQ(At("materials/0/emissiveTexture"), R"({"index":4})");
  }
}

TEST_F(NodeMaterials, TellEachTexture)
{
  _exchange.records["M0"] = {.textures = {{"normalTexture", &_blue}, {"baseColorTexture", &_red}}};
  ASSERT_EQ(SaveNodes(), "");
  const auto tells = [this](const std::string& line)
  {
    return std::any_of(_host.Diagnostics().begin(), _host.Diagnostics().end(),
                       [&](const std::string& told) { return told.starts_with(line + " ["); });
  };
  EXPECT_TRUE(tells("Material: M0: | Channel: normalTexture | Filename: 18446744073709551000 | Size: 6"));
  EXPECT_TRUE(tells("Material: M0: | Channel: baseColorTexture | Filename: 18446744073709551200 | Size: 3"));
}

// Occlusion, roughness and metallic often lie in one image.
TEST_F(NodeMaterials, ShareImagesWithEachOtherAndAmongTheirTextures)
{
  _exchange.records["M0"] = {.textures = {{"normalTexture", &_blue}, {"emissiveTexture", &_red}}};
  _exchange.records["M1"] = {
    .textures = {{"normalTexture", &_red}, {"occlusionTexture", &_blue}, {"metallicRoughnessTexture", &_blue}}};
  ASSERT_EQ(SaveNodes(2), "");
  EXPECT_EQ(Count("images"), 2);
  // The last object's material comes first.
  EXPECT_EQ(At("textures"), R"([{"sampler":0,"source":0},{"sampler":1,"source":1},{"sampler":2,"source":0},)"
                            R"({"sampler":3,"source":0},{"sampler":4,"source":1}])");
  EXPECT_EQ(_sessions.encoded.size(), 2u) << "each is encoded once";
}

TEST_F(NodeMaterials, WithoutTexturesHaveFactorsAlone)
{
  _parameters = {{kExportTexturesParameter, HostValue(false)}};
  _exchange.records["M0"] = {.parameters = {{"metallicFactor", Data(0.5)}}, .textures = {{"normalTexture", &_red}}};
  ASSERT_EQ(SaveNodes(), "");
  EXPECT_EQ(At("materials/0/pbrMetallicRoughness/metallicFactor"), "0.5");
  EXPECT_EQ(At("materials/0/normalTexture"), "-");
  EXPECT_EQ(At("textures"), "-");
}

TEST_F(NodeMaterials, OfAnotherSpaceArePlain)
{
  std::string text = TrianglesWith({kNode});
  text.insert(1, R"("nodeSpace": "net.another.space", )");
  ASSERT_EQ(Save(*ReadScene(text)), "");
  EXPECT_EQ(_exchange.callCount, 0);
  EXPECT_EQ(At("materials/0/pbrMetallicRoughness"),
            R"({"baseColorFactor":[1.0,1.0,1.0,1.0],"metallicFactor":1.0,"roughnessFactor":1.0})");
  EXPECT_EQ(At("materials/0/name"), "\"M0\"");
  EXPECT_EQ(At("meshes/0/primitives/0/material"), "0");
}

// What cannot be taken ends the save, with -6 for states and arguments that are wrong, -100 for what the host says.

struct RefusedCase
{
  const char* name;
  ExchangeRecord record;
  const char* error;
  Int32 status = -6;
};

class RefusedRecords : public NodeMaterials, public testing::WithParamInterface<RefusedCase>
{};

TEST_P(RefusedRecords, EndTheSave)
{
  _exchange.records["M0"] = GetParam().record;
  EXPECT_THAT(SaveNodes(), testing::HasSubstr(GetParam().error));
  EXPECT_EQ(_status, GetParam().status);
}

constexpr const char* kWrongKind = "Invalid TypedConstantParameter";
PlainImage g_gray{"128,128,128"};

const RefusedCase kRefusedCases[] = {
  {"AnotherType",
   {.materialTypeId = "net.tarno.material.portbundle.other"},
   "Illegal state: Condition materialTypeId == MATERIAL::PORTBUNDLE::GLTF::GetId() not fulfilled."},
  {"NoValue",
   {.parameters = {{"metallicFactor", Data()}}},
   "Illegal state: Condition parameterDataPtr != nullptr not fulfilled."},
  {"ModeIsANumber", {.parameters = {{"alphaMode", Data(1)}}}, kWrongKind},
  {"EmissionOfTwo", {.parameters = {{"emissiveFactor", Numbers({1, 2})}}}, kWrongKind},
  {"RoughnessIsAText", {.parameters = {{"roughnessFactor", Data("rough"_s)}}}, kWrongKind},
  {"UnknownTexture", {.textures = {{"specularTexture", &g_gray}}}, "Illegal state: Condition textureInfo not fulfilled."},
};
INSTANTIATE_TEST_SUITE_P(Rows, RefusedRecords, testing::ValuesIn(kRefusedCases), RowName());

TEST_F(NodeMaterials, EndTheSaveWhenTheHostFails)
{
  EXPECT_THAT(SaveNodes(), testing::HasSubstr("no record"));
  EXPECT_EQ(_status, -100);

  _exchange.records["M0"] = {.textures = {{"baseColorTexture", &_red}}};
  _sessions.failing = {"png 1x1 200,0,0 linear"};
  EXPECT_THAT(SaveNodes(),
              testing::HasSubstr("Illegal state: Condition saveConvert() not fulfilled., caused by: the disk is on fire"));
  EXPECT_EQ(_status, -6);

  _sessions.conversionFails = true;
  EXPECT_THAT(SaveNodes(), testing::HasSubstr("no such profile"));

  _host.Host().ReplaceService(HostMediaSessions::kId, nullptr);
  EXPECT_THAT(SaveNodes(), testing::HasSubstr("Illegal state: Condition succeeded not fulfilled."));
  _host.Host().ReplaceService(HostMaterialExport::kId, nullptr);
  EXPECT_THAT(SaveNodes(), testing::HasSubstr("The host offers no export of materials."));
}

}  // namespace
}  // namespace q7z::test
