// Where the bytes of buffers and images come from, and the bounds of what is read out of it.

#include <gtest/gtest.h>

#include "tests/document/documentload.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

namespace
{

constexpr const char* kBeyondDeclared =
  "Illegal state: Condition (offset >= 0 && offset < _byteLength - byteCount + 1) not fulfilled. ";
constexpr const char* kBeyondPresent =
  "Illegal state: Condition (static_cast<Int>(offset) >= 0 && static_cast<Int>(offset) < _buffer.GetCount() - byteCount + 1) not "
  "fulfilled. ";
constexpr const char* kBeyondView = "Illegal state: Condition (idx >= 0 && idx < _byteLength - byteCount + 1) not fulfilled. ";
constexpr const char* kTooShort = "Illegal state: Condition _buffer.GetCount() >= (Int)_byteLength not fulfilled. ";

/// A buffer as declared, with the bytes 0, 1, 2 ... that are there.
GltfBuffer MakeBuffer(Int declared, Int present)
{
  GltfBuffer buffer;
  EXPECT_EQ(ErrorText(buffer.ReadFromJson(ParseObject(R"({"byteLength":)" + std::to_string(declared) + "}"))), "");
  BaseArray<Byte> bytes;
  EXPECT_EQ(ErrorText(bytes.Resize(present)), "");
  for (Int i = 0; i < present; ++i)
    bytes[i] = static_cast<Byte>(i);
  buffer.TakeBytes(std::move(bytes));
  return buffer;
}

}  // namespace

/// What a URI leads to, as a buffer of a declared length and as an image. The folder, "@" in a URI, holds five.bin (five bytes),
/// "a b.bin" (two) and "a%20b.bin" (one).
struct SourceRow
{
  const char* name;
  int kinds;
  const char* uri;
  Int declared;
  const char* message;
  size_t present;
};

constexpr int kOfBuffer = 1;
constexpr int kOfImage = 2;
constexpr int kOfBoth = 3;

/// @return the message. bytes is what is there in the end.
std::string LoadSource(Bool isImage, const TestFolder& folder, std::string uri, Int declared, std::vector<Byte>& bytes)
{
  if (const size_t place = uri.find('@'); place != std::string::npos)
    uri.replace(place, 1, folder.GetPath());
  folder.Write("five.bin", Bytes{1, 2, 3, 4, 5});
  folder.Write("a b.bin", Bytes{6, 7});
  folder.Write("a%20b.bin", Bytes{8});
  const DataDictionary record = ParseObject(R"({"byteLength":)" + std::to_string(declared) + R"(,"uri":")" + uri + "\"}");
  GltfBuffer buffer;
  GltfImage image;
  EXPECT_EQ(ErrorText(isImage ? image.ReadFromJson(record) : buffer.ReadFromJson(record)), "");
  const std::string message =
    ErrorText(isImage ? image.LoadImageData(PathUrl(folder.GetPath())) : buffer.Load(PathUrl(folder / "a.gltf")));
  bytes = ToVector(isImage ? image.GetData() : buffer.GetBytes());
  return message;
}

class Source : public testing::TestWithParam<SourceRow>
{};

TEST_P(Source, FillsTheBytesOrTellsWhyNot)
{
  for (const int kind : {kOfBuffer, kOfImage})
  {
    const DocumentHost host;
    std::vector<Byte> bytes;
    if (!(GetParam().kinds & kind))
      continue;
    EXPECT_EQ(LoadSource(kind == kOfImage, host.folder, GetParam().uri, GetParam().declared, bytes), GetParam().message) << kind;
    EXPECT_EQ(bytes.size(), GetParam().present) << kind;
    EXPECT_EQ(host.files.liveFiles, 0);
  }
}

constexpr const char* kNoPlace =
  "Illegal state: Condition assetUrl.GetScheme() == URLSCHEME_FILESYSTEM || assetUrl.GetScheme() == URLSCHEME_RELATIVE not "
  "fulfilled. ";
constexpr const char* kNoPlaceOfAnImage = "Illegal state: Condition assetUrl.GetScheme() == URLSCHEME_FILESYSTEM not fulfilled. ";

const SourceRow kSources[] = {
  {"DataLongerThanDeclared", kOfBuffer, "data:application/octet-stream;base64,AQID", 2, "", 3},
  {"GltfBufferData", kOfBuffer, "data:application/gltf-buffer;base64,AQI=", 2, "", 2},
  {"DataTooShort", kOfBuffer, "data:application/octet-stream;base64,AQID", 4, kTooShort, 3},
  {"BrokenData", kOfBuffer, "data:application/octet-stream;base64,A*ID", 3, "The base64 text is broken at byte 1.", 0},
  {"EmptyData", kOfBuffer, "data:application/octet-stream;base64,", 0, "", 0},
  {"UpperCaseData", kOfBuffer, "data:application/OCTET-STREAM;base64,AQID", 3, kNoPlace, 0},
  {"DataOfAnImage", kOfBuffer, "data:image/png;base64,AQID", 3, kNoPlace, 0},
  {"Png", kOfImage, "data:image/png;base64,AQID", 0, "", 3},
  {"Jpeg", kOfImage, "data:image/jpeg;base64,AQI=", 0, "", 2},
  {"BrokenPng", kOfImage, "data:image/png;base64,A*ID", 0, "The base64 text is broken at byte 1.", 0},
  {"OtherImage", kOfImage, "data:image/webp;base64,AQID", 0, kNoPlaceOfAnImage, 0},
  {"NoUri", kOfBoth, "", 100, "", 0},
  {"FileLongerThanDeclared", kOfBoth, "five.bin", 4, "", 5},
  {"FileTooShort", kOfBuffer, "five.bin", 6, kTooShort, 5},
  {"NegativeLength", kOfBuffer, "five.bin", -1000, "", 5},
  {"PercentCodes", kOfBoth, "a%20b.bin", 2, "", 2},
  {"PercentCodesAreDecodedOnce", kOfBoth, "a%2520b.bin", 1, "", 1},
  {"LocalFile", kOfBoth, "@/five.bin", 1, "", 5},
  {"FileScheme", kOfBoth, "file://@/five.bin", 1, "", 5},
  {"MissingFile", kOfBoth, "nothing.bin", 1, "Illegal state: Condition GeFExist(fileName) not fulfilled. ", 0},
  {"ZeroByte", kOfImage, "a%00.png", 0, "A path cannot hold a zero byte.", 0},
  {"Http", kOfBoth, "http://models/five.bin", 5, "This is not supported.", 0},
  {"Https", kOfBuffer, "https://models/five.bin", 5, kNoPlace, 0},
  {"HttpsOfAnImage", kOfImage, "https://models/five.bin", 5, kNoPlaceOfAnImage, 0},
};
INSTANTIATE_TEST_SUITE_P(Rows, Source, testing::ValuesIn(kSources), RowName());

// A buffer keeps what was read, an image does not.
TEST(Source, TellsWhichCallOfTheFileFailed)
{
  const struct
  {
    Int failAt;
    Bool failsShort;
    const char* message;
    std::vector<Byte> bytes;
  } rows[] = {{0, false, "Out of memory. ", {}},
              {1, false, "Illegal state: Condition file->Open(fileName) not fulfilled. ", {}},
              {2, false, "Illegal state: Condition bytesRead == _buffer.GetCount() not fulfilled. ", {0, 0, 0, 0, 0}},
              {2, true, "Illegal state: Condition bytesRead == _buffer.GetCount() not fulfilled. ", {1, 2, 0, 0, 0}},
              {3, false, "Illegal state: Condition file->Close() not fulfilled. ", {1, 2, 3, 4, 5}}};
  for (const auto& row : rows)
  {
    for (const Bool isImage : {false, true})
    {
      DocumentHost host;
      host.files.failAt = row.failAt;
      host.files.failsShort = row.failsShort;
      std::vector<Byte> bytes;
      std::string message = row.message;
      if (const size_t place = message.find("_buffer"); isImage && place != std::string::npos)
        message.replace(place, 7, "bytes");
      EXPECT_EQ(LoadSource(isImage, host.folder, "five.bin", 5, bytes), message);
      EXPECT_EQ(bytes, isImage ? std::vector<Byte>() : row.bytes) << row.message;
      EXPECT_EQ(host.files.liveFiles, 0);
    }
  }
}

TEST(Source, NeedsTheDecoder)
{
  DocumentHost host;
  host.host.Host().ReplaceService(HostBase64Decoder::kId, nullptr);
  std::vector<Byte> bytes;
  for (const char* const uri : {"data:application/octet-stream;base64,AQID", "data:image/png;base64,AQID"})
    EXPECT_EQ(LoadSource(uri[5] == 'i', host.folder, uri, 3, bytes), "The host offers no base64 decoder.");
}

/// Elements of a view over the bytes 0, 1, 2 ...
struct ElementRow
{
  const char* name;
  const char* view;
  Int accessorOffset;
  Int byteCount;
  Int idx;
  int firstByte;        // of the element; -1 when it cannot be read
  const char* message;  // then
  Int declared = 16;    // bytes of the buffer
  Int present = 16;
};

class ViewElement : public testing::TestWithParam<ElementRow>
{};

TEST_P(ViewElement, LiesAtItsPlace)
{
  const ElementRow& row = GetParam();
  const GltfBuffer buffer = MakeBuffer(row.declared, row.present);
  GltfBufferView view;
  ASSERT_EQ(ErrorText(view.ReadFromJson(ParseObject(row.view))), "");
  view.SetBuffer(&buffer);
  Byte target[16] = {};
  const Result<void> result = view.ReadElement(row.idx, row.accessorOffset, row.byteCount, target);
  EXPECT_EQ(ErrorText(result), row.message);
  // What is found at once for all elements up to this one must lie at the same place.
  Int stride = 0;
  const Byte* const elements =
    view.FindElements(row.idx == INT64_MAX ? row.idx : row.idx + 1, row.accessorOffset, row.byteCount, stride);
  if (row.firstByte < 0)
  {
    EXPECT_EQ(elements, nullptr);
    return;
  }
  EXPECT_EQ(target[0], row.firstByte);
  ASSERT_NE(elements, nullptr);
  EXPECT_EQ(elements[stride * row.idx], row.firstByte);
}

constexpr const char* kSixteenBytes = R"({"buffer":0,"byteLength":16})";

const ElementRow kElements[] = {
  {"Packed", R"({"buffer":0,"byteLength":16})", 0, 4, 2, 8, ""},
  {"StrideThree", R"({"buffer":0,"byteLength":16,"byteStride":3})", 0, 4, 2, 8, ""},
  {"StrideFour", R"({"buffer":0,"byteLength":16,"byteStride":4})", 0, 2, 3, 12, ""},
  {"StrideBeyond32Bits", R"({"buffer":0,"byteLength":16,"byteStride":4294967304})", 0, 4, 2, 8, ""},
  {"AllOffsets", R"({"buffer":0,"byteLength":16,"byteOffset":2})", 3, 4, 1, 9, ""},
  {"NegativeAccessorOffset", R"({"buffer":0,"byteLength":16,"byteOffset":6})", -4, 4, 0, 2, ""},
  {"LastByte", R"({"buffer":0,"byteLength":16,"byteOffset":4})", 0, 4, 2, 12, ""},
  // The view's length bounds the index alone, so an element may lie behind the view's end.
  {"BehindTheView", R"({"buffer":0,"byteLength":5})", 0, 4, 1, 4, ""},
  {"IndexOneTooFar", R"({"buffer":0,"byteLength":5})", 0, 4, 2, -1, kBeyondView},
  {"NegativeIndex", R"({"buffer":0,"byteLength":16})", 0, 4, -1, -1, kBeyondView},
  {"OffsetOneTooFar", R"({"buffer":0,"byteLength":16,"byteOffset":5})", 0, 4, 2, -1, kBeyondDeclared},
  {"NegativeOffset", R"({"buffer":0,"byteLength":16,"byteOffset":-1})", 0, 4, 0, -1, kBeyondDeclared},
  {"OffsetsBeyond64Bits", R"({"buffer":0,"byteLength":16,"byteOffset":9223372036854775807})", 1, 4, 0, -1, kBeyondDeclared},
  // Wrapped, the sum would be -2 and the third element lie inside.
  {"OffsetsWrapped", R"({"buffer":0,"byteLength":16,"byteOffset":9223372036854775807})", INT64_MAX, 4, 2, -1, kBeyondDeclared},
  {"ElementBeyond64Bits", R"({"buffer":0,"byteLength":9223372036854775807,"byteStride":4294967295})", 0, 4, 4294967298, -1,
   kBeyondDeclared},
  {"LargestIndex", R"({"buffer":0,"byteLength":9223372036854775807})", 0, 1, INT64_MAX, -1, kBeyondView},
  {"NegativeViewLength", R"({"buffer":0,"byteLength":-9223372036854775808})", 0, 4, 0, -1, kBeyondView},
  {"DeclaredShorterThanPresent", kSixteenBytes, 0, 4, 2, -1, kBeyondDeclared, 11},
  {"PresentOneShort", kSixteenBytes, 0, 4, 3, -1, kBeyondPresent, 16, 15},
  {"NothingPresent", kSixteenBytes, 0, 4, 0, -1, kBeyondPresent, 16, 0},
  {"LargestDeclared", kSixteenBytes, 1, 16, 0, -1, kBeyondPresent, INT64_MAX},
  {"LargestDeclaredAndOffset", kSixteenBytes, INT64_MAX - 8, 4, 0, -1, kBeyondPresent, INT64_MAX},
};
INSTANTIATE_TEST_SUITE_P(Rows, ViewElement, testing::ValuesIn(kElements), RowName());

}  // namespace q7z::test
