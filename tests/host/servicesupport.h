#pragma once

// What the tests of the host's services share: places of files and their content.

#include <gtest/gtest.h>

#include <filesystem>

#include "framework/url.h"
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

}  // namespace q7z::test
