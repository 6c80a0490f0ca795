// Memory that runs out: each request of a service or of the facade fails once, and every time the answer says so, nothing throws,
// and the next try succeeds.

#include <cstdlib>
#include <functional>

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

/// What a service needs to work on; made before memory runs out.
struct Material
{
  TestFolder folder;
  std::string json =
    R"({"asset":{"version":"2.0","long name to be copied":[1,2.5,true,null,18446744073709551616]},"uri":"data:;base64,)" +
    std::string(5000, 'A') + "\"}";
  Url file = MakeUrl(folder.Write("a.json", json));
  Url target = MakeUrl(folder / "b/out");
  String base64 = MakeString(std::string(200, 'A'));
  DataDictionary dictionary = [this]
  {
    Result<BaseArray<Data>> values = HeadlessJson().ParseFile(file);
    return values.GetValue()[0].GetDictionary().GetValue();
  }();
};

/// One try. @return the error, empty on success.
using Try = Error (*)(Material& material);

template <typename T>
Error ErrorOf(const Result<T>& result)
{
  return result.HasError() ? result.GetError() : Error();
}

const std::pair<const char*, Try> kSweeps[] = {
  {"JsonFile", [](Material& m) { return ErrorOf(HeadlessJson().ParseFile(m.file)); }},
  {"JsonBytes",
   [](Material& m)
   {
     BaseArray<Byte> bytes;
     const Result<void> copied =
       bytes.AppendCopies(reinterpret_cast<const Byte*>(m.json.data()), static_cast<Int>(m.json.size()));
     return copied.HasError() ? copied.GetError() : ErrorOf(HeadlessJson().ParseBytes(std::move(bytes)));
   }},
  {"JsonWriting", [](Material& m) { return ErrorOf(HeadlessJson().Write(m.dictionary, true)); }},
  {"Base64Decoding", [](Material& m) { return ErrorOf(HeadlessBase64Decoder().Decode(m.base64)); }},
  {"Base64Encoding",
   [](Material& m)
   {
     return ErrorOf(HeadlessBase64Encoder().Encode(m.base64, reinterpret_cast<const Byte*>(m.json.data()),
                                                   static_cast<Int>(m.json.size())));
   }},
  {"HashOfText", [](Material& m) { return ErrorOf(HeadlessHash().HashText(m.base64)); }},
  {"HashOfFile", [](Material& m) { return ErrorOf(HeadlessHash().HashFile(m.file)); }},
  {"Folder", [](Material& m) { return ErrorOf(HeadlessUrlService().CreateFolder(m.target.GetDirectory().GetValue())); }},
  {"WholeFile",
   [](Material& m)
   {
     return ErrorOf(HeadlessUrlService().Write(m.file, reinterpret_cast<const Byte*>(m.json.data()),
                                               static_cast<Int>(m.json.size())));
   }},
};

TEST(OutOfMemory, IsAnError)
{
  for (const auto& [name, work] : kSweeps)
  {
    SCOPED_TRACE(name);
    Material material;
    Error error;
    SweepAllocations([&] { error = work(material); },
                     [&](bool failed)
                     {
                       EXPECT_EQ(static_cast<bool>(error), failed) << Text(error.GetMessage());
                       EXPECT_TRUE(!failed || error.GetClass() == ErrorClass::kOutOfMemory) << Text(error.GetMessage());
                       EXPECT_EQ(ReadText(material.folder / "a.json"), material.json);
                     });
  }
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
