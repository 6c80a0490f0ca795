#pragma once

// DocumentHost: a host with a folder for files, whose calls can be made to fail. DocumentLoad: one load of a file by the parser
// under it, with everything that it leaves behind.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugin/document/gltfparse.h"
#include "tests/document/testjson.h"
#include "tests/support/faultyfiles.h"
#include "tests/support/gltfbuilders.h"
#include "tests/support/testfolder.h"
#include "tests/support/testhost.h"

namespace q7z::test
{

inline Url PathUrl(std::string_view path)
{
  return Url::FromPath(String::Create(path).GetValue()).GetValue();
}

struct DocumentHost
{
  DocumentHost() : files(host.Host().GetTables().file) { host.Host().GetTables().file = &files; }

  TestHost host;
  FaultyFiles files;
  TestFolder folder;
};

class DocumentLoad : public DocumentHost
{
public:
  /// @return the error's message; empty for success.
  std::string RunText(std::string_view text) { return Run(text, false); }
  std::string RunGlb(const Bytes& bytes) { return Run(bytes, true); }

  /// "<class> <text>" of each.
  std::vector<std::string> GetMessages() const
  {
    std::vector<std::string> messages;
    for (const JobMessage& message : job.GetMessages())
      messages.push_back(std::to_string(static_cast<int>(message.messageClass)) + " " + message.text);
    return messages;
  }
  GltfData& GetData() { return load->GetGltfData(); }

  HeadlessJob job;
  ImportOptions options;
  std::optional<GltfLoad> load;  // the last one

private:
  template <typename Text>
  std::string Run(const Text& text, Bool isGlb)
  {
    load.emplace(PathUrl(folder.Write("a", text)), isGlb, &job);
    load->GetOptions() = std::move(options);
    files.calls = 0;
    GltfParser parser;
    Result<void> result = parser.Init(&*load, load->GetFileUrl());
    if (!result.HasError())
      result = parser.Load(&job);
    EXPECT_EQ(files.liveFiles, 0);
    return ErrorText(result);
  }
};

}  // namespace q7z::test
