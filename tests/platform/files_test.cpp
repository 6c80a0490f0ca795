// Files and folders under names that a system could stumble over, on each system in the same way.

#include <cerrno>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "host/platform/platform.h"
#include "host/services/wholefile.h"
#include "tests/support/testfolder.h"

namespace q7z::test
{
namespace
{

bool Write(const std::string& path, std::string_view text)
{
  PlatformFile file;
  return file.Open(path.c_str(), PlatformOpen::kReplace) && file.WriteAt(0, text.data(), static_cast<Int>(text.size())) &&
         file.Close();
}

/// "none" without the file.
std::string Read(const std::string& path)
{
  PlatformFile file;
  if (!file.Open(path.c_str(), PlatformOpen::kRead))
    return "none";
  std::string text(static_cast<size_t>(file.GetLength()), '\0');
  const Int count = file.ReadAt(0, text.data(), file.GetLength());
  return count == file.GetLength() ? text : "short";
}

/// A folder so deep that its path has more than 300 characters.
std::string MakeDeepFolder(const TestFolder& folder)
{
  std::string path = folder.GetPath();
  for (int i = 0; i < 8; ++i)
    path += "/" + std::string(40, static_cast<char>('a' + i));
  EXPECT_TRUE(MakeFolders(path)) << GetSystemReason();
  return path;
}

class PlatformName : public testing::TestWithParam<const char*>
{};

TEST_P(PlatformName, IsKeptByFilesAndFolders)
{
  const TestFolder folder;
  const std::string inner = folder / GetParam();
  ASSERT_TRUE(MakeFolders(inner)) << GetSystemReason();
  EXPECT_TRUE(IsEmptyFolder(inner));
  const std::string path = inner + "/" + GetParam() + ".glb";
  ASSERT_TRUE(Write(path, "first")) << GetSystemReason();
  EXPECT_EQ(Read(path), "first");
  EXPECT_FALSE(IsEmptyFolder(inner));
  EXPECT_EQ(GetFileSystemType(path), HostFileSystemType::kFile);
  EXPECT_EQ(GetFileSystemType(inner), HostFileSystemType::kFolder);
  EXPECT_EQ(ResolvePath(inner + "/./" + GetParam() + ".glb"), ResolvePath(inner) + "/" + GetParam() + ".glb");
}

INSTANTIATE_TEST_SUITE_P(Rows, PlatformName,
                         testing::Values("plain", "with blank", "\xC3\xA4\xC3\xB6", "\xE6\xB8\xAF", "\xE2\x9D\xA4\xE2\x99\xBB",
                                         "\xF0\x9F\x9A\xA2", "per%20cent"),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST(PlatformFiles, LieAsDeepAsTheyAre)
{
  const TestFolder folder;
  const std::string deep = MakeDeepFolder(folder);
  WholeFile file;
  ASSERT_EQ(file.Open(deep + "/a.json"), "");
  std::fputs("whole", file.GetStream());
  ASSERT_EQ(file.Commit(), "");
  EXPECT_EQ(Read(deep + "/a.json"), "whole");
  RemoveTree(folder / std::string(40, 'a'));
  EXPECT_TRUE(IsEmptyFolder(folder.GetPath()));
}

TEST(PlatformFiles, ReachBeyondFourGibibytes)
{
  constexpr Int kFar = (Int(1) << 32) + 5;
  const TestFolder folder;
  const std::string path = folder / "sparse";
  {
    PlatformFile file;
    ASSERT_TRUE(file.Open(path.c_str(), PlatformOpen::kReplace));
    ASSERT_TRUE(file.WriteAt(kFar, "end", 3)) << GetSystemReason();
    ASSERT_TRUE(file.WriteAt(0, "start", 5));
    EXPECT_EQ(file.GetLength(), kFar + 3);
  }
  PlatformFile file;
  ASSERT_TRUE(file.Open(path.c_str(), PlatformOpen::kRead));
  EXPECT_EQ(file.GetLength(), kFar + 3);
  char text[8] = {};
  EXPECT_EQ(file.ReadAt(kFar - 1, text, 8), 4);
  EXPECT_EQ(std::string_view(text, 4), std::string_view("\0end", 4));
  EXPECT_EQ(file.ReadAt(kFar + 3, text, 8), 0);
}

TEST(PlatformFiles, ContinueWhereTheyEnd)
{
  const TestFolder folder;
  const std::string path = folder.Write("a", std::string("one"));
  PlatformFile file;
  ASSERT_TRUE(file.Open(path.c_str(), PlatformOpen::kContinue));
  EXPECT_EQ(file.GetLength(), 3);
  EXPECT_TRUE(file.WriteAt(3, "two", 3));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(Read(path), "onetwo");
}

TEST(PlatformFiles, TellWhyTheyCannotBeOpened)
{
  const TestFolder folder;
  PlatformFile file;
  EXPECT_FALSE(file.Open((folder / "none").c_str(), PlatformOpen::kRead));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(GetSystemReason(), "No such file or directory");
  EXPECT_FALSE(file.Open((folder / "none/a").c_str(), PlatformOpen::kReplace));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(file.Open(folder.GetPath().c_str(), PlatformOpen::kRead));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_FALSE(MakeFolders(folder.Write("file", std::string("x")) + "/inner"));
  EXPECT_EQ(ResolvePath(folder / "none"), "");
}

TEST(PlatformFiles, AreReplacedAtOnce)
{
  const TestFolder folder;
  const std::string target = folder.Write("target", std::string("old"));
  WholeFile file;
  ASSERT_EQ(file.Open(target), "");
  // Who writes by name replaces the file itself.
  const std::string beside = file.HandOver();
  const std::string other = folder.Write("other", std::string("new"));
  EXPECT_TRUE(PutInPlace(other, beside)) << GetSystemReason();
  EXPECT_EQ(Read(target), "old");
  EXPECT_EQ(file.Commit(), "");
  EXPECT_EQ(Read(target), "new");
  EXPECT_EQ(Read(beside), "none");
  EXPECT_EQ(Read(other), "none");
}

TEST(PlatformFiles, AreOneUnderTwoNames)
{
  const TestFolder folder;
  const std::string path = folder.Write("a", std::string("x"));
  const std::string other = folder.Write("b", std::string("x"));
  EXPECT_TRUE(IsSameFile(path, folder / "./a"));
  EXPECT_FALSE(IsSameFile(path, other));
  EXPECT_FALSE(IsSameFile(path, folder / "none"));
}

TEST(PlatformFolders, GoWithAllThatIsInThem)
{
  const TestFolder folder;
  ASSERT_TRUE(MakeFolders(folder / "a/b/c"));
  ASSERT_TRUE(Write(folder / "a/b/file", "x"));
  RemoveEmptyFolder(folder / "a");
  EXPECT_EQ(Read(folder / "a/b/file"), "x");
  RemoveEmptyFolder(folder / "a/b/c");
  EXPECT_EQ(GetFileSystemType(folder / "a/b/c"), HostFileSystemType::kNone);
  RemoveTree(folder / "a");
  EXPECT_TRUE(IsEmptyFolder(folder.GetPath()));
}

TEST(PlatformFolders, OfAPath)
{
  EXPECT_EQ(GetFolderOf("a/b/c.glb"), "a/b");
  EXPECT_EQ(GetFolderOf("/c.glb"), "/");
  EXPECT_EQ(GetFolderOf("c.glb"), ".");
}

TEST(PlatformLibraries, TellWhyTheyCannotBeLoaded)
{
  const TestFolder folder;
  PlatformLibrary missing;
  EXPECT_NE(missing.Load(folder / "none").find("No such file"), std::string::npos);
  PlatformLibrary text;
  EXPECT_NE(text.Load(folder.Write(std::string("text") + kLibrarySuffix, std::string("no library"))), "");
  EXPECT_EQ(text.Find("q7z_main"), nullptr);
}

TEST(PlatformMemory, StartsAsZeros)
{
  constexpr Int kByteCount = (Int(4) << 20) + 3;
  Byte* const memory = static_cast<Byte*>(MapZeros(kByteCount));
  ASSERT_NE(memory, nullptr);
  EXPECT_EQ(memory[0], 0);
  EXPECT_EQ(memory[kByteCount - 1], 0);
  memory[kByteCount - 1] = 1;
  UnmapZeros(memory, kByteCount);
  EXPECT_EQ(MapZeros(Int(1) << 47), nullptr);
}

}  // namespace
}  // namespace q7z::test
