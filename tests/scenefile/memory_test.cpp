// Memory that runs out: every request fails once, and each time there is no document, no leftover and the right error.

#include <functional>

#include <gtest/gtest.h>

#include "host/scene/headlessalias.h"
#include "host/scenefile/inspect.h"
#include "tests/scenefile/scenetext.h"
#include "tests/support/sweep.h"

namespace q7z::test
{
namespace
{

/// Lets the first, second, ... request of work fail until it runs through: its answer is an error of memory then, or the usual one.
/// @param usual  the message of the error that work ends with when there is memory; "" for none.
/// @param dispensable  how many of the requests work gets along without.
void Sweep(const std::function<Error()>& work, std::string_view usual = "", Int dispensable = 0)
{
  Int before = 0;
  Error error;
  SweepAllocations(
    [&]
    {
      before = CountNodes();
      error = work();
    },
    [&](Bool failed)
    {
      ASSERT_EQ(CountNodes(), before);
      const Bool isUsual = error ? error.GetMessage().GetView() == usual : usual.empty();
      ASSERT_TRUE(isUsual || (failed && error.GetClass() == ErrorClass::kOutOfMemory));
      dispensable -= failed && isUsual && !error;
    });
  EXPECT_GE(dispensable, 0);
}

/// Takes everything and keeps nothing.
class NoSink final : public ByteSink
{
public:
  Result<void> Write(std::string_view) noexcept override { return {}; }
};

TEST(SceneMemory, ReadingRefusingWritingShowingAndCloningWithout)
{
  constexpr Int kBufferOfSorting = 1;  // the sorting of the ids is slower without
  Sweep([] { return ReadSceneDocument(kEverything, "folder").GetError(); }, "", kBufferOfSorting);
  const std::string broken = MakeText(R"("objects": [{"id": 1, "type": 5140, "layer": 5}])");
  Sweep([&] { return ReadSceneDocument(broken, "").GetError(); }, "objects[0].layer: no layer has the id 5");
  const DocumentOwner document = Read(kEverything);
  ASSERT_TRUE(document);
  NoSink sink;
  Sweep([&] { return WriteSceneDocument(*document, "", sink).GetError(); });
  Sweep([&] { return PrintTree(*document, {}, sink).GetError(); });
  Sweep(
    [&]
    {
      const DocumentOwner copy(CloneDocument(document.get()));
      return copy ? Error() : Error::OutOfMemory();
    });
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
