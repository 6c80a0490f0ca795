// Where the bytes of a buffer come from, and the bounds of what is read out of it.

#include <gmock/gmock.h>
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

struct PrefixRow
{
  const char* name;
  const char* uri;
  Int bufferLength;
  Int imageLength;
};

class DataUriPrefix : public testing::TestWithParam<PrefixRow>
{};

TEST_P(DataUriPrefix, IsFoundByFamily)
{
  const String uri = String::Create(GetParam().uri).GetValue();
  EXPECT_EQ(GetBufferDataPrefixLength(uri), GetParam().bufferLength);
  EXPECT_EQ(GetImageDataPrefixLength(uri), GetParam().imageLength);
}

const PrefixRow kPrefixes[] = {
  {"OctetStream", "data:application/octet-stream;base64,AAAA", 37, 0},
  {"GltfBuffer", "data:application/gltf-buffer;base64,AAAA", 36, 0},
  {"Png", "data:image/png;base64,AAAA", 0, 22},
  {"Jpeg", "data:image/jpeg;base64,AAAA", 0, 23},
  {"PrefixAlone", "data:application/octet-stream;base64,", 37, 0},
  {"Cut", "data:application/octet-stream;base64", 0, 0},
  {"UpperCase", "data:application/OCTET-STREAM;base64,AAAA", 0, 0},
  {"Plain", "data:text/plain;base64,AAAA", 0, 0},
  {"NotAtTheStart", " data:image/png;base64,AAAA", 0, 0},
  {"File", "mesh.bin", 0, 0},
  {"Empty", "", 0, 0},
};
INSTANTIATE_TEST_SUITE_P(Rows, DataUriPrefix, testing::ValuesIn(kPrefixes), RowName());

/// Where a buffer's bytes come from. The folder holds five.bin (five bytes) and "a b.bin" (two).
struct SourceRow
{
  const char* name;
  std::string uri;  // "@" for the folder
  Int declared;
  const char* message;
  Int present;
};

Result<void> LoadBuffer(GltfBuffer& buffer, const TestFolder& folder, std::string uri, Int declared)
{
  if (const size_t place = uri.find('@'); place != std::string::npos)
    uri.replace(place, 1, folder.GetPath());
  folder.Write("five.bin", Bytes{1, 2, 3, 4, 5});
  folder.Write("a b.bin", Bytes{6, 7});
  RETURN_IF_ERROR(buffer.ReadFromJson(ParseObject(R"({"byteLength":)" + std::to_string(declared) + R"(,"uri":")" + uri + "\"}")));
  return buffer.Load(PathUrl(folder / "a.gltf"));
}

class BufferSource : public testing::TestWithParam<SourceRow>
{};

TEST_P(BufferSource, FillsTheBytesOrTellsWhyNot)
{
  DocumentLoad load;
  GltfBuffer buffer;
  EXPECT_THAT(ErrorText(LoadBuffer(buffer, load.folder, GetParam().uri, GetParam().declared)),
              testing::StartsWith(GetParam().message));
  EXPECT_EQ(buffer.GetBytes().GetCount(), GetParam().present);
}

constexpr const char* kWrongScheme =
  "Illegal state: Condition assetUrl.GetScheme() == URLSCHEME_FILESYSTEM || assetUrl.GetScheme() == URLSCHEME_RELATIVE not "
  "fulfilled. ";

const SourceRow kSources[] = {
  {"NoUri", "", 100, "", 0},
  {"DataUriLongerThanDeclared", "data:application/octet-stream;base64,AQID", 2, "", 3},
  {"GltfBufferDataUri", "data:application/gltf-buffer;base64,AQI=", 2, "", 2},
  {"DataUriTooShort", "data:application/octet-stream;base64,AQID", 4, kTooShort, 3},
  {"BrokenDataUri", "data:application/octet-stream;base64,A*ID", 3, "The base64 text is broken at byte 1.", 0},
  {"EmptyDataUri", "data:application/octet-stream;base64,", 0, "", 0},
  {"OtherDataUri", "data:text/plain;base64,AQID", 3, kWrongScheme, 0},
  {"FileLongerThanDeclared", "five.bin", 4, "", 5},
  {"FileTooShort", "five.bin", 6, kTooShort, 5},
  {"NegativeLength", "five.bin", -1000, "", 5},
  {"PercentCodes", "a%20b.bin", 2, "", 2},
  {"LocalFile", "@/five.bin", 1, "", 5},
  {"FileScheme", "file://@/five.bin", 1, "", 5},
  {"MissingFile", "nothing.bin", 1, "Illegal state: Condition GeFExist(fileName) not fulfilled. ", 0},
  {"Http", "http://models/five.bin", 5, "This is not supported.", 0},
  {"Https", "https://models/five.bin", 5, kWrongScheme, 0},
};
INSTANTIATE_TEST_SUITE_P(Rows, BufferSource, testing::ValuesIn(kSources), RowName());

TEST(BufferSource, TellsWhichCallOfTheFileFailed)
{
  constexpr const char* kShort = "Illegal state: Condition bytesRead == _buffer.GetCount() not fulfilled. ";
  const struct
  {
    Int failAt;
    Bool failsShort;
    const char* message;
    std::vector<Byte> bytes;
  } rows[] = {{0, false, "Out of memory. ", {}},
              {1, false, "Illegal state: Condition file->Open(fileName) not fulfilled. ", {}},
              {2, false, kShort, {0, 0, 0, 0, 0}},
              {2, true, kShort, {1, 2, 0, 0, 0}},
              {3, false, "Illegal state: Condition file->Close() not fulfilled. ", {1, 2, 3, 4, 5}}};
  for (const auto& row : rows)
  {
    DocumentLoad load;
    load.files.failAt = row.failAt;
    load.files.failsShort = row.failsShort;
    GltfBuffer buffer;
    EXPECT_EQ(ErrorText(LoadBuffer(buffer, load.folder, "five.bin", 5)), row.message);
    EXPECT_THAT(ToVector(buffer.GetBytes()), testing::ElementsAreArray(row.bytes)) << row.message;
    EXPECT_EQ(load.files.liveFiles, 0);
  }
}

TEST(BufferSource, NeedsTheDecoder)
{
  DocumentLoad load;
  load.host.Host().ReplaceService(HostBase64Decoder::kId, nullptr);
  GltfBuffer buffer;
  EXPECT_EQ(ErrorText(LoadBuffer(buffer, load.folder, "data:application/octet-stream;base64,AQID", 3)),
            "The host offers no base64 decoder.");
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
  {"StrideTwelve", R"({"buffer":0,"byteLength":16,"byteStride":12})", 0, 4, 1, 12, ""},
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
  {"LargestOffset", R"({"buffer":0,"byteLength":16,"byteOffset":9223372036854775807})", 0, 4, 0, -1, kBeyondDeclared},
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
  {"SmallestDeclared", kSixteenBytes, 0, 1, 0, -1, kBeyondDeclared, INT64_MIN},
};
INSTANTIATE_TEST_SUITE_P(Rows, ViewElement, testing::ValuesIn(kElements), RowName());

TEST(GltfBufferView, ReadsNothingWithoutABuffer)
{
  GltfBufferView view;
  ASSERT_EQ(ErrorText(view.ReadFromJson(ParseObject(R"({"buffer":0,"byteLength":16})"))), "");
  Byte target[4];
  EXPECT_EQ(ErrorText(view.ReadElement(0, 0, 4, target)), "Illegal state: Condition _buffer not fulfilled. ");
  Int stride = 0;
  EXPECT_EQ(view.FindElements(1, 0, 4, stride), nullptr);
}

}  // namespace q7z::test
