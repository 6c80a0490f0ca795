// Memory that runs out: every request fails once, and each time there is no document, no leftover and the right error.

#include <functional>

#include <gtest/gtest.h>

#include "host/scenefile/inspect.h"
#include "tests/scenefile/scenetext.h"
#include "tests/support/failingmemory.h"

namespace q7z::test
{
namespace
{

/// Lets the first, second, ... request of work fail until it runs through.
/// @param dispensable  how many of the requests work gets along without.
void Sweep(const std::function<Error()>& work, Int dispensable = 0)
{
  constexpr Int kMostRequests = 10000;
  Int survived = 0;
  for (Int failAt = 1; failAt < kMostRequests; ++failAt)
  {
    const Int before = CountNodes();
    FailAllocation(failAt);
    const Error error = work();
    const Int failed = StopFailingAllocations();
    ASSERT_EQ(CountNodes(), before) << "request " << failAt;
    if (failed == 0)
    {
      EXPECT_FALSE(error);
      EXPECT_LE(survived, dispensable);
      return;
    }
    survived += !error;
    ASSERT_TRUE(!error || error.GetClass() == ErrorClass::kOutOfMemory) << "request " << failAt;
  }
  FAIL() << "no end of requests";
}

TEST(SceneMemory, ReadingWithout)
{
  constexpr Int kBufferOfSorting = 1;  // the sorting of the ids is slower without
  Sweep([] { return ReadSceneDocument(kEverything, "folder").GetError(); }, kBufferOfSorting);
}

TEST(SceneMemory, RefusingWithout)
{
  const std::string text = MakeText(R"("objects": [{"id": 1, "type": 5140, "layer": 5}])");
  const std::string refusal = GetRefusal(text);
  // It is an error of memory, or the whole refusal; never half of one, and never a document.
  constexpr Int kMostRequests = 1000;
  for (Int failAt = 1; failAt < kMostRequests; ++failAt)
  {
    FailAllocation(failAt);
    const Result<DocumentOwner> document = ReadSceneDocument(text, "");
    const Int failed = StopFailingAllocations();
    ASSERT_TRUE(document.HasError());
    if (failed == 0)
    {
      EXPECT_EQ(document.GetError().GetMessage().GetView(), refusal);
      return;
    }
    const Error& error = document.GetError();
    EXPECT_TRUE(error.GetClass() == ErrorClass::kOutOfMemory || error.GetMessage().GetView() == refusal)
      << "request " << failAt << ": " << error.GetMessage().GetView();
  }
  FAIL() << "no end of requests";
}

/// Takes everything and keeps nothing.
class NoSink final : public ByteSink
{
public:
  Result<void> Write(std::string_view) noexcept override { return {}; }
};

TEST(SceneMemory, WritingWithout)
{
  const DocumentOwner document = Read(kEverything);
  ASSERT_TRUE(document);
  NoSink sink;
  Sweep([&] { return WriteSceneDocument(*document, "", sink).GetError(); });
}

TEST(SceneMemory, ShowingWithout)
{
  const DocumentOwner document = Read(kEverything);
  ASSERT_TRUE(document);
  NoSink sink;
  Sweep([&] { return PrintTree(*document, {}, sink).GetError(); });
}

// The densest texts: numbers of one digit, and empty arrays inside arrays.
TEST(SceneMemory, RequestsStayInProportionToTheText)
{
  std::string numbers = "0";
  std::string arrays = "[]";
  for (int i = 1; i < 30000; ++i)
  {
    numbers += ",0";
    arrays += ",[]";
  }
  for (const std::string& elements : {numbers, arrays})
  {
    const std::string text = MakeTagText(R"({"id": 2, "type": 1019365, "joints": [1], "weights": [)" + elements + "]}");
    FailAllocation(INT64_MAX);
    EXPECT_NE(GetRefusal(text), "");
    EXPECT_LT(GetLargestAllocation(), 16 * static_cast<Int>(text.size()));
    StopFailingAllocations();
  }
}

}  // namespace
}  // namespace q7z::test
