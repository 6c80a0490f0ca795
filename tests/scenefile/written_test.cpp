// What is written of documents that were made in the scene, not read: of links, numbers, texts and files of textures, and that it
// reads back as it was.

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>

#include <gtest/gtest.h>

#include "host/scene/conversion.h"
#include "host/scene/headlesstag.h"
#include "host/scene/headlesstrack.h"
#include "host/scene/headlessweighttag.h"
#include "tests/scenefile/scenetext.h"

namespace q7z::test
{
namespace
{

class WrittenScene : public testing::Test
{
protected:
  HeadlessObject* Add(Int32 type)
  {
    HeadlessObject* const object = HeadlessObject::Create(type);
    _document->InsertObjectLast(object);
    return object;
  }
  static HostValue MakeLink(HeadlessNode* node) { return HostValue::Link(ToHost(node)); }

  const DocumentOwner _document{HeadlessDocument::Create()};
};

TEST_F(WrittenScene, LinksLeadToWhatIsInTheDocumentAlone)
{
  const DocumentOwner other(HeadlessDocument::Create());
  HeadlessObject* const outside = HeadlessObject::Create(kNullObjectType);
  other->InsertObjectLast(outside);
  HeadlessObject* const kept = Add(kNullObjectType);
  kept->InsertUnder(nullptr);  // alive, but in no hierarchy
  HeadlessObject* const instance = Add(kInstanceObjectType);
  HeadlessTag* const tag = HeadlessTag::Create(kPhongTagType);
  tag->InsertInto(instance);
  HeadlessMaterial* const material = HeadlessMaterial::Create();
  _document->InsertMaterial(material);
  HeadlessNode* const targets[] = {outside, _document.get(), _document->GetTakeData().GetMainTake(), instance,
                                   tag,     material,        _document->GetLayerRoot().Add()};
  ASSERT_TRUE(instance->SetReference(kept));
  for (Int32 id = 0; id < 7; ++id)
    ASSERT_TRUE(instance->GetParameters().Set(id, MakeLink(targets[id])));
  const DocumentOwner document = Read(Write(*_document));
  ASSERT_TRUE(document);
  HeadlessObject* const read = document->GetFirstObject();
  EXPECT_EQ(read->GetReference(), nullptr);
  HeadlessNode* const found[] =
    {nullptr, nullptr, nullptr, read, read->GetFirstTag(), document->GetFirstMaterial(), document->GetLayerRoot().GetLayer(0)};
  for (Int32 id = 0; id < 7; ++id)
    EXPECT_EQ(*read->GetParameters().Find(id), found[id] ? MakeLink(found[id]) : HostValue::Link(nullptr)) << id;
}

// A weight tag outlives its joints; the weights of a joint that is gone still count.
TEST_F(WrittenScene, JointThatIsGoneKeepsItsWeights)
{
  HeadlessObject* const mesh = HeadlessPolygonObject::Create(2, 0);
  _document->InsertObjectLast(mesh);
  HeadlessObject* const joint = HeadlessObject::Create(kJointObjectType);
  auto* const tag = static_cast<HeadlessWeightTag*>(HeadlessTag::Create(kWeightTagType));
  tag->InsertInto(mesh);
  ASSERT_EQ(tag->AddJoint(joint), 0);
  ASSERT_TRUE(tag->SetWeight(0, 1, 0.75));
  ASSERT_TRUE(tag->SetWeight(0, 0, 0));
  HeadlessNode::Free(joint);
  const std::string text = Write(*_document);
  EXPECT_NE(text.find("\"weights\": [\n            [[1, 0.75]]\n          ]"), std::string::npos) << text;
  const DocumentOwner document = Read(text);
  ASSERT_TRUE(document);
  const auto& read = static_cast<const HeadlessWeightTag&>(*document->GetFirstObject()->GetFirstTag());
  EXPECT_EQ(read.GetJointCount(), 1);
  EXPECT_EQ(read.GetJoint(0), nullptr);
  EXPECT_EQ(read.GetWeight(0, 1), 0.75);
}

/// Takes so many bytes, then no more.
class FullSink final : public ByteSink
{
public:
  explicit FullSink(size_t room) : _room(room) {}
  Result<void> Write(std::string_view bytes) noexcept override
  {
    EXPECT_FALSE(_isFull) << "written to after an error";
    _isFull = bytes.size() > _room;
    if (_isFull)
      return Error::Make(ErrorClass::kIo, "full"_s, __FILE__, __LINE__);
    _room -= bytes.size();
    return {};
  }

private:
  size_t _room;
  Bool _isFull = false;
};

TEST_F(WrittenScene, ErrorOfTheSinkEndsTheWriting)
{
  for (int i = 0; i < 2000; ++i)
    Add(kNullObjectType);  // more than one piece
  for (const size_t room : {size_t(0), size_t(1) << 17})
  {
    FullSink sink(room);
    EXPECT_EQ(WriteSceneDocument(*_document, "", sink).GetError().GetMessage(), "full"_s) << room;
  }
}

#ifdef __linux__
TEST_F(WrittenScene, FullDeviceIsAnErrorOfTheStream)
{
  std::FILE* const stream = std::fopen("/dev/full", "w");
  ASSERT_NE(stream, nullptr);
  std::setvbuf(stream, nullptr, _IONBF, 0);
  StreamSink sink(stream);
  const Error error = WriteSceneDocument(*_document, "", sink).GetError();
  std::fclose(stream);
  ASSERT_TRUE(error);
  EXPECT_EQ(error.GetMessage(), "writing failed: No space left on device"_s);
}
#endif

// Numbers and texts: the shortest that read back with their kind. Corner data keeps its precision, 32 bits in their own shortest
// form, 64 bits never taken for them.

constexpr Float kInfinity = std::numeric_limits<Float>::infinity();
constexpr Float kNan = std::numeric_limits<Float>::quiet_NaN();

/// The text between two others.
std::string Between(const std::string& text, std::string_view before, std::string_view behind)
{
  const size_t start = text.find(before) + before.size();
  return text.substr(start, text.find(behind, start) - start);
}

std::string WriteParameter(const HostValue& value)
{
  const DocumentOwner document(HeadlessDocument::Create());
  EXPECT_TRUE(document->GetSettings().Set(5, value));
  return Between(Write(*document), "\"5\": ", "\n  }");
}

TEST(SceneValue, HasTheShortestTextAndReadsBackWithItsKind)
{
  const std::pair<HostValue, const char*> rows[] = {
    {HostValue(1.0), "1.0"},
    {HostValue(Float(0.1f)), "0.10000000149011612"},
    {HostValue(-0.0), "-0.0"},
    {HostValue(1e300), "1e+300"},
    {HostValue(9007199254740993.0), "9007199254740992.0"},
    {HostValue(-kInfinity), R"({"float": "-inf"})"},
    {HostValue(Int(INT64_MAX)), "9223372036854775807"},
    {HostValue(Int(INT64_MIN)), "-9223372036854775808"},
    {HostValue(true), "true"},
    {HostValue(HostTime{-3, 25}), R"({"time": [-3, 25]})"},
    {HostValue(HostTime{kInfinity, 1e19}), R"({"time": [{"float": "inf"}, 1e+19]})"},
    {HostValue(Vector{1, -0.0, kNan}), R"({"vector": [1.0, -0.0, {"float": "nan"}]})"},
    {HostValue(HostUnitScale{0.1, 10}), R"({"unit": [0.1, 10]})"},
    {HostValue::Link(nullptr), R"({"link": null})"},
    {HostValue("a\"\\\n\t\r\x01\x7F\xC3\xA9"_s), "\"a\\\"\\\\\\n\\t\\r\\u0001\x7F\xC3\xA9\""},
    {HostValue(String("a\0b", 3)), R"("a\u0000b")"},
  };
  for (const auto& [value, text] : rows)
  {
    EXPECT_EQ(WriteParameter(value), text);
    const DocumentOwner document = Read(MakeText(R"("settings": {"5": )" + std::string(text) + "}"));
    ASSERT_TRUE(document);
    const HostValue* const read = document->GetSettings().Find(5);
    ASSERT_NE(read, nullptr) << text;
    EXPECT_EQ(read->GetKind(), value.GetKind()) << text;
    EXPECT_EQ(WriteParameter(*read), text);
  }
  // Bytes that are no UTF-8 would make a text that nobody reads.
  EXPECT_EQ(WriteParameter(HostValue("a\xFF\xC3(\xE2\x82"_s)), "\"a\xEF\xBF\xBD\xEF\xBF\xBD(\xEF\xBF\xBD\xEF\xBF\xBD\"");
}

const HeadlessCornerTag& FirstTag(const HeadlessDocument& document)
{
  return static_cast<const HeadlessCornerTag&>(*document.GetFirstObject()->GetFirstTag());
}

/// A document with one polygon whose UVW tag begins with the number; the others are 0.
DocumentOwner MakeDocument(Float number, Bool asDoubles)
{
  DocumentOwner document = Read(MakeText(R"("objects": [{"id": 1, "type": 5100, "points": [0, 0, 0], "polygons": [0, 0, 0, 0],
                                            "tags": [{"id": 2, "type": 5671}]}])"));
  EXPECT_EQ(FirstTag(*document).GetPolygonCount(), 0) << "a tag without data gets no zeros";
  auto& tag = static_cast<HeadlessCornerTag&>(*document->GetFirstObject()->GetFirstTag());
  EXPECT_TRUE(tag.Resize(1, asDoubles));
  const HostCornerHandle handle = tag.GetHandleW(asDoubles);
  if (asDoubles)
    handle.doubles[0] = number;
  else
    handle.singles[0] = static_cast<Float32>(number);
  return document;
}

const std::tuple<Float, Bool, const char*> kCorners[] = {
  {0.1, false, "0.1"},
  {1.0 / 3, false, "0.33333334"},
  {1e-45, false, "1e-45"},
  {-0.0, false, "-0.0"},
  {kInfinity, false, R"({"float": "inf"})"},
  // Its shortest text 7.038531e-26 would read back as the number below it.
  {Float(std::bit_cast<Float32>(0x15AE43FDu)), false, "7.03853069e-26"},
  {1.0 / 3, true, "0.3333333333333333"},
  {Float(0.1f), true, "0.10000000149011612"},
  // These texts could be of 32-bit numbers; one zero more says that they are not.
  {0.1, true, "0.10"},
  {3, true, "3.00"},
  {-0.0, true, "-0.00"},
  {1e30, true, "1.0e+30"},
  // The mark stands at the first number that can have one.
  {kInfinity, true, R"({"float": "inf"}, 0.00)"},
};

TEST(SceneCorner, IsWrittenAndReadsBackInItsPrecision)
{
  for (const auto& [number, asDoubles, shortest] : kCorners)
  {
    SCOPED_TRACE(shortest);
    const std::string text = Write(*MakeDocument(number, asDoubles));
    EXPECT_NE(text.find("\"uvws\": [" + std::string(shortest) + ", 0.0, "), std::string::npos) << text;
    const DocumentOwner document = Read(text);
    ASSERT_TRUE(document);
    ASSERT_EQ(FirstTag(*document).IsDouble(), asDoubles);
    const HostCornerHandle handle = FirstTag(*document).GetHandleR();
    if (asDoubles)
      EXPECT_EQ(std::bit_cast<UInt>(handle.doubles[0]), std::bit_cast<UInt>(number));
    else
      EXPECT_EQ(std::bit_cast<UInt32>(handle.singles[0]), std::bit_cast<UInt32>(static_cast<Float32>(number)));
  }
}

TEST(SceneCorner, WrittenByHandGivesAPrecision)
{
  const std::tuple<std::string, Bool, Float> rows[] = {
    {"16777216", false, 16777216}, {"16777217", true, 16777217}, {"0.123456789", true, 0.123456789}, {"1E0", true, 1},
    {"1e39", true, 1e39},
  };
  for (const auto& [first, isDouble, value] : rows)
  {
    std::string numbers = first;
    for (int i = 1; i < 24; ++i)
      numbers += ", 0.5";
    const DocumentOwner document = Read(MakeTagText(R"({"id": 2, "type": 5711, "normals": [)" + numbers + "]}"));
    ASSERT_TRUE(document) << first;
    EXPECT_EQ(FirstTag(*document).IsDouble(), isDouble) << first;
    EXPECT_EQ(FirstTag(*document).GetHandleR().Get(0).a.x, value);
  }
}

TEST(SceneCorner, ColorsOfCorners)
{
  std::string numbers = "0.1";
  for (int i = 1; i < 32; ++i)
    numbers += ", 2";
  const DocumentOwner document =
    Read(MakeTagText(R"({"id": 2, "type": 431000045, "perPoint": false, "colors": [)" + numbers + "]}"));
  ASSERT_TRUE(document);
  const auto& tag = static_cast<const HeadlessVertexColorTag&>(*document->GetFirstObject()->GetFirstTag());
  EXPECT_EQ(tag.GetHandleR().GetCorner(0, 0)[0], 0.1f);
  EXPECT_EQ(tag.GetHandleR().GetCorner(1, 3)[3], 2);
}

// Files of textures: relative below the document's folder, so that both move together, and never another file than it was.

struct UrlRow
{
  const char* folder;
  Bool isPath;       ///< else a reference
  const char* url;   ///< of the texture
  const char* text;  ///< in the document
};

const UrlRow kUrls[] = {
  {"/out", true, "/out/tex/a.png", "tex/a.png"},
  {"/", true, "/tex/a.png", "tex/a.png"},
  {"", true, "tex/a.png", "tex/a.png"},
  {"out", true, "out/tex/a.png", "tex/a.png"},
  {"/out", true, "/output/a.png", "file:///output/a.png"},
  {"out", true, "other/a.png", "file:other/a.png"},
  {"/out", true, "/out/a%20b.png", "a%2520b.png"},
  {"/out", true, "/out/ab:c.png", "ab%3Ac.png"},
  {"/out", true, "C:/a.png", "file:///C:/a.png"},
  {"/out", false, "tex/a%25.png", "relative:///tex/a%25.png"},
  {"/out", false, "http://host/a%20b.png", "http://host/a%20b.png"},
  {"/out", false, "", ""},
};

TEST(SceneTexture, IsWrittenAndComesBack)
{
  for (const UrlRow& row : kUrls)
  {
    const String name(row.url, static_cast<Int>(std::string_view(row.url).size()));
    const Url url = (row.isPath ? Url::FromPath(name) : Url::FromReference(name)).GetValue();
    const DocumentOwner document(HeadlessDocument::Create());
    HeadlessMaterial* const material = HeadlessMaterial::Create();
    document->InsertMaterial(material);
    HostMaterialExchangeData data;
    ASSERT_FALSE(data.textures.Set("key"_s, {url, nullptr}).HasError());
    ASSERT_TRUE(material->SetRecord("space"_s, data));
    const std::string text = Write(*document, row.folder);
    EXPECT_EQ(Between(text, "\"key\": \"", "\"\n"), row.text);
    const DocumentOwner read = Read(text, row.folder);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->GetFirstMaterial()->GetRecord()->data.textures.Find("key"_s)->url, url) << row.url;
  }
}

}  // namespace
}  // namespace q7z::test
