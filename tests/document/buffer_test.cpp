// Where the bytes of a buffer come from, and the bounds of what is read out of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/document/documenthost.h"
#include "tests/support/rowname.h"

namespace q7z::test
{

using testing::ElementsAre;

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

INSTANTIATE_TEST_SUITE_P(Rows, DataUriPrefix,
                         testing::Values(PrefixRow{"OctetStream", "data:application/octet-stream;base64,AAAA", 37, 0},
                                         PrefixRow{"GltfBuffer", "data:application/gltf-buffer;base64,AAAA", 36, 0},
                                         PrefixRow{"Png", "data:image/png;base64,AAAA", 0, 22},
                                         PrefixRow{"Jpeg", "data:image/jpeg;base64,AAAA", 0, 23},
                                         PrefixRow{"PrefixAlone", "data:application/octet-stream;base64,", 37, 0},
                                         PrefixRow{"Cut", "data:application/octet-stream;base64", 0, 0},
                                         PrefixRow{"UpperCase", "data:application/OCTET-STREAM;base64,AAAA", 0, 0},
                                         PrefixRow{"Plain", "data:text/plain;base64,AAAA", 0, 0},
                                         PrefixRow{"NotAtTheStart", " data:image/png;base64,AAAA", 0, 0},
                                         PrefixRow{"File", "mesh.bin", 0, 0}, PrefixRow{"Empty", "", 0, 0}),
                         RowName());

TEST(GltfBuffer, NeedsItsLength)
{
  GltfBuffer buffer;
  EXPECT_TRUE(buffer.ReadFromJson(ParseObject(R"({"uri":"a.bin"})")).HasError());
  EXPECT_TRUE(buffer.ReadFromJson(ParseObject(R"({"byteLength":"8"})")).HasError());
  EXPECT_EQ(ErrorText(buffer.ReadFromJson(ParseObject(R"({"byteLength":8,"uri":5})"))), "");
  EXPECT_EQ(buffer.GetByteLength(), 8);
  EXPECT_TRUE(buffer.GetUri().IsEmpty());
}

/// Where a buffer's bytes come from. /models holds a.gltf, five.bin (five bytes) and "a b.bin" (two).
struct SourceRow
{
  const char* name;
  const char* uri;
  Int declared;
  const char* message;
  Int present;
};

class BufferSource : public testing::TestWithParam<SourceRow>
{};

TEST_P(BufferSource, FillsTheBytesOrTellsWhyNot)
{
  DocumentHost host;
  host.files.contents = {{"/models/five.bin", {1, 2, 3, 4, 5}}, {"/models/a b.bin", {6, 7}}, {"/other/x.bin", {8}}};
  GltfBuffer buffer;
  const std::string json =
    R"({"byteLength":)" + std::to_string(GetParam().declared) + R"(,"uri":")" + std::string(GetParam().uri) + "\"}";
  ASSERT_EQ(ErrorText(buffer.ReadFromJson(ParseObject(json))), "");
  EXPECT_EQ(ErrorText(buffer.Load(PathUrl("/models/a.gltf"))), GetParam().message);
  EXPECT_EQ(buffer.GetBytes().GetCount(), GetParam().present);
  EXPECT_EQ(host.files.liveFiles, 0);
}

constexpr const char* kWrongScheme =
  "Illegal state: Condition assetUrl.GetScheme() == URLSCHEME_FILESYSTEM || assetUrl.GetScheme() == URLSCHEME_RELATIVE not "
  "fulfilled. ";
constexpr const char* kNoSuchFile = "Illegal state: Condition GeFExist(fileName) not fulfilled. ";

INSTANTIATE_TEST_SUITE_P(Rows, BufferSource,
                         testing::Values(SourceRow{"NoUri", "", 100, "", 0},
                                         SourceRow{"DataUri", "data:application/octet-stream;base64,AQID", 3, "", 3},
                                         SourceRow{"GltfBufferDataUri", "data:application/gltf-buffer;base64,AQI=", 2, "", 2},
                                         SourceRow{"DataUriLongerThanDeclared", "data:application/octet-stream;base64,AQID", 2,
                                                   "", 3},
                                         SourceRow{"DataUriTooShort", "data:application/octet-stream;base64,AQID", 4, kTooShort,
                                                   3},
                                         SourceRow{"BrokenDataUri", "data:application/octet-stream;base64,A*ID", 3, "no base64",
                                                   0},
                                         SourceRow{"EmptyDataUri", "data:application/octet-stream;base64,", 0, "", 0},
                                         SourceRow{"OtherDataUri", "data:text/plain;base64,AQID", 3, kWrongScheme, 0},
                                         SourceRow{"RelativeFile", "five.bin", 5, "", 5},
                                         SourceRow{"FileLongerThanDeclared", "five.bin", 4, "", 5},
                                         SourceRow{"FileTooShort", "five.bin", 6, kTooShort, 5},
                                         SourceRow{"NegativeLength", "five.bin", -1000, "", 5},
                                         SourceRow{"PercentCodes", "a%20b.bin", 2, "", 2},
                                         SourceRow{"LocalFile", "/other/x.bin", 1, "", 1},
                                         SourceRow{"FileScheme", "file:///other/x.bin", 1, "", 1},
                                         SourceRow{"MissingFile", "nothing.bin", 1, kNoSuchFile, 0},
                                         SourceRow{"Http", "http://models/five.bin", 5, "This is not supported.", 0},
                                         SourceRow{"Https", "https://models/five.bin", 5, kWrongScheme, 0}),
                         RowName());

TEST(BufferSource, RefusesHttpAsUnsupported)
{
  DocumentHost host;
  GltfBuffer buffer;
  ASSERT_FALSE(buffer.ReadFromJson(ParseObject(R"({"byteLength":5,"uri":"http://a/b"})")).HasError());
  EXPECT_EQ(buffer.Load(PathUrl("/models/a.gltf")).GetError().GetClass(), ErrorClass::kUnsupportedOperation);
}

struct FaultRow
{
  const char* name;
  void (*fault)(MemoryFiles& files);
  const char* message;
  std::vector<Byte> bytes;
};

class BufferFileFaults : public testing::TestWithParam<FaultRow>
{};

TEST_P(BufferFileFaults, AreToldAndReleaseTheFile)
{
  DocumentHost host;
  host.files.contents["/models/five.bin"] = {1, 2, 3, 4, 5};
  GetParam().fault(host.files);
  GltfBuffer buffer;
  ASSERT_FALSE(buffer.ReadFromJson(ParseObject(R"({"byteLength":5,"uri":"five.bin"})")).HasError());
  EXPECT_EQ(ErrorText(buffer.Load(PathUrl("/models/a.gltf"))), GetParam().message);
  EXPECT_THAT(ToVector(buffer.GetBytes()), testing::ElementsAreArray(GetParam().bytes));
  EXPECT_EQ(host.files.liveFiles, 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, BufferFileFaults,
                         testing::Values(FaultRow{"Open",
                                                  [](MemoryFiles& files) { files.refuseOpen = true; },
                                                  "Illegal state: Condition file->Open(fileName) not fulfilled. ",
                                                  {}},
                                         FaultRow{"Alloc",
                                                  [](MemoryFiles& files) { files.refuseAlloc = true; },
                                                  "Out of memory. ",
                                                  {}},
                                         FaultRow{"Close",
                                                  [](MemoryFiles& files) { files.failClose = true; },
                                                  "Illegal state: Condition file->Close() not fulfilled. ",
                                                  {1, 2, 3, 4, 5}},
                                         FaultRow{"ShortRead",
                                                  [](MemoryFiles& files) { files.longestRead = 3; },
                                                  "Illegal state: Condition bytesRead == _buffer.GetCount() not fulfilled. ",
                                                  {1, 2, 3, 0, 0}},
                                         FaultRow{"FailedRead",
                                                  [](MemoryFiles& files) { files.failRead = true; },
                                                  "Illegal state: Condition bytesRead == _buffer.GetCount() not fulfilled. ",
                                                  {0, 0, 0, 0, 0}}),
                         RowName());

TEST(BufferSource, NeedsTheDecoder)
{
  DocumentHost host;
  host.Withdraw<HostBase64Decoder>();
  GltfBuffer buffer;
  ASSERT_FALSE(buffer.ReadFromJson(ParseObject(R"({"byteLength":3,"uri":"data:application/octet-stream;base64,AQID"})"))
                 .HasError());
  EXPECT_EQ(buffer.Load(PathUrl("/models/a.gltf")).GetError().GetClass(), ErrorClass::kNullPtr);
}

TEST(GltfBuffer, LetsGoOfEncodedTextAlone)
{
  const std::pair<const char*, const char*> rows[] = {{"data:application/octet-stream;base64,AQID",
                                                       "data:application/octet-stream;base64,"},
                                                      {"data:application/gltf-buffer;base64,AQID",
                                                       "data:application/gltf-buffer;base64,"},
                                                      {"five.bin", "five.bin"},
                                                      {"", ""}};
  for (const auto& [uri, left] : rows)
  {
    GltfBuffer buffer;
    ASSERT_FALSE(buffer.ReadFromJson(ParseObject(R"({"byteLength":3,"uri":")" + std::string(uri) + "\"}")).HasError());
    buffer.DropEncodedText();
    EXPECT_EQ(Text(buffer.GetUri()), left);
  }
}

/// Reads out of a buffer; bytes hold 0, 1, 2 ...
struct ReadRow
{
  const char* name;
  Int declared;
  Int present;
  Int offset;
  Int byteCount;
  const char* message;  // empty when the bytes from offset on are read
};

class BufferRead : public testing::TestWithParam<ReadRow>
{};

TEST_P(BufferRead, StaysInside)
{
  const ReadRow& row = GetParam();
  const GltfBuffer buffer = MakeBuffer(row.declared, row.present);
  std::vector<Byte> target(64, 0xee);
  const Result<void> result = buffer.ReadBytes(row.offset, row.byteCount, target.data());
  EXPECT_EQ(ErrorText(result), row.message);
  EXPECT_EQ(buffer.FindBytes(row.offset, row.byteCount) != nullptr, !result.HasError() && row.present > 0);
  const Int copied = result.HasError() ? 0 : row.byteCount;
  for (Int i = 0; i < 64; ++i)
    EXPECT_EQ(target[static_cast<size_t>(i)], i < copied ? static_cast<Byte>(row.offset + i) : 0xee) << i;
}

INSTANTIATE_TEST_SUITE_P(Rows, BufferRead,
                         testing::Values(ReadRow{"Whole", 8, 8, 0, 8, ""}, ReadRow{"End", 8, 8, 4, 4, ""},
                                         ReadRow{"OneTooFar", 8, 8, 5, 4, kBeyondDeclared},
                                         ReadRow{"OneTooMany", 8, 8, 0, 9, kBeyondDeclared},
                                         ReadRow{"Negative", 8, 8, -1, 4, kBeyondDeclared},
                                         ReadRow{"DeclaredShorterThanPresent", 4, 8, 2, 4, kBeyondDeclared},
                                         ReadRow{"DeclaredLongerThanPresent", 8, 4, 4, 4, kBeyondPresent},
                                         ReadRow{"PresentOneShort", 8, 7, 4, 4, kBeyondPresent},
                                         ReadRow{"NothingPresent", 8, 0, 0, 4, kBeyondPresent},
                                         ReadRow{"NothingAtTheEnd", 8, 8, 8, 0, ""},
                                         ReadRow{"NothingBeyond", 8, 8, 9, 0, kBeyondDeclared},
                                         ReadRow{"LargestOffset", 8, 8, INT64_MAX, 4, kBeyondDeclared},
                                         ReadRow{"SmallestOffset", 8, 8, INT64_MIN, 4, kBeyondDeclared},
                                         ReadRow{"LargestDeclared", INT64_MAX, 8, 0, 16, kBeyondPresent},
                                         ReadRow{"LargestDeclaredAndOffset", INT64_MAX, 8, INT64_MAX - 8, 4, kBeyondPresent},
                                         ReadRow{"SmallestDeclared", INT64_MIN, 8, 0, 1, kBeyondDeclared},
                                         ReadRow{"LargestCount", 8, 8, 0, INT64_MAX, kBeyondDeclared}),
                         RowName());

TEST(BufferRead, RefusesANegativeCount)
{
  const GltfBuffer buffer = MakeBuffer(8, 8);
  EXPECT_EQ(ErrorText(buffer.ReadBytes(0, -1, nullptr)), "Illegal argument: Condition byteCount >= 0 not fulfilled. ");
  EXPECT_EQ(buffer.FindBytes(0, INT64_MIN), nullptr);
}

/// Elements of a view over the bytes 0, 1 ... 15.
struct ElementRow
{
  const char* name;
  const char* view;
  Int accessorOffset;
  Int byteCount;
  Int idx;
  int firstByte;        // of the element; -1 when it cannot be read
  const char* message;  // then
};

class ViewElement : public testing::TestWithParam<ElementRow>
{};

TEST_P(ViewElement, LiesAtItsPlace)
{
  const ElementRow& row = GetParam();
  const GltfBuffer buffer = MakeBuffer(16, 16);
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

INSTANTIATE_TEST_SUITE_P(
  Rows, ViewElement,
  testing::Values(ElementRow{"Packed", R"({"buffer":0,"byteLength":16})", 0, 4, 2, 8, ""},
                  ElementRow{"StrideOne", R"({"buffer":0,"byteLength":16,"byteStride":1})", 0, 4, 2, 8, ""},
                  ElementRow{"StrideTwo", R"({"buffer":0,"byteLength":16,"byteStride":2})", 0, 4, 2, 8, ""},
                  ElementRow{"StrideThree", R"({"buffer":0,"byteLength":16,"byteStride":3})", 0, 4, 2, 8, ""},
                  ElementRow{"StrideFour", R"({"buffer":0,"byteLength":16,"byteStride":4})", 0, 2, 3, 12, ""},
                  ElementRow{"StrideFive", R"({"buffer":0,"byteLength":16,"byteStride":5})", 0, 2, 2, 10, ""},
                  ElementRow{"StrideTwelve", R"({"buffer":0,"byteLength":16,"byteStride":12})", 0, 4, 1, 12, ""},
                  ElementRow{"StrideBeyond32Bits", R"({"buffer":0,"byteLength":16,"byteStride":4294967304})", 0, 4, 2, 8, ""},
                  ElementRow{"NegativeStride", R"({"buffer":0,"byteLength":16,"byteStride":-8})", 0, 4, 2, 8, ""},
                  ElementRow{"AllOffsets", R"({"buffer":0,"byteLength":16,"byteOffset":2})", 3, 4, 1, 9, ""},
                  ElementRow{"NegativeAccessorOffset", R"({"buffer":0,"byteLength":16,"byteOffset":6})", -4, 4, 0, 2, ""},
                  ElementRow{"LastByte", R"({"buffer":0,"byteLength":16,"byteOffset":4})", 0, 4, 2, 12, ""},
                  // The view's length bounds the index alone, so an element may lie behind the view's end.
                  ElementRow{"BehindTheView", R"({"buffer":0,"byteLength":5})", 0, 4, 1, 4, ""},
                  ElementRow{"IndexOneTooFar", R"({"buffer":0,"byteLength":5})", 0, 4, 2, -1, kBeyondView},
                  ElementRow{"NegativeIndex", R"({"buffer":0,"byteLength":16})", 0, 4, -1, -1, kBeyondView},
                  ElementRow{"OffsetOneTooFar", R"({"buffer":0,"byteLength":16,"byteOffset":5})", 0, 4, 2, -1, kBeyondDeclared},
                  ElementRow{"NegativeOffset", R"({"buffer":0,"byteLength":16,"byteOffset":-1})", 0, 4, 0, -1, kBeyondDeclared},
                  ElementRow{"LargestOffset", R"({"buffer":0,"byteLength":16,"byteOffset":9223372036854775807})", 0, 4, 0, -1,
                             kBeyondDeclared},
                  ElementRow{"OffsetsBeyond64Bits", R"({"buffer":0,"byteLength":16,"byteOffset":9223372036854775807})", 1, 4, 0,
                             -1, kBeyondDeclared},
                  // Wrapped, the sum would be -2 and the third element lie inside.
                  ElementRow{"OffsetsWrapped", R"({"buffer":0,"byteLength":16,"byteOffset":9223372036854775807})", INT64_MAX, 4,
                             2, -1, kBeyondDeclared},
                  ElementRow{"OffsetsBelow64Bits", R"({"buffer":0,"byteLength":16,"byteOffset":-9223372036854775808})", -1, 4, 0,
                             -1, kBeyondDeclared},
                  ElementRow{"ElementBeyond64Bits", R"({"buffer":0,"byteLength":9223372036854775807,"byteStride":4294967295})", 0,
                             4, 4294967298, -1, kBeyondDeclared},
                  ElementRow{"LargestIndex", R"({"buffer":0,"byteLength":9223372036854775807})", 0, 1, INT64_MAX, -1,
                             kBeyondView},
                  ElementRow{"NegativeViewLength", R"({"buffer":0,"byteLength":-9223372036854775808})", 0, 4, 0, -1,
                             kBeyondView}),
  RowName());

TEST(GltfBufferView, NeedsBufferAndLength)
{
  GltfBufferView view;
  EXPECT_TRUE(view.ReadFromJson(ParseObject(R"({"byteLength":4})")).HasError());
  EXPECT_TRUE(view.ReadFromJson(ParseObject(R"({"buffer":0})")).HasError());
}

TEST(GltfBufferView, HasDefaults)
{
  GltfBufferView view;
  ASSERT_EQ(ErrorText(view.ReadFromJson(ParseObject(R"({"buffer":3,"byteLength":40})"))), "");
  EXPECT_EQ(view.GetBufferIndex(), 3);
  EXPECT_EQ(view.GetByteLength(), 40);
  EXPECT_EQ(view.GetByteOffset(), 0);
  EXPECT_EQ(view.GetByteStride(), 0u);
  EXPECT_EQ(view.GetTarget(), 34962u);
  ASSERT_EQ(ErrorText(view.ReadFromJson(ParseObject(R"({"buffer":3,"byteLength":40,"target":34963})"))), "");
  EXPECT_EQ(view.GetTarget(), 34963u);
}

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
