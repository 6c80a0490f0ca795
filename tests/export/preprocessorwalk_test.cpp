// The walk that all passes use, and what it is like at sizes that only machines make.

#include <atomic>
#include <mutex>
#include <set>
#include <thread>

#include "plugin/module/hostservices.h"
#include "tests/export/preprocessorfixture.h"

namespace q7z::test
{
namespace
{

Bool IsClosed(HostObject* op) noexcept
{
  return Text(op->GetName()) == "closed";
}

class HostWalkTest : public PreprocessorTest
{
protected:
  /// a(b(c, d), closed(e)), f(g)
  void AddSome()
  {
    HostObject* const a = Add("a");
    HostObject* const b = Add("b", a);
    Add("c", b);
    Add("d", b);
    Add("e", Add("closed", a));
    Add("g", Add("f"));
  }
};

TEST_F(HostWalkTest, GoesLevelByLevel)
{
  AddSome();
  std::string seen;
  const auto visit = [&seen](HostObject* op) -> Result<void>
  {
    seen += Text(op->GetName()) + " ";
    return {};
  };
  EXPECT_FALSE(WalkWith(Document(), visit, true, WalkAll).HasError());
  EXPECT_EQ(seen, "a f b closed g c d e ");
  seen.clear();
  EXPECT_FALSE(WalkWith(Document(), visit, true, IsClosed).HasError());
  EXPECT_EQ(seen, "a f b closed g c d ");
}

TEST_F(HostWalkTest, AnErrorEndsIt)
{
  AddSome();
  int visits = 0;
  const auto visit = [&visits](HostObject* op) -> Result<void>
  {
    ++visits;
    return Text(op->GetName()) == "b" ? Result<void>(Error::OutOfMemory()) : Result<void>();
  };
  EXPECT_TRUE(WalkWith(Document(), visit, true, WalkAll).HasError());
  EXPECT_EQ(visits, 3);
}

TEST_F(HostWalkTest, PostOrderHasChildrenFirst)
{
  EXPECT_EQ(FindFirstInPostOrder(Document()->GetFirstObject()), nullptr);
  AddSome();
  std::string seen;
  for (HostObject* op = FindFirstInPostOrder(Document()->GetFirstObject()); op; op = FindNextInPostOrder(op))
    seen += Text(op->GetName()) + " ";
  EXPECT_EQ(seen, "c d b e closed a g f ");
  EXPECT_EQ(CountObjects(Document()), 8);
  EXPECT_EQ(CountTree(Document()->GetFirstObject()), 6);
}

/// Runs chunks from the last to the first and notes how long they are.
class BackwardJobs final : public HostJobs
{
public:
  Result<void> ParallelFor(Int count, Int grain, RangeFunction function, void* context) noexcept override
  {
    grains.insert(grain);
    for (Int first = (count - 1) / grain * grain; first >= 0; first -= grain)
      RETURN_IF_ERROR(function(context, first, std::min(first + grain, count)));
    return {};
  }
  std::set<Int> grains;
};

TEST_F(HostWalkTest, ChunksHaveSixteenObjectsWhereNoOrderIsAskedFor)
{
  BackwardJobs jobs;
  Host().Host().ReplaceService(HostJobs::kId, static_cast<HostJobs*>(&jobs));
  for (int i = 0; i < 40; ++i)
    Add(std::to_string(i));
  std::vector<int> seen;
  const auto visit = [&seen](HostObject* op) -> Result<void>
  {
    seen.push_back(std::stoi(Text(op->GetName())));
    return {};
  };
  EXPECT_FALSE(WalkWith(Document(), visit, false, WalkAll).HasError());
  ASSERT_EQ(seen.size(), 40u);
  EXPECT_EQ(seen[0], 32);
  EXPECT_EQ(seen[8], 16);
  EXPECT_EQ(jobs.grains, std::set<Int>{16});
  seen.clear();
  EXPECT_FALSE(WalkWith(Document(), visit, true, WalkAll).HasError());
  EXPECT_EQ(seen[0], 0);
}

TEST_F(HostWalkTest, ThreadsVisitEachObjectOnce)
{
  HostObject* const parent = Add("parent");
  for (int i = 0; i < 500; ++i)
    Add(std::to_string(i), parent);
  std::mutex mutex;
  std::multiset<HostObject*> seen;
  const auto visit = [&](HostObject* op) -> Result<void>
  {
    const std::lock_guard lock(mutex);
    seen.insert(op);
    return {};
  };
  EXPECT_FALSE(WalkWith(Document(), visit, false, WalkAll).HasError());
  EXPECT_EQ(seen.size(), 501u);
  EXPECT_EQ(std::set<HostObject*>(seen.begin(), seen.end()).size(), 501u);
}

/// Eight threads, whatever the machine has.
class ThreadJobs final : public HostJobs
{
public:
  Result<void> ParallelFor(Int count, Int grain, RangeFunction function, void* context) noexcept override
  {
    std::atomic<Int> next{0};
    std::atomic<bool> failed{false};
    const auto work = [&]
    {
      for (Int first = next.fetch_add(grain); first < count; first = next.fetch_add(grain))
        failed = failed || function(context, first, std::min(first + grain, count)).HasError();
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
      threads.emplace_back(work);
    for (std::thread& thread : threads)
      thread.join();
    return failed ? Result<void>(Error::OutOfMemory()) : Result<void>();
  }
};

// All stages over many animated objects, on more threads than cores, for tools that watch threads.
TEST_F(HostWalkTest, AllStagesRunOnManyObjects)
{
  ThreadJobs jobs;
  Host().Host().ReplaceService(HostJobs::kId, static_cast<HostJobs*>(&jobs));
  HostObject* const joint = Add("joint", nullptr, kJointObjectType);
  HostObject* const target = AddStrip("target", 2);
  for (int i = 0; i < 100; ++i)
  {
    HostPolygonObject* const op = AddStrip(std::to_string(i), 2);
    Animate(op, {kPositionParameter, kComponentX}, {{0, 0}, {1, Float(i)}});
    if (i % 3 == 0)
      Bind(op, {joint});
    if (i % 4 == 0)
      Hide(op);
    if (i % 5 == 0)
    {
      auto* const morphs = static_cast<HostPoseMorphTag*>(op->MakeTag(kPoseMorphTagType));
      morphs->StoreObject(morphs->AddMorph(), Document(), ToPoly(op->Clone()));
      morphs->StoreObject(morphs->AddMorph(), Document(), target);
    }
    AddStrip("child " + std::to_string(i), 1, op);
  }
  SetTimes(4, {0, 1}, {1, 1});
  _options.bakeAnimation = true;
  _options.exportSkins = true;
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(_count, 202);
  EXPECT_EQ(Values(Find("98"), {kPositionParameter, kComponentX}), "0, 24.5, 49, 73.5, 98");
}

TEST_F(HostWalkTest, ADeepChainIsLinear)
{
  constexpr int kDepth = 100'000;
  HostOwner<HostObject> top(AddStrip("leaf", 1));
  top->Remove();
  for (int i = 0; i < kDepth; ++i)
  {
    HostObject* const parent = HostObject::Alloc(kNullObjectType);
    HostObject::Alloc(kNullObjectType)->InsertUnderLast(parent);  // an empty branch on every level
    top.release()->InsertUnderLast(parent);
    top.reset(parent);
  }
  Document()->InsertObject(top.release(), nullptr, nullptr);
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(_count, kDepth + 1);
}

TEST_F(HostWalkTest, AnEmptyChainGoesWhole)
{
  constexpr int kDepth = 100'000;
  HostObject* parent = Add("top");
  for (int i = 0; i < kDepth; ++i)
  {
    HostObject* const child = HostObject::Alloc(kNullObjectType);
    child->InsertUnder(parent);
    parent = child;
  }
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Outline(), "");
  EXPECT_EQ(_count, 0);
}

TEST_F(HostWalkTest, ManySiblingsAreLinear)
{
  constexpr int kCount = 200'000;
  for (int i = 0; i < kCount; ++i)
    Add("", nullptr, i % 2 ? kNullObjectType : kCameraObjectType);
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(_count, kCount / 2);
}

// Tags are walked, not counted anew for each.
TEST_F(HostWalkTest, ManyTagsAreLinear)
{
  HostPolygonObject* const op = AddStrip("strip", 2);
  HostMaterial* const material = AddMaterial("red");
  for (int i = 0; i < 20'000; ++i)
    Select(op, std::to_string(i), {});
  for (int i = 0; i < 20'000; ++i)
    Texture(op, std::to_string(i), material);
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Outline(), "strip#2");
  EXPECT_EQ(FindOriginal("strip")->GetTagCount(kTextureTagType), 0);
}

}  // namespace
}  // namespace q7z::test
