// Documents made in the scene, not read: what is written of them, and what of it comes back.

#include <cstdio>

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
  HeadlessObject* Add(Int32 type, HeadlessObject* parent = nullptr)
  {
    HeadlessObject* const object = HeadlessObject::Create(type);
    if (parent)
      object->InsertUnderLast(parent);
    else
      _document->InsertObjectLast(object);
    return object;
  }

  static HostValue MakeLink(HeadlessNode* node) { return HostValue::Link(ToHost(node)); }

  const DocumentOwner _document{HeadlessDocument::Create()};
};

TEST_F(WrittenScene, LinksToWhatIsNotInTheDocumentAreEmpty)
{
  const DocumentOwner other(HeadlessDocument::Create());
  HeadlessObject* const outside = HeadlessObject::Create(kNullObjectType);
  other->InsertObjectLast(outside);
  HeadlessObject* const kept = Add(kNullObjectType);
  kept->InsertUnder(nullptr);  // alive, but in no hierarchy
  HeadlessObject* const instance = Add(kInstanceObjectType);
  ASSERT_TRUE(instance->SetReference(kept));
  ASSERT_TRUE(instance->GetParameters().Set(1, MakeLink(outside)));
  ASSERT_TRUE(instance->GetParameters().Set(2, MakeLink(_document.get())));
  ASSERT_TRUE(instance->GetParameters().Set(3, MakeLink(_document->GetTakeData().GetMainTake())));
  const DocumentOwner document = Read(Write(*_document));
  ASSERT_TRUE(document);
  const HeadlessObject* const read = document->GetFirstObject();
  EXPECT_EQ(read->GetType(), kInstanceObjectType);
  EXPECT_EQ(read->GetReference(), nullptr);
  for (const Int32 id : {1, 2, 3})
    EXPECT_EQ(*read->GetParameters().Find(id), HostValue::Link(nullptr)) << id;
}

TEST_F(WrittenScene, LinksToEveryKindOfNodeWithAnId)
{
  HeadlessObject* const object = Add(kNullObjectType);
  HeadlessTag* const tag = HeadlessTag::Create(kPhongTagType);
  tag->InsertInto(object);
  HeadlessMaterial* const material = HeadlessMaterial::Create();
  _document->InsertMaterial(material);
  ASSERT_TRUE(object->GetParameters().Set(1, MakeLink(object)));
  ASSERT_TRUE(object->GetParameters().Set(2, MakeLink(tag)));
  ASSERT_TRUE(object->GetParameters().Set(3, MakeLink(material)));
  ASSERT_TRUE(object->GetParameters().Set(4, MakeLink(_document->GetLayerRoot().Add())));
  const DocumentOwner document = Read(Write(*_document));
  ASSERT_TRUE(document);
  HeadlessObject* const read = document->GetFirstObject();
  EXPECT_EQ(*read->GetParameters().Find(1), MakeLink(read));
  EXPECT_EQ(*read->GetParameters().Find(2), MakeLink(read->GetFirstTag()));
  EXPECT_EQ(*read->GetParameters().Find(3), MakeLink(document->GetFirstMaterial()));
  EXPECT_EQ(*read->GetParameters().Find(4), MakeLink(document->GetLayerRoot().GetLayer(0)));
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

TEST_F(WrittenScene, VectorsThatDoNotFitTheMatrixStay)
{
  Add(kNullObjectType)->SetVectorsAndMatrix({}, {{1, 2, 3}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  const DocumentOwner document = Read(Write(*_document));
  ASSERT_TRUE(document);
  EXPECT_EQ(document->GetFirstObject()->GetVectors(), TransformVectors());
  EXPECT_EQ(document->GetFirstObject()->GetLocalMatrix().offset, (Vector{1, 2, 3}));
}

// The text of a matrix that was set keeps the vectors that followed from it.
TEST_F(WrittenScene, VectorsThatFollowFromTheMatrixComeBack)
{
  HeadlessObject* const object = Add(kNullObjectType);
  object->SetLocalMatrix({{1, 2, 3}, {0, 0, -2}, {0, 3, 0}, {4, 0, 0}});
  const DocumentOwner document = Read(Write(*_document));
  ASSERT_TRUE(document);
  EXPECT_EQ(document->GetFirstObject()->GetVectors(), object->GetVectors());
  EXPECT_EQ(document->GetFirstObject()->GetLocalMatrix(), object->GetLocalMatrix());
}

// Far deeper than anything recursive would survive; what is written grows with the number of objects alone.
TEST_F(WrittenScene, ChainOfAHundredThousandObjects)
{
  constexpr int kLength = 100000;
  HeadlessObject* object = Add(kNullObjectType);
  for (int i = 1; i < kLength; ++i)
  {
    HeadlessObject* const child = HeadlessObject::Create(kNullObjectType);
    child->InsertUnderLast(object);
    object = child;
  }
  const std::string text = Write(*_document);
  EXPECT_NE(text.find("\"id\": " + std::to_string(kLength) + ","), std::string::npos);
  EXPECT_LT(text.size(), kLength * 1000u);
  EXPECT_NE(GetRefusal(text).find("nested deeper than 1,024 levels"), std::string::npos);
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
    const Result<void> written = WriteSceneDocument(*_document, "", sink);
    ASSERT_TRUE(written.HasError()) << room;
    EXPECT_EQ(written.GetError().GetMessage(), "full"_s);
  }
}

#ifdef __linux__
TEST_F(WrittenScene, FullDeviceIsAnErrorOfTheStream)
{
  std::FILE* const stream = std::fopen("/dev/full", "w");
  ASSERT_NE(stream, nullptr);
  std::setvbuf(stream, nullptr, _IONBF, 0);
  StreamSink sink(stream);
  const Result<void> written = WriteSceneDocument(*_document, "", sink);
  std::fclose(stream);
  ASSERT_TRUE(written.HasError());
  EXPECT_EQ(written.GetError().GetClass(), ErrorClass::kIo);
  EXPECT_EQ(written.GetError().GetMessage(), "writing failed: No space left on device"_s);
}
#endif

TEST(SceneFile, MissingFileIsAnIoError)
{
  const Result<DocumentOwner> document = ReadSceneDocumentFile("/no/such/folder/scene.q7z.json"_s);
  ASSERT_TRUE(document.HasError());
  EXPECT_EQ(document.GetError().GetClass(), ErrorClass::kIo);
  EXPECT_NE(document.GetError().GetMessage().GetView().find("/no/such/folder/scene.q7z.json"), std::string_view::npos);
}

TEST(SceneFile, FolderOfTheFileIsTheDocuments)
{
  const std::string path = std::string(Q7Z_TEST_TEMP_DIR) + "/scenefile_folder.q7z.json";
  std::FILE* const stream = std::fopen(path.c_str(), "w");
  ASSERT_NE(stream, nullptr);
  std::fputs(MakeText("").c_str(), stream);
  std::fclose(stream);
  const Result<DocumentOwner> document = ReadSceneDocumentFile(String(path.data(), static_cast<Int>(path.size())));
  std::remove(path.c_str());
  ASSERT_FALSE(document.HasError());
  EXPECT_EQ(document.GetValue()->GetFolder().GetView(), Q7Z_TEST_TEMP_DIR);
}

}  // namespace
}  // namespace q7z::test
