// The images of classic materials in the file: order of members, what is shared, both forms of the file, and which tag counts.

#include "plugin/module/hosttag.h"
#include "tests/materialexport/materialfixture.h"

namespace q7z::test
{
namespace
{

std::string ColorOf(const std::string& file)
{
  return R"("channels": {)" + Channel(0, file) + "}";
}

/// A material with all five textures, from seven files.
std::string AllTextures()
{
  return R"("channels": {)" + Channel(0, "color.jpg") + ", " + Channel(7, "alpha.png") + ", " + Channel(13, "normal.png") + ", " +
         Channel(12, "occlusion.jpeg") + ", " + Channel(1, "emissive.png") + ", " + Channel(3) +
         R"(}, "parameters": {"2100": {"vector": [1, 1, 1]}, "2300": {"vector": [0.5, 0.5, 0.5]}, "2201": 0.5, "3300": 0.25,
            "1032": 0.5, "1036": 0.75},
            "layers": [{"id": 1000, "shaders": {"40": {"parameters": {"1002": "rough.png"}},
                                               "44": {"parameters": {"1002": "metal.png"}}}}])";
}

class MaterialImages : public MaterialExportTest
{
protected:
  MaterialImages()
  {
    const char* const names[] = {"color.jpg",    "alpha.png", "normal.png", "occlusion.jpeg",
                                 "emissive.png", "rough.png", "metal.png"};
    for (uint8_t i = 0; i < 7; ++i)
      _bitmaps.files[names[i]] = ImageOf(std::to_string(i) + "," + std::to_string(i) + "," + std::to_string(i));
  }
  std::vector<std::string> Images() const
  {
    std::vector<std::string> images;
    for (int i = 0; i < Count("images"); ++i)
      images.push_back(Image(i));
    return images;
  }
};

TEST_F(MaterialImages, StandInTheOrderOfTheirTextures)
{
  ASSERT_EQ(Save({AllTextures()}), "");
  EXPECT_EQ(
    At("materials"),
    R"([{"pbrMetallicRoughness":{"baseColorTexture":{"index":0},"baseColorFactor":[1.0,1.0,1.0,1.0],)"
    R"("metallicRoughnessTexture":{"index":1},"metallicFactor":0.75,"roughnessFactor":0.5},)"
    R"("normalTexture":{"index":2,"scale":0.25},"occlusionTexture":{"index":3,"strength":0.5},)"
    R"("emissiveTexture":{"index":4},"emissiveFactor":[0.5,0.5,0.5],"alphaMode":"BLEND","doubleSided":false,"name":"M0"}])");
  EXPECT_EQ(At("textures"), R"([{"sampler":0,"source":0},{"sampler":1,"source":1},{"sampler":2,"source":2},)"
                            R"({"sampler":3,"source":3},{"sampler":4,"source":4}])");
  EXPECT_EQ(Count("samplers"), 5);
  EXPECT_EQ(At("samplers/4"), R"({"magFilter":9729,"minFilter":9729,"wrapS":10497,"wrapT":10497})");
  EXPECT_THAT(Images(),
              testing::ElementsAre("png 1x1 0,0,0,1", "png 1x1 255,5,6", "png 1x1 2,2,2", "jpg 1x1 3,3,3", "png 1x1 4,4,4"));
  EXPECT_EQ(At("meshes/0/primitives/0/material"), "0");
  EXPECT_EQ(At("images/0/bufferView"), "-");
  EXPECT_EQ(At("images/0/mimeType"), "-");
}

TEST_F(MaterialImages, LieInTheBinaryDataOfAGlb)
{
  _parameters = {{kFileFormatParameter, HostValue(kGlbFormat)}};
  ASSERT_EQ(Save({AllTextures()}), "");
  // A mesh without UVs or normals of its own has a view of indices and one of vertices before.
  EXPECT_EQ(At("images"), R"([{"bufferView":2,"mimeType":"image/png"},{"bufferView":3,"mimeType":"image/png"},)"
                          R"({"bufferView":4,"mimeType":"image/png"},{"bufferView":5,"mimeType":"image/jpeg"},)"
                          R"({"bufferView":6,"mimeType":"image/png"}])");
  EXPECT_THAT(Images(),
              testing::ElementsAre("png 1x1 0,0,0,1", "png 1x1 255,5,6", "png 1x1 2,2,2", "jpg 1x1 3,3,3", "png 1x1 4,4,4"));
  // Both of 15 and 13 bytes are followed by what fills up to a multiple of four.
  const int first = std::stoi(At("bufferViews/2/byteOffset"));
  const std::string start = R"({"buffer":0,"byteOffset":)";
  EXPECT_EQ(At("bufferViews/2"), start + std::to_string(first) + R"(,"byteLength":15})");
  EXPECT_EQ(At("bufferViews/3"), start + std::to_string(first + 16) + R"(,"byteLength":15})");
  EXPECT_EQ(At("bufferViews/4"), start + std::to_string(first + 32) + R"(,"byteLength":13})");
  EXPECT_EQ(At("bufferViews/6"), start + std::to_string(first + 64) + R"(,"byteLength":13})");
  EXPECT_EQ(At("buffers"), R"([{"byteLength":)" + std::to_string(first + 80) + "}]");
}

TEST_F(MaterialImages, AreSharedByMaterialsWithTheSameFiles)
{
  for (const int format : {kGltfFormat, kGlbFormat})
  {
    _parameters = {{kFileFormatParameter, HostValue(format)}};
    _bitmaps.loadCounts.clear();
    _sessions.encoded.clear();
    ASSERT_EQ(Save({ColorOf("color.jpg"), ColorOf("color.jpg")}), "");
    EXPECT_EQ(Count("materials"), 2);
    EXPECT_EQ(At("textures"), R"([{"sampler":0,"source":0},{"sampler":1,"source":0}])");
    EXPECT_EQ(Count("samplers"), 2);
    EXPECT_THAT(Images(), testing::ElementsAre("jpg 1x1 0,0,0"));
    EXPECT_EQ(_bitmaps.loadCounts["color.jpg"], 1);
    EXPECT_EQ(_sessions.encoded.size(), 1u);
  }
}

TEST_F(MaterialImages, DifferWhenOneOfTheirFilesDoes)
{
  const std::string withAlpha = R"("channels": {)" + Channel(0, "color.jpg") + ", " + Channel(7, "alpha.png") + "}";
  ASSERT_EQ(Save({ColorOf("color.jpg"), withAlpha}), "");
  EXPECT_THAT(Images(), testing::UnorderedElementsAre("jpg 1x1 0,0,0", "png 1x1 0,0,0,1"));
  EXPECT_EQ(_bitmaps.loadCounts["color.jpg"], 1);
}

TEST_F(MaterialImages, AreSharedByTexturesOfOneMaterial)
{
  ASSERT_EQ(Save({R"("channels": {)" + Channel(0, "color.jpg") + ", " + Channel(1, "color.jpg") + ", " +
                  Channel(12, "color.jpg") + "}"}),
            "");
  EXPECT_THAT(Images(), testing::ElementsAre("jpg 1x1 0,0,0"));
  EXPECT_EQ(At("textures"), R"([{"sampler":0,"source":0},{"sampler":1,"source":0},{"sampler":2,"source":0}])");
  EXPECT_EQ(_bitmaps.loadCounts["color.jpg"], 1);
  EXPECT_EQ(_sessions.encoded.size(), 1u);
}

// The layer stands behind the channels, whichever file was loaded first.
TEST_F(MaterialImages, ComeFromTheLastSourceThatNamesAFile)
{
  const std::string layer = R"("layers": [{"id": 1000, "shaders": {"67": {"parameters": {"1002": "rough.png"}},
                                                                  "59": {"parameters": {"1002": "metal.png"}}}}])";
  const std::string channels = R"("channels": {)" + Channel(0, "color.jpg") + ", " + Channel(3) + ", " + Channel(6, "alpha.png") +
                               ", " + Channel(13, "normal.png") + "}";
  for (int round = 0; round < 20; ++round)
  {
    ASSERT_EQ(Save({channels + ", " + layer}), "");
    EXPECT_THAT(Images(), testing::ElementsAre("png 1x1 5,5,5", "png 1x1 6,6,6"));
  }
  EXPECT_EQ(_bitmaps.loadCounts["color.jpg"], 20) << "what is not used is loaded all the same";
}

// The encoder of the normals takes the alpha away that the base colour is about to read.
TEST_F(MaterialImages, OfABitmapWithTwoUsesDoNotDependOnWhichIsFirst)
{
  _bitmaps.files["both.png"] = ImageOf("9,9,9,77");
  for (int round = 0; round < 20; ++round)
  {
    ASSERT_EQ(Save({R"("channels": {)" + Channel(0, "color.jpg") + ", " + Channel(7, "both.png") + ", " +
                    Channel(13, "both.png") + "}"}),
              "");
    EXPECT_THAT(Images(), testing::ElementsAre("png 1x1 0,0,0,77", "png 1x1 9,9,9"));
  }
}

TEST_F(MaterialImages, OfAnUnwrittenMaterialAreNotMade)
{
  // Both triangles have the first material.
  std::string text = TrianglesWith({ColorOf("color.jpg"), ColorOf("alpha.png")});
  text.replace(text.find(R"("material": 11)"), 14, R"("material": 10)");
  const HeadlessOwner<HeadlessDocument> document = ReadScene(text);
  ASSERT_EQ(Save(*document), "");
  EXPECT_EQ(Count("materials"), 1);
  EXPECT_EQ(At("meshes/0/primitives/0/material"), "0");
  EXPECT_EQ(At("meshes/1/primitives/0/material"), "0");
  EXPECT_THAT(Images(), testing::ElementsAre("jpg 1x1 0,0,0"));
  EXPECT_EQ(_bitmaps.loadCounts.count("alpha.png"), 0u);
}

// Tags.

constexpr const char* kTriangle = R"("type": 5100, "points": [0,0,0, 1,0,0, 0,1,0], "polygons": [0,1,2,2])";

// Of the tags of an object and its parents, which have the materials "one" and "two", the nearest counts.
TEST_F(MaterialExportTest, NearestTagCounts)
{
  const struct
  {
    const char* parent;
    const char* tags;
    const char* material;  // "-" for none
  } rows[] = {{"1", R"({"id": 6, "type": 5616, "name": "t", "material": null})", "-"},
              {"2", "", "\"two\""},
              {"2", R"({"id": 6, "type": 5616, "name": "t", "material": 1}, {"id": 7, "type": 5616, "name": "t", "material": 2})",
               "\"one\""}};
  for (const auto& row : rows)
  {
    const HeadlessOwner<HeadlessDocument> document = ReadScene(
      R"({"format": "q7z scene", "version": 1, "materials": [{"id": 1, "type": 5703, "name": "one"},
          {"id": 2, "type": 5703, "name": "two"}], "objects": [{"id": 3, "type": 5140, "name": "p",
          "tags": [{"id": 4, "type": 5616, "name": "t", "material": )" +
      std::string(row.parent) + R"(}], "children": [{"id": 5, "type": 5140, "name": "q", "children": [{"id": 8, )" + kTriangle +
      R"(, "tags": [)" + row.tags + "]}]}]}]}");
    ASSERT_EQ(Save(*document), "");
    EXPECT_EQ(At("materials/0/name"), row.material);
    EXPECT_EQ(At("materials/1/name"), "-");
    EXPECT_EQ(At("meshes/0/primitives/0/material"), *row.material == '-' ? "-" : "0");
  }
}

TEST_F(MaterialExportTest, TagsOfAForeignMaterialGiveNone)
{
  const HeadlessOwner<HeadlessDocument> document = ReadScene(TrianglesWith({""}));
  HeadlessMaterial* const foreign = HeadlessMaterial::Create(5704);
  document->InsertMaterial(foreign);
  static_cast<HostTextureTag*>(ToHost(document.get())->GetFirstObject()->GetTag(5616))->SetMaterial(ToHost(foreign));
  ASSERT_EQ(Save(*document), "");
  EXPECT_EQ(At("meshes/0/primitives/0/material"), "-");
  EXPECT_EQ(At("materials"), "-");
}

}  // namespace
}  // namespace q7z::test
