// Arrays, maps and the memory they come from: the order of a walk, erasing, equal hashes, failed growth, impossible counts.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "framework/basearray.h"
#include "framework/hashmap.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

std::vector<Int> Content(const BaseArray<Int>& array)
{
  return std::vector<Int>(array.begin(), array.end());
}

TEST(BaseArray, AppendedElementMayLieInTheArray)
{
  BaseArray<String> array;
  ASSERT_FALSE(array.Append(MakeString("first")).HasError());
  while (array.GetCount() < 100)
    ASSERT_FALSE(array.Append(array[0]).HasError());
  ASSERT_FALSE(array.CopyFrom(array).HasError());
  array.Erase(0);
  array.Erase(-1);
  array.Erase(99);
  ASSERT_EQ(array.GetCount(), 99);
  EXPECT_EQ(Text(array.GetLast()), "first");
}

TEST(BaseArray, EveryGrowingCallReportsFailureAndKeepsTheElements)
{
  const Int more[] = {7, 8, 9};
  BaseArray<Int> other;
  ASSERT_FALSE(other.AppendCopies(more, 3).HasError());
  const auto failing = [&](auto call)
  {
    BaseArray<Int> array;
    EXPECT_FALSE(array.Append(1).HasError());
    while (array.GetCount() < array.GetCapacity())
      EXPECT_FALSE(array.Append(2).HasError());
    const std::vector<Int> before = Content(array);
    FailAllocation(1);
    const Result<void> result = call(array, array.GetCapacity() + 1);
    EXPECT_EQ(StopFailingAllocations(), 1);
    EXPECT_EQ(Content(array), before);
    return IsOutOfMemory(result);
  };
  EXPECT_TRUE(failing([](auto& array, Int) { return array.Append(3); }));
  EXPECT_TRUE(failing([](auto& array, Int count) { return array.Reserve(count); }));
  EXPECT_TRUE(failing([](auto& array, Int count) { return array.Resize(count); }));
  EXPECT_TRUE(failing([](auto& array, Int count) { return array.ResizeForOverwrite(count); }));
  EXPECT_TRUE(failing([&](auto& array, Int) { return array.CopyFrom(other); }));
  EXPECT_TRUE(failing([&](auto& array, Int) { return array.AppendCopies(more, 3); }));
}

TEST(BaseArray, CountsThatCannotBe)
{
  const Int value = 1;
  BaseArray<Int> array;
  ASSERT_FALSE(array.Append(value).HasError());
  EXPECT_TRUE(IsOutOfMemory(array.Resize(INT64_MAX)));
  EXPECT_TRUE(IsOutOfMemory(array.Reserve(INT64_MAX / 8)));
  EXPECT_TRUE(IsOutOfMemory(array.ResizeForOverwrite(INT64_MAX / 8 + 1)));
  EXPECT_TRUE(IsOutOfMemory(array.AppendCopies(&value, INT64_MAX)));
  EXPECT_FALSE(array.Reserve(-1).HasError());
  EXPECT_FALSE(array.AppendCopies(nullptr, -1).HasError());
  EXPECT_EQ(Content(array), std::vector<Int>{1});
  EXPECT_FALSE(array.Resize(-1).HasError());
  EXPECT_EQ(array.GetFirst(), nullptr);
  ASSERT_FALSE(array.Resize(1).HasError());  // the memory held 1
  EXPECT_EQ(Content(array), std::vector<Int>{0});
}

TEST(Memory, AnswersWithNullWhatItCannotHave)
{
  for (const Int size : {Int(-1), INT64_MIN, INT64_MAX})
    EXPECT_EQ(AllocateMemory(size), nullptr) << size;
  void* const nothing = AllocateMemory(0);
  EXPECT_NE(nothing, nullptr);
  FreeMemory(nothing, 0);
  FreeMemory(nullptr, kLargeBlockBytes);
  FailAllocation(1, 2);
  EXPECT_EQ(AllocateMemory(kLargeBlockBytes - 1), nullptr);
  EXPECT_EQ(AllocateMemory(kLargeBlockBytes), nullptr);
  EXPECT_EQ(StopFailingAllocations(), 2);
}

// Maps.

/// A key whose hash says little, so that probes run into each other.
struct DullKey
{
  Int number = 0;
  friend Bool operator==(const DullKey&, const DullKey&) = default;
};
UInt HashOf(const DullKey& key) noexcept
{
  return static_cast<UInt>(key.number % 3);
}

using Pairs = std::vector<std::pair<Int, Int>>;

/// Keys and values in the order of the walk.
Pairs Walked(const HashMap<DullKey, Int>& map)
{
  Pairs pairs;
  for (const auto& entry : map)
    pairs.emplace_back(entry.GetKey().number, entry.GetValue());
  return pairs;
}

// The same random calls on a map and on a plain list of pairs.
TEST(HashMap, BehavesLikeAListOfPairs)
{
  for (const UInt32 start : {1u, 2u, 3u})
  {
    SCOPED_TRACE(start);
    std::mt19937 random(start);
    HashMap<DullKey, Int> map;
    Pairs list;
    for (Int step = 0; step < 4000; ++step)
    {
      const DullKey key{static_cast<Int>(random() % 60)};
      const auto found = std::find_if(list.begin(), list.end(), [&](const auto& pair) { return pair.first == key.number; });
      const Bool isIn = found != list.end();
      ASSERT_EQ(map.Contains(key), isIn) << step;
      if (random() % 2)
      {
        ASSERT_FALSE(map.Set(key, step).HasError());
        isIn ? void(found->second = step) : void(list.emplace_back(key.number, step));
      }
      else
      {
        ASSERT_EQ(map.Erase(key), isIn) << step;
        if (isIn)
          list.erase(found);
      }
      ASSERT_EQ(map.GetCount(), std::ssize(list)) << step;
    }
    EXPECT_EQ(Walked(map), list);
  }
}

TEST(HashMap, MapOfComingAndGoingKeysStaysSmall)
{
  HashMap<Int, Int> map;
  ASSERT_FALSE(map.Set(-100, 0).HasError());
  StopFailingAllocations();  // counts from here
  for (Int key = 0; key < 20000; ++key)
  {
    ASSERT_FALSE(map.Set(key, key).HasError());
    ASSERT_EQ(map.Erase(key - 5), key >= 5);
  }
  EXPECT_LT(CountAllocations(), 10);
  EXPECT_EQ(map.Insert(-100, 1).GetError().GetClass(), ErrorClass::kIllegalState) << "it is there";
  EXPECT_EQ(map.GetCount(), 6);
  EXPECT_EQ(map.begin()->GetKey(), -100);
}

TEST(HashMap, FailedGrowthLosesNothing)
{
  Int refused = 1;
  for (Int failAt = 1; refused > 0; ++failAt)
  {
    SCOPED_TRACE(failAt);
    HashMap<DullKey, Int> map;
    Pairs expected;
    expected.reserve(40);
    FailAllocation(failAt);
    for (Int key = 0; key < 40; ++key)
    {
      const Result<Int*> set = map.Set(DullKey{key}, key);
      EXPECT_EQ(set.HasError(), IsOutOfMemory(set));
      if (!set.HasError())
        expected.emplace_back(key, key);
    }
    refused = StopFailingAllocations();
    EXPECT_EQ(map.GetCount(), 40 - refused);
    EXPECT_EQ(Walked(map), expected);
    EXPECT_TRUE(refused > 0 || failAt > 4) << "entries and slots grow more than once each";
  }
}

TEST(HashMap, ReservedRoomNeedsNoMoreMemory)
{
  HashMap<Int, Int> map;
  ASSERT_FALSE(map.Reserve(1000).HasError());
  FailAllocation(1, 1000);
  for (Int key = 0; key < 1000; ++key)
    EXPECT_FALSE(map.Set(key, key).HasError()) << key;
  EXPECT_EQ(StopFailingAllocations(), 0);
}

}  // namespace
}  // namespace q7z::test
