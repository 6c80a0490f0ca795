// Names of files between the host's form and that of Windows.

#include "host/platform/windowspath.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "host/platform/platform.h"

namespace q7z::test
{
namespace
{

struct PathCase
{
  const char* path;
  const wchar_t* system;
};
const PathCase kPathCases[] = {
  {"C:/a/b.gltf", L"\\\\?\\C:\\a\\b.gltf"},
  {"C:/a/./b/../c d.glb", L"\\\\?\\C:\\a\\c d.glb"},
  {"C:/", L"\\\\?\\C:\\"},
  {"//server/share/a.glb", L"\\\\?\\UNC\\server\\share\\a.glb"},
  {"C:/\xC3\xA4\xE2\x99\xBB\xF0\x9F\x9A\xA2.glb", L"\\\\?\\C:\\\u00E4\u267B\U0001F6A2.glb"},
  {"//./pipe/a", L"\\\\.\\pipe\\a"},
  {"NUL", L"\\\\.\\NUL"},
};

TEST(WindowsPath, BecomesTheSystems)
{
  for (const PathCase& row : kPathCases)
    EXPECT_EQ(ToSystemPath(row.path), row.system) << row.path;
}

TEST(WindowsPath, NamesNoStreamOfAFile)
{
  for (const char* const path : {"C:/a.png:b", "a:b:c", "tex/a:$DATA", ""})
  {
    EXPECT_EQ(ToSystemPath(path), L"") << path;
    EXPECT_EQ(GetFileSystemType(path), HostFileSystemType::kNone) << path;
  }
}

TEST(WindowsPath, ComesBackWithSlashes)
{
  EXPECT_EQ(FromSystemPath(L"\\\\?\\C:\\a\\b"), "C:/a/b");
  EXPECT_EQ(FromSystemPath(L"\\\\?\\UNC\\server\\share\\a"), "//server/share/a");
  EXPECT_EQ(FromSystemPath(L"\u00E4\\b"), "\xC3\xA4/b");
}

TEST(WindowsPath, IsTakenInEitherForm)
{
  EXPECT_EQ(TakePath("C:\\a\\b.glb"), "C:/a/b.glb");
  EXPECT_EQ(TakePath("\\\\server\\share\\a"), "//server/share/a");
  EXPECT_EQ(TakePath("..\\a/b"), "../a/b");
  EXPECT_TRUE(TakePath("C:a").starts_with("C:/"));
}

TEST(WindowsPath, HasAFolderThatKeepsItsRoot)
{
  EXPECT_EQ(GetFolderOf("C:/a.glb"), "C:/");
  EXPECT_EQ(GetFolderOf("C:/a/b.glb"), "C:/a");
}

TEST(WindowsPath, LeadsToADevice)
{
  EXPECT_EQ(GetFileSystemType("NUL"), HostFileSystemType::kOther);
  std::FILE* const stream = OpenDeviceStream("NUL");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(std::fputs("gone", stream) < 0, false);
  std::fclose(stream);
  PlatformFile file;
  EXPECT_FALSE(file.Open("NUL", PlatformOpen::kRead));
}

}  // namespace
}  // namespace q7z::test
