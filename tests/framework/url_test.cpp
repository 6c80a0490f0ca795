// Locations: how a reference is read, joined and taken apart, and that a name never becomes a way out of its folder.

#include <gtest/gtest.h>

#include <tuple>

#include "framework/url.h"
#include "tests/framework/text.h"
#include "tests/support/sweep.h"

namespace q7z::test
{
namespace
{

const std::tuple<String, UrlScheme, const char*, const char*> kReferenceCases[] = {
  // Relative references, whose queries and fragments belong to the name.
  {"a%20b.bin"_s, URLSCHEME_RELATIVE, "a b.bin", "relative:///a b.bin"},
  {"a.bin?v=1#2"_s, URLSCHEME_RELATIVE, "a.bin?v=1#2", "relative:///a.bin?v=1#2"},
  {"%2Fetc/passwd"_s, URLSCHEME_RELATIVE, "etc/passwd", "relative:///etc/passwd"},
  {"Relative:x"_s, URLSCHEME_RELATIVE, "x", "relative:///x"},
  // No scheme begins with a digit or holds a blank or a slash.
  {"1a:b"_s, URLSCHEME_RELATIVE, "1a:b", "relative:///1a:b"},
  {"my file:b"_s, URLSCHEME_RELATIVE, "my file:b", "relative:///my file:b"},
  {":a"_s, URLSCHEME_RELATIVE, ":a", "relative:///:a"},
  // Local paths.
  {"FILE:///a%2Db"_s, URLSCHEME_FILESYSTEM, "/a-b", "file:///a-b"},
  {"file://server/a/b"_s, URLSCHEME_FILESYSTEM, "/a/b", "file:///a/b"},
  {"file:/a"_s, URLSCHEME_FILESYSTEM, "/a", "file:///a"},
  {"file:a/b"_s, URLSCHEME_FILESYSTEM, "a/b", "file:a/b"},
  {"C:\\dir\\a.bin"_s, URLSCHEME_FILESYSTEM, "C:\\dir\\a.bin", "file:///C:\\dir\\a.bin"},
  {"c:/dir/a.bin"_s, URLSCHEME_FILESYSTEM, "c:/dir/a.bin", "file:///c:/dir/a.bin"},
  {"file:///C:/a.bin"_s, URLSCHEME_FILESYSTEM, "C:/a.bin", "file:///C:/a.bin"},
  // Other schemes stay as they are, percent codes included.
  {"http://host/a%20b"_s, URLSCHEME_HTTP, "//host/a%20b", "http://host/a%20b"},
  {"data:,a%41"_s, URLSCHEME_OTHER, ",a%41", "data:,a%41"},
  {"git+ssh-1.0:x"_s, URLSCHEME_OTHER, "x", "git+ssh-1.0:x"},
  {"//server/share/a"_s, URLSCHEME_OTHER, "//server/share/a", "//server/share/a"},
  {String(), URLSCHEME_NONE, "", ""},
};

TEST(Url, ReferenceSettlesSchemeAndPath)
{
  for (const auto& [text, scheme, path, written] : kReferenceCases)
  {
    const Result<Url> url = Url::FromReference(text);
    ASSERT_FALSE(url.HasError()) << Text(text);
    EXPECT_EQ(url.GetValue().GetScheme(), scheme) << Text(text);
    EXPECT_EQ(Text(url.GetValue().GetPath()), path) << Text(text);
    EXPECT_EQ(Text(url.GetValue().GetUrl()), written) << Text(text);
    EXPECT_TRUE(Url::FromReference(url.GetValue().GetUrl().GetValue()).GetValue() == url.GetValue()) << Text(text);
  }
}

TEST(Url, DecodedReferenceIsNotDecodedAgain)
{
  const std::pair<String, const char*> rows[] = {{"a%20b/c.bin"_s, "relative:///a%20b/c.bin"},
                                                 {"/a%20b"_s, "file:///a%20b"},
                                                 {"relative:///a%00b"_s, "relative:///a%00b"},
                                                 {"http://host/a%20b"_s, "http://host/a%20b"}};
  for (const auto& [text, url] : rows)
    EXPECT_EQ(Text(Url::FromDecodedReference(text).GetValue().GetUrl()), url) << Text(text);
  EXPECT_TRUE(Url::FromDecodedReference("a\0b"_s).HasError());
}

TEST(Url, ZeroByteInAPathIsRefused)
{
  const String texts[] = {"a%00.bin"_s, "a\0b"_s, "/a%00"_s, "file:///a%00b"_s, "relative:///%00"_s};
  for (const String& text : texts)
  {
    const Result<Url> url = Url::FromReference(text);
    ASSERT_TRUE(url.HasError()) << Text(text);
    EXPECT_EQ(url.GetError().GetClass(), ErrorClass::kIllegalArgument) << Text(text);
  }
  EXPECT_TRUE(Url::FromPath("/a\0b"_s).HasError());
  EXPECT_EQ(Text(Url::FromPath("/a%20b/c:d"_s).GetValue().GetPath()), "/a%20b/c:d");
  EXPECT_FALSE(Url::FromReference("data:,%00"_s).HasError());
}

TEST(Url, PercentCodesAreDecodedOnce)
{
  const std::pair<String, const char*> rows[] = {
    {"%41%42c"_s, "ABc"}, {"%c3%A9"_s, "\xC3\xA9"}, {"100%"_s, "100%"}, {"%4"_s, "%4"},   {"%4g"_s, "%4g"},
    {"%g4"_s, "%g4"},     {"%%41"_s, "%A"},         {"%2541"_s, "%41"}, {"a+b"_s, "a+b"}, {String(), ""},
  };
  for (const auto& [text, decoded] : rows)
    EXPECT_EQ(Text(DecodePercent(text)), decoded) << Text(text);
}

TEST(Url, TakesAPathApart)
{
  const std::tuple<String, const char*, const char*, const char*> rows[] = {
    {"/a/b/c.gltf"_s, "/a/b", "c.gltf", "gltf"}, {"c.GLB"_s, ".", "c.GLB", "GLB"},      {"a.d/c"_s, "a.d", "c", ""},
    {".gltf"_s, ".", ".gltf", "gltf"},           {"C:/c.bin"_s, "C:/", "c.bin", "bin"},
  };
  for (const auto& [text, directory, name, suffix] : rows)
  {
    const Url url = Url::FromReference(text).GetValue();
    EXPECT_EQ(Text(url.GetDirectory().GetValue().GetPath()), directory);
    EXPECT_EQ(url.GetDirectory().GetValue().GetScheme(), url.GetScheme()) << Text(text);
    EXPECT_EQ(Text(url.GetName()), name);
    EXPECT_EQ(Text(url.GetSuffix()), suffix);
  }
}

TEST(Url, AppendAddsExactlyOneComponent)
{
  const std::tuple<String, String, const char*> rows[] = {
    {"/tex"_s, "a.png"_s, "/tex/a.png"},
    {"/tex/"_s, "a.png"_s, "/tex/a.png"},
    {"/"_s, "a.png"_s, "/a.png"},
    {"/tex"_s, "../../evil"_s, "/tex/.._.._evil"},
    {"/tex"_s, "..\\evil"_s, "/tex/.._evil"},
    {"/tex"_s, "/etc/passwd"_s, "/tex/_etc_passwd"},
    {"/tex"_s, "a\0.png"_s, "/tex/a_.png"},
    {"/tex"_s, ".."_s, "/tex/_"},
    {"/tex"_s, "."_s, "/tex/_"},
    {"/tex"_s, String(), "/tex/_"},
    {"/tex"_s, "%2E%2E"_s, "/tex/%2E%2E"},
  };
  for (const auto& [folder, name, path] : rows)
    EXPECT_EQ(Text(Url::FromPath(folder).GetValue().Append(name).GetValue().GetPath()), path);
  EXPECT_EQ(Text(Url().Append("a"_s).GetValue().GetUrl()), "relative:///a");
}

TEST(Url, AppendedRelativePathKeepsItsComponents)
{
  const auto joined = [](const String& relative)
  { return Text(Url::FromPath("/a"_s).GetValue().AppendPath(Url::FromReference(relative).GetValue()).GetValue().GetPath()); };
  EXPECT_EQ(joined("b/../c.bin"_s), "/a/b/../c.bin");
  EXPECT_EQ(joined("/etc/passwd"_s), "/a/etc/passwd");
  EXPECT_EQ(joined("relative:////b"_s), "/a/b");
  EXPECT_EQ(joined(String()), "/a");
}

TEST(Url, WithoutMemoryEveryMakerSaysSo)
{
  const Url folder = Url::FromPath("/a"_s).GetValue();
  Int refused = 0;
  SweepAllocations(
    [&]
    {
      refused = IsOutOfMemory(folder.Append("a/b"_s)) + IsOutOfMemory(Url::FromReference("a%20b"_s));
      refused += IsOutOfMemory(folder.GetUrl());
    },
    [&](Bool failed) { EXPECT_EQ(refused, failed); });
}

}  // namespace
}  // namespace q7z::test
