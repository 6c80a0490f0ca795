// Arrays and the memory they come from: growth, failed growth, lifetimes, large blocks.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "framework/basearray.h"
#include "framework/string.h"
#include "tests/framework/text.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

/// Counts how many of its kind live.
struct Counted
{
  Counted() noexcept { ++live; }
  explicit Counted(Int value) noexcept : number(value) { ++live; }
  Counted(Counted&& other) noexcept : number(std::exchange(other.number, -1)) { ++live; }
  Counted& operator=(Counted&&) noexcept = default;
  ~Counted() { --live; }
  Int number = 0;
  static inline Int live = 0;
};

template <typename T>
std::vector<T> Content(const BaseArray<T>& array)
{
  return std::vector<T>(array.begin(), array.end());
}

BaseArray<Int> MakeArray(std::initializer_list<Int> values)
{
  BaseArray<Int> array;
  for (const Int value : values)
    DropError(array.Append(value));  // the sweep below fails it
  return array;
}

TEST(BaseArray, AppendedElementMayLieInTheArray)
{
  BaseArray<String> array;
  ASSERT_FALSE(array.Append(Make("first")).HasError());
  while (array.GetCount() < 100)
    ASSERT_FALSE(array.Append(array[0]).HasError());
  EXPECT_EQ(Text(array.GetLast()), "first");
}

TEST(BaseArray, FailedGrowthKeepsTheElements)
{
  for (Int failAt = 1;; ++failAt)
  {
    BaseArray<String> array;
    FailAllocation(failAt);
    for (int i = 0; i < 60; ++i)
    {
      const Result<void> appended = array.Append("text"_s);
      EXPECT_EQ(appended.HasError(), IsOutOfMemory(appended));
    }
    const Int failed = StopFailingAllocations();
    ASSERT_EQ(array.GetCount(), 60 - failed);
    for (const String& text : array)
      EXPECT_EQ(text, "text"_s);
    if (failed == 0)
      break;
  }
}

TEST(BaseArray, EveryGrowingCallReportsFailure)
{
  const Int more[] = {7, 8, 9};
  const BaseArray<Int> other = MakeArray({4, 5});
  const auto failing = [&](auto call)
  {
    BaseArray<Int> array = MakeArray({1, 2});
    const Int capacity = array.GetCapacity();
    FailAllocation(1);
    const Result<void> result = call(array, capacity);
    EXPECT_EQ(StopFailingAllocations(), 1);
    EXPECT_EQ(Content(array), (std::vector<Int>{1, 2}));
    return IsOutOfMemory(result);
  };
  EXPECT_TRUE(failing([](auto& array, Int capacity) { return array.Reserve(capacity + 1); }));
  EXPECT_TRUE(failing([](auto& array, Int capacity) { return array.Resize(capacity + 1); }));
  EXPECT_TRUE(failing([](auto& array, Int capacity) { return array.ResizeForOverwrite(capacity + 1); }));
  EXPECT_TRUE(failing([&](auto& array, Int) { return array.CopyFrom(other); }));
  EXPECT_TRUE(failing(
    [&](auto& array, Int capacity)
    {
      array.Truncate(0);
      while (array.GetCount() < capacity)
        DropError(array.Append(0));  // there is room
      const Result<void> appended = array.AppendCopies(more, 3);
      array = MakeArray({1, 2});
      return appended.HasError() ? Result<void>(appended.GetError()) : Result<void>();
    }));
}

TEST(BaseArray, ImpossibleCountsAreOutOfMemory)
{
  BaseArray<Int> array = MakeArray({1});
  EXPECT_TRUE(IsOutOfMemory(array.Resize(INT64_MAX)));
  EXPECT_TRUE(IsOutOfMemory(array.Reserve(INT64_MAX / 8)));
  EXPECT_TRUE(IsOutOfMemory(array.ResizeForOverwrite(INT64_MAX / 8 + 1)));
  const Int value = 0;
  EXPECT_TRUE(IsOutOfMemory(array.AppendCopies(&value, INT64_MAX)));
  EXPECT_EQ(Content(array), std::vector<Int>{1});
}

TEST(BaseArray, NegativeCountsAreNone)
{
  BaseArray<Int> array = MakeArray({1, 2});
  EXPECT_FALSE(array.Reserve(-1).HasError());
  EXPECT_FALSE(array.AppendCopies(nullptr, -1).HasError());
  EXPECT_EQ(array.GetCount(), 2);
  EXPECT_FALSE(array.Resize(-1).HasError());
  EXPECT_TRUE(array.IsEmpty());
  EXPECT_EQ(array.GetFirst(), nullptr);
}

TEST(BaseArray, NewElementsAreZero)
{
  BaseArray<Int> numbers = MakeArray({1, 2, 3});
  numbers.Truncate(1);
  ASSERT_FALSE(numbers.Resize(3).HasError());  // the memory held 2 and 3
  EXPECT_EQ(Content(numbers), (std::vector<Int>{1, 0, 0}));
}

TEST(BaseArray, EraseClosesTheGap)
{
  BaseArray<Int> array = MakeArray({1, 2, 3, 4});
  array.Erase(1);
  EXPECT_EQ(Content(array), (std::vector<Int>{1, 3, 4}));
  array.Erase(2);
  EXPECT_EQ(Content(array), (std::vector<Int>{1, 3}));
  array.Erase(-1);
  array.Erase(2);
  EXPECT_EQ(Content(array), (std::vector<Int>{1, 3}));
}

TEST(BaseArray, EveryElementDiesOnce)
{
  Counted::live = 0;
  {
    BaseArray<Counted> array;
    for (Int i = 0; i < 50; ++i)
      ASSERT_FALSE(array.Append(Counted(i)).HasError());
    EXPECT_EQ(Counted::live, 50);
    array.Erase(10);
    EXPECT_EQ(array[10].number, 11);
    EXPECT_EQ(Counted::live, 49);
    array.Truncate(20);
    EXPECT_EQ(Counted::live, 20);
    ASSERT_FALSE(array.Resize(30).HasError());
    EXPECT_EQ(Counted::live, 30);
    BaseArray<Counted> moved = std::move(array);
    EXPECT_EQ(Counted::live, 30);
    EXPECT_TRUE(array.IsEmpty());
    BaseArray<Counted> target;
    ASSERT_FALSE(target.Resize(5).HasError());
    target = std::move(moved);
    EXPECT_EQ(Counted::live, 30);
    target.Reset();
    EXPECT_EQ(Counted::live, 0);
    EXPECT_EQ(target.GetCapacity(), 0);
  }
  EXPECT_EQ(Counted::live, 0);
}

TEST(BaseArray, CopyIsIndependent)
{
  BaseArray<String> source;
  ASSERT_FALSE(source.Append(Make("a")).HasError());
  BaseArray<String> copy;
  ASSERT_FALSE(copy.Append("old"_s).HasError());
  ASSERT_FALSE(copy.CopyFrom(source).HasError());
  source[0] = "b"_s;
  ASSERT_EQ(copy.GetCount(), 1);
  EXPECT_EQ(Text(copy[0]), "a");
  ASSERT_FALSE(copy.CopyFrom(copy).HasError());
  EXPECT_EQ(Text(copy[0]), "a");
}

TEST(BaseArray, LargeArraysStandOnLargePages)
{
  BaseArray<Byte> array;
  ASSERT_FALSE(array.Resize(kLargeBlockBytes).HasError());
  EXPECT_EQ(reinterpret_cast<uintptr_t>(array.GetFirst()) % (2 << 20), 0u);
  array.GetLast() = 1;
  // From one kind of block to the other and back.
  ASSERT_FALSE(array.Resize(kLargeBlockBytes + 1).HasError());
  EXPECT_EQ(array[kLargeBlockBytes - 1], 1);
  BaseArray<Byte> small;
  array.Truncate(3);
  ASSERT_FALSE(small.CopyFrom(array).HasError());
  EXPECT_EQ(small.GetCapacity(), 3);
}

TEST(Memory, AnswersImpossibleSizesWithNull)
{
  EXPECT_EQ(AllocateMemory(-1), nullptr);
  EXPECT_EQ(AllocateMemory(INT64_MIN), nullptr);
  EXPECT_EQ(AllocateMemory(INT64_MAX), nullptr);
  void* const nothing = AllocateMemory(0);
  EXPECT_NE(nothing, nullptr);
  FreeMemory(nothing, 0);
  FreeMemory(nullptr, 0);
  FreeMemory(nullptr, kLargeBlockBytes);
}

TEST(Memory, BothKindsOfBlocksCanFail)
{
  FailAllocation(1, 2);
  EXPECT_EQ(AllocateMemory(kLargeBlockBytes - 1), nullptr);
  EXPECT_EQ(AllocateMemory(kLargeBlockBytes), nullptr);
  EXPECT_EQ(StopFailingAllocations(), 2);
}

// The double itself. The functions are called by name: a compiler may leave a new-expression and its delete out.
TEST(FailingMemory, RefusesEveryFormOfNew)
{
  constexpr std::align_val_t kWide{64};
  FailAllocation(2, 8);
  ::operator delete(::operator new(4));
  EXPECT_THROW(::operator delete(::operator new(4)), std::bad_alloc);
  EXPECT_THROW(::operator delete[](::operator new[](4)), std::bad_alloc);
  EXPECT_THROW(::operator delete(::operator new(4, kWide), kWide), std::bad_alloc);
  EXPECT_THROW(::operator delete[](::operator new[](4, kWide), kWide), std::bad_alloc);
  EXPECT_EQ(::operator new(4, std::nothrow), nullptr);
  EXPECT_EQ(::operator new[](4, std::nothrow), nullptr);
  EXPECT_EQ(::operator new(4, kWide, std::nothrow), nullptr);
  EXPECT_EQ(::operator new[](4, kWide, std::nothrow), nullptr);
  ::operator delete(::operator new(4, std::nothrow));
  EXPECT_EQ(CountAllocations(), 10);
  EXPECT_EQ(StopFailingAllocations(), 8);
  ::operator delete(::operator new(4));
  EXPECT_EQ(StopFailingAllocations(), 0);
}

}  // namespace
}  // namespace q7z::test
