// Files of the classic API, the URL service, what a load may read, and hashes of files.

#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "host/services/headlessfiles.h"
#include "host/services/headlesshash.h"
#include "tests/host/servicesupport.h"

namespace q7z::test
{

namespace
{

class Files : public testing::Test
{
protected:
  Files() : file(table.Alloc()) { EXPECT_TRUE(file); }
  ~Files() override { table.Free(file); }

  bool Open(const std::string& path, FILEOPEN mode = FILEOPEN::READ, BYTEORDER order = BYTEORDER::V_INTEL)
  {
    return table.Open(file, HostFilename(MakeString(path)), mode, FILEDIALOG::NONE, order, kFileType, kFileCreator);
  }
  bool Exists(const std::string& path) { return table.Exists(HostFilename(MakeString(path))); }

  /// Up to count bytes, or "(failed)".
  std::string Read(Int count)
  {
    std::string bytes(static_cast<size_t>(count), '?');
    const Int read = table.ReadBytes(file, bytes.data(), count);
    return read < 0 ? "(failed)" : bytes.substr(0, static_cast<size_t>(read));
  }
  bool Write(std::string_view bytes) { return table.WriteBytes(file, bytes.data(), static_cast<Int>(bytes.size())); }

  TestFolder folder;
  FilePolicy policy;
  HeadlessFileTable table{policy};
  HostFile* file;
};

TEST_F(Files, ReadAndSeekForwardFromThePosition)
{
  EXPECT_EQ(Read(1), "(failed)") << "while it is closed";
  EXPECT_FALSE(table.Seek(file, 1));
  EXPECT_TRUE(table.Close(file));
  ASSERT_TRUE(Open(folder.Write("a", "0123456789")));
  EXPECT_EQ(table.GetLength(file), 10);
  EXPECT_EQ(Read(3), "012");
  EXPECT_TRUE(table.Seek(file, 2));
  EXPECT_FALSE(table.Seek(file, -1));
  EXPECT_EQ(table.GetPosition(file), 5);
  EXPECT_EQ(Read(2), "56");
  EXPECT_EQ(Read(100), "789");
  EXPECT_EQ(table.GetPosition(file), 10);
  EXPECT_TRUE(table.Seek(file, INT64_MAX - 10));
  EXPECT_EQ(Read(1), "");
  EXPECT_FALSE(table.Seek(file, 1));
  EXPECT_EQ(table.GetPosition(file), INT64_MAX);
}

TEST_F(Files, ReadWordsInTheOrderOfTheirOpening)
{
  const std::string path = folder.Write("a", "\x01\x02\x03\x04\x05\x06\x07");
  UInt32 word = 99;
  ASSERT_TRUE(Open(path, FILEOPEN::READ, BYTEORDER::V_INTEL));
  EXPECT_TRUE(table.ReadUInt32(file, &word));
  EXPECT_EQ(word, 0x04030201u);
  EXPECT_FALSE(table.ReadUInt32(file, &word));  // three bytes are left
  EXPECT_EQ(word, 0x04030201u);
  EXPECT_TRUE(table.Close(file));
  ASSERT_TRUE(Open(path, FILEOPEN::READ, BYTEORDER::V_MOTOROLA));
  EXPECT_TRUE(table.ReadUInt32(file, &word));
  EXPECT_EQ(word, 0x01020304u);
}

TEST_F(Files, WriteReplacesAndAppendGoesOn)
{
  const std::string path = folder.Write("a", "0123456789");
  ASSERT_TRUE(Open(path));
  EXPECT_FALSE(Write("x")) << "opened to be read";
  EXPECT_FALSE(Open(path)) << "it is open";
  EXPECT_TRUE(table.Close(file));
  ASSERT_TRUE(Open(path, FILEOPEN::WRITE));
  EXPECT_EQ(Read(1), "(failed)");
  EXPECT_TRUE(Write("abc"));
  EXPECT_TRUE(table.Seek(file, 2));
  EXPECT_TRUE(Write("d"));
  EXPECT_EQ(table.GetLength(file), 6);
  EXPECT_TRUE(table.Close(file));
  ASSERT_TRUE(Open(path, FILEOPEN::APPEND));
  EXPECT_EQ(table.GetPosition(file), 6);
  EXPECT_TRUE(Write("e"));
  EXPECT_TRUE(table.Close(file));
  EXPECT_EQ(ReadText(path), std::string("abc\0\0de", 7));
}

TEST_F(Files, OtherThanRegularAreNotOpened)
{
  std::filesystem::create_directory(folder / "folder");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  ASSERT_EQ(symlink("/nowhere/at/all", (folder / "dangling").c_str()), 0);
  for (const char* const name : {"missing/file", "folder", "pipe", "/dev/zero", "dangling", "/dev/null/x"})
    for (const FILEOPEN mode : {FILEOPEN::READ, FILEOPEN::WRITE, FILEOPEN::APPEND})
      EXPECT_FALSE(Open(name[0] == '/' ? name : folder / name, mode)) << name;
}

// What a load may read. The input is in/scene.gltf; every row names a side file from the input's folder.

const std::tuple<std::string, bool, bool> kPolicies[] = {
  // Path from in/, or absolute; whether it can be read; whether it is warned of.
  {"a.bin", true, false},           {"deep/b.bin", true, false},  {"../in/a.bin", true, false},
  {"inside.bin", true, false},                                                                   // a link
  {"../secret.bin", false, true},   {"/etc/passwd", false, true}, {"outside.bin", false, true},  // a link
  {"away/secret.bin", false, true},                                                              // in a linked folder
  {"../in2/c.bin", false, true},     // in a folder whose name merely begins like the input's
  {"../missing.bin", false, false},  // missing, not refused
};

class Policy : public Files
{
protected:
  Policy()
  {
    input = folder.Write("in/scene.gltf", "{}");
    folder.Write("in/a.bin", "a");
    folder.Write("in/deep/b.bin", "b");
    folder.Write("secret.bin", "s");
    folder.Write("in2/c.bin", "c");
    std::filesystem::create_symlink(folder / "in/deep/b.bin", folder / "in/inside.bin");
    std::filesystem::create_symlink("../secret.bin", folder / "in/outside.bin");
    std::filesystem::create_directory_symlink(folder.GetPath(), folder / "in/away");
  }
  std::string Side(const std::string& path) const { return path[0] == '/' ? path : folder / ("in/" + path); }

  std::string input;
  RecordedWarnings warnings;
};

std::string WarningOf(const std::string& path)
{
  return "\"" + path + "\" lies outside the input's folder and is not read; --allow-outside permits it";
}

TEST_F(Policy, DecidesOnResolvedPathsForRelativeInputsToo)
{
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder / "in");
  for (const auto& [path, isReadable, isWarnedOf] : kPolicies)
    for (const std::string& name : {input, std::string("scene.gltf")})
    {
      SCOPED_TRACE(path + " beside " + name);
      warnings.texts.clear();
      policy.Restrict(name, &warnings);
      const std::string whole = name == input || path[0] == '/' ? Side(path) : "./" + path;
      EXPECT_EQ(Exists(whole), isReadable);
      EXPECT_EQ(Open(whole), isReadable);
      table.Close(file);
      EXPECT_EQ(warnings.texts, isWarnedOf ? Warnings{WarningOf(path)} : Warnings());
    }
  std::filesystem::current_path(before);
}

TEST_F(Policy, WarnsOnceForAFileByAnyName)
{
  policy.Restrict(input, &warnings);
  for (const char* const path : {"../secret.bin", "outside.bin", "../secret.bin", "away/secret.bin"})
    EXPECT_FALSE(Exists(Side(path)));
  EXPECT_EQ(warnings.texts, Warnings{WarningOf("../secret.bin")});
  policy.Restrict(input, &warnings);  // the next load
  EXPECT_FALSE(Exists(Side("outside.bin")));
  EXPECT_EQ(warnings.texts.size(), 2u);
}

// The input's folder is the one that its path names: there its side files are looked for.
TEST_F(Policy, FollowsALinkToTheInputAlone)
{
  std::filesystem::create_directory(folder / "links");
  std::filesystem::create_symlink(input, folder / "links/scene.gltf");
  folder.Write("links/side.bin", "x");
  policy.Restrict(folder / "links/scene.gltf", &warnings);
  EXPECT_TRUE(Open(folder / "links/scene.gltf"));
  table.Close(file);
  EXPECT_TRUE(Exists(folder / "links/side.bin"));
  EXPECT_FALSE(Exists(Side("a.bin")));
  EXPECT_TRUE(Open(folder / "out", FILEOPEN::WRITE)) << "where it writes is not its matter";
  policy.Restrict(folder / "none/scene.gltf", &warnings);  // an input that is not there
  EXPECT_FALSE(Exists(Side("a.bin")));
  EXPECT_FALSE(Exists("/etc/passwd"));
}

// The URL service.

/// The message of writing content, "" on success.
std::string WriteWhole(const std::filesystem::path& path, std::string_view content)
{
  const Result<void> written =
    HeadlessUrlService().Write(MakeUrl(path), reinterpret_cast<const Byte*>(content.data()), static_cast<Int>(content.size()));
  if (!written.HasError())
    return "";
  EXPECT_EQ(written.GetError().GetClass(), ErrorClass::kIo);
  return ErrorText(written);
}

mode_t RightsOf(const std::filesystem::path& path)
{
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST(UrlService, WritesAndReplacesAndKeepsRightsAndLinks)
{
  const TestFolder folder;
  const mode_t mask = umask(027);
  EXPECT_EQ(WriteWhole(folder / "new", "content"), "");
  umask(mask);
  EXPECT_EQ(ReadText(folder / "new"), "content");
  EXPECT_EQ(RightsOf(folder / "new"), 0640u);
  ASSERT_EQ(chmod((folder / "new").c_str(), 0604), 0);
  std::filesystem::create_symlink("new", folder / "link");
  EXPECT_EQ(WriteWhole(folder / "link", ""), "");
  EXPECT_EQ(ReadText(folder / "new"), "");
  EXPECT_EQ(RightsOf(folder / "new"), 0604u);
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
  EXPECT_EQ(folder.List().size(), 2u) << "no temporary file is left";
  EXPECT_EQ(WriteWhole("/dev/null", "content"), "");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(UrlService, TellsWhyItCannotWrite)
{
  const TestFolder folder;
  folder.Write("file", "kept");
  folder.Write("folder/inside", "kept");
  const std::string& base = folder.GetPath();
  EXPECT_EQ(WriteWhole(folder / "folder", "x"), "cannot write \"" + base + "/folder\": it is a folder");
  EXPECT_EQ(WriteWhole(folder / "none/file", "x"), "cannot write \"" + base + "/none/file\": No such file or directory");
  EXPECT_EQ(WriteWhole(folder / "file/below", "x"), "cannot write \"" + base + "/file/below\": Not a directory");
  EXPECT_EQ(WriteWhole("/dev/full", "x"), "cannot write \"/dev/full\": No space left on device");
  EXPECT_EQ(ReadText(folder / "file"), "kept");
  EXPECT_EQ(folder.List().size(), 2u);
}

TEST(UrlService, KnowsLocalFilesAlone)
{
  const TestFolder folder;
  HeadlessUrlService urls;
  folder.Write("file", "");
  std::filesystem::create_symlink("file", folder / "link");
  EXPECT_EQ(urls.GetType(MakeUrl(folder / "link")), HostFileSystemType::kFile);
  EXPECT_EQ(urls.GetType(MakeUrl("/dev/null")), HostFileSystemType::kOther);
  for (int i = 0; i < 2; ++i)
    EXPECT_FALSE(urls.CreateFolder(MakeUrl(folder / "a/b/c")).HasError());
  EXPECT_EQ(urls.GetType(MakeUrl(folder / "a/b/c")), HostFileSystemType::kFolder);
  EXPECT_EQ(urls.CreateFolder(MakeUrl(folder / "file/below")).GetError().GetClass(), ErrorClass::kIo);
  const Byte byte = 0;
  for (const char* const text : {"relative.bin", "http://example.org/a"})
  {
    const Url url = Url::FromReference(MakeString(text)).GetValue();
    EXPECT_EQ(urls.GetType(url), HostFileSystemType::kNone) << text;
    EXPECT_EQ(ErrorText(urls.Write(url, &byte, 1)), "Only local files and folders can be written.") << text;
    EXPECT_EQ(ErrorText(urls.CreateFolder(url)), "Only local files and folders can be written.") << text;
  }
}

// Hashes. The value for no bytes is that of the algorithm's own test program.

// One block, several, and lengths at their border.
TEST(Hash, OfAFileIsThatOfItsBytes)
{
  const TestFolder folder;
  HeadlessHash hash;
  EXPECT_EQ(Text(hash.HashText(""_s)), "99aa06d3014798d86001c324468d497f");
  for (const size_t length : {1u, 262143u, 262144u, 262145u, 1000000u})
  {
    std::string bytes;
    for (size_t i = 0; i < length; ++i)
      bytes += static_cast<char>(i * i >> 3);
    EXPECT_EQ(Text(hash.HashFile(MakeUrl(folder.Write("file", bytes)))), Text(hash.HashText(MakeString(bytes)))) << length;
  }
  const std::string& base = folder.GetPath();
  EXPECT_EQ(Text(hash.HashFile(MakeUrl(folder / "none"))), "Cannot read \"" + base + "/none\": No such file or directory");
  EXPECT_EQ(Text(hash.HashFile(MakeUrl(base))), "Cannot read \"" + base + "\": Is a directory");
}

}  // namespace

}  // namespace q7z::test
