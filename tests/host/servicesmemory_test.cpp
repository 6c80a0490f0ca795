// Memory that runs out: each request of a service fails once, and every time the answer says so, nothing throws,
// and the next try succeeds.

#include <algorithm>
#include <cstdlib>

#include "host/services/base64.h"
#include "host/services/headlessfiles.h"
#include "host/services/headlesshash.h"
#include "host/services/headlessjob.h"
#include "host/services/headlessjobs.h"
#include "host/services/headlessjson.h"
#include "tests/host/servicesupport.h"
#include "tests/support/sweep.h"

namespace q7z::test
{

namespace
{

/// Runs the ranges one after the other, so that each run asks for the same memory.
class JobsInOrder final : public HostJobs
{
public:
  Result<void> ParallelFor(Int count, Int grain, RangeFunction function, void* context) noexcept override
  {
    for (Int first = 0; first < count; first += grain)
      RETURN_IF_ERROR(function(context, first, std::min(first + grain, count)));
    return {};
  }
};

TEST(OutOfMemory, IsAnError)
{
  const TestFolder folder;
  const std::string json =
    R"({"asset":{"version":"2.0","long name to be copied":[1,2.5,true,null,18446744073709551616]},"uri":"data:;base64,)" +
    std::string(5000, 'A') + "\"}";
  const Byte* const bytes = reinterpret_cast<const Byte*>(json.data());
  const Int byteCount = static_cast<Int>(json.size());
  const Url file = MakeUrl(folder.Write("a.json", json));
  const Url inner = MakeUrl(folder / "b/c");
  const String base64 = MakeString(std::string(200, 'A'));
  const Result<BaseArray<Data>> parsed = HeadlessJson().ParseFile(file);
  const DataDictionary dictionary = parsed.GetValue()[0].GetDictionary().GetValue();
  const auto sweep = [&](const char* name, const auto& work)
  {
    SCOPED_TRACE(name);
    bool hasError = false;
    bool isOutOfMemory = false;
    SweepAllocations(
      [&]
      {
        const auto result = work();
        hasError = result.HasError();
        isOutOfMemory = IsOutOfMemory(result);
      },
      [&](bool failed)
      {
        EXPECT_TRUE(hasError == failed && isOutOfMemory == failed);
        EXPECT_EQ(folder.Read("a.json"), json);
      });
  };
  sweep("JSON of a file", [&] { return HeadlessJson().ParseFile(file); });
  sweep("JSON of bytes",
        [&]() -> Result<BaseArray<Data>>
        {
          BaseArray<Byte> copy;
          RETURN_IF_ERROR(copy.AppendCopies(bytes, byteCount));
          return HeadlessJson().ParseBytes(std::move(copy));
        });
  sweep("JSON writing", [&] { return HeadlessJson().Write(dictionary, true); });
  JobsInOrder jobs;
  BaseArray<Data> elements;
  ASSERT_FALSE(elements.Resize(9000).HasError());
  const Data longArray = Data::CreateArray(std::move(elements)).GetValue();
  sweep("JSON writing of a long array", [&] { return WriteJson(longArray, true, &jobs); });
  sweep("base64 decoding", [&] { return HeadlessBase64Decoder().Decode(base64); });
  sweep("base64 encoding", [&] { return HeadlessBase64Encoder().Encode(base64, bytes, byteCount); });
  sweep("hash of a text", [&] { return HeadlessHash().HashText(base64); });
  sweep("hash of a file", [&] { return HeadlessHash().HashFile(file); });
  sweep("folder", [&] { return HeadlessUrlService().CreateFolder(inner); });
  sweep("whole file", [&] { return HeadlessUrlService().Write(file, bytes, byteCount); });
}

// Without memory to remove it the folder stays behind, so it is made where the test cleans up.
TEST(OutOfMemory, TemporaryFolderNeverThrows)
{
  const TestFolder folder;
  ASSERT_EQ(setenv("TMPDIR", folder.GetPath().c_str(), 1), 0);
  Result<Url> base = Url();
  SweepAllocations(
    [&]
    {
      HeadlessUrlService urls;
      base = urls.GetBaseFolder();
    },
    [&](bool) { EXPECT_TRUE(!base.HasError() || base.GetError().GetClass() == ErrorClass::kOutOfMemory) << ErrorText(base); });
  unsetenv("TMPDIR");
}

TEST(OutOfMemory, JobTellsThatMessagesWereLost)
{
  HeadlessJob job;
  const std::string text(100, 'x');
  FailAllocation(1, 1000);
  job.AddMessage(HostMessageClass::kWarning, String(text.data(), 100));
  const Int32 stage = job.AddStage(0.5, String(text.data(), 100));
  EXPECT_GT(StopFailingAllocations(), 0);
  EXPECT_TRUE(job.HasLostMessages());
  EXPECT_TRUE(job.GetMessages().empty());
  EXPECT_EQ(stage, -1);
  job.SetProgress(stage, 1);  // of the stage that nobody sees
  EXPECT_EQ(job.GetProgress(), 0);
}

// Our own request alone: what the library of threads asks for while it starts is beyond us.
TEST(OutOfMemory, ParallelLoopSaysSo)
{
  HeadlessJobs jobs(1);
  Int visited = 0;
  auto body = [&](Int first, Int end) -> Result<void>
  {
    visited += end - first;
    return {};
  };
  FailAllocation(1);
  const Result<void> failed = ParallelFor(jobs, 100, 10, body);
  EXPECT_EQ(StopFailingAllocations(), 1);
  ASSERT_TRUE(failed.HasError());
  EXPECT_EQ(failed.GetError().GetClass(), ErrorClass::kOutOfMemory);
  EXPECT_EQ(visited, 0);
  EXPECT_FALSE(ParallelFor(jobs, 100, 10, body).HasError());
  EXPECT_EQ(visited, 100);
}

}  // namespace

}  // namespace q7z::test
