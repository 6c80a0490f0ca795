// Where objects stand: insertion, detaching, freeing, and what links read afterwards.

#include <thread>
#include <vector>

#include "host/scene/headlessobject.h"
#include "tests/host/scenefixture.h"
#include "tests/support/rowname.h"

namespace q7z::test
{
namespace
{

struct MoveRow
{
  const char* name;
  /// Works on the tree "a(b c) d", of which x is a new object.
  void (*move)(HostDocument* document, HostObject* a, HostObject* b, HostObject* c, HostObject* d, HostObject* x);
  const char* tree;
};

class SceneInsertion : public SceneTest, public testing::WithParamInterface<MoveRow>
{};

TEST_P(SceneInsertion, GivesThisOrder)
{
  HostObject* const a = Add("a");
  HostObject* const b = Add("b", a);
  HostObject* const c = Add("c", a);
  HostObject* const d = Add("d");
  GetParam().move(Document(), a, b, c, d, Make("x"));
  EXPECT_EQ(Tree(), GetParam().tree);
}

#define MOVE                                                                                                     \
  []([[maybe_unused]] HostDocument * document, [[maybe_unused]] HostObject * a, [[maybe_unused]] HostObject * b, \
     [[maybe_unused]] HostObject * c, [[maybe_unused]] HostObject * d, [[maybe_unused]] HostObject * x)

const MoveRow kMoves[] = {{"TopLevelWithoutPredecessorIsFirst", MOVE{HostInsertObject(document, x, nullptr, nullptr);
}  // namespace
, "x a(b c) d"
}  // namespace q7z::test
, {"TopLevelBehindPredecessor", MOVE{HostInsertObject(document, x, nullptr, a);
}
, "a(b c) x d"
}
, {"UnderParentWithoutPredecessorIsFirst", MOVE{HostInsertObject(document, x, a, nullptr);
}
, "a(x b c) d"
}
, {"UnderParentBehindPredecessor", MOVE{HostInsertObject(document, x, a, b);
}
, "a(b x c) d"
}
, {"UnderIsFirst", MOVE{HostInsertUnder(x, a);
}
, "a(x b c) d"
}
, {"UnderLast", MOVE{x->InsertUnderLast(a);
}
, "a(b c x) d"
}
, {"UnderOneWithoutChildren", MOVE{HostInsertUnder(x, d);
}
, "a(b c) d(x)"
}
, {"BeforeFirstChild", MOVE{x->InsertBefore(b);
}
, "a(x b c) d"
}
, {"BeforeFirstOfTopLevel", MOVE{x->InsertBefore(a);
}
, "x a(b c) d"
}
, {"AfterLastOfTopLevel", MOVE{x->InsertAfter(d);
}
, "a(b c) d x"
}
, {"MovesWithItsChildren", MOVE{a->InsertUnder(d);
HostNode::Free(x);
}
, "d(a(b c))"
}
, {"MovesFirstBehindLast", MOVE{b->InsertAfter(c);
HostNode::Free(x);
}
, "a(c b) d"
}
, {"MovesLastToFirst", MOVE{c->InsertUnder(a);
HostNode::Free(x);
}
, "a(c b) d"
}
, {"OnlyChildMovesOut", MOVE{b->InsertAfter(a);
c->InsertBefore(a);
HostNode::Free(x);
}
, "c a b d"
}
, {"BesideItselfStays", MOVE{b->InsertBefore(b);
c->InsertAfter(c);
HostNode::Free(x);
}
, "a(b c) d"
}
, {"BesideOneThatStandsNowhereStays", MOVE{b->InsertAfter(x);
HostNode::Free(x);
}
, "a(b c) d"
}
, {"RemovedWithItsChildren", MOVE{HostRemove(a);
HostNode::Free(a);
HostNode::Free(x);
}
, "d"
}
,
}
;
INSTANTIATE_TEST_SUITE_P(Rows, SceneInsertion, testing::ValuesIn(kMoves), RowName());

class SceneHierarchy : public SceneTest
{};

TEST_F(SceneHierarchy, InsertingWhatStandsElsewhereIsCounted)
{
  HostObject* const a = Add("a");
  HostObject* const b = Add("b", a);
  HostInsertObject(Document(), b, nullptr, nullptr);
  EXPECT_EQ(Tree(), "b a");
  _insertedTwice = 1;
}

TEST_F(SceneHierarchy, NothingComesUnderItself)
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
}

TEST_F(SceneHierarchy, KnowsItsDocument)
{
  HostObject* const a = Add("a");
  HostObject* const b = Add("b", a);
  HostTag* const tag = b->MakeTag(kPhongTagType);
  EXPECT_EQ(b->GetDocument(), Document());
  EXPECT_EQ(tag->GetDocument(), Document());
  HostRemove(a);
  EXPECT_EQ(b->GetDocument(), nullptr);
  EXPECT_EQ(tag->GetDocument(), nullptr);
  HostNode::Free(a);
}

TEST_F(SceneHierarchy, DetachedObjectLivesWithItsDocument)
{
  HostObject* const a = Add("a");
  HostObject* const b = Add("b", a);
  Add("c", b);
  HostInsertUnder(b, nullptr);
  EXPECT_EQ(Tree(), "a");
  EXPECT_EQ(b->GetDocument(), nullptr);
  EXPECT_EQ(b->GetNext(), nullptr);
  EXPECT_EQ(b->GetUp(), nullptr);
  EXPECT_EQ(Text(b->GetDown()->GetName()), "c");
  EXPECT_EQ(ToHost(Scene().GetFirstKept()), b);
  // The fixture finds nothing left over once the document is gone.
}

TEST_F(SceneHierarchy, DetachingAfterRemovingLeavesItToTheDocumentToo)
{
  HostObject* const a = Add("a");
  HostRemove(a);
  EXPECT_EQ(Scene().GetFirstKept(), nullptr);
  HostInsertUnder(a, nullptr);
  EXPECT_EQ(ToHost(Scene().GetFirstKept()), a);
}

TEST_F(SceneHierarchy, DetachedObjectComesBackOrIsFreed)
{
  HostObject* const a = Add("a");
  HostObject* const b = Add("b");
  HostObject* const c = Add("c");
  HostInsertUnder(a, nullptr);
  HostInsertUnder(b, nullptr);
  HostInsertUnder(c, nullptr);
  HostInsertUnder(c, nullptr);  // once more changes nothing
  HostInsertObject(Document(), b, nullptr, nullptr);
  HostNode::Free(a);  // no mistake: it stands in no hierarchy
  EXPECT_EQ(Tree(), "b");
  EXPECT_EQ(ToHost(Scene().GetFirstKept()), c);
  EXPECT_EQ(HeadlessDocument::GetNextKept(Scene().GetFirstKept()), nullptr);
}

TEST_F(SceneHierarchy, DetachingWhatWasInNoDocumentLeavesItToTheCaller)
{
  HostObject* const x = Make("x");
  HostInsertUnder(x, nullptr);
  HostRemove(x);
  HostInsertUnder(x, nullptr);
  FreeDocument();
  HostNode::Free(x);
}

TEST_F(SceneHierarchy, RemovedObjectOutlivesItsDocument)
{
  HostObject* const a = Add("a");
  HostRemove(a);
  FreeDocument();
  HostInsertUnder(a, nullptr);  // the document that would keep it is gone
  EXPECT_EQ(Text(a->GetName()), "a");
  HostNode::Free(a);
}

TEST_F(SceneHierarchy, FreeingWhatIsInsertedTakesItOutAndIsCounted)
{
  HostObject* const a = Add("a");
  Add("b", a);
  Add("c");
  HostTag* const tag = a->MakeTag(kPhongTagType);
  HostNode::Free(tag);
  EXPECT_EQ(a->GetFirstTag(), nullptr);
  HostNode::Free(a);
  EXPECT_EQ(Tree(), "c");
  _freedWhileInserted = 2;
}

TEST_F(SceneHierarchy, WhatBelongsToTheDocumentIsNotFreedAlone)
{
  HostLayer* const layer = Document()->GetLayerRoot()->Add();
  HostTake* const take = Document()->GetTakeData()->AddTake("t"_s);
  HostNode::Free(layer);
  HostNode::Free(take);
  EXPECT_EQ(Scene().GetLayerRoot().GetLayerCount(), 1);
  EXPECT_EQ(Scene().GetTakeData().GetTakeCount(), 2);
  _freedWhileInserted = 2;
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
  morphs->AddMorph();
  ASSERT_TRUE(morphs->StoreObject(morphs->AddMorph(), Document(), target));
  ASSERT_TRUE(take->FindOrAddOverride(Document()->GetTakeData(), target, HostDescId(1), HostValue(1.0)));
  ASSERT_EQ(morphs->GetMorph(1)->GetObject(), target);
  ASSERT_EQ(texture->GetMaterial(), material);

  target->Remove();
  HostNode::Free(target);
  ToHeadless(material)->Remove();
  HostNode::Free(material);

  EXPECT_EQ(holder->GetReference(), nullptr);
  HostValue value;
  ASSERT_TRUE(holder->GetParameter(HostDescId(500), value));
  EXPECT_EQ(value.GetKind(), HostValueKind::kLink);
  EXPECT_EQ(value.GetLink(), nullptr);
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
  std::vector<HostObject*> holders;
  for (int i = 0; i < 200; ++i)
    holders.push_back(Add("holder", nullptr, kInstanceObjectType));
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

TEST_F(SceneHierarchy, OnlyInstancesHaveAReference)
{
  HostObject* const shown = Add("shown");
  EXPECT_FALSE(Add("null")->SetReference(shown));
  EXPECT_TRUE(Add("instance", nullptr, kInstanceObjectType)->SetReference(shown));
  HostObject* const second = Add("second", nullptr, kSecondInstanceObjectType);
  EXPECT_TRUE(second->SetReference(shown));
  EXPECT_TRUE(second->SetReference(nullptr));
  EXPECT_EQ(second->GetReference(), nullptr);
}

TEST_F(SceneHierarchy, UnknownTypesAreRefused)
{
  EXPECT_EQ(HostAllocObject(4711), nullptr);
  EXPECT_EQ(HostAllocObject(0), nullptr);
  EXPECT_EQ(HostTag::Alloc(4711), nullptr);
  EXPECT_EQ(HostMaterial::Alloc(5704), nullptr);
  EXPECT_EQ(HostPolygonObject::Alloc(-1, 0), nullptr);
  EXPECT_EQ(HostPolygonObject::Alloc(0, -1), nullptr);
}

TEST_F(SceneHierarchy, VisibilityIsKeptPerSelector)
{
  HostObject* const a = Add("a");
  a->SetVisibility(kRenderVisibility, kHiddenMode);
  a->SetVisibility(7, 3);
  EXPECT_EQ(a->GetVisibility(kEditorVisibility), 0);
  EXPECT_EQ(a->GetVisibility(kRenderVisibility), 1);
  EXPECT_EQ(a->GetVisibility(7), 0);
}

TEST_F(SceneHierarchy, ChainOfAMillionIsBuiltWalkedAndFreed)
{
  constexpr Int kDepth = 1000000;
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
  Int count = 0;
  for (const HeadlessObject* object = Scene().GetFirstObject(); object; object = HeadlessDocument::GetNextInDocument(object))
    ++count;
  EXPECT_EQ(count, kDepth);
  HostObject* const half = Document()->GetFirstObject()->GetDown();
  HostInsertUnder(half, nullptr);
  EXPECT_EQ(Tree(), "root");
}

TEST_F(SceneHierarchy, ManyChildrenAreFreed)
{
  HostObject* const parent = Add("parent");
  for (int i = 0; i < 50000; ++i)
    HostAllocObject(kNullObjectType)->InsertUnderLast(i % 2 ? parent : parent->GetDown() ? parent->GetDown() : parent);
  parent->Remove();
  HostNode::Free(parent);
  EXPECT_EQ(Tree(), "");
}

}  // namespace
}  // namespace q7z::test
