#pragma once

// What the tests of the host's services share: places of files and their content.

#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>
#include <set>

#include "framework/url.h"
#include "host/services/headlessfiles.h"
#include "tests/framework/text.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{

inline Url MakeUrl(const std::filesystem::path& path)
{
  return Url::FromPath(MakeString(path.string())).GetValue();
}

inline std::string ReadText(const std::filesystem::path& path)
{
  std::ifstream file(path, std::ios::binary);
  return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(no file)";
}

using Warnings = std::multiset<std::string>;

/// What was told of files that are left out.
class RecordedWarnings final : public FileWarnings
{
public:
  Warnings texts;
  void AddWarning(const std::string& text) override
  {
    const std::lock_guard lock(_mutex);
    texts.insert(text);
  }

private:
  std::mutex _mutex;
};
}  // namespace q7z::test
