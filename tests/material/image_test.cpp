// The bytes of an image: which part of a buffer they are, where they go, and what an image and its file are called.

#include <gtest/gtest.h>

#include "plugin/material/gltftexturename.h"
#include "tests/document/documentload.h"
#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

GltfImage ReadImage(const std::string& members)
{
  GltfImage image;
  EXPECT_EQ(ErrorText(image.ReadFromJson(ParseObject("{" + members + "}"))), "");
  return image;
}

GltfImage ReadUri(const std::string& uri)
{
  return ReadImage(R"("uri":")" + uri + "\"");
}

BaseArray<Byte> MakeArray(const Bytes& bytes)
{
  BaseArray<Byte> array;
  EXPECT_EQ(ErrorText(array.AppendCopies(bytes.data(), static_cast<Int>(bytes.size()))), "");
  return array;
}

TEST(ImageSource, BytesWithoutUriNeedAnExtension)
{
  const DocumentHost host;
  GltfData data = ReadRecords(R"({"materials":[{"normalTexture":{"index":0}}],"textures":[{"source":0}],
                                  "images":[{"bufferView":0}],"buffers":[{"byteLength":2}],
                                  "bufferViews":[{"buffer":0,"byteLength":2}]})",
                              {1, 2});
  ASSERT_EQ(ErrorText(data.materials.Find(0)->ResolveMaterial(&data)), "");
  GltfImage& image = *data.images.Find(0);
  ASSERT_EQ(ErrorText(image.CopyFromBufferView()), "");
  EXPECT_EQ(ErrorText(image.LoadImageData(PathUrl(host.folder.GetPath()))),
            "Illegal state: Condition _data.IsEmpty() || GetImageExtension().IsPopulated() not fulfilled. ");
}

/// A view over a buffer of the bytes 0 to 7.
struct ViewRow
{
  const char* name;
  const char* view;
  Bool copies;
  Bytes bytes;
};

class ImageView : public testing::TestWithParam<ViewRow>
{};

TEST_P(ImageView, IsCopiedWholeOrNotAtAll)
{
  const DocumentHost host;
  GltfData data = ReadRecords(R"({"images":[{"bufferView":0}],"buffers":[{"byteLength":8}],"bufferViews":[)" +
                                std::string(GetParam().view) + "]}",
                              {0, 1, 2, 3, 4, 5, 6, 7});
  GltfImage& image = *data.images.Find(0);
  EXPECT_EQ(ErrorText(image.CopyFromBufferView()), "Illegal state: Condition _bufferView not fulfilled. ");
  ASSERT_EQ(ErrorText(image.Resolve(data)), "");
  EXPECT_EQ(!image.CopyFromBufferView().HasError(), GetParam().copies);
  EXPECT_EQ(ToVector(image.GetData()), GetParam().bytes);
}

const ViewRow kImageViewRows[] = {
  {"Part", R"({"buffer":0,"byteOffset":2,"byteLength":3})", true, {2, 3, 4}},
  {"StrideCountsForNothing", R"({"buffer":0,"byteLength":2,"byteStride":64})", true, {0, 1}},
  {"OneTooFar", R"({"buffer":0,"byteOffset":6,"byteLength":3})", false, {}},
  {"NegativeLength", R"({"buffer":0,"byteLength":-4})", false, {}},
  {"HugeOffset", R"({"buffer":0,"byteOffset":9223372036854775807,"byteLength":8})", false, {}},
};
INSTANTIATE_TEST_SUITE_P(Rows, ImageView, testing::ValuesIn(kImageViewRows), RowName());

TEST(ImageExtension, ComesFromUriBeforeMimeType)
{
  const std::pair<const char*, const char*> rows[] = {
    {R"("uri":"data:image/png;base64,AQID","mimeType":"image/jpeg")", "png"},
    {R"("uri":"data:image/jpeg;base64,AQID","mimeType":"image/png")", "jpg"},
    {R"("uri":"a/b.c/wood.TGA","mimeType":"image/png")", "TGA"},
    {R"("uri":"a.b/wood","mimeType":"image/png")", ""},
    {R"("uri":"wood.webp","bufferView":0,"mimeType":"image/png")", "webp"},
    {R"("mimeType":"image/png")", "png"},
    {R"("mimeType":"image/webp")", ""},
  };
  const DocumentHost host;
  for (const auto& [members, extension] : rows)
    EXPECT_EQ(Text(ReadImage(members).GetImageExtension().GetValue()), extension) << members;
}

TEST(ImageSave, WritesTheBytesOrTellsWhyNot)
{
  const char* const messages[] = {
    "Out of memory. ",
    "Illegal state: Condition bfOut->Open(TarnoConvert(url), FILEOPEN::WRITE, FILEDIALOG::NONE) not fulfilled. ",
    "Illegal state: Condition bfOut->WriteBytes(_data.GetFirst(), _data.GetCount()) not fulfilled. ",
    "Illegal state: Condition bfOut->Close() not fulfilled. ",
    "",
  };
  DocumentHost host;
  GltfImage image;
  ASSERT_EQ(ErrorText(image.SetImageData(MakeArray({1, 2, 3}), kPngImageType, true)), "");
  for (const char* const message : messages)
  {
    host.folder.Write("a.png", "a longer file");
    ++host.files.failAt;
    host.files.calls = 0;
    EXPECT_EQ(ErrorText(image.SaveImageData(PathUrl(host.folder / "a.png"))), message);
    EXPECT_EQ(host.files.liveFiles, 0) << message;
  }
  EXPECT_EQ(host.folder.Read("a.png"), "\x01\x02\x03");
}

TEST(ImageSave, WithoutBytesWritesNothing)
{
  const char* const kNoBytes =
    "Illegal state: Condition _data.IsPopulated() || (_uri.IsPopulated() && IsBase64()) not fulfilled. ";
  const std::pair<const char*, const char*> rows[] = {{"data:image/png;base64,AQID", ""}, {"wood.png", kNoBytes}, {"", kNoBytes}};
  const DocumentHost host;
  for (const auto& [uri, message] : rows)
    EXPECT_EQ(ErrorText(ReadUri(uri).SaveImageData(PathUrl(host.folder / "a.png"))), message) << uri;
  EXPECT_TRUE(host.folder.List().empty());
}

// Names of texture files: a material's name becomes part of one path component, whatever it holds.

struct NameRow
{
  const char* name;
  std::string material;
  std::string fileName;
};

std::string Repeat(const std::string& text, int count)
{
  std::string repeated;
  for (int i = 0; i < count; ++i)
    repeated += text;
  return repeated;
}

const NameRow kNameRows[] = {
  {"OtherScripts", "\xE6\x9C\xA8 \xC3\xA9", "\xE6\x9C\xA8 \xC3\xA9_baseColorTexture.png"},
  {"PlaceholderOfTexts", "a@b", "a@b_baseColorTexture.png"},
  {"WayOut", "../../evil", "_._.._evil_baseColorTexture.png"},
  {"Separators", "a/b\\c:d", "a_b_c_d_baseColorTexture.png"},
  {"Absolute", "/etc/passwd", "_etc_passwd_baseColorTexture.png"},
  {"Hidden", ".wood", "_wood_baseColorTexture.png"},
  {"DotsInside", "a..b.", "a..b._baseColorTexture.png"},
  {"ControlCharacters", std::string("a\0b\n\r\t\x1f\x7f", 8), "a_b______baseColorTexture.png"},
  {"WideControlCharacters", "a\xC2\x80\xC2\x9F\xC2\xA0", "a__\xC2\xA0_baseColorTexture.png"},
  {"CutWideCharacter", "a\xC2", "a\xC2_baseColorTexture.png"},
  {"Wildcards", "a*?\"<>|b", "a______b_baseColorTexture.png"},
  {"Device", "con", "_on_baseColorTexture.png"},
  {"DeviceWithExtension", "NUL.wood", "_UL.wood_baseColorTexture.png"},
  {"DeviceWithBlank", "Aux .x", "_ux .x_baseColorTexture.png"},
  {"Port", "lpt1", "_pt1_baseColorTexture.png"},
  {"NoDevice", "Console", "Console_baseColorTexture.png"},
  {"OverlongName", Repeat("a", 300), Repeat("a", 200) + "_baseColorTexture.png"},
  // 66 characters of three bytes make 198; the next one would begin inside and end outside.
  {"CutAtACharacter", Repeat("\xE6\x9C\xA8", 100), Repeat("\xE6\x9C\xA8", 66) + "_baseColorTexture.png"},
};

class TextureFileName : public testing::TestWithParam<NameRow>
{};

TEST_P(TextureFileName, IsOneComponent)
{
  const String material = String::Create(GetParam().material).GetValue();
  EXPECT_EQ(Text(MakeTextureFileName(material, "baseColorTexture"_s, "png"_s).GetValue()), GetParam().fileName);
}

INSTANTIATE_TEST_SUITE_P(Rows, TextureFileName, testing::ValuesIn(kNameRows), RowName());

}  // namespace
}  // namespace q7z::test
