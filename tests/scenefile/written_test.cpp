// Documents made in the scene, not read: what is written of them, and what of it comes back.

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

}  // namespace
}  // namespace q7z::test
