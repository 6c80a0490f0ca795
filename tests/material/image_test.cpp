// The bytes of an image: where they come from, where they go, and what an image is called.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/document/documentload.h"
#include "tests/document/records.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

constexpr const char* kWrongScheme = "Illegal state: Condition assetUrl.GetScheme() == URLSCHEME_FILESYSTEM not fulfilled. ";
constexpr const char* kNoSuchFile = "Illegal state: Condition GeFExist(fileName) not fulfilled. ";

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

/// The folder, "@" in a URI, holds some images.
struct SourceRow
{
  const char* name;
  const char* uri;
  const char* message;
  Bytes bytes;
};

class ImageSource : public testing::TestWithParam<SourceRow>
{};

TEST_P(ImageSource, FillsTheBytesOrTellsWhyNot)
{
  const DocumentHost host;
  host.folder.Write("wood.png", Bytes{1, 2, 3});
  host.folder.Write("a b.png", Bytes{4});
  host.folder.Write("a%20b.png", Bytes{5});
  std::string uri = GetParam().uri;
  if (const size_t place = uri.find('@'); place != std::string::npos)
    uri.replace(place, 1, host.folder.GetPath());
  GltfImage image = ReadUri(uri);
  EXPECT_EQ(ErrorText(image.LoadImageData(PathUrl(host.folder.GetPath()))), GetParam().message);
  EXPECT_EQ(ToVector(image.GetData()), GetParam().bytes);
  EXPECT_EQ(host.files.liveFiles, 0);
}

const SourceRow kImageSourceRows[] = {
  {"Png", "data:image/png;base64,AQID", "", {1, 2, 3}},
  {"Jpeg", "data:image/jpeg;base64,AQI=", "", {1, 2}},
  {"BrokenDataUri", "data:image/png;base64,A*ID", "The base64 text is broken at byte 1.", {}},
  {"OtherDataUri", "data:image/webp;base64,AQID", kWrongScheme, {}},
  {"PercentCodes", "a%20b.png", "", {4}},
  {"PercentCodesAreDecodedOnce", "a%2520b.png", "", {5}},
  {"FileScheme", "file://@/wood.png", "", {1, 2, 3}},
  {"MissingFile", "no.png", kNoSuchFile, {}},
  {"Http", "http://models/wood.png", "This is not supported.", {}},
  {"Https", "https://models/wood.png", kWrongScheme, {}},
  {"ZeroByte", "a%00.png", "A path cannot hold a zero byte.", {}},
};
INSTANTIATE_TEST_SUITE_P(Rows, ImageSource, testing::ValuesIn(kImageSourceRows), RowName());

TEST(ImageSource, StaysEmptyWhenACallOfTheFileFails)
{
  constexpr const char* kRead = "Illegal state: Condition bytesRead == bytes.GetCount() not fulfilled. ";
  const struct
  {
    Int failAt;
    Bool failsShort;
    const char* message;
  } rows[] = {{0, false, "Out of memory. "},
              {1, false, "Illegal state: Condition file->Open(fileName) not fulfilled. "},
              {2, false, kRead},
              {2, true, kRead},
              {3, false, "Illegal state: Condition file->Close() not fulfilled. "}};
  for (const auto& row : rows)
  {
    DocumentHost host;
    host.folder.Write("wood.png", Bytes{1, 2, 3});
    host.files.failAt = row.failAt;
    host.files.failsShort = row.failsShort;
    GltfImage image = ReadUri("wood.png");
    EXPECT_EQ(ErrorText(image.LoadImageData(PathUrl(host.folder.GetPath()))), row.message);
    EXPECT_TRUE(image.GetData().IsEmpty()) << row.message;
    EXPECT_EQ(host.files.liveFiles, 0) << row.message;
  }
}

TEST(ImageSource, BytesWithoutUriNeedAnExtension)
{
  const DocumentHost host;
  GltfImage nothing = ReadImage("");
  EXPECT_EQ(ErrorText(nothing.LoadImageData(PathUrl(host.folder.GetPath()))), "");
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
  {"OneTooLong", R"({"buffer":0,"byteLength":9})", false, {}},
  {"NegativeOffset", R"({"buffer":0,"byteOffset":-1,"byteLength":4})", false, {}},
  {"HugeOffset", R"({"buffer":0,"byteOffset":9223372036854775807,"byteLength":8})", false, {}},
};
INSTANTIATE_TEST_SUITE_P(Rows, ImageView, testing::ValuesIn(kImageViewRows), RowName());

struct ExtensionRow
{
  const char* members;
  const char* extension;
};

TEST(ImageExtension, ComesFromUriBeforeMimeType)
{
  const ExtensionRow rows[] = {
    {R"("uri":"data:image/png;base64,AQID","mimeType":"image/jpeg")", "png"},
    {R"("uri":"data:image/jpeg;base64,AQID","mimeType":"image/png")", "jpg"},
    {R"("uri":"a/b.c/wood.TGA","mimeType":"image/png")", "TGA"},
    {R"("uri":"a.b/wood","mimeType":"image/png")", ""},
    {R"("uri":"wood.webp","bufferView":0,"mimeType":"image/png")", "webp"},
    {R"("mimeType":"image/png")", "png"},
    {R"("mimeType":"image/webp")", ""},
  };
  const DocumentHost host;
  for (const ExtensionRow& row : rows)
    EXPECT_EQ(Text(ReadImage(row.members).GetImageExtension().GetValue()), row.extension) << row.members;
}

TEST(SetImageData, MakesAUriUnlessTheBytesStayRaw)
{
  struct Row
  {
    Int32 type;
    Bool keepRaw;
    const char* mimeType;
    const char* uri;
  };
  const DocumentHost host;
  for (const Row& row : {Row{1023671, false, "image/png", "data:image/png;base64,AQID"},
                         Row{1104, false, "image/jpeg", "data:image/jpeg;base64,AQID"},
                         Row{5, false, "image/jpeg", "data:image/png;base64,AQID"},  // no type of ours
                         Row{1104, true, "image/jpeg", ""}})
  {
    GltfImage image;
    ASSERT_EQ(ErrorText(image.SetImageData(MakeArray({1, 2, 3}), row.type, row.keepRaw)), "");
    EXPECT_EQ(Text(image.GetMimeType()), row.mimeType);
    EXPECT_EQ(Text(image.GetURIString()), row.uri);
    EXPECT_EQ(ToVector(image.GetData()), (Bytes{1, 2, 3}));
  }
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

}  // namespace
}  // namespace q7z::test
