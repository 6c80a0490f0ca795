// The saving half of the material exchange: what a node material hands back, with its textures decoded and in the wanted size, and
// what becomes of files that cannot be used.

#include <gtest/gtest.h>

#include <filesystem>

#include "host/images/encode.h"
#include "host/images/headlessimage.h"
#include "host/images/materialexchange.h"
#include "host/scene/conversion.h"
#include "host/scene/headlessdocument.h"
#include "host/services/headlessjobs.h"
#include "tests/host/servicesupport.h"
#include "tests/images/imagebuilders.h"
#include "tests/support/sweep.h"

namespace q7z::test
{

namespace
{

struct Settings
{
  Int resize = 0;
  Int width = 1024;
  Int height = 1024;
  bool wantsTextures = true;
};

DataDictionary MakeSettings(const Settings& settings)
{
  Data sides[] = {Data(settings.width), Data(settings.height)};
  DataDictionary dictionary;
  EXPECT_FALSE(dictionary.Set(DataKey("textureSupport"), Data(settings.wantsTextures)).HasError());
  EXPECT_FALSE(dictionary.Set(DataKey("textureResize"), Data(settings.resize)).HasError());
  EXPECT_FALSE(dictionary.Set(DataKey("textureDimensions"), Data::CreateArray(sides, 2, nullptr).GetValue()).HasError());
  return dictionary;
}

class Exchange : public testing::Test
{
protected:
  Exchange()
  {
    _files.SetWarnings(&_warnings);
    _policy.Restrict(_folder.Write("in/scene.gltf", ""), &_warnings);
  }

  std::string Write(const std::string& name, const Bytes& file)
  {
    return _folder.Write(name, std::string(file.begin(), file.end()));
  }
  /// A material with these textures: name and path, or another reference.
  HeadlessOwner<HeadlessMaterial> Make(const std::vector<std::pair<const char*, std::string>>& textures)
  {
    HostMaterialExchangeData data;
    data.materialTypeId = "net.type"_s;
    EXPECT_FALSE(data.parameters.Set("metallicFactor"_s, {Data(0.5), true}).HasError());
    for (const auto& [key, path] : textures)
      EXPECT_FALSE(data.textures.Set(MakeString(key), {Url::FromReference(MakeString(path)).GetValue(), nullptr}).HasError());
    HeadlessOwner<HeadlessMaterial> material(HeadlessMaterial::Create());
    EXPECT_TRUE(material->SetRecord("net.space"_s, data));
    return material;
  }
  Result<HostMaterialExchangeData> Save(const HeadlessOwner<HeadlessMaterial>& material, const Settings& settings = {})
  {
    return _exchange.Save(ToHost(material.get()), MakeSettings(settings));
  }
  /// The pixels of a texture of a record.
  static std::string TextOf(const HostMaterialExchangeData& record, const char* key)
  {
    const HostExchangeTexture* const texture = record.textures.Find(MakeString(key));
    if (!texture)
      return "no such texture";
    return texture->buffer ? PixelText(*ToHeadless(texture->buffer)->GetPixels().GetValue()) : "no pixels";
  }
  /// The same of a material with one texture.
  std::string SaveTexture(const std::string& path, const Settings& settings = {})
  {
    const HeadlessOwner<HeadlessMaterial> material = Make({{"normalTexture", path}});
    const Result<HostMaterialExchangeData> record = Save(material, settings);
    return record.HasError() ? ErrorText(record) : TextOf(record.GetValue(), "normalTexture");
  }

  TestFolder _folder;
  FilePolicy _policy;
  RecordedWarnings _warnings;
  ImageFiles _files{_policy};
  HeadlessJobs _jobs{2};
  HeadlessMaterialExport _exchange{_files, _jobs};
};

const Bytes kPicture = PngBuilder({2, 1}).Rows({0, 1, 2, 3, 4, 5, 6}).Build();
const Bytes kPlainPicture = PngBuilder({4, 2, 8, 0}).Rows({0, 9, 9, 9, 9, 0, 9, 9, 9, 9}).Build();

TEST_F(Exchange, KeepsParametersAndDecodesEachTexture)
{
  const HeadlessOwner<HeadlessMaterial> material = Make({{"normalTexture", Write("in/a.png", kPicture)},
                                                         {"emissiveTexture", Write("in/tex/b.jpg", MakeJpeg(1, 1, {200}))},
                                                         {"occlusionTexture", _folder / "in/a.png"}});
  const Result<HostMaterialExchangeData> record = Save(material);
  ASSERT_FALSE(record.HasError());
  EXPECT_EQ(record.GetValue().materialTypeId, "net.type"_s);
  EXPECT_EQ(record.GetValue().parameters.Find("metallicFactor"_s)->value, Data(0.5));
  EXPECT_EQ(TextOf(record.GetValue(), "normalTexture"), "1,2,3 4,5,6");
  EXPECT_EQ(TextOf(record.GetValue(), "emissiveTexture"), "200,200,200");
  EXPECT_EQ(TextOf(record.GetValue(), "occlusionTexture"), "1,2,3 4,5,6");
  EXPECT_EQ(record.GetValue().textures.Find("normalTexture"_s)->buffer,
            record.GetValue().textures.Find("occlusionTexture"_s)->buffer);
  EXPECT_TRUE(Save(material, {.wantsTextures = false}).GetValue().textures.IsEmpty());
  EXPECT_TRUE(_warnings.texts.empty());
}

TEST_F(Exchange, FindsRelativeFilesInTheFolderOfTheDocument)
{
  Write("in/tex/a.png", kPicture);
  HeadlessOwner<HeadlessDocument> document(HeadlessDocument::Create());
  ASSERT_TRUE(document->SetFolder(MakeString(_folder / "in")));
  HeadlessMaterial* const material = Make({{"normalTexture", "tex/a.png"}}).release();
  document->InsertMaterial(material);
  const Result<HostMaterialExchangeData> record = _exchange.Save(ToHost(material), MakeSettings({}));
  ASSERT_FALSE(record.HasError());
  EXPECT_EQ(TextOf(record.GetValue(), "normalTexture"), "1,2,3 4,5,6");
}

// Of a picture of 4 × 2 pixels. Kept, shrunk and never grown, made so large, and what nobody knows.
const std::pair<Settings, const char*> kResizes[] = {
  {{0, -5, 0}, "4 x 2"},  {{1, 100, 100}, "4 x 2"}, {{1, 2, 100}, "2 x 1"},
  {{1, 100, 1}, "2 x 1"}, {{1, 3, 100}, "3 x 2"},  // 2 · 3 / 4 = 1.5
  {{1, 1, 1}, "1 x 1"},   {{2, 5, 7}, "5 x 7"},     {{3, 1, 1}, "4 x 2"},
};

TEST_F(Exchange, ResizesAsTheSettingsAsk)
{
  const HeadlessOwner<HeadlessMaterial> material = Make({{"normalTexture", Write("in/a.png", kPlainPicture)}});
  for (const auto& [settings, size] : kResizes)
  {
    const Result<HostMaterialExchangeData> record = Save(material, settings);
    ASSERT_FALSE(record.HasError()) << ErrorText(record);
    HeadlessImage* const image = ToHeadless(record.GetValue().textures.Find("normalTexture"_s)->buffer);
    const std::shared_ptr<const PixelImage> pixels = image->GetPixels().GetValue();
    EXPECT_EQ(std::to_string(pixels->GetWidth()) + " x " + std::to_string(pixels->GetHeight()), size);
    EXPECT_EQ(image->GetByteCount(), pixels->GetByteCount());
    EXPECT_EQ(pixels->GetRow(0)[0], 9);
  }
}

TEST_F(Exchange, RefusesSizesThatNoImageHas)
{
  const std::string path = Write("in/a.png", kPicture);
  EXPECT_EQ(SaveTexture(path, {2, 0, 5}), "Textures cannot have 0 x 5 pixels.");
  EXPECT_EQ(SaveTexture(path, {1, 5, -1}), "Textures cannot have 5 x -1 pixels.");
  EXPECT_EQ(SaveTexture(path, {2, 60000, 60000}), "Textures cannot have 60000 x 60000 pixels.");
}

TEST_F(Exchange, TellsOfEachFileThatCannotBeUsed)
{
  const Bytes scans = MakeJpeg(1, 1, {1}, -1, 10000);
  EXPECT_EQ(SaveTexture(Write("in/tex/a.png", ToBytes("This is a text."))), "no pixels");
  EXPECT_EQ(SaveTexture(Write("in/tex/b.png", scans)), "no pixels");
  EXPECT_EQ(SaveTexture(Write("in/tex/c.png", scans)), "no pixels") << "the same content";
  EXPECT_EQ(_warnings.texts,
            (Warnings{"the image \"tex/a.png\" is left out: it is neither a PNG nor a JPEG image",
                      "the image \"tex/b.png\" is left out: the JPEG image is broken: it has more than 64 scans",
                      "the image \"tex/c.png\" is left out: the JPEG image is broken: it has more than 64 scans"}));
}

TEST_F(Exchange, LeavesOutWhatIsNotThereOrMayNotBeRead)
{
  Write("outside.png", kPicture);
  EXPECT_EQ(SaveTexture(_folder / "in/none.png"), "no pixels");
  EXPECT_EQ(SaveTexture(_folder / "in/../outside.png"), "no pixels");
  std::filesystem::create_directory(_folder / "in/folder");
  EXPECT_EQ(SaveTexture(_folder / "in/folder"), "no pixels");
  EXPECT_EQ(SaveTexture("http://a.b/c.png"), "no pixels");
  EXPECT_EQ(_warnings.texts.size(), 4u);
  for (const char* const text : {"the image \"none.png\" is left out: there is no such file",
                                 "\"../outside.png\" lies outside the input's folder and is not read; --allow-outside permits it",
                                 "the image \"http://a.b/c.png\" is left out: only local files are read"})
    EXPECT_TRUE(_warnings.texts.contains(text)) << text;
}

// A file of about a thousand pixels, packed well, so that pixels show in what is allocated.
TEST_F(Exchange, DecodesAFileOnceInASave)
{
  const std::shared_ptr<PixelImage> image = PixelImage::Create(500, 500, 3);
  std::fill_n(image->GetRow(0), image->GetByteCount(), Byte(7));
  const BaseArray<Byte> file = EncodePng(*image).GetValue();
  const Bytes bytes(file.begin(), file.end());
  const HeadlessOwner<HeadlessMaterial> first = Make({{"normalTexture", Write("in/a.png", bytes)}});
  const HeadlessOwner<HeadlessMaterial> second = Make({{"normalTexture", Write("in/b.png", bytes)}});
  const auto save = [&](const HeadlessOwner<HeadlessMaterial>& material)
  {
    StopFailingAllocations();
    const Result<HostMaterialExchangeData> record = Save(material);
    EXPECT_FALSE(record.HasError());
    return record.HasError() ? nullptr : record.GetValue().textures.Find("normalTexture"_s)->buffer;
  };
  HostImage* const decoded = save(first);
  EXPECT_GE(GetLargestAllocation(), 750000);
  const UInt hash = ToHeadless(decoded)->GetHash();
  HostImage* const known = save(second);
  EXPECT_LT(GetLargestAllocation(), 100000);
  EXPECT_EQ(ToHeadless(known)->GetHash(), hash);
  EXPECT_EQ(ToHeadless(known)->GetByteCount(), 750000);
  // The pixels come back when somebody asks for them after all.
  EXPECT_EQ(HashPixels(*ToHeadless(known)->GetPixels().GetValue()), hash);
  _exchange.Clear();
  save(second);
  EXPECT_GE(GetLargestAllocation(), 750000) << "another save starts anew";
}

TEST_F(Exchange, SaysWhenMemoryRunsOut)
{
  const HeadlessOwner<HeadlessMaterial> material = Make({{"normalTexture", Write("in/a.png", kPlainPicture)}});
  const DataDictionary settings = MakeSettings({2, 3, 3});
  Result<HostMaterialExchangeData> record = HostMaterialExchangeData();
  SweepAllocations([&] { record = _exchange.Save(ToHost(material.get()), settings); },
                   [&](bool failed)
                   {
                     EXPECT_EQ(IsOutOfMemory(record), failed);
                     _exchange.Clear();
                   });
  EXPECT_TRUE(_warnings.texts.empty());
}

}  // namespace

}  // namespace q7z::test
