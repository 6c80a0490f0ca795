// Where objects stand: insertion, detaching, freeing, and what links read afterwards.

#include <thread>
#include <vector>

#include "host/scene/headlessobject.h"
#include "host/scenefile/inspect.h"
#include "host/scenefile/scenefile.h"
#include "tests/host/scenefixture.h"

namespace q7z::test
{
namespace
{

class SceneHierarchy : public SceneTest
{};

/// Works on the tree "a(b c) d", of which x is a new object.
struct MoveRow
{
  void (*move)(HostDocument* document, HostObject* a, HostObject* b, HostObject* c, HostObject* d, HostObject* x);
  const char* tree;
};

#define MOVE(call)                                                                                            \
  [](HostDocument* document [[maybe_unused]], HostObject* a [[maybe_unused]], HostObject* b [[maybe_unused]], \
     HostObject* c [[maybe_unused]], HostObject* d [[maybe_unused]], HostObject* x [[maybe_unused]]) { call; }

const MoveRow kMoves[] = {
  {MOVE(HostInsertObject(document, x, nullptr, nullptr)), "x a(b c) d"},
  {MOVE(HostInsertObject(document, x, nullptr, a)), "a(b c) x d"},
  {MOVE(HostInsertObject(document, x, a, nullptr)), "a(x b c) d"},
  {MOVE(HostInsertObject(document, x, a, b)), "a(b x c) d"},
  {MOVE(HostInsertUnder(x, a)), "a(x b c) d"},
  {MOVE(x->InsertUnderLast(a)), "a(b c x) d"},
  {MOVE(x->InsertUnderLast(d)), "a(b c) d(x)"},
  {MOVE(x->InsertBefore(b)), "a(x b c) d"},
  {MOVE(x->InsertBefore(a)), "x a(b c) d"},
  {MOVE(x->InsertAfter(d)), "a(b c) d x"},
  {MOVE(a->InsertUnder(d)), "d(a(b c))"},
  {MOVE(b->InsertAfter(c)), "a(c b) d"},
  {MOVE(c->InsertUnder(a)), "a(c b) d"},
  {MOVE(b->InsertAfter(a)), "a(c) b d"},
  {MOVE(b->InsertBefore(b)), "a(b c) d"},
  {MOVE(b->InsertAfter(x)), "a(b c) d"},  // beside one that stands nowhere
};

TEST_F(SceneHierarchy, InsertionGivesThisOrder)
{
  for (const MoveRow& row : kMoves)
  {
    HostObject* const a = Add("a");
    HostObject* const b = Add("b", a);
    HostObject* const c = Add("c", a);
    HostObject* const d = Add("d");
    HostObject* const x = Make("x");
    row.move(Document(), a, b, c, d, x);
    EXPECT_EQ(Tree(), row.tree) << "row " << &row - kMoves;
    for (HostObject* const object : {x, d, c, b, a})
      HostRemove(object);
    for (HostObject* const object : {x, d, c, b, a})
      HostNode::Free(object);
    ASSERT_EQ(Tree(), "");
  }
}

TEST_F(SceneHierarchy, WhatIsNotThereIsRefused)
{
  EXPECT_EQ(HostAllocObject(4711), nullptr);
  EXPECT_EQ(HostPolygonObject::Alloc(-1, 0), nullptr);
  EXPECT_EQ(HostPolygonObject::Alloc(0, -1), nullptr);
  EXPECT_EQ(HostTag::Alloc(kNormalTagType, -1), nullptr);
  EXPECT_EQ(HostTag::Alloc(kVertexColorTagType, -1), nullptr);
  HostObject* const a = Add("a");
  EXPECT_FALSE(a->SetReference(a)) << "only instances have one";
  a->SetVisibility(7, 3);
  EXPECT_EQ(a->GetVisibility(7), 0);
}

TEST_F(SceneHierarchy, InsertingWhatStandsElsewhereOrUnderItselfIsCounted)
{
  HostObject* const a = Add("a");
  HostObject* const b = Add("b", a);
  HostObject* const c = Add("c", b);
  a->InsertUnder(a);
  a->InsertUnder(c);
  a->InsertUnderLast(b);
  a->InsertBefore(c);
  EXPECT_EQ(Tree(), "a(b(c))");
  _refusedCycles = 4;

  HostTag* const first = a->MakeTag(kTextureTagType);
  HostTag* const tag = a->MakeTag(kPhongTagType);
  HostTag* const last = a->MakeTag(kTextureTagType);
  EXPECT_EQ(a->GetTag(kTextureTagType, 1), last);
  EXPECT_EQ(a->GetTag(kTextureTagType, -1), nullptr);
  HostInsertObject(Document(), b, nullptr, nullptr);
  EXPECT_EQ(Tree(), "b(c) a");
  EXPECT_TRUE(b->InsertTag(tag));
  EXPECT_FALSE(b->InsertTag(nullptr));
  EXPECT_EQ(first->GetNext(), last);
  EXPECT_EQ(tag->GetObject(), b);
  _insertedTwice = 2;
}

TEST_F(SceneHierarchy, DetachedObjectsLiveWithTheirDocument)
{
  HostObject* const a = Add("a");
  HostObject* const b = Add("b", a);
  Add("c", b);
  HostObject* const removed = Add("removed");
  HostObject* const loose = Add("loose");
  HostRemove(removed);
  HostRemove(loose);
  EXPECT_EQ(Scene().GetFirstKept(), nullptr);
  for (HostObject* const object : {removed, b, a, b})  // once more changes nothing
    HostInsertUnder(object, nullptr);
  EXPECT_EQ(Tree(), "");
  EXPECT_EQ(b->GetDocument(), nullptr);
  EXPECT_EQ(b->GetUp(), nullptr);
  EXPECT_EQ(Text(b->GetDown()->GetName()), "c");
  HostInsertObject(Document(), a, nullptr, nullptr);
  EXPECT_EQ(Tree(), "a") << "one comes back";
  HostNode::Free(removed);  // no mistake: it stands in no hierarchy
  EXPECT_EQ(ToHost(Scene().GetFirstKept()), b);
  EXPECT_EQ(HeadlessDocument::GetNextKept(Scene().GetFirstKept()), nullptr);
  FreeDocument();                   // the fixture finds nothing left over
  HostInsertUnder(loose, nullptr);  // the document that would keep it is gone
  EXPECT_EQ(Text(loose->GetName()), "loose");
  HostNode::Free(loose);
}

TEST_F(SceneHierarchy, FreeingWhatIsInsertedTakesItOutAndIsCounted)
{
  HostObject* const a = Add("a");
  Add("b", a);
  Add("c");
  HostNode::Free(a->MakeTag(kPhongTagType));
  EXPECT_EQ(a->GetFirstTag(), nullptr);
  HostNode::Free(a);
  EXPECT_EQ(Tree(), "c");
  // What belongs to the document is not freed alone.
  HostNode::Free(Document()->GetLayerRoot()->Add());
  HostNode::Free(Document()->GetTakeData()->AddTake("t"_s));
  EXPECT_EQ(Scene().GetLayerRoot().GetLayerCount(), 1);
  EXPECT_EQ(Scene().GetTakeData().GetTakeCount(), 2);
  _freedWhileInserted = 4;
}

TEST_F(SceneHierarchy, LinksToWhatIsFreedReadAsNull)
{
  HostObject* const target = Add("target", nullptr, kPolygonObjectType);
  HostMaterial* const material = HostMaterial::Alloc(kMaterialType);
  Document()->InsertMaterial(material);
  HostObject* const holder = Add("holder", nullptr, kInstanceObjectType);
  HostWeightTag* const weights = static_cast<HostWeightTag*>(holder->MakeTag(kWeightTagType));
  HostTextureTag* const texture = static_cast<HostTextureTag*>(holder->MakeTag(kTextureTagType));
  HostPoseMorphTag* const morphs = static_cast<HostPoseMorphTag*>(holder->MakeTag(kPoseMorphTagType));
  HostTake* const take = Document()->GetTakeData()->AddTake("t"_s);

  ASSERT_TRUE(holder->SetReference(target));
  ASSERT_TRUE(holder->SetParameter(HostDescId(500), HostValue::Link(target)));
  ASSERT_TRUE(holder->GetContainer()->GetContainer(9, true)->Set(1, HostValue::Link(target)));
  ASSERT_EQ(weights->AddJoint(target), 0);
  texture->SetMaterial(material);
  morphs->AddMorph();  // the base
  ASSERT_TRUE(morphs->StoreObject(morphs->AddMorph(), Document(), target));
  ASSERT_TRUE(take->FindOrAddOverride(Document()->GetTakeData(), target, HostDescId(1), HostValue(1.0)));
  ASSERT_EQ(morphs->GetMorph(1)->GetObject(), target);

  target->Remove();
  HostNode::Free(target);
  ToHeadless(material)->Remove();
  HostNode::Free(material);

  EXPECT_EQ(holder->GetReference(), nullptr);
  HostValue value;
  ASSERT_TRUE(holder->GetParameter(HostDescId(500), value));
  EXPECT_EQ(value, HostValue::Link(nullptr));
  EXPECT_EQ(holder->GetContainer()->GetContainer(9)->Find(1)->GetLink(), nullptr);
  EXPECT_EQ(weights->GetJointCount(), 1);
  EXPECT_EQ(weights->GetJoint(0, Document()), nullptr);
  EXPECT_EQ(texture->GetMaterial(), nullptr);
  EXPECT_EQ(morphs->GetMorph(1)->GetObject(), nullptr);
  EXPECT_EQ(ToHeadless(take)->GetOverride(0)->GetTarget(), nullptr);
}

TEST_F(SceneHierarchy, LinksToOneNodeMayBeMadeFromSeveralThreads)
{
  HostObject* const target = Add("target");
  std::vector<HostObject*> holders(200);
  for (HostObject*& holder : holders)
    holder = Add("holder", nullptr, kInstanceObjectType);
  const auto link = [&](size_t first)
  {
    for (size_t i = first; i < holders.size(); i += 2)
      holders[i]->SetReference(target);
  };
  std::thread other(link, 1);
  link(0);
  other.join();
  for (const HostObject* holder : holders)
    EXPECT_EQ(holder->GetReference(), target);
  target->Remove();
  HostNode::Free(target);
  for (const HostObject* holder : holders)
    EXPECT_EQ(holder->GetReference(), nullptr);
}

// Whatever walks a hierarchy is tried on one that nothing recursive would survive, and nothing that takes a step for each level
// above an object.
TEST_F(SceneHierarchy, ChainOfAHundredThousandIsWalkedByEverything)
{
  constexpr Int kDepth = 100000;
  HostObject* deepest = Add("root");
  HostMatrix step;
  step.offset = {1, 0, 0};
  for (Int i = 1; i < kDepth; ++i)
  {
    HostObject* const object = HostAllocObject(kNullObjectType);
    object->SetLocalMatrix(step);
    object->InsertUnder(deepest);
    deepest = object;
  }
  EXPECT_EQ(deepest->GetGlobalMatrix().offset, (Vector{kDepth - 1, 0, 0}));
  EXPECT_EQ(deepest->GetDocument(), Document());
  HostTrack* const track = HostTrack::Alloc(deepest, {kPositionParameter, kComponentX});
  track->InsertInto(deepest);
  track->GetCurve(true)->AddKey({0, 1})->SetValue(track->GetCurve(true), 7);
  Scene().SetTime({0, 1});
  EXPECT_EQ(deepest->GetRelativePosition().x, 7);

  StringSink document;
  EXPECT_FALSE(WriteSceneDocument(Scene(), "", document).HasError());
  EXPECT_LT(document.GetText().size(), kDepth * 1000u);
  EXPECT_NE(ErrorText(ReadSceneDocument(document.GetText(), "")).find("nested deeper than 1,024 levels"), std::string::npos);
  StringSink tree;
  EXPECT_FALSE(PrintTree(Scene(), {true}, tree).HasError());
  EXPECT_NE(tree.GetText().find("[level 100000] null \"\""), std::string::npos);
  EXPECT_LT(tree.GetText().size(), kDepth * 250u);

  HostInsertUnder(Document()->GetFirstObject()->GetDown(), nullptr);
  EXPECT_EQ(Tree(), "root");
}

}  // namespace
}  // namespace q7z::test
